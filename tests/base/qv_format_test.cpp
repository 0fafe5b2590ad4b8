#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_format.h"
#include "qv/base/qv_format_private.h"
#include "qv/sys/qv_mem.h"

#include <cmath>
#include <cstring>

using qv::Ref;
using namespace qv::test;

namespace
{
std::string formatted( const char *fmt, ... )
{
    Ref< QV_STRING > fmtText = text( std::string_view( fmt ) );
    va_list          argList;
    va_start( argList, fmt );
    std::string result = take( qv___FormatArgList( fmtText, &argList ) );
    va_end( argList );

    return result;
}

} // namespace

TEST( Format, ConversionsOfNumbers )
{
    EXPECT_EQ( "  7", formatted( "%3 i", QV_INT( 7 ) ) ); // white space behind a number belongs to it
    EXPECT_EQ( "7", formatted( "%.!i", QV_INT( 7 ) ) );
    EXPECT_EQ( "  7 7  ", formatted( "%\u0663i %-\u0663i", QV_INT( 7 ), QV_INT( 7 ) ) ); // a width in Arabic digits
}

TEST( Format, ConversionsOfText )
{
    Ref< QV_STRING >    x = text( std::string_view( "x" ) ), hello = text( std::string_view( "hello" ) );
    Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( -12 ) );
    const wchar_t      *wide = L"w\u00E9";

    EXPECT_EQ( "hello", formatted( "%.s", hello.get() ) );
    EXPECT_EQ( "-12 -1 -12", formatted( "%o %.2o %s", boxed.get(), boxed.get(), boxed.get() ) );
    EXPECT_EQ( "\xC3\xA9|ab|  ab", formatted( "%lc|%lC|%4.2lc", "\xC3\xA9", "abc", QV_INT( 2 ), "abc" ) );
    EXPECT_EQ( "w\xC3\xA9|w", formatted( "%lw|%lW", wide, wide, QV_INT( 1 ) ) );

    // Null, also with the length that comes behind it.
    EXPECT_EQ( "null||nu", formatted( "%s|%#s|%.2o", nullptr, nullptr, nullptr ) );
    EXPECT_EQ( "null 5  null", formatted( "%lC %i %#lc %~lw", nullptr, QV_INT( 3 ), QV_INT( 5 ), nullptr, nullptr ) );

    EXPECT_EQ( "", formatted( "%#%" ) );

    // Texts and formats of any length, the latter from outside too.
    std::string  dots( 1000, '.' );
    std::wstring wideDots( 1000, L'.' );
    EXPECT_EQ( dots + "hello", formatted( ( dots + "%s" ).c_str(), hello.get() ) );
    EXPECT_EQ( dots + "hello", take( qvStringCreateFromFormatCstr( ( dots + "%s" ).c_str(), -1, hello.get() ) ) );
    EXPECT_EQ( dots + "hello", take( qvStringCreateFromFormatWcstr( ( wideDots + L"%s" ).c_str(), -1, hello.get() ) ) );
    EXPECT_EQ(
        "\xC3\xA9"
        "7",
        take( qvStringCreateFromFormatCstr( "\xC3\xA9%i%", 4, QV_INT( 7 ) ) ) );
}

TEST( Format, ConsumedArgumentsAreGivenUp )
{
    Ref< QV_STRING > hello = text( std::string_view( "hello" ) );
    char            *block = static_cast< char * >( qvMemAlloc( 4 ) );
    std::strcpy( block, "abc" );

    EXPECT_EQ( "hello   7", formatted( "%~-*s %i", QV_INT( 7 ), qv::retain( hello.get() ), QV_INT( 7 ) ) );
    EXPECT_EQ( "\thello", formatted( "%1m%~o", qv::retain( hello.get() ) ) );
    EXPECT_EQ( "-1", formatted( "%~o", qvBoxedIntCreate( -1 ) ) );
    EXPECT_EQ( "abc null", formatted( "%~lc %~s", block, nullptr ) );
    EXPECT_EQ( 1, references( hello.get() ) );
}

TEST( Format, TheListIsAdvancedAndTheTextIsAnOrdinaryString )
{
    auto twice = []( QV_STRING *fmt, ... )
    {
        va_list argList;
        va_start( argList, fmt );
        Ref< QV_STRING > first( qv___FormatArgList( fmt, &argList ) ), second( qv___FormatArgList( fmt, &argList ) );
        va_end( argList );
        qvStringAppend( first.at(), second );
        return utf8( first );
    };

    EXPECT_EQ( "<1><2>", twice( text( std::string_view( "<%i>" ) ), QV_INT( 1 ), QV_INT( 2 ) ) );

    Ref< QV_STRING > number( qvFormatEncodeInt( 12345, 10, 0, 0 ) );
    EXPECT_EQ( 20, allocated( number.get() ) );
    number = Ref< QV_STRING >( qvFormatEncodeInt( 1, 10, 5000, 0 ) );
    EXPECT_EQ( 20000, allocated( number.get() ) );
}

TEST( Format, BadFormatsAreReported )
{
    const char *none = "A format string must contain at least a single conversion.";
    EXPECT_BROKEN_MESSAGE( formatted( "" ), none, "fmtContainsConversion" );
    EXPECT_BROKEN_MESSAGE( formatted( "text %%" ), none, "fmtContainsConversion" );

    for( const char *fmt : { "%", "%-", "%i%6", "%.", "%.3", "%!", "%!16" } )
        EXPECT_BROKEN_MESSAGE( formatted( fmt, QV_INT( 1 ) ), "missing conversion", "pos < fmtLength" );

    for( const char *fmt : { "%q", "%l", "%lx", "%.-3i", "%I" } )
        EXPECT_DEATH( formatted( fmt, QV_INT( 1 ) ), testing::HasSubstr( "    Message   : invalid conversion\n" ) );

    EXPECT_BROKEN( formatted( "%*i", QV_INT( -1 ), QV_INT( 1 ) ), "minWidth >= 0" );
    EXPECT_BROKEN( formatted( "%!37i", QV_INT( 1 ) ), "base <= 36" );
    EXPECT_BROKEN( formatted( "%A", QV_INT( -1 ) ), "value >= 0" );
    EXPECT_BROKEN( formatted( "%.5A", QV_INT( 6 ) ), "value <= precision" );
    EXPECT_BROKEN( formatted( "%*m", QV_INT( -1 ) ), "width >= 0" );
    EXPECT_BROKEN( formatted( "%1.*m", QV_INT( 0x100000041 ) ), "QV_CHAR_OK( precision )" );
    EXPECT_BROKEN( formatted( "%c", 0x110000u ), "qvCharsAllOk( src, srcLength )" );
    EXPECT_BROKEN( qv___FormatArgList( nullptr, nullptr ), "fmt" );
}
