/** @file
    Kernels for lines of short texts in ASCII: where a line and a word end, and characters made of bytes. Inline, since
    what they work on is short. For what kernels are see qv_vectors_private.h. */

#ifndef QV_VECTORS_LINE_PRIVATE_H
#define QV_VECTORS_LINE_PRIVATE_H

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_vectors_private.h"

#include <string.h>

namespace qv
{
/** True for 0-9, A-Z, a-z, `_` and `-`. */
constexpr bool isWordChar( QV_CHAR ch )
{
    return ( ch | 0x20 ) - U'a' < 26 || ch - U'0' < 10 || ch == U'_' || ch == U'-';
}

/** The part of some bytes up to the first line feed, or all of them. */
struct LineOfBytes
{
    const uint8_t *end;     /**< where the line feed is */
    const uint8_t *special; /**< the first byte beyond ASCII, vertical tabulation, form feed, carriage return or percent
                                 sign in the line, or null */
};

constexpr bool isSpecialInLine( uint8_t byte )
{
    return byte >= 0x80 || ( byte >= '\v' && byte <= '\r' ) || byte == '%';
}

inline LineOfBytes findLine( const uint8_t *from, const uint8_t *end )
{
    LineOfBytes line = { from, nullptr };

#if QV___VECTORS_16
    if( vectors::has16() )
        for( ; end - line.end >= 16; line.end += 16 )
        {
            // All bytes up to the last control character that counts, and those beyond ASCII, which have a sign.
            __m128i  bytes = _mm_loadu_si128( reinterpret_cast< const __m128i * >( line.end ) );
            __m128i  some  = _mm_cmplt_epi8( bytes, _mm_set1_epi8( '\r' + 1 ) );
            __m128i  signs = _mm_cmpeq_epi8( bytes, _mm_set1_epi8( '%' ) );
            uint32_t found = static_cast< uint32_t >( _mm_movemask_epi8( _mm_or_si128( some, signs ) ) );

            if( found == 0 )
                continue;

            __m128i  feeds = _mm_cmpeq_epi8( bytes, _mm_set1_epi8( '\n' ) );
            uint32_t ends  = static_cast< uint32_t >( _mm_movemask_epi8( feeds ) );
            found &= ( ends & -ends ) - 1; // those before the first end, or all

            for( ; found && !line.special; found &= found - 1 )
                if( isSpecialInLine( line.end[__builtin_ctz( found )] ) )
                    line.special = line.end + __builtin_ctz( found );

            if( ends )
            {
                line.end += __builtin_ctz( ends );
                return line;
            }
        }
#endif

    for( ; line.end < end && *line.end != '\n'; line.end++ )
        if( !line.special && isSpecialInLine( *line.end ) )
            line.special = line.end;

    return line;
}

/** How many word characters some bytes begin with. */
inline QV_INT wordLength( const uint8_t *bytes, QV_INT count )
{
    QV_INT i = 0;

#if QV___VECTORS_16
    if( vectors::has16() )
        for( ; count - i >= 16; i += 16 )
        {
            auto isUpTo = []( __m128i distances, char last )
            { return _mm_cmpeq_epi8( _mm_min_epu8( distances, _mm_set1_epi8( last ) ), distances ); };

            __m128i sixteen = _mm_loadu_si128( reinterpret_cast< const __m128i * >( bytes + i ) );
            __m128i lower   = _mm_or_si128( sixteen, _mm_set1_epi8( 0x20 ) );
            __m128i letters = isUpTo( _mm_sub_epi8( lower, _mm_set1_epi8( 'a' ) ), 25 );
            __m128i digits  = isUpTo( _mm_sub_epi8( sixteen, _mm_set1_epi8( '0' ) ), 9 );
            __m128i others  = _mm_or_si128(
                _mm_cmpeq_epi8( sixteen, _mm_set1_epi8( '_' ) ), _mm_cmpeq_epi8( sixteen, _mm_set1_epi8( '-' ) ) );
            uint32_t words =
                static_cast< uint32_t >( _mm_movemask_epi8( _mm_or_si128( _mm_or_si128( letters, digits ), others ) ) );

            if( words != 0xFFFF )
                return i + __builtin_ctz( ~words );
        }
#endif

    while( i < count && isWordChar( bytes[i] ) )
        i++;

    return i;
}

/** True when two runs of as many bytes are the same. For some dozens of bytes: a call would cost as much. */
inline bool sameBytes( const void *a, const void *b, QV_INT count )
{
    const char *aBytes = static_cast< const char * >( a );
    const char *bBytes = static_cast< const char * >( b );

    auto differ = [=]( QV_INT at )
    {
        uint64_t aWord, bWord;
        memcpy( &aWord, aBytes + at, 8 );
        memcpy( &bWord, bBytes + at, 8 );
        return aWord ^ bWord;
    };

    if( count < 8 )
    {
        for( QV_INT i = 0; i < count; i++ )
            if( aBytes[i] != bBytes[i] )
                return false;

        return true;
    }

    uint64_t bits = differ( count - 8 );

    for( QV_INT i = 0; i + 8 < count; i += 8 )
        bits |= differ( i );

    return bits == 0;
}

/** Copies some dozens of bytes, for which a call would cost as much. */
inline void copyBytes( void *to, const void *from, QV_INT count )
{
    char       *toBytes   = static_cast< char * >( to );
    const char *fromBytes = static_cast< const char * >( from );

    if( count < 8 )
    {
        for( QV_INT i = 0; i < count; i++ )
            toBytes[i] = fromBytes[i];

        return;
    }

    if( count < 16 )
    {
        memcpy( toBytes, fromBytes, 8 );
        memcpy( toBytes + count - 8, fromBytes + count - 8, 8 );
        return;
    }

    for( QV_INT i = 0; i + 16 < count; i += 16 )
        memcpy( toBytes + i, fromBytes + i, 16 );

    memcpy( toBytes + count - 16, fromBytes + count - 16, 16 );
}

/** Writes ASCII bytes as characters. */
inline void widenAscii( QV_CHAR *to, const uint8_t *bytes, QV_INT count )
{
#if QV___VECTORS_16
    if( count >= 8 && vectors::has16() )
    {
        auto widenEight = [=]( QV_INT at )
        {
            __m128i words = _mm_unpacklo_epi8(
                _mm_loadl_epi64( reinterpret_cast< const __m128i * >( bytes + at ) ), _mm_setzero_si128() );
            vectors::store( to + at, (vectors::Four)_mm_unpacklo_epi16( words, _mm_setzero_si128() ) );
            vectors::store( to + at + 4, (vectors::Four)_mm_unpackhi_epi16( words, _mm_setzero_si128() ) );
        };

        for( QV_INT i = 0; i + 8 < count; i += 8 )
            widenEight( i );

        widenEight( count - 8 );
        return;
    }
#endif

    for( QV_INT i = 0; i < count; i++ )
        to[i] = bytes[i];
}

/** Writes characters as bytes if all are printable ASCII other than `%`. Else false: what is written then is no text. */
inline bool narrowPlain( uint8_t *to, const QV_CHAR *chs, QV_INT count )
{
#if QV___VECTORS_16
    if( count >= 8 && vectors::has16() )
    {
        __m128i odd = _mm_setzero_si128();

        // What doesn't fit a byte becomes one with a sign, as all beyond ASCII have.
        vectors::narrowAtLeastEight(
            to, chs, count,
            [&]( __m128i bytes )
            {
                __m128i signs = _mm_or_si128(
                    _mm_cmpeq_epi8( bytes, _mm_set1_epi8( '%' ) ), _mm_cmpeq_epi8( bytes, _mm_set1_epi8( 0x7F ) ) );
                odd = _mm_or_si128( odd, _mm_or_si128( _mm_cmplt_epi8( bytes, _mm_set1_epi8( ' ' ) ), signs ) );
            } );

        return _mm_movemask_epi8( odd ) == 0;
    }
#endif

    bool isPlain = true;

    for( QV_INT i = 0; i < count; i++ )
    {
        isPlain &= chs[i] - U' ' <= U'~' - U' ' && chs[i] != U'%';
        to[i] = static_cast< uint8_t >( chs[i] );
    }

    return isPlain;
}

/** Writes characters below 0x110000 as bytes if all are ASCII. Else false: what is written then is no text. */
inline bool narrowIfAscii( uint8_t *to, const QV_CHAR *chs, QV_INT count )
{
    QV_ASSERT( allCharsOk( chs, count ) ); // one with a sign would become 0

#if QV___VECTORS_16
    if( count >= 8 && vectors::has16() )
    {
        __m128i all = _mm_setzero_si128();
        vectors::narrowAtLeastEight( to, chs, count, [&]( __m128i bytes ) { all = _mm_or_si128( all, bytes ); } );

        return _mm_movemask_epi8( all ) == 0;
    }
#endif

    QV_CHAR all = 0;

    for( QV_INT i = 0; i < count; i++ )
    {
        all |= chs[i];
        to[i] = static_cast< uint8_t >( chs[i] );
    }

    return all < 0x80;
}

/** True when all bytes are ASCII. */
inline bool areAscii( const uint8_t *bytes, QV_INT count )
{
    uint64_t all = 0, word;
    QV_INT   i   = 0;

    for( ; i + 8 <= count; i += 8 )
    {
        memcpy( &word, bytes + i, 8 );
        all |= word;
    }

    for( ; i < count; i++ )
        all |= bytes[i];

    return ( all & UINT64_C( 0x8080808080808080 ) ) == 0;
}

/** True when characters are those of as many bytes, each its value. */
inline bool equalsBytes( const QV_CHAR *chs, const uint8_t *bytes, QV_INT count )
{
#if QV___VECTORS_16
    if( count >= 8 && vectors::has16() )
    {
        auto differ = [=]( QV_INT at )
        {
            __m128i words = _mm_unpacklo_epi8(
                _mm_loadl_epi64( reinterpret_cast< const __m128i * >( bytes + at ) ), _mm_setzero_si128() );
            return ( vectors::load( chs + at ) ^ (vectors::Four)_mm_unpacklo_epi16( words, _mm_setzero_si128() ) )
                   | ( vectors::load( chs + at + 4 )
                       ^ (vectors::Four)_mm_unpackhi_epi16( words, _mm_setzero_si128() ) );
        };

        vectors::Four bits = differ( count - 8 );

        for( QV_INT i = 0; i + 8 < count; i += 8 )
            bits |= differ( i );

        return _mm_movemask_epi8( _mm_cmpeq_epi8( (__m128i)bits, _mm_setzero_si128() ) ) == 0xFFFF;
    }
#endif

    for( QV_INT i = 0; i < count; i++ )
        if( chs[i] != bytes[i] )
            return false;

    return true;
}
} // namespace qv

#endif
