#include "qv/sys/qv_key_order_private.h"

#include <algorithm>
#include <utility>

namespace
{
// Up to so many keys are inserted at once: counting their bits costs more.
const QV_INT FEWEST_KEYS = 16;

// The sum of the squares of how many keys share their highest bits: inserting takes half as many steps at most. Up to
// this sum, which 64 keys never exceed, that costs less than the passes, each of which begins with 256 counts.
const QV_INT MOST_CROWDED = 64 * 64;

// Turns numbers of keys into the places where the first of them goes. False if they are too crowded to be inserted.
template< size_t DIGITS >
bool startsOf( uint8_t ( &counts )[DIGITS] )
{
    QV_INT start = 0, crowded = 0;

    for( uint8_t &each : counts )
    {
        QV_INT count = each;
        each         = static_cast< uint8_t >( start );
        start += count;
        crowded += count * count;
    }

    return crowded <= MOST_CROWDED;
}

void insertEach( uint64_t *keys, QV_INT count )
{
    for( QV_INT i = 1; i < count; i++ )
    {
        uint64_t key = keys[i];
        QV_INT   at  = i;

        for( ; at > 0 && keys[at - 1] > key; at-- )
            keys[at] = keys[at - 1];

        keys[at] = key;
    }
}

// Few keys: false, with nothing done, where the highest bits of many are the same.
bool spreadKeys( const uint64_t *keys, uint64_t *result, QV_INT count, int bits )
{
    static_assert( qv::FEW_KEYS <= UINT8_MAX ); // counts and places fit a byte
    QV_ASSERT( count <= qv::FEW_KEYS );

    const int DIGIT              = 7;
    int       shift              = std::max( bits - DIGIT, 0 );
    uint8_t   starts[1 << DIGIT] = {};

    for( QV_INT i = 0; i < count; i++ )
        starts[keys[i] >> shift]++;

    if( !startsOf( starts ) )
        return false;

    for( QV_INT i = 0; i < count; i++ )
        result[starts[keys[i] >> shift]++] = keys[i];

    insertEach( result, count );

    return true;
}

// By 8 bits; keys that have the same ones stay as they follow each other.
void passKeys( const uint64_t *keys, uint64_t *result, QV_INT count, int shift )
{
    QV_INT starts[256] = {};
    QV_INT start       = 0;

    for( QV_INT i = 0; i < count; i++ )
        starts[keys[i] >> shift & 0xFF]++;

    for( QV_INT &each : starts )
        start += std::exchange( each, start );

    for( QV_INT i = 0; i < count; i++ )
        result[starts[keys[i] >> shift & 0xFF]++] = keys[i];
}
} // namespace

uint64_t *qv::orderKeys( uint64_t *keys, uint64_t *spare, QV_INT count, const KeyForm &form )
{
    const int bits = form.placeBits + form.numberBits;
    QV_ASSERT( bits <= 64 );

    if( count <= FEWEST_KEYS )
    {
        insertEach( keys, count );
        return keys;
    }

    if( count <= FEW_KEYS && spreadKeys( keys, spare, count, bits ) )
        return spare;

    for( int shift = form.placeBits; shift < bits; shift += 8 )
    {
        passKeys( keys, spare, count, shift );
        std::swap( keys, spare );
    }

    QV_ASSERT( std::is_sorted( keys, keys + count ) );

    return keys;
}
