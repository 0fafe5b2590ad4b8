#ifndef QV_STACK_TRACE_PRIVATE_H
#define QV_STACK_TRACE_PRIVATE_H

#include "qv/sys/qv_types.h"

/** Called after each load of modules, for platforms that must read their symbol tables again then. */
QV_API void qv___StackTraceUpdateSymbols( void );

namespace qv
{
/** The most calls that a trace looks at. */
const QV_INT STACK_TRACE_CALLS = 4000;

/** Stores the return addresses of the calling thread's stack, the caller's frame first. Returns their number, which is
    at most `size`. */
QV_INT stackFrames( void **frames, QV_INT size );

/** One line of text for each frame, in one block that freeStackLines() takes; null on failure. */
char **stackLines( void *const *frames, QV_INT count );
void   freeStackLines( char **lines );
} // namespace qv

#endif
