#include "qv_test_support.h"
#include "qv_test_utf8.h"

#include "qv/base/qv_string.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_vectors_private.h"

#include <random>

using namespace qv::test;
using namespace qv::vectors;
using namespace std::string_literals;

namespace
{
// Converts without room, which counts, and into `room` places, after which nothing may change.
template< class From, class To, class Convert, class... Options >
void expectConverted( const From &from, const To &expected, size_t room, Convert convert, Options... options )
{
    // A copy of its own, so that a sanitizer sees reading past the end.
    std::vector< typename From::value_type > src( from.begin(), from.end() );
    QV_INT length = static_cast< QV_INT >( src.size() ), whole = static_cast< QV_INT >( expected.size() );
    To     dest( room + 20, '\x55' ), written                  = expected.substr( 0, room );
    written.resize( dest.size(), '\x55' );

    ASSERT_EQ( whole, convert( nullptr, 0, src.data(), length, options... ) );
    ASSERT_EQ( whole, convert( dest.data(), static_cast< QV_INT >( room ), src.data(), length, options... ) );
    ASSERT_EQ( written, dest );
}
} // namespace

// The model as well: the walk that follows holds everything else against it.
TEST( Chars, BadUtf8IsReplacedByTheRules )
{
    const std::pair< std::string, std::u32string > CASES[] = {
        { "\xC0\x80"s, U"\0"s },                                     // overlong forms pass,
        { "\xED\xA0\x80", std::u32string( 1, char32_t( 0xD800 ) ) }, // and surrogates
        { "\xF4\x90\x80\x80", U"" },                                 // above the last one: nothing
        { "\x80\x80\x80", U"\xFFFD" },                               // one for a run
        { "\xF8\x80\x80\x80\x80x", U"\uFFFDx" },
        { "\xE2\x82\xC3\xA9", U"\xFFFD\xE9" },     // ends early
        { "\xC3\xA9\xA9\xA9x", U"\u00E9\uFFFDx" }, // too many follow
    };

    for( const auto &[bytes, expected] : CASES )
    {
        EXPECT_EQ( expected, decodedUtf8( bytes ) );
        expectConverted( bytes, expected, 8, qvCharsConvertFromUtf8 );
    }
}

// Texts of runs of one kind of character or a mixture, so that whole blocks of one kind and all borders come up; with
// faults here and there in some.
TEST( Chars, AnyTextGoesBothWaysAsTheModelDoes )
{
    const char32_t LIMITS[][2]  = { { 0, 0x80 }, { 0x80, 0x800 }, { 0x800, 0x10000 }, { 0x10000, 0x110000 } };
    const char32_t BORDERS[]    = { 0x7F,       0x80,       0x7FF,      0x800,      0xD7FF,    0xD800,    0xDFFF,
                                    0xFFFF,     0x10000,    0x10FFFF,   0x110000,   0x110041,  0x1000041, 0x7FFFFFFF,
                                    0x80000000, 0x80000041, 0x80110000, 0xFFFFFF41, 0xFFFFFFFF };
    const size_t   GOOD_BORDERS = 10; // are characters

    for( QV_INT kernel : { PLAIN, VECTORS_16, VECTORS_32, VECTORS_64 } )
        if( SCOPED_TRACE( kernel ); qv___VectorsForceKernel( kernel ) == kernel )
        {
            std::mt19937 random( 20240611 );
            auto         below = [&]( size_t bound ) { return static_cast< unsigned >( random() % bound ); };

            for( int round = 0; round < 2000 && !testing::Test::HasFailure(); round++ )
            {
                SCOPED_TRACE( round );
                std::u32string text;
                std::string    bytes;
                unsigned       size = below( round % 2 ? 30 : 300 ), faults = below( 3 ) ? 0 : below( 30 ),
                         kinds = 1 + below( 15 );

                while( text.size() < size )
                {
                    unsigned kind = below( 4 );

                    if( !( kinds >> kind & 1 ) )
                        continue;

                    for( unsigned run = 1 + below( below( 4 ) ? 3 : 100 ); run > 0; run-- )
                    {
                        text += below( 30 ) ? LIMITS[kind][0] + below( LIMITS[kind][1] - LIMITS[kind][0] )
                                            : BORDERS[below( GOOD_BORDERS )];
                        bytes += encodedUtf8( text.back() );
                    }

                    if( below( 100 ) < faults )
                    {
                        text += BORDERS[below( std::size( BORDERS ) )];
                        bytes += static_cast< char >( below( 256 ) );
                    }

                    if( below( 100 ) < faults )
                        bytes.pop_back();
                }

                // Up to the first character that is none, with it, and as a whole.
                auto   end    = std::find_if( text.begin(), text.end(), []( char32_t ch ) { return ch >= 0x110000; } );
                QV_INT length = static_cast< QV_INT >( text.size() ), first = end - text.begin();
                ASSERT_TRUE( qvCharsAllOk( text.data(), first ) );
                ASSERT_EQ( first == length, qvCharsAllOk( text.data(), std::min( first + 1, length ) ) );
                ASSERT_EQ( first == length, qvCharsAllOk( text.data(), length ) );

                std::string    encoded = encodedUtf8( text );
                std::u32string decoded = decodedUtf8( bytes );

                for( bool isShort : { false, true } )
                {
                    auto room = [&]( size_t whole ) { return isShort ? below( whole + 40 ) : whole; };
                    expectConverted( text, encoded, room( encoded.size() ), qvCharsConvertToUtf8, QV_FALSE );
                    expectConverted( text, encoded + '\0', room( encoded.size() ), qvCharsConvertToUtf8, QV_TRUE );
                    expectConverted( bytes, decoded, room( decoded.size() ), qvCharsConvertFromUtf8 );
                }

                // The ways of their own that Strings have, with the bytes at the end of a block.
                std::vector< char >  exact( bytes.begin(), bytes.end() );
                QV_INT               count = static_cast< QV_INT >( exact.size() );
                qv::Ref< QV_STRING > string( qvStringCreateFromUtf8( exact.data(), count ) );
                ASSERT_EQ( decoded, chars( string ) );
                ASSERT_TRUE( qvStringEqualsCstr( string, exact.data(), count ) );

                QV_INT      bytesBack = 0;
                char       *back      = qvStringConvertToUtf8( string, round % 2 ? QV_TRUE : QV_FALSE, &bytesBack );
                std::string expected  = encodedUtf8( decoded ) + std::string( round % 2, '\0' );
                ASSERT_EQ( expected, std::string( back, static_cast< size_t >( bytesBack ) ) );
                qvMemFree( back );

                if( !decoded.empty() )
                {
                    decoded[below( decoded.size() )] ^= 1; // stays a character
                    ASSERT_FALSE( qvStringEqualsCstr( qv::test::text( decoded ), exact.data(), count ) );
                }
            }
        }

    qv___VectorsForceKernel( -1 );
}

TEST( Chars, OtherFormsReplaceWhatTheyLack )
{
    const std::u32string text = { 0, U'a', 0x7F, 0x80, 0xD800, 0x10FFFF, 0x110000 };
    const std::wstring   wide = { 0xFFFD, L'a', 0x7F, 0x80, 0xD800, 0x10FFFF, 0xFFFD };

    // The terminator is written if it fits.
    for( size_t room = 0; room < 10; room++ )
    {
        expectConverted( text, "\0a\x7F????"s, room, qvCharsConvertToAscii, QV_FALSE );
        expectConverted( text, "\0a\x7F????\0"s, room, qvCharsConvertToAscii, QV_TRUE );
        expectConverted( text, wide + L'\0', room, qvCharsConvertToWcstr, QV_TRUE );
        expectConverted( "\x7F\x80\0z"s, U"\x7F\xFFFD\0z"s, room, qvCharsConvertFromAscii );
        expectConverted(
            std::wstring{ 0x10FFFF, 0x110000, static_cast< wchar_t >( -1 ), 0 }, U"\x10FFFF\xFFFD\xFFFD\0"s, room,
            qvCharsConvertFromWcstr );
        expectConverted( U"abc"s, U"abc"s, room, qvCharsSanitize ); // it counts on after the room
    }

    EXPECT_EQ( 3, qvCharsConvertFromAscii( nullptr, 0, "abc", -1 ) );
    EXPECT_EQ( 4, qvCharsConvertFromWcstr( nullptr, 0, L"abcd", -1 ) );
}

TEST( Chars, SanitizeCombinesPairsAndDropsTheRest )
{
    const char32_t                                    HIGH = 0xD83D, LOW = 0xDE00;
    const std::pair< std::u32string, std::u32string > CASES[] = {
        { { HIGH, LOW }, U"\x1F600" },       { { U'a', HIGH, HIGH, LOW, LOW, U'b' }, U"a\U0001F600b" },
        { { HIGH, U'a', LOW, HIGH }, U"a" }, { { 0xD800, 0xDC00, 0xDBFF, 0xDFFF }, U"\x10000\x10FFFF" },
        { { HIGH, 0x110000, LOW }, U"" },    { { 0xD7FF, 0xE000 }, U"\xD7FF\xE000" },
    };

    for( auto [text, expected] : CASES )
    {
        QV_INT length = static_cast< QV_INT >( text.size() ); // in its own place
        text.resize( static_cast< size_t >( qvCharsSanitize( text.data(), length, text.data(), length ) ) );
        EXPECT_EQ( expected, text );
    }
}
