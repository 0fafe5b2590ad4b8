#include "qv/base/qv_region.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"

struct QV_REGION : QV_OBJ
{
    QV_BARRIER *exclusiveBarrier; // closed while an exclusive user is in or has claimed the region
    QV_MONITOR *monitor;          // guards the next two
    QV_BOOL     exclusive;        // an exclusive user is in or has claimed the region
    QV_INT      sharedUsers;
    QV_BARRIER *sharedBarrier; // closed while there are shared users
};

namespace
{
// What holds while the monitor is held.
[[maybe_unused]] bool regionHolds( QV_REGION *region )
{
    return qvBarrierIsBlocked( region->exclusiveBarrier ) == region->exclusive && region->sharedUsers >= 0
           && static_cast< bool >( qvBarrierIsBlocked( region->sharedBarrier ) ) == ( region->sharedUsers > 0 );
}

// Enters the monitor at a time when no exclusive user is in or has claimed the region.
void enterUnclaimed( QV_REGION *region )
{
    for( ;; )
    {
        qvBarrierPass( region->exclusiveBarrier );
        qvMonitorEnter( region->monitor );

        if( !region->exclusive )
            return;

        // A rival has closed the barrier since.
        qvMonitorLeave( region->monitor );
    }
}

void freeRegion( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_REGION *region = qvRegionFrom( thisObj );
    qv::drop( region->exclusiveBarrier );
    qv::drop( region->sharedBarrier );
    qv::drop( region->monitor );
}
} // namespace

QV___FAMILY( Region, QV_REGION, freeRegion, nullptr, nullptr )

QV_REGION *qvRegionCreate( void )
{
    QV_REGION *region        = qv::create< QV_REGION >( qvRegionSort() );
    region->exclusiveBarrier = qvBarrierCreate( QV_FALSE );
    region->monitor          = qvMonitorCreate();
    region->exclusive        = QV_FALSE;
    region->sharedUsers      = 0;
    region->sharedBarrier    = qvBarrierCreate( QV_FALSE );

    return region;
}

void qvRegionEnterShared( QV_REGION *region )
{
    QV_CHECK( region );

    enterUnclaimed( region );
    QV_CHECK( QV_INT_ADD_OK( region->sharedUsers, 1 ) );
    region->sharedUsers++;
    qvBarrierBlock( region->sharedBarrier );
    QV_ASSERT( regionHolds( region ) );
    qvMonitorLeave( region->monitor );
}

void qvRegionEnterExclusive( QV_REGION *region )
{
    QV_CHECK( region );

    enterUnclaimed( region );
    region->exclusive = QV_TRUE;
    qvBarrierBlock( region->exclusiveBarrier );
    QV_ASSERT( regionHolds( region ) );
    qvMonitorLeave( region->monitor );

    // Until the last shared user has left.
    qvBarrierPass( region->sharedBarrier );
}

void qvRegionEnter( QV_REGION *region, QV_BOOL exclusive )
{
    if( exclusive )
        qvRegionEnterExclusive( region );
    else
        qvRegionEnterShared( region );
}

void qvRegionLeave( QV_REGION *region )
{
    QV_CHECK( region );

    qv::HeldMonitor held( region->monitor );

    // While an exclusive user waits for shared users to leave, every leave is that of a shared user.
    if( region->sharedUsers >= 1 )
    {
        if( --region->sharedUsers == 0 )
            qvBarrierUnblock( region->sharedBarrier );

        QV_ASSERT( regionHolds( region ) );
        return;
    }

    QV_CHECK( region->exclusive );
    region->exclusive = QV_FALSE;
    qvBarrierUnblock( region->exclusiveBarrier );
    QV_ASSERT( regionHolds( region ) );
}
