/** @file
    Digests: numbers that order as texts and integers do, for a search or a sort that does not wait for the memory of
    each object. */

#ifndef QV_DIGEST_PRIVATE_H
#define QV_DIGEST_PRIVATE_H

#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_vectors_private.h"

namespace qv
{
/** That of a text. */
struct Digest
{
    uint64_t number;
    int32_t  count; /**< characters that every text with the number begins with, as this one does */
    bool     whole; /**< the end is in it, so that only this text has the number */
};

/** Eight bytes of a text as a number: a stands before b wherever a's number is below b's. One byte a character up to
    DIGEST_BYTE, counted from 1, and three for the others; the end of the text is 0. */
const uint32_t DIGEST_BYTE = 0xED;

[[gnu::noinline]] inline Digest digestOneByOne( const QV_CHAR *chars, QV_INT length )
{
    uint64_t number = 0;
    int      shift  = 56;
    int32_t  count  = 0;

    for( QV_INT i = 0; i < length && shift >= 0; i++ )
    {
        uint64_t ch = chars[i];

        if( ch <= DIGEST_BYTE )
        {
            number |= ( ch + 1 ) << shift;
            shift -= 8;
            count++;
            continue;
        }

        uint64_t three = ( ( DIGEST_BYTE + 2 ) << 16 ) + ch;
        number |= shift >= 16 ? three << ( shift - 16 ) : three >> ( 16 - shift );
        count += shift >= 16 ? 1 : 0;
        shift -= 24;
    }

    return { number, count, shift >= 0 };
}

[[gnu::always_inline]] inline Digest digestText( const QV_CHAR *chars, QV_INT length )
{
    uint64_t number = 0;

    // Eight at once, which is what most keys need.
    return length >= 8 && digestEight( chars, DIGEST_BYTE, &number ) ? Digest{ number, 8, false }
                                                                     : digestOneByOne( chars, length );
}

/** Not a number of eight characters. */
const uint64_t UNTOLD_REST = ~uint64_t( 0 );

/** The rest of a text of 8 to 16 characters, of the number of its last eight: without those that its digest has. */
inline uint64_t shiftRest( uint64_t lastEight, QV_INT length )
{
    QV_INT half = 4 * ( 16 - length );
    return lastEight << half << half;
}

/** What comes after the eight characters of a text's digest, as a number of eight more: among texts with equal digests
    the same number, unless it is UNTOLD_REST, means the same text, and orders as the text does. UNTOLD_REST where the
    text is longer than 16 characters, or not all are such that take a byte. */
[[gnu::always_inline]] inline uint64_t digestRest( const QV_CHAR *chars, QV_INT length, const Digest &digest )
{
    if( digest.whole )
        return 0;

    uint64_t last = 0;

    if( digest.count < 8 || length > 16 || !digestEight( chars + length - 8, DIGEST_BYTE, &last ) )
        return UNTOLD_REST;

    return shiftRest( last, length );
}

/** That of an integer, which no other one has. */
inline uint64_t integerDigest( QV_INT value )
{
    return static_cast< uint64_t >( value ) ^ ( uint64_t( 1 ) << 63 );
}
} // namespace qv

#endif
