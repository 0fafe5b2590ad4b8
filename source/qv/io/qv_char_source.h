/** @file
    CharSource: the abstract reader of characters. What stands behind it, a codec over a byte source, a String or
    something else, is told by the function that made it.

        QV_CHAR_SOURCE *source = qvCharsetCreateCharSource( byteSource, QV_CHARSET_UTF_8, 0 );
        QV_STRING      *qvs    = qvStringCreate();
        qvCharSourceRead( source, &qvs, -1 );                   // appends all there is
        QV_BOOL         ok     = !qvCharSourceError( source );
        qvCharSourceRelease( source );

    End. A read that gives fewer characters than asked for has met the end and sets the end flag; one that gives exactly
    what is left does not, the next one does, with 0 characters. A failure sets the error flag and the end flag, and the
    characters that came before it are delivered. Nothing clears a flag, and a source at its end gives 0 at once.

    Limits. `maxCharCount` is -1 for no limit or 0 and more; anything below ends the process.

    Threads. A source is used by one thread at a time, and so is what stands behind it.

    Costs are those of what stands behind; the source itself adds a constant, and for an array at most a copy of what
    was read. Null as a source ends the process. */

#ifndef QV_CHAR_SOURCE_H
#define QV_CHAR_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( CharSource, QV_CHAR_SOURCE )

/** True once a read has met the end of the data or failed. */
QV_API QV_BOOL qvCharSourceEnd( QV_CHAR_SOURCE *source );

/** True once a read has failed. */
QV_API QV_BOOL qvCharSourceError( QV_CHAR_SOURCE *source );

/** Appends up to `maxCharCount` characters to the String in `*qvs`. The result is their number. */
QV_API QV_INT qvCharSourceRead( QV_CHAR_SOURCE *source, QV_STRING **qvs, QV_INT maxCharCount );

/** Copies up to `maxCharCount` characters to the array, which must have room for so many, however few come; with -1,
    for as many as the data has bytes. The result is their number. `chars` may be null with a limit of 0. */
QV_API QV_INT qvCharSourceReadChars( QV_CHAR_SOURCE *source, QV_CHAR *chars, QV_INT maxCharCount );

#endif
