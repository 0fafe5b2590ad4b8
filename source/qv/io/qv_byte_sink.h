/** @file
    ByteSink: the abstract writer of bytes. What stands behind it, a file, a Buffer or a stream of another kind, is
    told by the function that made it.

        QV_BYTE_SINK *sink = qvFileOpenByteSink( fn );
        qvByteSinkWrite( sink, head );
        qvByteSinkWrite( sink, body );
        QV_BOOL ok = qvByteSinkFlush( sink );       // one test for all that went before: the operating system has it
        qvByteSinkRelease( sink );

    Failure. A write or flush that fails sets the error flag, which nothing clears: from then on every operation gives
    QV_FALSE at once and nothing reaches what stands behind. What was written before stays written.

    End. The last release flushes the sink and then gives up what stands behind it. Nobody learns whether that flush
    succeeded; a caller that cares flushes first.

    Threads. A sink is used by one thread at a time, and so is what stands behind it.

    Costs are those of what stands behind; the sink itself adds a constant, and for an array at most a copy of it. Null
    as a sink ends the process. */

#ifndef QV_BYTE_SINK_H
#define QV_BYTE_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( ByteSink, QV_BYTE_SINK )

/** True once a write or flush has failed. */
QV_API QV_BOOL qvByteSinkError( QV_BYTE_SINK *sink );

/** @{ */
/** Writes the Buffer, or the leading, trailing, inner or outer bytes of it, the last in up to two writes. The result
    is true for success. Negative numbers and a range outside the Buffer end the process, and so does null as the
    Buffer, but for an empty range at the start. */
QV_API QV_BOOL qvByteSinkWrite( QV_BYTE_SINK *sink, QV_BUFFER *buf );
QV_API QV_BOOL qvByteSinkWriteLeading( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteCount );
QV_API QV_BOOL qvByteSinkWriteTrailing( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteCount );
QV_API QV_BOOL qvByteSinkWriteInner( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount );
QV_API QV_BOOL qvByteSinkWriteOuter( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount );
/** @} */

/** Writes a copy of `byteCount` bytes. `bytes` may be null for none of them. */
QV_API QV_BOOL qvByteSinkWriteBytes( QV_BYTE_SINK *sink, const void *bytes, QV_INT byteCount );

/** Asks what stands behind to finish pending work. */
QV_API QV_BOOL qvByteSinkFlush( QV_BYTE_SINK *sink );

#endif
