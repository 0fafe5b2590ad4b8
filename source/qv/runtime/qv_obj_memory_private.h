/** @file
    Where small objects get their memory.

    Most objects end soon, and in the thread that created them. So a thread keeps blocks of objects that have ended for
    those that it creates next, by size, without a call of the C library: sizes up to 584 bytes, of each at most 32 blocks
    and 8 KB, so that a thread holds 227 KB at most. Where a thread has kept enough of a size, half of those go to a store
    of 16 MiB at most, from which threads that have none get them: many objects that end at once, as those in a large
    container, leave their blocks to the next ones. Where more end than the store has room for, it gives up what it has,
    until a block is asked for again. Blocks come from the C library and go back to it then, when a thread ends, and all
    when the library stops.

    Until it is used again, a block that is kept is as the end of its object left it, so that what is done to that object
    fails: all ones, but for the link to the next block. Nothing is kept where that would hide faults from tools: in runs
    with QV_RUNTIME_FLAG_MEMORY_DEBUG, and in processes with AddressSanitizer, however the library was built. Sizes are not
    rounded up there either. */

#ifndef QV_OBJ_MEMORY_PRIVATE_H
#define QV_OBJ_MEMORY_PRIVATE_H

#include "qv/runtime/qv_obj_count_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_mem_private.h"

namespace qv
{
const QV_INT  SIZE_STEP       = 16;                   // between two sizes
const QV_INT  FIRST_SIZE      = sizeof( QV_OBJ ) + 8; // as blocks of the C library, whose sizes leave 8 to a step of 16
const int64_t MOST_KEPT       = 32;                   // blocks of a size that a thread keeps, where it keeps any,
const int64_t MOST_KEPT_BYTES = 8192;                 // and their bytes

const int64_t MOST_STORED_BYTES = 16 << 20; // of all sizes, in the store of all threads
const int64_t ENOUGH_BYTES      = 2 << 20;  // of one size, for which no other is given up

/** Whether blocks are kept, and whether there are no lists of objects as well, so that nothing but the count of its sort
    knows a new object. Set by the start of the run. */
extern __attribute__( ( visibility( "hidden" ) ) ) bool keepsBlocks;
extern __attribute__( ( visibility( "hidden" ) ) ) bool isQuickRun;

/** The bytes of a block of such a size. */
constexpr QV_INT blockBytes( int64_t size )
{
    return FIRST_SIZE + size * SIZE_STEP;
}

/** How many blocks of a size a thread keeps. */
constexpr int32_t mostKept( int64_t size )
{
    int64_t most = MOST_KEPT_BYTES / blockBytes( size );

    return static_cast< int32_t >( most < MOST_KEPT ? most : MOST_KEPT );
}

/** Which size an object of so many bytes needs; QV___COUNTS_SIZES or more if that is none of those that are kept. */
inline uint64_t keptSize( QV_INT bytes )
{
    return ( static_cast< uint64_t >( bytes ) - FIRST_SIZE + SIZE_STEP - 1 ) / SIZE_STEP;
}

/** What the header of an object in a block of such a size says about its memory. */
inline uint16_t memoryOfSize( uint64_t size )
{
    return static_cast< uint16_t >( 2 * size + 1 );
}

/** Takes the first of the blocks that are kept of a size. */
inline QV_OBJ *takeKept( KeptBlocks *kept )
{
    QV_OBJ *object = kept->first;
    QV_ASSERT( object->retainCount == -1 && object->sort == reinterpret_cast< QV_SORT * >( UINTPTR_MAX ) );
    kept->first = object->odbNext;
    kept->room++;

    // Blocks of objects that ended in another order than they were created lie far apart.
    if( kept->first )
    {
        __builtin_prefetch( kept->first, 1 );
        __builtin_prefetch( reinterpret_cast< char * >( kept->first ) + 64, 1 );
    }

    return object;
}

/** Gets a thread that keeps no blocks of a size some from the store. False where there are none. */
bool fetchKept( KeptBlocks *kept );

/** Keeps a block of which the thread has enough, and gives others to the store; or gives it to the C library. */
void keepBeyond( KeptBlocks *kept, QV_OBJ *object );

/** At the stop: gives all that is in the store to the C library. Nothing comes into it any more, unless another thread is
    just there: then what is in it is left to the next run. */
void emptyStore();

/** Memory for an object of so many bytes; `*memory` becomes what its header has to say about it. */
__attribute__( ( always_inline ) ) inline void *takeMemory( QV_INT bytes, uint16_t *memory )
{
    uint64_t size = keptSize( bytes );

    if( __builtin_expect( size >= QV___COUNTS_SIZES || !keepsBlocks, 0 ) )
    {
        *memory = 0;
        return qvMemAlloc( bytes );
    }

    *memory            = memoryOfSize( size );
    QV___COUNTS *table = ownTable;

    if( __builtin_expect( !table || ( !table->kept[size].first && !fetchKept( &table->kept[size] ) ), 0 ) )
        return qvMemAlloc( blockBytes( static_cast< int64_t >( size ) ) );

    return takeKept( &table->kept[size] );
}

/** What a header says about memory, without what it says about the end of the object. */
inline uint16_t memoryAlone( uint16_t memory )
{
    return static_cast< uint16_t >( memory & ~QV___MEMORY_ENDS_ALONE );
}

/** Whether no other object shares the memory of one whose header says `memory` about it. */
inline bool isOwn( uint16_t memory )
{
    return memoryAlone( memory ) == 0 || ( memory & 1 );
}

/** What an object that has ended leaves, so that what is done to it fails. */
inline void fillEnded( QV_OBJ *object )
{
    memset( static_cast< void * >( object ), 0xFF, sizeof( QV_OBJ ) );
    __asm__ volatile( "" : : "r"( object ) : "memory" ); // the compiler would drop stores to memory that is freed
}

/** Keeps a block of an object that has ended, or gives it to the C library. */
inline void keepBlock( KeptBlocks *kept, QV_OBJ *object )
{
    if( __builtin_expect( kept->room <= 0, 0 ) )
        return keepBeyond( kept, object );

    object->odbNext = kept->first;
    kept->first     = object;
    kept->room--;
}

/** Gives back memory that no other object shares, of an object whose header says `memory` about it. */
inline void giveMemory( QV_OBJ *object, uint16_t memory )
{
    QV___COUNTS *table = ownTable;

    if( __builtin_expect( memoryAlone( memory ) && table, 1 ) )
        keepBlock( &table->kept[memoryAlone( memory ) / 2], object );
    else
        freeBlock( object );
}
} // namespace qv

#endif
