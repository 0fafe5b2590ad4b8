#include "qv/base/qv_timestamp.h"

#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_timestamp_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_real_private.h"

#include <sys/time.h>
#include <time.h>

namespace
{
QV_MONITOR *timestampMonitor            = nullptr; // guards the two readings
QV_INT      timestamp                   = 0;       // the last result
QV_INT      timestampSystemPrevious     = 0;       // the last reading of the system clock
QV_INT ( *timestampSystemFunc )( void ) = nullptr;

// The sum in milliseconds, made as a real, modulo 2 to the power of 63. Below 2 to the power of 43 seconds all sums are
// integers that a real holds.
QV_INT toMilliseconds( time_t seconds, long milliseconds )
{
    const double RANGE = 9223372036854775808.0; // 2 to the power of 63

    if( seconds < INT64_C( 1 ) << 43 )
        return seconds * 1000 + milliseconds;

    double sum =
        qv___RealMultiplyAdd( static_cast< double >( seconds ), 1000.0, static_cast< double >( milliseconds ) );
    return static_cast< QV_INT >( sum - static_cast< double >( static_cast< int >( sum / RANGE ) ) * RANGE );
}
} // namespace

void qv___TimestampStartup( void )
{
    timestampMonitor        = nullptr;
    timestampMonitor        = qvMonitorCreate();
    timestamp               = 0;
    timestampSystemPrevious = 0;
    timestampSystemFunc     = qv___TimestampGettimeofday;

    timespec ts;

    if( clock_getres( CLOCK_REALTIME, &ts ) )
        qv___Abort( "failed to get clock resolution (CLOCK_REALTIME)", QV___SOURCE, __LINE__, nullptr );

    QV_CHECK( ts.tv_sec >= 0 );

    if( ts.tv_sec > 0 )
        return;

    QV_CHECK( ts.tv_nsec >= 0 );
    QV_CHECK( ts.tv_nsec < 1000000000L );
    timestampSystemFunc = qv___TimestampRealtime;
}

void qv___TimestampShutdown( void )
{
    qv::drop( timestampMonitor );
}

QV_INT qv___TimestampRealtime( void )
{
    timespec ts;

    if( clock_gettime( CLOCK_REALTIME, &ts ) )
        qv___Abort( "failed to get time (CLOCK_REALTIME)", QV___SOURCE, __LINE__, nullptr );

    QV_CHECK( ts.tv_sec > 0 || ( ts.tv_sec == 0 && ts.tv_nsec > 0 ) );
    QV_CHECK( ts.tv_nsec >= 0 );
    QV_CHECK( ts.tv_nsec < 1000000000L );

    return toMilliseconds( ts.tv_sec, ts.tv_nsec / 1000000L );
}

QV_INT qv___TimestampGettimeofday( void )
{
    timeval tv;

    if( gettimeofday( &tv, nullptr ) )
        qv___Abort( "failed to get time (gettimeofday)", QV___SOURCE, __LINE__, nullptr );

    QV_CHECK( tv.tv_sec > 0 || ( tv.tv_sec == 0 && tv.tv_usec > 0 ) );
    QV_CHECK( tv.tv_usec >= 0 );
    QV_CHECK( tv.tv_usec < 1000000L );

    return toMilliseconds( tv.tv_sec, static_cast< long >( tv.tv_usec / 1000L ) );
}

QV_INT qvTimestamp( void )
{
    qv::checkRun();
    qv::HeldMonitor held( timestampMonitor );

    QV_INT now              = timestampSystemFunc();
    QV_INT previous         = timestampSystemPrevious;
    timestampSystemPrevious = now;

    if( now == previous )
        return timestamp;

    QV_INT increment = now < previous ? 1 : now - previous;
    QV_CHECK( QV_INT_ADD_OK( timestamp, increment ) );
    timestamp += increment;

    return timestamp;
}
