#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_priority_map.h"
#include "qv/base/qv_vector.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
// An object that orders by its value, whichever it is.
Ref< QV_OBJ > object( QV_INT value )
{
    return Ref< QV_OBJ >( qv::obj( qvBoxedIntCreate( value ) ) );
}

QV_INT valueOf( QV_OBJ *owned )
{
    Ref< QV_OBJ > held( owned );
    return owned ? qvBoxedIntValue( qvBoxedIntFrom( owned ) ) : -1;
}

void set( Ref< QV_PRIORITY_MAP > &map, QV_INT priority, QV_INT value )
{
    qvPriorityMapSet( map.at(), priority, object( value ) );
}

// Pairs of priority and value, in their order.
using Entries = std::vector< std::pair< QV_INT, QV_INT > >;

Entries entries( QV_PRIORITY_MAP *map )
{
    Entries          result;
    Ref< QV_VECTOR > values( qvPriorityMapValuesVector( map ) );
    EXPECT_EQ( qvPriorityMapLength( map ), qvVectorLength( values ) );

    for( QV_INT i = 0; i < qvPriorityMapLength( map ); i++ )
    {
        QV_INT value = valueOf( qvPriorityMapValueAt( map, i ) );
        EXPECT_EQ( value, valueOf( qvVectorObjAt( values, i ) ) );
        result.emplace_back( qvPriorityMapPriorityAt( map, i ), value );
    }

    return result;
}
} // namespace

TEST( PriorityMap, HasALowestAndAHighest )
{
    Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );
    QV_INT                 priority = 7;
    EXPECT_EQ( nullptr, qvPriorityMapHighest( map, &priority ) );
    EXPECT_EQ( 0, priority );

    for( QV_INT value : { 4, 1, 3, 2 } )
        set( map, value == 3 ? QV_INT_MIN : 10, value );

    EXPECT_EQ( 3, valueOf( qvPriorityMapLowest( map, &priority ) ) );
    EXPECT_EQ( QV_INT_MIN, priority );
    EXPECT_EQ( 4, valueOf( qvPriorityMapHighest( map, nullptr ) ) );
}

TEST( PriorityMap, SharesUntilOneIsChanged )
{
    Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );
    set( map, 1, 1 );
    set( map, 2, 2 );

    Ref< QV_PRIORITY_MAP > held = Ref< QV_PRIORITY_MAP >::share( map );
    qvPriorityMapDel( map.at(), object( 3 ) );
    EXPECT_EQ( held.get(), map.get() );

    // A map that goes into itself goes in as it was.
    qvPriorityMapSet( map.at(), 0, qv::obj( map.get() ) );
    EXPECT_EQ( ( Entries{ { 1, 1 }, { 2, 2 } } ), entries( held ) );
    EXPECT_EQ( 3, qvPriorityMapLength( map ) );
    EXPECT_EQ( qv::obj( held.get() ), Ref< QV_OBJ >( qvPriorityMapValueAt( map, 0 ) ).get() );

    Ref< QV_PRIORITY_MAP > copy( qvPriorityMapCreateFrom( held ) );
    EXPECT_TRUE( qvPriorityMapEquals( copy, held ) );
    set( copy, 3, 1 );
    EXPECT_EQ( 1, qvPriorityMapCompare( copy, held ) );
    EXPECT_EQ( ( Entries{ { 1, 1 }, { 2, 2 } } ), entries( held ) );
}

TEST( PriorityMap, BehavesAsASetOfPairs )
{
    std::mt19937                          random( 5 );
    Ref< QV_PRIORITY_MAP >                map( qvPriorityMapCreate() );
    std::map< QV_INT, QV_INT >            priorities; // by value
    std::set< std::pair< QV_INT, QV_INT > > order;

    auto forget = [&]( QV_INT value )
    {
        if( auto at = priorities.find( value ); at != priorities.end() )
        {
            order.erase( { at->second, value } );
            priorities.erase( at );
        }
    };

    for( int step = 0; step < 20000; step++ )
    {
        QV_INT value    = random() % 200;
        QV_INT priority = static_cast< QV_INT >( random() % 40 ) - 20;
        int    what     = static_cast< int >( random() % 100 );

        Ref< QV_PRIORITY_MAP > held = Ref< QV_PRIORITY_MAP >::share( step % 100 ? nullptr : map.get() );
        Entries                before( order.begin(), order.end() );

        if( what < 55 )
        {
            set( map, priority, value );
            forget( value );
            priorities[value] = priority;
            order.emplace( priority, value );
        }
        else if( what < 85 )
        {
            qvPriorityMapDel( map.at(), object( value ) );
            forget( value );
        }
        else if( !order.empty() )
        {
            size_t at = what < 95 ? 0 : random() % order.size();
            qvPriorityMapDelAt( map.at(), static_cast< QV_INT >( at ) );
            forget( std::next( order.begin(), static_cast< ptrdiff_t >( at ) )->second );
        }

        if( step % 50 == 0 )
        {
            ASSERT_EQ( Entries( order.begin(), order.end() ), entries( map ) );

            ASSERT_TRUE( !held || before == entries( held ) );
        }

        // One object seen from all sides.
        auto   known = priorities.find( value );
        QV_INT idx   = -1, up = -1, down = -1, found;

        if( known != priorities.end() )
        {
            auto at = order.find( { known->second, value } );
            idx     = std::distance( order.begin(), at );
            up      = std::next( at ) == order.end() ? -1 : std::next( at )->second;
            down    = at == order.begin() ? -1 : std::prev( at )->second;
        }

        ASSERT_EQ( idx, qvPriorityMapIndexOf( map, object( value ) ) );
        ASSERT_EQ( idx != -1, qvPriorityMapHas( map, object( value ) ) );
        ASSERT_EQ( up, valueOf( qvPriorityMapHigher( map, object( value ), &found ) ) );
        ASSERT_EQ( up == -1 ? 0 : priorities[up], found );
        ASSERT_EQ( down, valueOf( qvPriorityMapLower( map, object( value ), &found ) ) );
        ASSERT_EQ( down == -1 ? 0 : priorities[down], found );
    }

    qvPriorityMapClear( map.at() );
    EXPECT_EQ( 0, qvPriorityMapLength( map ) );
}

TEST( PriorityMap, StaysWholeWhenItsObjectsUseItsVariable )
{
    for( int what = 0; what < 4; what++ )
    {
        Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );

        for( QV_INT value = 0; value < 20; value++ )
            qvPriorityMapSet( map.at(), value % 3, probe( value ) );

        whileComparing = [&] { qvPriorityMapClear( map.at() ); };

        if( what < 2 )
            qvPriorityMapSet( map.at(), 7, probe( what ? 5 : 50 ) );
        else if( what == 2 )
            qvPriorityMapDel( map.at(), probe( 5 ) );
        else
            qvPriorityMapDelAt( map.at(), 5 );

        whileComparing = nullptr;
        EXPECT_EQ( what == 0 ? 21 : what == 1 ? 20 : 19, qvPriorityMapLength( map ) );
    }
}

TEST( PriorityMap, BrokenContractsAreReported )
{
    Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );
    QV_PRIORITY_MAP       *none = nullptr;

    EXPECT_BROKEN( qvPriorityMapSet( &none, 1, nullptr ), "*map" );
    EXPECT_BROKEN( qvPriorityMapDel( map.at(), nullptr ), "obj" );
    EXPECT_BROKEN( qvPriorityMapDelAt( map.at(), 0 ), "idx < dict->length" );
    EXPECT_BROKEN( qvPriorityMapPriorityAt( map, -1 ), "idx >= 0" );
}
