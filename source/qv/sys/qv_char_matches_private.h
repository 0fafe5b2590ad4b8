/** @file
    All places of a character in an array. For texts where it may stand every few characters: between two of them there is
    then less to look at than a call of a searching function costs, so that sixteen characters are compared at once and
    the places are taken out of the mask. */

#ifndef QV_CHAR_MATCHES_PRIVATE_H
#define QV_CHAR_MATCHES_PRIVATE_H

#include "qv/sys/qv_vectors_private.h"

#include <algorithm>

namespace qv
{
/** The places of a character, in ascending order. The array outlives it; only places that were returned may change. */
class CharMatches
{
public:
    CharMatches( const QV_CHAR *chs, QV_INT count, QV_CHAR ch ) : chs_( chs ), count_( count ), ch_( ch )
    {
    }

    /** The index of the next place; -1 after the last. */
    QV_INT next()
    {
        while( mask_ == 0 )
        {
#if QV___VECTORS_16
            if( count_ - seen_ >= 16 && vectors::has16() )
            {
                start_ = seen_;
                mask_  = sixteen( chs_ + start_ );
                seen_ += 16;
                continue;
            }
#endif
            if( seen_ == count_ )
                return -1;

            if( chs_[seen_++] == ch_ )
                return seen_ - 1;
        }

        QV_INT place = start_ + __builtin_ctz( mask_ );
        mask_ &= mask_ - 1;

        return place;
    }

private:
#if QV___VECTORS_16
    // A bit for each of the sixteen, the lowest one for the first.
    uint32_t sixteen( const QV_CHAR *chs ) const
    {
        vectors::Four sought = vectors::repeat( ch_ );
        __m128i       low    = _mm_packs_epi32( same( chs, sought ), same( chs + 4, sought ) );
        __m128i       high   = _mm_packs_epi32( same( chs + 8, sought ), same( chs + 12, sought ) );

        return static_cast< uint32_t >( _mm_movemask_epi8( _mm_packs_epi16( low, high ) ) );
    }

    static __m128i same( const QV_CHAR *chs, vectors::Four sought )
    {
        return (__m128i)( vectors::load( chs ) == sought );
    }
#endif

    const QV_CHAR *chs_;
    QV_INT         count_;
    QV_CHAR        ch_;
    QV_INT         seen_  = 0; // characters that have been looked at
    QV_INT         start_ = 0; // of the characters that the mask is of
    uint32_t       mask_  = 0; // places among them that are still to be told
};

/** How often a character stands in an array. */
inline QV_INT countChar( const QV_CHAR *chs, QV_INT count, QV_CHAR ch )
{
    QV_INT found = 0;
    QV_INT i     = 0;

#if QV___VECTORS_16
    const QV_INT MOST = QV_INT( 1 ) << 30; // what the four sums of a round have room for

    while( count - i >= 4 && vectors::has16() )
    {
        vectors::Four sums = {};
        QV_INT        end  = i + std::min( ( count - i ) & ~QV_INT( 3 ), MOST );

        for( ; i < end; i += 4 )
            sums -= ( vectors::Four )( vectors::load( chs + i ) == vectors::repeat( ch ) );

        found += QV_INT( sums[0] ) + sums[1] + sums[2] + sums[3];
    }
#endif

    for( ; i < count; i++ )
        found += chs[i] == ch;

    return found;
}
} // namespace qv

#endif
