#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_range_map.h"

using qv::Ref;
using namespace qv::test;

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
