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
#include <numeric>
#include <set>
#include <sstream>
#include <vector>

using namespace qv::test;

namespace
{
const QV_CHAR CODE_POINTS = 0x110000;

std::u32string taken( const QV_CHAR *mapped, QV_INT length )
{
    return mapped ? std::u32string( mapped, static_cast< size_t >( length ) ) : std::u32string();
}

std::u32string mapping( const QV_CHAR *( *lookup )( QV_CHAR ch, QV_INT *length ), QV_CHAR ch )
{
    QV_INT         length;
    const QV_CHAR *mapped = lookup( ch, &length );
    return taken( mapped, length );
}

std::u32string decomposition( QV_CHAR ch, QV_INT *type )
{
    QV_INT         length;
    const QV_CHAR *mapped = qv___UnicodeCdmDbLookup( ch, &length, type );
    return taken( mapped, length );
}

// The words of a constant's name after its prefix as a function has them: LETTER_OTHER is Letter and Other.
std::vector< std::string > wordsOf( QV_STRING *symName )
{
    std::vector< std::string > words;
    std::istringstream         name( take( symName ).substr( strlen( "QV_UNICODE_GENC_" ) ) );

    for( std::string word; std::getline( name, word, '_' ); words.push_back( word ) )
        std::transform( word.begin() + 1, word.end(), word.begin() + 1, tolower );

    return words;
}

typedef QV_BOOL ( *Predicate )( QV_CHAR ch );

// The exported function of a name.
Predicate predicate( const std::string &name )
{
    void *function = dlsym( RTLD_DEFAULT, name.c_str() );
    EXPECT_TRUE( function ) << name;
    return reinterpret_cast< Predicate >( function );
}

std::string joined( const std::vector< std::string > &words )
{
    return std::accumulate( words.begin(), words.end(), std::string() );
}
} // namespace

// Found by the names of the constants, each is true for its own category, group or class and for no other.
TEST( Unicode, PredicatesAreTrueForWhatTheirNamesTell )
{
    std::vector< Predicate >      categories, groups; // by category
    std::map< QV_INT, Predicate > classes;

    for( QV_INT genc = 0; genc < 30; genc++ )
    {
        std::vector< std::string > words = wordsOf( qvUnicodeGencSymName( genc ) );
        categories.push_back( predicate( "qvUnicodeIs" + joined( words ) ) );
        groups.push_back( predicate( "qvUnicodeIs" + words[0] ) );
    }

    for( QV_INT cccv = 0; cccv < 256; cccv++ )
        if( QV_STRING *symName = qvUnicodeCccvSymName( cccv ) )
        {
            std::string name = joined( wordsOf( symName ) );
            classes[cccv]    = predicate( "qvUnicodeHasCccv" + ( name == "AboveLeft" ? "AaboveLeft" : name ) );
        }

    ASSERT_FALSE( HasFailure() );

    for( QV_CHAR ch = 0; ch < 0x11000; ch++ )
    {
        QV_INT own = qvUnicodeGenc( ch );

        for( QV_INT genc = 0; genc < 30; genc++ )
        {
            ASSERT_EQ( genc == own, categories[genc]( ch ) ) << genc << " " << uint32_t( ch );
            ASSERT_EQ( groups[genc] == groups[own], groups[genc]( ch ) ) << genc << " " << uint32_t( ch );
        }

        for( auto [cccv, isClass] : classes )
            ASSERT_EQ( cccv == qvUnicodeCccv( ch ), isClass( ch ) ) << cccv << " " << uint32_t( ch );
    }

    EXPECT_TRUE( qvUnicodeHasCccvFixedPos( 0x5B0 ) && qvUnicodeHasCccvFixedPos( 0xF71 ) );
    EXPECT_FALSE( qvUnicodeHasCccvFixedPos( 0x301 ) || qvUnicodeHasCccvFixedPos( 0x94D ) );
}

// How many code points have what, ranges that the data gives by their ends included, and what must agree.
TEST( Unicode, PropertiesOfEveryCodePoint )
{
    std::map< QV_INT, int > categories, classes, scripts, types;
    std::set< QV_CHAR >     newlines;
    int                     white = 0, upper = 0, lower = 0, fold = 0, pairs = 0;

    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        QV_INT  genc = qvUnicodeGenc( ch ), cccv = qvUnicodeCccv( ch ), script = qvUnicodeScript( ch ), type;
        QV_CHAR composite = 0;
        bool none = genc == 0 || genc == QV_UNICODE_GENC_OTHER_SURROGATE || genc == QV_UNICODE_GENC_OTHER_PRIVATE_USE;

        std::u32string mapped = decomposition( ch, &type );
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

    EXPECT_EQ( QV_UNICODE_SCRIPT_HAN, qvUnicodeScript( 0x2A700 ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_KAITHI, qvUnicodeScript( 0x11080 ) );

    // More than one character; conditions, as that of a final sigma, do not count, nor do Turkic foldings.
    EXPECT_EQ( U"\U00010400", mapping( qv___UnicodeUpperCaseDbLookup, 0x10428 ) );
    EXPECT_EQ( U"FFI", mapping( qv___UnicodeUpperCaseDbLookup, 0xFB03 ) );
    EXPECT_EQ( U"i\u0307", mapping( qv___UnicodeLowerCaseDbLookup, 0x0130 ) );
    EXPECT_EQ( U"\u03C3", mapping( qv___UnicodeLowerCaseDbLookup, 0x03A3 ) );
    EXPECT_EQ( U"ss", mapping( qv___UnicodeCaseFoldDbLookup, 0x1E9E ) );
    EXPECT_EQ( U"i", mapping( qv___UnicodeCaseFoldDbLookup, U'I' ) );

    QV_INT type;
    EXPECT_EQ( U"1\u20442", decomposition( 0xBD, &type ) );
    EXPECT_EQ( QV_UNICODE_CDMT_FRACTION, type );
    EXPECT_EQ( 18u, decomposition( 0xFDFA, &type ).size() );
    EXPECT_EQ( QV_UNICODE_CDMT_ISOLATED, type );

    QV_CHAR composite = 7;
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x0915, 0x093C, &composite ) ); // excluded script form
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x0308, 0x0301, &composite ) ); // not a starter
    EXPECT_FALSE( qv___UnicodeCompDbLookup( 0x1100, 0x1161, &composite ) ); // by rule, not by table
    EXPECT_EQ( 7u, composite );
    EXPECT_TRUE( qv___UnicodeCompDbLookup( 0x11099, 0x110BA, &composite ) );
    EXPECT_EQ( 0x1109Au, composite );
}

TEST( Unicode, DecimalDigitsComeInTens )
{
    int digits = 0;

    // A script's digits follow one another, but for one that has a variant of its 1.
    for( QV_CHAR ch = 0; ch < CODE_POINTS; ch++ )
    {
        QV_INT value = qvUnicodeDecimalDigitValue( ch );
        bool   last  = value < 0 || value == 9 || ch == 0x19DA;
        ASSERT_TRUE( last || qvUnicodeDecimalDigitValue( ch + 1 ) == value + 1 ) << uint32_t( ch );
        ASSERT_EQ( value >= 0, qvUnicodeIsNumberDecimalDigit( ch ) ) << uint32_t( ch );
        digits += value >= 0;
    }

    EXPECT_EQ( 411, digits );
    EXPECT_EQ( 1, qvUnicodeDecimalDigitValue( 0x0661 ) );
    EXPECT_EQ( 9, qvUnicodeDecimalDigitValue( 0x1D7FF ) );
    EXPECT_EQ( -1, qvUnicodeDecimalDigitValue( 0x00B2 ) );
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
