#include "qv_test_support.h"

#include "qv/sys/qv_lock_private.h"

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
