#include "qv/io/qv_buffer_byte_sink.h"

#include "qv/base/qv_buffer.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"

#include <algorithm>
#include <utility>

struct QV_BUFFER_BYTE_SINK : QV_OBJ
{
    QV_BUFFER *buffer;
};

namespace
{
void freeBufferByteSink( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qvBufferByteSinkFrom( thisObj )->buffer );
}

QV_BOOL writeToBuffer( QV_OBJ *closure, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount )
{
    QV_BUFFER_BYTE_SINK *bbs  = qvBufferByteSinkFrom( closure );
    QV_INT               fits = std::min( byteCount, qvBufferSpace( bbs->buffer ) );

    qvBufferAppendInner( &bbs->buffer, buf, byteOffset, fits );

    return fits == byteCount;
}

QV_BOOL writeBytesToBuffer( QV_OBJ *closure, const uint8_t *bytes, QV_INT byteCount )
{
    QV_BUFFER_BYTE_SINK *bbs  = qvBufferByteSinkFrom( closure );
    QV_INT               fits = std::min( byteCount, qvBufferSpace( bbs->buffer ) );

    qvBufferAppendBytes( &bbs->buffer, bytes, fits );

    return fits == byteCount;
}
} // namespace

QV___FAMILY( BufferByteSink, QV_BUFFER_BYTE_SINK, freeBufferByteSink, nullptr, nullptr )

QV_BUFFER_BYTE_SINK *qvBufferByteSinkCreate( void )
{
    QV_BUFFER_BYTE_SINK *bbs = qv::create< QV_BUFFER_BYTE_SINK >( qvBufferByteSinkSort() );
    bbs->buffer              = qvBufferCreate();

    return bbs;
}

QV_BYTE_SINK *qvBufferByteSinkByteSink( QV_BUFFER_BYTE_SINK *bbs )
{
    QV_CHECK( bbs );
    return qv___ByteSinkCreateForBytes( writeToBuffer, writeBytesToBuffer, qv::flushNothing, bbs );
}

QV_BUFFER *qvBufferByteSinkBuffer( QV_BUFFER_BYTE_SINK *bbs )
{
    QV_CHECK( bbs );

    return std::exchange( bbs->buffer, qvBufferCreate() );
}
