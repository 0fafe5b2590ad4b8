#include "qv/sys/qv_abort.h"

#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort_private.h"

#include <fcntl.h>
#include <unistd.h>

// The report is written in whatever state the failure left, a damaged heap included: descriptors and static text, no
// lock, no object, no memory.

char *qv___AbortFilename = nullptr;

namespace
{
using qv::AbortOutput;

const char RULE[]  = "  **********************************************************************\n";
const char TITLE[] = "  * ABNORMAL PROGRAM TERMINATION                                       *\n";

void writeProduct( AbortOutput *output )
{
    output->text( "\n  PRODUCT\n" );
    output->row( "    Name      : ", qv___RuntimeVersionProductNameCstr() );
    output->row( "    Friendly  : ", qv___RuntimeVersionProductFriendlyNameCstr() );
    output->text( "    Version   : " );
    output->integer( static_cast< int >( qvRuntimeVersionProductVersionMajor() ) );
    output->text( "." );
    output->integer( static_cast< int >( qvRuntimeVersionProductVersionMinor() ) );
    output->text( "." );
    output->integer( static_cast< int >( qvRuntimeVersionProductVersionRelease() ) );
    output->row( "\n    OS        : ", qv___RuntimeOsFriendlyNameCstr( qvRuntimeOs() ) );
    output->row( "    Hardware  : ", qv___RuntimeHardwareFriendlyNameCstr( qvRuntimeHardware() ) );
    output->row( "    Variant   : ", qv___RuntimeVariantFriendlyNameCstr( qvRuntimeVariant() ) );
    output->row( "    Build Time: ", qv___RuntimeVersionProductBuildTimeCstr() );
}

void writeApplication( AbortOutput *output )
{
    const char *identifier   = qv___RuntimeVersionApplicationIdentifierCstr();
    const char *friendlyName = qv___RuntimeVersionApplicationFriendlyNameCstr();
    const char *version      = qv___RuntimeVersionApplicationVersionCstr();

    if( !identifier && !friendlyName && !version )
        return;

    output->text( "\n  APPLICATION\n" );
    output->row( "    Identifier: ", identifier ? identifier : "" );
    output->row( "    Friendly  : ", friendlyName ? friendlyName : "" );
    output->row( "    Version   : ", version ? version : "" );
}

// What failed.
struct Failure
{
    const char      *message;
    const char      *file;
    QV_INT           line;
    const char      *expression;
    const siginfo_t *siginfo;
};

void writeFailure( AbortOutput *output, const Failure &failure )
{
    if( !failure.message && !failure.file && !failure.expression )
        return;

    output->text( "\n  ABORT\n" );

    if( failure.message )
        output->row( "    Message   : ", failure.message );

    if( failure.file )
    {
        output->row( "    File      : ", failure.file );
        output->text( "    Line      : " );
        output->integer( static_cast< int >( failure.line ) );
        output->text( "\n" );
    }

    if( failure.expression )
        output->row( "    Expression: ", failure.expression );
}

void writeSignal( AbortOutput *output, const siginfo_t *siginfo )
{
    int signal = siginfo->si_signo;
    int code   = siginfo->si_code;

    output->text( "\n  SIGNAL\n    Signal    : " );
    output->integer( signal );
    output->row( qv::signalText( signal ), "" );
    output->text( "    Code      : " );
    output->integer( code );
    output->row( qv::signalCodeText( signal, code ), "" );
    output->row( "    Sender    : ", code <= 0 ? "user" : "kernel" );

    if( signal == SIGBUS || signal == SIGFPE || signal == SIGILL || signal == SIGSEGV )
    {
        output->text( "    Address   : " );
        output->pointer( siginfo->si_addr );
        output->text( "\n" );
    }
}

void writeMessage( AbortOutput *output, const Failure &failure )
{
    output->text( RULE );
    output->text( TITLE );
    output->text( RULE );

    writeProduct( output );
    writeApplication( output );
    writeFailure( output, failure );

    if( failure.siginfo )
        writeSignal( output, failure.siginfo );
}

void writeStack( AbortOutput *output, const qv::AbortStack &stack )
{
    if( stack.length == 0 )
        return;

    output->text( "\n  STACK\n" );

    for( int i = 0; i < stack.length; i++ )
    {
        output->text( "    " );
        qv::writeFrame( output, stack, i );
        output->text( "\n" );
    }
}

// The steps of a report. Each may be left at any point.

void flushStream( void *stream )
{
    fflush( static_cast< FILE * >( stream ) );
}

void writeToErrors( void *failure )
{
    AbortOutput output( STDERR_FILENO );
    output.text( "\n\n\n" );
    writeMessage( &output, *static_cast< const Failure * >( failure ) );
}

void walkStack( void * )
{
    qv::walkAbortStack( &qv::reportStack );
}

void writeToFile( void *failure )
{
    int descriptor = open( qv___AbortFilename, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666 );

    if( descriptor < 0 )
        return;

    AbortOutput output( descriptor );
    writeMessage( &output, *static_cast< const Failure * >( failure ) );
    output.flush();
    writeStack( &output, qv::reportStack );
    output.flush();
    close( descriptor );
}

void writeStackToErrors( void * )
{
    AbortOutput output( STDERR_FILENO );
    writeStack( &output, qv::reportStack );
}

void writeEndToErrors( void * )
{
    AbortOutput output( STDERR_FILENO );
    output.text( "\n\n\n" );
}

// Milliseconds that a step may take. Streams may be locked, or full and without a reader: their contents are worth less
// than the report. A terminal that is paused may be resumed.
const int FLUSH_TIME = 250;
const int STACK_TIME = 1000;
const int WRITE_TIME = 10000;
} // namespace

void qv___Abort( const char *message, const char *file, QV_INT line, const char *expression )
{
    qv___DoAbort( message, file, line, expression, nullptr );
}

void qv___DoAbort(
    const char *message, const char *file, QV_INT line, const char *expression, const siginfo_t *siginfo )
{
    qv::enterAbort();

    Failure failure = { message, file, line, expression, siginfo };

    // What the program has printed so far comes before the report, if possible.
    qv::attempt( FLUSH_TIME, flushStream, stdout );
    qv::attempt( FLUSH_TIME, flushStream, stderr );

    qv::attempt( WRITE_TIME, writeToErrors, &failure );
    qv::attempt( STACK_TIME, walkStack, nullptr );

    if( qv___AbortFilename )
        qv::attempt( WRITE_TIME, writeToFile, &failure );

    qv::attempt( WRITE_TIME, writeStackToErrors, nullptr );
    qv::attempt( WRITE_TIME, writeEndToErrors, nullptr );
    qv::endAbort();
}

void qv___DoAbortMessage(
    FILE *stream, const char *message, const char *file, QV_INT line, const char *expression, const siginfo_t *siginfo )
{
    AbortOutput output( stream );
    writeMessage( &output, { message, file, line, expression, siginfo } );
}

void qv___DoAbortBacktrace( FILE *stream )
{
    qv::AbortStack stack;
    qv::walkAbortStack( &stack );

    AbortOutput output( stream );
    writeStack( &output, stack );
}

void qv___AbortSignalAction( int signal, siginfo_t *siginfo, void *context )
{
    (void)signal;
    (void)context;

    qv___DoAbort( nullptr, nullptr, 0, nullptr, siginfo );
}
