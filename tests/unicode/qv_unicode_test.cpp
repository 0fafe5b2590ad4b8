#include "qv_test_support.h"

#include "qv/unicode/qv_unicode_cccv.h"
#include "qv/unicode/qv_unicode_cdmt.h"
#include "qv/unicode/qv_unicode_db_private.h"
#include "qv/unicode/qv_unicode_genc.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_properties.h"
#include "qv/unicode/qv_unicode_script.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <vector>

using namespace qv::test;

namespace
{
// What a table has for a character, or nothing.
std::u32string mapping( const QV_CHAR *( *lookup )( QV_CHAR ch, QV_INT *length ), QV_CHAR ch )
{
    QV_INT         length;
    const QV_CHAR *mapped = lookup( ch, &length );
    return mapped ? std::u32string( mapped, static_cast< size_t >( length ) ) : U"";
}

QV_INT type; // of the last decomposition

std::u32string decomposition( QV_CHAR ch )
{
    return mapping( []( QV_CHAR of, QV_INT *length ) { return qv___UnicodeCdmDbLookup( of, length, &type ); }, ch );
}

typedef QV_BOOL ( *Predicate )( QV_CHAR ch );

// The exported function that bears the name of a constant: that of QV_UNICODE_GENC_LETTER_OTHER ends with LetterOther.
Predicate predicate( const std::string &prefix, QV_STRING *symName, bool firstWord = false )
{
    std::istringstream words( take( symName ).substr( strlen( "QV_UNICODE_GENC_" ) ) );
    std::string        name = prefix;

    for( std::string word; std::getline( words, word, '_' ) && ( !firstWord || name == prefix ); name += word )
        std::transform( word.begin() + 1, word.end(), word.begin() + 1, tolower );

    void *function =
        dlsym( RTLD_DEFAULT, ( name == "qvUnicodeHasCccvAboveLeft" ? "qvUnicodeHasCccvAaboveLeft" : name ).c_str() );
    EXPECT_TRUE( function ) << name;
    return reinterpret_cast< Predicate >( function );
}
} // namespace

// Found by the names of the constants, each is true for its own category, group or class and for no other.
TEST( Unicode, PredicatesAreTrueForWhatTheirNamesTell )
{
    std::vector< Predicate >      categories, groups; // by category
    std::map< QV_INT, Predicate > classes;

    for( QV_INT genc = 0; genc < 30; genc++ )
    {
        categories.push_back( predicate( "qvUnicodeIs", qvUnicodeGencSymName( genc ) ) );
        groups.push_back( predicate( "qvUnicodeIs", qvUnicodeGencSymName( genc ), true ) );
    }

    for( QV_INT cccv = 0; cccv < 256; cccv++ )
        if( QV_STRING *symName = qvUnicodeCccvSymName( cccv ) )
            classes[cccv] = predicate( "qvUnicodeHasCccv", symName );

    ASSERT_FALSE( HasFailure() );

    for( QV_CHAR ch = 0; ch < 0x11000; ch++ )
    {
        QV_INT own = qvUnicodeGenc( ch );

        for( QV_INT genc = 0; genc < 30; genc++ )
        {
            ASSERT_EQ( genc == own, categories[genc]( ch ) ) << genc << " " << uint32_t( ch );
            ASSERT_EQ( groups[genc] == groups[own], groups[genc]( ch ) ) << genc;
        }

        for( auto [cccv, isClass] : classes )
            ASSERT_EQ( cccv == qvUnicodeCccv( ch ), isClass( ch ) ) << cccv;
    }

    EXPECT_TRUE( qvUnicodeHasCccvFixedPos( 0x5B0 ) && qvUnicodeHasCccvFixedPos( 0xF71 ) );
    EXPECT_FALSE( qvUnicodeHasCccvFixedPos( 0x301 ) || qvUnicodeHasCccvFixedPos( 0x94D ) );
}

// The counts of the code points with each property, ranges of the data included, and what must agree.
TEST( Unicode, PropertiesOfEveryCodePoint )
{
    std::map< QV_INT, int > categories, classes, scripts, types;
    std::set< QV_CHAR >     newlines;
    int                     white = 0, upper = 0, lower = 0, fold = 0, pairs = 0;

    for( QV_CHAR ch = 0; ch < 0x110000; ch++ )
    {
        QV_INT  genc = qvUnicodeGenc( ch ), cccv = qvUnicodeCccv( ch ), script = qvUnicodeScript( ch );
        QV_CHAR composite = 0;
        bool none = genc == 0 || genc == QV_UNICODE_GENC_OTHER_SURROGATE || genc == QV_UNICODE_GENC_OTHER_PRIVATE_USE;

        std::u32string mapped = decomposition( ch );
        categories[genc]++, classes[cccv]++, scripts[script]++, types[type]++;
        white += qvUnicodeIsWhiteSpace( ch );
        upper += !mapping( qv___UnicodeUpperCaseDbLookup, ch ).empty();
        lower += !mapping( qv___UnicodeLowerCaseDbLookup, ch ).empty();
        fold += !mapping( qv___UnicodeCaseFoldDbLookup, ch ).empty();

        if( qvUnicodeIsNlf( ch ) )
            newlines.insert( ch );

        ASSERT_TRUE( cccv == 0 || qvUnicodeIsMark( ch ) );
        ASSERT_TRUE( !qvUnicodeIsSeparator( ch ) || qvUnicodeIsWhiteSpace( ch ) );
        ASSERT_EQ( none, script == QV_UNICODE_SCRIPT_UNKNOWN );

        // A script's digits follow one another, but for one that has a variant of its 1.
        QV_INT digit = qvUnicodeDecimalDigitValue( ch );
        bool   last  = digit < 0 || digit == 9 || ch == 0x19DA;
        ASSERT_TRUE( last || qvUnicodeDecimalDigitValue( ch + 1 ) == digit + 1 ) << uint32_t( ch );
        ASSERT_EQ( digit >= 0, genc == QV_UNICODE_GENC_NUMBER_DECIMAL_DIGIT );

        if( type == QV_UNICODE_CDMT_CANONICAL && mapped.size() == 2
            && qv___UnicodeCompDbLookup( mapped[0], mapped[1], &composite ) )
        {
            ASSERT_EQ( ch, composite );
            pairs++;
        }
    }

    const int CATEGORIES[] = { 867235, 1427, 1749, 31,  202, 96128, 1162, 276,  13, 411, 224, 429, 10,  21,   72,
                               71,     12,   10,   389, 945, 46,    99,   3409, 18, 1,   1,   65,  140, 2048, 137468 };

    for( QV_INT genc = 0; genc < 30; genc++ )
        EXPECT_EQ( CATEGORIES[genc], categories[genc] ) << genc;

    EXPECT_EQ( 55u, classes.size() );
    EXPECT_EQ( 318, classes[230] );
    EXPECT_EQ( 93u, scripts.size() );
    EXPECT_EQ( 26, white );
    EXPECT_EQ( ( std::set< QV_CHAR >{ 0xA, 0xB, 0xC, 0xD, 0x85, 0x2028, 0x2029 } ), newlines );
    EXPECT_EQ( ( std::vector< int >{ 1112, 1029, 1117, 931 } ), ( std::vector< int >{ upper, lower, fold, pairs } ) );
    EXPECT_EQ( 18u, types.size() );
    EXPECT_EQ( 1114112 - 5516, types[QV_UNICODE_CDMT_NONE] );
}

TEST( Unicode, ChosenCharacters )
{
    const std::pair< QV_CHAR, const char * > CATEGORIES[] = {
        { U'A', "Lu" },   { 0xAB, "Pi" },   { 0x1C5, "Lt" },  { 0x4DB5, "Lo" }, { 0x4DB6, "Cn" },  { 0x9FCB, "Lo" },
        { 0x9FCC, "Cn" }, { 0xD7A3, "Lo" }, { 0xD800, "Cs" }, { 0xF8FF, "Co" }, { 0x2B735, "Cn" }, { 0x10FFFD, "Co" } };

    for( auto [ch, category] : CATEGORIES )
        EXPECT_EQ( category, take( qvUnicodeGencAbbreviation( qvUnicodeGenc( ch ) ) ) ) << std::hex << (uint32_t)ch;

    EXPECT_EQ( QV_UNICODE_SCRIPT_KAITHI, qvUnicodeScript( 0x11080 ) );
    EXPECT_EQ( 1, qvUnicodeDecimalDigitValue( 0x0661 ) );
    EXPECT_EQ( 9, qvUnicodeDecimalDigitValue( 0x1D7FF ) );

    // More than one character; conditions, as that of a final sigma, do not count, nor do Turkic foldings.
    EXPECT_EQ( U"\U00010400", mapping( qv___UnicodeUpperCaseDbLookup, 0x10428 ) );
    EXPECT_EQ( U"FFI", mapping( qv___UnicodeUpperCaseDbLookup, 0xFB03 ) );
    EXPECT_EQ( U"i\u0307", mapping( qv___UnicodeLowerCaseDbLookup, 0x0130 ) );
    EXPECT_EQ( U"\u03C3", mapping( qv___UnicodeLowerCaseDbLookup, 0x03A3 ) );
    EXPECT_EQ( U"ss", mapping( qv___UnicodeCaseFoldDbLookup, 0x1E9E ) );
    EXPECT_EQ( U"i", mapping( qv___UnicodeCaseFoldDbLookup, U'I' ) );

    EXPECT_EQ( U"1\u20442", decomposition( 0xBD ) );
    EXPECT_EQ( QV_UNICODE_CDMT_FRACTION, type );

    QV_CHAR composite = 7;
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x0915, 0x093C, &composite ) ); // excluded script form
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x0308, 0x0301, &composite ) ); // not a starter
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x1100, 0x1161, &composite ) ); // by rule, not by table
    EXPECT_EQ( 7u, composite );
    EXPECT_TRUE( qv___UnicodeCompDbLookup( 0x11099, 0x110BA, &composite ) );
    EXPECT_EQ( 0x1109Au, composite );
}

TEST( Unicode, DigitsOfABase )
{
    // Up to 16 the value is not compared with the base.
    const struct
    {
        QV_CHAR ch;
        QV_INT  base, value;
    } CASES[] = { { U'z', 36, 35 },   { U'Z', 36, 35 },   { U'z', 35, -1 },  { U'j', 20, 19 },  { U'9', 17, 9 },
                  { U'@', 36, -1 },   { U'[', 36, -1 },   { U'{', 36, -1 },  { 0x0661, 10, 1 }, { 0x0661, 16, -1 },
                  { 0xFF21, 16, 10 }, { 0xFF21, 17, -1 }, { 0x141, 36, -1 }, { U'9', 8, 9 },    { U'f', 11, 15 },
                  { U'f', 10, -1 },   { U'g', 16, -1 } };

    for( const auto &row : CASES )
        EXPECT_EQ( row.value, qvUnicodeBaseNDigitValue( row.ch, row.base ) ) << uint32_t( row.ch ) << " " << row.base;
}

TEST( Unicode, MisuseIsReported )
{
    static QV_UNICODE_NORMALIZER *norm = qvUnicodeNormalizerCreate( 0 );
    static QV_STRING             *abc  = text( "abc" ).give();

    expectReports( {
        { [] { qvUnicodeGenc( 0x110000 ); }, "QV_CHAR_OK( ch )" },
        { [] { qvUnicodeIsOther( 0xFFFFFFFF ); }, "QV_CHAR_OK( ch )" },
        { [] { qv___UnicodeUpperCaseDbLookup( 0x110000, nullptr ); }, "QV_CHAR_OK( ch )" },
        { [] { qvUnicodeBaseNDigitValue( U'1', 37 ); }, "base >=2 && base <= 36" },
        { [] { qvUnicodeGencDescription( 30 ); }, "QV_UNICODE_GENC_OK( genc )" },
        { [] { qvUnicodeCccvSymName( 256 ); }, "QV_UNICODE_CCCV_OK( cccv )" },
        { [] { qvUnicodeCdmtTag( 18 ); }, "QV_UNICODE_CDMT_OK( cdmt )" },
        { [] { qvUnicodeScriptName( -1 ); }, "QV_UNICODE_SCRIPT_OK( script )" },
        { [] { qvUnicodeNormalizerCreate( 4 ); }, "QV_UNICODE_NORMAL_FORM_OK( normalForm )" },
        { [] { qvUnicodeNormalizerWriteChars( norm, nullptr, 1 ); }, "chs || chsLength == 0" },
        { [] { qvUnicodeNormalizerWriteTrailing( norm, abc, 4 ); }, "offset >= 0" },
        { [] { qvUnicodeNormalizerWriteLeading( norm, abc, 4 ); }, "offset + count <= qvStringLength( src )" },
        { [] { qvUnicodeNormalizerRead( norm, &abc, -2 ); }, "maxLen == -1 || maxLen >= 0" },
    } );

    qvUnicodeNormalizerRelease( norm );
    qvStringRelease( abc );
}
