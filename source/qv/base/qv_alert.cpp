#include "qv/base/qv_alert.h"

#include "qv/base/qv_alertable_private.h"
#include "qv/base/qv_event_private.h"

// Its wait barrier, once there is one, is open exactly while it is set.
struct QV_ALERT : qv::EventFields< QV___ALERTABLE_IMP, QV_ALERT, QV_SIGNAL >
{
    static constexpr bool ONE_SHOT = false;

    QV_BOOL set;

    bool happened()
    {
        return set;
    }

    bool happen()
    {
        return !std::exchange( set, QV_TRUE );
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

    QV_ASSERT( qv::eventHolds( al ) );
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

/* Targets -------------------------------------------------------------------------------------------------------- */

void qvAlertAddAlertable( QV_ALERT *al, QV_ALERTABLE *alb )
{
    QV_CHECK( al );
    QV_CHECK( alb );
    qv::addTarget( al, al->handles, alb->imp );
}

void qvAlertAddAlert( QV_ALERT *al, QV_ALERT *chainedAlert )
{
    QV_CHECK( al );
    QV_CHECK( chainedAlert );
    qv::addTarget( al, al->chained, chainedAlert );
}

void qvAlertAddSignal( QV_ALERT *al, QV_SIGNAL *sig )
{
    QV_CHECK( al );
    QV_CHECK( sig );
    qv::addTarget( al, al->others, sig );
}

void qvAlertAddBarrier( QV_ALERT *al, QV_BARRIER *barrier )
{
    QV_CHECK( al );
    QV_CHECK( barrier );
    qv::addTarget( al, al->barriers, barrier );
}

void qvAlertDelAlertable( QV_ALERT *al, QV_ALERTABLE *alb )
{
    QV_CHECK( al );
    QV_CHECK( alb );
    qv::delTarget( al, al->handles, alb->imp );
}

void qvAlertDelAlert( QV_ALERT *al, QV_ALERT *chainedAlert )
{
    QV_CHECK( al );
    QV_CHECK( chainedAlert );
    qv::delTarget( al, al->chained, chainedAlert );
}

void qvAlertDelSignal( QV_ALERT *al, QV_SIGNAL *sig )
{
    QV_CHECK( al );
    QV_CHECK( sig );
    qv::delTarget( al, al->others, sig );
}

void qvAlertDelBarrier( QV_ALERT *al, QV_BARRIER *barrier )
{
    QV_CHECK( al );
    QV_CHECK( barrier );
    qv::delTarget( al, al->barriers, barrier );
}
