/** @file
    Time: a date and a time of day in UTC, to the second.

        QV_TIME *due = qvTimeNow();
        qvTimeShiftMonths( &due, 1 );
        qvTimeSetHour( &due, 12 );
        QV_STRING *text = qvTimeToString( due );        // UTC 2024-03-01 12:07:31 (Friday)
        qvTimeRelease( due );

    Fields. A Time holds six integers: any year, a month from 1 to 12, a day from 1 to 31 whatever the month, an hour
    from 0 to 23, a minute from 0 to 59 and a second from 0 to 61, which leaves room for leap seconds. There is no zone
    and no count from an epoch; qv_timestamp.h has what measures intervals. The calendar is the Gregorian one, extended
    to the times before it was introduced; the year 0 is a leap year. Weekdays are defined from the year 0 on.

    Value and copy. A Time that has other references is never changed: setters and shifts take the address of the
    caller's reference and, if the Time is shared, replace it by a copy first, which they change. So to retain is to
    copy.

    Order. Times compare by their fields, from the year down to the second. The text is "UTC ", the date, the time of
    day and, if the date is valid, the weekday in parentheses; qvTimeTryCreateFromString() reads it back, but for
    negative years and for the months, which it also takes by name.

    Costs. All functions take a constant time, shifts over millions of years too; reading a text takes time in
    proportion to its length.

    Threads. Any thread may read a Time, a shared one too. A variable that setters and shifts change belongs to one
    thread at a time.

    Null as a Time, a text, `tm` or `*tm` ends the process. A result that is a Time belongs to the caller. */

#ifndef QV_TIME_H
#define QV_TIME_H

#include "qv/sys/qv_types.h"

#include <time.h>

QV_FAMILY( Time, QV_TIME )

/* Creation ------------------------------------------------------------------------------------------------------- */

/** Returns 0-01-01 00:00:00. */
QV_API QV_TIME *qvTimeCreate( void );

/** Returns a copy. */
QV_API QV_TIME *qvTimeCreateFrom( QV_TIME *from );

/** Returns the present time of the system's clock. A clock before the epoch ends the process. */
QV_API QV_TIME *qvTimeNow( void );

/** Returns the time `t` seconds after the epoch, 1970-01-01 00:00:00; null if its year doesn't fit into the `struct tm`
    of C. */
QV_API QV_TIME *qvTimeTryCreateFromTimeT( time_t t );

/** Returns the time that a text tells; null if it tells none.

        [UTC] year[-month[-day]] [hour[:minute[:second]]] [(weekday)]

    White space separates the parts; only one character of it may stand before a fourth part. The year is a decimal
    number, the month a number or an English name in full or of three letters, the weekday an English name in full; case
    doesn't count. What is left out is the first month, the first day and midnight. The date must exist and the weekday
    must be its own. */
QV_API QV_TIME *qvTimeTryCreateFromString( QV_STRING *from );

/* Fields --------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Returns one field, in the range that the head of this file tells. */
QV_API QV_INT qvTimeYear( QV_TIME *tm );
QV_API QV_INT qvTimeMonth( QV_TIME *tm );
QV_API QV_INT qvTimeDay( QV_TIME *tm );
QV_API QV_INT qvTimeHour( QV_TIME *tm );
QV_API QV_INT qvTimeMinute( QV_TIME *tm );
QV_API QV_INT qvTimeSecond( QV_TIME *tm );
/** @} */

/** @{ */
/** Sets one field and no other, so that the day may be one that the month doesn't have. A value outside the field's
    range ends the process. */
QV_API void qvTimeSetYear( QV_TIME **tm, QV_INT year );
QV_API void qvTimeSetMonth( QV_TIME **tm, QV_INT month );
QV_API void qvTimeSetDay( QV_TIME **tm, QV_INT day );
QV_API void qvTimeSetHour( QV_TIME **tm, QV_INT hour );
QV_API void qvTimeSetMinute( QV_TIME **tm, QV_INT minute );
QV_API void qvTimeSetSecond( QV_TIME **tm, QV_INT second );
/** @} */

/** Sets all fields to the present time of the system's clock. A clock before the epoch ends the process. */
QV_API void qvTimeSetNow( QV_TIME **tm );

/* Shifting ------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Shifts by so many years or months, back if negative. If the new month doesn't have the day, the result is the first
    of the month after it: 2024-01-31 and one month is 2024-03-01. A year that doesn't fit into a QV_INT ends the
    process. */
QV_API void qvTimeShiftYears( QV_TIME **tm, QV_INT years );
QV_API void qvTimeShiftMonths( QV_TIME **tm, QV_INT months );
/** @} */

/** @{ */
/** Shifts by so many days, hours, minutes or seconds, back if negative. Each minute has 60 seconds: a shift by seconds
    turns a second of 60 or 61 into one of the next minute. A year that doesn't fit into a QV_INT ends the process. */
QV_API void qvTimeShiftDays( QV_TIME **tm, QV_INT days );
QV_API void qvTimeShiftHours( QV_TIME **tm, QV_INT hours );
QV_API void qvTimeShiftMinutes( QV_TIME **tm, QV_INT minutes );
QV_API void qvTimeShiftSeconds( QV_TIME **tm, QV_INT seconds );
/** @} */

/* Questions ------------------------------------------------------------------------------------------------------ */

/** True if the month has the day. */
QV_API QV_BOOL qvTimeValid( QV_TIME *tm );

/** True if the year is a leap year. */
QV_API QV_BOOL qvTimeLeapYear( QV_TIME *tm );

/** Returns the number of days of the month, 28 to 31. */
QV_API QV_INT qvTimeDaysInMonth( QV_TIME *tm );

/** Returns the number of days of the year, 365 or 366. */
QV_API QV_INT qvTimeDaysInYear( QV_TIME *tm );

/** Returns the number of the day in its year, 1 for the first of January. */
QV_API QV_INT qvTimeDayOfYear( QV_TIME *tm );

/** Returns the weekday, 0 (Monday) to 6 (Sunday). A day that the month doesn't have counts on into the next month. */
QV_API QV_INT qvTimeWeekday( QV_TIME *tm );

/** Sets `*t` to the seconds since the epoch. False, and `*t` is 0, if they can't be told: the year doesn't fit into a
    `struct tm`, or it is the last second before the epoch, which looks like a failure. `t` may be null. */
QV_API QV_BOOL qvTimeTryConvertToTimeT( QV_TIME *tm, time_t *t );

/** Sets `*delta` to the seconds from `tmA` to `tmB`, negative if `tmB` is the earlier one. False, and `*delta` is 0, if
    they don't fit into a QV_INT. `delta` may be null. */
QV_API QV_BOOL qvTimeDeltaSeconds( QV_TIME *tmA, QV_TIME *tmB, QV_INT *delta );

#endif
