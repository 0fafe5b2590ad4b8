// Vectors beside std::vector, with the free slots that the rules of growth and compaction give their blocks. What is
// put in may be an element that only the Vector holds, a part of its block, or the Vector itself.

#include "qv_fuzz_walk.h"

#include "qv/sys/qv_mem.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
using Values = std::vector< QV_INT >; // of the boxed integers that are the elements

struct Model : Ends< Model, Values >
{
    // A copy is built by appending.
    void copy()
    {
        front = 0, back = items.empty() ? 0 : 32;
    }

    void makeRoom( QV_INT at, QV_INT count )
    {
        own();

        if( at == length() )
            back = back >= count ? back - count : back + 32;
        else if( at == 0 && front >= count )
            front -= count;
        else
            front = back = 32;
    }

    void compact()
    {
        if( items.empty() )
            back += front, front = back / 2, back -= front;
        else if( front > 64 || back > 64 )
            front = back = 32;
    }

    void keep( QV_INT offset, QV_INT count )
    {
        if( count == 0 )
        {
            *this = Model();
            return;
        }

        erase( 0, offset );
        erase( count, length() - count );
    }
};

struct VectorWalk : SlotWalk< VectorWalk, QV_VECTOR, Model, qvVectorCreate >
{
    using SlotWalk::SlotWalk;

    QV_INT next = 0;

    void clear()
    {
        Slot &slot = any();
        qvVectorClear( slot.ref.at() );
        slot.model = Model();
    }

    // An object to put in: a new one, or one that perhaps only the Vector holds.
    Ref< QV_OBJ > fresh;

    QV_OBJ *object( Slot &slot, QV_INT &value )
    {
        if( slot.model.length() > 0 && in.flag() )
        {
            QV_INT idx = in.index( slot.model.items );
            value      = at( slot.model.items, idx );
            return qvVectorBacking( slot.ref )[idx];
        }

        fresh = boxedInt( value = next++ );
        return fresh;
    }

    void insert()
    {
        Slot  &dest = any(), &src = any();
        Values from = src.model.items;
        Span   span = in.span( lengthOf( from ), in.below( 5 ) );
        QV_INT at   = in.upTo( dest.model.length() );
        dest.model.shared |= &dest == &src;

        if( dest.model.length() + lengthOf( from ) > 3000 )
            return;

        if( at == 0 && span.offset % 2 )
            CALL_FORM( qvVectorPrepend, span, 1, dest.ref.at(), src.ref );
        else if( at == dest.model.length() )
            CALL_FORM( qvVectorAppend, span, 1, dest.ref.at(), src.ref );
        else
            CALL_FORM( qvVectorInsert, span, 1, dest.ref.at(), at, src.ref );

        if( span.form == OUTER )
            dest.model.insertOuter( at, from, span );
        else
            dest.model.insert( at, span.of( from ) );
    }

    void objs()
    {
        Slot                   &slot  = any();
        QV_INT                  count = in.length( 100 ), at = in.upTo( slot.model.length() );
        std::vector< QV_OBJ * > objs;
        Values                  values;

        for( ; count > 0 && slot.model.length() < 3000; count-- )
        {
            objs.push_back( boxedInt( next ).give() );
            values.push_back( next++ );
        }

        qvVectorInsertObjs( slot.ref.at(), at, objs.data(), lengthOf( objs ) );
        slot.model.insert( at, values );
        std::for_each( objs.begin(), objs.end(), qvObjRelease );
    }

    // Elements of the block that they go into.
    void inside()
    {
        Slot  &slot = any();
        Span   span = in.span( slot.model.length(), INNER );
        QV_INT at   = in.upTo( slot.model.length() );

        if( slot.model.length() > 3000 )
            return;

        slot.model.shared = true; // to keep them, the block is copied
        qvVectorInsertObjs( slot.ref.at(), at, qvVectorBacking( slot.ref ) + span.offset, span.count );
        slot.model.insert( at, span.of( slot.model.items ) );
    }

    void object()
    {
        Slot   &slot = any();
        QV_INT  at   = in.upTo( slot.model.length() ), value;
        QV_OBJ *obj  = object( slot, value );
        qvVectorInsertObj( slot.ref.at(), at, obj );
        slot.model.insert( at, { value } );
    }

    void set()
    {
        Slot   &slot = any();
        QV_INT  idx  = in.upTo( slot.model.length() + 1 ) - 1, value;
        QV_OBJ *obj  = object( slot, value );
        qvVectorSetObjAt( slot.ref.at(), idx, obj );

        if( idx == -1 || idx == slot.model.length() )
            return slot.model.insert( std::max< QV_INT >( idx, 0 ), { value } );

        slot.model.own();
        at( slot.model.items, idx ) = value;
    }

    // The Vector becomes an element of its own successor, which holds it as it was.
    void self()
    {
        Slot  &slot = any();
        QV_INT at   = in.upTo( slot.model.length() );
        qvVectorInsertObj( slot.ref.at(), at, qv::obj( slot.ref.get() ) );
        require( qvVectorLength( slot.ref ) == slot.model.length() + 1 );
        compare( qvVectorFrom( qvVectorBacking( slot.ref )[at] ), slot.model );
        qvVectorDelAt( slot.ref.at(), at );

        // What is left has a block whose way is not followed.
        slot.ref.reset( qvVectorCreateFrom( slot.ref ) );
        slot.model.copy();
    }

    // One after the other, as blocks fill up and empty.
    void many()
    {
        Slot  &slot  = any();
        Model &model = slot.model;
        QV_INT how = in.below( 4 ), count = in.length( 200 );
        bool   last = how % 2;

        for( ; count > 0; count-- )
        {
            if( how < 2 )
            {
                ( last ? qvVectorPush : qvVectorShift )( slot.ref.at(), boxedInt( next ) );
                model.insert( last ? model.length() : 0, { next++ } );
            }
            else if( model.length() > 0 )
            {
                Ref< QV_OBJ > taken( ( last ? qvVectorPop : qvVectorUnshift )( slot.ref.at() ) );
                auto          gone = last ? model.items.end() - 1 : model.items.begin();
                require( intOf( taken ) == *gone );
                model.own();
                model.items.erase( gone );
                ( last ? model.back : model.front )++;
                model.compact();
            }
        }
    }

    void erase()
    {
        Slot &slot = any();
        Span  span = in.span( slot.model.length(), LEADING + in.below( 4 ) );
        CALL_PART( qvVectorDel, span, 1, slot.ref.at() );
        span.erase( slot.model );
    }

    void reverse()
    {
        Slot &slot = any();
        qvVectorReverse( slot.ref.at() );

        if( slot.model.length() >= 2 )
            slot.model.own(), std::reverse( slot.model.items.begin(), slot.model.items.end() );
    }

    void create()
    {
        Slot &to = any(), &from = any();
        Span  span = in.span( from.model.length(), INNER );
        Model model{ { span.of( from.model.items ) } };

        if( in.flag() )
        {
            model.copy();
            return to.set( qvVectorCreateFromInner( from.ref, span.offset, span.count ), model );
        }

        // A block that has no free slots.
        auto *block = static_cast< QV_OBJ ** >( qvMemAlloc( span.count * 8 + 1 ) );

        for( QV_INT i = 0; i < span.count; i++ )
            block[i] = qv::retain( qvVectorBacking( from.ref )[span.offset + i] );

        to.set( qvVectorCreateFromObjsUse( block, span.count ), model );

        if( span.count == 0 )
            qvMemFree( block );
    }

    void look()
    {
        Slot  &a = any(), &b = any();
        Values values = a.model.items;
        require( qvVectorCompare( a.ref, b.ref ) == sign( values <=> b.model.items ) );

        if( values.empty() )
            return;

        QV_INT idx   = in.index( values ),
               first = std::find( values.begin(), values.end(), at( values, idx ) ) - values.begin();
        QV_OBJ *obj  = qvVectorBacking( a.ref )[idx];
        require( qvVectorIndexOfObj( a.ref, boxedInt( intOf( obj ) ), QV_TRUE ) == first );
        require( qvVectorIndexOfObj( a.ref, boxedInt( intOf( obj ) ), QV_FALSE ) == -1 );
        require( qvVectorIndexOfObj( a.ref, obj, QV_FALSE ) == first );
    }

    static void compare( QV_VECTOR *vec, const Model &model )
    {
        require( qvVectorLength( vec ) == model.length() && declared( vec ) == 8 * model.places() );

        for( QV_INT i = 0; i < model.length(); i++ )
            require( intOf( qvVectorBacking( vec )[i] ) == at( model.items, i ) );
    }

    void compare( Slot &slot )
    {
        fresh.reset();
        compare( slot.ref, slot.model );
    }
};
} // namespace

QV_FUZZ_WALK(
    VectorWalk, OP( share, 1 ) OP( clear, 1 ) OP( insert, 2 ) OP( objs, 1 ) OP( object, 1 ) OP( set, 1 ) OP( self, 1 )
                    OP( many, 1 ) OP( erase, 2 ) OP( reverse, 1 ) OP( create, 1 ) OP( look, 1 ) OP( inside, 1 ) )
