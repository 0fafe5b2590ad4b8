#ifndef QV_LINE_SINK_PRIVATE_H
#define QV_LINE_SINK_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** What a kind of line sink consists of. Every callback gets the closure that the sink was made with, runs on the
    thread that uses the sink, and gives QV_FALSE for a failure, after which none is called again. It must not use the
    sink that called it. */

/** Writes one line. A callback that keeps the String retains it. */
typedef QV_BOOL ( *QV___LINE_SINK_WRITE_FUNC )( QV_OBJ *closure, QV_STRING *line );

/** Finishes pending work. Called on demand, and once more before the closure is given up. */
typedef QV_BOOL ( *QV___LINE_SINK_FLUSH_FUNC )( QV_OBJ *closure );

/** A new sink, owned by the caller. It retains `closure`, which may be null, until it ends. Null as a callback ends
    the process. */
QV_API QV_LINE_SINK *qv___LineSinkCreate(
    QV___LINE_SINK_WRITE_FUNC writeFunc, QV___LINE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure );

#endif
