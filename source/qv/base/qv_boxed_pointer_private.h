#ifndef QV_BOXED_POINTER_PRIVATE_H
#define QV_BOXED_POINTER_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** A pointer as an object, for the library's own use. Boxed pointers order by address. */
typedef struct QV___BOXED_POINTER QV___BOXED_POINTER;

QV_FAMILY( ___BoxedPointer, QV___BOXED_POINTER )

/** Called with the pointer when its object is freed. */
typedef void ( *QV___BOXED_POINTER_FREE_FUNC )( void *value );

/** A new object with the pointer; `freeFunc` may be null. */
QV_API QV___BOXED_POINTER *qv___BoxedPointerCreate( void *value, QV___BOXED_POINTER_FREE_FUNC freeFunc );

/** Its pointer. Null ends the process. */
QV_API void *qv___BoxedPointerValue( QV___BOXED_POINTER *bptr );

#endif
