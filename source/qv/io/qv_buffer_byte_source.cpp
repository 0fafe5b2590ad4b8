#include "qv/io/qv_buffer_byte_source.h"

#include "qv/base/qv_buffer.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/runtime/qv_ref.h"

#include <algorithm>
#include <utility>

struct QV_BUFFER_BYTE_SOURCE : QV_OBJ
{
    QV_BUFFER *buffer;
    QV_INT     offset; // bytes read or skipped
};

namespace
{
void freeBufferByteSource( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qvBufferByteSourceFrom( thisObj )->buffer );
}

// Moves on by up to `maxByteCount` bytes: stores their number and returns the offset of the first.
QV_INT takeBytes( QV_BUFFER_BYTE_SOURCE *bbs, QV_INT maxByteCount, QV_INT *count )
{
    QV_INT sourceLength = qvBufferLength( bbs->buffer );

    QV_CHECK( bbs->offset >= 0 );
    QV_CHECK( bbs->offset <= sourceLength );

    *count = std::min( maxByteCount, sourceLength - bbs->offset );

    return std::exchange( bbs->offset, bbs->offset + *count );
}

QV_BOOL readBuffer( QV_OBJ *closure, QV_BUFFER **buf, QV_INT maxByteCount, QV_INT *bytesRead )
{
    QV_BUFFER_BYTE_SOURCE *bbs    = qvBufferByteSourceFrom( closure );
    QV_INT                 offset = takeBytes( bbs, maxByteCount, bytesRead );

    qvBufferAppendInner( buf, bbs->buffer, offset, *bytesRead );

    return QV_TRUE;
}

QV_BOOL readBufferBytes( QV_OBJ *closure, uint8_t *bytes, QV_INT maxByteCount, QV_INT *bytesRead )
{
    QV_BUFFER_BYTE_SOURCE *bbs    = qvBufferByteSourceFrom( closure );
    QV_INT                 offset = takeBytes( bbs, maxByteCount, bytesRead );

    qvBufferReadBytes( bbs->buffer, offset, bytes, *bytesRead );

    return QV_TRUE;
}

QV_BOOL skipBuffer( QV_OBJ *closure, QV_INT maxByteCount, QV_INT *bytesSkipped )
{
    takeBytes( qvBufferByteSourceFrom( closure ), maxByteCount, bytesSkipped );
    return QV_TRUE;
}
} // namespace

QV___FAMILY( BufferByteSource, QV_BUFFER_BYTE_SOURCE, freeBufferByteSource, nullptr, nullptr )

QV_BUFFER_BYTE_SOURCE *qvBufferByteSourceCreate( QV_BUFFER *src )
{
    QV_CHECK( src );

    QV_BUFFER_BYTE_SOURCE *bbs = qv::create< QV_BUFFER_BYTE_SOURCE >( qvBufferByteSourceSort() );
    bbs->buffer                = qv::retain( src );
    bbs->offset                = 0;

    return bbs;
}

QV_BYTE_SOURCE *qvBufferByteSourceByteSource( QV_BUFFER_BYTE_SOURCE *bbs )
{
    QV_CHECK( bbs );
    return qv___ByteSourceCreateForBytes( readBuffer, readBufferBytes, skipBuffer, bbs );
}

QV_BUFFER *qvBufferByteSourceBuffer( QV_BUFFER_BYTE_SOURCE *bbs )
{
    QV_CHECK( bbs );
    return qv::retain( bbs->buffer );
}
