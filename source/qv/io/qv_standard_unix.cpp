#include "qv/io/qv_standard.h"

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_line_source_private.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_sink.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/io/qv_standard_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_utf8_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using qv::Ref;

// Reads lines from the standard input as they arrive.
struct QV___STANDARD_LINE_SOURCE : QV_OBJ
{
    QV_INT          charset, charsetFlags, nlfFlags;
    char           *bytes; // of one line, from the C library
    size_t          room;
    QV_CHAR        *chars; // that those become
    QV_INT          charRoom;
    QV_INT          bytesTaken; // in all
    QV_LINE_SOURCE *more;       // the lines that are left of what was read, or null
};

namespace
{
/* Writing -------------------------------------------------------------------------------------------------------- */

// Holds back the signal of a pipe that nobody reads. One that comes up meanwhile is the calling thread's own, and is
// taken away.
class PipeSignalHeld
{
public:
    PipeSignalHeld()
    {
        sigset_t pending;
        sigpending( &pending );
        wasPending_ = sigismember( &pending, SIGPIPE );
        sigemptyset( &signal_ );
        sigaddset( &signal_, SIGPIPE );
        pthread_sigmask( SIG_BLOCK, &signal_, &before_ );
    }

    PipeSignalHeld( const PipeSignalHeld & )            = delete;
    PipeSignalHeld &operator=( const PipeSignalHeld & ) = delete;

    ~PipeSignalHeld()
    {
        const timespec noTime = { 0, 0 };

        while( !wasPending_ && sigtimedwait( &signal_, nullptr, &noTime ) == -1 && errno == EINTR )
        {
        }

        pthread_sigmask( SIG_SETMASK, &before_, nullptr );
    }

private:
    sigset_t signal_, before_;
    bool     wasPending_;
};

// A C stream that this thread alone uses, for a scope.
class Locked
{
public:
    explicit Locked( FILE *stream ) : stream_( stream )
    {
        flockfile( stream_ );
    }

    Locked( const Locked & )            = delete;
    Locked &operator=( const Locked & ) = delete;

    ~Locked()
    {
        funlockfile( stream_ );
    }

private:
    FILE *stream_;
};

// The `errno` of the last read or write of a stream that has failed here, or 0. For the thread that has locked it.
int &failureOf( FILE *stream )
{
    static int ofInput, ofOutput, ofError;
    return stream == stdin ? ofInput : stream == stdout ? ofOutput : ofError;
}

// True if bytes only go into the buffer of a stream. Condition: it is fully buffered, and has more room than that.
bool isKept( FILE *stream, size_t count )
{
    return !__flbf( stream ) && __fpending( stream ) + count < __fbufsize( stream );
}

bool writeKept( FILE *stream, const void *bytes, size_t count )
{
    if( fwrite( bytes, 1, count, stream ) == count )
        return true;

    failureOf( stream ) = errno;
    return false;
}

bool writeBytes( FILE *stream, const void *bytes, QV_INT byteCount )
{
    const size_t count = static_cast< size_t >( byteCount );
    Locked       locked( stream );

    if( isKept( stream, count ) )
    {
        bool ok = writeKept( stream, bytes, count );
        QV_ASSERT( ok && __fpending( stream ) >= count );
        return ok;
    }

    PipeSignalHeld held;
    return writeKept( stream, bytes, count );
}

// What has failed before may have lost what this stream's other users wrote, so it counts.
bool flushStream( FILE *stream )
{
    Locked         locked( stream );
    PipeSignalHeld held;

    if( fflush( stream ) != 0 )
        failureOf( stream ) = errno;
    else if( !ferror( stream ) )
        return true;

    return false;
}

// The result of a write or flush, for a caller who is told the reason.
QV_BOOL told( FILE *stream, bool ok )
{
    if( ok )
        return QV_TRUE;

    Locked locked( stream );

    // If only the program's own calls of the C library have failed, the reason is not known.
    if( int failure = failureOf( stream ) )
        return qv::setSystemError(
            stream == stderr ? "the standard error stream cannot be written" : "the standard output cannot be written",
            failure );

    qv::setError(
        { .code   = QV_ERROR_INPUT_OUTPUT,
          .reason = stream == stderr ? "the standard error stream could not be written before"
                                     : "the standard output could not be written before" } );
    return QV_FALSE;
}

// Writes characters so that no other thread's come between them.
void writeChars( FILE *stream, const QV_CHAR *chs, QV_INT length )
{
    char         piece[4096];
    const QV_INT step = sizeof( piece ) / 4; // no character has more than four bytes
    Locked       locked( stream );

    for( QV_INT i = 0; i < length; i += step )
    {
        QV_INT count = qvCharsConvertToUtf8( piece, sizeof( piece ), chs + i, qvIntMin( length - i, step ), QV_FALSE );
        writeBytes( stream, piece, count );
    }
}

FILE *streamOf( QV_OBJ *closure )
{
    return static_cast< FILE * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
}

Ref< QV___BOXED_POINTER > closureFor( FILE *stream )
{
    return Ref< QV___BOXED_POINTER >( qv___BoxedPointerCreate( stream, []( void * ) {} ) );
}

QV_BOOL writeFromBuffer( QV_OBJ *closure, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount )
{
    FILE *stream = streamOf( closure );
    return told( stream, writeBytes( stream, qv::bytes( buf ) + byteOffset, byteCount ) );
}

QV_BOOL writeFromArray( QV_OBJ *closure, const uint8_t *bytes, QV_INT byteCount )
{
    FILE *stream = streamOf( closure );
    return told( stream, writeBytes( stream, bytes, byteCount ) );
}

QV_BOOL flushByteSink( QV_OBJ *closure )
{
    FILE *stream = streamOf( closure );
    return told( stream, flushStream( stream ) );
}

QV_BYTE_SINK *byteSinkOf( FILE *stream )
{
    return qv___ByteSinkCreateForBytes(
        writeFromBuffer, writeFromArray, flushByteSink, qv::obj( closureFor( stream ).get() ) );
}

/* Characters: the closure is a Vector of the sink that encodes and the byte sink below it -------------------------- */

QV_BOOL flushCharSink( QV_OBJ *closure )
{
    QV_OBJ *const *sinks = qvVectorBacking( qvVectorFrom( closure ) );
    return qvCharSinkFlush( qvCharSinkFrom( sinks[0] ) ) && qvByteSinkFlush( qvByteSinkFrom( sinks[1] ) );
}

QV_BOOL writeString( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    QV_OBJ *const *sinks = qvVectorBacking( qvVectorFrom( closure ) );
    return qvCharSinkWriteInner( qvCharSinkFrom( sinks[0] ), qvs, charOffset, charCount );
}

// Flushes where the text has an end of a line.
QV_BOOL writeLines( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    const QV_CHAR *chs = qv::chars( qvs ) + charOffset, *end = chs + charCount;

    while( chs < end && !qv::unicode::isNlf( *chs ) )
        chs++;

    return writeString( closure, qvs, charOffset, charCount ) && ( chs == end || flushCharSink( closure ) );
}

QV_BOOL writeAtOnce( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    return writeString( closure, qvs, charOffset, charCount ) && flushCharSink( closure );
}

QV_CHAR_SINK *charSinkOf( FILE *stream, QV___CHAR_SINK_WRITE_FUNC write, QV_INT charset, QV_INT charsetFlags )
{
    QV_CHECK( QV_CHARSET_OK( charset ) );

    Ref< QV_BYTE_SINK > bytes( byteSinkOf( stream ) );
    Ref< QV_CHAR_SINK > chars( qvCharsetCreateCharSink( bytes, charset, charsetFlags ) );
    Ref< QV_VECTOR >    sinks( qvVectorCreate() );
    qvVectorAppendObj( sinks.at(), qvCharSinkObj( chars ) );
    qvVectorAppendObj( sinks.at(), qvByteSinkObj( bytes ) );

    return qv___CharSinkCreate( write, flushCharSink, qvVectorObj( sinks ) );
}

QV___CHAR_SINK_WRITE_FUNC writeToOutput()
{
    return isatty( STDOUT_FILENO ) ? writeLines : writeString;
}

QV_LINE_SINK *lineSinkOf( QV_CHAR_SINK *owned, QV_INT nlfFlags )
{
    Ref< QV_CHAR_SINK >     chars( owned );
    Ref< QV_NLF_LINE_SINK > lines( qvNlfLineSinkCreate( chars, nlfFlags ) );
    return qvNlfLineSinkLineSink( lines );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

// Sets the last error after a read has failed. Without a number the stream had failed before: it may read no more.
QV_BOOL readFailed( int error )
{
    Locked locked( stdin );
    int   &failure = failureOf( stdin );

    if( error )
        failure = error;

    return qv::setSystemError( "the standard input cannot be read", failure ? failure : EIO );
}

// Fewer bytes than the limit mean the end of the data or an error; a signal does not end the read.
QV_BOOL readToArray( QV_OBJ *, uint8_t *bytes, QV_INT byteCount, QV_INT *bytesRead )
{
    Locked locked( stdin );

    for( ;; )
    {
        errno = 0;
        *bytesRead += static_cast< QV_INT >(
            fread( bytes + *bytesRead, 1, static_cast< size_t >( byteCount - *bytesRead ), stdin ) );

        if( *bytesRead == byteCount || !ferror( stdin ) )
            return QV_TRUE;

        if( errno != EINTR )
            return readFailed( errno );

        clearerr( stdin );
    }
}

QV_BOOL readToBuffer( QV_OBJ *closure, QV_BUFFER **buf, QV_INT byteCount, QV_INT *bytesRead )
{
    uint8_t bytes[4096];

    while( *bytesRead < byteCount )
    {
        QV_INT  wanted = qvIntMin( byteCount - *bytesRead, sizeof( bytes ) ), got = 0;
        QV_BOOL ok = readToArray( closure, bytes, wanted, &got );
        qvBufferAppendBytes( buf, bytes, got );
        *bytesRead += got;

        if( !ok || got < wanted )
            return ok;
    }

    return QV_TRUE;
}

/* Lines as they arrive ------------------------------------------------------------------------------------------- */

using Source = QV___STANDARD_LINE_SOURCE;

void freeStandardLineSource( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    Source *source = qv___StandardLineSourceFrom( thisObj );
    free( source->bytes );
    qvMemFree( source->chars );
    qv::release( source->more );
}

// Whether the byte of a line feed is one in a charset, and nothing else.
bool hasPlainLineFeeds( QV_INT charset )
{
    return charset <= QV_CHARSET_UTF_8 && charset != QV_CHARSET_MSFT_CP037 && charset != QV_CHARSET_MSFT_CP500
           && charset != QV_CHARSET_MSFT_CP875 && charset != QV_CHARSET_MSFT_CP1026;
}

bool isRegularFile()
{
    struct stat status;
    return fstat( STDIN_FILENO, &status ) == 0 && S_ISREG( status.st_mode );
}

// Reads bytes up to a line feed, or to the end of the data. 0 at the end, -1 after an error.
ssize_t readToLineFeed( Source *source )
{
    for( ;; )
    {
        errno         = 0;
        ssize_t count = getline( &source->bytes, &source->room, stdin );

        if( count > 0 )
            return count;

        if( !ferror( stdin ) && errno == 0 )
            return 0;

        if( errno != EINTR )
            return -1;

        clearerr( stdin );
    }
}

// Decodes what was read. Null, with the last error set, if the flags forbid what is invalid.
Ref< QV_STRING > decoded( Source *source, QV_INT count )
{
    Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( source->bytes, count ) );
    Ref< QV_STRING > text( qvCharsetBufferToStringWithFlags( source->charset, buf, source->charsetFlags ) );

    if( !text )
        qv::moveErrorOffset( source->bytesTaken - count );

    // Only the first bytes of all can be a byte order mark.
    source->charsetFlags |= QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK;
    return text;
}

// Decodes what was read to the array of the source, and returns the number of characters; -1 if that takes more than
// this. Condition: a byte order mark cannot come any more, and all bytes are good UTF-8, which is ASCII if that is not
// the charset, since then no character has more than one byte.
QV_INT decodePlainly( Source *source, QV_INT count )
{
    if( !( source->charsetFlags & QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK ) )
        return -1;

    if( source->charRoom < count )
    {
        source->charRoom = count * 2;
        source->chars = static_cast< QV_CHAR * >( qvMemReallocN( source->chars, source->charRoom, sizeof( QV_CHAR ) ) );
    }

    const uint8_t    *bytes  = reinterpret_cast< const uint8_t * >( source->bytes );
    qv::utf8::Decoded done   = qv::utf8::decode( bytes, bytes + count, source->chars, source->chars + count );
    QV_INT            length = done.out - source->chars;

    if( done.in != bytes + count || ( source->charset != QV_CHARSET_UTF_8 && length != count ) )
        return -1;

    QV_ASSERT( qvStringEqualsChars( decoded( source, count ), source->chars, length ) );
    return length;
}

// The length of a text without its end, if it is one line; -1 if it may be several.
QV_INT lengthOfOnlyLine( Source *source, const QV_CHAR *chs, QV_INT length )
{
    bool isEnded = length > 0 && chs[length - 1] == U'\n';
    length -= isEnded;

    if( isEnded && length > 0 && chs[length - 1] == U'\r' && ( source->nlfFlags & QV_NLF_FLAG_CRLF ) )
        length--;

    for( QV_INT i = 0; i < length; i++ )
        if( qv::unicode::isNlf( chs[i] ) )
            return -1;

    return length;
}

QV_BOOL readStandardLine( QV_OBJ *closure, QV_STRING **line )
{
    Source *source = qv___StandardLineSourceFrom( closure );

    if( source->more )
    {
        *line = qvLineSourceRead( source->more );

        if( *line )
            return QV_TRUE;

        qv::release( source->more );
        source->more = nullptr;
    }

    ssize_t count = readToLineFeed( source );

    if( count <= 0 )
        return count == 0 ? QV_TRUE : readFailed( errno );

    source->bytesTaken += count;

    QV_INT plain  = decodePlainly( source, count );
    QV_INT length = plain < 0 ? -1 : lengthOfOnlyLine( source, source->chars, plain );

    if( length >= 0 )
    {
        *line = qvStringCreateFromCharsCopy( source->chars, length );
        return QV_TRUE;
    }

    Ref< QV_STRING > text = decoded( source, count );

    if( !text )
        return QV_FALSE;

    length = lengthOfOnlyLine( source, qv::chars( text ), qvStringLength( text ) );

    if( length >= 0 )
    {
        qvStringDelTrailing( text.at(), qvStringLength( text ) - length );
        *line = text.give();
        return QV_TRUE;
    }

    Ref< QV_NLF_LINE_SOURCE > lines( qvNlfLineSourceCreateFromString( text, source->nlfFlags ) );
    source->more = qvNlfLineSourceLineSource( lines );
    *line        = qvLineSourceRead( source->more );
    return QV_TRUE;
}
} // namespace

QV___FAMILY( ___StandardLineSource, QV___STANDARD_LINE_SOURCE, freeStandardLineSource, nullptr, nullptr )

QV_BYTE_SOURCE *qvStandardInputByteSource( void )
{
    return qv___ByteSourceCreateForBytes( readToBuffer, readToArray, nullptr, nullptr );
}

QV_CHAR_SOURCE *qvStandardInputCharSource( QV_INT charset, QV_INT charsetFlags )
{
    QV_CHECK( QV_CHARSET_OK( charset ) );

    Ref< QV_BYTE_SOURCE > bytes( qvStandardInputByteSource() );
    return qvCharsetCreateCharSource( bytes, charset, charsetFlags );
}

QV_LINE_SOURCE *qvStandardInputLineSource( QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags )
{
    QV_CHECK( QV_CHARSET_OK( charset ) );

    if( isRegularFile() || !hasPlainLineFeeds( charset ) || !( nlfFlags & QV_NLF_FLAG_LF ) )
    {
        Ref< QV_CHAR_SOURCE >     chars( qvStandardInputCharSource( charset, charsetFlags ) );
        Ref< QV_NLF_LINE_SOURCE > lines( qvNlfLineSourceCreate( chars, nlfFlags ) );
        return qvNlfLineSourceLineSource( lines );
    }

    Ref< Source > source( qv::create< Source >( qv___StandardLineSourceSort() ) );
    source->charset      = charset;
    source->charsetFlags = qvCharsetFlagsNormalize( charsetFlags );
    source->nlfFlags     = qvNlfFlagsNormalize( nlfFlags );
    source->bytes        = nullptr;
    source->room         = 0;
    source->chars        = nullptr;
    source->charRoom     = 0;
    source->bytesTaken   = 0;
    source->more         = nullptr;
    return qv___LineSourceCreate( readStandardLine, source );
}

QV_BYTE_SINK *qvStandardOutputByteSink( void )
{
    return byteSinkOf( stdout );
}

QV_CHAR_SINK *qvStandardOutputCharSink( QV_INT charset, QV_INT charsetFlags )
{
    return charSinkOf( stdout, writeToOutput(), charset, charsetFlags );
}

QV_LINE_SINK *qvStandardOutputLineSink( QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags )
{
    return lineSinkOf( charSinkOf( stdout, writeToOutput(), charset, charsetFlags ), nlfFlags );
}

QV_BYTE_SINK *qvStandardErrorByteSink( void )
{
    return byteSinkOf( stderr );
}

QV_CHAR_SINK *qvStandardErrorCharSink( QV_INT charset, QV_INT charsetFlags )
{
    return charSinkOf( stderr, writeAtOnce, charset, charsetFlags );
}

QV_LINE_SINK *qvStandardErrorLineSink( QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags )
{
    return lineSinkOf( charSinkOf( stderr, writeLines, charset, charsetFlags ), nlfFlags );
}

void qvStandardOutputPrint( const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( chsLength >= 0 );
    QV_CHECK( chs || chsLength == 0 );

    writeChars( stdout, chs, chsLength );
}

void qvStandardErrorPrint( const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( chsLength >= 0 );
    QV_CHECK( chs || chsLength == 0 );

    writeChars( stderr, chs, chsLength );
}

QV_BOOL qvStandardOutputFlush( void )
{
    return told( stdout, flushStream( stdout ) );
}

QV_INT qvStandardOutputWidth( void )
{
    if( !isatty( STDOUT_FILENO ) )
        return -1;

    winsize size = {};
    return ioctl( STDOUT_FILENO, TIOCGWINSZ, &size ) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}
