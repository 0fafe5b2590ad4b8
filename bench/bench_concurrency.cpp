#include "bench.h"

#include <atomic>
#include <pthread.h>
#include <thread>

#include <linux/futex.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#ifdef BENCH_QT
#include <QMutex>
#endif

// Locks, gates, events and threads.

namespace bench
{
namespace
{
const int COUNT = 1000;

// So many times one thing, then what has to be seen of all of them.
template< class Do >
Work times( int count, Do function )
{
    return [count, function]
    {
        for( int i = 0; i < count; i++ )
            function();
    };
}

pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

void addLocks()
{
    static QV_MONITOR *monitor = qvMonitorCreate();

    static const auto ours = []
    {
        qvMonitorEnter( monitor );
        qvMonitorLeave( monitor );
    };
    static const auto posix = []
    {
        pthread_mutex_lock( &mutex );
        pthread_mutex_unlock( &mutex );
    };
    static std::atomic< int > word;

    Case alone{
        "monitor",
        "enter and leave",
        "nobody else there",
        0.9,
        times( COUNT, ours ),
        { { "pthread mutex", times( COUNT, posix ) } },
        { "two locked instructions", times(
                                         COUNT,
                                         []
                                         {
                                             word.exchange( 1 );
                                             word.exchange( 0 );
                                         } ) } };

    // Both threads do the same, with a few instructions under the lock and a few outside.
    const auto contended = []( auto enter )
    {
        return [enter]
        {
            static uint64_t shared;
            shared = 0;

            const auto work = [enter]
            {
                for( int i = 0; i < 100 * COUNT; i++ )
                    enter( [] { shared++; } );
            };

            std::thread other( work );
            work();
            other.join();
            show( shared );
        };
    };

    Case two{
        "monitor",
        "two threads on one",
        "10^5 times each",
        1.0,
        contended(
            []( auto inside )
            {
                qvMonitorEnter( monitor );
                inside();
                qvMonitorLeave( monitor );
            } ),
        { { "pthread mutex", contended(
                                 []( auto inside )
                                 {
                                     pthread_mutex_lock( &mutex );
                                     inside();
                                     pthread_mutex_unlock( &mutex );
                                 } ) } } };
#ifdef BENCH_QT
    static QMutex qtMutex;
    alone.peers.push_back(
        { "QMutex", times(
                        COUNT,
                        []
                        {
                            qtMutex.lock();
                            qtMutex.unlock();
                        } ) } );
    two.peers.push_back(
        { "QMutex", contended(
                        []( auto inside )
                        {
                            qtMutex.lock();
                            inside();
                            qtMutex.unlock();
                        } ) } );
#endif
    add( alone );
    add( two );
}

// A flag that one thread raises and another waits for and lowers.
struct PosixGate
{
    pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t  cond = PTHREAD_COND_INITIALIZER;
    bool            open = false;

    void raise()
    {
        pthread_mutex_lock( &lock );
        open = true;
        pthread_cond_broadcast( &cond );
        pthread_mutex_unlock( &lock );
    }

    void wait()
    {
        pthread_mutex_lock( &lock );

        while( !open )
            pthread_cond_wait( &cond, &lock );

        open = false;
        pthread_mutex_unlock( &lock );
    }
};

struct OurGate
{
    QV_BARRIER *barrier = qvBarrierCreate( QV_TRUE );

    ~OurGate()
    {
        qvBarrierRelease( barrier );
    }

    void raise()
    {
        qvBarrierUnblock( barrier );
    }

    void wait()
    {
        qvBarrierPass( barrier );
        qvBarrierBlock( barrier );
    }
};

// Nothing but the wake and the wait of the operating system.
struct BareGate
{
    std::atomic< uint32_t > open{ 0 };

    void raise()
    {
        open = 1;
        syscall( SYS_futex, &open, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0 );
    }

    void wait()
    {
        while( !open.exchange( 0 ) )
            syscall( SYS_futex, &open, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0 );
    }
};

template< class Gate >
void thereAndBack()
{
    Gate there, back;

    std::thread other( times(
        COUNT,
        [&]
        {
            there.wait();
            back.raise();
        } ) );

    times(
        COUNT,
        [&]
        {
            there.raise();
            back.wait();
        } )();
    other.join();
}

void addGates()
{
    static QV_BARRIER *open = qvBarrierCreate( QV_FALSE );

    add( { "barrier", "pass", "open", 0, times( COUNT, [] { qvBarrierPass( open ); } ), {} } );
    add(
        { "barrier",
          "there and back",
          "two threads",
          1.1,
          thereAndBack< OurGate >,
          { { "pthread condition variables", thereAndBack< PosixGate > } },
          { "futex wake and wait", thereAndBack< BareGate > } } );
}

std::atomic< uint64_t > fired;

void countFiring( QV_OBJ * )
{
    fired.fetch_add( 1, std::memory_order_relaxed );
}

// Signals are asserted once in their lives: the assertions alone are timed.
void assertSignals( int targets )
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
    show( fired );

    for( QV_SIGNAL *sig : signals )
        qvSignalRelease( sig );

    for( QV_SIGNALABLE *target : all )
        qvSignalableRelease( target );
}

struct PosixEvent
{
    pthread_mutex_t lock       = PTHREAD_MUTEX_INITIALIZER;
    bool            asserted   = false;
    void ( *func )( QV_OBJ * ) = countFiring;
};

void assertPosixEvents()
{
    std::vector< PosixEvent > events( COUNT );
    fired = 0;

    timed(
        [&]
        {
            for( PosixEvent &event : events )
            {
                pthread_mutex_lock( &event.lock );
                event.asserted = true;
                event.func( nullptr );
                pthread_mutex_unlock( &event.lock );
            }
        } );
    show( fired );
}

void addEvents()
{
    add(
        { "signal",
          "assert with one target",
          "1000 signals",
          1.8,
          [] { assertSignals( 1 ); },
          { { "callback under a pthread mutex", assertPosixEvents } },
          {},
          true } );
    add( { "signal", "assert with 100 targets", "10 signals", 0, [] { assertSignals( 100 ); }, {}, {}, true } );
}

void addThreads()
{
    const int THREADS = 100;

    add(
        { "thread",
          "spawn to end",
          "100 threads in turn",
          1.2,
          times(
              THREADS,
              []
              {
                  QV_THREAD *thread =
                      qvThreadTrySpawnCstr( "bench", -1, [] { fired++; }, nullptr, QV_THREAD_PRIORITY_NORMAL );
                  qvThreadJoin( thread );
                  qvThreadRelease( thread );
              } ),
          { { "std::thread", times( THREADS, [] { std::thread( [] { fired++; } ).join(); } ) } } } );
}

void addReadings()
{
    static uint8_t bytes[4096];

    add( { "timestamp", "read", "1000", 0, times( COUNT, [] { show( uint64_t( qvTimestamp() > 0 ) ); } ), {} } );
    add(
        { "random",
          "bytes",
          "4096",
          0,
          [] { qvRandomBytes( bytes, sizeof( bytes ) ); },
          { { "getrandom", [] { getrandom( bytes, sizeof( bytes ), 0 ); } } } } );
}
} // namespace

void addConcurrencyCases()
{
    addLocks();
    addGates();
    addEvents();
    addThreads();
    addReadings();
}
} // namespace bench
