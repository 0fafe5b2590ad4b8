/** @file
    Bits in memory, most significant first. Positions are in bits from the start of some memory, of which `end` bits can
    be read. Here is what has to be inline. */

#ifndef QV_BUFFER_BITS_PRIVATE_H
#define QV_BUFFER_BITS_PRIVATE_H

#include "qv/sys/qv_types.h"

#include <bit>
#include <string.h>

// The conditions that the reports of the Buffer quote.
#define BYTES_TO_BITS( x )                         ( (uint64_t)( x ) << 3 )
#define BYTES_TO_BITS_OK( x )                      ( (uint64_t)( x ) < (uint64_t)1 << 61 )
#define BIT_AT_BOUND( x )                          ( ( ( x ) & 7 ) == 0 )
#define QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( x ) ( ( x ) >= 0 )
#define QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( x )   ( ( x ) <= (uint64_t)QV_INT_MAX )
#define QV___INT_UNSIGNED_ADD_OK( a, b )           ( (uint64_t)( a ) + (uint64_t)( b ) >= (uint64_t)( a ) )
#define QV_REF_RETAIN_COUNT( x )                   qv___AtomicLoad32( &( x )->retainCount )

// An argument of a public form in bits: one that counts bits is checked, one that counts bytes is multiplied too. The
// forms take their arguments one by one in their order, so that the first bad one is reported.
#define UNSIGNED( x ) ( QV_CHECK( QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( x ) ), (uint64_t)( x ) )
#define BYTES( x )                                                                                                     \
    ( QV_CHECK( QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( x ) ), QV_CHECK( BYTES_TO_BITS_OK( x ) ), BYTES_TO_BITS( x ) )

namespace qv::bits
{
inline uint64_t load64( const uint8_t *at )
{
    uint64_t word;
    memcpy( &word, at, 8 );
    return std::endian::native == std::endian::little ? __builtin_bswap64( word ) : word;
}

template< class T >
inline void storeBig( uint8_t *at, T word )
{
    if constexpr( std::endian::native == std::endian::little && sizeof( T ) == 8 )
        word = __builtin_bswap64( word );
    else if constexpr( std::endian::native == std::endian::little && sizeof( T ) == 4 )
        word = __builtin_bswap32( word );
    else if constexpr( std::endian::native == std::endian::little && sizeof( T ) == 2 )
        word = __builtin_bswap16( word );

    memcpy( at, &word, sizeof( T ) );
}

/** Up to 64 bits, at least 1, out of less than eight bytes. */
uint64_t getLast( const uint8_t *at, uint64_t shift, uint64_t count );

/** Up to 64 bits, at least 1. */
inline uint64_t get( const uint8_t *memory, uint64_t end, uint64_t pos, uint64_t count )
{
    const uint8_t *at    = memory + pos / 8;
    uint64_t       shift = pos % 8;

    if( pos - shift + 64 > end )
        return getLast( at, shift, count );

    uint64_t word = load64( at ) << shift;

    if( shift + count > 64 )
        word |= at[8] >> ( 8 - shift );

    return word >> ( 64 - count );
}

/** Overwrites bits that stand in up to eight bytes, at least 1. Only the two bytes at the ends are read, and each of
    them lies in one store: a processor can take a byte out of a store that has not reached the cache yet, but has to
    wait for a word that is partly in one, which would slow down fields that are written one after the other. */
inline void putWord( uint8_t *memory, uint64_t pos, uint64_t value, uint64_t count )
{
    uint8_t *at    = memory + pos / 8;
    uint64_t shift = pos % 8;
    uint64_t word  = value << ( 64 - count ); // at the top

    if( shift + count <= 8 )
    {
        uint64_t mask = ( 0xFF00 >> count & 0xFF ) >> shift;
        *at           = static_cast< uint8_t >( ( *at & ~mask ) | word >> 56 >> shift );
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

/** Overwrites up to 64 bits, at least 1. */
void put( uint8_t *memory, uint64_t pos, uint64_t value, uint64_t count );

/** Copies any number of bits between places that do not overlap. */
void copy( uint8_t *dest, uint64_t destPos, const uint8_t *src, uint64_t srcEnd, uint64_t srcPos, uint64_t count );

/** Makes bits all 0 or all 1, by the `byte` 0 or 255. */
void fill( uint8_t *memory, uint64_t pos, uint64_t count, int byte );
} // namespace qv::bits

#endif
