#include "qv_test_support.h"

#include "qv/sys/qv_chars.h"

#include <cstring>
#include <random>

using testing::ElementsAre;

namespace
{
const char32_t GUARD = 0xABCDEF01;

// The rules of reading UTF-8, one sequence after the other.
std::u32string decoded( const std::string &bytes )
{
    std::u32string result;
    size_t         i = 0;

    auto byte      = [&]( size_t at ) { return static_cast< unsigned char >( bytes[at] ); };
    auto following = [&]( size_t at ) { return at < bytes.size() && byte( at ) / 64 == 2; };

    while( i < bytes.size() )
    {
        unsigned lead   = byte( i++ );
        size_t   demand = lead / 32 == 6 ? 1 : lead / 16 == 14 ? 2 : lead / 8 == 30 ? 3 : 0;

        if( lead < 0x80 )
        {
            result += lead;
        }
        else if( demand == 0 )
        {
            result += 0xFFFD;

            while( following( i ) )
                i++;
        }
        else
        {
            char32_t value = lead % ( 64 >> demand );
            size_t   seen  = 0;

            for( ; seen < demand && following( i ); seen++ )
                value = value * 64 + byte( i++ ) % 64;

            if( seen == demand && value < 0x110000 )
                result += value;
            else if( seen < demand && i < bytes.size() )
                result += 0xFFFD;
        }
    }

    return result;
}

std::string encoded( char32_t ch )
{
    std::string result;

    if( ch >= 0x110000 )
        ch = 0xFFFD;

    if( ch < 0x80 )
        return std::string( 1, static_cast< char >( ch ) );

    int shift = ch < 0x800 ? 6 : ch < 0x10000 ? 12 : 18;
    result += static_cast< char >( ( shift == 6 ? 0xC0 : shift == 12 ? 0xE0 : 0xF0 ) + ( ch >> shift ) );

    while( ( shift -= 6 ) >= 0 )
        result += static_cast< char >( 0x80 + ( ( ch >> shift ) % 64 ) );

    return result;
}

std::string encoded( const std::u32string &text )
{
    std::string result;

    for( char32_t ch : text )
        result += encoded( ch );

    return result;
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
    std::string             expected = encoded( text ) + ( addNull ? std::string( 1, '\0' ) : "" );
    std::vector< char >     dest( room + 20, '\x55' );
    QV_INT                  length = static_cast< QV_INT >( src.size() );

    QV_INT                  whole = static_cast< QV_INT >( expected.size() );

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
        { { "\xC0\x80", 2 }, std::u32string( 1, U'\0' ) },                   // overlong forms pass,
        { "\xED\xA0\x80", std::u32string( 1, char32_t( 0xD800 ) ) },         // and surrogates
        { "\xF4\x8F\xBF\xBF", U"\x10FFFF" },                                 // the last character
        { "\xF4\x90\x80\x80", U"" },                                         // is not replaced
        { "a\xF7\xBF\xBF\xBF" "b", U"ab" },
        { "\x80\x80\x80", U"\xFFFD" },                                       // one for a run
        { "\xFF" "A", U"\xFFFD" U"A" },
        { "\xF8\x80\x80\x80\x80" "A", U"\xFFFD" U"A" },
        { "\xE2\x82" "A", U"\xFFFD" U"A" },                                  // ends early,
        { "\xE2\x82\xC3\xA9", U"\xFFFD\xE9" },                               // also before a good one,
        { "A\xE2\x82", U"A" },                                               // and with the text
        { "\xF0\x9F\x98", U"" },
        { "\xC3\xA9\xA9\xA9" "A", U"\xE9\xFFFD" U"A" },                      // too many follow
        { "", U"" },
    };

    // Each on its own, and behind and between long texts that are good, where vectors do the work.
    for( const auto &each : CASES )
    {
        expectDecoded( each.bytes, each.expected, each.expected.size() );

        for( std::string good : { "a", "\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "ab\xC3\xA9\xE4\xB8\xAD" } )
        {
            std::string run;

            while( run.size() < 200 )
                run += good;

            for( size_t cut = 0; cut < 70; cut++ )
            {
                std::string bytes = run.substr( run.size() - cut ) + run + each.bytes + run;
                expectDecoded( bytes, decoded( bytes ), decoded( bytes ).size() );
            }
        }

        EXPECT_EQ( each.expected, decoded( each.bytes ) );
    }
}

// Texts of runs of one length of sequence or of a mixture, there and back, the latter with and without faults.
TEST( Chars, AnyTextIsConvertedAsTheModelDoes )
{
    static const char32_t LIMITS[] = { 0, 0x80, 0x800, 0x10000, 0x110000, 0xFFFFFFFF };
    std::mt19937          random( 20240611 );
    auto                  below = [&]( size_t bound ) { return static_cast< unsigned >( random() % bound ); };

    for( int round = 0; round < 6000; round++ )
    {
        std::u32string text;
        std::string    bytes;
        unsigned       size = below( 300 ), faults = below( 3 ) ? 0 : below( 30 ), kinds = 1 + below( 31 );

        while( bytes.size() < size )
        {
            unsigned kind = below( 5 );

            for( unsigned run = kinds >> kind & 1 ? 1 + below( below( 4 ) ? 3 : 80 ) : 0; run > 0; run-- )
            {
                text += LIMITS[kind] + below( LIMITS[kind + 1] - LIMITS[kind] );
                bytes += encoded( text.back() );
            }

            if( below( 100 ) < faults )
                bytes += static_cast< char >( below( 256 ) );

            if( below( 100 ) < faults && !bytes.empty() )
                bytes.pop_back();
        }

        std::u32string expected = decoded( bytes );
        size_t         whole    = encoded( text ).size();
        expectDecoded( bytes, expected, expected.size() );
        expectDecoded( bytes, expected, below( expected.size() + 40 ) );
        expectEncoded( text, whole + 1, round % 2 );
        expectEncoded( text, below( whole + 40 ), round % 2 );

        if( HasFatalFailure() )
            FAIL() << "round " << round;
    }
}

TEST( Chars, AsciiReplacesWhatItLacks )
{
    char         bytes[8];
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
    for( size_t length = 0; length < 40; length++ )
    {
        std::u32string text( length, char32_t( 0x10FFFF ) );
        EXPECT_TRUE( qvCharsAllOk( text.data(), static_cast< QV_INT >( length ) ) );

        for( char32_t &ch : text )
            for( uint32_t bad : { 0x110000u, 0x7FFFFFFFu, 0x80000000u, 0x80110000u, 0xFFFFFFFFu, 0x10FFFFu } )
            {
                ch = bad;
                ASSERT_EQ( bad == 0x10FFFF, qvCharsAllOk( text.data(), static_cast< QV_INT >( length ) ) );
            }
    }
}

TEST( Chars, SanitizeCombinesPairsAndDropsTheRest )
{
    const char32_t HIGH = 0xD83D, LOW = 0xDE00;

    EXPECT_EQ( U"\x1F600", sanitized( { HIGH, LOW } ) );
    EXPECT_EQ( U"a\x1F600" U"b", sanitized( { U'a', HIGH, HIGH, LOW, LOW, U'b' } ) );
    EXPECT_EQ( U"a", sanitized( { HIGH, U'a', LOW, HIGH } ) );
    EXPECT_EQ( U"\x10000\x10FFFF", sanitized( { 0xD800, 0xDC00, 0xDBFF, 0xDFFF } ) );
    EXPECT_EQ( U"", sanitized( { HIGH, 0x110000, LOW } ) );
    EXPECT_EQ( U"\xD7FF\xE000", sanitized( { 0xD7FF, 0xE000 } ) );

    // It counts on behind the room.
    QV_CHAR dest[2] = { 1, 1 };
    EXPECT_EQ( 3, qvCharsSanitize( dest, 1, U"abc", 3 ) );
    EXPECT_THAT( dest, ElementsAre( U'a', 1 ) );
}

TEST( Chars, BrokenContracts )
{
    QV_CHAR ch = 0;
    char    byte;

    EXPECT_BROKEN( qvCharsAllOk( &ch, -1 ), "srcLength >= 0" );
    EXPECT_BROKEN( qvCharsAllOk( nullptr, 1 ), "srcLength == 0 || src" );
    EXPECT_BROKEN( qvCharsConvertFromUtf8( &ch, 1, "", -2 ), "srcLength >= -1" );
    EXPECT_BROKEN( qvCharsConvertToUtf8( nullptr, 1, &ch, 1, QV_FALSE ), "destLength == 0 || dest" );
    EXPECT_BROKEN( qvCharsConvertToAscii( &byte, 1, &ch, QV_INT_MAX, QV_TRUE ), "srcLength < QV_INT_MAX" );
}
