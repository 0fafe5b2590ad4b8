#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_region.h"
#include "qv/base/qv_signalable.h"
#include "qv/base/qv_thread_private.h"
#include "qv/base/qv_time.h"
#include "qv/runtime/qv_runtime.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

using qv::Ref;
using namespace qv::test;

/* Stand-ins for the system, which passes everything on ------------------------------------------------------------- */

namespace
{
std::atomic< bool > noRoom{ false };    // for one more thread
std::atomic< int >  askedPriority{ 0 }; // the scheduler's, as asked for last

template< class F >
F real( const char *name )
{
    return reinterpret_cast< F >( dlsym( RTLD_NEXT, name ) );
}
} // namespace

extern "C" int pthread_create( pthread_t *thread, const pthread_attr_t *attr, void *( *start )(void *), void *arg )
{
    return noRoom ? EAGAIN : real< decltype( &pthread_create ) >( "pthread_create" )( thread, attr, start, arg );
}

extern "C" int pthread_attr_setschedparam( pthread_attr_t *attr, const sched_param *param )
{
    askedPriority = param->sched_priority;
    return real< decltype( &pthread_attr_setschedparam ) >( "pthread_attr_setschedparam" )( attr, param );
}

namespace
{
std::string nameOf( QV_THREAD *thread )
{
    return take( qvThreadName( thread ) );
}

void nothing()
{
}

std::atomic< bool > inside{ false }, left{ false };

void linger()
{
    inside = true;
    usleep( 20000 );
    left = true;
}
} // namespace

TEST( Thread, BodySeesWhatItWasSpawnedWith )
{
    std::string kernelName;
    QV_THREAD  *self = nullptr;

    Ref< QV_OBJ > body = call(
        [&]
        {
            Ref< QV_THREAD > thread( qvThreadThis() );
            self = thread;
            EXPECT_TRUE( qvThreadEncapsulated() );
            EXPECT_EQ( QV_THREAD_PRIORITY_LOW, qvThreadPriority() );
            EXPECT_EQ( nullptr, qvThreadUnlatchArgument() ); // fetched once already
            EXPECT_FALSE( qvThreadEnd( thread ) );
            qvThreadYield();

            char name[17] = {};
            prctl( PR_GET_NAME, name );
            kernelName = name;
        } );
    Ref< QV_THREAD > thread(
        qvThreadTrySpawnWcstr( L"wörker with a name", -1, callArgument, body, QV_THREAD_PRIORITY_LOW ) );
    qvThreadJoin( thread );

    EXPECT_TRUE( qvThreadEnd( thread ) );
    EXPECT_EQ( thread.get(), self );
    EXPECT_EQ( "wörker with a name", nameOf( thread ) );
    EXPECT_EQ( "wörker with a name", textOf( thread.get() ) );
    EXPECT_EQ( "wörker with a ", kernelName ); // 15 bytes
    EXPECT_EQ( 1, references( body.get() ) );
    EXPECT_EQ( 1, references( thread.get() ) );
}

TEST( Thread, WhatTheBodyLeavesIsReleasedBeforeItsEnd )
{
    Ref< QV_OBJ > argument( qv::obj( qvBoxedIntCreate( 1 ) ) );

    // Never fetched.
    Ref< QV_THREAD > thread( qvThreadTrySpawnCstr( "", 0, nothing, argument, QV_THREAD_PRIORITY_IDLE ) );
    qvThreadJoin( thread );
    EXPECT_EQ( 1, references( argument.get() ) );

    // Each thread has its own keys.
    Ref< QV_OBJ > key( qv::obj( text( "key" ).give() ) );
    qvThreadSetKey( key, argument );
    thread = trySpawn(
        [&]
        {
            EXPECT_FALSE( qvThreadHasKey( key ) );
            EXPECT_EQ( nullptr, qvThreadKey( key ) );
            qvThreadDelKey( key );
            qvThreadSetKey( key, argument );
            EXPECT_EQ( argument.get(), Ref< QV_OBJ >( qvThreadKey( key ) ).get() );
        } );
    qvThreadJoin( thread );
    EXPECT_EQ( 2, references( argument.get() ) );
    EXPECT_TRUE( qvThreadHasKey( key ) );
    qvThreadDelKey( key );
    EXPECT_EQ( 1, references( argument.get() ) );
}

TEST( Thread, EndFiresItsTargets )
{
    Ref< QV_BARRIER >    gate( qvBarrierCreate( QV_TRUE ) ), ended( qvBarrierCreate( QV_TRUE ) );
    Ref< QV_BARRIER >    late( qvBarrierCreate( QV_TRUE ) ), unwanted( qvBarrierCreate( QV_TRUE ) );
    Ref< QV_SIGNALABLE > atEnd( qvSignalableCreateBarrier( ended ) ), afterEnd( qvSignalableCreateBarrier( late ) );
    Ref< QV_SIGNALABLE > deleted( qvSignalableCreateBarrier( unwanted ) );

    Ref< QV_THREAD > thread = trySpawn( [&] { qvBarrierPass( gate ); } );
    EXPECT_FALSE( qvThreadEnd( thread ) );
    qvThreadEndAddSignalable( thread, atEnd );
    qvThreadEndAddSignalable( thread, deleted );
    qvThreadEndDelSignalable( thread, deleted );
    EXPECT_TRUE( qvBarrierIsBlocked( ended ) );

    qvBarrierUnblock( gate );
    qvBarrierPass( ended );
    EXPECT_TRUE( qvThreadEnd( thread ) );
    qvThreadEndAddSignalable( thread, afterEnd ); // waits until the firing is over
    EXPECT_FALSE( qvBarrierIsBlocked( late ) );
    EXPECT_TRUE( qvBarrierIsBlocked( unwanted ) );
}

TEST( Thread, ForeignThreadIsEncapsulatedForACall )
{
    std::thread foreign(
        []
        {
            EXPECT_FALSE( qvThreadEncapsulated() );

            int calls = 0;
            qvThreadEncapsulate(
                callArgument, call(
                                  [&]
                                  {
                                      Ref< QV_THREAD > thread( qvThreadThis() );
                                      EXPECT_EQ( "qv___ThreadEncapsulateBegin", nameOf( thread ) );
                                      EXPECT_EQ( QV_THREAD_PRIORITY_NORMAL, qvThreadPriority() );
                                      qvThreadJoin( trySpawn( [&] { calls++; } ) );
                                      calls++;
                                  } ) );

            EXPECT_EQ( 2, calls );
            EXPECT_FALSE( qvThreadEncapsulated() );
        } );
    foreign.join();

    EXPECT_BROKEN( qvThreadEncapsulate( nothing, nullptr ), "!qvThreadEncapsulated()" );
    EXPECT_BROKEN( ( qv___ThreadEncapsulateEnd(), qvThreadThis() ), "thread" );
    EXPECT_BROKEN( ( qv___ThreadEncapsulateEnd(), qvThreadUnlatchArgument() ), "thread" );
    EXPECT_DEATH( ( qv___ThreadEncapsulateEnd(), qvThreadYield() ), "qv_thread_unix" );
}

TEST( Thread, PrioritiesSpanTheRangeOfTheScheduler )
{
    QV_INT prio = 0;

    for( int asked : { 1, 17, 33, 50, 66, 82, 99 } )
    {
        Ref< QV_THREAD > thread( qvThreadTrySpawnCstr( "prio", -1, nothing, nullptr, prio++ ) );
        EXPECT_EQ( asked, askedPriority );
        qvThreadJoin( thread );
    }
}

TEST( Thread, StopWaitsForTenThousandShortLivedThreads )
{
    const int          COUNT = 10000;
    int                ran   = 0; // guarded by the regions, as the thread sanitizer can tell
    std::atomic< int > freed{ 0 };

    withoutLibrary(
        [&]
        {
            qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );
            auto outer = std::make_shared< Ref< QV_REGION > >( qvRegionCreate() ),
                 inner = std::make_shared< Ref< QV_REGION > >( qvRegionCreate() );

            for( int i = 0; i < COUNT; i++ )
            {
                // A spawn that fails leaves nothing behind and counts no thread, else the stop would wait for it.
                noRoom = i % 100 == 0;
                Ref< QV_OBJ >    argument( qv::obj( qv___BoxedPointerCreate(
                    &freed, []( void *counter ) { ( *static_cast< std::atomic< int > * >( counter ) )++; } ) ) );
                Ref< QV_STRING > name = text( "short" );

                if( noRoom )
                {
                    EXPECT_EQ( nullptr, qvThreadTrySpawn( name, nothing, argument, QV_THREAD_PRIORITY_HIGH ) );
                    EXPECT_EQ( 1, references( argument.get() ) );
                    EXPECT_EQ( 1, references( name.get() ) );
                    noRoom = false;
                }

                auto held = std::make_shared< Ref< QV_OBJ > >( std::move( argument ) );
                auto body = [&ran, held, outer, inner]
                {
                    // Threads end with keys of their own, after nested regions.
                    for( QV_BOOL exclusive : { QV_FALSE, QV_TRUE } )
                    {
                        qvRegionEnter( *outer, exclusive );
                        qvRegionEnterExclusive( *inner );
                        ran++;
                        qvRegionLeave( *inner );
                        qvRegionLeave( *outer );
                    }

                    qvThreadSetKey( *held, Ref< QV_OBJ >( qv::obj( qvTimeNow() ) ) );
                };

                while( !trySpawn( body ) )
                    qvThreadYield(); // as many as the system has room for
            }

            outer.reset();
            inner.reset();

            // And for one that is a thread of the library for a call.
            std::thread foreign( [] { qvThreadEncapsulate( linger, nullptr ); } );

            while( !inside )
                std::this_thread::yield();

            qvRuntimeShutdown();
            EXPECT_TRUE( left );
            foreign.join();
        } );

    EXPECT_EQ( 2 * COUNT, ran );
    EXPECT_EQ( COUNT, freed );
}
