#include "qv/base/qv_timer.h"

#include "qv/base/qv_action_private.h"
#include "qv/base/qv_barrier.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_thread.h"
#include "qv/base/qv_thread_private.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_timer_private.h"
#include "qv/base/qv_timer_queue_private.h"
#include "qv/base/qv_timestamp.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"

#include <algorithm>

// `sched` tells whether the timer is to fire. `schedRel` and `schedAbs` tell in which queue it stands: an unscheduled
// timer keeps its place until its time.
struct QV___TIMER_CLOSURE : qv::QueuedTimer // schedRel is guarded by timerMonitor too
{
    qv::Action action;      // with references of its own
    QV_THREAD *abortThread; // null but for qv___TimerCreateAbort()
    int32_t    sched;       // atomic
    QV_BOOL    schedAbs;    // guarded by timerMonitor, as is the next one
    QV_TIME   *absKey;      // the Time under which it was queued, if schedAbs is set; else null
};

struct QV_TIMER : QV_OBJ
{
    QV___TIMER_CLOSURE *closure;
};

using Closure = QV___TIMER_CLOSURE;

namespace
{
QV_MONITOR    *timerMonitor       = nullptr; // guards what follows, but for timerWallNow; not held while firing
qv::TimerQueue timerRelQueue      = {};      // by timestamp
QV_DICT       *timerAbsDict       = nullptr; // from Time to closure
QV_BARRIER    *timerThreadBarrier = nullptr; // the timer thread sleeps here
QV_INT         timerWake          = 0;       // the timestamp until which it sleeps; 0: it is to be woken
QV_BOOL        timerThreadAbort   = QV_FALSE;
QV_THREAD     *timerThread        = nullptr; // runs from the first timer on
QV_TIME       *timerWallNow       = nullptr; // the timer thread's own
int32_t        timerThreadRuns    = 0;       // atomic: the timer thread has been started

Closure *closureOf( QV_OBJ *object )
{
    return static_cast< Closure * >( object );
}

/* Taking out of the queues --------------------------------------------------------------------------------------- */

// Takes the order to fire away. True if there was one: of several threads that try at the same time, one succeeds.
bool disarmClosure( Closure *tcl )
{
    return qv___AtomicCompareExchange32( &tcl->sched, 1, 0 ) == 1;
}

// Notes that a closure no longer stands in the queue by wall clock.
void leaveAbsolute( Closure *tcl )
{
    tcl->schedAbs = QV_FALSE;
    qv::release( std::exchange( tcl->absKey, nullptr ) );
}

// Takes a closure out of the queue that it stands in, with the monitor held.
void unscheduleClosure( Closure *tcl )
{
    if( tcl->schedRel )
    {
        QV_CHECK( tcl->schedRel != tcl->schedAbs );

        disarmClosure( tcl );
        timerRelQueue.del( tcl );
    }
    else if( tcl->schedAbs )
    {
        disarmClosure( tcl );

        // A timer that was scheduled at an equal Time later may have taken the place in the Dict.
        qv::Ref< QV_OBJ > check( qvDictObjKey( timerAbsDict, qv::obj( tcl->absKey ) ) );

        if( check == tcl )
            qvDictDelObjKey( &timerAbsDict, qv::obj( tcl->absKey ) );

        leaveAbsolute( tcl );
    }
}

void armClosure( Closure *tcl )
{
    qv___AtomicCompareExchange32( &tcl->sched, 0, 1 );
}

void freeTimer( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_TIMER *timer = qvTimerFrom( thisObj );

    {
        qv::HeldMonitor held( timerMonitor );
        unscheduleClosure( timer->closure );
    }

    qv::drop( timer->closure );
}

void freeTimerClosure( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    Closure *tcl = qv___TimerClosureFrom( thisObj );
    QV_CHECK( !tcl->sched );
    QV_CHECK( !tcl->schedAbs );
    QV_CHECK( !tcl->schedRel );

    qv::dropAction( &tcl->action );
    qv::drop( tcl->abortThread );
}
} // namespace

QV___FAMILY( ___TimerClosure, QV___TIMER_CLOSURE, freeTimerClosure, nullptr, nullptr )
QV___FAMILY( Timer, QV_TIMER, freeTimer, nullptr, nullptr )

void qv___TimerStartup( void )
{
    timerMonitor = qvMonitorCreate();
    qvTimestamp();

    timerRelQueue      = {};
    timerAbsDict       = qvDictCreate();
    timerWake          = 0;
    timerThreadAbort   = QV_FALSE;
    timerThreadBarrier = qvBarrierCreate( QV_TRUE );
    timerThreadRuns    = 0;

    // Created here, so that the first timer leaves as many objects as any other, and the thread allocates nothing when
    // it starts.
    timerWallNow = qvTimeCreate();
    qv::Ref< QV_STRING > name( qvStringCreateFromCstr( "qv___TimerThreadFunc()", -1 ) );
    timerThread = qv___ThreadCreate( name, qv___TimerThreadFunc, nullptr, QV_THREAD_PRIORITY_HIGHEST );
}

namespace
{
// Starts the timer thread with the first timer of a run.
void startTimerThread()
{
    if( qv___AtomicLoad32( &timerThreadRuns ) )
        return;

    qv::HeldMonitor held( timerMonitor );

    if( timerThreadRuns )
        return;

    QV_BOOL isStarted = qv___ThreadTryStart( timerThread );
    QV_CHECK_AS( isStarted, "timerThread" );
    qv___AtomicStore32( &timerThreadRuns, 1 );
}

void stopTimerThread()
{
    {
        qv::HeldMonitor held( timerMonitor );
        timerThreadAbort = QV_TRUE;
    }

    qvBarrierUnblock( timerThreadBarrier );
    qvThreadJoin( timerThread );
}
} // namespace

void qv___TimerShutdown( void )
{
    if( timerThreadRuns )
        stopTimerThread();

    QV_CHECK_AS( !timerRelQueue.length, "!qvPriorityMapLength( timerRelPrioMap )" );
    QV_CHECK( !qvDictLength( timerAbsDict ) );

    qv::drop( timerThread );
    qv::drop( timerWallNow );
    qv::drop( timerThreadBarrier );
    qv::drop( timerAbsDict );
    timerRelQueue.free();
    qv::drop( timerMonitor );
}

/* The timer thread ----------------------------------------------------------------------------------------------- */

namespace
{
const QV_INT NEVER = QV_INT_MAX;

// How long the thread sleeps at most while a Time is queued: FAR_WAIT while the first one is FAR_SECONDS away or more.
const QV_INT FAR_SECONDS = 10;
const QV_INT FAR_WAIT    = 10000; // milliseconds
const QV_INT NEAR_WAIT   = 1000;

// Fires with no lock held.
void fireClosure( Closure *tcl )
{
    qv::fireAction( tcl->action );

    if( tcl->abortThread )
    {
        qv___ThreadTryFreeze( tcl->abortThread );
        qv___Abort( nullptr, QV___SOURCE, __LINE__, nullptr );
    }
}

// The next timer that is due by its timestamp, taken out of the queue, or null; then `*wait` becomes the time until the
// first one that is left.
Closure *takeRelative( QV_INT now, QV_INT *wait )
{
    qv::HeldMonitor held( timerMonitor );

    while( timerRelQueue.length > 0 )
    {
        const qv::TimerQueue::Entry &first = timerRelQueue.entries[0];

        if( now < first.due )
        {
            timerWake = first.due;
            *wait     = first.due - now;
            return nullptr;
        }

        Closure *tcl = closureOf( first.timer );
        timerRelQueue.del( tcl );

        if( disarmClosure( tcl ) )
            return qv::retain( tcl );
    }

    timerWake = NEVER;
    *wait     = NEVER;
    return nullptr;
}

// The same by the wall clock, as it was read in this pass.
Closure *takeAbsolute( QV_INT *wait )
{
    qv::HeldMonitor held( timerMonitor );

    while( qvDictLength( timerAbsDict ) > 0 )
    {
        qv::Ref< QV_TIME > due( qvTimeFrom( qvDictKeyAt( timerAbsDict, 0 ) ) );

        if( qvTimeCompare( due, timerWallNow ) > 0 )
        {
            qvTimeShiftSeconds( &timerWallNow, FAR_SECONDS );
            *wait = qvTimeCompare( due, timerWallNow ) >= 0 ? FAR_WAIT : NEAR_WAIT;
            return nullptr;
        }

        qv::Ref< Closure > tcl( closureOf( qvDictValueAt( timerAbsDict, 0 ) ) );
        qvDictDelAt( &timerAbsDict, 0 );
        leaveAbsolute( tcl );

        if( disarmClosure( tcl ) )
            return tcl.give();
    }

    *wait = NEVER;
    return nullptr;
}

// Fires all that is due, in the order in which `take` returns it. True if there was any; `*wait` is the time until the
// next.
template< class Take >
bool fireDue( Take take, QV_INT *wait )
{
    bool fired = false;

    while( Closure *due = take( wait ) )
    {
        qv::Ref< Closure > tcl( due );
        fireClosure( tcl );
        fired = true;
    }

    return fired;
}
} // namespace

void qv___TimerThreadFunc( void )
{
    QV_INT  wait  = -1;
    QV_BOOL abort = QV_FALSE;

    while( !abort )
    {
        // Closed before the queues are looked at, so that nothing is missed. A thread that schedules changes a queue
        // first and then, if the timer is the first one there, opens the barrier. Either that change comes before the
        // look, which then finds it, or the barrier opens after it was closed here and the next pass is not delayed. A
        // timer that is not the first one needs no pass before the first one's time, for which the thread sleeps at
        // most.
        qvBarrierPassTimed( timerThreadBarrier, wait );
        qvBarrierBlock( timerThreadBarrier );

        QV_INT now, relWait = NEVER, absWait = NEVER;

        {
            qv::HeldMonitor held( timerMonitor );
            abort = timerThreadAbort;
            now   = qvTimestamp();
        }

        bool firedRelative = fireDue( [now]( QV_INT *next ) { return takeRelative( now, next ); }, &relWait );

        qvTimeSetNow( &timerWallNow );
        bool firedAbsolute = fireDue( takeAbsolute, &absWait );

        // Callbacks may have taken long. The times until the next timers are as old as the pass, so the thread sleeps
        // only after a pass that fired nothing. With nothing to wait for it sleeps for good, instead of counting the
        // seconds of the longest wait.
        wait = firedRelative || firedAbsolute ? 0 : std::min( relWait, absWait );
        wait = wait == NEVER ? -1 : wait;
    }
}

/* Creation ------------------------------------------------------------------------------------------------------- */

namespace
{
QV_TIMER *createTimer( const qv::Action &borrowed, QV_THREAD *abortThread = nullptr )
{
    Closure *tcl     = qv::create< Closure >( qv___TimerClosureSort() );
    tcl->schedRel    = QV_FALSE;
    tcl->relIdx      = 0;
    tcl->action      = qv::retainAction( borrowed );
    tcl->abortThread = abortThread;
    tcl->sched       = 0;
    tcl->schedAbs    = QV_FALSE;
    tcl->absKey      = nullptr;

    QV_TIMER *timer = qv::create< QV_TIMER >( qvTimerSort() );
    timer->closure  = tcl;
    startTimerThread();

    return timer;
}
} // namespace

QV_TIMER *qvTimerCreate( QV_TIMER_FUNC func, QV_OBJ *arg )
{
    QV_CHECK( func );
    return createTimer( { .func = func, .arg = arg } );
}

QV_TIMER *qvTimerCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return createTimer( { .signal = sig } );
}

QV_TIMER *qvTimerCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return createTimer( { .alert = alert } );
}

QV_TIMER *qvTimerCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return createTimer( { .barrier = barrier } );
}

QV_TIMER *qvTimerCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return createTimer( { .condSet = condSet, .conditions = conditions } );
}

QV_TIMER *qv___TimerCreateAbort( void )
{
    return createTimer( {}, qvThreadThis() );
}

/* Scheduling ----------------------------------------------------------------------------------------------------- */

namespace
{
// Queues a closure by a timestamp, with the monitor held. True if it is the next one there now: then the timer thread
// has to be told.
//
// Otherwise it need not be, since it looks at the queue when the first timer is due or before.
bool scheduleRelative( Closure *tcl, QV_INT due )
{
    if( tcl->schedAbs )
        unscheduleClosure( tcl );

    timerRelQueue.set( tcl, due );
    armClosure( tcl );

    bool first = tcl->relIdx == 0;

    if( first )
        timerWake = 0;

    QV_ASSERT( timerWake <= timerRelQueue.entries[0].due );
    return first;
}
} // namespace

void qvTimerSchedule( QV_TIMER *timer, QV_INT milliseconds )
{
    QV_CHECK( timer );
    QV_CHECK( milliseconds >= 0 );

    bool first;

    {
        qv::HeldMonitor held( timerMonitor );
        QV_INT          currentTimestamp = qvTimestamp();
        QV_CHECK( QV_INT_ADD_OK( currentTimestamp, milliseconds ) );

        first = scheduleRelative( timer->closure, currentTimestamp + milliseconds );
    }

    if( first )
        qvBarrierUnblock( timerThreadBarrier );
}

void qvTimerScheduleAt( QV_TIMER *timer, QV_INT timestamp )
{
    QV_CHECK( timer );
    QV_CHECK( timestamp >= 0 );

    bool first;

    {
        qv::HeldMonitor held( timerMonitor );
        first = scheduleRelative( timer->closure, timestamp );
    }

    if( first )
        qvBarrierUnblock( timerThreadBarrier );
}

void qvTimerScheduleAtTime( QV_TIMER *timer, QV_TIME *at )
{
    QV_CHECK( timer );
    QV_CHECK( at );

    bool first;

    {
        qv::HeldMonitor held( timerMonitor );
        Closure        *tcl = timer->closure;
        unscheduleClosure( tcl );

        qvDictSetObjKey( &timerAbsDict, qv::obj( at ), tcl );
        tcl->schedAbs = QV_TRUE;
        tcl->absKey   = qv::retain( at );
        armClosure( tcl );
        first = qv::dictItem( timerAbsDict, 0 ).val == tcl;
    }

    if( first )
        qvBarrierUnblock( timerThreadBarrier );
}

void qvTimerUnschedule( QV_TIMER *timer )
{
    QV_CHECK( timer );
    disarmClosure( timer->closure );
}

QV_BOOL qvTimerScheduled( QV_TIMER *timer )
{
    QV_CHECK( timer );
    return qv___AtomicLoad32( &timer->closure->sched ) ? QV_TRUE : QV_FALSE;
}
