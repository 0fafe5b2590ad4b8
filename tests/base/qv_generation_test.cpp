#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_generation.h"
#include "qv/base/qv_generation_mutex.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include <pthread.h>

using qv::Ref;
using namespace qv::test;

using Generation = Ref< QV_GENERATION >;

namespace
{
Generation childOf( QV_GENERATION *parent )
{
    return Generation( qvGenerationCreateWithParent( parent ) );
}
} // namespace

TEST( Generation, KnowsItsFamily )
{
    Generation root( qvGenerationCreate() );
    Generation other( qvGenerationCreate() );
    Generation first  = childOf( root );
    Generation second = childOf( root );
    Generation deep   = childOf( second );

    std::string number = textOf( root.get() );
    EXPECT_EQ( std::to_string( std::stoi( number ) + 1 ), textOf( other.get() ) );
    EXPECT_EQ( number + ":0", textOf( first.get() ) );
    EXPECT_EQ( number + ":1", textOf( second.get() ) );
    EXPECT_EQ( number + ":1:0", textOf( deep.get() ) );

    // In the order of age; beside each one its ancestors, the parent first.
    struct
    {
        QV_GENERATION                 *generation;
        std::vector< QV_GENERATION * > ancestors;
    } const ALL[] = {
        { root, {} }, { first, { root } }, { second, { root } }, { deep, { second, root } }, { other, {} } };

    for( const auto &a : ALL )
    {
        Generation parent( qvGenerationParent( a.generation ) );
        EXPECT_EQ( a.ancestors.empty() ? nullptr : a.ancestors[0], parent.get() );
        EXPECT_EQ( !a.ancestors.empty(), qvGenerationHasParent( a.generation ) );

        for( const auto &b : ALL )
        {
            bool isParent   = !b.ancestors.empty() && b.ancestors[0] == a.generation;
            bool isAncestor = std::count( b.ancestors.begin(), b.ancestors.end(), a.generation ) > 0;
            EXPECT_EQ( isParent, qvGenerationIsParent( a.generation, b.generation ) );
            EXPECT_EQ( isParent, qvGenerationIsChild( b.generation, a.generation ) );
            EXPECT_EQ( isAncestor, qvGenerationIsAncestor( a.generation, b.generation ) );
            EXPECT_EQ( isAncestor, qvGenerationIsDescendant( b.generation, a.generation ) );
            EXPECT_EQ( &a < &b, qvGenerationIsOlder( a.generation, b.generation ) );
            EXPECT_EQ( &a > &b, qvGenerationIsYounger( a.generation, b.generation ) );
        }
    }

    // A child keeps its parents alive.
    root.reset();
    second.reset();
    EXPECT_EQ( number + ":1", take( qvGenerationToString( Generation( qvGenerationParent( deep ) ) ) ) );
    EXPECT_EQ( number + ":1:1", textOf( childOf( Generation( qvGenerationParent( deep ) ) ).get() ) );
}

TEST( Generation, ALongLineEndsOnAShortStack )
{
    QV_GENERATION *last = qvGenerationCreate();

    for( int i = 0; i < 3000; i++ )
        last = qvGenerationCreateWithParent( Generation( last ) );

    pthread_t      thread;
    pthread_attr_t attributes;
    pthread_attr_init( &attributes );
    pthread_attr_setstacksize( &attributes, 256 * 1024 );
    auto release = []( void *generation ) -> void *
    {
        qvGenerationRelease( static_cast< QV_GENERATION * >( generation ) );
        return nullptr;
    };
    ASSERT_EQ( 0, pthread_create( &thread, &attributes, release, last ) );
    pthread_join( thread, nullptr );
    pthread_attr_destroy( &attributes );
}

TEST( Generation, MutexKeepsDescendantsOut )
{
    Ref< QV_GENERATION_MUTEX > mutex( qvGenerationMutexCreate() );
    Generation                 root( qvGenerationCreate() );
    Generation                 child  = childOf( root );
    Generation                 deep   = childOf( child );
    Generation                 sister = childOf( root );

    EXPECT_TRUE( qvGenerationMutexTryRegister( mutex, child ) );
    EXPECT_FALSE( qvGenerationMutexTryRegister( mutex, child ) );
    EXPECT_FALSE( qvGenerationMutexTryRegister( mutex, deep ) );
    EXPECT_TRUE( qvGenerationMutexTryRegister( mutex, sister ) );
    EXPECT_TRUE( qvGenerationMutexTryRegister( mutex, root ) );
    qvGenerationMutexUnregister( mutex, child );
    qvGenerationMutexUnregister( mutex, child );
    EXPECT_FALSE( qvGenerationMutexTryRegister( mutex, deep ) );
    qvGenerationMutexUnregister( mutex, root );
    EXPECT_TRUE( qvGenerationMutexTryRegister( mutex, deep ) );
}

TEST( Generation, ThreadsNeverShareANumber )
{
    const size_t THREADS = 4, COUNT = 500;

    Generation                 parent( qvGenerationCreate() );
    Ref< QV_GENERATION_MUTEX > mutex( qvGenerationMutexCreate() );
    std::vector< std::string > texts( 2 * THREADS * COUNT );
    std::atomic< int >         inside = 0, most = 0, entered = 0;
    onThreads(
        THREADS,
        [&]( size_t t )
        {
            for( size_t i = t * COUNT; i < ( t + 1 ) * COUNT; i++ )
            {
                texts[2 * i]     = textOf( Generation( qvGenerationCreate() ).get() );
                texts[2 * i + 1] = textOf( childOf( parent ).get() );

                // One at a time is in with the parent.
                if( qvGenerationMutexTryRegister( mutex, parent ) )
                {
                    int now = ++inside;
                    entered++;
                    most = std::max( most.load(), now );
                    --inside;
                    qvGenerationMutexUnregister( mutex, parent );
                }
            }
        } );

    std::sort( texts.begin(), texts.end() );
    EXPECT_EQ( texts.end(), std::adjacent_find( texts.begin(), texts.end() ) );
    EXPECT_EQ( textOf( parent.get() ) + ":" + std::to_string( THREADS * COUNT ), textOf( childOf( parent ).get() ) );
    EXPECT_EQ( 1, most );
    EXPECT_GT( entered, 0 );
}
