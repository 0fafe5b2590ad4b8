#ifndef QV_LINE_SOURCE_PRIVATE_H
#define QV_LINE_SOURCE_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** Stores the next line in `*line`, which is null, as a reference for the caller, or leaves it null at the end of the
    data.

    It receives the closure of the source, runs on the thread that uses the source, and returns QV_FALSE for a failure,
    with the last error set; a line that it has stored is delivered also then. After a failure or without a line it is
    not called again. It must not use the source that called it. */
typedef QV_BOOL ( *QV___LINE_SOURCE_READ_FUNC )( QV_OBJ *closure, QV_STRING **line );

/** A new source, owned by the caller. It retains `closure`, which may be null, until it is freed. Null as `readFunc`
    ends the process. */
QV_API QV_LINE_SOURCE *qv___LineSourceCreate( QV___LINE_SOURCE_READ_FUNC readFunc, QV_OBJ *closure );

#endif
