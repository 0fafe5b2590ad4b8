#include "qv/sys/qv_chars.h"

#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_utf8_private.h"

#include <string.h>

using namespace qv::utf8;

namespace
{
// What becomes of bytes that are no good sequence, of which `in` is the first: a character that stands for them, or
// none for a value that is too high and for a sequence that the end of the bytes cuts. Returns the byte after them.
const uint8_t *passFault( const uint8_t *in, const uint8_t *inEnd, bool *isReplaced )
{
    int     more  = following( *in );
    QV_CHAR value = firstBits( *in++, more < 0 ? 0 : more );

    if( more < 0 )
    {
        while( in < inEnd && follows( *in ) )
            in++;

        *isReplaced = true;
        return in;
    }

    for( ; more > 0 && in < inEnd && follows( *in ); more-- )
        value = nextBits( value, *in++ );

    *isReplaced = more > 0 && in < inEnd;
    return in;
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

    const uint8_t *in    = reinterpret_cast< const uint8_t * >( src );
    const uint8_t *inEnd = in + srcLength;
    QV_INT         count = 0; // characters so far, also those that there was no room for

    while( in < inEnd )
    {
        if( count < destLength )
        {
            Decoded done = decode( in, inEnd, dest + count, dest + destLength );
            in           = done.in;
            count        = done.out - dest;

            if( in == inEnd || count == destLength )
                continue;
        }
        else
        {
            Counted done = qv::utf8::count( in, inEnd );
            in           = done.in;
            count += done.count;

            if( in == inEnd )
                break;
        }

        bool isReplaced;
        in = passFault( in, inEnd, &isReplaced );

        if( isReplaced )
        {
            if( count < destLength )
                dest[count] = REPLACEMENT;

            count++;
        }
    }

    return count;
}

QV_INT qvCharsConvertToUtf8( char *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull )
{
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( destLength == 0 || dest );
    QV_CHECK( srcLength == 0 || src );

    const QV_CHAR *in      = src;
    const QV_CHAR *inEnd   = src + srcLength;
    uint8_t       *out     = reinterpret_cast< uint8_t * >( dest );
    uint8_t       *outEnd  = out + destLength;
    QV_INT         compLen = 0; // bytes so far, also those that there was no room for

    while( in < inEnd && compLen < destLength )
    {
        Encoded done = encode( in, inEnd, out + compLen, outEnd );
        in           = done.in;
        compLen      = done.out - out;

        if( in == inEnd )
            break;

        // One that another stands for, or one of which only the first bytes fit.
        uint8_t bytes[LONGEST];
        QV_INT  addLen = put( QV_CHAR_OK( *in ) ? *in : REPLACEMENT, bytes );
        QV_CHECK( QV_INT_ADD_OK( compLen, addLen ) );

        for( QV_INT i = 0; i < addLen && compLen + i < destLength; i++ )
            out[compLen + i] = bytes[i];

        compLen += addLen;
        in++;
    }

    QV_INT addLen = qv::utf8::length( in, inEnd - in );
    QV_CHECK( QV_INT_ADD_OK( compLen, addLen ) );
    compLen += addLen;

    if( addNull )
    {
        QV_CHECK( QV_INT_ADD_OK( compLen, 1 ) );

        if( compLen < destLength )
            out[compLen] = 0;

        compLen++;
    }

    return compLen;
}
