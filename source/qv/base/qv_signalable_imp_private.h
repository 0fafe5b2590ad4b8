/** @file
    What signals hold of a signalable: see qv_handle_private.h. Any thread may fire and halt it. Null as an object ends
    the process, but `arg` may be null. */

#ifndef QV_SIGNALABLE_IMP_PRIVATE_H
#define QV_SIGNALABLE_IMP_PRIVATE_H

#include "qv/base/qv_handle_private.h"
#include "qv/base/qv_signalable.h"

struct QV___SIGNALABLE_IMP : qv::HandleImp
{
};

QV_FAMILY( ___SignalableImp, QV___SIGNALABLE_IMP )

/** @{ */
/** A new imp with the action of the public function of this name. It retains the objects that it is given. */
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreate( QV_SIGNALABLE_FUNC func, QV_OBJ *arg );
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreateBarrier( QV_BARRIER *barrier );
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreateSignal( QV_SIGNAL *sig );
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreateAlert( QV_ALERT *alert );
/** @} */

/** Fires on the calling thread; nothing happens if it was halted. */
QV_API void qv___SignalableImpSignal( QV___SIGNALABLE_IMP *imp );

/** Waits for a firing that is under way and gives up what it would fire. */
QV_API void qv___SignalableImpHalt( QV___SIGNALABLE_IMP *imp );

#endif
