#ifndef QV_BUFFER_PRIVATE_H
#define QV_BUFFER_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_block_private.h"

/** Free bits that a new block has at each end. */
#define QV_BUFFER_FSPACE 640
#define QV_BUFFER_BSPACE 1280

namespace qv
{
struct BufferRules : SavingRules< QV_BUFFER_FSPACE, QV_BUFFER_BSPACE, 2 * QV_BUFFER_FSPACE, 2 * QV_BUFFER_BSPACE, 8 >
{
    using Unit = uint8_t;

    static constexpr QV_INT UNIT_BITS = 1;

    /** From here on the free function has a block to free. */
    static void leaveHome( QV_OBJ *object )
    {
        ownsMore( object );
    }
};

/** What stands before the block, since memory that comes with a Buffer follows that. */
struct BufferHeader : QV_OBJ
{
    QV_OBJ *ref; /**< owner of the bytes where they are foreign and must not be written, else null */
    uint64_t
        unused; /**< aligns contents that come with the object as those of a block from the C library; not declared */
};
} // namespace qv

/** A block of bits, which starts and ends on whole bytes, as the contents start; or memory of another object. Then all
    of its bits are in the lengths, none of its bytes is allocated, and nothing is declared. A short Buffer has its first
    block in one allocation with it. */
struct QV_BUFFER : qv::Block< qv::BufferHeader, qv::BufferRules >
{
};

static_assert( ( sizeof( QV_BUFFER ) + QV_BUFFER_FSPACE / 8 ) % 16 == 0 );

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
/** A Buffer without a block. */
QV_BUFFER *createBuffer();

/** A short Buffer has so many bytes at most. */
const QV_INT MOST_SHORT_BYTES = 200;

inline bool isShortBuffer( uint64_t bits )
{
    return bits % 8 == 0 && bits / 8 - 1 < static_cast< uint64_t >( MOST_SHORT_BYTES );
}

/** A short Buffer of `byteCount` undefined bytes, above 0, with the free places of a new one. */
QV_BUFFER *createShortBuffer( QV_INT byteCount );

/** The same with a copy of bytes. */
QV_BUFFER *createShortCopy( const void *bytes, QV_INT byteCount );

/** Bytes of a block for useBufferBlock(): contents, which start after QV_BUFFER_FSPACE bits, and what it may declare free
    around them. */
inline QV_INT bufferBlockSize( QV_INT byteCount )
{
    return ( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE ) / 8 + byteCount;
}

/** Takes over a block from qvMemAlloc() with `byteCount` bytes, above 0, as the contents of a Buffer that has neither a
    block nor foreign memory. Declares what appending them in pieces of `piece` bytes would, each but the last larger than
    what is free in a new block. */
void useBufferBlock( QV_BUFFER **buf, uint8_t *block, QV_INT byteCount, QV_INT piece );

/** The first byte of the contents; null for a Buffer without a block. */
inline uint8_t *bytes( QV_BUFFER *buf )
{
    return buf->first;
}

/** The length in whole bytes, rounded down. */
inline QV_INT byteLength( QV_BUFFER *buf )
{
    return buf->length / 8;
}

inline uint64_t bitLength( QV_BUFFER *buf )
{
    return static_cast< uint64_t >( buf->length );
}

/** How many bits can be read from the first on. Those after the contents have no meaning; where free places are
    watched they are left alone. */
inline uint64_t readableBits( QV_BUFFER *buf )
{
    return static_cast< uint64_t >( QV___ASSERTIONS ? buf->length : buf->length + buf->bspace );
}

/** True when the bytes may be written where they are: nobody else holds the Buffer, and the block is its own. */
inline bool isPrivate( QV_BUFFER *buf )
{
    return !isShared( buf ) && !buf->ref;
}

/** Keeps for a scope in which a Buffer changes what goes in as it is: bytes of its own, since the Buffer counts as
    shared then, and bytes that only the owner of its foreign memory holds. */
inline Ref< QV_BUFFER > holdSource( QV_BUFFER *buf, const void *bytes )
{
    return Ref< QV_BUFFER >::share( buf->ref || buf->holds( bytes ) ? buf : nullptr );
}

/** True if `bits`, above 0, can be taken after the contents without moving them. The Buffer must be private. */
inline bool hasRoomAfter( QV_BUFFER *own, QV_INT bits )
{
    return own->bspace >= bits || ( own->length > 0 && own->stretch( bits ) );
}

/** Makes the contents `byteCount` bytes longer, above 0, and returns the place of the new bytes, which the caller fills
    at once. The length must be whole bytes. */
inline uint8_t *appendRoom( QV_BUFFER **buf, QV_INT byteCount )
{
    if( isPrivate( *buf ) && byteCount <= QV_INT_MAX / 8 && hasRoomAfter( *buf, byteCount * 8 ) )
        return ( *buf )->takeBack( byteCount * 8 );

    qv___BufferMakeRoom( buf, bitLength( *buf ), static_cast< uint64_t >( byteCount ) * 8 );
    return bytes( *buf ) + byteLength( *buf ) - byteCount;
}
} // namespace qv

#endif
