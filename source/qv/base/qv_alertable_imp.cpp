#include "qv/base/qv_alertable_imp_private.h"

#include "qv/base/qv_event_private.h"

struct QV___ALERTABLE_IMP : qv::HandleImp
{
};

namespace
{
const QV_INT CONDITIONS = 0xffff;

void freeAlertableImp( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeHandleImp( qv___AlertableImpFrom( thisObj ) );
}

QV___ALERTABLE_IMP *create( const qv::Action &borrowed )
{
    return qv::createHandleImp< QV___ALERTABLE_IMP >( qv___AlertableImpSort(), borrowed );
}
} // namespace

QV___FAMILY( ___AlertableImp, QV___ALERTABLE_IMP, freeAlertableImp, nullptr, nullptr )

QV___ALERTABLE_IMP *qv___AlertableImpCreate( QV_ALERTABLE_FUNC func, QV_OBJ *arg )
{
    return create( { .func = func, .arg = arg } );
}

QV___ALERTABLE_IMP *qv___AlertableImpCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return create( { .barrier = barrier } );
}

QV___ALERTABLE_IMP *qv___AlertableImpCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return create( { .condSet = condSet, .conditions = conditions & CONDITIONS } );
}

QV___ALERTABLE_IMP *qv___AlertableImpCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return create( { .signal = sig } );
}

QV___ALERTABLE_IMP *qv___AlertableImpCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return create( { .alert = alert } );
}

void qv___AlertableImpAlert( QV___ALERTABLE_IMP *imp )
{
    QV_CHECK( imp );
    qv::fireHandleImp( imp );
}

void qv___AlertableImpHalt( QV___ALERTABLE_IMP *imp )
{
    QV_CHECK( imp );
    qv::haltHandleImp( imp );
}
