#include "qv/runtime/qv_obj_count_private.h"

#include "qv/runtime/qv_obj_memory_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_lock_private.h"
#include "qv/sys/qv_mem_private.h"

#include <pthread.h>
#include <stdlib.h>
#include <string.h>

#include <utility>

constinit thread_local QV___COUNTS *qv::ownTable    = nullptr;
bool                                qv::keepsBlocks = false;
bool                                qv::isQuickRun  = false;

namespace
{
using qv::SortCounts;
using Table = QV___COUNTS;

const int32_t NO_PLACE = -1; // of a sort that comes when the tables are full
const int     LOOKS    = 4;  // at most, while other threads end objects

constinit Table firstTable = {}; // for a process with one thread
} // namespace

constinit QV___COUNTS *qv___Counts = &firstTable;

namespace
{
constinit Table   *unusedTables = &firstTable; // atomic
constinit QV_SORT *knownSorts   = nullptr;     // atomic; written with the lock of the lists held
constinit int32_t  places       = 1;           // the next one; with the lock of the lists held
constinit int32_t  isTaking     = 0;           // atomic; a thread takes or makes a table
constinit int32_t  hasKey       = 0;           // atomic
pthread_key_t      tableKey;                   // a thread's table, which it gives back when it ends

// A thread that ends, or for which the C library cannot keep a table: it gets none, since nothing would give it back.
__attribute__( ( tls_model( "initial-exec" ) ) ) constinit thread_local bool getsNone = false;

void putTable( Table *table )
{
    Table *first = __atomic_load_n( &unusedTables, __ATOMIC_RELAXED );

    do
        table->nextUnused = first;
    while( !__atomic_compare_exchange_n( &unusedTables, &first, table, false, __ATOMIC_RELEASE, __ATOMIC_RELAXED ) );
}

void leaveOwnTable()
{
    Table *table = std::exchange( qv::ownTable, nullptr );

    for( qv::KeptBlocks &kept : table->kept )
    {
        while( QV_OBJ *object = kept.first )
        {
            kept.first = object->odbNext;
            qv::freeBlock( object );
        }
    }

    putTable( table );
}

// Called by the C library when a thread ends. What the thread ends after that is counted by the sorts.
void endThread( void * )
{
    getsNone = true;
    leaveOwnTable();
}

// By one thread at a time: the table that it finds first in the list is first until it has taken it or another thread
// has put one before it.
Table *takeTable()
{
    Table *table = __atomic_load_n( &unusedTables, __ATOMIC_ACQUIRE );

    while( table
           && !__atomic_compare_exchange_n(
               &unusedTables, &table, table->nextUnused, false, __ATOMIC_ACQUIRE, __ATOMIC_ACQUIRE ) )
    {
    }

    if( table )
        return table;

    void *memory = nullptr;

    if( posix_memalign( &memory, alignof( Table ), sizeof( Table ) ) )
        return nullptr;

    table         = static_cast< Table * >( memset( memory, 0, sizeof( Table ) ) );
    table->before = qv___Counts;
    __atomic_store_n( &qv___Counts, table, __ATOMIC_RELEASE );

    return table;
}

// Waits for no other thread: that thread may be missing in a process that was forked.
void getTable()
{
    if( getsNone || !__atomic_load_n( &hasKey, __ATOMIC_ACQUIRE )
        || __atomic_exchange_n( &isTaking, 1, __ATOMIC_ACQUIRE ) )
        return;

    Table *table = takeTable();
    __atomic_store_n( &isTaking, 0, __ATOMIC_RELEASE );

    if( !table )
        return;

    if( pthread_setspecific( tableKey, table ) )
    {
        getsNone = true;
        putTable( table );
        return;
    }

    for( int i = 0; i < QV___COUNTS_SIZES; i++ )
    {
        QV_ASSERT( !table->kept[i].first );
        table->kept[i].room = __atomic_load_n( &qv::keepsBlocks, __ATOMIC_RELAXED ) ? qv::mostKept( i ) : 0;
    }

    qv::ownTable = table;
}

/* Looks ---------------------------------------------------------------------------------------------------------- */

// What the sort and all threads have counted at one of the two numbers.
uint32_t sumOf( QV_SORT *sort, int32_t QV_SORT::*own, uint32_t SortCounts::*number )
{
    int32_t  place = qv::placeOf( sort );
    uint32_t sum   = static_cast< uint32_t >( qv___AtomicLoad32( &( sort->*own ) ) );

    if( place > 0 )
        for( Table *table = __atomic_load_n( &qv___Counts, __ATOMIC_ACQUIRE ); table; table = table->before )
            sum += __atomic_load_n( &( table->sorts[place].*number ), __ATOMIC_ACQUIRE );

    return sum;
}

// What lives of the sorts whose numbers `sum` adds up. The smallest of several looks, none of which is too low: one that
// takes long while other threads create and end objects is far too high. It ends with a look during which no object
// ended, since that is no higher than what lived then.
template< class Sum >
QV_INT look( Sum sum )
{
    auto     endedOf   = []( QV_SORT *sort ) { return sumOf( sort, &QV_SORT::ended, &SortCounts::ended ); };
    auto     createdOf = []( QV_SORT *sort ) { return sumOf( sort, &QV_SORT::created, &SortCounts::created ); };
    uint32_t ended     = sum( endedOf );
    uint32_t result    = UINT32_MAX;

    for( int i = 0; i < LOOKS && result > 0; i++ )
    {
        uint32_t live  = sum( createdOf ) - ended;
        uint32_t after = sum( endedOf );

        if( live < result )
            result = live;

        if( after == ended )
            break;

        ended = after;
    }

    return static_cast< QV_INT >( result );
}
} // namespace

QV_INT qv::liveObjects( QV_SORT *sort )
{
    return look( [sort]( auto number ) { return number( sort ); } );
}

QV_INT qv___ModuleObjects( QV_MODULE *module )
{
    // Each sum begins with the newest sort, as it has to begin with the newest table.
    return look(
        [module]( auto number )
        {
            uint32_t sum = 0;

            for( QV_SORT *sort = qv::newestSort(); sort; sort = qv::sortBefore( sort ) )
                if( sort->module == module )
                    sum += number( sort );

            return sum;
        } );
}

/* Sorts ---------------------------------------------------------------------------------------------------------- */

void qv::makeKnown( QV_SORT *sort )
{
    if( placeOf( sort ) != 0 )
        return;

    sort->odbNext = knownSorts;
    __atomic_store_n( &knownSorts, sort, __ATOMIC_RELEASE );
    int32_t place = places < QV___COUNTS_PLACES ? places++ : NO_PLACE;
    __atomic_store_n( &sort->memory, static_cast< uint16_t >( place ), __ATOMIC_RELEASE );
}

QV_SORT *qv::newestSort()
{
    return __atomic_load_n( &knownSorts, __ATOMIC_ACQUIRE );
}

SortCounts *qv::prepareCounts( QV_SORT *sort )
{
    if( placeOf( sort ) == 0 )
    {
        HeldLock held( listsLock );
        makeKnown( sort );
    }

    if( !ownTable )
        getTable();

    return ownTable && placeOf( sort ) > 0 ? &ownTable->sorts[placeOf( sort )] : nullptr;
}

void qv::startCounts( bool keeps, bool hasLists )
{
    __atomic_store_n( &keepsBlocks, keeps && keepsMemory, __ATOMIC_RELAXED );
    isQuickRun = keepsBlocks && !hasLists;
    __atomic_store_n( &hasKey, pthread_key_create( &tableKey, endThread ) == 0, __ATOMIC_RELEASE );
}

// The thread that stops the library gives its table back here. Others that have used the library and still live keep
// theirs for as long as they live, whatever runs they see. What such a thread has at its end is lost, some kilobytes and
// the blocks that it keeps: no code of the library runs then, so that it can be unloaded.
void qv::stopCounts()
{
    isQuickRun = false;
    __atomic_store_n( &keepsBlocks, false, __ATOMIC_RELAXED ); // other threads may end objects meanwhile

    if( !__atomic_exchange_n( &hasKey, 0, __ATOMIC_ACQ_REL ) )
        return;

    pthread_key_delete( tableKey );

    if( ownTable )
        leaveOwnTable();

    emptyStore();
}
