/** @file
    Time zones: the system's own, and the names that Windows and the IANA database give to the zones of the world.

        QV_STRING *zone = qvTimezone();                             // Europe/Berlin
        QV_STRING *name = qvTimezoneIanaToWindows( zone );          // W. Europe Standard Time, or null

    A Time stays in UTC whatever stands here. One Windows name stands for several IANA names; the first of them is its
    translation. The table is that of the Unicode CLDR, windowsZones. Callable from any thread. Null as a name ends the
    process. */

#ifndef QV_TIMEZONE_H
#define QV_TIMEZONE_H

#include "qv/sys/qv_types.h"

/** The IANA name of the system's time zone, read from "/etc/timezone", else "/etc/sysconfig/clock", else
    "/etc/TIMEZONE" with each call; empty if there is none. Of a line the first 128 bytes count, and the rest is not
    looked at. */
QV_API QV_STRING *qvTimezone( void );

/** The present offset of local time, in seconds east of UTC; 0 if it can't be told. */
QV_API QV_INT qvTimezoneUtcOffset( void );

/** @{ */
/** The other name, null if the table doesn't hold this one. */
QV_API QV_STRING *qvTimezoneWindowsToIana( QV_STRING *name );
QV_API QV_STRING *qvTimezoneIanaToWindows( QV_STRING *name );
/** @} */

/** @{ */
/** True if the table holds the name. */
QV_API QV_BOOL qvTimezoneWindowsOk( QV_STRING *name );
QV_API QV_BOOL qvTimezoneIanaOk( QV_STRING *name );
/** @} */

/** All 455 IANA names, in their order as Strings. */
QV_API QV_VECTOR *qvTimezoneList( void );

#endif
