/** @file
    What the system's loader of shared objects has to say. */

#ifndef MORVANE_LOADER_H
#define MORVANE_LOADER_H

namespace morvane
{
/** Why the calling thread's last attempt to load a file or to find a symbol failed, in the system's words; null if none
    has failed. Valid until the next attempt. */
const char *loaderReason();
} // namespace morvane

#endif
