#include "qv/base/qv_buffer_bits_private.h"

#include <algorithm>

uint64_t qv::bits::getLast( const uint8_t *at, uint64_t shift, uint64_t count )
{
    uint64_t word = 0;

    for( uint64_t bit = 0; bit < shift + count; bit += 8 )
        word |= static_cast< uint64_t >( at[bit / 8] ) << ( 56 - bit );

    return word << shift >> ( 64 - count );
}

void qv::bits::put( uint8_t *memory, uint64_t pos, uint64_t value, uint64_t count )
{
    if( count > 32 )
    {
        putWord( memory, pos, value >> 32, count - 32 );
        pos += count - 32;
        count = 32;
    }

    putWord( memory, pos, value, count );
}

void qv::bits::copy(
    uint8_t *dest, uint64_t destPos, const uint8_t *src, uint64_t srcEnd, uint64_t srcPos, uint64_t count )
{
    if( uint64_t ahead = std::min( -destPos % 8, count ) )
    {
        put( dest, destPos, get( src, srcEnd, srcPos, ahead ), ahead );
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
            memcpy( to, from, static_cast< size_t >( done ) );
    }
    else
    {
        // Each word stands in nine bytes, all of which hold bits of the range.
        for( ; count - done * 8 >= 64; done += 8 )
            storeBig( to + done, load64( from + done ) << shift | from[done + 8] >> ( 8 - shift ) );
    }

    if( uint64_t left = count - done * 8 )
        put( to, done * 8, get( src, srcEnd, srcPos + done * 8, left ), left );
}

void qv::bits::fill( uint8_t *memory, uint64_t pos, uint64_t count, int byte )
{
    uint64_t value = byte ? ~static_cast< uint64_t >( 0 ) : 0;

    if( uint64_t ahead = std::min( -pos % 8, count ) )
    {
        put( memory, pos, value, ahead );
        pos += ahead;
        count -= ahead;
    }

    if( count >= 8 )
        memset( memory + pos / 8, byte, static_cast< size_t >( count / 8 ) );

    if( uint64_t left = count % 8 )
        put( memory, pos + ( count - left ), value, left );
}
