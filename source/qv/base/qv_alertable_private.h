#ifndef QV_ALERTABLE_PRIVATE_H
#define QV_ALERTABLE_PRIVATE_H

#include "qv/base/qv_alertable.h"
#include "qv/base/qv_alertable_imp_private.h"

struct QV_ALERTABLE : qv::Handle< QV___ALERTABLE_IMP >
{
};

/** Fires the imp without an alert. Null ends the process. */
QV_API void qv___AlertableAlert( QV_ALERTABLE *alb );

/** The imp, with a new reference, which the caller owns. Null ends the process. */
QV_API QV___ALERTABLE_IMP *qv___AlertableImp( QV_ALERTABLE *alb );

#endif
