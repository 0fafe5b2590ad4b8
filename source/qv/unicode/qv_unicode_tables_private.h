#ifndef QV_UNICODE_TABLES_PRIVATE_H
#define QV_UNICODE_TABLES_PRIVATE_H

#include "qv/sys/qv_types.h"

/* The tables of the character database and the look-ups in them, inline for sources that look up many characters. No
   function here checks its argument: characters must be below 0x110000, as all characters of a String are. */

namespace qv::unicode
{
/* The tables of qv_unicode_tables.cpp. Each property has two arrays: one with the number of a block for each 128 code
   points, and one with the values of the blocks. */

#pragma GCC visibility push( hidden )

extern const uint8_t  categoryBlocks[], category[];
extern const uint8_t  combiningBlocks[], combining[];
extern const uint8_t  decimalBlocks[], decimal[];
extern const uint8_t  scriptBlocks[], script[];
extern const uint8_t  upperBlocks[], lowerBlocks[], foldBlocks[];
extern const uint16_t upper[], lower[], fold[];
extern const uint16_t upperDistances[], lowerDistances[], foldDistances[];
extern const QV_CHAR  caseMappings[];
extern const uint8_t  decompositionBlocks[];
extern const uint16_t decomposition[];
extern const QV_CHAR  decompositions[];
extern const uint8_t  canonicalBlocks[], compatibleBlocks[];
extern const uint16_t canonical[], compatible[];
extern const uint32_t fullDecompositions[];
extern const uint8_t  nfcBlocks[], nfkcBlocks[], nfc[], nfkc[];
extern const uint8_t  inertBits[4 * 768], markClasses[4 * 256]; // in the order of the forms
extern const uint8_t  compositionFirstBlocks[];
extern const uint16_t compositionFirst[];
extern const uint8_t  compositionSecondBlocks[], compositionSecond[];
extern const uint16_t compositionCells[];
extern const uint32_t compositionColumns;
extern const QV_CHAR  composites[];

#pragma GCC visibility pop

const uint32_t BLOCK_BITS = 7;

/** The value of a property. */
template< class T >
inline T lookUp( const uint8_t *blocks, const T *values, QV_CHAR ch )
{
    return values[(uint32_t)blocks[ch >> BLOCK_BITS] << BLOCK_BITS | ( ch & ( ( 1u << BLOCK_BITS ) - 1 ) )];
}

/** A mapping to other characters; null and 0 if there is none. */
struct Mapping
{
    const QV_CHAR *chars;
    QV_INT         length;
};

/** What the tables of distances have for a character that maps to more than one. For all others they have what its
    lowest 16 bits grow by, modulo 2^16; the bits above stay. */
const uint16_t LONGER_MAPPING = 0x8000;

/** The mapping for a value of the tables of cases: the length in the upper two bits, the place of the mapping below. */
inline Mapping caseMapping( uint16_t value )
{
    return value ? Mapping{ caseMappings + ( value & 0x3FFF ), value >> 14 } : Mapping{ nullptr, 0 };
}

inline QV_INT generalCategory( QV_CHAR ch )
{
    return lookUp( categoryBlocks, category, ch );
}

inline QV_INT combiningClass( QV_CHAR ch )
{
    return lookUp( combiningBlocks, combining, ch );
}

inline QV_INT scriptOf( QV_CHAR ch )
{
    return lookUp( scriptBlocks, script, ch );
}

/** The value of a decimal digit of any script, or -1. */
inline QV_INT decimalDigit( QV_CHAR ch )
{
    return lookUp( decimalBlocks, decimal, ch ) - 1;
}

/** @{ */
/** The full case mapping, of at most 3 characters; none for a character that maps to itself. */
inline Mapping upperCase( QV_CHAR ch )
{
    return caseMapping( lookUp( upperBlocks, upper, ch ) );
}

inline Mapping lowerCase( QV_CHAR ch )
{
    return caseMapping( lookUp( lowerBlocks, lower, ch ) );
}

inline Mapping caseFold( QV_CHAR ch )
{
    return caseMapping( lookUp( foldBlocks, fold, ch ) );
}
/** @} */

/** The decomposition in one step, and its type QV_UNICODE_CDMT_... */
inline Mapping decompose( QV_CHAR ch, QV_INT *type )
{
    uint16_t place = lookUp( decompositionBlocks, decomposition, ch );

    if( !place )
    {
        *type = 0;
        return { nullptr, 0 };
    }

    *type = decompositions[place] >> 8;
    return { decompositions + place + 1, (QV_INT)( decompositions[place] & 0xFF ) };
}

/** The greatest length of a decomposition in all steps. */
const QV_INT LONGEST_DECOMPOSITION = 18;

/** A value above all combining classes, for characters that take more than a look at their class. */
const uint32_t LOOK_CLOSER = 255;

/** The decomposition in all steps, by the canonical mappings or by all of them. The result is one of three: below
    LOOK_CLOSER, the combining class of a character that does not decompose; LOOK_CLOSER for Hangul syllables and
    surrogates; above it, the argument for fullDecomposition(). */
inline uint32_t decomposeFully( QV_CHAR ch, bool byAll )
{
    return byAll ? lookUp( compatibleBlocks, compatible, ch ) : lookUp( canonicalBlocks, canonical, ch );
}

/** A decomposition in all steps. At least four characters can be read at `chars`, whatever the length. */
struct Decomposition
{
    QV_INT          length;
    QV_INT          lastStarter; // index of the last character of class 0, if there is one
    bool            ordered;     // begins with a character of class 0, and the marks are in order
    const uint32_t *chars;       // each with its combining class in the 8 topmost bits
};

inline Decomposition fullDecomposition( uint32_t value )
{
    const uint32_t *entry = fullDecompositions + value - LOOK_CLOSER;

    return { *entry & 0xFF, *entry >> 8 & 0xFF, *entry >> 16 != 0, entry + 1 };
}

/** What NFC or, by all mappings, NFKC makes of a character. A value below LOOK_CLOSER is the class of a character that
    stays as it is: of class 0, it never joins the character before it; of another class, it keeps its place as long as
    the classes ascend. All other characters have LOOK_CLOSER. */
inline uint32_t composedQuickCheck( QV_CHAR ch, bool byAll )
{
    return byAll ? lookUp( nfkcBlocks, nfkc, ch ) : lookUp( nfcBlocks, nfc, ch );
}

/** True if a character can be the second of a pair that composes, Hangul aside. */
inline bool isSecond( QV_CHAR ch )
{
    return lookUp( compositionSecondBlocks, compositionSecond, ch ) != 0;
}

/** The character that a pair composes to, or 0. Hangul is not included. */
inline QV_CHAR compose( QV_CHAR ch1, QV_CHAR ch2 )
{
    uint32_t row    = lookUp( compositionFirstBlocks, compositionFirst, ch1 );
    uint32_t column = lookUp( compositionSecondBlocks, compositionSecond, ch2 );

    return composites[compositionCells[row * compositionColumns + column]];
}

/** The property White_Space. */
inline bool isWhiteSpace( QV_CHAR ch )
{
    if( ch < 0x80 )
        return ch == 0x20 || ch - 0x9 <= 0xD - 0x9;

    return ch == 0x85 || ch == 0xA0 || ch == 0x1680 || ch == 0x180E || ch - 0x2000 <= 0x200A - 0x2000 || ch == 0x2028
           || ch == 0x2029 || ch == 0x202F || ch == 0x205F || ch == 0x3000;
}

/** True for the characters that end a line. */
inline bool isNlf( QV_CHAR ch )
{
    return ch - 0xA <= 0xD - 0xA || ch == 0x85 || ch == 0x2028 || ch == 0x2029;
}

/** The value of a hexadecimal digit, ASCII or fullwidth, or -1. */
inline QV_INT hexDigit( QV_CHAR ch )
{
    QV_CHAR ascii = ch - 0xFF10 <= 0xFF46 - 0xFF10 ? ch - 0xFF10 + U'0' : ch;

    if( ascii - U'0' <= 9 )
        return ascii - U'0';

    if( ( ascii | 0x20 ) - U'a' <= 5 )
        return ( ascii | 0x20 ) - U'a' + 10;

    return -1;
}
} // namespace qv::unicode

#endif
