#ifndef QV_BYTE_SINK_PRIVATE_H
#define QV_BYTE_SINK_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The callbacks of a byte sink. Every callback receives the closure of the sink, runs on the thread that uses
    the sink, and returns QV_FALSE for a failure, with the last error set, after which no callback is called again. It
    must not use the sink that called it. */

/** Writes `byteCount` bytes, at least 1, of the Buffer, from `byteOffset` on; the range lies inside the Buffer. A
    callback that keeps the Buffer retains it. */
typedef QV_BOOL ( *QV___BYTE_SINK_WRITE_FUNC )( QV_OBJ *closure, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount );

/** Finishes pending work. Called by a flush, and before the closure is released. */
typedef QV_BOOL ( *QV___BYTE_SINK_FLUSH_FUNC )( QV_OBJ *closure );

/** A new sink, owned by the caller. It retains `closure`, which may be null, until it is freed. Null as a
    callback ends the process. */
QV_API QV_BYTE_SINK *qv___ByteSinkCreate(
    QV___BYTE_SINK_WRITE_FUNC writeFunc, QV___BYTE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure );

/** Writes `byteCount` bytes, at least 1, of an array that it must not keep. */
typedef QV_BOOL ( *QV___BYTE_SINK_WRITE_BYTES_FUNC )( QV_OBJ *closure, const uint8_t *bytes, QV_INT byteCount );

/** The same with a callback that qvByteSinkWriteBytes() calls instead of creating a temporary Buffer. The codecs write
    through it. `writeBytesFunc` may be null. */
QV_API QV_BYTE_SINK *qv___ByteSinkCreateForBytes(
    QV___BYTE_SINK_WRITE_FUNC writeFunc, QV___BYTE_SINK_WRITE_BYTES_FUNC writeBytesFunc,
    QV___BYTE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure );

#endif
