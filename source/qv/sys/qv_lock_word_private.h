/** @file
    A lock in a word, for what is locked for a moment and often. Taking it where it is free is one locked instruction,
    giving it up is none. Not recursive, without an owner. A thread that finds it held for longer sleeps in the kernel.

    The thread that gives it up stores that, and then reads whether anybody waits. The processor may do so in the other
    order, which a locked instruction would prevent. Instead the thread that waits, before it sleeps, says so and then
    has the kernel run a fence on every processor that runs a thread of the process. Of a thread that gives the lock up
    meanwhile, the store or the read comes after that fence: either the store is seen before the sleep, or the read sees
    the waiting thread, and wakes it.

    After the store another thread may take the lock, give it up and free its memory. So the threads that wait are
    counted elsewhere: in a table, by the address of the lock. Locks that share a count are woken in vain at times. */

#ifndef QV_LOCK_WORD_PRIVATE_H
#define QV_LOCK_WORD_PRIVATE_H

#include "qv/sys/qv_atomic.h"

namespace qv
{
struct LockWord
{
    int32_t held; // atomic: 0 or 1
};

/** How many threads wait for locks, but for those that look for a moment: a count in each line of the cache. */
struct alignas( 64 ) WaitingThreads
{
    int32_t count; // atomic
};

const uintptr_t WAITING = 64;

extern WaitingThreads waitingThreads[WAITING];

/** The count of a lock: objects are some hundred bytes large. */
inline int32_t *waitingFor( LockWord *lock )
{
    return &waitingThreads[reinterpret_cast< uintptr_t >( lock ) / 128 % WAITING].count;
}

/** Takes the lock if it is free. */
inline bool tryAcquire( LockWord *lock )
{
    int32_t found = 0;
    return __atomic_compare_exchange_n( &lock->held, &found, 1, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED );
}

/** Waits until the lock is free, and takes it. */
void acquire( LockWord *lock );

/** Wakes a thread that waits. Nothing is read at the address, whose memory may be free by now. */
void wake( LockWord *lock );

/** Gives up a lock that is held. */
inline void release( LockWord *lock )
{
    __atomic_store_n( &lock->held, 0, __ATOMIC_RELEASE );
    __atomic_signal_fence( __ATOMIC_SEQ_CST ); // the compiler keeps the order

    if( __builtin_expect( __atomic_load_n( waitingFor( lock ), __ATOMIC_RELAXED ) != 0, 0 ) )
        wake( lock );
}
} // namespace qv

#endif
