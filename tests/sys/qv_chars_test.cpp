#include "qv_test_support.h"
#include "qv_test_utf8.h"

#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_vectors_private.h"

#include <algorithm>
#include <cstring>
#include <random>

using testing::ElementsAre;
using namespace qv::test;
using namespace qv::vectors;

namespace
{
const char32_t GUARD = 0xABCDEF01;

// Calls `body` on every kernel that the machine has.
template< class Body >
void onEachKernel( Body body )
{
    for( QV_INT kernel : { PLAIN, VECTORS_16, VECTORS_32, VECTORS_64 } )
        if( SCOPED_TRACE( kernel ); qv___VectorsForceKernel( kernel ) == kernel )
            body();

    qv___VectorsForceKernel( -1 );
}

// Both passes, the second one into room for `room` characters with guards behind, have to give what is expected.
void expectDecoded( const std::string &bytes, const std::u32string &expected, size_t room )
{
    // A copy of its own, so that a sanitizer sees reading behind the end.
    std::vector< char >     src( bytes.begin(), bytes.end() );
    std::vector< char32_t > dest( room + 20, GUARD );
    QV_INT                  length = static_cast< QV_INT >( src.size() );

    ASSERT_EQ( static_cast< QV_INT >( expected.size() ), qvCharsConvertFromUtf8( nullptr, 0, src.data(), length ) );
    ASSERT_EQ(
        static_cast< QV_INT >( expected.size() ),
        qvCharsConvertFromUtf8( dest.data(), static_cast< QV_INT >( room ), src.data(), length ) );

    size_t written = std::min( room, expected.size() );
    ASSERT_EQ( expected.substr( 0, written ), std::u32string( dest.data(), written ) );

    for( size_t i = written; i < dest.size(); i++ )
        ASSERT_EQ( GUARD, dest[i] );
}

void expectEncoded( const std::u32string &text, size_t room, bool addNull )
{
    std::vector< char32_t > src( text.begin(), text.end() );
    std::string             expected = encodedUtf8( text ) + ( addNull ? std::string( 1, '\0' ) : "" );
    std::vector< char >     dest( room + 20, '\x55' );
    QV_INT                  length = static_cast< QV_INT >( src.size() );

    QV_INT whole = static_cast< QV_INT >( expected.size() );

    ASSERT_EQ( whole, qvCharsConvertToUtf8( nullptr, 0, src.data(), length, addNull ) );
    ASSERT_EQ( whole, qvCharsConvertToUtf8( dest.data(), QV_INT( room ), src.data(), length, addNull ) );

    size_t written = std::min( room, expected.size() );
    ASSERT_EQ( expected.substr( 0, written ), std::string( dest.data(), written ) );

    for( size_t i = written; i < dest.size(); i++ )
        ASSERT_EQ( '\x55', dest[i] );
}

std::u32string sanitized( std::u32string text )
{
    QV_INT length = static_cast< QV_INT >( text.size() );
    text.resize( static_cast< size_t >( qvCharsSanitize( text.data(), length, text.data(), length ) ) );

    return text;
}
} // namespace

TEST( Chars, BadUtf8IsReplacedByTheRules )
{
    const struct
    {
        std::string    bytes;
        std::u32string expected;
    } CASES[] = {
        { { "\xC0\x80", 2 }, std::u32string( 1, U'\0' ) },           // overlong forms pass,
        { "\xED\xA0\x80", std::u32string( 1, char32_t( 0xD800 ) ) }, // and surrogates
        { "\xF4\x90\x80\x80", U"" },                                 // above the last one: nothing
        { "\x80\x80\x80", U"\xFFFD" },                               // one for a run
        { "\xF8\x80\x80\x80\x80x", U"\uFFFDx" },
        { "\xE2\x82\xC3\xA9", U"\xFFFD\xE9" },     // ends early
        { "\xC3\xA9\xA9\xA9x", U"\u00E9\uFFFDx" }, // too many follow
    };

    for( const auto &each : CASES )
    {
        EXPECT_EQ( each.expected, decodedUtf8( each.bytes ) );
        expectDecoded( each.bytes, each.expected, each.expected.size() );
    }
}

// Texts of runs of one kind of character or a mixture, so that whole blocks of one kind and all borders come up; with
// faults here and there in some.
TEST( Chars, AnyTextGoesBothWaysAsTheModelDoes )
{
    const char32_t LIMITS[][2] = { { 0, 0x80 }, { 0x80, 0x800 }, { 0x800, 0x10000 }, { 0x10000, 0x110000 } };
    const char32_t BORDERS[]   = { 0x7F,       0x80,       0x7FF,      0x800,      0xD7FF,    0xD800,    0xDFFF,
                                   0xFFFF,     0x10000,    0x10FFFF,   0x110000,   0x110041,  0x1000041, 0x7FFFFFFF,
                                   0x80000000, 0x80000041, 0x80110000, 0xFFFFFF41, 0xFFFFFFFF };

    onEachKernel(
        [&]
        {
            std::mt19937 random( 20240611 );
            auto         below = [&]( size_t bound ) { return static_cast< unsigned >( random() % bound ); };

            for( int round = 0; round < 2000; round++ )
            {
                std::u32string text;
                std::string    bytes;
                unsigned       size = below( 300 ), faults = below( 3 ) ? 0 : below( 30 ), kinds = 1 + below( 15 );

                while( text.size() < size )
                {
                    unsigned kind = below( 4 );

                    if( !( kinds >> kind & 1 ) )
                        continue;

                    for( unsigned run = 1 + below( below( 4 ) ? 3 : 100 ); run > 0; run-- )
                    {
                        text += LIMITS[kind][0] + below( LIMITS[kind][1] - LIMITS[kind][0] );
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

                size_t whole = encodedUtf8( text ).size();
                expectEncoded( text, whole + 1, round % 2 );
                expectEncoded( text, below( whole + 40 ), round % 2 );

                std::u32string expected = decodedUtf8( bytes );
                expectDecoded( bytes, expected, expected.size() );
                expectDecoded( bytes, expected, below( expected.size() + 40 ) );

                if( testing::Test::HasFatalFailure() )
                    FAIL() << "round " << round;
            }
        } );
}

TEST( Chars, AsciiReplacesWhatItLacks )
{
    char          bytes[8];
    const QV_CHAR text[] = { U'a', 0, 0x7F, 0x80, 0xE9, 0x1F600, 0x110000 };
    EXPECT_EQ( 8, qvCharsConvertToAscii( bytes, 8, text, 7, QV_TRUE ) );
    EXPECT_EQ( std::string( "a\0\x7F????", 8 ), std::string( bytes, 8 ) );

    // The terminator is written if it fits.
    EXPECT_EQ( 1, qvCharsConvertToAscii( bytes, 1, nullptr, 0, QV_TRUE ) );
    EXPECT_EQ( '\0', bytes[0] );
    std::memset( bytes, 'x', 8 );
    EXPECT_EQ( 8, qvCharsConvertToAscii( bytes, 7, text, 7, QV_TRUE ) );
    EXPECT_EQ( 'x', bytes[7] );
    EXPECT_EQ( 7, qvCharsConvertToAscii( nullptr, 0, text, 7, QV_FALSE ) );

    QV_CHAR chs[4] = { 1, 1, 1, 1 };
    EXPECT_EQ( 3, qvCharsConvertFromAscii( chs, 2, "\x7F\x80z", -1 ) );
    EXPECT_THAT( chs, ElementsAre( 0x7F, 0xFFFD, 1, 1 ) );
    EXPECT_EQ( 4, qvCharsConvertFromAscii( nullptr, 0, "a\0b\0", 4 ) );
}

TEST( Chars, WideTextHasNoZeros )
{
    wchar_t       wide[4] = { 1, 1, 1, 1 };
    const QV_CHAR text[]  = { 0, 0xD800, 0x110000 };
    EXPECT_EQ( 4, qvCharsConvertToWcstr( wide, 4, text, 3, QV_TRUE ) );
    EXPECT_THAT( wide, ElementsAre( 0xFFFD, 0xD800, 0xFFFD, 0 ) );
    EXPECT_EQ( 4, qvCharsConvertToWcstr( wide, 1, text, 3, QV_TRUE ) );

    QV_CHAR       chs[4] = {};
    const wchar_t from[] = { 0x10FFFF, 0x110000, -1, L'z', 0 };
    EXPECT_EQ( 4, qvCharsConvertFromWcstr( chs, 4, from, -1 ) );
    EXPECT_THAT( chs, ElementsAre( 0x10FFFF, 0xFFFD, 0xFFFD, U'z' ) );
    EXPECT_EQ( 5, qvCharsConvertFromWcstr( nullptr, 0, from, 5 ) );
}

TEST( Chars, AllOkLooksAtEveryCharacter )
{
    onEachKernel(
        []
        {
            for( size_t length = 0; length < 40; length++ )
            {
                std::u32string text( length, char32_t( 0x10FFFF ) );
                QV_INT         count = static_cast< QV_INT >( length );
                EXPECT_TRUE( qvCharsAllOk( text.data(), count ) );

                for( char32_t &ch : text )
                {
                    for( uint32_t bad : { 0x110000u, 0x7FFFFFFFu, 0x80000000u, 0x80110000u, 0xFFFFFFFFu } )
                    {
                        ch = bad;
                        ASSERT_FALSE( qvCharsAllOk( text.data(), count ) ) << &ch - text.data() << " " << bad;
                    }

                    ch = 0x10FFFF;
                }
            }
        } );
}

TEST( Chars, SanitizeCombinesPairsAndDropsTheRest )
{
    const char32_t HIGH = 0xD83D, LOW = 0xDE00;

    EXPECT_EQ( U"\x1F600", sanitized( { HIGH, LOW } ) );
    EXPECT_EQ( U"a\U0001F600b", sanitized( { U'a', HIGH, HIGH, LOW, LOW, U'b' } ) );
    EXPECT_EQ( U"a", sanitized( { HIGH, U'a', LOW, HIGH } ) );
    EXPECT_EQ( U"\x10000\x10FFFF", sanitized( { 0xD800, 0xDC00, 0xDBFF, 0xDFFF } ) );
    EXPECT_EQ( U"", sanitized( { HIGH, 0x110000, LOW } ) );
    EXPECT_EQ( U"\xD7FF\xE000", sanitized( { 0xD7FF, 0xE000 } ) );

    // It counts on behind the room.
    QV_CHAR dest[2] = { 1, 1 };
    EXPECT_EQ( 3, qvCharsSanitize( dest, 1, U"abc", 3 ) );
    EXPECT_THAT( dest, ElementsAre( U'a', 1 ) );
}
