#include "qv/base/qv_condset.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_timestamp.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"

struct QV_CONDSET : QV_OBJ
{
    QV_BARRIER *gateBarrier; // closed during a change; all operations pass it first
    QV_MONITOR *monitor;     // guards the next three
    QV_BOOL     changing;    // a change is under way
    QV_INT      usersCount;  // threads inside a wait
    QV_INT      conditions;
    QV_BARRIER *wakeBarrier; // waiters sleep here; open only during a change
    QV_BARRIER *idleBarrier; // closed while `usersCount` is above 0
};

namespace
{
const QV_INT CONDITIONS = 0xffff;

void freeCondset( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_CONDSET *cs = qvCondsetFrom( thisObj );
    qv::drop( cs->gateBarrier );
    qv::drop( cs->monitor );
    qv::drop( cs->wakeBarrier );
    qv::drop( cs->idleBarrier );
}

// What holds while the monitor is held and no change is under way.
[[maybe_unused]] bool condsetHolds( QV_CONDSET *cs )
{
    return !cs->changing && ( cs->conditions & ~CONDITIONS ) == 0 && cs->usersCount >= 0
           && !qvBarrierIsBlocked( cs->gateBarrier ) && qvBarrierIsBlocked( cs->wakeBarrier )
           && static_cast< bool >( qvBarrierIsBlocked( cs->idleBarrier ) ) == ( cs->usersCount > 0 );
}

// Enters the monitor at a time when no change is under way.
void enterCondset( QV_CONDSET *cs )
{
    for( ;; )
    {
        qvBarrierPass( cs->gateBarrier );
        qvMonitorEnter( cs->monitor );

        if( !cs->changing )
        {
            QV_ASSERT( condsetHolds( cs ) );
            return;
        }

        // A rival has closed the gate since.
        qvMonitorLeave( cs->monitor );
    }
}

// Replaces the conditions of `mask` by `conditions` and keeps the others. Called with the monitor entered, returns with
// it left. All waiters are woken and out of the wait before the change; then they look again, so none sleeps through
// it.
void changeCondset( QV_CONDSET *cs, QV_INT mask, QV_INT conditions )
{
    qvBarrierBlock( cs->gateBarrier );
    cs->changing = QV_TRUE;
    qvBarrierUnblock( cs->wakeBarrier );
    qvMonitorLeave( cs->monitor );

    qvBarrierPass( cs->idleBarrier );

    qv::HeldMonitor held( cs->monitor );
    qvBarrierBlock( cs->wakeBarrier );
    cs->conditions = ( cs->conditions & ~mask ) | conditions;
    cs->changing   = QV_FALSE;
    qvBarrierUnblock( cs->gateBarrier );
    QV_ASSERT( condsetHolds( cs ) );
}

// What a wait returns when it finds the conditions `present`; 0 to go on waiting.
using Satisfied = QV_INT ( * )( QV_INT present, QV_INT conditions );

QV_INT satisfiesAny( QV_INT present, QV_INT conditions )
{
    return present & conditions;
}

QV_INT satisfiesAll( QV_INT present, QV_INT conditions )
{
    return present == conditions ? conditions : 0;
}

// Milliseconds left of a limit that began at the timestamp `start`, or -1 when it has passed.
QV_INT millisecondsLeft( QV_INT start, QV_INT millisec )
{
    QV_INT elapsed = qvTimestamp() - start;
    return elapsed > millisec ? -1 : millisec - elapsed;
}

// A negative limit is none.
QV_INT waitForConditions( QV_CONDSET *cs, QV_INT conditions, QV_INT millisec, Satisfied satisfied )
{
    conditions &= CONDITIONS;

    if( !conditions )
        return 0;

    bool   timed = millisec >= 0;
    QV_INT start = timed ? qvTimestamp() : 0;
    QV_INT left  = -1; // no limit

    for( ;; )
    {
        enterCondset( cs );

        if( QV_INT result = satisfied( cs->conditions, conditions ) )
        {
            qvMonitorLeave( cs->monitor );
            return result;
        }

        if( timed && ( left = millisecondsLeft( start, millisec ) ) < 0 )
        {
            qvMonitorLeave( cs->monitor );
            return 0;
        }

        QV_CHECK( QV_INT_ADD_OK( cs->usersCount, 1 ) );
        cs->usersCount++;
        qvBarrierBlock( cs->idleBarrier );
        qvMonitorLeave( cs->monitor );

        QV_BOOL awake = qvBarrierPassTimed( cs->wakeBarrier, left );

        {
            qv::HeldMonitor held( cs->monitor );
            QV_CHECK( cs->usersCount > 0 );

            if( --cs->usersCount == 0 )
                qvBarrierUnblock( cs->idleBarrier );
        }

        if( !awake )
            return 0;
    }
}
} // namespace

QV___FAMILY( Condset, QV_CONDSET, freeCondset, nullptr, nullptr )

QV_CONDSET *qvCondsetCreate( void )
{
    QV_CONDSET *cs  = qv::create< QV_CONDSET >( qvCondsetSort() );
    cs->gateBarrier = qvBarrierCreate( QV_FALSE );
    cs->monitor     = qvMonitorCreate();
    cs->changing    = QV_FALSE;
    cs->usersCount  = 0;
    cs->conditions  = 0;
    cs->wakeBarrier = qvBarrierCreate( QV_TRUE );
    cs->idleBarrier = qvBarrierCreate( QV_FALSE );

    return cs;
}

QV_INT qvCondsetConditions( QV_CONDSET *cs )
{
    QV_CHECK( cs );

    enterCondset( cs );
    QV_INT conditions = cs->conditions;
    qvMonitorLeave( cs->monitor );

    return conditions;
}

void qvCondsetSetConditions( QV_CONDSET *cs, QV_INT conditions )
{
    QV_CHECK( cs );

    conditions &= CONDITIONS;
    enterCondset( cs );

    if( cs->conditions == conditions )
        qvMonitorLeave( cs->monitor );
    else
        changeCondset( cs, CONDITIONS, conditions );
}

void qvCondsetAddConditions( QV_CONDSET *cs, QV_INT conditions )
{
    qvCondsetModifyConditions( cs, conditions, QV_TRUE );
}

void qvCondsetDelConditions( QV_CONDSET *cs, QV_INT conditions )
{
    qvCondsetModifyConditions( cs, conditions, QV_FALSE );
}

void qvCondsetModifyConditions( QV_CONDSET *cs, QV_INT conditions, QV_BOOL add )
{
    QV_CHECK( cs );

    conditions &= CONDITIONS;

    if( !conditions )
        return;

    enterCondset( cs );
    changeCondset( cs, conditions, add ? conditions : 0 );
}

QV_INT qvCondsetWaitAny( QV_CONDSET *cs, QV_INT conditions )
{
    QV_CHECK( cs );
    return waitForConditions( cs, conditions, -1, satisfiesAny );
}

QV_INT qvCondsetWaitAll( QV_CONDSET *cs, QV_INT conditions )
{
    QV_CHECK( cs );
    return waitForConditions( cs, conditions, -1, satisfiesAll );
}

QV_INT qvCondsetWaitAnyTimed( QV_CONDSET *cs, QV_INT conditions, QV_INT millisec )
{
    QV_CHECK( cs );
    return waitForConditions( cs, conditions, millisec, satisfiesAny );
}

QV_INT qvCondsetWaitAllTimed( QV_CONDSET *cs, QV_INT conditions, QV_INT millisec )
{
    QV_CHECK( cs );
    return waitForConditions( cs, conditions, millisec, satisfiesAll );
}
