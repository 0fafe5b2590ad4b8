#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_range_map.h"
#include "qv/base/qv_range_map_private.h"

using qv::Ref;
using namespace qv::test;

namespace
{
void set( Ref< QV_RANGE_MAP > &map, QV_INT first, QV_INT last, QV_INT value )
{
    Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( value ) );
    qvRangeMapSetRangeKey( map.at(), first, last, qv::obj( boxed.get() ) );
}
} // namespace

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

TEST( RangeMap, BrokenContractsAreReported )
{
    Ref< QV_RANGE_MAP > map( qvRangeMapCreate() );
    QV_RANGE_MAP       *none = nullptr;
    set( map, 0, 9, 1 );

    EXPECT_BROKEN( qvRangeMapSetRangeKey( map.at(), 5, 4, qv::obj( map.get() ) ), "endingKey >= startingKey" );
    EXPECT_BROKEN( qvRangeMapHasIntKey( none, 5 ), "map" );
    EXPECT_BROKEN( qvRangeMapObjAt( map, 1 ), "idx < map->length" );
}
