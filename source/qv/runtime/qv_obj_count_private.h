/** @file
    How many objects of each sort live.

    A thread counts the objects that it creates and those that it ends in a table of its own: two numbers for each sort,
    which only grow and which no other thread writes, so that no locked instruction is needed. What lives of a sort is
    what all threads have created, less what they have ended.

    A look reads the numbers of all threads, first all that have ended, then all that have been created. A thread that
    reads of an end reads of the creation of that object as well, and of those of all objects that were created before
    the end. Therefore:
    - the difference is never below the objects that live during the whole look;
    - where it is 0, there was a moment in the look at which none lived, even if other threads hand objects on, and
      create and end some, all the time;
    - it is too high at most by the objects that other threads create during the look, and exact if they create none.

    What is not in a table is in the same two numbers of the sort itself, which are changed by locked additions:
    - listed objects, since their count must agree with the lists for a thread that holds the lock of the lists;
    - objects of a thread without a table: one that ends and has given its table back, or has got none, because there is
      no memory or another thread is just getting one;
    - sorts beyond those that a table has places for.
    Where an object is created does not decide where its end is counted. All numbers wrap around together: the sums are
    right as long as fewer than 2^32 objects of a sort live or are created during a look. */

#ifndef QV_OBJ_COUNT_PRIVATE_H
#define QV_OBJ_COUNT_PRIVATE_H

#include "qv/runtime/qv_family.h"

#define QV___COUNTS_PLACES 512 /**< sorts in a table; the first place is not used */
#define QV___COUNTS_SIZES  32  /**< of blocks that a thread keeps */

namespace qv
{
struct SortCounts
{
    uint32_t created; /**< atomic; written by the thread that the table belongs to */
    uint32_t ended;   /**< likewise; the release form, so that a look that reads it finds all that preceded the end */
};

/** Blocks of one size: see qv_obj_memory_private.h. */
struct KeptBlocks
{
    QV_OBJ *first; /**< linked by `odbNext` */
    int64_t room;  /**< how many more are kept */
};
} // namespace qv

/** The table of a thread. It is never freed: a thread that ends leaves its numbers in it to the next thread. */
typedef struct alignas( 64 ) QV___COUNTS
{
    qv::SortCounts sorts[QV___COUNTS_PLACES];
    qv::KeptBlocks kept[QV___COUNTS_SIZES]; /**< the thread's own; none where there is no thread */
    QV___COUNTS   *before;                  /**< the table that was made before; never changes */
    QV___COUNTS   *nextUnused;              /**< in the list of those without a thread */
} QV___COUNTS;

/** The table that was made last. Atomic. Exported for debuggers. */
QV_API_DATA QV___COUNTS *qv___Counts;

namespace qv
{

/** The sort's place in the tables: 0 until its first object, below 0 if there was none left. It is in a field of no other
    use to the header of a sort. Atomic. */
inline int32_t placeOf( QV_SORT *sort )
{
    return static_cast< int16_t >( __atomic_load_n( &sort->memory, __ATOMIC_ACQUIRE ) );
}

/** The calling thread's table; null if the thread has none. */
extern __attribute__( ( tls_model( "initial-exec" ) ) ) thread_local constinit QV___COUNTS *ownTable;

/** Gets the calling thread a table if that is possible now, and puts the sort into the list of those that have had
    objects if it is in none yet. */
SortCounts *prepareCounts( QV_SORT *sort );

/** Where the calling thread counts the sort's objects; null where it has to use the sort's own numbers. */
inline SortCounts *countsOf( QV_SORT *sort )
{
    QV___COUNTS *table = ownTable;
    int32_t      place = placeOf( sort );

    if( __builtin_expect( table && place > 0, 1 ) )
        return &table->sorts[place];

    return prepareCounts( sort );
}

/** Counts an object in at a place of the calling thread's table. */
inline void countInAt( SortCounts *counts )
{
    __atomic_store_n( &counts->created, counts->created + 1, __ATOMIC_RELAXED );
}

/** Counts an object out likewise: last of all, as countOut(). */
inline void countOutAt( SortCounts *counts )
{
    __atomic_store_n( &counts->ended, counts->ended + 1, __ATOMIC_RELEASE );
}

/** @{ */
/** Count an object in and out. Out comes last of all: a look that finds no object of a module finds that none of the
    module's code runs for one. */
inline void countIn( QV_SORT *sort )
{
    if( SortCounts *counts = countsOf( sort ) )
        countInAt( counts );
    else
        qv___AtomicAdd32( &sort->created, 1 );
}

inline void countOut( QV_SORT *sort )
{
    if( SortCounts *counts = countsOf( sort ) )
        countOutAt( counts );
    else
        qv___AtomicAdd32( &sort->ended, 1 );
}
/** @} */

/** The objects of a sort that live now. Any thread, any time. The cost is that of reading some numbers for each thread
    that has created objects; tables of threads that have ended are used again. */
QV_INT liveObjects( QV_SORT *sort );

/** Puts a sort into the list of those that have had objects. The caller holds the lock of the lists. */
void makeKnown( QV_SORT *sort );

/** The sorts that have had an object since the library was mapped, as a list that gets longer at its start: the newest
    one, and the one before. Null at the end. Any thread, any time. */
QV_SORT        *newestSort();
inline QV_SORT *sortBefore( QV_SORT *sort )
{
    return static_cast< QV_SORT * >( sort->odbNext ); // of no other use to the header of a sort
}

/** Between the two, threads give their tables back when they end and, with `keepsBlocks`, keep blocks of objects. */
void startCounts( bool keepsBlocks, bool hasLists );
void stopCounts();
} // namespace qv

#endif
