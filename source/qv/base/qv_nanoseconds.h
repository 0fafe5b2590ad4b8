/** @file
    Durations between milliseconds and nanoseconds. No state: callable from any thread, in constant time. A negative
    duration ends the process. */

#ifndef QV_NANOSECONDS_H
#define QV_NANOSECONDS_H

#include "qv/sys/qv_types.h"

#define QV_NANOSECONDS_OK( nanoseconds ) ( ( nanoseconds ) >= 0 )

/** @{ */
/** To nanoseconds; what does not fit gives -1, or the largest QV_INT. */
QV_API QV_INT qvNanosecondsTryConvertFromMilliseconds( QV_INT milliseconds );
QV_API QV_INT qvNanosecondsConvertFromMillisecondsSaturating( QV_INT milliseconds );
/** @} */

/** @{ */
/** To milliseconds, rounded down, or up. */
QV_API QV_INT qvNanosecondsConvertToMillisecondsTruncate( QV_INT nanoseconds );
QV_API QV_INT qvNanosecondsConvertToMillisecondsExtend( QV_INT nanoseconds );
/** @} */

#endif
