#ifndef QV_SIGNALABLE_PRIVATE_H
#define QV_SIGNALABLE_PRIVATE_H

#include "qv/base/qv_signalable.h"
#include "qv/base/qv_signalable_imp_private.h"

struct QV_SIGNALABLE : qv::Handle< QV___SIGNALABLE_IMP >
{
};

/** Fires the imp without a signal. Null ends the process. */
QV_API void qv___SignalableSignal( QV_SIGNALABLE *sigb );

/** The imp, with a new reference, which the caller owns. Null ends the process. */
QV_API QV___SIGNALABLE_IMP *qv___SignalableImp( QV_SIGNALABLE *sigb );

#endif
