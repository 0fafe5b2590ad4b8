#ifndef QV_CHAR_SINK_PRIVATE_H
#define QV_CHAR_SINK_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The callbacks of a char sink. Every callback receives the closure of the sink, runs on the thread that uses
    the sink, and returns QV_FALSE for a failure, with the last error set, after which no callback is called again. It
    must not use the sink that called it. */

/** Writes `charCount` characters, at least 1, of the String, from `charOffset` on; the range lies inside the String.
    A callback that keeps the String retains it. */
typedef QV_BOOL ( *QV___CHAR_SINK_WRITE_FUNC )( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount );

/** Finishes pending work. Called by a flush, and before the closure is released. */
typedef QV_BOOL ( *QV___CHAR_SINK_FLUSH_FUNC )( QV_OBJ *closure );

/** A new sink, owned by the caller. It retains `closure`, which may be null, until it is freed. Null as a
    callback ends the process. */
QV_API QV_CHAR_SINK *qv___CharSinkCreate(
    QV___CHAR_SINK_WRITE_FUNC writeFunc, QV___CHAR_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure );

#ifdef __cplusplus
namespace qv
{
/** Writes `charCount` characters, at least 1, all below 0x110000, of an array that it must not keep. */
typedef QV_BOOL ( *CharSinkWriteCharsFunc )( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount );

/** The same with a callback that qvCharSinkWriteChars() calls instead of creating a temporary String. `writeCharsFunc`
    may be null. */
QV_CHAR_SINK *createCharSink(
    QV___CHAR_SINK_WRITE_FUNC writeFunc, CharSinkWriteCharsFunc writeCharsFunc, QV___CHAR_SINK_FLUSH_FUNC flushFunc,
    QV_OBJ *closure );
} // namespace qv
#endif

#endif
