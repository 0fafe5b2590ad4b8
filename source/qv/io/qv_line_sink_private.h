#ifndef QV_LINE_SINK_PRIVATE_H
#define QV_LINE_SINK_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The callbacks of a line sink. Every callback receives the closure of the sink, runs on the thread that uses
    the sink, and returns QV_FALSE for a failure, with the last error set, after which no callback is called again. It
    must not use the sink that called it. */

/** Writes one line. A callback that keeps the String retains it. */
typedef QV_BOOL ( *QV___LINE_SINK_WRITE_FUNC )( QV_OBJ *closure, QV_STRING *line );

/** Finishes pending work. Called by a flush, and before the closure is released. */
typedef QV_BOOL ( *QV___LINE_SINK_FLUSH_FUNC )( QV_OBJ *closure );

/** A new sink, owned by the caller. It retains `closure`, which may be null, until it is freed. Null as a
    callback ends the process. */
QV_API QV_LINE_SINK *qv___LineSinkCreate(
    QV___LINE_SINK_WRITE_FUNC writeFunc, QV___LINE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure );

#endif
