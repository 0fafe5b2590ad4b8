#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_generation.h"
#include "qv/base/qv_generation_mutex.h"

#include <algorithm>
#include <vector>

#include <pthread.h>

using qv::Ref;
using namespace qv::test;

namespace
{
Ref< QV_GENERATION > childOf( QV_GENERATION *parent )
{
    return Ref( qvGenerationCreateWithParent( parent ) );
}
} // namespace

TEST( Generation, KnowsItsFamily )
{
    Ref root( qvGenerationCreate() ), other( qvGenerationCreate() );
    Ref first = childOf( root ), second = childOf( root ), deep = childOf( second );

    std::string number = textOf( root.get() );
    EXPECT_EQ( std::to_string( std::stoi( number ) + 1 ), textOf( other.get() ) );
    EXPECT_EQ( number + ":0", textOf( first.get() ) );
    EXPECT_EQ( number + ":1:0", textOf( deep.get() ) );

    // In the order of age. Beside each one its ancestors, the parent first.
    const struct
    {
        QV_GENERATION                 *generation;
        std::vector< QV_GENERATION * > ancestors;
    } ALL[] = { { root, {} }, { first, { root } }, { second, { root } }, { deep, { second, root } }, { other, {} } };

    for( const auto &a : ALL )
    {
        EXPECT_EQ( !a.ancestors.empty(), qvGenerationHasParent( a.generation ) );

        for( const auto &b : ALL )
        {
            bool isParent   = !b.ancestors.empty() && b.ancestors[0] == a.generation;
            bool isAncestor = std::ranges::count( b.ancestors, a.generation );
            EXPECT_EQ( isParent, Ref( qvGenerationParent( b.generation ) ).get() == a.generation );
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
    EXPECT_EQ( number + ":1:1", textOf( childOf( Ref( qvGenerationParent( deep ) ) ).get() ) );
}

TEST( Generation, ALongLineEndsOnAShortStack )
{
    QV_GENERATION *last = qvGenerationCreate();

    for( int i = 0; i < 3000; i++ )
        last = qvGenerationCreateWithParent( Ref( last ) );

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
    Ref  mutex( qvGenerationMutexCreate() );
    Ref  root( qvGenerationCreate() ), child = childOf( root ), deep = childOf( child ), sister = childOf( root );
    auto enter = [&]( QV_GENERATION *generation ) { return qvGenerationMutexTryRegister( mutex, generation ); };

    EXPECT_TRUE( enter( child ) );
    EXPECT_FALSE( enter( child ) || enter( deep ) );
    EXPECT_TRUE( enter( sister ) && enter( root ) );
    qvGenerationMutexUnregister( mutex, child );
    EXPECT_FALSE( enter( deep ) );
    qvGenerationMutexUnregister( mutex, root );
    EXPECT_TRUE( enter( deep ) );
}

TEST( Generation, ThreadsNeverShareANumber )
{
    const size_t               COUNT = 500;
    Ref                        parent( qvGenerationCreate() );
    Ref                        mutex( qvGenerationMutexCreate() );
    std::vector< std::string > texts( 8 * COUNT );

    onThreads(
        4,
        [&]( size_t thread )
        {
            for( auto text = texts.begin() + 2 * thread * COUNT; text < texts.begin() + 2 * ( thread + 1 ) * COUNT; )
            {
                *text++ = textOf( Ref( qvGenerationCreate() ).get() );
                *text++ = textOf( childOf( parent ).get() );

                if( qvGenerationMutexTryRegister( mutex, parent ) )
                    qvGenerationMutexUnregister( mutex, parent );
            }
        } );

    std::ranges::sort( texts );
    EXPECT_EQ( texts.end(), std::ranges::adjacent_find( texts ) );
}
