/** @file
    Sleeping until a signal is asserted or a time is over. Callable from any thread. */

#ifndef QV_SLEEP_H
#define QV_SLEEP_H

#include "qv/sys/qv_types.h"

/** Sleeps until the signal is asserted; with null for ever. */
QV_API void qvSleep( QV_SIGNAL *sig );

/** Sleeps for so many milliseconds at most, -1 for no limit, or until the signal is asserted, which may be null. True
    if it was asserted. Another negative limit ends the process. */
QV_API QV_BOOL qvSleepTimed( QV_SIGNAL *sig, QV_INT millisec );

#endif
