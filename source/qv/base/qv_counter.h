/** @file
    Counter: a count that is never negative, and a wait for zero.

    Any thread may call any function. A thread whose wait has returned may release the last reference, even while the
    call that counted down to zero is still returning. Each call takes a lock for a few instructions. Null as a counter
    ends the process. */

#ifndef QV_COUNTER_H
#define QV_COUNTER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Counter, QV_COUNTER )

/** Returns a new counter at 0, which belongs to the caller. */
QV_API QV_COUNTER *qvCounterCreate( void );

/** Returns the count, at some moment during the call. */
QV_API QV_INT qvCounterValue( QV_COUNTER *ctr );

/** Adds 1. A count beyond the largest QV_INT ends the process. */
QV_API void qvCounterIncrement( QV_COUNTER *ctr );

/** Subtracts 1. A count below 0 ends the process. */
QV_API void qvCounterDecrement( QV_COUNTER *ctr );

/** Returns when the count is 0. */
QV_API void qvCounterWaitZero( QV_COUNTER *ctr );

/** Waits for zero for `millisec` milliseconds at most; -1 means no limit, 0 tests only. True if the count was found 0,
    false if the time ran out. Another negative limit ends the process. */
QV_API QV_BOOL qvCounterWaitZeroTimed( QV_COUNTER *ctr, QV_INT millisec );

#endif
