/** @file
    ByteSource: the abstract reader of bytes. What stands behind it, a file, a Buffer or a stream of another kind, is
    told by the function that made it.

        QV_BYTE_SOURCE *source = qvFileOpenByteSource( fn );
        QV_BUFFER      *buf    = qvBufferCreate();
        QV_INT          count  = qvByteSourceRead( source, &buf, 512 );     // appends to the Buffer
        QV_BOOL         ok     = !qvByteSourceError( source );
        qvByteSourceRelease( source );

    End. A read that gives fewer bytes than asked for has met the end and sets the end flag; one that gives exactly
    what is left does not, the next one does, with 0 bytes. A failure sets the error flag and the end flag, and the
    bytes that came before it are delivered. Nothing clears a flag, and a source at its end gives 0 at once.

    Limits. `maxByteCount` is -1 for no limit or 0 and more; anything below ends the process.

    Threads. A source is used by one thread at a time, and so is what stands behind it.

    Costs are those of what stands behind; the source itself adds a constant, and for an array at most a copy of what
    was read. Null as a source ends the process. */

#ifndef QV_BYTE_SOURCE_H
#define QV_BYTE_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( ByteSource, QV_BYTE_SOURCE )

/** True once a read or skip has met the end of the data or failed. */
QV_API QV_BOOL qvByteSourceEnd( QV_BYTE_SOURCE *source );

/** True once a read or skip has failed. */
QV_API QV_BOOL qvByteSourceError( QV_BYTE_SOURCE *source );

/** Appends up to `maxByteCount` bytes to the Buffer in `*buf`. The result is their number. */
QV_API QV_INT qvByteSourceRead( QV_BYTE_SOURCE *source, QV_BUFFER **buf, QV_INT maxByteCount );

/** Copies up to `maxByteCount` bytes to the array, which must have room for all that comes; with -1 that is everything
    up to the end. The result is their number. `bytes` may be null with a limit of 0. */
QV_API QV_INT qvByteSourceReadBytes( QV_BYTE_SOURCE *source, void *bytes, QV_INT maxByteCount );

/** Passes over up to `maxByteCount` bytes. The result is their number. A source that cannot skip
    is read for it, 4 KiB at a time. */
QV_API QV_INT qvByteSourceSkip( QV_BYTE_SOURCE *source, QV_INT maxByteCount );

#endif
