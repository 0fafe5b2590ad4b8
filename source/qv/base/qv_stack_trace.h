/** @file
    Stack trace: the calls that a thread was in, as lines of text.

        QV_STACK_TRACE *st = qvStackTraceCreate( 0, 10 );
        for( QV_INT i = 0; i < qvStackTraceLength( st ); i++ )
        {
            QV_STRING *line = qvStackTraceAt( st, i );
            qvPrint( line );
            qvStringRelease( line );
        }
        qvStackTraceRelease( st );

    Line 0 is the innermost call, that of qvStackTraceCreate(). The text of a line is the platform's: the file,
    the function if it is known, the address. At most 4000 calls are looked at, those of the library's own
    included.

    Costs. Taking a trace walks the stack and looks each address up; expect some microseconds for each line.

    Threads. A trace is never changed after its creation, so any thread may read it.

    Null as a trace ends the process. */

#ifndef QV_STACK_TRACE_H
#define QV_STACK_TRACE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( StackTrace, QV_STACK_TRACE )

/** The stack of the calling thread, from the caller of this function on, without the `skip` innermost calls. At most
    `maxLength` lines; -1 means no limit. A `skip` below 0 and a `maxLength` below -1 end the process; a `skip` beyond
    the stack results in an empty trace. */
QV_API QV_STACK_TRACE *qvStackTraceCreate( QV_INT skip, QV_INT maxLength );

/** How many lines there are. */
QV_API QV_INT qvStackTraceLength( QV_STACK_TRACE *st );

/** A line as a new String. An index outside the trace ends the process. */
QV_API QV_STRING *qvStackTraceAt( QV_STACK_TRACE *st, QV_INT idx );

/** All lines as a new Vector of Strings. */
QV_API QV_VECTOR *qvStackTraceVector( QV_STACK_TRACE *st );

/** Prints each line with a call of qvPrintCstr(), without an end of line. */
QV_API void qvStackTracePrint( QV_STACK_TRACE *st );

#endif
