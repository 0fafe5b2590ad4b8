/** @file
    Thread: a thread of execution that the library knows.

        void work( void )
        {
            QV_OBJ *job = qvThreadUnlatchArgument();            // the thread's function gets its data here
            ...
            qvObjRelease( job );
        }

        QV_THREAD *thread = qvThreadTrySpawnCstr( "worker", -1, work, job, QV_THREAD_PRIORITY_NORMAL );
        ...
        qvThreadJoin( thread );
        qvThreadRelease( thread );

    A thread keeps its object alive while it runs; to release the object neither stops the thread nor waits for it. Its
    end is a signal, which any number of threads may wait for. The object lives on while a reference to it exists: it
    still tells the name and the end.

    Encapsulation. A thread that the library has not started has no Thread object. It may call only functions that do
    not act on the calling thread. qvThreadEncapsulate() gives it a Thread for the length of a call. The thread that has
    started the library has one until it stops the library.

    Stop. qvRuntimeShutdown() waits until all threads that were spawned or encapsulated have ended. A thread that never
    ends keeps the library from stopping.

    Priorities are requests: they take effect where the process may use the real-time scheduler and the scheduling is
    not inherited, as it is by default.

    Functions that take a Thread may be called by any thread. Null as an argument ends the process, but for the argument
    of a thread, and so does a priority out of range. Under "The calling thread" below, a caller without a Thread object
    ends the process too. */

#ifndef QV_THREAD_H
#define QV_THREAD_H

#include "qv/sys/qv_types.h"

/** @{ */
/** A priority, from the least urgent to the most urgent one. They are spread evenly over the range of the system's
    real-time scheduler. */
#define QV_THREAD_PRIORITY_IDLE     0 /**< the scheduler's least */
#define QV_THREAD_PRIORITY_LOWEST   1 /**< below QV_THREAD_PRIORITY_LOW */
#define QV_THREAD_PRIORITY_LOW      2 /**< below what most threads have */
#define QV_THREAD_PRIORITY_NORMAL   3 /**< the middle; what encapsulated threads have */
#define QV_THREAD_PRIORITY_HIGH     4 /**< above what most threads have */
#define QV_THREAD_PRIORITY_HIGHEST  5 /**< above QV_THREAD_PRIORITY_HIGH; what the timers' thread has */
#define QV_THREAD_PRIORITY_CRITICAL 6 /**< the scheduler's greatest */
/** @} */

/** True of a priority. */
#define QV_THREAD_PRIORITY_OK( prio ) ( ( prio ) >= 0 && ( prio ) <= 6 )

/** The function that a thread runs. The thread ends when it returns. */
typedef void ( *QV_THREAD_FUNC )( void );

QV_FAMILY( Thread, QV_THREAD )

/* Spawning and ending -------------------------------------------------------------------------------------------- */

/** @{ */
/** Starts a thread that runs `threadFunc`. Returns its Thread, which belongs to the caller; null, and nothing has
    happened, if the system starts no more threads.

    `argument`, which may be null, is retained, and qvThreadUnlatchArgument() returns it to the new thread; if it is
    never called there, the argument is released when the thread ends. The system shows the first 15 bytes of the name
    in UTF-8.

    A Cstr is UTF-8 with a length in bytes, a Wcstr wide text with a length in units; with a length of -1 it ends at its
    terminator. */
QV_API QV_THREAD *qvThreadTrySpawn( QV_STRING *threadName, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio );
QV_API QV_THREAD *qvThreadTrySpawnCstr(
    const char *threadName, QV_INT length, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio );
QV_API QV_THREAD *qvThreadTrySpawnWcstr(
    const wchar_t *threadName, QV_INT length, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio );
/** @} */

/** True once the end of the thread is asserted. Doesn't wait. */
QV_API QV_BOOL qvThreadEnd( QV_THREAD *thread );

/** Adds a target to the end of the thread, as qvSignalAddSignalable() does to a signal: it fires on that thread when it
    ends, or at once if it has ended. */
QV_API void qvThreadEndAddSignalable( QV_THREAD *thread, QV_SIGNALABLE *sigb );

/** Deletes the target again, as qvSignalDelSignalable() does. */
QV_API void qvThreadEndDelSignalable( QV_THREAD *thread, QV_SIGNALABLE *sigb );

/** Waits until the thread has ended. A caller without a Thread object ends the process; one that waits for itself waits
    for ever. */
QV_API void qvThreadJoin( QV_THREAD *thread );

/* Encapsulation -------------------------------------------------------------------------------------------------- */

/** Gives the calling thread a Thread object, calls `threadFunc` and takes the object away again. A thread that has one
    already ends the process. `argument` is that of qvThreadTrySpawn(); the priority is QV_THREAD_PRIORITY_NORMAL. */
QV_API void qvThreadEncapsulate( QV_THREAD_FUNC threadFunc, QV_OBJ *argument );

/** True if the calling thread has a Thread object. Any thread may ask. */
QV_API QV_BOOL qvThreadEncapsulated( void );

/** Ends the process if the calling thread has no Thread object. */
QV_API void qvThreadCheckEncapsulated( void );

/* The calling thread --------------------------------------------------------------------------------------------- */

/** Returns the calling thread's Thread, as a new reference. */
QV_API QV_THREAD *qvThreadThis( void );

/** Returns the calling thread's priority. */
QV_API QV_INT qvThreadPriority( void );

/** Lets other threads run. */
QV_API void qvThreadYield( void );

/** Returns the argument that the calling thread was started with, which from then on belongs to the caller; null from
    the second call on. */
QV_API QV_OBJ *qvThreadUnlatchArgument( void );

/** Returns the object that the calling thread has set for a key, as a new reference, or null. A thread sees only
    objects of its own; they stand in a Dict, with its costs, and are released when the thread ends. */
QV_API QV_OBJ *qvThreadKey( QV_OBJ *key );

/** True if the calling thread has set an object for a key. */
QV_API QV_BOOL qvThreadHasKey( QV_OBJ *key );

/** Sets the calling thread's object for a key, in place of an earlier one. Key and object are retained. */
QV_API void qvThreadSetKey( QV_OBJ *key, QV_OBJ *val );

/** Deletes the calling thread's object for a key, if there is one. */
QV_API void qvThreadDelKey( QV_OBJ *key );

/* Names ---------------------------------------------------------------------------------------------------------- */

/** Returns the name of a thread, as a new reference. */
QV_API QV_STRING *qvThreadName( QV_THREAD *thread );

/** Returns the priority that a text tells by its name, as in "QV_THREAD_PRIORITY_NORMAL", or by its number; -1 if it
    tells none. */
QV_API QV_INT qvThreadPriorityFromString( QV_STRING *qvs );

/** Returns the name of a priority, which belongs to the caller. */
QV_API QV_STRING *qvThreadPriorityToString( QV_INT prio );

#endif
