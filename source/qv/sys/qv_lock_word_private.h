/** @file
    A lock in two words, for what is locked for a moment and often. Taking it where it is free is one locked instruction,
    giving it up is none. Not recursive, without an owner. A thread that finds it held for longer sleeps in the kernel.

    The thread that gives it up stores that, and then reads whether anybody waits. The processor may do so in the other
    order, which a locked instruction would prevent. Instead the thread that waits, before it sleeps, says so and then
    has the kernel run a fence on every processor that runs a thread of the process. Of a thread that gives the lock up
    meanwhile, the store or the read comes after that fence: either the store is seen before the sleep, or the read sees
    the waiting thread, and wakes it. */

#ifndef QV_LOCK_WORD_PRIVATE_H
#define QV_LOCK_WORD_PRIVATE_H

#include "qv/sys/qv_atomic.h"
#include "qv/sys/qv_types.h"

struct QV___LOCK_WORD
{
    int32_t held;    // atomic: 0 or 1
    int32_t waiting; // atomic: how many threads wait, but for those that look for a moment
};

/** Wakes a thread that waits. */
QV_API void qv___LockWordWake( QV___LOCK_WORD *lock );

namespace qv
{
/** Takes the lock if it is free. */
inline bool tryAcquire( QV___LOCK_WORD *lock )
{
    if( QV___ONE_THREAD() && lock->held == 0 )
    {
        lock->held = 1;
        return true;
    }

    int32_t found = 0;
    return __atomic_compare_exchange_n( &lock->held, &found, 1, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED );
}

/** Waits until the lock is free, and takes it. */
void acquire( QV___LOCK_WORD *lock );

/** Gives up a lock that is held. The lock must not end before that. */
inline void release( QV___LOCK_WORD *lock )
{
    __atomic_store_n( &lock->held, 0, __ATOMIC_RELEASE );
    __atomic_signal_fence( __ATOMIC_SEQ_CST ); // the compiler keeps the order

    if( __builtin_expect( __atomic_load_n( &lock->waiting, __ATOMIC_RELAXED ) != 0, 0 ) )
        qv___LockWordWake( lock );
}
} // namespace qv

#endif
