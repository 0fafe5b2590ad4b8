#include "qv_test_clock.h"
#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_condset.h"
#include "qv/base/qv_timestamp.h"
#include "qv/base/qv_timestamp_private.h"

#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT SECOND = 1000, HOUR = 3600 * SECOND; // milliseconds
}

TEST( Timestamp, NeverRunsBackwards )
{

    onThreads(
        4,
        []( int )
        {
            QV_INT last = qvTimestamp();

            for( int round = 0; round < 2000; round++ )
            {
                QV_INT now = qvTimestamp();
                EXPECT_GE( now, last );
                last = now;
            }
        } );
}

TEST( Timestamp, FollowsForwardStepsAndSwallowsBackwardOnes )
{
    QV_INT start      = wallClock.now() + HOUR;
    wallClock.stopped = start;
    QV_INT first      = qvTimestamp();
    EXPECT_EQ( first, qvTimestamp() );

    auto after = [&]( QV_INT milliseconds )
    {
        wallClock.stopped = start + milliseconds;
        return qvTimestamp() - first;
    };

    EXPECT_EQ( 1, after( -2000 ) );
    EXPECT_EQ( 2, after( -1999 ) );
    EXPECT_EQ( 2, after( -1999 ) );
    EXPECT_EQ( 2 + HOUR, after( HOUR - 1999 ) );
    EXPECT_EQ( 3 + HOUR, after( -HOUR ) );
    EXPECT_EQ( 10 + HOUR, after( 7 - HOUR ) );

    // Both readers show the clock.
    EXPECT_EQ( wallClock.stopped, qv___TimestampRealtime() );
    EXPECT_EQ( wallClock.stopped, qv___TimestampGettimeofday() );

    wallClock.stopped = 0;
    EXPECT_BROKEN( qv___TimestampRealtime(), "ts.tv_sec > 0 || ( ts.tv_sec == 0 && ts.tv_nsec > 0 )" );
    EXPECT_BROKEN( qv___TimestampGettimeofday(), "tv.tv_sec > 0 || ( tv.tv_sec == 0 && tv.tv_usec > 0 )" );
    wallClock.reset();
}

TEST( Barrier, WaitsInStepsOfASecondAsLongAsItIsTold )
{
    Ref                   barrier( qvBarrierCreate( QV_TRUE ) );
    Ref                   condset( qvCondsetCreate() );
    std::vector< QV_INT > waits; // milliseconds
    QV_INT                steps[] = { 0, 0, 0, 0, 0, 0, 0, 0 };

    auto waitsOf = [&]( auto wait )
    {
        waits.clear();
        wallClock.stopped = wallClock.now() / SECOND * SECOND + 999; // so that ends lie in another second
        wallClock.onWait  = [&]( QV_INT end )
        {
            waits.push_back( end - wallClock.stopped );
            wallClock.stopped = end + steps[waits.size() - 1];
        };
        wait();
        return waits;
    };

    auto pass = [&] { EXPECT_FALSE( qvBarrierPassTimed( barrier, 3500 ) ); };
    EXPECT_EQ( ( std::vector< QV_INT >{ 1000, 1000, 1000, 500 } ), waitsOf( pass ) );
    EXPECT_EQ(
        ( std::vector< QV_INT >{ 1000, 2 } ),
        waitsOf( [&] { EXPECT_EQ( 0, qvCondsetWaitAnyTimed( condset, 1, 1002 ) ); } ) );
    EXPECT_EQ( ( std::vector< QV_INT >{} ), waitsOf( [&] { EXPECT_FALSE( qvBarrierPassTimed( barrier, 0 ) ); } ) );

    // A backward step costs the second that was waited for, of which one millisecond counts.
    steps[1] = -HOUR;
    EXPECT_EQ( ( std::vector< QV_INT >{ 1000, 1000, 1000, 1000, 499 } ), waitsOf( pass ) );

    // A forward step ends it.
    steps[1] = HOUR;
    EXPECT_EQ( ( std::vector< QV_INT >{ 1000, 1000 } ), waitsOf( pass ) );
    wallClock.reset();
}
