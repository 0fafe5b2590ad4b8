#include "qv_test_support.h"

#include "qv/sys/qv_int.h"

#include <random>

namespace
{
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

#ifdef __SIZEOF_INT128__
using Wide = __int128;

QV_INT saturated( Wide value )
{
    return static_cast< QV_INT >( std::clamp< Wide >( value, QV_INT_MIN, QV_INT_MAX ) );
}

bool fits( Wide value )
{
    return value == saturated( value );
}
#endif
} // namespace

#ifdef __SIZEOF_INT128__
TEST( Int, ArithmeticAgreesWithWiderIntegers )
{
    for( QV_INT a : values() )
        for( QV_INT b : values() )
        {
            SCOPED_TRACE( std::to_string( a ) + ", " + std::to_string( b ) );
            Wide low = std::min( a, b ), high = std::max( a, b ), half = ( high - low ) / 2;
            ASSERT_EQ( fits( Wide( a ) + b ), qvIntAddOk( a, b ) );
            ASSERT_EQ( fits( Wide( a ) - b ), qvIntSubOk( a, b ) );
            ASSERT_EQ( fits( Wide( a ) * b ), qvIntMulOk( a, b ) );
            ASSERT_EQ( b != 0 && fits( Wide( a ) / b ), qvIntDivOk( a, b ) );
            ASSERT_EQ( saturated( Wide( a ) + b ), qvIntAddSaturating( a, b ) );
            ASSERT_EQ( saturated( Wide( a ) - b ), qvIntSubSaturating( a, b ) );
            ASSERT_EQ( saturated( Wide( a ) * b ), qvIntMulSaturating( a, b ) );
            ASSERT_EQ( b ? saturated( Wide( a ) / b ) : 0, b ? qvIntDivSaturating( a, b ) : 0 );
            ASSERT_EQ( low >= 0 ? low + half : high - half, qvIntMid( a, b ) );
        }
}
#endif

TEST( Int, BitsAgreeWithCounting )
{
    for( QV_INT value : values() )
    {
        QV_INT highest = -1, lowest = -1, count = 0;

        for( QV_INT bit = 0; bit < QV_INT_BITS; bit++ )
        {
            bool set = static_cast< uint64_t >( value ) >> bit & 1;
            ASSERT_EQ( set, qvIntBitIsSet( value, bit ) );
            ASSERT_EQ( value | QV_INT( uint64_t( 1 ) << bit ), qvIntBitSet( value, bit ) );
            ASSERT_EQ( value & ~QV_INT( uint64_t( 1 ) << bit ), qvIntBitClear( value, bit ) );

            highest = set ? bit : highest;
            lowest  = set && lowest < 0 ? bit : lowest;
            count += set;

            // Every width at both ends, each as a range too.
            ASSERT_EQ( qvIntBitSetRange( value, bit, 0 ), qvIntBitSetLowest( value, bit + 1 ) );
            ASSERT_EQ( qvIntBitClearRange( value, 0, bit ), qvIntBitClearLowest( value, bit + 1 ) );
            ASSERT_EQ( qvIntBitSetRange( value, bit, 63 ), qvIntBitSetHighest( value, QV_INT_BITS - bit ) );
            ASSERT_EQ( qvIntBitClearRange( value, 63, bit ), qvIntBitClearHighest( value, QV_INT_BITS - bit ) );
        }

        ASSERT_EQ( highest, qvIntBitHighest( value ) );
        ASSERT_EQ( lowest, qvIntBitLowest( value ) );
        ASSERT_EQ( count, qvIntBitCount( value ) );
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
    qvIntSortPair( &a, &b ); // stays
    EXPECT_TRUE( a == -7 && b == 7 );

    EXPECT_EQ( QV_INT_MAX, qvIntAbsSaturating( QV_INT_MIN ) );
    EXPECT_BROKEN( qvIntAbs( QV_INT_MIN ), "qvIntMulOk( value, -1 )" );
}
