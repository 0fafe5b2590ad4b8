#include "qv_test_support.h"

#include "qv/sys/qv_real.h"
#include "qv/sys/qv_real_private.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

TEST( Real, TheToleranceIsAbsolute )
{
    const QV_REAL EPSILON = 2.220446049250313e-16;

    EXPECT_TRUE( qvRealEquals( 0.0, EPSILON ) && qvRealEquals( 0.0, -EPSILON ) );
    EXPECT_FALSE( qvRealEquals( 0.0, 2 * EPSILON ) );
    EXPECT_FALSE( qvRealEquals( 1e20, std::nextafter( 1e20, INFINITY ) ) );
    EXPECT_TRUE( qvRealEquals( INFINITY, INFINITY ) );

    EXPECT_EQ( 0, qvRealCompare( 1e-17, 0.0 ) );
    EXPECT_EQ( -1, qvRealCompare( -INFINITY, 0.0 ) );
    EXPECT_EQ( 1, qvRealCompare( NAN, 1.0 ) );
    EXPECT_EQ( 1, qvRealCompare( NAN, NAN ) );
}

TEST( Real, RoundingGoesTowardsZeroAndSaturates )
{
    EXPECT_TRUE( std::signbit( qvRealTrunc( -0.5 ) ) );
    EXPECT_EQ( -2, qvRealToInt( -2.9 ) );
    EXPECT_EQ( QV_INT_MIN, qvRealToInt( -9223372036854775808.0 ) );
    EXPECT_EQ( 9223372036854774784, qvRealToInt( std::nextafter( 9223372036854775808.0, 0.0 ) ) );
    EXPECT_EQ( QV_INT_MAX, qvRealToInt( 1e19 ) );
}

TEST( Real, IntegersBecomeRealsToBeCompared )
{
    EXPECT_TRUE( qvRealEqualsInt( 9007199254740992.0, 9007199254740993 ) );
    EXPECT_FALSE( qvRealEqualsInt( 9007199254740992.0, 9007199254740991 ) );
    EXPECT_EQ( -1, qvRealCompareInt( -0.5, 0 ) );
    EXPECT_EQ( 1, qvRealCompareInt( 9.3e18, QV_INT_MAX ) );
    EXPECT_EQ( 1, qvRealCompareInt( NAN, QV_INT_MAX ) );

    for( QV_REAL wrong : { NAN, INFINITY, -INFINITY } )
        EXPECT_FALSE( qvRealIsFinite( wrong ) || qvRealOk( wrong ) );

    EXPECT_TRUE( qvRealIsFinite( -std::numeric_limits< QV_REAL >::max() ) && qvRealOk( -0.0 ) );
}

TEST( Real, MultiplyAddRoundsOnce )
{
    std::mt19937_64 random( 7 );
    auto            bitsOf = []( QV_REAL value ) { return std::bit_cast< uint64_t >( value ); };

    // Any bits; factors whose product is near the least and the largest reals; sums that cancel out nearly or fully.
    for( int i = 0; i < 300000; i++ )
    {
        auto any  = [&random] { return std::bit_cast< QV_REAL >( random() ); };
        auto near = [&random]( int exponent )
        {
            return std::ldexp( static_cast< QV_REAL >( random() ), exponent - 64 - static_cast< int >( random() % 4 ) );
        };

        QV_REAL x        = i % 3 ? near( i % 3 == 1 ? -500 : 500 ) : any();
        QV_REAL y        = i % 3 ? near( i % 3 == 1 ? -540 : 522 ) : any();
        QV_REAL z        = i % 2 ? any() : -x * y * ( i % 4 ? 1.0 : near( 1 ) );
        QV_REAL expected = std::fma( x, y, z );

        if( std::isnan( expected ) )
            continue;

        ASSERT_EQ( bitsOf( expected ), bitsOf( qv___RealMultiplyAddPlain( x, y, z ) ) ) << x << ' ' << y << ' ' << z;
        ASSERT_EQ( bitsOf( expected ), bitsOf( qv___RealMultiplyAdd( x, y, z ) ) ) << x << ' ' << y << ' ' << z;
    }
}
