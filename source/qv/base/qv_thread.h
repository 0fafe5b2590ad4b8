/** @file
    Thread: a thread of execution that the library knows.

        void work( void )
        {
            QV_OBJ *job = qvThreadUnlatchArgument();            // the body gets its data here
            ...
            qvObjRelease( job );
        }

        QV_THREAD *thread = qvThreadTrySpawnCstr( "worker", -1, work, job, QV_THREAD_PRIORITY_NORMAL );
        ...
        qvThreadJoin( thread );
        qvThreadRelease( thread );

    A thread runs whether or not somebody holds its object; releasing it neither stops nor awaits it. Its end is a
    signal, which any number of threads may wait for. The object outlives the thread while somebody holds it: name,
    priority and end stay readable.

    Encapsulation. A thread that the library has not started has no Thread object and may use only what does not act on
    the calling thread. qvThreadEncapsulate() gives it one for the length of a call. The thread that has started the
    library has one until it stops the library.

    Stop. qvRuntimeShutdown() waits until every thread that was spawned or encapsulated is through, so a body must
    return once it is time; one that never does keeps the library from stopping.

    Priorities are requests: they take effect where the process may use the real-time scheduler and the scheduling is
    not inherited, as it is by default.

    Any thread may call what takes a Thread. What takes none acts on the calling thread and ends the process where that
    has no Thread object, and so do null as a Thread, a name, a body, a key or a value and a priority out of range. */

#ifndef QV_THREAD_H
#define QV_THREAD_H

#include "qv/sys/qv_types.h"

#define QV_THREAD_PRIORITY_IDLE     0
#define QV_THREAD_PRIORITY_LOWEST   1
#define QV_THREAD_PRIORITY_LOW      2
#define QV_THREAD_PRIORITY_NORMAL   3
#define QV_THREAD_PRIORITY_HIGH     4
#define QV_THREAD_PRIORITY_HIGHEST  5
#define QV_THREAD_PRIORITY_CRITICAL 6

#define QV_THREAD_PRIORITY_OK( prio ) ( ( prio ) >= 0 && ( prio ) <= 6 )

/** The body of a thread. */
typedef void ( *QV_THREAD_FUNC )( void );

QV_FAMILY( Thread, QV_THREAD )

/* Spawning and ending -------------------------------------------------------------------------------------------- */

/** @{ */
/** Starts a thread. Null when the system has no room for one more, in which case nothing has happened.

    `argument` is what qvThreadUnlatchArgument() gives the body, and may be null; an argument that the body never
    fetches is released when the thread ends. The system shows the first 15 bytes of the name in UTF-8. A Cstr is UTF-8
    with a length in bytes, a Wcstr wide text with a length in units; a length of -1 means that it ends at its
    terminator. */
QV_API QV_THREAD *qvThreadTrySpawn( QV_STRING *threadName, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio );
QV_API QV_THREAD *qvThreadTrySpawnCstr(
    const char *threadName, QV_INT length, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio );
QV_API QV_THREAD *qvThreadTrySpawnWcstr(
    const wchar_t *threadName, QV_INT length, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio );
/** @} */

/** True once the thread has ended. Doesn't wait. */
QV_API QV_BOOL qvThreadEnd( QV_THREAD *thread );

/** @{ */
/** Fires the target when the thread ends, on that thread, or at once if it has; takes the target away again. */
QV_API void qvThreadEndAddSignalable( QV_THREAD *thread, QV_SIGNALABLE *sigb );
QV_API void qvThreadEndDelSignalable( QV_THREAD *thread, QV_SIGNALABLE *sigb );
/** @} */

/** Waits until the thread has ended. The caller has a Thread object itself, another one. */
QV_API void qvThreadJoin( QV_THREAD *thread );

/* Encapsulation -------------------------------------------------------------------------------------------------- */

/** Calls `threadFunc` with a Thread object for the calling thread, which must have none yet. `argument` as above. */
QV_API void qvThreadEncapsulate( QV_THREAD_FUNC threadFunc, QV_OBJ *argument );

/** True if the calling thread has a Thread object. */
QV_API QV_BOOL qvThreadEncapsulated( void );

/** Ends the process if it has none. */
QV_API void qvThreadCheckEncapsulated( void );

/* The calling thread --------------------------------------------------------------------------------------------- */

/** @{ */
/** Its Thread, as a new reference; its priority. */
QV_API QV_THREAD *qvThreadThis( void );
QV_API QV_INT     qvThreadPriority( void );
/** @} */

/** Lets other threads run. */
QV_API void qvThreadYield( void );

/** The argument that it was started with, which from then on belongs to the caller; null from the second time on. */
QV_API QV_OBJ *qvThreadUnlatchArgument( void );

/** @{ */
/** Its own objects, by key: the object of a key as a new reference, or null; is there one; sets one; takes it away, if
    there is one. They are released when the thread ends. No other thread sees them. */
QV_API QV_OBJ *qvThreadKey( QV_OBJ *key );
QV_API QV_BOOL qvThreadHasKey( QV_OBJ *key );
QV_API void    qvThreadSetKey( QV_OBJ *key, QV_OBJ *val );
QV_API void    qvThreadDelKey( QV_OBJ *key );
/** @} */

/* Names ---------------------------------------------------------------------------------------------------------- */

/** The name of a thread, as a new reference. */
QV_API QV_STRING *qvThreadName( QV_THREAD *thread );

/** @{ */
/** The priority that a text names or gives as a number, or -1; the name of a priority, as in
    `QV_THREAD_PRIORITY_NORMAL`. */
QV_API QV_INT     qvThreadPriorityFromString( QV_STRING *qvs );
QV_API QV_STRING *qvThreadPriorityToString( QV_INT prio );
/** @} */

#endif
