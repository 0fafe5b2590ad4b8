/** @file
    Alert: an event that can be set and unset any number of times. In all other ways it is like a signal.

        QV_ALERT *full = qvAlertCreate();
        qvAlertSet( full );
        qvAlertWait( full );                // returns at once
        qvAlertUnset( full );

    Targets. An alert takes the targets of a signal, with alertables in the place of signalables. Setting it fires each
    target once, but for the case that is told where they are added, and then forgets all of them, so that the next
    setting fires only what was added since. A target that is added to an alert that is set fires at once and is not
    kept for the next setting.

    Order. Targets fire on the thread that sets, before qvAlertSet() returns: alertables, alerts, signals, barriers, and
    within a kind the first that was added before the others. The alert's monitor is held all the while, so nothing that
    a firing does may come back to the alert, not even to ask whether it is set, and no chain of events may lead back to
    where it started. A thread that does so waits for itself.

    Setting wakes the threads that wait. If the alert is unset again before a woken thread runs, that thread may go on
    sleeping; a thread that must notice every setting adds a target instead. A caller that waits or sets holds a
    reference to the alert until the call returns.

    Costs are those of a signal. Any thread may call any function. Null as an argument ends the process. Arguments are
    borrowed; what a function that creates returns belongs to the caller. */

#ifndef QV_ALERT_H
#define QV_ALERT_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Alert, QV_ALERT )

/** Returns a new alert: not set, no targets. */
QV_API QV_ALERT *qvAlertCreate( void );

/** True while it is set. Takes the alert's monitor: not callable from callbacks that the alert itself fires. */
QV_API QV_BOOL qvAlertIsSet( QV_ALERT *al );

/** Sets the alert, wakes all threads that wait for it and fires its targets. Does nothing when it is set already. */
QV_API void qvAlertSet( QV_ALERT *al );

/** Unsets the alert. Its targets stay, and nothing fires. */
QV_API void qvAlertUnset( QV_ALERT *al );

/** Returns when the alert is set. */
QV_API void qvAlertWait( QV_ALERT *al );

/** Waits for the alert for `millisec` milliseconds at most; -1 means no limit, 0 tests only. True if it was found set,
    false if the time ran out. Another negative limit ends the process. */
QV_API QV_BOOL qvAlertWaitTimed( QV_ALERT *al, QV_INT millisec );

/** @{ */
/** Adds a target for the next setting, or fires it if the alert is set. A target that is there already is not added
    again, with one exception: after the first target of its kind was deleted, a target that is added again is there
    twice and fires twice. */
QV_API void qvAlertAddAlertable( QV_ALERT *al, QV_ALERTABLE *alb );
QV_API void qvAlertAddAlert( QV_ALERT *al, QV_ALERT *chainedAlert );
QV_API void qvAlertAddSignal( QV_ALERT *al, QV_SIGNAL *sig );
QV_API void qvAlertAddBarrier( QV_ALERT *al, QV_BARRIER *barrier );
/** @} */

/** @{ */
/** Deletes a target, twice if it is there twice. One that isn't there is no failure. Waits for a setting that is under
    way. */
QV_API void qvAlertDelAlertable( QV_ALERT *al, QV_ALERTABLE *alb );
QV_API void qvAlertDelAlert( QV_ALERT *al, QV_ALERT *chainedAlert );
QV_API void qvAlertDelSignal( QV_ALERT *al, QV_SIGNAL *sig );
QV_API void qvAlertDelBarrier( QV_ALERT *al, QV_BARRIER *barrier );
/** @} */

#endif
