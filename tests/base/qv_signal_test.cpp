// What signals alone have, and sleeping. Both kinds of event together are tested in qv_event_test.cpp.

#include "qv_test_support.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_signal.h"
#include "qv/base/qv_signalable.h"
#include "qv/base/qv_sleep.h"
#include "qv/base/qv_timestamp.h"

#include <thread>
#include <vector>

using qv::Ref;
using namespace qv::test;

TEST( Signal, TellsWhetherItHasTargetsOfAnyKind )
{
    Ref signal( qvSignalCreate() ), chained( qvSignalCreate() );
    Ref barrier( qvBarrierCreate( QV_TRUE ) ), barrier2( qvBarrierCreate( QV_TRUE ) );
    Ref signalable( qvSignalableCreateBarrier( barrier ) );

    EXPECT_FALSE( qvSignalWaitTimed( signal, 0 ) );
    EXPECT_FALSE( qvSignalHasSignalables( signal ) ); // who waits doesn't count
    qvSignalAddSignal( signal, chained );
    EXPECT_TRUE( qvSignalHasSignalables( signal ) );
    qvSignalDelSignal( signal, chained );

    // One that is not in the first place counts too, but not an empty place for more.
    qvSignalAddBarrier( signal, barrier );
    qvSignalAddBarrier( signal, barrier2 );
    qvSignalDelBarrier( signal, barrier );
    EXPECT_TRUE( qvSignalHasSignalables( signal ) );
    qvSignalDelBarrier( signal, barrier2 );
    EXPECT_FALSE( qvSignalHasSignalables( signal ) );

    // A disarmed one stays.
    qvSignalAddSignalable( signal, signalable );
    signalable.reset();
    EXPECT_TRUE( qvSignalHasSignalables( signal ) );

    qvSignalAssert( signal );
    EXPECT_FALSE( qvSignalHasSignalables( signal ) );
    EXPECT_TRUE( qvBarrierIsBlocked( barrier ) );
}

TEST( Signal, OneAmongManyAssertersFiresTheTargets )
{
    static int        fired;    // guarded by the signal, as the thread sanitizer can tell
    static QV_SIGNAL *asserted; // is asked from its own callback
    fired = 0;

    Ref signalable( qvSignalableCreate(
        []( QV_OBJ * )
        {
            for( int i = 0; i < 10; i++ ) // a chance for the others to overtake
                std::this_thread::yield();

            fired += qvSignalAsserted( asserted );
        },
        nullptr ) );

    for( int round = 1; round <= 30; round++ )
    {
        Ref                        signal( qvSignalCreate() ), chained( qvSignalCreate() );
        std::vector< std::thread > threads;
        asserted = signal;
        qvSignalAddSignal( signal, chained );
        qvSignalAddSignalable( chained, signalable );

        for( int i = 0; i < 4; i++ )
            threads.emplace_back(
                [&]
                {
                    qvSignalAssert( signal );
                    EXPECT_EQ( round, fired ); // whoever was first, all has fired by now
                } );

        for( std::thread &thread : threads )
            thread.join();
    }
}

TEST( Sleep, EndsWithTheSignalOrTheLimit )
{
    Ref    signal( qvSignalCreate() );
    QV_INT start = qvTimestamp();
    EXPECT_FALSE( qvSleepTimed( signal, 5 ) );
    EXPECT_FALSE( qvSleepTimed( nullptr, 5 ) );
    EXPECT_GE( qvTimestamp() - start, 10 );
    EXPECT_FALSE( qvSignalHasSignalables( signal ) ); // nothing is left behind

    std::thread sleeper( [&] { qvSleep( signal ); } );
    std::thread timedSleeper( [&] { EXPECT_TRUE( qvSleepTimed( signal, 600000 ) ); } );
    qvSignalAssert( signal );
    sleeper.join();
    timedSleeper.join();

    EXPECT_TRUE( qvSleepTimed( signal, 0 ) );
    EXPECT_TRUE( qvSleepTimed( signal, -1 ) );
}
