// Condition sets and counters.

#include "qv_test_call.h"
#include "qv_test_clock.h"
#include "qv_test_support.h"

#include "qv/base/qv_condset.h"
#include "qv/base/qv_counter.h"
#include "qv/base/qv_timestamp.h"

#include <atomic>
#include <barrier>
#include <thread>
#include <vector>

using qv::Ref;
using namespace qv::test;

TEST( Condset, MasksAreCutToTheirLow16Bits )
{
    Ref condset( qvCondsetCreate() );
    EXPECT_EQ( 0, qvCondsetConditions( condset ) );

    qvCondsetSetConditions( condset, -1 );
    EXPECT_EQ( 0xffff, qvCondsetConditions( condset ) );
    qvCondsetDelConditions( condset, ~QV_INT( 7 ) );
    qvCondsetAddConditions( condset, 0x10000 );
    qvCondsetModifyConditions( condset, 0x70000, QV_TRUE );
    EXPECT_EQ( 7, qvCondsetConditions( condset ) );
    qvCondsetModifyConditions( condset, 0x10002, QV_FALSE );
    qvCondsetAddConditions( condset, 0x28 );
    EXPECT_EQ( 0x2d, qvCondsetConditions( condset ) );
    qvCondsetSetConditions( condset, 0x10000 );
    EXPECT_EQ( 0, qvCondsetConditions( condset ) );
}

TEST( Condset, WaitsForAnyOfAMaskOrForAllOfIt )
{
    Ref condset( qvCondsetCreate() );
    qvCondsetSetConditions( condset, 7 );

    EXPECT_EQ( 6, qvCondsetWaitAny( condset, 0x1000e ) );
    EXPECT_EQ( 7, qvCondsetWaitAll( condset, 0x10007 ) );
    EXPECT_EQ( 2, qvCondsetWaitAnyTimed( condset, 2, 0 ) );
    EXPECT_EQ( 7, qvCondsetWaitAllTimed( condset, 7, 0 ) );

    // An empty mask is nothing to wait for.
    EXPECT_EQ( 0, qvCondsetWaitAny( condset, 0x10000 ) );
    EXPECT_EQ( 0, qvCondsetWaitAll( condset, 0 ) );
    EXPECT_EQ( 0, qvCondsetWaitAnyTimed( condset, 0, -1 ) );

    // All of a mask means no more either.
    QV_INT start = qvTimestamp();
    EXPECT_EQ( 0, qvCondsetWaitAllTimed( condset, 3, 5 ) );
    EXPECT_EQ( 0, qvCondsetWaitAnyTimed( condset, 8, 5 ) );
    EXPECT_EQ( 0, qvCondsetWaitAllTimed( condset, 0xf, 0 ) );
    EXPECT_GE( qvTimestamp() - start, 10 );

    // The bits are looked at before the limit, however fast the time runs.
    wallClock.perLook = 1000;
    EXPECT_EQ( 2, qvCondsetWaitAnyTimed( condset, 2, 0 ) );
    EXPECT_EQ( 7, qvCondsetWaitAllTimed( condset, 7, 0 ) );
    wallClock.reset();

    std::thread all( [&] { EXPECT_EQ( 3, qvCondsetWaitAllTimed( condset, 3, -5 ) ); } );
    std::thread any( [&] { EXPECT_EQ( 8, qvCondsetWaitAnyTimed( condset, 0x18, 600000 ) ); } );
    qvCondsetAddConditions( condset, 0x20 );
    qvCondsetSetConditions( condset, 8 );
    any.join();
    qvCondsetSetConditions( condset, 3 );
    all.join();
}

// No change comes later that would wake a waiter who has been forgotten. Short limits run out time and again.
TEST( Condset, ChangesAtOneTimeWakeAllTheirWaiters )
{
    const int PAIRS = 4, ROUNDS = 300;

    Ref          condset( qvCondsetCreate() );
    std::barrier everybody( 2 * PAIRS );

    onThreads(
        2 * PAIRS,
        [&]( int number )
        {
            const QV_INT own     = QV_INT( 1 ) << number / 2;
            const bool   changer = number % 2;

            for( int round = 0; round < ROUNDS; round++ )
            {
                QV_INT found = 0;

                if( changer )
                    qvCondsetAddConditions( condset, own );
                else
                    while( !found )
                        found = qvCondsetWaitAnyTimed( condset, own, round % 2 ? 1 : -1 );

                EXPECT_EQ( changer ? 0 : own, found );
                everybody.arrive_and_wait();

                if( changer )
                    qvCondsetDelConditions( condset, own );

                everybody.arrive_and_wait();
            }
        } );

    EXPECT_EQ( 0, qvCondsetConditions( condset ) );
}

TEST( Counter, LetsWaitersThroughAtZero )
{
    Ref counter( qvCounterCreate() );
    qvCounterWaitZero( counter );
    EXPECT_TRUE( qvCounterWaitZeroTimed( counter, -1 ) );

    qvCounterIncrement( counter );
    qvCounterIncrement( counter );
    qvCounterDecrement( counter );
    EXPECT_EQ( 1, qvCounterValue( counter ) );
    EXPECT_FALSE( qvCounterWaitZeroTimed( counter, 0 ) );
    EXPECT_FALSE( qvCounterWaitZeroTimed( counter, 2 ) );
    qvCounterDecrement( counter );
    EXPECT_TRUE( qvCounterWaitZeroTimed( counter, 0 ) );
}

TEST( Counter, MayEndAsSoonAsItIsZero )
{
    for( int round = 0; round < 300; round++ )
    {
        Ref                        counter( qvCounterCreate() );
        std::vector< std::thread > threads;
        std::atomic< int >         through{ 0 };

        for( int i = 0; i < 3; i++ )
        {
            qvCounterIncrement( counter );
            threads.emplace_back(
                [&through, held = counter.get()]
                {
                    through++;
                    qvCounterDecrement( held );
                } );
        }

        qvCounterWaitZero( counter );
        EXPECT_EQ( 3, through );
        counter.reset();

        for( std::thread &thread : threads )
            thread.join();
    }
}
