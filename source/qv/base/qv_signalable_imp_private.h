#ifndef QV_SIGNALABLE_IMP_PRIVATE_H
#define QV_SIGNALABLE_IMP_PRIVATE_H

#include "qv/base/qv_signalable.h"
#include "qv/runtime/qv_family.h"

/** What signals hold of a target. It outlives the owner's signalable where somebody still holds it, disarmed. Any
    thread may fire and halt it: the two exclude each other. */
typedef struct QV___SIGNALABLE_IMP QV___SIGNALABLE_IMP;

QV_FAMILY( ___SignalableImp, QV___SIGNALABLE_IMP )

QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreate( QV_SIGNALABLE_FUNC func, QV_OBJ *arg );
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreateBarrier( QV_BARRIER *barrier );
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreateSignal( QV_SIGNAL *sig );
QV_API QV___SIGNALABLE_IMP *qv___SignalableImpCreateAlert( QV_ALERT *alert );

/** Fires. */
QV_API void qv___SignalableImpSignal( QV___SIGNALABLE_IMP *imp );

/** Disarms it: waits for a firing that is under way, gives up what it would fire; from then on firing does nothing. */
QV_API void qv___SignalableImpHalt( QV___SIGNALABLE_IMP *imp );

#endif
