#include "qv_test_support.h"

#include "qv/sys/qv_real.h"

#include <cmath>

TEST( Real, TheToleranceIsAbsolute )
{
    const QV_REAL EPSILON = 2.220446049250313e-16;

    const struct
    {
        QV_REAL a;
        QV_REAL b;
        QV_INT  order;
    } CASES[] = {
        { 1.0, 1.0 + 1e-17, 0 },  { 0.0, EPSILON, 0 },       { 0.0, -EPSILON, 0 },
        { 0.0, 2 * EPSILON, -1 }, { INFINITY, INFINITY, 0 }, { 1e20, std::nextafter( 1e20, INFINITY ), -1 },
        { NAN, 1.0, 1 },          { NAN, NAN, 1 },
    };

    for( const auto &row : CASES )
    {
        EXPECT_EQ( row.order, qvRealCompare( row.a, row.b ) ) << row.a << " " << row.b;
        EXPECT_EQ( row.order == 0, qvRealEquals( row.a, row.b ) ) << row.a << " " << row.b;
    }
}

TEST( Real, RoundingGoesTowardsZeroAndSaturates )
{
    EXPECT_TRUE( std::signbit( qvRealTrunc( -0.5 ) ) );
    EXPECT_EQ( -2, qvRealToInt( -2.9 ) );
    EXPECT_EQ( QV_INT_MIN, qvRealToInt( -9223372036854775808.0 ) );
    EXPECT_EQ( 9223372036854774784, qvRealToInt( std::nextafter( 9223372036854775808.0, 0.0 ) ) );
    EXPECT_EQ( QV_INT_MAX, qvRealToInt( 1e19 ) );
}
