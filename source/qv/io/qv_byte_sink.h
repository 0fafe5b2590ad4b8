/** @file
    ByteSink: the abstract writer of bytes. Their destination is a file, a Buffer or another stream, depending on the
    function that created the sink.

        QV_BYTE_SINK *sink = qvFileOpenByteSink( fn );
        qvByteSinkWrite( sink, head );
        qvByteSinkWrite( sink, body );
        QV_BOOL ok = qvByteSinkFlush( sink );       // true if all writes so far have succeeded too
        qvByteSinkRelease( sink );

    Failure. A write or flush that fails sets the error flag, which nothing clears: from then on every write and flush
    returns QV_FALSE at once, and nothing reaches the destination. What was written before stays written. The
    failure sets the last error (qv_error.h), and so does each call after it that fails because of it, or returns true
    as the error flag.

    End. The last release flushes the sink and then releases the destination. The result of that flush is lost; a caller
    that needs it flushes first.

    Threads. One thread at a time may use a sink and its destination.

    Costs are those of the destination; the sink adds a constant, and for an array at most a copy of it. Null as a sink
    ends the process. */

#ifndef QV_BYTE_SINK_H
#define QV_BYTE_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( ByteSink, QV_BYTE_SINK )

/** The error flag: true after a write or flush has failed. */
QV_API QV_BOOL qvByteSinkError( QV_BYTE_SINK *sink );

/** @{ */
/** Writes the Buffer, or a part of it: Leading the first `byteCount` bytes, Trailing the last, Inner those from
    `byteOffset` on, Outer all but those, in up to two writes. Returns true for success. Negative numbers and a range
    outside the Buffer end the process. Null as the Buffer is allowed for a part with all numbers 0, and ends the
    process otherwise. */
QV_API QV_BOOL qvByteSinkWrite( QV_BYTE_SINK *sink, QV_BUFFER *buf );
QV_API QV_BOOL qvByteSinkWriteLeading( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteCount );
QV_API QV_BOOL qvByteSinkWriteTrailing( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteCount );
QV_API QV_BOOL qvByteSinkWriteInner( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount );
QV_API QV_BOOL qvByteSinkWriteOuter( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount );
/** @} */

/** Writes `byteCount` bytes, which the sink does not keep. Returns true for success. `bytes` may be null if the number
    is 0. A negative number ends the process. */
QV_API QV_BOOL qvByteSinkWriteBytes( QV_BYTE_SINK *sink, const void *bytes, QV_INT byteCount );

/** Makes the destination finish pending work. Returns true if that and all writes so far have succeeded. */
QV_API QV_BOOL qvByteSinkFlush( QV_BYTE_SINK *sink );

#endif
