#include "qv/sys/qv_chars.h"

#include "qv/sys/qv_abort.h"

#include <string.h>

QV_INT qvCharsConvertToAscii( char *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( srcLength < QV_INT_MAX );
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength == 0 || src );
    QV_CHECK( destLength == 0 || dest );

    char *__restrict to            = dest;
    const QV_CHAR *__restrict from = src;
    QV_INT count                   = srcLength < destLength ? srcLength : destLength;

    for( QV_INT i = 0; i < count; i++ )
        to[i] = static_cast< char >( from[i] < 0x80 ? from[i] : U'?' );

    if( addNull && srcLength < destLength )
        dest[srcLength] = '\0';

    return addNull ? srcLength + 1 : srcLength;
}

QV_INT qvCharsConvertFromAscii( QV_CHAR *dest, QV_INT destLength, const char *src, QV_INT srcLength )
{
    QV_CHECK( srcLength >= -1 );
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength == 0 || src );
    QV_CHECK( destLength == 0 || dest );

    if( srcLength == -1 )
        srcLength = static_cast< QV_INT >( strlen( src ) );

    QV_CHAR *__restrict to      = dest;
    const char *__restrict from = src;
    QV_INT count                = srcLength < destLength ? srcLength : destLength;

    for( QV_INT i = 0; i < count; i++ )
    {
        unsigned char byte = static_cast< unsigned char >( from[i] );
        to[i]              = byte < 0x80 ? byte : 0xFFFD;
    }

    return srcLength;
}
