#include "qv_test_support.h"

#include "qv/sys/qv_real.h"

#include <cmath>
#include <limits>

namespace
{
const QV_REAL INFINITE = std::numeric_limits< QV_REAL >::infinity();
const QV_REAL NAN_REAL = std::numeric_limits< QV_REAL >::quiet_NaN();
} // namespace

TEST( Real, TheToleranceIsAbsolute )
{
    const QV_REAL epsilon = 2.220446049250313e-16;

    EXPECT_TRUE( qvRealEquals( 1.0, 1.0 + 1e-17 ) );
    EXPECT_TRUE( qvRealEquals( 0.0, epsilon ) );
    EXPECT_TRUE( qvRealEquals( 0.0, -epsilon ) );
    EXPECT_FALSE( qvRealEquals( 0.0, 2 * epsilon ) );
    EXPECT_FALSE( qvRealEquals( 1e20, std::nextafter( 1e20, INFINITE ) ) );
    EXPECT_TRUE( qvRealEquals( INFINITE, INFINITE ) );

    EXPECT_EQ( 0, qvRealCompare( 1e-17, 0.0 ) );
    EXPECT_EQ( -1, qvRealCompare( -INFINITE, 0.0 ) );
    EXPECT_EQ( 1, qvRealCompare( NAN_REAL, 1.0 ) );
    EXPECT_EQ( 1, qvRealCompare( NAN_REAL, NAN_REAL ) );
}

TEST( Real, RoundingGoesTowardsZeroAndSaturates )
{
    EXPECT_TRUE( std::signbit( qvRealTrunc( -0.5 ) ) );

    EXPECT_EQ( -2, qvRealToInt( -2.9 ) );
    EXPECT_EQ( QV_INT_MIN, qvRealToInt( -9223372036854775808.0 ) );
    EXPECT_EQ( 9223372036854774784, qvRealToInt( std::nextafter( 9223372036854775808.0, 0.0 ) ) );
    EXPECT_EQ( QV_INT_MAX, qvRealToInt( 1e19 ) );
}
