#include "qv/base/qv_alert.h"

#include "qv/base/qv_event_private.h"

struct QV_ALERT : QV_OBJ
{
    static constexpr bool ONE_SHOT = false;

    QV_MONITOR *monitor; // guards everything below
    QV_BOOL     set;
    QV_BARRIER *waitBarrier; // open exactly while `set`; null until somebody waits

    qv::Targets< QV___ALERTABLE_IMP > alertables;
    qv::Targets< QV_ALERT >           chainedAlerts;
    qv::Targets< QV_SIGNAL >          signals;
    qv::Targets< QV_BARRIER >         barriers;

    bool happened()
    {
        return set;
    }

    bool happen()
    {
        return !std::exchange( set, QV_TRUE );
    }

    template< class Function >
    void eachKind( Function todo )
    {
        todo( alertables );
        todo( chainedAlerts );
        todo( signals );
        todo( barriers );
    }
};

namespace
{
void freeAlert( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeEvent( qvAlertFrom( thisObj ) );
}
} // namespace

QV___FAMILY( Alert, QV_ALERT, freeAlert, nullptr, nullptr )

QV_ALERT *qvAlertCreate( void )
{
    QV_ALERT *al = qv::createEvent< QV_ALERT >( qvAlertSort() );
    al->set      = QV_FALSE;

    return al;
}

QV_BOOL qvAlertIsSet( QV_ALERT *al )
{
    QV_CHECK( al );

    qv::HeldMonitor held( al->monitor );
    return al->set;
}

void qvAlertSet( QV_ALERT *al )
{
    QV_CHECK( al );
    qv::fireEvent( al );
}

void qvAlertUnset( QV_ALERT *al )
{
    QV_CHECK( al );

    qv::HeldMonitor held( al->monitor );
    al->set = QV_FALSE;

    if( al->waitBarrier )
        qvBarrierBlock( al->waitBarrier );

    QV_ASSERT( qv::holds( al ) );
}

void qvAlertWait( QV_ALERT *al )
{
    QV_CHECK( al );
    qv::waitForEvent( al, -1 );
}

QV_BOOL qvAlertWaitTimed( QV_ALERT *al, QV_INT millisec )
{
    QV_CHECK( al );
    return qv::waitForEvent( al, millisec );
}

#define TARGET( Add, Del, KIND, target, targets, kept )                                                                \
    QV___EVENT_TARGET( Add, Del, QV_ALERT, al, KIND, target, targets, kept )

TARGET( qvAlertAddAlertable, qvAlertDelAlertable, QV_ALERTABLE, alb, alertables, alb->imp )
TARGET( qvAlertAddAlert, qvAlertDelAlert, QV_ALERT, chainedAlert, chainedAlerts, chainedAlert )
TARGET( qvAlertAddSignal, qvAlertDelSignal, QV_SIGNAL, sig, signals, sig )
TARGET( qvAlertAddBarrier, qvAlertDelBarrier, QV_BARRIER, barrier, barriers, barrier )

#undef TARGET
