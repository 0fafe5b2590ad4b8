/** @file
    Sleeping until a signal is asserted or a time is over. Any thread may sleep, with no monitor held. */

#ifndef QV_SLEEP_H
#define QV_SLEEP_H

#include "qv/sys/qv_types.h"

/** Sleeps until the signal is asserted. With null it never returns. */
QV_API void qvSleep( QV_SIGNAL *sig );

/** Sleeps until the signal is asserted or `millisec` milliseconds have passed; -1 means no limit. The signal may be
    null. True if it was asserted, false if the time ran out. Another negative limit ends the process, unless the signal
    is asserted already. */
QV_API QV_BOOL qvSleepTimed( QV_SIGNAL *sig, QV_INT millisec );

#endif
