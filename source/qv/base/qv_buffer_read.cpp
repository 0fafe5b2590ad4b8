#include "qv/base/qv_buffer.h"
#include "qv/base/qv_buffer_bits_private.h"
#include "qv/base/qv_buffer_private.h"

namespace
{
QV_BUFFER *copyRange( QV_BUFFER *buf, uint64_t bitIdx, uint64_t bitCount )
{
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK_AS( bitIdx + bitCount <= qv::bitLength( buf ), "bitIdx + bitCount <= buf->bitLength" );

    if( bitIdx % 8 == 0 && qv::isShortBuffer( bitCount ) )
        return qv::createShortCopy( qv::bytes( buf ) + bitIdx / 8, static_cast< QV_INT >( bitCount / 8 ) );

    qv::Ref< QV_BUFFER > result( qv::createBuffer() );
    qv___BufferBitInsertInner( result.at(), 0, buf, bitIdx, bitCount );

    return result.give();
}

[[gnu::noinline]] uint64_t readBits( QV_BUFFER *buf, uint64_t bitIdx, QV_INT bitCount )
{
    return qv___BufferBitReadBits( buf, bitIdx, UNSIGNED( bitCount ) );
}

// True where all checks would hold, and the bits stand in eight bytes of which none lies after the contents.
bool standsInOneWord( QV_BUFFER *buf, uint64_t bitIdx, QV_INT bitCount )
{
    return (uint64_t)bitCount - 1 < 57 && bitIdx + 64 <= qv::bitLength( buf );
}

uint64_t getWord( QV_BUFFER *buf, uint64_t bitIdx, QV_INT bitCount )
{
    return qv::bits::load64( qv::bytes( buf ) + bitIdx / 8 ) << bitIdx % 8 >> ( 64 - bitCount );
}
} // namespace

QV_INT qvBufferLength( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    return qv::byteLength( buf );
}

QV_INT qvBufferBitLength( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    return buf->length;
}

QV_INT qvBufferSpace( QV_BUFFER *buf )
{
    return qvBufferBitSpace( buf ) / 8;
}

QV_INT qvBufferBitSpace( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    return QV_INT_MAX - buf->length;
}

QV_BOOL qvBufferBitIsAligned( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    return BIT_AT_BOUND( buf->length ) ? QV_TRUE : QV_FALSE;
}

const uint8_t *qvBufferBacking( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    return qv::bytes( buf );
}

const uint8_t *qvBufferBitBacking( QV_BUFFER *buf )
{
    return qvBufferBacking( buf );
}

QV_BUFFER *qvBufferRead( QV_BUFFER *buf, QV_INT byteIdx, QV_INT byteCount )
{
    QV_CHECK( buf );
    uint64_t place = BYTES( byteIdx );

    return copyRange( buf, place, BYTES( byteCount ) );
}

QV_BUFFER *qvBufferBitRead( QV_BUFFER *buf, QV_INT bitIdx, QV_INT bitCount )
{
    QV_CHECK( buf );
    uint64_t place = UNSIGNED( bitIdx );

    return copyRange( buf, place, UNSIGNED( bitCount ) );
}

uint64_t qvBufferReadBits( QV_BUFFER *buf, QV_INT byteIdx, QV_INT bitCount )
{
    QV_CHECK( buf );
    uint64_t place = BYTES( byteIdx );

    return qv___BufferBitReadBits( buf, place, UNSIGNED( bitCount ) );
}

uint64_t qvBufferBitReadBits( QV_BUFFER *buf, QV_INT bitIdx, QV_INT bitCount )
{
    QV_CHECK( buf );
    uint64_t place = UNSIGNED( bitIdx );

    return standsInOneWord( buf, place, bitCount ) ? getWord( buf, place, bitCount ) : readBits( buf, place, bitCount );
}

uint8_t qvBufferReadByte( QV_BUFFER *buf, QV_INT byteIdx )
{
    QV_CHECK( buf );
    return (uint8_t)qv___BufferBitReadBits( buf, BYTES( byteIdx ), 8 );
}

uint8_t qvBufferBitReadByte( QV_BUFFER *buf, QV_INT bitIdx )
{
    QV_CHECK( buf );
    return (uint8_t)qv___BufferBitReadBits( buf, UNSIGNED( bitIdx ), 8 );
}

void qvBufferReadBytes( QV_BUFFER *buf, QV_INT byteIdx, void *bytes, QV_INT byteCount )
{
    QV_CHECK( buf );
    uint64_t place = BYTES( byteIdx );

    qv___BufferBitReadBytes( buf, place, bytes, UNSIGNED( byteCount ) );
}

void qvBufferBitReadBytes( QV_BUFFER *buf, QV_INT bitIdx, void *bytes, QV_INT byteCount )
{
    QV_CHECK( buf );
    uint64_t place = UNSIGNED( bitIdx );

    qv___BufferBitReadBytes( buf, place, bytes, UNSIGNED( byteCount ) );
}
