/** @file
    Order: how numbers, texts and bytes compare, and the search in what is ordered.

    Every order() returns -1, 0 or 1: the first argument stands before the second, is equal to it, or stands after. */

#ifndef QV_ORDER_PRIVATE_H
#define QV_ORDER_PRIVATE_H

#include "qv/sys/qv_chars_private.h"
#include <concepts>
#include <float.h>
#include <string.h>

namespace qv
{
/** The order of two integers of one type. */
template< std::integral T >
constexpr QV_INT order( T a, T b )
{
    return ( a > b ) - ( a < b );
}

/** True for two reals that are no more than DBL_EPSILON apart; a NaN equals nothing. */
inline bool realsEqual( QV_REAL a, QV_REAL b )
{
    return b - DBL_EPSILON <= a && b + DBL_EPSILON >= a;
}

/** The order of two reals: 0 if they are equal as above, and 1 with a NaN on either side or on both. */
inline QV_INT order( QV_REAL a, QV_REAL b )
{
    return realsEqual( a, b ) ? 0 : a < b ? -1 : 1;
}

/** The order of two texts by their characters, all below 0x110000; a text stands before those that begin with it. */
inline QV_INT order( const QV_CHAR *a, QV_INT aLength, const QV_CHAR *b, QV_INT bLength )
{
    if( int first = compareChars( a, b, aLength < bLength ? aLength : bLength ) )
        return order( first, 0 );

    return order( aLength, bLength );
}

/** The same where the second text is one of ASCII or Latin-1. */
inline QV_INT order( const QV_CHAR *a, QV_INT aLength, const uint8_t *b, QV_INT bLength )
{
    for( QV_INT i = 0; i < aLength && i < bLength; i++ )
        if( a[i] != b[i] )
            return a[i] < b[i] ? -1 : 1;

    return order( aLength, bLength );
}

/** The order of as many bytes, none of which has a sign. */
inline QV_INT orderBytes( const void *a, const void *b, size_t size )
{
    return size == 0 ? 0 : order( memcmp( a, b, size ), 0 );
}

/** The order of two texts by their bytes, up to their terminators. */
inline QV_INT orderCstr( const char *a, const char *b )
{
    return order( strcmp( a, b ), 0 );
}

/** What a search has found: the item that is equal, or the first one that stands after what was looked for. */
template< class Index >
struct Bisected
{
    Index idx;
    bool  found;
};

/** Searches ascending items. The item at `below` is known to stand before what is looked for and the one at `above`
    after it, or there are no such items: neither is looked at, so that -1 and the length search all. `orderAt( idx )`
    is the order of an item and what is looked for. As many calls as the logarithm of the number of items between. */
template< std::signed_integral Index, class OrderAt >
inline Bisected< Index > bisect( Index below, Index above, const OrderAt &orderAt )
{
    while( above - below > 1 )
    {
        Index  mid    = below + ( above - below ) / 2;
        QV_INT result = orderAt( mid );

        if( result == 0 )
            return { mid, true };

        ( result < 0 ? below : above ) = mid;
    }

    return { above, false };
}
} // namespace qv

#endif
