/** @file
    LineSink: the abstract writer of lines, each a String without a terminator. Their destination depends on the
    function that created the sink; qv_nlf_line_sink.h has the sink on top of a char sink.

        QV_BYTE_SINK     *bytes = qvFileOpenByteSink( fn );
        QV_CHAR_SINK     *chars = qvCharsetCreateCharSink( bytes, QV_CHARSET_UTF_8, 0 );
        QV_NLF_LINE_SINK *nls   = qvNlfLineSinkCreate( chars, QV_NLF_FLAG_LF );
        QV_LINE_SINK     *sink  = qvNlfLineSinkLineSink( nls );
        qvLineSinkWriteCstr( sink, "first", -1 );
        qvLineSinkWriteLines( sink, rest );
        QV_BOOL ok = qvLineSinkFlush( sink ) && qvByteSinkFlush( bytes );   // true if all is in the file

    Failure. A write or flush that fails sets the error flag, which nothing clears: from then on every write and flush
    returns QV_FALSE at once, and nothing reaches the destination. What was written before stays written. The
    failure sets the last error (qv_error.h), and so does each call after it that fails because of it, or returns true
    as the error flag.

    End. The last release flushes the sink and then releases the destination. The result of that flush is lost; a caller
    that needs it flushes first. A flush goes down to the codec, which writes its bytes to the byte sink below but does
    not flush that one. So the result of flushing a sink of qvFileOpenLineSink() says nothing about the file; a caller
    that needs to know builds the chain itself, as above, and flushes the byte sink too.

    Threads. One thread at a time may use a sink and its destination.

    Null as a sink, line, Vector or format ends the process, and so does a range outside the String or Vector. */

#ifndef QV_LINE_SINK_H
#define QV_LINE_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( LineSink, QV_LINE_SINK )

/** The error flag: true after a write or flush has failed. */
QV_API QV_BOOL qvLineSinkError( QV_LINE_SINK *sink );

/** The number of lines that have been written; it never exceeds QV_INT_MAX. */
QV_API QV_INT qvLineSinkLinesWritten( QV_LINE_SINK *sink );

/** @{ */
/** Writes one line: the String, or a part of it: Leading the first `count` characters, Trailing the last, Inner those
    from `offset` on, Outer all but those. Returns true for success. Terminators inside the String are written as they
    are. */
QV_API QV_BOOL qvLineSinkWrite( QV_LINE_SINK *sink, QV_STRING *line );
QV_API QV_BOOL qvLineSinkWriteLeading( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteTrailing( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteInner( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT offset, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteOuter( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT offset, QV_INT count );
/** @} */

/** @{ */
/** Writes one line of an encoded text, decoded as qvStringCreateFromCstr() and qvStringCreateFromWcstr() do. Returns
    true for success. */
QV_API QV_BOOL qvLineSinkWriteCstr( QV_LINE_SINK *sink, const char *text, QV_INT length );
QV_API QV_BOOL qvLineSinkWriteWcstr( QV_LINE_SINK *sink, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Writes one line of formatted text; qv_format.h describes the format. Returns true for success. */
QV_API QV_BOOL qvLineSinkWriteFormat( QV_LINE_SINK *sink, QV_STRING *fmt, ... );
QV_API QV_BOOL qvLineSinkWriteFormatCstr( QV_LINE_SINK *sink, const char *fmt, QV_INT fmtLength, ... );
QV_API QV_BOOL qvLineSinkWriteFormatWcstr( QV_LINE_SINK *sink, const wchar_t *fmt, QV_INT fmtLength, ... );
/** @} */

/** @{ */
/** Writes the Strings of a Vector, or of a part of it as above, one line each, up to the first failure. Returns true if
    all were written. An element that is no String ends the process when its turn comes. */
QV_API QV_BOOL qvLineSinkWriteLines( QV_LINE_SINK *sink, QV_VECTOR *lines );
QV_API QV_BOOL qvLineSinkWriteLinesLeading( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteLinesTrailing( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteLinesInner( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT offset, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteLinesOuter( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT offset, QV_INT count );
/** @} */

/** Makes the destination finish pending work. Returns true if that and all writes so far have succeeded. */
QV_API QV_BOOL qvLineSinkFlush( QV_LINE_SINK *sink );

#endif
