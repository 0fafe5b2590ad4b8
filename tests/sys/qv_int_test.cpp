#include "qv_test_support.h"

#include "qv/sys/qv_int.h"

#include <random>
#include <vector>

namespace
{
using Wide = __int128;

// Values around everything that could go wrong, and some from anywhere.
std::vector< QV_INT > values()
{
    std::vector< QV_INT > result;

    for( QV_INT near :
         { QV_INT_MIN + 2, QV_INT_MIN / 2, QV_INT( -4294967296 ), QV_INT( 0 ), QV_INT( 3037000499 ),
           QV_INT( 4294967296 ), QV_INT_MAX / 2, QV_INT_MAX - 2 } )
        for( QV_INT offset = -2; offset <= 2; offset++ )
            result.push_back( near + offset );

    std::mt19937_64 random( 1 );

    for( int i = 0; i < 40; i++ )
        result.push_back( static_cast< QV_INT >( random() ) >> ( random() % 64 ) );

    return result;
}

bool fits( Wide value )
{
    return value >= QV_INT_MIN && value <= QV_INT_MAX;
}

QV_INT saturated( Wide value )
{
    return fits( value ) ? static_cast< QV_INT >( value ) : value < 0 ? QV_INT_MIN : QV_INT_MAX;
}

QV_INT middle( Wide a, Wide b )
{
    Wide low = std::min( a, b ), high = std::max( a, b );
    return static_cast< QV_INT >( low >= 0 ? low + ( high - low ) / 2 : high - ( high - low ) / 2 );
}
} // namespace

TEST( Int, ArithmeticAgreesWithWiderIntegers )
{
    for( QV_INT a : values() )
        for( QV_INT b : values() )
        {
            SCOPED_TRACE( std::to_string( a ) + ", " + std::to_string( b ) );
            ASSERT_EQ( fits( Wide( a ) + b ), qvIntAddOk( a, b ) );
            ASSERT_EQ( fits( Wide( a ) - b ), qvIntSubOk( a, b ) );
            ASSERT_EQ( fits( Wide( a ) * b ), qvIntMulOk( a, b ) );
            ASSERT_EQ( b != 0 && fits( Wide( a ) / b ), qvIntDivOk( a, b ) );
            ASSERT_EQ( saturated( Wide( a ) + b ), qvIntAddSaturating( a, b ) );
            ASSERT_EQ( saturated( Wide( a ) - b ), qvIntSubSaturating( a, b ) );
            ASSERT_EQ( saturated( Wide( a ) * b ), qvIntMulSaturating( a, b ) );
            ASSERT_EQ( middle( a, b ), qvIntMid( a, b ) );

            if( b != 0 )
            {
                ASSERT_EQ( saturated( Wide( a ) / b ), qvIntDivSaturating( a, b ) );
            }
        }
}

TEST( Int, BitsAgreeWithCounting )
{
    for( QV_INT value : values() )
    {
        QV_INT highest = -1, lowest = -1, count = 0;

        for( QV_INT bit = 0; bit < QV_INT_BITS; bit++ )
        {
            bool set = static_cast< uint64_t >( value ) >> bit & 1;
            ASSERT_EQ( set, qvIntBitIsSet( value, bit ) );
            ASSERT_TRUE( qvIntBitIsSet( qvIntBitSet( value, bit ), bit ) );
            ASSERT_FALSE( qvIntBitIsSet( qvIntBitClear( value, bit ), bit ) );
            ASSERT_EQ( value, set ? qvIntBitSet( value, bit ) : qvIntBitClear( value, bit ) );

            highest = set ? bit : highest;
            lowest  = set && lowest < 0 ? bit : lowest;
            count += set;
        }

        ASSERT_EQ( highest, qvIntBitHighest( value ) );
        ASSERT_EQ( lowest, qvIntBitLowest( value ) );
        ASSERT_EQ( count, qvIntBitCount( value ) );

        // Every width at both ends, each as a range too.
        for( QV_INT n = 1; n <= QV_INT_BITS; n++ )
        {
            ASSERT_EQ( qvIntBitSetRange( value, n - 1, 0 ), qvIntBitSetLowest( value, n ) );
            ASSERT_EQ( qvIntBitClearRange( value, 0, n - 1 ), qvIntBitClearLowest( value, n ) );
            ASSERT_EQ( qvIntBitSetRange( value, QV_INT_BITS - n, 63 ), qvIntBitSetHighest( value, n ) );
            ASSERT_EQ( qvIntBitClearRange( value, 63, QV_INT_BITS - n ), qvIntBitClearHighest( value, n ) );
        }

        ASSERT_EQ( value, qvIntBitSetLowest( value, 0 ) );
        ASSERT_EQ( value, qvIntBitClearHighest( value, 0 ) );
    }

    EXPECT_EQ( 0x3C, qvIntBitSetRange( 0, 5, 2 ) );
}

TEST( Int, BoundsComeInEitherOrder )
{
    EXPECT_EQ( 5, qvIntConstrain( 5, 10, 1 ) );
    EXPECT_EQ( 10, qvIntConstrain( 50, 1, 10 ) );

    QV_INT a = 7, b = -7;
    qvIntSortPair( &a, &b );
    EXPECT_EQ( -7, a );
    qvIntSortPair( &a, &b );
    EXPECT_EQ( 7, b );

    EXPECT_EQ( QV_INT_MAX, qvIntAbsSaturating( QV_INT_MIN ) );
    EXPECT_BROKEN( qvIntAbs( QV_INT_MIN ), "qvIntMulOk( value, -1 )" );
}
