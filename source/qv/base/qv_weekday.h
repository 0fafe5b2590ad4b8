/** @file
    Weekdays: 0 (Monday) to 6 (Sunday). Callable from any thread. */

#ifndef QV_WEEKDAY_H
#define QV_WEEKDAY_H

#include "qv/sys/qv_types.h"

/** True for 0 to 6. */
#define QV_WEEKDAY_OK( wd ) ( ( wd ) >= 0 && ( wd ) <= 6 )

/** The English name, "Monday" to "Sunday", as a new String. Another number ends the process. */
QV_API QV_STRING *qvWeekdayToString( QV_INT wd );

/** The weekday of a full English name, in any case; -1 for anything else. White space at the ends doesn't count. Null
    ends the process. */
QV_API QV_INT qvWeekdayFromString( QV_STRING *qvs );

#endif
