#include "bench.h"

#include <algorithm>
#include <atomic>
#include <numeric>
#include <random>

#ifdef BENCH_UV
#include <uv.h>
#endif

namespace bench
{
namespace
{
const int    TIMERS = 100000;
const int    DUE    = 10000;
const QV_INT HOUR   = 3600000; // ms

std::atomic< int > fired;
QV_BARRIER        *allFired;

void countDue( QV_OBJ * )
{
    if( ++fired == DUE )
        qvBarrierUnblock( allFired );
}

std::vector< QV_TIMER * > createTimers( int count )
{
    std::vector< QV_TIMER * > timers;

    for( int i = 0; i < count; i++ )
        timers.push_back( qvTimerCreate( countDue, nullptr ) );

    return timers;
}

void scheduleAndUnschedule( const std::vector< QV_TIMER * > &timers )
{
    for( QV_TIMER *timer : timers )
        qvTimerSchedule( timer, HOUR );

    for( QV_TIMER *timer : timers )
        qvTimerUnschedule( timer );
}

// Makes and schedules timers and releases them in the order of the indexes.
void scheduleAndRelease( const std::vector< size_t > &order )
{
    std::vector< QV_TIMER * > timers = createTimers( TIMERS );

    for( QV_TIMER *timer : timers )
        qvTimerSchedule( timer, HOUR );

    for( size_t idx : order )
        qvTimerRelease( timers[idx] );
}

#ifdef BENCH_UV
uv_loop_t loop;

void startAndClose( const std::vector< size_t > &order )
{
    std::vector< uv_timer_t * > timers;

    for( int i = 0; i < TIMERS; i++ )
    {
        timers.push_back( new uv_timer_t );
        uv_timer_init( &loop, timers.back() );
        uv_timer_start( timers.back(), []( uv_timer_t * ) {}, HOUR, 0 );
    }

    for( size_t idx : order )
        uv_close(
            reinterpret_cast< uv_handle_t * >( timers[idx] ),
            []( uv_handle_t *handle ) { delete reinterpret_cast< uv_timer_t * >( handle ); } );

    uv_run( &loop, UV_RUN_NOWAIT );
}
#endif
} // namespace

void addTimerCases()
{
    static const std::vector< QV_TIMER * > timers = createTimers( TIMERS );
    static const std::vector< QV_TIMER * > due    = createTimers( DUE );
    allFired                                      = qvBarrierCreate( QV_TRUE );

    static std::vector< size_t > ascending( TIMERS );
    std::iota( ascending.begin(), ascending.end(), 0 );
    static std::vector< size_t > shuffled = ascending;
    std::shuffle( shuffled.begin(), shuffled.end(), std::mt19937( 3 ) );

    // An unscheduled timer keeps its place until its time. So these stand beside those of the other cases.
    scheduleAndUnschedule( timers );

    Case unscheduling{
        "timer", "schedule and unschedule", "100000 with one delay", 3.0, [] { scheduleAndUnschedule( timers ); }, {} };
    Case firing{
        "timer",
        "fire",
        "10000 due at once",
        3.0,
        []
        {
            fired = 0;
            qvBarrierBlock( allFired );

            for( QV_TIMER *timer : due )
                qvTimerSchedule( timer, 1 );

            qvBarrierPass( allFired );
            show( uint64_t( fired ) );
        },
        {} };
    Case inOrder{ "timer", "schedule and release in order",         "100000",
                  4.0,     [] { scheduleAndRelease( ascending ); }, {} };
    Case anyhow{ "timer", "schedule and release at random", "100000", 0, [] { scheduleAndRelease( shuffled ); }, {} };
#ifdef BENCH_UV
    static std::vector< uv_timer_t > uvTimers( TIMERS );
    uv_loop_init( &loop );

    for( uv_timer_t &timer : uvTimers )
        uv_timer_init( &loop, &timer );

    unscheduling.peers = {
        { "libuv", []
          {
              for( uv_timer_t &timer : uvTimers )
                  uv_timer_start( &timer, []( uv_timer_t * ) {}, HOUR, 0 );

              for( uv_timer_t &timer : uvTimers )
                  uv_timer_stop( &timer );
          } } };
    firing.peers = {
        { "libuv", []
          {
              fired = 0;

              for( int i = 0; i < DUE; i++ )
                  uv_timer_start( &uvTimers[size_t( i )], []( uv_timer_t * ) { fired++; }, 1, 0 );

              uv_run( &loop, UV_RUN_DEFAULT );
              show( uint64_t( fired ) );
          } } };
    inOrder.peers = { { "libuv", [] { startAndClose( ascending ); } } };
    anyhow.peers  = { { "libuv", [] { startAndClose( shuffled ); } } };
#endif
    add( unscheduling );
    add( firing );
    add( inOrder );
    add( anyhow );
}
} // namespace bench
