/** @file
    An integer as an object, so that a Vector or a Dict can hold it. Immutable: any thread may read it
    without a lock. Boxed integers order by their value; the text is the number in base 10. */

#ifndef QV_BOXED_INT_H
#define QV_BOXED_INT_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BoxedInt, QV_BOXED_INT )

/** A new object with the value, owned by the caller. Costs an allocation. */
QV_API QV_BOXED_INT *qvBoxedIntCreate( QV_INT value );

/** Its value. Null ends the process. */
QV_API QV_INT qvBoxedIntValue( QV_BOXED_INT *bint );

#endif
