#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

namespace
{
// Takes a reference for a caller that holds none, but the lock of the lists. False for an object whose count is 0: it
// is about to leave its list and to end. A count above 0 is raised only if it has not become 0 meanwhile.
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

void qv::Snapshot::addObjects( QV_SORT *sort, bool withOwn )
{
    makeRoom( sort->listed ); // the list is never longer

    for( QV_OBJ *object = sort->odbFirst; object; object = object->odbNext )
        if( ( withOwn || !( object->isListed & IS_OWN ) ) && retainLive( object ) )
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
