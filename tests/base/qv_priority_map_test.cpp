#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_priority_map.h"

using qv::Ref;
using namespace qv::test;

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

TEST( PriorityMap, GoesIntoItselfAsItWasAndIsCopiedForAChangeOnly )
{
    Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );
    qvPriorityMapSet( map.at(), 1, probe( 1 ) );

    Ref< QV_PRIORITY_MAP > held = Ref< QV_PRIORITY_MAP >::share( map );
    qvPriorityMapDel( map.at(), probe( 3 ) );
    EXPECT_EQ( held.get(), map.get() );
    held.reset();

    QV_PRIORITY_MAP *before = map.get();
    qvPriorityMapSet( map.at(), 0, qv::obj( before ) );
    EXPECT_EQ( 2, qvPriorityMapLength( map ) );
    EXPECT_EQ( 1, qvPriorityMapLength( before ) );
    EXPECT_EQ( qv::obj( before ), Ref< QV_OBJ >( qvPriorityMapValueAt( map, 0 ) ).get() );
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
