/** @file
    LineSource: the abstract reader of lines, each a String without its terminator. What stands behind it is told by who
    made it; qv_nlf_line_source.h has the one over a char source.

        QV_LINE_SOURCE *source = qvFileOpenLineSource( fn, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF );
        QV_STRING      *line;
        while( ( line = qvLineSourceRead( source ) ) != NULL )
        {
            ...
            qvStringRelease( line );
        }
        QV_BOOL ok = !qvLineSourceError( source );
        qvLineSourceRelease( source );

    End. The read that finds no line any more gives null and sets the end flag; a failure sets the error flag and the
    end flag. Nothing clears a flag, and a source at its end gives null at once.

    Threads. A source is used by one thread at a time, and so is what stands behind it.

    Null as a source ends the process. */

#ifndef QV_LINE_SOURCE_H
#define QV_LINE_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( LineSource, QV_LINE_SOURCE )

/** True once a read has found no line or has failed. */
QV_API QV_BOOL qvLineSourceEnd( QV_LINE_SOURCE *source );

/** True once a read has failed. */
QV_API QV_BOOL qvLineSourceError( QV_LINE_SOURCE *source );

/** How many lines have been read; stays at QV_INT_MAX once there. */
QV_API QV_INT qvLineSourceLinesRead( QV_LINE_SOURCE *source );

/** The next line, owned by the caller, or null at the end or after an error. */
QV_API QV_STRING *qvLineSourceRead( QV_LINE_SOURCE *source );

/** The next lines as a new Vector of Strings: up to `maxLineCount` of them, or with -1 all that are left. A limit below
    -1 ends the process. */
QV_API QV_VECTOR *qvLineSourceReadLines( QV_LINE_SOURCE *source, QV_INT maxLineCount );

#endif
