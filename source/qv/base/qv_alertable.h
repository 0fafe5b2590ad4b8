/** @file
    Alertable: a target of alerts whose owner can take it back at any time. It is to alerts what a signalable is to
    signals, function for function: with the release of its last reference it is disarmed, a callback that is running
    returns first, none runs after, and a callback must not release the last reference to its own alertable.

    Callable from any thread. Null objects end the process, but `arg` may be null. */

#ifndef QV_ALERTABLE_H
#define QV_ALERTABLE_H

#include "qv/sys/qv_types.h"

/** Called when the target fires. `arg` is borrowed. */
typedef void ( *QV_ALERTABLE_FUNC )( QV_OBJ *arg );

QV_FAMILY( Alertable, QV_ALERTABLE )

/** A new target that calls `func( arg )`, of which `arg` may be null. With null as `func` it does nothing. */
QV_API QV_ALERTABLE *qvAlertableCreate( QV_ALERTABLE_FUNC func, QV_OBJ *arg );

/** @{ */
/** A new target that opens a barrier, adds the low 16 bits of `conditions` to a condition set, asserts a signal or sets
    an alert. It keeps a reference to what it fires for as long as it lives. */
QV_API QV_ALERTABLE *qvAlertableCreateBarrier( QV_BARRIER *barrier );
QV_API QV_ALERTABLE *qvAlertableCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
QV_API QV_ALERTABLE *qvAlertableCreateSignal( QV_SIGNAL *sig );
QV_API QV_ALERTABLE *qvAlertableCreateAlert( QV_ALERT *alert );
/** @} */

#endif
