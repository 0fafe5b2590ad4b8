#ifndef QV_UNIQUE_PRIVATE_H
#define QV_UNIQUE_PRIVATE_H

#include "qv/sys/qv_types.h"

#define QV___UNIQUE_INVALID ( (QV_INT)-1 )
#define QV___UNIQUE_MAX     QV_INT_MAX


/** Draws the number that was given back last, else the lowest never drawn. Constant time. */
QV_API QV_INT qv___UniqueGet( void );

/** Gives a number back. It must be drawn. */
QV_API void qv___UniquePut( QV_INT uni );

#endif
