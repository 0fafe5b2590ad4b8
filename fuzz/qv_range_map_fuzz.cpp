// RangeMaps beside lists of intervals, up to the ends of the integers, with the places that growth and compaction give
// their blocks. Values are often objects that only the map holds.

#include "qv_fuzz_walk.h"

#include "qv/base/qv_range_map.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
struct Interval
{
    QV_INT first, last, value;

    auto operator<=>( const Interval & ) const = default;
};

struct Model
{
    std::vector< Interval > list;
    QV_INT                  alloc     = 0;
    bool                    collapses = false, shared = false;

    QV_INT length() const
    {
        return lengthOf( list );
    }

    // A copy is built by appending.
    void own( bool also = false )
    {
        if( shared || also )
            alloc = ( length() + 32 ) / 33 * 33;

        shared = false;
    }

    void insert( QV_INT at, Interval interval )
    {
        if( length() == alloc )
            alloc += 33;

        list.insert( list.begin() + at, interval );
    }

    void compact()
    {
        if( alloc > 64 && alloc - length() >= 64 )
            alloc -= 64;
    }

    void collapse()
    {
        std::vector< Interval > kept;

        for( const Interval &i : list )
        {
            if( !kept.empty() && kept.back().last < QV_INT_MAX && kept.back().last + 1 == i.first
                && kept.back().value == i.value )
                kept.back().last = i.last;
            else
                kept.push_back( i );
        }

        list = kept;
        compact();
    }

    bool touches( QV_INT first, QV_INT last ) const
    {
        return std::any_of( list.begin(), list.end(), [&]( auto &i ) { return i.first <= last && first <= i.last; } );
    }

    // Cuts the range that starts before `first`, shortens the one that ends after `last`. Returns the index of the
    // first range that is covered, and of the one after the last.
    std::pair< QV_INT, QV_INT > cut( QV_INT first, QV_INT last )
    {
        QV_INT from =
            std::find_if( list.begin(), list.end(), [&]( auto &i ) { return i.last >= first; } ) - list.begin();

        if( from < length() && at( list, from ).first < first )
        {
            insert( from, { at( list, from ).first, first - 1, at( list, from ).value } );
            at( list, ++from ).first = first;
        }

        QV_INT to = from;

        while( to < length() && at( list, to ).last <= last )
            to++;

        if( to < length() && at( list, to ).first <= last )
            at( list, to ).first = last + 1;

        return { from, to };
    }

    void erase( QV_INT first, QV_INT last )
    {
        if( !touches( first, last ) )
            return;

        own();
        auto [from, to] = cut( first, last );
        list            = without( list, from, to - from );
        compact();
    }

    void set( QV_INT first, QV_INT last, QV_INT value )
    {
        own();
        auto [from, to] = cut( first, last );

        if( from == to )
            insert( from, { first, last, value } );
        else
        {
            at( list, from ) = { first, last, value };
            list             = without( list, from + 1, to - from - 1 );
            compact();
        }

        if( collapses )
            collapse();
    }
};

struct RangeMapWalk : SlotWalk< RangeMapWalk, QV_RANGE_MAP, Model, qvRangeMapCreate >
{
    using SlotWalk::SlotWalk;

    void create()
    {
        Slot &to = any(), &from = any();
        Model model;

        switch( in.below( 3 ) )
        {
        case 0:
            model = from.model;
            model.own( true );
            return to.set( qvRangeMapCreateFrom( from.ref ), model );
        case 1:
            model.collapses = true;
            return to.set( qvRangeMapCreateAutoCollapsing(), model );
        default:
            qvRangeMapClear( to.ref.at() );
            to.model = model;
        }
    }

    // Keys near each other, at the borders of what is there, or anything.
    QV_INT key( const Slot &slot )
    {
        QV_INT how = in.below( 4 );

        if( how == 0 && slot.model.length() > 0 )
        {
            const Interval &i = at( slot.model.list, in.index( slot.model.list ) );
            return in.flag() ? i.first : i.last;
        }

        return how == 1 ? in.number() : in.below( 64 );
    }

    void set()
    {
        Slot  &slot  = any();
        QV_INT first = key( slot ), last = in.flag() ? first : key( slot );
        QV_INT value = 1 + in.below( 3 );

        if( last < first )
            std::swap( first, last );

        Ref< QV_OBJ > fresh = boxedInt( value );
        QV_OBJ       *obj   = fresh;

        // An object that only the map holds, perhaps in a range that will be covered.
        if( slot.model.length() > 0 && in.flag() )
        {
            QV_INT idx = in.index( slot.model.list );
            obj        = borrow( qvRangeMapObjAt( slot.ref, idx ) );
            value      = at( slot.model.list, idx ).value;
        }

        if( first == last )
            qvRangeMapSetIntKey( slot.ref.at(), first, obj );
        else
            qvRangeMapSetRangeKey( slot.ref.at(), first, last, obj );

        slot.model.set( first, last, value );
    }

    // Every other key, up or down, so that there are many ranges; or the ones between them.
    void run()
    {
        Slot  &slot  = any();
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

    void erase()
    {
        Slot  &slot  = any();
        QV_INT first = key( slot ), last = key( slot );

        if( last < first )
            std::swap( first, last );

        qvRangeMapDelRangeKey( slot.ref.at(), first, last );
        slot.model.erase( first, last );
    }

    void collapse()
    {
        Slot &slot = any();
        bool  flag = in.flag(), on = in.flag();

        if( flag )
        {
            qvRangeMapSetAutoCollapse( slot.ref.at(), on );

            if( on == slot.model.collapses )
                return;

            slot.model.own();
            slot.model.collapses = on;

            if( on && slot.model.length() > 0 )
                slot.model.collapse();

            return;
        }

        qvRangeMapCollapse( slot.ref.at() );

        if( slot.model.length() > 0 )
            slot.model.own(), slot.model.collapse();
    }

    // The map becomes a value of its own successor, which holds it as it was.
    void self()
    {
        Slot               &slot = any();
        Ref< QV_RANGE_MAP > map( qvRangeMapCreateFrom( slot.ref ) );
        QV_INT              at = key( slot );
        qvRangeMapSetIntKey( map.at(), at, qvRangeMapObj( map ) );
        Ref< QV_OBJ > inner( qvRangeMapIntKey( map, at ) );
        require( qvRangeMapEquals( qvRangeMapFrom( inner ), slot.ref ) );
    }

    void look()
    {
        Slot  &a = any(), &b = any();
        QV_INT at    = key( a );
        auto   found = std::find_if(
            a.model.list.begin(), a.model.list.end(), [&]( auto &i ) { return i.first <= at && at <= i.last; } );
        bool has = found != a.model.list.end();

        Ref< QV_OBJ > value( qvRangeMapIntKey( a.ref, at ) );
        require(
            qvRangeMapHasIntKey( a.ref, at ) == has && ( value ? intOf( value ) : 0 ) == ( has ? found->value : 0 ) );

        require( qvRangeMapCompare( a.ref, b.ref ) == sign( a.model.list <=> b.model.list ) );
    }

    static void compare( Slot &slot )
    {
        QV_INT idx = 0;
        require( qvRangeMapLength( slot.ref ) == slot.model.length() );
        require( qvRangeMapAutoCollapse( slot.ref ) == slot.model.collapses );
        require( declared( slot.ref.get() ) == 24 * slot.model.alloc );

        for( const Interval &i : slot.model.list )
        {
            Interval found{
                qvRangeMapStartingKeyAt( slot.ref, idx ), qvRangeMapEndingKeyAt( slot.ref, idx ),
                intOf( borrow( qvRangeMapObjAt( slot.ref, idx ) ) ) };
            require( found == i );
            idx++;
        }
    }
};
} // namespace

QV_FUZZ_WALK(
    RangeMapWalk, OP( share, 1 ) OP( create, 1 ) OP( set, 3 ) OP( run, 1 ) OP( erase, 1 ) OP( collapse, 1 )
                      OP( self, 1 ) OP( look, 1 ) )
