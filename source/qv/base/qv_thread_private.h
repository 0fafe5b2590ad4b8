#ifndef QV_THREAD_PRIVATE_H
#define QV_THREAD_PRIVATE_H

#include "qv/base/qv_thread.h"

/** @{ */
/** What qvThreadEncapsulate() does before and after it calls the function. To begin on a thread that has a Thread
    object, or to end on one that has none, ends the process. */
QV_API void qv___ThreadEncapsulateBegin( QV_OBJ *argument );
QV_API void qv___ThreadEncapsulateEnd( void );
/** @} */

/** @{ */
/** The two steps of qvThreadTrySpawn(): the object of a thread that has not started, owned by the caller, and its start,
    which can fail. A thread that is never started is released like any object. */
QV_API QV_THREAD *qv___ThreadCreate( QV_STRING *threadName, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio );
QV_API QV_BOOL    qv___ThreadTryStart( QV_THREAD *thread );
/** @} */

/** The start routine of spawned threads. Takes over a reference to the QV_THREAD, and returns null. */
QV_API void *qv___ThreadUnixStart( void *thread );

/** Stops a thread where it is and returns true, on platforms that can. This one cannot: false. Null ends the
    process. */
QV_API QV_BOOL qv___ThreadTryFreeze( QV_THREAD *thread );

#endif
