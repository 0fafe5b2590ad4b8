/** @file
    The time base of everything that measures an interval. */

#ifndef QV_TIMESTAMP_H
#define QV_TIMESTAMP_H

#include "qv/sys/qv_types.h"

/** Returns milliseconds, never fewer than an earlier call. The first result is the wall clock's time since the epoch;
    from then on the result follows forward steps of the wall clock and adds 1 for a backward step. Two results may be
    equal. Any thread may call it. Costs a lock and a reading of the clock. A wall clock at or before the epoch ends the
    process. */
QV_API QV_INT qvTimestamp( void );

#endif
