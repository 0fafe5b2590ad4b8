#ifndef QV_TIMESTAMP_PRIVATE_H
#define QV_TIMESTAMP_PRIVATE_H

#include "qv/sys/qv_types.h"

/** @{ */
/** Reads the system clock: milliseconds since the epoch. qvTimestamp() uses the first one where its resolution is less
    than a second, else the other. A clock at or before the epoch, or a failing one, ends the process. */
QV_API QV_INT qv___TimestampRealtime( void );
QV_API QV_INT qv___TimestampGettimeofday( void );
/** @} */

#endif
