#include "qv/base/qv_alertable.h"

#include "qv/base/qv_alertable_private.h"

namespace
{
void freeAlertable( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeHandle( qvAlertableFrom( thisObj ) );
}

QV_ALERTABLE *createAlertable( QV___ALERTABLE_IMP *owned )
{
    return qv::createHandle< QV_ALERTABLE >( qvAlertableSort(), owned );
}
} // namespace

QV___FAMILY( Alertable, QV_ALERTABLE, freeAlertable, nullptr, nullptr )

QV_ALERTABLE *qvAlertableCreate( QV_ALERTABLE_FUNC func, QV_OBJ *arg )
{
    return createAlertable( qv___AlertableImpCreate( func, arg ) );
}

QV_ALERTABLE *qvAlertableCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return createAlertable( qv___AlertableImpCreateBarrier( barrier ) );
}

QV_ALERTABLE *qvAlertableCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return createAlertable( qv___AlertableImpCreateCondset( condSet, conditions ) );
}

QV_ALERTABLE *qvAlertableCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return createAlertable( qv___AlertableImpCreateSignal( sig ) );
}

QV_ALERTABLE *qvAlertableCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return createAlertable( qv___AlertableImpCreateAlert( alert ) );
}

void qv___AlertableAlert( QV_ALERTABLE *alb )
{
    QV_CHECK( alb );
    qv___AlertableImpAlert( alb->imp );
}

QV___ALERTABLE_IMP *qv___AlertableImp( QV_ALERTABLE *alb )
{
    QV_CHECK( alb );
    return qv::retain( alb->imp );
}
