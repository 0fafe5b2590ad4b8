/** @file
    The time base of everything that measures an interval. */

#ifndef QV_TIMESTAMP_H
#define QV_TIMESTAMP_H

#include "qv/sys/qv_types.h"

/** Milliseconds, never fewer than before. They follow the forward steps of the wall clock and swallow its backward
    ones; the first reading is the wall clock's time since the epoch. Two readings may be equal. Callable from any
    thread; costs a lock and a reading of the clock. A wall clock that stands before the epoch ends the process. */
QV_API QV_INT qvTimestamp( void );

#endif
