#ifndef QV_TIME_PRIVATE_H
#define QV_TIME_PRIVATE_H

#include "qv/sys/qv_types.h"

/** When the library was started, as a new reference, which the caller owns. */
QV_API QV_TIME *qv___TimeStarted( void );

#endif
