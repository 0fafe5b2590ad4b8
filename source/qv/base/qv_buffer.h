/** @file
    Buffer: bytes, addressed by the bit.

        QV_BUFFER *buf = qvBufferCreateFromBytesCopy( "data", 4 );
        qvBufferPrependBits( &buf, 4, 16 );                         // a length before it: 00 04 64 61 74 61
        qvBufferBitAppendBits( &buf, 5, 3 );                        // and three bits after it: [00 04 64 61 74 61 a0/3]
        uint64_t length = qvBufferReadBits( buf, 0, 16 );           // 4
        uint64_t tag    = qvBufferBitReadBits( buf, 48, 3 );        // 5
        qvBufferAppendAlignment( &buf );                            // whole bytes again
        qvBufferDelLeading( &buf, 2 );                              // 64 61 74 61 a0
        qvBufferRelease( buf );

    Bit order. Bit 0 is the most significant bit (0x80) of the first byte, bit 7 its least significant one, bit 8 the
    most significant bit of the next. A number goes in and comes out most significant bit first. The length need not be
    a multiple of 8; what the rest of the last byte holds has no meaning.

    Units. Each operation exists twice: qvBuffer...() counts in bytes, qvBufferBit...() in bits, and that is all the
    difference: `byteIdx` 3 is `bitIdx` 24, whatever the length. Only numbers have their size in bits in both forms,
    and arrays theirs in bytes. A byte that is appended to 3 bits stands at bit 3.

    Ranges. Indexes count from 0 and must not be negative. Leading is the first `count` units of the source, Trailing
    the last, Inner the `count` from `offset`, Outer everything but those. Trailing counts back from the last bit, also
    in bytes. Deleting, the same word says what goes, so that Outer leaves the range alone.

    Value and copy. A Buffer that somebody else holds is never changed: a mutator takes the address of the caller's
    reference and, where the Buffer is shared, replaces it by a private copy first. So retaining is copying. A Buffer
    that wraps the memory of another object (qvBufferCreateFromBytesUseWithRef()) is copied before its bytes change,
    also when it isn't shared; deleting from its ends only narrows it. A Buffer may be the source of its own change:
    what is read then is the state before.

    Costs. Adding at the end, at any bit, adding whole bytes at the start, and deleting at either end, whole bytes at
    the start, cost what is added or deleted: the contents move as a whole when the memory at that end is used up, each
    time by a constant part of their length, so that this is little in the long run, whichever ends take turns. Inside,
    inserting whole bytes on a byte boundary moves the shorter side, or all; deleting them moves what follows. What is
    left, a gap or a deletion of odd bits at the start or inside, rewrites all contents, since they always start on a
    byte. What moves or is copied goes by whole bytes where both places lie alike within their bytes, by 64-bit words
    with shifts where they don't. Numbers of up to 64 bits cost a few instructions at any bit. Lengths are constant.

    Memory. A new block has 80 free bytes before the contents and 160 after them, and becomes 160 bytes larger than it
    has to be when those after them are used up. One with more than 160 free bytes before or 320 after them is cut down
    to 80 and 160 again. That is what is declared; at most twice as much is allocated.

    Threads. Any thread may read a Buffer, also one that others hold. A variable that mutators work on belongs to one
    thread at a time.

    Null as a Buffer or as `*buf`, negative units, a range outside the contents and a length beyond QV_INT_MAX bits end
    the process. */

#ifndef QV_BUFFER_H
#define QV_BUFFER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Buffer, QV_BUFFER )

/* Creation ------------------------------------------------------------------------------------------------------- */

/** The empty Buffer. Constant time: there is one, which everybody shares. */
QV_API QV_BUFFER *qvBufferCreate( void );

/** Makes `*buf` the empty Buffer. */
QV_API void qvBufferClear( QV_BUFFER **buf );

/** A new Buffer with its own copy of `src`. */
QV_API QV_BUFFER *qvBufferCreateFrom( QV_BUFFER *src );

/** @{ */
/** A new Buffer of the low `bitCount` bits of a number, at most 64; of one byte; of a copy of an array, which may be
    null if it is empty. */
QV_API QV_BUFFER *qvBufferCreateFromBits( uint64_t value, QV_INT bitCount );
QV_API QV_BUFFER *qvBufferCreateFromByte( uint8_t value );
QV_API QV_BUFFER *qvBufferCreateFromBytesCopy( const void *bytes, QV_INT byteCount );
/** @} */

/** A new Buffer that takes over a block from qvMemAlloc(). */
QV_API QV_BUFFER *qvBufferCreateFromBytesUse( void *bytes, QV_INT byteCount );

/** A new Buffer around memory that `ref` keeps alive and that nobody changes while the Buffer lives. `ref` is retained
    and must not be null. The memory is never written. */
QV_API QV_BUFFER *qvBufferCreateFromBytesUseWithRef( const void *bytes, QV_INT byteCount, QV_OBJ *ref );

/* Reading -------------------------------------------------------------------------------------------------------- */

/** @{ */
/** The length: in whole bytes, rounded down, and in bits. */
QV_API QV_INT qvBufferLength( QV_BUFFER *buf );
QV_API QV_INT qvBufferBitLength( QV_BUFFER *buf );
/** @} */

/** @{ */
/** How much longer the Buffer could become. */
QV_API QV_INT qvBufferSpace( QV_BUFFER *buf );
QV_API QV_INT qvBufferBitSpace( QV_BUFFER *buf );
/** @} */

/** True if the length is a whole number of bytes. */
QV_API QV_BOOL qvBufferBitIsAligned( QV_BUFFER *buf );

/** @{ */
/** The first byte, the same in both forms, valid until the Buffer is changed or released. May be null for an empty
    Buffer. */
QV_API const uint8_t *qvBufferBacking( QV_BUFFER *buf );
QV_API const uint8_t *qvBufferBitBacking( QV_BUFFER *buf );
/** @} */

/** @{ */
/** A new Buffer with a copy of the range. */
QV_API QV_BUFFER *qvBufferRead( QV_BUFFER *buf, QV_INT byteIdx, QV_INT byteCount );
QV_API QV_BUFFER *qvBufferBitRead( QV_BUFFER *buf, QV_INT bitIdx, QV_INT bitCount );
/** @} */

/** @{ */
/** The number that stands in up to 64 bits; 0 for no bits. */
QV_API uint64_t qvBufferReadBits( QV_BUFFER *buf, QV_INT byteIdx, QV_INT bitCount );
QV_API uint64_t qvBufferBitReadBits( QV_BUFFER *buf, QV_INT bitIdx, QV_INT bitCount );
/** @} */

/** @{ */
/** The number that stands in 8 bits. */
QV_API uint8_t qvBufferReadByte( QV_BUFFER *buf, QV_INT byteIdx );
QV_API uint8_t qvBufferBitReadByte( QV_BUFFER *buf, QV_INT bitIdx );
/** @} */

/** @{ */
/** Copies into the caller's array, which may be null if nothing is to be copied. */
QV_API void qvBufferReadBytes( QV_BUFFER *buf, QV_INT byteIdx, void *bytes, QV_INT byteCount );
QV_API void qvBufferBitReadBytes( QV_BUFFER *buf, QV_INT bitIdx, void *bytes, QV_INT byteCount );
/** @} */

/* Overwriting ------------------------------------------------------------------------------------------------------ */

/** @{ */
/** Overwrites what stands from the index on with all of `src` or a part of it. The length stays. */
QV_API void qvBufferWrite( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src );
QV_API void qvBufferBitWrite( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src );
QV_API void qvBufferWriteLeading( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src, QV_INT byteCount );
QV_API void qvBufferBitWriteLeading( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src, QV_INT bitCount );
QV_API void qvBufferWriteTrailing( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src, QV_INT byteCount );
QV_API void qvBufferBitWriteTrailing( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src, QV_INT bitCount );
QV_API void qvBufferWriteInner( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitWriteInner( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount );
QV_API void qvBufferWriteOuter( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitWriteOuter( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount );
/** @} */

/** @{ */
/** Overwrites with the low `bitCount` bits of a number, at most 64; with a byte; with an array, which may be null if it
    is empty and may lie in the Buffer, and is read as it was. */
QV_API void qvBufferWriteBits( QV_BUFFER **buf, QV_INT byteIdx, uint64_t value, QV_INT bitCount );
QV_API void qvBufferBitWriteBits( QV_BUFFER **buf, QV_INT bitIdx, uint64_t value, QV_INT bitCount );
QV_API void qvBufferWriteByte( QV_BUFFER **buf, QV_INT byteIdx, uint8_t value );
QV_API void qvBufferBitWriteByte( QV_BUFFER **buf, QV_INT bitIdx, uint8_t value );
QV_API void qvBufferWriteBytes( QV_BUFFER **buf, QV_INT byteIdx, const void *bytes, QV_INT byteCount );
QV_API void qvBufferBitWriteBytes( QV_BUFFER **buf, QV_INT bitIdx, const void *bytes, QV_INT byteCount );
/** @} */

/** @{ */
/** Overwrites with bits that are all 0 or all 1. The count is in the unit of the form: qvBufferWriteZero( &buf, 0, 3 )
    is about 24 bits, qvBufferBitWriteZero( &buf, 0, 3 ) about 3. */
QV_API void qvBufferWriteZero( QV_BUFFER **buf, QV_INT byteIdx, QV_INT byteCount );
QV_API void qvBufferBitWriteZero( QV_BUFFER **buf, QV_INT bitIdx, QV_INT bitCount );
QV_API void qvBufferWriteOne( QV_BUFFER **buf, QV_INT byteIdx, QV_INT byteCount );
QV_API void qvBufferBitWriteOne( QV_BUFFER **buf, QV_INT bitIdx, QV_INT bitCount );
/** @} */

/* Inserting -------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Inserts all of `src` or a part of it before what stands at the index, or at the end where that is the length. */
QV_API void qvBufferInsert( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src );
QV_API void qvBufferBitInsert( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src );
QV_API void qvBufferInsertLeading( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src, QV_INT byteCount );
QV_API void qvBufferBitInsertLeading( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src, QV_INT bitCount );
QV_API void qvBufferInsertTrailing( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src, QV_INT byteCount );
QV_API void qvBufferBitInsertTrailing( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src, QV_INT bitCount );
QV_API void qvBufferInsertInner( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitInsertInner( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount );
QV_API void qvBufferInsertOuter( QV_BUFFER **buf, QV_INT byteIdx, QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitInsertOuter( QV_BUFFER **buf, QV_INT bitIdx, QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount );
/** @} */

/** @{ */
/** Inserts the low `bitCount` bits of a number, at most 64; a byte; an array, which may be null if it is empty and may
    lie in the Buffer. */
QV_API void qvBufferInsertBits( QV_BUFFER **buf, QV_INT byteIdx, uint64_t value, QV_INT bitCount );
QV_API void qvBufferBitInsertBits( QV_BUFFER **buf, QV_INT bitIdx, uint64_t value, QV_INT bitCount );
QV_API void qvBufferInsertByte( QV_BUFFER **buf, QV_INT byteIdx, uint8_t value );
QV_API void qvBufferBitInsertByte( QV_BUFFER **buf, QV_INT bitIdx, uint8_t value );
QV_API void qvBufferInsertBytes( QV_BUFFER **buf, QV_INT byteIdx, const void *bytes, QV_INT byteCount );
QV_API void qvBufferBitInsertBytes( QV_BUFFER **buf, QV_INT bitIdx, const void *bytes, QV_INT byteCount );
/** @} */

/** @{ */
/** Inserts bits that are all 0 or all 1, as many as the count in the unit of the form. */
QV_API void qvBufferInsertZero( QV_BUFFER **buf, QV_INT byteIdx, QV_INT byteCount );
QV_API void qvBufferBitInsertZero( QV_BUFFER **buf, QV_INT bitIdx, QV_INT bitCount );
QV_API void qvBufferInsertOne( QV_BUFFER **buf, QV_INT byteIdx, QV_INT byteCount );
QV_API void qvBufferBitInsertOne( QV_BUFFER **buf, QV_INT bitIdx, QV_INT bitCount );
/** @} */

/** @{ */
/** Inserts as many zero bits, 0 to 7, as the length of the Buffer lacks to a whole number of bytes, wherever they go.
    */
QV_API void qvBufferInsertAlignment( QV_BUFFER **buf, QV_INT byteIdx );
QV_API void qvBufferBitInsertAlignment( QV_BUFFER **buf, QV_INT bitIdx );
/** @} */

/** @{ */
/** Inserts at the start what qvBufferInsert...() inserts at an index. */
QV_API void qvBufferPrepend( QV_BUFFER **buf, QV_BUFFER *src );
QV_API void qvBufferBitPrepend( QV_BUFFER **buf, QV_BUFFER *src );
QV_API void qvBufferPrependLeading( QV_BUFFER **buf, QV_BUFFER *src, QV_INT byteCount );
QV_API void qvBufferBitPrependLeading( QV_BUFFER **buf, QV_BUFFER *src, QV_INT bitCount );
QV_API void qvBufferPrependTrailing( QV_BUFFER **buf, QV_BUFFER *src, QV_INT byteCount );
QV_API void qvBufferBitPrependTrailing( QV_BUFFER **buf, QV_BUFFER *src, QV_INT bitCount );
QV_API void qvBufferPrependInner( QV_BUFFER **buf, QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitPrependInner( QV_BUFFER **buf, QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount );
QV_API void qvBufferPrependOuter( QV_BUFFER **buf, QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitPrependOuter( QV_BUFFER **buf, QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount );
QV_API void qvBufferPrependBits( QV_BUFFER **buf, uint64_t value, QV_INT bitCount );
QV_API void qvBufferBitPrependBits( QV_BUFFER **buf, uint64_t value, QV_INT bitCount );
QV_API void qvBufferPrependByte( QV_BUFFER **buf, uint8_t value );
QV_API void qvBufferBitPrependByte( QV_BUFFER **buf, uint8_t value );
QV_API void qvBufferPrependBytes( QV_BUFFER **buf, const void *bytes, QV_INT byteCount );
QV_API void qvBufferBitPrependBytes( QV_BUFFER **buf, const void *bytes, QV_INT byteCount );
QV_API void qvBufferPrependZero( QV_BUFFER **buf, QV_INT byteCount );
QV_API void qvBufferBitPrependZero( QV_BUFFER **buf, QV_INT bitCount );
QV_API void qvBufferPrependOne( QV_BUFFER **buf, QV_INT byteCount );
QV_API void qvBufferBitPrependOne( QV_BUFFER **buf, QV_INT bitCount );
QV_API void qvBufferPrependAlignment( QV_BUFFER **buf );
QV_API void qvBufferBitPrependAlignment( QV_BUFFER **buf );
/** @} */

/** @{ */
/** Inserts at the end what qvBufferInsert...() inserts at an index. */
QV_API void qvBufferAppend( QV_BUFFER **buf, QV_BUFFER *src );
QV_API void qvBufferBitAppend( QV_BUFFER **buf, QV_BUFFER *src );
QV_API void qvBufferAppendLeading( QV_BUFFER **buf, QV_BUFFER *src, QV_INT byteCount );
QV_API void qvBufferBitAppendLeading( QV_BUFFER **buf, QV_BUFFER *src, QV_INT bitCount );
QV_API void qvBufferAppendTrailing( QV_BUFFER **buf, QV_BUFFER *src, QV_INT byteCount );
QV_API void qvBufferBitAppendTrailing( QV_BUFFER **buf, QV_BUFFER *src, QV_INT bitCount );
QV_API void qvBufferAppendInner( QV_BUFFER **buf, QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitAppendInner( QV_BUFFER **buf, QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount );
QV_API void qvBufferAppendOuter( QV_BUFFER **buf, QV_BUFFER *src, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitAppendOuter( QV_BUFFER **buf, QV_BUFFER *src, QV_INT bitOffset, QV_INT bitCount );
QV_API void qvBufferAppendBits( QV_BUFFER **buf, uint64_t value, QV_INT bitCount );
QV_API void qvBufferBitAppendBits( QV_BUFFER **buf, uint64_t value, QV_INT bitCount );
QV_API void qvBufferAppendByte( QV_BUFFER **buf, uint8_t value );
QV_API void qvBufferBitAppendByte( QV_BUFFER **buf, uint8_t value );
QV_API void qvBufferAppendBytes( QV_BUFFER **buf, const void *bytes, QV_INT byteCount );
QV_API void qvBufferBitAppendBytes( QV_BUFFER **buf, const void *bytes, QV_INT byteCount );
QV_API void qvBufferAppendZero( QV_BUFFER **buf, QV_INT byteCount );
QV_API void qvBufferBitAppendZero( QV_BUFFER **buf, QV_INT bitCount );
QV_API void qvBufferAppendOne( QV_BUFFER **buf, QV_INT byteCount );
QV_API void qvBufferBitAppendOne( QV_BUFFER **buf, QV_INT bitCount );
QV_API void qvBufferAppendAlignment( QV_BUFFER **buf );
QV_API void qvBufferBitAppendAlignment( QV_BUFFER **buf );
/** @} */

/** @{ */
/** Appending without a call for each piece: Room makes `*buf`, of whole bytes, the caller's own and returns the place
    after its contents, with room for `byteCount` bytes, above 0. The caller writes there, from the first on, then tells
    Written how many bytes belong to the Buffer now, 0 to `byteCount`. In between nothing else is done with `*buf`, not
    even a release. What was asked for and not written is given back as after a deletion, so that asking for much more
    than is written costs an allocation each time. A count for which there is no room ends the process. */
QV_API uint8_t *qvBufferAppendRoom( QV_BUFFER **buf, QV_INT byteCount );
QV_API void     qvBufferAppendWritten( QV_BUFFER **buf, QV_INT byteCount );
/** @} */

/* Deleting --------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Deletes the range, or with Outer everything but the range. Deleting all of it leaves the empty Buffer. */
QV_API void qvBufferDelLeading( QV_BUFFER **buf, QV_INT byteCount );
QV_API void qvBufferBitDelLeading( QV_BUFFER **buf, QV_INT bitCount );
QV_API void qvBufferDelTrailing( QV_BUFFER **buf, QV_INT byteCount );
QV_API void qvBufferBitDelTrailing( QV_BUFFER **buf, QV_INT bitCount );
QV_API void qvBufferDelInner( QV_BUFFER **buf, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitDelInner( QV_BUFFER **buf, QV_INT bitOffset, QV_INT bitCount );
QV_API void qvBufferDelOuter( QV_BUFFER **buf, QV_INT byteOffset, QV_INT byteCount );
QV_API void qvBufferBitDelOuter( QV_BUFFER **buf, QV_INT bitOffset, QV_INT bitCount );
/** @} */

#endif
