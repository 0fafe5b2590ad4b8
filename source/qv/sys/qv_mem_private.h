#ifndef QV_MEM_PRIVATE_H
#define QV_MEM_PRIVATE_H

#include "qv/sys/qv_types.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

/** True for a size that fits the platform's size type: where that has 64 bits, for all but negative ones. */
#define QV_INT_TO_SIZET_CONV_OK( size ) ( ( size ) >= 0 && (uint64_t)( size ) <= SIZE_MAX )

/** Whether new blocks are filled with bytes 0xFF. Set by the start of the run. */
extern "C" QV_BOOL qv___MemDebug;

namespace qv
{
/** Whether memory that the program has given back may be kept to be used again. False where that would hide faults from
    tools: with QV_RUNTIME_FLAG_MEMORY_DEBUG, with AddressSanitizer, and while the library doesn't run. Atomic. */
extern __attribute__( ( visibility( "hidden" ) ) ) bool keepsMemory;

/** As qvMemFree(), for the end of every object: one call less. */
inline void freeBlock( void *block )
{
    free( block );
}

/** Copies a Part from each end. The two may overlap in the middle; together they are all of the bytes. */
template< class Part >
inline void copyEnds( void *to, const void *from, size_t count )
{
    Part first, last;
    memcpy( &first, from, sizeof( Part ) );
    memcpy( &last, static_cast< const char * >( from ) + count - sizeof( Part ), sizeof( Part ) );
    memcpy( to, &first, sizeof( Part ) );
    memcpy( static_cast< char * >( to ) + count - sizeof( Part ), &last, sizeof( Part ) );
}

/** As memcpy(). Pieces of 4 to 64 bytes go through registers: for those the call costs more than the copying. */
inline void copyBytes( void *to, const void *from, size_t count )
{
    struct Part16
    {
        uint64_t half[2];
    };

    if( __builtin_expect( count - 4 > 60, 0 ) )
        memcpy( to, from, count );
    else if( count > 32 )
    {
        copyEnds< Part16 >( to, from, 32 );
        copyEnds< Part16 >(
            static_cast< char * >( to ) + count - 32, static_cast< const char * >( from ) + count - 32, 32 );
    }
    else if( count >= 16 )
        copyEnds< Part16 >( to, from, count );
    else if( count >= 8 )
        copyEnds< uint64_t >( to, from, count );
    else
        copyEnds< uint32_t >( to, from, count );
}
} // namespace qv

#endif
