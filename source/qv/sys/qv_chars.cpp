#include "qv/sys/qv_chars.h"

#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_chars_private.h"

/* Searching ------------------------------------------------------------------------------------------------------ */

QV_INT qv::findLastChar( const QV_CHAR *chs, QV_INT length, QV_CHAR ch )
{
    const CharVector wanted = CharVector{} + static_cast< int32_t >( ch );

    while( length >= 16 )
    {
        const QV_CHAR *last = chs + length - 16;

        if( anyBit(
                ( loadChars( last ) == wanted ) | ( loadChars( last + 4 ) == wanted )
                | ( loadChars( last + 8 ) == wanted ) | ( loadChars( last + 12 ) == wanted ) ) )
            break;

        length -= 16;
    }

    while( length > 0 && chs[length - 1] != ch )
        length--;

    return length - 1;
}

// Both searches for a text look at its first and last character in eight places at once: few places pass where there
// is no match, also in texts that are full of one of the two.
namespace
{
struct Ends
{
    Ends( const QV_CHAR *sub, QV_INT subLength ) :
        first( qv::CharVector{} + static_cast< int32_t >( sub[0] ) ),
        last( qv::CharVector{} + static_cast< int32_t >( sub[subLength - 1] ) ), distance( subLength - 1 )
    {
    }

    bool inEightFrom( const QV_CHAR *chs ) const
    {
        return qv::anyBit( inFourFrom( chs ) | inFourFrom( chs + 4 ) );
    }

    qv::CharVector inFourFrom( const QV_CHAR *chs ) const
    {
        return ( qv::loadChars( chs ) == first ) & ( qv::loadChars( chs + distance ) == last );
    }

    qv::CharVector first;
    qv::CharVector last;
    QV_INT         distance;
};
} // namespace

QV_INT qv::findChars( const QV_CHAR *chs, QV_INT positions, const QV_CHAR *sub, QV_INT subLength )
{
    const Ends ends( sub, subLength );
    QV_INT     i = 0;

    while( i < positions )
    {
        QV_INT stop = positions - i < 8 ? positions : i + 8;

        if( stop - i < 8 || ends.inEightFrom( chs + i ) )
        {
            for( QV_INT at = i; at < stop; at++ )
                if( chs[at] == sub[0] && equalChars( chs + at, sub, subLength ) )
                    return at;
        }

        i = stop;
    }

    return -1;
}

QV_INT qv::findLastChars( const QV_CHAR *chs, QV_INT positions, const QV_CHAR *sub, QV_INT subLength )
{
    const Ends ends( sub, subLength );

    while( positions > 0 )
    {
        QV_INT start = positions < 8 ? 0 : positions - 8;

        if( positions < 8 || ends.inEightFrom( chs + start ) )
        {
            for( QV_INT at = positions - 1; at >= start; at-- )
                if( chs[at] == sub[0] && equalChars( chs + at, sub, subLength ) )
                    return at;
        }

        positions = start;
    }

    return -1;
}

QV_INT qv::findLineEnd( const QV_CHAR *chs, QV_INT offset, QV_INT length )
{
    auto ends = []( CharVector ch )
    { return ( ( ch >= '\n' ) & ( ch <= '\r' ) ) | ( ch == 0x85 ) | ( ( ch & ~1 ) == 0x2028 ); };

    // Nearly all characters of a text are passed over here, eight at a time.
    for( ; offset + 8 <= length; offset += 8 )
        if( anyBit( ends( loadChars( chs + offset ) ) | ends( loadChars( chs + offset + 4 ) ) ) )
            break;

    auto isEnd = []( QV_CHAR ch ) { return ch - U'\n' <= U'\r' - U'\n' || ch == 0x85 || ch == 0x2028 || ch == 0x2029; };

    while( offset < length && !isEnd( chs[offset] ) )
        offset++;

    return offset;
}

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
