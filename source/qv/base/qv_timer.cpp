#include "qv/base/qv_timer.h"

#include "qv/base/qv_alert.h"
#include "qv/base/qv_barrier.h"
#include "qv/base/qv_condset.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_signal.h"
#include "qv/base/qv_thread.h"
#include "qv/base/qv_thread_private.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_timer_private.h"
#include "qv/base/qv_timestamp.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

// Every field but the flags is written once and may be null. `sched` says whether the timer is to fire; `schedAbs` and
// `schedRel` say in which queue it stands, and may stay set when it is no more to fire.
struct QV___TIMER_CLOSURE : QV_OBJ
{
    QV_TIMER_FUNC func;
    QV_OBJ       *arg;
    QV_SIGNAL    *signal;
    QV_ALERT     *alert;
    QV_BARRIER   *barrier;
    QV_CONDSET   *condSet;
    QV_INT        conditions;
    QV_THREAD    *abortThread;
    int32_t       sched;    // atomic
    QV_BOOL       schedAbs; // these are guarded by timerMonitor
    QV_BOOL       schedRel;
    QV_INT        relIdx; // where it stands in the queue by timestamp, if schedRel is set
};

struct QV_TIMER : QV_OBJ
{
    QV___TIMER_CLOSURE *closure;
};

using Closure = QV___TIMER_CLOSURE;

namespace
{
QV_MONITOR *timerMonitor       = nullptr; // guards the queues and timerThreadAbort; never held while firing
QV_DICT    *timerAbsDict       = nullptr; // from Time to closure
QV_BARRIER *timerThreadBarrier = nullptr; // the timer thread sleeps here
QV_BOOL     timerThreadAbort   = QV_FALSE;
QV_THREAD  *timerThread        = nullptr;
QV_TIME    *timerWallNow       = nullptr; // the timer thread's own

Closure *closureOf( QV_OBJ *object )
{
    return static_cast< Closure * >( object );
}

/* The queue by timestamp ----------------------------------------------------------------------------------------- */

// One place in it. Of equal timestamps the unique numbers decide, by which qvObjCompare() orders closures.
struct Entry
{
    QV_INT   due;
    QV_INT   unique;
    Closure *tcl; // no reference: a timer takes its closure out before it gives it up
};

// A heap: no entry comes before its parent, so that the first one is the next that is due. A closure knows its index,
// and a change touches only the entries between there and the root or a leaf. A sorted array would have to move all
// entries behind the one that goes; timers go from anywhere, and in great numbers.
struct RelativeQueue
{
    Entry *entries;
    QV_INT length;
    QV_INT alloc;
};

RelativeQueue timerRelQueue = {}; // guarded by timerMonitor

// The block doubles and, when three quarters are free, halves, but for the least one.
const QV_INT LEAST_ALLOC = 64;

void resizeQueue( RelativeQueue *queue, QV_INT alloc )
{
    queue->entries = static_cast< Entry * >( qvMemReallocN( queue->entries, alloc, sizeof( Entry ) ) );
    queue->alloc   = alloc;
}

bool isBefore( const Entry &a, const Entry &b )
{
    return a.due != b.due ? a.due < b.due : a.unique < b.unique;
}

void putEntry( RelativeQueue *queue, QV_INT idx, const Entry &entry )
{
    queue->entries[idx] = entry;
    entry.tcl->relIdx   = idx;
}

// Puts an entry where it belongs. What stood at `idx` is overwritten, all others are in order.
void settleEntry( RelativeQueue *queue, QV_INT idx, Entry entry )
{
    while( idx > 0 )
    {
        QV_INT parent = ( idx - 1 ) / 2;

        if( !isBefore( entry, queue->entries[parent] ) )
            break;

        putEntry( queue, idx, queue->entries[parent] );
        idx = parent;
    }

    for( QV_INT child; ( child = 2 * idx + 1 ) < queue->length; idx = child )
    {
        if( child + 1 < queue->length && isBefore( queue->entries[child + 1], queue->entries[child] ) )
            child++;

        if( !isBefore( queue->entries[child], entry ) )
            break;

        putEntry( queue, idx, queue->entries[child] );
    }

    putEntry( queue, idx, entry );
}

// Enters a closure or moves it.
void enqueue( RelativeQueue *queue, QV_INT due, Closure *tcl )
{
    QV_INT idx = tcl->relIdx;

    if( !tcl->schedRel )
    {
        if( queue->length == queue->alloc )
            resizeQueue( queue, std::max( LEAST_ALLOC, 2 * queue->alloc ) );

        idx           = queue->length++;
        tcl->schedRel = QV_TRUE;
    }

    settleEntry( queue, idx, { due, qv___ObjUnique( tcl ), tcl } );
}

void dequeue( RelativeQueue *queue, Closure *tcl )
{
    QV_INT last   = --queue->length;
    tcl->schedRel = QV_FALSE;

    if( tcl->relIdx < last )
        settleEntry( queue, tcl->relIdx, queue->entries[last] );

    if( last < queue->alloc / 4 && queue->alloc > LEAST_ALLOC )
        resizeQueue( queue, queue->alloc / 2 );
}

/* Taking out of the queues --------------------------------------------------------------------------------------- */

// Takes the order to fire away. True if there was one: of all who try at the same time one succeeds.
bool disarm( Closure *tcl )
{
    return qv___AtomicCompareExchange32( &tcl->sched, 1, 0 ) == 1;
}

// Takes a closure out of the queue that it stands in, with the monitor held.
void unschedule( Closure *tcl )
{
    if( tcl->schedRel )
    {
        QV_CHECK( tcl->schedRel != tcl->schedAbs );

        disarm( tcl );
        dequeue( &timerRelQueue, tcl );
    }
    else if( tcl->schedAbs )
    {
        disarm( tcl );
        tcl->schedAbs = QV_FALSE;

        // Another timer may have taken over the Time, then there is none to find.
        for( QV_INT i = 0; i < timerAbsDict->length; i++ )
        {
            QV_OBJ *check = qv::dictItem( timerAbsDict, i ).val;
            QV_CHECK( check );

            if( check == tcl )
            {
                qvDictDelAt( &timerAbsDict, i );
                return;
            }
        }
    }
}

void arm( Closure *tcl )
{
    qv___AtomicCompareExchange32( &tcl->sched, 0, 1 );
}

void freeTimer( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_TIMER *timer = qvTimerFrom( thisObj );

    {
        qv::HeldMonitor held( timerMonitor );
        unschedule( timer->closure );
    }

    qv::drop( timer->closure );
}

void freeClosure( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    Closure *tcl = qv___TimerClosureFrom( thisObj );
    QV_CHECK( !tcl->sched );
    QV_CHECK( !tcl->schedAbs );
    QV_CHECK( !tcl->schedRel );

    qv::drop( tcl->arg );
    qv::drop( tcl->signal );
    qv::drop( tcl->alert );
    qv::drop( tcl->barrier );
    qv::drop( tcl->condSet );
    qv::drop( tcl->abortThread );
}
} // namespace

QV___FAMILY( ___TimerClosure, QV___TIMER_CLOSURE, freeClosure, nullptr, nullptr )
QV___FAMILY( Timer, QV_TIMER, freeTimer, nullptr, nullptr )

void qv___TimerStartup( void )
{
    timerMonitor = qvMonitorCreate();
    qvTimestamp();

    timerRelQueue      = {};
    timerAbsDict       = qvDictCreate();
    timerThreadAbort   = QV_FALSE;
    timerThreadBarrier = qvBarrierCreate( QV_TRUE );
    timerWallNow       = qvTimeNow(); // made here, so that the thread needs no heap of its own to start
    timerThread        = qvThreadTrySpawnCstr(
        "qv___TimerThreadFunc()", -1, qv___TimerThreadFunc, nullptr, QV_THREAD_PRIORITY_HIGHEST );
    QV_CHECK( timerThread );
}

void qv___TimerShutdown( void )
{
    {
        qv::HeldMonitor held( timerMonitor );
        timerThreadAbort = QV_TRUE;
    }

    qvBarrierUnblock( timerThreadBarrier );
    qvThreadJoin( timerThread );

    QV_CHECK_AS( !timerRelQueue.length, "!qvPriorityMapLength( timerRelPrioMap )" );
    QV_CHECK( !qvDictLength( timerAbsDict ) );

    qv::drop( timerThread );
    qv::drop( timerWallNow );
    qv::drop( timerThreadBarrier );
    qv::drop( timerAbsDict );
    qvMemFree( timerRelQueue.entries );
    qv::drop( timerMonitor );
}

/* The timer thread ----------------------------------------------------------------------------------------------- */

namespace
{
const QV_INT NEVER = QV_INT_MAX;

// How often the wall clock is looked at while a Time is queued: less often while it is that far off.
const QV_INT FAR_SECONDS = 10;
const QV_INT FAR_WAIT    = 10000; // milliseconds
const QV_INT NEAR_WAIT   = 1000;

// Fires with no lock held.
void fire( Closure *tcl )
{
    if( tcl->func )
        tcl->func( tcl->arg );

    if( tcl->signal )
        qvSignalAssert( tcl->signal );

    if( tcl->alert )
        qvAlertSet( tcl->alert );

    if( tcl->barrier )
        qvBarrierUnblock( tcl->barrier );

    if( tcl->condSet )
        qvCondsetAddConditions( tcl->condSet, tcl->conditions );

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
        const Entry &first = timerRelQueue.entries[0];

        if( now < first.due )
        {
            *wait = first.due - now;
            return nullptr;
        }

        Closure *tcl = first.tcl;
        dequeue( &timerRelQueue, tcl );

        if( disarm( tcl ) )
            return qv::retain( tcl );
    }

    *wait = NEVER;
    return nullptr;
}

// The same by the wall clock, as it was read in this pass.
Closure *takeAbsolute( QV_INT *wait )
{
    qv::HeldMonitor held( timerMonitor );

    while( timerAbsDict->length > 0 )
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
        tcl->schedAbs = QV_FALSE;

        if( disarm( tcl ) )
            return tcl.give();
    }

    *wait = NEVER;
    return nullptr;
}
} // namespace

void qv___TimerThreadFunc( void )
{
    QV_INT  wait  = -1;
    QV_BOOL abort = QV_FALSE;

    while( !abort )
    {
        // Closed before the queues are looked at, so that nothing is missed. Whoever schedules changes a queue first
        // and then, if the timer is the first one there, opens the barrier. Either that change comes before the look,
        // which then finds it, or the barrier opens after it was closed here and the next pass is not delayed. A timer
        // that is not the first one needs no pass before the first one's time, for which the thread sleeps at most.
        qvBarrierPassTimed( timerThreadBarrier, wait );
        qvBarrierBlock( timerThreadBarrier );

        QV_INT now, relWait = NEVER, absWait = NEVER;

        {
            qv::HeldMonitor held( timerMonitor );
            abort = timerThreadAbort;
            now   = qvTimestamp();
        }

        while( Closure *due = takeRelative( now, &relWait ) )
        {
            qv::Ref< Closure > tcl( due );
            fire( tcl );
        }

        qvTimeSetNow( &timerWallNow );

        while( Closure *due = takeAbsolute( &absWait ) )
        {
            qv::Ref< Closure > tcl( due );
            fire( tcl );
        }

        // With nothing to wait for it sleeps for good, instead of counting the seconds of the longest wait.
        wait = std::min( relWait, absWait );
        wait = wait == NEVER ? -1 : wait;
    }
}

/* Creation ------------------------------------------------------------------------------------------------------- */

namespace
{
template< class T >
T *share( T *object )
{
    return qv::Ref< T >::share( object ).give();
}

// A timer whose closure has no target yet.
QV_TIMER *createTimer()
{
    Closure *tcl     = qv::create< Closure >( qv___TimerClosureSort() );
    tcl->func        = nullptr;
    tcl->arg         = nullptr;
    tcl->signal      = nullptr;
    tcl->alert       = nullptr;
    tcl->barrier     = nullptr;
    tcl->condSet     = nullptr;
    tcl->conditions  = 0;
    tcl->abortThread = nullptr;
    tcl->sched       = 0;
    tcl->schedAbs    = QV_FALSE;
    tcl->schedRel    = QV_FALSE;
    tcl->relIdx      = 0;

    QV_TIMER *timer = qv::create< QV_TIMER >( qvTimerSort() );
    timer->closure  = tcl;

    return timer;
}
} // namespace

QV_TIMER *qvTimerCreate( QV_TIMER_FUNC func, QV_OBJ *arg )
{
    QV_CHECK( func );

    QV_TIMER *timer      = createTimer();
    timer->closure->func = func;
    timer->closure->arg  = share( arg );

    return timer;
}

QV_TIMER *qvTimerCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );

    QV_TIMER *timer        = createTimer();
    timer->closure->signal = qv::retain( sig );

    return timer;
}

QV_TIMER *qvTimerCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );

    QV_TIMER *timer       = createTimer();
    timer->closure->alert = qv::retain( alert );

    return timer;
}

QV_TIMER *qvTimerCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );

    QV_TIMER *timer         = createTimer();
    timer->closure->barrier = qv::retain( barrier );

    return timer;
}

QV_TIMER *qvTimerCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );

    QV_TIMER *timer            = createTimer();
    timer->closure->condSet    = qv::retain( condSet );
    timer->closure->conditions = conditions & 0xffff;

    return timer;
}

QV_TIMER *qv___TimerCreateAbort( void )
{
    QV_TIMER *timer             = createTimer();
    timer->closure->abortThread = qvThreadThis();

    return timer;
}

/* Scheduling ----------------------------------------------------------------------------------------------------- */

namespace
{
// Lets a closure fire at a timestamp, with the monitor held. True if it is the next one now: then the timer thread has
// to be told.
bool scheduleRelative( Closure *tcl, QV_INT due )
{
    if( tcl->schedAbs )
        unschedule( tcl );

    enqueue( &timerRelQueue, due, tcl );
    arm( tcl );

    return tcl->relIdx == 0;
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
        unschedule( tcl );

        qvDictSetObjKey( &timerAbsDict, qv::obj( at ), tcl );
        tcl->schedAbs = QV_TRUE;
        arm( tcl );
        first = qv::dictItem( timerAbsDict, 0 ).val == tcl;
    }

    if( first )
        qvBarrierUnblock( timerThreadBarrier );
}

void qvTimerUnschedule( QV_TIMER *timer )
{
    QV_CHECK( timer );
    disarm( timer->closure );
}

QV_BOOL qvTimerScheduled( QV_TIMER *timer )
{
    QV_CHECK( timer );
    return qv___AtomicLoad32( &timer->closure->sched ) ? QV_TRUE : QV_FALSE;
}
