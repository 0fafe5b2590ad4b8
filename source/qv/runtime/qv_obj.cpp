#include "qv/runtime/qv_obj.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_stack_trace.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_unique_private.h"

#include <string.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#endif

QV_BOOL qv___ObjOdbIsEnabled = QV_FALSE;
QV_BOOL qv___ObjOrigin       = QV_FALSE;

namespace
{
QV___LOCK *odbLock = nullptr; // guards the lists of all sorts and modules; exists with the database only

void linkSort( QV_OBJ *result )
{
    QV_MODULE *module = result->sort->module;

    QV_CHECK( result->sort->sortsNext == NULL );
    QV_CHECK( result->sort->sortsPrevious == NULL );

    result->sort->sortsPrevious = module->sortsLast;

    if( module->sortsLast )
        module->sortsLast->sortsNext = result->sort;
    else
        module->sortsFirst = result->sort;

    module->sortsLast = result->sort;
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
}

// More live objects of the sort, and maybe one more sort of its module. The module's count goes up with the first
// object of a sort and down with its last.
void countIn( QV_SORT *sort, int32_t objects )
{
    if( qv___AtomicAdd32( &sort->objects, objects ) == objects && sort->module )
        qv___AtomicAdd32( &sort->module->sorts, 1 );
}

void countOut( QV_SORT *sort, int32_t objects )
{
    if( qv___AtomicAdd32( &sort->objects, -objects ) == 0 && sort->module )
        qv___AtomicAdd32( &sort->module->sorts, -1 );
}

// The same for one object with the database, and the lists. Its lock is held, so that the objects are counted without a
// locked instruction.
void enter( QV_OBJ *result )
{
    QV_SORT *sort    = result->sort;
    int32_t  objects = qv___AtomicLoad32( &sort->objects ) + 1;

    qv___AtomicStoreRelease32( &sort->objects, objects );

    if( objects == 1 && sort->module )
    {
        qv___AtomicAdd32( &sort->module->sorts, 1 );
        linkSort( result );
    }

    result->odbPrevious = sort->odbLast;

    if( sort->odbLast )
        sort->odbLast->odbNext = result;
    else
        sort->odbFirst = result;

    sort->odbLast = result;
}

void unlinkObject( QV_OBJ *object )
{
    if( object->odbPrevious )
        object->odbPrevious->odbNext = object->odbNext;
    else
        object->sort->odbFirst = object->odbNext;

    if( object->odbNext )
        object->odbNext->odbPrevious = object->odbPrevious;
    else
        object->sort->odbLast = object->odbPrevious;
}

void countListedOut( QV_SORT *sort )
{
    int32_t objects = qv___AtomicLoad32( &sort->objects ) - 1;

    qv___AtomicStoreRelease32( &sort->objects, objects );

    if( objects == 0 && sort->module )
    {
        unlinkSort( sort );
        qv___AtomicAdd32( &sort->module->sorts, -1 );
    }
}

// One more reference, for somebody who holds none but the lock of the lists: an object whose count is 0 is about to be
// taken out of its list and cannot be had any more. A count above 0 must not become 0 in between.
bool retainLive( QV_OBJ *object )
{
    int32_t count = qv___AtomicLoad32( &object->retainCount );

    while( count != 0 )
    {
        int32_t found = qv___AtomicCompareExchange32( &object->retainCount, count, count + 1 );

        if( found == count )
            return true;

        count = found;
    }

    return false;
}
} // namespace

void qv___ObjStartup( void )
{
    QV_INT flags = qvRuntimeFlags();

    qv::objLogLock       = qv___LockCreate();
    qv___ObjOdbIsEnabled = ( flags & QV_RUNTIME_FLAG_OBJECT_DATABASE ) ? QV_TRUE : QV_FALSE;

    if( qv___ObjOdbIsEnabled )
        odbLock = qv___LockCreate();

    qv___ObjOrigin = ( flags & QV_RUNTIME_FLAG_OBJECT_ORIGIN ) ? QV_TRUE : QV_FALSE;
}

void qv___ObjShutdown( void )
{
    qv___LockDestroy( qv::objLogLock );

    if( odbLock )
        qv___LockDestroy( odbLock );

    qv::objLogLock       = nullptr;
    odbLock              = nullptr;
    qv___ObjOdbIsEnabled = QV_FALSE;
    qv___ObjOrigin       = QV_FALSE;
}

/* The database --------------------------------------------------------------------------------------------------- */

QV_BOOL qv___ObjOdbEnabled( void )
{
    return qv___ObjOdbIsEnabled;
}

void qv___ObjOdbLock( void )
{
    QV_CHECK_AS( qv___ObjOdbIsEnabled, "odbEnabled" );
    qv___LockAcquire( odbLock );
}

void qv___ObjOdbUnlock( void )
{
    QV_CHECK_AS( qv___ObjOdbIsEnabled, "odbEnabled" );
    qv___LockRelease( odbLock );
}

void qv::Snapshot::makeRoom( QV_INT count )
{
    if( size_ - length_ >= count )
        return;

    size_ = qvIntMax( length_ + count, size_ * 2 );
    objs_ = static_cast< QV_OBJ ** >( qvMemReallocN( objs_, size_, sizeof( QV_OBJ * ) ) );
}

void qv::Snapshot::add( QV_OBJ *object )
{
    makeRoom( 1 );
    objs_[length_++] = retain( object );
}

void qv::Snapshot::addObjects( QV_SORT *sort )
{
    makeRoom( qv___AtomicLoad32( &sort->objects ) ); // the list is never longer

    for( QV_OBJ *object = sort->odbFirst; object; object = object->odbNext )
        if( retainLive( object ) )
            objs_[length_++] = object;
}

QV_VECTOR *qv::Snapshot::vector()
{
    Ref< QV_VECTOR > empty( qvVectorCreate() );
    Ref< QV_VECTOR > result( qvVectorCreateFrom( empty ) );

    qv___VectorPushNoRetain( result.at(), objs_, length_ );
    qvMemFree( objs_ );

    return result.give();
}

/* Creation and destruction --------------------------------------------------------------------------------------- */

namespace
{
// Recording the stack of a creation creates objects of these sorts, and so does not record theirs.
bool recordsOrigin( QV_SORT *sort )
{
    return sort != qvStringSort() && sort != qvVectorSort() && sort != qvDictSort() && sort != qvBufferSort()
           && sort != qvStackTraceSort();
}

// Inline in all functions that create, so that each has one frame on the stack of a creation.
__attribute__( ( always_inline ) ) inline QV_OBJ *
createObject( void *memory, uint32_t sharedOffset, QV_INT size, QV_SORT *sort, bool isCounted = false )
{
    QV_OBJ *result = static_cast< QV_OBJ * >( memory );

    result->type              = QV___OBJ_TYPE_OBJECT;
    result->sort              = sort;
    result->unique            = QV___UNIQUE_INVALID;
    result->retainCount       = 1;
    result->sharedOffset      = sharedOffset;
    result->dbgObjectSize     = size;
    result->dbgAllocationSize = 0;
    result->logFirst          = nullptr;
    result->logLast           = nullptr;
    result->odbPrevious       = nullptr;
    result->odbNext           = nullptr;

    if( __builtin_expect( !qv___ObjOdbIsEnabled, 1 ) )
    {
        if( !isCounted )
            countIn( sort, 1 );

        return result;
    }

    {
        qv::HeldLock held( odbLock );
        enter( result );
    }

    if( qv___ObjOrigin && recordsOrigin( sort ) )
        qv___ObjLogAppendCallStack( result, 1, QV_INT_MAX );

    return result;
}

// Memory that objects share begins with the number of its users: the objects, and the batch as long as it adds some.
// Since it doesn't know how many that will be, it counts as more than there can be.
const QV_INT  SHARED_HEAD  = 8;
const QV_INT  SHARED_SIZE  = 2000;
const QV_INT  SHARED_LIMIT = SHARED_SIZE / 4; // larger objects have their own memory
const int32_t BATCH_USES   = SHARED_SIZE;
const QV_INT  FEW          = 8;  // objects that the C library keeps blocks for at hand
const int32_t COUNTED      = 32; // objects that a batch counts in at once

int32_t *usersOf( void *memory )
{
    return static_cast< int32_t * >( memory );
}

// The last one needs no locked instruction, as in a release.
void leaveShared( void *memory, int32_t uses )
{
    if( qv___AtomicLoad32( usersOf( memory ) ) == uses || qv___AtomicAdd32( usersOf( memory ), -uses ) == 0 )
        qvMemFree( memory );
}

// Ends an object that nobody holds.
void end( QV_OBJ *thisObj )
{
    QV_SORT *sort = thisObj->sort;
    QV_CHECK_AS( sort, "thisObj->type != QV___OBJ_TYPE_OBJECT || thisObj->sort" );

    QV___FREE_FUNC freeFunc = sort->freeFunc;

    if( freeFunc )
    {
        // Out of the list first, so that no snapshot finds an object whose free function runs.
        if( __builtin_expect( qv___ObjOdbIsEnabled, 0 ) )
        {
            qv::HeldLock held( odbLock );
            unlinkObject( thisObj );
        }

        freeFunc( thisObj );
    }

    if( qv___AtomicLoad64( &thisObj->dbgAllocationSize ) != 0 )
        qv___Abort(
            "Allocation size failure", QV___SOURCE, __LINE__,
            "!QV___ATOMIC_INT_COMPARE_EXCHANGE( &thisObj->dbgAllocationSize, 0, 0 )" );

    if( __builtin_expect( thisObj->logFirst != nullptr, 0 ) )
        qv::freeObjLog( thisObj );

    QV_INT unique = thisObj->unique;

    if( unique != QV___UNIQUE_INVALID )
        qv___UniquePut( unique );

    // The counts go down last: when a module's count of sorts reaches 0, none of its code runs for an object.
    if( __builtin_expect( !qv___ObjOdbIsEnabled, 1 ) )
    {
        countOut( sort, 1 );
    }
    else
    {
        qv::HeldLock held( odbLock );

        if( !freeFunc )
            unlinkObject( thisObj ); // only here, which saves the lock once

        countListedOut( sort );
    }

    uint32_t                sharedOffset = thisObj->sharedOffset;
    char                   *memory       = reinterpret_cast< char * >( thisObj ) - sharedOffset;
    [[maybe_unused]] QV_INT size         = thisObj->dbgObjectSize;

    memset( static_cast< void * >( thisObj ), 0xFF, sizeof( QV_OBJ ) );
    __asm__ volatile( "" : : "r"( thisObj ) : "memory" ); // the compiler would drop stores to memory that is freed

    if( sharedOffset == 0 )
    {
        qvMemFree( memory );
        return;
    }

#ifdef __SANITIZE_ADDRESS__
    __asan_poison_memory_region( thisObj, static_cast< size_t >( size ) ); // though the memory isn't freed yet
#endif
    leaveShared( memory, 1 );
}
} // namespace

QV_OBJ *qv___ObjCreate( QV_INT size, QV_SORT *sort )
{
    QV_CHECK( sort );
    return createObject( qvMemAlloc( size ), 0, size, sort );
}

QV_OBJ *qv::createWithRoom( QV_INT size, QV_INT extraBytes, QV_SORT *sort )
{
    QV_CHECK( sort );
    return createObject( qvMemAlloc( size + extraBytes ), 0, size, sort );
}

// Not more than has been needed so far.
void qv::ObjBatch::open( QV_INT bytes )
{
    close();

    QV_INT size = qvIntMin( SHARED_HEAD + qvIntMax( bytes_, bytes ), SHARED_SIZE );

    memory_             = static_cast< char * >( qvMemAlloc( size ) );
    next_               = memory_ + SHARED_HEAD;
    end_                = memory_ + size;
    users_              = 0;
    *usersOf( memory_ ) = BATCH_USES;
}

void qv::ObjBatch::close()
{
    if( memory_ )
        leaveShared( memory_, BATCH_USES - users_ );

    memory_ = nullptr;
}

qv::ObjBatch::~ObjBatch()
{
    close();

    if( counted_ > 0 )
        countOut( sort_, counted_ );
}

QV_OBJ *qv::ObjBatch::create( QV_INT size, QV_INT extraBytes )
{
    QV_INT bytes = ( size + extraBytes + 7 ) & ~QV_INT( 7 );

    if( counted_ == 0 && !qv___ObjOdbIsEnabled )
    {
        counted_ = objects_ < FEW ? int32_t( FEW ) : COUNTED;
        countIn( sort_, counted_ );
    }

    bool isCounted = counted_ > 0;
    counted_ -= isCounted;

    if( objects_ < FEW || bytes > SHARED_LIMIT )
    {
        objects_++;
        bytes_ += bytes;
        return createObject( qvMemAlloc( size + extraBytes ), 0, size, sort_, isCounted );
    }

    if( !memory_ || end_ - next_ < bytes )
        open( bytes );

    char *at = next_;
    next_ += bytes;
    bytes_ += bytes;
    users_++;

    return createObject( at, static_cast< uint32_t >( at - memory_ ), size, sort_, isCounted );
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

void qv___ObjReleaseLast( QV_OBJ *thisObj )
{
    if( __builtin_expect( !qv___ObjOdbIsEnabled, 1 ) )
        qv___AtomicStoreRelease32( &thisObj->retainCount, 0 );

    // A snapshot may have taken a reference since the caller looked, or may do so right now; then it ends the object.
    else if( qv___AtomicAdd32( &thisObj->retainCount, -1 ) != 0 )
        return;

    if( thisObj->type == QV___OBJ_TYPE_OBJECT )
        end( thisObj );
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

QV_INT qvObjCompare( QV_OBJ *objA, QV_OBJ *objB )
{
    QV_CHECK( objA );
    QV_CHECK( objB );

    if( objA == objB )
        return 0;

    QV_SORT *sort = qvObjSort( objA );

    if( sort != qvObjSort( objB ) || !sort->compareFunc )
        return qvObjDefaultCompareFunc( objA, objB );

    return sort->compareFunc( objA, objB );
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

QV_STRING *qvObjToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    qv::Ref< QV_SORT > sort = qv::Ref< QV_SORT >::share( qvObjSort( thisObj ) );
    QV_STRING *result = sort->toStringFunc ? sort->toStringFunc( thisObj ) : qvObjDefaultToStringFunc( thisObj );
    QV_CHECK( result );

    return result;
}

QV_STRING *qvObjDefaultToStringFunc( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    return qvStringCreateFromFormatCstr(
        "%~s(%^!16i)", -1, qvSortName( qvObjSort( thisObj ) ), qv___ObjUnique( thisObj ) );
}

QV_INT qv___ObjUnique( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thisObj->sort || thisObj->type != QV___OBJ_TYPE_OBJECT );

    if( thisObj->type != QV___OBJ_TYPE_OBJECT )
        return QV___UNIQUE_INVALID;

    QV_INT unique = qv___AtomicLoad64( &thisObj->unique );

    if( unique != QV___UNIQUE_INVALID )
        return unique;

    QV_INT drawn = qv___UniqueGet();
    unique       = qv___AtomicCompareExchange64( &thisObj->unique, QV___UNIQUE_INVALID, drawn );

    if( unique == QV___UNIQUE_INVALID )
        return drawn;

    // Another thread was faster.
    qv___UniquePut( drawn );
    return unique;
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
