/** @file
    Lines of files, of the standard input and of texts, read one after the other.

        qv::Lines lines = qv::lines( "notes.txt", QV_CHARSET_ISO_8859_1 );
        for( qv::String line : lines )
            ...
        if( std::optional< qv::Error > error = lines.error() )
            qv::print( "%s\n", error->text() );

    A file that cannot be opened has no lines; error() tells it apart from an empty one. Memory is that of one line. */

#ifndef QV_LINES_HPP
#define QV_LINES_HPP

#include "qv/cpp/qv_result.hpp"

namespace qv
{
/** The ends of lines that text files have: LF, CR LF and CR. */
inline constexpr QV_INT COMMON_LINE_ENDS = QV_NLF_FLAG_LF | QV_NLF_FLAG_CR | QV_NLF_FLAG_CRLF;

/** A range of the lines that a source still has, without their ends. It can be walked once. One thread at a time may
    use it. */
class Lines
{
public:
    /** Takes a source of any kind over, with the name that errors tell where the source has none; null, for which the
        last error tells why, has no lines, and is an error. */
    explicit Lines( QV_LINE_SOURCE *owned, String path = {} ) :
        source_( Held< QV_LINE_SOURCE >::ownOptional( owned ) ), path_( std::move( path ) )
    {
        if( !source_ )
            failure_ = lastError();
    }

    class Iterator
    {
    public:
        using value_type       = String;
        using difference_type  = std::ptrdiff_t;
        using iterator_concept = std::input_iterator_tag;

        explicit Iterator( Lines *lines ) : lines_( lines )
        {
        }

        const String &operator*() const
        {
            return *lines_->line_; // NOLINT(bugprone-unchecked-optional-access): before the end there is one
        }

        Iterator &operator++()
        {
            lines_->read();
            return *this;
        }

        void operator++( int )
        {
            lines_->read();
        }

        friend bool operator==( const Iterator &it, std::default_sentinel_t )
        {
            return it.atEnd();
        }

    private:
        bool atEnd() const
        {
            return !lines_->line_;
        }

        Lines *lines_;
    };

    /** Reads the first line that is left. */
    [[nodiscard]] Iterator begin()
    {
        read();
        return Iterator( this );
    }

    /** After the last line. */
    [[nodiscard]] std::default_sentinel_t end() const
    {
        return {};
    }

    /** Why there are no more lines, if that is not the end of the data: the file could not be opened, reading failed, or
        what does not decode was met where the charset flags forbid it. The line is the one that was not read whole. */
    [[nodiscard]] std::optional< Error > error() const
    {
        if( source_ && qvLineSourceError( source_->c() ) )
            return lastError();

        return failure_;
    }

    /** How many lines have been read. */
    [[nodiscard]] QV_INT linesRead() const
    {
        return source_ ? qvLineSourceLinesRead( source_->c() ) : 0;
    }

private:
    [[nodiscard]] Error lastError() const
    {
        Error error = Error::last();

        if( error.path.empty() )
            error.path = path_;

        return error;
    }

    void read()
    {
        line_.reset();

        if( source_ )
            line_ = String::ownOptional( qvLineSourceRead( source_->c() ) );
    }

    std::optional< Held< QV_LINE_SOURCE > > source_;
    std::optional< String >                 line_;
    std::optional< Error >                  failure_; // of the call that has returned no source
    String                                  path_;
};

/** The QV_CHARSET value of a name or alias of IANA's. */
inline Result< QV_INT > charsetNamed( const String &name )
{
    QV_INT charset = qvCharsetFromIanaName( name.c() );

    if( charset < 0 )
        return Error{ .reason = format( "there is no charset %s", name ), .code = QV_ERROR_NOT_FOUND };

    return charset;
}

/** The lines of a file. `charset` is a QV_CHARSET value, `charsetFlags` tell what becomes of bytes that do not decode,
    `lineEnds` which ends count. */
[[nodiscard]] inline Lines lines(
    const String &path, QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0, QV_INT lineEnds = COMMON_LINE_ENDS )
{
    return Lines( qvFileOpenLineSource( path.c(), charset, charsetFlags, lineEnds ), path );
}

/** The lines of the standard input. qv_standard.h tells when they arrive, and what is read ahead. */
[[nodiscard]] inline Lines standardInputLines(
    QV_INT charset = QV_CHARSET_UTF_8, QV_INT charsetFlags = 0, QV_INT lineEnds = COMMON_LINE_ENDS )
{
    return Lines( qvStandardInputLineSource( charset, charsetFlags, lineEnds ) );
}

/** The lines of a text. */
[[nodiscard]] inline Lines linesOf( const String &text, QV_INT lineEnds = COMMON_LINE_ENDS )
{
    using Source  = Held< QV_NLF_LINE_SOURCE >;
    Source source = Source::own( qvNlfLineSourceCreateFromString( text.c(), lineEnds ) );
    return Lines( qvNlfLineSourceLineSource( source.c() ) );
}

static_assert( std::ranges::input_range< Lines > );
} // namespace qv

#endif
