// What alerts alone have. Both kinds of event together are tested in qv_event_test.cpp.

#include "qv_test_support.h"

#include "qv/base/qv_alert.h"
#include "qv/base/qv_alertable.h"
#include "qv/base/qv_barrier.h"

#include <array>
#include <atomic>

using qv::Ref;
using namespace qv::test;

namespace
{
std::atomic< int > fired{ 0 };

void count( QV_OBJ * )
{
    fired++;
}
} // namespace

TEST( Alert, FiresATargetForOneSettingOnly )
{
    Ref        alert( qvAlertCreate() );
    std::array barriers{ Ref( qvBarrierCreate( QV_TRUE ) ), Ref( qvBarrierCreate( QV_TRUE ) ) };
    std::array alertables{
        Ref( qvAlertableCreate( count, nullptr ) ), Ref( qvAlertableCreate( count, nullptr ) ),
        Ref( qvAlertableCreate( count, nullptr ) ) };

    auto add = [&]
    {
        for( auto &alertable : alertables )
            qvAlertAddAlertable( alert, alertable );

        for( auto &barrier : barriers )
            qvAlertAddBarrier( alert, barrier );
    };

    auto setAndUnset = [&]
    {
        fired = 0;
        qvAlertSet( alert );
        EXPECT_TRUE( qvAlertIsSet( alert ) && qvAlertWaitTimed( alert, 0 ) );
        qvAlertUnset( alert );
        EXPECT_FALSE( qvAlertIsSet( alert ) || qvAlertWaitTimed( alert, 1 ) );
        return fired.load();
    };

    for( int round = 0; round < 3; round++ )
    {
        add();
        EXPECT_EQ( 3, setAndUnset() );
        EXPECT_EQ( 0, setAndUnset() );
    }

    for( auto &barrier : barriers )
    {
        EXPECT_TRUE( qvBarrierPassTimed( barrier, 0 ) );
        EXPECT_EQ( 1, references( barrier.get() ) );
    }

    // Nor does one that comes while it is set fire at the next setting.
    fired = 0;
    qvAlertSet( alert );
    add();
    EXPECT_EQ( 3, fired );
    qvAlertUnset( alert );
    EXPECT_EQ( 0, setAndUnset() );
}
