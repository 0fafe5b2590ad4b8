#include "qv/qv.hpp"

#include "qv_test_support.h"

#include <cmath>

using namespace qv::literals;
using qv::test::references;

/** Formats in C with QV_FORMAT_ARGS(): in format_args.c. */
extern "C" QV_STRING *formatArgsOfC( int *evaluated );

namespace
{
enum Bare
{
    BARE = -3
};

enum class Named
{
    ONE
};

std::string toString( Named )
{
    return "Named::ONE";
}
} // namespace

TEST( Format, PassesEachArgumentInTheWidthThatIsRead )
{
    EXPECT_EQ(
        "-1 255 -32768 4000000000 9223372036854775807 -3",
        qv::format(
            "%i %i %i %i %i %i", int8_t( -1 ), uint8_t( 255 ), INT16_MIN, 4000000000u,
            static_cast< uint64_t >( INT64_MAX ), BARE ) );
    EXPECT_EQ( "0.500000 0.25 2.0", qv::format( "%r %.2r %.*r", 0.5f, 0.25, short{ 1 }, 2.0L ) );
    EXPECT_EQ( U"xΩ\xFFFD true", qv::format( "%c%c%c %b", 'x', U'Ω', '\xff', true ) );
    EXPECT_EQ( "   ff|0x00ff|11 |007", qv::format( "%*!16i|%#06!16i|%-3!*i|%.100A", 5u, 255, 255, 2, 3, 7 ) );
    EXPECT_EQ( "% a\tb", qv::format( "%#%%% a%1mb" ) );
    EXPECT_BROKEN( (void)qv::format( "%i", UINT64_MAX ), "std::in_range< QV_INT >( value )" );
    EXPECT_BROKEN( (void)qv::String().appendInt( UINT64_MAX ), "std::in_range< QV_INT >( value )" );
}

TEST( Format, TakesTextsOfEveryKind )
{
    std::string   text = "text";
    const char   *none = nullptr;
    qv::String    value( "value" );
    const wchar_t wide[] = L"wide";

    EXPECT_EQ(
        "text|text|te|value|literal|wide|wide|Named::ONE|",
        qv::format(
            "%s|%o|%.2s|%s|%s|%s|%o|%s|", text, std::string_view( text ), text, value, "literal", wide,
            std::wstring_view( wide ), Named::ONE ) );
    EXPECT_EQ(
        U"Ω|Ω|  value|text|lit|wi",
        qv::format(
            "%s|%s|%7s|%lc|%lC|%lW", u8"Ω", std::u32string_view( U"Ω" ), value.c(), text, "literal", 3, wide, 2 ) );
    EXPECT_EQ(
        "null||null|5|null",
        qv::format(
            "%s|%s|%lc|%o|%o", none, std::string_view(), none, qv::Object( 5 ), std::optional< qv::Store >() ) );
    EXPECT_EQ( "<1>={a=1}", qv::format( "%o=%o", qv::Vector<>{ 1 }, qv::Dict< qv::String, int >{ { "a", 1 } } ) );
    EXPECT_EQ( 1, references( &*value.c() ) );

    // A format that is longer than what is kept on the stack, with a change in each kind of place.
#define HUNDRED "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456789"
    EXPECT_EQ(
        "text" HUNDRED HUNDRED "texttext" HUNDRED "text",
        qv::format( "%s" HUNDRED HUNDRED "%s%lc" HUNDRED "%s", text, text, text, text ) );

    qv::append( value, "-%s-%s", value, "end" );
    EXPECT_EQ( "value-value-end", value );
    qv::print( "%s\n", text );
    EXPECT_EQ( U"text\n", qv::test::takePrinted() );
}

TEST( Format, ATildeTakesOverExactlyOneReference )
{
    qv::String kept( "kept" ), moved = kept, alsoMoved = kept;

    EXPECT_EQ( "kept kept", qv::format( "%~s %~o", std::move( moved ), qv::Object( kept ) ) );
    EXPECT_EQ( 2, references( &*kept.c() ) );

    // Without a tilde the value stays where it is.
    EXPECT_EQ( "kept", qv::format( "%s", std::move( alsoMoved ) ) );
    EXPECT_EQ( "kept", alsoMoved );
}

TEST( Format, WidensArgumentsInC )
{
    int evaluated = 0;
    EXPECT_EQ( "-3 files 0.750000 -1 200 text true x 7      2.500000", qv::String::own( formatArgsOfC( &evaluated ) ) );
    EXPECT_EQ( 1, evaluated );
}
