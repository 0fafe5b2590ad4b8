/** @file
    Months: 1 (January) to 12 (December). Callable from any thread. */

#ifndef QV_MONTH_H
#define QV_MONTH_H

#include "qv/sys/qv_types.h"

/** True for 1 to 12. */
#define QV_MONTH_OK( mo ) ( ( mo ) >= 1 && ( mo ) <= 12 )

/** The English name, "January" to "December", as a new String. Another number ends the process. */
QV_API QV_STRING *qvMonthToString( QV_INT mo );

/** The month of an English name, in full or its first three letters in any case, or of a decimal number from 1 to 12;
    -1 for anything else. White space at the ends doesn't count. Null ends the process. */
QV_API QV_INT qvMonthFromString( QV_STRING *qvs );

#endif
