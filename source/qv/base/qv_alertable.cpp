#include "qv/base/qv_alertable.h"

#include "qv/base/qv_alertable_private.h"
#include "qv/runtime/qv_ref.h"

namespace
{
void freeAlertable( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_ALERTABLE *alb = qvAlertableFrom( thisObj );
    qv___AlertableImpHalt( alb->imp );
    qv::drop( alb->imp );
}

QV_ALERTABLE *create( QV___ALERTABLE_IMP *owned )
{
    QV_ALERTABLE *alb = qv::create< QV_ALERTABLE >( qvAlertableSort() );
    alb->imp          = owned;

    return alb;
}
} // namespace

QV___FAMILY( Alertable, QV_ALERTABLE, freeAlertable, nullptr, nullptr )

QV_ALERTABLE *qvAlertableCreate( QV_ALERTABLE_FUNC func, QV_OBJ *arg )
{
    return create( qv___AlertableImpCreate( func, arg ) );
}

QV_ALERTABLE *qvAlertableCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return create( qv___AlertableImpCreateBarrier( barrier ) );
}

QV_ALERTABLE *qvAlertableCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return create( qv___AlertableImpCreateCondset( condSet, conditions ) );
}

QV_ALERTABLE *qvAlertableCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return create( qv___AlertableImpCreateSignal( sig ) );
}

QV_ALERTABLE *qvAlertableCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return create( qv___AlertableImpCreateAlert( alert ) );
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
