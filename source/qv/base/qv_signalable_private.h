#ifndef QV_SIGNALABLE_PRIVATE_H
#define QV_SIGNALABLE_PRIVATE_H

#include "qv/base/qv_signalable.h"
#include "qv/base/qv_signalable_imp_private.h"

/** What the owner holds. The signals that it is added to hold the object behind it. */
struct QV_SIGNALABLE : QV_OBJ
{
    QV___SIGNALABLE_IMP *imp; // never null
};

/** Fires the target without a signal. */
QV_API void qv___SignalableSignal( QV_SIGNALABLE *sigb );

/** The object behind it, with a new reference. */
QV_API QV___SIGNALABLE_IMP *qv___SignalableImp( QV_SIGNALABLE *sigb );

#endif
