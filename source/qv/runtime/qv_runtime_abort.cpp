#include "qv/base/qv_random.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_cstr_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_joined_private.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_abort_private.h"
#include "qv/sys/qv_mem.h"

#include <utility>

// What a run adds to the reports: a file of their own, and handlers of the fatal signals.

namespace
{
void setAction( int signum, void ( *action )( int, siginfo_t *, void * ) )
{
    struct sigaction sigact = {};
    sigemptyset( &sigact.sa_mask );

    if( action )
    {
        sigact.sa_sigaction = action;
        sigact.sa_flags     = SA_SIGINFO | SA_ONSTACK;
    }
    else
    {
        sigact.sa_handler = SIG_DFL;
    }

    QV_CHECK_AS( sigaction( signum, &sigact, nullptr ) == 0, "0 == sigaction( signum, &sigact, NULL )" );
}

// The report file of this run has a name of its own, which is made at the start, since a report allocates nothing.
void setFilename()
{
    qv::Ref< QV_STRING > qvs( qvRuntimePath( QV_RUNTIME_PATH_DATA_ABORT ) );

    if( !qvs )
        return;

    QV_CHECK_AS( qvStringEndsWithChar( qvs, U'/' ), "qvStringEndsWithChar( qvs, QV_CHAR_SOLIDUS )" );

    qv::Joined file(
        { qv::Cstr( qvs ), qv___RuntimeVersionProductNameCstr(), "-",
          qv::Digits( qvRuntimeVersionProductVersionMajor() ), ".", qv::Digits( qvRuntimeVersionProductVersionMinor() ),
          ".", qv::Digits( qvRuntimeVersionProductVersionRelease() ), "-", qv::identifierOfOs( qvRuntimeOs() ), "-",
          qv::identifierOfHardware( qvRuntimeHardware() ), "-", qv::Digits( qvRandomNonNegativeInt(), 16 ), ".txt" } );
    qv___AbortFilename = file.give();
}
} // namespace

void qv___AbortStartup( void )
{
    setFilename();

    if( qvRuntimeFlags() & QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS )
        return;

    for( int signum : qv::FATAL_SIGNALS )
        setAction( signum, qv___AbortSignalAction );
}

void qv___AbortShutdown( void )
{
    for( int signum : qv::FATAL_SIGNALS )
        setAction( signum, nullptr );

    // The name leaves its place before it is freed: another thread may fail at any time.
    qvMemFree( std::exchange( qv___AbortFilename, nullptr ) );
}
