#ifndef QV_LINE_SOURCE_PRIVATE_H
#define QV_LINE_SOURCE_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** Stores the next line in `*line`, which is null, as a reference for the caller, or leaves null where there is none.

    `closure` is what the source was made with. The call runs on the thread that uses the source, must not use that
    source, and gives QV_FALSE for a failure; a line that it stored before that is delivered. After a failure or a null
    it is not called again. */
typedef QV_BOOL ( *QV___LINE_SOURCE_READ_FUNC )( QV_OBJ *closure, QV_STRING **line );

/** A new source, owned by the caller. It retains `closure`, which may be null, until it ends. Null as `readFunc` ends
    the process. */
QV_API QV_LINE_SOURCE *qv___LineSourceCreate( QV___LINE_SOURCE_READ_FUNC readFunc, QV_OBJ *closure );

#endif
