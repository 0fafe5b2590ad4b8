#include "qv/base/qv_nanoseconds.h"

#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_int.h"

namespace
{
const QV_INT NANOSECONDS_PER_MILLISECOND = 1000000;
} // namespace

QV_INT qvNanosecondsTryConvertFromMilliseconds( QV_INT milliseconds )
{
    QV_CHECK( milliseconds >= 0 );

    return QV_INT_MUL_OK( milliseconds, NANOSECONDS_PER_MILLISECOND ) ? milliseconds * NANOSECONDS_PER_MILLISECOND : -1;
}

QV_INT qvNanosecondsConvertFromMillisecondsSaturating( QV_INT milliseconds )
{
    QV_CHECK( milliseconds >= 0 );

    return qvIntMulSaturating( milliseconds, NANOSECONDS_PER_MILLISECOND );
}

QV_INT qvNanosecondsConvertToMillisecondsTruncate( QV_INT nanoseconds )
{
    QV_CHECK( QV_NANOSECONDS_OK( nanoseconds ) );

    return nanoseconds / NANOSECONDS_PER_MILLISECOND;
}

QV_INT qvNanosecondsConvertToMillisecondsExtend( QV_INT nanoseconds )
{
    QV_CHECK( QV_NANOSECONDS_OK( nanoseconds ) );

    return nanoseconds / NANOSECONDS_PER_MILLISECOND + ( nanoseconds % NANOSECONDS_PER_MILLISECOND ? 1 : 0 );
}
