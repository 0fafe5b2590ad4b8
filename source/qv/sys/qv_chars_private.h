#ifndef QV_CHARS_PRIVATE_H
#define QV_CHARS_PRIVATE_H

#include "qv/sys/qv_utf8_private.h"

#include <wchar.h>

namespace qv
{
static_assert( sizeof( wchar_t ) == sizeof( QV_CHAR ), "the C library's functions on wide text serve for characters" );

/** Compares `length` characters, all of them below 0x110000: negative, 0 or positive. */
inline int compareChars( const QV_CHAR *a, const QV_CHAR *b, QV_INT length )
{
    return length == 0 ? 0
                       : wmemcmp(
                             reinterpret_cast< const wchar_t * >( a ), reinterpret_cast< const wchar_t * >( b ),
                             static_cast< size_t >( length ) );
}

inline bool equalChars( const QV_CHAR *a, const QV_CHAR *b, QV_INT length )
{
    return compareChars( a, b, length ) == 0;
}

/** The index of the first `ch` among `length` characters, or -1. */
inline QV_INT findChar( const QV_CHAR *chs, QV_INT length, QV_CHAR ch )
{
    if( length == 0 )
        return -1;

    const wchar_t *text = reinterpret_cast< const wchar_t * >( chs );
    const wchar_t *hit  = wmemchr( text, static_cast< wchar_t >( ch ), static_cast< size_t >( length ) );

    return hit ? hit - text : -1;
}

/** The index of the last `ch` among `length` characters, or -1. */
QV_INT findLastChar( const QV_CHAR *chs, QV_INT length, QV_CHAR ch );

/** The lowest index below `positions` where `sub`, of at least one character, stands in `chs`, or -1. All of the
    `positions + subLength - 1` characters from `chs` on are readable. */
QV_INT findChars( const QV_CHAR *chs, QV_INT positions, const QV_CHAR *sub, QV_INT subLength );

/** The same for the highest index. */
QV_INT findLastChars( const QV_CHAR *chs, QV_INT positions, const QV_CHAR *sub, QV_INT subLength );

/** The first index from `offset` on of a character that ends a line in some newline form, or `length`. */
QV_INT findLineEnd( const QV_CHAR *chs, QV_INT offset, QV_INT length );

/** Encodes the ASCII that `src` begins with; gives the number of characters. There is room for `length` bytes. */
inline QV_INT encodeLeadingAscii( char *dest, const QV_CHAR *src, QV_INT length )
{
    return utf8::encodeLeadingAscii( reinterpret_cast< uint8_t * >( dest ), src, length );
}

/** Four characters at once. */
typedef int32_t CharVector __attribute__( ( vector_size( 16 ) ) );

inline CharVector loadChars( const QV_CHAR *chs )
{
    CharVector vector;
    __builtin_memcpy( &vector, chs, sizeof( vector ) );

    return vector;
}

inline void storeChars( QV_CHAR *chs, CharVector vector )
{
    __builtin_memcpy( chs, &vector, sizeof( vector ) );
}

/** True if a bit is set anywhere. */
inline bool anyBit( CharVector vector )
{
    typedef int64_t Halves __attribute__( ( vector_size( 16 ) ) );
    Halves          halves = (Halves)vector;

    return ( halves[0] | halves[1] ) != 0;
}
/** True when all of eight characters are below a limit, which is at most 0x110000. */
inline bool allEightBelow( const QV_CHAR *chs, QV_CHAR limit )
{
    CharVector bound = CharVector{} + static_cast< int32_t >( limit );
    CharVector a     = loadChars( chs );
    CharVector b     = loadChars( chs + 4 );

    // The comparison is one of signed numbers; 0x80000000 and above would pass for negative ones.
    return !anyBit( ( a >= bound ) | ( b >= bound ) | ( a < 0 ) | ( b < 0 ) );
}

/** True when every character is below 0x110000. Inline for arrays that are short as a rule. */
inline bool allCharsOk( const QV_CHAR *chs, QV_INT length )
{
    // Without an unsigned comparison: the sum reaches the topmost bit from 0x110000 on, as larger values have it.
    typedef uint32_t Unsigned __attribute__( ( vector_size( 16 ) ) );

    const uint32_t toTop = 0x80000000u - 0x110000u;
    Unsigned       four  = {};
    uint32_t       one   = 0;
    QV_INT         i     = 0;

    for( ; i + 4 <= length; i += 4 )
    {
        Unsigned part = (Unsigned)loadChars( chs + i );
        four |= part | ( part + toTop );
    }

    for( ; i < length; i++ )
        one |= static_cast< uint32_t >( chs[i] ) | ( static_cast< uint32_t >( chs[i] ) + toTop );

    return !( one >> 31 ) && !anyBit( (CharVector)( four >> 31 ) );
}
} // namespace qv

#endif
