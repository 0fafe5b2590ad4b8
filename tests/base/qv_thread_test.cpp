#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_signalable.h"
#include "qv/base/qv_thread_private.h"
#include "qv/base/qv_time.h"
#include "qv/runtime/qv_runtime.h"

#include <atomic>
#include <thread>

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

using qv::Ref;
using namespace qv::test;

namespace
{
std::atomic< bool > noRoom{ false }; // for one more thread
} // namespace

// Stands in for that of the system.
extern "C" int pthread_create( pthread_t *thread, const pthread_attr_t *attr, void *( *start )(void *), void *arg )
{
    static auto real = reinterpret_cast< decltype( &pthread_create ) >( dlsym( RTLD_NEXT, "pthread_create" ) );
    return noRoom ? EAGAIN : real( thread, attr, start, arg );
}

TEST( Thread, BodySeesWhatItWasSpawnedWith )
{
    char          kernelName[17] = {};
    QV_THREAD    *self           = nullptr;
    Ref< QV_OBJ > body           = call(
        [&]
        {
            self = Ref( qvThreadThis() );
            EXPECT_EQ( QV_THREAD_PRIORITY_LOW, qvThreadPriority() );
            EXPECT_EQ( nullptr, qvThreadUnlatchArgument() ); // fetched once already
            EXPECT_FALSE( qvThreadEnd( self ) );
            prctl( PR_GET_NAME, kernelName );
        } );
    Ref thread( qvThreadTrySpawnWcstr( L"wörker with a name!", 18, callArgument, body, QV_THREAD_PRIORITY_LOW ) );
    qvThreadJoin( thread );

    EXPECT_EQ( thread.get(), self );
    EXPECT_EQ( "wörker with a name", take( qvThreadName( thread ) ) );
    EXPECT_EQ( "wörker with a name", textOf( thread.get() ) );
    EXPECT_STREQ( "wörker with a ", kernelName ); // 15 bytes
    EXPECT_EQ( 1, references( thread.get() ) );
}

TEST( Thread, WhatTheBodyLeavesIsReleasedBeforeItsEnd )
{
    Ref< QV_OBJ > argument( qv::obj( qvBoxedIntCreate( 1 ) ) ), key( qv::obj( qvBoxedIntCreate( 2 ) ) );

    // Never fetched.
    qvThreadJoin( Ref( qvThreadTrySpawnCstr( "", 0, [] {}, argument, QV_THREAD_PRIORITY_IDLE ) ) );
    EXPECT_EQ( 1, references( argument.get() ) );

    // Each thread has its own keys.
    qvThreadSetKey( key, argument );
    auto body = [&]
    {
        EXPECT_EQ( nullptr, qvThreadKey( key ) );
        qvThreadDelKey( key );
        qvThreadSetKey( key, argument );
        EXPECT_EQ( argument.get(), Ref( qvThreadKey( key ) ).get() );
    };
    qvThreadJoin( trySpawn( body ) );
    EXPECT_EQ( 2, references( argument.get() ) );
    EXPECT_TRUE( qvThreadHasKey( key ) );
    qvThreadDelKey( key );
    EXPECT_FALSE( qvThreadHasKey( key ) );
}

TEST( Thread, EndFiresItsTargets )
{
    Ref gate( qvBarrierCreate( QV_TRUE ) ), ended( qvBarrierCreate( QV_TRUE ) );
    Ref atEnd( qvSignalableCreateBarrier( ended ) ),
        deleted( qvSignalableCreate( []( QV_OBJ * ) { ADD_FAILURE(); }, nullptr ) );

    Ref< QV_THREAD > thread = trySpawn( [&] { qvBarrierPass( gate ); } );
    qvThreadEndAddSignalable( thread, atEnd );
    qvThreadEndAddSignalable( thread, deleted );
    qvThreadEndDelSignalable( thread, deleted );
    EXPECT_FALSE( qvThreadEnd( thread ) );
    qvBarrierUnblock( gate );
    qvBarrierPass( ended );
    EXPECT_TRUE( qvThreadEnd( thread ) );
}

TEST( Thread, ForeignThreadIsEncapsulatedForACall )
{
    bool ran  = false;
    auto body = [&]
    {
        EXPECT_EQ( "qv___ThreadEncapsulateBegin", take( qvThreadName( Ref( qvThreadThis() ) ) ) );
        EXPECT_EQ( QV_THREAD_PRIORITY_NORMAL, qvThreadPriority() );
        qvThreadJoin( trySpawn( [&] { ran = true; } ) );
        EXPECT_TRUE( qvThreadEncapsulated() );
    };
    onThreads(
        1,
        [&]( int )
        {
            qvThreadEncapsulate( callArgument, call( body ) );
            EXPECT_FALSE( qvThreadEncapsulated() );
        } );
    EXPECT_TRUE( ran );

    expectReports( {
        { [] { qvThreadEncapsulate( [] {}, nullptr ); }, "!qvThreadEncapsulated()" },
        { [] { qv___ThreadEncapsulateEnd(), qvThreadThis(); }, "thread" },
        { [] { qv___ThreadEncapsulateEnd(), qvThreadUnlatchArgument(); }, "thread" },
    } );
    EXPECT_DEATH( ( qv___ThreadEncapsulateEnd(), qvThreadYield() ), "qv_thread_unix" );
}

TEST( Thread, StopWaitsForTenThousandShortLivedThreads )
{
    const int          COUNT = 10000;
    std::atomic< int > freed{ 0 };

    withoutLibrary(
        [&]
        {
            qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );

            for( int i = 0; i < COUNT; i++ )
            {
                auto          count = []( void *counter ) { ++*static_cast< std::atomic< int > * >( counter ); };
                Ref< QV_OBJ > counted( qv::obj( qv___BoxedPointerCreate( &freed, count ) ) );

                // A spawn that fails keeps no reference and counts no thread, else the stop would wait for it.
                if( i % 100 == 0 )
                {
                    noRoom = true;
                    EXPECT_EQ( nullptr, qvThreadTrySpawn( text( "" ), [] {}, counted, QV_THREAD_PRIORITY_HIGH ) );
                    EXPECT_EQ( 1, references( counted.get() ) );
                    noRoom = false;
                }

                // Threads end with keys of their own.
                auto body = [held = qv::retain( counted.get() )]
                { qvThreadSetKey( Ref( held ), Ref( qv::obj( qvTimeNow() ) ) ); };

                while( !trySpawn( body ) )
                    qvThreadYield(); // as many as the system has room for
            }

            // And for one that is a thread of the library for a call.
            static std::atomic< bool > inside, left;
            auto                       linger = [] { inside = true, usleep( 20000 ), left = true; };
            std::thread                foreign( [&] { qvThreadEncapsulate( linger, nullptr ); } );

            while( !inside )
                std::this_thread::yield();

            qvRuntimeShutdown();
            EXPECT_TRUE( left );
            foreign.join();
        } );

    EXPECT_EQ( COUNT, freed );
}
