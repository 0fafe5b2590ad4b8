/** @file
    The steps of an object's life that its creation, its end and its batch share. */

#ifndef QV_OBJ_LIFE_PRIVATE_H
#define QV_OBJ_LIFE_PRIVATE_H

#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_unique_private.h"

namespace qv
{
/** Puts a sort into the list of those that have had objects. */
void makeKnown( QV_SORT *sort );

/** Count objects of a sort in and out. The first object of a sort also counts the sort in its module, and the last
    counts it out. */
inline void countIn( QV_SORT *sort, int32_t objects )
{
    if( qv___AtomicAdd32( &sort->objects, objects ) != objects )
        return;

    if( sort->module )
        qv___AtomicAdd32( &sort->module->sorts, 1 );

    if( __builtin_expect( !qv___AtomicLoad32( &sort->isKnown ), 0 ) )
        makeKnown( sort );
}

inline void countOut( QV_SORT *sort, int32_t objects )
{
    if( qv___AtomicAdd32( &sort->objects, -objects ) == 0 && sort->module )
        qv___AtomicAdd32( &sort->module->sorts, -1 );
}

/** Puts a new object at the end of its sort's list, and counts it unless its batch has counted it already. */
void enterList( QV_OBJ *object, bool isCounted );

/** Takes an object that nobody holds out of its list. It stays counted. */
void leaveList( QV_OBJ *object );

/** Counts out an object that has left its list or, with `leavesList`, takes it out of the list too. */
void countOutListed( QV_OBJ *object, bool leavesList );

/** Whether objects of the sort log the stack of their creation. */
bool recordsOrigin( QV_SORT *sort );

/** Ends so many uses of memory that objects of a batch share, and frees it with the last. */
void leaveShared( void *memory, int32_t uses );

/** Makes an object of memory. Inline in all functions that create, so that each is one frame in the recorded stack of a
    creation, which leaves one out. */
__attribute__( ( always_inline ) ) inline QV_OBJ *createObject(
    void *memory, uint16_t sharedOffset, QV_INT size, QV_SORT *sort, bool isCounted = false )
{
    QV_OBJ *result = static_cast< QV_OBJ * >( memory );

    result->type              = QV___OBJ_TYPE_OBJECT;
    result->sort              = sort;
    result->unique            = QV___UNIQUE_INVALID;
    result->retainCount       = 1;
    result->sharedOffset      = sharedOffset;
    result->isListed          = qv___ObjRun;
    result->dbgObjectSize     = size;
    result->dbgAllocationSize = 0;
    result->logFirst          = nullptr;
    result->logLast           = nullptr;
    result->odbPrevious       = nullptr;
    result->odbNext           = nullptr;

    if( __builtin_expect( !result->isListed, 1 ) )
    {
        if( !isCounted )
            countIn( sort, 1 );

        return result;
    }

    checkRun();
    enterList( result, isCounted );

    if( qv___ObjOrigin && recordsOrigin( sort ) )
        qv___ObjLogAppendCallStack( result, 1, QV_INT_MAX );

    return result;
}

/** Memory that is shared has room as a rule, and objects to come are counted then, which says that none is listed. */
inline QV_OBJ *ObjBatch::createInline( QV_INT size, QV_INT extraBytes )
{
    QV_INT bytes = ( size + extraBytes + 7 ) & ~QV_INT( 7 );

    if( !memory_ || end_ - next_ < bytes || counted_ == 0 )
        return create( size, extraBytes );

    QV_ASSERT( !qv___ObjRun );
    char *at = next_;
    next_ += bytes;
    bytes_ += bytes;
    users_++;
    counted_--;

    return createObject( at, static_cast< uint16_t >( at - memory_ ), size, sort_, true );
}
} // namespace qv

#endif
