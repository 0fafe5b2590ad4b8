#include "qv/base/qv_alertable_imp_private.h"

namespace
{
void freeAlertableImp( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeHandleImp( qv___AlertableImpFrom( thisObj ) );
}

QV___ALERTABLE_IMP *createAlertableImp( const qv::Action &borrowed )
{
    return qv::createHandleImp< QV___ALERTABLE_IMP >( qv___AlertableImpSort(), borrowed );
}
} // namespace

QV___FAMILY( ___AlertableImp, QV___ALERTABLE_IMP, freeAlertableImp, nullptr, nullptr )

QV___ALERTABLE_IMP *qv___AlertableImpCreate( QV_ALERTABLE_FUNC func, QV_OBJ *arg )
{
    return createAlertableImp( { .func = func, .arg = arg } );
}

QV___ALERTABLE_IMP *qv___AlertableImpCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return createAlertableImp( { .barrier = barrier } );
}

QV___ALERTABLE_IMP *qv___AlertableImpCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return createAlertableImp( { .condSet = condSet, .conditions = conditions } );
}

QV___ALERTABLE_IMP *qv___AlertableImpCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return createAlertableImp( { .signal = sig } );
}

QV___ALERTABLE_IMP *qv___AlertableImpCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return createAlertableImp( { .alert = alert } );
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
