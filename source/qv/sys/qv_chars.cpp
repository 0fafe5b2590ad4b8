#include "qv/sys/qv_chars.h"

#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_chars_private.h"

/* Checking and repairing ----------------------------------------------------------------------------------------- */

QV_BOOL qvCharsAllOk( const QV_CHAR *src, QV_INT srcLength )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( srcLength == 0 || src );

    return qv::allCharsOk( src, srcLength ) ? QV_TRUE : QV_FALSE;
}

QV_INT qvCharsSanitize( QV_CHAR *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength == 0 || src );
    QV_CHECK( destLength == 0 || dest );

    QV_INT  count = 0;
    QV_CHAR high  = 0; // a high surrogate that waits for its low one

    for( QV_INT i = 0; i < srcLength; i++ )
    {
        QV_CHAR ch      = src[i];
        QV_CHAR pending = high;
        high            = 0;

        if( ch - 0xD800 < 0x400 )
        {
            high = ch;
            continue;
        }

        if( ch - 0xDC00 < 0x400 )
        {
            if( !pending )
                continue;

            ch = 0x10000 + ( ( pending - 0xD800 ) << 10 ) + ( ch - 0xDC00 );
        }

        if( !QV_CHAR_OK( ch ) )
            continue;

        if( count < destLength )
            dest[count] = ch;

        count++;
    }

    return count;
}

/* The platform's 8-bit text -------------------------------------------------------------------------------------- */

QV_INT qvCharsConvertToCstr( char *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull )
{
    return qvCharsConvertToUtf8( dest, destLength, src, srcLength, addNull );
}

QV_INT qvCharsConvertFromCstr( QV_CHAR *dest, QV_INT destLength, const char *src, QV_INT srcLength )
{
    return qvCharsConvertFromUtf8( dest, destLength, src, srcLength );
}
