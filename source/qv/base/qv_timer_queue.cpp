#include "qv/base/qv_timer_queue_private.h"

#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

namespace
{
using Entry = qv::TimerQueue::Entry;

// The block doubles and, when three quarters are free, halves, but for the least one.
const QV_INT LEAST_ALLOC = 64;

bool isBefore( const Entry &a, const Entry &b )
{
    return a.due != b.due ? a.due < b.due : a.unique < b.unique;
}
} // namespace

void qv::TimerQueue::resize( QV_INT newAlloc )
{
    entries = static_cast< Entry * >( qvMemReallocN( entries, newAlloc, sizeof( Entry ) ) );
    alloc   = newAlloc;
    QV_ASSERT( holds() );
}

void qv::TimerQueue::put( QV_INT idx, const Entry &entry )
{
    entries[idx]        = entry;
    entry.timer->relIdx = idx;
}

// Puts an entry where it belongs. What stood at `idx` is overwritten, all others are in order.
void qv::TimerQueue::settle( QV_INT idx, const Entry &entry )
{
    while( idx > 0 )
    {
        QV_INT parent = ( idx - 1 ) / 2;

        if( !isBefore( entry, entries[parent] ) )
            break;

        put( idx, entries[parent] );
        idx = parent;
    }

    for( QV_INT child; ( child = 2 * idx + 1 ) < length; idx = child )
    {
        if( child + 1 < length && isBefore( entries[child + 1], entries[child] ) )
            child++;

        if( !isBefore( entries[child], entry ) )
            break;

        put( idx, entries[child] );
    }

    put( idx, entry );
    QV_ASSERT( holdsAfterChange( idx ) );
}

void qv::TimerQueue::set( QueuedTimer *timer, QV_INT due )
{
    QV_INT idx = timer->relIdx;

    if( !timer->schedRel )
    {
        if( length == alloc )
            resize( std::max( LEAST_ALLOC, 2 * alloc ) );

        idx             = length++;
        timer->schedRel = QV_TRUE;
    }

    settle( idx, { due, qv___ObjUnique( timer ), timer } );
}

void qv::TimerQueue::del( QueuedTimer *timer )
{
    QV_ASSERT( timer->schedRel && timer->relIdx < length && entries[timer->relIdx].timer == timer );

    QV_INT last     = --length;
    timer->schedRel = QV_FALSE;

    if( timer->relIdx < last )
    {
        Entry moved = entries[last];
        settle( timer->relIdx, moved );
    }

    if( last < alloc / 4 && alloc > LEAST_ALLOC )
        resize( alloc / 2 );
}

void qv::TimerQueue::free()
{
    qvMemFree( entries );
    *this = {};
}

/* What holds between changes ------------------------------------------------------------------------------------- */

// The timer there knows it, and the entry doesn't come before its parent.
bool qv::TimerQueue::holdsAt( QV_INT idx ) const
{
    const Entry &entry = entries[idx];

    return entry.timer->schedRel && entry.timer->relIdx == idx
           && ( idx == 0 || isBefore( entries[( idx - 1 ) / 2], entry ) );
}

bool qv::TimerQueue::holds() const
{
    bool all = length <= alloc;

    for( QV_INT idx = 0; idx < length && all; idx++ )
        all = holdsAt( idx );

    return all;
}

// A short queue is looked at as a whole, a long one around the change.
bool qv::TimerQueue::holdsAfterChange( QV_INT idx ) const
{
    if( length <= LEAST_ALLOC )
        return holds();

    bool all = true;

    for( QV_INT near : { idx, 2 * idx + 1, 2 * idx + 2 } )
        all = all && ( near >= length || holdsAt( near ) );

    return all;
}
