#include "qv/base/qv_buffer.h"

#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>
#include <bit>
#include <string.h>

QV_BUFFER *qv___BufferEmpty = nullptr;

// The conditions that the reports of this source quote.
#define BYTES_TO_BITS( x )                         ( (uint64_t)( x ) << 3 )
#define BYTES_TO_BITS_OK( x )                      ( (uint64_t)( x ) < (uint64_t)1 << 61 )
#define BIT_AT_BOUND( x )                          ( ( ( x ) & 7 ) == 0 )
#define QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( x ) ( ( x ) >= 0 )
#define QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( x )   ( ( x ) <= (uint64_t)QV_INT_MAX )
#define QV___INT_UNSIGNED_ADD_OK( a, b )           ( (uint64_t)( a ) + (uint64_t)( b ) >= (uint64_t)( a ) )
#define QV_REF_RETAIN_COUNT( x )                   qv___AtomicLoad32( &( x )->retainCount )

namespace
{
const uint64_t OVERSIZED_FSPACE = 2 * QV_BUFFER_FSPACE; // a block with more free bits at an end is cut down
const uint64_t OVERSIZED_BSPACE = 2 * QV_BUFFER_BSPACE;

const uint64_t FEW_BYTES = 4096; // arrays up to this size cannot break a check of sizes where there is room for them

/* Bits in memory. Positions are in bits from the start of a block, whose size in bits is `end`. ------------------- */

uint64_t load64( const uint8_t *at )
{
    uint64_t word;
    memcpy( &word, at, 8 );
    return std::endian::native == std::endian::little ? __builtin_bswap64( word ) : word;
}

template< class T >
void storeBig( uint8_t *at, T word )
{
    if constexpr( std::endian::native == std::endian::little && sizeof( T ) == 8 )
        word = __builtin_bswap64( word );
    else if constexpr( std::endian::native == std::endian::little && sizeof( T ) == 4 )
        word = __builtin_bswap32( word );
    else if constexpr( std::endian::native == std::endian::little && sizeof( T ) == 2 )
        word = __builtin_bswap16( word );

    memcpy( at, &word, sizeof( T ) );
}

// Bits near the end of a block, out of less than eight bytes.
[[gnu::noinline]] uint64_t getLastBits( const uint8_t *at, uint64_t shift, uint64_t count )
{
    uint64_t word = 0;

    for( uint64_t bit = 0; bit < shift + count; bit += 8 )
        word |= static_cast< uint64_t >( at[bit / 8] ) << ( 56 - bit );

    return word << shift >> ( 64 - count );
}

// Up to 64 bits, at least 1.
inline uint64_t getBits( const uint8_t *block, uint64_t end, uint64_t pos, uint64_t count )
{
    const uint8_t *at    = block + pos / 8;
    uint64_t       shift = pos % 8;

    if( pos - shift + 64 > end )
        return getLastBits( at, shift, count );

    uint64_t word = load64( at ) << shift;

    if( shift + count > 64 )
        word |= at[8] >> ( 8 - shift );

    return word >> ( 64 - count );
}

// Overwrites bits that stand in up to eight bytes, at least 1. Only the two bytes at the ends are read, and each of
// them lies in one store: a processor can take a byte out of a store that has not reached the cache yet, but has to
// wait for a word that is partly in one, which would slow down fields that are written one behind the other.
inline void putWord( uint8_t *block, uint64_t pos, uint64_t value, uint64_t count )
{
    uint8_t *at    = block + pos / 8;
    uint64_t shift = pos % 8;
    uint64_t word  = value << ( 64 - count ); // at the top

    if( shift + count <= 8 )
    {
        uint64_t mask = ( 0xFF00 >> count & 0xFF ) >> shift;
        *at = static_cast< uint8_t >( ( *at & ~mask ) | word >> 56 >> shift );
        return;
    }

    uint64_t last = ( shift + count - 1 ) / 8; // index of the last byte
    uint64_t head = *at & ~( 0xFFu >> shift );
    uint64_t tail = at[last] & ( 0xFFu >> ( ( shift + count - 1 ) % 8 + 1 ) );

    word = head << 56 | word >> shift | tail << ( 56 - last * 8 );

    if( last < 3 )
    {
        storeBig( at, static_cast< uint16_t >( word >> 48 ) );
        storeBig( at + last - 1, static_cast< uint16_t >( word >> ( 56 - last * 8 ) ) );
    }
    else
    {
        storeBig( at, static_cast< uint32_t >( word >> 32 ) );
        storeBig( at + last - 3, static_cast< uint32_t >( word >> ( 56 - last * 8 ) ) );
    }
}

// Overwrites up to 64 bits, at least 1.
void putBits( uint8_t *block, uint64_t pos, uint64_t value, uint64_t count )
{
    if( count > 32 )
    {
        putWord( block, pos, value >> 32, count - 32 );
        pos += count - 32;
        count = 32;
    }

    putWord( block, pos, value, count );
}

// Copies any number of bits between blocks that do not overlap.
void copyBits(
    uint8_t *dest, uint64_t destPos, const uint8_t *src, uint64_t srcEnd, uint64_t srcPos, uint64_t count )
{
    if( uint64_t ahead = std::min( -destPos % 8, count ) )
    {
        putBits( dest, destPos, getBits( src, srcEnd, srcPos, ahead ), ahead );
        destPos += ahead;
        srcPos += ahead;
        count -= ahead;
    }

    uint8_t       *to    = dest + destPos / 8;
    const uint8_t *from  = src + srcPos / 8;
    uint64_t       shift = srcPos % 8;
    uint64_t       done  = 0;

    if( shift == 0 )
    {
        done = count / 8;

        if( done )
            memcpy( to, from, done );
    }
    else
    {
        // Each word stands in nine bytes, all of which hold bits of the range.
        for( ; count - done * 8 >= 64; done += 8 )
            storeBig( to + done, load64( from + done ) << shift | from[done + 8] >> ( 8 - shift ) );
    }

    if( uint64_t left = count - done * 8 )
        putBits( to, done * 8, getBits( src, srcEnd, srcPos + done * 8, left ), left );
}

void fillBits( uint8_t *block, uint64_t pos, uint64_t count, int byte )
{
    uint64_t value = byte ? ~static_cast< uint64_t >( 0 ) : 0;

    if( uint64_t ahead = std::min( -pos % 8, count ) )
    {
        putBits( block, pos, value, ahead );
        pos += ahead;
        count -= ahead;
    }

    if( count >= 8 )
        memset( block + pos / 8, byte, count / 8 );

    if( uint64_t left = count % 8 )
        putBits( block, pos + ( count - left ), value, left );
}

/* The block of a Buffer ------------------------------------------------------------------------------------------ */

// Size of the block in bits.
uint64_t blockEnd( QV_BUFFER *buf )
{
    return buf->bitFspace + buf->bitLength + buf->bitBspace;
}

QV_BUFFER *createWithoutBlock()
{
    QV_BUFFER *buf = qv::create< QV_BUFFER >( qvBufferSort() );
    buf->bitLength = 0;
    buf->bitFspace = 0;
    buf->bitBspace = 0;
    buf->bytes     = nullptr;
    buf->ref       = nullptr;
    buf->allocated = 0;

    return buf;
}

// Gives the block a size and declares it to the object frame; gives the size in bits, rounded up to whole bytes. The
// lengths are the caller's business.
uint64_t reallocate( QV_BUFFER *buf, uint64_t sizeBits )
{
    uint64_t sizeBytes = sizeBits / 8 + ( sizeBits % 8 != 0 );
    QV_CHECK( BYTES_TO_BITS_OK( sizeBytes ) );
    sizeBits = BYTES_TO_BITS( sizeBytes );
    QV_CHECK( QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( sizeBits ) );

    if( sizeBytes > buf->allocated || sizeBytes < buf->allocated / 2 )
    {
        // A block that grows once will grow again. The first one is as large as it has to be.
        buf->allocated = sizeBytes > buf->allocated && buf->allocated ? sizeBytes + sizeBytes / 2 : sizeBytes;
        buf->bytes     = static_cast< uint8_t * >( qvMemRealloc( buf->bytes, (QV_INT)buf->allocated ) );
    }

    qv___ObjDbgSetAllocationSize( buf, static_cast< QV_INT >( sizeBytes ) );

    return sizeBits;
}

// Moves `bits`, rounded up to whole bytes, within the block. Places are in bits, on byte boundaries.
void moveBits( QV_BUFFER *buf, uint64_t to, uint64_t from, uint64_t bits )
{
    memmove( buf->bytes + to / 8, buf->bytes + from / 8, ( bits + 7 ) / 8 );
}

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

    if( buf->ref )
    {
        qv::drop( buf->ref );
    }
    else
    {
        qvMemFree( buf->bytes );
        qv___ObjDbgSetAllocationSize( buf, 0 );
    }
}

QV_INT compare( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_BUFFER     *a      = qvBufferFrom( thisObj );
    QV_BUFFER     *b      = qvBufferFrom( thatObj );
    uint64_t       common = std::min( a->bitLength, b->bitLength );
    const uint8_t *aBytes = qv::bytes( a );
    const uint8_t *bBytes = qv::bytes( b );

    if( QV_INT order = qvMemCompare( aBytes, bBytes, static_cast< QV_INT >( common / 8 ) ) )
        return order;

    if( uint64_t left = common % 8 )
    {
        int aRest = aBytes[common / 8] >> ( 8 - left );
        int bRest = bBytes[common / 8] >> ( 8 - left );

        if( aRest != bRest )
            return aRest < bRest ? -1 : 1;
    }

    return ( a->bitLength > b->bitLength ) - ( a->bitLength < b->bitLength );
}

// [ab cd c0/4]
QV_STRING *toString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    static const char DIGITS[] = "0123456789abcdef";

    QV_BUFFER     *buf    = qvBufferFrom( thisObj );
    uint64_t       whole  = buf->bitLength / 8;
    uint64_t       rest   = buf->bitLength % 8;
    const uint8_t *bytes  = qv::bytes( buf );
    uint64_t       length = whole + ( rest != 0 ); // bytes to print, each two digits and a blank or the bracket
    QV_INT         size   = static_cast< QV_INT >( 1 + 3 * length + ( length == 0 ? 1 : 0 ) + ( rest ? 2 : 0 ) );
    QV_STRING     *result = qv::createString( size );
    QV_CHAR       *to     = result->chars;

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

QV___FAMILY( Buffer, QV_BUFFER, freeBuffer, compare, toString )

void qv___BufferStartup( void )
{
    qv___BufferEmpty = createWithoutBlock();
}

void qv___BufferShutdown( void )
{
    qv::drop( qv___BufferEmpty );
}

/* Room ----------------------------------------------------------------------------------------------------------- */

namespace
{
// A gap that is not whole bytes on a byte boundary: everything goes to a new block, and the object takes that over.
void makeRoomByRewriting( QV_BUFFER **buf, uint64_t atBit, uint64_t bitCount )
{
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( (*buf)->bitLength, bitCount ) );

    QV_BUFFER           *own = *buf;
    qv::Ref< QV_BUFFER > tmp( createWithoutBlock() );
    qv___BufferMakeRoom( tmp.at(), 0, own->bitLength + bitCount );
    qv___BufferBitWriteInner( tmp.at(), 0, own, 0, atBit );
    qv___BufferBitWriteInner( tmp.at(), atBit + bitCount, own, atBit, own->bitLength - atBit );
    qv___BufferSwapContents( own, tmp );
}

// A larger block with both spaces new, the contents behind the one in front.
void rebuild( QV_BUFFER **buf, uint64_t atBit, uint64_t bitCount )
{
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE, (*buf)->bitLength ) );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE + (*buf)->bitLength, bitCount ) );

    QV_BUFFER *own    = *buf;
    uint64_t   length = own->bitLength;
    uint64_t   size   = reallocate( own, QV_BUFFER_FSPACE + QV_BUFFER_BSPACE + length + bitCount );

    if( atBit == 0 )
    {
        moveBits( own, QV_BUFFER_FSPACE + bitCount, own->bitFspace, length );
    }
    else
    {
        moveBits( own, QV_BUFFER_FSPACE, own->bitFspace, length );
        moveBits( own, QV_BUFFER_FSPACE + atBit + bitCount, QV_BUFFER_FSPACE + atBit, length - atBit );
    }

    own->bitFspace = QV_BUFFER_FSPACE;
    own->bitLength = length + bitCount;
    own->bitBspace = size - own->bitFspace - own->bitLength;
}

void makeRoomInFront( QV_BUFFER **buf, uint64_t bitCount )
{
    QV_BUFFER *own = *buf;

    if( !BIT_AT_BOUND( bitCount ) )
    {
        makeRoomByRewriting( buf, 0, bitCount );
    }
    else if( own->bitFspace >= bitCount )
    {
        own->bitFspace -= bitCount;
        own->bitLength += bitCount;
    }
    else if( own->bitFspace + own->bitBspace >= bitCount )
    {
        moveBits( own, bitCount, own->bitFspace, own->bitLength );
        own->bitBspace = own->bitFspace + own->bitBspace - bitCount;
        own->bitFspace = 0;
        own->bitLength += bitCount;
    }
    else
    {
        rebuild( buf, 0, bitCount );
    }
}

void makeRoomBehind( QV_BUFFER **buf, uint64_t bitCount )
{
    QV_BUFFER *own = *buf;

    if( own->bitBspace >= bitCount )
    {
        own->bitBspace -= bitCount;
        own->bitLength += bitCount;
        return;
    }

    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( (*buf)->bitFspace + (*buf)->bitLength, bitCount ) );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( (*buf)->bitFspace + (*buf)->bitLength + bitCount, QV_BUFFER_BSPACE ) );

    uint64_t size = reallocate( own, own->bitFspace + own->bitLength + bitCount + QV_BUFFER_BSPACE );
    own->bitLength += bitCount;
    own->bitBspace = size - own->bitFspace - own->bitLength;
}

void makeRoomInside( QV_BUFFER **buf, uint64_t atBit, uint64_t bitCount )
{
    QV_BUFFER *own  = *buf;
    uint64_t   head = own->bitFspace;
    uint64_t   tail = head + atBit;

    if( !BIT_AT_BOUND( atBit ) || !BIT_AT_BOUND( bitCount ) )
    {
        makeRoomByRewriting( buf, atBit, bitCount );
    }
    else if( own->bitBspace >= bitCount )
    {
        moveBits( own, tail + bitCount, tail, own->bitLength - atBit );
        own->bitBspace -= bitCount;
        own->bitLength += bitCount;
    }
    else if( own->bitFspace + own->bitBspace >= bitCount )
    {
        // The tail takes the whole bytes of the space behind, the head moves down by what that lacks.
        uint64_t up   = own->bitBspace - own->bitBspace % 8;
        uint64_t down = bitCount - up;
        moveBits( own, tail + up, tail, own->bitLength - atBit );
        moveBits( own, head - down, head, atBit );
        own->bitFspace -= down;
        own->bitBspace -= up;
        own->bitLength += bitCount;
    }
    else
    {
        rebuild( buf, atBit, bitCount );
    }
}
} // namespace

void qv___BufferMakeRoom( QV_BUFFER **buf, uint64_t atBit, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( BIT_AT_BOUND( (*buf)->bitFspace ) );
    QV_CHECK( atBit <= (*buf)->bitLength );

    if( bitCount == 0 )
        return;

    makeWritable( buf );
    QV_CHECK( !(*buf)->ref );

    QV_BUFFER *own = *buf;

    if( !own->bytes )
    {
        QV_CHECK( QV___INT_UNSIGNED_ADD_OK( QV_BUFFER_FSPACE + QV_BUFFER_BSPACE, bitCount ) );

        uint64_t size  = reallocate( own, QV_BUFFER_FSPACE + QV_BUFFER_BSPACE + bitCount );
        own->bitFspace = QV_BUFFER_FSPACE;
        own->bitLength = bitCount;
        own->bitBspace = size - own->bitFspace - own->bitLength;
    }
    else if( atBit == 0 )
    {
        makeRoomInFront( buf, bitCount );
    }
    else if( atBit == own->bitLength )
    {
        makeRoomBehind( buf, bitCount );
    }
    else
    {
        makeRoomInside( buf, atBit, bitCount );
    }
}

namespace
{
// A snapshot of live objects may hold the Buffer for a while although its owner is the only one to use it. So only who
// calls from outside is asked whether it is his own.
void compact( QV_BUFFER *buf )
{
    if( buf->ref || ( buf->bitFspace <= OVERSIZED_FSPACE && buf->bitBspace <= OVERSIZED_BSPACE ) )
        return;

    if( buf->bitLength == 0 )
    {
        qvMemFree( buf->bytes );
        buf->bytes     = nullptr;
        buf->bitFspace = 0;
        buf->bitBspace = 0;
        buf->allocated = 0;
        qv___ObjDbgSetAllocationSize( buf, 0 );
        return;
    }

    moveBits( buf, QV_BUFFER_FSPACE, buf->bitFspace, buf->bitLength );
    uint64_t size  = reallocate( buf, QV_BUFFER_FSPACE + QV_BUFFER_BSPACE + buf->bitLength );
    buf->bitFspace = QV_BUFFER_FSPACE;
    buf->bitBspace = size - buf->bitFspace - buf->bitLength;
}
} // namespace

void qv___BufferCompact( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    QV_CHECK( QV_REF_RETAIN_COUNT( buf ) == 1 );
    QV_CHECK( BIT_AT_BOUND( buf->bitFspace ) );

    compact( buf );
}

void qv___BufferSwapContents( QV_BUFFER *a, QV_BUFFER *b )
{
    QV_CHECK( a );
    QV_CHECK( b );

    QV_INT aSize = qv___ObjDbgAllocationSize( a );
    QV_INT bSize = qv___ObjDbgAllocationSize( b );

    std::swap( a->bitLength, b->bitLength );
    std::swap( a->bitFspace, b->bitFspace );
    std::swap( a->bitBspace, b->bitBspace );
    std::swap( a->bytes, b->bytes );
    std::swap( a->ref, b->ref );
    std::swap( a->allocated, b->allocated );
    qv___ObjDbgSetAllocationSize( a, bSize );
    qv___ObjDbgSetAllocationSize( b, aSize );
}

/* Contents ------------------------------------------------------------------------------------------------------- */

// Each kind of contents that the public forms take is a type here, with what it means to write and to insert it.

namespace
{
struct Inner
{
    QV_BUFFER *src;
    uint64_t   bitOffset;
    uint64_t   bitCount;
};

struct Outer
{
    QV_BUFFER *src;
    uint64_t   bitOffset;
    uint64_t   bitCount;
};

struct Bits
{
    uint64_t value;
    uint64_t bitCount;
};

struct Byte
{
    uint8_t value;
};

struct Array
{
    const void *bytes;
    uint64_t    byteCount;
};

struct Zero
{
    uint64_t bitCount;
};

struct One
{
    uint64_t bitCount;
};

QV_BUFFER *checked( QV_BUFFER *src )
{
    QV_CHECK( src );
    return src;
}

Inner all( QV_BUFFER *src )
{
    return { checked( src ), 0, src->bitLength };
}

// The Leading given, counted from the end. More than there is makes an offset with which the check of the sum fails.
Inner trailing( Inner leading )
{
    return { leading.src, leading.src->bitLength - leading.bitCount, leading.bitCount };
}

// The zero bits that the length lacks to whole bytes.
Zero alignment( QV_BUFFER *buf )
{
    return { -buf->bitLength % 8 };
}

// A source that is changed itself is held, so that it counts as shared and is copied before it changes.
qv::Ref< QV_BUFFER > holdIfSame( QV_BUFFER **buf, QV_BUFFER *src )
{
    return qv::Ref< QV_BUFFER >::share( *buf == src ? src : nullptr );
}

void copyFrom( QV_BUFFER *own, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount )
{
    copyBits(
        own->bytes, own->bitFspace + bitIdx, src->bytes, blockEnd( src ), src->bitFspace + bitOffset, bitCount );
}

void write( QV_BUFFER **buf, uint64_t bitIdx, Inner from )
{
    qv___BufferBitWriteInner( buf, bitIdx, from.src, from.bitOffset, from.bitCount );
}

void write( QV_BUFFER **buf, uint64_t bitIdx, Outer from )
{
    qv___BufferBitWriteOuter( buf, bitIdx, from.src, from.bitOffset, from.bitCount );
}

inline void write( QV_BUFFER **buf, uint64_t bitIdx, Bits bits )
{
    QV_BUFFER *own = *buf;

    if( bits.bitCount - 1 < 57 && bitIdx <= own->bitLength && bits.bitCount <= own->bitLength - bitIdx &&
        qv::isPrivate( own ) )
        putWord( own->bytes, own->bitFspace + bitIdx, bits.value, bits.bitCount );
    else
        qv___BufferBitWriteBits( buf, bitIdx, bits.value, bits.bitCount );
}

void write( QV_BUFFER **buf, uint64_t bitIdx, Byte byte )
{
    qv___BufferBitWriteBits( buf, bitIdx, byte.value, 8 );
}

void write( QV_BUFFER **buf, uint64_t bitIdx, Array array )
{
    qv___BufferBitWriteBytes( buf, bitIdx, array.bytes, array.byteCount );
}

void write( QV_BUFFER **buf, uint64_t bitIdx, Zero run )
{
    qv___BufferBitWriteZero( buf, bitIdx, run.bitCount );
}

void write( QV_BUFFER **buf, uint64_t bitIdx, One run )
{
    qv___BufferBitWriteOne( buf, bitIdx, run.bitCount );
}

void insert( QV_BUFFER **buf, uint64_t bitIdx, Inner from )
{
    qv___BufferBitInsertInner( buf, bitIdx, from.src, from.bitOffset, from.bitCount );
}

void insert( QV_BUFFER **buf, uint64_t bitIdx, Outer from )
{
    qv___BufferBitInsertOuter( buf, bitIdx, from.src, from.bitOffset, from.bitCount );
}

void insert( QV_BUFFER **buf, uint64_t bitIdx, Byte byte )
{
    qv___BufferMakeRoom( buf, bitIdx, 8 );
    qv___BufferBitWriteBits( buf, bitIdx, byte.value, 8 );
}

void insert( QV_BUFFER **buf, uint64_t bitIdx, Array array )
{
    QV_CHECK_AS( array.bytes || !array.byteCount, "bytes || !byteCount" );
    QV_CHECK_AS( BYTES_TO_BITS_OK( array.byteCount ), "BYTES_TO_BITS_OK( byteCount )" );

    qv___BufferMakeRoom( buf, bitIdx, BYTES_TO_BITS( array.byteCount ) );
    write( buf, bitIdx, array );
}

template< class Contents >
void insert( QV_BUFFER **buf, uint64_t bitIdx, Contents contents )
{
    qv___BufferMakeRoom( buf, bitIdx, contents.bitCount );
    write( buf, bitIdx, contents );
}

template< class Contents >
[[gnu::noinline]] void appendAnywhere( QV_BUFFER **buf, Contents contents )
{
    insert( buf, (*buf)->bitLength, contents );
}

template< class Contents >
void append( QV_BUFFER **buf, Contents contents )
{
    insert( buf, (*buf)->bitLength, contents );
}

// With 64 free bits in a block of our own, up to nine bytes with the one that the contents end in, a number goes there
// as a word; the free bits behind it may become anything.
inline void append( QV_BUFFER **buf, Bits bits )
{
    QV_CHECK_AS( bits.bitCount <= QV_INT_BITS, "bitCount <= QV_INT_BITS" );

    QV_BUFFER *own = *buf;

    if( own->bitBspace < 64 || bits.bitCount == 0 || !qv::isPrivate( own ) )
    {
        appendAnywhere( buf, bits );
        return;
    }

    uint64_t pos   = own->bitFspace + own->bitLength;
    uint64_t shift = pos % 8;
    uint64_t word  = bits.value << ( 64 - bits.bitCount );
    uint8_t *at    = own->bytes + pos / 8;

    own->bitLength += bits.bitCount;
    own->bitBspace -= bits.bitCount;
    storeBig( at, static_cast< uint64_t >( *at & ~( 0xFFu >> shift ) ) << 56 | word >> shift );

    if( shift + bits.bitCount > 64 )
        at[8] = static_cast< uint8_t >( word << ( 8 - shift ) );
}

inline void append( QV_BUFFER **buf, Byte byte )
{
    QV_BUFFER *own = *buf;

    if( own->bitBspace < 8 || !BIT_AT_BOUND( own->bitLength ) || !qv::isPrivate( own ) )
    {
        appendAnywhere( buf, byte );
        return;
    }

    own->bytes[( own->bitFspace + own->bitLength ) / 8] = byte.value;
    own->bitLength += 8;
    own->bitBspace -= 8;
}

// The same bytes as memcpy() copies, which for few of them costs more than their copying.
inline void copyFew( uint8_t *to, const uint8_t *from, uint64_t count )
{
    if( count < 16 || count > 64 )
    {
        memcpy( to, from, count );
        return;
    }

    // Pieces of 16 from both ends, which overlap in the middle.
    memcpy( to, from, 16 );

    if( count > 32 )
    {
        memcpy( to + 16, from + 16, 16 );
        memcpy( to + count - 32, from + count - 32, 16 );
    }

    memcpy( to + count - 16, from + count - 16, 16 );
}

inline void append( QV_BUFFER **buf, Array array )
{
    QV_BUFFER *own      = *buf;
    uint64_t   bitCount = BYTES_TO_BITS( array.byteCount );

    if( !array.bytes || array.byteCount - 1 >= FEW_BYTES || !BIT_AT_BOUND( own->bitLength ) || !qv::isPrivate( own ) ||
        !( own->bitBspace >= bitCount || qv::growWithinAllocation( own, bitCount ) ) )
    {
        appendAnywhere( buf, array );
        return;
    }

    copyFew( qv::bytes( own ) + own->bitLength / 8, static_cast< const uint8_t * >( array.bytes ), array.byteCount );
    own->bitLength += bitCount;
    own->bitBspace -= bitCount;
}

template< class Contents >
QV_BUFFER *createOf( Contents contents )
{
    qv::Ref< QV_BUFFER > result( createWithoutBlock() );
    insert( result.at(), 0, contents );

    return result.give();
}
} // namespace

uint64_t qv___BufferBitReadBits( QV_BUFFER *buf, uint64_t bitIdx, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( bitCount <= QV_INT_BITS );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK( bitIdx + bitCount <= buf->bitLength );

    if( bitCount == 0 )
        return 0;

    return getBits( qv::bytes( buf ), buf->bitLength + buf->bitBspace, bitIdx, bitCount );
}

void qv___BufferBitReadBytes( QV_BUFFER *buf, uint64_t bitIdx, void *bytes, uint64_t byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( bytes || !byteCount );
    QV_CHECK( BYTES_TO_BITS_OK( byteCount ) );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, BYTES_TO_BITS( byteCount ) ) );
    QV_CHECK( bitIdx + BYTES_TO_BITS( byteCount ) <= buf->bitLength );

    if( byteCount == 0 )
        return;

    copyBits(
        static_cast< uint8_t * >( bytes ), 0, buf->bytes, blockEnd( buf ), buf->bitFspace + bitIdx,
        BYTES_TO_BITS( byteCount ) );
}

void qv___BufferBitWriteBits( QV_BUFFER **buf, uint64_t bitIdx, uint64_t value, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( bitCount <= QV_INT_BITS );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK( bitIdx + bitCount <= (*buf)->bitLength );

    if( bitCount == 0 )
        return;

    makeWritable( buf );
    putBits( (*buf)->bytes, (*buf)->bitFspace + bitIdx, value, bitCount );
}

void qv___BufferBitWriteBytes( QV_BUFFER **buf, uint64_t bitIdx, const void *bytes, uint64_t byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( bytes || !byteCount );
    QV_CHECK( BYTES_TO_BITS_OK( byteCount ) );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, BYTES_TO_BITS( byteCount ) ) );
    QV_CHECK( bitIdx + BYTES_TO_BITS( byteCount ) <= (*buf)->bitLength );

    if( byteCount == 0 )
        return;

    makeWritable( buf );
    copyBits(
        (*buf)->bytes, (*buf)->bitFspace + bitIdx, static_cast< const uint8_t * >( bytes ),
        BYTES_TO_BITS( byteCount ), 0, BYTES_TO_BITS( byteCount ) );
}

namespace
{
void writeRun( QV_BUFFER **buf, uint64_t bitIdx, uint64_t bitCount, int byte )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK( bitIdx + bitCount <= (*buf)->bitLength );

    if( bitCount == 0 )
        return;

    makeWritable( buf );
    fillBits( (*buf)->bytes, (*buf)->bitFspace + bitIdx, bitCount, byte );
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

void qv___BufferBitWriteInner(
    QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( src );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK( bitIdx + bitCount <= (*buf)->bitLength );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK( bitOffset + bitCount <= src->bitLength );

    if( bitCount == 0 )
        return;

    qv::Ref< QV_BUFFER > held = holdIfSame( buf, src );
    makeWritable( buf );
    copyFrom( *buf, bitIdx, src, bitOffset, bitCount );
}

void qv___BufferBitWriteOuter(
    QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( src );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK( bitOffset + bitCount <= src->bitLength );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, src->bitLength - bitCount ) );
    QV_CHECK( bitIdx + (src->bitLength - bitCount) <= (*buf)->bitLength );

    uint64_t             behind = bitOffset + bitCount;
    qv::Ref< QV_BUFFER > held   = holdIfSame( buf, src );
    qv___BufferBitWriteInner( buf, bitIdx, src, 0, bitOffset );
    qv___BufferBitWriteInner( buf, bitIdx + bitOffset, src, behind, src->bitLength - behind );
}

void qv___BufferBitInsertInner(
    QV_BUFFER **buf, uint64_t bitIdx, QV_BUFFER *src, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( src );

    if( bitCount == 0 )
        return;

    qv::Ref< QV_BUFFER > held = holdIfSame( buf, src );
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
    QV_CHECK( bitOffset + bitCount <= src->bitLength );

    if( bitCount == src->bitLength )
        return;

    qv::Ref< QV_BUFFER > held = holdIfSame( buf, src );
    qv___BufferMakeRoom( buf, bitIdx, src->bitLength - bitCount );
    qv___BufferBitWriteOuter( buf, bitIdx, src, bitOffset, bitCount );
}

void qv___BufferBitDelInner( QV_BUFFER **buf, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK( bitOffset + bitCount <= (*buf)->bitLength );

    if( bitCount == 0 )
        return;

    uint64_t behind = bitOffset + bitCount;
    uint64_t left   = (*buf)->bitLength - behind;

    if( bitCount == (*buf)->bitLength )
    {
        qvBufferClear( buf );
        return;
    }

    if( left > 0 && !( BIT_AT_BOUND( bitOffset ) && BIT_AT_BOUND( bitCount ) ) )
    {
        qv::Ref< QV_BUFFER > rest( createWithoutBlock() );
        qv___BufferBitInsertInner( rest.at(), 0, *buf, 0, bitOffset );
        qv___BufferBitInsertInner( rest.at(), bitOffset, *buf, behind, left );
        qv::assign( buf, rest.give() );
        return;
    }

    if( bitOffset == 0 )
    {
        qv::makePrivate( buf, qvBufferCreateFrom ); // no byte changes, so that foreign memory may stay
        QV_CHECK( QV___INT_UNSIGNED_ADD_OK( (*buf)->bitFspace, bitCount ) );
        (*buf)->bitFspace += bitCount;
    }
    else
    {
        if( left == 0 )
        {
            qv::makePrivate( buf, qvBufferCreateFrom );
        }
        else
        {
            makeWritable( buf );
            moveBits( *buf, (*buf)->bitFspace + bitOffset, (*buf)->bitFspace + behind, left );
        }

        QV_CHECK( QV___INT_UNSIGNED_ADD_OK( (*buf)->bitBspace, bitCount ) );
        (*buf)->bitBspace += bitCount;
    }

    (*buf)->bitLength -= bitCount;
    compact( *buf );
}

void qv___BufferBitDelOuter( QV_BUFFER **buf, uint64_t bitOffset, uint64_t bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount ) );
    QV_CHECK( bitOffset + bitCount <= (*buf)->bitLength );

    if( bitCount == (*buf)->bitLength )
        return;

    if( bitCount == 0 )
    {
        qvBufferClear( buf );
        return;
    }

    if( !BIT_AT_BOUND( bitOffset ) )
    {
        qv::assign( buf, createOf( Inner{ *buf, bitOffset, bitCount } ) );
        return;
    }

    qv::makePrivate( buf, qvBufferCreateFrom );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( (*buf)->bitFspace, bitOffset ) );
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( (*buf)->bitBspace, (*buf)->bitLength - bitOffset - bitCount ) );

    (*buf)->bitFspace += bitOffset;
    (*buf)->bitBspace += (*buf)->bitLength - bitOffset - bitCount;
    (*buf)->bitLength = bitCount;
    compact( *buf );
}

/* Units ---------------------------------------------------------------------------------------------------------- */

// An argument of a public form: as it is, or in bits where it counts bytes. The forms take them one by one in their
// order, so that the first bad one is reported.
#define UNSIGNED( x ) ( QV_CHECK( QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( x ) ), (uint64_t)( x ) )
#define BYTES( x )                                                                                                     \
    ( QV_CHECK( QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( x ) ), QV_CHECK( BYTES_TO_BITS_OK( x ) ), BYTES_TO_BITS( x ) )

/* Creation ------------------------------------------------------------------------------------------------------- */

namespace
{
// A Buffer around a block as it is.
QV_BUFFER *createAround( const void *bytes, QV_INT byteCount )
{
    QV_CHECK( bytes || byteCount == 0 );
    QV_CHECK( QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( byteCount ) );
    QV_CHECK( BYTES_TO_BITS_OK( byteCount ) );
    QV_CHECK( QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( BYTES_TO_BITS( byteCount ) ) );

    QV_BUFFER *buf = createWithoutBlock();
    buf->bytes     = static_cast< uint8_t * >( const_cast< void * >( bytes ) );
    buf->bitLength = BYTES_TO_BITS( byteCount );

    return buf;
}
} // namespace

QV_BUFFER *qvBufferCreate( void )
{
    return qv::retain( qv___BufferEmpty );
}

void qvBufferClear( QV_BUFFER **buf )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    qv::assign( buf, qvBufferCreate() );
}

QV_BUFFER *qvBufferCreateFrom( QV_BUFFER *src )
{
    return createOf( all( src ) );
}

QV_BUFFER *qvBufferCreateFromBits( uint64_t value, QV_INT bitCount )
{
    return createOf( Bits{ value, UNSIGNED( bitCount ) } );
}

QV_BUFFER *qvBufferCreateFromByte( uint8_t value )
{
    return createOf( Byte{ value } );
}

QV_BUFFER *qvBufferCreateFromBytesCopy( const void *bytes, QV_INT byteCount )
{
    QV_CHECK( bytes || byteCount == 0 );
    return createOf( Array{ bytes, UNSIGNED( byteCount ) } );
}

QV_BUFFER *qvBufferCreateFromBytesUse( void *bytes, QV_INT byteCount )
{
    QV_BUFFER *buf = createAround( bytes, byteCount );
    buf->allocated = (uint64_t)byteCount;
    qv___ObjDbgSetAllocationSize( buf, byteCount );

    return buf;
}

QV_BUFFER *qvBufferCreateFromBytesUseWithRef( const void *bytes, QV_INT byteCount, QV_OBJ *ref )
{
    QV_CHECK( ref );

    QV_BUFFER *buf = createAround( bytes, byteCount );
    buf->ref       = qv::retain( ref );

    return buf;
}

/* Reading -------------------------------------------------------------------------------------------------------- */

namespace
{
QV_BUFFER *read( QV_BUFFER *buf, uint64_t bitIdx, uint64_t bitCount )
{
    QV_CHECK( QV___INT_UNSIGNED_ADD_OK( bitIdx, bitCount ) );
    QV_CHECK( bitIdx + bitCount <= buf->bitLength );

    return createOf( Inner{ buf, bitIdx, bitCount } );
}

[[gnu::noinline]] uint64_t readBits( QV_BUFFER *buf, uint64_t bitIdx, QV_INT bitCount )
{
    return qv___BufferBitReadBits( buf, bitIdx, UNSIGNED( bitCount ) );
}

// True where all checks would hold, and the bits stand in eight bytes of which none lies behind the contents.
bool standsInOneWord( QV_BUFFER *buf, uint64_t bitIdx, QV_INT bitCount )
{
    return (uint64_t)bitCount - 1 < 57 && bitIdx + 64 <= buf->bitLength;
}

uint64_t getWord( QV_BUFFER *buf, uint64_t bitIdx, QV_INT bitCount )
{
    uint64_t pos = buf->bitFspace + bitIdx;
    return load64( buf->bytes + pos / 8 ) << pos % 8 >> ( 64 - bitCount );
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
    return (QV_INT)buf->bitLength;
}

QV_INT qvBufferSpace( QV_BUFFER *buf )
{
    return qvBufferBitSpace( buf ) / 8;
}

QV_INT qvBufferBitSpace( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    return QV_INT_MAX - (QV_INT)buf->bitLength;
}

QV_BOOL qvBufferBitIsAligned( QV_BUFFER *buf )
{
    QV_CHECK( buf );
    return BIT_AT_BOUND( buf->bitLength ) ? QV_TRUE : QV_FALSE;
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

// A form that reads: what the last expression gives for the place.
#define READ( Type, Name, Parameters, at, ... )                                                                        \
    Type Name Parameters                                                                                               \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        uint64_t place = at;                                                                                           \
        return __VA_ARGS__;                                                                                            \
    }

READ( QV_BUFFER *, qvBufferRead, ( QV_BUFFER *buf, QV_INT byteIdx, QV_INT byteCount ), BYTES( byteIdx ),
      read( buf, place, BYTES( byteCount ) ) )
READ( QV_BUFFER *, qvBufferBitRead, ( QV_BUFFER *buf, QV_INT bitIdx, QV_INT bitCount ), UNSIGNED( bitIdx ),
      read( buf, place, UNSIGNED( bitCount ) ) )
READ( uint64_t, qvBufferReadBits, ( QV_BUFFER *buf, QV_INT byteIdx, QV_INT bitCount ), BYTES( byteIdx ),
      qv___BufferBitReadBits( buf, place, UNSIGNED( bitCount ) ) )
READ( uint64_t, qvBufferBitReadBits, ( QV_BUFFER *buf, QV_INT bitIdx, QV_INT bitCount ), UNSIGNED( bitIdx ),
      standsInOneWord( buf, place, bitCount ) ? getWord( buf, place, bitCount ) : readBits( buf, place, bitCount ) )
READ( uint8_t, qvBufferReadByte, ( QV_BUFFER *buf, QV_INT byteIdx ), BYTES( byteIdx ),
      (uint8_t)qv___BufferBitReadBits( buf, place, 8 ) )
READ( uint8_t, qvBufferBitReadByte, ( QV_BUFFER *buf, QV_INT bitIdx ), UNSIGNED( bitIdx ),
      (uint8_t)qv___BufferBitReadBits( buf, place, 8 ) )
READ( void, qvBufferReadBytes, ( QV_BUFFER *buf, QV_INT byteIdx, void *bytes, QV_INT byteCount ), BYTES( byteIdx ),
      qv___BufferBitReadBytes( buf, place, bytes, UNSIGNED( byteCount ) ) )
READ( void, qvBufferBitReadBytes, ( QV_BUFFER *buf, QV_INT bitIdx, void *bytes, QV_INT byteCount ), UNSIGNED( bitIdx ),
      qv___BufferBitReadBytes( buf, place, bytes, UNSIGNED( byteCount ) ) )

/* Overwriting and inserting -------------------------------------------------------------------------------------- */

// The four forms of one kind of contents, which the expression behind the parameters makes.
#define FORMS( Unit, Suffix, idx, at, Parameters, ... )                                                                \
    void qvBuffer##Unit##Write##Suffix( QV_BUFFER **buf, QV_INT idx, Parameters )                                      \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        uint64_t place = at;                                                                                           \
        write( buf, place, __VA_ARGS__ );                                                                              \
    }                                                                                                                  \
                                                                                                                       \
    void qvBuffer##Unit##Insert##Suffix( QV_BUFFER **buf, QV_INT idx, Parameters )                                     \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        uint64_t place = at;                                                                                           \
        insert( buf, place, __VA_ARGS__ );                                                                             \
    }                                                                                                                  \
                                                                                                                       \
    void qvBuffer##Unit##Prepend##Suffix( QV_BUFFER **buf, Parameters )                                                \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        insert( buf, 0, __VA_ARGS__ );                                                                                 \
    }                                                                                                                  \
                                                                                                                       \
    void qvBuffer##Unit##Append##Suffix( QV_BUFFER **buf, Parameters )                                                 \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        append( buf, __VA_ARGS__ );                                                                                    \
    }

#define LIST( ... ) __VA_ARGS__

#define BYTE_FORMS( Suffix, Parameters, ... )                                                                          \
    FORMS( , Suffix, byteIdx, BYTES( byteIdx ), LIST Parameters, __VA_ARGS__ )
#define BIT_FORMS( Suffix, Parameters, ... )                                                                           \
    FORMS( Bit, Suffix, bitIdx, UNSIGNED( bitIdx ), LIST Parameters, __VA_ARGS__ )

BYTE_FORMS( , ( QV_BUFFER *src ), all( src ) )
BYTE_FORMS( Leading, ( QV_BUFFER *src, QV_INT byteCount ), Inner{ checked( src ), 0, BYTES( byteCount ) } )
BYTE_FORMS( Trailing, ( QV_BUFFER *src, QV_INT byteCount ), trailing( Inner{ checked( src ), 0, BYTES( byteCount ) } ) )
BYTE_FORMS( Inner, ( QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount ),
            Inner{ checked( src ), BYTES( byteOffset ), BYTES( byteCount ) } )
BYTE_FORMS( Outer, ( QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount ),
            Outer{ checked( src ), BYTES( byteOffset ), BYTES( byteCount ) } )
BYTE_FORMS( Bits, ( uint64_t value, QV_INT bitCount ), Bits{ value, UNSIGNED( bitCount ) } )
BYTE_FORMS( Byte, ( uint8_t value ), Byte{ value } )
BYTE_FORMS( Bytes, ( const void *bytes, QV_INT byteCount ), Array{ bytes, UNSIGNED( byteCount ) } )
BYTE_FORMS( Zero, ( QV_INT byteCount ), Zero{ BYTES( byteCount ) } )
BYTE_FORMS( One, ( QV_INT byteCount ), One{ BYTES( byteCount ) } )

BIT_FORMS( , ( QV_BUFFER *src ), all( src ) )
BIT_FORMS( Leading, ( QV_BUFFER *src, QV_INT bitCount ), Inner{ checked( src ), 0, UNSIGNED( bitCount ) } )
BIT_FORMS( Trailing, ( QV_BUFFER *src, QV_INT bitCount ), trailing( Inner{ checked( src ), 0, UNSIGNED( bitCount ) } ) )
BIT_FORMS( Inner, ( QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount ),
           Inner{ checked( src ), UNSIGNED( bitOffset ), UNSIGNED( bitCount ) } )
BIT_FORMS( Outer, ( QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount ),
           Outer{ checked( src ), UNSIGNED( bitOffset ), UNSIGNED( bitCount ) } )
BIT_FORMS( Bits, ( uint64_t value, QV_INT bitCount ), Bits{ value, UNSIGNED( bitCount ) } )
BIT_FORMS( Byte, ( uint8_t value ), Byte{ value } )
BIT_FORMS( Bytes, ( const void *bytes, QV_INT byteCount ), Array{ bytes, UNSIGNED( byteCount ) } )
BIT_FORMS( Zero, ( QV_INT bitCount ), Zero{ UNSIGNED( bitCount ) } )
BIT_FORMS( One, ( QV_INT bitCount ), One{ UNSIGNED( bitCount ) } )

/* Aligning and deleting ------------------------------------------------------------------------------------------ */

// A form without contents of its own: a call.
#define CHANGE( Name, Parameters, ... )                                                                                \
    void Name Parameters                                                                                               \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        __VA_ARGS__;                                                                                                   \
    }

namespace
{
void deleteTrailing( QV_BUFFER **buf, uint64_t bitCount )
{
    QV_CHECK( bitCount <= (*buf)->bitLength );
    qv___BufferBitDelInner( buf, (*buf)->bitLength - bitCount, bitCount );
}
} // namespace

CHANGE( qvBufferInsertAlignment, ( QV_BUFFER **buf, QV_INT byteIdx ),
        insert( buf, BYTES( byteIdx ), alignment( *buf ) ) )
CHANGE( qvBufferBitInsertAlignment, ( QV_BUFFER **buf, QV_INT bitIdx ),
        insert( buf, UNSIGNED( bitIdx ), alignment( *buf ) ) )
CHANGE( qvBufferPrependAlignment, ( QV_BUFFER **buf ), insert( buf, 0, alignment( *buf ) ) )
CHANGE( qvBufferBitPrependAlignment, ( QV_BUFFER **buf ), insert( buf, 0, alignment( *buf ) ) )
CHANGE( qvBufferAppendAlignment, ( QV_BUFFER **buf ), append( buf, alignment( *buf ) ) )
CHANGE( qvBufferBitAppendAlignment, ( QV_BUFFER **buf ), append( buf, alignment( *buf ) ) )

CHANGE( qvBufferDelLeading, ( QV_BUFFER **buf, QV_INT byteCount ),
        qv___BufferBitDelInner( buf, 0, BYTES( byteCount ) ) )
CHANGE( qvBufferBitDelLeading, ( QV_BUFFER **buf, QV_INT bitCount ),
        qv___BufferBitDelInner( buf, 0, UNSIGNED( bitCount ) ) )
CHANGE( qvBufferDelTrailing, ( QV_BUFFER **buf, QV_INT byteCount ), deleteTrailing( buf, BYTES( byteCount ) ) )
CHANGE( qvBufferBitDelTrailing, ( QV_BUFFER **buf, QV_INT bitCount ), deleteTrailing( buf, UNSIGNED( bitCount ) ) )
CHANGE( qvBufferDelInner, ( QV_BUFFER **buf, QV_INT byteOffset, QV_INT byteCount ),
        uint64_t place = BYTES( byteOffset ); qv___BufferBitDelInner( buf, place, BYTES( byteCount ) ) )
CHANGE( qvBufferBitDelInner, ( QV_BUFFER **buf, QV_INT bitOffset, QV_INT bitCount ),
        uint64_t place = UNSIGNED( bitOffset ); qv___BufferBitDelInner( buf, place, UNSIGNED( bitCount ) ) )
CHANGE( qvBufferDelOuter, ( QV_BUFFER **buf, QV_INT byteOffset, QV_INT byteCount ),
        uint64_t place = BYTES( byteOffset ); qv___BufferBitDelOuter( buf, place, BYTES( byteCount ) ) )
CHANGE( qvBufferBitDelOuter, ( QV_BUFFER **buf, QV_INT bitOffset, QV_INT bitCount ),
        uint64_t place = UNSIGNED( bitOffset ); qv___BufferBitDelOuter( buf, place, UNSIGNED( bitCount ) ) )
