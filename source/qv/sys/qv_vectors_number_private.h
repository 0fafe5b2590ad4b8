/** @file
    The kernel for integers in texts, with the vectors of 16 bytes that every processor of the architecture has. Inline,
    since what it reads is short. For what kernels are see qv_vectors_private.h.

    Digits come to the right end of a vector by loading the characters that the text ends with, whatever stands before it;
    a mask makes zeros of what is not part of it. So this kernel, other than all others, reads memory before its array, and
    its caller makes sure that it can be read. Nothing depends on what it holds. */

#ifndef QV_VECTORS_NUMBER_PRIVATE_H
#define QV_VECTORS_NUMBER_PRIVATE_H

#include "qv/sys/qv_vectors_private.h"

/** Where pointers have 64 bits, since smaller fields of an object leave too little before what follows them. */
#if QV___VECTORS_16 && defined( __x86_64__ ) && !defined( __ILP32__ )
#define QV___LAST_DIGITS 1
#else
#define QV___LAST_DIGITS 0
#endif

namespace qv
{
/** So many characters before the end of its array takeLastDigits() reads. */
const QV_INT BEFORE_DIGITS = 20;

#if QV___LAST_DIGITS
namespace vectors
{
/** Masks that keep the last of 20 bytes, as many as a number has digits: the last 16 of them, and the first four in two
    bytes each. They start after so many bytes of the tables. */
struct LastDigits
{
    constexpr LastDigits()
    {
        for( int i = 16; i < 40; i++ )
            bytes[i] = 0xFF;

        for( int i = 20; i < 24; i++ )
            halves[i] = 0xFFFF;
    }

    uint8_t  bytes[40]  = {};
    uint16_t halves[24] = {};
};

inline constexpr LastDigits LAST_DIGITS;

/** Four characters, whatever they are. What stands before the array that is read may be marked as free, and other
    threads may use it; the caller masks it out. */
__attribute__( ( no_sanitize( "address", "thread" ) ) ) inline __m128i charsAround( const QV_CHAR *chs )
{
    return _mm_loadu_si128( reinterpret_cast< const __m128i * >( chs ) );
}
} // namespace vectors
#endif

/** Reads the digits, 1 to 19, from U'0' to U'9', that some characters end with. False if others are among them, and
    where there is no kernel. The BEFORE_DIGITS characters before the end can be read. */
inline bool takeLastDigits( [[maybe_unused]] const QV_CHAR *end, [[maybe_unused]] QV_INT digits, uint64_t *value )
{
    *value = 0;

#if QV___LAST_DIGITS
    using vectors::charsAround;

    // The first four as 16 bits each, the others as bytes. What fits neither becomes none of ASCII.
    __m128i upper = charsAround( end - BEFORE_DIGITS );
    __m128i left  = _mm_packs_epi32( charsAround( end - 16 ), charsAround( end - 12 ) );
    __m128i right = _mm_packs_epi32( charsAround( end - 8 ), charsAround( end - 4 ) );
    __m128i head  = _mm_sub_epi16( _mm_packs_epi32( upper, upper ), _mm_set1_epi16( '0' ) );
    __m128i tail  = _mm_sub_epi8( _mm_packus_epi16( left, right ), _mm_set1_epi8( '0' ) );

    const vectors::LastDigits &masks = vectors::LAST_DIGITS;
    head = _mm_and_si128( head, _mm_loadl_epi64( reinterpret_cast< const __m128i * >( masks.halves + digits ) ) );
    tail = _mm_and_si128( tail, _mm_loadu_si128( reinterpret_cast< const __m128i * >( masks.bytes + digits ) ) );

    // The topmost bit of a byte tells that a value is above 9.
    __m128i headAbove = _mm_adds_epu16( head, _mm_set1_epi16( 0x7FFF - 9 ) );
    __m128i tailAbove = _mm_adds_epu8( tail, _mm_set1_epi8( 0x7F - 9 ) );
    int above = _mm_movemask_epi8( _mm_or_si128( _mm_and_si128( headAbove, _mm_set1_epi16( -0x8000 ) ), tailAbove ) );

    // Neighbours together to numbers of four digits and of eight.
    __m128i even = _mm_and_si128( tail, _mm_set1_epi16( 0xFF ) );
    __m128i odd  = _mm_srli_epi16( tail, 8 );
    __m128i four = _mm_add_epi32(
        _mm_madd_epi16( even, _mm_set1_epi32( 10 << 16 | 1000 ) ),
        _mm_madd_epi16( odd, _mm_set1_epi32( 1 << 16 | 100 ) ) );
    __m128i three = _mm_madd_epi16( head, _mm_setr_epi16( 1000, 100, 10, 1, 0, 0, 0, 0 ) );
    __m128i all   = _mm_madd_epi16( _mm_packs_epi32( four, three ), _mm_setr_epi16( 10000, 1, 10000, 1, 1, 1, 1, 1 ) );

    uint64_t both  = static_cast< uint64_t >( _mm_cvtsi128_si64( all ) );
    uint64_t first = static_cast< uint64_t >( _mm_cvtsi128_si64( _mm_unpackhi_epi64( all, all ) ) );

    *value = ( both & 0xFFFFFFFF ) * 100000000 + ( both >> 32 ) + first * UINT64_C( 10000000000000000 );

    return above == 0;
#else
    return false;
#endif
}

#if QV___LAST_DIGITS
/** Writes the 16 digits that two numbers below 10^8 have with leading zeros. Each step halves all groups of digits at once:
    what a multiplication divides off becomes the upper group, what is left the lower one after it. */
inline void putSixteenDigits( QV_CHAR *to, uint64_t left, uint64_t right )
{
    __m128i eights = _mm_unpacklo_epi64(
        _mm_cvtsi64_si128( static_cast< int64_t >( left ) ), _mm_cvtsi64_si128( static_cast< int64_t >( right ) ) );

    // 2^45 / 10^4, 2^19 / 100 and 2^16 / 10, rounded up, are exact enough for all values that come.
    __m128i upper = _mm_srli_epi64( _mm_mul_epu32( eights, _mm_set1_epi64x( 0xD1B71759 ) ), 45 );
    __m128i lower = _mm_sub_epi64( eights, _mm_mul_epu32( upper, _mm_set1_epi64x( 10000 ) ) );
    __m128i fours = _mm_or_si128( upper, _mm_slli_epi64( lower, 32 ) );

    upper        = _mm_srli_epi16( _mm_mulhi_epu16( fours, _mm_set1_epi16( 5243 ) ), 3 );
    lower        = _mm_sub_epi32( fours, _mm_madd_epi16( upper, _mm_set1_epi32( 100 ) ) );
    __m128i twos = _mm_or_si128( upper, _mm_slli_epi32( lower, 16 ) );

    upper = _mm_mulhi_epu16( twos, _mm_set1_epi16( 6554 ) );
    lower = _mm_sub_epi16( twos, _mm_mullo_epi16( upper, _mm_set1_epi16( 10 ) ) );
    upper = _mm_add_epi16( upper, _mm_set1_epi16( '0' ) );
    lower = _mm_add_epi16( lower, _mm_set1_epi16( '0' ) );

    __m128i  none  = _mm_setzero_si128();
    __m128i  first = _mm_unpacklo_epi16( upper, lower );
    __m128i  last  = _mm_unpackhi_epi16( upper, lower );
    __m128i *place = reinterpret_cast< __m128i * >( to );
    _mm_storeu_si128( place, _mm_unpacklo_epi16( first, none ) );
    _mm_storeu_si128( place + 1, _mm_unpackhi_epi16( first, none ) );
    _mm_storeu_si128( place + 2, _mm_unpacklo_epi16( last, none ) );
    _mm_storeu_si128( place + 3, _mm_unpackhi_epi16( last, none ) );
}
#endif
} // namespace qv

#endif
