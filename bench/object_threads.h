/** @file
    The work of threads that create and release objects, for the benchmark and for the program that it runs. */

#ifndef BENCH_OBJECT_THREADS_H
#define BENCH_OBJECT_THREADS_H

#include <thread>
#include <vector>

namespace bench
{
const int OBJECTS_A_THREAD = 100000;

/** Calls the function so many times in each thread, with different numbers. */
template< class CreateAndRelease >
void inThreads( int threads, CreateAndRelease createAndRelease )
{
    std::vector< std::thread > all;

    for( int t = 0; t < threads; t++ )
        all.emplace_back(
            [&]
            {
                for( int i = 0; i < OBJECTS_A_THREAD; i++ )
                    createAndRelease( i );
            } );

    for( std::thread &thread : all )
        thread.join();
}
} // namespace bench

#endif
