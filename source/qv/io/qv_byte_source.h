/** @file
    ByteSource: the abstract reader of bytes. They come from a file, a Buffer or another stream, depending on the
    function that created the source.

        QV_BYTE_SOURCE *source = qvFileOpenByteSource( fn );
        QV_BUFFER      *buf    = qvBufferCreate();
        QV_INT          count  = qvByteSourceRead( source, &buf, 512 );     // appends to the Buffer
        QV_BOOL         ok     = !qvByteSourceError( source );
        qvByteSourceRelease( source );

    End. A read that returns fewer bytes than asked for has met the end and sets the end flag. One that returns exactly
    what is left does not; the next one does, with 0 bytes. A failure sets the error flag and the end flag, and the
    bytes that came before it are delivered. Nothing clears a flag, and a source at its end returns 0 at once.

    Reasons. What failed is told by the last error (qv_error.h), which the failure sets; so does each call after it that
    returns nothing because of it, or true as the error flag.

    Limits. `maxByteCount` is -1 for no limit or 0 and more; anything below ends the process.

    Threads. One thread at a time may use a source and what it reads from.

    Costs are those of what it reads from; the source adds a constant, and for an array at most a copy of what was read.
    Null as a source ends the process. */

#ifndef QV_BYTE_SOURCE_H
#define QV_BYTE_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( ByteSource, QV_BYTE_SOURCE )

/** The end flag: true after a read or skip has met the end of the data or has failed. */
QV_API QV_BOOL qvByteSourceEnd( QV_BYTE_SOURCE *source );

/** The error flag: true after a read or skip has failed. True sets the last error. */
QV_API QV_BOOL qvByteSourceError( QV_BYTE_SOURCE *source );

/** Appends up to `maxByteCount` bytes to the Buffer in `*buf`, which the call may replace. Returns their number. Null
    as `buf` or `*buf` ends the process. */
QV_API QV_INT qvByteSourceRead( QV_BYTE_SOURCE *source, QV_BUFFER **buf, QV_INT maxByteCount );

/** Copies up to `maxByteCount` bytes to the array, which must have room for all that come; with -1 that is everything
    up to the end. Returns their number. `bytes` may be null if the limit is 0. */
QV_API QV_INT qvByteSourceReadBytes( QV_BYTE_SOURCE *source, void *bytes, QV_INT maxByteCount );

/** Skips up to `maxByteCount` bytes. Returns their number. A source that cannot skip is read instead, 4 KiB at a time.
    */
QV_API QV_INT qvByteSourceSkip( QV_BYTE_SOURCE *source, QV_INT maxByteCount );

#endif
