#include "qv/base/qv_signalable_imp_private.h"

namespace
{
void freeSignalableImp( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeHandleImp( qv___SignalableImpFrom( thisObj ) );
}

QV___SIGNALABLE_IMP *createSignalableImp( const qv::Action &borrowed )
{
    return qv::createHandleImp< QV___SIGNALABLE_IMP >( qv___SignalableImpSort(), borrowed );
}
} // namespace

QV___FAMILY( ___SignalableImp, QV___SIGNALABLE_IMP, freeSignalableImp, nullptr, nullptr )

QV___SIGNALABLE_IMP *qv___SignalableImpCreate( QV_SIGNALABLE_FUNC func, QV_OBJ *arg )
{
    return createSignalableImp( { .func = func, .arg = arg } );
}

QV___SIGNALABLE_IMP *qv___SignalableImpCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return createSignalableImp( { .barrier = barrier } );
}

QV___SIGNALABLE_IMP *qv___SignalableImpCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return createSignalableImp( { .condSet = condSet, .conditions = conditions } );
}

QV___SIGNALABLE_IMP *qv___SignalableImpCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return createSignalableImp( { .signal = sig } );
}

QV___SIGNALABLE_IMP *qv___SignalableImpCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return createSignalableImp( { .alert = alert } );
}

void qv___SignalableImpSignal( QV___SIGNALABLE_IMP *imp )
{
    QV_CHECK( imp );
    qv::fireHandleImp( imp );
}

void qv___SignalableImpHalt( QV___SIGNALABLE_IMP *imp )
{
    QV_CHECK( imp );
    qv::haltHandleImp( imp );
}
