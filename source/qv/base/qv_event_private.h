/** @file
    Event: what signals and alerts are.

    The two families differ in this: a signal happens once and for ever, an alert can be taken back, and their flags are
    read in different ways. That stands in their own structures, which have EventFields as their base and add

        static constexpr bool ONE_SHOT      // it happens once and for ever, or can be taken back
        bool happened()                     // reads the flag
        bool happen()                       // sets the flag; false if it was set already

    Everything else is here. The functions below are templates over such a structure. */

#ifndef QV_EVENT_PRIVATE_H
#define QV_EVENT_PRIVATE_H

#include "qv/base/qv_alert.h"
#include "qv/base/qv_barrier.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_handle_private.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_signal.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"

namespace qv
{
/* Targets -------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Fires a target, whatever its kind. */
inline void fireTarget( HandleImp *imp )
{
    fireHandleImp( imp );
}

inline void fireTarget( QV_SIGNAL *sig )
{
    qvSignalAssert( sig );
}

inline void fireTarget( QV_ALERT *al )
{
    qvAlertSet( al );
}

inline void fireTarget( QV_BARRIER *barrier )
{
    qvBarrierUnblock( barrier );
}
/** @} */

/** The targets of one kind. Most events have one at most, which costs no Dict. A target stands in both places when the
    slot was emptied and the target added again; then it fires twice, and deleting it deletes both. */
template< class T >
struct Targets
{
    T       *slot; // the first one, or null
    QV_DICT *more; // key and value both the target; made when a second, different one comes

    bool any() const
    {
        return slot || ( more && qvDictLength( more ) > 0 );
    }

    void add( T *target )
    {
        if( !slot )
        {
            slot = retain( target );
            return;
        }

        if( slot == target )
            return;

        if( !more )
            more = qvDictCreate();

        qvDictSetObjKey( &more, obj( target ), obj( target ) );
    }

    /** Returns the reference that the slot had, if the target was there: it may be the last one. */
    Ref< T > del( T *target )
    {
        Ref< T > fromSlot( slot == target ? std::exchange( slot, nullptr ) : nullptr );

        if( more )
            qvDictDelObjKey( &more, obj( target ) );

        return fromSlot;
    }

    /** Fires all targets, the slot's first, and gives them up. */
    void fireAll( bool keepDict )
    {
        if( slot )
        {
            fireTarget( slot );
            release( std::exchange( slot, nullptr ) );
        }

        if( !more )
            return;

        for( QV_INT i = 0; i < qvDictLength( more ); i++ )
        {
            Ref< QV_OBJ > target( qvDictKeyAt( more, i ) );
            fireTarget( reinterpret_cast< T * >( target.get() ) );
        }

        if( keepDict )
            qv___DictClear( &more );
        else
            release( std::exchange( more, nullptr ) );
    }

    /** For an event that ends. */
    void dropAll()
    {
        drop( slot );
        drop( more );
    }
};

/* Events --------------------------------------------------------------------------------------------------------- */

/** What every event has. `Imp` is what the handles of the family stand for, `Same` is the family itself and `Other` the
    other family of events. */
template< class Imp, class Same, class Other >
struct EventFields : QV_OBJ
{
    QV_MONITOR *monitor;     // guards the rest, the flag included
    QV_BARRIER *waitBarrier; // waiters sleep here; null until somebody waits

    Targets< Imp >        handles;
    Targets< Same >       chained;
    Targets< Other >      others;
    Targets< QV_BARRIER > barriers;

    /** Calls `todo` with the targets of each kind, in the order of firing. */
    template< class Function >
    void eachKind( Function todo )
    {
        todo( handles );
        todo( chained );
        todo( others );
        todo( barriers );
    }
};

/** A new event without targets; its flag is left to the family. */
template< class Event >
Event *createEvent( QV_SORT *sort )
{
    Event *event       = create< Event >( sort );
    event->monitor     = qvMonitorCreate();
    event->waitBarrier = nullptr;
    event->eachKind( []( auto &targets ) { targets = {}; } );

    return event;
}

/** What the free functions of events do: gives up all that the event holds and fires nothing. */
template< class Event >
void freeEvent( Event *event )
{
    drop( event->waitBarrier );
    drop( event->monitor );
    event->eachKind( []( auto &targets ) { targets.dropAll(); } );
}

/** True if a firing now would fire a target. With the monitor held. */
template< class Event >
bool hasTargets( Event *event )
{
    bool any = false;
    event->eachKind( [&]( const auto &targets ) { any = any || targets.any(); } );

    return any;
}

/** What holds between operations, with the monitor held: an event that has happened has no targets, nor a barrier if it
    is for ever; a barrier is open while the event has happened. */
template< class Event >
bool eventHolds( Event *event )
{
    bool happened = event->happened();

    if( event->waitBarrier )
    {
        bool open = !qvBarrierIsBlocked( event->waitBarrier );

        if( open != happened || ( happened && Event::ONE_SHOT ) )
            return false;
    }

    return !( happened && hasTargets( event ) );
}

/** The event happens: wakes all waiters and fires all targets, which it then forgets. The monitor is held all the
    while, so that a target which comes at the same time is either fired here or finds that the event has happened. */
template< class Event >
void fireEvent( Event *event )
{
    HeldMonitor held( event->monitor );

    if( !event->happen() )
        return;

    if( event->waitBarrier )
    {
        qvBarrierUnblock( event->waitBarrier );

        if constexpr( Event::ONE_SHOT )
            release( std::exchange( event->waitBarrier, nullptr ) );
    }

    event->eachKind( []( auto &targets ) { targets.fireAll( !Event::ONE_SHOT ); } );
    QV_ASSERT( eventHolds( event ) );
}

/** Waits until the event happens, `millisec` milliseconds at most, -1 for no limit. True if it was found to have
    happened. The barrier is passed with no monitor held and with a reference of the caller's own, since the event may
    give up its own meanwhile. */
template< class Event >
QV_BOOL waitForEvent( Event *event, QV_INT millisec )
{
    Ref< QV_BARRIER > barrier;

    {
        HeldMonitor held( event->monitor );

        if constexpr( Event::ONE_SHOT )
            if( event->happened() )
                return QV_TRUE;

        if( !event->waitBarrier )
            event->waitBarrier = qvBarrierCreate( event->happened() ? QV_FALSE : QV_TRUE );

        QV_ASSERT( eventHolds( event ) );
        barrier = Ref< QV_BARRIER >::share( event->waitBarrier );
    }

    return qvBarrierPassTimed( barrier, millisec );
}

/** Adds a target to a list of the event, or fires it if the event has happened. */
template< class Event, class T >
void addTarget( Event *event, Targets< T > &targets, T *target )
{
    HeldMonitor held( event->monitor );

    if( event->happened() )
        fireTarget( target );
    else
        targets.add( target );

    QV_ASSERT( eventHolds( event ) );
}

/** Deletes a target from a list of the event, if it is there. */
template< class Event, class T >
void delTarget( Event *event, Targets< T > &targets, T *target )
{
    Ref< T >    last; // declared before the monitor is taken, so it ends after the monitor is left
    HeldMonitor held( event->monitor );
    last = targets.del( target );
}
} // namespace qv

#endif
