#include "qv/sys/qv_chars.h"

#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_cpu_private.h"
#include "qv/sys/qv_int.h"

#include <string.h>

#ifdef QV___CPU_FEATURES
#include <immintrin.h>
#define QV___KERNELS
#endif

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Both directions have a plain loop, which knows all the rules, and in front of it, where the processor has the
// instructions, a loop on whole vectors. That one finds out for many bytes or characters at once which have which
// length, and converts four or eight characters with one shuffle, whatever their lengths are: a mixture of lengths
// costs no mispredicted branches. What it meets that is not well formed it leaves to the plain loop. What is too short
// for it, and everything where it cannot run, goes through a loop on small vectors that only knows ASCII.

namespace
{
const QV_CHAR REPLACEMENT = 0xFFFD;

bool isContinuation( unsigned char byte )
{
    return ( byte & 0xC0 ) == 0x80;
}

// What a conversion from UTF-8 has reached.
struct Decoder
{
    const unsigned char *src;
    QV_INT               srcLength;
    QV_INT               i; // the next byte; between any two steps a sequence starts here
    QV_CHAR             *dest;
    QV_INT               destLength;
    QV_INT               count; // characters so far, also those that there was no room for

    void put( QV_CHAR ch )
    {
        if( count < destLength )
            dest[count] = ch;

        count++;
    }

    // All sequences that start before `stop`.
    void decodePlain( QV_INT stop )
    {
        while( i < stop )
        {
            unsigned char lead = src[i++];

            if( lead < 0x80 )
            {
                put( lead );
                continue;
            }

            int follow = lead < 0xC0 ? -1 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF8 ? 3 : -1;

            if( follow < 0 )
            {
                put( REPLACEMENT );

                while( i < srcLength && isContinuation( src[i] ) )
                    i++;

                continue;
            }

            QV_CHAR ch = lead & ( 0x3F >> follow );

            while( follow > 0 && i < srcLength && isContinuation( src[i] ) )
            {
                ch = ( ch << 6 ) | ( src[i++] & 0x3F );
                follow--;
            }

            if( follow == 0 )
            {
                if( QV_CHAR_OK( ch ) )
                    put( ch );
            }
            else if( i < srcLength )
            {
                put( REPLACEMENT );
            }
        }
    }
};

// What a conversion to UTF-8 has reached.
struct Encoder
{
    const QV_CHAR *src;
    QV_INT         srcLength;
    QV_INT         i;
    char          *dest;
    QV_INT         destLength;
    QV_INT         compLen; // bytes so far, also those that there was no room for

    void put( QV_CHAR byte )
    {
        if( compLen < destLength )
            dest[compLen] = static_cast< char >( byte );

        compLen++;
    }

    // All characters before `stop`.
    void encodePlain( QV_INT stop )
    {
        for( ; i < stop; i++ )
        {
            QV_CHAR ch     = QV_CHAR_OK( src[i] ) ? src[i] : REPLACEMENT;
            QV_INT  addLen = ch < 0x80 ? 1 : ch < 0x800 ? 2 : ch < 0x10000 ? 3 : 4;
            QV_CHECK( QV_INT_ADD_OK( compLen, addLen ) );

            if( addLen == 1 )
            {
                put( ch );
                continue;
            }

            put( ( 0xF00 >> addLen & 0xFF ) | ( ch >> ( 6 * ( addLen - 1 ) ) ) );

            for( QV_INT rest = addLen - 2; rest >= 0; rest-- )
                put( 0x80 | ( ( ch >> ( 6 * rest ) ) & 0x3F ) );
        }
    }
};

#ifdef QV___KERNELS

#define KERNEL __attribute__( ( target( "avx2,bmi,bmi2,popcnt" ) ) )

// The kernels gather bits with an instruction that the first processors of one family have in name only. The C library
// is asked, which knows the processor already: what the compiler offers asks the processor itself, at load time, and
// where that is a virtual one the answers cost more than the whole start of the library.
bool hasKernels()
{
    if( !CPU_FEATURE_ACTIVE( AVX2 ) || !CPU_FEATURE_ACTIVE( BMI2 ) )
        return false;

    unsigned signature = __x86_get_cpuid_feature_leaf( CPUID_INDEX_1 )->cpuid_array[0];
    unsigned family    = ( signature >> 8 & 0xF ) + ( signature >> 20 & 0xFF );

    return family != 0x17 && family != 0x18;
}

// The shuffles between 16 bytes of UTF-8 and characters in lanes of 2 or 4 bytes, with the last byte of a character
// in the lowest place of its lane for decoding and in the highest one for encoding. They are found by the lengths of
// the characters: for lanes of 2 bytes by a bit for each of the eight, set for a length of 2; for lanes of 4 bytes by
// the lower bits of the four lengths less 1 and, from bit 4 on, by the upper ones.
struct Shuffles
{
    constexpr Shuffles() : fromTwo(), fromFour(), toTwo(), toFour()
    {
        for( unsigned key = 0; key < 256; key++ )
        {
            unsigned lengths[8] = {};

            for( unsigned lane = 0; lane < 8; lane++ )
                lengths[lane] = 1 + ( key >> lane & 1 );

            fill( fromTwo[key], toTwo[key], 2, lengths );

            for( unsigned lane = 0; lane < 4; lane++ )
                lengths[lane] = 1 + ( key >> lane & 1 ) + 2 * ( key >> ( lane + 4 ) & 1 );

            fill( fromFour[key], toFour[key], 4, lengths );
        }
    }

    static constexpr void fill( uint8_t *from, uint8_t *to, unsigned laneSize, const unsigned *lengths )
    {
        const uint8_t ZERO = 0x80;
        unsigned      at   = 0;

        for( unsigned k = 0; k < 16; k++ )
            from[k] = to[k] = ZERO;

        for( unsigned lane = 0; lane < 16 / laneSize; lane++ )
        {
            for( unsigned k = 0; k < lengths[lane]; k++ )
            {
                from[lane * laneSize + k] = static_cast< uint8_t >( at + lengths[lane] - 1 - k );
                to[at + k]                = static_cast< uint8_t >( ( lane + 1 ) * laneSize - lengths[lane] + k );
            }

            at += lengths[lane];
        }
    }

    alignas( 16 ) uint8_t fromTwo[256][16];
    alignas( 16 ) uint8_t fromFour[256][16];
    alignas( 16 ) uint8_t toTwo[256][16];
    alignas( 16 ) uint8_t toFour[256][16];
};

constexpr Shuffles SHUFFLES;

KERNEL inline __m128i load16( const void *from )
{
    return _mm_loadu_si128( static_cast< const __m128i * >( from ) );
}

KERNEL inline __m256i load32( const void *from )
{
    return _mm256_loadu_si256( static_cast< const __m256i * >( from ) );
}

KERNEL inline void store16( void *to, __m128i vector )
{
    _mm_storeu_si128( static_cast< __m128i * >( to ), vector );
}

KERNEL inline void store32( void *to, __m256i vector )
{
    _mm256_storeu_si256( static_cast< __m256i * >( to ), vector );
}

// A bit for each of 64 bytes, the topmost bit of the byte.
KERNEL inline uint64_t topBits( __m256i low, __m256i high )
{
    return static_cast< uint32_t >( _mm256_movemask_epi8( low ) ) |
           static_cast< uint64_t >( static_cast< uint32_t >( _mm256_movemask_epi8( high ) ) ) << 32;
}

// A bit for each of 64 bytes that is `threshold`, 0x80 or more, or above.
KERNEL inline uint64_t atLeast( __m256i low, __m256i high, int threshold )
{
    const __m256i distance = _mm256_set1_epi8( static_cast< char >( threshold - 0x80 ) );

    return topBits( _mm256_subs_epu8( low, distance ), _mm256_subs_epu8( high, distance ) );
}

// Eight characters of one or two bytes. `key` tells which have two.
KERNEL inline __m256i decodeEight( __m128i utf8, unsigned key )
{
    __m128i bytes = _mm_shuffle_epi8( utf8, load16( SHUFFLES.fromTwo[key] ) );
    __m128i last  = _mm_and_si128( bytes, _mm_set1_epi16( 0x7F ) );
    __m128i first = _mm_and_si128( bytes, _mm_set1_epi16( 0x1F00 ) );

    return _mm256_cvtepu16_epi32( _mm_or_si128( last, _mm_srli_epi16( first, 2 ) ) );
}

// Four characters of any lengths.
KERNEL inline __m128i decodeFour( __m128i utf8, unsigned key )
{
    // The masks drop the marks, except that the first of three bytes has one where the third last of four has its
    // topmost bit. The mark beside it tells the two apart.
    __m128i bytes  = _mm_shuffle_epi8( utf8, load16( SHUFFLES.fromFour[key] ) );
    __m128i last   = _mm_and_si128( bytes, _mm_set1_epi32( 0x7F ) );
    __m128i second = _mm_and_si128( bytes, _mm_set1_epi32( 0x3F00 ) );
    __m128i third  = _mm_and_si128( bytes, _mm_set1_epi32( 0x3F0000 ) );
    __m128i fourth = _mm_and_si128( bytes, _mm_set1_epi32( 0x07000000 ) );
    __m128i mark   = _mm_srli_epi32( _mm_and_si128( bytes, _mm_set1_epi32( 0x400000 ) ), 1 );

    return _mm_or_si128(
        _mm_or_si128( last, _mm_srli_epi32( second, 2 ) ),
        _mm_or_si128( _mm_srli_epi32( _mm_xor_si128( third, mark ), 4 ), _mm_srli_epi32( fourth, 6 ) ) );
}

// Counts, and if `filling` stores, as long as there are 64 bytes with 16 to read behind, and room for 64 characters.
template< bool filling >
KERNEL void decodeBlocks( Decoder &d )
{
    // Not in the structure, which the stores could reach for all that the compiler knows.
    QV_INT i     = d.i;
    QV_INT count = d.count;

    while( d.srcLength - i >= 64 + 16 && ( !filling || d.destLength - count >= 64 ) )
    {
        const unsigned char *at   = d.src + i;
        QV_CHAR             *to   = d.dest + count;
        __m256i              low  = load32( at );
        __m256i              high = load32( at + 32 );

        if( _mm256_movemask_epi8( _mm256_or_si256( low, high ) ) == 0 )
        {
            if( filling )
                for( int k = 0; k < 64; k += 8 )
                    store32( to + k, _mm256_cvtepu8_epi32( _mm_loadl_epi64( (const __m128i *)( at + k ) ) ) );

            count += 64;
            i += 64;
            continue;
        }

        uint64_t lead    = atLeast( low, high, 0xC0 );
        uint64_t lead3   = atLeast( low, high, 0xE0 );
        uint64_t lead4   = lead3 ? atLeast( low, high, 0xF0 ) : 0;
        uint64_t tooHigh = lead4 ? atLeast( low, high, 0xF4 ) : 0;
        uint64_t follow  = topBits( low, high ) & ~lead;

        // A block is well formed whose following bytes stand just where the first bytes demand them. With a first
        // byte of F4 the value may be too high, above that nothing is good.
        if( follow != ( lead << 1 | lead3 << 2 | lead4 << 3 ) || tooHigh )
        {
            d.i     = i;
            d.count = count;
            d.decodePlain( i + 64 );
            i     = d.i;
            count = d.count;
            continue;
        }

        // The last character may end behind the block. Then the next block starts with it.
        int      whole  = lead >> 63 ? 63 : lead3 >> 62 ? 62 : lead4 >> 61 ? 61 : 64;
        uint64_t starts = ~follow & ( ~UINT64_C( 0 ) >> ( 64 - whole ) );

        if( !filling )
        {
            count += __builtin_popcountll( starts );
            i += whole;
            continue;
        }

        // One bit for each character in place of one for each byte; the characters that don't fill a vector wait for
        // the next block too.
        uint64_t ends  = starts >> 1 | UINT64_C( 1 ) << ( whole - 1 );
        int      chars = __builtin_popcountll( ends );
        int      done  = 0;
        int      from  = 0;

        if( !lead3 )
        {
            uint64_t two = _pext_u64( follow, ends );

            for( ; done + 8 <= chars; done += 8, two >>= 8 )
            {
                unsigned key = two & 0xFF;
                store32( to + done, decodeEight( load16( at + from ), key ) );
                from += 8 + __builtin_popcount( key );
            }
        }
        else
        {
            uint64_t three = follow & follow << 1; // ends of three bytes and more
            uint64_t four  = three & follow << 2;
            uint64_t lower = _pext_u64( ( follow & ~three ) | four, ends );
            uint64_t upper = _pext_u64( three, ends );

            for( ; done + 4 <= chars; done += 4, lower >>= 4, upper >>= 4 )
            {
                unsigned key = ( lower & 0xF ) | ( upper & 0xF ) << 4;
                store16( to + done, decodeFour( load16( at + from ), key ) );
                from += 4 + __builtin_popcount( key ) + __builtin_popcount( key & 0xF0 );
            }
        }

        count += done;
        i += from;
    }

    d.i     = i;
    d.count = count;
}

KERNEL inline int signs( __m256i lanes )
{
    return _mm256_movemask_ps( _mm256_castsi256_ps( lanes ) );
}

// All ones in the lanes of characters above `limit`, which is below 0x110000 as the characters are.
KERNEL inline __m256i above( __m256i chars, int limit )
{
    return _mm256_cmpgt_epi32( chars, _mm256_set1_epi32( limit ) );
}

// Values of 0x110000 and more become that.
KERNEL inline __m256i limited( __m256i chars )
{
    return _mm256_min_epu32( chars, _mm256_set1_epi32( 0x110000 ) );
}

// The bytes that characters need beyond one each, added up for eight lanes on their own.
KERNEL inline __m256i moreBytes( __m256i more, __m256i chars )
{
    chars = limited( chars );
    more  = _mm256_sub_epi32( more, above( chars, 0x7F ) );
    more  = _mm256_sub_epi32( more, above( chars, 0x7FF ) );
    more  = _mm256_sub_epi32( more, above( chars, 0xFFFF ) );

    return _mm256_add_epi32( more, above( chars, 0x10FFFF ) );
}

// 32 characters at a time.
KERNEL void measureBlocks( Encoder &e )
{
    while( e.srcLength - e.i >= 32 )
    {
        // So many that no lane overflows.
        QV_INT  left = e.srcLength - e.i;
        QV_INT  stop = e.i + ( left < 0x8000000 ? left / 32 * 32 : 0x8000000 );
        QV_INT  size = stop - e.i;
        __m256i more = _mm256_setzero_si256();

        for( ; e.i < stop; e.i += 32 )
        {
            __m256i a   = load32( e.src + e.i );
            __m256i b   = load32( e.src + e.i + 8 );
            __m256i c   = load32( e.src + e.i + 16 );
            __m256i d   = load32( e.src + e.i + 24 );
            __m256i all = _mm256_or_si256( _mm256_or_si256( a, b ), _mm256_or_si256( c, d ) );

            if( !_mm256_testz_si256( all, _mm256_set1_epi32( ~0x7F ) ) )
                more = moreBytes( moreBytes( moreBytes( moreBytes( more, a ), b ), c ), d );
        }

        uint32_t lanes[8];
        store32( lanes, more );

        for( uint32_t lane : lanes )
            size += lane;

        QV_CHECK_AS( QV_INT_ADD_OK( e.compLen, size ), "QV_INT_ADD_OK( compLen, addLen )" );
        e.compLen += size;
    }
}

// 16 characters at a time, as long as there is room for the longest. Every store is of 16 bytes: what it writes
// behind the last byte that counts is overwritten by the 16 characters or more that have to follow.
KERNEL void encodeBlocks( Encoder &e )
{
    const __m256i byLength = _mm256_setr_epi32( 0, (int)0x80C00000, (int)0x8080E000, (int)0x808080F0, 0, 0, 0, 0 );
    const __m256i lastMask = _mm256_setr_epi32( 0x7F000000, 0x3F000000, 0x3F000000, 0x3F000000, 0, 0, 0, 0 );

    // Not in the structure, which the stores could reach for all that the compiler knows.
    QV_INT i       = e.i;
    QV_INT compLen = e.compLen;

    for( ; e.srcLength - i >= 16 + 16 && e.destLength - compLen >= 64; i += 16 )
    {
        char   *to   = e.dest + compLen;
        __m256i a    = load32( e.src + i );
        __m256i b    = load32( e.src + i + 8 );
        __m256i both = _mm256_or_si256( a, b );

        if( _mm256_testz_si256( both, _mm256_set1_epi32( ~0x7F ) ) )
        {
            __m256i units = _mm256_packus_epi32( a, b );
            __m256i bytes = _mm256_packus_epi16( units, units );
            bytes         = _mm256_permutevar8x32_epi32( bytes, _mm256_setr_epi32( 0, 4, 1, 5, 0, 0, 0, 0 ) );
            store16( to, _mm256_castsi256_si128( bytes ) );
            compLen += 16;
            continue;
        }

        if( _mm256_testz_si256( both, _mm256_set1_epi32( ~0x7FF ) ) )
        {
            // One or two bytes each, in lanes of two.
            __m256i chars = _mm256_permute4x64_epi64( _mm256_packus_epi32( a, b ), 0xD8 );
            __m256i two   = _mm256_cmpgt_epi16( chars, _mm256_set1_epi16( 0x7F ) );
            __m256i last  = _mm256_slli_epi16( _mm256_and_si256( chars, _mm256_set1_epi16( 0x3F ) ), 8 );
            __m256i pair  = _mm256_or_si256( last, _mm256_srli_epi16( chars, 6 ) );
            pair          = _mm256_or_si256( pair, _mm256_set1_epi16( (short)0x80C0 ) );
            __m256i bytes = _mm256_blendv_epi8( _mm256_slli_epi16( chars, 8 ), pair, two );
            __m128i flags = _mm_packs_epi16( _mm256_castsi256_si128( two ), _mm256_extracti128_si256( two, 1 ) );
            int     key   = _mm_movemask_epi8( flags );

            __m128i low   = _mm256_castsi256_si128( bytes );
            __m128i high  = _mm256_extracti128_si256( bytes, 1 );

            store16( to, _mm_shuffle_epi8( low, load16( SHUFFLES.toTwo[key & 0xFF] ) ) );
            to += 8 + __builtin_popcount( key & 0xFF );
            store16( to, _mm_shuffle_epi8( high, load16( SHUFFLES.toTwo[key >> 8] ) ) );
            compLen += 16 + __builtin_popcount( key );
            continue;
        }

        if( signs( _mm256_or_si256( above( limited( a ), 0x10FFFF ), above( limited( b ), 0x10FFFF ) ) ) )
        {
            e.i       = i;
            e.compLen = compLen;
            e.encodePlain( i + 16 );
            compLen = e.compLen;
            continue;
        }

        for( int half = 0; half < 2; half++ )
        {
            __m256i chars = half == 0 ? a : b;

            // The length less 1 of each, then the bytes in lanes of four with the marks that the length demands.
            __m256i length = _mm256_add_epi32( above( chars, 0x7F ), above( chars, 0x7FF ) );
            length         = _mm256_abs_epi32( _mm256_add_epi32( length, above( chars, 0xFFFF ) ) );
            __m256i mask   = _mm256_permutevar8x32_epi32( lastMask, length );
            __m256i last   = _mm256_and_si256( _mm256_slli_epi32( chars, 24 ), mask );
            __m256i second = _mm256_and_si256( _mm256_slli_epi32( chars, 10 ), _mm256_set1_epi32( 0x3F0000 ) );
            __m256i third  = _mm256_and_si256( _mm256_srli_epi32( chars, 4 ), _mm256_set1_epi32( 0x3F00 ) );
            __m256i fourth = _mm256_srli_epi32( chars, 18 );
            __m256i bytes  = _mm256_or_si256( _mm256_or_si256( last, second ), _mm256_or_si256( third, fourth ) );
            bytes          = _mm256_or_si256( bytes, _mm256_permutevar8x32_epi32( byLength, length ) );

            unsigned lower   = static_cast< unsigned >( signs( _mm256_slli_epi32( length, 31 ) ) );
            unsigned upper   = static_cast< unsigned >( signs( _mm256_slli_epi32( length, 30 ) ) );
            unsigned lowKey  = ( lower & 0xF ) | ( upper & 0xF ) << 4;
            unsigned highKey = lower >> 4 | ( upper & 0xF0 );
            int      lowLen  = 4 + __builtin_popcount( lowKey ) + __builtin_popcount( lowKey & 0xF0 );
            int      highLen = 4 + __builtin_popcount( highKey ) + __builtin_popcount( highKey & 0xF0 );

            to = e.dest + compLen;
            store16( to, _mm_shuffle_epi8( _mm256_castsi256_si128( bytes ), load16( SHUFFLES.toFour[lowKey] ) ) );
            store16(
                to + lowLen,
                _mm_shuffle_epi8( _mm256_extracti128_si256( bytes, 1 ), load16( SHUFFLES.toFour[highKey] ) ) );
            compLen += lowLen + highLen;
        }
    }

    e.i       = i;
    e.compLen = compLen;
}

// The ASCII in front, 32 characters at a time.
KERNEL QV_INT encodeAsciiBlocks( char *dest, const QV_CHAR *src, QV_INT length )
{
    const __m256i order = _mm256_setr_epi32( 0, 4, 1, 5, 2, 6, 3, 7 ); // as packing puts the halves side by side
    QV_INT        i     = 0;

    for( ; length - i >= 32; i += 32 )
    {
        __m256i a   = load32( src + i );
        __m256i b   = load32( src + i + 8 );
        __m256i c   = load32( src + i + 16 );
        __m256i d   = load32( src + i + 24 );
        __m256i all = _mm256_or_si256( _mm256_or_si256( a, b ), _mm256_or_si256( c, d ) );

        if( !_mm256_testz_si256( all, _mm256_set1_epi32( ~0x7F ) ) )
            break;

        __m256i bytes = _mm256_packus_epi16( _mm256_packus_epi32( a, b ), _mm256_packus_epi32( c, d ) );
        store32( dest + i, _mm256_permutevar8x32_epi32( bytes, order ) );
    }

    return i;
}

#endif

#ifdef __SSE2__

// 16 bytes at a time, as long as there is room for so many characters.
void decodeAscii( Decoder &d )
{
    const __m128i zero = _mm_setzero_si128();

    while( d.srcLength - d.i >= 16 && ( !d.dest || d.destLength - d.count >= 16 ) )
    {
        __m128i bytes = _mm_loadu_si128( reinterpret_cast< const __m128i * >( d.src + d.i ) );

        if( _mm_movemask_epi8( bytes ) )
        {
            d.decodePlain( d.i + 16 );
            continue;
        }

        if( d.dest )
        {
            __m128i *to   = reinterpret_cast< __m128i * >( d.dest + d.count );
            __m128i  low  = _mm_unpacklo_epi8( bytes, zero );
            __m128i  high = _mm_unpackhi_epi8( bytes, zero );
            _mm_storeu_si128( to, _mm_unpacklo_epi16( low, zero ) );
            _mm_storeu_si128( to + 1, _mm_unpackhi_epi16( low, zero ) );
            _mm_storeu_si128( to + 2, _mm_unpacklo_epi16( high, zero ) );
            _mm_storeu_si128( to + 3, _mm_unpackhi_epi16( high, zero ) );
        }

        d.count += 16;
        d.i += 16;
    }
}

// 16 characters at a time, as long as there is room for so many bytes.
void encodeAscii( Encoder &e )
{
    while( e.srcLength - e.i >= 16 && ( !e.dest || e.destLength - e.compLen >= 16 ) )
    {
        const __m128i *from = reinterpret_cast< const __m128i * >( e.src + e.i );
        __m128i        a    = _mm_loadu_si128( from );
        __m128i        b    = _mm_loadu_si128( from + 1 );
        __m128i        c    = _mm_loadu_si128( from + 2 );
        __m128i        d    = _mm_loadu_si128( from + 3 );
        __m128i        all  = _mm_or_si128( _mm_or_si128( a, b ), _mm_or_si128( c, d ) );
        __m128i        over = _mm_andnot_si128( _mm_set1_epi32( 0x7F ), all );

        if( _mm_movemask_epi8( _mm_cmpeq_epi32( over, _mm_setzero_si128() ) ) != 0xFFFF )
        {
            e.encodePlain( e.i + 16 );
            continue;
        }

        QV_CHECK_AS( QV_INT_ADD_OK( e.compLen, 16 ), "QV_INT_ADD_OK( compLen, addLen )" );

        if( e.dest )
        {
            __m128i bytes = _mm_packus_epi16( _mm_packs_epi32( a, b ), _mm_packs_epi32( c, d ) );
            _mm_storeu_si128( reinterpret_cast< __m128i * >( e.dest + e.compLen ), bytes );
        }

        e.compLen += 16;
        e.i += 16;
    }
}

#endif
} // namespace

QV_INT qv::encodeLeadingAscii( char *dest, const QV_CHAR *src, QV_INT length )
{
    QV_INT i = 0;

#ifdef QV___KERNELS
    if( length >= 32 && hasKernels() )
        i = encodeAsciiBlocks( dest, src, length );
#endif

    for( ; i < length && src[i] < 0x80; i++ )
        dest[i] = static_cast< char >( src[i] );

    return i;
}

QV_INT qvCharsConvertFromUtf8( QV_CHAR *dest, QV_INT destLength, const char *src, QV_INT srcLength )
{
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength >= -1 );
    QV_CHECK( destLength == 0 || dest );
    QV_CHECK( srcLength == 0 || src );

    if( srcLength == -1 )
        srcLength = static_cast< QV_INT >( strlen( src ) );

    Decoder d = { reinterpret_cast< const unsigned char * >( src ), srcLength, 0, dest, destLength, 0 };

#ifdef QV___KERNELS
    if( srcLength >= 64 + 16 && hasKernels() )
        dest ? decodeBlocks< true >( d ) : decodeBlocks< false >( d );
#endif
#ifdef __SSE2__
    decodeAscii( d );
#endif

    d.decodePlain( srcLength );

    return d.count;
}

QV_INT qvCharsConvertToUtf8( char *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull )
{
    QV_CHECK( destLength >= 0 );
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( destLength == 0 || dest );
    QV_CHECK( srcLength == 0 || src );

    Encoder e = { src, srcLength, 0, dest, destLength, 0 };

#ifdef QV___KERNELS
    if( srcLength >= 16 + 16 && hasKernels() )
        dest ? encodeBlocks( e ) : measureBlocks( e );
#endif
#ifdef __SSE2__
    encodeAscii( e );
#endif

    e.encodePlain( srcLength );

    if( addNull )
    {
        QV_CHECK( QV_INT_ADD_OK( e.compLen, 1 ) );
        e.put( 0 );
    }

    return e.compLen;
}
