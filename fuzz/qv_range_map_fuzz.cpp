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
    bool                    collapses = false;

    QV_INT length() const
    {
        return static_cast< QV_INT >( list.size() );
    }

    // A copy is built by appending.
    void own( bool shared )
    {
        if( shared )
            alloc = ( length() + 32 ) / 33 * 33;
    }

    void insert( size_t at, Interval interval )
    {
        if( length() == alloc )
            alloc += 33;

        list.insert( list.begin() + static_cast< QV_INT >( at ), interval );
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

    // Cuts the range that starts before `first`, shortens the one that ends behind `last`; gives where the covered ones
    // are, the two ends of them.
    std::pair< size_t, size_t > cut( QV_INT first, QV_INT last )
    {
        size_t from = 0;

        while( from < list.size() && list[from].last < first )
            from++;

        if( from < list.size() && list[from].first < first )
        {
            insert( from, { list[from].first, first - 1, list[from].value } );
            list[++from].first = first;
        }

        size_t to = from;

        while( to < list.size() && list[to].last <= last )
            to++;

        if( to < list.size() && list[to].first <= last )
            list[to].first = last + 1;

        return { from, to };
    }

    void erase( bool shared, QV_INT first, QV_INT last )
    {
        if( !touches( first, last ) )
            return;

        own( shared );
        auto [from, to] = cut( first, last );
        list.erase( list.begin() + static_cast< QV_INT >( from ), list.begin() + static_cast< QV_INT >( to ) );
        compact();
    }

    void set( bool shared, QV_INT first, QV_INT last, QV_INT value )
    {
        own( shared );
        auto [from, to] = cut( first, last );

        if( from == to )
            insert( from, { first, last, value } );
        else
        {
            list[from] = { first, last, value };
            list.erase( list.begin() + static_cast< QV_INT >( from + 1 ), list.begin() + static_cast< QV_INT >( to ) );
            compact();
        }

        if( collapses )
            collapse();
    }
};

struct RangeMapWalk : SlotWalk< QV_RANGE_MAP, Model, qvRangeMapCreate >
{
    using SlotWalk::SlotWalk;

    void create()
    {
        Slot &to = slots.any( in ), &from = slots.any( in );
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
            const Interval &i = slot.model.list[static_cast< size_t >( in.upTo( slot.model.length() - 1 ) )];
            return in.flag() ? i.first : i.last;
        }

        return how == 1 ? in.number() : in.below( 64 );
    }

    void set()
    {
        Slot  &slot   = slots.any( in );
        bool   shared = slots.shared( slot );
        QV_INT first = key( slot ), last = in.flag() ? first : key( slot );
        QV_INT value = 1 + in.below( 3 );

        if( last < first )
            std::swap( first, last );

        Ref< QV_OBJ > fresh = boxedInt( value );
        QV_OBJ       *obj   = fresh;

        // An object that only the map holds, perhaps in a range that will be covered.
        if( slot.model.length() > 0 && in.flag() )
        {
            QV_INT idx = in.upTo( slot.model.length() - 1 );
            obj        = Ref< QV_OBJ >( qvRangeMapObjAt( slot.ref, idx ) ).get();
            value      = slot.model.list[static_cast< size_t >( idx )].value;
        }

        if( first == last )
            qvRangeMapSetIntKey( slot.ref.at(), first, obj );
        else
            qvRangeMapSetRangeKey( slot.ref.at(), first, last, obj );

        slot.model.set( shared, first, last, value );
    }

    // Every other key, up or down, so that there are many ranges; or the ones between them.
    void run()
    {
        Slot  &slot  = slots.any( in );
        QV_INT start = in.below( 300 ), count = in.length( 200 ), step = 1 + in.below( 3 );
        bool   down = in.flag(), deletes = in.below( 3 ) == 0;

        for( QV_INT i = 0; i < count; i++ )
        {
            bool   shared = slots.shared( slot );
            QV_INT at     = start + step * ( down ? count - 1 - i : i );

            if( deletes )
            {
                qvRangeMapDelIntKey( slot.ref.at(), at );
                slot.model.erase( shared, at, at );
            }
            else
            {
                qvRangeMapSetIntKey( slot.ref.at(), at, boxedInt( 1 + at % 2 ) );
                slot.model.set( shared, at, at, 1 + at % 2 );
            }
        }
    }

    void erase()
    {
        Slot  &slot   = slots.any( in );
        bool   shared = slots.shared( slot );
        QV_INT first = key( slot ), last = key( slot );

        if( last < first )
            std::swap( first, last );

        qvRangeMapDelRangeKey( slot.ref.at(), first, last );
        slot.model.erase( shared, first, last );
    }

    void collapse()
    {
        Slot &slot   = slots.any( in );
        bool  shared = slots.shared( slot ), flag = in.flag(), on = in.flag();

        if( flag )
        {
            qvRangeMapSetAutoCollapse( slot.ref.at(), on );

            if( on == slot.model.collapses )
                return;

            slot.model.own( shared );
            slot.model.collapses = on;

            if( on && slot.model.length() > 0 )
                slot.model.collapse();

            return;
        }

        qvRangeMapCollapse( slot.ref.at() );

        if( slot.model.length() > 0 )
            slot.model.own( shared ), slot.model.collapse();
    }

    // The map becomes a value of its own successor, which holds it as it was.
    void self()
    {
        Slot               &slot = slots.any( in );
        Ref< QV_RANGE_MAP > map( qvRangeMapCreateFrom( slot.ref ) );
        QV_INT              at = key( slot );
        qvRangeMapSetIntKey( map.at(), at, qvRangeMapObj( map ) );
        Ref< QV_OBJ > inner( qvRangeMapIntKey( map, at ) );
        require( qvRangeMapEquals( qvRangeMapFrom( inner ), slot.ref ) );
    }

    void look()
    {
        Slot  &a = slots.any( in ), &b = slots.any( in );
        QV_INT at    = key( a );
        auto   found = std::find_if(
            a.model.list.begin(), a.model.list.end(), [&]( auto &i ) { return i.first <= at && at <= i.last; } );
        bool has = found != a.model.list.end();

        Ref< QV_OBJ > value( qvRangeMapIntKey( a.ref, at ) );
        require(
            qvRangeMapHasIntKey( a.ref, at ) == has && ( value ? intOf( value ) : 0 ) == ( has ? found->value : 0 ) );

        auto order = a.model.list <=> b.model.list;
        require( qvRangeMapCompare( a.ref, b.ref ) == ( order > 0 ) - ( order < 0 ) );
    }

    void check()
    {
        for( Slot &slot : slots.slots )
        {
            QV_INT idx = 0;
            require( qvRangeMapLength( slot.ref ) == slot.model.length() );
            require( qvRangeMapAutoCollapse( slot.ref ) == slot.model.collapses );
            require( declared( slot.ref.get() ) == 24 * slot.model.alloc );

            for( const Interval &i : slot.model.list )
            {
                require(
                    qvRangeMapStartingKeyAt( slot.ref, idx ) == i.first
                    && qvRangeMapEndingKeyAt( slot.ref, idx ) == i.last );
                require( intOf( Ref< QV_OBJ >( qvRangeMapObjAt( slot.ref, idx++ ) ) ) == i.value );
            }
        }

        slots.checkCounts();
    }
};
} // namespace

QV_FUZZ_WALK(
    RangeMapWalk,
    OP( share ) OP( create ) OP( set ) OP( set ) OP( set ) OP( run ) OP( erase ) OP( collapse ) OP( self ) OP( look ) )
