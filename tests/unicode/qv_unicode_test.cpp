#include "qv_test_support.h"

#include "qv/unicode/qv_unicode_db_private.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <array>
#include <map>
#include <set>
#include <vector>

using namespace qv::test;

namespace
{
const QV_CHAR CODE_POINTS = 0x110000;

using Lookup = const QV_CHAR *( * )( QV_CHAR ch, QV_INT *length );

std::u32string mapping( Lookup lookup, QV_CHAR ch )
{
    QV_INT         length = -1;
    const QV_CHAR *chars  = lookup( ch, &length );

    EXPECT_EQ( chars == nullptr, length == 0 ) << std::hex << (uint32_t)ch;
    EXPECT_EQ( chars, lookup( ch, nullptr ) );

    return chars ? std::u32string( chars, static_cast< size_t >( length ) ) : std::u32string();
}

std::u32string decomposition( QV_CHAR ch, QV_INT *type = nullptr )
{
    QV_INT         length = -1, found = -1;
    const QV_CHAR *chars = qv___UnicodeCdmDbLookup( ch, &length, &found );

    EXPECT_EQ( chars == nullptr, length == 0 ) << std::hex << (uint32_t)ch;
    EXPECT_EQ( chars == nullptr, found == 0 ) << std::hex << (uint32_t)ch;

    if( type )
        *type = found;

    return chars ? std::u32string( chars, static_cast< size_t >( length ) ) : std::u32string();
}
} // namespace

TEST( Unicode, EveryCodePointHasOneOfTheCategories )
{
    // How many code points the version has in each category, ranges of ideographs and the like included.
    const std::array< int, 30 > expected = { 867235, 1427, 1749, 31,  202, 96128, 1162, 276, 13,   411,
                                             224,    429,  10,   21,  72,  71,    12,   10,  389,  945,
                                             46,     99,   3409, 18,  1,   1,     65,   140, 2048, 137468 };
    std::array< int, 30 >       counts   = {};

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        QV_INT genc = qvUnicodeGenc( ch );
        ASSERT_TRUE( QV_UNICODE_GENC_OK( genc ) );
        ASSERT_EQ( genc, qv___UnicodeGencDbLookup( ch ) );
        counts[static_cast< size_t >( genc )]++;
    }

    EXPECT_EQ( expected, counts );
}

TEST( Unicode, CategoriesOfChosenCharacters )
{
    const std::map< QV_CHAR, QV_INT > expected = {
        { 0x0000, QV_UNICODE_GENC_OTHER_CONTROL },
        { U' ', QV_UNICODE_GENC_SEPARATOR_SPACE },
        { U'_', QV_UNICODE_GENC_PUNCTUATION_CONNECTOR },
        { U'-', QV_UNICODE_GENC_PUNCTUATION_DASH },
        { U'(', QV_UNICODE_GENC_PUNCTUATION_OPEN },
        { U')', QV_UNICODE_GENC_PUNCTUATION_CLOSE },
        { U'!', QV_UNICODE_GENC_PUNCTUATION_OTHER },
        { U'+', QV_UNICODE_GENC_SYMBOL_MATH },
        { U'$', QV_UNICODE_GENC_SYMBOL_CURRENCY },
        { U'^', QV_UNICODE_GENC_SYMBOL_MODIFIER },
        { U'7', QV_UNICODE_GENC_NUMBER_DECIMAL_DIGIT },
        { U'A', QV_UNICODE_GENC_LETTER_UPPERCASE },
        { U'z', QV_UNICODE_GENC_LETTER_LOWERCASE },
        { 0x00AB, QV_UNICODE_GENC_PUNCTUATION_INITIAL_QUOTE },
        { 0x00BB, QV_UNICODE_GENC_PUNCTUATION_FINAL_QUOTE },
        { 0x00A9, QV_UNICODE_GENC_SYMBOL_OTHER },
        { 0x00AD, QV_UNICODE_GENC_OTHER_FORMAT },
        { 0x00BD, QV_UNICODE_GENC_NUMBER_OTHER },
        { 0x01C5, QV_UNICODE_GENC_LETTER_TITLECASE },
        { 0x02B0, QV_UNICODE_GENC_LETTER_MODIFIER },
        { 0x0301, QV_UNICODE_GENC_MARK_NONSPACING },
        { 0x0488, QV_UNICODE_GENC_MARK_ENCLOSING },
        { 0x0903, QV_UNICODE_GENC_MARK_SPACING_COMBINING },
        { 0x2028, QV_UNICODE_GENC_SEPARATOR_LINE },
        { 0x2029, QV_UNICODE_GENC_SEPARATOR_PARAGRAPH },
        { 0x2160, QV_UNICODE_GENC_NUMBER_LETTER },

        // Both ends of the ranges that the data gives by their ends alone, and what stands next to them.
        { 0x3400, QV_UNICODE_GENC_LETTER_OTHER },
        { 0x4DB5, QV_UNICODE_GENC_LETTER_OTHER },
        { 0x4DB6, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED },
        { 0x9FCB, QV_UNICODE_GENC_LETTER_OTHER },
        { 0x9FCC, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED },
        { 0xAC00, QV_UNICODE_GENC_LETTER_OTHER },
        { 0xD7A3, QV_UNICODE_GENC_LETTER_OTHER },
        { 0xD7A4, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED },
        { 0xD800, QV_UNICODE_GENC_OTHER_SURROGATE },
        { 0xDFFF, QV_UNICODE_GENC_OTHER_SURROGATE },
        { 0xE000, QV_UNICODE_GENC_OTHER_PRIVATE_USE },
        { 0xF8FF, QV_UNICODE_GENC_OTHER_PRIVATE_USE },
        { 0x2A6D6, QV_UNICODE_GENC_LETTER_OTHER },
        { 0x2B734, QV_UNICODE_GENC_LETTER_OTHER },
        { 0x2B735, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED },
        { 0x10FFFD, QV_UNICODE_GENC_OTHER_PRIVATE_USE },
        { 0x10FFFF, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED },

        // Assigned by later versions.
        { 0x20BF, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED },
        { 0x1F600, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED },
    };

    for( auto [ch, genc] : expected )
        EXPECT_EQ( genc, qvUnicodeGenc( ch ) ) << std::hex << (uint32_t)ch;
}

TEST( Unicode, GroupsAreTheirMembersTogether )
{
    using Predicate = QV_BOOL ( * )( QV_CHAR ch );

    const std::vector< std::pair< Predicate, std::vector< Predicate > > > groups = {
        { qvUnicodeIsLetter,
          { qvUnicodeIsLetterUppercase, qvUnicodeIsLetterLowercase, qvUnicodeIsLetterTitlecase,
            qvUnicodeIsLetterModifier, qvUnicodeIsLetterOther } },
        { qvUnicodeIsMark,
          { qvUnicodeIsMarkNonspacing, qvUnicodeIsMarkSpacingCombining, qvUnicodeIsMarkEnclosing } },
        { qvUnicodeIsNumber,
          { qvUnicodeIsNumberDecimalDigit, qvUnicodeIsNumberLetter, qvUnicodeIsNumberOther } },
        { qvUnicodeIsPunctuation,
          { qvUnicodeIsPunctuationConnector, qvUnicodeIsPunctuationDash, qvUnicodeIsPunctuationOpen,
            qvUnicodeIsPunctuationClose, qvUnicodeIsPunctuationInitialQuote, qvUnicodeIsPunctuationFinalQuote,
            qvUnicodeIsPunctuationOther } },
        { qvUnicodeIsSymbol,
          { qvUnicodeIsSymbolMath, qvUnicodeIsSymbolCurrency, qvUnicodeIsSymbolModifier, qvUnicodeIsSymbolOther } },
        { qvUnicodeIsSeparator,
          { qvUnicodeIsSeparatorSpace, qvUnicodeIsSeparatorLine, qvUnicodeIsSeparatorParagraph } },
        { qvUnicodeIsOther,
          { qvUnicodeIsOtherControl, qvUnicodeIsOtherFormat, qvUnicodeIsOtherSurrogate, qvUnicodeIsOtherPrivateUse,
            qvUnicodeIsOtherNotAssigned } },
    };

    // All categories occur below this.
    for( QV_CHAR ch = 0; ch < 0x10000; ch++ )
    {
        int in = 0, members = 0;

        for( auto &[group, predicates] : groups )
        {
            int hits = 0;

            for( Predicate predicate : predicates )
                hits += predicate( ch );

            ASSERT_EQ( hits, group( ch ) ) << std::hex << (uint32_t)ch;
            in += group( ch );
            members += hits;
        }

        ASSERT_EQ( 1, in ) << std::hex << (uint32_t)ch;
        ASSERT_EQ( 1, members ) << std::hex << (uint32_t)ch;
    }

    EXPECT_TRUE( qvUnicodeIsLetterTitlecase( 0x01C5 ) );
    EXPECT_TRUE( qvUnicodeIsPunctuationFinalQuote( 0x00BB ) );
    EXPECT_TRUE( qvUnicodeIsSymbolCurrency( 0x20AC ) );
    EXPECT_TRUE( qvUnicodeIsOtherNotAssigned( 0x0378 ) );
}

TEST( Unicode, CombiningClassesOfAllMarks )
{
    std::map< QV_INT, int > counts;

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        QV_INT cccv = qvUnicodeCccv( ch );
        ASSERT_EQ( cccv, qv___UnicodeCccvDbLookup( ch ) );
        counts[cccv]++;

        ASSERT_TRUE( !cccv || qvUnicodeIsMark( ch ) ) << std::hex << (uint32_t)ch;
    }

    EXPECT_EQ( 1113518, counts[0] );
    EXPECT_EQ( 318, counts[230] );
    EXPECT_EQ( 117, counts[220] );
    EXPECT_EQ( 27, counts[9] );
    EXPECT_EQ( 55u, counts.size() );

    EXPECT_TRUE( qvUnicodeHasCccvSpacing( U'a' ) );
    EXPECT_TRUE( qvUnicodeHasCccvOverlays( 0x0334 ) );
    EXPECT_TRUE( qvUnicodeHasCccvNuktas( 0x093C ) );
    EXPECT_TRUE( qvUnicodeHasCccvHiragana( 0x3099 ) );
    EXPECT_TRUE( qvUnicodeHasCccvViramas( 0x094D ) );
    EXPECT_TRUE( qvUnicodeHasCccvBelowAttached( 0x0327 ) );
    EXPECT_TRUE( qvUnicodeHasCccvAboveAttached( 0x1DCE ) );
    EXPECT_TRUE( qvUnicodeHasCccvAboveRightAttached( 0x031B ) );
    EXPECT_TRUE( qvUnicodeHasCccvBelowLeft( 0x302A ) );
    EXPECT_TRUE( qvUnicodeHasCccvBelow( 0x0323 ) );
    EXPECT_TRUE( qvUnicodeHasCccvBelowRight( 0x302D ) );
    EXPECT_TRUE( qvUnicodeHasCccvLeft( 0x302E ) );
    EXPECT_TRUE( qvUnicodeHasCccvRight( 0x1D16D ) );
    EXPECT_TRUE( qvUnicodeHasCccvAaboveLeft( 0x302B ) );
    EXPECT_TRUE( qvUnicodeHasCccvAbove( 0x0301 ) );
    EXPECT_TRUE( qvUnicodeHasCccvAboveRight( 0x0315 ) );
    EXPECT_TRUE( qvUnicodeHasCccvDoubleBelow( 0x035C ) );
    EXPECT_TRUE( qvUnicodeHasCccvDoubleAbove( 0x0361 ) );
    EXPECT_TRUE( qvUnicodeHasCccvBelowIota( 0x0345 ) );
    EXPECT_FALSE( qvUnicodeHasCccvAbove( 0x0323 ) );

    // The fixed positions are a range; its ends are the points 10 and 199.
    EXPECT_TRUE( qvUnicodeHasCccvFixedPosStart( 0x05B0 ) );
    EXPECT_TRUE( qvUnicodeHasCccvFixedPos( 0x05B0 ) );
    EXPECT_TRUE( qvUnicodeHasCccvFixedPos( 0x0F71 ) );
    EXPECT_FALSE( qvUnicodeHasCccvFixedPosStart( 0x0F71 ) );
    EXPECT_FALSE( qvUnicodeHasCccvFixedPos( 0x094D ) );
    EXPECT_FALSE( qvUnicodeHasCccvFixedPos( 0x0327 ) );
}

TEST( Unicode, Scripts )
{
    std::set< QV_INT > seen;

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        QV_INT script = qvUnicodeScript( ch );
        seen.insert( script );

        // Unassigned, private and surrogate code points have no script, all others one.
        QV_INT genc = qvUnicodeGenc( ch );
        bool   none = genc == 0 || genc == QV_UNICODE_GENC_OTHER_SURROGATE || genc == QV_UNICODE_GENC_OTHER_PRIVATE_USE;
        ASSERT_EQ( none, script == QV_UNICODE_SCRIPT_UNKNOWN ) << std::hex << (uint32_t)ch;
    }

    EXPECT_EQ( 93u, seen.size() );
    EXPECT_EQ( QV_UNICODE_SCRIPT_COMMON, qvUnicodeScript( U'1' ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_LATIN, qvUnicodeScript( U'q' ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_GREEK, qvUnicodeScript( 0x03A9 ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_INHERITED, qvUnicodeScript( 0x0301 ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_HAN, qvUnicodeScript( 0x2A700 ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_HANGUL, qvUnicodeScript( 0xD7A3 ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_NKO, qvUnicodeScript( 0x07C0 ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_PHAGS_PA, qvUnicodeScript( 0xA840 ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_OLD_TURKIC, qvUnicodeScript( 0x10C00 ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_KAITHI, qvUnicodeScript( 0x11080 ) );
}

TEST( Unicode, DecimalDigitsComeInTens )
{
    int digits = 0;

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        QV_INT value = qvUnicodeDecimalDigitValue( ch );
        ASSERT_EQ( value >= 0, qvUnicodeIsNumberDecimalDigit( ch ) ) << std::hex << (uint32_t)ch;

        // A script's digits follow one another, but for one that has a variant of its 1.
        ASSERT_TRUE( value < 0 || value == 9 || ch == 0x19DA ||
                     qvUnicodeDecimalDigitValue( ch + 1 ) == value + 1 )
            << std::hex << (uint32_t)ch;

        digits += value >= 0;
    }

    EXPECT_EQ( 411, digits );
    EXPECT_EQ( 1, qvUnicodeDecimalDigitValue( 0x0661 ) );
    EXPECT_EQ( 9, qvUnicodeDecimalDigitValue( 0x1D7FF ) );
    EXPECT_EQ( -1, qvUnicodeDecimalDigitValue( 0x00B2 ) );
}

TEST( Unicode, HexadecimalDigitsAreThoseOfAsciiAndTheirFullwidthForms )
{
    std::map< QV_CHAR, QV_INT > expected;

    for( QV_INT i = 0; i < 16; i++ )
        for( QV_CHAR base : { 0, 0xFF10 - 0x30 } )
        {
            expected[base + (QV_CHAR) "0123456789ABCDEF"[i]] = i;
            expected[base + (QV_CHAR) "0123456789abcdef"[i]] = i;
        }

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        auto   found = expected.find( ch );
        QV_INT value = found == expected.end() ? -1 : found->second;
        ASSERT_EQ( value, qvUnicodeHexadecimalDigitValue( ch ) ) << std::hex << (uint32_t)ch;
        ASSERT_EQ( value, qv___UnicodeHexDigitDbLookup( ch ) );
    }
}

TEST( Unicode, DigitsOfABase )
{
    struct
    {
        QV_CHAR ch;
        QV_INT  base, value;
    } cases[] = {
        { U'z', 36, 35 }, { U'Z', 36, 35 }, { U'z', 35, -1 }, { U'z', 20, -1 },   { U'j', 20, 19 },  { U'k', 20, -1 },
        { U'9', 17, 9 },  { U'@', 36, -1 }, { U'[', 36, -1 }, { U'`', 36, -1 },   { U'{', 36, -1 },  { 0x0661, 10, 1 },
        { 0x0661, 16, -1 }, { 0x0661, 20, -1 }, { 0xFF21, 16, 10 }, { 0xFF21, 17, -1 }, { 0x141, 36, -1 },

        // The value isn't compared with a base of up to 16.
        { U'9', 8, 9 },   { U'9', 2, 9 },   { U'f', 11, 15 }, { U'f', 10, -1 },   { U'g', 16, -1 },
    };

    for( auto &each : cases )
        EXPECT_EQ( each.value, qvUnicodeBaseNDigitValue( each.ch, each.base ) )
            << std::hex << (uint32_t)each.ch << " base " << std::dec << each.base;
}

TEST( Unicode, WhiteSpaceAndNewlines )
{
    std::set< QV_CHAR > white, newlines;

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        if( qvUnicodeIsWhiteSpace( ch ) )
            white.insert( ch );

        if( qvUnicodeIsNlf( ch ) )
            newlines.insert( ch );

        ASSERT_EQ( qvUnicodeIsWhiteSpace( ch ), qv___UnicodeWhiteSpaceDbLookup( ch ) );
        ASSERT_EQ( qvUnicodeIsNlf( ch ), qv___UnicodeNlfDbLookup( ch ) );

        ASSERT_TRUE( !qvUnicodeIsSeparator( ch ) || white.count( ch ) ) << std::hex << (uint32_t)ch;
    }

    // Besides the separators, only some controls are white.
    EXPECT_EQ( 26u, white.size() );
    EXPECT_TRUE( white.count( 0x9 ) && white.count( 0xD ) && white.count( 0x85 ) && white.count( 0x180E ) );
    EXPECT_FALSE( white.count( 0x200B ) );
    EXPECT_EQ( ( std::set< QV_CHAR > { 0xA, 0xB, 0xC, 0xD, 0x85, 0x2028, 0x2029 } ), newlines );
}

TEST( Unicode, CaseMappings )
{
    std::map< std::u32string, int > counts;

    for( auto &[name, lookup] : std::map< std::u32string, Lookup > { { U"upper", qv___UnicodeUpperCaseDbLookup },
                                                                     { U"lower", qv___UnicodeLowerCaseDbLookup },
                                                                     { U"fold", qv___UnicodeCaseFoldDbLookup } } )
        for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
            if( lookup( ch, nullptr ) )
            {
                std::u32string mapped = mapping( lookup, ch );
                counts[name]++;
                ASSERT_NE( std::u32string( 1, ch ), mapped );
                ASSERT_LE( mapped.size(), 3u );

                for( QV_CHAR each : mapped )
                    ASSERT_NE( QV_UNICODE_GENC_OTHER_NOT_ASSIGNED, qvUnicodeGenc( each ) );
            }

    EXPECT_EQ( 1112, counts[U"upper"] );
    EXPECT_EQ( 1029, counts[U"lower"] );
    EXPECT_EQ( 1117, counts[U"fold"] );

    QV_INT length = -1;
    EXPECT_EQ( nullptr, qv___UnicodeUpperCaseDbLookup( U'A', &length ) );
    EXPECT_EQ( 0, length );

    EXPECT_EQ( U"A", mapping( qv___UnicodeUpperCaseDbLookup, U'a' ) );
    EXPECT_EQ( U"", mapping( qv___UnicodeUpperCaseDbLookup, U'A' ) );
    EXPECT_EQ( U"a", mapping( qv___UnicodeLowerCaseDbLookup, U'A' ) );
    EXPECT_EQ( U"\u0178", mapping( qv___UnicodeUpperCaseDbLookup, 0xFF ) );
    EXPECT_EQ( U"\u039C", mapping( qv___UnicodeUpperCaseDbLookup, 0xB5 ) );
    EXPECT_EQ( U"\U00010400", mapping( qv___UnicodeUpperCaseDbLookup, 0x10428 ) );

    // More than one character; conditions, as that of a final sigma, do not count.
    EXPECT_EQ( U"SS", mapping( qv___UnicodeUpperCaseDbLookup, 0xDF ) );
    EXPECT_EQ( U"FFI", mapping( qv___UnicodeUpperCaseDbLookup, 0xFB03 ) );
    EXPECT_EQ( U"\u0399\u0308\u0301", mapping( qv___UnicodeUpperCaseDbLookup, 0x0390 ) );
    EXPECT_EQ( U"i\u0307", mapping( qv___UnicodeLowerCaseDbLookup, 0x0130 ) );
    EXPECT_EQ( U"\u03C3", mapping( qv___UnicodeLowerCaseDbLookup, 0x03A3 ) );
    EXPECT_EQ( U"i", mapping( qv___UnicodeLowerCaseDbLookup, U'I' ) );

    // Common and full foldings, not the simple and the Turkic ones.
    EXPECT_EQ( U"ss", mapping( qv___UnicodeCaseFoldDbLookup, 0xDF ) );
    EXPECT_EQ( U"ss", mapping( qv___UnicodeCaseFoldDbLookup, 0x1E9E ) );
    EXPECT_EQ( U"i", mapping( qv___UnicodeCaseFoldDbLookup, U'I' ) );
    EXPECT_EQ( U"\u03C3", mapping( qv___UnicodeCaseFoldDbLookup, 0x03C2 ) );
}

TEST( Unicode, Decompositions )
{
    std::map< QV_INT, int > counts;

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        QV_INT         type;
        std::u32string mapped = decomposition( ch, &type );

        if( !mapped.empty() )
            counts[type]++;

        ASSERT_EQ( std::u32string::npos, mapped.find( ch ) );
        ASSERT_TRUE( type != QV_UNICODE_CDMT_CANONICAL || mapped.size() <= 2 );
    }

    int all = 0;
    for( auto [type, count] : counts )
        all += count;

    EXPECT_EQ( 5516, all );
    EXPECT_EQ( 17u, counts.size() );
    EXPECT_EQ( 1, counts.begin()->first );

    QV_INT type;
    EXPECT_EQ( U"e\u0301", decomposition( 0xE9, &type ) );
    EXPECT_EQ( QV_UNICODE_CDMT_CANONICAL, type );
    EXPECT_EQ( U"fi", decomposition( 0xFB01, &type ) );
    EXPECT_EQ( QV_UNICODE_CDMT_COMPAT, type );
    EXPECT_EQ( U" ", decomposition( 0xA0, &type ) );
    EXPECT_EQ( QV_UNICODE_CDMT_NOBREAK, type );
    EXPECT_EQ( U"1\u20442", decomposition( 0xBD, &type ) );
    EXPECT_EQ( QV_UNICODE_CDMT_FRACTION, type );
    EXPECT_EQ( U"\u4E0D", decomposition( 0xF967, &type ) );
    EXPECT_EQ( QV_UNICODE_CDMT_CANONICAL, type );
    EXPECT_EQ( 18u, decomposition( 0xFDFA, &type ).size() );
    EXPECT_EQ( QV_UNICODE_CDMT_ISOLATED, type );
    EXPECT_EQ( U"", decomposition( 0xAC00 ) );
    EXPECT_EQ( U"", decomposition( U'a', &type ) );
    EXPECT_EQ( QV_UNICODE_CDMT_NONE, type );
    EXPECT_EQ( nullptr, qv___UnicodeCdmDbLookup( U'a', nullptr, nullptr ) );
}

TEST( Unicode, CompositionsUndoDecompositions )
{
    int pairs = 0, left = 0;

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        QV_INT         type;
        std::u32string mapped = decomposition( ch, &type );

        if( type != QV_UNICODE_CDMT_CANONICAL || mapped.size() != 2 )
            continue;

        QV_CHAR composite = 0;

        if( qv___UnicodeCompDbLookup( mapped[0], mapped[1], &composite ) )
        {
            ASSERT_EQ( ch, composite );
            ASSERT_TRUE( qvUnicodeHasCccvSpacing( ch ) && qvUnicodeHasCccvSpacing( mapped[0] ) );
            pairs++;
        }
        else
        {
            ASSERT_EQ( 0u, composite );
            left++;
        }
    }

    // Left are the pairs of the list of exclusions and those that do not begin with a starter.
    EXPECT_EQ( 931, pairs );
    EXPECT_EQ( 85, left );

    QV_CHAR composite = 7;
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x0915, 0x093C, &composite ) ); // excluded script form
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x0308, 0x0301, &composite ) ); // not a starter
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x2ADD, 0x0338, &composite ) ); // added after the fixed version
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x1100, 0x1161, &composite ) ); // by rule, not by table
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x0301, U'e', &composite ) );
    EXPECT_EQ( 7u, composite );
    EXPECT_TRUE( qv___UnicodeCompDbLookup( U'e', 0x0301, nullptr ) );
    EXPECT_TRUE( qv___UnicodeCompDbLookup( 0x11099, 0x110BA, &composite ) );
    EXPECT_EQ( 0x1109Au, composite );
}

TEST( Unicode, ValuesAboveTheLastCodePointBreakTheContract )
{
    EXPECT_BROKEN( qvUnicodeGenc( 0x110000 ), "QV_CHAR_OK( ch )" );
    EXPECT_BROKEN( qvUnicodeIsOther( 0xFFFFFFFF ), "QV_CHAR_OK( ch )" );
    EXPECT_BROKEN( qvUnicodeBaseNDigitValue( 0x110000, 36 ), "QV_CHAR_OK( ch )" );
    EXPECT_BROKEN( qv___UnicodeUpperCaseDbLookup( 0x110000, nullptr ), "QV_CHAR_OK( ch )" );
    EXPECT_BROKEN( qvUnicodeBaseNDigitValue( U'1', 37 ), "base >=2 && base <= 36" );
    EXPECT_BROKEN( qvUnicodeBaseNDigitValue( U'1', 1 ), "base >=2 && base <= 36" );
}
