#include "bench.h"

#include <spawn.h>
#include <sys/wait.h>

extern char **environ;

namespace bench
{
namespace
{
uint64_t runProcess( const char *program )
{
    char *const argv[] = { const_cast< char * >( program ), nullptr };
    pid_t       child;
    int         status = -1;

    if( posix_spawn( &child, program, nullptr, nullptr, argv, environ ) == 0 )
        waitpid( child, &status, 0 );

    return static_cast< uint64_t >( status );
}
} // namespace

void addProcessCases()
{
    add(
        { "process",
          "start and stop",
          "whole process",
          1.35,
          [] { show( runProcess( BENCH_START ) ); },
          { { "empty C program", [] { show( runProcess( BENCH_EMPTY ) ); } } },
          { "a library of one function, loaded", [] { show( runProcess( BENCH_LOADED ) ); } } } );
}
} // namespace bench
