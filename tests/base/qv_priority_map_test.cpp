#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_priority_map.h"
#include "qv/base/qv_vector.h"

#include <algorithm>
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
    std::mt19937                            random( 5 );
    Ref< QV_PRIORITY_MAP >                  map( qvPriorityMapCreate() );
    std::set< std::pair< QV_INT, QV_INT > > order;

    for( int step = 0; step < 10000; step++ )
    {
        Entries                before( order.begin(), order.end() );
        QV_INT                 value    = random() % 200, priority = random() % 40 - QV_INT( 20 ), idx = random() % 200;
        int                    what     = static_cast< int >( random() % 100 );
        Ref< QV_PRIORITY_MAP > held     = Ref< QV_PRIORITY_MAP >::share( step % 100 ? nullptr : map.get() );
        auto                   isValue  = [&]( auto &entry ) { return entry.second == value; };

        if( what < 55 )
        {
            set( map, priority, value );
            std::erase_if( order, isValue );
            order.emplace( priority, value );
        }
        else if( what < 85 )
        {
            qvPriorityMapDel( map.at(), object( value ) );
            std::erase_if( order, isValue );
        }
        else if( idx < QV_INT( order.size() ) )
        {
            qvPriorityMapDelAt( map.at(), idx );
            order.erase( std::next( order.begin(), idx ) );
        }

        ASSERT_TRUE( !held || before == entries( held ) );
        ASSERT_TRUE( step % 50 || Entries( order.begin(), order.end() ) == entries( map ) );

        // One object seen from all sides.
        auto   at    = std::find_if( order.begin(), order.end(), isValue );
        bool   isIn  = at != order.end();
        auto   none  = std::make_pair( QV_INT( 0 ), QV_INT( -1 ) );
        auto   up    = isIn && std::next( at ) != order.end() ? *std::next( at ) : none;
        auto   down  = isIn && at != order.begin() ? *std::prev( at ) : none;
        auto   last  = order.empty() ? none : *order.rbegin();
        auto   first = order.empty() ? none : *order.begin();
        auto   asked = [&]( QV_OBJ *found ) { return std::make_pair( priority, valueOf( found ) ); };

        ASSERT_EQ( isIn ? std::distance( order.begin(), at ) : -1, qvPriorityMapIndexOf( map, object( value ) ) );
        ASSERT_EQ( isIn, qvPriorityMapHas( map, object( value ) ) );
        QV_OBJ *found = qvPriorityMapHigher( map, object( value ), &priority );
        ASSERT_EQ( up, asked( found ) );
        found = qvPriorityMapLower( map, object( value ), &priority );
        ASSERT_EQ( down, asked( found ) );
        found = qvPriorityMapHighest( map, &priority );
        ASSERT_EQ( last, asked( found ) );
        found = qvPriorityMapLowest( map, &priority );
        ASSERT_EQ( first, asked( found ) );
    }
}

TEST( PriorityMap, StaysWholeWhenItsObjectsUseItsVariable )
{
    for( int what = 0; what < 5; what++ )
    {
        Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );

        for( QV_INT value = 0; value < 20; value++ )
            qvPriorityMapSet( map.at(), value % 3, probe( value ) );

        whileComparing = [&] { qvPriorityMapClear( map.at() ); };

        what < 2    ? qvPriorityMapSet( map.at(), 7, probe( what ? 5 : 50 ) )
        : what == 2 ? qvPriorityMapDel( map.at(), probe( 5 ) )
        : what == 3 ? qvPriorityMapDelAt( map.at(), 5 )
                    : qv::release( qvPriorityMapHigher( map, probe( 5 ), nullptr ) );
        whileComparing = nullptr;
        EXPECT_EQ( what == 0 ? 21 : what == 1 ? 20 : what < 4 ? 19 : 0, qvPriorityMapLength( map ) );
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
