/** @file
    LineSource: the abstract reader of lines, each a String without its terminator. Where they come from depends on the
    function that created the source; qv_nlf_line_source.h has the source on top of a char source.

        QV_LINE_SOURCE *source = qvFileOpenLineSource( fn, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF );
        QV_STRING      *line;
        while( ( line = qvLineSourceRead( source ) ) != NULL )
        {
            ...
            qvStringRelease( line );
        }
        QV_BOOL ok = !qvLineSourceError( source );
        qvLineSourceRelease( source );

    End. A read that finds no further line returns null and sets the end flag; a failure sets the error flag and the end
    flag. Nothing clears a flag, and a source at its end returns null at once.

    Reasons. What failed is told by the last error (qv_error.h), which the failure sets; so does each call after it that
    returns nothing because of it, or true as the error flag. The line is the one that could not be read whole.

    Threads. One thread at a time may use a source and what it reads from.

    Null as a source ends the process. */

#ifndef QV_LINE_SOURCE_H
#define QV_LINE_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( LineSource, QV_LINE_SOURCE )

/** The end flag: true after a read has found no line or has failed. */
QV_API QV_BOOL qvLineSourceEnd( QV_LINE_SOURCE *source );

/** The error flag: true after a read has failed. True sets the last error. */
QV_API QV_BOOL qvLineSourceError( QV_LINE_SOURCE *source );

/** The number of lines that have been read; it never exceeds QV_INT_MAX. */
QV_API QV_INT qvLineSourceLinesRead( QV_LINE_SOURCE *source );

/** The next line, owned by the caller, or null at the end of the data or after a failure. */
QV_API QV_STRING *qvLineSourceRead( QV_LINE_SOURCE *source );

/** The next lines as a new Vector of Strings, owned by the caller: up to `maxLineCount`, or with -1 all that are left.
    A limit below -1 ends the process. */
QV_API QV_VECTOR *qvLineSourceReadLines( QV_LINE_SOURCE *source, QV_INT maxLineCount );

#endif
