#include "qv_test_support.h"

#include "qv/unicode/qv_unicode_db_private.h"
#include "qv/unicode/qv_unicode_genc.h"
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
    // One of each category; both ends of the ranges that the data gives by their ends alone, and what stands next to
    // them; what later versions assign.
    const std::pair< QV_CHAR, const char * > EXPECTED[] = {
        { 0, "Cc" },      { U' ', "Zs" },   { U'_', "Pc" },   { U'-', "Pd" },    { U'(', "Ps" },    { U')', "Pe" },
        { U'!', "Po" },   { U'+', "Sm" },   { U'$', "Sc" },   { U'^', "Sk" },    { U'7', "Nd" },    { U'A', "Lu" },
        { U'z', "Ll" },   { 0xAB, "Pi" },   { 0xBB, "Pf" },   { 0xA9, "So" },    { 0xAD, "Cf" },    { 0xBD, "No" },
        { 0x1C5, "Lt" },  { 0x2B0, "Lm" },  { 0x301, "Mn" },  { 0x488, "Me" },   { 0x903, "Mc" },   { 0x2028, "Zl" },
        { 0x2029, "Zp" }, { 0x2160, "Nl" }, { 0x3400, "Lo" }, { 0x4DB5, "Lo" },  { 0x4DB6, "Cn" },  { 0x9FCB, "Lo" },
        { 0x9FCC, "Cn" }, { 0xAC00, "Lo" }, { 0xD7A3, "Lo" }, { 0xD7A4, "Cn" },  { 0xD800, "Cs" },  { 0xDFFF, "Cs" },
        { 0xE000, "Co" }, { 0xF8FF, "Co" }, { 0x2A6D6, "Lo" }, { 0x2B734, "Lo" }, { 0x2B735, "Cn" }, { 0x10FFFD, "Co" },
        { 0x10FFFF, "Cn" }, { 0x20BF, "Cn" }, { 0x1F600, "Cn" } };

    for( auto [ch, category] : EXPECTED )
        EXPECT_EQ( category, take( qvUnicodeGencAbbreviation( qvUnicodeGenc( ch ) ) ) ) << std::hex << (uint32_t)ch;
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

    EXPECT_TRUE( qvUnicodeIsLetterTitlecase( 0x01C5 ) && qvUnicodeIsOtherNotAssigned( 0x0378 ) );
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

    // A character of each class that has a name and of no other one. The fixed positions are a range; its ends are the
    // points 10 and 199.
    const std::pair< QV_BOOL ( * )( QV_CHAR ch ), QV_CHAR > MEMBERS[] = {
        { qvUnicodeHasCccvSpacing, U'a' },         { qvUnicodeHasCccvOverlays, 0x334 },
        { qvUnicodeHasCccvNuktas, 0x93C },         { qvUnicodeHasCccvHiragana, 0x3099 },
        { qvUnicodeHasCccvViramas, 0x94D },        { qvUnicodeHasCccvBelowAttached, 0x327 },
        { qvUnicodeHasCccvAboveAttached, 0x1DCE }, { qvUnicodeHasCccvAboveRightAttached, 0x31B },
        { qvUnicodeHasCccvBelowLeft, 0x302A },     { qvUnicodeHasCccvBelow, 0x323 },
        { qvUnicodeHasCccvBelowRight, 0x302D },    { qvUnicodeHasCccvLeft, 0x302E },
        { qvUnicodeHasCccvRight, 0x1D16D },        { qvUnicodeHasCccvAaboveLeft, 0x302B },
        { qvUnicodeHasCccvAbove, 0x301 },          { qvUnicodeHasCccvAboveRight, 0x315 },
        { qvUnicodeHasCccvDoubleBelow, 0x35C },    { qvUnicodeHasCccvDoubleAbove, 0x361 },
        { qvUnicodeHasCccvBelowIota, 0x345 },      { qvUnicodeHasCccvFixedPos, 0xF71 } };

    for( auto [hasClass, member] : MEMBERS )
        for( auto [otherClass, ch] : MEMBERS )
            EXPECT_EQ( hasClass == otherClass, hasClass( ch ) ) << std::hex << (uint32_t)ch;

    EXPECT_TRUE( qvUnicodeHasCccvFixedPosStart( 0x5B0 ) && qvUnicodeHasCccvFixedPos( 0x5B0 ) );
    EXPECT_FALSE( qvUnicodeHasCccvFixedPosStart( 0xF71 ) );
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
