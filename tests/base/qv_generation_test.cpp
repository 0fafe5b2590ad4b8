#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_generation.h"
#include "qv/base/qv_generation_mutex.h"

#include <algorithm>
#include <vector>

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

    // In the order of age. After each one its ancestors, the parent first.
    const std::vector< QV_GENERATION * > ALL[] = {
        { root }, { first, root }, { second, root }, { deep, second, root }, { other } };

    for( const auto &of : ALL )
        for( const auto &beside : ALL )
        {
            QV_GENERATION *a = of[0], *b = beside[0];
            bool           isParent   = beside.size() > 1 && beside[1] == a;
            bool           isAncestor = a != b && std::ranges::count( beside, a );
            EXPECT_EQ( beside.size() > 1, qvGenerationHasParent( b ) );
            EXPECT_EQ( isParent, Ref( qvGenerationParent( b ) ).get() == a );
            EXPECT_EQ( isParent, qvGenerationIsParent( a, b ) );
            EXPECT_EQ( isParent, qvGenerationIsChild( b, a ) );
            EXPECT_EQ( isAncestor, qvGenerationIsAncestor( a, b ) );
            EXPECT_EQ( isAncestor, qvGenerationIsDescendant( b, a ) );
            EXPECT_EQ( &of < &beside, qvGenerationIsOlder( a, b ) );
            EXPECT_EQ( &of > &beside, qvGenerationIsYounger( a, b ) );
        }

    // A child keeps its parents alive.
    root.reset();
    second.reset();
    EXPECT_EQ( number + ":1:1", textOf( childOf( Ref( qvGenerationParent( deep ) ) ).get() ) );
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
    Ref first( qvGenerationCreate() );
    Ref mutex( qvGenerationMutexCreate() );

    onThreads(
        4,
        [&]( int )
        {
            for( int i = 0; i < 500; i++ )
            {
                Ref root( qvGenerationCreate() ), child = childOf( first );

                if( qvGenerationMutexTryRegister( mutex, first ) )
                    qvGenerationMutexUnregister( mutex, first );
            }
        } );

    std::string number = textOf( first.get() );
    EXPECT_EQ( std::to_string( std::stoi( number ) + 2001 ), textOf( Ref( qvGenerationCreate() ).get() ) );
    EXPECT_EQ( number + ":2000", textOf( childOf( first ).get() ) );
}
