#include "qv/runtime/qv_obj_life_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

namespace
{
// Memory that objects share begins with the number of its uses: one for each object, and BATCH_USES for the batch while
// it adds objects. Since the batch doesn't know how many there will be, that is more than there can be.
const QV_INT  SHARED_HEAD  = 8;
const QV_INT  SHARED_SIZE  = 2000;
const QV_INT  SHARED_LIMIT = SHARED_SIZE / 4; // larger objects have their own memory
const int32_t BATCH_USES   = SHARED_SIZE;
const QV_INT  FEW          = 8;  // so many objects have memory of their own, which allocators have at hand
const int32_t COUNTED      = 32; // so many objects are counted in at once

static_assert( SHARED_SIZE <= UINT16_MAX, "an object's header holds the distance in two bytes" );

int32_t *usersOf( void *memory )
{
    return static_cast< int32_t * >( memory );
}
} // namespace

// A caller that finds no uses but its own is the last, since the uses of others never rise again: no locked instruction
// then.
void qv::leaveShared( void *memory, int32_t uses )
{
    QV_ASSERT( qv___AtomicLoad32( usersOf( memory ) ) >= uses );

    if( qv___AtomicLoad32( usersOf( memory ) ) == uses || qv___AtomicAdd32( usersOf( memory ), -uses ) == 0 )
        qvMemFree( memory );
}

// As much as all objects so far have needed, up to SHARED_SIZE.
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

    return createObject( at, static_cast< uint16_t >( at - memory_ ), size, sort_, isCounted );
}
