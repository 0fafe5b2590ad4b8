/** @file
    CharSink: the abstract writer of characters. What stands behind it, a codec over a byte sink, a String or something
    else, is told by the function that made it.

        QV_STRING_CHAR_SINK *scs  = qvStringCharSinkCreate();
        QV_CHAR_SINK        *sink = qvStringCharSinkCharSink( scs );
        qvCharSinkWriteCstr( sink, "port ", -1 );
        qvCharSinkWriteFormatCstr( sink, "%i", -1, (QV_INT)8080 );
        QV_BOOL ok = qvCharSinkFlush( sink );       // one test for all that went before, as far as this sink goes
        qvCharSinkRelease( sink );

    Failure. A write or flush that fails sets the error flag, which nothing clears: from then on every operation gives
    QV_FALSE at once and nothing reaches what stands behind. What was written before stays written.

    End. The last release flushes the sink and then gives up what stands behind it. Nobody learns whether that flush
    succeeded; a caller that cares flushes first. Flushing a codec hands its bytes to the byte sink below, which is not
    flushed by that: to know that all has reached a file, keep the byte sink and flush it after this one.

    Threads. A sink is used by one thread at a time, and so is what stands behind it.

    Costs are those of what stands behind; the sink itself adds a constant, and for an array at most a copy of it. Null
    as a sink or format ends the process. */

#ifndef QV_CHAR_SINK_H
#define QV_CHAR_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( CharSink, QV_CHAR_SINK )

/** True once a write or flush has failed. */
QV_API QV_BOOL qvCharSinkError( QV_CHAR_SINK *sink );

/** @{ */
/** Writes the String, or the leading, trailing, inner or outer characters of it, the last in up to two writes. The
    result is true for success. Negative numbers and a range outside the String end the process, and so does null as
    the String, but for an empty range at the start. */
QV_API QV_BOOL qvCharSinkWrite( QV_CHAR_SINK *sink, QV_STRING *qvs );
QV_API QV_BOOL qvCharSinkWriteLeading( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charCount );
QV_API QV_BOOL qvCharSinkWriteTrailing( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charCount );
QV_API QV_BOOL qvCharSinkWriteInner( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount );
QV_API QV_BOOL qvCharSinkWriteOuter( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount );
/** @} */

/** @{ */
/** Writes a copy of `charCount` characters, or one character. `chars` may be null for none of them. Values of 0x110000
    and above end the process. */
QV_API QV_BOOL qvCharSinkWriteChars( QV_CHAR_SINK *sink, const QV_CHAR *chars, QV_INT charCount );
QV_API QV_BOOL qvCharSinkWriteChar( QV_CHAR_SINK *sink, QV_CHAR ch );
/** @} */

/** @{ */
/** Writes decoded text; qv_string.h tells the forms. */
QV_API QV_BOOL qvCharSinkWriteCstr( QV_CHAR_SINK *sink, const char *text, QV_INT length );
QV_API QV_BOOL qvCharSinkWriteWcstr( QV_CHAR_SINK *sink, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Writes formatted text; qv_format.h tells the language. */
QV_API QV_BOOL qvCharSinkWriteFormat( QV_CHAR_SINK *sink, QV_STRING *fmt, ... );
QV_API QV_BOOL qvCharSinkWriteFormatCstr( QV_CHAR_SINK *sink, const char *fmt, QV_INT fmtLength, ... );
QV_API QV_BOOL qvCharSinkWriteFormatWcstr( QV_CHAR_SINK *sink, const wchar_t *fmt, QV_INT fmtLength, ... );
/** @} */

/** Asks what stands behind to finish pending work. */
QV_API QV_BOOL qvCharSinkFlush( QV_CHAR_SINK *sink );

#endif
