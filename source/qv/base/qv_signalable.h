/** @file
    Signalable: a target of signals whose owner can take it back at any time.

        QV_SIGNALABLE *done = qvSignalableCreate( onDone, arg );
        qvSignalAddSignalable( sig, done );
        ...
        qvSignalableRelease( done );        // onDone() has returned or will never be called

    Its owner holds the signalable; the signals that it is added to don't, and so it ends with the owner's last
    reference. From then on it fires nothing: a signal to which it was added keeps a small object without a target in
    its place. That release returns only when a callback that is running has returned, and no callback runs after it, so
    what `arg` stands for can be freed then. A callback must therefore not release the last reference to its own
    signalable.

    One signalable may be a target of several signals and fires for each. The callback runs on the thread that asserts,
    with monitors held; qv_signal.h tells what it must not do.

    Any thread may call any function. Null as an argument ends the process, but `func` and `arg` may be null. The result
    belongs to the caller. */

#ifndef QV_SIGNALABLE_H
#define QV_SIGNALABLE_H

#include "qv/sys/qv_types.h"

/** Called when the target fires. `arg` is borrowed. */
typedef void ( *QV_SIGNALABLE_FUNC )( QV_OBJ *arg );

QV_FAMILY( Signalable, QV_SIGNALABLE )

/** Returns a new signalable that calls `func( arg )`. It retains `arg`, which may be null. With null as `func` it does
    nothing. */
QV_API QV_SIGNALABLE *qvSignalableCreate( QV_SIGNALABLE_FUNC func, QV_OBJ *arg );

/** @{ */
/** Returns a new signalable that opens the barrier, adds the low 16 bits of `conditions` to the condition set, asserts
    the signal or sets the alert. It retains that object until its own end. */
QV_API QV_SIGNALABLE *qvSignalableCreateBarrier( QV_BARRIER *barrier );
QV_API QV_SIGNALABLE *qvSignalableCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
QV_API QV_SIGNALABLE *qvSignalableCreateSignal( QV_SIGNAL *sig );
QV_API QV_SIGNALABLE *qvSignalableCreateAlert( QV_ALERT *alert );
/** @} */

#endif
