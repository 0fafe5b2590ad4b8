/** @file
    The absence of a value as an object, for containers, which hold no null pointers. There is one object, which lives
    as long as the library runs; its text is `null`. Any thread may use it. */

#ifndef QV_BOXED_NULL_H
#define QV_BOXED_NULL_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BoxedNull, QV_BOXED_NULL )

/** A new reference to the one object, owned by the caller. Constant time. */
QV_API QV_BOXED_NULL *qvBoxedNullCreate( void );

#endif
