/** @file
    Keys: numbers to put in order, each with the place at which it stands in its lowest bits. So no two keys are equal,
    and equal numbers stay as they follow each other.

    A number needs `numberBits`, a place `placeBits`, and together they have 64 at most: that is the condition. Few keys
    are spread by their highest bits and then inserted among their neighbours, and up to 16 inserted at once. Many, and
    few of which too many share their highest bits, take one pass for each 8 bits of the numbers, the lowest ones first.
    So hardly a step depends on how two keys compare, which the processor could not predict of keys in no order. */

#ifndef QV_KEY_ORDER_PRIVATE_H
#define QV_KEY_ORDER_PRIVATE_H

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_types.h"

#include <bit>

namespace qv
{
/** Up to so many keys are spread. */
const QV_INT FEW_KEYS = 255;

/** How keys of `count` numbers from `lowest` to `highest` are made. */
struct KeyForm
{
    KeyForm( QV_INT lowest, QV_INT highest, QV_INT count ) :
        base( static_cast< uint64_t >( lowest ) ),
        numberBits( std::bit_width( static_cast< uint64_t >( highest ) - base ) ),
        placeBits( std::bit_width( static_cast< uint64_t >( count - 1 ) ) )
    {
        QV_ASSERT( lowest < highest );
    }

    bool fits() const
    {
        return numberBits + placeBits <= 64;
    }

    uint64_t key( QV_INT number, QV_INT place ) const
    {
        return ( static_cast< uint64_t >( number ) - base ) << placeBits | static_cast< uint64_t >( place );
    }

    QV_INT place( uint64_t key ) const
    {
        return static_cast< QV_INT >( key & ( ( uint64_t( 1 ) << placeBits ) - 1 ) );
    }

    uint64_t base;
    int      numberBits; // at least 1
    int      placeBits;  // at least 1
};

/** Puts keys in order, whose places ascend. Needs memory for as many, and returns the array of the two that has them. */
uint64_t *orderKeys( uint64_t *keys, uint64_t *spare, QV_INT count, const KeyForm &form );
} // namespace qv

#endif
