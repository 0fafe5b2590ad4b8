// What threads wait at: barriers, regions, condition sets and counters. And the clock by which they wait.

#include "qv_test_call.h"
#include "qv_test_clock.h"
#include "qv_test_support.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_condset.h"
#include "qv/base/qv_counter.h"
#include "qv/base/qv_monitor.h"
#include "qv/base/qv_nanoseconds.h"
#include "qv/base/qv_region.h"
#include "qv/base/qv_timestamp.h"
#include "qv/base/qv_timestamp_private.h"

#include <atomic>
#include <barrier>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT SECOND = 1000, HOUR = 3600 * SECOND; // milliseconds

bool fencesAreRefused = false; // the kernel runs no fences for other threads, as old and locked ones don't
} // namespace

extern "C" long syscall( long number, ... ) noexcept
{
    if( number == SYS_membarrier && fencesAreRefused )
        return errno = ENOSYS, -1;

    va_list list;
    va_start( list, number );
    long values[6];

    for( long &value : values )
        value = va_arg( list, long );

    va_end( list );

    auto real = reinterpret_cast< long ( * )( long, ... ) >( dlsym( RTLD_NEXT, "syscall" ) );
    return real( number, values[0], values[1], values[2], values[3], values[4], values[5] );
}

// Now and then a thread holds the monitor for so long that the others fall asleep.
TEST( Monitor, OneThreadAtATime )
{
    for( bool refused : { false, true } )
    {
        Ref< QV_MONITOR > monitor( qvMonitorCreate() );
        int               inside = 0, sum = 0;
        fencesAreRefused = refused;

        onThreads(
            4,
            [&]( int )
            {
                for( int round = 0; round < 5000; round++ )
                {
                    qvMonitorEnter( monitor );
                    EXPECT_EQ( 1, ++inside );
                    sum++;

                    if( round % 100 == 0 )
                        std::this_thread::sleep_for( std::chrono::microseconds( 100 ) );

                    --inside;
                    qvMonitorLeave( monitor );
                }
            } );

        EXPECT_EQ( 20000, sum );
    }

    fencesAreRefused = false;
}

TEST( Region, WritersAreAlone )
{
    Ref region( qvRegionCreate() );
    int value = 0; // guarded by the region, as the thread sanitizer can tell

    onThreads(
        6,
        [&]( int i )
        {
            for( int round = 0; round < 500; round++ )
            {
                qvRegionEnter( region, i % 3 == 0 );

                if( i % 3 == 0 )
                    value++, value++;

                EXPECT_EQ( 0, value % 2 );
                qvRegionLeave( region );
            }
        } );

    EXPECT_EQ( 2000, value );
}

TEST( Region, ASharedUserThatComesAfterAnExclusiveClaimWaits )
{
    Ref                 region( qvRegionCreate() );
    std::atomic< bool > written{ false };
    std::atomic< int >  rounds{ 0 };
    QV_INT              limit = qvTimestamp() + 20000;

    qvRegionEnterShared( region );
    onThreads(
        3,
        [&]( int i )
        {
            if( i == 0 )
            {
                qvRegionEnterExclusive( region );
                written = true;
                qvRegionLeave( region );
            }

            for( ; i == 1 && !written && qvTimestamp() < limit; rounds++ )
            {
                qvRegionEnterShared( region );
                qvRegionLeave( region );
            }

            if( i == 2 )
            {
                // Until the claim stops the other reader.
                for( int seen = -1; seen != rounds; usleep( 50000 ) )
                    seen = rounds;

                EXPECT_FALSE( written );
                EXPECT_LT( qvTimestamp(), limit );
                qvRegionLeave( region );
            }
        } );
}

TEST( Condset, WaitsForAnyOfAMaskOrForAllOfIt )
{
    // Masks are cut to their low 16 bits.
    Ref condset( qvCondsetCreate() );
    qvCondsetSetConditions( condset, -1 );
    EXPECT_EQ( 0xffff, qvCondsetConditions( condset ) );
    qvCondsetDelConditions( condset, ~QV_INT( 7 ) );
    qvCondsetModifyConditions( condset, 0x10002, QV_FALSE );
    EXPECT_EQ( 5, qvCondsetConditions( condset ) );
    qvCondsetModifyConditions( condset, 0x70002, QV_TRUE );
    qvCondsetAddConditions( condset, 0x10000 );
    EXPECT_EQ( 6, qvCondsetWaitAny( condset, 0x1000e ) );
    EXPECT_EQ( 7, qvCondsetWaitAll( condset, 0x10007 ) );

    // An empty mask is nothing to wait for.
    EXPECT_EQ( 0, qvCondsetWaitAny( condset, 0x10000 ) );
    EXPECT_EQ( 0, qvCondsetWaitAll( condset, 0 ) );
    EXPECT_EQ( 0, qvCondsetWaitAnyTimed( condset, 0, -1 ) );

    // All of a mask means no more either.
    QV_INT start = qvTimestamp();
    EXPECT_EQ( 0, qvCondsetWaitAllTimed( condset, 3, 5 ) );
    EXPECT_EQ( 0, qvCondsetWaitAnyTimed( condset, 8, 5 ) );
    EXPECT_EQ( 0, qvCondsetWaitAllTimed( condset, 0xf, 0 ) );
    EXPECT_GE( qvTimestamp() - start, 10 );

    // The bits are looked at before the limit, however fast the time runs.
    wallClock.perLook = 1000;
    EXPECT_EQ( 2, qvCondsetWaitAnyTimed( condset, 2, 0 ) );
    EXPECT_EQ( 7, qvCondsetWaitAllTimed( condset, 7, 0 ) );
    wallClock.reset();
}

// No change comes later that would wake a waiter which has been missed. Short limits run out time and again.
TEST( Condset, ChangesAtOneTimeWakeAllTheirWaiters )
{
    const int    PAIRS = 4;
    Ref          condset( qvCondsetCreate() );
    std::barrier everybody( 2 * PAIRS );

    onThreads(
        2 * PAIRS,
        [&]( int number )
        {
            const QV_INT own = QV_INT( 1 ) << number / 2;

            for( int round = 0; round < 300; round++ )
            {
                if( number % 2 )
                    qvCondsetAddConditions( condset, own );
                else
                    while( qvCondsetWaitAnyTimed( condset, own, round % 2 ? 1 : -1 ) != own )
                        continue;

                everybody.arrive_and_wait();

                if( number % 2 )
                    qvCondsetDelConditions( condset, own );

                everybody.arrive_and_wait();
            }
        } );

    EXPECT_EQ( 0, qvCondsetConditions( condset ) );
}

TEST( Counter, LetsWaitersThroughAtZero )
{
    for( int round = 0; round < 300; round++ )
    {
        Ref counter( qvCounterCreate() );
        qvCounterIncrement( counter );
        qvCounterIncrement( counter );
        qvCounterDecrement( counter );
        EXPECT_EQ( 1, qvCounterValue( counter ) );
        EXPECT_FALSE( qvCounterWaitZeroTimed( counter, round == 0 ) );
        std::thread other( [held = counter.get()] { qvCounterDecrement( held ); } );
        EXPECT_TRUE( qvCounterWaitZeroTimed( counter, -1 ) );
        counter.reset(); // though the other thread may still be in the call
        other.join();
    }
}

TEST( Timestamp, FollowsForwardStepsAndSwallowsBackwardOnes )
{
    QV_INT start      = wallClock.now() + HOUR;
    wallClock.stopped = start;
    QV_INT first      = qvTimestamp();
    EXPECT_EQ( first, qvTimestamp() );

    // In milliseconds from the start, what the clock shows and the timestamp then.
    for( auto [shown, expected] :
         { std::pair( QV_INT( -2000 ), QV_INT( 1 ) ),
           { -1999, 2 },
           { -1999, 2 },
           { HOUR - 1999, HOUR + 2 },
           { -HOUR, HOUR + 3 },
           { 7 - HOUR, HOUR + 10 } } )
    {
        wallClock.stopped = start + shown;
        EXPECT_EQ( expected, qvTimestamp() - first );
    }

    // Both readers show the clock.
    EXPECT_EQ( wallClock.stopped, qv___TimestampRealtime() );
    EXPECT_EQ( wallClock.stopped, qv___TimestampGettimeofday() );

    wallClock.stopped = 0;
    expectReports(
        { { [] { qv___TimestampRealtime(); }, "ts.tv_sec > 0 || ( ts.tv_sec == 0 && ts.tv_nsec > 0 )" },
          { [] { qv___TimestampGettimeofday(); }, "tv.tv_sec > 0 || ( tv.tv_sec == 0 && tv.tv_usec > 0 )" } } );
    wallClock.reset();
}

TEST( Barrier, WaitsInStepsOfASecondAsLongAsItIsTold )
{
    Ref                   barrier( qvBarrierCreate( QV_TRUE ) );
    Ref                   condset( qvCondsetCreate() );
    std::vector< QV_INT > waits;    // milliseconds
    QV_INT                step = 0; // of the clock during the second wait

    auto waitsOf = [&]( auto wait )
    {
        waits.clear();
        wallClock.stopped = wallClock.now() / SECOND * SECOND + 999; // so that ends lie in another second
        wallClock.onWait  = [&]( QV_INT end )
        {
            waits.push_back( end - wallClock.stopped );
            wallClock.stopped = end + ( waits.size() == 2 ? step : 0 );
        };
        EXPECT_FALSE( wait() );
        return waits;
    };
    auto pass = [&] { return qvBarrierPassTimed( barrier, 3500 ); };
    auto wait = [&] { return qvCondsetWaitAnyTimed( condset, 1, 1002 ); };
    auto look = [&] { return qvBarrierPassTimed( barrier, 0 ); };

    EXPECT_THAT( waitsOf( pass ), testing::ElementsAre( 1000, 1000, 1000, 500 ) );
    EXPECT_THAT( waitsOf( wait ), testing::ElementsAre( 1000, 2 ) );
    EXPECT_THAT( waitsOf( look ), testing::IsEmpty() );

    // A backward step costs the second that was waited for, of which one millisecond counts. A forward step ends it.
    step = -HOUR;
    EXPECT_THAT( waitsOf( pass ), testing::ElementsAre( 1000, 1000, 1000, 1000, 499 ) );
    step = HOUR;
    EXPECT_THAT( waitsOf( pass ), testing::ElementsAre( 1000, 1000 ) );
    wallClock.reset();
}

TEST( Nanoseconds, ConvertBothWays )
{
    EXPECT_EQ( 9223372036854000000, qvNanosecondsTryConvertFromMilliseconds( 9223372036854 ) );
    EXPECT_EQ( -1, qvNanosecondsTryConvertFromMilliseconds( 9223372036855 ) );
    EXPECT_EQ( QV_INT_MAX, qvNanosecondsConvertFromMillisecondsSaturating( 9223372036855 ) );
    EXPECT_EQ( 1, qvNanosecondsConvertToMillisecondsTruncate( 1999999 ) );
    EXPECT_EQ( 1, qvNanosecondsConvertToMillisecondsExtend( 1000000 ) );
    EXPECT_EQ( 2, qvNanosecondsConvertToMillisecondsExtend( 1000001 ) );
    EXPECT_EQ( 9223372036855, qvNanosecondsConvertToMillisecondsExtend( QV_INT_MAX ) );
}
