/** @file
    Functions as objects, for what takes a plain function and an object: threads, timers, events. */

#ifndef QV_TEST_CALL_H
#define QV_TEST_CALL_H

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_thread.h"
#include "qv/runtime/qv_ref.h"

#include <functional>
#include <thread>
#include <vector>

namespace qv::test
{
/** An object that owns a function. */
inline Ref< QV_OBJ > call( std::function< void() > body )
{
    return Ref< QV_OBJ >( obj( qv___BoxedPointerCreate(
        new std::function< void() >( std::move( body ) ),
        []( void *function ) { delete static_cast< std::function< void() > * >( function ); } ) ) );
}

/** Calls the function of such an object. */
inline void callNow( QV_OBJ *function )
{
    ( *static_cast< std::function< void() > * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( function ) ) ) )();
}

/** Calls the one that is the argument of the running thread. */
inline void callArgument()
{
    callNow( Ref< QV_OBJ >( qvThreadUnlatchArgument() ) );
}

/** A thread that calls a function; none if the system has no room for it. */
inline Ref< QV_THREAD > trySpawn( std::function< void() > body )
{
    return Ref< QV_THREAD >(
        qvThreadTrySpawnCstr( "test", -1, callArgument, call( std::move( body ) ), QV_THREAD_PRIORITY_NORMAL ) );
}

/** Calls a function on so many threads at a time, with their numbers, and waits until all have ended. */
template< class Body >
void onThreads( int count, Body body )
{
    std::vector< std::thread > threads;

    for( int number = 0; number < count; number++ )
        threads.emplace_back( body, number );

    for( std::thread &thread : threads )
        thread.join();
}
} // namespace qv::test

#endif
