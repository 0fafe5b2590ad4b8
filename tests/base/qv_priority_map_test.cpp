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
