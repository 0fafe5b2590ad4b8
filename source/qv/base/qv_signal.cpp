#include "qv/base/qv_signal.h"

#include "qv/base/qv_event_private.h"

struct QV_SIGNAL : QV_OBJ
{
    static constexpr bool ONE_SHOT = true;

    QV_MONITOR *monitor;     // guards everything below
    int32_t     asserted;    // atomic; goes from 0 to 1 once
    QV_BARRIER *waitBarrier; // closed; null until somebody waits, and again once it is asserted

    qv::Targets< QV___SIGNALABLE_IMP > signalables;
    qv::Targets< QV_SIGNAL >           chainedSignals;
    qv::Targets< QV_ALERT >            alerts;
    qv::Targets< QV_BARRIER >          barriers;

    bool happened()
    {
        return qv___AtomicLoad32( &asserted ) != 0;
    }

    bool happen()
    {
        if( happened() )
            return false;

        // Only who holds the monitor writes it, so this needs no exchange; the locks that follow, or the fence where
        // they are no fences, order it before all that the firing does.
        __atomic_store_n( &asserted, 1, __ATOMIC_RELEASE );
        QV___ATOMIC_FENCE();

        return true;
    }

    template< class Function >
    void eachKind( Function todo )
    {
        todo( signalables );
        todo( chainedSignals );
        todo( alerts );
        todo( barriers );
    }
};

namespace
{
void freeSignal( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeEvent( qvSignalFrom( thisObj ) );
}
} // namespace

QV___FAMILY( Signal, QV_SIGNAL, freeSignal, nullptr, nullptr )

QV_SIGNAL *qvSignalCreate( void )
{
    QV_SIGNAL *sig = qv::createEvent< QV_SIGNAL >( qvSignalSort() );
    sig->asserted  = 0;

    return sig;
}

QV_BOOL qvSignalAsserted( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    return sig->happened() ? QV_TRUE : QV_FALSE;
}

void qvSignalAssert( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    qv::fireEvent( sig );
}

void qvSignalWait( QV_SIGNAL *sig )
{
    QV_CHECK( sig );
    qv::waitForEvent( sig, -1 );
}

QV_BOOL qvSignalWaitTimed( QV_SIGNAL *sig, QV_INT millisec )
{
    QV_CHECK( sig );
    return qv::waitForEvent( sig, millisec );
}

QV_BOOL qvSignalHasSignalables( QV_SIGNAL *sig )
{
    QV_CHECK( sig );

    qv::HeldMonitor held( sig->monitor );
    QV_BOOL         any = QV_FALSE;

    // An asserted signal has none.
    sig->eachKind(
        [&]( const auto &targets )
        {
            if( targets.any() )
                any = QV_TRUE;
        } );

    return any;
}

#define TARGET( Add, Del, KIND, target, targets, kept )                                                                \
    QV___EVENT_TARGET( Add, Del, QV_SIGNAL, sig, KIND, target, targets, kept )

TARGET( qvSignalAddSignalable, qvSignalDelSignalable, QV_SIGNALABLE, sigb, signalables, sigb->imp )
TARGET( qvSignalAddSignal, qvSignalDelSignal, QV_SIGNAL, chainedSignal, chainedSignals, chainedSignal )
TARGET( qvSignalAddAlert, qvSignalDelAlert, QV_ALERT, al, alerts, al )
TARGET( qvSignalAddBarrier, qvSignalDelBarrier, QV_BARRIER, waitBarrier, barriers, waitBarrier )

#undef TARGET
