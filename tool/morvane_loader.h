/** @file
    The error messages of the system's loader of shared objects. */

#ifndef MORVANE_LOADER_H
#define MORVANE_LOADER_H

namespace morvane
{
/** The system's message about the calling thread's last failed attempt to load a file or to find a symbol; null if none
    has failed. Static, valid until the next attempt. */
const char *loaderReason();
} // namespace morvane

#endif
