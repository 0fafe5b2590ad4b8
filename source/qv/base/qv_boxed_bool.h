/** @file
    A truth value as an object: one of two objects that live as long as the library runs. Immutable: any thread may
    read it without a lock. False orders before true; the text is `true` or `false`. Constant time throughout, and no
    memory. */

#ifndef QV_BOXED_BOOL_H
#define QV_BOXED_BOOL_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BoxedBool, QV_BOXED_BOOL )

/** A new reference to the object for the value, owned by the caller. Any value but 0 is true. */
QV_API QV_BOXED_BOOL *qvBoxedBoolCreate( QV_BOOL value );

/** Its value. Null ends the process. */
QV_API QV_BOOL qvBoxedBoolValue( QV_BOXED_BOOL *bbl );

#endif
