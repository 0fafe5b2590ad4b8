#include "qv/sys/qv_chars.h"

#include "qv/sys/qv_abort.h"

#include <wchar.h>

static_assert( sizeof( wchar_t ) == 4, "wide text is UTF-32" );

QV_INT qvCharsConvertToWcstr( wchar_t *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( srcLength < QV_INT_MAX );
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength == 0 || src );
    QV_CHECK( destLength == 0 || dest );

    wchar_t *__restrict to         = dest;
    const QV_CHAR *__restrict from = src;
    QV_INT count                   = srcLength < destLength ? srcLength : destLength;

    for( QV_INT i = 0; i < count; i++ )
        to[i] = static_cast< wchar_t >( from[i] != 0 && QV_CHAR_OK( from[i] ) ? from[i] : 0xFFFD );

    if( addNull && srcLength < destLength )
        dest[srcLength] = L'\0';

    return addNull ? srcLength + 1 : srcLength;
}

QV_INT qvCharsConvertFromWcstr( QV_CHAR *dest, QV_INT destLength, const wchar_t *src, QV_INT srcLength )
{
    QV_CHECK( srcLength >= -1 );
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength == 0 || src );
    QV_CHECK( destLength == 0 || dest );

    if( srcLength == -1 )
        srcLength = static_cast< QV_INT >( wcslen( src ) );

    QV_CHAR *__restrict to         = dest;
    const wchar_t *__restrict from = src;
    QV_INT count                   = srcLength < destLength ? srcLength : destLength;

    for( QV_INT i = 0; i < count; i++ )
        to[i] = QV_CHAR_OK( from[i] ) ? static_cast< QV_CHAR >( from[i] ) : 0xFFFD;

    return srcLength;
}
