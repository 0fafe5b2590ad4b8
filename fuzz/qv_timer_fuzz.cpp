// Timers beside a list of what is due in which minute, by a clock that only the walk moves on. Some schedule themselves
// again when they fire, and timers at equal Times replace each other.

#include "qv_fuzz_walk.h"

#include "../tests/qv_test_clock.h"

#include <array>
#include <chrono>
#include <mutex>
#include <semaphore>

namespace qv::fuzz
{
using qv::test::wallClock;
const QV_INT MINUTE = 60000, TIMERS = 6;

// A timer that another one at an equal Time has replaced counts as scheduled, and does not fire.
const QV_INT NONE = 0, BY_STAMP = 1, BY_TIME = 2, REPLACED = 3;

struct Plan
{
    QV_INT kind = NONE;
    QV_INT due = 0, period = 0, repeats = 0; // in minutes

    bool operator==( const Plan & ) const = default;
};

struct Plans
{
    std::array< Plan, TIMERS >                                         all;
    std::array< std::vector< std::pair< QV_INT, QV_INT > >, REPLACED > fired; // when each was due, and its index

    bool operator==( const Plans & ) const = default;

    // Another timer at an equal Time fires in place of those before it.
    void replaceBy( const Plan &by )
    {
        for( Plan &plan : all )
            if( &plan != &by && plan.kind == BY_TIME && by.kind == BY_TIME && plan.due == by.due )
                plan.kind = REPLACED;
    }

    // True if it is to be scheduled again.
    bool fire( QV_INT idx )
    {
        Plan &plan = at( all, idx );
        fired[plan.kind].emplace_back( plan.due, idx );
        plan.kind = plan.repeats > 0 ? plan.kind : NONE;
        plan.due += plan.period;
        replaceBy( plan );

        return plan.repeats-- > 0;
    }
};

std::mutex                mutex; // guards the next three, which the timer thread uses when it fires
Plans                     plans;
Ref< QV_TIMER >           timers[TIMERS];
QV_INT                    timestampBase, wallBase; // of minute 0
std::counting_semaphore<> through( 0 );
QV_INT                    ahead = 0; // how far the walks have moved the clock on

void scheduleAt( QV_TIMER *timer, const Plan &plan )
{
    if( plan.kind == BY_STAMP )
        return qvTimerScheduleAt( timer, timestampBase + plan.due * MINUTE );

    qvTimerScheduleAtTime( timer, Ref< QV_TIME >( qvTimeTryCreateFromTimeT( wallBase + plan.due * MINUTE / 1000 ) ) );
}

void onTimer( QV_OBJ *arg )
{
    std::lock_guard lock( mutex );
    QV_INT          idx = intOf( arg );

    if( plans.fire( idx ) )
        scheduleAt( timers[idx], at( plans.all, idx ) );
}

void onEnd( QV_OBJ * )
{
    through.release();
}

struct TimerWalk
{
    QV_INT now = 0; // in minutes, of which half a one more is over
    Plans  model;

    TimerWalk()
    {
        wallClock.step = ahead + MINUTE;
        timestampBase  = qvTimestamp() - MINUTE / 2;
        wallBase       = ( wallClock.now() - MINUTE / 2 ) / 1000;

        for( QV_INT idx = 0; idx < TIMERS; idx++ )
            timers[idx].reset( qvTimerCreate( onTimer, boxedInt( idx ) ) );

        plans = model;
    }

    ~TimerWalk()
    {
        for( Ref< QV_TIMER > &timer : timers )
            timer.reset();

        // Between walks the clock is the system's, by which libFuzzer ends.
        ahead = wallClock.step.exchange( 0 );
    }

    // A timer is made anew, or its schedule is taken away.
    void drop()
    {
        std::lock_guard lock( mutex );
        QV_INT          idx = in.below( TIMERS );

        if( in.flag() )
            timers[idx].reset( qvTimerCreate( onTimer, boxedInt( idx ) ) );
        else
            qvTimerUnschedule( timers[idx] );

        at( model.all, idx ) = {};
        plans                = model;
    }

    // With a delay, at a timestamp or at a Time, a while off or passed already.
    void schedule()
    {
        std::lock_guard lock( mutex );
        QV_INT          idx = in.below( TIMERS ), how = in.below( 3 );
        Plan           &plan = at( model.all, idx );

        plan.due     = std::max< QV_INT >( now + in.below( 24 ) - 3, 0 );
        plan.kind    = how < 2 ? BY_STAMP : BY_TIME;
        plan.period  = 1 + in.below( 5 );
        plan.repeats = in.flag() ? in.below( 8 ) : 0;
        model.replaceBy( plan );
        plans = model;

        if( how == 0 && plan.due > now )
            qvTimerSchedule( timers[idx], ( plan.due - now ) * MINUTE - MINUTE / 2 );
        else
            scheduleAt( timers[idx], plan );
    }

    void advance()
    {
        QV_INT minutes = in.below( 12 );
        now += minutes;
        wallClock.step += minutes * MINUTE;
    }

    // What is due fires in its order, before timers that are due now.
    void check()
    {
        // The first one wakes the thread, the others tell that it is through.
        Ref< QV_TIMER > first( qvTimerCreate( []( QV_OBJ * ) {}, nullptr ) );
        Ref< QV_TIMER > last( qvTimerCreate( onEnd, nullptr ) ), lastByTime( qvTimerCreate( onEnd, nullptr ) );
        qvTimerScheduleAtTime( lastByTime, Ref< QV_TIME >( qvTimeNow() ) );
        qvTimerSchedule( last, 0 );
        qvTimerScheduleAt( first, 0 );

        for( int ends = 2; ends > 0; ends-- )
            require( through.try_acquire_for( std::chrono::seconds( 30 ) ) );

        for( QV_INT minute = 0; minute <= now; minute++ )
            for( QV_INT idx = 0; idx < TIMERS; idx++ )
                if( Plan &plan = at( model.all, idx ); plan.kind % REPLACED != NONE && plan.due == minute )
                    model.fire( idx );

        std::lock_guard lock( mutex );
        auto           &stamped = plans.fired[BY_STAMP];
        auto            earlier = []( auto &a, auto &b ) { return a.first < b.first; };
        require( std::is_sorted( stamped.begin(), stamped.end(), earlier ) );
        std::sort( stamped.begin(), stamped.end() ); // those of one minute come in an order of their own
        require( plans == model );
        plans.fired = model.fired = {};

        for( QV_INT idx = 0; idx < TIMERS; idx++ )
            require( qvTimerScheduled( timers[idx] ) == ( at( model.all, idx ).kind != NONE ) );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK(
    TimerWalk, OP( drop ) OP( schedule ) OP( schedule ) OP( schedule ) OP( schedule ) OP( drop ) OP( advance )
                   OP( advance ) OP( advance ) )
