// The stand-ins for the wall clock of the C library.

#include "qv_test_clock.h"

#include <algorithm>

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

using namespace qv::test;

namespace
{
const QV_INT SECOND = 1000; // milliseconds

// What the functions are called where their first forms have times of 32 bits.
#ifdef SYS_clock_gettime64
const long        GETTIME   = SYS_clock_gettime64;
const char *const TIMEDWAIT = "__pthread_cond_timedwait64";
#else
const long        GETTIME   = SYS_clock_gettime;
const char *const TIMEDWAIT = "pthread_cond_timedwait";
#endif

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

WallClock                             qv::test::wallClock;
thread_local std::function< void() > *WallClock::onOwnWait = nullptr;

QV_INT WallClock::now() const
{
    timespec ts;
    clock_gettime( CLOCK_REALTIME, &ts );
    return toMilliseconds( ts );
}

void WallClock::reset()
{
    step = perLook = 0;
    stopped        = -1;
    time           = SHOWN;
    onWait         = nullptr;
}

extern "C" int clock_gettime( clockid_t id, timespec *ts ) noexcept
{
    int result = static_cast< int >( syscall( GETTIME, id, ts ) );
    wallClock.step += wallClock.perLook;

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
    QV_INT left = toMilliseconds( *end ) - wallClock.now() + 1;

    if( WallClock::onOwnWait )
    {
        wallClock.step += std::max< QV_INT >( left, 1 );
        ( *WallClock::onOwnWait )();
    }
    else if( wallClock.stopped == -1 )
    {
        static auto real = reinterpret_cast< decltype( &pthread_cond_timedwait ) >( dlsym( RTLD_NEXT, TIMEDWAIT ) );
        timespec    systemEnd;
        syscall( GETTIME, CLOCK_REALTIME, &systemEnd );
        systemEnd = later( systemEnd, std::min( left, SECOND ) ); // the clock may have been set since

        return real( cond, mutex, &systemEnd );
    }
    else if( wallClock.onWait )
        wallClock.onWait( toMilliseconds( *end ) );
    else
        wallClock.stopped = toMilliseconds( *end );

    return ETIMEDOUT;
}
