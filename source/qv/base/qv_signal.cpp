#include "qv/base/qv_signal.h"

#include "qv/base/qv_event_private.h"
#include "qv/base/qv_signalable_private.h"

// Its wait barrier is always closed: the assertion opens it and gives it up.
struct QV_SIGNAL : qv::EventFields< QV___SIGNALABLE_IMP, QV_SIGNAL, QV_ALERT >
{
    static constexpr bool ONE_SHOT = true;

    int32_t asserted; // atomic; goes from 0 to 1 once

    bool happened()
    {
        return qv___AtomicLoad32( &asserted ) != 0;
    }

    bool happen()
    {
        if( happened() )
            return false;

        // Only the holder of the monitor writes it, so this needs no exchange; the locks that follow, or the fence
        // where they are no fences, order it before all that the firing does.
        __atomic_store_n( &asserted, 1, __ATOMIC_RELEASE );
        QV___ATOMIC_FENCE();

        return true;
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

    // An asserted signal has none.
    qv::HeldMonitor held( sig->monitor );
    return qv::hasTargets( sig ) ? QV_TRUE : QV_FALSE;
}

/* Targets -------------------------------------------------------------------------------------------------------- */

void qvSignalAddSignalable( QV_SIGNAL *sig, QV_SIGNALABLE *sigb )
{
    QV_CHECK( sig );
    QV_CHECK( sigb );
    qv::addTarget( sig, sig->handles, sigb->imp );
}

void qvSignalAddSignal( QV_SIGNAL *sig, QV_SIGNAL *chainedSignal )
{
    QV_CHECK( sig );
    QV_CHECK( chainedSignal );
    qv::addTarget( sig, sig->chained, chainedSignal );
}

void qvSignalAddAlert( QV_SIGNAL *sig, QV_ALERT *al )
{
    QV_CHECK( sig );
    QV_CHECK( al );
    qv::addTarget( sig, sig->others, al );
}

void qvSignalAddBarrier( QV_SIGNAL *sig, QV_BARRIER *waitBarrier )
{
    QV_CHECK( sig );
    QV_CHECK( waitBarrier );
    qv::addTarget( sig, sig->barriers, waitBarrier );
}

void qvSignalDelSignalable( QV_SIGNAL *sig, QV_SIGNALABLE *sigb )
{
    QV_CHECK( sig );
    QV_CHECK( sigb );
    qv::delTarget( sig, sig->handles, sigb->imp );
}

void qvSignalDelSignal( QV_SIGNAL *sig, QV_SIGNAL *chainedSignal )
{
    QV_CHECK( sig );
    QV_CHECK( chainedSignal );
    qv::delTarget( sig, sig->chained, chainedSignal );
}

void qvSignalDelAlert( QV_SIGNAL *sig, QV_ALERT *al )
{
    QV_CHECK( sig );
    QV_CHECK( al );
    qv::delTarget( sig, sig->others, al );
}

void qvSignalDelBarrier( QV_SIGNAL *sig, QV_BARRIER *waitBarrier )
{
    QV_CHECK( sig );
    QV_CHECK( waitBarrier );
    qv::delTarget( sig, sig->barriers, waitBarrier );
}
