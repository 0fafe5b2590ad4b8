/** @file
    Condset: 16 condition bits that threads wait on.

        qvCondsetAddConditions( cs, 4 );                    // one thread
        QV_INT which = qvCondsetWaitAny( cs, 4 | 8 );       // another one: 4

    A change wakes all threads that wait, waits until they are awake, changes the conditions and lets them look again,
    so that no thread sleeps through a change; one that is slow to look may find a later change made too. Changes are
    made one at a time, and a function returns when its change is made. A change takes time in proportion to the number
    of waiting threads.

    A mask is an integer of which the low 16 bits count; a mask without any of them is empty. Any thread may call any
    function. Null ends the process. */

#ifndef QV_CONDSET_H
#define QV_CONDSET_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Condset, QV_CONDSET )

/** Returns a new set without conditions, which belongs to the caller. */
QV_API QV_CONDSET *qvCondsetCreate( void );

/** Returns the conditions that are set. Waits for a change that is under way. */
QV_API QV_INT qvCondsetConditions( QV_CONDSET *cs );

/** Replaces all conditions by those of a mask. Changes nothing, and wakes no thread, if they stay the same. */
QV_API void qvCondsetSetConditions( QV_CONDSET *cs, QV_INT conditions );

/** Sets the conditions of a mask and leaves the others. An empty mask changes nothing. */
QV_API void qvCondsetAddConditions( QV_CONDSET *cs, QV_INT conditions );

/** Clears the conditions of a mask and leaves the others. An empty mask changes nothing. */
QV_API void qvCondsetDelConditions( QV_CONDSET *cs, QV_INT conditions );

/** qvCondsetAddConditions() if `add` is true, else qvCondsetDelConditions(). */
QV_API void qvCondsetModifyConditions( QV_CONDSET *cs, QV_INT conditions, QV_BOOL add );

/** Waits until any condition of the mask is set. Returns those of the mask that are set; 0 at once for an empty
    mask. */
QV_API QV_INT qvCondsetWaitAny( QV_CONDSET *cs, QV_INT conditions );

/** Waits until the conditions of the mask are set and no others. Returns the mask; 0 at once for an empty mask. */
QV_API QV_INT qvCondsetWaitAll( QV_CONDSET *cs, QV_INT conditions );

/** @{ */
/** The same waits, for `millisec` milliseconds at most: 0 if the time ran out. The conditions are looked at first, so
    that a limit of 0 tests only. A change that is under way is waited for in any case. Any negative limit means
    none. */
QV_API QV_INT qvCondsetWaitAnyTimed( QV_CONDSET *cs, QV_INT conditions, QV_INT millisec );
QV_API QV_INT qvCondsetWaitAllTimed( QV_CONDSET *cs, QV_INT conditions, QV_INT millisec );
/** @} */

#endif
