/** @file
    Region: many shared users or one exclusive user.

        qvRegionEnterShared( region );      // readers
        ...
        qvRegionLeave( region );            // of either kind

    Once an exclusive user waits for the shared users to leave, all later users wait until it has left. A region is not
    recursive: a thread that is in must not enter again, in either mode.

    Costs. Entering and leaving take one to four locks for a few instructions each, where a monitor takes one: a region
    is for uses that take long.

    Any thread may call any function. Null ends the process. */

#ifndef QV_REGION_H
#define QV_REGION_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Region, QV_REGION )

/** Returns a new region without users, which belongs to the caller. */
QV_API QV_REGION *qvRegionCreate( void );

/** Enters as a shared user. Waits while an exclusive user is in, or waits for shared users to leave. */
QV_API void qvRegionEnterShared( QV_REGION *region );

/** Enters as the exclusive user. Waits as a shared user would, then until all shared users have left. */
QV_API void qvRegionEnterExclusive( QV_REGION *region );

/** qvRegionEnterExclusive() if `exclusive` is true, else qvRegionEnterShared(). */
QV_API void qvRegionEnter( QV_REGION *region, QV_BOOL exclusive );

/** Ends the caller's use, in either mode. A region without users ends the process. */
QV_API void qvRegionLeave( QV_REGION *region );

#endif
