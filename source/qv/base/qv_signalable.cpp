#include "qv/base/qv_signalable.h"

#include "qv/base/qv_signalable_private.h"
#include "qv/runtime/qv_ref.h"

namespace
{
void freeSignalable( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_SIGNALABLE *sigb = qvSignalableFrom( thisObj );
    qv___SignalableImpHalt( sigb->imp );
    qv::drop( sigb->imp );
}

QV_SIGNALABLE *create( QV___SIGNALABLE_IMP *owned )
{
    QV_SIGNALABLE *sigb = qv::create< QV_SIGNALABLE >( qvSignalableSort() );
    sigb->imp           = owned;

    return sigb;
}
} // namespace

QV___FAMILY( Signalable, QV_SIGNALABLE, freeSignalable, nullptr, nullptr )

QV_SIGNALABLE *qvSignalableCreate( QV_SIGNALABLE_FUNC func, QV_OBJ *arg )
{
    return create( qv___SignalableImpCreate( func, arg ) );
}

QV_SIGNALABLE *qvSignalableCreateBarrier( QV_BARRIER *barrier )
{
    QV_CHECK( barrier );
    return create( qv___SignalableImpCreateBarrier( barrier ) );
}

QV_SIGNALABLE *qvSignalableCreateCondset( QV_CONDSET *condSet, QV_INT conditions )
{
    QV_CHECK( condSet );
    return create( qv___SignalableImpCreateCondset( condSet, conditions ) );
}

QV_SIGNALABLE *qvSignalableCreateSignal( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return create( qv___SignalableImpCreateSignal( sig ) );
}

QV_SIGNALABLE *qvSignalableCreateAlert( QV_ALERT *alert )
{
    QV_CHECK( alert );
    return create( qv___SignalableImpCreateAlert( alert ) );
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
