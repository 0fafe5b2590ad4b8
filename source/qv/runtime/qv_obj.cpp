#include "qv/runtime/qv_obj.h"

#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_life_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_mem_private.h"
#include "qv/sys/qv_unique_private.h"

#include <string.h>

uint16_t qv___ObjRun    = qv::NO_RUN;
QV_BOOL  qv___ObjOrigin = QV_FALSE;

void qv___ObjStartup( void )
{
    QV_INT flags = qvRuntimeFlags();

    qv::startCounts( !( flags & QV_RUNTIME_FLAG_MEMORY_DEBUG ), ( flags & QV_RUNTIME_FLAG_OBJECT_DATABASE ) != 0 );
    qv::objLogLock = qv___LockCreate();
    qv___ObjRun    = ( flags & QV_RUNTIME_FLAG_OBJECT_DATABASE ) ? qv::IS_LISTED | qv::IS_OWN : 0;
    qv___ObjOrigin = ( flags & QV_RUNTIME_FLAG_OBJECT_ORIGIN ) ? QV_TRUE : QV_FALSE;
}

void qv___ObjShutdown( void )
{
    qv___LockDestroy( qv::objLogLock );

#if QV___ASSERTIONS
    qv___ObjCheckLists();
#endif

    qv::objLogLock = nullptr;
    qv___ObjRun    = qv::RUN_ENDED;
    qv___ObjOrigin = QV_FALSE;
    qv::stopCounts();
}

void qv::reportNoRun()
{
    qv___Abort(
        qv___ObjRun == NO_RUN ? "the library does not run: qvRuntimeStartup() has not been called"
                              : "the library does not run: qvRuntimeShutdown() has stopped it",
        QV___SOURCE, __LINE__, nullptr );
}

/* Creation and destruction --------------------------------------------------------------------------------------- */

namespace
{
// The end of an object that has no references and, if it has a free function, is no longer listed.
inline void finish( QV_OBJ *thisObj, QV___FREE_FUNC freeFunc )
{
    QV_SORT *sort = thisObj->sort;

    if( freeFunc )
        freeFunc( thisObj );

    if( qv___AtomicLoad64( &thisObj->dbgAllocationSize ) != 0 )
        qv___Abort(
            "Allocation size failure", QV___SOURCE, __LINE__,
            "!QV___ATOMIC_INT_COMPARE_EXCHANGE( &thisObj->dbgAllocationSize, 0, 0 )" );

    if( __builtin_expect( thisObj->logFirst != nullptr, 0 ) )
        qv::freeObjLog( thisObj );

    QV_INT unique = thisObj->unique;

    if( __builtin_expect( unique != QV___UNIQUE_INVALID, 0 ) && qv::isUniqueOfThisRun( unique ) )
        qv___UniquePut( qv::uniqueNumber( unique ) );

    // Last of all: when no object of a module's sorts is counted, none of its code runs for one.
    if( __builtin_expect( !thisObj->isListed, 1 ) )
        qv::countOut( sort );
    else
        qv::countOutListed( thisObj, !freeFunc ); // taken out of the list here, where the lock is held anyway

    uint16_t memory = qv::memoryAlone( thisObj->memory );
    QV_INT   size   = thisObj->dbgObjectSize;

    qv::fillEnded( thisObj );

    if( qv::isOwn( memory ) )
    {
        qv::giveMemory( thisObj, memory );
        return;
    }

    qv::poison( thisObj, static_cast< size_t >( size ) ); // though the memory isn't freed yet
    qv::leaveShared( reinterpret_cast< char * >( thisObj ) - memory, 1 );
}

// A free function releases what its object holds, and so ends other objects. An object that would end more than
// MAX_DEPTH levels deep waits until the outermost of these free functions has returned: a tree of any depth ends on a
// small stack. An object that waits has no references and is not listed, so that no thread finds it; its sort counts
// it, so that its module stays loaded.
struct Ends
{
    int32_t depth; // free functions that run in this thread, each called by the one before
    QV_OBJ
    *first;       // objects that wait, in the order in which they lost their last reference; linked by `odbNext`, which
    QV_OBJ *last; // the lists no longer use
};

const int32_t MAX_DEPTH = 32;

// Without a destructor; all zero whenever no free function runs.
__attribute__( ( tls_model( "initial-exec" ) ) ) thread_local constinit Ends ends = {};

__attribute__( ( noinline ) ) void endLater( QV_OBJ *thisObj )
{
    thisObj->odbNext = nullptr;

    if( ends.first )
        ends.last->odbNext = thisObj;
    else
        ends.first = thisObj;

    ends.last = thisObj;
}

// Called at depth 1. The free functions of objects that have waited may make others wait, which end here too.
__attribute__( ( noinline ) ) void endWaiting()
{
    while( QV_OBJ *thisObj = ends.first )
    {
        ends.first = thisObj->odbNext;
        QV_ASSERT( qv___AtomicLoad32( &thisObj->retainCount ) == 0 );
        finish( thisObj, thisObj->sort->freeFunc );
    }
}

// Ends an object without references. Inline, so that a release is no deeper in calls than it must be.
__attribute__( ( always_inline ) ) inline void end( QV_OBJ *thisObj )
{
    QV_CHECK_AS( thisObj->sort, "thisObj->type != QV___OBJ_TYPE_OBJECT || thisObj->sort" );

    QV___FREE_FUNC freeFunc = thisObj->sort->freeFunc;

    if( !freeFunc )
        return finish( thisObj, nullptr );

    // Out of the list first, so that no snapshot finds an object whose free function runs.
    if( __builtin_expect( thisObj->isListed, 0 ) )
        qv::leaveList( thisObj );

    Ends *own = &ends;

    if( __builtin_expect( own->depth == MAX_DEPTH, 0 ) )
        return endLater( thisObj );

    QV_ASSERT( own->depth >= 0 && own->depth < MAX_DEPTH );
    own->depth++;
    finish( thisObj, freeFunc );

    if( __builtin_expect( own->first != nullptr, 0 ) && own->depth == 1 )
        endWaiting();

    own->depth--;
    QV_ASSERT( own->depth > 0 || !own->first );
}
} // namespace

namespace
{
// A function of its own, so that the common creation saves no registers. It is a frame of the stack, too.
__attribute__( ( noinline ) ) QV_OBJ *createOther( QV_INT size, QV_SORT *sort )
{
    return qv::createOwn( size, 0, sort, nullptr, 0, 2 );
}
} // namespace

QV_OBJ *qv___ObjCreate( QV_INT size, QV_SORT *sort )
{
    QV_CHECK( sort );

    if( QV_OBJ *object = qv::createQuickly( size, 0, sort, 0 ) )
        return object;

    return createOther( size, sort );
}

// A function of its own, too.
__attribute__( ( noinline ) ) QV_OBJ *qv::createFresh( QV_INT size, QV_SORT *sort, uint16_t memory, SortCounts *counts )
{
    int64_t     block = memoryAlone( memory ) / 2;
    KeptBlocks *kept  = &ownTable->kept[block];
    QV_OBJ     *object =
        fetchKept( kept ) ? takeKept( kept ) : static_cast< QV_OBJ * >( qvMemAlloc( blockBytes( block ) ) );
    writeHeader( object, memory, 0, size, sort );
    countInAt( counts );

    return object;
}

QV_OBJ *qv::createWithRoom( QV_INT size, QV_INT extraBytes, QV_SORT *sort, uint16_t ends )
{
    QV_ASSERT( sort );
    return qv::createOwn( size, extraBytes, sort, nullptr, ends );
}

void qv___ObjFree( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    if( thisObj->type != QV___OBJ_TYPE_OBJECT )
        return;

    QV_CHECK_AS(
        qv___AtomicLoad32( &thisObj->retainCount ) == 0,
        "thisObj->type != QV___OBJ_TYPE_OBJECT || QV___RETAIN_COUNT_VALUE( thisObj->retainCount ) == 0" );

    end( thisObj );
}

// A function of its own, so that the common end saves no registers.
__attribute__( ( noinline ) ) void qv::releaseLastOther( QV_OBJ *thisObj )
{
    // Only the caller knows of an object with one reference, so that its count needs no locked instruction, unless the
    // object can be found without a reference: in a list by a snapshot, or because it is static.
    if( __builtin_expect( !thisObj->isListed && thisObj->type == QV___OBJ_TYPE_OBJECT, 1 ) )
    {
        QV_ASSERT( qv___AtomicCompareExchange32( &thisObj->retainCount, 1, 1 ) == 1 );
        qv___AtomicStoreRelease32( &thisObj->retainCount, 0 );
    }

    // Another thread may have taken a reference since the caller looked, or may take one now; then it ends the object.
    else if( qv___AtomicAdd32( &thisObj->retainCount, -1 ) != 0 )
        return;

    if( thisObj->type == QV___OBJ_TYPE_OBJECT )
        end( thisObj );
}

void qv___ObjReleaseLast( QV_OBJ *thisObj )
{
    qv::releaseLast( thisObj );
}

void qvObjRetain( QV_OBJ *obj )
{
    QV_CHECK( obj );
    qv::retain( obj );
}

void qvObjRelease( QV_OBJ *obj )
{
    QV_CHECK( obj );
    qv::release( obj );
}

int32_t qv___RetainCountIncrement( int32_t *counter )
{
    return qv___AtomicAdd32( counter, 1 );
}

int32_t qv___RetainCountDecrement( int32_t *counter )
{
    return qv___AtomicAdd32( counter, -1 );
}

int32_t qv___RetainCountValue( int32_t *counter )
{
    return QV___RETAIN_COUNT_VALUE( *counter );
}

QV_SORT *qvObjSort( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    if( thisObj->sort )
        return thisObj->sort;

    if( thisObj->type == QV___OBJ_TYPE_SORT )
        return qvSortSort();

    QV_CHECK( thisObj->type == QV___OBJ_TYPE_MODULE );
    return qvModuleSort();
}

namespace
{
// Sorts and modules, objects of different sorts, and those of sorts without an order of their own.
__attribute__( ( noinline ) ) QV_INT compareOthers( QV_OBJ *objA, QV_OBJ *objB )
{
    QV_SORT *sort = qvObjSort( objA );

    if( sort != qvObjSort( objB ) || !sort->compareFunc )
        return qvObjDefaultCompareFunc( objA, objB );

    return sort->compareFunc( objA, objB );
}
} // namespace

QV_INT qvObjCompare( QV_OBJ *objA, QV_OBJ *objB )
{
    QV_CHECK( objA );
    QV_CHECK( objB );

    if( objA == objB )
        return 0;

    QV_SORT *sort = objA->sort;

    if( sort && sort == objB->sort && sort->compareFunc )
        return sort->compareFunc( objA, objB );

    return compareOthers( objA, objB );
}

QV_INT qvObjDefaultCompareFunc( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    if( QV_INT order = qvSortCompare( qvObjSort( thisObj ), qvObjSort( thatObj ) ) )
        return order;

    QV_INT thisUnique = qv___ObjUnique( thisObj );
    QV_INT thatUnique = qv___ObjUnique( thatObj );

    return ( thisUnique > thatUnique ) - ( thisUnique < thatUnique );
}

QV_INT qv___ObjUnique( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thisObj->sort || thisObj->type != QV___OBJ_TYPE_OBJECT );

    if( thisObj->type != QV___OBJ_TYPE_OBJECT )
        return QV___UNIQUE_INVALID;

    QV_INT unique = qv___AtomicLoad64( &thisObj->unique );

    if( qv::isUniqueOfThisRun( unique ) )
        return qv::uniqueNumber( unique );

    // There is none, or one of an earlier run, which may be that of another object by now.
    QV_INT drawn = qv___UniqueGet();
    QV_INT found = qv___AtomicCompareExchange64( &thisObj->unique, unique, qv::uniqueOfThisRun( drawn ) );

    if( found == unique )
        return drawn;

    // Another thread was faster.
    qv___UniquePut( drawn );
    return qv::uniqueNumber( found );
}

QV_INT qv___ObjDbgObjectSize( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return thisObj->dbgObjectSize;
}

QV_INT qv___ObjDbgAllocationSize( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return qv___AtomicLoad64( &thisObj->dbgAllocationSize );
}

void qv___ObjDbgSetAllocationSize( QV_OBJ *thisObj, QV_INT size )
{
    QV_CHECK( thisObj );
    QV_CHECK( size >= 0 );

    QV_INT old = qv___AtomicLoad64( &thisObj->dbgAllocationSize );
    QV_CHECK_AS(
        old == qv___AtomicCompareExchange64( &thisObj->dbgAllocationSize, old, size ),
        "old == QV___ATOMIC_INT_COMPARE_EXCHANGE( &thisObj->dbgAllocationSize, old, size )" );
}

void qv___ObjDbgSetAllocationSizeN( QV_OBJ *thisObj, QV_INT count, QV_INT size )
{
    QV_CHECK( thisObj );
    QV_CHECK( count >= 0 );
    QV_CHECK( size >= 0 );
    QV_CHECK( QV_INT_MUL_OK( count, size ) );

    qv___ObjDbgSetAllocationSize( thisObj, count * size );
}
