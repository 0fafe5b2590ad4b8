#ifndef QV_TIME_PRIVATE_H
#define QV_TIME_PRIVATE_H

#include "qv/sys/qv_types.h"

/** When the library was started. The caller owns the reference. */
QV_API QV_TIME *qv___TimeStarted( void );

#endif
