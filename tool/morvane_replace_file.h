#ifndef MORVANE_REPLACE_FILE_H
#define MORVANE_REPLACE_FILE_H

#include "qv/sys/qv_types.h"

namespace morvane
{
/** Gives a file new content, or creates it, so that whatever happens either the old content or the new one is there as
    a whole: the new one is written beside it and renamed. Permissions are kept; a link stays one and the file that it
    leads to changes, but one that leads nowhere is replaced. What is no regular file, as a terminal, is written
    directly. Gives null, or a static text of what went wrong; then nothing has changed. */
const char *replaceFile( QV_STRING *fn, QV_BUFFER *content );

/** Why a file cannot be read, as a static text. */
const char *unreadableReason( QV_STRING *fn );
} // namespace morvane

#endif
