#include "qv/sys/qv_chars.h"

#include "qv/sys/qv_abort.h"

QV_BOOL qvCharsAllOk( const QV_CHAR *src, QV_INT srcLength )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( srcLength == 0 || src );

    // Without an early end the loop runs on vectors.
    uint32_t bad = 0;

    for( QV_INT i = 0; i < srcLength; i++ )
        bad |= src[i] >= 0x110000 ? 1 : 0;

    return bad ? QV_FALSE : QV_TRUE;
}

QV_INT qvCharsConvertFromCstr( QV_CHAR *dest, QV_INT destLength, const char *src, QV_INT srcLength )
{
    return qvCharsConvertFromUtf8( dest, destLength, src, srcLength );
}
