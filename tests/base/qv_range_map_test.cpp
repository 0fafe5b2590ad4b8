#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_range_map.h"
#include "qv/base/qv_range_map_private.h"

#include <algorithm>
#include <random>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
struct Interval
{
    QV_INT first, last, value;
    bool   operator==( const Interval & ) const = default;
};

void PrintTo( const Interval &interval, std::ostream *out )
{
    *out << "[" << interval.first << "," << interval.last << "]=" << interval.value;
}

using Intervals = std::vector< Interval >;

// What the family promises, said the plain way: cut everything at the borders of the interval, throw away what lies
// inside.
void modelDel( Intervals &list, QV_INT first, QV_INT last )
{
    Intervals result;

    for( const Interval &i : list )
    {
        if( i.first < first )
            result.push_back( { i.first, std::min( i.last, first - 1 ), i.value } );

        if( i.last > last )
            result.push_back( { std::max( i.first, last + 1 ), i.last, i.value } );
    }

    list = result;
}

void modelCollapse( Intervals &list )
{
    Intervals result;

    for( const Interval &i : list )
    {
        if( !result.empty() && result.back().last + 1 == i.first && result.back().value == i.value )
            result.back().last = i.last;
        else
            result.push_back( i );
    }

    list = result;
}

void modelSet( Intervals &list, QV_INT first, QV_INT last, QV_INT value )
{
    modelDel( list, first, last );
    list.push_back( { first, last, value } );
    std::sort( list.begin(), list.end(), []( auto &a, auto &b ) { return a.first < b.first; } );
}

// The value of a key, or 0.
QV_INT modelAt( const Intervals &list, QV_INT key )
{
    auto at = std::find_if( list.begin(), list.end(), [&]( auto &i ) { return i.first <= key && key <= i.last; } );

    return at == list.end() ? 0 : at->value;
}

Intervals ranges( QV_RANGE_MAP *map )
{
    Intervals result;

    for( QV_INT i = 0; i < qvRangeMapLength( map ); i++ )
    {
        Ref< QV_OBJ > value( qvRangeMapObjAt( map, i ) );
        result.push_back(
            { qvRangeMapStartingKeyAt( map, i ), qvRangeMapEndingKeyAt( map, i ),
              qvBoxedIntValue( qvBoxedIntFrom( value ) ) } );
    }

    return result;
}

void set( Ref< QV_RANGE_MAP > &map, QV_INT first, QV_INT last, QV_INT value )
{
    Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( value ) );
    qvRangeMapSetRangeKey( map.at(), first, last, qv::obj( boxed.get() ) );
}

Ref< QV_RANGE_MAP > mapOf( const Intervals &list )
{
    Ref< QV_RANGE_MAP > map( qvRangeMapCreate() );

    for( const Interval &i : list )
        set( map, i.first, i.last, i.value );

    return map;
}
} // namespace

TEST( RangeMap, ReachesBothEndsOfTheNumbers )
{
    const QV_INT low = QV_INT_MIN, high = QV_INT_MAX;

    Ref< QV_RANGE_MAP > map = mapOf( { { low, high, 1 } } );
    set( map, 0, 0, 2 );
    EXPECT_EQ( ( Intervals{ { low, -1, 1 }, { 0, 0, 2 }, { 1, high, 1 } } ), ranges( map ) );
    set( map, low, low, 3 );
    set( map, high, high, 3 );
    set( map, low, high, 4 );
    EXPECT_EQ( ( Intervals{ { low, high, 4 } } ), ranges( map ) );
    qvRangeMapDelRangeKey( map.at(), low, high );
    EXPECT_EQ( 0, qvRangeMapLength( map ) );
}

TEST( RangeMap, StaysWholeWhenItsValuesUseItsVariable )
{
    for( auto *when : { &whileComparing, &whileEnding } )
    {
        Ref< QV_RANGE_MAP > map( qvRangeMapCreateAutoCollapsing() );

        for( QV_INT key = 0; key < 100; key += 2 )
            qvRangeMapSetIntKey( map.at(), key, probe( key / 8 ) );

        *when = [&] { qvRangeMapDelRangeKey( map.at(), 0, 97 ); };
        qvRangeMapSetRangeKey( map.at(), 1, 9, probe( 1 ) );
        *when = nullptr;

        // Comparing comes before a change ends, the end of what it takes out after it.
        EXPECT_EQ( when == &whileComparing ? 46 : 1, qvRangeMapLength( map ) );
    }
}

TEST( RangeMap, RandomWalkAgreesWithListOfIntervals )
{
    std::mt19937 random( 39 );

    for( int walk = 0; walk < 40; walk++ )
    {
        bool                collapses = walk % 2;
        const QV_INT        span      = walk % 3 ? 60 : 2000;
        Intervals           model;
        Ref< QV_RANGE_MAP > map( collapses ? qvRangeMapCreateAutoCollapsing() : qvRangeMapCreate() );

        for( int step = 0; step < 400; step++ )
        {
            QV_INT first = static_cast< QV_INT >( random() % span ) - span / 2;
            QV_INT last  = first + static_cast< QV_INT >( random() % ( random() % 8 ? 6 : span / 2 ) );
            QV_INT value = 1 + static_cast< QV_INT >( random() % 3 );

            Intervals           modelBefore = model;
            Ref< QV_RANGE_MAP > before;

            if( random() % 4 == 0 )
                before = Ref< QV_RANGE_MAP >::share( map );

            switch( random() % 16 )
            {
            case 0:
                collapses ? qvRangeMapCollapse( map.at() ) : qvRangeMapSetAutoCollapse( map.at(), QV_TRUE );
                qvRangeMapSetAutoCollapse( map.at(), collapses );
                modelCollapse( model );
                break;

            case 1: case 2: case 3: case 4:
                qvRangeMapDelRangeKey( map.at(), first, last );
                modelDel( model, first, last );
                break;

            default:
                set( map, first, last, value );
                modelSet( model, first, last, value );

                if( collapses )
                    modelCollapse( model );
            }

            ASSERT_EQ( model, ranges( map ) );
            ASSERT_EQ( allocated( map.get() ), map->alloc * QV_INT( sizeof( QV___RANGE_MAP_ENTRY ) ) );

            // Who shares it keeps what was; a deletion of nothing leaves it shared.
            if( before )
            {
                ASSERT_EQ( modelBefore, ranges( before ) );
                qvRangeMapClear( map.at() );
                map = Ref< QV_RANGE_MAP >::share( before );
                qvRangeMapDelRangeKey( map.at(), 3000, 4000 );
                qvRangeMapSetAutoCollapse( map.at(), collapses );
                ASSERT_EQ( before.get(), map.get() );
                model = modelBefore;
            }

            for( QV_INT key : { first, last, last + 1 } )
            {
                QV_INT        expected = modelAt( model, key );
                Ref< QV_OBJ > found( qvRangeMapIntKey( map, key ) );

                ASSERT_EQ( expected, found ? qvBoxedIntValue( qvBoxedIntFrom( found ) ) : 0 );
                ASSERT_EQ( expected != 0, qvRangeMapHasIntKey( map, key ) == QV_TRUE );
            }
        }
    }
}

TEST( RangeMap, TheBlockGrowsBy33AndGives64Back )
{
    const QV_INT        entry = sizeof( QV___RANGE_MAP_ENTRY );
    Ref< QV_RANGE_MAP > map( qvRangeMapCreate() );
    EXPECT_EQ( 0, allocated( map.get() ) );

    for( QV_INT key = 0; key < 100; key++ )
        set( map, key, key, key );

    EXPECT_EQ( 132 * entry, allocated( map.get() ) );

    qvRangeMapDelRangeKey( map.at(), 69, 99 );
    EXPECT_EQ( 132 * entry, allocated( map.get() ) );
    qvRangeMapDelIntKey( map.at(), 68 );
    EXPECT_EQ( 68, qvRangeMapLength( map ) );
    EXPECT_EQ( 68 * entry, allocated( map.get() ) );
    qvRangeMapDelRangeKey( map.at(), 0, 99 );
    EXPECT_EQ( 4 * entry, allocated( map.get() ) );
}

TEST( RangeMap, AMapCanBeAValueOfItself )
{
    Ref< QV_RANGE_MAP > map = mapOf( { { 0, 9, 1 } } );
    qvRangeMapSetIntKey( map.at(), 5, qv::obj( map.get() ) );

    EXPECT_EQ( "{[0,4]=1, [5,5]={[0,9]=1}, [6,9]=1}", textOf( map.get() ) );
}

TEST( RangeMap, OrderIsByKeysThenValuesThenLength )
{
    const Intervals ascending[] = {
        {}, { { 0, 4, 9 } }, { { 0, 5, 1 } }, { { 0, 5, 1 }, { 7, 7, 1 } }, { { 0, 5, 2 } }, { { 1, 1, 0 } } };

    for( size_t a = 0; a < std::size( ascending ); a++ )
        for( size_t b = 0; b < std::size( ascending ); b++ )
            EXPECT_EQ(
                ( a > b ) - ( a < b ), qvRangeMapCompare( mapOf( ascending[a] ), mapOf( ascending[b] ) ) );
}

TEST( RangeMap, BrokenContractsAreReported )
{
    Ref< QV_RANGE_MAP > map = mapOf( { { 0, 9, 1 } } );
    QV_RANGE_MAP       *none = nullptr;

    EXPECT_BROKEN( qvRangeMapSetRangeKey( map.at(), 5, 4, qv::obj( map.get() ) ), "endingKey >= startingKey" );
    EXPECT_BROKEN( qvRangeMapSetIntKey( map.at(), 5, nullptr ), "value" );
    EXPECT_BROKEN( qvRangeMapDelIntKey( &none, 5 ), "*map" );
    EXPECT_BROKEN( qvRangeMapHasIntKey( none, 5 ), "map" );
    EXPECT_BROKEN( qvRangeMapObjAt( map, 1 ), "idx < map->length" );
}
