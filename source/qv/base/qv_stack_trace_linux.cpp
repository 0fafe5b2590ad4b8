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
    // More frames, for this function's own and those of a sanitizer that intercepts the C library.
    const QV_INT OWN = 4;

    void  *all[STACK_TRACE_CALLS + OWN];
    void **end   = all + backtrace( all, STACK_TRACE_CALLS + OWN );
    void **first = std::find( all, std::min( all + OWN, end ), __builtin_return_address( 0 ) );
    QV_INT count = std::min< QV_INT >( end - first, size );

    std::copy( first, first + count, frames );

    return count;
}

char **qv::stackLines( void *const *frames, QV_INT count )
{
    return backtrace_symbols( frames, static_cast< int >( count ) );
}

void qv::freeStackLines( char **lines )
{
    free( lines );
}
