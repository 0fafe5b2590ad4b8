/** @file
    Signal: an event that happens once. It starts unasserted, is asserted and stays so.

        QV_SIGNAL *ready = qvSignalCreate();
        ...                                 // another thread: qvSignalAssert( ready );
        qvSignalWait( ready );

    Targets. Threads wait for a signal, and signalables, further signals, alerts and barriers can be added to it as
    targets. The assertion fires each target once, but for the case that is told where they are added, and then forgets
    all of them; a target that is added later is fired by the call that adds it. Either way none is missed. The signal
    keeps a reference to a target until it fires it. To fire a signal is to assert it, an alert to set it, a barrier to
    open it; for a signalable see qv_signalable.h.

    Order. Targets fire on the thread that asserts, before qvSignalAssert() returns: signalables, signals, alerts,
    barriers, and within a kind the first that was added before the others. The signal's monitor is held all the while,
    so nothing that a firing does may come back to the signal, but for qvSignalAsserted(): a callback neither asserts
    it, nor waits for it, adds to it or deletes from it, and no chain of events may lead back to where it started. A
    thread that does so waits for itself.

    A chain of events fires, and ends, on one stack: each link takes some of it.

    A caller that waits or asserts holds a reference to the signal until the call returns: a signal that ends unasserted
    wakes no thread and fires nothing.

    Costs. The first target of each kind is kept in the signal itself; further ones go into a Dict, with its costs.

    Any thread may call any function. Null as an argument ends the process. Arguments are borrowed; what a function that
    creates returns belongs to the caller. */

#ifndef QV_SIGNAL_H
#define QV_SIGNAL_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Signal, QV_SIGNAL )

/** Returns a new signal: not asserted, no targets. */
QV_API QV_SIGNAL *qvSignalCreate( void );

/** True once it is asserted, perhaps before its targets have fired. Takes no lock: callable from callbacks too. */
QV_API QV_BOOL qvSignalAsserted( QV_SIGNAL *sig );

/** Asserts the signal, wakes all threads that wait for it and fires its targets. Does nothing when it is asserted
    already. */
QV_API void qvSignalAssert( QV_SIGNAL *sig );

/** Returns when the signal is asserted. */
QV_API void qvSignalWait( QV_SIGNAL *sig );

/** Waits for the signal for `millisec` milliseconds at most; -1 means no limit, 0 tests only. True if it is asserted,
    false if the time ran out. Another negative limit ends the process, unless the signal is asserted already. */
QV_API QV_BOOL qvSignalWaitTimed( QV_SIGNAL *sig, QV_INT millisec );

/** True if an assertion would fire a target, of whatever kind; threads that wait don't count. False once it is
    asserted. */
QV_API QV_BOOL qvSignalHasSignalables( QV_SIGNAL *sig );

/** @{ */
/** Adds a target, or fires it if the signal is asserted. A target that is there already is not added again, with one
    exception: after the first target of its kind was deleted, a target that is added again is there twice and fires
    twice. */
QV_API void qvSignalAddSignalable( QV_SIGNAL *sig, QV_SIGNALABLE *sigb );
QV_API void qvSignalAddSignal( QV_SIGNAL *sig, QV_SIGNAL *chainedSignal );
QV_API void qvSignalAddAlert( QV_SIGNAL *sig, QV_ALERT *al );
QV_API void qvSignalAddBarrier( QV_SIGNAL *sig, QV_BARRIER *waitBarrier );
/** @} */

/** @{ */
/** Deletes a target, twice if it is there twice. One that isn't there is no failure. Waits for an assertion that is
    under way. */
QV_API void qvSignalDelSignalable( QV_SIGNAL *sig, QV_SIGNALABLE *sigb );
QV_API void qvSignalDelSignal( QV_SIGNAL *sig, QV_SIGNAL *chainedSignal );
QV_API void qvSignalDelAlert( QV_SIGNAL *sig, QV_ALERT *al );
QV_API void qvSignalDelBarrier( QV_SIGNAL *sig, QV_BARRIER *waitBarrier );
/** @} */

#endif
