/** @file
    A real as an object. Immutable: any thread may read it without a lock. Boxed reals order by qvRealCompare(), thus
    with its tolerance; the text is the number in base 10 with six places. */

#ifndef QV_BOXED_REAL_H
#define QV_BOXED_REAL_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BoxedReal, QV_BOXED_REAL )

/** A new object with the value, owned by the caller. Costs an allocation. */
QV_API QV_BOXED_REAL *qvBoxedRealCreate( QV_REAL value );

/** Its value. Null ends the process. */
QV_API QV_REAL qvBoxedRealValue( QV_BOXED_REAL *br );

#endif
