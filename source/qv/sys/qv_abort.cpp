#include "qv/sys/qv_abort.h"

#include "qv/base/qv_random.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort_private.h"
#include "qv/sys/qv_mem.h"

#include <execinfo.h>
#include <stdlib.h>

// The report runs in whatever state the failure left, a damaged heap included: standard streams and static text, no
// lock, no object, no memory of the library's.

char *qv___AbortFilename = nullptr;

namespace
{
const int MAX_FRAMES = 4000;

const int SIGNALS[] = { SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV };

const char RULE[]  = "  **********************************************************************\n";
const char TITLE[] = "  * ABNORMAL PROGRAM TERMINATION                                       *\n";

void setDefaultAction( int signum )
{
    struct sigaction sigact = {};
    sigact.sa_handler       = SIG_DFL;
    sigemptyset( &sigact.sa_mask );

    QV_CHECK( 0 == sigaction( signum, &sigact, NULL ) );
}

void writeProduct( FILE *stream )
{
    fputs( "\n  PRODUCT\n", stream );
    fprintf( stream, "    Name      : %s\n", qv___RuntimeVersionProductNameCstr() );
    fprintf( stream, "    Friendly  : %s\n", qv___RuntimeVersionProductFriendlyNameCstr() );
    fprintf(
        stream, "    Version   : %d.%d.%d\n", static_cast< int >( qv___module_record.productVersionMajor ),
        static_cast< int >( qv___module_record.productVersionMinor ),
        static_cast< int >( qv___module_record.productVersionRelease ) );
    fprintf( stream, "    OS        : %s\n", qv___RuntimeOsFriendlyNameCstr( qvRuntimeOs() ) );
    fprintf( stream, "    Hardware  : %s\n", qv___RuntimeHardwareFriendlyNameCstr( qvRuntimeHardware() ) );
    fprintf( stream, "    Variant   : %s\n", qv___RuntimeVariantFriendlyNameCstr( qvRuntimeVariant() ) );
    fprintf( stream, "    Build Time: %s\n", qv___RuntimeVersionProductBuildTimeCstr() );
}

void writeApplication( FILE *stream )
{
    const char *identifier   = qv___RuntimeVersionApplicationIdentifierCstr();
    const char *friendlyName = qv___RuntimeVersionApplicationFriendlyNameCstr();
    const char *version      = qv___RuntimeVersionApplicationVersionCstr();

    if( !identifier && !friendlyName && !version )
        return;

    fputs( "\n  APPLICATION\n", stream );
    fprintf( stream, "    Identifier: %s\n", identifier ? identifier : "" );
    fprintf( stream, "    Friendly  : %s\n", friendlyName ? friendlyName : "" );
    fprintf( stream, "    Version   : %s\n", version ? version : "" );
}

void writeFailure( FILE *stream, const char *message, const char *file, QV_INT line, const char *expression )
{
    if( !message && !file && !expression )
        return;

    fputs( "\n  ABORT\n", stream );

    if( message )
        fprintf( stream, "    Message   : %s\n", message );

    if( file )
    {
        fprintf( stream, "    File      : %s\n", file );
        fprintf( stream, "    Line      : %d\n", static_cast< int >( line ) );
    }

    if( expression )
        fprintf( stream, "    Expression: %s\n", expression );
}

void writeSignal( FILE *stream, const siginfo_t *siginfo )
{
    int signal = siginfo->si_signo;
    int code   = siginfo->si_code;

    fputs( "\n  SIGNAL\n", stream );
    fprintf( stream, "    Signal    : %d%s\n", signal, qv::signalText( signal ) );
    fprintf( stream, "    Code      : %d%s\n", code, qv::signalCodeText( signal, code ) );
    fprintf( stream, "    Sender    : %s\n", code <= 0 ? "user" : "kernel" );

    if( signal == SIGBUS || signal == SIGFPE || signal == SIGILL || signal == SIGSEGV )
        fprintf( stream, "    Address   : %p\n", siginfo->si_addr );
}

// The report of this process gets a name of its own, once, while there is everything to make it with.
void setFilename()
{
    qv::Ref< QV_STRING > qvs( qvRuntimePath( QV_RUNTIME_PATH_DATA_ABORT ) );

    if( !qvs )
        return;

    QV_CHECK_AS( qvStringEndsWithChar( qvs, U'/' ), "qvStringEndsWithChar( qvs, QV_CHAR_SOLIDUS )" );
    qvStringAppendFormatCstr(
        qvs.at(), "%~s-%~s-%~s-%~s-%0!16i.txt", -1, qvRuntimeVersionProductName(), qvRuntimeVersionProductVersion(),
        qvRuntimeOsToIdentifier( qvRuntimeOs() ), qvRuntimeHardwareToIdentifier( qvRuntimeHardware() ),
        qvRandomNonNegativeInt() );
    qv___AbortFilename = qvStringConvertToCstr( qvs, QV_TRUE, nullptr );
}
} // namespace

void qv___AbortStartup( void )
{
    setFilename();

    if( qvRuntimeFlags() & QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS )
        return;

    for( int signum : SIGNALS )
    {
        struct sigaction sigact = {};
        sigact.sa_sigaction     = qv___AbortSignalAction;
        sigact.sa_flags         = SA_SIGINFO;
        sigemptyset( &sigact.sa_mask );

        QV_CHECK( 0 == sigaction( signum, &sigact, NULL ) );
    }
}

void qv___AbortShutdown( void )
{
    for( int signum : SIGNALS )
        setDefaultAction( signum );

    qvMemFree( qv___AbortFilename );
    qv___AbortFilename = nullptr;
}

void qv___Abort( const char *message, const char *file, QV_INT line, const char *expression )
{
    qv___DoAbort( message, file, line, expression, nullptr );
}

void qv___DoAbort(
    const char *message, const char *file, QV_INT line, const char *expression, const siginfo_t *siginfo )
{
    fflush( stdout );
    fflush( stderr );

    fputs( "\n\n\n", stderr );
    qv___DoAbortMessage( stderr, message, file, line, expression, siginfo );
    fflush( stderr );

    if( qv___AbortFilename )
    {
        if( FILE *stream = fopen( qv___AbortFilename, "w" ) )
        {
            qv___DoAbortMessage( stream, message, file, line, expression, siginfo );
            fflush( stream );
            qv___DoAbortBacktrace( stream );
            fclose( stream );
        }
    }

    qv___DoAbortBacktrace( stderr );
    fputs( "\n\n\n", stderr );
    fflush( stderr );

    setDefaultAction( SIGABRT );
    abort();
}

void qv___DoAbortMessage(
    FILE *stream, const char *message, const char *file, QV_INT line, const char *expression,
    const siginfo_t *siginfo )
{
    fputs( RULE, stream );
    fputs( TITLE, stream );
    fputs( RULE, stream );

    writeProduct( stream );
    writeApplication( stream );
    writeFailure( stream, message, file, line, expression );

    if( siginfo )
        writeSignal( stream, siginfo );
}

void qv___DoAbortBacktrace( FILE *stream )
{
    void *frames[MAX_FRAMES];
    int   count   = backtrace( frames, MAX_FRAMES );
    char **symbols = count > 0 ? backtrace_symbols( frames, count ) : nullptr;

    if( !symbols )
        return;

    fputs( "\n  STACK\n", stream );

    for( int i = 0; i < count; i++ )
        fprintf( stream, "    %s\n", symbols[i] );

    free( symbols );
}

void qv___AbortSignalAction( int signal, siginfo_t *siginfo, void *context )
{
    (void)signal;
    (void)context;

    qv___DoAbort( nullptr, nullptr, 0, nullptr, siginfo );
}
