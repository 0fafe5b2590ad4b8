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
#include <thread>
#include <vector>

#include <malloc.h>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT HOUR = 3600; // seconds

Ref< QV_TIMER > timerOf( std::function< void() > body )
{
    return Ref< QV_TIMER >( qvTimerCreate( callNow, call( std::move( body ) ) ) );
}

Ref< QV_TIME > inSeconds( QV_INT seconds )
{
    Ref< QV_TIME > at( qvTimeNow() );
    qvTimeShiftSeconds( at.at(), seconds );
    return at;
}

// Schedules by one of the three ways: in so many milliseconds, at a timestamp, at a Time.
void schedule( QV_TIMER *timer, int way, QV_INT milliseconds )
{
    way == 0   ? qvTimerSchedule( timer, milliseconds )
    : way == 1 ? qvTimerScheduleAt( timer, qvTimestamp() + milliseconds )
               : qvTimerScheduleAtTime( timer, inSeconds( milliseconds / 1000 ) );
}

// Returns when everything that is due by now has fired.
void fence()
{
    for( int way : { 2, 0 } )
    {
        Ref< QV_SIGNAL > fired( qvSignalCreate() );
        Ref< QV_TIMER >  last( qvTimerCreateSignal( fired ) );
        schedule( last, way, 0 );
        qvSignalWait( fired );
    }
}

// Keeps the timer thread in a callback for a scope, so that what is scheduled meanwhile is due in one pass.
class HeldTimerThread
{
public:
    HeldTimerThread()
    {
        timer_ = timerOf(
            [gates = gates_]
            {
                qvSignalAssert( gates->entered );
                qvSignalWait( gates->leave );
            } );
        qvTimerSchedule( timer_, 0 );
        qvSignalWait( gates_->entered );
    }

    ~HeldTimerThread()
    {
        qvSignalAssert( gates_->leave );
    }

private:
    struct Gates
    {
        Ref< QV_SIGNAL > entered{ qvSignalCreate() }, leave{ qvSignalCreate() };
    };

    std::shared_ptr< Gates > gates_ = std::make_shared< Gates >();
    Ref< QV_TIMER >          timer_;
};

// How many objects there are when the timer thread has released all that has fired.
QV_INT quietObjects()
{
    HeldTimerThread held;
    return liveObjects();
}
} // namespace

TEST( Timer, FiresEveryKindOfTarget )
{
    Ref< QV_SIGNAL >  called( qvSignalCreate() ), sig( qvSignalCreate() );
    Ref< QV_ALERT >   alert( qvAlertCreate() );
    Ref< QV_BARRIER > barrier( qvBarrierCreate( QV_TRUE ) );
    Ref< QV_CONDSET > condSet( qvCondsetCreate() );

    std::vector< Ref< QV_TIMER > > timers;
    timers.push_back( timerOf( [&] { qvSignalAssert( called ); } ) );
    timers.emplace_back( qvTimerCreateSignal( sig ) );
    timers.emplace_back( qvTimerCreateAlert( alert ) );
    timers.emplace_back( qvTimerCreateBarrier( barrier ) );
    timers.emplace_back( qvTimerCreateCondset( condSet, 0x70005 ) );

    QV_INT start = qvTimestamp();

    for( Ref< QV_TIMER > &timer : timers )
    {
        EXPECT_FALSE( qvTimerScheduled( timer ) );
        qvTimerSchedule( timer, 20 );
        EXPECT_TRUE( qvTimerScheduled( timer ) );
    }

    qvSignalWait( called );
    qvSignalWait( sig );
    qvAlertWait( alert );
    qvBarrierPass( barrier );
    EXPECT_EQ( 5, qvCondsetWaitAny( condSet, 0xffff ) );
    EXPECT_GE( qvTimestamp(), start + 20 );

    for( Ref< QV_TIMER > &timer : timers )
        EXPECT_FALSE( qvTimerScheduled( timer ) );
    fence();
}

// Timers that are scheduled, moved, unscheduled and released in any order fire as a sorted list of them would, and one
// that goes by the wall clock after them.
TEST( Timer, FiresInOrderWhateverCameBetween )
{
    const int                      COUNT = 2000;
    const QV_INT                   NONE = -1, LATER = QV_INT_MAX;
    std::mt19937                   random( 11 );
    std::vector< Ref< QV_TIMER > > timers( COUNT );
    std::vector< int >             fired, rank( COUNT );

    {
        HeldTimerThread held;

        for( int i = 0; i < COUNT; i++ )
        {
            timers[i] = timerOf( [&fired, i] { fired.push_back( i ); } );
            qvTimerScheduleAt( timers[i], 0 );
        }
    }

    // Those of one instant have an order of their own, which they keep.
    fence();
    ASSERT_EQ( COUNT, static_cast< int >( fired.size() ) );

    for( int i = 0; i < COUNT; i++ )
        rank[fired[i]] = i;

    std::vector< QV_INT > due( COUNT, NONE );
    Ref< QV_TIMER >       wall = timerOf( [&] { fired.push_back( COUNT ); } );
    Ref< QV_TIME >        past = inSeconds( -HOUR );

    for( int round = 0; round < 200; round++ )
    {
        // Mostly few timers, since the last places of a queue are the special ones.
        int width = round % 20 ? 4 + round % 10 : COUNT;
        int from  = static_cast< int >( random() % ( COUNT - width + 1 ) );
        fired.clear();

        {
            HeldTimerThread held;
            qvTimerScheduleAtTime( wall, past );

            for( int i = 0; i < COUNT; i++ )
                if( timers[i] && due[i] == LATER )
                    qvTimerScheduleAt( timers[i], due[i] = random() % 100 );

            for( int step = 0; step < 2 * width; step++ )
            {
                int  i    = from + static_cast< int >( random() % width );
                auto what = random() % 16;

                if( !timers[i] )
                    continue;

                due[i] = what < 3 ? NONE : what < 6 ? LATER : static_cast< QV_INT >( random() % 100 );
                what == 0  ? timers[i].reset()
                : what < 3 ? qvTimerUnschedule( timers[i] )
                : what < 6 ? qvTimerSchedule( timers[i], HOUR * 1000 + random() % 1000 )
                           : qvTimerScheduleAt( timers[i], due[i] );
            }
        }

        fence();
        std::vector< int > expected;

        for( int i = 0; i < COUNT; i++ )
        {
            if( due[i] != NONE && due[i] != LATER )
                expected.push_back( i );

            ASSERT_EQ( due[i] == LATER, timers[i] && qvTimerScheduled( timers[i] ) );
        }

        std::sort(
            begin( expected ), end( expected ),
            [&]( int a, int b ) { return due[a] != due[b] ? due[a] < due[b] : rank[a] < rank[b]; } );
        expected.push_back( COUNT );
        ASSERT_EQ( expected, fired );
        fired.pop_back();

        for( int i : fired )
            due[i] = NONE;
    }
}

TEST( Timer, LastScheduleCounts )
{
    int             calls = 0, others = 0;
    Ref< QV_TIMER > timer = timerOf( [&] { calls++; } ), other = timerOf( [&] { others++; } );
    auto            check = [&]( int expected, std::function< void() > schedule )
    {
        calls = 0;
        {
            HeldTimerThread held;
            schedule();
        }
        fence();
        EXPECT_EQ( expected, calls );
        EXPECT_FALSE( qvTimerScheduled( timer ) );
    };

    Ref< QV_TIME > past = inSeconds( -HOUR ), future = inSeconds( HOUR );

    check( 1, [&] { qvTimerScheduleAtTime( timer, past ), qvTimerSchedule( timer, 0 ); } );
    check( 1, [&] { qvTimerScheduleAtTime( timer, future ), qvTimerScheduleAtTime( timer, past ); } );
    check( 0, [&] { qvTimerScheduleAtTime( timer, past ), qvTimerUnschedule( timer ), qvTimerUnschedule( timer ); } );

    // Of two at equal Times the later one fires; the earlier one counts as scheduled until it is scheduled anew.
    {
        HeldTimerThread held;
        qvTimerScheduleAtTime( timer, past );
        qvTimerScheduleAtTime( other, past );
    }
    fence();
    EXPECT_EQ( 1, others );
    EXPECT_TRUE( qvTimerScheduled( timer ) );
    check( 1, [&] { qvTimerSchedule( timer, 0 ); } );

    // Nor does its end take the later one's place.
    {
        HeldTimerThread held;
        qvTimerScheduleAtTime( timer, past );
        qvTimerScheduleAtTime( other, past );
        qvTimerSchedule( timer, HOUR * 1000 );
    }
    fence();
    EXPECT_EQ( 2, others );

    // Released, it fires no more.
    calls = 0;
    {
        HeldTimerThread held;
        qvTimerSchedule( timer, 0 );
        qvTimerScheduleAtTime( other, past );
        timer.reset();
        other.reset();
    }
    fence();
    EXPECT_EQ( 0, calls );
    EXPECT_EQ( 2, others );
}

// A thousand timers that are due at one instant do to each other what timers can do, and all is as one would expect of
// callbacks that run one after the other.
TEST( Timer, CallbacksReplaceUnscheduleAndReleaseTimers )
{
    const int                      COUNT = 1000;
    std::mt19937                   random( 7 );
    std::vector< Ref< QV_TIMER > > timers( COUNT );
    std::vector< char >            scheduled( COUNT );
    int                            expected = 0, calls = 0, rounds = 4 * COUNT;
    Ref< QV_SIGNAL >               done( qvSignalCreate() );

    auto set = [&]( int i, bool on )
    {
        expected += on - scheduled[i];
        scheduled[i] = on;
    };

    auto fired = [&]( int i )
    {
        EXPECT_TRUE( scheduled[i] );
        EXPECT_FALSE( qvTimerScheduled( timers[i] ) );
        set( i, false );
        calls++;

        for( int change = 0; change < 2 && rounds > 0; change++, rounds-- )
        {
            int other = change == 0 ? i : static_cast< int >( random() % COUNT );

            if( !timers[other] )
                continue;

            EXPECT_EQ( scheduled[other], qvTimerScheduled( timers[other] ) );

            auto what = random() % 5;
            what == 0   ? qvTimerUnschedule( timers[other] )
            : what == 1 ? timers[other].reset()
                        : qvTimerSchedule( timers[other], random() % 2 );
            set( other, what > 1 );
        }

        if( expected == 0 )
            qvSignalAssert( done );
    };

    {
        HeldTimerThread held;

        for( int i = 0; i < COUNT; i++ )
        {
            timers[i] = timerOf( [&fired, i] { fired( i ); } );
            qvTimerScheduleAt( timers[i], 1 );
            set( i, true );
        }
    }

    qvSignalWait( done );
    timers.clear();
    fence();
    EXPECT_EQ( 0, expected );
    EXPECT_GT( calls, COUNT / 2 );
}

// What a callback takes has passed for all other timers: those that have become due meanwhile fire at once, and the
// next one is waited for from the callback's end.
TEST( Timer, SlowCallbacksDelayNothingElse )
{
    const QV_INT A_SECOND = 1000, AN_HOUR = HOUR * A_SECOND;

    for( int kinds = 0; kinds < 27; kinds++ )
    {
        SCOPED_TRACE( kinds );
        const int        slow = kinds % 3, next = kinds / 3 % 3, late = kinds / 9;
        Ref< QV_SIGNAL > fired( qvSignalCreate() ), afterwards( qvSignalCreate() );
        Ref< QV_TIMER >  b( qvTimerCreateSignal( fired ) ), c( qvTimerCreateSignal( afterwards ) );
        Ref< QV_TIMER >  a, d = timerOf( [] {} );

        a = timerOf(
            [&]
            {
                schedule( d, next, 3 * AN_HOUR ); // not the next one
                wallClock.step += AN_HOUR;        // what the callback takes
                schedule( c, late, 0 );           // after B, if in its queue
                a.reset();
            } );

        schedule( b, next, 2 * AN_HOUR - 100 * A_SECOND );
        schedule( a, slow, AN_HOUR );
        fence();

        {
            HeldTimerThread held; // an hour too
            wallClock.step += AN_HOUR;
        }

        EXPECT_TRUE( qvSignalWaitTimed( fired, 5 * A_SECOND ) );
        EXPECT_TRUE( qvSignalWaitTimed( afterwards, 5 * A_SECOND ) );
        EXPECT_TRUE( qvTimerScheduled( d ) );
        fence();
        EXPECT_FALSE( a );
    }

    wallClock.step = 0;
}

// The thread looks at the wall clock once whenever it is awake.
TEST( Timer, OnlyTheFirstInItsQueueWakesTheThread )
{
    std::vector< Ref< QV_TIMER > > timers;
    Ref< QV_TIME >                 future = inSeconds( 2 * HOUR );
    int                            before = 0;

    for( int i = 0; i < 200; i++ )
    {
        timers.push_back( timerOf( [] {} ) );

        if( i < 2 )
            schedule( timers[i], 2 * i, HOUR * 1000 );
        else
            i % 3 ? schedule( timers[i], i % 3 - 1, 2 * HOUR * 1000 ) : qvTimerScheduleAtTime( timers[i], future );

        if( i == 1 )
        {
            fence();
            before = wallClock.timeCalls;
        }

        std::this_thread::yield();
    }

    fence(); // wakes it, though others are queued that come later
    EXPECT_LT( wallClock.timeCalls - before, 20 );
}

// Threads do to the same timers and to their own what they like. None fires more often than it was scheduled, no
// schedule is missed while the timer thread looks at its queues, and in the end each timer still works.
TEST( Timer, ThreadsShareTimers )
{
    const int                      SHARED = 16, THREADS = 4;
    std::atomic< int >             calls{ 0 }, schedules{ 0 };
    std::vector< Ref< QV_TIMER > > timers;
    Ref< QV_TIME >                 future = inSeconds( HOUR ); // of one object threads may be at once

    for( int i = 0; i < SHARED; i++ )
        timers.push_back( timerOf( [&calls] { calls++; } ) );

    onThreads(
        THREADS,
        [&]( int number )
        {
            std::mt19937                   random( number );
            std::vector< Ref< QV_TIMER > > own( 20 );
            Ref< QV_TIME >                 past = inSeconds( -HOUR - number );
            Ref< QV_BARRIER >              fired( qvBarrierCreate( QV_TRUE ) );
            Ref< QV_TIMER >                awaited( qvTimerCreateBarrier( fired ) );

            for( int round = 0; round < 1500; round++ )
            {
                QV_TIMER        *timer  = timers[random() % SHARED];
                Ref< QV_TIMER > &mine   = own[random() % own.size()];
                auto             choice = random() % 8;
                schedules += 1 + ( choice < 6 );

                choice == 0  ? qvTimerScheduleAtTime( timer, random() % 2 ? past : future )
                : choice < 2 ? qvTimerScheduleAt( timer, random() % 1000 )
                : choice < 4 ? qvTimerSchedule( timer, random() % 2 )
                : choice < 6 ? qvTimerSchedule( timer, HOUR * 1000 + random() % 10 )
                             : qvTimerUnschedule( timer );

                mine = timerOf( [&calls] { calls++; } );
                qvTimerSchedule( mine, random() % 2 ? 0 : HOUR * 1000 );

                choice = random() % 4;
                choice == 0  ? qvTimerScheduleAt( awaited, qvTimestamp() )
                : choice < 2 ? qvTimerScheduleAtTime( awaited, past )
                             : qvTimerSchedule( awaited, round % 50 == 0 );
                qvBarrierPass( fired );
                qvBarrierBlock( fired );
            }
        } );

    fence();
    EXPECT_LE( calls, schedules );
    EXPECT_GT( calls, 0 );

    {
        HeldTimerThread held;
        calls = 0;

        for( Ref< QV_TIMER > &timer : timers )
            qvTimerSchedule( timer, 0 );
    }

    fence();
    EXPECT_EQ( SHARED, calls );
}

// A hundred thousand timers are scheduled and released, in the order in which they were made, which is slow for a queue
// that moves or searches others. They leave nothing behind.
TEST( Timer, ManyComeAndGo )
{
    const size_t COUNT = 100000;
    size_t       bytes[4];
    QV_INT       objects = quietObjects();

    for( int round = 0; round < 4; round++ )
    {
        std::vector< Ref< QV_TIMER > > timers;
        int                            calls = 0;
        Ref< QV_OBJ >                  arg   = call( [&] { calls++; } );
        Ref< QV_TIME >                 at    = inSeconds( HOUR );

        for( size_t i = 0; i < COUNT; i++ )
        {
            timers.emplace_back( qvTimerCreate( callNow, arg ) );
            qvTimeShiftSeconds( at.at(), 1 );

            round % 2 ? qvTimerScheduleAtTime( timers.back(), at ) : qvTimerSchedule( timers.back(), HOUR * 1000 );
        }

        for( size_t i = 0; i < COUNT; i += 2 )
            qvTimerUnschedule( timers[i] );

        timers.clear();
        EXPECT_EQ( 0, calls );
        arg.reset();
        at.reset();
        EXPECT_EQ( objects, quietObjects() );
        struct mallinfo2 info = mallinfo2();
        bytes[round]          = info.uordblks + info.hblkhd;
    }

    EXPECT_LT( bytes[3], bytes[1] + 100000 );
}

// The clock is set while the timer thread is not asleep: what the system sleeps by doesn't know of it.
TEST( Timer, StepsOfTheWallClock )
{
    Ref< QV_SIGNAL > fired;
    Ref< QV_TIMER >  timer;
    auto             create = [&]
    {
        fired.reset( qvSignalCreate() );
        timer.reset( qvTimerCreateSignal( fired ) );
    };

    // A backward step is no time that has passed: a tenth of a second stays a tenth of a second.
    create();
    wallClock.step = 2 * HOUR * 1000;
    fence();
    {
        HeldTimerThread held;
        qvTimerSchedule( timer, 100 );
        wallClock.step = 0;
    }
    qvSignalWait( fired );

    // A Time moves with the clock.
    create();
    wallClock.step = 2 * HOUR * 1000;
    {
        HeldTimerThread held;
        qvTimerScheduleAtTime( timer, inSeconds( 1 ) );
        wallClock.step = HOUR * 1000;
    }
    fence();
    EXPECT_FALSE( qvSignalAsserted( fired ) );
    {
        HeldTimerThread held;
        wallClock.step = ( 2 * HOUR + 2 ) * 1000;
    }
    qvSignalWait( fired );

    fence();
    wallClock.step = 0;

    // Left alone, the clock is looked at every ten seconds, then every second. Nobody sleeps here.
    create();
    wallClock.stopped     = wallClock.now();
    Ref< QV_TIME > due    = inSeconds( 25 );
    int            before = wallClock.timeCalls;
    qvTimerScheduleAtTime( timer, due );
    qvSignalWait( fired );
    wallClock.reset();
    EXPECT_GE( wallClock.timeCalls - before, 5 );
    EXPECT_LT( wallClock.timeCalls - before, 15 );
}

TEST( Timer, StopFiresWhatIsDueAndAcceptsNoLeftovers )
{
    int calls = 0;

    withoutLibrary(
        [&]
        {
            qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );

            for( int i = 0; i < 100; i++ )
            {
                // The callback holds the only reference, and gives it up.
                auto timer = std::make_shared< Ref< QV_TIMER > >();
                *timer     = timerOf( [&calls, timer] { calls++, timer->reset(); } );
                qvTimerSchedule( *timer, 0 );
            }

            qvRuntimeShutdown();
            EXPECT_EQ( 100, calls );

            auto expectAbort = []( std::function< void() > body, const char *report )
            {
                Ending ending = inChild(
                    [&]
                    {
                        qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );
                        body();
                        qvRuntimeShutdown();
                    } );
                EXPECT_EQ( SIGABRT, ending.signal );
                EXPECT_THAT( ending.errors, testing::HasSubstr( report ) );
            };

            auto leave = []( int way )
            {
                Ref< QV_TIMER > timer = timerOf( [] {} );
                schedule( timer, way, HOUR * 1000 );
                qvTimerUnschedule( timer ); // keeps its place
                static_cast< void >( timer.give() );
            };

            expectAbort( [&] { leave( 0 ); }, "!qvPriorityMapLength( timerRelPrioMap )" );
            expectAbort( [&] { leave( 2 ); }, "!qvDictLength( timerAbsDict )" );
            expectAbort(
                []
                {
                    qvTimerSchedule( qv___TimerCreateAbort(), 0 );
                    qvBarrierPass( qvBarrierCreate( QV_TRUE ) );
                },
                "source/qv/base/qv_timer" );
        } );
}
