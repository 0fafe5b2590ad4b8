/** @file
    Where small objects get their memory.

    Most objects end soon, and in the thread that created them. So a thread keeps a few blocks of objects that have ended
    for those that it creates next, by size, without a call of the C library. Blocks come from the C library and go back
    to it where a thread has kept enough of a size, when the thread ends, and when it stops the library.

    Until it is used again, a block that is kept is as the end of its object left it, so that what is done to that object
    fails: all ones, but for the link to the next block. Nothing is kept where that would hide faults from tools: in runs
    with QV_RUNTIME_FLAG_MEMORY_DEBUG, in processes with AddressSanitizer, however the library was built, and in builds
    with it, which don't round sizes up either. */

#ifndef QV_OBJ_MEMORY_PRIVATE_H
#define QV_OBJ_MEMORY_PRIVATE_H

#include "qv/runtime/qv_obj_count_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_mem_private.h"

namespace qv
{
const QV_INT   SIZE_STEP  = 16;                   // between two sizes
const QV_INT   FIRST_SIZE = sizeof( QV_OBJ ) + 8; // as blocks of the C library, whose sizes leave 8 to a step of 16
const uint32_t MOST_KEPT  = 32;                   // blocks of a size that a thread keeps, where it keeps any

/** MOST_KEPT, or 0 where nothing is kept. Set by the start of the run. */
extern uint32_t mostKept;

/** Memory for an object of so many bytes; `*memory` becomes what its header has to say about it. */
__attribute__( ( always_inline ) ) inline void *takeMemory( QV_INT bytes, uint16_t *memory )
{
    uint64_t size = ( static_cast< uint64_t >( bytes ) - FIRST_SIZE + SIZE_STEP - 1 ) / SIZE_STEP;

    if( __builtin_expect( QV___ASAN || size >= QV___COUNTS_SIZES, 0 ) )
    {
        *memory = 0;
        return qvMemAlloc( bytes );
    }

    *memory            = static_cast< uint16_t >( 2 * size + 1 );
    QV___COUNTS *table = ownTable;

    if( __builtin_expect( !table || !table->kept[size].first || mostKept == 0, 0 ) )
        return qvMemAlloc( FIRST_SIZE + static_cast< QV_INT >( size ) * SIZE_STEP );

    QV_OBJ *object = table->kept[size].first;
    QV_ASSERT( object->retainCount == -1 && object->sort == reinterpret_cast< QV_SORT * >( UINTPTR_MAX ) );
    table->kept[size].first = object->odbNext;
    table->kept[size].count--;

    return object;
}

/** Whether no other object shares the memory of one whose header says `memory` about it. */
inline bool isOwn( uint16_t memory )
{
    return memory == 0 || ( memory & 1 );
}

/** Gives back memory that no other object shares, of an object whose header says `memory` about it. */
inline void giveMemory( QV_OBJ *object, uint16_t memory )
{
    QV___COUNTS *table = ownTable;

    if( __builtin_expect( memory && table, 1 ) )
    {
        KeptBlocks *kept = &table->kept[memory / 2];

        if( __builtin_expect( kept->count < mostKept, 1 ) )
        {
            object->odbNext = kept->first;
            kept->first     = object;
            kept->count++;
            return;
        }
    }

    freeBlock( object );
}
} // namespace qv

#endif
