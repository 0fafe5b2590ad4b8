/** @file
    Time zones: the system's own, and the names that Windows and the IANA database give to the zones of the world.

        QV_STRING *zone = qvTimezone();                             // Europe/Berlin
        QV_STRING *name = qvTimezoneIanaToWindows( zone );          // W. Europe Standard Time, or null

    A Time is in UTC, whatever the zone. One Windows name stands for several IANA names; its translation is the one that
    the table names first. The table is windowsZones of the Unicode CLDR. Names are looked up by bisection, and their
    case counts. Any thread may call any function. Null as a name ends the process. Results that are objects belong to
    the caller. */

#ifndef QV_TIMEZONE_H
#define QV_TIMEZONE_H

#include "qv/sys/qv_types.h"

/** Returns the IANA name of the system's time zone; an empty String if none is found. Each call reads "/etc/timezone";
    if that can't be opened, the value ZONE of "/etc/sysconfig/clock"; if there is none, the value TZ of
    "/etc/TIMEZONE". Of a line the first 128 bytes count. */
QV_API QV_STRING *qvTimezone( void );

/** Returns the present offset of local time in seconds, positive east of UTC; 0 if it can't be told. */
QV_API QV_INT qvTimezoneUtcOffset( void );

/** Returns the first IANA name of a Windows name; null if the table has no such Windows name. */
QV_API QV_STRING *qvTimezoneWindowsToIana( QV_STRING *name );

/** Returns the Windows name of an IANA name; null if the table has no such IANA name. */
QV_API QV_STRING *qvTimezoneIanaToWindows( QV_STRING *name );

/** True if the table has such a Windows name. */
QV_API QV_BOOL qvTimezoneWindowsOk( QV_STRING *name );

/** True if the table has such an IANA name. */
QV_API QV_BOOL qvTimezoneIanaOk( QV_STRING *name );

/** Returns a Vector of all 455 IANA names, as Strings in ascending order. */
QV_API QV_VECTOR *qvTimezoneList( void );

#endif
