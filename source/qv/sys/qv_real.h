/** @file
    Tests on reals. No state: callable from any thread, before start-up too, in constant time. */

#ifndef QV_REAL_H
#define QV_REAL_H

#include "qv/sys/qv_types.h"

/** False for the infinities and for NaN. */
QV_API QV_BOOL qvRealIsFinite( QV_REAL x );

/** True for NaN. */
QV_API QV_BOOL qvRealIsNan( QV_REAL x );

/** True for everything but NaN and the infinities. */
QV_API QV_BOOL qvRealOk( QV_REAL x );

/** True when the two differ by 2.220446049250313e-16 at most. The tolerance is absolute: of large values, only the
    same ones are equal. */
QV_API QV_BOOL qvRealEquals( QV_REAL a, QV_REAL b );

/** 0 if the two are equal as above, else -1 if `a` is the smaller one, else 1; with a NaN always 1. */
QV_API QV_INT qvRealCompare( QV_REAL a, QV_REAL b );

/** Rounds towards zero. */
QV_API QV_REAL qvRealTrunc( QV_REAL x );

/** Rounds towards zero and saturates. The result for NaN is unspecified. */
QV_API QV_INT qvRealToInt( QV_REAL x );

/** @{ */
/** The same comparisons with an integer, which is turned into a real first. */
QV_API QV_BOOL qvRealEqualsInt( QV_REAL x, QV_INT i );
QV_API QV_INT  qvRealCompareInt( QV_REAL x, QV_INT i );
/** @} */

#endif
