/** @file
    Conversion of durations between milliseconds and nanoseconds. Any thread may call any function, in constant time. A
    negative duration ends the process. */

#ifndef QV_NANOSECONDS_H
#define QV_NANOSECONDS_H

#include "qv/sys/qv_types.h"

/** True of a duration in nanoseconds: it is not negative. */
#define QV_NANOSECONDS_OK( nanoseconds ) ( ( nanoseconds ) >= 0 )

/** Returns the nanoseconds; -1 if they don't fit into a QV_INT. */
QV_API QV_INT qvNanosecondsTryConvertFromMilliseconds( QV_INT milliseconds );

/** Returns the nanoseconds; the largest QV_INT if they don't fit into one. */
QV_API QV_INT qvNanosecondsConvertFromMillisecondsSaturating( QV_INT milliseconds );

/** Returns the milliseconds, rounded down. */
QV_API QV_INT qvNanosecondsConvertToMillisecondsTruncate( QV_INT nanoseconds );

/** Returns the milliseconds, rounded up. */
QV_API QV_INT qvNanosecondsConvertToMillisecondsExtend( QV_INT nanoseconds );

#endif
