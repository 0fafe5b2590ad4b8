/** @file
    What alerts hold of an alertable: see qv_handle_private.h. Any thread may fire and halt it. Null as an object ends
    the process, but `arg` may be null. */

#ifndef QV_ALERTABLE_IMP_PRIVATE_H
#define QV_ALERTABLE_IMP_PRIVATE_H

#include "qv/base/qv_handle_private.h"
#include "qv/base/qv_alertable.h"

struct QV___ALERTABLE_IMP : qv::HandleImp
{
};

QV_FAMILY( ___AlertableImp, QV___ALERTABLE_IMP )

/** @{ */
/** A new imp with the action of the public function of this name. It retains the objects that it is given. */
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreate( QV_ALERTABLE_FUNC func, QV_OBJ *arg );
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreateBarrier( QV_BARRIER *barrier );
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreateCondset( QV_CONDSET *condSet, QV_INT conditions );
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreateSignal( QV_SIGNAL *sig );
QV_API QV___ALERTABLE_IMP *qv___AlertableImpCreateAlert( QV_ALERT *alert );
/** @} */

/** Fires on the calling thread; nothing happens if it was halted. */
QV_API void qv___AlertableImpAlert( QV___ALERTABLE_IMP *imp );

/** Waits for a firing that is under way and gives up what it would fire. */
QV_API void qv___AlertableImpHalt( QV___ALERTABLE_IMP *imp );

#endif
