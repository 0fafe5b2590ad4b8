/** @file
    Alert: an event that can be set and unset any number of times. In every other way it is a signal.

        QV_ALERT *full = qvAlertCreate();
        qvAlertSet( full );
        qvAlertWait( full );                // returns at once
        qvAlertUnset( full );

    Targets are those of a signal, with alertables in the place of signalables, and they fire once here too: setting
    the alert fires what has been added since it was last set, and then the alert holds no target any more. (As with
    signals, a target that was added again after the first one of its kind was deleted fires twice.) A target
    that is added to a set alert fires at once and isn't kept for the next time. They fire on the thread that sets, with
    the alert's monitor held: alertables, alerts, signals, barriers, and within a kind the first that was added before
    the others. What a firing does must not come back to the alert, not even to ask whether it is set.

    Who waits is woken by setting. An alert that is unset again before the woken thread gets to run may keep it
    sleeping, so who must see every setting adds a target. Callable from any thread. Null ends the process. */

#ifndef QV_ALERT_H
#define QV_ALERT_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Alert, QV_ALERT )

/** A new alert: not set, no targets. */
QV_API QV_ALERT *qvAlertCreate( void );

/** True while it is set. Takes the alert's monitor: not callable from callbacks that the alert itself fires. */
QV_API QV_BOOL qvAlertIsSet( QV_ALERT *al );

/** Sets the alert, wakes who waits for it and fires its targets. Does nothing when it is set already. */
QV_API void qvAlertSet( QV_ALERT *al );

/** Makes it unset; touches no target. */
QV_API void qvAlertUnset( QV_ALERT *al );

/** Returns when the alert is set. */
QV_API void qvAlertWait( QV_ALERT *al );

/** The same for so many milliseconds at most; -1 means no limit, 0 tests only. True if it was found set. Another
    negative limit ends the process. */
QV_API QV_BOOL qvAlertWaitTimed( QV_ALERT *al, QV_INT millisec );

/** @{ */
/** Adds a target for the next setting, or fires it if the alert is set. One that is there already stays there once; but
    when the first target of a kind was deleted, one that is there and is added again stands there twice, and fires
    twice. */
QV_API void qvAlertAddAlertable( QV_ALERT *al, QV_ALERTABLE *alb );
QV_API void qvAlertAddAlert( QV_ALERT *al, QV_ALERT *chainedAlert );
QV_API void qvAlertAddSignal( QV_ALERT *al, QV_SIGNAL *sig );
QV_API void qvAlertAddBarrier( QV_ALERT *al, QV_BARRIER *barrier );
/** @} */

/** @{ */
/** Deletes a target, from both places where it stands twice; one that isn't there is no failure. Waits for a setting
    that is under way. */
QV_API void qvAlertDelAlertable( QV_ALERT *al, QV_ALERTABLE *alb );
QV_API void qvAlertDelAlert( QV_ALERT *al, QV_ALERT *chainedAlert );
QV_API void qvAlertDelSignal( QV_ALERT *al, QV_SIGNAL *sig );
QV_API void qvAlertDelBarrier( QV_ALERT *al, QV_BARRIER *barrier );
/** @} */

#endif
