/** @file
    Timer: fires a target once at a set time.

        QV_TIMER *timer = qvTimerCreate( remind, note );        // remind( note ) will be called
        qvTimerSchedule( timer, 1500 );                         // in a second and a half
        qvTimerSchedule( timer, 3000 );                         // in three seconds instead
        qvTimerUnschedule( timer );                             // not at all
        qvTimerRelease( timer );

    A timer has one target: a callback, a signal, an alert, a barrier or a condition set. It fires once for each time it
    is scheduled, can be scheduled again at any time, from its own callback too, and a new schedule takes the place of
    the old one. The release of the last reference unschedules it.

    Times. A delay and a timestamp are milliseconds on the scale of qvTimestamp(), which swallows backward steps of the
    wall clock. A Time is one of the wall clock, which is read every ten seconds, and every second in the last ten
    before the first Time. So such a timer fires up to a second late, and a change of the clock changes when it fires.
    Of two timers that are scheduled at equal Times only the one that was scheduled later fires.

    The thread. All timers fire on one thread of the library, which starts with the first timer that is created: it
    inherits that thread's mask of signals. They fire one after the other, those of the earliest time first and
    those with a delay or a timestamp before those with a Time. A callback is called with no lock held and may use any
    timer and release its own; while it runs no other timer fires, so it should be short. What has become due meanwhile
    fires after it without a pause: first the Times that had passed, then, in a new round, the rest. A callback that
    schedules its timer at a Time in the past, again and again, keeps the round from ending: no other timer fires, and
    the library cannot stop.

    Unscheduling and releasing don't wait: a timer that was about to fire may be firing when they return. The argument
    of its callback lives until the callback has returned.

    Costs. Scheduling, firing and releasing take steps in the order of the logarithm of the number of scheduled timers;
    those with a Time stand in a Dict, with its costs. The thread is woken only for a timer that is now the first one
    with a delay or timestamp, or the first one with a Time. Unscheduling and asking take no lock; an unscheduled timer
    keeps its place in the queue until its time comes or it is released.

    Stop. Before the library stops, each timer must have fired or have been released; one that is still in a queue, an
    unscheduled one too, ends the process.

    Any thread may use a timer. Null as a timer, a function, a target or a Time ends the process, and so do a negative
    delay or timestamp and a delay that ends beyond the largest timestamp. A new timer belongs to the caller. */

#ifndef QV_TIMER_H
#define QV_TIMER_H

#include "qv/sys/qv_types.h"

/** Called when a timer fires, with the object that the timer was created with. */
typedef void ( *QV_TIMER_FUNC )( QV_OBJ *arg );

QV_FAMILY( Timer, QV_TIMER )

/* Creation ------------------------------------------------------------------------------------------------------- */

/** Returns a new timer, not scheduled, that calls `func( arg )`. It retains `arg`, which may be null. */
QV_API QV_TIMER *qvTimerCreate( QV_TIMER_FUNC func, QV_OBJ *arg );

/** @{ */
/** Returns a new timer, not scheduled, that asserts the signal, sets the alert, opens the barrier, or adds the low 16
    bits of `conditions` to the condition set. It retains that object. */
QV_API QV_TIMER *qvTimerCreateSignal( QV_SIGNAL *sig );
QV_API QV_TIMER *qvTimerCreateAlert( QV_ALERT *alert );
QV_API QV_TIMER *qvTimerCreateBarrier( QV_BARRIER *barrier );
QV_API QV_TIMER *qvTimerCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
/** @} */

/* Scheduling ----------------------------------------------------------------------------------------------------- */

/** Schedules the timer to fire after so many milliseconds, in place of an earlier schedule; with 0 at once. */
QV_API void qvTimerSchedule( QV_TIMER *timer, QV_INT milliseconds );

/** Schedules the timer to fire at a timestamp of qvTimestamp(), in place of an earlier schedule; at once if it has
    passed. */
QV_API void qvTimerScheduleAt( QV_TIMER *timer, QV_INT timestamp );

/** Schedules the timer to fire at a Time of the wall clock, in place of an earlier schedule; at once if it has passed.
    `at` is retained. */
QV_API void qvTimerScheduleAtTime( QV_TIMER *timer, QV_TIME *at );

/** Cancels the schedule, if there is one. Takes no lock: callable anywhere, from its own callback too. */
QV_API void qvTimerUnschedule( QV_TIMER *timer );

/** True from scheduling until it fires or is unscheduled. Takes no lock. */
QV_API QV_BOOL qvTimerScheduled( QV_TIMER *timer );

#endif
