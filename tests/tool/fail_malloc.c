/* Preloaded: lets the allocation number FAIL_MALLOC of the process fail, counted from 1, or with a negative number that one
   and all after it; writes the number of allocations to the descriptor FAIL_MALLOC_COUNT when the process exits. */

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>

extern void *__libc_malloc( size_t size );
extern void *__libc_calloc( size_t count, size_t size );
extern void *__libc_realloc( void *block, size_t size );

static int calls = 0;

static int fails( void )
{
    const char *text = getenv( "FAIL_MALLOC" );
    int         at   = text ? atoi( text ) : 0;
    int         call = __atomic_add_fetch( &calls, 1, __ATOMIC_RELAXED );

    if( at == 0 || ( at > 0 ? call != at : call < -at ) )
        return 0;

    errno = ENOMEM;
    return 1;
}

void *malloc( size_t size )
{
    return fails() ? NULL : __libc_malloc( size );
}

void *calloc( size_t count, size_t size )
{
    return fails() ? NULL : __libc_calloc( count, size );
}

void *realloc( void *block, size_t size )
{
    return fails() ? NULL : __libc_realloc( block, size );
}

__attribute__( ( destructor ) ) static void tell( void )
{
    const char *text = getenv( "FAIL_MALLOC_COUNT" );

    if( text )
        dprintf( atoi( text ), "%d\n", calls );
}
