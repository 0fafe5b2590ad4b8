/** @file
    Barrier: a gate, open or closed. Who passes an open one goes straight through, who passes a closed one sleeps until
    somebody opens it. Passing consumes nothing: an open barrier stays open until it is closed again.

    It is the one primitive of the library that sleeps; signals, alerts, condition sets, regions and threads sleep on
    barriers. A sleeper holds a reference of its own to the barrier. Callable from any thread, and opening and closing
    with any monitor held. Null ends the process. */

#ifndef QV_BARRIER_H
#define QV_BARRIER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Barrier, QV_BARRIER )

/** A new barrier, closed if `blocked`. */
QV_API QV_BARRIER *qvBarrierCreate( QV_BOOL blocked );

/** True while it is closed. */
QV_API QV_BOOL qvBarrierIsBlocked( QV_BARRIER *barrier );

/** Returns when the barrier is open. */
QV_API void qvBarrierPass( QV_BARRIER *barrier );

/** The same for so many milliseconds at most; -1 means no limit, 0 tests only. True if the barrier was found open. The
    limit is measured by qvTimestamp(). A sleep ends by the wall clock, a second from its start or before, so a wall
    clock that is set back during a sleep delays the answer by as much. Another negative limit ends the process. */
QV_API QV_BOOL qvBarrierPassTimed( QV_BARRIER *barrier, QV_INT millisec );

/** Closes it; nobody is woken. */
QV_API void qvBarrierBlock( QV_BARRIER *barrier );

/** Opens it and wakes all who sleep. */
QV_API void qvBarrierUnblock( QV_BARRIER *barrier );

#endif
