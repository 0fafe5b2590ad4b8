#include "qv/base/qv_signalable_imp_private.h"

#include "qv/base/qv_event_private.h"

struct QV___SIGNALABLE_IMP : qv::HandleImp
{
};

namespace
{
const QV_INT CONDITIONS = 0xffff;

void freeSignalableImp( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeHandleImp( qv___SignalableImpFrom( thisObj ) );
}

QV___SIGNALABLE_IMP *create( const qv::Action &borrowed )
{
    return qv::createHandleImp< QV___SIGNALABLE_IMP >( qv___SignalableImpSort(), borrowed );
}
} // namespace

QV___FAMILY( ___SignalableImp, QV___SIGNALABLE_IMP, freeSignalableImp, nullptr, nullptr )

QV___SIGNALABLE_IMP *qv___SignalableImpCreate( QV_SIGNALABLE_FUNC func, QV_OBJ *arg )
{
    return create( { .func = func, .arg = arg } );
}

QV___SIGNALABLE_IMP *qv___SignalableImpCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return create( { .barrier = barrier } );
}

QV___SIGNALABLE_IMP *qv___SignalableImpCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return create( { .condSet = condSet, .conditions = conditions & CONDITIONS } );
}

QV___SIGNALABLE_IMP *qv___SignalableImpCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return create( { .signal = sig } );
}

QV___SIGNALABLE_IMP *qv___SignalableImpCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return create( { .alert = alert } );
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
