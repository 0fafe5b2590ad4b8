/** @file
    Counter: a count that is never negative, and a wait for zero. Callable from any thread; the last reference may be
    given up as soon as a wait has returned, while the thread that counted down to zero is still on its way out. Null
    ends the process. */

#ifndef QV_COUNTER_H
#define QV_COUNTER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Counter, QV_COUNTER )

/** A new counter at 0. */
QV_API QV_COUNTER *qvCounterCreate( void );

/** The count, at some moment during the call. */
QV_API QV_INT qvCounterValue( QV_COUNTER *ctr );

/** Adds 1. More than the largest integer ends the process. */
QV_API void qvCounterIncrement( QV_COUNTER *ctr );

/** Subtracts 1. Less than 0 ends the process. */
QV_API void qvCounterDecrement( QV_COUNTER *ctr );

/** Returns when the count is 0. */
QV_API void qvCounterWaitZero( QV_COUNTER *ctr );

/** The same for so many milliseconds at most; -1 means no limit, 0 tests only. True if the count was found 0. Another
    negative limit ends the process. */
QV_API QV_BOOL qvCounterWaitZeroTimed( QV_COUNTER *ctr, QV_INT millisec );

#endif
