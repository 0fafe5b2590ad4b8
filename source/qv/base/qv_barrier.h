/** @file
    Barrier: a gate, open or closed. A thread that passes an open barrier goes straight on; one that passes a closed
    barrier sleeps until another thread opens it. Passing changes nothing: an open barrier stays open until it is
    closed.

    It is the one primitive of the library that sleeps: waits for signals, alerts, condition sets, counters, regions and
    threads are waits at barriers. A caller that waits holds a reference of its own to the barrier until the call
    returns.

    Costs. Each call takes a lock of the barrier's own for a few instructions, a timed wait reads the clock too. Opening
    wakes all threads that sleep there.

    Any thread may call any function, and may open, close and ask with monitors held. Null ends the process. */

#ifndef QV_BARRIER_H
#define QV_BARRIER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Barrier, QV_BARRIER )

/** Returns a new barrier, closed if `blocked` is true, else open. It belongs to the caller. */
QV_API QV_BARRIER *qvBarrierCreate( QV_BOOL blocked );

/** True if the barrier is closed, at some moment during the call. */
QV_API QV_BOOL qvBarrierIsBlocked( QV_BARRIER *barrier );

/** Returns when the barrier is open. */
QV_API void qvBarrierPass( QV_BARRIER *barrier );

/** Waits until the barrier is open, for `millisec` milliseconds at most; -1 means no limit, 0 tests only. True if it
    was found open, false if the time ran out. Another negative limit ends the process.

    The limit is measured by qvTimestamp(). The thread sleeps for a second at most at a time and wakes by the wall
    clock, so a wall clock that is set back during a sleep delays the result by as much. */
QV_API QV_BOOL qvBarrierPassTimed( QV_BARRIER *barrier, QV_INT millisec );

/** Closes the barrier. Wakes no thread. */
QV_API void qvBarrierBlock( QV_BARRIER *barrier );

/** Opens the barrier and wakes all threads that sleep at it. */
QV_API void qvBarrierUnblock( QV_BARRIER *barrier );

#endif
