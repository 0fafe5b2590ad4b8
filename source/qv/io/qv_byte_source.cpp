#include "qv/io/qv_byte_source.h"

#include "qv/base/qv_buffer.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"

#include <algorithm>

struct QV_BYTE_SOURCE : qv::AnySource
{
    QV___BYTE_SOURCE_READ_FUNC       readFunc;
    QV___BYTE_SOURCE_READ_BYTES_FUNC readBytesFunc; // or null
    QV___BYTE_SOURCE_SKIP_FUNC       skipFunc;      // or null
};

namespace
{
// How many bytes a skip without a callback reads at a time.
const QV_INT SKIP_BYTES = 4096;

void freeByteSource( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::endStream( qvByteSourceFrom( thisObj ) );
}

// One call of the read callback, for at least 1 byte.
QV_INT readOnce( QV_BYTE_SOURCE *source, QV_BUFFER **buf, QV_INT maxByteCount )
{
    QV_INT  bytesRead = 0;
    QV_BOOL ok        = source->readFunc( source->closure, buf, maxByteCount, &bytesRead );

    QV_CHECK( bytesRead >= 0 );
    QV_CHECK( bytesRead <= maxByteCount );

    return qv::noteCount( source, ok, bytesRead, maxByteCount );
}

QV_INT skipByReading( QV_BYTE_SOURCE *source, QV_INT maxByteCount )
{
    qv::Ref< QV_BUFFER > buf( qvBufferCreate() );
    QV_INT               bytesSkipped = 0;

    while( bytesSkipped < maxByteCount && !source->end )
    {
        qvBufferClear( buf.at() );
        bytesSkipped += readOnce( source, buf.at(), std::min( maxByteCount - bytesSkipped, SKIP_BYTES ) );
    }

    return bytesSkipped;
}
} // namespace

QV___FAMILY( ByteSource, QV_BYTE_SOURCE, freeByteSource, nullptr, nullptr )

QV_BYTE_SOURCE *qv___ByteSourceCreateForBytes(
    QV___BYTE_SOURCE_READ_FUNC readFunc, QV___BYTE_SOURCE_READ_BYTES_FUNC readBytesFunc,
    QV___BYTE_SOURCE_SKIP_FUNC skipFunc, QV_OBJ *closure )
{
    QV_CHECK( readFunc );

    QV_BYTE_SOURCE *source = qv::createSource< QV_BYTE_SOURCE >( qvByteSourceSort(), closure );
    source->readFunc       = readFunc;
    source->readBytesFunc  = readBytesFunc;
    source->skipFunc       = skipFunc;

    return source;
}

QV_BYTE_SOURCE *qv___ByteSourceCreate(
    QV___BYTE_SOURCE_READ_FUNC readFunc, QV___BYTE_SOURCE_SKIP_FUNC skipFunc, QV_OBJ *closure )
{
    return qv___ByteSourceCreateForBytes( readFunc, nullptr, skipFunc, closure );
}

QV_BOOL qvByteSourceEnd( QV_BYTE_SOURCE *source )
{
    QV_CHECK( source );
    return source->end;
}

QV_BOOL qvByteSourceError( QV_BYTE_SOURCE *source )
{
    QV_CHECK( source );
    return !qv::stillGood( source );
}

QV_INT qvByteSourceRead( QV_BYTE_SOURCE *source, QV_BUFFER **buf, QV_INT maxByteCount )
{
    QV_CHECK( source );
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( maxByteCount >= -1 );

    return qv::isIdle( source, maxByteCount ) ? 0 : readOnce( source, buf, qv::limitOf( maxByteCount ) );
}

QV_INT qvByteSourceReadBytes( QV_BYTE_SOURCE *source, void *bytes, QV_INT maxByteCount )
{
    QV_CHECK( source );
    QV_CHECK( maxByteCount >= -1 );
    QV_CHECK( bytes || maxByteCount == 0 );

    if( qv::isIdle( source, maxByteCount ) )
        return 0;

    maxByteCount = qv::limitOf( maxByteCount );

    if( !source->readBytesFunc )
    {
        qv::Ref< QV_BUFFER > buf( qvBufferCreate() );
        QV_INT               count = readOnce( source, buf.at(), maxByteCount );

        qvBufferReadBytes( buf, 0, bytes, count );

        return count;
    }

    QV_INT  bytesRead = 0;
    QV_BOOL ok = source->readBytesFunc( source->closure, static_cast< uint8_t * >( bytes ), maxByteCount, &bytesRead );

    QV_CHECK( bytesRead >= 0 );
    QV_CHECK( bytesRead <= maxByteCount );

    return qv::noteCount( source, ok, bytesRead, maxByteCount );
}

QV_INT qvByteSourceSkip( QV_BYTE_SOURCE *source, QV_INT maxByteCount )
{
    QV_CHECK( source );
    QV_CHECK( maxByteCount >= -1 );

    if( qv::isIdle( source, maxByteCount ) )
        return 0;

    maxByteCount = qv::limitOf( maxByteCount );

    if( !source->skipFunc )
        return skipByReading( source, maxByteCount );

    QV_INT  bytesSkipped = 0;
    QV_BOOL ok           = source->skipFunc( source->closure, maxByteCount, &bytesSkipped );

    QV_CHECK( bytesSkipped >= 0 );
    QV_CHECK( bytesSkipped <= maxByteCount );

    return qv::noteCount( source, ok, bytesSkipped, maxByteCount );
}
