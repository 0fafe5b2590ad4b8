#include "qv/io/qv_byte_sink.h"

#include "qv/base/qv_buffer.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"

struct QV_BYTE_SINK : QV_OBJ
{
    QV___BYTE_SINK_WRITE_FUNC       writeFunc;
    QV___BYTE_SINK_WRITE_BYTES_FUNC writeBytesFunc; // or null
    QV___BYTE_SINK_FLUSH_FUNC       flushFunc;
    QV_OBJ                         *closure; // or null
    QV_BOOL                         error;
};

namespace
{
// Notes how a callback went, and passes that on.
QV_BOOL noted( QV_BYTE_SINK *sink, QV_BOOL ok )
{
    if( !ok )
        sink->error = QV_TRUE;

    return ok ? QV_TRUE : QV_FALSE;
}

void freeFunc( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_BYTE_SINK *sink = qvByteSinkFrom( thisObj );

    qvByteSinkFlush( sink );
    qv::drop( sink->closure );
}
} // namespace

QV___FAMILY( ByteSink, QV_BYTE_SINK, freeFunc, nullptr, nullptr )

QV_BYTE_SINK *qv___ByteSinkCreateForBytes(
    QV___BYTE_SINK_WRITE_FUNC writeFunc, QV___BYTE_SINK_WRITE_BYTES_FUNC writeBytesFunc,
    QV___BYTE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure )
{
    QV_CHECK( writeFunc );
    QV_CHECK( flushFunc );

    QV_BYTE_SINK *sink   = qv::create< QV_BYTE_SINK >( qvByteSinkSort() );
    sink->writeFunc      = writeFunc;
    sink->writeBytesFunc = writeBytesFunc;
    sink->flushFunc      = flushFunc;
    sink->closure        = qv::Ref< QV_OBJ >::share( closure ).give();
    sink->error          = QV_FALSE;

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
    return sink->error;
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
        return !sink->error;

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
        return !sink->error;

    QV_CHECK( byteOffset + byteCount <= qvBufferLength( buf ) );

    if( sink->error )
        return QV_FALSE;

    if( byteCount == 0 )
        return QV_TRUE;

    return noted( sink, sink->writeFunc( sink->closure, buf, byteOffset, byteCount ) );
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
        return !sink->error;

    QV_INT tailOffset = byteOffset + byteCount;
    QV_INT length     = qvBufferLength( buf );

    QV_CHECK_AS( tailOffset <= length, "byteOffset + byteCount <= qvBufferLength( buf )" );

    if( sink->error )
        return QV_FALSE;

    if( byteOffset != 0 && !noted( sink, sink->writeFunc( sink->closure, buf, 0, byteOffset ) ) )
        return QV_FALSE;

    if( tailOffset == length )
        return QV_TRUE;

    return noted( sink, sink->writeFunc( sink->closure, buf, tailOffset, length - tailOffset ) );
}

QV_BOOL qvByteSinkWriteBytes( QV_BYTE_SINK *sink, const void *bytes, QV_INT byteCount )
{
    QV_CHECK( sink );
    QV_CHECK( byteCount >= 0 );
    QV_CHECK( bytes || byteCount == 0 );

    if( sink->error )
        return QV_FALSE;

    if( byteCount == 0 )
        return QV_TRUE;

    // A Buffer is what refuses more bytes than one can hold, whatever the sink could take.
    if( sink->writeBytesFunc && byteCount <= QV_INT_MAX / 8 )
        return noted( sink, sink->writeBytesFunc( sink->closure, static_cast< const uint8_t * >( bytes ), byteCount ) );

    qv::Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( bytes, byteCount ) );

    return noted( sink, sink->writeFunc( sink->closure, buf, 0, byteCount ) );
}

QV_BOOL qvByteSinkFlush( QV_BYTE_SINK *sink )
{
    QV_CHECK( sink );

    if( sink->error )
        return QV_FALSE;

    return noted( sink, sink->flushFunc( sink->closure ) );
}
