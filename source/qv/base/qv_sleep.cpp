#include "qv/base/qv_sleep.h"

#include "qv/base/qv_signal.h"
#include "qv/runtime/qv_ref.h"

void qvSleep( QV_SIGNAL *sig )
{
    qvSleepTimed( sig, -1 );
}

QV_BOOL qvSleepTimed( QV_SIGNAL *sig, QV_INT millisec )
{
    qv::Ref< QV_SIGNAL > woken( qvSignalCreate() );

    if( sig )
        qvSignalAddSignal( sig, woken );

    QV_BOOL result = qvSignalWaitTimed( woken, millisec );

    if( sig )
        qvSignalDelSignal( sig, woken );

    return result;
}
