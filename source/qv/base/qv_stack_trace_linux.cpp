#include "qv/base/qv_stack_trace_private.h"

#include "qv/runtime/qv_component_private.h"

#include <algorithm>
#include <execinfo.h>
#include <stdlib.h>

// The C library finds the symbols by itself.
void qv___StackTraceStartup( void )
{
}

void qv___StackTraceShutdown( void )
{
}

void qv___StackTraceUpdateSymbols( void )
{
}

__attribute__( ( noinline ) ) QV_INT qv::stackFrames( void **frames, QV_INT size )
{
    // One more, for this function's own frame.
    void *all[STACK_TRACE_CALLS + 1];
    int   count = backtrace( all, static_cast< int >( std::min( size, STACK_TRACE_CALLS ) + 1 ) );

    std::copy( all + std::min( count, 1 ), all + count, frames );

    return std::max( count - 1, 0 );
}

char **qv::stackLines( void *const *frames, QV_INT count )
{
    return backtrace_symbols( frames, static_cast< int >( count ) );
}

void qv::freeStackLines( char **lines )
{
    free( lines );
}
