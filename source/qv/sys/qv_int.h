/** @file
    Integers: arithmetic that is checked or saturates, and single bits.

    Nothing here has state: every function may be called from any thread, before start-up too, and costs a constant
    time. Bits count from 0, the least significant one, to 63. */

#ifndef QV_INT_H
#define QV_INT_H

#include "qv/sys/qv_types.h"

/** @{ */
/** The functions of QV_INT_ADD_OK() and the macros that follow it. */
static inline QV_BOOL qv___IntAddOk( QV_INT a, QV_INT b )
{
    QV_INT result;
    return __builtin_add_overflow( a, b, &result ) ? QV_FALSE : QV_TRUE;
}

static inline QV_BOOL qv___IntSubOk( QV_INT a, QV_INT b )
{
    QV_INT result;
    return __builtin_sub_overflow( a, b, &result ) ? QV_FALSE : QV_TRUE;
}

static inline QV_BOOL qv___IntMulOk( QV_INT a, QV_INT b )
{
    QV_INT result;
    return __builtin_mul_overflow( a, b, &result ) ? QV_FALSE : QV_TRUE;
}
/** @} */

/** @{ */
/** The same as qvIntAddOk(), qvIntSubOk(), qvIntMulOk() and qvIntDivOk(), inline. The last evaluates its arguments more
    than once and is a truth value of C. */
#define QV_INT_ADD_OK( a, b ) qv___IntAddOk( a, b )
#define QV_INT_SUB_OK( a, b ) qv___IntSubOk( a, b )
#define QV_INT_MUL_OK( a, b ) qv___IntMulOk( a, b )
#define QV_INT_DIV_OK( a, b ) ( ( b ) != 0 && !( ( a ) == QV_INT_MIN && ( b ) == -1 ) )
/** @} */

/** Exchanges `*a` and `*b` if `*a` is greater. Null ends the process. */
QV_API void qvIntSortPair( QV_INT *a, QV_INT *b );

/** Exchanges `*a` and `*b`. Null ends the process. */
QV_API void qvIntExchange( QV_INT *a, QV_INT *b );

/** @{ */
/** The smaller of two integers, and the greater. */
QV_API QV_INT qvIntMin( QV_INT a, QV_INT b );
QV_API QV_INT qvIntMax( QV_INT a, QV_INT b );
/** @} */

/** `value` if it lies between the bounds, else the bound that is nearer to it. The bounds may come in either order. */
QV_API QV_INT qvIntConstrain( QV_INT value, QV_INT a, QV_INT b );

/** The middle of two integers, without overflow: of two that are not negative rounded down, else towards the
    greater one. */
QV_API QV_INT qvIntMid( QV_INT a, QV_INT b );

/** @{ */
/** True if the result of the operation is a QV_INT. Division also needs a divisor other than 0. */
QV_API QV_BOOL qvIntAddOk( QV_INT a, QV_INT b );
QV_API QV_BOOL qvIntSubOk( QV_INT a, QV_INT b );
QV_API QV_BOOL qvIntMulOk( QV_INT a, QV_INT b );
QV_API QV_BOOL qvIntDivOk( QV_INT a, QV_INT b );
/** @} */

/** @{ */
/** The result; QV_INT_MAX where it would be greater, and QV_INT_MIN where it would be smaller. Division truncates; a
    divisor of 0 ends the process. */
QV_API QV_INT qvIntAddSaturating( QV_INT a, QV_INT b );
QV_API QV_INT qvIntSubSaturating( QV_INT a, QV_INT b );
QV_API QV_INT qvIntMulSaturating( QV_INT a, QV_INT b );
QV_API QV_INT qvIntDivSaturating( QV_INT a, QV_INT b );
/** @} */

/** @{ */
/** The absolute value. That of QV_INT_MIN ends the process, or saturates to QV_INT_MAX. */
QV_API QV_INT qvIntAbs( QV_INT value );
QV_API QV_INT qvIntAbsSaturating( QV_INT value );
/** @} */

/** @{ */
/** Whether a bit is set; `value` with it set, and with it cleared. A bit outside 0 to 63 ends the process. */
QV_API QV_BOOL qvIntBitIsSet( QV_INT value, QV_INT bit );
QV_API QV_INT  qvIntBitSet( QV_INT value, QV_INT bit );
QV_API QV_INT  qvIntBitClear( QV_INT value, QV_INT bit );
/** @} */

/** @{ */
/** `value` with the bits from `a` to `b` set, or cleared. Both are included and may come in either order. A bit outside
    0 to 63 ends the process. */
QV_API QV_INT qvIntBitSetRange( QV_INT value, QV_INT a, QV_INT b );
QV_API QV_INT qvIntBitClearRange( QV_INT value, QV_INT a, QV_INT b );
/** @} */

/** @{ */
/** `value` with so many of its highest or of its lowest bits set, or cleared. A number outside 0 to 64 ends the
    process. */
QV_API QV_INT qvIntBitSetHighest( QV_INT value, QV_INT highest );
QV_API QV_INT qvIntBitClearHighest( QV_INT value, QV_INT highest );
QV_API QV_INT qvIntBitSetLowest( QV_INT value, QV_INT lowest );
QV_API QV_INT qvIntBitClearLowest( QV_INT value, QV_INT lowest );
/** @} */

/** @{ */
/** The highest bit that is set, and the lowest; -1 if there is none. */
QV_API QV_INT qvIntBitHighest( QV_INT value );
QV_API QV_INT qvIntBitLowest( QV_INT value );
/** @} */

/** How many bits are set. */
QV_API QV_INT qvIntBitCount( QV_INT value );

#endif
