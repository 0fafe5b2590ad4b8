/** @file
    Tells people at a terminal how far long work has come: a line on the standard error stream with what is done, what
    there is, the rate and the time that is left. It appears after a second, and is gone at the end of the work and before
    anything else is printed there. Nothing is told where the standard error stream is no terminal. */

#ifndef MORVANE_PROGRESS_H
#define MORVANE_PROGRESS_H

#include "qv/sys/qv_types.h"

namespace morvane
{
/** Work on a number of bytes begins; -1 if it is not known. `subject` may be null, and is held until the end. Not for work
    that writes to a terminal. */
void beginProgress( QV_STRING *subject, QV_INT total );

/** That many more bytes are done. */
void addProgress( QV_INT count );

/** The work has ended. */
void endProgress();

/** Wipes the line. */
void hideProgress();
} // namespace morvane

#endif
