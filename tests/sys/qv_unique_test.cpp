#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/runtime/qv_component_private.h"
#include "qv/sys/qv_atomic.h"
#include "qv/sys/qv_unique_private.h"

#include <thread>
#include <vector>

using namespace qv::test;

TEST( Unique, NumbersCountUpAndComeBackLastFirst )
{
    // With a list of its own, which the library's objects do not draw from. Beyond 4096 it grows.
    Ending ending = inChild(
        []
        {
            qv___UniqueShutdown();
            qv___UniqueStartup();

            for( QV_INT expected = 0; expected < 10000; expected++ )
                EXPECT_EQ( expected, qv___UniqueGet() );

            for( QV_INT given : { 17, 5000, 3 } )
                qv___UniquePut( given );

            for( QV_INT expected : { 3, 5000, 17, 10000 } )
                EXPECT_EQ( expected, qv___UniqueGet() );

            fputs( testing::Test::HasFailure() ? "failed" : "done", stderr );
        } );
    EXPECT_EQ( "done", ending.errors );
}

TEST( Unique, ThreadsNeverShareANumber )
{
    const int                  THREADS = 4, NUMBERS = 20000;
    std::vector< int32_t >     users( ( THREADS + 1 ) * NUMBERS );
    std::vector< std::thread > threads;

    for( int t = 0; t < THREADS; t++ )
        threads.emplace_back(
            [&]
            {
                std::vector< QV_INT > drawn;

                for( int i = 0; i < NUMBERS; i++ )
                {
                    drawn.push_back( qv___UniqueGet() );
                    EXPECT_EQ( 1, qv___AtomicAdd32( &users[static_cast< size_t >( drawn.back() )], 1 ) );

                    // Some come back at once, and the others in the end.
                    for( ; !drawn.empty() && ( drawn.size() % 3 == 0 || i == NUMBERS - 1 ); drawn.pop_back() )
                    {
                        qv___AtomicAdd32( &users[static_cast< size_t >( drawn.back() )], -1 );
                        qv___UniquePut( drawn.back() );
                    }
                }
            } );

    for( std::thread &thread : threads )
        thread.join();
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
