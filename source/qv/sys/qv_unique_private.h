#ifndef QV_UNIQUE_PRIVATE_H
#define QV_UNIQUE_PRIVATE_H

#include "qv/sys/qv_atomic.h"
#include "qv/sys/qv_types.h"

#define QV___UNIQUE_INVALID ( (QV_INT)-1 ) /**< no number */
#define QV___UNIQUE_MAX     QV_INT_MAX     /**< above all numbers */

/** Draws the number that was put back last, else the lowest that was never drawn. Any thread, in constant
    time but for a reallocation every 4096 new numbers. */
QV_API QV_INT qv___UniqueGet( void );

/** Puts a number back. One that is not drawn ends the process. Any thread, in constant time. */
QV_API void qv___UniquePut( QV_INT uni );

namespace qv
{
/** The number of the current run, atomic. Unique numbers are those of a run: the shutdown forgets all of them, and the
    next run draws them again. What may outlive a run keeps its number together with the run, in one word. The runs
    count up to 32767 and start again at 0; a number takes the lower 48 bits. */
extern QV___ATOMIC_INT uniqueRun;

const int UNIQUE_BITS = 48;

/** A number together with the current run. */
inline QV_INT uniqueOfThisRun( QV_INT uni )
{
    return qv___AtomicLoad64( &uniqueRun ) << UNIQUE_BITS | uni;
}

/** Whether a kept number is one of the current run; false for -1. */
inline bool isUniqueOfThisRun( QV_INT kept )
{
    return kept >> UNIQUE_BITS == qv___AtomicLoad64( &uniqueRun );
}

/** The number without the run. */
inline QV_INT uniqueNumber( QV_INT kept )
{
    return kept & ( ( QV_INT( 1 ) << UNIQUE_BITS ) - 1 );
}
} // namespace qv

#endif
