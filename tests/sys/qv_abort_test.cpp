#include "qv_test_call.h"
#include "qv_test_child.h"
#include "qv_test_program.h"

#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort_private.h"
#include "qv/sys/qv_mem.h"

#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <fstream>
#include <sstream>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/mman.h>

using namespace qv::test;
using testing::AllOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{
// A broken contract before main(), thus before the library's start.
const Ending BEFORE_START = inChild( [] { qv___Abort( nullptr, "early", 7, nullptr ); } );

// What every report opens with. What depends on the build is not written out.
const std::string HEAD = "  **********************************************************************\n"
                         "  * ABNORMAL PROGRAM TERMINATION                                       *\n"
                         "  **********************************************************************\n"
                         "\n"
                         "  PRODUCT\n"
                         "    Name      : morvane\n"
                         "    Friendly  : morvane\n"
                         "    Version   : 4.0.19\n"
                         "    OS        : Debian 10\n"
                         "    Hardware  : "
                         + std::string( qv___RuntimeHardwareFriendlyNameCstr( qvRuntimeHardware() ) )
                         + "\n    Variant   : " + qv___RuntimeVariantFriendlyNameCstr( qvRuntimeVariant() )
                         + "\n    Build Time: " + qv___RuntimeVersionProductBuildTimeCstr() + "\n";

std::string report(
    const char *message, const char *file, QV_INT line, const char *expression, const siginfo_t *info = nullptr )
{
    return inChild( [&] { qv___DoAbortMessage( stderr, message, file, line, expression, info ); } ).errors;
}

void writeReportsTo( const std::string &name )
{
    qvMemFree( qv___AbortFilename );
    qv___AbortFilename = strdup( name.c_str() );
}
} // namespace

TEST( Abort, ReportsNameWhatIsGiven )
{
    std::string text( 5000, 'x' ); // longer than what is written at once
    EXPECT_EQ( HEAD, report( nullptr, nullptr, 54, nullptr ) );
    EXPECT_EQ(
        HEAD + "\n  ABORT\n    Message   : " + text + "\n    File      : f\n    Line      : 54\n    Expression: obj\n",
        report( text.c_str(), "f", 54, "obj" ) );

    Ending application = inOwnRun(
        []
        {
            restart( 0, "my-app", nullptr, "1.2" );
            qv___DoAbortMessage( stderr, nullptr, nullptr, 0, "e", nullptr );
        } );
    EXPECT_EQ(
        HEAD + "\n  APPLICATION\n    Identifier: my-app\n    Friendly  : \n    Version   : 1.2\n"
            + "\n  ABORT\n    Expression: e\n",
        application.errors );
}

TEST( Abort, ReportsTellSignalsApart )
{
    const std::string KERNEL = "\n    Sender    : kernel\n    Address   : 0x1230\n";

    const struct
    {
        int         signal;
        int         code;
        std::string expected;
    } CASES[] = {
        { SIGSEGV, 1, "1 (SEGV_MAPERR, address not mapped to object)" + KERNEL },
        { SIGFPE, 0, "0 (SI_USER, kill, sigsend, raise)\n    Sender    : user\n    Address   : 0x1230\n" },
        { SIGABRT, INT_MIN, "-2147483648\n    Sender    : user\n" },

        // The same number means another thing for another signal, and nothing where no row has it.
        { SIGILL, 8, "8 (ILL_BADSTK, internal stack error)" + KERNEL },
        { SIGSEGV, 8, "8" + KERNEL },
    };

    for( const auto &row : CASES )
    {
        siginfo_t info = {};
        info.si_signo  = row.signal;
        info.si_code   = row.code;
        info.si_addr   = reinterpret_cast< void * >( 0x1230 );
        EXPECT_THAT( report( nullptr, nullptr, 0, nullptr, &info ), EndsWith( "\n    Code      : " + row.expected ) );
    }
}

// The file of the run contains what is on the error stream, once, also in a run without handlers.
TEST( Abort, BrokenContractsAreReportedInBothPlaces )
{
    std::string folder = scratch() + "reports/";
    std::string begin =
        folder + "morvane-4.0.19-debian10-" + take( qvRuntimeHardwareToIdentifier( qvRuntimeHardware() ) ) + "-";
    std::string names[2];

    for( std::string &name : names )
    {
        Ending ending = inOwnRun(
            [&]
            {
                setenv( "XZ_MORVANE_ABORT_PATH", folder.c_str(), 1 );
                restart( &name == names ? QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS : 0 );
                std::ofstream( qv___AbortFilename ) << std::string( 100000, 'x' );
                fprintf( stderr, "%s", qv___AbortFilename );
                qv___Abort( "m", "f", 1, "e" );
            } );
        name = ending.errors.substr( 0, ending.errors.find( '\n' ) );

        EXPECT_EQ( SIGABRT, ending.signal );
        ASSERT_THAT( name, AllOf( StartsWith( begin ), EndsWith( ".txt" ) ) );
        EXPECT_EQ( name.size() - 4, name.find_first_not_of( "0123456789abcdef", begin.size() ) );

        std::string text    = contentOf( name.substr( scratch().size() ) ),
                    opening = report( "m", "f", 1, "e" ) + "\n  STACK\n";
        EXPECT_EQ( name + "\n\n\n" + text + "\n\n\n", ending.errors );
        ASSERT_THAT( text, StartsWith( opening ) );

        // The C library words frames in the same way, but for calls that end their function: it names the one after it.
        std::istringstream stack( text.substr( opening.size() ) );
        int                frames = 0;

        for( std::string line; std::getline( stack, line ); frames++ )
        {
            auto address =
                reinterpret_cast< void * >( std::stoull( line.substr( line.rfind( '[' ) + 1 ), nullptr, 16 ) );
            char  **symbols = backtrace_symbols( &address, 1 );
            Dl_info after = {}, call = {};
            dladdr( address, &after );
            dladdr( static_cast< char * >( address ) - 1, &call );
            EXPECT_TRUE( "    " + std::string( symbols[0] ) == line || after.dli_saddr != call.dli_saddr ) << line;
            free( symbols );
        }

        EXPECT_GT( frames, 3 );
    }

    EXPECT_NE( names[0], names[1] );
}

TEST( Abort, FatalSignalsAreReported )
{
    void  *page   = mmap( nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0 );
    Ending ending = inChild(
        [page]
        {
            writeReportsTo( scratch() + "missing/report.txt" ); // the rest of the report is written all the same
            *static_cast< volatile char * >( page ) = 1;
        } );
    EXPECT_EQ( SIGABRT, ending.signal );
    EXPECT_THAT(
        ending.errors,
        StartsWith(
            "\n\n\n" + HEAD
            + "\n  SIGNAL\n    Signal    : 11 (SIGSEGV, invalid memory reference)\n"
              "    Code      : 2 (SEGV_ACCERR, invalid permissions for mapped object)\n    Sender    : kernel\n"
              "    Address   : "
            + testing::PrintToString( page ) + "\n\n  STACK\n" ) );

    for( int signum : { SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV } )
    {
        Ending raised = inChild( [&] { raise( signum ); } );
        EXPECT_EQ( SIGABRT, raised.signal );
        EXPECT_THAT( raised.errors, HasSubstr( "\n  SIGNAL\n    Signal    : " + std::to_string( signum ) + " " ) );
    }

    // Not in a run that wants no handlers, nor after one that does.
    for( auto set : { +[] { restart( QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS ); }, +[] { qvRuntimeShutdown(); } } )
    {
        Ending silent = inOwnRun(
            [&]
            {
                set();
                raise( SIGFPE );
            } );
        EXPECT_EQ( SIGFPE, silent.signal );
        EXPECT_EQ( "", silent.errors );
    }
}

TEST( Abort, ReportsNeedNoRunningLibrary )
{
    EXPECT_EQ( SIGABRT, BEFORE_START.signal );
    EXPECT_THAT(
        BEFORE_START.errors,
        StartsWith( "\n\n\n" + HEAD + "\n  ABORT\n    File      : early\n    Line      : 7\n\n  STACK\n" ) );

    Ending after = inOwnRun(
        []
        {
            writeReportsTo( scratch() + "after.txt" );
            qvRuntimeShutdown();
            qv___Abort( nullptr, nullptr, 0, "e" );
        } );
    EXPECT_EQ( SIGABRT, after.signal );
    EXPECT_THAT( after.errors, StartsWith( "\n\n\n" + report( nullptr, nullptr, 0, "e" ) ) );
    EXPECT_EQ( "", contentOf( "after.txt" ) );
}

/* Failures that leave little to report with ---------------------------------------------------------------------- */

namespace
{
// The compiler does not see that this returns a block of so many bytes.
void *( *volatile allocate )( size_t ) = malloc;

// Runs `fail` in a run of its own and expects a prompt end with one whole report.
void expectReport( void ( *fail )() )
{
    const auto start   = std::chrono::steady_clock::now();
    Ending     ending  = inOwnRun( fail );
    const auto elapsed = std::chrono::duration< double >( std::chrono::steady_clock::now() - start ).count();

    EXPECT_EQ( SIGABRT, ending.signal );
    EXPECT_LT( elapsed, 5 ); // steps that stand still are given up after a quarter of a second, others after ten
    EXPECT_EQ( ending.errors.find( "TERMINATION" ), ending.errors.rfind( "TERMINATION" ) );
    EXPECT_THAT(
        ending.errors,
        ContainsRegex( "\n\n\n  \\*+\n(.*\n)+\n  (ABORT|SIGNAL)\n(    .+\n)+\n  STACK\n(    .+\n)+\n\n\n$" ) );
}

__attribute__( ( noinline ) ) void fillStack()
{
    volatile char room[1000] = {};

    if( room[0] == 0 )
        fillStack();

    room[0] = 1;
}

void ( *const FAILURES[] )() = {
    fillStack,
    [] { qvThreadJoin( qvThreadTrySpawnCstr( "full", -1, fillStack, nullptr, QV_THREAD_PRIORITY_NORMAL ) ); },
    [] { std::thread( [] { qvThreadEncapsulate( fillStack, nullptr ); } ).join(); },
    [] // four threads at a time, of which one reports
    {
        std::atomic< int > waiting = 4;
        onThreads(
            4,
            [&]( int number )
            {
                for( waiting--; waiting > 0; )
                    continue;

                if( number % 2 == 0 )
                    qv___Abort( "m", nullptr, 0, nullptr );
                else if( number == 1 )
                    abort();
                else
                    raise( SIGBUS );
            } );
    },

// Sanitizers have heaps of their own, and one of them keeps a timer's signal back while a thread waits inside the C
// library.
#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
    [] // a small block given back twice
    {
        void *volatile block = allocate( 24 );
        free( block );
        free( block );
    },
    [] // writing past the end of a block
    {
        void *volatile a = allocate( 3000 ), *volatile b = allocate( 3000 );
        memset( a, 'A', 3000 + 32 );
        free( b );
        free( a );
    },

    [] // standard output is held by a thread that has ended
    {
        std::thread( [] { flockfile( stdout ); } ).join();
        qv___Abort( "m", nullptr, 0, nullptr );
    },
    [] // the error stream is
    {
        std::thread( [] { flockfile( stderr ); } ).join();
        qv___Abort( "m", nullptr, 0, nullptr );
    },
    [] // standard output cannot be written to
    {
        const rlimit none = {};
        setrlimit( RLIMIT_FSIZE, &none );
        dup2( open( ( scratch() + "full" ).c_str(), O_CREAT | O_WRONLY, 0600 ), STDOUT_FILENO );
        printf( "text" );
        qv___Abort( "m", nullptr, 0, nullptr );
    },
    [] // or is damaged
    {
        memset( static_cast< void * >( stdout ), 'A', sizeof( FILE ) );
        raise( SIGSEGV );
    },
#endif
};
} // namespace

TEST( Abort, FailuresOfAnyKindAreReported )
{
    for( size_t i = 0; i < 3 * std::size( FAILURES ); i++ )
    {
        SCOPED_TRACE( i % std::size( FAILURES ) );
        expectReport( FAILURES[i % std::size( FAILURES )] );
    }
}
