#include "qv_test_child.h"

#include "qv/qv.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/sys/qv_assert_private.h"

#include <atomic>
#include <semaphore>
#include <thread>
#include <utility>
#include <vector>

#include <csignal>

#include <malloc.h>
#include <pthread.h>

using namespace qv::test;

/* Two families of a module of the test --------------------------------------------------------------------------- */

extern "C" QV_MODULE counted___module;
QV_MODULE            counted___module = {
    QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ), &qv___module_record, NULL, NULL, NULL, NULL, NULL, 0, NULL, NULL };

#undef QV_THIS_MODULE
#define QV_THIS_MODULE counted___module

typedef struct QV_ONE QV_ONE;
typedef struct QV_TWO QV_TWO;

QV_FAMILY( One, QV_ONE )
QV_FAMILY( Two, QV_TWO )

QV___FAMILY( One, QV_ONE, nullptr, nullptr, nullptr )
QV___FAMILY( Two, QV_TWO, nullptr, nullptr, nullptr )

namespace
{
QV_OBJ *create( QV_SORT *sort )
{
    return qv___ObjCreate( sizeof( QV_OBJ ), sort );
}

void inRun( QV_INT flags, const std::function< void() > &body )
{
    withoutLibrary(
        [&]
        {
            qvRuntimeStartup( flags, nullptr, nullptr, nullptr, nullptr );
            body();
            qvRuntimeShutdown();
        } );
}

void expectNone()
{
    EXPECT_EQ( 0, qvSortObjects( qvOneSort() ) );
    EXPECT_EQ( 0, qvSortObjects( qvTwoSort() ) );
    EXPECT_EQ( 0, qv___ModuleObjects( &counted___module ) );
}
} // namespace

// One object or two live at any time, of two sorts in turn. One thread creates them, and it or another one ends each when
// the next has come. Listed objects are counted elsewhere than others.
TEST( ObjCount, IsNeverBelowWhatLives )
{
    for( QV_INT flags : { 0, QV_RUNTIME_FLAG_OBJECT_DATABASE } )
        for( bool handsOver : { false, true } )
            inRun(
                flags,
                [handsOver]
                {
                    std::atomic< QV_OBJ * > handed = nullptr;
                    std::atomic< bool >     over   = false;
                    std::atomic< int >      made   = 0;
                    QV_OBJ                 *last   = create( qvOneSort() );
                    QV_INT                  least = 1, most = 1;

                    auto end = [&]
                    {
                        if( QV_OBJ *next = handed.exchange( nullptr ) )
                            qvObjRelease( std::exchange( last, next ) );
                    };

                    std::thread creates(
                        [&]
                        {
                            while( !over )
                            {
                                handed = create( made++ % 4 < 2 ? qvTwoSort() : qvOneSort() );

                                while( handed && !over )
                                    handsOver ? void( sched_yield() ) : end();
                            }
                        } );

                    std::thread ends(
                        [&]
                        {
                            for( ; handsOver && !over; sched_yield() )
                                end();
                        } );

                    for( int i = 0; i < 300000 || made < 300; i++ )
                    {
                        QV_INT live = qv___ModuleObjects( &counted___module );
                        least       = std::min( least, live );
                        most        = std::max( most, live );
                    }

                    over = true;
                    creates.join();
                    ends.join();
                    end();
                    qvObjRelease( last );
                    EXPECT_EQ( 1, least );
                    EXPECT_LT( most, INT32_MAX );
                    expectNone();
                } );
}

// Threads leave objects to others, end those of others, and create and end some while they end themselves.
TEST( ObjCount, IsExactWhateverThreadsLeave )
{
    inRun(
        0,
        []
        {
            size_t        memory = 0;
            pthread_key_t key; // destroyed after the library has noticed the end of the thread
            ASSERT_EQ(
                0, pthread_key_create(
                       &key,
                       []( void *object )
                       {
                           qvObjRelease( create( qvTwoSort() ) );
                           qvObjRelease( static_cast< QV_OBJ * >( object ) );
                       } ) );

            for( int i = 0; i < 2000; i++ )
            {
                QV_OBJ *ours = create( qvOneSort() ), *theirs = nullptr;

                std::thread(
                    [&]
                    {
                        theirs = create( qvTwoSort() );
                        pthread_setspecific( key, create( qvOneSort() ) );
                        qvObjRelease( ours );
                    } )
                    .join();

                ASSERT_EQ( 0, qvSortObjects( qvOneSort() ) );
                ASSERT_EQ( 1, qv___ModuleObjects( &counted___module ) );
                qvObjRelease( theirs );

                if( i == 0 )
                    memory = mallinfo2().uordblks;
            }

            // A thread takes the numbers over that another one has left.
            EXPECT_LT( mallinfo2().uordblks, memory + 100000 );
            pthread_key_delete( key );
            expectNone();
        } );
}

#if !QV___ASAN
// Memory of an object that has ended is used again by the same thread. Until then it is all ones, for what still uses it.
TEST( ObjCount, AThreadKeepsTheMemoryOfWhatEnds )
{
    auto misuse = []
    {
        QV_OBJ *object = create( qvOneSort() );
        qvObjRelease( object );
        object->retainCount = 2;
        create( qvOneSort() );
    };

    inRun(
        0,
        [misuse]
        {
            QV_OBJ *object = create( qvOneSort() );
            qvObjRelease( object );
            EXPECT_EQ( UINTPTR_MAX, reinterpret_cast< uintptr_t >( object->sort ) );
            EXPECT_EQ( object, create( qvOneSort() ) );
            qvObjRelease( object );

            if( QV___ASSERTIONS )
            {
                EXPECT_EQ( SIGABRT, inChild( misuse ).signal );
            }
        } );

    // Not where new memory has to be as the run fills it.
    inRun(
        QV_RUNTIME_FLAG_MEMORY_DEBUG,
        []
        {
            for( int i = 0; i < 2; i++ )
            {
                QV_OBJ *object = qv___ObjCreate( sizeof( QV_OBJ ) + 1, qvOneSort() );
                char   *after  = reinterpret_cast< char * >( object + 1 );
                EXPECT_EQ( char( 0xFF ), std::exchange( *after, 0 ) );
                qvObjRelease( object );
            }
        } );
}

// Blocks for which a thread has no room serve any thread, up to a limit, and go when the library stops.
TEST( ObjCount, ThreadsShareTheMemoryOfWhatEnds )
{
    bool tells = mallinfo2().uordblks > 0; // not the heap of ThreadSanitizer

    // Bytes that a burst of objects takes for which there are no blocks.
    auto burst = []( QV_INT size )
    {
        std::vector< QV_OBJ * > many( 2000 );
        size_t                  before = mallinfo2().uordblks;

        for( QV_OBJ *&each : many )
            each = qv___ObjCreate( size, qvOneSort() );

        size_t after = mallinfo2().uordblks;

        for( QV_OBJ *each : many )
            qvObjRelease( each );

        return after - before;
    };

    inRun(
        0,
        [burst, tells]
        {
            size_t before = mallinfo2().uordblks;

            // More than the limit in all. The store is of those sizes that it got last: a thread that comes then finds all
            // but what the thread before it has kept.
            for( QV_INT size = sizeof( QV_OBJ ) + 8; size <= 584; size += 8 )
            {
                std::thread( burst, size ).join();
                std::thread( [&] { EXPECT_LT( burst( size ), 60000u ) << size; } ).join();
            }

            EXPECT_TRUE( !tells || mallinfo2().uordblks > before + 15000000 );
            EXPECT_LT( mallinfo2().uordblks, before + 18500000 );

            // Many that give and take at once.
            std::vector< std::thread > threads;

            for( int i = 0; i < 4; i++ )
                threads.emplace_back(
                    [burst, i]
                    {
                        for( int k = 0; k < 10; k++ )
                            burst( 100 + 16 * ( ( i + k ) % 3 ) );
                    } );

            for( std::thread &thread : threads )
                thread.join();

            expectNone();
            qvRuntimeShutdown();
            EXPECT_LT( mallinfo2().uordblks, before + 100000 );
            qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );
        } );

    // Of more objects than the store has room for next to nothing stays when they have ended, in any order, until others are
    // created; in the order of creation, what ends last does not hold the end of the heap. Sizes make room for each other.
    for( size_t step : { 1, 77773 } )
        inRun(
            0,
            [burst, tells, step]
            {
                std::vector< QV_OBJ * > many( 200000 );
                size_t                  used  = mallinfo2().uordblks;
                size_t                  arena = mallinfo2().arena;

                for( size_t i = 0; i < many.size(); i++ )
                    many[i] = qv___ObjCreate( i % 2 ? 200 : 300, qvOneSort() );

                EXPECT_TRUE( !tells || mallinfo2().uordblks > used + 40000000 );

                for( size_t i = 0; i < many.size(); i++ )
                    qvObjRelease( many[i * step % many.size()] );

                EXPECT_LT( mallinfo2().uordblks, used + 100000 ) << step;
                EXPECT_TRUE( step != 1 || mallinfo2().arena < arena + 25000000 );

                burst( 200 );
                EXPECT_LT( burst( 200 ), 60000u );
            } );

    // A thread that has come in a run without kept blocks has room for none in the next run.
    inRun(
        QV_RUNTIME_FLAG_MEMORY_DEBUG,
        [burst]
        {
            std::binary_semaphore came( 0 ), restarted( 0 );
            std::thread           thread(
                [&]
                {
                    qvObjRelease( create( qvOneSort() ) );
                    came.release();
                    restarted.acquire();
                    qvObjRelease( create( qvOneSort() ) );
                } );

            came.acquire();
            qvRuntimeShutdown();
            qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );
            burst( sizeof( QV_OBJ ) );
            restarted.release();
            thread.join();
            expectNone();
        } );
}
#endif

// A thread that has used the library and lives on when it is stopped keeps its table, and yet creates nothing.
TEST( ObjCount, AThreadThatOutlivesTheRunCreatesNothing )
{
    auto body = []
    {
        std::binary_semaphore used( 0 ), stopped( 0 );
        std::thread           thread(
            [&]
            {
                qvObjRelease( create( qvOneSort() ) );
                used.release();
                stopped.acquire();
                create( qvOneSort() );
            } );

        used.acquire();
        qvRuntimeShutdown();
        stopped.release();
        thread.join();
    };

    inRun(
        0,
        [body]
        {
            EXPECT_THAT(
                inChild( body ).errors, testing::HasSubstr( "the library does not run: qvRuntimeShutdown() has" ) );
        } );
}

// More sorts than a thread has places for, whose objects outlive two runs and the thread that created them.
TEST( ObjCount, HasRoomForAllSorts )
{
    static QV_SORT sorts[1200];
    static QV_OBJ *objects[std::size( sorts )];

    auto renew = []
    {
        for( size_t i = 0; i < std::size( sorts ); i++ )
        {
            if( objects[i] )
                qvObjRelease( objects[i] );
            else
                sorts[i] =
                    QV___STATIC_SORT( &counted___module, "QV_MANY", nullptr, nullptr, nullptr, nullptr, nullptr );

            objects[i] = create( &sorts[i] );
        }
    };

    auto body = [renew]
    {
        qvRuntimeShutdown();

        for( QV_INT flags : { 0, QV_RUNTIME_FLAG_OBJECT_DATABASE } )
        {
            qvRuntimeStartup( flags, nullptr, nullptr, nullptr, nullptr );
            std::thread( renew ).join();
            qvRuntimeShutdown();

            if( qv___ModuleObjects( &counted___module ) != std::ssize( sorts ) )
                _exit( 1 );
        }

        for( size_t i = 0; i < std::size( sorts ); i++ )
        {
            if( qvSortObjects( &sorts[i] ) != 1 )
                _exit( 2 );

            qvObjRelease( objects[i] );
        }

        if( qv___ModuleObjects( &counted___module ) != 0 )
            _exit( 3 );
    };

    Ending ending = inChild( body );
    EXPECT_EQ( 0, ending.status ) << ending.errors;
}
