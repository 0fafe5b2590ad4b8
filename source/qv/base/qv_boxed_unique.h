/** @file
    An identity as an object: equal to itself and to nothing else. Two of them have a stable order, set when they are
    first compared. Any thread may use one. */

#ifndef QV_BOXED_UNIQUE_H
#define QV_BOXED_UNIQUE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BoxedUnique, QV_BOXED_UNIQUE )

/** A new object, different from every other and owned by the caller. Costs an allocation. */
QV_API QV_BOXED_UNIQUE *qvBoxedUniqueCreate( void );

#endif
