#ifndef QV_TIMESTAMP_PRIVATE_H
#define QV_TIMESTAMP_PRIVATE_H

#include "qv/sys/qv_types.h"

/** The two readers of the system clock, in milliseconds since the epoch. The start-up chooses the better one. */
QV_API QV_INT qv___TimestampRealtime( void );
QV_API QV_INT qv___TimestampGettimeofday( void );

#endif
