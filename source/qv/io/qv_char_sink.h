/** @file
    CharSink: the abstract writer of characters. Their destination is a codec over a byte sink, a String or another
    stream, depending on the function that created the sink.

        QV_STRING_CHAR_SINK *scs  = qvStringCharSinkCreate();
        QV_CHAR_SINK        *sink = qvStringCharSinkCharSink( scs );
        qvCharSinkWriteCstr( sink, "port ", -1 );
        qvCharSinkWriteFormatCstr( sink, "%i", -1, (QV_INT)8080 );
        QV_BOOL ok = qvCharSinkFlush( sink );       // true if all writes so far have succeeded too
        qvCharSinkRelease( sink );

    Failure. A write or flush that fails sets the error flag, which nothing clears: from then on every write and flush
    returns QV_FALSE at once, and nothing reaches the destination. What was written before stays written. The
    failure sets the last error (qv_error.h), and so does each call after it that fails because of it, or returns true
    as the error flag.

    End. The last release flushes the sink and then releases the destination. The result of that flush is lost; a caller
    that needs it flushes first. Flushing a codec writes its bytes to the byte sink below, but does not flush that one:
    to know whether everything has reached a file, keep the byte sink and flush it after this one.

    Threads. One thread at a time may use a sink and its destination.

    Costs are those of the destination; the sink adds a constant, and for an array at most a copy of it. Null as a sink
    or format ends the process. */

#ifndef QV_CHAR_SINK_H
#define QV_CHAR_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( CharSink, QV_CHAR_SINK )

/** The error flag: true after a write or flush has failed. */
QV_API QV_BOOL qvCharSinkError( QV_CHAR_SINK *sink );

/** @{ */
/** Writes the String, or a part of it: Leading the first `charCount` characters, Trailing the last, Inner those from
    `charOffset` on, Outer all but those, in up to two writes. Returns true for success. Negative numbers and a range
    outside the String end the process. Null as the String is allowed for a part with all numbers 0, and ends the
    process otherwise. */
QV_API QV_BOOL qvCharSinkWrite( QV_CHAR_SINK *sink, QV_STRING *qvs );
QV_API QV_BOOL qvCharSinkWriteLeading( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charCount );
QV_API QV_BOOL qvCharSinkWriteTrailing( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charCount );
QV_API QV_BOOL qvCharSinkWriteInner( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount );
QV_API QV_BOOL qvCharSinkWriteOuter( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount );
/** @} */

/** @{ */
/** Writes `charCount` characters, which the sink does not keep, or one character. Returns true for success. `chars` may
    be null if the number is 0. A negative number and, unless the sink has failed, a value of 0x110000 or above end the
    process. */
QV_API QV_BOOL qvCharSinkWriteChars( QV_CHAR_SINK *sink, const QV_CHAR *chars, QV_INT charCount );
QV_API QV_BOOL qvCharSinkWriteChar( QV_CHAR_SINK *sink, QV_CHAR ch );
/** @} */

/** @{ */
/** Writes an encoded text, decoded as qvStringCreateFromCstr() and qvStringCreateFromWcstr() do. Returns true for
    success. */
QV_API QV_BOOL qvCharSinkWriteCstr( QV_CHAR_SINK *sink, const char *text, QV_INT length );
QV_API QV_BOOL qvCharSinkWriteWcstr( QV_CHAR_SINK *sink, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Writes formatted text; qv_format.h describes the format. Returns true for success. The arguments are formatted also
    if the sink has failed. */
QV_API QV_BOOL qvCharSinkWriteFormat( QV_CHAR_SINK *sink, QV_STRING *fmt, ... );
QV_API QV_BOOL qvCharSinkWriteFormatCstr( QV_CHAR_SINK *sink, const char *fmt, QV_INT fmtLength, ... );
QV_API QV_BOOL qvCharSinkWriteFormatWcstr( QV_CHAR_SINK *sink, const wchar_t *fmt, QV_INT fmtLength, ... );
/** @} */

/** Makes the destination finish pending work. Returns true if that and all writes so far have succeeded. */
QV_API QV_BOOL qvCharSinkFlush( QV_CHAR_SINK *sink );

#endif
