#ifndef QV_ALERTABLE_IMP_PRIVATE_H
#define QV_ALERTABLE_IMP_PRIVATE_H

#include "qv/base/qv_alertable.h"
#include "qv/runtime/qv_family.h"

/** What alerts hold of a target. It outlives the owner's alertable where somebody still holds it, disarmed. Any
    thread may fire and halt it: the two exclude each other. */
typedef struct QV___ALERTABLE_IMP QV___ALERTABLE_IMP;

QV_FAMILY( ___AlertableImp, QV___ALERTABLE_IMP )

QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreate( QV_ALERTABLE_FUNC func, QV_OBJ *arg );
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreateBarrier( QV_BARRIER *barrier );
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreateSignal( QV_SIGNAL *sig );
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreateAlert( QV_ALERT *alert );

/** Fires. */
QV_API void qv___AlertableImpAlert( QV___ALERTABLE_IMP *imp );

/** Disarms it: waits for a firing that is under way, gives up what it would fire; from then on firing does nothing. */
QV_API void qv___AlertableImpHalt( QV___ALERTABLE_IMP *imp );

#endif
