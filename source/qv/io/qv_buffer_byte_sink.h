/** @file
    BufferByteSink: collects in a Buffer what is written to its byte sinks.

        QV_BUFFER_BYTE_SINK *bbs  = qvBufferByteSinkCreate();
        QV_BYTE_SINK        *sink = qvBufferByteSinkByteSink( bbs );
        ... write to sink ...
        QV_BUFFER           *buf  = qvBufferByteSinkBuffer( bbs );

    Writing fails only when the Buffer can't become longer; what fits has then been added. One thread at a time uses the
    object and all sinks made from it. Null ends the process. */

#ifndef QV_BUFFER_BYTE_SINK_H
#define QV_BUFFER_BYTE_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BufferByteSink, QV_BUFFER_BYTE_SINK )

/** A new object with an empty Buffer. */
QV_API QV_BUFFER_BYTE_SINK *qvBufferByteSinkCreate( void );

/** A new byte sink that appends to the object's Buffer and retains the object. There may be several. */
QV_API QV_BYTE_SINK *qvBufferByteSinkByteSink( QV_BUFFER_BYTE_SINK *bbs );

/** Hands out what has been written and leaves an empty Buffer, so that a second call gives only what came in
    between. What a layer above keeps in a cache is not there yet: flush that first. */
QV_API QV_BUFFER *qvBufferByteSinkBuffer( QV_BUFFER_BYTE_SINK *bbs );

#endif
