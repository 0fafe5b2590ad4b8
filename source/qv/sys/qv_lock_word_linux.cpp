#include "qv/sys/qv_lock_word_private.h"

#include <algorithm>
#include <linux/futex.h>
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace
{
// What is locked for a moment is free again before a thread could fall asleep. So long a thread pauses and looks: a
// microsecond or two. Each look takes the line of the cache away from the thread that holds the lock and has to write to
// it, so pauses become longer, up to 16 at a time.
const int PAUSES         = 100;
const int LONGEST_PAUSES = 16;

// Where the kernel does not run fences for others, a thread that waits looks again after that.
const timespec LOOK_AGAIN = { 0, 1000000 };

// Runs a fence on all processors that run a thread of the process. False if the kernel does not.
bool fenceEverywhere()
{
    if( syscall( SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0 ) == 0 )
        return true;

    return syscall( SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0 ) == 0
           && syscall( SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0 ) == 0;
}

void pauseTimes( int times )
{
    for( int i = 0; i < times; i++ )
#if defined( __x86_64__ ) || defined( __i386__ )
        __builtin_ia32_pause();
#else
        __atomic_signal_fence( __ATOMIC_SEQ_CST ); // keeps the loop
#endif
}

bool acquireSoon( qv::LockWord *lock )
{
    int now = 1;

    for( int left = PAUSES; left > 0; left -= now, now = std::min( 2 * now, LONGEST_PAUSES ) )
    {
        pauseTimes( now );

        if( __atomic_load_n( &lock->held, __ATOMIC_RELAXED ) == 0 && qv::tryAcquire( lock ) )
            return true;
    }

    return false;
}
} // namespace

qv::WaitingThreads qv::waitingThreads[WAITING] = {};

void qv::acquire( LockWord *lock )
{
    if( acquireSoon( lock ) )
        return;

    __atomic_add_fetch( waitingFor( lock ), 1, __ATOMIC_SEQ_CST );
    const timespec *limit = fenceEverywhere() ? nullptr : &LOOK_AGAIN;

    while( !tryAcquire( lock ) )
        syscall( SYS_futex, &lock->held, FUTEX_WAIT_PRIVATE, 1, limit, nullptr, 0 );

    __atomic_add_fetch( waitingFor( lock ), -1, __ATOMIC_SEQ_CST );
}

void qv::wake( LockWord *lock )
{
    syscall( SYS_futex, &lock->held, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0 );
}
