/** @file
    BufferByteSink: collects in a Buffer what is written to its byte sinks.

        QV_BUFFER_BYTE_SINK *bbs  = qvBufferByteSinkCreate();
        QV_BYTE_SINK        *sink = qvBufferByteSinkByteSink( bbs );
        ... write to sink ...
        QV_BUFFER           *buf  = qvBufferByteSinkBuffer( bbs );

    A write fails only if the Buffer would become too long; what fits has then been appended. One thread at a time may
    use the object and all sinks created from it. Null ends the process. */

#ifndef QV_BUFFER_BYTE_SINK_H
#define QV_BUFFER_BYTE_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( BufferByteSink, QV_BUFFER_BYTE_SINK )

/** A new object with an empty Buffer, owned by the caller. */
QV_API QV_BUFFER_BYTE_SINK *qvBufferByteSinkCreate( void );

/** A new byte sink, owned by the caller, that appends to the object's Buffer and retains the object. Several may write
    to the same object. */
QV_API QV_BYTE_SINK *qvBufferByteSinkByteSink( QV_BUFFER_BYTE_SINK *bbs );

/** Takes what has been written since the last call, as a Buffer that the caller owns; the object goes on with an empty
    one. What a stream on top still keeps back is not in it: flush that one first. */
QV_API QV_BUFFER *qvBufferByteSinkBuffer( QV_BUFFER_BYTE_SINK *bbs );

#endif
