/** @file
    Timer: something that happens once at a set time.

        QV_TIMER *timer = qvTimerCreate( remind, note );        // remind( note ) will be called
        qvTimerSchedule( timer, 1500 );                         // in a second and a half
        qvTimerSchedule( timer, 3000 );                         // no: in three
        qvTimerUnschedule( timer );                             // not at all
        qvTimerRelease( timer );

    A timer has one target: a callback, a signal, an alert, a barrier or a condition set. It fires once for each time it
    is scheduled, can be scheduled again at any time, from its own callback too, and a new schedule takes the place of
    the old one. Releasing the last reference takes the schedule away.

    Times. A delay and a timestamp are milliseconds on the scale of qvTimestamp(), which knows no backward steps of the
    wall clock. A Time follows the wall clock: the clock is looked at every ten seconds, and every second when the first
    Time is near, so such a timer fires up to a second late, and a change of the clock moves it. Of two timers that are
    scheduled at equal Times only the later one fires.

    The thread. All timers fire on one thread of the library, one after the other, those of the earliest time first and
    those with a delay or a timestamp before those with a Time. A callback is called with no lock held and may use any
    timer and release its own; while it runs no other timer fires, so it should be short. What has become due meanwhile
    fires after it without a pause: first the Times that had passed, then, in a new round, the rest. A callback that
    schedules its timer at a Time in the past, again and again, lets no round end: no other timer fires, and the library
    cannot stop.

    Unscheduling, and releasing, don't wait: a timer that is about to fire may be firing when they return. The argument
    of its callback lives until the callback is through.

    Costs. Scheduling, firing and releasing take steps in the order of the logarithm of how many timers are scheduled,
    and the thread is woken only for a timer that is the next one of its kind, with a delay or a timestamp or with a
    Time. Times are compared, and stand in a Dict with its costs. Unscheduling and asking take no lock; an unscheduled
    timer keeps its place, unseen, until its time or until it is released.

    Stop. Before the library stops every timer must have fired or have been released; one that is still in its place
    ends the process.

    Any thread may use a timer. Null as a timer, a target or a Time ends the process, and so do a negative delay or
    timestamp and a delay that ends beyond the largest timestamp. */

#ifndef QV_TIMER_H
#define QV_TIMER_H

#include "qv/sys/qv_types.h"

/** Called when a timer fires, with the object that the timer was created with. */
typedef void ( *QV_TIMER_FUNC )( QV_OBJ *arg );

QV_FAMILY( Timer, QV_TIMER )

/* Creation ------------------------------------------------------------------------------------------------------- */

/** A new timer, not scheduled, that calls `func`; it retains `arg`, which may be null. */
QV_API QV_TIMER *qvTimerCreate( QV_TIMER_FUNC func, QV_OBJ *arg );

/** @{ */
/** A new timer, not scheduled, that asserts a signal, sets an alert, opens a barrier, or adds conditions to a set, of
    which the low 16 bits count. It retains its target. */
QV_API QV_TIMER *qvTimerCreateSignal( QV_SIGNAL *sig );
QV_API QV_TIMER *qvTimerCreateAlert( QV_ALERT *alert );
QV_API QV_TIMER *qvTimerCreateBarrier( QV_BARRIER *barrier );
QV_API QV_TIMER *qvTimerCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
/** @} */

/* Scheduling ----------------------------------------------------------------------------------------------------- */

/** @{ */
/** Schedules the timer in so many milliseconds, at a timestamp, or at a Time, in place of an earlier schedule. What has
    passed already fires at once. `at` is retained. */
QV_API void qvTimerSchedule( QV_TIMER *timer, QV_INT milliseconds );
QV_API void qvTimerScheduleAt( QV_TIMER *timer, QV_INT timestamp );
QV_API void qvTimerScheduleAtTime( QV_TIMER *timer, QV_TIME *at );
/** @} */

/** Takes the schedule away. Takes no lock: callable anywhere, from its own callback too. */
QV_API void qvTimerUnschedule( QV_TIMER *timer );

/** True from scheduling until it fires or is unscheduled. Takes no lock. */
QV_API QV_BOOL qvTimerScheduled( QV_TIMER *timer );

#endif
