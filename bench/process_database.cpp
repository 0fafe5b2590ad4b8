// Creates and releases objects while the library keeps lists of them. Prints the seconds. Argument: the number of threads.

#include "object_threads.h"

#include <qv/qv.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

int main( int, char **argv )
{
    qvRuntimeStartup( QV_RUNTIME_FLAG_OBJECT_DATABASE, nullptr, nullptr, nullptr, nullptr );

    auto start = std::chrono::steady_clock::now();
    bench::inThreads( std::atoi( argv[1] ), []( int i ) { qvBoxedIntRelease( qvBoxedIntCreate( i ) ); } );
    std::printf( "%.9f\n", std::chrono::duration< double >( std::chrono::steady_clock::now() - start ).count() );

    qvRuntimeShutdown();
    return 0;
}
