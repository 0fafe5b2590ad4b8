#include "qv/base/qv_signalable.h"

#include "qv/base/qv_signalable_private.h"

namespace
{
void freeSignalable( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeHandle( qvSignalableFrom( thisObj ) );
}

QV_SIGNALABLE *createSignalable( QV___SIGNALABLE_IMP *owned )
{
    return qv::createHandle< QV_SIGNALABLE >( qvSignalableSort(), owned );
}
} // namespace

QV___FAMILY( Signalable, QV_SIGNALABLE, freeSignalable, nullptr, nullptr )

QV_SIGNALABLE *qvSignalableCreate( QV_SIGNALABLE_FUNC func, QV_OBJ *arg )
{
    return createSignalable( qv___SignalableImpCreate( func, arg ) );
}

QV_SIGNALABLE *qvSignalableCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return createSignalable( qv___SignalableImpCreateBarrier( barrier ) );
}

QV_SIGNALABLE *qvSignalableCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return createSignalable( qv___SignalableImpCreateCondset( condSet, conditions ) );
}

QV_SIGNALABLE *qvSignalableCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return createSignalable( qv___SignalableImpCreateSignal( sig ) );
}

QV_SIGNALABLE *qvSignalableCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return createSignalable( qv___SignalableImpCreateAlert( alert ) );
}

void qv___SignalableSignal( QV_SIGNALABLE *sigb )
{
    QV_CHECK( sigb );
    qv___SignalableImpSignal( sigb->imp );
}

QV___SIGNALABLE_IMP *qv___SignalableImp( QV_SIGNALABLE *sigb )
{
    QV_CHECK( sigb );
    return qv::retain( sigb->imp );
}
