#ifndef QV_UNIQUE_PRIVATE_H
#define QV_UNIQUE_PRIVATE_H

#include "qv/sys/qv_atomic.h"
#include "qv/sys/qv_types.h"

#define QV___UNIQUE_INVALID ( (QV_INT)-1 )
#define QV___UNIQUE_MAX     QV_INT_MAX

/** Draws the number that was given back last, else the lowest never drawn. Constant time. */
QV_API QV_INT qv___UniqueGet( void );

/** Gives a number back. It must be drawn. */
QV_API void qv___UniquePut( QV_INT uni );

namespace qv
{
/** Numbers are those of a run: the shutdown forgets all of them, and the next run draws them again. What may outlive a
    run keeps its number together with the run, in one word. The runs count up to 32767 and start again at 0; a number
    takes 48 bits. */
extern QV_INT uniqueRun;

const int UNIQUE_BITS = 48;

inline QV_INT uniqueOfThisRun( QV_INT uni )
{
    return qv___AtomicLoad64( &uniqueRun ) << UNIQUE_BITS | uni;
}

/** False for -1, which is no number. */
inline bool isUniqueOfThisRun( QV_INT kept )
{
    return kept >> UNIQUE_BITS == qv___AtomicLoad64( &uniqueRun );
}

/** The number alone. */
inline QV_INT uniqueNumber( QV_INT kept )
{
    return kept & ( ( QV_INT( 1 ) << UNIQUE_BITS ) - 1 );
}
} // namespace qv

#endif
