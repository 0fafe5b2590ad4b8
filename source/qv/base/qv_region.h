/** @file
    Region: many shared users or one exclusive user.

        qvRegionEnterShared( region );      // readers
        ...
        qvRegionLeave( region );            // of either kind

    Once an exclusive user waits, shared users that come later wait behind it. A region is not recursive, in no mode:
    a thread that holds it must not enter it again. Callable from any thread. Null ends the process. */

#ifndef QV_REGION_H
#define QV_REGION_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Region, QV_REGION )

/** A new region that nobody is in. */
QV_API QV_REGION *qvRegionCreate( void );

/** @{ */
/** Waits until the region can be entered in the mode, and enters it. */
QV_API void qvRegionEnterShared( QV_REGION *region );
QV_API void qvRegionEnterExclusive( QV_REGION *region );
QV_API void qvRegionEnter( QV_REGION *region, QV_BOOL exclusive );
/** @} */

/** Ends the caller's entry, of whichever mode. One that nobody is in ends the process. */
QV_API void qvRegionLeave( QV_REGION *region );

#endif
