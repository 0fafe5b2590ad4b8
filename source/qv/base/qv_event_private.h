/** @file
    Event and handle: what signals and alerts are made of, and what signalables and alertables are made of.

    The two families of events are one. An event is a structure of its family with what the templates below go by:

        static constexpr bool ONE_SHOT      // it happens once and for ever, or can be taken back
        QV_MONITOR *monitor                 // guards the rest
        QV_BARRIER *waitBarrier             // who waits sleeps here; null until somebody does
        bool        happened()              // its flag
        bool        happen()                // sets the flag; false if it was set
        void        eachKind( todo )        // calls `todo` with the targets of each kind, in the order of firing

    All that differs between the families stands in that structure and under `ONE_SHOT`. The two families of handles
    differ in nothing but their names. */

#ifndef QV_EVENT_PRIVATE_H
#define QV_EVENT_PRIVATE_H

#include "qv/base/qv_alert.h"
#include "qv/base/qv_alertable_private.h"
#include "qv/base/qv_barrier.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_signal.h"
#include "qv/base/qv_signalable_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"

namespace qv
{
/* Targets -------------------------------------------------------------------------------------------------------- */

inline void fire( QV___SIGNALABLE_IMP *imp )
{
    qv___SignalableImpSignal( imp );
}

inline void fire( QV___ALERTABLE_IMP *imp )
{
    qv___AlertableImpAlert( imp );
}

inline void fire( QV_SIGNAL *sig )
{
    qvSignalAssert( sig );
}

inline void fire( QV_ALERT *al )
{
    qvAlertSet( al );
}

inline void fire( QV_BARRIER *barrier )
{
    qvBarrierUnblock( barrier );
}

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

    /** Gives the reference of the slot, if the target was there: it may be the only one. */
    Ref< T > del( T *target )
    {
        Ref< T > fromSlot( slot == target ? std::exchange( slot, nullptr ) : nullptr );

        if( more )
            qvDictDelObjKey( &more, obj( target ) );

        return fromSlot;
    }

    void fireAndForget( bool keepDict )
    {
        if( slot )
        {
            fire( slot );
            release( std::exchange( slot, nullptr ) );
        }

        if( !more )
            return;

        for( QV_INT i = 0; i < qvDictLength( more ); i++ )
        {
            Ref< QV_OBJ > target( qvDictKeyAt( more, i ) );
            fire( reinterpret_cast< T * >( target.get() ) );
        }

        if( keepDict )
            qv___DictClear( &more );
        else
            release( std::exchange( more, nullptr ) );
    }
};

/* Events --------------------------------------------------------------------------------------------------------- */

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

/** What holds between operations, with the monitor held: an event that has happened has no targets, nor a barrier if it
    is for ever; a barrier is open while the event has happened. */
template< class Event >
bool holds( Event *event )
{
    bool happened = event->happened();
    bool all      = true;

    if( event->waitBarrier )
    {
        bool open = !qvBarrierIsBlocked( event->waitBarrier );
        all       = open == happened && !( happened && Event::ONE_SHOT );
    }

    event->eachKind( [&]( const auto &targets ) { all = all && !( happened && targets.any() ); } );
    return all;
}

/** Gives up all that the event holds and fires nothing. */
template< class Event >
void freeEvent( Event *event )
{
    drop( event->waitBarrier );
    drop( event->monitor );
    event->eachKind(
        []( auto &targets )
        {
            drop( targets.slot );
            drop( targets.more );
        } );
}

/** The event happens: wakes who waits and fires all targets, which it then forgets. The monitor is held all the while,
    so that a target which comes at the same time is either fired here or finds that the event has happened. */
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

    event->eachKind( []( auto &targets ) { targets.fireAndForget( !Event::ONE_SHOT ); } );
    QV_ASSERT( holds( event ) );
}

/** True when the event was found to have happened within so many milliseconds. The barrier is passed with no monitor
    held and with a reference of the caller's own, since the event may give up its own meanwhile. */
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

        QV_ASSERT( holds( event ) );
        barrier = Ref< QV_BARRIER >::share( event->waitBarrier );
    }

    return qvBarrierPassTimed( barrier, millisec );
}

template< class Event, class T >
void addTarget( Event *event, Targets< T > &targets, T *target )
{
    HeldMonitor held( event->monitor );

    if( event->happened() )
        fire( target );
    else
        targets.add( target );

    QV_ASSERT( holds( event ) );
}

template< class Event, class T >
void delTarget( Event *event, Targets< T > &targets, T *target )
{
    Ref< T >    last; // ends after the monitor
    HeldMonitor held( event->monitor );
    last = targets.del( target );
}

/** Defines the functions that add and delete targets of one kind: the argument is `target`, what the event holds of it
    is `kept`, and it holds it in the field `targets`. */
#define QV___EVENT_TARGET( Add, Del, EVENT, event, KIND, target, targets, kept )                                       \
    void Add( EVENT *event, KIND *target )                                                                             \
    {                                                                                                                  \
        QV_CHECK( event );                                                                                             \
        QV_CHECK( target );                                                                                            \
        qv::addTarget( event, event->targets, kept );                                                                  \
    }                                                                                                                  \
                                                                                                                       \
    void Del( EVENT *event, KIND *target )                                                                             \
    {                                                                                                                  \
        QV_CHECK( event );                                                                                             \
        QV_CHECK( target );                                                                                            \
        qv::delTarget( event, event->targets, kept );                                                                  \
    }

/* Handles -------------------------------------------------------------------------------------------------------- */

/** What a handle or a timer fires: all of it that is not null. */
struct Action
{
    void ( *func )( QV_OBJ *arg ) = nullptr;
    QV_OBJ     *arg               = nullptr;
    QV_BARRIER *barrier           = nullptr;
    QV_CONDSET *condSet           = nullptr;
    QV_INT      conditions        = 0; // for `condSet`
    QV_SIGNAL  *signal            = nullptr;
    QV_ALERT   *alert             = nullptr;
};

/** The object behind a handle. */
struct HandleImp : QV_OBJ
{
    QV_MONITOR *monitor; // guards the action, and excludes firing and halting from each other
    Action      action;  // with references of its own
};

/** Takes references to what an action names, and gives it. */
Action retainAction( const Action &action );

/** Gives up these references, when what holds the action ends. */
void dropAction( Action *action );

void fireAction( const Action &action );

/** The sort is that of the handle's family; takes references to what the action names. */
template< class Imp >
Imp *createHandleImp( QV_SORT *sort, const Action &borrowed )
{
    Imp *imp     = create< Imp >( sort );
    imp->monitor = qvMonitorCreate();
    imp->action  = retainAction( borrowed );

    return imp;
}

void freeHandleImp( HandleImp *imp );

/** Fires on the calling thread, with the object's monitor held. */
void fireHandleImp( HandleImp *imp );

/** Returns when a firing that is under way is over; from then on there is nothing to fire. */
void haltHandleImp( HandleImp *imp );
} // namespace qv

#endif
