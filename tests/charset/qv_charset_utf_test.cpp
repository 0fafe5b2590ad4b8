#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_source.h"

#include <algorithm>
#include <optional>
#include <random>
#include <vector>

using qv::Ref;
using namespace qv::test;
using namespace std::string_literals;

namespace
{
const QV_INT ABORT  = QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER;
const QV_INT IGNORE = QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS;
const QV_INT KEEP   = QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK;
const QV_INT INSERT = QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK;

const std::vector< QV_INT > UTFS = { QV_CHARSET_UTF_8,  QV_CHARSET_UTF_16,    QV_CHARSET_UTF_16_BE, QV_CHARSET_UTF_16_LE,
                                     QV_CHARSET_UTF_32, QV_CHARSET_UTF_32_BE, QV_CHARSET_UTF_32_LE };

struct Decoded
{
    std::u32string text;
    bool           failed = false;

    bool operator==( const Decoded & ) const = default;
};

void PrintTo( const Decoded &decoded, std::ostream *out )
{
    *out << testing::PrintToString( decoded.text ) << ( decoded.failed ? " and failed" : "" );
}

Ref< QV_CHAR_SOURCE > source( QV_INT charset, std::string_view bytes, QV_INT flags )
{
    Ref< QV_BUFFER >             buffer( qvBufferCreateFromBytesCopy( bytes.data(), (QV_INT)bytes.size() ) );
    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( buffer ) );
    Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( bbs ) );

    return Ref< QV_CHAR_SOURCE >( qvCharsetCreateCharSource( byteSource, charset, flags ) );
}

Decoded decode( QV_INT charset, std::string_view bytes, QV_INT flags = 0 )
{
    Ref< QV_CHAR_SOURCE > chars = source( charset, bytes, flags );
    Ref< QV_STRING >      qvs( qvStringCreate() );

    while( !qvCharSourceEnd( chars ) )
        qvCharSourceRead( chars, qvs.at(), -1 );

    return { qv::test::chars( qvs ), (bool)qvCharSourceError( chars ) };
}

// By pieces of random length, through either kind of read.
Decoded decodeInPieces( QV_INT charset, std::string_view bytes, QV_INT flags, std::mt19937 &random )
{
    Ref< QV_CHAR_SOURCE > chars = source( charset, bytes, flags );
    Ref< QV_STRING >      qvs( qvStringCreate() );

    while( !qvCharSourceEnd( chars ) )
    {
        QV_INT limit = random() % 3 ? random() % 7 + 1 : random() % 2000 + 1;

        if( random() % 2 )
            qvCharSourceRead( chars, qvs.at(), limit );
        else
        {
            std::u32string piece( limit, U'?' );
            QV_INT         count = qvCharSourceReadChars( chars, piece.data(), limit );
            qvStringAppendChars( qvs.at(), piece.data(), count );
        }
    }

    return { qv::test::chars( qvs ), (bool)qvCharSourceError( chars ) };
}

std::string bytesOf( QV_BUFFER *buffer )
{
    std::string bytes( (size_t)qvBufferLength( buffer ), '\0' );
    qvBufferReadBytes( buffer, 0, bytes.data(), qvBufferLength( buffer ) );
    return bytes;
}

std::string encode( QV_INT charset, std::u32string_view chars, QV_INT flags = 0 )
{
    Ref< QV_BUFFER > buffer( qvCharsetStringToBufferWithFlags( charset, text( chars ), flags ) );
    return bytesOf( buffer );
}

// UTF-8 by the letter of its rules, a byte at a time.
Decoded modelOfUtf8( const std::string &bytes, QV_INT flags )
{
    enum
    {
        OUTSIDE,
        INSIDE,
        RESYNCHRONISING
    } state = OUTSIDE;

    Decoded result;
    bool    first   = true;
    int     missing = 0;
    QV_CHAR value   = 0;

    auto invalid = [&]
    {
        if( flags & ABORT )
            result.failed = true;
        else if( !( flags & IGNORE ) )
        {
            result.text += U'\uFFFD';
            first = false;
        }
    };

    for( uint8_t byte : bytes )
    {
        if( result.failed )
            break;

        if( state == INSIDE )
        {
            if( byte >= 0x80 && byte <= 0xBF )
            {
                value = value * 64 + byte % 64;

                if( --missing == 0 )
                {
                    state = OUTSIDE;

                    if( value >= 0x110000 )
                        invalid();
                    else
                    {
                        if( value != 0xFEFF || !first || ( flags & KEEP ) )
                            result.text += value;

                        first = false;
                    }
                }
            }
            else
            {
                state = RESYNCHRONISING;
                invalid();
            }
        }
        else if( byte < 0x80 )
        {
            state = OUTSIDE;
            first = false;
            result.text += byte;
        }
        else if( byte >= 0xC0 && byte < 0xF8 )
        {
            state   = INSIDE;
            missing = byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : 1;
            value   = byte % ( 32 >> ( missing - 1 ) );
        }
        else if( state == OUTSIDE || byte >= 0xF8 )
        {
            state = RESYNCHRONISING;
            invalid();
        }
    }

    if( state == INSIDE && !result.failed )
        invalid();

    return result;
}

// A byte source that fails behind its bytes, and a byte sink that fails from a given write on.
QV_BOOL readThenFail( QV_OBJ *closure, QV_BUFFER **buffer, QV_INT maxByteCount, QV_INT *bytesRead )
{
    QV_BUFFER *rest = reinterpret_cast< QV_BUFFER * >( closure );
    QV_INT     left = qvBufferLength( rest ) - qvBufferLength( *buffer );

    *bytesRead = std::min( left, maxByteCount );
    qvBufferAppendInner( buffer, rest, 0, *bytesRead );

    return QV_FALSE;
}

std::vector< std::string > written;
size_t                     writesThatWork;

QV_BOOL noteWrite( QV_OBJ *, QV_BUFFER *buffer, QV_INT byteOffset, QV_INT byteCount )
{
    if( written.size() == writesThatWork )
        return QV_FALSE;

    written.push_back( bytesOf( buffer ).substr( (size_t)byteOffset, (size_t)byteCount ) );
    return QV_TRUE;
}

QV_BOOL noteFlush( QV_OBJ * )
{
    written.push_back( "flushed" );
    return QV_TRUE;
}
} // namespace

TEST( Utf8, InvalidBytes )
{
    struct
    {
        std::string    bytes;
        std::u32string replaced, ignored;
        bool           fails = true;
    } cases[] = {
        { "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", U"A\u00E9\u20AC\U0001F600", U"A\u00E9\u20AC\U0001F600", false },
        { "\xE2"s "AB", U"\uFFFD"s U"B", U"B" },                     // what breaks a sequence goes with it
        { "\xE2\xC3\xA9"s "A", U"\uFFFD"s U"A", U"A" },              // a lead byte too
        { "\x80\x80"s "A", U"\uFFFD"s U"A", U"A" },                  // one for a run
        { "\xFF\x80\xFE"s "A", U"\uFFFD\uFFFD"s U"A", U"A" },        // these are invalid every time
        { "\xFF\xC3\xA9", U"\uFFFD\u00E9", U"\u00E9" },
        { "A\xE2\x82", U"A\uFFFD", U"A" },                           // cut
        { "\xC3", U"\uFFFD", U"" },
        { "\xF4\x8F\xBF\xBF", U"\U0010FFFF", U"\U0010FFFF", false },
        { "\xF4\x90\x80\x80"s "A", U"\uFFFD"s U"A", U"A" },          // too great
        { "\xF7\xBF\xBF\xBF\xBF"s "A", U"\uFFFD\uFFFD"s U"A", U"A" },
        { "\xC0\x80\xED\xA0\x80", { 0, 0xD800 }, { 0, 0xD800 }, false }, // overlong forms and surrogates pass
        { "\xF0\x80\x80\xC1", U"\uFFFD", U"" },
    };

    for( auto &each : cases )
    {
        // Behind a character the fast path is at work, and behind many it meets its end.
        for( size_t before : { 0, 1, 40, 1018 } )
        {
            std::string    bytes  = std::string( before, '-' ) + each.bytes;
            std::u32string prefix = std::u32string( before, U'-' );

            EXPECT_EQ( ( Decoded { prefix + each.replaced } ), decode( QV_CHARSET_UTF_8, bytes ) );
            EXPECT_EQ( ( Decoded { prefix + each.ignored } ), decode( QV_CHARSET_UTF_8, bytes, IGNORE ) );
            EXPECT_EQ( each.fails, decode( QV_CHARSET_UTF_8, bytes, ABORT ).failed );
        }
    }

    // What came before the failure is delivered.
    EXPECT_EQ( ( Decoded { U"A\u00E9", true } ), decode( QV_CHARSET_UTF_8, "A\xC3\xA9\xFFzz", ABORT ) );
}

TEST( Utf8, ByteOrderMarkCountsOnlyInFrontOfEverything )
{
    EXPECT_EQ( ( Decoded { U"A" } ), decode( QV_CHARSET_UTF_8, "\xEF\xBB\xBF"s "A" ) );
    EXPECT_EQ( ( Decoded { U"\uFEFFA" } ), decode( QV_CHARSET_UTF_8, "\xEF\xBB\xBF"s "A", KEEP ) );
    EXPECT_EQ( ( Decoded { U"\uFEFFA" } ), decode( QV_CHARSET_UTF_8, "\xEF\xBB\xBF\xEF\xBB\xBF"s "A" ) );
    EXPECT_EQ( ( Decoded { U"A\uFEFF" } ), decode( QV_CHARSET_UTF_8, "A\xEF\xBB\xBF" ) );
    EXPECT_EQ( ( Decoded { U"\uFFFD\uFEFF" } ), decode( QV_CHARSET_UTF_8, "\xFF\xEF\xBB\xBF" ) );
    EXPECT_EQ( ( Decoded { U"A" } ), decode( QV_CHARSET_UTF_8, "\xFF\xEF\xBB\xBF"s "A", IGNORE ) );
    EXPECT_EQ( ( Decoded {} ), decode( QV_CHARSET_UTF_8, "\xEF\xBB\xBF" ) );
}

TEST( Utf8, RandomBytesDecodeAsTheRulesSay )
{
    const std::string PIECES[] = { "\xEF\xBB\xBF", "\xC3\xA9",         "\xE2\x82\xAC",     "\xF0\x9F\x98\x80", "\xF4\x90\x80\x80",
                                   "\xED\xA0\x80", "\xC0\x80",         "plain text of 23 bytes ",
                                   "\xD0\xB4\xD0\xB0\xD1\x82\xD0\xB0", "\xE6\x96\x87\xE5\xAD\x97" };
    std::mt19937      random( 8 );

    for( int round = 0; round < 3000; round++ )
    {
        std::string bytes;
        bool        dirty = random() % 2;

        for( unsigned i = random() % ( round % 10 ? 20 : 400 ); i > 0; i-- )
        {
            if( dirty && random() % 4 == 0 )
                bytes += (char)random();
            else
                bytes += PIECES[random() % std::size( PIECES )];
        }

        QV_INT  flags    = random() % 8;
        Decoded expected = modelOfUtf8( bytes, qvCharsetFlagsNormalize( flags ) );

        ASSERT_EQ( expected, decode( QV_CHARSET_UTF_8, bytes, flags ) ) << "round " << round;
        ASSERT_EQ( expected, decodeInPieces( QV_CHARSET_UTF_8, bytes, flags, random ) ) << "round " << round;
    }
}

TEST( Utf16, ByteOrders )
{
    EXPECT_EQ( ( Decoded { U"A" } ), decode( QV_CHARSET_UTF_16, "A\0"s ) );
    EXPECT_EQ( ( Decoded { U"A" } ), decode( QV_CHARSET_UTF_16, "\xFF\xFE"s "A\0"s ) );
    EXPECT_EQ( ( Decoded { U"A" } ), decode( QV_CHARSET_UTF_16, "\xFE\xFF\0A"s ) );
    EXPECT_EQ( ( Decoded { U"\uFFFE\u4100" } ), decode( QV_CHARSET_UTF_16, "\xFE\xFF\0A"s, KEEP ) );
    EXPECT_EQ( ( Decoded { U"A\uFEFF\uFFFE" } ), decode( QV_CHARSET_UTF_16, "A\0\xFF\xFE\xFE\xFF"s ) );
    EXPECT_EQ( ( Decoded { U"\uFEFF" } ), decode( QV_CHARSET_UTF_16, "\xFF\xFE\xFF\xFE"s ) );
    EXPECT_EQ( ( Decoded { U"\uFEFFA" } ), decode( QV_CHARSET_UTF_16_BE, "\xFE\xFF\0A"s ) );
    EXPECT_EQ( ( Decoded { U"\uFEFFA" } ), decode( QV_CHARSET_UTF_16_LE, "\xFF\xFE"s "A\0"s ) );

    EXPECT_EQ( "A\0"s, encode( QV_CHARSET_UTF_16, U"A" ) );
    EXPECT_EQ( "\xFF\xFE"s "A\0"s, encode( QV_CHARSET_UTF_16, U"A", INSERT ) );
    EXPECT_EQ( "\xFE\xFF\0A"s, encode( QV_CHARSET_UTF_16_BE, U"A", INSERT ) );
    EXPECT_EQ( "\xD8\x3D\xDE\0"s, encode( QV_CHARSET_UTF_16_BE, U"\U0001F600" ) );
    EXPECT_EQ( "\xDB\xFF\xDF\xFF"s, encode( QV_CHARSET_UTF_16_BE, U"\U0010FFFF" ) );
}

TEST( Utf16, SurrogatesPairAcrossTheCacheAndPassAlone )
{
    for( size_t before : { 0, 1, 510, 511, 512, 1023 } )
    {
        std::string    bytes  = encode( QV_CHARSET_UTF_16_BE, std::u32string( before, U'-' ) );
        std::u32string prefix = std::u32string( before, U'-' );

        auto expectDecoded = [&]( std::u32string tail, std::string tailBytes )
        { EXPECT_EQ( ( Decoded { prefix + tail } ), decode( QV_CHARSET_UTF_16_BE, bytes + tailBytes ) ); };

        expectDecoded( U"\U00010000A", "\xD8\0\xDC\0\0A"s );
        expectDecoded( { 0xD800, U'A' }, "\xD8\0\0A"s );
        expectDecoded( { 0xDC00, 0xD800 }, "\xDC\0\xD8\0"s );
        expectDecoded( { 0xD800, 0x10000 }, "\xD8\0\xD8\0\xDC\0"s );

        // Half a unit at the end.
        expectDecoded( { 0xD800, 0xFFFD }, "\xD8\0\xDC"s );
        expectDecoded( U"A\uFFFD", "\0A\0"s );
        EXPECT_EQ( ( Decoded { prefix + U"A" } ), decode( QV_CHARSET_UTF_16_BE, bytes + "\0A\0"s, IGNORE ) );
        EXPECT_EQ( ( Decoded { prefix + U"A", true } ), decode( QV_CHARSET_UTF_16_BE, bytes + "\0A\0"s, ABORT ) );
    }
}

TEST( Utf32, ByteOrdersAndInvalidValues )
{
    EXPECT_EQ( ( Decoded { U"A" } ), decode( QV_CHARSET_UTF_32, "A\0\0\0"s ) );
    EXPECT_EQ( ( Decoded { U"A" } ), decode( QV_CHARSET_UTF_32, "\xFF\xFE\0\0A\0\0\0"s ) );
    EXPECT_EQ( ( Decoded { U"A" } ), decode( QV_CHARSET_UTF_32, "\0\0\xFE\xFF\0\0\0A"s ) );
    EXPECT_EQ( ( Decoded { U"\uFEFFA" } ), decode( QV_CHARSET_UTF_32, "\xFF\xFE\0\0A\0\0\0"s, KEEP ) );
    EXPECT_EQ( ( Decoded { U"\uFEFFA" } ), decode( QV_CHARSET_UTF_32_BE, "\0\0\xFE\xFF\0\0\0A"s ) );
    EXPECT_EQ( ( Decoded { { 0xD800, 0x10FFFF } } ), decode( QV_CHARSET_UTF_32_BE, "\0\0\xD8\0\0\x10\xFF\xFF"s ) );

    const std::string invalid = "\0\0\0A\0\x11\0\0\0\0\0B\0\0\0"s;
    EXPECT_EQ( ( Decoded { U"A\uFFFDB\uFFFD" } ), decode( QV_CHARSET_UTF_32_BE, invalid ) );
    EXPECT_EQ( ( Decoded { U"AB" } ), decode( QV_CHARSET_UTF_32_BE, invalid, IGNORE ) );
    EXPECT_EQ( ( Decoded { U"A", true } ), decode( QV_CHARSET_UTF_32_BE, invalid, ABORT ) );

    EXPECT_EQ( "\xFF\xFE\0\0A\0\0\0"s, encode( QV_CHARSET_UTF_32, U"A", INSERT ) );
    EXPECT_EQ( "\0\0\xFE\xFF\0\x01\xF6\0"s, encode( QV_CHARSET_UTF_32_BE, U"\U0001F600", INSERT ) );
}

TEST( Utf, TextSurvivesEveryCharset )
{
    std::mt19937 random( 16 );

    for( int round = 0; round < 300; round++ )
    {
        std::u32string chars;

        for( unsigned i = random() % ( round % 10 ? 100 : 5000 ); i > 0; i-- )
        {
            const QV_CHAR LIMITS[] = { 0x80, 0x80, 0x800, 0xD800, 0x110000 };
            bool          isSparse = round % 3 == 0 && random() % 16; // mostly ASCII
            QV_CHAR       ch       = random() % LIMITS[isSparse ? 0 : random() % std::size( LIMITS )];
            chars += ch >= 0xD800 && ch < 0xE000 ? U'-' : ch;
        }

        for( QV_INT charset : UTFS )
            for( QV_INT flags : { KEEP, INSERT } )
            {
                // A mark that was put in front is a character to the sources of a fixed order.
                bool marked = flags == INSERT && charset != QV_CHARSET_UTF_8 && charset != QV_CHARSET_UTF_16 &&
                              charset != QV_CHARSET_UTF_32;
                std::string bytes = encode( charset, chars, flags );
                Decoded     expected { ( marked ? U"\uFEFF" : U"" ) + chars };

                ASSERT_EQ( expected, decode( charset, bytes, flags | ABORT ) );
                ASSERT_EQ( expected, decodeInPieces( charset, bytes, flags | ABORT, random ) );
            }
    }
}

TEST( Utf, RunsOfEveryLengthEndInTime )
{
    // Runs of characters of 1 to 4 bytes, with blocks that begin and end anywhere in them and in the cache.
    for( QV_CHAR run : { U'a', U'\u00E4', U'\u6587', U'\U0001F600' } )
        for( QV_CHAR rest : { U'b', U'\u03B2', U'\u5B57', U'\U0001F601' } )
            for( size_t length = 0; length < 70; length++ )
                for( size_t before : { 0, 950 } )
                {
                    std::u32string chars( before, U'-' );
                    chars.append( length, run ).append( length % 7, rest ).append( length, run );

                    ASSERT_EQ( ( Decoded { chars } ), decode( QV_CHARSET_UTF_8, encode( QV_CHARSET_UTF_8, chars ) ) )
                        << length;
                }
}

TEST( Utf, LongTextsGrowTheirStringByAFactorAndLeaveNoRoom )
{
    std::string      bytes( 1000000, 'x' );
    Ref< QV_BUFFER > buffer( qvBufferCreateFromBytesCopy( bytes.data(), (QV_INT)bytes.size() ) );
    Ref< QV_STRING > qvs( qvCharsetBufferToString( QV_CHARSET_UTF_8, buffer ) );

    ASSERT_EQ( 1000000, qvStringLength( qvs ) );
    EXPECT_LE( allocated( qvs.get() ), ( 1000000 + 128 ) * (QV_INT)sizeof( QV_CHAR ) );
}

TEST( Utf, ReadingAppendsToACopyOfASharedString )
{
    Ref< QV_STRING >      qvs = text( "ab" ), other = Ref< QV_STRING >::share( qvs );
    Ref< QV_CHAR_SOURCE > chars = source( QV_CHARSET_UTF_8, "cde", 0 );

    EXPECT_EQ( 2, qvCharSourceRead( chars, qvs.at(), 2 ) );
    EXPECT_FALSE( qvCharSourceEnd( chars ) );
    EXPECT_EQ( "abcd", utf8( qvs ) );
    EXPECT_EQ( "ab", utf8( other ) );
    EXPECT_EQ( 1, qvCharSourceRead( chars, qvs.at(), 2 ) );
    EXPECT_TRUE( qvCharSourceEnd( chars ) );
}

TEST( Utf, AFailureBelowComesBehindItsBytes )
{
    for( QV_INT charset : { QV_CHARSET_UTF_8, QV_CHARSET_UTF_16_BE, QV_CHARSET_UTF_32_BE } )
    {
        std::string           bytes = encode( charset, U"good" );
        Ref< QV_BUFFER >      buffer( qvBufferCreateFromBytesCopy( bytes.data(), (QV_INT)bytes.size() ) );
        Ref< QV_BYTE_SOURCE > byteSource( qv___ByteSourceCreate( readThenFail, nullptr, qvBufferObj( buffer ) ) );
        Ref< QV_CHAR_SOURCE > chars( qvCharsetCreateCharSource( byteSource, charset, 0 ) );
        Ref< QV_STRING >      qvs( qvStringCreate() );

        EXPECT_EQ( 4, qvCharSourceRead( chars, qvs.at(), -1 ) );
        EXPECT_TRUE( qvCharSourceError( chars ) );
        EXPECT_EQ( "good", utf8( qvs ) );
    }
}

TEST( Utf, SinksHandDownTheirCacheWhenItIsFull )
{
    struct
    {
        QV_INT                charset;
        std::u32string        chars;
        std::vector< size_t > lengths;
    } cases[] = {
        // A character goes over as a whole; the last cache stays until the flush.
        { QV_CHARSET_UTF_8, std::u32string( 1024, U'x' ), { 1024 } },
        { QV_CHARSET_UTF_8, std::u32string( 2049, U'x' ), { 1024, 1024, 1 } },
        { QV_CHARSET_UTF_8, std::u32string( 400, U'\u20AC' ), { 1023, 177 } },
        { QV_CHARSET_UTF_8, std::u32string( 1022, U'x' ) + U"\u20AC", { 1022, 3 } },
        { QV_CHARSET_UTF_8, std::u32string( 1021, U'x' ) + U"\u20AC", { 1024 } },
        { QV_CHARSET_UTF_16_BE, std::u32string( 511, U'x' ), { 1020, 2 } },
        { QV_CHARSET_UTF_16_BE, std::u32string( 300, U'\U0001F600' ) + U"x", { 1020, 182 } },
        { QV_CHARSET_UTF_32_BE, std::u32string( 257, U'x' ), { 1024, 4 } },
    };

    for( auto &each : cases )
    {
        written.clear();
        writesThatWork = SIZE_MAX;

        Ref< QV_BYTE_SINK > byteSink( qv___ByteSinkCreate( noteWrite, noteFlush, nullptr ) );
        Ref< QV_CHAR_SINK > chars( qvCharsetCreateCharSink( byteSink, each.charset, 0 ) );

        EXPECT_TRUE( qvCharSinkWrite( chars, text( each.chars ) ) );
        EXPECT_TRUE( qvCharSinkFlush( chars ) );

        std::vector< size_t > lengths;
        std::string           all;
        for( auto &bytes : written )
        {
            lengths.push_back( bytes.size() );
            all += bytes;
        }

        EXPECT_EQ( each.lengths, lengths );
        EXPECT_EQ( encode( each.charset, each.chars ), all );

        // Flushing reached the cache, but not the byte sink, which flushes when it ends.
        EXPECT_EQ( written.end(), std::find( written.begin(), written.end(), "flushed" ) );
        chars.reset();
        byteSink.reset();
        EXPECT_EQ( "flushed", written.back() );
    }
}

TEST( Utf, AFailedWriteFailsTheSinkForGood )
{
    for( QV_INT charset : UTFS )
    {
        written.clear();
        writesThatWork = 1;

        Ref< QV_BYTE_SINK > byteSink( qv___ByteSinkCreate( noteWrite, noteFlush, nullptr ) );
        Ref< QV_CHAR_SINK > chars( qvCharsetCreateCharSink( byteSink, charset, 0 ) );

        EXPECT_FALSE( qvCharSinkWrite( chars, text( std::u32string( 5000, U'x' ) ) ) );
        EXPECT_FALSE( qvCharSinkWriteChar( chars, U'x' ) );
        EXPECT_FALSE( qvCharSinkFlush( chars ) );
        EXPECT_EQ( 1u, written.size() );
    }
}
