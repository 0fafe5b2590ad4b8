// Vectors beside std::vector. What is put in may be an element that only the Vector holds, a part of its block, or the
// Vector itself.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
using Values = std::vector< QV_INT >; // of the boxed integers that are the elements

struct VectorWalk : Slots< VectorWalk, QV_VECTOR, Values, qvVectorCreate >
{
    QV_INT next = 0;

    void insert( Slot &dest, Slot &src )
    {
        Values from = src.model;
        Span   span = in.span( lengthOf( from ), in.below( 5 ) );
        QV_INT at   = place( dest );

        if( at == 0 && in.flag() )
            CALL_FORM( qvVectorPrepend, span, 1, dest.ref.at(), src.ref );
        else if( at == lengthOf( dest.model ) )
            CALL_FORM( qvVectorAppend, span, 1, dest.ref.at(), src.ref );
        else
            CALL_FORM( qvVectorInsert, span, 1, dest.ref.at(), at, src.ref );

        put( dest.model, at, span.of( from ) );
    }

    // New ones, sometimes as many as there are free places or nearly, or elements of the block that they go into.
    void objs( Slot &slot, Slot & )
    {
        QV_INT         at = place( slot ), count = in.flag() ? in.length( 100 ) : in.upTo( freePlaces( slot, 8 ) + 1 );
        Span           span   = in.span( lengthOf( slot.model ), INNER );
        Values         values = span.of( slot.model );
        QV_OBJ *const *from   = qvVectorBacking( slot.ref ) + span.from;
        Ref< QV_VECTOR > made( qvVectorCreate() );

        if( in.flag() )
        {
            for( values.clear(); count > 0; count-- )
                qvVectorAppendInt( made.at(), next ), values.push_back( next++ );

            from = qvVectorBacking( made );
        }

        qvVectorInsertObjs( slot.ref.at(), at, from, lengthOf( values ) );
        put( slot.model, at, values );
    }

    // One object, at an end perhaps through an index that is none: a new one, or one that perhaps only the Vector holds.
    void object( Slot &slot, Slot & )
    {
        bool          sets = in.flag();
        QV_INT        idx = sets ? place( slot ) - in.below( 2 ) : place( slot ), value = next++;
        Ref< QV_OBJ > fresh = boxedInt( value );
        QV_OBJ       *obj   = fresh;

        if( !slot.model.empty() && in.flag() )
        {
            QV_INT from = in.upTo( lengthOf( slot.model ) - 1 );
            value       = at( slot.model, from );
            obj         = qvVectorBacking( slot.ref )[from];
        }

        ( sets ? qvVectorSetObjAt : qvVectorInsertObj )( slot.ref.at(), idx, obj );

        if( !sets || idx == -1 || idx == lengthOf( slot.model ) )
            put( slot.model, std::max< QV_INT >( idx, 0 ), { value } );
        else
            at( slot.model, idx ) = value;
    }

    // The Vector becomes an element of its own successor, which holds it as it was.
    void self( Slot &slot, Slot & )
    {
        QV_INT at = place( slot );
        qvVectorInsertObj( slot.ref.at(), at, obj( slot.ref.get() ) );
        require( qvVectorLength( slot.ref ) == lengthOf( slot.model ) + 1 );
        require( valuesOf( qvVectorFrom( qvVectorBacking( slot.ref )[at] ) ) == slot.model );
        qvVectorDelAt( slot.ref.at(), at );
    }

    // One after the other, as blocks fill up and empty.
    void many( Slot &slot, Slot & )
    {
        Values &model = slot.model;
        bool    takes = in.flag(), last = in.flag();

        for( QV_INT count = in.length( 200 ); count > 0 && !( takes && model.empty() ); count-- )
        {
            auto place = last ? model.end() : model.begin();

            if( takes )
            {
                Ref< QV_OBJ > taken( ( last ? qvVectorPop : qvVectorUnshift )( slot.ref.at() ) );
                require( intOf( taken ) == *( place -= last ) );
                model.erase( place );
            }
            else
            {
                if( in.flag() )
                    ( last ? qvVectorPush : qvVectorShift )( slot.ref.at(), boxedInt( next ) );
                else
                    ( last ? qvVectorAppendObjUse : qvVectorPrependObjUse )( slot.ref.at(), boxedInt( next ).give() );

                model.insert( place, next++ );
            }
        }
    }

    void erase( Slot &slot, Slot & )
    {
        Span span = in.span( lengthOf( slot.model ), LEADING + in.below( 4 ) );
        CALL_PART( qvVectorDel, span, 1, slot.ref.at() );
        slot.model = span.rest( slot.model );
    }

    void reverse( Slot &slot, Slot & )
    {
        qvVectorReverse( slot.ref.at() );
        std::reverse( slot.model.begin(), slot.model.end() );
    }

    // By some low bits, so that there are equals.
    void order( Slot &slot, Slot & )
    {
        QV_INT mask   = in.below( 3 ) == 0 ? -1 : 7 << in.below( 3 );
        auto   before = [&]( QV_INT a, QV_INT b ) { return ( a & mask ) < ( b & mask ); };
        auto   order  = []( QV_OBJ *a, QV_OBJ *b, void *bits )
        {
            return ( intOf( a ) & *static_cast< QV_INT * >( bits ) )
                   - ( intOf( b ) & *static_cast< QV_INT * >( bits ) );
        };
        Span span = in.span( lengthOf( slot.model ), INNER );

        if( mask == -1 )
            qvVectorOrderInner( slot.ref.at(), span.from, span.size );
        else
            qvVectorOrderInnerBy( slot.ref.at(), span.from, span.size, order, &mask );

        std::stable_sort( slot.model.begin() + span.from, slot.model.begin() + span.from + span.size, before );
        require(
            qvVectorIsOrderedBy( slot.ref, order, &mask )
            == std::is_sorted( slot.model.begin(), slot.model.end(), before ) );
    }

    void create( Slot &to, Slot &from )
    {
        Span   span   = in.span( lengthOf( from.model ), INNER );
        Values values = span.of( from.model );

        if( in.flag() || values.empty() )
            return to.set( qvVectorCreateFromInner( from.ref, span.from, span.size ), values );

        // A block that has no free slots.
        auto *block = static_cast< QV_OBJ ** >( qvMemAlloc( span.size * 8 ) );

        for( QV_INT i = 0; i < span.size; i++ )
            block[i] = retain( qvVectorBacking( from.ref )[span.from + i] );

        to.set( qvVectorCreateFromObjsUse( block, span.size ), values );
    }

    void look( Slot &a, Slot &b )
    {
        Values &values = a.model;
        require( qvVectorCompare( a.ref, b.ref ) == sign( values <=> b.model ) );

        if( values.empty() )
            return;

        QV_INT  idx   = in.upTo( lengthOf( values ) - 1 );
        QV_INT  first = std::find( values.begin(), values.end(), at( values, idx ) ) - values.begin();
        QV_OBJ *obj   = qvVectorBacking( a.ref )[idx];
        require( qvVectorIndexOfObj( a.ref, boxedInt( intOf( obj ) ), QV_TRUE ) == first );
        require( qvVectorIndexOfObj( a.ref, boxedInt( intOf( obj ) ), QV_FALSE ) == -1 );
        require( qvVectorIndexOfObj( a.ref, obj, QV_FALSE ) == first );
    }

    static Values valuesOf( QV_VECTOR *vec )
    {
        Values values( static_cast< size_t >( qvVectorLength( vec ) ) );
        std::transform( qvVectorBacking( vec ), qvVectorBacking( vec ) + values.size(), values.begin(), intOf );
        return values;
    }

    static void compare( Slot &slot )
    {
        require( valuesOf( slot.ref ) == slot.model && freePlaces( slot, 8 ) <= 128 + lengthOf( slot.model ) );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK(
    VectorWalk, OP( share ) OP( insert ) OP( insert ) OP( objs ) OP( objs ) OP( object ) OP( object ) OP( self )
                    OP( many ) OP( erase ) OP( erase ) OP( reverse ) OP( order ) OP( create ) OP( look ) )
