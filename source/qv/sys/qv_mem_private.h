#ifndef QV_MEM_PRIVATE_H
#define QV_MEM_PRIVATE_H

#include "qv/sys/qv_types.h"

#include <stdlib.h>

/** True for a size that fits the platform's size type: where that has 64 bits, for all but negative ones. */
#define QV_INT_TO_SIZET_CONV_OK( size ) ( ( size ) >= 0 && (uint64_t)( size ) <= SIZE_MAX )

/** Whether new blocks are filled with bytes 0xFF. Set by the start of the run. */
extern "C" QV_BOOL qv___MemDebug;

namespace qv
{
/** As qvMemFree(), for the end of every object: one call less. */
inline void freeBlock( void *block )
{
    free( block );
}
} // namespace qv

#endif
