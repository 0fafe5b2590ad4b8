// Streams in chains: lines to characters to bytes, through a charset, beside the bytes that have to come out. And sources
// of bytes and characters that share what they read from, and of lines.

#include "qv_fuzz_walk.h"

#include "../tests/qv_test_utf8.h"

namespace qv::fuzz
{
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

// In the order of their flags.
const Text TERMINATORS[] = { U"\n", U"\r", U"\r\n", U"\x85", U"\v", U"\f", U"\u2028", U"\u2029", U"" };

Text terminator( QV_INT flags )
{
    return TERMINATORS[__builtin_ctzll( static_cast< uint64_t >( flags | 256 ) )];
}

// The text with one character that occurs nowhere else for each terminator.
Text marked( const Text &text, QV_INT flags )
{
    Text result;

    for( size_t i = 0; i < text.size(); i++ )
    {
        bool pair = flags & QV_NLF_FLAG_CRLF && text.compare( i, 2, U"\r\n" ) == 0;
        auto at   = std::find( TERMINATORS, TERMINATORS + 8, Text( 1, text[i] ) );
        result += pair || flags >> ( at - TERMINATORS ) & 1 ? U'#' : text[i];
        i += pair;
    }

    return result.empty() || result.back() == U'#' ? result : result + U'#';
}

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
    std::string expected = charset >= QV_CHARSET_UTF_8 && mark ? encoded( charset, 0, U"\uFEFF" ) : "", seen;

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
        seen += bytesOf( Ref< QV_BUFFER >( qvBufferByteSinkBuffer( bottom ) ) );
        require( seen == expected );
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

    // Two sources take turns at one content, until each has met its end: it could not deliver all. Then it delivers
    // nothing.
    template< class Source, class T, class C >
    void take(
        Ref< Source > from[2], const C &content, Ref< T > ( *make )( const C & ), C ( *contents )( T * ),
        QV_INT ( *reads )( Source *, T **, QV_INT ), QV_BOOL ( *ended )( Source * ) )
    {
        bool   end[2] = {};
        QV_INT at = 0, length = lengthOf( content );

        for( QV_INT rounds = in.below( 16 ); rounds > 0; rounds-- )
        {
            QV_INT   which = in.below( 2 ), most = in.flag() ? in.length() : in.upTo( length + 1 ) - 1;
            QV_INT   takes = end[which] ? 0 : std::min( most < 0 ? QV_INT_MAX : most, length - at );
            Ref< T > dest  = make( C( 1, 'x' ) );
            require( reads( from[which], dest.at(), most ) == takes );
            require( contents( dest ) == C( 1, 'x' ) + part( content, at, takes ) );
            end[which] = end[which] || most > takes || most < 0;
            require( ( ended( from[which] ) != 0 ) == end[which] );
            at += takes;
        }
    }

    void read()
    {
        std::string                  data = in.bytes( 3000 );
        Text                         text = in.text( 3000 );
        Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( bufferOf( data ) ) );
        Ref< QV_STRING_CHAR_SOURCE > scs( qvStringCharSourceCreate( stringOf( text ) ) );
        Ref< QV_BYTE_SOURCE >        ofBytes[2];
        Ref< QV_CHAR_SOURCE >        ofChars[2];

        for( int i = 0; i < 2; i++ )
        {
            ofBytes[i].reset( qvBufferByteSourceByteSource( bbs ) );
            ofChars[i].reset( qvStringCharSourceCharSource( scs ) );
        }

        take( ofBytes, data, bufferOf, bytesOf, qvByteSourceRead, qvByteSourceEnd );
        take( ofChars, text, stringOf, charsOf, qvCharSourceRead, qvCharSourceEnd );
    }

    // Of a text in which terminators are frequent.
    void readLines()
    {
        Text   text  = in.text( 1000 ), lineTexts;
        QV_INT count = 0;

        for( char c : in.bytes( 2000 ) )
            text += U"\n\r\x85\v\f\u2028\u2029a\t\x0E\x84\u202A"[static_cast< uint8_t >( c ) % 12];

        Ref< QV_STRING_CHAR_SOURCE > scs( qvStringCharSourceCreate( stringOf( text ) ) );
        Ref< QV_CHAR_SOURCE >        charSource( qvStringCharSourceCharSource( scs ) );
        Ref< QV_NLF_LINE_SOURCE >    from( qvNlfLineSourceCreate( charSource, newline ) );
        Ref< QV_LINE_SOURCE >        source( qvNlfLineSourceLineSource( from ) );

        for( ; QV_STRING *each = qvLineSourceRead( source ); count++ )
            lineTexts += charsOf( Ref< QV_STRING >( each ) ) + U'#';

        require( lineTexts == marked( text, newline ) && qvLineSourceLinesRead( source ) == count );
        require( qvLineSourceEnd( source ) && !qvLineSourceError( source ) );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK( StreamWalk, OP( write ) OP( write ) OP( flush ) OP( writeBytes ) OP( read ) OP( readLines ) )
