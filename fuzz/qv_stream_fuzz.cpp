// Streams in chains: lines to characters to bytes, through a charset, beside the bytes that have to come out; some sinks
// fail at a limit. And sources of bytes and characters that share what they read from.

#include "qv_fuzz_models.h"

#include "../tests/qv_test_utf8.h"

#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source_private.h"

using namespace qv::fuzz;

namespace
{
/* What has to come out --------------------------------------------------------------------------------------------- */

std::string unit( uint32_t value, int count, bool little )
{
    std::string bytes;

    for( int i = 0; i < count; i++ )
        bytes += static_cast< char >( value >> 8 * ( little ? i : count - 1 - i ) );

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
            bytes += qv::test::encodedUtf8( ch );
        else if( charset >= QV_CHARSET_UTF_32 )
            bytes += unit( ch, 4, little );
        else if( ch < 0x10000 )
            bytes += unit( ch, 2, little );
        else
            bytes += unit( 0xD7C0 + ( ch >> 10 ), 2, little ) + unit( 0xDC00 + ( ch & 0x3FF ), 2, little );
    }

    return bytes;
}

Text terminator( QV_INT flags )
{
    static const char32_t *const FORMS[] = { U"\n", U"\r", U"\r\n", U"\x85", U"\v", U"\f", U"\u2028", U"\u2029" };
    return flags ? FORMS[__builtin_ctzll( static_cast< uint64_t >( flags ) )] : U"";
}

/* Sinks that fail and sources that do ------------------------------------------------------------------------------ */

QV_INT limit;  // how many bytes the sink takes, or the source delivers, before it fails
QV_INT passed; // how many it has
bool   failed; // after that it must not be called again

void limitTo( QV_INT count )
{
    limit = count, passed = 0, failed = false;
}

QV_BOOL writeLimited( QV_OBJ *, QV_BUFFER *, QV_INT, QV_INT count )
{
    require( !failed && count > 0 );
    failed = passed + count > limit;
    passed += count;

    return !failed;
}

QV_BOOL flushLimited( QV_OBJ * )
{
    return !failed;
}

QV_BOOL readLimited( QV_OBJ *, QV_BUFFER **buf, QV_INT most, QV_INT *count )
{
    require( !failed );
    *count = std::min( most, limit - passed );
    failed = *count < most;
    passed += *count;
    qvBufferAppendZero( buf, *count );

    return !failed;
}

/* The walk --------------------------------------------------------------------------------------------------------- */

struct StreamWalk
{
    QV_INT charset = in.below( 3 ) ? QV_CHARSET_UTF_8 + in.below( 7 ) : in.below( 2 );
    QV_INT flags   = in.flag() * QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS;
    QV_INT mark    = in.flag() * QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK;
    QV_INT newline = in.flag() ? 1 << in.below( 8 ) : in.below( 256 ), lines = 0;

    Ref< QV_BUFFER_BYTE_SINK > bottom{ qvBufferByteSinkCreate() };
    Ref< QV_BYTE_SINK >        bytes{ qvBufferByteSinkByteSink( bottom ) };
    Ref< QV_CHAR_SINK >        chars{ qvCharsetCreateCharSink( bytes, charset, flags | mark ) };
    Ref< QV_NLF_LINE_SINK >    nls{ qvNlfLineSinkCreate( chars, newline ) };
    Ref< QV_LINE_SINK >        line{ qvNlfLineSinkLineSink( nls ) };
    Text                       pending; // written to the charset's sink since its last flush
    std::string expected = charset >= QV_CHARSET_UTF_8 && mark ? encoded( charset, 0, U"\uFEFF" ) : "", got;

    // A part of a String, as characters or as a line.
    void write()
    {
        Text             text   = in.text( 3000 );
        Ref< QV_STRING > source = stringOf( text );
        bool             isLine = in.flag();
        Span             span   = in.span( lengthOf( text ), in.below( isLine ? 5 : 6 ) );

        if( isLine )
            require( CALL_FORM( qvLineSinkWrite, span, 1, line, source ) );
        else
            require(
                span.form <= OUTER ? CALL_FORM( qvCharSinkWrite, span, 1, chars, source )
                                   : qvCharSinkWriteChars( chars, text.data(), lengthOf( text ) ) );

        pending += span.of( text ) + ( isLine ? terminator( newline ) : U"" );
        require( qvLineSinkLinesWritten( line ) == ( lines += isLine ) );
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
        std::string      text = in.bytes( 2000 );
        Ref< QV_BUFFER > buf  = bufferOf( text );
        Span             span = in.span( lengthOf( text ), in.below( 6 ) );

        require(
            span.form <= OUTER ? CALL_FORM( qvByteSinkWrite, span, 1, bytes, buf )
                               : qvByteSinkWriteBytes( bytes, text.data(), lengthOf( text ) ) );
        expected += span.of( text );
    }

    // A chain of its own whose bottom fails: every call after the first failure fails and goes no further.
    void fail()
    {
        limitTo( in.length() );
        Ref< QV_BYTE_SINK > lowest( qv___ByteSinkCreate( writeLimited, flushLimited, nullptr ) );
        Ref< QV_CHAR_SINK > upper( qvCharsetCreateCharSink( lowest, charset, flags ) );
        bool                wrong = false;

        for( QV_INT i = in.below( 8 ); i > 0; i-- )
        {
            Text text = in.text( 3000 );
            bool ok   = in.below( 4 ) ? qvCharSinkWrite( upper, stringOf( text ) ) : qvCharSinkFlush( upper );
            require( !wrong || !ok || text.empty() );
            wrong = wrong || !ok;
            require( !failed || qvByteSinkError( lowest ) );
            require( wrong == ( qvCharSinkError( upper ) != QV_FALSE ) );
        }
    }

    // Two sources take turns at one Buffer or String. A source has met its end when it could not deliver all; then it
    // delivers nothing.
    template< class Source, class Content, class Read >
    void take( Source *( &sources )[2], const Content &content, QV_BOOL ( *ended )( Source * ), Read read )
    {
        bool   end[2] = {};
        QV_INT at = 0, length = lengthOf( content );

        for( QV_INT rounds = in.below( 16 ); rounds > 0; rounds-- )
        {
            QV_INT  which = in.below( 2 ), most = in.flag() ? in.length() : in.upTo( length + 1 ) - 1;
            QV_INT  takes = end[which] ? 0 : std::min( most < 0 ? QV_INT_MAX : most, length - at );
            Content into  = repeated< Content >( std::max< QV_INT >( most, 0 ), ' ' );
            require( read( sources[which], into, most ) == takes );
            require( part( into, 0, takes ) == part( content, at, takes ) );
            end[which] = end[which] || most > takes || most < 0;
            require( ( ended( sources[which] ) != 0 ) == end[which] );
            at += takes;
        }
    }

    void read()
    {
        Text                         text = in.text( 3000 );
        std::string                  data = ascii( text );
        Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( bufferOf( data ) ) );
        Ref< QV_STRING_CHAR_SOURCE > scs( qvStringCharSourceCreate( stringOf( text ) ) );
        Ref< QV_BYTE_SOURCE > b0( qvBufferByteSourceByteSource( bbs ) ), b1( qvBufferByteSourceByteSource( bbs ) );
        Ref< QV_CHAR_SOURCE > c0( qvStringCharSourceCharSource( scs ) ), c1( qvStringCharSourceCharSource( scs ) );
        QV_BYTE_SOURCE       *byteSources[] = { b0, b1 };
        QV_CHAR_SOURCE       *charSources[] = { c0, c1 };

        // What is read comes after what is there, in an array of its own, or, as bytes, nowhere.
        take(
            byteSources, data, qvByteSourceEnd,
            [&]( QV_BYTE_SOURCE *from, std::string &into, QV_INT most )
            {
                if( most >= 0 && in.flag() )
                    return qvByteSourceReadBytes( from, into.data(), most );

                Ref< QV_BUFFER > buf   = bufferOf( "x" );
                QV_INT           taken = qvByteSourceRead( from, buf.at(), most );
                into                   = bytesOf( buf ).substr( 1 );
                return taken;
            } );
        take(
            charSources, text, qvCharSourceEnd,
            [&]( QV_CHAR_SOURCE *from, Text &into, QV_INT most )
            {
                if( most >= 0 && in.flag() )
                    return qvCharSourceReadChars( from, into.data(), most );

                Ref< QV_STRING > qvs   = stringOf( U"x" );
                QV_INT           taken = qvCharSourceRead( from, qvs.at(), most );
                into                   = charsOf( qvs ).substr( 1 );
                return taken;
            } );
    }

    // A source that fails: what came before is delivered, and it is not asked again.
    void readFailing()
    {
        limitTo( in.length() );
        Ref< QV_BYTE_SOURCE > lowest( qv___ByteSourceCreate( readLimited, nullptr, nullptr ) );
        QV_INT                total = 0;

        for( QV_INT rounds = in.below( 12 ); rounds > 0; rounds-- )
        {
            Ref< QV_BUFFER > buf( qvBufferCreate() );
            QV_INT           most  = in.flag() ? in.length() : in.upTo( 20000 );
            QV_INT           takes = failed ? 0 : std::min( most, limit - total );
            bool             skips = in.flag();
            require(
                ( skips ? qvByteSourceSkip( lowest, most ) : qvByteSourceRead( lowest, buf.at(), most ) ) == takes );
            total += takes;
            require( ( qvByteSourceError( lowest ) != 0 ) == failed && ( qvByteSourceEnd( lowest ) != 0 ) == failed );
            require( ( skips || qvBufferLength( buf ) == takes ) && ( failed || most == takes ) );
        }
    }
};
} // namespace

QV_FUZZ_WALK(
    StreamWalk, OP( write, 3 ) OP( flush, 1 ) OP( writeBytes, 1 ) OP( fail, 1 ) OP( read, 1 ) OP( readFailing, 1 ) )
