#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_monitor.h"
#include "qv/base/qv_nanoseconds.h"
#include "qv/base/qv_region.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <sys/syscall.h>

using qv::Ref;
using namespace qv::test;

namespace
{
bool fencesAreRefused = false; // the kernel runs no fences for other threads, as old and locked ones don't
}

extern "C" long syscall( long number, ... ) noexcept
{
    if( number == SYS_membarrier && fencesAreRefused )
        return errno = ENOSYS, -1;

    va_list list;
    va_start( list, number );
    long values[6];

    for( long &value : values )
        value = va_arg( list, long );

    va_end( list );

    auto real = reinterpret_cast< long ( * )( long, ... ) >( dlsym( RTLD_NEXT, "syscall" ) );
    return real( number, values[0], values[1], values[2], values[3], values[4], values[5] );
}

// Now and then a thread holds the monitor for so long that the others fall asleep.
TEST( Monitor, OneThreadAtATime )
{
    for( bool refused : { false, true } )
    {
        Ref< QV_MONITOR > monitor( qvMonitorCreate() );
        int               inside = 0, sum = 0;
        fencesAreRefused = refused;

        onThreads(
            4,
            [&]( int )
            {
                for( int round = 0; round < 5000; round++ )
                {
                    qvMonitorEnter( monitor );
                    EXPECT_EQ( 1, ++inside );
                    sum++;

                    if( round % 100 == 0 )
                        std::this_thread::sleep_for( std::chrono::microseconds( 100 ) );

                    --inside;
                    qvMonitorLeave( monitor );
                }
            } );

        EXPECT_EQ( 20000, sum );
    }

    fencesAreRefused = false;
}

TEST( Barrier, OpensForEverybodyUntilItIsClosed )
{
    Ref< QV_BARRIER > barrier( qvBarrierCreate( QV_TRUE ) );
    EXPECT_TRUE( qvBarrierIsBlocked( barrier ) );
    EXPECT_FALSE( qvBarrierPassTimed( barrier, 0 ) );

    std::atomic< int >         passed{ 0 };
    std::vector< std::thread > threads;

    for( int i = 0; i < 8; i++ )
        threads.emplace_back(
            [&, i]
            {
                if( i % 2 )
                    qvBarrierPass( barrier );
                else
                    EXPECT_TRUE( qvBarrierPassTimed( barrier, i % 4 ? -1 : 600000 ) );

                passed++;
            } );

    EXPECT_EQ( 0, passed );
    qvBarrierUnblock( barrier );

    for( std::thread &thread : threads )
        thread.join();

    EXPECT_EQ( 8, passed );
    EXPECT_TRUE( qvBarrierPassTimed( barrier, 0 ) );
    qvBarrierBlock( barrier );
    EXPECT_FALSE( qvBarrierPassTimed( barrier, 1 ) );
}

TEST( Region, ReadersShareAndWritersAreAlone )
{
    Ref< QV_REGION >   region( qvRegionCreate() );
    std::atomic< int > readers{ 0 }, writers{ 0 };
    int                value = 0; // guarded by the region, as the thread sanitizer can tell

    onThreads(
        6,
        [&]( int i )
        {
            QV_BOOL exclusive = i % 3 == 0;

            for( int round = 0; round < 500; round++ )
            {
                qvRegionEnter( region, exclusive );

                if( exclusive )
                {
                    EXPECT_EQ( 1, ++writers );
                    EXPECT_EQ( 0, readers );
                    value++;
                    --writers;
                }
                else
                {
                    readers++;
                    EXPECT_EQ( 0, writers );
                    EXPECT_LE( value, 1000 );
                    readers--;
                }

                qvRegionLeave( region );
            }
        } );

    EXPECT_EQ( 1000, value );
}

TEST( Region, ASharedUserWhoComesAfterAnExclusiveClaimWaits )
{
    Ref< QV_REGION >    region( qvRegionCreate() );
    std::atomic< bool > written{ false };
    qvRegionEnterShared( region );

    std::thread writer(
        [&]
        {
            qvRegionEnterExclusive( region );
            written = true;
            qvRegionLeave( region );
        } );

    EXPECT_FALSE( written );
    qvRegionLeave( region );
    writer.join();
    qvRegionEnterShared( region );
    EXPECT_TRUE( written );
    qvRegionLeave( region );
}

TEST( Nanoseconds, ConvertBothWays )
{
    EXPECT_EQ( 9223372036854000000, qvNanosecondsTryConvertFromMilliseconds( 9223372036854 ) );
    EXPECT_EQ( -1, qvNanosecondsTryConvertFromMilliseconds( 9223372036855 ) );
    EXPECT_EQ( QV_INT_MAX, qvNanosecondsConvertFromMillisecondsSaturating( 9223372036855 ) );
    EXPECT_EQ( 1, qvNanosecondsConvertToMillisecondsTruncate( 1999999 ) );
    EXPECT_EQ( 0, qvNanosecondsConvertToMillisecondsExtend( 0 ) );
    EXPECT_EQ( 1, qvNanosecondsConvertToMillisecondsExtend( 1000000 ) );
    EXPECT_EQ( 2, qvNanosecondsConvertToMillisecondsExtend( 1000001 ) );
    EXPECT_EQ( 9223372036855, qvNanosecondsConvertToMillisecondsExtend( QV_INT_MAX ) );
}
