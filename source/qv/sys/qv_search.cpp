/** @file
    Finding a text in another.

    Eight places at a time are passed over where the first and the last character of the text do not stand. What is left
    is compared. In texts that repeat themselves much is left, and much of it is equal, so that all comparisons together
    could cost the product of the two lengths. When the long ones have cost some times what the places have, the search
    goes on in the two-way manner, in linear time and without memory:

    - The text that is sought is cut at the place from which on its greatest suffix starts, in the order of characters or
      in the reverse one, whichever starts later. Its right side is compared first, forwards, then its left side,
      backwards.
    - Where the right side differs after some characters, no match begins before the place after these; where the left
      one differs, none does before a period of the text further on.
    - If the whole text has this period, what is known to be equal after such a step is not compared again.

    A search from the right is the same with both texts read backwards. */

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_vectors_private.h"

#include <algorithm>

using namespace qv::vectors;

namespace
{
// Characters from one on, forwards or backwards.
template< QV_INT STEP >
struct Sequence
{
    const QV_CHAR *first;

    QV_CHAR operator[]( QV_INT i ) const
    {
        return first[i * STEP];
    }
};

struct Suffix
{
    QV_INT start;
    QV_INT period; // of the suffix
};

// The greatest suffix of a text, or with `reversed` the greatest by the reversed order of characters.
template< QV_INT STEP >
Suffix greatestSuffix( Sequence< STEP > text, QV_INT length, bool reversed )
{
    QV_INT start  = 0; // of the greatest one so far
    QV_INT other  = 1; // of the one that it is compared with
    QV_INT equal  = 0; // characters that both begin with
    QV_INT period = 1;

    while( other + equal < length )
    {
        QV_CHAR a = text[start + equal], b = text[other + equal];

        if( a == b )
        {
            if( ++equal == period )
            {
                other += period;
                equal = 0;
            }
        }
        else if( ( a > b ) != reversed )
        {
            other += equal + 1;
            equal  = 0;
            period = other - start;
        }
        else
        {
            start  = other++;
            equal  = 0;
            period = 1;
        }
    }

    return { start, period };
}

// The lowest index below `positions` where `sub` stands in `text`, or -1.
template< QV_INT STEP >
QV_INT findTwoWay( Sequence< STEP > text, QV_INT positions, Sequence< STEP > sub, QV_INT length )
{
    Suffix one    = greatestSuffix( sub, length, false );
    Suffix other  = greatestSuffix( sub, length, true );
    Suffix right  = one.start > other.start ? one : other;
    QV_INT period = right.period;
    QV_INT same   = 0; // characters of the left side that occur again a period further on

    while( same < right.start && sub[same] == sub[same + period] )
        same++;

    const bool isPeriodic = same == right.start;

    if( !isPeriodic )
        period = std::max( right.start, length - right.start ) + 1;

    QV_INT known = 0; // characters at the start of the text that are equal at the place

    for( QV_INT place = 0; place < positions; )
    {
        QV_INT i = std::max( right.start, known );

        while( i < length && sub[i] == text[place + i] )
            i++;

        if( i < length )
        {
            place += i - right.start + 1;
            known = 0;
            continue;
        }

        i = right.start;

        while( i > known && sub[i - 1] == text[place + i - 1] )
            i--;

        if( i <= known )
            return place;

        place += period;
        known = isPeriodic ? length - period : 0;
    }

    return -1;
}

// Where a text may stand, by its first and its last character: few places pass where there is no match, also in texts
// that are full of one of the two. And whether it does, with an eye on what that costs.
class Ends
{
public:
    Ends( const QV_CHAR *sub, QV_INT subLength ) : sub_( sub ), length_( subLength )
    {
#if QV___VECTORS_16
        has16_ = has16();
        first_ = repeat( sub[0] );
        last_  = repeat( sub[subLength - 1] );
#endif
    }

    // False if the text stands at none of the eight places from `chs` on.
    bool mayBeInEightFrom( [[maybe_unused]] const QV_CHAR *chs ) const
    {
#if QV___VECTORS_16
        if( has16_ )
            return anyTopBit( inFourFrom( chs ) | inFourFrom( chs + 4 ) );
#endif

        return true;
    }

    bool isAt( const QV_CHAR *chs )
    {
        if( chs[0] != sub_[0] || !qv::equalChars( chs, sub_, std::min( length_, SHORT ) ) )
            return false;

        if( length_ <= SHORT )
            return true;

        compared_ += length_;
        return qv::equalChars( chs + SHORT, sub_ + SHORT, length_ - SHORT );
    }

    // True when long comparisons have cost more than so many places and the text itself allow.
    bool isExpensive( QV_INT places ) const
    {
        return compared_ > 8 * ( places + length_ );
    }

private:
#if QV___VECTORS_16
    FourSigned inFourFrom( const QV_CHAR *chs ) const
    {
        return ( load( chs ) == first_ ) & ( load( chs + length_ - 1 ) == last_ );
    }

    bool has16_;
    Four first_;
    Four last_;
#endif

    static constexpr QV_INT SHORT = 16; // characters that cost no more to compare than the place

    const QV_CHAR *sub_;
    QV_INT         length_;
    QV_INT         compared_ = 0; // characters by comparisons beyond the short ones, at most
};
} // namespace

QV_INT qv::findChars( const QV_CHAR *chs, QV_INT positions, const QV_CHAR *sub, QV_INT subLength )
{
    Ends ends( sub, subLength );

    for( QV_INT i = 0; i < positions; )
    {
        QV_INT stop = positions - i < 8 ? positions : i + 8;

        if( stop - i < 8 || ends.mayBeInEightFrom( chs + i ) )
        {
            for( QV_INT at = i; at < stop; at++ )
                if( ends.isAt( chs + at ) )
                    return at;

            if( ends.isExpensive( stop ) )
            {
                QV_INT rest = findTwoWay< 1 >( { chs + stop }, positions - stop, { sub }, subLength );
                return rest < 0 ? -1 : stop + rest;
            }
        }

        i = stop;
    }

    return -1;
}

QV_INT qv::findLastChars( const QV_CHAR *chs, QV_INT positions, const QV_CHAR *sub, QV_INT subLength )
{
    const QV_INT all = positions;
    Ends         ends( sub, subLength );

    while( positions > 0 )
    {
        QV_INT start = positions < 8 ? 0 : positions - 8;

        if( positions < 8 || ends.mayBeInEightFrom( chs + start ) )
        {
            for( QV_INT at = positions - 1; at >= start; at-- )
                if( ends.isAt( chs + at ) )
                    return at;

            if( start > 0 && ends.isExpensive( all - start ) )
            {
                QV_INT rest =
                    findTwoWay< -1 >( { chs + start + subLength - 2 }, start, { sub + subLength - 1 }, subLength );
                return rest < 0 ? -1 : start - 1 - rest;
            }
        }

        positions = start;
    }

    return -1;
}
