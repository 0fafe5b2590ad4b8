/** @file
    Signalable: a target of signals whose owner can take it back at any time.

        QV_SIGNALABLE *done = qvSignalableCreate( onDone, arg );
        qvSignalAddSignalable( sig, done );
        ...
        qvSignalableRelease( done );        // onDone() has returned or will never be called

    Who creates a signalable holds it; the signals that it is added to hold an object behind it. With the last reference
    to the signalable that object is disarmed, whoever still holds it: the release returns only when a callback that is
    running has returned, and no callback runs after it, so what `arg` stands for can be freed then. A callback must
    therefore not release the last reference to its own signalable.

    One signalable may be a target of several signals and fires for each. The callback runs on the thread that asserts,
    with monitors held; qv_signal.h tells what it must not do. Callable from any thread. Null objects end the process,
    but `arg` may be null. */

#ifndef QV_SIGNALABLE_H
#define QV_SIGNALABLE_H

#include "qv/sys/qv_types.h"

/** Called when the target fires. `arg` is borrowed. */
typedef void ( *QV_SIGNALABLE_FUNC )( QV_OBJ *arg );

QV_FAMILY( Signalable, QV_SIGNALABLE )

/** A new target that calls `func( arg )`, of which `arg` may be null. With null as `func` it does nothing. */
QV_API QV_SIGNALABLE *qvSignalableCreate( QV_SIGNALABLE_FUNC func, QV_OBJ *arg );

/** @{ */
/** A new target that opens a barrier, adds the low 16 bits of `conditions` to a condition set, asserts a signal or sets
    an alert. It keeps a reference to what it fires for as long as it lives. */
QV_API QV_SIGNALABLE *qvSignalableCreateBarrier( QV_BARRIER *barrier );
QV_API QV_SIGNALABLE *qvSignalableCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
QV_API QV_SIGNALABLE *qvSignalableCreateSignal( QV_SIGNAL *sig );
QV_API QV_SIGNALABLE *qvSignalableCreateAlert( QV_ALERT *alert );
/** @} */

#endif
