#include "qv/base/qv_buffer.h"

#include "qv/base/qv_buffer_bits_private.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_life_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_mem_private.h"
#include "qv/sys/qv_order_private.h"

#include <algorithm>

using qv::bitLength;

QV_BUFFER *qv___BufferEmpty = nullptr;

namespace
{
// What stands before every change of the bytes.
inline void makeWritable( QV_BUFFER **buf )
{
    if( !qv::isPrivate( *buf ) )
        qv::assign( buf, qvBufferCreateFrom( *buf ) );
}

void freeBuffer( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_BUFFER *buf = qvBufferFrom( thisObj );
    QV_ASSERT( !( thisObj->memory & QV___MEMORY_ENDS_ALONE ) || ( buf->endsAlone() && !buf->ref ) );

    if( buf->ref )
        qv::drop( buf->ref );
    else
        buf->freeBlock();
}

QV_INT compareBuffers( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_BUFFER     *a      = qvBufferFrom( thisObj );
    QV_BUFFER     *b      = qvBufferFrom( thatObj );
    uint64_t       common = bitLength( a->length < b->length ? a : b );
    const uint8_t *aBytes = qv::bytes( a );
    const uint8_t *bBytes = qv::bytes( b );

    if( QV_INT order = qv::orderBytes( aBytes, bBytes, static_cast< size_t >( common / 8 ) ) )
        return order;

    if( uint64_t left = common % 8 )
    {
        int aRest = aBytes[common / 8] >> ( 8 - left );
        int bRest = bBytes[common / 8] >> ( 8 - left );

        if( QV_INT order = qv::order( aRest, bRest ) )
            return order;
    }

    return qv::order( a->length, b->length );
}

// [ab cd c0/4]
QV_STRING *bufferToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    static const char DIGITS[] = "0123456789abcdef";

    QV_BUFFER     *buf    = qvBufferFrom( thisObj );
    uint64_t       whole  = bitLength( buf ) / 8;
    uint64_t       rest   = bitLength( buf ) % 8;
    const uint8_t *bytes  = qv::bytes( buf );
    uint64_t       length = whole + ( rest != 0 ); // bytes to print, each two digits and a blank or the bracket
    QV_INT         size   = static_cast< QV_INT >( 1 + 3 * length + ( length == 0 ? 1 : 0 ) + ( rest ? 2 : 0 ) );
    QV_STRING     *result = qv::createString( size );
    QV_CHAR       *to     = qv::chars( result );

    *to++ = U'[';

    for( uint64_t i = 0; i < length; i++ )
    {
        unsigned byte = i < whole ? bytes[i] : bytes[i] & ~( 0xFFu >> rest );

        if( i > 0 )
            *to++ = U' ';

        *to++ = static_cast< QV_CHAR >( DIGITS[byte >> 4] );
        *to++ = static_cast< QV_CHAR >( DIGITS[byte & 15] );
    }

    if( rest )
    {
        *to++ = U'/';
        *to++ = static_cast< QV_CHAR >( U'0' + rest );
    }

    *to = U']';

    return result;
}
} // namespace

#undef QV___FAMILY_RELEASE
#define QV___FAMILY_RELEASE( obj ) qv::releaseInline( obj )

QV___FAMILY( Buffer, QV_BUFFER, freeBuffer, compareBuffers, bufferToString )

void qv___BufferStartup( void )
{
    qv___BufferEmpty = qv::createBuffer();
}

void qv___BufferShutdown( void )
{
    qv::drop( qv___BufferEmpty );
}

namespace
{
// The size that is declared of a Buffer, and what it takes beyond that.
const QV_INT DECLARED = sizeof( QV_BUFFER ) - sizeof( QV_BUFFER::unused ), BEYOND = sizeof( QV_BUFFER::unused );
} // namespace

QV_BUFFER *qv::createBuffer()
{
    QV_BUFFER *buf = static_cast< QV_BUFFER * >( createWithRoom( DECLARED, BEYOND, &qv___sort_QV_BUFFER ) );
    buf->initBlock();
    buf->ref = nullptr;

    return buf;
}

QV_BUFFER *qv::createShortBuffer( QV_INT byteCount )
{
    QV_ASSERT( byteCount > 0 && byteCount <= MOST_SHORT_BYTES );

    // A block that comes with the Buffer ends with it.
    const uint16_t ENDS   = QV___MEMORY_ENDS_ALONE;
    QV_SORT       *sort   = &qv___sort_QV_BUFFER;
    QV_INT         bytes  = bufferBlockSize( byteCount );
    QV_OBJ        *object = createQuickly( DECLARED, BEYOND + bytes, sort, ENDS );

    if( __builtin_expect( !object, 0 ) )
        object = createWithRoom( DECLARED, BEYOND + bytes, sort, ENDS );

    QV_BUFFER *buf = static_cast< QV_BUFFER * >( object );
    buf->ref       = nullptr;
    buf->initBlock( bytes, byteCount * 8, { QV_BUFFER_FSPACE, QV_BUFFER_BSPACE } );

    return buf;
}

QV_BUFFER *qv::createShortCopy( const void *bytes, QV_INT byteCount )
{
    QV_BUFFER *buf = createShortBuffer( byteCount );
    copyBytes( qv::bytes( buf ), bytes, static_cast< size_t >( byteCount ) );

    return buf;
}

void qv::useBufferBlock( QV_BUFFER **buf, uint8_t *block, QV_INT byteCount, QV_INT piece )
{
    QV_ASSERT( !( *buf )->memory && !( *buf )->ref && byteCount > 0 && piece * 8 > QV_BUFFER_BSPACE );
    makeWritable( buf );

    // A piece that doesn't fit grows the block, so that as much is free then as in a new one; the last one may fit.
    QV_INT last = ( byteCount - 1 ) % piece + 1;
    QV_INT back = byteCount > piece && last * 8 <= QV_BUFFER_BSPACE ? QV_BUFFER_BSPACE - last * 8 : QV_BUFFER_BSPACE;

    ( *buf )->adoptBlock( block, byteCount * 8, { QV_BUFFER_FSPACE, back } );
}

/* Room ----------------------------------------------------------------------------------------------------------- */

namespace
{
// Checks the size of a block that is to be made, in bits and rounded up to whole bytes.
void checkSize( uint64_t sizeBits )
{
    uint64_t sizeBytes = sizeBits / 8 + ( sizeBits % 8 != 0 );
    QV_CHECK( BYTES_TO_BITS_OK( sizeBytes ) );
    sizeBits = BYTES_TO_BITS( sizeBytes );
    QV_CHECK( QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( sizeBits ) );
}

// A gap that is not whole bytes on a byte boundary: everything goes to a new block, and the object takes that over. The
// contents start on a byte, where any thread may read them, so that all of them have to move.
void makeRoomByRewriting( QV_BUFFER *own, uint64_t atBit, uint64_t bitCount )
{
    QV_CHECK_AS(
        QV___INT_UNSIGNED_ADD_OK( bitLength( own ), bitCount ),
        "QV___INT_UNSIGNED_ADD_OK( (*buf)->bitLength, bitCount )" );

    qv::Ref< QV_BUFFER > tmp( qv::createBuffer() );
    qv___BufferMakeRoom( tmp.at(), 0, bitLength( own ) + bitCount );
    qv___BufferBitWriteInner( tmp.at(), 0, own, 0, atBit );
    qv___BufferBitWriteInner( tmp.at(), atBit + bitCount, own, atBit, bitLength( own ) - atBit );
    qv___BufferSwapContents( own, tmp );
}

// Checks that the block can grow.
void checkGrowth( QV_BUFFER *own, uint64_t atBit, uint64_t bitCount )
{
    uint64_t length = bitLength( own );
    uint64_t front  = static_cast< uint64_t >( own->fspace );

    if( !own->memory )
    {
        QV_CHECK( QV___INT_UNSIGNED_ADD_OK( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE, bitCount ) );
        checkSize( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE + bitCount );
    }
    else if( atBit == length && atBit > 0 )
    {
        QV_CHECK_AS(
            QV___INT_UNSIGNED_ADD_OK( front + length, bitCount ),
            "QV___INT_UNSIGNED_ADD_OK( (*buf)->bitFspace + (*buf)->bitLength, bitCount )" );
        QV_CHECK_AS(
            QV___INT_UNSIGNED_ADD_OK( front + length + bitCount, QV_BUFFER_BSPACE ),
            "QV___INT_UNSIGNED_ADD_OK( (*buf)->bitFspace + (*buf)->bitLength + bitCount, QV_BUFFER_BSPACE )" );
        checkSize( front + length + bitCount + QV_BUFFER_BSPACE );
    }
    else
    {
        QV_CHECK_AS(
            QV___INT_UNSIGNED_ADD_OK( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE, length ),
            "QV___INT_UNSIGNED_ADD_OK( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE, (*buf)->bitLength )" );
        QV_CHECK_AS(
            QV___INT_UNSIGNED_ADD_OK( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE + length, bitCount ),
            "QV___INT_UNSIGNED_ADD_OK( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE + (*buf)->bitLength, bitCount )" );
        checkSize( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE + length + bitCount );
    }
}
} // namespace

void qv___BufferMakeRoom( QV_BUFFER **buf, uint64_t atBit, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK_AS( BIT_AT_BOUND( ( *buf )->fspace ), "BIT_AT_BOUND( (*buf)->bitFspace )" );
    QV_CHECK_AS( atBit <= bitLength( *buf ), "atBit <= (*buf)->bitLength" );

    if( bitCount == 0 )
        return;

    // What most Buffers begin with: some bytes appended to the empty one, which is always shared.
    if( ( *buf )->length == 0 && qv::isShortBuffer( bitCount ) && qv::isShared( *buf ) )
    {
        qv::assign( buf, qv::createShortBuffer( static_cast< QV_INT >( bitCount / 8 ) ) );
        return;
    }

    makeWritable( buf );
    QV_CHECK_AS( !( *buf )->ref, "!(*buf)->ref" );

    QV_BUFFER *own     = *buf;
    QV_INT     at      = static_cast< QV_INT >( atBit );
    bool       ofBytes = BIT_AT_BOUND( atBit ) && BIT_AT_BOUND( bitCount );
    bool       atEnd   = atBit > 0 && atBit == bitLength( own );

    if( own->memory && !atEnd && !ofBytes )
    {
        makeRoomByRewriting( own, atBit, bitCount );
        return;
    }

    if( bitCount > QV_INT_MAX || !own->fits( at, static_cast< QV_INT >( bitCount ) ) )
        checkGrowth( own, atBit, bitCount );

    own->openGap( at, static_cast< QV_INT >( bitCount ) );
}

namespace
{
// A snapshot of live objects may hold the Buffer for a while although its owner is the only one to use it. So only
// a caller from outside is asked whether it is the only holder.
void compact( QV_BUFFER *buf )
{
    if( !buf->ref )
        buf->compact();
}
} // namespace

void qv___BufferCompact( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    QV_CHECK( QV_REF_RETAIN_COUNT( buf ) == 1 );
    QV_CHECK_AS( BIT_AT_BOUND( buf->fspace ), "BIT_AT_BOUND( buf->bitFspace )" );

    compact( buf );
}

void qv___BufferSwapContents( QV_BUFFER *a, QV_BUFFER *b )
{
    QV_CHECK( a );
    QV_CHECK( b );

    a->moveOut();
    b->moveOut();
    std::swap( a->ref, b->ref );
    a->swapBlock( b );
}

/* Contents ------------------------------------------------------------------------------------------------------- */

namespace
{
// What is read from stays alive and as it is. A source that is changed itself counts as shared then, and is copied
// before it changes; one that only the owner of foreign memory holds outlives that owner.
qv::Ref< QV_BUFFER > hold( QV_BUFFER **buf, QV_BUFFER *src )
{
    return qv::Ref< QV_BUFFER >::share( *buf == src || ( *buf )->ref ? src : nullptr );
}
} // namespace

uint64_t qv___BufferBitReadBits( QV_BUFFER *buf, uint64_t bitIdx, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( bitCount <= QV_INT_BITS );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK_AS( bitIdx + bitCount <= bitLength( buf ), "bitIdx + bitCount <= buf->bitLength" );

    if( bitCount == 0 )
        return 0;

    return qv::bits::get( qv::bytes( buf ), qv::readableBits( buf ), bitIdx, bitCount );
}

void qv___BufferBitReadBytes( QV_BUFFER *buf, uint64_t bitIdx, void *bytes, uint64_t byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( bytes || !byteCount );
    QV_CHECK( BYTES_TO_BITS_OK( byteCount ) );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, BYTES_TO_BITS( byteCount ) ) );
    QV_CHECK_AS(
        bitIdx + BYTES_TO_BITS( byteCount ) <= bitLength( buf ),
        "bitIdx + BYTES_TO_BITS( byteCount ) <= buf->bitLength" );

    if( byteCount == 0 )
        return;

    qv::bits::copy(
        static_cast< uint8_t * >( bytes ), 0, qv::bytes( buf ), qv::readableBits( buf ), bitIdx,
        BYTES_TO_BITS( byteCount ) );
}

void qv___BufferBitWriteBits( QV_BUFFER **buf, uint64_t bitIdx, uint64_t value, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( bitCount <= QV_INT_BITS );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK_AS( bitIdx + bitCount <= bitLength( *buf ), "bitIdx + bitCount <= (*buf)->bitLength" );

    if( bitCount == 0 )
        return;

    makeWritable( buf );
    qv::bits::put( qv::bytes( *buf ), bitIdx, value, bitCount );
}

void qv___BufferBitWriteBytes( QV_BUFFER **buf, uint64_t bitIdx, const void *bytes, uint64_t byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( bytes || !byteCount );
    QV_CHECK( BYTES_TO_BITS_OK( byteCount ) );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, BYTES_TO_BITS( byteCount ) ) );
    QV_CHECK_AS(
        bitIdx + BYTES_TO_BITS( byteCount ) <= bitLength( *buf ),
        "bitIdx + BYTES_TO_BITS( byteCount ) <= (*buf)->bitLength" );

    if( byteCount == 0 )
        return;

    qv::Ref< QV_BUFFER > held = qv::holdSource( *buf, bytes );
    makeWritable( buf );
    qv::bits::copy(
        qv::bytes( *buf ), bitIdx, static_cast< const uint8_t * >( bytes ), BYTES_TO_BITS( byteCount ), 0,
        BYTES_TO_BITS( byteCount ) );
}

namespace
{
void writeRun( QV_BUFFER **buf, uint64_t bitIdx, uint64_t bitCount, int byte )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK_AS( bitIdx + bitCount <= bitLength( *buf ), "bitIdx + bitCount <= (*buf)->bitLength" );

    if( bitCount == 0 )
        return;

    makeWritable( buf );
    qv::bits::fill( qv::bytes( *buf ), bitIdx, bitCount, byte );
}
} // namespace

void qv___BufferBitWriteZero( QV_BUFFER **buf, uint64_t bitIdx, uint64_t bitCount )
{
    writeRun( buf, bitIdx, bitCount, 0 );
}

void qv___BufferBitWriteOne( QV_BUFFER **buf, uint64_t bitIdx, uint64_t bitCount )
{
    writeRun( buf, bitIdx, bitCount, 255 );
}

void qv___BufferBitWriteInner( QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( src );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK_AS( bitIdx + bitCount <= bitLength( *buf ), "bitIdx + bitCount <= (*buf)->bitLength" );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK_AS( bitOffset + bitCount <= bitLength( src ), "bitOffset + bitCount <= src->bitLength" );

    if( bitCount == 0 )
        return;

    qv::Ref< QV_BUFFER > held = hold( buf, src );
    makeWritable( buf );
    qv::bits::copy( qv::bytes( *buf ), bitIdx, qv::bytes( src ), qv::readableBits( src ), bitOffset, bitCount );
}

void qv___BufferBitWriteOuter( QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( src );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK_AS( bitOffset + bitCount <= bitLength( src ), "bitOffset + bitCount <= src->bitLength" );
    QV_CHECK_AS(
        QV___INT_UNSIGNED_ADD_OK( bitIdx, bitLength( src ) - bitCount ),
        "QV___INT_UNSIGNED_ADD_OK( bitIdx, src->bitLength - bitCount )" );
    QV_CHECK_AS(
        bitIdx + ( bitLength( src ) - bitCount ) <= bitLength( *buf ),
        "bitIdx + (src->bitLength - bitCount) <= (*buf)->bitLength" );

    uint64_t             after = bitOffset + bitCount;
    qv::Ref< QV_BUFFER > held  = hold( buf, src );
    qv___BufferBitWriteInner( buf, bitIdx, src, 0, bitOffset );
    qv___BufferBitWriteInner( buf, bitIdx + bitOffset, src, after, bitLength( src ) - after );
}

void qv___BufferBitInsertInner(
    QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( src );

    if( bitCount == 0 )
        return;

    qv::Ref< QV_BUFFER > held = hold( buf, src );
    qv___BufferMakeRoom( buf, bitIdx, bitCount );
    qv___BufferBitWriteInner( buf, bitIdx, src, bitOffset, bitCount );
}

void qv___BufferBitInsertOuter(
    QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( src );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK_AS( bitOffset + bitCount <= bitLength( src ), "bitOffset + bitCount <= src->bitLength" );

    if( bitCount == bitLength( src ) )
        return;

    qv::Ref< QV_BUFFER > held = hold( buf, src );
    qv___BufferMakeRoom( buf, bitIdx, bitLength( src ) - bitCount );
    qv___BufferBitWriteOuter( buf, bitIdx, src, bitOffset, bitCount );
}

void qv___BufferBitDelInner( QV_BUFFER **buf, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK_AS( bitOffset + bitCount <= bitLength( *buf ), "bitOffset + bitCount <= (*buf)->bitLength" );

    if( bitCount == 0 )
        return;

    uint64_t after = bitOffset + bitCount;
    uint64_t left  = bitLength( *buf ) - after;

    if( bitCount == bitLength( *buf ) )
    {
        qvBufferClear( buf );
        return;
    }

    if( left > 0 && !( BIT_AT_BOUND( bitOffset ) && BIT_AT_BOUND( bitCount ) ) )
    {
        qv::Ref< QV_BUFFER > rest( qv::createBuffer() );
        qv___BufferBitInsertInner( rest.at(), 0, *buf, 0, bitOffset );
        qv___BufferBitInsertInner( rest.at(), bitOffset, *buf, after, left );
        qv::assign( buf, rest.give() );
        return;
    }

    if( bitOffset == 0 )
    {
        qv::makePrivate( buf, qvBufferCreateFrom ); // no byte changes, so that foreign memory may stay
        ( *buf )->dropFront( static_cast< QV_INT >( bitCount ) );
    }
    else if( left == 0 )
    {
        qv::makePrivate( buf, qvBufferCreateFrom );
        ( *buf )->dropBack( static_cast< QV_INT >( bitCount ) );
    }
    else
    {
        makeWritable( buf );
        ( *buf )->dropInside( static_cast< QV_INT >( bitOffset ), static_cast< QV_INT >( bitCount ) );
    }

    compact( *buf );
}

void qv___BufferBitDelOuter( QV_BUFFER **buf, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK_AS( bitOffset + bitCount <= bitLength( *buf ), "bitOffset + bitCount <= (*buf)->bitLength" );

    if( bitCount == bitLength( *buf ) )
        return;

    if( bitCount == 0 )
    {
        qvBufferClear( buf );
        return;
    }

    if( !BIT_AT_BOUND( bitOffset ) )
    {
        qv::Ref< QV_BUFFER > range( qv::createBuffer() );
        qv___BufferBitInsertInner( range.at(), 0, *buf, bitOffset, bitCount );
        qv::assign( buf, range.give() );
        return;
    }

    qv::makePrivate( buf, qvBufferCreateFrom );
    ( *buf )->dropBack( static_cast< QV_INT >( bitLength( *buf ) - bitOffset - bitCount ) );
    ( *buf )->dropFront( static_cast< QV_INT >( bitOffset ) );
    compact( *buf );
}
