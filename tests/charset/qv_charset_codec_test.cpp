// What the walks beside models of all charsets leave open.

#include "qv_test_stream.h"
#include "qv_test_utf8.h"

#include "qv/base/qv_string_private.h"
#include "qv/charset/qv_charset.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/sys/qv_vectors_private.h"

#include <algorithm>
#include <map>
#include <random>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT IGNORE = QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS;

const struct Map
{
    const char                    *name;
    QV___CHARSET_BYTE_TO_CHAR_FUNC byteToChar;
    QV___CHARSET_CHAR_TO_BYTE_FUNC charToByte;
} MAPS[] = {
#define MAP( Name ) { #Name, qv___Charset##Name##MapByteToChar, qv___Charset##Name##MapCharToByte },
    QV___CHARSET_MAPS( MAP )
#undef MAP
};

// What comes of a conversion, and whether it fails.
typedef std::pair< std::u32string, bool > Decoded;
typedef std::pair< std::string, bool >    Encoded;

Decoded decode( QV_INT charset, std::string_view from, QV_INT flags = 0, QV_INT piece = -1 )
{
    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( buffer( from ) ) );
    Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( bbs ) );
    Ref< QV_CHAR_SOURCE >        source( qvCharsetCreateCharSource( byteSource, charset, flags ) );
    Ref< QV_STRING >             qvs( qvStringCreate() );

    while( !qvCharSourceEnd( source ) )
        qvCharSourceRead( source, qvs.at(), piece );

    EXPECT_GE( ( qvStringLength( qvs ) + 128 ) * 4, allocated( qvs.get() ) ); // no more free places than any String has
    return { qv::test::chars( qvs ), qvCharSourceError( source ) };
}

Encoded encode( QV_INT charset, const std::u32string &values, QV_INT flags = 0, QV_INT piece = QV_INT_MAX )
{
    SinkLog< Bytes >    log;
    Ref< QV_BYTE_SINK > byteSink = log.sink();
    Ref< QV_CHAR_SINK > sink( qvCharsetCreateCharSink( byteSink, charset, flags ) );
    QV_INT              length = static_cast< QV_INT >( values.size() );

    // A String of any values, which no caller can make: a sink has to be safe from them all the same.
    Ref< QV_STRING > qvs = text( std::u32string( values.size(), U'x' ) );
    std::copy( values.begin(), values.end(), qv::chars( qvs ) );

    for( QV_INT at = 0; at < length; at += std::min( length - at, piece ) )
        qvCharSinkWriteInner( sink, qvs, at, std::min( length - at, piece ) );

    return { log.written, !qvCharSinkFlush( sink ) };
}
} // namespace

// Over the ends of caches, with faults and values that no character has; the walks hold the plain kernel against models.
TEST( Codec, EveryKernelGivesTheSame )
{
    const uint32_t BORDERS[] = { 0, 0x80, 0x800, 0x10000, 0x110000, 0xFFFFFFFF };
    std::mt19937   random( 8 );

    for( int round = 0; round < 500; round++ )
    {
        std::u32string values;
        std::string    from;
        QV_INT         flags = random() % 16, piece = 1 + random() % ( random() % 2 ? 20 : 1500 );

        for( unsigned runs = random() % 12; runs > 0; runs-- )
            for( unsigned kind = random() % ( round % 3 ? 4 : 5 ), count = random() % ( random() % 4 ? 20 : 700 );
                 count > 0; count-- )
            {
                values += static_cast< char32_t >( BORDERS[kind] + random() % ( BORDERS[kind + 1] - BORDERS[kind] ) );
                from += round % 2 && random() % 50 == 0 ? std::string( 1, static_cast< char >( random() ) )
                                                        : encodedUtf8( values.back() );
            }

        qv___VectorsForceKernel( qv::vectors::PLAIN );
        Decoded decoded = decode( QV_CHARSET_UTF_8, from, flags, 1 );
        Encoded encoded = encode( QV_CHARSET_UTF_8, values, flags, 1 );

        for( QV_INT kernel :
             { qv::vectors::PLAIN, qv::vectors::VECTORS_16, qv::vectors::VECTORS_32, qv::vectors::VECTORS_64 } )
        {
            qv___VectorsForceKernel( kernel );
            Ref< QV_STRING > whole( qvCharsetBufferToStringWithFlags( QV_CHARSET_UTF_8, buffer( from ), flags ) );
            Encoded          again = encode( QV_CHARSET_UTF_8, values, flags, piece );

            ASSERT_TRUE( decoded.second ? !whole : decoded.first == qv::test::chars( whole ) ) << round;
            ASSERT_EQ( decoded, decode( QV_CHARSET_UTF_8, from, flags, piece ) ) << round;
            ASSERT_EQ( encoded.second, again.second ) << round;
            ASSERT_TRUE( encoded.second || encoded.first == again.first ) << round; // else its cache stays with it
        }
    }

    qv___VectorsForceKernel( -1 );
}

// Runs long enough that the vectors learn where a text is, which changes, with characters that have no byte or compose.
TEST( Codec, EveryKernelFindsTheSameBytes )
{
    const uint32_t RANGES[][2] = { { 0, 0x80 },        { 0x80, 0x180 },       { 0x300, 0x330 },   { 0x370, 0x400 },
                                   { 0x400, 0x480 },   { 0x2010, 0x2030 },    { 0x2500, 0x25A0 }, { 0x7F80, 0x8000 },
                                   { 0xFE80, 0xFF00 }, { 0x10FFFF, 0x110001 } };
    std::mt19937   random( 9 );
    auto           below = [&]( size_t bound ) { return static_cast< unsigned >( random() % bound ); };

    for( QV_INT charset :
         { QV_CHARSET_ISO_8859_2, QV_CHARSET_ISO_8859_7, QV_CHARSET_KOI_8R, QV_CHARSET_MSFT_CP037,
           QV_CHARSET_MSFT_CP437, QV_CHARSET_MSFT_CP864, QV_CHARSET_MSFT_CP1258 } )
        for( int round = 0; round < 40; round++ )
        {
            std::u32string values;
            unsigned       usual = below( std::size( RANGES ) ), rare = below( 40 );
            QV_INT         piece = 1 + below( round % 2 ? 3000 : 60 );

            for( unsigned size = below( 5000 ); values.size() < size; )
            {
                unsigned kind = below( 100 ) < rare ? below( std::size( RANGES ) ) : below( 4 ) ? usual : 0;

                for( unsigned count = 1 + below( below( 9 ) ? 10 : 400 ); count > 0; count-- )
                    values += RANGES[kind][0] + below( RANGES[kind][1] - RANGES[kind][0] );
            }

            qv___VectorsForceKernel( qv::vectors::PLAIN );
            Encoded encoded = encode( charset, values, 0, 1 );

            for( QV_INT kernel : { qv::vectors::VECTORS_16, qv::vectors::VECTORS_32, qv::vectors::VECTORS_64 } )
            {
                qv___VectorsForceKernel( kernel );
                ASSERT_EQ( encoded, encode( charset, values, 0, piece ) ) << charset << " " << round;
            }
        }

    qv___VectorsForceKernel( -1 );
}

namespace
{
int probes =
    0; // how often the byte of U+00FF was asked for, which is in no text: once for each time its block is learnt

// ASCII and 128 Cyrillic characters, so that nothing else of the first blocks has a byte.
QV_BOOL mapCyrillic( QV_CHAR ch, uint8_t *byte )
{
    probes += ch == 0xFF;
    *byte = static_cast< uint8_t >( ch < 0x80 ? ch : 0x80 | ch );

    return ch < 0x80 || ch >> 7 == 8 ? QV_TRUE : QV_FALSE;
}
} // namespace

// A block is learnt once, however often its characters turn out to have no byte, and does not take the place of letters.
TEST( Codec, BlocksWithoutBytesAreLearntOnce )
{
    std::u32string values;
    std::string    expected;

    for( int i = 0; i < 20000; i++ )
    {
        values += i % 60 == 0 ? U'\xAB' : 0x410 + i % 64;
        expected += i % 60 == 0 ? '?' : static_cast< char >( 0x80 | values.back() );
    }

    SinkLog< Bytes >    log;
    Ref< QV_BYTE_SINK > byteSink = log.sink();
    Ref< QV_CHAR_SINK > sink( qv___CharsetMapCharSinkCreate( byteSink, 0, mapCyrillic ) );
    probes = 0;

    EXPECT_TRUE( qvCharSinkWrite( sink, text( values ) ) );
    EXPECT_TRUE( qvCharSinkFlush( sink ) );
    EXPECT_EQ( expected, log.written );
    EXPECT_EQ( qv___VectorsForceKernel( -1 ) == qv::vectors::VECTORS_64 ? 1 : 0, probes );
}

// The walks ask the tables of single bytes themselves, and write no values that no character has.
TEST( Codec, ExamplesComeOutAsTheyShould )
{
    const struct
    {
        QV_INT         charset;
        std::string    from;
        std::u32string expected;
    } SOURCES[] = {
        { QV_CHARSET_MSFT_CP1252, "\x80\x93\x9E", U"\u20AC\u201C\u017E" },
        { QV_CHARSET_ISO_8859_15, "\xA4", U"\u20AC" },
        { QV_CHARSET_MSFT_CP037, "\xC1\xC2\xC3\x40\xF1\xF2\xF3", U"ABC 123" },
        { QV_CHARSET_ISO_8859_7, "\xE1\xE2\xE3", U"αβγ" },
        { QV_CHARSET_ISO_8859_8, "\xF9\xEC\xE5\xED\xA1", U"שלום\uFFFD" },
    };

    for( const auto &c : SOURCES )
        EXPECT_EQ( Decoded( c.expected, false ), decode( c.charset, c.from ) ) << &c - SOURCES;

    const std::u32string NONE( 1, U'\x80000301' ), RUN( 63, U'x' );
    EXPECT_EQ( Encoded( std::string( 126, 'x' ), false ), encode( QV_CHARSET_UTF_8, RUN + NONE + RUN, IGNORE ) );
    EXPECT_EQ( Encoded( "ae??b", false ), encode( QV_CHARSET_ISO_8859_1, U"ae" + NONE + U"\u0301b" ) );
    EXPECT_EQ( Encoded( "\x6F", false ), encode( QV_CHARSET_MSFT_CP037, U"\u4E2D" ) ); // its own question mark
}

TEST( Codec, CharactersMapToTheirLowestByteAndNothingElseDoes )
{
    ASSERT_EQ( 44u, std::size( MAPS ) );

    for( const Map &map : MAPS )
    {
        std::map< QV_CHAR, int > lowest;
        QV_CHAR                  ch;
        uint8_t                  byte;

        for( int each = 255; each >= 0; each-- )
            if( map.byteToChar( static_cast< uint8_t >( each ), &ch ) )
                lowest[ch] = each;

        for( ch = 0; ch < 0x110000; ch++ )
            if( map.charToByte( ch, &byte ) )
            {
                ASSERT_EQ( lowest[ch], byte ) << map.name << " " << static_cast< uint32_t >( ch );
                lowest.erase( ch );
            }

        EXPECT_TRUE( lowest.empty() ) << map.name;
    }
}

TEST( Codec, FailuresBelowComeAfterWhatWentWell )
{
    for( QV_INT charset : { QV_CHARSET_ASCII, QV_CHARSET_UTF_8, QV_CHARSET_UTF_16_BE, QV_CHARSET_UTF_32_BE } )
    {
        SourceLog< Bytes >    from{ .data = encode( charset, U"good" ).first, .fails = true };
        Ref< QV_BYTE_SOURCE > byteSource = from.source();
        Ref< QV_CHAR_SOURCE > source( qvCharsetCreateCharSource( byteSource, charset, 0 ) );
        Ref< QV_STRING >      qvs( qvStringCreate() );
        EXPECT_EQ( 4, qvCharSourceRead( source, qvs.at(), -1 ) );
        EXPECT_EQ( "good", utf8( qvs ) );
        EXPECT_TRUE( qvCharSourceError( source ) );
    }
}
