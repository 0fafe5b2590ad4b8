#ifndef QV_BYTE_SOURCE_PRIVATE_H
#define QV_BYTE_SOURCE_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** What a kind of byte source consists of. Every callback gets the closure that the source was made with, runs on the
    thread that uses the source, and gives QV_FALSE for a failure, whatever came before it. After a failure or a short
    count none is called again: a callback keeps reading until the limit is met or the data ends. It must not use the
    source that called it. */

/** Appends up to `maxByteCount` bytes, at least 1, to `*buf` and stores their number in `*bytesRead`, which is 0. A
    limit of QV_INT_MAX is none. A number outside 0 to the limit ends the process. */
typedef QV_BOOL ( *QV___BYTE_SOURCE_READ_FUNC )(
    QV_OBJ *closure, QV_BUFFER **buf, QV_INT maxByteCount, QV_INT *bytesRead );

/** Passes over up to `maxByteCount` bytes, by the same rules. */
typedef QV_BOOL ( *QV___BYTE_SOURCE_SKIP_FUNC )( QV_OBJ *closure, QV_INT maxByteCount, QV_INT *bytesSkipped );

/** A new source, owned by the caller. It retains `closure`, which may be null, until it ends. Without a `skipFunc`
    what is to be skipped is read. Null as `readFunc` ends the process. */
QV_API QV_BYTE_SOURCE *qv___ByteSourceCreate(
    QV___BYTE_SOURCE_READ_FUNC readFunc, QV___BYTE_SOURCE_SKIP_FUNC skipFunc, QV_OBJ *closure );

/** Copies up to `maxByteCount` bytes, at least 1, to the array, by the rules of the read callback. */
typedef QV_BOOL ( *QV___BYTE_SOURCE_READ_BYTES_FUNC )(
    QV_OBJ *closure, uint8_t *bytes, QV_INT maxByteCount, QV_INT *bytesRead );

/** The same with a callback that qvByteSourceReadBytes() takes instead of a temporary Buffer: for a source that can
    fill an array as well as a Buffer. The codecs read through it. `readBytesFunc` may be null. */
QV_API QV_BYTE_SOURCE *qv___ByteSourceCreateForBytes(
    QV___BYTE_SOURCE_READ_FUNC readFunc, QV___BYTE_SOURCE_READ_BYTES_FUNC readBytesFunc,
    QV___BYTE_SOURCE_SKIP_FUNC skipFunc, QV_OBJ *closure );

#endif
