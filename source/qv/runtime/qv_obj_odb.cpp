#include "qv/runtime/qv_obj_life_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_assert_private.h"

// The lists are in static records, and an object that outlives its run stays in its list until it ends, in whatever run
// that is. So their lock is static, and the object's own field says whether it is listed, never the flags of the run.

namespace
{
void linkSort( QV_OBJ *result )
{
    QV_MODULE *module = result->sort->module;

    QV_CHECK_AS( !result->sort->sortsNext, "result->sort->sortsNext == NULL" );
    QV_CHECK_AS( !result->sort->sortsPrevious, "result->sort->sortsPrevious == NULL" );

    result->sort->sortsPrevious = module->sortsLast;

    if( module->sortsLast )
        module->sortsLast->sortsNext = result->sort;
    else
        module->sortsFirst = result->sort;

    module->sortsLast = result->sort;
    qv___AtomicAdd32( &module->sorts, 1 );
}

void unlinkSort( QV_SORT *sort )
{
    QV_MODULE *module = sort->module;

    if( sort->sortsPrevious )
        sort->sortsPrevious->sortsNext = sort->sortsNext;
    else
        module->sortsFirst = sort->sortsNext;

    if( sort->sortsNext )
        sort->sortsNext->sortsPrevious = sort->sortsPrevious;
    else
        module->sortsLast = sort->sortsPrevious;

    sort->sortsPrevious = nullptr;
    sort->sortsNext     = nullptr;
    qv___AtomicAdd32( &module->sorts, -1 );
}

void unlinkObject( QV_OBJ *object )
{
    QV_ASSERT( object->odbPrevious ? object->odbPrevious->odbNext == object : object->sort->odbFirst == object );
    QV_ASSERT( object->odbNext ? object->odbNext->odbPrevious == object : object->sort->odbLast == object );

    if( object->odbPrevious )
        object->odbPrevious->odbNext = object->odbNext;
    else
        object->sort->odbFirst = object->odbNext;

    if( object->odbNext )
        object->odbNext->odbPrevious = object->odbPrevious;
    else
        object->sort->odbLast = object->odbPrevious;
}
} // namespace

void qv::enterList( QV_OBJ *object )
{
    QV_SORT *sort = object->sort;
    HeldLock held( listsLock );

    // Atomically though the lock is held: threads without a table change the count without it.
    makeKnown( sort );
    qv___AtomicAdd32( &sort->created, 1 );
    sort->listed++;

    if( sort->listed == 1 && sort->module )
        linkSort( object );

    object->odbPrevious = sort->odbLast;

    if( sort->odbLast )
        sort->odbLast->odbNext = object;
    else
        sort->odbFirst = object;

    sort->odbLast = object;
}

void qv::leaveList( QV_OBJ *object )
{
    HeldLock held( listsLock );
    unlinkObject( object );
}

void qv::countOutListed( QV_OBJ *object, bool leavesList )
{
    QV_SORT *sort = object->sort;
    HeldLock held( listsLock );

    if( leavesList )
        unlinkObject( object );

    QV_ASSERT( sort->listed > 0 );
    sort->listed--;

    if( sort->listed == 0 && sort->module )
        unlinkSort( sort );

    qv___AtomicAdd32( &sort->ended, 1 );
}

QV_BOOL qv___ObjOdbEnabled( void )
{
    return qv___ObjRun & qv::IS_LISTED ? QV_TRUE : QV_FALSE;
}

void qv___ObjOdbLock( void )
{
    QV_CHECK_AS( qv___ObjRun & qv::IS_LISTED, "odbEnabled" );
    qv___LockAcquire( qv::listsLock );
}

void qv___ObjOdbUnlock( void )
{
    QV_CHECK_AS( qv___ObjRun & qv::IS_LISTED, "odbEnabled" );
    qv___LockRelease( qv::listsLock );
}

void qv___ObjCheckLists( void )
{
    qv::HeldLock held( qv::listsLock );
    QV_SORT     *previousSort = nullptr;
    int32_t      sorts        = 0;

    for( QV_SORT *sort = qv___module.sortsFirst; sort; previousSort = sort, sort = sort->sortsNext )
    {
        QV_OBJ *previous = nullptr;
        int32_t length   = 0;

        for( QV_OBJ *object = sort->odbFirst; object; previous = object, object = object->odbNext, length++ )
        {
            QV_CHECK( object->type == QV___OBJ_TYPE_OBJECT );
            QV_CHECK( object->sort == sort );
            QV_CHECK( object->isListed );
            QV_CHECK( object->odbPrevious == previous );
        }

        // Objects whose free function runs are counted, but no longer in the list.
        QV_CHECK( sort->odbLast == previous );
        QV_CHECK( sort->listed >= length );
        QV_CHECK( qv::liveObjects( sort ) >= sort->listed );
        QV_CHECK( sort->listed > 0 );
        QV_CHECK( sort->module == &qv___module );
        QV_CHECK( sort->sortsPrevious == previousSort );
        sorts++;
    }

    QV_CHECK( qv___module.sortsLast == previousSort );
    QV_CHECK( qv___AtomicLoad32( &qv___module.sorts ) == sorts );
}
