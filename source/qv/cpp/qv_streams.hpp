/** @file
    Sinks and sources of bytes, characters and lines, and the standard streams.

        qv::LineSink out = qv::LineSink::standardOutput();
        for( qv::String line : qv::LineSource::standardInput().lines() )
            out.write( line.upper() );
        if( !out.flush() )
            ...

    Streams stand on each other: a char source decodes a byte source, a line source splits a char source. Copies are the
    same stream, at the same place; one thread at a time may use it. A write that fails returns false and is remembered by
    failed(); after either, Error::last() tells why. A sink that ends flushes itself, whose failure nobody sees.
    qv_standard.h tells when what is written to the standard streams arrives, and qv_charset.h what the flags of charsets
    mean. */

#ifndef QV_STREAMS_HPP
#define QV_STREAMS_HPP

#include "qv/cpp/qv_lines.hpp"

namespace qv
{
/* Bytes ---------------------------------------------------------------------------------------------------------- */

/** Where bytes are written to. */
class ByteSink : public Reference< ByteSink, QV_BYTE_SINK >
{
public:
    using Reference::Reference;

    /** @{ */
    /** The standard output, and the standard error stream. */
    [[nodiscard]] static ByteSink standardOutput()
    {
        return own( qvStandardOutputByteSink() );
    }

    [[nodiscard]] static ByteSink standardError()
    {
        return own( qvStandardErrorByteSink() );
    }
    /** @} */

    /** A file, which is created, or emptied if it is there. */
    [[nodiscard]] static Result< ByteSink > toFile( const String &path )
    {
        if( std::optional< ByteSink > sink = ownOptional( qvFileOpenByteSink( path.c() ) ) )
            return *std::move( sink );

        return Error::last();
    }

    /** Writes bytes. */
    bool write( const Buffer &bytes )
    {
        return qvByteSinkWrite( raw(), bytes.c() );
    }

    /** Writes bytes in place. */
    bool write( std::span< const uint8_t > bytes )
    {
        return qvByteSinkWriteBytes( raw(), bytes.data(), static_cast< QV_INT >( bytes.size() ) );
    }

    /** Writes the bytes of a text as they are. */
    bool write( std::string_view bytes )
    {
        return qvByteSinkWriteBytes( raw(), bytes.data(), static_cast< QV_INT >( bytes.size() ) );
    }

    /** Passes on what waits. */
    bool flush()
    {
        return qvByteSinkFlush( raw() );
    }

    /** True after a failure. */
    [[nodiscard]] bool failed() const
    {
        return qvByteSinkError( raw() );
    }
};

/** Where bytes are read from. */
class ByteSource : public Reference< ByteSource, QV_BYTE_SOURCE >
{
public:
    using Reference::Reference;

    /** The standard input. */
    [[nodiscard]] static ByteSource standardInput()
    {
        return own( qvStandardInputByteSource() );
    }

    /** A file. */
    [[nodiscard]] static Result< ByteSource > ofFile( const String &path )
    {
        if( std::optional< ByteSource > source = ownOptional( qvFileOpenByteSource( path.c() ) ) )
            return *std::move( source );

        return Error::last();
    }

    /** Bytes in memory. */
    [[nodiscard]] static ByteSource of( const Buffer &bytes )
    {
        auto source = Held< QV_BUFFER_BYTE_SOURCE >::own( qvBufferByteSourceCreate( bytes.c() ) );
        return own( qvBufferByteSourceByteSource( source.c() ) );
    }

    /** The next bytes, at most `maxBytes` unless that is -1; fewer at the end. */
    [[nodiscard]] Buffer read( QV_INT maxBytes = -1 )
    {
        Buffer bytes;
        qvByteSourceRead( raw(), bytes.variable(), maxBytes );
        return bytes;
    }

    /** Passes over bytes, and returns over how many. */
    QV_INT skip( QV_INT maxBytes )
    {
        return qvByteSourceSkip( raw(), maxBytes );
    }

    /** True when a read has met the end, or a failure. */
    [[nodiscard]] bool atEnd() const
    {
        return qvByteSourceEnd( raw() );
    }

    /** True after a failure. */
    [[nodiscard]] bool failed() const
    {
        return qvByteSourceError( raw() );
    }
};

/* Characters ----------------------------------------------------------------------------------------------------- */

/** Where text is written to. */
class CharSink : public Reference< CharSink, QV_CHAR_SINK >
{
public:
    using Reference::Reference;

    /** Encodes text for a byte sink. */
    explicit CharSink( const ByteSink &bytes, QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0 ) :
        CharSink( own( qvCharsetCreateCharSink( bytes.c(), charset, charsetFlags ) ) )
    {
    }

    /** @{ */
    /** The standard output, and the standard error stream. */
    [[nodiscard]] static CharSink standardOutput( QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0 )
    {
        return own( qvStandardOutputCharSink( charset, charsetFlags ) );
    }

    [[nodiscard]] static CharSink standardError( QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0 )
    {
        return own( qvStandardErrorCharSink( charset, charsetFlags ) );
    }
    /** @} */

    /** Writes text. */
    bool write( const String &text )
    {
        return qvCharSinkWrite( raw(), text.c() );
    }

    /** Writes formatted text. */
    template< class... Args >
    bool print( const Format< std::type_identity_t< Args >... > &fmt, Args &&...args )
    {
        return write( format( fmt, std::forward< Args >( args )... ) );
    }

    /** Passes on what waits. */
    bool flush()
    {
        return qvCharSinkFlush( raw() );
    }

    /** True after a failure. */
    [[nodiscard]] bool failed() const
    {
        return qvCharSinkError( raw() );
    }
};

/** Where text is read from. */
class CharSource : public Reference< CharSource, QV_CHAR_SOURCE >
{
public:
    using Reference::Reference;

    /** Decodes the bytes of a source. */
    explicit CharSource( const ByteSource &bytes, QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0 ) :
        CharSource( own( qvCharsetCreateCharSource( bytes.c(), charset, charsetFlags ) ) )
    {
    }

    /** The standard input. */
    [[nodiscard]] static CharSource standardInput( QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0 )
    {
        return own( qvStandardInputCharSource( charset, charsetFlags ) );
    }

    /** The next characters, at most `maxChars` unless that is -1; fewer at the end. */
    [[nodiscard]] String read( QV_INT maxChars = -1 )
    {
        String text;
        qvCharSourceRead( raw(), text.variable(), maxChars );
        return text;
    }

    /** True when a read has met the end, or a failure. */
    [[nodiscard]] bool atEnd() const
    {
        return qvCharSourceEnd( raw() );
    }

    /** True after a failure. */
    [[nodiscard]] bool failed() const
    {
        return qvCharSourceError( raw() );
    }
};

/* Lines ---------------------------------------------------------------------------------------------------------- */

/** Where lines are written to, each with its end. */
class LineSink : public Reference< LineSink, QV_LINE_SINK >
{
public:
    using Reference::Reference;

    /** Writes lines to a char sink. `lineEnd` is a QV_NLF_FLAG value. */
    explicit LineSink( const CharSink &chars, QV_INT lineEnd = QV_NLF_FLAG_LF ) : LineSink( on( chars, lineEnd ) )
    {
    }

    /** @{ */
    /** The standard output, and the standard error stream. */
    [[nodiscard]] static LineSink standardOutput(
        QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0, QV_INT lineEnd = QV_NLF_FLAG_LF )
    {
        return own( qvStandardOutputLineSink( charset, charsetFlags, lineEnd ) );
    }

    [[nodiscard]] static LineSink standardError(
        QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0, QV_INT lineEnd = QV_NLF_FLAG_LF )
    {
        return own( qvStandardErrorLineSink( charset, charsetFlags, lineEnd ) );
    }
    /** @} */

    /** Writes a line. */
    bool write( const String &line )
    {
        return qvLineSinkWrite( raw(), line.c() );
    }

    /** Passes on what waits. */
    bool flush()
    {
        return qvLineSinkFlush( raw() );
    }

    /** How many lines have been written. */
    [[nodiscard]] QV_INT linesWritten() const
    {
        return qvLineSinkLinesWritten( raw() );
    }

    /** True after a failure. */
    [[nodiscard]] bool failed() const
    {
        return qvLineSinkError( raw() );
    }

private:
    static LineSink on( const CharSink &chars, QV_INT lineEnd )
    {
        auto sink = Held< QV_NLF_LINE_SINK >::own( qvNlfLineSinkCreate( chars.c(), lineEnd ) );
        return own( qvNlfLineSinkLineSink( sink.c() ) );
    }
};

/** Where lines are read from. */
class LineSource : public Reference< LineSource, QV_LINE_SOURCE >
{
public:
    using Reference::Reference;

    /** Splits the text of a char source. `lineEnds` are QV_NLF_FLAG values. */
    explicit LineSource( const CharSource &chars, QV_INT lineEnds = COMMON_LINE_ENDS ) :
        LineSource( on( chars, lineEnds ) )
    {
    }

    /** The standard input, whose lines come as soon as they have arrived. */
    [[nodiscard]] static LineSource standardInput(
        QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0, QV_INT lineEnds = COMMON_LINE_ENDS )
    {
        return own( qvStandardInputLineSource( charset, charsetFlags, lineEnds ) );
    }

    /** The next line without its end; nothing at the end and after a failure. */
    [[nodiscard]] std::optional< String > read()
    {
        return String::ownOptional( qvLineSourceRead( raw() ) );
    }

    /** The lines that are left, as a range that can be walked once. */
    [[nodiscard]] Lines lines() const
    {
        LineSource same( *this );
        return Lines( std::move( same ).giveUp() );
    }

    /** How many lines have been read. */
    [[nodiscard]] QV_INT linesRead() const
    {
        return qvLineSourceLinesRead( raw() );
    }

    /** True after a failure. */
    [[nodiscard]] bool failed() const
    {
        return qvLineSourceError( raw() );
    }

private:
    static LineSource on( const CharSource &chars, QV_INT lineEnds )
    {
        auto source = Held< QV_NLF_LINE_SOURCE >::own( qvNlfLineSourceCreate( chars.c(), lineEnds ) );
        return own( qvNlfLineSourceLineSource( source.c() ) );
    }
};

/* In memory ------------------------------------------------------------------------------------------------------ */

/** Gathers what is written to its sink. */
class BufferSink : public Reference< BufferSink, QV_BUFFER_BYTE_SINK >
{
public:
    using Reference::Reference;

    /** With nothing gathered. */
    BufferSink() : BufferSink( own( qvBufferByteSinkCreate() ) )
    {
    }

    /** A sink that writes here. */
    [[nodiscard]] ByteSink sink() const
    {
        return ByteSink::own( qvBufferByteSinkByteSink( raw() ) );
    }

    /** Takes what was gathered; the next write begins anew. */
    [[nodiscard]] Buffer take()
    {
        return Buffer::own( qvBufferByteSinkBuffer( raw() ) );
    }
};

/** The same for text. */
class StringSink : public Reference< StringSink, QV_STRING_CHAR_SINK >
{
public:
    using Reference::Reference;

    /** With nothing gathered. */
    StringSink() : StringSink( own( qvStringCharSinkCreate() ) )
    {
    }

    /** A sink that writes here. */
    [[nodiscard]] CharSink sink() const
    {
        return CharSink::own( qvStringCharSinkCharSink( raw() ) );
    }

    /** Takes what was gathered; the next write begins anew. */
    [[nodiscard]] String take()
    {
        return String::own( qvStringCharSinkString( raw() ) );
    }
};
} // namespace qv

#endif
