/** @file
    Condset: 16 condition bits that threads wait on.

        qvCondsetAddConditions( cs, 4 );                    // one thread
        QV_INT which = qvCondsetWaitAny( cs, 4 | 8 );       // another one: 4

    A change first sends all sleeping waiters out, then is made, and then everybody looks again: no waiter misses one.
    Changes are made one at a time; each returns when it is made. Of every mask the low 16 bits count; one without any
    of them is empty. Callable from any thread. Null ends the process. */

#ifndef QV_CONDSET_H
#define QV_CONDSET_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Condset, QV_CONDSET )

/** A new set of no conditions. */
QV_API QV_CONDSET *qvCondsetCreate( void );

/** The conditions that are set; waits for a change that is under way. */
QV_API QV_INT qvCondsetConditions( QV_CONDSET *cs );

/** Replaces the conditions. Wakes nobody if they stay the same. */
QV_API void qvCondsetSetConditions( QV_CONDSET *cs, QV_INT conditions );

/** @{ */
/** Sets or clears the conditions of a mask and leaves the others; an empty mask changes nothing. `Modify` sets them if
    `add`, else clears them. */
QV_API void qvCondsetAddConditions( QV_CONDSET *cs, QV_INT conditions );
QV_API void qvCondsetDelConditions( QV_CONDSET *cs, QV_INT conditions );
QV_API void qvCondsetModifyConditions( QV_CONDSET *cs, QV_INT conditions, QV_BOOL add );
/** @} */

/** Returns when any condition of the mask is set; gives those of the mask that are. 0 at once for an empty mask. */
QV_API QV_INT qvCondsetWaitAny( QV_CONDSET *cs, QV_INT conditions );

/** Returns when the set is the mask exactly, no condition less or more; gives the mask. 0 at once for an empty mask. */
QV_API QV_INT qvCondsetWaitAll( QV_CONDSET *cs, QV_INT conditions );

/** @{ */
/** The same for so many milliseconds at most, after which the result is 0. The conditions are looked at first, so that
    a limit of 0 tests only. A change that is under way is waited for in any case. Any negative limit means none. */
QV_API QV_INT qvCondsetWaitAnyTimed( QV_CONDSET *cs, QV_INT conditions, QV_INT millisec );
QV_API QV_INT qvCondsetWaitAllTimed( QV_CONDSET *cs, QV_INT conditions, QV_INT millisec );
/** @} */

#endif
