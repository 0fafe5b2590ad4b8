#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_lock_private.h"
#include "qv/sys/qv_mem.h"

#include <pthread.h>

struct QV___LOCK
{
    pthread_mutex_t mutex;
};

namespace
{
constinit QV___LOCK lists = { PTHREAD_MUTEX_INITIALIZER };
}

QV___LOCK *const qv::listsLock = &lists;

QV___LOCK *qv___LockCreate( void )
{
    QV___LOCK *lock = static_cast< QV___LOCK * >( qvMemAlloc( sizeof( QV___LOCK ) ) );

    if( pthread_mutex_init( &lock->mutex, nullptr ) )
        qv___Abort( "mutex initialization failed", QV___SOURCE, __LINE__, nullptr );

    return lock;
}

void qv___LockDestroy( QV___LOCK *lock )
{
    QV_CHECK( lock );

    if( pthread_mutex_destroy( &lock->mutex ) )
        qv___Abort( "mutex destruction failed", QV___SOURCE, __LINE__, nullptr );

    qvMemFree( lock );
}

void qv___LockAcquire( QV___LOCK *lock )
{
    QV_CHECK( lock );

    if( pthread_mutex_lock( &lock->mutex ) )
        qv___Abort( "failed to lock mutex", QV___SOURCE, __LINE__, nullptr );
}

void qv___LockRelease( QV___LOCK *lock )
{
    QV_CHECK( lock );

    if( pthread_mutex_unlock( &lock->mutex ) )
        qv___Abort( "failed to unlock mutex", QV___SOURCE, __LINE__, nullptr );
}
