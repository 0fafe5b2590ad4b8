#include "qv_test_support.h"

#include "qv/sys/qv_lock_private.h"

#include <thread>
#include <vector>

TEST( Lock, OneThreadAtATime )
{
    QV___LOCK                 *lock  = qv___LockCreate();
    long                       count = 0;
    std::vector< std::thread > threads;

    for( int t = 0; t < 4; t++ )
        threads.emplace_back(
            [&]
            {
                for( int i = 0; i < 20000; i++ )
                {
                    qv::HeldLock held( lock );
                    count++;
                }
            } );

    for( std::thread &thread : threads )
        thread.join();

    EXPECT_EQ( 80000, count );
    qv___LockDestroy( lock );
}

TEST( Lock, MisuseIsReported )
{
    EXPECT_BROKEN( qv___LockAcquire( nullptr ), "lock" );
    EXPECT_BROKEN( qv___LockDestroy( nullptr ), "lock" );

#ifndef __SANITIZE_THREAD__ // which ends the process itself
    EXPECT_DEATH(
        {
            QV___LOCK *lock = qv___LockCreate();
            qv___LockAcquire( lock );
            qv___LockDestroy( lock );
        },
        testing::HasSubstr( "    Message   : mutex destruction failed\n" ) );
#endif
}
