#include "qv/qv.hpp"

#include "qv_test_support.h"

#include <atomic>
#include <chrono>
#include <thread>

using namespace qv::literals;

TEST( Threads, LocksAreScopes )
{
    qv::Monitor monitor;
    qv::Region  region;
    QV_INT      done = 0, seen = 0;
    {
        qv::Thread first(
            "first",
            [&]
            {
                for( int i = 0; i < 1000; i++ )
                {
                    qv::Monitor::Lock lock( monitor );
                    done++;
                }
            } );
        qv::Thread second(
            "second",
            [&, own = "captured"_qs]
            {
                for( int i = 0; i < 1000; i++ )
                {
                    qv::Monitor::Lock lock( monitor );
                    done += own.size() / 8;
                }
            } );
        qv::Region::ExclusiveLock lock( region );
        EXPECT_TRUE( first.started() && second.started() );
    }
    EXPECT_EQ( 2000, done ); // both have ended
    {
        qv::Region::SharedLock lock( region );
        seen++;
    }
    qv::Region::ExclusiveLock lock( region );
    EXPECT_BROKEN( qvMonitorLeave( monitor.c() ), "monitor->entered" );
}

TEST( Threads, TargetsCallTheirFunctionsWhileTheyLive )
{
    auto signal = qv::Held< QV_SIGNAL >::own( qvSignalCreate() ),
         later  = qv::Held< QV_SIGNAL >::own( qvSignalCreate() );
    auto alert  = qv::Held< QV_ALERT >::own( qvAlertCreate() );
    int  calls  = 0;
    {
        qv::Signalable target( [&] { calls += 1; } );
        qv::Alertable  other( [&] { calls += 10; } );
        qvSignalAddSignalable( signal.c(), target.c() );
        qvSignalAddSignalable( later.c(), target.c() );
        qvAlertAddAlertable( alert.c(), other.c() );
        qvSignalAssert( signal.c() );
        qvAlertSet( alert.c() );
        EXPECT_EQ( 11, calls );
        qvAlertUnset( alert.c() );
    }
    qvSignalAssert( later.c() );
    qvAlertSet( alert.c() );
    EXPECT_EQ( 11, calls );
}

TEST( Threads, ATimerEndsAfterItsRunningCall )
{
    // The end of the timer waits for the call that is running, however often that meets.
    for( int round = 0; round < 20; round++ )
    {
        std::atomic< int > begun = 0, ended = 0;
        {
            qv::Timer timer(
                [&]
                {
                    begun++;
                    std::this_thread::sleep_for( std::chrono::milliseconds( 2 ) );
                    ended++;
                } );
            timer.schedule( 0 );

            while( round % 2 && !begun )
                std::this_thread::yield();
        }
        ASSERT_EQ( begun, ended );
        std::this_thread::sleep_for( std::chrono::milliseconds( round % 2 ? 0 : 3 ) );
        ASSERT_EQ( begun, ended );
        ASSERT_GE( begun, round % 2 );
    }

    qv::Timer never( [] { ADD_FAILURE(); } );
    never.schedule( 1000000 );
    EXPECT_TRUE( never.scheduled() );
    never.unschedule();
    EXPECT_FALSE( never.scheduled() );
}

TEST( Threads, TimesAreValues )
{
    std::optional< qv::Time > time = qv::Time::fromText( "2024-feb-29 12:30" );
    EXPECT_EQ(
        "2024-02-29 13:29:59", qv::format(
                                   "%i-%02i-%02i %i:%i:%i", time->year(), time->month(), time->day(), time->hour() + 1,
                                   time->minute() - 1, 59 ) );
    qv::Time later = time->shifted( { .years = 1, .days = 1, .seconds = -1 } );
    EXPECT_EQ( qv::Time::fromText( "2025-03-02 12:29:59" ), later );
    EXPECT_EQ( time->secondsTo( *time ), 0 );
    EXPECT_TRUE( *time < later && qv::Time() < *time && qv::Time::now() > later );
    EXPECT_FALSE( qv::Time::fromText( "2023-feb-29" ) );
}
