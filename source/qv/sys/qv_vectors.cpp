#include "qv/sys/qv_vectors_private.h"

#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_cpu_private.h"

/* Which kernels run ---------------------------------------------------------------------------------------------- */

int32_t qv::vectors::current = UNDECIDED;

namespace
{
using namespace qv::vectors;

// The kernels for vectors of 32 bytes gather bits with an instruction that the first processors of one family have in
// name only. The C library is asked, which knows the processor already: what the compiler offers asks the processor
// itself, at load time, and where that is a virtual one the answers cost more than the whole start of the library.
bool machineHas32()
{
#ifdef QV___CPU_FEATURES
    if( !CPU_FEATURE_ACTIVE( AVX2 ) || !CPU_FEATURE_ACTIVE( BMI2 ) )
        return false;

    unsigned signature = __x86_get_cpuid_feature_leaf( CPUID_INDEX_1 )->cpuid_array[0];
    unsigned family    = ( signature >> 8 & 0xF ) + ( signature >> 20 & 0xFF );

    return family != 0x17 && family != 0x18;
#else
    return false;
#endif
}

// The vectors of 64 bytes of the first processors that had any slow the whole processor down, and cannot move bytes
// together.
bool machineHas64()
{
#ifdef QV___CPU_FEATURES
    return CPU_FEATURE_ACTIVE( AVX512F ) && CPU_FEATURE_ACTIVE( AVX512BW ) && CPU_FEATURE_ACTIVE( AVX512VL )
           && CPU_FEATURE_ACTIVE( AVX512_VBMI ) && CPU_FEATURE_ACTIVE( AVX512_VBMI2 );
#else
    return false;
#endif
}

int32_t bestKernel()
{
    QV_INT best = !machineHas32() ? ( QV___VECTORS_16 ? VECTORS_16 : PLAIN ) : machineHas64() ? VECTORS_64 : VECTORS_32;
    return static_cast< int32_t >( best );
}
} // namespace

int32_t qv::vectors::decide()
{
    int32_t best = bestKernel();
    __atomic_store_n( &current, best, __ATOMIC_RELAXED );

    return best;
}

QV_INT qv___VectorsForceKernel( QV_INT kernel )
{
    int32_t best   = bestKernel();
    int32_t chosen = kernel >= 0 && kernel < best ? static_cast< int32_t >( kernel ) : best;
    __atomic_store_n( &current, chosen, __ATOMIC_RELAXED );

    return chosen;
}

/* Finding -------------------------------------------------------------------------------------------------------- */

QV_INT qv::findLastChar( const QV_CHAR *chs, QV_INT count, QV_CHAR ch )
{
#if QV___VECTORS_16
    if( has16() )
    {
        const Four wanted = repeat( ch );

        while( count >= 16 )
        {
            const QV_CHAR *last = chs + count - 16;

            if( anyTopBit(
                    ( load( last ) == wanted ) | ( load( last + 4 ) == wanted ) | ( load( last + 8 ) == wanted )
                    | ( load( last + 12 ) == wanted ) ) )
                break;

            count -= 16;
        }
    }
#endif

    while( count > 0 && chs[count - 1] != ch )
        count--;

    return count - 1;
}

QV_INT qv::findLineEnd( const QV_CHAR *chs, QV_INT offset, QV_INT length )
{
    if( has64() )
        return findLineEnd64( chs, offset, length );

#if QV___VECTORS_16
    // Nearly all characters of a text are passed over here, eight at a time.
    if( has16() )
    {
        auto ends = []( Four ch )
        { return isIn( ch, { U'\n', U'\r' + 1 } ) | ( ch == 0x85 ) | ( ( ch & ~1u ) == 0x2028 ); };

        for( ; offset + 8 <= length; offset += 8 )
            if( anyTopBit( ends( load( chs + offset ) ) | ends( load( chs + offset + 4 ) ) ) )
                break;
    }
#endif

    auto isEnd = []( QV_CHAR ch ) { return ch - U'\n' <= U'\r' - U'\n' || ch == 0x85 || ( ch & ~1u ) == 0x2028; };

    while( offset < length && !isEnd( chs[offset] ) )
        offset++;

    return offset;
}
