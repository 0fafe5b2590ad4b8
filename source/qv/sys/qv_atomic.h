/** @file
    The only access to plain integers and pointers that several threads share.

    What reads and writes in one step (add, compare and exchange) is sequentially consistent and orders all memory on
    both sides. Where the processor's locked instruction does that by itself no fence is emitted; elsewhere one stands
    before and one after it. A read takes part in the same order and comes before all that follows it; plain writes that
    precede it may still become visible later. A write takes part in that order and comes after all that precedes it;
    its release form does the latter only. C11 and C++20. */

#ifndef QV_ATOMIC_H
#define QV_ATOMIC_H

#include <stdint.h>

/** A full fence where the processor's atomic instructions are none by themselves. */
#if defined( __x86_64__ ) || defined( __i386__ )
#define QV___ATOMIC_FENCE() ( (void)0 )
#else
#define QV___ATOMIC_FENCE() __atomic_thread_fence( __ATOMIC_SEQ_CST )
#endif

/** A field of a structure that several threads share: a processor with words of 32 bits reads and writes 64 of them in
    one step only where they lie at a multiple of 8, which is not where a field of the plain type always lies there. */
typedef int64_t QV___ATOMIC_INT __attribute__( ( aligned( 8 ) ) );

/** Adds `amount` and returns the new value. A result that does not fit wraps around. */
static inline int32_t qv___AtomicAdd32( int32_t *value, int32_t amount )
{
    QV___ATOMIC_FENCE();
    int32_t result = __atomic_add_fetch( value, amount, __ATOMIC_SEQ_CST );
    QV___ATOMIC_FENCE();
    return result;
}

/** Replaces `expected` by `desired`, and anything else by nothing. Returns the value that was found. */
static inline int32_t qv___AtomicCompareExchange32( int32_t *value, int32_t expected, int32_t desired )
{
    QV___ATOMIC_FENCE();
    __atomic_compare_exchange_n( value, &expected, desired, 0, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST );
    QV___ATOMIC_FENCE();
    return expected;
}

/** The same in 64 bits. */
static inline int64_t qv___AtomicCompareExchange64( int64_t *value, int64_t expected, int64_t desired )
{
    QV___ATOMIC_FENCE();
    __atomic_compare_exchange_n( value, &expected, desired, 0, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST );
    QV___ATOMIC_FENCE();
    return expected;
}

/** @{ */
/** Reads. No locked instruction on any machine. */
static inline int32_t qv___AtomicLoad32( const int32_t *value )
{
    QV___ATOMIC_FENCE();
    return __atomic_load_n( value, __ATOMIC_SEQ_CST );
}

static inline int64_t qv___AtomicLoad64( const int64_t *value )
{
    QV___ATOMIC_FENCE();
    return __atomic_load_n( value, __ATOMIC_SEQ_CST );
}
/** @} */

/** @{ */
/** Writes. The release form needs no locked instruction: a thread that reads the value sees what was written before it,
    but the writing thread's next read may come from before the write. */
static inline void qv___AtomicStore32( int32_t *value, int32_t newValue )
{
    __atomic_store_n( value, newValue, __ATOMIC_SEQ_CST );
    QV___ATOMIC_FENCE();
}

static inline void qv___AtomicStoreRelease32( int32_t *value, int32_t newValue )
{
    __atomic_store_n( value, newValue, __ATOMIC_RELEASE );
}

static inline void qv___AtomicStore64( int64_t *value, int64_t newValue )
{
    __atomic_store_n( value, newValue, __ATOMIC_SEQ_CST );
    QV___ATOMIC_FENCE();
}
/** @} */

#endif
