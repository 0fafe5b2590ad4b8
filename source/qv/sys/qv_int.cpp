#include "qv/sys/qv_int.h"

#include "qv/sys/qv_abort.h"

#include <array>
#include <bit>

namespace
{
constexpr std::array< uint8_t, 256 > BITS_IN_BYTE = []
{
    std::array< uint8_t, 256 > counts{};

    for( int i = 1; i < 256; i++ )
        counts[i] = static_cast< uint8_t >( ( i & 1 ) + counts[i / 2] );

    return counts;
}();

// A mask of the lowest bits, 0 to 64 of them.
QV_INT lowestMask( QV_INT lowest )
{
    return static_cast< QV_INT >( lowest == QV_INT_BITS ? ~UINT64_C( 0 ) : ( UINT64_C( 1 ) << lowest ) - 1 );
}
} // namespace

void qvIntSortPair( QV_INT *a, QV_INT *b )
{
    QV_CHECK( a );
    QV_CHECK( b );

    if( *a > *b )
        qvIntExchange( a, b );
}

void qvIntExchange( QV_INT *a, QV_INT *b )
{
    QV_CHECK( a );
    QV_CHECK( b );

    QV_INT value = *a;
    *a           = *b;
    *b           = value;
}

QV_INT qvIntMin( QV_INT a, QV_INT b )
{
    return a < b ? a : b;
}

QV_INT qvIntMax( QV_INT a, QV_INT b )
{
    return a > b ? a : b;
}

QV_INT qvIntConstrain( QV_INT value, QV_INT a, QV_INT b )
{
    qvIntSortPair( &a, &b );

    return value < a ? a : value > b ? b : value;
}

QV_INT qvIntMid( QV_INT a, QV_INT b )
{
    qvIntSortPair( &a, &b );

    // The distance of two signed integers always fits when it is not signed itself.
    QV_INT half = static_cast< QV_INT >( ( static_cast< uint64_t >( b ) - static_cast< uint64_t >( a ) ) / 2 );

    return a >= 0 ? a + half : b - half;
}

QV_BOOL qvIntAddOk( QV_INT a, QV_INT b )
{
    return QV_INT_ADD_OK( a, b );
}

QV_BOOL qvIntSubOk( QV_INT a, QV_INT b )
{
    return QV_INT_SUB_OK( a, b );
}

QV_BOOL qvIntMulOk( QV_INT a, QV_INT b )
{
    return QV_INT_MUL_OK( a, b );
}

QV_BOOL qvIntDivOk( QV_INT a, QV_INT b )
{
    return QV_INT_DIV_OK( a, b ) ? QV_TRUE : QV_FALSE;
}

QV_INT qvIntAddSaturating( QV_INT a, QV_INT b )
{
    QV_INT result;

    if( __builtin_add_overflow( a, b, &result ) )
        return b < 0 ? QV_INT_MIN : QV_INT_MAX;

    return result;
}

QV_INT qvIntSubSaturating( QV_INT a, QV_INT b )
{
    QV_INT result;

    if( __builtin_sub_overflow( a, b, &result ) )
        return b < 0 ? QV_INT_MAX : QV_INT_MIN;

    return result;
}

QV_INT qvIntMulSaturating( QV_INT a, QV_INT b )
{
    QV_INT result;

    if( __builtin_mul_overflow( a, b, &result ) )
        return ( a < 0 ) != ( b < 0 ) ? QV_INT_MIN : QV_INT_MAX;

    return result;
}

QV_INT qvIntDivSaturating( QV_INT a, QV_INT b )
{
    QV_CHECK( b != 0 );

    return QV_INT_DIV_OK( a, b ) ? a / b : QV_INT_MAX;
}

QV_INT qvIntAbs( QV_INT value )
{
    QV_CHECK_AS( QV_INT_MUL_OK( value, -1 ), "qvIntMulOk( value, -1 )" );

    return value < 0 ? -value : value;
}

QV_INT qvIntAbsSaturating( QV_INT value )
{
    return value == QV_INT_MIN ? QV_INT_MAX : qvIntAbs( value );
}

QV_BOOL qvIntBitIsSet( QV_INT value, QV_INT bit )
{
    QV_CHECK( bit >= 0 );
    QV_CHECK( bit < QV_INT_BITS );

    return ( static_cast< uint64_t >( value ) >> bit ) & 1 ? QV_TRUE : QV_FALSE;
}

QV_INT qvIntBitSet( QV_INT value, QV_INT bit )
{
    QV_CHECK( bit >= 0 );
    QV_CHECK( bit < QV_INT_BITS );

    return static_cast< QV_INT >( static_cast< uint64_t >( value ) | ( UINT64_C( 1 ) << bit ) );
}

QV_INT qvIntBitClear( QV_INT value, QV_INT bit )
{
    QV_CHECK( bit >= 0 );
    QV_CHECK( bit < QV_INT_BITS );

    return static_cast< QV_INT >( static_cast< uint64_t >( value ) & ~( UINT64_C( 1 ) << bit ) );
}

QV_INT qvIntBitSetRange( QV_INT value, QV_INT a, QV_INT b )
{
    qvIntSortPair( &a, &b );
    QV_CHECK( b < QV_INT_MAX );

    for( QV_INT bit = a; bit <= b; bit++ )
        value = qvIntBitSet( value, bit );

    return value;
}

QV_INT qvIntBitClearRange( QV_INT value, QV_INT a, QV_INT b )
{
    qvIntSortPair( &a, &b );
    QV_CHECK( b < QV_INT_MAX );

    for( QV_INT bit = a; bit <= b; bit++ )
        value = qvIntBitClear( value, bit );

    return value;
}

QV_INT qvIntBitSetHighest( QV_INT value, QV_INT highest )
{
    QV_CHECK( highest >= 0 );
    QV_CHECK( highest <= QV_INT_BITS );

    return value | ~lowestMask( QV_INT_BITS - highest );
}

QV_INT qvIntBitClearHighest( QV_INT value, QV_INT highest )
{
    QV_CHECK( highest >= 0 );
    QV_CHECK( highest <= QV_INT_BITS );

    return value & lowestMask( QV_INT_BITS - highest );
}

QV_INT qvIntBitSetLowest( QV_INT value, QV_INT lowest )
{
    QV_CHECK( lowest >= 0 );
    QV_CHECK( lowest <= QV_INT_BITS );

    return value | lowestMask( lowest );
}

QV_INT qvIntBitClearLowest( QV_INT value, QV_INT lowest )
{
    QV_CHECK( lowest >= 0 );
    QV_CHECK( lowest <= QV_INT_BITS );

    return value & ~lowestMask( lowest );
}

QV_INT qvIntBitHighest( QV_INT value )
{
    return QV_INT_BITS - 1 - std::countl_zero( static_cast< uint64_t >( value ) );
}

QV_INT qvIntBitLowest( QV_INT value )
{
    return value ? std::countr_zero( static_cast< uint64_t >( value ) ) : -1;
}

QV_INT qvIntBitCount( QV_INT value )
{
    QV_INT count = 0;

    for( uint64_t rest = static_cast< uint64_t >( value ); rest; rest >>= 8 )
        count += BITS_IN_BYTE[rest & 0xFF];

    return count;
}
