#include "qv/base/qv_monitor.h"

#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_lock_private.h"

struct QV_MONITOR : QV_OBJ
{
    int32_t    entered; // written only while the lock is held
    QV___LOCK *lock;
};

namespace
{
void freeMonitor( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_MONITOR *monitor = qvMonitorFrom( thisObj );
    QV_CHECK( !monitor->entered );
    qv___LockDestroy( monitor->lock );
}
} // namespace

QV___FAMILY( Monitor, QV_MONITOR, freeMonitor, nullptr, nullptr )

QV_MONITOR *qvMonitorCreate( void )
{
    QV_MONITOR *monitor = qv::create< QV_MONITOR >( qvMonitorSort() );
    monitor->entered    = QV_FALSE;
    monitor->lock       = qv___LockCreate();
    QV_CHECK( monitor->lock );

    return monitor;
}

void qvMonitorEnter( QV_MONITOR *monitor )
{
    QV_CHECK( monitor );

    qv___LockAcquire( monitor->lock );
    QV_CHECK( !monitor->entered );
    monitor->entered = QV_TRUE;
}

void qvMonitorLeave( QV_MONITOR *monitor )
{
    QV_CHECK( monitor );
    QV_CHECK( monitor->entered );

    monitor->entered = QV_FALSE;
    qv___LockRelease( monitor->lock );
}
