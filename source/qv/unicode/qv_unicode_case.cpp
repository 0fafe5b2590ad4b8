#include "qv/unicode/qv_unicode_case_private.h"

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <algorithm>

namespace
{
using qv::unicode::FEW_CASE;
using qv::unicode::LONGER_MAPPING;
using qv::unicode::lookUp;

// Characters without case, for texts that have hardly any other: ASCII before its letters, and the scripts of East Asia
// as far as no letter of another script comes between.
const qv::vectors::Range CASELESS[]     = { { 0, U'A' }, { 0x2E80, 0xA640 }, { 0xA800, 0xFB00 } };
const QV_CHAR            FIRST_CASELESS = CASELESS[1].first;

// Marks after letters.
const qv::vectors::Range MARKS = { 0x300, 0x345 };

// No character from here on has case.
const QV_CHAR PAST_CASE = 0x10450;

// Fewer characters are not worth the start of the vectors of 64 bytes. Where characters that map to several end them sooner,
// they pause for a piece, then for four times as much each time.
const QV_INT LONG = 64, LEAST_PIECE = 8, MOST_PIECE = 4096;

template< const uint8_t *blocks, const uint16_t *distances >
bool allStay( const QV_CHAR *chs, QV_INT count )
{
    for( QV_INT i = 0; i < count; i++ )
        if( lookUp( blocks, distances, chs[i] ) != 0 )
            return false;

    return true;
}

// True if each character has become what the tables tell, and none maps to several.
template< const uint8_t *blocks, const uint16_t *distances >
[[maybe_unused]] bool areMapped( const QV_CHAR *from, QV_INT count, const QV_CHAR *to )
{
    for( QV_INT i = 0; i < count; i++ )
    {
        uint16_t distance = lookUp( blocks, distances, from[i] );

        if( distance == LONGER_MAPPING || to[i] != qv::addLow( from[i], distance ) )
            return false;
    }

    return true;
}

// Text is mapped in groups of eight, in three ways, each for as long as it goes: ASCII by arithmetic, characters without
// case by copying them, and all others by their distances. Characters that map to several, and what is left over of the
// groups, are mapped one by one. `asciiFirst` is the first of the 26 letters of ASCII that change.
template< const uint8_t *blocks, const uint16_t *values, const uint16_t *distances, QV_CHAR asciiFirst >
qv::unicode::CaseMapped mapGroups( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    QV_ASSERT( room >= length );

    auto distance = []( QV_CHAR ch ) { return lookUp( blocks, distances, ch ); };

    QV_INT spare = room - length; // places beyond one for each character that is left
    QV_INT count = 0;
    QV_INT i     = 0;

    while( i < length )
    {
        QV_INT left = length - i;
        QV_INT done = qv::swapLeadingAsciiCase( from + i, left, asciiFirst, to + count );

        if( done == 0 && from[i] >= FIRST_CASELESS )
        {
            done = qv::groupsIn( from + i, left, CASELESS, to + count );
            QV_ASSERT( ( allStay< blocks, distances >( from + i, done ) ) );
        }

        if( done == 0 && left >= 8 && qv::addToEight( from + i, distance, LONGER_MAPPING, to + count ) )
            done = 8;

        i += done;
        count += done;

        if( done > 0 )
            continue;

        // One by one, up to the first that maps to several.
        for( QV_INT stop = left < 8 ? length : i + 8; i < stop; i++ )
        {
            uint16_t more = distance( from[i] );

            if( more != LONGER_MAPPING )
            {
                to[count++] = qv::addLow( from[i], more );
                continue;
            }

            qv::unicode::Mapping mapping = qv::unicode::caseMapping( lookUp( blocks, values, from[i] ) );

            if( mapping.length - 1 > spare )
                return { i, count };

            spare -= mapping.length - 1;

            for( QV_INT k = 0; k < mapping.length; k++ )
                to[count++] = mapping.chars[k];

            stop = i + 1;
        }
    }

    return { i, count };
}

// True if few characters have become what mapGroups() makes of them.
template< const uint8_t *blocks, const uint16_t *values, const uint16_t *distances, QV_CHAR asciiFirst >
[[maybe_unused]] bool isWhole( const QV_CHAR *from, QV_INT length, const QV_CHAR *to, QV_INT count )
{
    QV_CHAR plain[FEW_CASE * qv::unicode::LONGEST_CASE_MAPPING];
    auto    mapped = mapGroups< blocks, values, distances, asciiFirst >(
        from, length, plain, FEW_CASE * qv::unicode::LONGEST_CASE_MAPPING );

    return mapped.written == count && std::equal( to, to + count, plain );
}

template< const uint8_t *blocks, const uint16_t *values, const uint16_t *distances, QV_CHAR asciiFirst >
const qv::CaseTables TABLES = {
    blocks,
    distances,
    values,
    qv::unicode::caseMappings,
    LONGER_MAPPING,
    asciiFirst,
    { CASELESS[1], CASELESS[2], { PAST_CASE, 0x110000 } },
    MARKS };

// The same, of long texts with the vectors of 64 bytes, which take the three ways at once. A function of its own, so that
// few characters save no registers.
template< const uint8_t *blocks, const uint16_t *values, const uint16_t *distances, QV_CHAR asciiFirst >
__attribute__( ( noinline ) ) qv::unicode::CaseMapped mapMany(
    const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    const qv::CaseTables &tables = TABLES< blocks, values, distances, asciiFirst >;

    if( length < LONG || !qv::vectors::has64() )
        return mapGroups< blocks, values, distances, asciiFirst >( from, length, to, room );

    QV_INT count = 0;
    QV_INT piece = LEAST_PIECE;

    for( QV_INT i = 0;; )
    {
        QV_INT done = qv::mapCase64( tables, from + i, length - i, to + count );
        QV_ASSERT( ( areMapped< blocks, distances >( from + i, done, to + count ) ) );
        i += done;
        count += done;

        // What comes after the piece keeps a place for each character.
        piece         = done >= LONG ? LEAST_PIECE : std::min( 4 * piece, MOST_PIECE );
        QV_INT before = std::min( piece, length - i );
        auto   mapped = mapGroups< blocks, values, distances, asciiFirst >(
            from + i, before, to + count, room - count - ( length - i - before ) );
        i += mapped.read;
        count += mapped.written;

        if( mapped.read < before || i == length )
            return { i, count };
    }
}

// The same, of few characters with such vectors at once.
template< const uint8_t *blocks, const uint16_t *values, const uint16_t *distances, QV_CHAR asciiFirst >
inline qv::unicode::CaseMapped mapCase( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    const qv::CaseTables &tables = TABLES< blocks, values, distances, asciiFirst >;

    if( length <= FEW_CASE && length > 0 && room >= FEW_CASE && qv::vectors::has64() )
        if( QV_INT count = qv::mapFewCase64( tables, from, length, to ) )
        {
            QV_ASSERT( ( isWhole< blocks, values, distances, asciiFirst >( from, length, to, count ) ) );
            return { length, count };
        }

    return mapMany< blocks, values, distances, asciiFirst >( from, length, to, room );
}
} // namespace

qv::unicode::CaseMapped qv::unicode::mapToUpper( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    return mapCase< upperBlocks, upper, upperDistances, U'a' >( from, length, to, room );
}

qv::unicode::CaseMapped qv::unicode::mapToLower( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    return mapCase< lowerBlocks, lower, lowerDistances, U'A' >( from, length, to, room );
}

qv::unicode::CaseMapped qv::unicode::mapToCaseFold( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    return mapCase< foldBlocks, fold, foldDistances, U'A' >( from, length, to, room );
}
