#include "bench.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <numeric>
#include <pthread.h>
#include <random>
#include <thread>

#include <sys/random.h>

#ifdef BENCH_UV
#include <uv.h>
#endif

// Locks, gates, events, threads and timers.

namespace bench
{
namespace
{
const int COUNT = 1000;

// A flag that one thread raises and another waits for and lowers.
struct PosixGate
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t  cond  = PTHREAD_COND_INITIALIZER;
    bool            open  = false;

    void raise()
    {
        pthread_mutex_lock( &mutex );
        open = true;
        pthread_cond_broadcast( &cond );
        pthread_mutex_unlock( &mutex );
    }

    void wait()
    {
        pthread_mutex_lock( &mutex );

        while( !open )
            pthread_cond_wait( &cond, &mutex );

        open = false;
        pthread_mutex_unlock( &mutex );
    }
};

void addLockCases()
{
    static QV_MONITOR     *monitor = qvMonitorCreate();
    static pthread_mutex_t mutex   = PTHREAD_MUTEX_INITIALIZER;

    add( "monitor", "enter and leave", "nobody else there", 1.2,
         []
         {
             for( int i = 0; i < COUNT; i++ )
             {
                 qvMonitorEnter( monitor );
                 qvMonitorLeave( monitor );
             }

             return uint64_t( COUNT );
         },
         { { "pthread mutex", []
             {
                 for( int i = 0; i < COUNT; i++ )
                 {
                     pthread_mutex_lock( &mutex );
                     pthread_mutex_unlock( &mutex );
                 }

                 return uint64_t( COUNT );
             } } } );

    static QV_BARRIER *open = qvBarrierCreate( QV_FALSE );

    add( "barrier", "pass", "open", 0,
         []
         {
             for( int i = 0; i < COUNT; i++ )
                 qvBarrierPass( open );

             return uint64_t( COUNT );
         },
         {} );

    add( "barrier", "there and back", "two threads", 1.1,
         []
         {
             QV_BARRIER *there = qvBarrierCreate( QV_TRUE ), *back = qvBarrierCreate( QV_TRUE );

             std::thread other(
                 [&]
                 {
                     for( int i = 0; i < COUNT; i++ )
                     {
                         qvBarrierPass( there );
                         qvBarrierBlock( there );
                         qvBarrierUnblock( back );
                     }
                 } );

             for( int i = 0; i < COUNT; i++ )
             {
                 qvBarrierUnblock( there );
                 qvBarrierPass( back );
                 qvBarrierBlock( back );
             }

             other.join();
             qvBarrierRelease( there );
             qvBarrierRelease( back );
             return uint64_t( COUNT );
         },
         { { "pthread condition variables", []
             {
                 PosixGate there, back;

                 std::thread other(
                     [&]
                     {
                         for( int i = 0; i < COUNT; i++ )
                         {
                             there.wait();
                             back.raise();
                         }
                     } );

                 for( int i = 0; i < COUNT; i++ )
                 {
                     there.raise();
                     back.wait();
                 }

                 other.join();
                 return uint64_t( COUNT );
             } } } );
}

std::atomic< uint64_t > fired;

void countFiring( QV_OBJ * )
{
    fired.fetch_add( 1, std::memory_order_relaxed );
}

// Signals are asserted once in their lives: the assertions alone are timed.
uint64_t assertSignals( int targets )
{
    std::vector< QV_SIGNALABLE * > all;
    std::vector< QV_SIGNAL * >     signals;
    fired = 0;

    for( int i = 0; i < targets; i++ )
        all.push_back( qvSignalableCreate( countFiring, nullptr ) );

    for( int i = 0; i < COUNT / targets; i++ )
    {
        signals.push_back( qvSignalCreate() );

        for( QV_SIGNALABLE *target : all )
            qvSignalAddSignalable( signals.back(), target );
    }

    timed(
        [&]
        {
            for( QV_SIGNAL *sig : signals )
                qvSignalAssert( sig );
        } );

    for( QV_SIGNAL *sig : signals )
        qvSignalRelease( sig );

    for( QV_SIGNALABLE *target : all )
        qvSignalableRelease( target );

    return fired;
}

struct PosixEvent
{
    pthread_mutex_t mutex      = PTHREAD_MUTEX_INITIALIZER;
    bool            asserted   = false;
    void ( *func )( QV_OBJ * ) = countFiring;
};

void addEventCases()
{
    addTimed(
        "signal", "assert with one target", "1000 signals", 2.0, [] { return assertSignals( 1 ); },
        { { "callback under a pthread mutex", []
            {
                std::vector< PosixEvent > events( COUNT );
                fired = 0;

                timed(
                    [&]
                    {
                        for( PosixEvent &event : events )
                        {
                            pthread_mutex_lock( &event.mutex );
                            event.asserted = true;
                            event.func( nullptr );
                            pthread_mutex_unlock( &event.mutex );
                        }
                    } );

                return fired.load();
            } } } );
}

void addThreadCases()
{
    add( "thread", "spawn to end", "100 threads in turn", 1.2,
         []
         {
             fired = 0;

             for( int i = 0; i < 100; i++ )
             {
                 QV_THREAD *thread =
                     qvThreadTrySpawnCstr( "bench", -1, [] { fired++; }, nullptr, QV_THREAD_PRIORITY_NORMAL );
                 qvThreadJoin( thread );
                 qvThreadRelease( thread );
             }

             return fired.load();
         },
         { { "std::thread", []
             {
                 fired = 0;

                 for( int i = 0; i < 100; i++ )
                     std::thread( [] { fired++; } ).join();

                 return fired.load();
             } } } );
}

const int TIMERS = 100000;
const int DUE    = 10000;

std::vector< QV_TIMER * > createTimers( int count, QV_TIMER_FUNC func )
{
    std::vector< QV_TIMER * > timers;

    for( int i = 0; i < count; i++ )
        timers.push_back( qvTimerCreate( func, nullptr ) );

    return timers;
}

void scheduleAndUnschedule( const std::vector< QV_TIMER * > &timers )
{
    for( QV_TIMER *timer : timers )
        qvTimerSchedule( timer, 3600000 );

    for( QV_TIMER *timer : timers )
        qvTimerUnschedule( timer );
}

// Makes and schedules timers and releases them in the order of the indexes.
uint64_t scheduleAndRelease( const std::vector< int > &order )
{
    std::vector< QV_TIMER * > timers = createTimers( TIMERS, countFiring );

    for( QV_TIMER *timer : timers )
        qvTimerSchedule( timer, 3600000 );

    for( int idx : order )
        qvTimerRelease( timers[static_cast< size_t >( idx )] );

    return uint64_t( TIMERS );
}

#ifdef BENCH_UV
uint64_t startAndClose( uv_loop_t *loop, const std::vector< int > &order )
{
    std::vector< uv_timer_t * > timers;

    for( int i = 0; i < TIMERS; i++ )
    {
        timers.push_back( new uv_timer_t );
        uv_timer_init( loop, timers.back() );
        uv_timer_start( timers.back(), []( uv_timer_t * ) {}, 3600000, 0 );
    }

    for( int idx : order )
        uv_close(
            reinterpret_cast< uv_handle_t * >( timers[static_cast< size_t >( idx )] ),
            []( uv_handle_t *handle ) { delete reinterpret_cast< uv_timer_t * >( handle ); } );

    uv_run( loop, UV_RUN_NOWAIT );
    return uint64_t( TIMERS );
}
#endif

QV_BARRIER *allFired;

void countDue( QV_OBJ * )
{
    if( ++fired == uint64_t( DUE ) )
        qvBarrierUnblock( allFired );
}

void addTimerCases()
{
    static const std::vector< QV_TIMER * > timers = createTimers( TIMERS, countFiring );
    static const std::vector< QV_TIMER * > due    = createTimers( DUE, countDue );
    allFired                                      = qvBarrierCreate( QV_TRUE );
    std::vector< Peer > unscheduled, dueAtOnce, inOrder, anyhow;

    static std::vector< int > ascending( TIMERS );
    std::iota( ascending.begin(), ascending.end(), 0 );
    static std::vector< int > shuffled = ascending;
    std::shuffle( shuffled.begin(), shuffled.end(), std::mt19937( 3 ) );

    // An unscheduled timer keeps its place until its time. So these stand beside those of the other cases.
    scheduleAndUnschedule( timers );

#ifdef BENCH_UV
    static uv_loop_t                 loop;
    static std::vector< uv_timer_t > uvTimers( TIMERS );
    uv_loop_init( &loop );

    for( uv_timer_t &timer : uvTimers )
        uv_timer_init( &loop, &timer );

    unscheduled.push_back(
        { "libuv", []
          {
              for( uv_timer_t &timer : uvTimers )
                  uv_timer_start( &timer, []( uv_timer_t * ) {}, 3600000, 0 );

              for( uv_timer_t &timer : uvTimers )
                  uv_timer_stop( &timer );

              return uint64_t( TIMERS );
          } } );
    dueAtOnce.push_back(
        { "libuv", []
          {
              fired = 0;

              for( int i = 0; i < DUE; i++ )
                  uv_timer_start( &uvTimers[i], []( uv_timer_t * ) { fired++; }, 1, 0 );

              uv_run( &loop, UV_RUN_DEFAULT );
              return fired.load();
          } } );
    inOrder.push_back( { "libuv", [] { return startAndClose( &loop, ascending ); } } );
    anyhow.push_back( { "libuv", [] { return startAndClose( &loop, shuffled ); } } );
#endif

    add(
        "timer", "schedule and unschedule", "100000 with one delay", 3.0,
        []
        {
            scheduleAndUnschedule( timers );
            return uint64_t( TIMERS );
        },
        unscheduled );
    add(
        "timer", "fire", "10000 due at once", 3.0,
        []
        {
            fired = 0;
            qvBarrierBlock( allFired );

            for( QV_TIMER *timer : due )
                qvTimerSchedule( timer, 1 );

            qvBarrierPass( allFired );
            return fired.load();
        },
        dueAtOnce );
    add(
        "timer", "schedule and release in order", "100000", 4.0, [] { return scheduleAndRelease( ascending ); },
        inOrder );
    add(
        "timer", "schedule and release at random", "100000", 0, [] { return scheduleAndRelease( shuffled ); }, anyhow );
}

void addClockCases()
{
    add( "timestamp", "read", "1000", 0,
         []
         {
             QV_INT last = 0;

             for( int i = 0; i < COUNT; i++ )
                 last = qvTimestamp();

             return uint64_t( last > 0 );
         },
         {} );

    addTimed( "signal", "assert with 100 targets", "10 signals", 0, [] { return assertSignals( 100 ); }, {} );

    add( "random", "bytes", "4096", 0,
         []
         {
             uint8_t bytes[4096];
             qvRandomBytes( bytes, sizeof( bytes ) );
             return uint64_t( 4096 );
         },
         { { "getrandom", []
             {
                 uint8_t bytes[4096];
                 return static_cast< uint64_t >( getrandom( bytes, sizeof( bytes ), 0 ) );
             } } } );
}
} // namespace

void addConcurrencyCases()
{
    addLockCases();
    addEventCases();
    addThreadCases();
    addTimerCases();
    addClockCases();
}
} // namespace bench
