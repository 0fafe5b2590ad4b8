#ifndef QV_THREAD_PRIVATE_H
#define QV_THREAD_PRIVATE_H

#include "qv/base/qv_thread.h"

/** The two halves of qvThreadEncapsulate(). */
QV_API void qv___ThreadEncapsulateBegin( QV_OBJ *argument );
QV_API void qv___ThreadEncapsulateEnd( void );

/** Where a spawned thread starts: takes over a reference to its Thread. */
QV_API void *qv___ThreadUnixStart( void *thread );

/** Stops a thread where it is, on platforms that can; true if it has. */
QV_API QV_BOOL qv___ThreadTryFreeze( QV_THREAD *thread );

#endif
