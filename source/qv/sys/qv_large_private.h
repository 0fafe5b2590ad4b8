/** @file
    Large blocks that are kept.

    The C library keeps free blocks of similar sizes in one list and looks at them in turn, puts thousands that were freed
    before into their lists when it is asked for a large one, and gives memory at the end of its heap back to the operating
    system as soon as there are some hundred KiB. A block of 128 KiB takes 10 ns from it in most processes, but 6 to 20 us
    where the heap has thousands of holes of about that size or nothing but a few such blocks, and 100 us after the end of a
    million small objects: up to a hundred times what filling it takes.

    So the blocks of objects that have ended are kept for the next ones that ask for about as much: the last MOST_LARGE of
    LARGE to LARGEST bytes, 4 MiB in the whole process at most, until the library stops. A block is handed out for no less
    than eight ninths of what its last owner had, and kept only if that was no less than eight ninths of what the C library
    has allocated. So nobody gets a block of more than 81/64 of what was asked for.

    A thread that comes while another one is here goes to the C library instead: nobody waits. Nothing is kept where
    keepsMemory is false. */

#ifndef QV_LARGE_PRIVATE_H
#define QV_LARGE_PRIVATE_H

#include "qv/sys/qv_mem_private.h"
#include "qv/sys/qv_types.h"

namespace qv
{
const QV_INT LARGE      = 32 << 10; // bytes from which the C library may have to search for long
const QV_INT LARGEST    = 1 << 20;  // bytes; filling more takes longer than getting it
const int    MOST_LARGE = 4;

/** A block of at least `bytes`, which are LARGE or more, out of those that are kept; null if there is none. It goes back as
    any block does. */
void *takeLarge( QV_INT bytes );

/** Keeps a block, from qvMemAlloc() or qvMemRealloc(), that nobody uses any more, or frees it. It has at least `bytes`. */
void leaveLarge( void *block, QV_INT bytes );

/** What the C library has allocated for a block, all told. */
QV_INT allocatedBytes( void *block );

/** As qvMemFree(), for a caller that knows the size, and that no part of the block is poisoned. */
inline void freeBlock( void *block, QV_INT bytes )
{
    if( __builtin_expect( bytes >= LARGE, 0 ) )
        leaveLarge( block, bytes );
    else
        freeBlock( block );
}

/** Frees what is kept. */
void closeLarge();
} // namespace qv

#endif
