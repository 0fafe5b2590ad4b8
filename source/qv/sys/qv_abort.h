/** @file
    The end of a broken contract, and the checks that lead there.

    Sources of the library and of modules include this through qv/runtime/qv_family.h; programs have no use
    for it. Every check quotes its expression exactly as it is written, so an expression is written the way
    the report has to read. */

#ifndef QV_ABORT_H
#define QV_ABORT_H

#include "qv/sys/qv_types.h"

/** Ends the process with a report on the standard error stream and in the report file, if the run has one.

    Never returns. `message` and `expression` are zero-terminated texts or null, `file` is the source without
    its ending or null, `line` counts from 1. Works at any time, before start-up and after shutdown too, from
    any thread; of several threads that fail one reports. Allocates nothing, and waits at most a quarter of a
    second for each of the standard output and error streams to take what has been printed so far. */
QV_API void qv___Abort( const char *message, const char *file, QV_INT line, const char *expression )
    __attribute__( ( noreturn, cold ) );

/** The source that a report names. The build of the library defines it: the path below the source folder, without its
    ending; parts of a family name the family's. */
#ifndef QV___SOURCE
#define QV___SOURCE __FILE__
#endif

/** Ends the process unless `expression` holds. */
#define QV_CHECK( expression )                                                                                         \
    ( __builtin_expect( !!( expression ), 1 ) ? (void)0 : qv___Abort( NULL, QV___SOURCE, __LINE__, #expression ) )

/** The same where the report reads differently from the code. */
#define QV_CHECK_AS( expression, text )                                                                                \
    ( __builtin_expect( !!( expression ), 1 ) ? (void)0 : qv___Abort( NULL, QV___SOURCE, __LINE__, text ) )

/** The same with a message. */
#define QV_CHECK_MESSAGE( expression, message )                                                                        \
    ( __builtin_expect( !!( expression ), 1 ) ? (void)0 : qv___Abort( message, QV___SOURCE, __LINE__, #expression ) )

#endif
