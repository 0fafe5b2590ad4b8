#include "qv_test_support.h"

#include "qv/sys/qv_real.h"

#include <cmath>

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
