#include "qv/base/qv_buffer.h"
#include "qv/base/qv_buffer_bits_private.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_mem_private.h"

// The public forms. Contents that go in are a type of their own here, which knows what it means to write, to insert and
// to append it.

namespace
{
const uint64_t FEW_BYTES = 4096; // arrays up to this size cannot break a check of sizes where there is room for them

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
    return { checked( src ), 0, qv::bitLength( src ) };
}

// The Leading given, counted from the end. More than there is makes an offset with which the check of the sum fails.
Inner trailing( Inner leading )
{
    return { leading.src, qv::bitLength( leading.src ) - leading.bitCount, leading.bitCount };
}

// The zero bits that the length lacks to whole bytes.
Zero alignment( QV_BUFFER *buf )
{
    return { -qv::bitLength( buf ) % 8 };
}

void writeContents( QV_BUFFER **buf, uint64_t bitIdx, Inner from )
{
    qv___BufferBitWriteInner( buf, bitIdx, from.src, from.bitOffset, from.bitCount );
}

void writeContents( QV_BUFFER **buf, uint64_t bitIdx, Outer from )
{
    qv___BufferBitWriteOuter( buf, bitIdx, from.src, from.bitOffset, from.bitCount );
}

inline void writeContents( QV_BUFFER **buf, uint64_t bitIdx, Bits bits )
{
    QV_BUFFER *own = *buf;

    if( bits.bitCount - 1 < 57 && bitIdx <= qv::bitLength( own ) && bits.bitCount <= qv::bitLength( own ) - bitIdx
        && qv::isPrivate( own ) )
        qv::bits::putWord( qv::bytes( own ), bitIdx, bits.value, bits.bitCount );
    else
        qv___BufferBitWriteBits( buf, bitIdx, bits.value, bits.bitCount );
}

void writeContents( QV_BUFFER **buf, uint64_t bitIdx, Byte byte )
{
    qv___BufferBitWriteBits( buf, bitIdx, byte.value, 8 );
}

void writeContents( QV_BUFFER **buf, uint64_t bitIdx, Array array )
{
    qv___BufferBitWriteBytes( buf, bitIdx, array.bytes, array.byteCount );
}

void writeContents( QV_BUFFER **buf, uint64_t bitIdx, Zero run )
{
    qv___BufferBitWriteZero( buf, bitIdx, run.bitCount );
}

void writeContents( QV_BUFFER **buf, uint64_t bitIdx, One run )
{
    qv___BufferBitWriteOne( buf, bitIdx, run.bitCount );
}

void insertContents( QV_BUFFER **buf, uint64_t bitIdx, Inner from )
{
    qv___BufferBitInsertInner( buf, bitIdx, from.src, from.bitOffset, from.bitCount );
}

void insertContents( QV_BUFFER **buf, uint64_t bitIdx, Outer from )
{
    qv___BufferBitInsertOuter( buf, bitIdx, from.src, from.bitOffset, from.bitCount );
}

void insertContents( QV_BUFFER **buf, uint64_t bitIdx, Byte byte )
{
    qv___BufferMakeRoom( buf, bitIdx, 8 );
    qv___BufferBitWriteBits( buf, bitIdx, byte.value, 8 );
}

void insertContents( QV_BUFFER **buf, uint64_t bitIdx, Array array )
{
    QV_CHECK_AS( array.bytes || !array.byteCount, "bytes || !byteCount" );
    QV_CHECK_AS( BYTES_TO_BITS_OK( array.byteCount ), "BYTES_TO_BITS_OK( byteCount )" );

    qv::Ref< QV_BUFFER > held = qv::holdSource( *buf, array.bytes );
    qv___BufferMakeRoom( buf, bitIdx, BYTES_TO_BITS( array.byteCount ) );

    if( BIT_AT_BOUND( bitIdx ) && array.byteCount > 0 )
        memcpy( qv::bytes( *buf ) + bitIdx / 8, array.bytes, static_cast< size_t >( array.byteCount ) );
    else
        writeContents( buf, bitIdx, array );
}

template< class Contents >
void insertContents( QV_BUFFER **buf, uint64_t bitIdx, Contents contents )
{
    qv___BufferMakeRoom( buf, bitIdx, contents.bitCount );
    writeContents( buf, bitIdx, contents );
}

template< class Contents >
[[gnu::noinline]] void appendAnywhere( QV_BUFFER **buf, Contents contents )
{
    insertContents( buf, qv::bitLength( *buf ), contents );
}

template< class Contents >
void appendContents( QV_BUFFER **buf, Contents contents )
{
    insertContents( buf, qv::bitLength( *buf ), contents );
}

// With 64 free bits in a block of our own, up to nine bytes with the one that the contents end in, a number goes there
// as a word; the free bits after it may become anything.
inline void appendContents( QV_BUFFER **buf, Bits bits )
{
    QV_CHECK_AS( bits.bitCount <= QV_INT_BITS, "bitCount <= QV_INT_BITS" );

    QV_BUFFER *own = *buf;

    if( own->bspace < 64 || bits.bitCount == 0 || !qv::isPrivate( own ) )
    {
        appendAnywhere( buf, bits );
        return;
    }

    uint64_t shift = qv::bitLength( own ) % 8;
    uint64_t word  = bits.value << ( 64 - bits.bitCount );
    uint8_t *at    = own->takeBack( static_cast< QV_INT >( bits.bitCount ) );
    uint8_t *end   = at + 8 + ( shift + bits.bitCount > 64 );

    own->openFree( end );
    qv::bits::storeBig( at, static_cast< uint64_t >( *at & ~( 0xFFu >> shift ) ) << 56 | word >> shift );

    if( shift + bits.bitCount > 64 )
        at[8] = static_cast< uint8_t >( word << ( 8 - shift ) );

    own->closeFree( end );
}

inline void appendContents( QV_BUFFER **buf, Byte byte )
{
    QV_BUFFER *own = *buf;

    if( __builtin_expect( own->bspace < 8 || !BIT_AT_BOUND( own->length ) || qv::isShared( own ) || own->ref, 0 ) )
    {
        appendAnywhere( buf, byte );
        return;
    }

    *own->takeBack( 8 ) = byte.value;
}

inline void appendContents( QV_BUFFER **buf, Array array )
{
    QV_BUFFER *own      = *buf;
    QV_INT     bitCount = static_cast< QV_INT >( BYTES_TO_BITS( array.byteCount ) );

    if( !array.bytes || array.byteCount - 1 >= FEW_BYTES || !BIT_AT_BOUND( own->length ) || !qv::isPrivate( own )
        || !qv::hasRoomAfter( own, bitCount ) )
    {
        appendAnywhere( buf, array );
        return;
    }

    qv::copyBytes( own->takeBack( bitCount ), array.bytes, static_cast< size_t >( array.byteCount ) );
}

template< class Contents >
QV_BUFFER *createOf( Contents contents )
{
    qv::Ref< QV_BUFFER > result( qv::createBuffer() );
    insertContents( result.at(), 0, contents );

    return result.give();
}
} // namespace

/* Creation ------------------------------------------------------------------------------------------------------- */

namespace
{
// Checks what a Buffer is to be made around; returns its bits.
QV_INT bitsAround( const void *bytes, QV_INT byteCount )
{
    QV_CHECK( bytes || byteCount == 0 );
    QV_CHECK( QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( byteCount ) );
    QV_CHECK( BYTES_TO_BITS_OK( byteCount ) );
    QV_CHECK( QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( BYTES_TO_BITS( byteCount ) ) );

    return byteCount * 8;
}
} // namespace

QV_BUFFER *qvBufferCreate( void )
{
    return qv::retainOfRun( qv___BufferEmpty );
}

void qvBufferClear( QV_BUFFER **buf )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    qv::assign( buf, qvBufferCreate() );
}

QV_BUFFER *qvBufferCreateFrom( QV_BUFFER *src )
{
    if( src && qv::isShortBuffer( qv::bitLength( src ) ) )
        return qv::createShortCopy( qv::bytes( src ), qv::byteLength( src ) );

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

    if( byteCount > 0 && byteCount <= qv::MOST_SHORT_BYTES )
        return qv::createShortCopy( bytes, byteCount );

    return createOf( Array{ bytes, UNSIGNED( byteCount ) } );
}

QV_BUFFER *qvBufferCreateFromBytesUse( void *bytes, QV_INT byteCount )
{
    QV_INT     bits = bitsAround( bytes, byteCount );
    QV_BUFFER *buf  = qv::createBuffer();
    buf->adoptBlock( static_cast< uint8_t * >( bytes ), bits, { 0, 0 } );

    return buf;
}

QV_BUFFER *qvBufferCreateFromBytesUseWithRef( const void *bytes, QV_INT byteCount, QV_OBJ *ref )
{
    QV_CHECK( ref );

    QV_INT     bits = bitsAround( bytes, byteCount );
    QV_BUFFER *buf  = qv::createBuffer();
    buf->first      = static_cast< uint8_t * >( const_cast< void * >( bytes ) );
    buf->length     = bits;
    buf->ref        = qv::retain( ref );

    return buf;
}

/* Overwriting and inserting -------------------------------------------------------------------------------------- */

// A row is a kind of contents in one unit: the four names, the index and what it is in bits, the parameters, and the
// contents that they make.
#define FORMS( writeForm, insertForm, prependForm, appendForm, idx, at, PARAMETERS, ... )                              \
    void writeForm( QV_BUFFER **buf, QV_INT idx LIST PARAMETERS )                                                      \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        uint64_t place = at;                                                                                           \
        writeContents( buf, place, __VA_ARGS__ );                                                                      \
    }                                                                                                                  \
                                                                                                                       \
    void insertForm( QV_BUFFER **buf, QV_INT idx LIST PARAMETERS )                                                     \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        uint64_t place = at;                                                                                           \
        insertContents( buf, place, __VA_ARGS__ );                                                                     \
    }                                                                                                                  \
                                                                                                                       \
    void prependForm( QV_BUFFER **buf LIST PARAMETERS )                                                                \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        insertContents( buf, 0, __VA_ARGS__ );                                                                         \
    }                                                                                                                  \
                                                                                                                       \
    void appendForm( QV_BUFFER **buf LIST PARAMETERS )                                                                 \
    {                                                                                                                  \
        QV_CHECK( buf );                                                                                               \
        QV_CHECK( *buf );                                                                                              \
        appendContents( buf, __VA_ARGS__ );                                                                            \
    }

#define LIST( ... ) , __VA_ARGS__

// clang-format off
FORMS( qvBufferWrite, qvBufferInsert, qvBufferPrepend, qvBufferAppend,
       byteIdx, BYTES( byteIdx ), ( QV_BUFFER *src ), all( src ) )
FORMS( qvBufferWriteLeading, qvBufferInsertLeading, qvBufferPrependLeading, qvBufferAppendLeading,
       byteIdx, BYTES( byteIdx ), ( QV_BUFFER *src, QV_INT byteCount ), Inner{ checked( src ), 0, BYTES( byteCount ) } )
FORMS( qvBufferWriteTrailing, qvBufferInsertTrailing, qvBufferPrependTrailing,
       qvBufferAppendTrailing, byteIdx, BYTES( byteIdx ),
       ( QV_BUFFER *src, QV_INT byteCount ),
       trailing( Inner{ checked( src ), 0, BYTES( byteCount ) } ) )
FORMS( qvBufferWriteInner, qvBufferInsertInner, qvBufferPrependInner,
       qvBufferAppendInner, byteIdx, BYTES( byteIdx ),
       ( QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount ),
       Inner{ checked( src ), BYTES( byteOffset ), BYTES( byteCount ) } )
FORMS( qvBufferWriteOuter, qvBufferInsertOuter, qvBufferPrependOuter,
       qvBufferAppendOuter, byteIdx, BYTES( byteIdx ),
       ( QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount ),
       Outer{ checked( src ), BYTES( byteOffset ), BYTES( byteCount ) } )
FORMS( qvBufferWriteBits, qvBufferInsertBits, qvBufferPrependBits, qvBufferAppendBits,
       byteIdx, BYTES( byteIdx ), ( uint64_t value, QV_INT bitCount ), Bits{ value, UNSIGNED( bitCount ) } )
FORMS( qvBufferWriteByte, qvBufferInsertByte, qvBufferPrependByte, qvBufferAppendByte,
       byteIdx, BYTES( byteIdx ), ( uint8_t value ), Byte{ value } )
FORMS( qvBufferWriteBytes, qvBufferInsertBytes, qvBufferPrependBytes, qvBufferAppendBytes,
       byteIdx, BYTES( byteIdx ), ( const void *bytes, QV_INT byteCount ), Array{ bytes, UNSIGNED( byteCount ) } )
FORMS( qvBufferWriteZero, qvBufferInsertZero, qvBufferPrependZero, qvBufferAppendZero,
       byteIdx, BYTES( byteIdx ), ( QV_INT byteCount ), Zero{ BYTES( byteCount ) } )
FORMS( qvBufferWriteOne, qvBufferInsertOne, qvBufferPrependOne, qvBufferAppendOne,
       byteIdx, BYTES( byteIdx ), ( QV_INT byteCount ), One{ BYTES( byteCount ) } )

FORMS( qvBufferBitWrite, qvBufferBitInsert, qvBufferBitPrepend, qvBufferBitAppend,
       bitIdx, UNSIGNED( bitIdx ), ( QV_BUFFER *src ), all( src ) )
FORMS( qvBufferBitWriteLeading, qvBufferBitInsertLeading, qvBufferBitPrependLeading,
       qvBufferBitAppendLeading, bitIdx, UNSIGNED( bitIdx ),
       ( QV_BUFFER *src, QV_INT bitCount ),
       Inner{ checked( src ), 0, UNSIGNED( bitCount ) } )
FORMS( qvBufferBitWriteTrailing, qvBufferBitInsertTrailing, qvBufferBitPrependTrailing,
       qvBufferBitAppendTrailing, bitIdx, UNSIGNED( bitIdx ),
       ( QV_BUFFER *src, QV_INT bitCount ),
       trailing( Inner{ checked( src ), 0, UNSIGNED( bitCount ) } ) )
FORMS( qvBufferBitWriteInner, qvBufferBitInsertInner, qvBufferBitPrependInner,
       qvBufferBitAppendInner, bitIdx, UNSIGNED( bitIdx ),
       ( QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount ),
       Inner{ checked( src ), UNSIGNED( bitOffset ), UNSIGNED( bitCount ) } )
FORMS( qvBufferBitWriteOuter, qvBufferBitInsertOuter, qvBufferBitPrependOuter,
       qvBufferBitAppendOuter, bitIdx, UNSIGNED( bitIdx ),
       ( QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount ),
       Outer{ checked( src ), UNSIGNED( bitOffset ), UNSIGNED( bitCount ) } )
FORMS( qvBufferBitWriteBits, qvBufferBitInsertBits, qvBufferBitPrependBits, qvBufferBitAppendBits,
       bitIdx, UNSIGNED( bitIdx ), ( uint64_t value, QV_INT bitCount ), Bits{ value, UNSIGNED( bitCount ) } )
FORMS( qvBufferBitWriteByte, qvBufferBitInsertByte, qvBufferBitPrependByte, qvBufferBitAppendByte,
       bitIdx, UNSIGNED( bitIdx ), ( uint8_t value ), Byte{ value } )
FORMS( qvBufferBitWriteBytes, qvBufferBitInsertBytes, qvBufferBitPrependBytes, qvBufferBitAppendBytes,
       bitIdx, UNSIGNED( bitIdx ), ( const void *bytes, QV_INT byteCount ), Array{ bytes, UNSIGNED( byteCount ) } )
FORMS( qvBufferBitWriteZero, qvBufferBitInsertZero, qvBufferBitPrependZero, qvBufferBitAppendZero,
       bitIdx, UNSIGNED( bitIdx ), ( QV_INT bitCount ), Zero{ UNSIGNED( bitCount ) } )
FORMS( qvBufferBitWriteOne, qvBufferBitInsertOne, qvBufferBitPrependOne, qvBufferBitAppendOne,
       bitIdx, UNSIGNED( bitIdx ), ( QV_INT bitCount ), One{ UNSIGNED( bitCount ) } )
// clang-format on

#undef FORMS
#undef LIST

/* Writing in place ----------------------------------------------------------------------------------------------- */

uint8_t *qvBufferAppendRoom( QV_BUFFER **buf, QV_INT byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( byteCount > 0 );
    QV_CHECK( qvBufferBitIsAligned( *buf ) );

    uint64_t bitCount = BYTES( byteCount );

    if( !qv::isPrivate( *buf ) || bitCount > QV_INT_MAX
        || !qv::hasRoomAfter( *buf, static_cast< QV_INT >( bitCount ) ) )
    {
        qv___BufferMakeRoom( buf, qv::bitLength( *buf ), bitCount );
        ( *buf )->dropBack( static_cast< QV_INT >( bitCount ) );
    }

    ( *buf )->openBack();

    return qv::bytes( *buf ) + qv::byteLength( *buf );
}

void qvBufferAppendWritten( QV_BUFFER **buf, QV_INT byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    QV_CHECK( byteCount >= 0 );
    QV_CHECK_AS( !( *buf )->ref, "!(*buf)->ref" );
    QV_CHECK_AS( byteCount <= ( *buf )->bspace / 8, "byteCount <= (*buf)->bitBspace / 8" );

    QV_BUFFER *own = *buf;

    if( !qv::isShared( own ) )
    {
        own->takeWritten( byteCount * 8 );
        own->compact();
        return;
    }

    // Somebody holds the Buffer who did not when the room was made: a snapshot of live objects, for one.
    QV_BUFFER *copy = qvBufferCreateFrom( own );
    qvBufferAppendBytes( &copy, qv::bytes( own ) + qv::byteLength( own ), byteCount );
    own->closeBack();
    qv::assign( buf, copy );
}

/* Aligning ------------------------------------------------------------------------------------------------------- */

void qvBufferInsertAlignment( QV_BUFFER **buf, QV_INT byteIdx )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    insertContents( buf, BYTES( byteIdx ), alignment( *buf ) );
}

void qvBufferBitInsertAlignment( QV_BUFFER **buf, QV_INT bitIdx )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    insertContents( buf, UNSIGNED( bitIdx ), alignment( *buf ) );
}

void qvBufferPrependAlignment( QV_BUFFER **buf )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    insertContents( buf, 0, alignment( *buf ) );
}

void qvBufferBitPrependAlignment( QV_BUFFER **buf )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    insertContents( buf, 0, alignment( *buf ) );
}

void qvBufferAppendAlignment( QV_BUFFER **buf )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    appendContents( buf, alignment( *buf ) );
}

void qvBufferBitAppendAlignment( QV_BUFFER **buf )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    appendContents( buf, alignment( *buf ) );
}

/* Deleting ------------------------------------------------------------------------------------------------------- */

namespace
{
void deleteTrailing( QV_BUFFER **buf, uint64_t bitCount )
{
    QV_CHECK_AS( bitCount <= qv::bitLength( *buf ), "bitCount <= (*buf)->bitLength" );
    qv___BufferBitDelInner( buf, qv::bitLength( *buf ) - bitCount, bitCount );
}
} // namespace

void qvBufferDelLeading( QV_BUFFER **buf, QV_INT byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    qv___BufferBitDelInner( buf, 0, BYTES( byteCount ) );
}

void qvBufferBitDelLeading( QV_BUFFER **buf, QV_INT bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    qv___BufferBitDelInner( buf, 0, UNSIGNED( bitCount ) );
}

void qvBufferDelTrailing( QV_BUFFER **buf, QV_INT byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    deleteTrailing( buf, BYTES( byteCount ) );
}

void qvBufferBitDelTrailing( QV_BUFFER **buf, QV_INT bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );

    deleteTrailing( buf, UNSIGNED( bitCount ) );
}

void qvBufferDelInner( QV_BUFFER **buf, QV_INT byteOffset, QV_INT byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    uint64_t place = BYTES( byteOffset );

    qv___BufferBitDelInner( buf, place, BYTES( byteCount ) );
}

void qvBufferBitDelInner( QV_BUFFER **buf, QV_INT bitOffset, QV_INT bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    uint64_t place = UNSIGNED( bitOffset );

    qv___BufferBitDelInner( buf, place, UNSIGNED( bitCount ) );
}

void qvBufferDelOuter( QV_BUFFER **buf, QV_INT byteOffset, QV_INT byteCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    uint64_t place = BYTES( byteOffset );

    qv___BufferBitDelOuter( buf, place, BYTES( byteCount ) );
}

void qvBufferBitDelOuter( QV_BUFFER **buf, QV_INT bitOffset, QV_INT bitCount )
{
    QV_CHECK( buf );
    QV_CHECK( *buf );
    uint64_t place = UNSIGNED( bitOffset );

    qv___BufferBitDelOuter( buf, place, UNSIGNED( bitCount ) );
}
