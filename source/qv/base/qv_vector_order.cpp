// Putting the elements of a Vector in order, and searching those that are.
//
// A merge sort of what ascends or descends already. It divides the elements into such runs, of at least SHORTEST, and
// merges neighbours so that each element takes part in about as many merges as its runs need in the best order of
// merging: n log n comparisons at most, n for elements in order or in reverse.
//
// Objects change places in memory of the sort's own, without their counts. So a compare function may use the Vector; and
// whatever it returns, each object stays one: it decides between two places of which both are known.

#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_held_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_order_private.h"

#include <algorithm>

QV___HIDDEN QV_SORT qv___sort_QV_STRING;

namespace
{
/* Orders ---------------------------------------------------------------------------------------------------------

   What compares two objects: positive if the first one belongs after the second. */

struct ByFunction
{
    QV_VECTOR_COMPARE_FUNC compare;
    void                  *data;

    QV_INT operator()( QV_OBJ *a, QV_OBJ *b ) const
    {
        return compare( a, b, data );
    }
};

struct ByObject
{
    QV_INT operator()( QV_OBJ *a, QV_OBJ *b ) const
    {
        return qvObjCompare( a, b );
    }
};

// As qvObjCompare() where all objects are Strings.
struct ByText
{
    QV_INT operator()( QV_OBJ *a, QV_OBJ *b ) const
    {
        QV_STRING *x = static_cast< QV_STRING * >( a );
        QV_STRING *y = static_cast< QV_STRING * >( b );

        QV_ASSERT( a->sort == &qv___sort_QV_STRING && b->sort == a->sort );
        return qv::order( qv::chars( x ), x->length, qv::chars( y ), y->length );
    }
};

// As qvObjCompare() where all objects are boxed integers.
struct ByInteger
{
    QV_INT operator()( QV_OBJ *a, QV_OBJ *b ) const
    {
        QV_ASSERT( a->sort == &qv___sort_QV_BOXED_INT && b->sort == a->sort );
        return qv::order( static_cast< QV_BOXED_INT * >( a )->value, static_cast< QV_BOXED_INT * >( b )->value );
    }
};

// How many elements from the first one on are in order; at least one of some.
template< class Order >
QV_INT orderedLength( QV_OBJ *const *objs, QV_INT count, const Order &order )
{
    QV_INT length = std::min( count, QV_INT( 1 ) );

    while( length < count && order( objs[length - 1], objs[length] ) <= 0 )
        length++;

    return length;
}

// How many of `count` objects, of which those that hold come first, hold.
template< class Holds >
QV_INT countOfFirst( QV_OBJ *const *objs, QV_INT count, const Holds &holds )
{
    QV_OBJ *const *first = objs;

    while( count > 0 )
    {
        QV_INT half = count / 2;
        bool   here = holds( first[half] );
        first += here ? half + 1 : 0;
        count = here ? count - half - 1 : half;
    }

    return first - objs;
}

/* The sort ------------------------------------------------------------------------------------------------------- */

const QV_INT SHORTEST = 24; // objects up to which a run is made longer by inserting what follows it

template< class Order >
class Sorting
{
public:
    // Objects to put in order, and memory for half as many. So many from the first one on are known to be in order.
    Sorting( QV_OBJ **objs, QV_INT count, QV_OBJ **spare, const Order &order ) :
        objs_( objs ), count_( count ), spare_( spare ), order_( order )
    {
    }

    void run( QV_INT ordered )
    {
        for( QV_INT start = 0, length; start < count_; start += length, ordered = 0 )
        {
            length = makeRun( start, ordered );

            // Each run under the new one is merged with the one under it first where the best order has it so.
            QV_INT depth = runs_ > 0 ? depthBetween( top( 0 ), length ) : 0;

            while( runs_ > 1 && top( 0 ).depth > depth )
                mergeTop();

            QV_ASSERT( runs_ < MOST_RUNS );
            stack_[runs_++] = { start, length, depth };
        }

        while( runs_ > 1 )
            mergeTop();
    }

private:
    struct Run
    {
        QV_INT start;
        QV_INT length;
        QV_INT depth; // of the merge with the run under it, in the tree of all merges
    };

    // Depths ascend in the stack, and none is more than the bits of a length.
    static const QV_INT MOST_RUNS = 66;

    Run &top( QV_INT under )
    {
        return stack_[runs_ - 1 - under];
    }

    // Of a tree that halves the elements again and again, the first level at which the middles of two neighbouring runs
    // are apart.
    QV_INT depthBetween( const Run &left, QV_INT rightLength ) const
    {
        QV_INT a     = 2 * left.start + left.length;
        QV_INT b     = a + left.length + rightLength;
        QV_INT depth = 0;

        for( ;; )
        {
            depth++;

            if( a >= count_ )
            {
                a -= count_;
                b -= count_;
            }
            else if( b >= count_ )
            {
                return depth;
            }

            a *= 2;
            b *= 2;
        }
    }

    // Makes a run of the objects from `start` on and returns its length. What descends, without equals, is reversed.
    QV_INT makeRun( QV_INT start, QV_INT ordered )
    {
        QV_OBJ **run    = objs_ + start;
        QV_INT   most   = count_ - start;
        QV_INT   length = ordered > 0 ? ordered : orderedLength( run, most, order_ );

        if( length == 1 )
        {
            while( length < most && order_( run[length - 1], run[length] ) > 0 )
                length++;

            std::reverse( run, run + length );
        }

        QV_INT wanted = std::min( SHORTEST, most );

        for( ; length < wanted; length++ )
        {
            QV_OBJ *obj = run[length];
            QV_INT  at  = countOfFirst( run, length, [&]( QV_OBJ *each ) { return order_( each, obj ) <= 0; } );

            qvMemMoveN( run + at + 1, run + at, length - at, sizeof( QV_OBJ * ) );
            run[at] = obj;
        }

        return length;
    }

    // Merges the two runs on top of the stack. What is at its place already stays out of it.
    void mergeTop()
    {
        Run     &left  = top( 1 );
        Run     &right = top( 0 );
        QV_OBJ **first = objs_ + left.start;
        QV_OBJ **mid   = objs_ + right.start;
        QV_OBJ **last  = mid + right.length;
        QV_OBJ  *head  = *mid;
        QV_OBJ  *tail  = mid[-1];

        first += countOfFirst( first, mid - first, [&]( QV_OBJ *each ) { return order_( each, head ) <= 0; } );
        last = mid + countOfFirst( mid, last - mid, [&]( QV_OBJ *each ) { return order_( tail, each ) > 0; } );

        if( mid - first <= last - mid )
            mergeUp( first, mid, last );
        else
            mergeDown( first, mid, last );

        left.length += right.length;
        runs_--;
    }

    // The left objects are moved away and merged from the first one on.
    void mergeUp( QV_OBJ **first, QV_OBJ **mid, QV_OBJ **last )
    {
        QV_OBJ **left    = spare_;
        QV_OBJ **leftEnd = spare_ + ( mid - first );
        qvMemCopyN( spare_, first, mid - first, sizeof( QV_OBJ * ) );

        while( left != leftEnd && mid != last )
        {
            bool takesRight = order_( *left, *mid ) > 0;
            *first++        = takesRight ? *mid : *left;
            mid += takesRight;
            left += !takesRight;
        }

        qvMemCopyN( first, left, leftEnd - left, sizeof( QV_OBJ * ) );
    }

    // The right objects are moved away and merged from the last one on.
    void mergeDown( QV_OBJ **first, QV_OBJ **mid, QV_OBJ **last )
    {
        QV_OBJ **right = spare_ + ( last - mid );
        qvMemCopyN( spare_, mid, last - mid, sizeof( QV_OBJ * ) );

        while( right != spare_ && mid != first )
        {
            bool takesLeft = order_( mid[-1], right[-1] ) > 0;
            *--last        = takesLeft ? mid[-1] : right[-1];
            mid -= takesLeft;
            right -= !takesLeft;
        }

        qvMemCopyN( last - ( right - spare_ ), spare_, right - spare_, sizeof( QV_OBJ * ) );
    }

    QV_OBJ     **objs_;
    QV_INT       count_;
    QV_OBJ     **spare_;
    const Order &order_;
    QV_INT       runs_ = 0;
    Run          stack_[MOST_RUNS];
};

// Held, the Vector stays as it is while objects are compared. One that is in order stays shared too.
template< class Order >
void orderElements( QV_VECTOR **vec, QV_INT offset, QV_INT count, const Order &order )
{
    qv::Ref< QV_VECTOR > held    = qv::Ref< QV_VECTOR >::share( *vec );
    QV_OBJ *const       *objs    = qv::objs( held ) + offset;
    QV_INT               ordered = orderedLength( objs, count, order );

    if( ordered == count )
    {
        qv::goOnWith( vec, held );
        return;
    }

    QV_OBJ **sorted = static_cast< QV_OBJ ** >( qvMemAllocN( count + count / 2, sizeof( QV_OBJ * ) ) );
    qvMemCopyN( sorted, objs, count, sizeof( QV_OBJ * ) );
    Sorting< Order >( sorted, count, sorted + count, order ).run( ordered );

    qv::goOnWith( vec, held );
    qv::makePrivate( vec, qvVectorCreateFrom );
    qvMemCopyN( qv::objs( *vec ) + offset, sorted, count, sizeof( QV_OBJ * ) );
    qvMemFree( sorted );
}

// Comparing objects of these sorts with any others calls no function of another family.
bool comparesInside( QV_SORT *sort )
{
    return sort == &qv___sort_QV_STRING || sort == &qv___sort_QV_BOXED_INT;
}

// Calls `use` with an order that is that of qvObjCompare() for these objects.
template< class Use >
auto withOrderOf( QV_OBJ *const *objs, QV_INT count, const Use &use )
{
    QV_SORT *sort = count > 0 ? objs[0]->sort : nullptr;
    bool     alike =
        comparesInside( sort ) && std::all_of( objs, objs + count, [&]( QV_OBJ *each ) { return each->sort == sort; } );

    return !alike ? use( ByObject() ) : sort == &qv___sort_QV_STRING ? use( ByText() ) : use( ByInteger() );
}

template< class Order >
QV_BOOL isOrdered( QV_VECTOR *vec, const Order &order )
{
    qv::Ref< QV_VECTOR > held = qv::Ref< QV_VECTOR >::share( vec );
    return orderedLength( qv::objs( vec ), vec->length, order ) == vec->length ? QV_TRUE : QV_FALSE;
}

template< class Order >
QV_INT search( QV_VECTOR *vec, QV_OBJ *obj, QV_BOOL *found, const Order &order )
{
    QV_INT idx = countOfFirst( qv::objs( vec ), vec->length, [&]( QV_OBJ *each ) { return order( each, obj ) < 0; } );

    if( found )
        *found = idx < vec->length && order( qv::objs( vec )[idx], obj ) == 0 ? QV_TRUE : QV_FALSE;

    return idx;
}
} // namespace

void qvVectorOrder( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    qvVectorOrderInner( vec, 0, ( *vec )->length );
}

void qvVectorOrderBy( QV_VECTOR **vec, QV_VECTOR_COMPARE_FUNC compare, void *data )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    qvVectorOrderInnerBy( vec, 0, ( *vec )->length, compare, data );
}

void qvVectorOrderInner( QV_VECTOR **vec, QV_INT offset, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK_AS( offset + count <= ( *vec )->length, "offset + count <= (*vec)->length" );

    withOrderOf(
        qv::objs( *vec ) + offset, count, [&]( const auto &order ) { orderElements( vec, offset, count, order ); } );
}

void qvVectorOrderInnerBy( QV_VECTOR **vec, QV_INT offset, QV_INT count, QV_VECTOR_COMPARE_FUNC compare, void *data )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK_AS( offset + count <= ( *vec )->length, "offset + count <= (*vec)->length" );
    QV_CHECK( compare );

    orderElements( vec, offset, count, ByFunction{ compare, data } );
}

QV_BOOL qvVectorIsOrdered( QV_VECTOR *vec )
{
    QV_CHECK( vec );
    return isOrdered( vec, ByObject() );
}

QV_BOOL qvVectorIsOrderedBy( QV_VECTOR *vec, QV_VECTOR_COMPARE_FUNC compare, void *data )
{
    QV_CHECK( vec );
    QV_CHECK( compare );

    return isOrdered( vec, ByFunction{ compare, data } );
}

QV_INT qvVectorSearch( QV_VECTOR *vec, QV_OBJ *obj, QV_BOOL *found )
{
    QV_CHECK( vec );
    QV_CHECK( obj );

    qv::Ref< QV_VECTOR > held = qv::Ref< QV_VECTOR >::share( comparesInside( obj->sort ) ? nullptr : vec );
    return search( vec, obj, found, ByObject() );
}

QV_INT qvVectorSearchBy( QV_VECTOR *vec, QV_OBJ *obj, QV_VECTOR_COMPARE_FUNC compare, void *data, QV_BOOL *found )
{
    QV_CHECK( vec );
    QV_CHECK( obj );
    QV_CHECK( compare );

    qv::Ref< QV_VECTOR > held = qv::Ref< QV_VECTOR >::share( vec );
    return search( vec, obj, found, ByFunction{ compare, data } );
}
