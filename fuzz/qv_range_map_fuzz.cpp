// RangeMaps beside lists of intervals, up to the ends of the integers. Values are often objects that only the map holds.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
struct Interval
{
    QV_INT first, last, value;

    auto operator<=>( const Interval & ) const = default;
};

struct Model
{
    std::vector< Interval > list;
    bool                    collapses = false;

    void collapse()
    {
        std::vector< Interval > kept;

        for( const Interval &i : list )
        {
            if( !kept.empty() && kept.back().last == i.first - 1 && kept.back().value == i.value )
                kept.back().last = i.last;
            else
                kept.push_back( i );
        }

        list = kept;
    }

    void erase( QV_INT first, QV_INT last )
    {
        std::vector< Interval > kept;

        for( const Interval &i : list )
        {
            if( i.first < first )
                kept.push_back( { i.first, std::min( i.last, first - 1 ), i.value } );

            if( i.last > last )
                kept.push_back( { std::max( i.first, last + 1 ), i.last, i.value } );
        }

        list = kept;
    }

    void set( QV_INT first, QV_INT last, QV_INT value )
    {
        erase( first, last );
        Interval interval{ first, last, value };
        list.insert( std::lower_bound( list.begin(), list.end(), interval ), interval );

        if( collapses )
            collapse();
    }
};

struct RangeMapWalk : Slots< RangeMapWalk, QV_RANGE_MAP, Model, qvRangeMapCreate >
{
    void create( Slot &to, Slot &from )
    {
        QV_INT how = in.below( 3 );

        how == 0   ? to.set( qvRangeMapCreateFrom( from.ref ), from.model )
        : how == 1 ? to.set( qvRangeMapCreateAutoCollapsing(), { {}, true } )
                   : to.set( qvRangeMapCreate(), {} );
    }

    // Keys near each other, at the borders of what is there, or anything.
    QV_INT key( const Slot &slot )
    {
        QV_INT how = in.below( 4 );

        if( how == 0 && !slot.model.list.empty() )
        {
            const Interval &i = at( slot.model.list, in.upTo( lengthOf( slot.model.list ) - 1 ) );
            return in.flag() ? i.first : i.last;
        }

        return how == 1 ? in.number() : in.below( 64 );
    }

    void set( Slot &slot, Slot & )
    {
        QV_INT        a = key( slot ), b = in.flag() ? a : key( slot ), value = 1 + in.below( 3 );
        Ref< QV_OBJ > fresh = boxedInt( value );
        QV_OBJ       *obj   = fresh;

        // An object that only the map holds, perhaps in a range that will be covered.
        if( !slot.model.list.empty() && in.flag() )
        {
            QV_INT idx = in.upTo( lengthOf( slot.model.list ) - 1 );
            obj        = borrow( qvRangeMapObjAt( slot.ref, idx ) );
            value      = at( slot.model.list, idx ).value;
        }

        if( a == b )
            qvRangeMapSetIntKey( slot.ref.at(), a, obj );
        else
            qvRangeMapSetRangeKey( slot.ref.at(), std::min( a, b ), std::max( a, b ), obj );

        slot.model.set( std::min( a, b ), std::max( a, b ), value );
    }

    // Every other key, up or down, so that there are many ranges; or the ones between them.
    void run( Slot &slot, Slot & )
    {
        QV_INT start = in.below( 300 ), count = in.length( 200 ), step = 1 + in.below( 3 );
        bool   down = in.flag(), deletes = in.below( 3 ) == 0;

        for( QV_INT i = 0; i < count; i++ )
        {
            QV_INT at = start + step * ( down ? count - 1 - i : i );

            if( deletes )
            {
                qvRangeMapDelIntKey( slot.ref.at(), at );
                slot.model.erase( at, at );
            }
            else
            {
                qvRangeMapSetIntKey( slot.ref.at(), at, boxedInt( 1 + at % 2 ) );
                slot.model.set( at, at, 1 + at % 2 );
            }
        }
    }

    void erase( Slot &slot, Slot & )
    {
        QV_INT a = key( slot ), b = key( slot );
        qvRangeMapDelRangeKey( slot.ref.at(), std::min( a, b ), std::max( a, b ) );
        slot.model.erase( std::min( a, b ), std::max( a, b ) );
    }

    // A block with 64 free places gives up as many, even if nothing is joined, unless it is empty.
    void collapse( Slot &slot, Slot & )
    {
        QV_INT how = in.below( 3 ), before = references( slot.ref.get() ) > 1 ? 0 : declared( slot.ref.get() ) / 24;
        bool   collapses = how == 2 || ( how == 1 && !slot.model.collapses );

        if( how < 2 )
            qvRangeMapSetAutoCollapse( slot.ref.at(), slot.model.collapses = how );
        else
            qvRangeMapCollapse( slot.ref.at() );

        if( collapses )
            slot.model.collapse();

        QV_INT length = lengthOf( slot.model.list );
        require(
            !collapses || before <= 64 || length == 0 || before - length < 64
            || declared( slot.ref.get() ) == 24 * ( before - 64 ) );
    }

    // The map becomes a value of its own successor, which holds it as it was.
    void self( Slot &slot, Slot & )
    {
        QV_INT              at = key( slot );
        Ref< QV_RANGE_MAP > map( qvRangeMapCreateFrom( slot.ref ) );
        qvRangeMapSetIntKey( map.at(), at, qvRangeMapObj( map ) );
        require( qvRangeMapEquals( qvRangeMapFrom( borrow( qvRangeMapIntKey( map, at ) ) ), slot.ref ) );
    }

    void look( Slot &a, Slot &b )
    {
        QV_INT at = key( a ), value = 0;

        for( const Interval &i : a.model.list )
            if( i.first <= at && at <= i.last )
                value = i.value;

        QV_OBJ *found = borrow( qvRangeMapIntKey( a.ref, at ) );
        require( qvRangeMapHasIntKey( a.ref, at ) == ( value > 0 ) && ( found ? intOf( found ) : 0 ) == value );
        require( qvRangeMapCompare( a.ref, b.ref ) == sign( a.model.list <=> b.model.list ) );
    }

    static void compare( Slot &slot )
    {
        QV_RANGE_MAP           *map = slot.ref;
        std::vector< Interval > list;

        for( QV_INT i = 0; i < qvRangeMapLength( map ); i++ )
            list.push_back(
                { qvRangeMapStartingKeyAt( map, i ), qvRangeMapEndingKeyAt( map, i ),
                  intOf( borrow( qvRangeMapObjAt( map, i ) ) ) } );

        require( list == slot.model.list && qvRangeMapAutoCollapse( map ) == slot.model.collapses );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK(
    RangeMapWalk,
    OP( share ) OP( create ) OP( set ) OP( set ) OP( set ) OP( run ) OP( erase ) OP( collapse ) OP( self ) OP( look ) )
