#include "qv/sys/qv_lock_word_private.h"

#include <linux/futex.h>
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace
{
// What is locked for a moment is free again before a thread could fall asleep. So long a thread looks: a microsecond or
// two.
const int LOOKS = 100;

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

bool acquireSoon( qv::LockWord *lock )
{
    for( int i = 0; i < LOOKS; i++ )
    {
        if( __atomic_load_n( &lock->held, __ATOMIC_RELAXED ) == 0 && qv::tryAcquire( lock ) )
            return true;

#if defined( __x86_64__ ) || defined( __i386__ )
        __builtin_ia32_pause();
#endif
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
