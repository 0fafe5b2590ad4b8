#include "qv/base/qv_monitor_private.h"

#include "qv/runtime/qv_ref.h"

namespace
{
// Read only: a thread that asks for a lock that another one holds gets an answer that may be old.
bool isEntered( QV_MONITOR *monitor )
{
    return __atomic_load_n( &monitor->lock.held, __ATOMIC_RELAXED ) != 0;
}

void freeMonitor( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_MONITOR *monitor = qvMonitorFrom( thisObj );
    QV_CHECK_AS( !isEntered( monitor ), "!monitor->entered" );
}
} // namespace

QV___FAMILY( Monitor, QV_MONITOR, freeMonitor, nullptr, nullptr )

QV_MONITOR *qvMonitorCreate( void )
{
    QV_MONITOR *monitor = qv::create< QV_MONITOR >( qvMonitorSort() );
    monitor->lock       = {};

    return monitor;
}

void qvMonitorEnter( QV_MONITOR *monitor )
{
    QV_CHECK( monitor );

    if( !qv::tryAcquire( &monitor->lock ) )
        qv::acquire( &monitor->lock );
}

void qvMonitorLeave( QV_MONITOR *monitor )
{
    QV_CHECK( monitor );
    QV_CHECK_AS( isEntered( monitor ), "monitor->entered" );

    qv::leaveMonitor( monitor );
}
