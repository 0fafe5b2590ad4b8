/** @file
    Slabs: large blocks from the operating system itself, of which parts are taken in turn and given back in any order.

    A slab of 2 MiB can be one page of the processor: taking memory from it costs a fraction of what as many pages of 4 KiB
    cost. Its parts are of one size. When so few of them are left that a part would hold much more memory than its own,
    the pages between them go back to the operating system; the slab itself goes back with its last part.

    Parts are taken by one thread, which has created the slab. Any thread may give a part back. */

#ifndef QV_SLAB_PRIVATE_H
#define QV_SLAB_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv
{
struct Slab;

/** Bytes of a part, a multiple of 16. */
const QV_INT SLAB_PART = 2000;

/** A new slab, or null if the operating system has none. */
Slab *createSlab();

/** The next part, or null after the last one. */
void *takeSlabPart( Slab *slab );

/** Called once by the thread that takes parts, when it takes no more. */
void closeSlab( Slab *slab );

/** Gives a part back, which nobody uses any more. */
void leaveSlabPart( void *part );

/** A block as from qvMemAlloc(), of several MiB, for which the operating system may give pages of 2 MiB. Those that are not
    written take no memory. */
void *allocLarge( QV_INT bytes );
} // namespace qv

#endif
