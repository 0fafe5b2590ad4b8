/** @file
    What a process does that is not the running test: how it ends and what it writes on its error stream. */

#ifndef QV_TEST_CHILD_H
#define QV_TEST_CHILD_H

#include "qv_test_support.h"

#include "qv/runtime/qv_runtime.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qv::test
{
struct Ending
{
    std::string errors;      // what was written on the error stream
    int         signal = 0;  // that ended the process, or 0
    int         status = -1; // that it exited with otherwise
};

/** Runs `body` in a copy of this process, which exits with 0 after it. */
template< class Body >
Ending inChild( Body body )
{
    int ends[2];
    EXPECT_EQ( 0, pipe( ends ) );
    fflush( nullptr );
    settle();
    pid_t child = fork();

    if( child == 0 )
    {
        alarm( 300 ); // a copy that waits for ever is a failure, not a standstill
        const rlimit noCore = {};
        setrlimit( RLIMIT_CORE, &noCore );
        dup2( ends[1], STDERR_FILENO );
        close( ends[0] );
        close( ends[1] );
        body();
        fflush( nullptr );
        _exit( 0 );
    }

    close( ends[1] );

    Ending ending;
    char   piece[4096];

    for( ssize_t got; ( got = read( ends[0], piece, sizeof( piece ) ) ) > 0 || ( got < 0 && errno == EINTR ); )
        ending.errors.append( piece, got > 0 ? static_cast< size_t >( got ) : 0 );

    close( ends[0] );

    int status = 0;
    waitpid( child, &status, 0 );
    ending.signal = WIFSIGNALED( status ) ? WTERMSIG( status ) : 0;
    ending.status = WIFEXITED( status ) ? WEXITSTATUS( status ) : -1;

    // An emulator names the signal itself.
    if( ending.signal )
        ending.errors.resize( std::min( ending.errors.rfind( "qemu: uncaught " ), ending.errors.size() ) );

    return ending;
}

/** The same with a run of the library of its own, which `body` may stop: a copy of a process lacks its threads. */
template< class Body >
Ending inOwnRun( Body body )
{
    Ending ending;
    auto   run = [&]
    {
        startLibrary();
        body();
    };
    withoutLibrary( [&] { ending = inChild( run ); } );

    return ending;
}

/** The same, and what is expected there has to be so. */
template< class Body >
void expectInOwnRun( Body body )
{
    Ending ending = inOwnRun(
        [&]
        {
            body();
            fputs( testing::Test::HasFailure() ? "failed" : "done", stderr );
        } );
    EXPECT_EQ( "done", ending.errors );
}

/** Stops the running library and starts it with these flags, in a run of its own. */
inline void restart(
    QV_INT flags, const char *identifier = nullptr, const char *name = nullptr, const char *version = nullptr )
{
    qvRuntimeShutdown();
    qvRuntimeStartup( flags, nullptr, identifier, name, version );
}
} // namespace qv::test

#endif
