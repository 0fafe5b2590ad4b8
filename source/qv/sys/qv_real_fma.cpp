#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_cpu_private.h"
#include "qv/sys/qv_real_private.h"

#include <algorithm>
#include <bit>

// Where the compiler knows an instruction, or has no integers of the width that the plain form needs.
#if defined( __FP_FAST_FMA ) || !defined( __SIZEOF_INT128__ )
#define COMPILERS_OWN
#endif

#ifndef COMPILERS_OWN
namespace
{
__extension__ typedef unsigned __int128 Wide;

const int      FRACTION_BITS = 52;
const int      LEAST         = -1074; // the exponent of the least value above 0
const int      TOP           = 124;   // the highest bit of what is added: a sum has room for one more
const uint64_t SIGN          = UINT64_C( 1 ) << 63;

// A value other than 0, without its sign: mantissa * 2 to the power of `exponent`, with TOP as the highest bit.
struct Parts
{
    Wide mantissa;
    int  exponent;
};

int highestBit( Wide value )
{
    uint64_t high = static_cast< uint64_t >( value >> 64 );
    return high ? 127 - std::countl_zero( high ) : 63 - std::countl_zero( static_cast< uint64_t >( value ) );
}

Parts normalize( Wide mantissa, int exponent )
{
    int shift = TOP - highestBit( mantissa );
    return { mantissa << shift, exponent - shift };
}

// The 53 bits or less of a finite value other than 0.
uint64_t mantissaOf( QV_REAL value, int *exponent )
{
    uint64_t bits     = std::bit_cast< uint64_t >( value );
    uint64_t fraction = bits & ( ( UINT64_C( 1 ) << FRACTION_BITS ) - 1 );
    int      biased   = static_cast< int >( bits >> FRACTION_BITS & 0x7FF );
    *exponent         = LEAST + std::max( biased, 1 ) - 1;

    return biased ? fraction | UINT64_C( 1 ) << FRACTION_BITS : fraction;
}

// Shifts to the right. The lowest bit of the result is set if any bit was lost.
Wide shiftSticky( Wide value, int count )
{
    if( count == 0 )
        return value;

    if( count > 127 )
        return value != 0;

    return value >> count | ( ( value & ( ( Wide( 1 ) << count ) - 1 ) ) != 0 );
}

// The real nearest to mantissa * 2 to the power of `exponent`, where the lowest bit stands for all below it.
QV_REAL roundToReal( Wide mantissa, int exponent, bool negative )
{
    uint64_t sign = negative ? SIGN : 0;

    if( mantissa == 0 )
        return std::bit_cast< QV_REAL >( sign );

    // Two bits stay below the last one of the result: the half, and the one that stands for the rest.
    int  target = std::max( highestBit( mantissa ) + exponent - FRACTION_BITS, LEAST );
    Wide kept =
        target - 2 >= exponent ? shiftSticky( mantissa, target - 2 - exponent ) : mantissa << ( exponent - target + 2 );

    uint64_t result = static_cast< uint64_t >( kept >> 2 );
    unsigned below  = static_cast< unsigned >( kept & 3 );
    result += below > 2 || ( below == 2 && ( result & 1 ) );

    // The bits of a real count up like integers: a carry out of the fraction goes into the exponent, from the values
    // without a leading bit into those with one, and past the largest one to infinity.
    uint64_t biased = result >> FRACTION_BITS ? static_cast< uint64_t >( target - LEAST ) : 0;

    if( target - LEAST > 0x7FD )
        return std::bit_cast< QV_REAL >( sign | UINT64_C( 0x7FF ) << FRACTION_BITS );

    return std::bit_cast< QV_REAL >( sign | ( ( biased << FRACTION_BITS ) + result ) );
}

#ifdef QV___CPU_FEATURES
__attribute__( ( target( "fma" ) ) ) QV_REAL multiplyAdd( QV_REAL x, QV_REAL y, QV_REAL z )
{
    return __builtin_fma( x, y, z );
}
#endif
} // namespace
#endif

// The product of two mantissas has 106 bits, so that all of it and the sum, but for bits far below the result's last
// one, fit an integer of 128.
QV_REAL qv___RealMultiplyAddPlain( QV_REAL x, QV_REAL y, QV_REAL z )
{
#ifdef COMPILERS_OWN
    return __builtin_fma( x, y, z );
#else
    const uint64_t INFINITE = UINT64_C( 0x7FF ) << FRACTION_BITS;
    auto isFinite = []( QV_REAL value ) { return ( std::bit_cast< uint64_t >( value ) & INFINITE ) != INFINITE; };

    if( !isFinite( x ) || !isFinite( y ) || x == 0.0 || y == 0.0 )
        return x * y + z;

    if( !isFinite( z ) )
        return z;

    if( z == 0.0 )
        return x * y;

    int      exponentX, exponentY, exponentZ;
    uint64_t mantissaX = mantissaOf( x, &exponentX ), mantissaY = mantissaOf( y, &exponentY );
    uint64_t mantissaZ = mantissaOf( z, &exponentZ );

    Parts big           = normalize( Wide( mantissaX ) * mantissaY, exponentX + exponentY );
    Parts small         = normalize( mantissaZ, exponentZ );
    bool  bigNegative   = ( ( std::bit_cast< uint64_t >( x ) ^ std::bit_cast< uint64_t >( y ) ) & SIGN ) != 0;
    bool  smallNegative = ( std::bit_cast< uint64_t >( z ) & SIGN ) != 0;

    if( big.exponent < small.exponent || ( big.exponent == small.exponent && big.mantissa < small.mantissa ) )
    {
        std::swap( big, small );
        std::swap( bigNegative, smallNegative );
    }

    Wide low = shiftSticky( small.mantissa, big.exponent - small.exponent );
    QV_ASSERT( low <= big.mantissa );

    if( bigNegative == smallNegative )
        return roundToReal( big.mantissa + low, big.exponent, bigNegative );

    return big.mantissa == low ? 0.0 : roundToReal( big.mantissa - low, big.exponent, bigNegative );
#endif
}

QV_REAL qv___RealMultiplyAdd( QV_REAL x, QV_REAL y, QV_REAL z )
{
#if defined( QV___CPU_FEATURES ) && !defined( COMPILERS_OWN )
    if( CPU_FEATURE_ACTIVE( FMA ) )
        return multiplyAdd( x, y, z );
#endif

    return qv___RealMultiplyAddPlain( x, y, z );
}
