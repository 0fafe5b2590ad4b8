// What the walks beside models of all charsets leave open.

#include "qv_test_stream.h"
#include "qv_test_utf8.h"

#include "qv/base/qv_string_private.h"
#include "qv/charset/qv_charset.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/io/qv_buffer_byte_sink.h"
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

// What a conversion gives, and whether it fails.
template< class Text >
struct Result
{
    Text text   = {};
    bool failed = false;

    bool operator==( const Result & ) const = default;

    friend void PrintTo( const Result &result, std::ostream *out )
    {
        *out << testing::PrintToString( result.text ) << ( result.failed ? " and failed" : "" );
    }
};

typedef Result< std::u32string > Decoded;
typedef Result< std::string >    Encoded;

Decoded decode( QV_INT charset, std::string_view from, QV_INT flags = 0, QV_INT piece = -1 )
{
    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( buffer( from ) ) );
    Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( bbs ) );
    Ref< QV_CHAR_SOURCE >        source( qvCharsetCreateCharSource( byteSource, charset, flags ) );
    Ref< QV_STRING >             qvs( qvStringCreate() );

    while( !qvCharSourceEnd( source ) )
        qvCharSourceRead( source, qvs.at(), piece );

    EXPECT_GE( ( qvStringLength( qvs ) + 128 ) * 4, allocated( qvs.get() ) ); // no more free places than any String has
    return { qv::test::chars( qvs ), qvCharSourceError( source ) == QV_TRUE };
}

// A String of any values, which no caller can make: what a sink has to be safe from all the same.
Ref< QV_STRING > anyText( const std::u32string &values )
{
    Ref< QV_STRING > qvs = text( std::u32string( values.size(), U'x' ) );
    std::copy( values.begin(), values.end(), qv::chars( qvs ) );

    return qvs;
}

Encoded encode( QV_INT charset, const std::u32string &values, QV_INT flags = 0, QV_INT piece = QV_INT_MAX )
{
    Ref< QV_BUFFER_BYTE_SINK > bbs( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        byteSink( qvBufferByteSinkByteSink( bbs ) );
    Ref< QV_CHAR_SINK >        sink( qvCharsetCreateCharSink( byteSink, charset, flags ) );
    Ref< QV_STRING >           qvs    = anyText( values );
    QV_INT                     length = static_cast< QV_INT >( values.size() );

    for( QV_INT at = 0; at < length; at += std::min( length - at, piece ) )
        qvCharSinkWriteInner( sink, qvs, at, std::min( length - at, piece ) );

    qvCharSinkFlush( sink );
    bool failed = qvCharSinkError( sink );
    sink.reset();

    return { bytes( Ref< QV_BUFFER >( qvBufferByteSinkBuffer( bbs ) ) ), failed };
}
} // namespace

// Over the ends of caches, with faults and values that no character has; what single pieces of the plain kernel give is
// held against models elsewhere.
TEST( Codec, EveryKernelGivesTheSame )
{
    const uint32_t FIRST[] = { 0, 0x80, 0x800, 0x10000, 0x110000 };
    const uint32_t LAST[]  = { 0x7F, 0x7FF, 0xFFFF, 0x10FFFF, 0xFFFFFFFF };
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
                values += std::uniform_int_distribution< uint32_t >( FIRST[kind], LAST[kind] )( random );
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

            ASSERT_TRUE( decoded.failed ? !whole : decoded.text == qv::test::chars( whole ) ) << round;
            ASSERT_EQ( decoded, decode( QV_CHARSET_UTF_8, from, flags, piece ) ) << round;
            ASSERT_EQ( encoded.failed, again.failed ) << round;
            ASSERT_TRUE( encoded.failed || encoded.text == again.text ) << round; // else its cache stays with it
        }
    }

    qv___VectorsForceKernel( -1 );
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
        { QV_CHARSET_KOI_8R, "\xD0\xD2\xC9\xD7\xC5\xD4", U"привет" },
        { QV_CHARSET_MSFT_CP037, "\xC1\xC2\xC3\x40\xF1\xF2\xF3", U"ABC 123" },
        { QV_CHARSET_MSFT_CP437, "\x82", U"\u00E9" },
        { QV_CHARSET_ISO_8859_7, "\xE1\xE2\xE3", U"αβγ" },
        { QV_CHARSET_ISO_8859_8, "\xF9\xEC\xE5\xED\xA1", U"שלום\uFFFD" },
    };

    for( const auto &c : SOURCES )
        EXPECT_EQ( Decoded{ c.expected }, decode( c.charset, c.from ) ) << &c - SOURCES;

    const std::u32string NONE( 1, U'\x80000301' ), RUN( 63, U'x' );
    EXPECT_EQ( Encoded{ std::string( 126, 'x' ) }, encode( QV_CHARSET_UTF_8, RUN + NONE + RUN, IGNORE ) );
    EXPECT_EQ( Encoded{ "ae??b" }, encode( QV_CHARSET_ISO_8859_1, U"ae" + NONE + U"\u0301b" ) );
    EXPECT_EQ( Encoded{ "\x6F" }, encode( QV_CHARSET_MSFT_CP037, U"\u4E2D" ) ); // its own question mark
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

TEST( Codec, FailuresBelowComeBehindWhatWentWell )
{
    for( QV_INT charset : { QV_CHARSET_ASCII, QV_CHARSET_UTF_8, QV_CHARSET_UTF_16_BE, QV_CHARSET_UTF_32_BE } )
    {
        SourceLog< Bytes >    from{ .data = encode( charset, U"good" ).text, .fails = true };
        Ref< QV_BYTE_SOURCE > byteSource = from.source();
        Ref< QV_CHAR_SOURCE > source( qvCharsetCreateCharSource( byteSource, charset, 0 ) );
        Ref< QV_STRING >      qvs( qvStringCreate() );

        EXPECT_EQ( 4, qvCharSourceRead( source, qvs.at(), -1 ) );
        EXPECT_TRUE( qvCharSourceError( source ) );
        EXPECT_EQ( "good", utf8( qvs ) );

        SinkLog< Bytes > to;
        to.callsUntilFailure         = 1;
        Ref< QV_BYTE_SINK > byteSink = to.sink();
        Ref< QV_CHAR_SINK > sink( qvCharsetCreateCharSink( byteSink, charset, 0 ) );

        EXPECT_FALSE( qvCharSinkWrite( sink, text( std::u32string( 5000, U'x' ) ) ) );
        EXPECT_FALSE( qvCharSinkFlush( sink ) );
        EXPECT_EQ( "ww", to.calls );
        EXPECT_LE( 1020u, to.written.size() );
    }
}

TEST( Codec, SinksHandDownTheirCacheWhenItIsFull )
{
    const struct
    {
        QV_INT         charset;
        std::u32string values;
        std::string    lengths;
    } CASES[] = {
        // A character goes over as a whole; the last cache stays until the flush.
        { QV_CHARSET_UTF_8, std::u32string( 1024, U'x' ), "1024 " },
        { QV_CHARSET_UTF_8, std::u32string( 2049, U'x' ), "1024 1024 1 " },
        { QV_CHARSET_UTF_8, std::u32string( 400, U'\u20AC' ), "1023 177 " },
        { QV_CHARSET_UTF_8, std::u32string( 1022, U'x' ) + U"\u20AC", "1022 3 " },
        { QV_CHARSET_UTF_8, std::u32string( 1021, U'x' ) + U"\u20AC", "1024 " },
        { QV_CHARSET_UTF_16_BE, std::u32string( 511, U'x' ), "1020 2 " },
        { QV_CHARSET_UTF_16_BE, std::u32string( 300, U'\U0001F600' ) + U"x", "1020 182 " },
        { QV_CHARSET_UTF_32_BE, std::u32string( 257, U'x' ), "1024 4 " },
        { QV_CHARSET_ISO_8859_1, std::u32string( 1026, U'x' ), "1024 2 " },
    };

    for( const auto &c : CASES )
    {
        std::string lengths;
        auto        write = []( QV_OBJ *closure, QV_BUFFER *, QV_INT, QV_INT count ) -> QV_BOOL
        {
            *logOf< std::string >( closure ) += std::to_string( count ) + " ";
            return QV_TRUE;
        };
        auto flush = []( QV_OBJ *closure ) -> QV_BOOL
        {
            *logOf< std::string >( closure ) += "flushed";
            return QV_TRUE;
        };

        Ref< QV_BYTE_SINK > byteSink( qv___ByteSinkCreate( write, flush, qv::obj( closureOf( &lengths ).get() ) ) );
        Ref< QV_CHAR_SINK > sink( qvCharsetCreateCharSink( byteSink, c.charset, 0 ) );

        // Flushing reaches the cache, but not the byte sink, which is flushed when it ends.
        EXPECT_TRUE( qvCharSinkWrite( sink, text( c.values ) ) );
        EXPECT_TRUE( qvCharSinkFlush( sink ) );
        EXPECT_EQ( c.lengths, lengths );
        sink.reset();
        byteSink.reset();
        EXPECT_EQ( c.lengths + "flushed", lengths );
    }
}
