#include "qv_test_clock.h"
#include "qv_test_support.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_condset.h"
#include "qv/base/qv_timestamp.h"
#include "qv/base/qv_timestamp_private.h"
#include "qv/sys/qv_int.h"

#include <thread>
#include <vector>

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

using qv::Ref;
using namespace qv::test;

/* Stand-ins for the wall clock ------------------------------------------------------------------------------------- */

namespace
{
const QV_INT SECOND = 1000, HOUR = 3600 * SECOND; // milliseconds

timespec later( timespec ts, QV_INT milliseconds )
{
    QV_INT nanoseconds = ts.tv_nsec + milliseconds % SECOND * 1000000;
    ts.tv_sec += milliseconds / SECOND + ( nanoseconds >= 1000000000 ) - ( nanoseconds < 0 );
    ts.tv_nsec = ( nanoseconds + 1000000000 ) % 1000000000;

    return ts;
}

QV_INT toMilliseconds( const timespec &ts )
{
    return ts.tv_sec * SECOND + ts.tv_nsec / 1000000;
}
} // namespace

WallClock qv::test::wallClock;

QV_INT WallClock::now() const
{
    timespec ts;
    clock_gettime( CLOCK_REALTIME, &ts );
    return toMilliseconds( ts );
}

void WallClock::reset()
{
    step    = 0;
    stopped = -1;
    time    = SHOWN;
    onWait = nullptr;
}

extern "C" int clock_gettime( clockid_t id, timespec *ts ) noexcept
{
    int result = static_cast< int >( syscall( SYS_clock_gettime, id, ts ) );

    if( id == CLOCK_REALTIME )
        *ts = wallClock.stopped == -1 ? later( *ts, wallClock.step ) : later( {}, wallClock.stopped );

    return result;
}

extern "C" int gettimeofday( timeval *tv, void * ) noexcept
{
    timespec ts;
    int      result = clock_gettime( CLOCK_REALTIME, &ts );
    *tv             = { ts.tv_sec, ts.tv_nsec / 1000 };

    return result;
}

extern "C" time_t time( time_t *result ) noexcept
{
    wallClock.timeCalls++;
    time_t seconds = wallClock.time;

    if( seconds == WallClock::SHOWN )
        seconds = static_cast< time_t >( wallClock.now() / SECOND );

    if( result )
        *result = seconds;

    return seconds;
}

extern "C" int pthread_cond_timedwait( pthread_cond_t *cond, pthread_mutex_t *mutex, const timespec *end )
{
    if( wallClock.stopped == -1 )
    {
        static auto real = reinterpret_cast< decltype( &pthread_cond_timedwait ) >(
            dlsym( RTLD_NEXT, "pthread_cond_timedwait" ) );
        QV_INT   left = toMilliseconds( *end ) - wallClock.now() + 1;
        timespec systemEnd;
        syscall( SYS_clock_gettime, CLOCK_REALTIME, &systemEnd );
        systemEnd = later( systemEnd, qvIntMin( left, SECOND ) ); // the clock may have been set since

        return real( cond, mutex, &systemEnd );
    }

    if( wallClock.onWait )
        wallClock.onWait( toMilliseconds( *end ) );
    else
        wallClock.stopped = toMilliseconds( *end );

    return ETIMEDOUT;
}

/* The tests -------------------------------------------------------------------------------------------------------- */

TEST( Timestamp, NeverRunsBackwards )
{
    std::vector< std::thread > threads;

    for( int i = 0; i < 4; i++ )
        threads.emplace_back(
            []
            {
                QV_INT last = qvTimestamp();

                for( int round = 0; round < 2000; round++ )
                {
                    QV_INT now = qvTimestamp();
                    EXPECT_GE( now, last );
                    last = now;
                }
            } );

    for( std::thread &thread : threads )
        thread.join();
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
