#ifndef QV_MEM_PRIVATE_H
#define QV_MEM_PRIVATE_H

#include "qv/sys/qv_types.h"

/** True when a size fits the platform's size type. Refuses only negative sizes where that has 64 bits. */
#define QV_INT_TO_SIZET_CONV_OK( size ) ( ( size ) >= 0 && (uint64_t)( size ) <= SIZE_MAX )

/** True: new blocks are filled with bytes 0xFF. */
extern "C" QV_BOOL qv___MemDebug;

#endif
