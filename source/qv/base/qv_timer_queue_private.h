/** @file
    The queue of the timers that are due at a timestamp. */

#ifndef QV_TIMER_QUEUE_PRIVATE_H
#define QV_TIMER_QUEUE_PRIVATE_H

#include "qv/runtime/qv_family.h"

namespace qv
{
/** The base of a timer's closure: its place in the queue. Its creator clears it; from then on only the queue writes
    it. */
struct QueuedTimer : QV_OBJ
{
    QV_BOOL schedRel; // it stands in the queue
    QV_INT  relIdx;   // at this index, if it does
};

/** A heap: no entry comes before its parent, so that the first one is the next that is due. A timer knows its index,
    and a change touches only the entries between there and the root or a leaf. A sorted array would have to move all
    entries after the one that goes; timers go from anywhere, and in great numbers.

    The queue holds no references: a timer is taken out before it ends. Timers of one timestamp come in the order of
    their unique numbers, by which qvObjCompare() orders them. */
struct TimerQueue
{
    struct Entry
    {
        QV_INT       due; // a timestamp
        QV_INT       unique;
        QueuedTimer *timer;
    };

    Entry *entries;
    QV_INT length;
    QV_INT alloc;

    /** Enters a timer, or moves it if it is there. Steps in the order of the logarithm of the length. */
    void set( QueuedTimer *timer, QV_INT due );

    /** Takes out a timer that is there, in as many steps. */
    void del( QueuedTimer *timer );

    /** Frees the entries; the queue is empty then, whatever it held. */
    void free();

private:
    void resize( QV_INT newAlloc );
    void put( QV_INT idx, const Entry &entry );
    void settle( QV_INT idx, const Entry &entry );
    bool holdsAt( QV_INT idx ) const;
    bool holds() const;
    bool holdsAfterChange( QV_INT idx ) const;
};
} // namespace qv

#endif
