/** @file
    What the kernels for vectors of 64 bytes have in common. Where the build has none of them it defines nothing;
    QV___KERNEL_64 marks the functions that use them. */

#ifndef QV_VECTORS_64_PRIVATE_H
#define QV_VECTORS_64_PRIVATE_H

#include "qv/sys/qv_cpu_private.h"
#include "qv/sys/qv_types.h"

#ifdef QV___CPU_FEATURES

#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized" // what the compiler's header leaves so on purpose
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#include <immintrin.h>

#define QV___KERNEL_64 __attribute__( ( target( "avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt" ) ) )

namespace qv::vectors
{
/** The lowest bits, so many. */
QV___KERNEL_64 inline uint64_t lowest( QV_INT count )
{
    return _bzhi_u64( ~UINT64_C( 0 ), static_cast< unsigned >( count ) );
}

/** 16 times the same. */
QV___KERNEL_64 inline __m512i repeat16( uint32_t value )
{
    return _mm512_set1_epi32( static_cast< int >( value ) );
}

/** Bytes in such an order that unpacking them twice puts them into the one that they had. */
QV___KERNEL_64 inline __m512i unpackable( __m512i bytes )
{
    return _mm512_permutexvar_epi32( _mm512_setr_epi32( 0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15 ), bytes );
}

/** Writes the characters of a vector, or the first ones if `count`, which may be negative, is less. */
QV___KERNEL_64 inline void store16( QV_CHAR *to, __m512i chars, QV_INT count )
{
    if( count >= 16 ) // masks make a store slower
        _mm512_storeu_si512( to, chars );
    else if( count > 0 )
        _mm512_mask_storeu_epi32( to, static_cast< __mmask16 >( lowest( count ) ), chars );
}
} // namespace qv::vectors

#endif

#endif
