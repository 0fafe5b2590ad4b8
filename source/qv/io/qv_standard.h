/** @file
    The standard input, output and error stream of the process, as streams of bytes, characters and lines, and as print
    hooks.

        qvRuntimeStartup( 0, qvStandardOutputPrint, "my-app", NULL, NULL );     // prints to the standard output
        QV_LINE_SOURCE *lines = qvStandardInputLineSource( QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF );
        QV_STRING      *line  = NULL;

        while( ( line = qvLineSourceRead( lines ) ) != NULL )
            qvPrintFormatCstr( "%~s\n", -1, line );

        qvLineSourceRelease( lines );
        return qvStandardOutputFlush() ? 0 : 1;                 // false if something could not be written

    They stand on the streams `stdin`, `stdout` and `stderr` of the C library, which must not be closed: what a program
    prints with printf() and what it writes here come out in the order of the calls, apart from what a sink still keeps.

    Buffering. Bytes for the standard output wait in the buffer of `stdout` until that is full, until a line ends where it
    is a terminal, until a flush here or fflush(), or until exit(); bytes for the standard error stream do not wait. A char
    or line sink keeps up to 1 KiB before that, which goes on when it is flushed or ends, after each line where the stream
    is a terminal, and for the standard error stream after each line of a line sink and each write to a char sink. To
    flush a sink here flushes the C stream too. All sources read through the buffer of `stdin`. Byte and char sources
    wait until as many bytes are there as they want, char sources for 1 KiB. A line source takes what is there: it returns
    a line as soon as it has arrived, if LF is one of its ends, unless it reads a regular file, or one of the charsets
    UTF-16, UTF-32 and EBCDIC. Where the charset flags forbid some bytes, what comes before them in their line is
    returned as the last line only if lines are not returned as they arrive.

    Charsets. Streams have the one that they are made with; there is no default of the locale. Print hooks write UTF-8.

    Failures never end the process, and set the last error, without a path. A closed descriptor, a full disk and a pipe
    that nobody reads, whose signal SIGPIPE is held back during the write, make the write or flush fail: results are
    false, sinks have the error flag, and qvStandardOutputFlush() tells it for all that was written, print hooks included.
    What was written in part stays written in part. If a handler of a signal that was set without SA_RESTART interrupts a
    write, or the descriptor does not block, that is a failure too. If a descriptor is closed before the start of the
    process, the next file that is opened may get its number.

    Threads. A stream belongs to one thread at a time. Several threads may have streams for the same descriptor, and print
    at the same time: the bytes of one write, or of one call of a print hook, stay together. */

#ifndef QV_STANDARD_H
#define QV_STANDARD_H

#include "qv/sys/qv_types.h"

/** @{ */
/** A new source that reads the standard input. `charset` is a QV_CHARSET value, which a line or char source decodes,
    with QV_CHARSET_FLAG bits; `nlfFlags` tell which ends of lines count. Another charset ends the process. */
QV_API QV_BYTE_SOURCE *qvStandardInputByteSource( void );
QV_API QV_CHAR_SOURCE *qvStandardInputCharSource( QV_INT charset, QV_INT charsetFlags );
QV_API QV_LINE_SOURCE *qvStandardInputLineSource( QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags );
/** @} */

/** @{ */
/** A new sink that writes to the standard output, likewise. */
QV_API QV_BYTE_SINK *qvStandardOutputByteSink( void );
QV_API QV_CHAR_SINK *qvStandardOutputCharSink( QV_INT charset, QV_INT charsetFlags );
QV_API QV_LINE_SINK *qvStandardOutputLineSink( QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags );
/** @} */

/** @{ */
/** A new sink that writes to the standard error stream, likewise. */
QV_API QV_BYTE_SINK *qvStandardErrorByteSink( void );
QV_API QV_CHAR_SINK *qvStandardErrorCharSink( QV_INT charset, QV_INT charsetFlags );
QV_API QV_LINE_SINK *qvStandardErrorLineSink( QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags );
/** @} */

/** @{ */
/** Print hooks for qvRuntimeStartup(): write characters in UTF-8. They take no memory from the heap, and work before the
    start and after the stop of the library. */
QV_API void qvStandardOutputPrint( const QV_CHAR *chs, QV_INT chsLength );
QV_API void qvStandardErrorPrint( const QV_CHAR *chs, QV_INT chsLength );
/** @} */

/** Flushes the standard output. False if that fails, or a write to it has failed before; it sets the last error. */
QV_API QV_BOOL qvStandardOutputFlush( void );

/** The width in cells of the terminal that the standard output is; -1 if it is none. */
QV_API QV_INT qvStandardOutputWidth( void );

#endif
