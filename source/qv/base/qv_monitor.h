/** @file
    Monitor: mutual exclusion as an object.

        qvMonitorEnter( monitor );
        ...                             // one thread at a time
        qvMonitorLeave( monitor );

    A monitor is not recursive: a thread that enters one that it holds waits for itself. It has no owner either: it
    records that it is held, not by which thread. A thread should not sleep while it holds a monitor: it takes a
    reference to what it waits for, leaves, and then waits.

    Any thread may call any function. Null ends the process, and so does the release of the last reference to a monitor
    that is held. */

#ifndef QV_MONITOR_H
#define QV_MONITOR_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Monitor, QV_MONITOR )

/** Returns a new monitor that no thread holds. It belongs to the caller. */
QV_API QV_MONITOR *qvMonitorCreate( void );

/** Waits until no thread holds the monitor; on return the caller holds it. */
QV_API void qvMonitorEnter( QV_MONITOR *monitor );

/** Gives the monitor up. If it is not held, this ends the process. */
QV_API void qvMonitorLeave( QV_MONITOR *monitor );

#endif
