#include "qv_test_support.h"

#include "qv/base/qv_format_private.h"
#include "qv/qv.h"
#include "qv/qv.hpp"

#include <cstring>

using qv::Ref;
using namespace qv::test;

namespace
{
std::string formatted( const char *fmt, ... )
{
    va_list argList;
    va_start( argList, fmt );
    std::string result = take( qv___FormatArgList( text( std::string_view( fmt ) ), &argList ) );
    va_end( argList );

    return result;
}
} // namespace

TEST( Format, ConvertsWhatIsRare )
{
    Ref< QV_STRING >    hello = text( std::string_view( "hello" ) );
    Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( -12 ) );
    const QV_INT        seven = 7;
    const wchar_t      *wide  = L"w\u00E9";

    EXPECT_EQ( "  7", formatted( "%3 i", seven ) ); // white space after a number belongs to it
    EXPECT_EQ( "7", formatted( "%.!i", seven ) );
    EXPECT_EQ( "  7 7  ", formatted( "%\u0663i %-\u0663i", seven, seven ) ); // a width in Arabic digits
    EXPECT_EQ( "hello", formatted( "%.s", hello.get() ) );
    EXPECT_EQ( "-12 -1 -12", formatted( "%o %.2o %s", boxed.get(), boxed.get(), boxed.get() ) );
    EXPECT_EQ( "\u00E9|ab|  ab", formatted( "%lc|%lC|%4.2lc", "\u00E9", "abc", QV_INT( 2 ), "abc" ) );
    EXPECT_EQ( "w\u00E9|w", formatted( "%lw|%lW", wide, wide, QV_INT( 1 ) ) );

    // Null, also with the length that comes after it.
    EXPECT_EQ( "null||nu", formatted( "%s|%#s|%.2o", nullptr, nullptr, nullptr ) );
    EXPECT_EQ( "null 7  null", formatted( "%lC %i %#lc %~lw", nullptr, QV_INT( 3 ), seven, nullptr, nullptr ) );
    EXPECT_EQ( "", formatted( "%#%" ) );

    // Formats of any length, from outside too.
    std::string dots( 1000, '.' );
    EXPECT_EQ( dots + "hello", take( qvStringCreateFromFormatCstr( ( dots + "%s" ).c_str(), -1, hello.get() ) ) );
    EXPECT_EQ( "\u00E97", take( qvStringCreateFromFormatCstr( "\u00E9%i%", 4, seven ) ) );
}

TEST( Format, ConsumedArgumentsAreGivenUp )
{
    Ref< QV_STRING > hello = text( std::string_view( "hello" ) );

    EXPECT_EQ( "hello   7", formatted( "%~-*s %i", QV_INT( 7 ), qv::retain( hello.get() ), QV_INT( 7 ) ) );
    EXPECT_EQ( "\thello", formatted( "%1m%~o", qv::retain( hello.get() ) ) );
    EXPECT_EQ( "abc null", formatted( "%~lc %~s", std::memcpy( qvMemAlloc( 4 ), "abc", 4 ), nullptr ) );
    EXPECT_EQ( 1, references( hello.get() ) );
}

TEST( Format, TheListIsAdvancedAndTheTextIsAnOrdinaryString )
{
    auto twice = []( QV_STRING *fmt, ... )
    {
        va_list argList;
        va_start( argList, fmt );
        std::string first = take( qv___FormatArgList( fmt, &argList ) );
        first += take( qv___FormatArgList( fmt, &argList ) );
        va_end( argList );
        return first;
    };

    EXPECT_EQ( "<1><2>", twice( text( std::string_view( "<%i>" ) ), QV_INT( 1 ), QV_INT( 2 ) ) );
    EXPECT_EQ( 20000, allocated( Ref( qvFormatEncodeInt( 1, 10, 5000, 0 ) ).get() ) );
}

TEST( Format, AppendedNumbersAreTheTextsOfTheEncoders )
{
    // The texts are as long and as short as they can be, and reals go both ways, quickly and digit by digit. One text is
    // always held by another variable, so that each append copies it; the other grows through all states of its block.
    const QV_REAL reals[] = { -0.0, 0.999, -9007199254740991.0, 9007199254740992.0, 1e300, 5e-324, 0.0 / 0.0 };
    QV_STRING    *grown = qvStringCreate(), *shared = qvStringCreate(), *plain = qvStringCreate();

    auto both = [&]( QV_STRING *encoded, auto append )
    {
        Ref< QV_STRING > owned( encoded ), before = Ref< QV_STRING >::share( shared );
        std::string      was = utf8( before );
        append( &grown );
        append( &shared );
        qvStringAppend( &plain, encoded );
        ASSERT_EQ( was, utf8( before ) );
        ASSERT_TRUE( qvStringEquals( grown, plain ) && qvStringEquals( shared, plain ) ) << utf8( encoded );
        ASSERT_EQ( allocated( plain ), allocated( grown ) );
    };

    for( QV_INT base : { 2, 10, 16, 35, 36 } )
    {
        for( QV_INT value : { QV_INT( 0 ), QV_INT( 9 ), QV_INT( -10 ), QV_INT_MAX, QV_INT_MIN } )
            both(
                qvFormatEncodeInt( value, base, 0, 0 ),
                [&]( QV_STRING **to ) { qvStringAppendInt( to, value, base ); } );

        for( QV_REAL value : reals )
            for( QV_INT precision : { -1, 0, 15, 16 } )
                both(
                    qvFormatEncodeReal( value, base, 0, precision, 0 ),
                    [&]( QV_STRING **to ) { qvStringAppendReal( to, value, base, precision ); } );
    }

    for( QV_STRING *text : { grown, shared, plain } )
        qvStringRelease( text );

    EXPECT_EQ( "n=-ff;1.50", qv::String( "n=" ).appendInt( -255, 16 ).append( ";" ).appendReal( 1.509, 2 ) );
}

TEST( Format, IntegersOfAllLengthsAreOrdinaryTexts )
{
    // Around all powers of ten, and digits of all kinds. Each text grows at both ends as a copy of it does: so it has the
    // same free places, and what its memory holds beside it is not seen.
    uint64_t digits = 0x9E3779B97F4A7C15;

    for( uint64_t power = 1, more = 0; more < 400; more++, power = more % 20 ? power * 10 : 1 )
        for( uint64_t near : { power - 1, power, digits % power } )
            for( QV_INT value : { static_cast< QV_INT >( near ), -static_cast< QV_INT >( near ) - 1 } )
            {
                QV_STRING *text = qvFormatEncodeInt( value, 10, 0, 0 );
                QV_STRING *copy = qvStringCreateFromCharsCopy( qvStringBacking( text ), qvStringLength( text ) );
                ASSERT_EQ( std::to_string( value ), utf8( text ) );

                for( int step = 0; step < 3; step++ )
                {
                    ASSERT_EQ( allocated( copy ), allocated( text ) ) << value;

                    for( QV_STRING **to : { &text, &copy } )
                        ( ( more + step ) % 2 ? qvStringAppendChar : qvStringPrependChar )( to, U'x' );
                }

                ASSERT_TRUE( qvStringEquals( text, copy ) ) << value;
                qvStringRelease( text );
                qvStringRelease( copy );
                digits = digits * 6364136223846793005 + 1442695040888963407;
            }
}

TEST( Format, BadFormatsAreReported )
{
    for( const char *fmt : { "", "text %%" } )
        EXPECT_BROKEN_MESSAGE(
            formatted( fmt ), "A format string must contain at least a single conversion.", "fmtContainsConversion" );

    for( const char *fmt : { "%", "%-", "%i%6", "%.", "%.3", "%!", "%!16" } )
        EXPECT_BROKEN_MESSAGE( formatted( fmt, QV_INT( 1 ) ), "missing conversion", "pos < fmtLength" );

    for( const char *fmt : { "%q", "%l", "%lx", "%.-3i", "%I" } )
        EXPECT_DEATH( formatted( fmt, QV_INT( 1 ) ), testing::HasSubstr( "    Message   : invalid conversion\n" ) );

    expectReports( {
        { [] { formatted( "%*i", QV_INT( -1 ), QV_INT( 1 ) ); }, "minWidth >= 0" },
        { [] { formatted( "%!37i", QV_INT( 1 ) ); }, "base <= 36" },
        { [] { formatted( "%A", QV_INT( -1 ) ); }, "value >= 0" },
        { [] { formatted( "%.5A", QV_INT( 6 ) ); }, "value <= precision" },
        { [] { formatted( "%*m", QV_INT( -1 ) ); }, "width >= 0" },
        { [] { formatted( "%1.*m", QV_INT( 0x100000041 ) ); }, "QV_CHAR_OK( precision )" },
        { [] { formatted( "%c", 0x110000u ); }, "qvCharsAllOk( src, srcLength )" },
    } );
}
