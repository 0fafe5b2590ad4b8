/** @file
    BufferByteSource: lets byte sources read a Buffer from its start to its end.

    The sources made from one object share its position. One thread at a time uses the object and all of them. A partial
    byte at the end of the Buffer is not read. Reading never fails. Null ends the process. */

#ifndef QV_BUFFER_BYTE_SOURCE_H
#define QV_BUFFER_BYTE_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BufferByteSource, QV_BUFFER_BYTE_SOURCE )

/** A new object at the start of `src`, which it retains, so that the Buffer stays as it is. */
QV_API QV_BUFFER_BYTE_SOURCE *qvBufferByteSourceCreate( QV_BUFFER *src );

/** A new byte source that reads on from the object's position and retains the object. Skipping takes a constant
    time. */
QV_API QV_BYTE_SOURCE *qvBufferByteSourceByteSource( QV_BUFFER_BYTE_SOURCE *bbs );

/** A new reference to the whole Buffer. */
QV_API QV_BUFFER *qvBufferByteSourceBuffer( QV_BUFFER_BYTE_SOURCE *bbs );

#endif
