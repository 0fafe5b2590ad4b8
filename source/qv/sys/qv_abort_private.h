#ifndef QV_ABORT_PRIVATE_H
#define QV_ABORT_PRIVATE_H

#include "qv/sys/qv_types.h"

#include <signal.h>
#include <stdio.h>

/** Where the report file goes: a zero-terminated path in a block of qvMemAlloc(), which the shutdown frees, or null for
    no file. */
QV_API char *qv___AbortFilename;

/** Writes the report to the standard error stream and the report file and ends the process. `siginfo` is that of
    the signal that led here, or null. */
QV_API void qv___DoAbort(
    const char *message, const char *file, QV_INT line, const char *expression, const siginfo_t *siginfo )
    __attribute__( ( noreturn, cold ) );

/** Writes the report without its stack. */
QV_API void qv___DoAbortMessage(
    FILE *stream, const char *message, const char *file, QV_INT line, const char *expression,
    const siginfo_t *siginfo );

/** Writes the stack of the calling thread. */
QV_API void qv___DoAbortBacktrace( FILE *stream );

/** The handler of the fatal signals. */
QV_API void qv___AbortSignalAction( int signal, siginfo_t *siginfo, void *context );

namespace qv
{
/** What a signal and its code mean, with a leading blank, or the empty text. */
const char *signalText( int signal );
const char *signalCodeText( int signal, int code );
} // namespace qv

#endif
