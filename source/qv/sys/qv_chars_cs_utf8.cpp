#include "qv/sys/qv_chars.h"

#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_int.h"

#include <string.h>

namespace
{
const QV_CHAR REPLACEMENT = 0xFFFD;

bool isContinuation( unsigned char byte )
{
    return ( byte & 0xC0 ) == 0x80;
}
} // namespace

QV_INT qvCharsConvertFromUtf8( QV_CHAR *dest, QV_INT destLength, const char *src, QV_INT srcLength )
{
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength >= -1 );
    QV_CHECK( destLength == 0 || dest );
    QV_CHECK( srcLength == 0 || src );

    if( srcLength == -1 )
        srcLength = static_cast< QV_INT >( strlen( src ) );

    QV_INT count = 0;
    QV_INT i     = 0;

    auto put = [&]( QV_CHAR ch )
    {
        if( count < destLength )
            dest[count] = ch;

        count++;
    };

    while( i < srcLength )
    {
        unsigned char lead   = static_cast< unsigned char >( src[i++] );
        int           follow = lead < 0x80 ? 0 : lead < 0xC0 ? -1 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF8 ? 3 : -1;

        if( follow < 0 )
        {
            put( REPLACEMENT );

            while( i < srcLength && isContinuation( static_cast< unsigned char >( src[i] ) ) )
                i++;

            continue;
        }

        QV_CHAR ch = follow == 0 ? lead : lead & ( 0x3F >> follow );
        int     seen;

        for( seen = 0; seen < follow; seen++ )
        {
            if( i >= srcLength )
                return count;

            unsigned char byte = static_cast< unsigned char >( src[i] );

            if( !isContinuation( byte ) )
                break;

            ch = ( ch << 6 ) | ( byte & 0x3F );
            i++;
        }

        if( seen < follow )
            put( REPLACEMENT );
        else if( QV_CHAR_OK( ch ) )
            put( ch );
    }

    return count;
}

QV_INT
qvCharsConvertToUtf8( char *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull )
{
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( destLength == 0 || dest );
    QV_CHECK( srcLength == 0 || src );

    QV_INT compLen = 0;

    auto put = [&]( QV_CHAR byte )
    {
        if( compLen < destLength )
            dest[compLen] = static_cast< char >( byte );

        compLen++;
    };

    for( QV_INT i = 0; i < srcLength; i++ )
    {
        QV_CHAR ch     = QV_CHAR_OK( src[i] ) ? src[i] : REPLACEMENT;
        QV_INT  addLen = ch < 0x80 ? 1 : ch < 0x800 ? 2 : ch < 0x10000 ? 3 : 4;
        QV_CHECK( QV_INT_ADD_OK( compLen, addLen ) );

        if( addLen == 1 )
            put( ch );
        else
            put( ( addLen == 2 ? 0xC0 : addLen == 3 ? 0xE0 : 0xF0 ) | ( ch >> ( 6 * ( addLen - 1 ) ) ) );

        for( QV_INT rest = addLen - 2; rest >= 0; rest-- )
            put( 0x80 | ( ( ch >> ( 6 * rest ) ) & 0x3F ) );
    }

    if( addNull )
    {
        QV_CHECK( QV_INT_ADD_OK( compLen, 1 ) );
        put( 0 );
    }

    return compLen;
}
