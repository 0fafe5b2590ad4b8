#ifndef QV_REAL_PRIVATE_H
#define QV_REAL_PRIVATE_H

#include "qv/sys/qv_types.h"

/** @{ */
/** x * y + z with one rounding, to nearest and ties to even: the fused multiply-add of the C library, without the library
    of mathematics, whose loading costs each process some 40 microseconds. The second form is the one for processors
    without an instruction for it. */
QV_API QV_REAL qv___RealMultiplyAdd( QV_REAL x, QV_REAL y, QV_REAL z );
QV_API QV_REAL qv___RealMultiplyAddPlain( QV_REAL x, QV_REAL y, QV_REAL z );
/** @} */

#endif
