// Streams in chains: lines to characters to bytes, through a charset, with every form of writing, beside the bytes that
// have to come out; some sinks fail at a limit. And sources of bytes and characters that share what they read from.

#include "qv_fuzz_models.h"

#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_line_sink.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_sink.h"
#include "qv/io/qv_string_char_source.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
/* What has to come out --------------------------------------------------------------------------------------------- */

void put( std::string &bytes, uint32_t unit, int count, bool little )
{
    for( int i = 0; i < count; i++ )
        bytes += static_cast< char >( unit >> 8 * ( little ? i : count - 1 - i ) );
}

std::string utf8( char32_t ch )
{
    std::string bytes;
    int         more = ( ch >= 0x80 ) + ( ch >= 0x800 ) + ( ch >= 0x10000 );
    put( bytes, more ? ( 0x7F80u >> more & 0xFF ) | ch >> 6 * more : ch, 1, false );

    while( --more >= 0 )
        put( bytes, 0x80 | ( ch >> 6 * more & 63 ), 1, false );

    return bytes;
}

std::string encoded( QV_INT charset, QV_INT flags, const Text &text )
{
    std::string bytes;
    bool        little = charset != QV_CHARSET_UTF_16_BE && charset != QV_CHARSET_UTF_32_BE;

    for( char32_t ch : text )
    {
        if( charset < QV_CHARSET_UTF_8 )
        {
            if( ch <= ( charset == QV_CHARSET_ASCII ? 0x7Fu : 0xFFu ) )
                bytes += static_cast< char >( ch );
            else if( !( flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS ) )
                bytes += '?';
        }
        else if( charset == QV_CHARSET_UTF_8 )
            bytes += utf8( ch );
        else if( charset >= QV_CHARSET_UTF_32 )
            put( bytes, ch, 4, little );
        else if( ch < 0x10000 )
            put( bytes, ch, 2, little );
        else
        {
            put( bytes, 0xD800 + ( ( ch - 0x10000 ) >> 10 ), 2, little );
            put( bytes, 0xDC00 + ( ch & 0x3FF ), 2, little );
        }
    }

    return bytes;
}

Text terminator( QV_INT flags )
{
    static const char32_t *const FORMS[] = { U"\n", U"\r", U"\r\n", U"\x85", U"\v", U"\f", U"\u2028", U"\u2029" };
    return flags ? FORMS[__builtin_ctzll( static_cast< uint64_t >( flags ) )] : U"";
}

/* Sinks that fail and sources that do ------------------------------------------------------------------------------ */

size_t      limit;    // how many bytes the sink takes, or the source delivers, before it fails
std::string received; // what the sink took
bool        failed;   // after that it must not be called again

QV_BOOL writeLimited( QV_OBJ *, QV_BUFFER *buf, QV_INT offset, QV_INT count )
{
    require( !failed && count > 0 );
    failed = received.size() + static_cast< size_t >( count ) > limit;

    if( !failed )
        received += bytesOf( buf ).substr( static_cast< size_t >( offset ), static_cast< size_t >( count ) );

    return !failed;
}

QV_BOOL flushLimited( QV_OBJ * )
{
    return !failed;
}

// The bytes 0, 1, 2 and so on.
QV_BOOL readLimited( QV_OBJ *, QV_BUFFER **buf, QV_INT most, QV_INT *count )
{
    require( !failed );
    *count = std::min< QV_INT >( most, static_cast< QV_INT >( limit - received.size() ) );
    failed = *count < most;

    for( QV_INT i = 0; i < *count; i++ )
    {
        received += static_cast< char >( received.size() );
        qvBufferAppendByte( buf, static_cast< uint8_t >( received.back() ) );
    }

    return !failed;
}

/* The walk --------------------------------------------------------------------------------------------------------- */

struct StreamWalk : Walk
{
    QV_INT                     charset, flags, newline, lines = 0;
    Ref< QV_BUFFER_BYTE_SINK > bottom{ qvBufferByteSinkCreate() };
    Ref< QV_BYTE_SINK >        bytes;
    Ref< QV_CHAR_SINK >        chars;
    Ref< QV_LINE_SINK >        line;
    Text                       pending; // written to the charset's sink since its last flush
    std::string                expected, got;

    StreamWalk( const uint8_t *data, size_t size ) : Walk( data, size )
    {
        charset = in.below( 3 ) ? QV_CHARSET_UTF_8 + in.below( 7 ) : in.below( 2 );
        flags   = in.below( 2 ) * QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS
                + in.below( 2 ) * QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK;
        newline = in.flag() ? 1 << in.below( 8 ) : in.below( 256 );

        bytes.reset( qvBufferByteSinkByteSink( bottom ) );
        chars.reset( qvCharsetCreateCharSink( bytes, charset, flags ) );
        Ref< QV_NLF_LINE_SINK > nls( qvNlfLineSinkCreate( chars, newline ) );
        line.reset( qvNlfLineSinkLineSink( nls ) );

        if( charset >= QV_CHARSET_UTF_8 && flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK )
            expected = encoded( charset, 0, U"\uFEFF" );
    }

    // A String, a part of it, and the characters of the part.
    Ref< QV_STRING > source;
    Span             span;

    Text draw()
    {
        Text text = in.text( 3000 );
        source    = stringOf( text );
        span      = in.span( lengthOf( text ), WHOLE );

        return text;
    }

    void writeChars()
    {
        Text text = draw();
        span.form = in.below( 7 );

        if( span.form <= OUTER )
            require( CALL_FORM( qvCharSinkWrite, span, 1, chars, source ) );
        else if( span.form == 5 )
            require( qvCharSinkWriteChars( chars, text.data(), lengthOf( text ) ) );
        else
            require( qvCharSinkWriteFormatCstr( chars, "<%s>", -1, source.get() ) );

        pending += span.form <= OUTER ? span.of( text ) : span.form == 5 ? text : U"<" + text + U">";
    }

    void writeLine()
    {
        Text text = draw();
        bool two  = in.flag();
        span.form = two ? QV_INT( WHOLE ) : in.below( 5 );

        if( two )
        {
            Ref< QV_VECTOR > both( qvVectorCreate() );
            qvVectorAppendString( both.at(), source );
            qvVectorAppendString( both.at(), source );
            require( qvLineSinkWriteLines( line, both ) );
            pending += text + terminator( newline );
            lines++;
        }
        else
            require( CALL_FORM( qvLineSinkWrite, span, 1, line, source ) );

        text = span.of( text );
        pending += text + terminator( newline );
        require( qvLineSinkLinesWritten( line ) == ++lines );
    }

    // What is pending comes out; the single-byte charsets compose it first.
    void flush()
    {
        require( in.flag() ? qvLineSinkFlush( line ) : qvCharSinkFlush( chars ) );

        if( charset < QV_CHARSET_UTF_8 )
        {
            Ref< QV_STRING > composed = stringOf( pending );
            qvStringNormalizeNFC( composed.at() );

            // A text that is normal already keeps surrogates that stand alone, a stream never does.
            pending = sanitized( charsOf( composed ) );
        }

        expected += encoded( charset, flags, pending );
        pending.clear();
        got += bytesOf( Ref< QV_BUFFER >( qvBufferByteSinkBuffer( bottom ) ) );
        require( got == expected );
    }

    // Bytes go below the characters.
    void writeBytes()
    {
        flush();
        std::string      text;
        Ref< QV_BUFFER > buf;

        for( QV_INT i = in.length( 2000 ); i > 0; i-- )
            text += static_cast< char >( i * i );

        buf  = bufferOf( text );
        span = in.span( lengthOf( text ), in.below( 6 ) );

        if( span.form <= OUTER )
            require( CALL_FORM( qvByteSinkWrite, span, 1, bytes, buf ) );
        else
            require( qvByteSinkWriteBytes( bytes, text.data(), span.length ) );

        expected += span.form <= OUTER ? span.of( text ) : text;
    }

    // A chain of its own whose bottom fails: every call after the first failure fails and goes no further, and what
    // was taken is the beginning of what was written.
    void fail()
    {
        limit = static_cast< size_t >( in.length() ), received.clear(), failed = false;
        Ref< QV_BYTE_SINK > lowest( qv___ByteSinkCreate( writeLimited, flushLimited, nullptr ) );
        Ref< QV_CHAR_SINK > upper(
            qvCharsetCreateCharSink( lowest, charset, flags & ~QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK ) );
        Text all;
        bool wrong = false;

        for( QV_INT i = in.below( 8 ); i > 0; i-- )
        {
            Text text = draw();
            bool ok   = in.below( 4 ) ? qvCharSinkWrite( upper, source ) : qvCharSinkFlush( upper );
            require( !wrong || !ok || text.empty() );
            wrong = wrong || !ok;
            require( !failed || qvByteSinkError( lowest ) );
            require( wrong == ( qvCharSinkError( upper ) != QV_FALSE ) );
        }
    }

    // Two sources take turns at one Buffer, or at one String.
    void read()
    {
        bool                         ofBytes = in.flag();
        Text                         text    = draw();
        std::string                  data    = ascii( text );
        Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( bufferOf( data ) ) );
        Ref< QV_STRING_CHAR_SOURCE > scs( qvStringCharSourceCreate( source ) );
        Ref< QV_BYTE_SOURCE >        byteSources[2];
        Ref< QV_CHAR_SOURCE >        charSources[2];
        bool                         end[2] = {};
        QV_INT                       at = 0, length = lengthOf( text );

        for( int i = 0; i < 2; i++ )
        {
            byteSources[i].reset( qvBufferByteSourceByteSource( bbs ) );
            charSources[i].reset( qvStringCharSourceCharSource( scs ) );
        }

        for( QV_INT rounds = in.below( 16 ); rounds > 0; rounds-- )
        {
            int              which = static_cast< int >( in.below( 2 ) ), how = static_cast< int >( in.below( 3 ) );
            QV_INT           most  = in.flag() ? in.length() : in.upTo( length + 1 ) - 1;
            QV_INT           takes = end[which] ? 0 : std::min( most < 0 ? QV_INT_MAX : most, length - at ), taken;
            Ref< QV_BUFFER > buf   = bufferOf( "x" );
            Ref< QV_STRING > qvs   = stringOf( U"x" );
            std::string      bytesRead( static_cast< size_t >( std::max< QV_INT >( most, 0 ) ), ' ' );
            Text             charsRead( bytesRead.size(), U' ' );
            QV_BYTE_SOURCE  *from      = byteSources[which];
            QV_CHAR_SOURCE  *charsFrom = charSources[which];
            end[which]                 = end[which] || most > takes || most < 0;
            how                        = most < 0 ? 0 : how;

            if( ofBytes )
            {
                taken = how == 0   ? qvByteSourceRead( from, buf.at(), most )
                        : how == 1 ? qvByteSourceReadBytes( from, bytesRead.data(), most )
                                   : qvByteSourceSkip( from, most );
                require( ( qvByteSourceEnd( from ) != 0 ) == end[which] );
                std::string piece = part( data, at, takes );
                require(
                    how == 2
                    || ( how ? bytesRead.substr( 0, piece.size() ) : bytesOf( buf ) ) == ( how ? "" : "x" ) + piece );
            }
            else
            {
                taken = how ? qvCharSourceReadChars( charsFrom, charsRead.data(), most )
                            : qvCharSourceRead( charsFrom, qvs.at(), most );
                require( ( qvCharSourceEnd( charsFrom ) != 0 ) == end[which] );
                Text piece = part( text, at, takes );
                require(
                    ( how ? charsRead.substr( 0, piece.size() ) : charsOf( qvs ) ) == ( how ? U"" : U"x" ) + piece );
            }

            require( taken == takes );
            at += takes;
        }
    }

    // A source that fails: what came before is delivered, and it is not asked again.
    void readFailing()
    {
        limit = static_cast< size_t >( in.length() ), received.clear(), failed = false;
        Ref< QV_BYTE_SOURCE > lowest( qv___ByteSourceCreate( readLimited, nullptr, nullptr ) );
        QV_INT                total = 0;

        for( QV_INT rounds = in.below( 12 ); rounds > 0; rounds-- )
        {
            Ref< QV_BUFFER > buf( qvBufferCreate() );
            QV_INT           most  = in.flag() ? in.length() : in.upTo( 20000 );
            bool             skips = in.flag();
            QV_INT           takes = failed ? 0 : std::min( most, static_cast< QV_INT >( limit ) - total );
            require(
                ( skips ? qvByteSourceSkip( lowest, most ) : qvByteSourceRead( lowest, buf.at(), most ) ) == takes );
            total += takes;
            require( ( qvByteSourceError( lowest ) != 0 ) == failed && ( qvByteSourceEnd( lowest ) != 0 ) == failed );
            require( skips || qvBufferLength( buf ) == takes );
            require( failed == ( most > takes ) || failed );
        }
    }

    void check()
    {
        source.reset();
    }
};
} // namespace

QV_FUZZ_WALK(
    StreamWalk, OP( writeChars, 2 ) OP( writeLine, 1 ) OP( flush, 1 ) OP( writeBytes, 1 ) OP( fail, 1 ) OP( read, 1 )
                    OP( readFailing, 1 ) )
