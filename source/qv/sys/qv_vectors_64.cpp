#include "qv/sys/qv_cpu_private.h"
#include "qv/sys/qv_vectors_private.h"

#ifdef QV___CPU_FEATURES
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized" // what the header leaves so on purpose
#include <immintrin.h>

#define KERNEL __attribute__( ( target( "avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt" ) ) )

namespace
{
// A table of 256 bytes in registers, each half of it for one look-up.
struct Table
{
    __m512i quarters[4];
};

KERNEL inline Table tableOf( const uint8_t ( &bytes )[256] )
{
    return {
        _mm512_loadu_si512( bytes ), _mm512_loadu_si512( bytes + 64 ), _mm512_loadu_si512( bytes + 128 ),
        _mm512_loadu_si512( bytes + 192 ) };
}

KERNEL inline __m512i lookUp( const Table &table, __m512i at )
{
    __m512i lower = _mm512_permutex2var_epi8( table.quarters[0], at, table.quarters[1] );
    __m512i upper = _mm512_permutex2var_epi8( table.quarters[2], at, table.quarters[3] );

    return _mm512_mask_mov_epi8( lower, _mm512_movepi8_mask( at ), upper );
}

KERNEL inline void store( QV_CHAR *to, __m512i chars, QV_INT count )
{
    if( count >= 16 ) // masks make a store slower
        _mm512_storeu_si512( to, chars );
    else if( count > 0 )
        _mm512_mask_storeu_epi32( to, static_cast< __mmask16 >( _bzhi_u32( 0xFFFF, unsigned( count ) ) ), chars );
}
} // namespace

KERNEL QV_INT qv::decodeBytes64( const vectors::ByteChars &chars, const uint8_t *bytes, QV_INT count, QV_CHAR *to )
{
    // Bytes in such an order that unpacking them twice puts them into the one that they had.
    const __m512i unpackable = _mm512_setr_epi32( 0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15 );
    const __m512i none       = _mm512_set1_epi8( -1 );
    const __m512i zero       = _mm512_setzero_si512();

    const Table low  = tableOf( chars.low );
    const Table high = tableOf( chars.high );
    QV_INT      done = 0;

    while( done < count )
    {
        QV_INT    size   = count - done < 64 ? count - done : 64;
        __mmask64 loaded = _bzhi_u64( ~UINT64_C( 0 ), unsigned( size ) );
        __m512i   in     = _mm512_maskz_loadu_epi8( loaded, bytes + done );
        in               = _mm512_permutexvar_epi32( unpackable, in );
        __m512i lower    = lookUp( low, in );
        __m512i upper    = lookUp( high, in );

        // The bytes that are not there count as byte 0, which has a character in all tables, else they end the run.
        if( _mm512_cmpeq_epi8_mask( _mm512_and_si512( lower, upper ), none ) != 0 )
            break;

        __m512i first  = _mm512_unpacklo_epi8( lower, upper );
        __m512i second = _mm512_unpackhi_epi8( lower, upper );
        store( to + done, _mm512_unpacklo_epi16( first, zero ), size );
        store( to + done + 16, _mm512_unpackhi_epi16( first, zero ), size - 16 );
        store( to + done + 32, _mm512_unpacklo_epi16( second, zero ), size - 32 );
        store( to + done + 48, _mm512_unpackhi_epi16( second, zero ), size - 48 );
        done += size;
    }

    return done;
}

#else

QV_INT qv::decodeBytes64( const vectors::ByteChars &, const uint8_t *, QV_INT, QV_CHAR * )
{
    return 0;
}

#endif
