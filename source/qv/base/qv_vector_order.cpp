// Putting the elements of a Vector in order, and searching those that are.
//
// A merge sort of what ascends or descends already. It divides the elements into such runs, of at least SHORTEST, and
// merges neighbours so that each element takes part in about as many merges as its runs need in the best order of
// merging: n log n comparisons at most, n for elements in order or in reverse.
//
// Integers in no order are put in order by keys instead, as qv_key_order_private.h tells.
//
// Objects change places in memory of the sort's own, without their counts. So a compare function may use the Vector; and
// whatever it returns, each object stays one: it decides between two places of which both are known.

#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_digest_private.h"
#include "qv/base/qv_held_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_key_order_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_order_private.h"

#include <algorithm>
#include <type_traits>

QV___HIDDEN QV_SORT qv___sort_QV_STRING;

namespace
{
/* Orders ---------------------------------------------------------------------------------------------------------

   An order has items, made of objects, and compares two of them: whether the first one belongs after the second. */

struct ByFunction
{
    using Item = QV_OBJ *;

    QV_VECTOR_COMPARE_FUNC compare;
    void                  *data;

    Item item( QV_OBJ *obj ) const
    {
        return obj;
    }

    QV_INT orderOf( QV_OBJ *a, QV_OBJ *b ) const
    {
        return compare( a, b, data );
    }

    bool operator()( Item a, Item b ) const
    {
        return compare( a, b, data ) > 0;
    }
};

// Comparing objects of these sorts with any others calls no function of another family.
bool comparesInside( QV_SORT *sort )
{
    return sort == &qv___sort_QV_STRING || sort == &qv___sort_QV_BOXED_INT;
}

QV_STRING *stringOf( QV_OBJ *obj )
{
    QV_ASSERT( obj->sort == &qv___sort_QV_STRING );
    return static_cast< QV_STRING * >( obj );
}

QV_INT integerOf( QV_OBJ *obj )
{
    QV_ASSERT( obj->sort == &qv___sort_QV_BOXED_INT );
    return static_cast< QV_BOXED_INT * >( obj )->value;
}

struct ByObject
{
    using Item = QV_OBJ *;

    Item item( QV_OBJ *obj ) const
    {
        return obj;
    }

    // As qvObjCompare(), without a call for the sorts that most elements have.
    QV_INT orderOf( QV_OBJ *a, QV_OBJ *b ) const
    {
        if( a->sort != b->sort || !comparesInside( a->sort ) )
            return qvObjCompare( a, b );

        return a->sort == &qv___sort_QV_BOXED_INT ? qv::order( integerOf( a ), integerOf( b ) )
                                                  : qv::order(
                                                        qv::chars( stringOf( a ) ), stringOf( a )->length,
                                                        qv::chars( stringOf( b ) ), stringOf( b )->length );
    }

    bool operator()( Item a, Item b ) const
    {
        return orderOf( a, b ) > 0;
    }
};

// The same beside one integer: others are compared with it in place.
struct BesideInteger
{
    QV_INT value;

    QV_INT orderOf( QV_OBJ *each, QV_OBJ *obj ) const
    {
        QV_ASSERT( integerOf( obj ) == value );
        return __builtin_expect( each->sort == &qv___sort_QV_BOXED_INT, 1 ) ? qv::order( integerOf( each ), value )
                                                                            : qvObjCompare( each, obj );
    }
};

// An object with a number that orders as it does, so that few comparisons wait for its memory.
struct Digested
{
    QV_OBJ  *obj;
    uint64_t digest;

    operator QV_OBJ *() const
    {
        return obj;
    }
};

// Of Strings that share so many characters. Those whose numbers are equal are compared themselves.
struct ByText
{
    using Item = Digested;

    QV_INT prefix;

    Item item( QV_OBJ *obj ) const
    {
        return { obj, qv::digestText( behind( obj ), lengthBehind( obj ) ).number };
    }

    bool operator()( const Item &a, const Item &b ) const
    {
        if( __builtin_expect( a.digest != b.digest, 1 ) )
            return a.digest > b.digest;

        return qv::order( behind( a ), lengthBehind( a ), behind( b ), lengthBehind( b ) ) > 0;
    }

private:
    const QV_CHAR *behind( QV_OBJ *obj ) const
    {
        return qv::chars( stringOf( obj ) ) + prefix;
    }

    QV_INT lengthBehind( QV_OBJ *obj ) const
    {
        QV_ASSERT( stringOf( obj )->length >= prefix );
        return stringOf( obj )->length - prefix;
    }
};

struct ByInteger
{
    using Item = Digested;

    Item item( QV_OBJ *obj ) const
    {
        return { obj, qv::integerDigest( integerOf( obj ) ) };
    }

    bool operator()( const Item &a, const Item &b ) const
    {
        return a.digest > b.digest;
    }
};

// How many items from the first one on are in order; at least one of some.
template< class Item, class Order >
QV_INT orderedLength( const Item *items, QV_INT count, const Order &order )
{
    QV_INT length = std::min( count, QV_INT( 1 ) );

    while( length < count && !order( items[length - 1], items[length] ) )
        length++;

    return length;
}

// How many of `count` items, of which those for which `holds` is true come first, these are.
template< class Item, class Holds >
QV_INT countOfFirst( const Item *items, QV_INT count, const Holds &holds )
{
    const Item *first = items;

    while( count > 0 )
    {
        QV_INT half = count / 2;
        bool   here = holds( first[half] );
        first += here ? half + 1 : 0;
        count = here ? count - half - 1 : half;
    }

    return first - items;
}

/* The sort ------------------------------------------------------------------------------------------------------- */

const QV_INT SHORTEST = 24; // objects up to which a run is made longer by inserting what follows it

template< class Order >
class Sorting
{
    using Item = typename Order::Item;

public:
    // Items to put in order, and memory for half as many.
    Sorting( Item *items, QV_INT count, Item *spare, const Order &order ) :
        items_( items ), count_( count ), spare_( spare ), order_( order )
    {
    }

    // So many items from the first one on are known to be in order.
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

    // Makes a run of the items from `start` on and returns its length. What descends, without equals, is reversed.
    QV_INT makeRun( QV_INT start, QV_INT ordered )
    {
        Item  *run    = items_ + start;
        QV_INT most   = count_ - start;
        QV_INT length = ordered > 0 ? ordered : orderedLength( run, most, order_ );

        if( length == 1 )
        {
            while( length < most && order_( run[length - 1], run[length] ) )
                length++;

            std::reverse( run, run + length );
        }

        QV_INT wanted = std::min( SHORTEST, most );

        for( ; length < wanted; length++ )
        {
            Item   item = run[length];
            QV_INT at   = countOfFirst( run, length, [&]( const Item &each ) { return !order_( each, item ); } );

            qvMemMoveN( run + at + 1, run + at, length - at, sizeof( Item ) );
            run[at] = item;
        }

        return length;
    }

    // Merges the two runs on top of the stack. What is at its place already stays out of it.
    void mergeTop()
    {
        Run  &left  = top( 1 );
        Run  &right = top( 0 );
        Item *first = items_ + left.start;
        Item *mid   = items_ + right.start;
        Item *last  = mid + right.length;
        Item  head  = *mid;
        Item  tail  = mid[-1];

        first += countOfFirst( first, mid - first, [&]( const Item &each ) { return !order_( each, head ); } );
        last = mid + countOfFirst( mid, last - mid, [&]( const Item &each ) { return order_( tail, each ); } );

        if( mid - first <= last - mid )
            mergeUp( first, mid, last );
        else
            mergeDown( first, mid, last );

        left.length += right.length;
        runs_--;
    }

    // The left items are moved away and merged from the first one on.
    void mergeUp( Item *first, Item *mid, Item *last )
    {
        Item *left    = spare_;
        Item *leftEnd = spare_ + ( mid - first );
        qvMemCopyN( spare_, first, mid - first, sizeof( Item ) );

        while( left != leftEnd && mid != last )
        {
            bool takesRight = order_( *left, *mid );
            *first++        = *( takesRight ? mid : left );
            mid += takesRight;
            left += !takesRight;
        }

        qvMemCopyN( first, left, leftEnd - left, sizeof( Item ) );
    }

    // The right items are moved away and merged from the last one on.
    void mergeDown( Item *first, Item *mid, Item *last )
    {
        Item *right = spare_ + ( last - mid );
        qvMemCopyN( spare_, mid, last - mid, sizeof( Item ) );

        while( right != spare_ && mid != first )
        {
            bool takesLeft = order_( mid[-1], right[-1] );
            *--last        = *( ( takesLeft ? mid : right ) - 1 );
            mid -= takesLeft;
            right -= !takesLeft;
        }

        qvMemCopyN( last - ( right - spare_ ), spare_, right - spare_, sizeof( Item ) );
    }

    Item        *items_;
    QV_INT       count_;
    Item        *spare_;
    const Order &order_;
    QV_INT       runs_ = 0;
    Run          stack_[MOST_RUNS];
};

// Puts elements of a Vector that is held in order and writes them to the same places in `*vec`. So many from the first
// one on are in order.
template< class Order >
void orderItems(
    QV_VECTOR **vec, qv::Ref< QV_VECTOR > &held, QV_INT offset, QV_INT count, QV_INT ordered, const Order &order )
{
    using Item = typename Order::Item;

    QV_OBJ *const *objs  = qv::objs( held ) + offset;
    Item          *items = static_cast< Item * >( qvMemAllocN( count + count / 2, sizeof( Item ) ) );

    for( QV_INT i = 0; i < count; i++ )
        items[i] = order.item( objs[i] );

    Sorting< Order >( items, count, items + count, order ).run( ordered );

    qv::goOnWith( vec, held );
    qv::makePrivate( vec, qvVectorCreateFrom );

    for( QV_INT i = 0; i < count; i++ )
        qv::objs( *vec )[offset + i] = items[i];

    qvMemFree( items );
}

// How many characters Strings share at most: with the first one.
QV_INT commonPrefix( QV_OBJ *const *objs, QV_INT count )
{
    const QV_CHAR *first  = qv::chars( stringOf( objs[0] ) );
    QV_INT         common = stringOf( objs[0] )->length;

    for( QV_INT i = 1; i < count && common > 0; i++ )
    {
        const QV_CHAR *chars = qv::chars( stringOf( objs[i] ) );
        QV_INT         most  = std::min( common, stringOf( objs[i] )->length );

        for( common = 0; common < most && chars[common] == first[common]; )
            common++;
    }

    return common;
}

// Held, the Vector stays as it is while objects are compared. One that is in order stays shared too.
template< class Order >
void orderElements( QV_VECTOR **vec, QV_INT offset, QV_INT count, const Order &order )
{
    qv::Ref< QV_VECTOR > held    = qv::Ref< QV_VECTOR >::share( *vec );
    QV_OBJ *const       *objs    = qv::objs( held ) + offset;
    QV_INT               ordered = orderedLength( objs, count, order );

    if( ordered == count )
        return qv::goOnWith( vec, held );

    if constexpr( std::is_same_v< Order, ByObject > )
    {
        QV_SORT *sort  = objs[0]->sort;
        bool     alike = comparesInside( sort )
                     && std::all_of( objs, objs + count, [&]( QV_OBJ *each ) { return each->sort == sort; } );

        if( alike && sort == &qv___sort_QV_STRING )
            return orderItems( vec, held, offset, count, ordered, ByText{ commonPrefix( objs, count ) } );

        if( alike )
            return orderItems( vec, held, offset, count, ordered, ByInteger() );
    }

    orderItems( vec, held, offset, count, ordered, order );
}

// What there is to know of integers before they are put in order.
struct Integers
{
    QV_INT lowest;
    QV_INT highest;
    QV_INT turns; // how often they begin to descend, or end to
};

// False if there are other objects.
bool lookAtIntegers( QV_OBJ *const *objs, QV_INT count, Integers *seen )
{
    QV_INT before  = objs[0]->sort == &qv___sort_QV_BOXED_INT ? integerOf( objs[0] ) : 0;
    bool   descent = false;
    *seen          = { before, before, 0 };

    for( QV_INT i = 0; i < count; i++ )
    {
        if( objs[i]->sort != &qv___sort_QV_BOXED_INT )
            return false;

        QV_INT value  = integerOf( objs[i] );
        bool   lower  = value < before;
        seen->lowest  = std::min( seen->lowest, value );
        seen->highest = std::max( seen->highest, value );
        seen->turns += lower != descent;
        descent = lower;
        before  = value;
    }

    return true;
}

// Puts integers in order by keys, unless there are other objects among them, few runs that are better merged, or numbers
// too far apart. No function is called meanwhile that could reach the Vector. One that is in order stays shared.
bool orderIntegers( QV_VECTOR **vec, QV_INT offset, QV_INT count )
{
    QV_OBJ *const *objs = qv::objs( *vec ) + offset;
    Integers       seen;

    if( count < 2 || !lookAtIntegers( objs, count, &seen ) )
        return false;

    if( seen.turns == 0 )
        return true;

    qv::KeyForm form( seen.lowest, seen.highest, count );

    if( !form.fits() || seen.turns < count / 8 )
        return false;

    uint64_t  few[2 * qv::FEW_KEYS];
    uint64_t *keys =
        count <= qv::FEW_KEYS ? few : static_cast< uint64_t * >( qvMemAllocN( count, 2 * sizeof( uint64_t ) ) );
    uint64_t *spare = keys + count;

    for( QV_INT i = 0; i < count; i++ )
        keys[i] = form.key( integerOf( objs[i] ), i );

    uint64_t *ordered = qv::orderKeys( keys, spare, count, form );
    QV_OBJ  **moved   = reinterpret_cast< QV_OBJ ** >( ordered == keys ? spare : keys );

    for( QV_INT i = 0; i < count; i++ )
        moved[i] = objs[form.place( ordered[i] )];

    qv::makePrivate( vec, qvVectorCreateFrom );
    qvMemCopyN( qv::objs( *vec ) + offset, moved, count, sizeof( QV_OBJ * ) );

    if( keys != few )
        qvMemFree( keys );

    return true;
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
    QV_INT idx =
        countOfFirst( qv::objs( vec ), vec->length, [&]( QV_OBJ *each ) { return order.orderOf( each, obj ) < 0; } );

    if( found )
        *found = idx < vec->length && order.orderOf( qv::objs( vec )[idx], obj ) == 0 ? QV_TRUE : QV_FALSE;

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

    if( !orderIntegers( vec, offset, count ) )
        orderElements( vec, offset, count, ByObject() );
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

    if( obj->sort == &qv___sort_QV_BOXED_INT )
        return search( vec, obj, found, BesideInteger{ integerOf( obj ) } );

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
