#ifndef QV_CHAR_SOURCE_PRIVATE_H
#define QV_CHAR_SOURCE_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** Appends up to `maxCharCount` characters, at least 1, to `*qvs` and stores their number in `*charsRead`, which is 0.
    A limit of QV_INT_MAX is none. A number outside 0 to the limit ends the process.

    `closure` is what the source was made with. The call runs on the thread that uses the source, must not use that
    source, and gives QV_FALSE for a failure, whatever came before it. After a failure or a short number it is not
    called again: it keeps reading until the limit is met or the data ends. */
typedef QV_BOOL ( *QV___CHAR_SOURCE_READ_FUNC )(
    QV_OBJ *closure, QV_STRING **qvs, QV_INT maxCharCount, QV_INT *charsRead );

/** A new source, owned by the caller. It retains `closure`, which may be null, until it ends. Null as `readFunc` ends
    the process. */
QV_API QV_CHAR_SOURCE *qv___CharSourceCreate( QV___CHAR_SOURCE_READ_FUNC readFunc, QV_OBJ *closure );

#ifdef __cplusplus
namespace qv
{
/** Copies up to `maxCharCount` characters, at least 1, to the array, by the rules of the read callback. All must be
    below 0x110000. */
typedef QV_BOOL ( *CharSourceReadCharsFunc )( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead );

/** The same with a callback that qvCharSourceReadChars() takes instead of a temporary String: for the sources of the
    library that can fill an array as well as a String. Lines are read through it. */
QV_CHAR_SOURCE *createCharSource(
    QV___CHAR_SOURCE_READ_FUNC readFunc, CharSourceReadCharsFunc readCharsFunc, QV_OBJ *closure );
} // namespace qv
#endif

#endif
