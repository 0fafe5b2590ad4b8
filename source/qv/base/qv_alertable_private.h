#ifndef QV_ALERTABLE_PRIVATE_H
#define QV_ALERTABLE_PRIVATE_H

#include "qv/base/qv_alertable.h"
#include "qv/base/qv_alertable_imp_private.h"

/** What the owner holds. The alerts that it is added to hold the object behind it. */
struct QV_ALERTABLE : QV_OBJ
{
    QV___ALERTABLE_IMP *imp; // never null
};

/** Fires the target without an alert. */
QV_API void qv___AlertableAlert( QV_ALERTABLE *alb );

/** The object behind it, with a new reference. */
QV_API QV___ALERTABLE_IMP *qv___AlertableImp( QV_ALERTABLE *alb );

#endif
