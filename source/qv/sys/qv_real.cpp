#include "qv/sys/qv_real.h"
#include "qv/sys/qv_order_private.h"

#include <float.h>
#include <math.h>

QV_BOOL qvRealIsFinite( QV_REAL x )
{
    return fabs( x ) <= DBL_MAX ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRealIsNan( QV_REAL x )
{
    return x != x ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRealOk( QV_REAL x )
{
    return qvRealIsFinite( x );
}

QV_BOOL qvRealEquals( QV_REAL a, QV_REAL b )
{
    return qv::realsEqual( a, b ) ? QV_TRUE : QV_FALSE;
}

QV_INT qvRealCompare( QV_REAL a, QV_REAL b )
{
    return qv::order( a, b );
}

QV_REAL qvRealTrunc( QV_REAL x )
{
    return x < 0.0 ? ceil( x ) : floor( x );
}

QV_INT qvRealToInt( QV_REAL x )
{
    const QV_REAL bound = 9223372036854775808.0; // 2 to the power 63

    if( x < -bound )
        return QV_INT_MIN;

    if( x >= bound )
        return QV_INT_MAX;

    return qvRealIsNan( x ) ? 0 : static_cast< QV_INT >( x );
}

QV_BOOL qvRealEqualsInt( QV_REAL x, QV_INT i )
{
    return qvRealEquals( x, static_cast< QV_REAL >( i ) );
}

QV_INT qvRealCompareInt( QV_REAL x, QV_INT i )
{
    return qvRealCompare( x, static_cast< QV_REAL >( i ) );
}
