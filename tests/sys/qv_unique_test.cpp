#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/runtime/qv_component_private.h"
#include "qv/sys/qv_unique_private.h"

#include <algorithm>
#include <random>
#include <set>
#include <thread>
#include <vector>

using namespace qv::test;

namespace
{
// Runs with a list of its own, which the library's objects do not draw from.
template< class Body >
std::string withFreshList( Body body )
{
    return inChild(
               [&]
               {
                   qv___UniqueShutdown();
                   qv___UniqueStartup();
                   body();
                   fputs( "done", stderr );
               } )
        .errors;
}
} // namespace

TEST( Unique, NumbersCountUpAndComeBackLastFirst )
{
    EXPECT_EQ(
        "done", withFreshList(
                    []
                    {
                        // Beyond 4096 the list grows.
                        for( QV_INT expected = 0; expected < 10000; expected++ )
                            if( qv___UniqueGet() != expected )
                                fprintf( stderr, "not %lld ", static_cast< long long >( expected ) );

                        for( QV_INT given : { 17, 5000, 3 } )
                            qv___UniquePut( given );

                        for( QV_INT expected : { 3, 5000, 17, 10000 } )
                            if( qv___UniqueGet() != expected )
                                fprintf( stderr, "not %lld ", static_cast< long long >( expected ) );
                    } ) );
}

TEST( Unique, WhatIsDrawnIsNeverDrawnAgain )
{
    std::mt19937          random( 2 );
    std::vector< QV_INT > drawn;
    std::set< QV_INT >    held;

    for( int step = 0; step < 50000; step++ )
        if( drawn.empty() || random() % 5 < 3 )
        {
            drawn.push_back( qv___UniqueGet() );
            ASSERT_TRUE( held.insert( drawn.back() ).second );
        }
        else
        {
            std::swap( drawn[random() % drawn.size()], drawn.back() );
            held.erase( drawn.back() );
            qv___UniquePut( drawn.back() );
            drawn.pop_back();
        }

    for( QV_INT uni : drawn )
        qv___UniquePut( uni );
}

TEST( Unique, ThreadsNeverShareANumber )
{
    const size_t                         THREADS = 4, NUMBERS = 20000;
    std::vector< std::vector< QV_INT > > drawn( THREADS );
    std::vector< std::thread >           threads;

    for( size_t t = 0; t < THREADS; t++ )
        threads.emplace_back(
            [&mine = drawn[t]]
            {
                for( size_t i = 0; i < NUMBERS; i++ )
                {
                    mine.push_back( qv___UniqueGet() );

                    if( i % 3 == 2 )
                    {
                        qv___UniquePut( mine.back() );
                        mine.pop_back();
                    }
                }
            } );

    for( std::thread &thread : threads )
        thread.join();

    std::set< QV_INT > all;
    size_t             count = 0;

    for( const std::vector< QV_INT > &mine : drawn )
        for( QV_INT uni : mine )
        {
            count++;
            all.insert( uni );
            qv___UniquePut( uni );
        }

    EXPECT_EQ( count, all.size() );
}

TEST( Unique, OnlyDrawnNumbersComeBack )
{
    QV_INT uni = qv___UniqueGet();
    qv___UniquePut( uni );

    EXPECT_DEATH(
        {
            qv___UniqueGet();
            qv___UniqueGet();
            qv___UniquePut( uni );
            qv___UniquePut( uni );
        },
        testing::HasSubstr( "    Expression: uniList[uni] == IN_USE\n" ) );
    EXPECT_DEATH( { qv___UniqueGet(); qv___UniquePut( -1 ); }, testing::HasSubstr( "    Expression: uni >= 0\n" ) );
    EXPECT_DEATH(
        { qv___UniqueGet(); qv___UniquePut( 1 << 30 ); }, testing::HasSubstr( "    Expression: uni < uniListSize\n" ) );
}
