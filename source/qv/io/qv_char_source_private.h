#ifndef QV_CHAR_SOURCE_PRIVATE_H
#define QV_CHAR_SOURCE_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** Appends up to `maxCharCount` characters, at least 1, to `*qvs` and stores their number in `*charsRead`, which is 0.
    A limit of QV_INT_MAX means no limit. A number outside 0 to the limit ends the process.

    It receives the closure of the source, runs on the thread that uses the source, and returns QV_FALSE for a failure,
    with the last error set, also if it has delivered something before. After a failure or a number below the limit it
    is not called again, so it goes on until the limit is reached or the data ends. It must not use the source that
    called it. */
typedef QV_BOOL ( *QV___CHAR_SOURCE_READ_FUNC )(
    QV_OBJ *closure, QV_STRING **qvs, QV_INT maxCharCount, QV_INT *charsRead );

/** A new source, owned by the caller. It retains `closure`, which may be null, until it is freed. Null as `readFunc`
    ends the process. */
QV_API QV_CHAR_SOURCE *qv___CharSourceCreate( QV___CHAR_SOURCE_READ_FUNC readFunc, QV_OBJ *closure );

#ifdef __cplusplus
namespace qv
{
/** Copies up to `maxCharCount` characters, at least 1, to the array, by the rules of the read callback. All must be
    below 0x110000. */
typedef QV_BOOL ( *CharSourceReadCharsFunc )( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead );

/** The same with a callback that qvCharSourceReadChars() calls instead of creating a temporary String. Lines are read
    through it. `readCharsFunc` may be null. */
QV_CHAR_SOURCE *createCharSource(
    QV___CHAR_SOURCE_READ_FUNC readFunc, CharSourceReadCharsFunc readCharsFunc, QV_OBJ *closure );
} // namespace qv
#endif

#endif
