#ifndef QV_ABORT_PRIVATE_H
#define QV_ABORT_PRIVATE_H

#include "qv/sys/qv_types.h"

#include <signal.h>
#include <stdio.h>

/** Where the report file goes: a zero-terminated path in a block of qvMemAlloc(), which the shutdown frees, or null for
    no file. */
QV_API_DATA char *qv___AbortFilename;

/** Writes the report to the standard error stream and the report file and ends the process. `siginfo` is that of the
    signal that led here, or null. Of several threads one writes, and the others wait for the end. Allocates nothing,
    and takes a limited time: a part that cannot be written because of the failure is left out. */
QV_API void qv___DoAbort(
    const char *message, const char *file, QV_INT line, const char *expression, const siginfo_t *siginfo )
    __attribute__( ( noreturn, cold ) );

/** Writes the report without its stack to a stream. Returns. */
QV_API void qv___DoAbortMessage(
    FILE *stream, const char *message, const char *file, QV_INT line, const char *expression,
    const siginfo_t *siginfo );

/** Writes the stack of the calling thread to a stream. Returns. */
QV_API void qv___DoAbortBacktrace( FILE *stream );

/** The handler of the fatal signals. */
QV_API void qv___AbortSignalAction( int signal, siginfo_t *siginfo, void *context );

namespace qv
{
/** What a signal and its code mean, as static text with a leading blank; the empty text for unknown ones. */
const char *signalText( int signal );
const char *signalCodeText( int signal, int code );

/** The signals that end a process with a report. */
const int FATAL_SIGNALS[] = { SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV };

/** The most calls that the stack of a report shows. */
const int ABORT_FRAMES = 4000;

/* Writing -------------------------------------------------------------------------------------------------------- */

/** Writes text to a stream or, without the C library's streams, to a descriptor. Allocates nothing. What cannot be
    written is lost. */
class AbortOutput
{
public:
    explicit AbortOutput( FILE *stream ) : stream_( stream )
    {
    }

    explicit AbortOutput( int descriptor ) : descriptor_( descriptor )
    {
    }

    ~AbortOutput()
    {
        flush();
    }

    AbortOutput( const AbortOutput & )            = delete;
    AbortOutput &operator=( const AbortOutput & ) = delete;

    void text( const char *text );
    void integer( int value );                       // as %d
    void hexadecimal( uint64_t value );              // as %#lx
    void pointer( const void *value );               // as %p
    void row( const char *name, const char *value ); // and a newline
    void flush();

private:
    void character( char ch );

    FILE  *stream_     = nullptr;
    int    descriptor_ = -1;
    size_t length_     = 0;
    char   buffer_[512];
};

/** The calls on a thread's stack, innermost first. `length` is their number at any time, so that those that were found
    before a failure on a damaged stack can be used. */
struct AbortStack
{
    void *frames[ABORT_FRAMES]; // where each call returns to
    int   length;
    int   failed; // the frame that a signal has interrupted, whose address is the instruction that failed; -1: none
};

/** The calls of the thread that writes the report. */
extern AbortStack reportStack;

/** Walks the stack of the calling thread, the caller's frame first. */
void walkAbortStack( AbortStack *stack );

/** Writes one line about a frame, as `backtrace_symbols` words it, with the name of the function that has made the call:
    one that does not return may be the last instruction of a function, and return to the function after it. */
void writeFrame( AbortOutput *output, const AbortStack &stack, int frame );

/* Failing -------------------------------------------------------------------------------------------------------- */

/** Called first by every thread that fails; returns once, in the thread that writes the report. From then on a further
    fatal signal of this thread ends the attempt() that it is in, and other threads that fail wait for the end. */
void enterAbort();

/** Calls `function` in the thread that writes the report. If it fails or takes longer than `milliseconds` it is left by
    a jump, and the result is false. So it must not own anything that is needed later. */
bool attempt( int milliseconds, void ( *function )( void *context ), void *context );

/** Ends the process by SIGABRT. */
[[noreturn]] void endAbort();

/* A stack for handlers ------------------------------------------------------------------------------------------- */

const size_t SIGNAL_STACK_SIZE = 64 << 10;

/** The first alternative stack that a thread asks for. */
extern char firstSignalStack[SIGNAL_STACK_SIZE];

/** A thread's alternative stack, on which a fatal signal is reported when the thread's own is full. */
struct SignalStack
{
    stack_t previous;
    void   *room; // null: none has been set
};

/** Sets an alternative stack for the calling thread, in a run with handlers of fatal signals and unless the thread has
    a larger one. Costs one system call if it was another thread's before. */
void beginSignalStack( SignalStack *stack );

/** Sets the previous one again. Called by the same thread. */
void endSignalStack( SignalStack *stack );

/** Frees those that no thread has set. */
void freeSignalStacks();
} // namespace qv

#endif
