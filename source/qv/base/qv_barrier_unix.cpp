#include "qv/base/qv_barrier.h"

#include "qv/base/qv_timestamp.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"

#include <errno.h>
#include <pthread.h>
#include <time.h>

struct QV_BARRIER : QV_OBJ
{
    pthread_mutex_t mutex; // guards `open`
    pthread_cond_t  cond;
    int32_t         open;
};

namespace
{
const QV_INT LONGEST_WAIT = 1000; // milliseconds
const long   SECOND       = 1000000000L;

void lockBarrier( QV_BARRIER *barrier )
{
    if( pthread_mutex_lock( &barrier->mutex ) )
        qv___Abort( "failed to lock mutex", QV___SOURCE, __LINE__, nullptr );
}

void unlockBarrier( QV_BARRIER *barrier )
{
    if( pthread_mutex_unlock( &barrier->mutex ) )
        qv___Abort( "failed to unlock mutex", QV___SOURCE, __LINE__, nullptr );
}

void freeBarrier( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_BARRIER *barrier = qvBarrierFrom( thisObj );

    if( pthread_mutex_destroy( &barrier->mutex ) )
        qv___Abort( "mutex destruction failed", QV___SOURCE, __LINE__, nullptr );

    if( pthread_cond_destroy( &barrier->cond ) )
        qv___Abort( "cond destruction failed", QV___SOURCE, __LINE__, nullptr );
}

// The time of the real-time clock in so many milliseconds, 1000 at most.
timespec deadlineIn( QV_INT millisec )
{
    timespec ts;

    if( clock_gettime( CLOCK_REALTIME, &ts ) )
        qv___Abort( "failed to get time (realtime)", QV___SOURCE, __LINE__, nullptr );

    QV_CHECK( ts.tv_nsec < 1000000000L );
    ts.tv_nsec += static_cast< long >( millisec ) * 1000000L;

    if( ts.tv_nsec > SECOND - 1 )
    {
        ts.tv_sec++;
        ts.tv_nsec -= SECOND;
    }

    return ts;
}
} // namespace

QV___FAMILY( Barrier, QV_BARRIER, freeBarrier, nullptr, nullptr )

QV_BARRIER *qvBarrierCreate( QV_BOOL blocked )
{
    QV_BARRIER *barrier = qv::create< QV_BARRIER >( qvBarrierSort() );

    if( pthread_mutex_init( &barrier->mutex, nullptr ) )
        qv___Abort( "mutex initialization failed", QV___SOURCE, __LINE__, nullptr );

    if( pthread_cond_init( &barrier->cond, nullptr ) )
        qv___Abort( "cond initialization failed", QV___SOURCE, __LINE__, nullptr );

    barrier->open = blocked ? QV_FALSE : QV_TRUE;
    return barrier;
}

QV_BOOL qvBarrierIsBlocked( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );

    lockBarrier( barrier );
    QV_BOOL blocked = barrier->open ? QV_FALSE : QV_TRUE;
    unlockBarrier( barrier );

    return blocked;
}

void qvBarrierPass( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );

    lockBarrier( barrier );

    while( !barrier->open )
        if( pthread_cond_wait( &barrier->cond, &barrier->mutex ) )
            qv___Abort( "cond wait failed", QV___SOURCE, __LINE__, nullptr );

    unlockBarrier( barrier );
}

QV_BOOL qvBarrierPassTimed( QV_BARRIER *barrier, QV_INT millisec )
{
    QV_CHECK( barrier );
    QV_CHECK( millisec == -1 || millisec >= 0 );

    if( millisec == -1 )
    {
        qvBarrierPass( barrier );
        return QV_TRUE;
    }

    QV_INT start = qvTimestamp();
    lockBarrier( barrier );

    for( ;; )
    {
        if( barrier->open )
        {
            unlockBarrier( barrier );
            return QV_TRUE;
        }

        QV_INT elapsed = qvTimestamp() - start;

        if( elapsed >= millisec )
        {
            unlockBarrier( barrier );
            return QV_FALSE;
        }

        timespec deadline = deadlineIn( qvIntMin( millisec - elapsed, LONGEST_WAIT ) );
        int      result   = pthread_cond_timedwait( &barrier->cond, &barrier->mutex, &deadline );

        if( result && result != ETIMEDOUT )
            qv___Abort( "failed to wait on condition variable", QV___SOURCE, __LINE__, nullptr );
    }
}

void qvBarrierBlock( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );

    lockBarrier( barrier );
    barrier->open = QV_FALSE;
    unlockBarrier( barrier );
}

void qvBarrierUnblock( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );

    lockBarrier( barrier );
    barrier->open = QV_TRUE;

    if( pthread_cond_broadcast( &barrier->cond ) )
        qv___Abort( "failed to broadcast condition", QV___SOURCE, __LINE__, nullptr );

    unlockBarrier( barrier );
}
