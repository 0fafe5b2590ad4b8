#include "qv/sys/qv_cpu_private.h"
#include "qv/sys/qv_utf8_private.h"
#include "qv/sys/qv_vectors_private.h"

#include <algorithm>
#include <string.h>

#ifdef QV___CPU_FEATURES
#include <immintrin.h>
#endif

using namespace qv::utf8;

/* Vectors of 16 bytes -------------------------------------------------------------------------------------------- */

#if QV___VECTORS_16

namespace
{
// What putSparse() takes, and the room after the next character without which it stops. It may write so many bytes
// more than it tells, and so does no other part.
const QV_INT STRETCH       = 64;
const QV_INT STRETCH_BYTES = STRETCH + 4;

// Four characters as positive numbers. With the topmost bit they would be narrowed like negative ones, to 0.
__m128i withoutSign( const __m128i *from )
{
    __m128i chars = _mm_loadu_si128( from );

    return _mm_or_si128( _mm_and_si128( chars, _mm_set1_epi32( 0x7FFFFFFF ) ), _mm_srli_epi32( chars, 24 ) );
}

// Also where no register holds it.
uint64_t lowHalf( __m128i vector )
{
    uint64_t low;
    _mm_storel_epi64( reinterpret_cast< __m128i * >( &low ), vector );

    return low;
}

// Narrows 64 characters to bytes. The bits of the result tell which of them are no ASCII; their bytes mean nothing.
uint64_t narrow( const QV_CHAR *in, uint8_t *bytes )
{
    uint64_t others = 0;

    for( int i = 0; i < STRETCH; i += 16 )
    {
        const __m128i *from = reinterpret_cast< const __m128i * >( in + i );

        // What is more than a byte can hold becomes 0xFF on its way.
        __m128i low  = _mm_packs_epi32( withoutSign( from ), withoutSign( from + 1 ) );
        __m128i high = _mm_packs_epi32( withoutSign( from + 2 ), withoutSign( from + 3 ) );
        __m128i all  = _mm_packus_epi16( low, high );

        _mm_storeu_si128( reinterpret_cast< __m128i * >( bytes + i ), all );
        others |= static_cast< uint64_t >( _mm_movemask_epi8( all ) ) << i;
    }

    return others;
}

// Encodes a stretch of 64 characters, or a part of it where three in a row are no ASCII, one takes 4 bytes or is
// invalid, or there may be no room. Where ASCII is mixed with other characters depends on the text, and branches for
// single characters or short blocks would be foreseen badly; here one is left for each stretch.
Encoded putSparse( const QV_CHAR *in, uint8_t *out, const uint8_t *outEnd )
{
    uint8_t  bytes[2 * STRETCH]; // the second half is copied but not used
    uint64_t others = narrow( in, bytes );
    uint64_t dense  = others & others >> 1 & others >> 2;
    int      end    = dense ? __builtin_ctzll( dense ) : static_cast< int >( STRETCH );

    for( int at = 0;; at++ )
    {
        // The next one that is no ASCII, or the end.
        int next = others ? std::min( __builtin_ctzll( others ), end ) : end;

        memcpy( out, bytes + at, STRETCH / 2 );

        if( next - at > STRETCH / 2 )
            memcpy( out + STRETCH / 2, bytes + at + STRETCH / 2, STRETCH / 2 );

        out += next - at;
        at = next;

        if( at == end || in[at] > 0xFFFF || outEnd - out < STRETCH_BYTES )
            return { in + at, out };

        // Both forms, to choose one without a branch.
        uint32_t ch      = in[at];
        bool     isThree = ch > 0x7FF;
        uint32_t two     = 0x80C0 | ch >> 6 | ( ch & 0x3F ) << 8;
        uint32_t three   = 0x8080E0 | ch >> 12 | ( ch >> 6 & 0x3F ) << 8 | ( ch & 0x3F ) << 16;
        uint32_t form    = isThree ? three : two;

        memcpy( out, &form, 4 );
        out += isThree ? 3 : 2;
        others &= others - 1;
    }
}

// What putBlock() and putWide() take, and how many bytes they may write.
const QV_INT BLOCK       = 8;
const QV_INT BLOCK_BYTES = 3 * BLOCK + 1;

// Encodes 8 characters at once when none of them takes more than 2 bytes, and gives the end of the bytes, else null.
// In the text of most alphabets 1 and 2 bytes alternate at any time; a branch for each character would be foreseen
// badly.
uint8_t *putBlock( const QV_CHAR *in, uint8_t *out )
{
    const __m128i *from  = reinterpret_cast< const __m128i * >( in );
    __m128i        low   = _mm_loadu_si128( from );
    __m128i        high  = _mm_loadu_si128( from + 1 );
    __m128i        words = _mm_packs_epi32( low, high );
    __m128i        all   = _mm_or_si128( low, high );
    __m128i        zero  = _mm_setzero_si128();

    if( _mm_movemask_epi8( _mm_cmpeq_epi32( _mm_srli_epi32( all, 7 ), zero ) ) == 0xFFFF )
    {
        _mm_storel_epi64( reinterpret_cast< __m128i * >( out ), _mm_packus_epi16( words, words ) );
        return out + BLOCK;
    }

    if( _mm_movemask_epi8( _mm_cmpeq_epi32( _mm_srli_epi32( all, 11 ), zero ) ) != 0xFFFF )
        return nullptr;

    // Either form of every character, the first byte in the lower half.
    __m128i isPair = _mm_cmpgt_epi16( words, _mm_set1_epi16( 0x7F ) );
    __m128i tails  = _mm_slli_epi16( _mm_and_si128( words, _mm_set1_epi16( 0x3F ) ), 8 );
    __m128i leads  = _mm_or_si128( _mm_srli_epi16( words, 6 ), _mm_set1_epi16( static_cast< short >( 0x80C0 ) ) );
    __m128i pairs  = _mm_and_si128( isPair, _mm_or_si128( leads, tails ) );
    __m128i forms  = _mm_or_si128( pairs, _mm_andnot_si128( isPair, words ) );

    // The ends of all characters as sums over their lengths, so that no store has to wait for the one before.
    __m128i ends = _mm_sub_epi16( _mm_set1_epi16( 1 ), isPair );

    ends = _mm_add_epi16( ends, _mm_slli_si128( ends, 2 ) );
    ends = _mm_add_epi16( ends, _mm_slli_si128( ends, 4 ) );
    ends = _mm_add_epi16( ends, _mm_slli_si128( ends, 8 ) );

    uint8_t *next = out;

    for( int half = 0; half < 2; half++ )
    {
        // Shifting words out of a general register is cheaper than extracting each from the vector.
        uint64_t form = lowHalf( forms );
        uint64_t end  = lowHalf( ends );

        for( int i = 0; i < BLOCK / 2; i++ )
        {
            uint16_t bytes = static_cast< uint16_t >( form >> 16 * i );
            memcpy( next, &bytes, 2 );
            next = out + static_cast< uint16_t >( end >> 16 * i );
        }

        forms = _mm_unpackhi_epi64( forms, forms );
        ends  = _mm_unpackhi_epi64( ends, ends );
    }

    return next;
}

// Encodes 8 characters of up to 3 bytes, and gives the end of the bytes, else null. Blanks stand anywhere among the
// others, so every form is made and one is chosen without a branch.
uint8_t *putWide( const QV_CHAR *in, uint8_t *out )
{
    QV_CHAR all = 0;

    for( QV_INT i = 0; i < BLOCK; i++ )
        all |= in[i];

    if( all > 0xFFFF )
        return nullptr;

    for( QV_INT i = 0; i < BLOCK; i++ )
    {
        QV_CHAR  ch    = in[i];
        uint32_t two   = 0x80C0 | ch >> 6 | ( ch & 0x3F ) << 8;
        uint32_t three = 0x8080E0 | ch >> 12 | ( ch >> 6 & 0x3F ) << 8 | ( ch & 0x3F ) << 16;
        uint32_t form  = ch > 0x7FF ? three : ch > 0x7F ? two : ch;

        memcpy( out, &form, 4 );
        out += 1 + ( ch > 0x7F ) + ( ch > 0x7FF );
    }

    return out;
}
} // namespace

void qv::utf8::encodeBlocks16( Encoded &done, const QV_CHAR *inEnd, uint8_t *outEnd )
{
    const QV_CHAR *in  = done.in;
    uint8_t       *out = done.out;

    // What a step writes after its bytes is overwritten by the characters that are left for sure.
    while( inEnd - in >= 2 * BLOCK && outEnd - out >= BLOCK_BYTES )
    {
        if( inEnd - in >= STRETCH + STRETCH_BYTES && outEnd - out >= STRETCH_BYTES )
        {
            Encoded next = putSparse( in, out, outEnd );

            if( next.in != in )
            {
                in  = next.in;
                out = next.out;
                continue;
            }
        }

        uint8_t *after = putBlock( in, out );

        if( !after )
            after = putWide( in, out );

        if( !after )
            break;

        in += BLOCK;
        out = after;
    }

    done = { in, out };
}

#else

void qv::utf8::encodeBlocks16( Encoded &, const QV_CHAR *, uint8_t * )
{
}

#endif

/* Vectors of 32 bytes -------------------------------------------------------------------------------------------- */

// These find out for many bytes or characters at once which have which length, and convert four or eight characters
// with one shuffle, whatever their lengths are: a mixture of lengths costs no mispredicted branches.

#ifdef QV___CPU_FEATURES

#define KERNEL __attribute__( ( target( "avx2,bmi,bmi2,popcnt" ) ) )

namespace
{
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
    return static_cast< uint32_t >( _mm256_movemask_epi8( low ) )
           | static_cast< uint64_t >( static_cast< uint32_t >( _mm256_movemask_epi8( high ) ) ) << 32;
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

// Counts, and if `filling` stores, good blocks, as long as there are 64 bytes with 16 to read after them, and room for
// 64 characters. `in` moves on; the result is the number of characters.
template< bool filling >
KERNEL inline QV_INT decodeBlocks( const uint8_t *&in, const uint8_t *inEnd, QV_CHAR *out, QV_INT room )
{
    // Not the reference, which the stores could reach for all that the compiler knows.
    const uint8_t *at    = in;
    QV_INT         count = 0;

    while( inEnd - at >= 64 + 16 && ( !filling || room - count >= 64 ) )
    {
        QV_CHAR *to   = out + count;
        __m256i  low  = load32( at );
        __m256i  high = load32( at + 32 );

        if( _mm256_movemask_epi8( _mm256_or_si256( low, high ) ) == 0 )
        {
            if( filling )
                for( int k = 0; k < 64; k += 8 )
                    store32( to + k, _mm256_cvtepu8_epi32( _mm_loadl_epi64( (const __m128i *)( at + k ) ) ) );

            count += 64;
            at += 64;
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
            break;

        // The last character may end after the block. Then the next block starts with it.
        int      whole  = lead >> 63 ? 63 : lead3 >> 62 ? 62 : lead4 >> 61 ? 61 : 64;
        uint64_t starts = ~follow & ( ~UINT64_C( 0 ) >> ( 64 - whole ) );

        if( !filling )
        {
            count += __builtin_popcountll( starts );
            at += whole;
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
        at += from;
    }

    in = at;
    return count;
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
} // namespace

KERNEL void qv::utf8::decodeBlocks32( Decoded &done, const uint8_t *inEnd, QV_CHAR *outEnd )
{
    done.out += decodeBlocks< true >( done.in, inEnd, done.out, outEnd - done.out );
}

KERNEL void qv::utf8::countBlocks32( Counted &done, const uint8_t *inEnd )
{
    done.count += decodeBlocks< false >( done.in, inEnd, nullptr, 0 );
}

// 16 characters at a time, as long as there is room for the longest. Every store is of 16 bytes: what it writes
// after the last byte that counts is overwritten by the 16 characters or more that have to follow.
KERNEL void qv::utf8::encodeBlocks32( Encoded &done, const QV_CHAR *inEnd, uint8_t *outEnd )
{
    const __m256i byLength = _mm256_setr_epi32( 0, (int)0x80C00000, (int)0x8080E000, (int)0x808080F0, 0, 0, 0, 0 );
    const __m256i lastMask = _mm256_setr_epi32( 0x7F000000, 0x3F000000, 0x3F000000, 0x3F000000, 0, 0, 0, 0 );

    // Not in the structure, which the stores could reach for all that the compiler knows.
    const QV_CHAR *in = done.in;
    uint8_t       *to = done.out;

    for( ; inEnd - in >= 16 + 16 && outEnd - to >= 64; in += 16 )
    {
        __m256i a    = load32( in );
        __m256i b    = load32( in + 8 );
        __m256i both = _mm256_or_si256( a, b );

        if( _mm256_testz_si256( both, _mm256_set1_epi32( ~0x7F ) ) )
        {
            __m256i units = _mm256_packus_epi32( a, b );
            __m256i bytes = _mm256_packus_epi16( units, units );
            bytes         = _mm256_permutevar8x32_epi32( bytes, _mm256_setr_epi32( 0, 4, 1, 5, 0, 0, 0, 0 ) );
            store16( to, _mm256_castsi256_si128( bytes ) );
            to += 16;
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

            __m128i low  = _mm256_castsi256_si128( bytes );
            __m128i high = _mm256_extracti128_si256( bytes, 1 );

            store16( to, _mm_shuffle_epi8( low, load16( SHUFFLES.toTwo[key & 0xFF] ) ) );
            to += 8 + __builtin_popcount( key & 0xFF );
            store16( to, _mm_shuffle_epi8( high, load16( SHUFFLES.toTwo[key >> 8] ) ) );
            to += 8 + __builtin_popcount( key >> 8 );
            continue;
        }

        if( signs( _mm256_or_si256( above( limited( a ), 0x10FFFF ), above( limited( b ), 0x10FFFF ) ) ) )
            break;

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

            store16( to, _mm_shuffle_epi8( _mm256_castsi256_si128( bytes ), load16( SHUFFLES.toFour[lowKey] ) ) );
            store16(
                to + lowLen,
                _mm_shuffle_epi8( _mm256_extracti128_si256( bytes, 1 ), load16( SHUFFLES.toFour[highKey] ) ) );
            to += lowLen + highLen;
        }
    }

    done = { in, to };
}

// 32 characters at a time.
KERNEL Measured qv::utf8::measureBlocks32( const QV_CHAR *in, QV_INT count )
{
    Measured done = { 0, 0 };

    while( count - done.chars >= 32 )
    {
        // So many that no lane overflows.
        QV_INT  left = count - done.chars;
        QV_INT  stop = done.chars + ( left < 0x8000000 ? left / 32 * 32 : 0x8000000 );
        __m256i more = _mm256_setzero_si256();

        done.bytes += stop - done.chars;

        for( ; done.chars < stop; done.chars += 32 )
        {
            const QV_CHAR *at  = in + done.chars;
            __m256i        a   = load32( at );
            __m256i        b   = load32( at + 8 );
            __m256i        c   = load32( at + 16 );
            __m256i        d   = load32( at + 24 );
            __m256i        all = _mm256_or_si256( _mm256_or_si256( a, b ), _mm256_or_si256( c, d ) );

            if( !_mm256_testz_si256( all, _mm256_set1_epi32( ~0x7F ) ) )
                more = moreBytes( moreBytes( moreBytes( moreBytes( more, a ), b ), c ), d );
        }

        uint32_t lanes[8];
        store32( lanes, more );

        for( uint32_t lane : lanes )
            done.bytes += lane;
    }

    return done;
}

// The ASCII in front, 32 characters at a time.
KERNEL QV_INT qv::utf8::encodeAsciiBlocks32( uint8_t *out, const QV_CHAR *in, QV_INT count )
{
    const __m256i order = _mm256_setr_epi32( 0, 4, 1, 5, 2, 6, 3, 7 ); // as packing puts the halves side by side
    QV_INT        i     = 0;

    for( ; count - i >= 32; i += 32 )
    {
        __m256i a   = load32( in + i );
        __m256i b   = load32( in + i + 8 );
        __m256i c   = load32( in + i + 16 );
        __m256i d   = load32( in + i + 24 );
        __m256i all = _mm256_or_si256( _mm256_or_si256( a, b ), _mm256_or_si256( c, d ) );

        if( !_mm256_testz_si256( all, _mm256_set1_epi32( ~0x7F ) ) )
            break;

        __m256i bytes = _mm256_packus_epi16( _mm256_packus_epi32( a, b ), _mm256_packus_epi32( c, d ) );
        store32( out + i, _mm256_permutevar8x32_epi32( bytes, order ) );
    }

    return i;
}

#undef KERNEL

#else

void qv::utf8::decodeBlocks32( Decoded &, const uint8_t *, QV_CHAR * )
{
}

void qv::utf8::countBlocks32( Counted &, const uint8_t * )
{
}

void qv::utf8::encodeBlocks32( Encoded &, const QV_CHAR *, uint8_t * )
{
}

Measured qv::utf8::measureBlocks32( const QV_CHAR *, QV_INT )
{
    return { 0, 0 };
}

QV_INT qv::utf8::encodeAsciiBlocks32( uint8_t *, const QV_CHAR *, QV_INT )
{
    return 0;
}

#endif
