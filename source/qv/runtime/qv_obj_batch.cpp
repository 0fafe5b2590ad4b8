#include "qv/runtime/qv_obj_life_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_mem_private.h"
#include "qv/sys/qv_slab_private.h"

#include <string.h>

namespace
{
// What memory that objects share begins with. Each object is a use of it, and the batch is BATCH_USES while it adds
// objects: since it doesn't know how many there will be, that is more than there can be.
struct Shared
{
    int32_t uses; // atomic
    int32_t isInSlab;
};

const QV_INT  SHARED_SIZE  = qv::SLAB_PART;
const QV_INT  SHARED_LIMIT = SHARED_SIZE / 4; // larger objects have their own memory
const int32_t BATCH_USES   = SHARED_SIZE;
const QV_INT  FEW          = 8;        // so many objects have memory of their own, which allocators have at hand
const QV_INT  MANY         = 16 << 10; // bytes of objects after which memory comes from slabs

static_assert( SHARED_SIZE < QV___MEMORY_ENDS_ALONE, "an object's header holds the distance in 15 bits" );

Shared *sharedAt( void *memory )
{
    return static_cast< Shared * >( memory );
}
} // namespace

// A caller that finds no uses but its own is the last, since the uses of others never rise again: no locked instruction
// then.
void qv::leaveShared( void *memory, int32_t uses )
{
    Shared *shared = sharedAt( memory );
    QV_ASSERT( qv___AtomicLoad32( &shared->uses ) >= uses );

    if( qv___AtomicLoad32( &shared->uses ) != uses && qv___AtomicAdd32( &shared->uses, -uses ) != 0 )
        return;

    if( shared->isInSlab )
        leaveSlabPart( memory );
    else
        qv::freeBlock( memory );
}

// As much as all objects so far have needed, up to SHARED_SIZE, which is the size of what comes from slabs too.
void qv::ObjBatch::open( QV_INT bytes )
{
    close();

    QV_INT size = qvIntMin( QV_INT( sizeof( Shared ) ) + qvIntMax( bytes_, bytes ), SHARED_SIZE );
    char  *part = bytes_ >= MANY ? static_cast< char * >( takeSlabPart() ) : nullptr;

    memory_              = part ? part : static_cast< char * >( qvMemAlloc( size ) );
    next_                = memory_ + sizeof( Shared );
    end_                 = memory_ + size;
    users_               = 0;
    *sharedAt( memory_ ) = { BATCH_USES, part != nullptr };
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
}

QV_OBJ *qv::ObjBatch::create( QV_INT size, QV_INT extraBytes, uint16_t ends )
{
    QV_INT bytes = ( size + extraBytes + 7 ) & ~QV_INT( 7 );

    if( objects_ < FEW )
        if( QV_OBJ *object = createQuickly( size, extraBytes, sort_, ends ) )
        {
            objects_++;
            bytes_ += bytes;
            return object;
        }

    return createOther( size, extraBytes, ends );
}

// A function of its own, so that the other one saves no registers for it. It is a frame of the stack, too.
__attribute__( ( noinline ) ) QV_OBJ *qv::ObjBatch::createOther( QV_INT size, QV_INT extraBytes, uint16_t ends )
{
    const QV_INT FRAMES = 2;

    QV_INT bytes = ( size + extraBytes + 7 ) & ~QV_INT( 7 );

    if( !counts_ && !qv___ObjRun )
        counts_ = countsOf( sort_ );

    if( objects_ < FEW || bytes > SHARED_LIMIT )
    {
        objects_++;
        bytes_ += bytes;
        return createOwn( size, extraBytes, sort_, counts_, ends, FRAMES );
    }

    if( !memory_ || end_ - next_ < bytes )
        open( bytes );

    char *at = next_;
    next_ += bytes;
    bytes_ += bytes;
    users_++;

    return createObject( at, static_cast< uint16_t >( ( at - memory_ ) | ends ), size, sort_, counts_, FRAMES );
}

/* Releases ------------------------------------------------------------------------------------------------------- */

// Ends an object that only the caller knows of, unless its end takes more than that of most.
bool qv::ObjReleases::endLeaf( QV_OBJ *object )
{
    QV_SORT       *sort     = object->sort;
    QV___FREE_FUNC freeFunc = sort->freeFunc;

    if( object->logFirst || object->unique != QV___UNIQUE_INVALID || ( !freeFunc && object->dbgAllocationSize != 0 ) )
        return false;

    QV_ASSERT( qv___AtomicCompareExchange32( &object->retainCount, 1, 1 ) == 1 );
    qv___AtomicStoreRelease32( &object->retainCount, 0 );

    if( freeFunc && !endsWithoutFree( object->memory ) )
        freeFunc( object );

    QV_ASSERT( object->dbgAllocationSize == 0 );

    countOut( sort );

    uint16_t memory = memoryAlone( object->memory );
    QV_INT   size   = object->dbgObjectSize;

    fillEnded( object );

    if( isOwn( memory ) )
    {
        giveMemory( object, memory );
        return true;
    }

    poison( object, static_cast< size_t >( size ) ); // though the memory isn't freed yet

    char *shared = reinterpret_cast< char * >( object ) - memory;

    if( shared != memory_ )
    {
        if( left_ > 0 )
            leaveShared( memory_, left_ );

        memory_ = shared;
        left_   = 0;
    }

    left_++;
    return true;
}

qv::ObjReleases::~ObjReleases()
{
    if( left_ > 0 )
        leaveShared( memory_, left_ );
}
