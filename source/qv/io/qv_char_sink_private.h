#ifndef QV_CHAR_SINK_PRIVATE_H
#define QV_CHAR_SINK_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** What a kind of char sink consists of. Every callback gets the closure that the sink was made with, runs on the
    thread that uses the sink, and gives QV_FALSE for a failure, after which none is called again. It must not use the
    sink that called it. */

/** Writes `charCount` characters, at least 1, of the String, from `charOffset` on; the range lies inside the String.
    A callback that keeps the String retains it. */
typedef QV_BOOL ( *QV___CHAR_SINK_WRITE_FUNC )( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount );

/** Finishes pending work. Called on demand, and once more before the closure is given up. */
typedef QV_BOOL ( *QV___CHAR_SINK_FLUSH_FUNC )( QV_OBJ *closure );

/** A new sink, owned by the caller. It retains `closure`, which may be null, until it ends. Null as a callback ends
    the process. */
QV_API QV_CHAR_SINK *qv___CharSinkCreate(
    QV___CHAR_SINK_WRITE_FUNC writeFunc, QV___CHAR_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure );

#ifdef __cplusplus
namespace qv
{
/** Writes `charCount` characters, at least 1, all below 0x110000, which are the caller's. */
typedef QV_BOOL ( *CharSinkWriteCharsFunc )( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount );

/** The same with a callback that qvCharSinkWriteChars() takes instead of a temporary String: for the sinks of the
    library that can write an array as well as a String. */
QV_CHAR_SINK *createCharSink(
    QV___CHAR_SINK_WRITE_FUNC writeFunc, CharSinkWriteCharsFunc writeCharsFunc, QV___CHAR_SINK_FLUSH_FUNC flushFunc,
    QV_OBJ *closure );
} // namespace qv
#endif

#endif
