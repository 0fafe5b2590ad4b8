#ifndef QV_BUFFER_PRIVATE_H
#define QV_BUFFER_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_ref.h"

/** Free bits that a new block has at each end. */
#define QV_BUFFER_FSPACE 640
#define QV_BUFFER_BSPACE 1280

/** The three lengths add up to the size of the block that the Buffer accounts for; it changes by a constant. What is
    really allocated may be up to half as large again, so that a run of changes does not reallocate every 160 bytes. */
struct QV_BUFFER : QV_OBJ
{
    uint64_t bitLength; /**< bits of the contents, at most QV_INT_MAX */
    uint64_t bitFspace; /**< free bits in front of them, whole bytes */
    uint64_t bitBspace; /**< free bits behind them */
    uint8_t *bytes;     /**< the block, or null; the contents start at bytes[bitFspace / 8] */
    QV_OBJ  *ref;       /**< owner of the block where that is foreign and must not be written, else null */
    uint64_t allocated; /**< bytes that are really allocated; 0 for a foreign block */
};

/** The one empty Buffer of qvBufferCreate(). */
extern "C" QV_BUFFER *qv___BufferEmpty;

/** Opens a gap of `bitCount` undefined bits. `*buf` becomes a private copy first, if it is shared or wraps foreign
    memory. */
QV_API void qv___BufferMakeRoom( QV_BUFFER **buf, uint64_t atBit, uint64_t bitCount );

/** Gives free space back where an end has too much of it. Nobody else may hold the Buffer. */
QV_API void qv___BufferCompact( QV_BUFFER *buf );

/** Exchanges everything but the identity of two objects. */
QV_API void qv___BufferSwapContents( QV_BUFFER *a, QV_BUFFER *b );

/** What the public forms are made of; all in bits but `byteCount`. */
QV_API uint64_t qv___BufferBitReadBits( QV_BUFFER *buf, uint64_t bitIdx, uint64_t bitCount );
QV_API void     qv___BufferBitReadBytes( QV_BUFFER *buf, uint64_t bitIdx, void *bytes, uint64_t byteCount );
QV_API void     qv___BufferBitWriteBits( QV_BUFFER **buf, uint64_t bitIdx, uint64_t value, uint64_t bitCount );
QV_API void     qv___BufferBitWriteBytes( QV_BUFFER **buf, uint64_t bitIdx, const void *bytes, uint64_t byteCount );
QV_API void     qv___BufferBitWriteZero( QV_BUFFER **buf, uint64_t bitIdx, uint64_t bitCount );
QV_API void     qv___BufferBitWriteOne( QV_BUFFER **buf, uint64_t bitIdx, uint64_t bitCount );
QV_API void     qv___BufferBitWriteInner(
        QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount );
QV_API void qv___BufferBitWriteOuter(
    QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount );
QV_API void qv___BufferBitInsertInner(
    QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount );
QV_API void qv___BufferBitInsertOuter(
    QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount );
QV_API void qv___BufferBitDelInner( QV_BUFFER **buf, uint64_t bitOffset, uint64_t bitCount );
QV_API void qv___BufferBitDelOuter( QV_BUFFER **buf, uint64_t bitOffset, uint64_t bitCount );

namespace qv
{
/** The first byte of the contents; null for a Buffer without a block. */
inline uint8_t *bytes( QV_BUFFER *buf )
{
    return buf->bytes + buf->bitFspace / 8;
}

/** The length in whole bytes, rounded down. */
inline QV_INT byteLength( QV_BUFFER *buf )
{
    return static_cast< QV_INT >( buf->bitLength / 8 );
}

/** True when the bytes may be written where they are: nobody else holds the Buffer, and the block is its own. */
inline bool isPrivate( QV_BUFFER *buf )
{
    return !isShared( buf ) && !buf->ref;
}

/** Where appending so many bits doesn't fit, makes as much space behind as it would, if the block needn't be
    reallocated for that. The Buffer must be private and whole bytes long. The declared size is just stored:
    qv___ObjDbgSetAllocationSize() would order memory and look for a second writer, which costs more than all the
    rest. */
inline bool growWithinAllocation( QV_BUFFER *own, uint64_t bitCount )
{
    uint64_t used      = own->bitFspace + own->bitLength;
    uint64_t sizeBytes = ( used + bitCount + QV_BUFFER_BSPACE ) / 8;

    if( sizeBytes > own->allocated )
        return false;

    own->bitBspace = sizeBytes * 8 - used;
    __atomic_store_n( &own->dbgAllocationSize, static_cast< QV_INT >( sizeBytes ), __ATOMIC_RELAXED );
    return true;
}

/** Makes the contents `byteCount` bytes longer, above 0, and gives the place of the new bytes, which the caller fills
    at once. The length must be whole bytes. */
inline uint8_t *appendRoom( QV_BUFFER **buf, QV_INT byteCount )
{
    QV_BUFFER *own  = *buf;
    uint64_t   bits = static_cast< uint64_t >( byteCount ) * 8;

    if( isPrivate( own ) && ( own->bitBspace >= bits || growWithinAllocation( own, bits ) ) )
    {
        own->bitBspace -= bits;
        own->bitLength += bits;
    }
    else
    {
        qv___BufferMakeRoom( buf, own->bitLength, bits );
        own = *buf;
    }

    return bytes( own ) + ( own->bitLength - bits ) / 8;
}
} // namespace qv

#endif
