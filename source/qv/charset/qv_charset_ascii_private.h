#ifndef QV_CHARSET_ASCII_PRIVATE_H
#define QV_CHARSET_ASCII_PRIVATE_H

#include "qv/sys/qv_types.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/* Blocks of ASCII. Text of any language is full of short runs of it. Both functions do a block at once and tell how
   much of it counts, instead of asking for each character: that leaves few branches that depend on the text. */

namespace qv
{
const QV_INT ASCII_BLOCK = 16;

/** Widens the leading ASCII of 16 bytes and gives its length. All 16 places at `out` may be written. */
inline QV_INT widenAscii( const uint8_t *in, QV_CHAR *out )
{
#ifdef __SSE2__
    __m128i  bytes = _mm_loadu_si128( reinterpret_cast< const __m128i * >( in ) );
    __m128i  zero  = _mm_setzero_si128();
    __m128i  low   = _mm_unpacklo_epi8( bytes, zero );
    __m128i  high  = _mm_unpackhi_epi8( bytes, zero );
    __m128i *dest  = reinterpret_cast< __m128i * >( out );

    _mm_storeu_si128( dest, _mm_unpacklo_epi16( low, zero ) );
    _mm_storeu_si128( dest + 1, _mm_unpackhi_epi16( low, zero ) );
    _mm_storeu_si128( dest + 2, _mm_unpacklo_epi16( high, zero ) );
    _mm_storeu_si128( dest + 3, _mm_unpackhi_epi16( high, zero ) );

    return __builtin_ctz( static_cast< unsigned >( _mm_movemask_epi8( bytes ) ) | 0x10000 );
#else
    QV_INT count = 0;

    for( ; count < ASCII_BLOCK && in[count] < 0x80; count++ )
        out[count] = in[count];

    return count;
#endif
}

/** Narrows the leading ASCII of 16 characters and gives its length. All 16 places at `out` may be written. */
inline QV_INT narrowAscii( const QV_CHAR *in, uint8_t *out )
{
#ifdef __SSE2__
    // Saturation keeps what is above ASCII there, in the highest bit of its byte; all code points are positive.
    const __m128i *from  = reinterpret_cast< const __m128i * >( in );
    __m128i        low   = _mm_packs_epi32( _mm_loadu_si128( from ), _mm_loadu_si128( from + 1 ) );
    __m128i        high  = _mm_packs_epi32( _mm_loadu_si128( from + 2 ), _mm_loadu_si128( from + 3 ) );
    __m128i        bytes = _mm_packus_epi16( low, high );

    _mm_storeu_si128( reinterpret_cast< __m128i * >( out ), bytes );

    // A negative word is no code point either.
    __m128i invalid = _mm_packs_epi16( low, high );

    return __builtin_ctz( static_cast< unsigned >( _mm_movemask_epi8( _mm_or_si128( bytes, invalid ) ) ) | 0x10000 );
#else
    QV_INT count = 0;

    for( ; count < ASCII_BLOCK && in[count] < 0x80; count++ )
        out[count] = static_cast< uint8_t >( in[count] );

    return count;
#endif
}
} // namespace qv

#endif
