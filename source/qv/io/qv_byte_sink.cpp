#include "qv/io/qv_byte_sink.h"

#include "qv/base/qv_buffer.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"

struct QV_BYTE_SINK : qv::AnySink
{
    QV___BYTE_SINK_WRITE_FUNC       writeFunc;
    QV___BYTE_SINK_WRITE_BYTES_FUNC writeBytesFunc; // or null
};

namespace
{
void freeByteSink( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::endSink( qvByteSinkFrom( thisObj ) );
}
} // namespace

QV___FAMILY( ByteSink, QV_BYTE_SINK, freeByteSink, nullptr, nullptr )

QV_BYTE_SINK *qv___ByteSinkCreateForBytes(
    QV___BYTE_SINK_WRITE_FUNC writeFunc, QV___BYTE_SINK_WRITE_BYTES_FUNC writeBytesFunc,
    QV___BYTE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure )
{
    QV_CHECK( writeFunc );
    QV_CHECK( flushFunc );

    QV_BYTE_SINK *sink   = qv::createSink< QV_BYTE_SINK >( qvByteSinkSort(), flushFunc, closure );
    sink->writeFunc      = writeFunc;
    sink->writeBytesFunc = writeBytesFunc;

    return sink;
}

QV_BYTE_SINK *qv___ByteSinkCreate(
    QV___BYTE_SINK_WRITE_FUNC writeFunc, QV___BYTE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure )
{
    return qv___ByteSinkCreateForBytes( writeFunc, nullptr, flushFunc, closure );
}

QV_BOOL qvByteSinkError( QV_BYTE_SINK *sink )
{
    QV_CHECK( sink );
    return !qv::stillGood( sink );
}

QV_BOOL qvByteSinkWrite( QV_BYTE_SINK *sink, QV_BUFFER *buf )
{
    QV_CHECK( sink );
    QV_CHECK( buf );

    return qvByteSinkWriteInner( sink, buf, 0, qvBufferLength( buf ) );
}

QV_BOOL qvByteSinkWriteLeading( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteCount )
{
    return qvByteSinkWriteInner( sink, buf, 0, byteCount );
}

QV_BOOL qvByteSinkWriteTrailing( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteCount )
{
    QV_CHECK( sink );
    QV_CHECK( byteCount >= 0 );
    QV_CHECK( byteCount == 0 || buf );

    if( byteCount == 0 )
        return qv::stillGood( sink );

    QV_CHECK( byteCount <= qvBufferLength( buf ) );

    return qvByteSinkWriteInner( sink, buf, qvBufferLength( buf ) - byteCount, byteCount );
}

QV_BOOL qvByteSinkWriteInner( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount )
{
    QV_CHECK( sink );
    QV_CHECK( byteOffset >= 0 );
    QV_CHECK( byteCount >= 0 );
    QV_CHECK( byteOffset == 0 || buf );
    QV_CHECK( byteCount == 0 || buf );
    QV_CHECK( QV_INT_ADD_OK( byteOffset, byteCount ) );

    if( byteOffset == 0 && byteCount == 0 )
        return qv::stillGood( sink );

    QV_CHECK( byteOffset + byteCount <= qvBufferLength( buf ) );

    return qv::writeRange( sink, buf, byteOffset, byteCount );
}

QV_BOOL qvByteSinkWriteOuter( QV_BYTE_SINK *sink, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount )
{
    QV_CHECK( sink );
    QV_CHECK( byteOffset >= 0 );
    QV_CHECK( byteCount >= 0 );
    QV_CHECK( byteOffset == 0 || buf );
    QV_CHECK( byteCount == 0 || buf );
    QV_CHECK( QV_INT_ADD_OK( byteOffset, byteCount ) );

    if( !buf )
        return qv::stillGood( sink );

    QV_INT tailOffset = byteOffset + byteCount;
    QV_INT length     = qvBufferLength( buf );

    QV_CHECK_AS( tailOffset <= length, "byteOffset + byteCount <= qvBufferLength( buf )" );

    return qv::writeAround( sink, buf, byteOffset, tailOffset, length );
}

QV_BOOL qvByteSinkWriteBytes( QV_BYTE_SINK *sink, const void *bytes, QV_INT byteCount )
{
    QV_CHECK( sink );
    QV_CHECK( byteCount >= 0 );
    QV_CHECK( bytes || byteCount == 0 );

    if( !qv::stillGood( sink ) )
        return QV_FALSE;

    if( byteCount == 0 )
        return QV_TRUE;

    // More bytes than a Buffer can hold end the process there, also where the sink could take them.
    if( sink->writeBytesFunc && byteCount <= QV_INT_MAX / 8 )
    {
        const uint8_t *array = static_cast< const uint8_t * >( bytes );
        return qv::noteResult( sink, sink->writeBytesFunc( sink->closure, array, byteCount ) );
    }

    qv::Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( bytes, byteCount ) );

    return qv::writeRange( sink, buf.get(), 0, byteCount );
}

QV_BOOL qvByteSinkFlush( QV_BYTE_SINK *sink )
{
    QV_CHECK( sink );
    return qv::flushSink( sink );
}
