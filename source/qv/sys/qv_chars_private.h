#ifndef QV_CHARS_PRIVATE_H
#define QV_CHARS_PRIVATE_H

/* What works on arrays of characters: here what the C library does, and the kernels. */

#include "qv/sys/qv_utf8_private.h"
#include "qv/sys/qv_vectors_private.h"

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

/** Encodes the ASCII that `src` begins with; gives the number of characters. There is room for `length` bytes. */
inline QV_INT encodeLeadingAscii( char *dest, const QV_CHAR *src, QV_INT length )
{
    return utf8::encodeLeadingAscii( reinterpret_cast< uint8_t * >( dest ), src, length );
}
} // namespace qv

#endif
