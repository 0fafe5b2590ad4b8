/** @file
    The steps of an object's life that its creation, its end and its batch share. */

#ifndef QV_OBJ_LIFE_PRIVATE_H
#define QV_OBJ_LIFE_PRIVATE_H

#include "qv/runtime/qv_obj_count_private.h"
#include "qv/runtime/qv_obj_memory_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_unique_private.h"

namespace qv
{
/** Puts a new object at the end of its sort's list, and counts it. */
void enterList( QV_OBJ *object );

/** Takes an object that nobody holds out of its list. It stays counted. */
void leaveList( QV_OBJ *object );

/** Counts out an object that has left its list or, with `leavesList`, takes it out of the list too. */
void countOutListed( QV_OBJ *object, bool leavesList );

/** Whether objects of the sort log the stack of their creation. */
bool recordsOrigin( QV_SORT *sort );

/** Whether an object whose header says `memory` about it ends without its free function. With assertions none does, since
    free functions check that nothing is left to give back, nor with AddressSanitizer, which they tell how much to poison. */
inline bool endsWithoutFree( uint16_t memory )
{
    const bool asksAlways = QV___ASSERTIONS || QV___ASAN;

    return !asksAlways && ( memory & QV___MEMORY_ENDS_ALONE );
}

/** Ends so many uses of memory that objects of a batch share, and frees it with the last. */
void leaveShared( void *memory, int32_t uses );

/** Writes the header of a new object. */
__attribute__( ( always_inline ) ) inline void writeHeader(
    QV_OBJ *object, uint16_t memory, uint16_t isListed, QV_INT size, QV_SORT *sort )
{
    object->type              = QV___OBJ_TYPE_OBJECT;
    object->sort              = sort;
    object->unique            = QV___UNIQUE_INVALID;
    object->retainCount       = 1;
    object->memory            = memory;
    object->isListed          = isListed;
    object->dbgObjectSize     = size;
    object->dbgAllocationSize = 0;
    object->logFirst          = nullptr;
    object->logLast           = nullptr;
    object->odbPrevious       = nullptr;
    object->odbNext           = nullptr;
}

/** Makes an object in a new block, for createQuickly(), which knows the rest. */
__attribute__( ( returns_nonnull ) ) QV_OBJ *createFresh(
    QV_INT size, QV_SORT *sort, uint16_t memory, SortCounts *counts );

/** What most creations are: makes an object in a block of a size that is kept, in a run without lists, by a thread with a
    table. Null where that can't be done and, with `onlyKept`, where none of these blocks is left: then nothing is called,
    so that a caller that does the rest in a function of its own saves no registers. `ends` is QV___MEMORY_ENDS_ALONE
    or 0. */
__attribute__( ( always_inline ) ) inline QV_OBJ *createQuickly(
    QV_INT size, QV_INT extraBytes, QV_SORT *sort, uint16_t ends, bool onlyKept = false )
{
    uint64_t     block = keptSize( size + extraBytes );
    QV___COUNTS *table = ownTable;
    intptr_t     place = placeOf( sort );

    if( __builtin_expect( !isQuickRun || block >= QV___COUNTS_SIZES || !table || place <= 0, 0 ) )
        return nullptr;

    QV_ASSERT( !qv___ObjRun && keepsBlocks );
    KeptBlocks *kept   = &table->kept[block];
    SortCounts *counts = &table->sorts[place];
    uint16_t    memory = memoryOfSize( block ) | ends;

    if( __builtin_expect( !kept->first, 0 ) )
        return onlyKept ? nullptr : createFresh( size, sort, memory, counts );

    QV_OBJ *object = takeKept( kept );
    writeHeader( object, memory, 0, size, sort );
    countInAt( counts );

    return object;
}

/** What most ends are: that of an object in a block of its own, not listed, without a number, a log, and anything that a
    free function would have to give back. Only the caller knows it. False where nothing was done. */
__attribute__( ( always_inline ) ) inline bool endQuickly( QV_OBJ *thisObj )
{
    QV_SORT     *sort   = thisObj->sort;
    uint16_t     memory = thisObj->memory;
    QV___COUNTS *table  = ownTable;

    if( thisObj->type != QV___OBJ_TYPE_OBJECT || thisObj->isListed || !sort || !table || !( memory & 1 )
        || thisObj->unique != QV___UNIQUE_INVALID || thisObj->logFirst )
        return false;

    if( !endsWithoutFree( memory ) )
        if( sort->freeFunc || thisObj->dbgAllocationSize != 0 )
            return false;

    intptr_t place = placeOf( sort );

    if( place <= 0 )
        return false;

    QV_ASSERT( qv___AtomicCompareExchange32( &thisObj->retainCount, 1, 1 ) == 1 );
    countOutAt( &table->sorts[place] );
    fillEnded( thisObj );
    keepBlock( &table->kept[memoryAlone( memory ) / 2], thisObj );

    return true;
}

/** What is left to qv___ObjReleaseLast() where that does nothing. */
void releaseLastOther( QV_OBJ *thisObj );

/** qv___ObjReleaseLast(), inline. */
__attribute__( ( always_inline ) ) inline void releaseLast( QV_OBJ *thisObj )
{
    if( __builtin_expect( !endQuickly( thisObj ), 0 ) )
        releaseLastOther( thisObj );
}

/** qv___ObjRelease() with the common end in it, for the release functions of families with many small objects. */
__attribute__( ( always_inline ) ) inline void releaseInline( QV_OBJ *thisObj )
{
    if( qv___AtomicLoad32( &thisObj->retainCount ) == 1 )
        releaseLast( thisObj );
    else if( qv___AtomicAdd32( &thisObj->retainCount, -1 ) == 0 )
        qv___ObjFree( thisObj );
}

/** Makes an object in memory of which its header says `memory`. Inline in all functions that create, so that each is one
    frame in the recorded stack of a creation, which leaves `skip` out. `counts` is where the calling thread counts the
    sort's objects, if the caller knows that, else null. */
__attribute__( ( always_inline ) ) inline QV_OBJ *createObject(
    void *place, uint16_t memory, QV_INT size, QV_SORT *sort, SortCounts *counts = nullptr, QV_INT skip = 1 )
{
    QV_OBJ *result = static_cast< QV_OBJ * >( place );

    writeHeader( result, memory, qv___ObjRun, size, sort );

    if( __builtin_expect( !result->isListed, 1 ) )
    {
        if( counts )
            countInAt( counts );
        else
            countIn( sort );

        return result;
    }

    checkRun();
    enterList( result );

    if( qv___ObjOrigin && recordsOrigin( sort ) )
        qv___ObjLogAppendCallStack( result, skip, QV_INT_MAX );

    return result;
}

/** Makes an object in memory of its own. */
__attribute__( ( always_inline ) ) inline QV_OBJ *createOwn(
    QV_INT size, QV_INT extraBytes, QV_SORT *sort, SortCounts *counts = nullptr, uint16_t ends = 0, QV_INT skip = 1 )
{
    uint16_t memory;
    void    *place = takeMemory( size + extraBytes, &memory );

    return createObject( place, memory | ends, size, sort, counts, skip );
}

/** Memory that is shared has room as a rule. Where `counts_` is known no object is listed. */
inline QV_OBJ *ObjBatch::createInline( QV_INT size, QV_INT extraBytes, uint16_t ends )
{
    QV_INT bytes = ( size + extraBytes + 7 ) & ~QV_INT( 7 );

    if( !memory_ || end_ - next_ < bytes || !counts_ )
        return create( size, extraBytes, ends );

    QV_ASSERT( !qv___ObjRun && counts_ == countsOf( sort_ ) ); // a batch belongs to one thread
    char *at = next_;
    next_ += bytes;
    bytes_ += bytes;
    users_++;

    return createObject( at, static_cast< uint16_t >( ( at - memory_ ) | ends ), size, sort_, counts_ );
}
} // namespace qv

#endif
