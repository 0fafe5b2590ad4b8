#include "qv/base/qv_counter.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"

struct QV_COUNTER : QV_OBJ
{
    QV_MONITOR *monitor; // guards `value`
    QV_BARRIER *barrier; // closed while `value` is above 0
    QV_INT      value;
};

namespace
{
// What holds while the monitor is held.
[[maybe_unused]] bool counterHolds( QV_COUNTER *ctr )
{
    return static_cast< bool >( qvBarrierIsBlocked( ctr->barrier ) ) == ( ctr->value > 0 );
}

void freeCounter( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_COUNTER *ctr = qvCounterFrom( thisObj );

    // A thread that has waited for zero may get here while the one that opened the barrier still holds the monitor.
    qvMonitorEnter( ctr->monitor );
    qvMonitorLeave( ctr->monitor );

    qv::drop( ctr->monitor );
    qv::drop( ctr->barrier );
}
} // namespace

QV___FAMILY( Counter, QV_COUNTER, freeCounter, nullptr, nullptr )

QV_COUNTER *qvCounterCreate( void )
{
    QV_COUNTER *ctr = qv::create< QV_COUNTER >( qvCounterSort() );
    ctr->monitor    = qvMonitorCreate();
    ctr->barrier    = qvBarrierCreate( QV_FALSE );
    ctr->value      = 0;

    return ctr;
}

QV_INT qvCounterValue( QV_COUNTER *ctr )
{
    QV_CHECK( ctr );

    qv::HeldMonitor held( ctr->monitor );
    return ctr->value;
}

void qvCounterIncrement( QV_COUNTER *ctr )
{
    QV_CHECK( ctr );

    qv::HeldMonitor held( ctr->monitor );
    QV_CHECK( ctr->value >= 0 );
    QV_CHECK( ctr->value < QV_INT_MAX );

    if( ctr->value++ == 0 )
        qvBarrierBlock( ctr->barrier );

    QV_ASSERT( counterHolds( ctr ) );
}

void qvCounterDecrement( QV_COUNTER *ctr )
{
    QV_CHECK( ctr );

    qv::HeldMonitor held( ctr->monitor );
    QV_CHECK( ctr->value > 0 );

    if( --ctr->value == 0 )
        qvBarrierUnblock( ctr->barrier );

    QV_ASSERT( counterHolds( ctr ) );
}

void qvCounterWaitZero( QV_COUNTER *ctr )
{
    QV_CHECK( ctr );
    qvBarrierPass( ctr->barrier );
}

QV_BOOL qvCounterWaitZeroTimed( QV_COUNTER *ctr, QV_INT millisec )
{
    QV_CHECK( ctr );
    return qvBarrierPassTimed( ctr->barrier, millisec );
}
