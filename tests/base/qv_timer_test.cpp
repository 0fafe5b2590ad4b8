#include "qv_test_call.h"
#include "qv_test_child.h"
#include "qv_test_clock.h"
#include "qv_test_support.h"

#include "qv/base/qv_alert.h"
#include "qv/base/qv_barrier.h"
#include "qv/base/qv_condset.h"
#include "qv/base/qv_signal.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_timer.h"
#include "qv/base/qv_timer_private.h"
#include "qv/base/qv_timestamp.h"
#include "qv/runtime/qv_runtime.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <memory>
#include <random>
#include <vector>

#include <malloc.h>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT SECOND = 1000, HOUR = 3600 * SECOND; // milliseconds

Ref< QV_TIMER > timerOf( std::function< void() > body )
{
    return Ref( qvTimerCreate( callNow, call( std::move( body ) ) ) );
}

Ref< QV_TIME > later( QV_INT milliseconds )
{
    Ref at( qvTimeNow() );
    qvTimeShiftSeconds( at.at(), milliseconds / SECOND );
    return at;
}

// Schedules by one of the three ways: after a delay, at a timestamp, at a Time.
void schedule( QV_TIMER *timer, int way, QV_INT milliseconds )
{
    way == 0   ? qvTimerSchedule( timer, milliseconds )
    : way == 1 ? qvTimerScheduleAt( timer, qvTimestamp() + milliseconds )
               : qvTimerScheduleAtTime( timer, later( milliseconds ) );
}

// Returns when everything that is due by now has fired. The Time is one at which no test schedules, since it would replace
// the timer there. It fires first, and the last one in the next pass.
void fence()
{
    for( int way : { 0, 2, 0 } )
    {
        Ref fired( qvSignalCreate() );
        Ref last( qvTimerCreateSignal( fired ) );
        schedule( last, way, way * -1000 * HOUR );
        qvSignalWait( fired );
    }
}

// Keeps the timer thread in a callback for a scope, so that what is scheduled meanwhile is due in one pass. Afterwards
// everything that is due has fired.
struct HeldTimerThread
{
    Ref< QV_SIGNAL > entered{ qvSignalCreate() }, leave{ qvSignalCreate() };
    Ref< QV_TIMER >  timer = timerOf( [this] { qvSignalAssert( entered ), qvSignalWait( leave ); } );

    HeldTimerThread()
    {
        qvTimerSchedule( timer, 0 );
        qvSignalWait( entered );
    }

    ~HeldTimerThread()
    {
        qvSignalAssert( leave );
        fence();
    }
};

} // namespace

// Timers are scheduled, moved, unscheduled and released in any order, between passes and by callbacks of the same pass.
// The next to fire is always the first by due and rank.
TEST( Timer, FiresInOrderWhateverChanges )
{
    const QV_INT NONE = -1, LATER = QV_INT_MAX;
    const size_t COUNT = 1000;

    struct Plan
    {
        Ref< QV_TIMER > timer = {};
        QV_INT          due = 0, rank = 0; // timers of one timestamp keep their order
    };

    std::mt19937        random( 11 );
    std::vector< Plan > plans( COUNT );
    size_t              from = 0, width = COUNT; // the plans that change in a round
    int                 round = 0, rank = 0;

    auto key    = [&]( const Plan &plan ) { return std::pair( plan.due == NONE ? LATER : plan.due, plan.rank ); };
    auto change = [&]( Plan &plan )
    {
        if( !plan.timer )
            return;

        auto what = random() % 20;
        plan.due  = what < 3 ? NONE : what < 7 ? LATER : static_cast< QV_INT >( random() % 100 );

        what == 0  ? plan.timer.reset()
        : what < 3 ? qvTimerUnschedule( plan.timer )
        : what < 7 ? qvTimerSchedule( plan.timer, HOUR + random() % SECOND )
                   : qvTimerScheduleAt( plan.timer, plan.due );
    };
    auto fired = [&]( Plan &plan )
    {
        if( round == 0 )
            plan.rank = rank++;
        else
            EXPECT_EQ( &plan, &*std::ranges::min_element( plans, {}, key ) );

        EXPECT_FALSE( qvTimerScheduled( plan.timer ) );
        plan.due = NONE;

        if( round > 0 && random() % 4 == 0 )
            change( plan );

        if( round > 0 && random() % 2 )
            change( plans[from + random() % width] );
    };

    for( ; round <= 200; round++ )
    {
        HeldTimerThread held;

        for( Plan &plan : plans )
        {
            if( round == 0 )
                plan.timer = timerOf( [&] { fired( plan ); } );

            if( plan.timer && plan.due != NONE )
                qvTimerScheduleAt( plan.timer, plan.due = round ? random() % 100 : 0 );
        }

        // Mostly few timers change, since the last places of a queue are the special ones.
        width = round % 20 ? 4 + round % 10 : COUNT;
        from  = random() % ( COUNT - width + 1 );

        for( size_t step = 0; step < 2 * width && round > 0; step++ )
            change( plans[from + random() % width] );
    }

    for( const Plan &plan : plans )
        EXPECT_EQ( plan.due, plan.timer && qvTimerScheduled( plan.timer ) ? LATER : NONE );
}

// What a callback takes has passed for all other timers: those that have become due meanwhile fire at once, and the
// next one is waited for from the callback's end.
TEST( Timer, SlowCallbacksDelayNothingElse )
{
    for( int kinds = 0; kinds < 27; kinds++ )
    {
        SCOPED_TRACE( kinds );
        const int       slow = kinds % 3, next = kinds / 3 % 3, last = kinds / 9;
        Ref             fired( qvSignalCreate() ), afterwards( qvSignalCreate() );
        Ref             b( qvTimerCreateSignal( fired ) ), c( qvTimerCreateSignal( afterwards ) );
        Ref< QV_TIMER > a, d = timerOf( [] {} );

        a = timerOf(
            [&]
            {
                schedule( d, next, 3 * HOUR ); // not the next one
                wallClock.step += HOUR;        // what the callback takes
                schedule( c, last, 0 );        // after B, if in its queue
                a.reset();
            } );
        schedule( b, next, 2 * HOUR - 100 * SECOND );
        schedule( a, slow, HOUR );
        fence();

        {
            HeldTimerThread held; // an hour too
            wallClock.step += HOUR;
        }

        EXPECT_TRUE( qvSignalWaitTimed( fired, 5 * SECOND ) );
        EXPECT_TRUE( qvSignalWaitTimed( afterwards, 5 * SECOND ) );
        EXPECT_TRUE( qvTimerScheduled( d ) );
        fence();
        EXPECT_FALSE( a );
    }

    wallClock.reset();
}

// Threads schedule the same timers and their own. No schedule is missed while the timer thread looks at its queues, and in
// the end each timer still works.
TEST( Timer, ThreadsShareTimers )
{
    const int          SHARED = 16;
    std::atomic< int > calls{ 0 };
    auto               counting = [&] { return timerOf( [&] { calls++; } ); };
    Ref< QV_TIMER >    timers[SHARED];
    Ref< QV_TIME >     future = later( HOUR ); // all threads schedule at this object

    std::ranges::generate( timers, counting );
    onThreads(
        4,
        [&]( int number )
        {
            std::mt19937    random( number );
            Ref< QV_TIME >  past = later( -HOUR - number * SECOND );
            Ref             fired( qvBarrierCreate( QV_TRUE ) );
            Ref             awaited( qvTimerCreateBarrier( fired ) );
            Ref< QV_TIMER > own[20];

            for( int round = 0; round < 1500; round++ )
            {
                QV_TIMER        *timer  = timers[random() % SHARED];
                Ref< QV_TIMER > &mine   = own[random() % std::size( own )];
                auto             choice = random() % 8;

                choice == 0  ? qvTimerScheduleAtTime( timer, random() % 2 ? past : future )
                : choice < 4 ? qvTimerSchedule( timer, random() % 2 )
                : choice < 6 ? qvTimerScheduleAt( timer, qvTimestamp() + HOUR )
                             : qvTimerUnschedule( timer );
                mine = counting();
                qvTimerSchedule( mine, random() % 2 * HOUR );

                random() % 2 ? qvTimerScheduleAtTime( awaited, past ) : schedule( awaited, random() % 2, 0 );
                qvBarrierPass( fired );
                qvBarrierBlock( fired );
            }
        } );
    fence();

    {
        HeldTimerThread held;
        calls = 0;

        for( QV_TIMER *timer : timers )
            qvTimerSchedule( timer, 0 );
    }

    EXPECT_EQ( SHARED, calls );
}

// A hundred thousand timers are scheduled and released, in the order in which they were made, which is slow for a queue
// that moves or searches others. Only the first one wakes the timer thread, which looks at the wall clock once in each
// pass. No memory is kept for them afterwards.
TEST( Timer, ManyComeAndGo )
{
    auto bytes = []
    {
        struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    size_t before = bytes();

    for( int round = 0; round < 4; round++ )
    {
        std::vector< Ref< QV_TIMER > > timers( 100000 );
        Ref< QV_OBJ >                  arg    = call( [] { ADD_FAILURE(); } );
        Ref< QV_TIME >                 at     = later( HOUR );
        int                            passes = wallClock.timeCalls;

        for( QV_INT delay = HOUR; Ref< QV_TIMER > & timer : timers )
        {
            timer.reset( qvTimerCreate( callNow, arg ) );
            qvTimeShiftSeconds( at.at(), 1 );
            round % 2 ? qvTimerScheduleAtTime( timer, at ) : qvTimerSchedule( timer, delay++ );
        }

        EXPECT_LT( wallClock.timeCalls - passes, 30 );

        for( size_t i = 0; i < timers.size(); i += 2 )
            qvTimerUnschedule( timers[i] );

        timers.clear();
        fence();
    }

    EXPECT_LT( bytes(), before + 1000000 );
}

// The clock is set while the timer thread is not asleep. The system measures a sleep by another clock.
TEST( Timer, StepsOfTheWallClock )
{
    Ref passed( qvAlertCreate() );
    Ref reached( qvCondsetCreate() );
    Ref delayed( qvTimerCreateAlert( passed ) ), atTime( qvTimerCreateCondset( reached, 0x70005 ) );

    // A backward step is no time that has passed: a tenth of a second stays a tenth of a second. A Time moves with the
    // clock.
    wallClock.step = 2 * HOUR;
    {
        HeldTimerThread held;
        qvTimerSchedule( delayed, 100 );
        schedule( atTime, 2, SECOND );
        wallClock.step = HOUR;
    }
    qvAlertWait( passed );
    EXPECT_EQ( 0, qvCondsetConditions( reached ) );
    {
        HeldTimerThread held;
        wallClock.step = 2 * HOUR + 2 * SECOND;
    }
    EXPECT_EQ( 5, qvCondsetConditions( reached ) );
    wallClock.reset();

    // Without a change, the clock is looked at every ten seconds, then every second. No thread sleeps here.
    wallClock.stopped     = wallClock.now();
    Ref< QV_TIME > due    = later( 25 * SECOND );
    int            before = wallClock.timeCalls;
    qvAlertUnset( passed );
    qvTimerScheduleAtTime( delayed, due );
    qvAlertWait( passed );
    wallClock.reset();
    EXPECT_GE( wallClock.timeCalls - before, 5 );
    EXPECT_LT( wallClock.timeCalls - before, 15 );
}

TEST( Timer, StopFiresWhatIsDueAndAcceptsNoLeftovers )
{
    expectInOwnRun(
        []
        {
            int calls = 0;

            for( int i = 0; i < 100; i++ )
            {
                // The callback holds the only reference, and gives it up.
                auto timer = std::make_shared< Ref< QV_TIMER > >();
                *timer     = timerOf( [&calls, timer] { calls++, timer->reset(); } );
                qvTimerSchedule( *timer, 0 );
            }

            qvRuntimeShutdown();
            EXPECT_EQ( 100, calls );
        } );

    auto expectAbort = []( const char *report, std::function< void() > body )
    {
        Ending ending = inOwnRun( [&] { body(), qvRuntimeShutdown(); } );
        EXPECT_EQ( SIGABRT, ending.signal );
        EXPECT_THAT( ending.errors, testing::HasSubstr( report ) );
    };
    auto leave = []( int way )
    {
        QV_TIMER *timer = timerOf( [] {} ).give();
        schedule( timer, way, HOUR );
        qvTimerUnschedule( timer ); // keeps its place
    };

    expectAbort( "!qvPriorityMapLength( timerRelPrioMap )", [&] { leave( 0 ); } );
    expectAbort( "!qvDictLength( timerAbsDict )", [&] { leave( 2 ); } );
    expectAbort( "source/qv/base/qv_timer", [] { qvTimerSchedule( qv___TimerCreateAbort(), 0 ), fence(); } );
}
