#ifndef QV_BYTE_SOURCE_PRIVATE_H
#define QV_BYTE_SOURCE_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The callbacks of a byte source. Every callback receives the closure of the source, runs on the thread that uses the
    source, and returns QV_FALSE for a failure, with the last error set, also if it has delivered something before.
    After a failure or a count below the limit no callback is called again, so a callback goes on until the limit is
    reached or the data ends. It must not use the source that called it. */

/** Appends up to `maxByteCount` bytes, at least 1, to `*buf` and stores their number in `*bytesRead`, which is 0. A
    limit of QV_INT_MAX means no limit. A number outside 0 to the limit ends the process. */
typedef QV_BOOL ( *QV___BYTE_SOURCE_READ_FUNC )(
    QV_OBJ *closure, QV_BUFFER **buf, QV_INT maxByteCount, QV_INT *bytesRead );

/** Skips up to `maxByteCount` bytes, by the same rules. */
typedef QV_BOOL ( *QV___BYTE_SOURCE_SKIP_FUNC )( QV_OBJ *closure, QV_INT maxByteCount, QV_INT *bytesSkipped );

/** A new source, owned by the caller. It retains `closure`, which may be null, until it is freed. If `skipFunc` is
    null, skipping reads and discards. Null as `readFunc` ends the process. */
QV_API QV_BYTE_SOURCE *qv___ByteSourceCreate(
    QV___BYTE_SOURCE_READ_FUNC readFunc, QV___BYTE_SOURCE_SKIP_FUNC skipFunc, QV_OBJ *closure );

/** Copies up to `maxByteCount` bytes, at least 1, to the array, by the rules of the read callback. */
typedef QV_BOOL ( *QV___BYTE_SOURCE_READ_BYTES_FUNC )(
    QV_OBJ *closure, uint8_t *bytes, QV_INT maxByteCount, QV_INT *bytesRead );

/** The same with a callback that qvByteSourceReadBytes() calls instead of creating a temporary Buffer. The codecs read
    through it. `readBytesFunc` may be null. */
QV_API QV_BYTE_SOURCE *qv___ByteSourceCreateForBytes(
    QV___BYTE_SOURCE_READ_FUNC readFunc, QV___BYTE_SOURCE_READ_BYTES_FUNC readBytesFunc,
    QV___BYTE_SOURCE_SKIP_FUNC skipFunc, QV_OBJ *closure );

#endif
