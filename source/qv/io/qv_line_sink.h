/** @file
    LineSink: the abstract writer of lines, each a String without a terminator. What stands behind it is told by who
    made it; qv_nlf_line_sink.h has the one over a char sink.

        QV_BYTE_SINK     *bytes = qvFileOpenByteSink( fn );
        QV_CHAR_SINK     *chars = qvCharsetCreateCharSink( bytes, QV_CHARSET_UTF_8, 0 );
        QV_NLF_LINE_SINK *nls   = qvNlfLineSinkCreate( chars, QV_NLF_FLAG_LF );
        QV_LINE_SINK     *sink  = qvNlfLineSinkLineSink( nls );
        qvLineSinkWriteCstr( sink, "first", -1 );
        qvLineSinkWriteLines( sink, rest );
        QV_BOOL ok = qvLineSinkFlush( sink ) && qvByteSinkFlush( bytes );   // the file has all of it

    Failure. A write or flush that fails sets the error flag, which nothing clears: from then on every operation gives
    QV_FALSE at once and nothing reaches what stands behind. What was written before stays written.

    End. The last release flushes the sink and then gives up what stands behind it. Nobody learns whether that flush
    succeeded; a caller that cares flushes first. A flush goes down to the codec, which hands its bytes to the byte sink
    below but does not flush that: what the sink of qvFileOpenLineSink() answers tells nothing of the file, and only a
    caller that made the chain itself, as above, can ask the byte sink.

    Threads. A sink is used by one thread at a time, and so is what stands behind it.

    Null as a sink, line, Vector or format ends the process, and so does a range outside the String or Vector. */

#ifndef QV_LINE_SINK_H
#define QV_LINE_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( LineSink, QV_LINE_SINK )

/** True once a write or flush has failed. */
QV_API QV_BOOL qvLineSinkError( QV_LINE_SINK *sink );

/** How many lines have been written; stays at QV_INT_MAX once there. */
QV_API QV_INT qvLineSinkLinesWritten( QV_LINE_SINK *sink );

/** @{ */
/** Writes one line: the String, or the leading, trailing, inner or outer characters of it. The result is true for
    success. What of terminators stands in the String goes out as it is. */
QV_API QV_BOOL qvLineSinkWrite( QV_LINE_SINK *sink, QV_STRING *line );
QV_API QV_BOOL qvLineSinkWriteLeading( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteTrailing( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteInner( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT offset, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteOuter( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT offset, QV_INT count );
/** @} */

/** @{ */
/** Writes one line of decoded text; qv_string.h tells the forms. */
QV_API QV_BOOL qvLineSinkWriteCstr( QV_LINE_SINK *sink, const char *text, QV_INT length );
QV_API QV_BOOL qvLineSinkWriteWcstr( QV_LINE_SINK *sink, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Writes one line of formatted text; qv_format.h tells the language. */
QV_API QV_BOOL qvLineSinkWriteFormat( QV_LINE_SINK *sink, QV_STRING *fmt, ... );
QV_API QV_BOOL qvLineSinkWriteFormatCstr( QV_LINE_SINK *sink, const char *fmt, QV_INT fmtLength, ... );
QV_API QV_BOOL qvLineSinkWriteFormatWcstr( QV_LINE_SINK *sink, const wchar_t *fmt, QV_INT fmtLength, ... );
/** @} */

/** @{ */
/** Writes the Strings of a Vector, or of a part of it, one line each, up to the first failure. An element that is no
    String ends the process. */
QV_API QV_BOOL qvLineSinkWriteLines( QV_LINE_SINK *sink, QV_VECTOR *lines );
QV_API QV_BOOL qvLineSinkWriteLinesLeading( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteLinesTrailing( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteLinesInner( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT offset, QV_INT count );
QV_API QV_BOOL qvLineSinkWriteLinesOuter( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT offset, QV_INT count );
/** @} */

/** Asks what stands behind to finish pending work. */
QV_API QV_BOOL qvLineSinkFlush( QV_LINE_SINK *sink );

#endif
