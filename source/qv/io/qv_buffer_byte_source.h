/** @file
    BufferByteSource: lets byte sources read a Buffer from its start to its end.

    The sources created from one object share its position. One thread at a time may use the object and all of them.
    Bits at the end of the Buffer that are no whole byte are not read. Reading never fails. Null ends the process. */

#ifndef QV_BUFFER_BYTE_SOURCE_H
#define QV_BUFFER_BYTE_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BufferByteSource, QV_BUFFER_BYTE_SOURCE )

/** A new object at the start of `src`, owned by the caller. It retains the Buffer, so later changes by the caller do
    not show in it. */
QV_API QV_BUFFER_BYTE_SOURCE *qvBufferByteSourceCreate( QV_BUFFER *src );

/** A new byte source, owned by the caller, that reads from the object's position on and retains the object. Skipping
    takes a constant time. */
QV_API QV_BYTE_SOURCE *qvBufferByteSourceByteSource( QV_BUFFER_BYTE_SOURCE *bbs );

/** The whole Buffer, as a new reference that the caller owns. */
QV_API QV_BUFFER *qvBufferByteSourceBuffer( QV_BUFFER_BYTE_SOURCE *bbs );

#endif
