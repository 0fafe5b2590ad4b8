#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/charset/qv_charset.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_source.h"
#include "qv/unicode/qv_unicode_normalizer.h"

#include <random>

using qv::Ref;
using namespace qv::test;

namespace
{
struct Map
{
    const char                    *name;
    QV___CHARSET_BYTE_TO_CHAR_FUNC byteToChar;
    QV___CHARSET_CHAR_TO_BYTE_FUNC charToByte;
};

const Map MAPS[] = {
#define MAP( Name ) { #Name, qv___Charset##Name##MapByteToChar, qv___Charset##Name##MapCharToByte },
    QV___CHARSET_MAPS( MAP )
#undef MAP
};

std::string decode( QV_INT charset, std::string_view bytes, QV_INT flags = 0 )
{
    Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );
    QV_STRING       *result = qvCharsetBufferToStringWithFlags( charset, buf, flags );

    return result ? take( result ) : "failed";
}

std::string contentOf( QV_BUFFER *owned )
{
    Ref< QV_BUFFER > buf( owned );
    return std::string( reinterpret_cast< const char * >( qvBufferBacking( buf ) ), static_cast< size_t >( qvBufferLength( buf ) ) );
}

std::string encode( QV_INT charset, const Ref< QV_STRING > &qvs, QV_INT flags = 0 )
{
    QV_BUFFER *result = qvCharsetStringToBufferWithFlags( charset, qvs, flags );

    return result ? contentOf( result ) : "failed";
}
} // namespace

TEST( CharsetMap, CharactersMapToTheirLowestByteAndNothingElseDoes )
{
    ASSERT_EQ( 44u, std::size( MAPS ) );

    for( const Map &map : MAPS )
    {
        SCOPED_TRACE( map.name );
        std::vector< int > lowest( 0x110000, -1 );

        for( int byte = 255; byte >= 0; byte-- )
        {
            QV_CHAR ch;

            if( map.byteToChar( static_cast< uint8_t >( byte ), &ch ) )
                lowest[ch] = byte;
        }

        for( QV_CHAR ch = 0; ch < 0x110000; ch++ )
        {
            uint8_t byte;
            int     found = map.charToByte( ch, &byte ) ? byte : -1;
            ASSERT_EQ( lowest[ch], found ) << static_cast< uint32_t >( ch );
        }
    }
}

TEST( CharsetMap, SetsHaveTheirPublishedCharacters )
{
    EXPECT_EQ( "\u20AC\u201C\u017E", decode( QV_CHARSET_MSFT_CP1252, "\x80\x93\x9E" ) );
    EXPECT_EQ( "\u20AC", decode( QV_CHARSET_ISO_8859_15, "\xA4" ) );
    EXPECT_EQ( "\u00A4", decode( QV_CHARSET_ISO_8859_1, "\xA4" ) );
    EXPECT_EQ( "привет", decode( QV_CHARSET_KOI_8R, "\xD0\xD2\xC9\xD7\xC5\xD4" ) );
    EXPECT_EQ( "привет", decode( QV_CHARSET_MSFT_CP1251, "\xEF\xF0\xE8\xE2\xE5\xF2" ) );
    EXPECT_EQ( "привет", decode( QV_CHARSET_MSFT_CP866, "\xAF\xE0\xA8\xA2\xA5\xE2" ) );
    EXPECT_EQ( "ABC 123", decode( QV_CHARSET_MSFT_CP037, "\xC1\xC2\xC3\x40\xF1\xF2\xF3" ) );
    EXPECT_EQ( "\u00E9", decode( QV_CHARSET_MSFT_CP437, "\x82" ) );
    EXPECT_EQ( "αβγ", decode( QV_CHARSET_ISO_8859_7, "\xE1\xE2\xE3" ) );
    EXPECT_EQ( "שלום", decode( QV_CHARSET_ISO_8859_8, "\xF9\xEC\xE5\xED" ) );

    // Sets without a character for some bytes.
    EXPECT_EQ( "\uFFFD", decode( QV_CHARSET_ISO_8859_8, "\xA1" ) );
    EXPECT_EQ( "a\uFFFDb", decode( QV_CHARSET_ASCII, "a\xFF" "b" ) );
    EXPECT_EQ( "ab", decode( QV_CHARSET_ASCII, "a\xFF" "b", QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS ) );
    EXPECT_EQ( "failed", decode( QV_CHARSET_ASCII, "a\xFF" "b", QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ) );
}

TEST( CharsetMap, CharactersWithoutAByteAreReplacedSkippedOrFail )
{
    EXPECT_EQ( "a?b", encode( QV_CHARSET_ASCII, text( U"a\u00E9b" ) ) );
    EXPECT_EQ( "ab", encode( QV_CHARSET_ASCII, text( U"a\u00E9b" ), QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS ) );
    EXPECT_EQ( "failed", encode( QV_CHARSET_ASCII, text( U"a\u00E9b" ), QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ) );
    EXPECT_EQ( "\x6F", encode( QV_CHARSET_MSFT_CP037, text( U"\u4E2D" ) ) ); // its own question mark
}

TEST( CharsetMap, LettersComposeWithTheirMarksAlsoAcrossWrites )
{
    EXPECT_EQ( "\xE9", encode( QV_CHARSET_ISO_8859_1, text( U"e\u0301" ) ) );
    EXPECT_EQ( "", encode( QV_CHARSET_ISO_8859_1, text( U"" ) ) );

    Ref< QV_BUFFER_BYTE_SINK > bytes( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        byteSink( qvBufferByteSinkByteSink( bytes ) );
    Ref< QV_CHAR_SINK >        sink( qvCharsetCreateCharSink( byteSink, QV_CHARSET_ISO_8859_1, 0 ) );
    std::string                expected;

    // Across the 1024 bytes that the sink caches, too.
    for( int i = 0; i < 1500; i++ )
    {
        EXPECT_TRUE( qvCharSinkWriteChar( sink, U'o' ) );
        EXPECT_TRUE( qvCharSinkWriteChar( sink, 0x308 ) );
        expected += '\xF6';
    }

    EXPECT_TRUE( qvCharSinkFlush( sink ) );
    EXPECT_EQ( expected, contentOf( qvBufferByteSinkBuffer( bytes ) ) );
}

TEST( CharsetMap, TheLastTwoCharactersAreHeldBack )
{
    // What is behind them is in the cache, which goes down when it is full.
    for( int length : { 1, 3, 1025, 1026, 1027, 2049, 2050, 2051 } )
    {
        Ref< QV_BUFFER_BYTE_SINK > bytes( qvBufferByteSinkCreate() );
        Ref< QV_BYTE_SINK >        byteSink( qvBufferByteSinkByteSink( bytes ) );
        Ref< QV_CHAR_SINK >        sink( qvCharsetCreateCharSink( byteSink, QV_CHARSET_ISO_8859_1, 0 ) );
        Ref< QV_STRING >           plain = text( std::u32string( static_cast< size_t >( length ), U'o' ) );

        EXPECT_TRUE( qvCharSinkWrite( sink, plain ) );
        size_t down = contentOf( qvBufferByteSinkBuffer( bytes ) ).size();
        EXPECT_EQ( std::max( length - 2, 0 ) / 1024 * 1024, static_cast< int >( down ) ) << length;

        EXPECT_TRUE( qvCharSinkWriteChar( sink, 0x308 ) );
        EXPECT_TRUE( qvCharSinkFlush( sink ) );
        EXPECT_EQ( std::string( static_cast< size_t >( length ) - down - 1, 'o' ) + '\xF6',
                   contentOf( qvBufferByteSinkBuffer( bytes ) ) ) << length;
    }

    // So it takes the flush to see that one of them has no byte.
    Ref< QV_BUFFER_BYTE_SINK > bytes( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        byteSink( qvBufferByteSinkByteSink( bytes ) );
    Ref< QV_CHAR_SINK >        sink(
        qvCharsetCreateCharSink( byteSink, QV_CHARSET_ASCII, QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ) );
    Ref< QV_STRING > accented = text( U"abc\u00E9d" );
    EXPECT_TRUE( qvCharSinkWrite( sink, accented ) );
    EXPECT_FALSE( qvCharSinkFlush( sink ) );
}

TEST( CharsetMap, LongTextsGoBothWays )
{
    std::string bytes, again;

    for( int i = 0; i < 5000; i++ )
        bytes += static_cast< char >( 0x20 + i * 7 % 0x5F );

    Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );

    for( QV_INT charset = 0; charset <= QV_CHARSET_MSFT_CP1258; charset++ )
    {
        Ref< QV_STRING > qvs( qvCharsetBufferToString( charset, buf ) );
        ASSERT_EQ( 5000, qvStringLength( qvs ) );

        if( qvStringFindChar( qvs, 0, 0xFFFD ) >= 0 )
            continue;

        EXPECT_EQ( bytes, encode( charset, qvs ) ) << charset;
    }
}

// Whatever way a text is cut into writes, it gives the bytes of its composed form.
TEST( CharsetMap, TextIsComposedAndMappedHoweverItIsCut )
{
    const std::u32string KINDS[] = { U"the quick brown fox", U"aeiouAEO", U"\u0300\u0301\u0302\u0308\u0323", U"éüßÿ",
                                     U"привет, йод",  U"αβγώ", U"\u1100\u1161\u11A8\uAC00", U"\u20AC\u2019\u4E2D", U"\x1F600",
                                     U"quotes \u2018\u2019", U"a\u2000\u2001\u2002\u20CF\u20D0\u02FF" };
    const QV_INT         FLAGS[] = { 0, QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS };
    std::mt19937         random( 82 );

    for( int round = 0; round < 400; round++ )
    {
        std::u32string all;

        for( size_t runs = random() % 40; runs > 0; runs-- )
        {
            const std::u32string &kind = KINDS[random() % ( round % 2 ? 3 : std::size( KINDS ) )];

            for( size_t count = random() % ( random() % 8 ? 20 : 1500 ); count > 0; count-- )
                all += kind[random() % kind.size()];
        }

        QV_INT                       charset = random() % std::size( MAPS ), flags = FLAGS[round / 2 % 2];
        Ref< QV_UNICODE_NORMALIZER > norm( qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC ) );
        Ref< QV_BUFFER_BYTE_SINK >   bytes( qvBufferByteSinkCreate() );
        Ref< QV_BYTE_SINK >          byteSink( qvBufferByteSinkByteSink( bytes ) );
        Ref< QV_CHAR_SINK >          sink( qvCharsetCreateCharSink( byteSink, charset, flags ) );

        for( size_t at = 0; at < all.size(); )
        {
            size_t count = std::min( all.size() - at, size_t( random() % 4 ? random() % 12 : random() % 3000 ) );
            EXPECT_TRUE( qvCharSinkWriteChars( sink, all.data() + at, static_cast< QV_INT >( count ) ) );
            at += count;
        }

        EXPECT_TRUE( qvCharSinkFlush( sink ) );

        std::u32string composed( all.size() * 4 + 1, U' ' );
        qvUnicodeNormalizerWriteChars( norm, all.data(), static_cast< QV_INT >( all.size() ) );
        qvUnicodeNormalizerFlush( norm );
        composed.resize( static_cast< size_t >(
            qvUnicodeNormalizerReadChars( norm, composed.data(), static_cast< QV_INT >( composed.size() ) ) ) );

        uint8_t     byte, replacement;
        std::string expected;
        ASSERT_TRUE( MAPS[charset].charToByte( U'?', &replacement ) );

        for( QV_CHAR ch : composed )
            if( MAPS[charset].charToByte( ch, &byte ) || ( byte = replacement, flags == 0 ) )
                expected += static_cast< char >( byte );

        ASSERT_EQ( expected, contentOf( qvBufferByteSinkBuffer( bytes ) ) ) << MAPS[charset].name << " " << round;
    }
}

TEST( CharsetMap, BytesAreMappedHoweverTheyAreRead )
{
    std::mt19937 random( 83 );

    for( int round = 0; round < 200; round++ )
    {
        std::string bytes( random() % 5000, ' ' );

        for( char &byte : bytes )
            byte = static_cast< char >( random() );

        QV_INT         charset = random() % std::size( MAPS );
        bool           skips   = random() % 2;
        std::u32string expected, got;
        QV_CHAR        ch;

        for( char byte : bytes )
            if( MAPS[charset].byteToChar( static_cast< uint8_t >( byte ), &ch ) || ( ch = 0xFFFD, !skips ) )
                expected += ch;

        Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );
        QV_INT           flags = skips ? QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS : 0;
        Ref< QV_STRING > whole( qvCharsetBufferToStringWithFlags( charset, buf, flags ) );
        Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( buf ) );
        Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( bbs ) );
        Ref< QV_CHAR_SOURCE >        source( qvCharsetCreateCharSource( byteSource, charset, flags ) );

        while( !qvCharSourceEnd( source ) )
        {
            QV_CHAR array[1500];
            QV_INT  limit = 1 + random() % ( random() % 4 ? 30 : 1500 );
            got.append( array, static_cast< size_t >( qvCharSourceReadChars( source, array, limit ) ) );
        }

        ASSERT_EQ( expected, chars( whole ) ) << MAPS[charset].name;
        ASSERT_EQ( expected, got ) << MAPS[charset].name;
        EXPECT_GE( ( static_cast< QV_INT >( expected.size() ) + 128 ) * 4, allocated( whole.get() ) );
    }
}

TEST( CharsetMap, ReadingNothingLeavesNoRoomBehind )
{
    std::string      bytes( 3000, '\xFF' );
    Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( bytes.data(), 3000 ) );
    Ref< QV_STRING > qvs( qvCharsetBufferToStringWithFlags(
        QV_CHARSET_ASCII, buf, QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS ) );

    EXPECT_EQ( 0, qvStringLength( qvs ) );
    EXPECT_GE( 128 * 4, allocated( qvs.get() ) );
}
