/** @file
    Alertable: a target of alerts whose owner can take it back at any time. It is to alerts what a signalable is to
    signals, function for function. The release of its last reference returns only when a callback that is running has
    returned, and no callback runs after it. A callback must therefore not release the last reference to its own
    alertable. It runs on the thread that sets the alert, with monitors held; qv_alert.h tells what it must not do.

    Any thread may call any function. Null as an argument ends the process, but `func` and `arg` may be null. The result
    belongs to the caller. */

#ifndef QV_ALERTABLE_H
#define QV_ALERTABLE_H

#include "qv/sys/qv_types.h"

/** Called when the target fires. `arg` is borrowed. */
typedef void ( *QV_ALERTABLE_FUNC )( QV_OBJ *arg );

QV_FAMILY( Alertable, QV_ALERTABLE )

/** Returns a new alertable that calls `func( arg )`. It retains `arg`, which may be null. With null as `func` it does
    nothing. */
QV_API QV_ALERTABLE *qvAlertableCreate( QV_ALERTABLE_FUNC func, QV_OBJ *arg );

/** @{ */
/** Returns a new alertable that opens the barrier, adds the low 16 bits of `conditions` to the condition set, asserts
    the signal or sets the alert. It retains that object until its own end. */
QV_API QV_ALERTABLE *qvAlertableCreateBarrier( QV_BARRIER *barrier );
QV_API QV_ALERTABLE *qvAlertableCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
QV_API QV_ALERTABLE *qvAlertableCreateSignal( QV_SIGNAL *sig );
QV_API QV_ALERTABLE *qvAlertableCreateAlert( QV_ALERT *alert );
/** @} */

#endif
