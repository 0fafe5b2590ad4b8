/** @file
    Vectors of the processor: kernels that work on several characters at once, and which of them this build and this
    machine have.

    Vectors are used here and by the UTF-8 kernels (qv_utf8_private.h) and nowhere else. Every kernel has a plain form,
    which is the only one in builds without vectors (the CMake option MORVANE_VECTORS) and for other processors, and the
    model that tests hold the others against: all forms give the same and read and write the same memory. The kernels for
    vectors of 64 bytes do what they can; where the machine has none they leave all to their callers.

    The kernels have no state but the choice of the form, so any thread may call them, before start-up too. They take
    arrays of any alignment and read nothing outside of them. What is short as a rule is inline. */

#ifndef QV_VECTORS_PRIVATE_H
#define QV_VECTORS_PRIVATE_H

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_types.h"

#if defined( __SSE2__ ) && !defined( QV___WITHOUT_VECTORS )
#include <emmintrin.h>
#define QV___VECTORS_16 1
#else
#define QV___VECTORS_16 0
#endif

/* Which kernels run ---------------------------------------------------------------------------------------------- */

/** Has all kernels run in one form, or in the best one below it that the machine has, and returns which one that is;
    -1 goes back to the best one. For tests, while no other thread is in a kernel. */
QV_API QV_INT qv___VectorsForceKernel( QV_INT kernel );

namespace qv::vectors
{
const QV_INT PLAIN      = 0;
const QV_INT VECTORS_16 = 1; /**< vectors of 16 bytes, which every processor of the architecture has */
const QV_INT VECTORS_32 = 2; /**< vectors of 32 bytes, and gathering of bits that is fast */
const QV_INT VECTORS_64 = 3; /**< vectors of 64 bytes, with masks and with instructions that move bytes together */

/** The form that runs, or UNDECIDED until a kernel asks for vectors of 32 bytes. */
extern __attribute__( ( visibility( "hidden" ) ) ) int32_t current;

const int32_t UNDECIDED = -1;

/** Looks at the processor and sets `current`, which it returns. */
int32_t decide();

/** True when vectors of 16 bytes are used. Where the build has them the machine has them, so nothing is decided here. */
inline bool has16()
{
    return QV___VECTORS_16 && __atomic_load_n( &current, __ATOMIC_RELAXED ) != PLAIN;
}

/** The form that runs. */
inline int32_t form()
{
    int32_t kernel = __atomic_load_n( &current, __ATOMIC_RELAXED );

    return kernel == UNDECIDED ? decide() : kernel;
}

/** True when vectors of 32 bytes are used. */
inline bool has32()
{
    return form() >= VECTORS_32;
}

/** True when vectors of 64 bytes are used. */
inline bool has64()
{
    return form() == VECTORS_64;
}

/** Characters from `first` up to `end`, without that. */
struct Range
{
    QV_CHAR first;
    QV_CHAR end;
};

/** The characters of 256 bytes, all below 0x10000, as their lower and their upper halves; 0xFFFF for a byte without. */
struct ByteChars
{
    uint8_t low[256];
    uint8_t high[256];
};

/** The bytes of 128 characters from a multiple of that on, 0 where there is none; `block` is that multiple. With block 255
    all bytes are 0. */
struct CharBytes
{
    uint8_t block;
    uint8_t bytes[128];
};

/** Windows of an encoder: in most alphabets text has its letters, marks and currencies in three or four. */
const int CHAR_WINDOWS = 4;

#if QV___VECTORS_16
/** Four characters. Arithmetic wraps around. A comparison returns all ones for true and 0 for false. */
typedef uint32_t Four __attribute__( ( vector_size( 16 ) ) );
typedef int32_t  FourSigned __attribute__( ( vector_size( 16 ) ) );

inline Four load( const QV_CHAR *chs )
{
    return (Four)_mm_loadu_si128( reinterpret_cast< const __m128i * >( chs ) );
}

inline void store( QV_CHAR *chs, Four four )
{
    _mm_storeu_si128( reinterpret_cast< __m128i * >( chs ), (__m128i)four );
}

/** Four times the same. */
inline Four repeat( QV_CHAR ch )
{
    return Four{} + static_cast< uint32_t >( ch ); // a compiler fails on characters beside vectors
}

/** True when one of the four has its topmost bit set. */
template< class Vector >
inline bool anyTopBit( Vector four )
{
    return _mm_movemask_ps( (__m128)four ) != 0;
}

/** The topmost bit of each of the four tells whether it is `limit` or above; `limit` is above 0 and at most
    0x80000000. */
inline Four atLeast( Four four, QV_CHAR limit )
{
    // The sum has the bit from the limit on, up to where the value itself has it.
    return four | ( four + ( 0x80000000u - limit ) );
}

/** Which of the four are in a range. */
inline FourSigned isIn( Four four, Range range )
{
    // Less its first character, all others are above the range. Moved by the topmost bit as well, unsigned values compare
    // as signed ones do, for which there is an instruction.
    const uint32_t TOP = 0x80000000;

    return (FourSigned)( four + ( TOP - range.first ) ) < static_cast< int32_t >( range.end - range.first + TOP );
}

inline QV_INT groupsBelow( const QV_CHAR *chs, QV_INT count, QV_CHAR limit )
{
    // Characters are all below a power of two if the bits that they have together are.
    const bool isPower = ( limit & ( limit - 1 ) ) == 0;
    QV_INT     i       = 0;

    if( isPower )
        for( ; i + 16 <= count; i += 16 )
        {
            Four a = load( chs + i ) | load( chs + i + 4 );
            Four b = load( chs + i + 8 ) | load( chs + i + 12 );

            if( anyTopBit( atLeast( a | b, limit ) ) )
                break;
        }

    for( ; i + 8 <= count; i += 8 )
    {
        Four a = load( chs + i );
        Four b = load( chs + i + 4 );

        if( anyTopBit( isPower ? atLeast( a | b, limit ) : atLeast( a, limit ) | atLeast( b, limit ) ) )
            break;
    }

    return i;
}
#endif
} // namespace qv::vectors

namespace qv
{
/* Checking ------------------------------------------------------------------------------------------------------- */

/** True when every character is below 0x110000. */
inline bool allCharsOk( const QV_CHAR *chs, QV_INT count )
{
    bool   ok = true;
    QV_INT i  = 0;

#if QV___VECTORS_16
    if( vectors::has16() )
    {
        vectors::Four high = {};

        for( ; i + 4 <= count; i += 4 )
            high |= vectors::atLeast( vectors::load( chs + i ), 0x110000 );

        ok = !vectors::anyTopBit( high );
    }
#endif

    for( ; i < count; i++ )
        ok &= QV_CHAR_OK( chs[i] );

    return ok;
}

/** How many characters in whole groups of eight an array begins with that are all below `limit`, which is above 0 and
    at most 0x80000000. */
inline QV_INT groupsBelow( const QV_CHAR *chs, QV_INT count, QV_CHAR limit )
{
    QV_INT i = 0;

#if QV___VECTORS_16
    if( vectors::has16() )
        return vectors::groupsBelow( chs, count, limit );
#endif

    for( ; i + 8 <= count; i += 8 )
        for( QV_INT k = i; k < i + 8; k++ )
            if( chs[k] >= limit )
                return i;

    return i;
}

/** How many characters in whole groups of eight an array begins with that are all in one of the ranges. They are copied
    to `to`, unless that is null. */
template< QV_INT COUNT >
inline QV_INT groupsIn(
    const QV_CHAR *chs, QV_INT count, const vectors::Range ( &ranges )[COUNT], QV_CHAR *to = nullptr )
{
    QV_INT i = 0;

#if QV___VECTORS_16
    if( vectors::has16() )
    {
        for( ; i + 8 <= count; i += 8 )
        {
            vectors::Four       first = vectors::load( chs + i ), second = vectors::load( chs + i + 4 );
            vectors::FourSigned a = {}, b = {};

            for( vectors::Range range : ranges )
            {
                a |= vectors::isIn( first, range );
                b |= vectors::isIn( second, range );
            }

            if( vectors::anyTopBit( ~( a & b ) ) )
                break;

            if( to )
            {
                vectors::store( to + i, first );
                vectors::store( to + i + 4, second );
            }
        }

        return i;
    }
#endif

    for( ; i + 8 <= count; i += 8 )
    {
        for( QV_INT k = i; k < i + 8; k++ )
        {
            bool isIn = false;

            for( vectors::Range range : ranges )
                isIn |= chs[k] - range.first < range.end - range.first;

            if( !isIn )
                return i;
        }

        for( QV_INT k = i; to && k < i + 8; k++ )
            to[k] = chs[k];
    }

    return i;
}

/** How many characters an array begins with that are all in one of the ranges. With the vectors of 64 bytes; without them
    it returns 0. */
QV_INT charsIn64( const QV_CHAR *chs, QV_INT count, const vectors::Range ( &ranges )[3] );

/** How many ASCII characters an array begins with. */
inline QV_INT asciiLength( const QV_CHAR *chs, QV_INT count )
{
    QV_INT i = 0;

#if QV___VECTORS_16
    if( count >= 8 && vectors::has16() )
    {
        i = vectors::groupsBelow( chs, count, 0x80 );

        // The last eight overlap the ones before: most texts are short, and one by one what is left over of them would
        // cost as much as all the rest.
        if( count - i < 8 && vectors::groupsBelow( chs + count - 8, 8, 0x80 ) )
            return count;
    }
#endif

    while( i < count && chs[i] < 0x80 )
        i++;

    return i;
}

/** How many characters, which are below 0x110000, an array begins with that are the ASCII of as many bytes. */
inline QV_INT equalAsciiLength( const QV_CHAR *chs, const uint8_t *bytes, QV_INT count )
{
    QV_ASSERT( allCharsOk( chs, count ) ); // one with a sign would become 0

    QV_INT i = 0;

#if QV___VECTORS_16
    if( vectors::has16() )
    {
        for( ; i + 8 <= count; i += 8 )
        {
            // What doesn't fit a byte becomes the largest one, which is no ASCII.
            __m128i words = _mm_packs_epi32( (__m128i)vectors::load( chs + i ), (__m128i)vectors::load( chs + i + 4 ) );
            __m128i ascii = _mm_loadl_epi64( reinterpret_cast< const __m128i * >( bytes + i ) );
            __m128i equal = _mm_cmpeq_epi8( _mm_packus_epi16( words, words ), ascii );

            if( ( _mm_movemask_epi8( _mm_andnot_si128( ascii, equal ) ) & 0xFF ) != 0xFF )
                break;
        }
    }
#endif

    while( i < count && bytes[i] < 0x80 && chs[i] == bytes[i] )
        i++;

    return i;
}

/* Narrow, map, digest --------------------------------------------------------------------------------------------- */

#if QV___VECTORS_16
namespace vectors
{
/** Writes at least eight characters as bytes and calls `look` with those of up to sixteen characters in turn. What does
    not fit a byte becomes 0xFF, or 0 from 0x80000000 on. */
template< class Look >
inline void narrowAtLeastEight( uint8_t *to, const QV_CHAR *chs, QV_INT count, const Look &look )
{
    auto eight = [=]( QV_INT at )
    { return _mm_packs_epi32( (__m128i)load( chs + at ), (__m128i)load( chs + at + 4 ) ); };

    // Both ends, which overlap.
    if( count < 16 )
    {
        __m128i bytes = _mm_packus_epi16( eight( 0 ), eight( count - 8 ) );
        look( bytes );
        _mm_storel_epi64( reinterpret_cast< __m128i * >( to ), bytes );
        _mm_storel_epi64( reinterpret_cast< __m128i * >( to + count - 8 ), _mm_unpackhi_epi64( bytes, bytes ) );
        return;
    }

    auto narrow = [&]( QV_INT at )
    {
        __m128i bytes = _mm_packus_epi16( eight( at ), eight( at + 8 ) );
        look( bytes );
        _mm_storeu_si128( reinterpret_cast< __m128i * >( to + at ), bytes );
    };

    for( QV_INT i = 0; i + 16 < count; i += 16 )
        narrow( i );

    narrow( count - 16 );
}
} // namespace vectors
#endif

/** Writes ASCII characters as bytes. */
inline void narrowAscii( uint8_t *to, const QV_CHAR *chs, QV_INT count )
{
    QV_ASSERT( asciiLength( chs, count ) == count );

#if QV___VECTORS_16
    if( count >= 8 && vectors::has16() )
    {
        vectors::narrowAtLeastEight( to, chs, count, []( __m128i ) {} );
        return;
    }
#endif

    for( QV_INT i = 0; i < count; i++ )
        to[i] = static_cast< uint8_t >( chs[i] );
}

/** Copies the ASCII that an array begins with, in whole groups of eight, with the other case for the 26 letters from
    `first` on, which is U'A' or U'a'. Returns the number of characters. */
inline QV_INT swapLeadingAsciiCase( const QV_CHAR *chs, QV_INT count, QV_CHAR first, QV_CHAR *to )
{
    QV_INT i = 0;

#if QV___VECTORS_16
    if( vectors::has16() )
    {
        auto swapped = [=]( vectors::Four four )
        { return four ^ ( (vectors::Four)vectors::isIn( four, { first, first + 26 } ) & 0x20 ); };

        for( ; i + 8 <= count; i += 8 )
        {
            vectors::Four a = vectors::load( chs + i );
            vectors::Four b = vectors::load( chs + i + 4 );

            if( vectors::anyTopBit( vectors::atLeast( a | b, 0x80 ) ) )
                break;

            vectors::store( to + i, swapped( a ) );
            vectors::store( to + i + 4, swapped( b ) );
        }

        return i;
    }
#endif

    for( ; i + 8 <= count; i += 8 )
    {
        QV_CHAR all = 0;

        for( QV_INT k = i; k < i + 8; k++ )
            all |= chs[k];

        if( all >= 0x80 )
            break;

        for( QV_INT k = i; k < i + 8; k++ )
            to[k] = chs[k] - first < 26 ? chs[k] ^ 0x20 : chs[k];
    }

    return i;
}

/** A character whose lowest 16 bits have grown by a value, modulo 2^16. */
inline QV_CHAR addLow( QV_CHAR ch, uint16_t value )
{
    return ( ch & ~0xFFFFu ) | ( ( ch + value ) & 0xFFFF );
}

/** Writes eight characters whose lowest 16 bits have grown by what `valueOf` returns for them as uint16_t, modulo 2^16.
    False if one of the values is `none`; then nothing is written. */
template< class ValueOf >
inline bool addToEight( const QV_CHAR *chs, ValueOf valueOf, uint16_t none, QV_CHAR *to )
{
#if QV___VECTORS_16
    if( vectors::has16() )
    {
        auto valuesOf = [=]( const QV_CHAR *four )
        { return vectors::Four{ valueOf( four[0] ), valueOf( four[1] ), valueOf( four[2] ), valueOf( four[3] ) }; };

        auto added = []( const QV_CHAR *four, vectors::Four values )
        { return (vectors::Four)_mm_add_epi16( (__m128i)vectors::load( four ), (__m128i)values ); };

        vectors::Four low  = valuesOf( chs );
        vectors::Four high = valuesOf( chs + 4 );

        if( vectors::anyTopBit( ( low == none ) | ( high == none ) ) )
            return false;

        vectors::store( to, added( chs, low ) );
        vectors::store( to + 4, added( chs + 4, high ) );
        return true;
    }
#endif

    for( int k = 0; k < 8; k++ )
        if( valueOf( chs[k] ) == none )
            return false;

    for( int k = 0; k < 8; k++ )
        to[k] = addLow( chs[k], valueOf( chs[k] ) );

    return true;
}

/** How characters map to single ones, by tables of 2^7 values: the number of the block of each 128 characters, and the
    blocks with what the lowest 16 bits of a character grow by, or `none`. ASCII letters from `asciiFirst` on get the other
    case, other ASCII stays, and so do characters in the ranges: the tables tell the same. */
struct CaseTables
{
    const uint8_t  *blocks;
    const uint16_t *distances;
    const uint16_t *values;   /**< the mappings of characters to several: the length above 14 bits, the place below */
    const QV_CHAR  *mappings; /**< what the places are in */
    uint16_t        none;
    QV_CHAR         asciiFirst;
    vectors::Range  caseless[3];
    vectors::Range  marks; /**< characters without case as well, below 0x10000 */
};

/** Maps characters, which are below 0x110000, up to the first without a distance; returns how many. With the vectors of 64
    bytes; without them it returns 0. */
QV_INT mapCase64( const CaseTables &tables, const QV_CHAR *chs, QV_INT count, QV_CHAR *to );

/** Maps 1 to 32 characters, which are below 0x110000, where there are 32 places; with the vectors of 64 bytes, which are
    there. Returns how many they become, or 0 if that is above 32, or not to be told here. */
QV_INT mapFewCase64( const CaseTables &tables, const QV_CHAR *chs, QV_INT count, QV_CHAR *to );

/** Makes a number of eight characters below 0x110000 that orders as they do: each plus 1 as a byte, the first one most
    significant. False if one of them is above `highest`, which is at most 0xFD. */
inline bool digestEight( const QV_CHAR *chs, uint8_t highest, uint64_t *number )
{
    QV_ASSERT( highest <= 0xFD && allCharsOk( chs, 8 ) );

#if QV___VECTORS_16
    if( vectors::has16() )
    {
        // What doesn't fit a byte becomes the largest one.
        __m128i words =
            _mm_packs_epi32( (__m128i)( vectors::load( chs ) + 1 ), (__m128i)( vectors::load( chs + 4 ) + 1 ) );
        __m128i bytes = _mm_packus_epi16( words, words );
        __m128i over  = _mm_subs_epu8( bytes, _mm_set1_epi8( static_cast< char >( highest + 1 ) ) );

        if( _mm_movemask_epi8( _mm_cmpeq_epi8( over, _mm_setzero_si128() ) ) != 0xFFFF )
            return false;

        _mm_storel_epi64( reinterpret_cast< __m128i * >( number ), bytes );
        *number = __builtin_bswap64( *number );
        return true;
    }
#endif

    uint64_t digest = 0;

    for( QV_INT i = 0; i < 8; i++ )
    {
        if( chs[i] > highest )
            return false;

        digest = digest << 8 | ( chs[i] + 1 );
    }

    *number = digest;
    return true;
}

/** Decodes bytes by a table of their characters, up to 64 before one that has none, and returns how many. With the
    vectors of 64 bytes; without them it returns 0. */
QV_INT decodeBytes64( const vectors::ByteChars &chars, const uint8_t *bytes, QV_INT count, QV_CHAR *to );

/** Encodes the characters that an array begins with that are ASCII, which stands for itself, or have a byte in one of the
    windows, and returns how many. With the vectors of 64 bytes; without them it returns 0. */
QV_INT encodeBytes64(
    const vectors::CharBytes ( &windows )[vectors::CHAR_WINDOWS], const QV_CHAR *chs, QV_INT count, uint8_t *to );

/** Decodes the bytes that an array begins with that are their own characters, which all but those from `first` up to
    `end` are, in whole groups of 16. Returns how many. */
inline QV_INT widenOutside( const uint8_t *bytes, QV_INT count, uint8_t first, int end, QV_CHAR *to )
{
    QV_ASSERT( end > first );

    QV_INT i = 0;

#if QV___VECTORS_16
    if( vectors::has16() )
    {
        const __m128i start = _mm_set1_epi8( static_cast< char >( first ) );
        const __m128i range = _mm_set1_epi8( static_cast< char >( end - first - 1 ) );
        const __m128i zero  = _mm_setzero_si128();

        for( ; i + 16 <= count; i += 16 )
        {
            __m128i in   = _mm_loadu_si128( reinterpret_cast< const __m128i * >( bytes + i ) );
            __m128i from = _mm_sub_epi8( in, start );

            if( _mm_movemask_epi8( _mm_cmpeq_epi8( _mm_max_epu8( from, range ), range ) ) != 0 )
                break;

            __m128i low = _mm_unpacklo_epi8( in, zero ), high = _mm_unpackhi_epi8( in, zero );
            vectors::store( to + i, (vectors::Four)_mm_unpacklo_epi16( low, zero ) );
            vectors::store( to + i + 4, (vectors::Four)_mm_unpackhi_epi16( low, zero ) );
            vectors::store( to + i + 8, (vectors::Four)_mm_unpacklo_epi16( high, zero ) );
            vectors::store( to + i + 12, (vectors::Four)_mm_unpackhi_epi16( high, zero ) );
        }

        return i;
    }
#endif

    for( ; i + 16 <= count; i += 16 )
        for( QV_INT k = i; k < i + 16; k++ )
        {
            if( bytes[k] >= first && bytes[k] < end )
                return i;

            to[k] = bytes[k];
        }

    return i;
}

/** How many characters in groups of 16, of which the last one may be shorter if it ends the array, an array begins with that
    are inert or marks in order, with the vectors of 64 bytes; without them it returns 0. In each whole group one character
    is inert at least. `inert` has 256 bytes with a bit for each 32 characters below 0x10000, set if all of them are inert,
    as many with one for each character below 0x800, and as many for each 32 from 0x10000 to 0x1FFFF. `classes` has for the
    characters from 0x300 up to 0x380 and for those from 0x580 up to 0x600 the class, 0 for an inert one, or 255 for one that
    ends the run. `last` is the class of the character before, or 0, and becomes that of the last one of the groups if the
    array goes on. */
QV_INT orderedGroups64(
    const QV_CHAR *chs, QV_INT count, const uint8_t *inert, const uint8_t *classes, uint32_t *last );

namespace vectors
{
/** What a check tells of few characters, a bit for each. */
struct FewChecked
{
    uint32_t left;   /**< those that the tables do not tell */
    uint32_t marks;  /**< those that have a class, or end the run */
    bool     isWide; /**< any of them is above 0xFFFF */
};

/** What is to stand in the place of one character: 1 to 18 others, in the lower 24 bits. */
struct Replacement
{
    QV_INT          place;
    QV_INT          length;
    const uint32_t *chars;
};
} // namespace vectors

/** Whether a text of 1 to 32 characters is inert, below `limit` or by the tables of orderedGroups64(), but for marks in
    order; with the vectors of 64 bytes, which are there. The caller makes sure that those are inert which are left. */
bool areOrdered64(
    const QV_CHAR *chs, QV_INT count, QV_CHAR limit, const uint8_t *inert, const uint8_t *classes,
    vectors::FewChecked *checked );

/** Replaces some of 1 to 32 characters, in their order, where there are 32 places and all characters are below 0x10000;
    with the vectors of 64 bytes, which are there. The result has 32 at most. */
void replaceFew64(
    const QV_CHAR *chs, QV_INT count, const vectors::Replacement *all, QV_INT replacements, QV_CHAR *to );

/** Reads an integer of 1 to 19 digits from U'0' to U'9' and nothing else but a minus sign before them, with the vectors of
    64 bytes. False if it is something else or out of range, and without them. */
bool takePlainInt64( const QV_CHAR *chs, QV_INT count, QV_INT *value );

/** The number that the digits from U'0' to U'9' make that an array begins with, of 15 at most; returns how many those are.
    With the vectors of 64 bytes, which are there. */
QV_INT takeDigits64( const QV_CHAR *chs, QV_INT count, uint64_t *value );

/* Finding -------------------------------------------------------------------------------------------------------- */

/** The index of the last `ch` among `count` characters, or -1. */
QV_INT findLastChar( const QV_CHAR *chs, QV_INT count, QV_CHAR ch );

/** The lowest index below `positions` where `sub`, of at least one character, stands in `chs`, or -1. All of the
    `positions + subLength - 1` characters from `chs` on are readable. In linear time. */
QV_INT findChars( const QV_CHAR *chs, QV_INT positions, const QV_CHAR *sub, QV_INT subLength );

/** The same for the highest index. */
QV_INT findLastChars( const QV_CHAR *chs, QV_INT positions, const QV_CHAR *sub, QV_INT subLength );

/** The first index from `offset` on of a character that ends a line in some newline form, or `length`. */
QV_INT findLineEnd( const QV_CHAR *chs, QV_INT offset, QV_INT length );

/** The same with the vectors of 64 bytes, which are there. */
QV_INT findLineEnd64( const QV_CHAR *chs, QV_INT offset, QV_INT length );
} // namespace qv

#endif
