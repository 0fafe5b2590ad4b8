/** @file
    Slabs: blocks of 2 MiB from the operating system itself, of which parts of one size are taken in turn and left in any
    order.

    There is one slab at a time of which parts are taken. Where all that were taken have been left, they are taken anew:
    what is made and released again and again is in memory that is there. Otherwise a slab is closed after its last part,
    and goes back with the last one that is left. Where few are in use that would hold it, the pages between them go back.
    From the second slab on the operating system may map each as one page: that costs a fraction of what as many pages of
    4 KiB cost.

    Any thread may take parts and leave them. */

#ifndef QV_SLAB_PRIVATE_H
#define QV_SLAB_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv
{
/** Bytes of a part, a multiple of 16. */
const QV_INT SLAB_PART = 2000;

/** A part, or null if the operating system has no memory. */
void *takeSlabPart();

/** Leaves a part, which nobody uses any more. */
void leaveSlabPart( void *part );

/** Closes the slab of which parts are taken. */
void closeSlabs();

/** A block as from qvMemAlloc(), of several MiB, for which the operating system may give pages of 2 MiB. Those that are not
    written take no memory. */
void *allocLarge( QV_INT bytes );
} // namespace qv

#endif
