/** @file
    CharSource: the abstract reader of characters. They come from a codec over a byte source, a String or another
    stream, depending on the function that created the source.

        QV_CHAR_SOURCE *source = qvCharsetCreateCharSource( byteSource, QV_CHARSET_UTF_8, 0 );
        QV_STRING      *qvs    = qvStringCreate();
        qvCharSourceRead( source, &qvs, -1 );                   // appends all there is
        QV_BOOL         ok     = !qvCharSourceError( source );
        qvCharSourceRelease( source );

    End. A read that returns fewer characters than asked for has met the end and sets the end flag. One that returns
    exactly what is left does not; the next one does, with 0 characters. A failure sets the error flag and the end flag,
    and the characters that came before it are delivered. Nothing clears a flag, and a source at its end returns 0 at
    once.

    Reasons. What failed is told by the last error (qv_error.h), which the failure sets; so does each call after it that
    returns nothing because of it, or true as the error flag. If bytes could not be decoded, the offset is that of the
    first that could not, from where the codec began to read.

    Limits. `maxCharCount` is -1 for no limit or 0 and more; anything below ends the process.

    Threads. One thread at a time may use a source and what it reads from.

    Costs are those of what it reads from; the source adds a constant, and for an array at most a copy of what was read.
    Null as a source ends the process. */

#ifndef QV_CHAR_SOURCE_H
#define QV_CHAR_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( CharSource, QV_CHAR_SOURCE )

/** The end flag: true after a read has met the end of the data or has failed. */
QV_API QV_BOOL qvCharSourceEnd( QV_CHAR_SOURCE *source );

/** The error flag: true after a read has failed. True sets the last error. */
QV_API QV_BOOL qvCharSourceError( QV_CHAR_SOURCE *source );

/** Appends up to `maxCharCount` characters to the String in `*qvs`, which the call may replace. Returns their number.
    Null as `qvs` or `*qvs` ends the process. */
QV_API QV_INT qvCharSourceRead( QV_CHAR_SOURCE *source, QV_STRING **qvs, QV_INT maxCharCount );

/** Copies up to `maxCharCount` characters to the array, which must have room for that number even if fewer come; with
    -1, for as many as the data has bytes. Returns their number. `chars` may be null if the limit is 0. */
QV_API QV_INT qvCharSourceReadChars( QV_CHAR_SOURCE *source, QV_CHAR *chars, QV_INT maxCharCount );

#endif
