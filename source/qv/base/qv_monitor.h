/** @file
    Monitor: mutual exclusion as an object.

        qvMonitorEnter( monitor );
        ...                             // one thread at a time
        qvMonitorLeave( monitor );

    A monitor is not recursive: a thread that enters one that it holds waits for itself. It has no owner either; it
    records that it is held, not by whom. Nobody sleeps with one held: take a reference to what you wait for, leave,
    then wait. Callable from any thread. Null ends the process, and so does the end of a monitor that is held. */

#ifndef QV_MONITOR_H
#define QV_MONITOR_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Monitor, QV_MONITOR )

/** A new monitor that nobody holds. */
QV_API QV_MONITOR *qvMonitorCreate( void );

/** Waits until nobody holds the monitor, and holds it. */
QV_API void qvMonitorEnter( QV_MONITOR *monitor );

/** Gives the monitor up. One that is not held ends the process. */
QV_API void qvMonitorLeave( QV_MONITOR *monitor );

#endif
