#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/base/qv_thread.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_abort_private.h"
#include "qv/sys/qv_mem.h"

#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <future>
#include <sstream>
#include <thread>
#include <vector>

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
std::string head()
{
    std::string result = "  **********************************************************************\n"
                         "  * ABNORMAL PROGRAM TERMINATION                                       *\n"
                         "  **********************************************************************\n"
                         "\n"
                         "  PRODUCT\n"
                         "    Name      : morvane\n"
                         "    Friendly  : morvane\n"
                         "    Version   : 4.0.19\n"
                         "    OS        : Debian 10\n";
    result += std::string( "    Hardware  : " ) + qv___RuntimeHardwareFriendlyNameCstr( qvRuntimeHardware() ) + "\n";
    result += std::string( "    Variant   : " ) + qv___RuntimeVariantFriendlyNameCstr( qvRuntimeVariant() ) + "\n";
    result += std::string( "    Build Time: " ) + qv___RuntimeVersionProductBuildTimeCstr() + "\n";

    return result;
}

std::string report( const char *message, const char *file, QV_INT line, const char *expression, const siginfo_t *info )
{
    char  *text   = nullptr;
    size_t length = 0;
    FILE  *stream = open_memstream( &text, &length );
    qv___DoAbortMessage( stream, message, file, line, expression, info );
    fclose( stream );

    std::string result( text, length );
    free( text );

    return result;
}

std::string signalSection( int signal, int code, void *address = nullptr )
{
    siginfo_t info   = {};
    info.si_signo    = signal;
    info.si_code     = code;
    info.si_addr     = address;
    std::string text = report( nullptr, nullptr, 0, nullptr, &info );
    EXPECT_THAT( text, StartsWith( head() ) );

    return text.substr( head().size() );
}

std::string fileText( const std::string &name )
{
    std::ifstream      file( name );
    std::ostringstream text;
    text << file.rdbuf();

    return text.str();
}

void writeReportsTo( const std::string &name )
{
    qvMemFree( qv___AbortFilename );
    qv___AbortFilename = static_cast< char * >( qvMemAlloc( static_cast< QV_INT >( name.size() ) + 1 ) );
    memcpy( qv___AbortFilename, name.c_str(), name.size() + 1 );
}
} // namespace

TEST( Abort, ReportsNameWhatIsGiven )
{
    EXPECT_EQ( head(), report( nullptr, nullptr, 54, nullptr, nullptr ) );
    EXPECT_EQ(
        head()
            + "\n  ABORT\n    Message   : stdfunc retain\n    File      : source/qv/base/qv_boxed_int\n"
              "    Line      : 54\n    Expression: obj\n",
        report( "stdfunc retain", "source/qv/base/qv_boxed_int", 54, "obj", nullptr ) );

    // Longer than what is written at once.
    std::string text( 5000, 'x' );
    EXPECT_EQ(
        head() + "\n  ABORT\n    Message   : " + text + "\n", report( text.c_str(), nullptr, 1, nullptr, nullptr ) );
}

TEST( Abort, ReportsNameTheApplication )
{
    Ending whole = inOwnRun(
        []
        {
            restart( 0, "my-app", nullptr, "1.2" );
            fputs( report( nullptr, nullptr, 0, "e", nullptr ).c_str(), stderr );
        } );

    EXPECT_EQ(
        head() + "\n  APPLICATION\n    Identifier: my-app\n    Friendly  : \n    Version   : 1.2\n"
            + "\n  ABORT\n    Expression: e\n",
        whole.errors );
}

TEST( Abort, ReportsTellSignalsApart )
{
    void *address = reinterpret_cast< void * >( 0x1230 );

    EXPECT_EQ(
        "\n  SIGNAL\n    Signal    : 11 (SIGSEGV, invalid memory reference)\n"
        "    Code      : 1 (SEGV_MAPERR, address not mapped to object)\n    Sender    : kernel\n"
        "    Address   : 0x1230\n",
        signalSection( SIGSEGV, 1, address ) );
    EXPECT_EQ(
        "\n  SIGNAL\n    Signal    : 6 (SIGABRT, abort signal)\n    Code      : -2147483648\n    Sender    : user\n",
        signalSection( SIGABRT, INT_MIN ) );

    // The same number means another thing for another signal, and nothing where no row has it.
    EXPECT_THAT( signalSection( SIGILL, 8 ), HasSubstr( "    Code      : 8 (ILL_BADSTK, internal stack error)\n" ) );
    EXPECT_THAT( signalSection( SIGFPE, 8 ), HasSubstr( "    Code      : 8 (FPE_FLTSUB, subscript out of range)\n" ) );
    EXPECT_THAT( signalSection( SIGSEGV, 8 ), HasSubstr( "    Code      : 8\n" ) );
}

// The run's own file bears what the error stream does, once, also where handlers are left out.
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

        std::string text = fileText( name ), opening = report( "m", "f", 1, "e", nullptr ) + "\n  STACK\n";
        EXPECT_EQ( name + "\n\n\n" + text + "\n\n\n", ending.errors );
        ASSERT_THAT( text, StartsWith( opening ) );

        // The C library words frames in the same way.
        std::istringstream stack( text.substr( opening.size() ) );
        int                frames = 0;

        for( std::string line; std::getline( stack, line ); frames++ )
        {
            void *address = nullptr;
            sscanf( line.c_str() + line.rfind( '[' ), "[%p]", &address );
            char **symbols = backtrace_symbols( &address, 1 );
            EXPECT_EQ( std::string( "    " ) + symbols[0], line );
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
            writeReportsTo( scratch() + "missing/report.txt" ); // costs nothing but itself
            *static_cast< volatile char * >( page ) = 1;
        } );
    std::ostringstream expected;
    expected << "\n\n\n"
             << head() << "\n  SIGNAL\n    Signal    : 11 (SIGSEGV, invalid memory reference)\n"
             << "    Code      : 2 (SEGV_ACCERR, invalid permissions for mapped object)\n    Sender    : kernel\n"
             << "    Address   : " << page << "\n\n  STACK\n";
    EXPECT_EQ( SIGABRT, ending.signal );
    EXPECT_THAT( ending.errors, StartsWith( expected.str() ) );

    for( int signum : { SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV } )
    {
        Ending raised = inChild( [&] { raise( signum ); } );
        EXPECT_EQ( SIGABRT, raised.signal );
        EXPECT_THAT( raised.errors, HasSubstr( "\n  SIGNAL\n    Signal    : " + std::to_string( signum ) + " " ) );
        EXPECT_EQ( signum != SIGABRT, raised.errors.find( "    Address   : " ) != std::string::npos );
    }
}

TEST( Abort, HandlersAreThereInARunThatWantsThem )
{
    const std::function< void() > SETTINGS[] = {
        [] { restart( QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS ); }, qvRuntimeShutdown };

    for( const auto &set : SETTINGS )
    {
        Ending ending = inOwnRun(
            [&]
            {
                set();
                raise( SIGFPE );
            } );
        EXPECT_EQ( SIGFPE, ending.signal );
        EXPECT_EQ( "", ending.errors );
    }
}

TEST( Abort, ReportsNeedNoRunningLibrary )
{
    EXPECT_EQ( SIGABRT, BEFORE_START.signal );
    EXPECT_THAT(
        BEFORE_START.errors,
        StartsWith( "\n\n\n" + head() + "\n  ABORT\n    File      : early\n    Line      : 7\n\n  STACK\n" ) );

    Ending after = inOwnRun(
        []
        {
            writeReportsTo( scratch() + "after.txt" );
            qvRuntimeShutdown();
            qv___Abort( nullptr, nullptr, 0, "e" );
        } );
    EXPECT_EQ( SIGABRT, after.signal );
    EXPECT_THAT( after.errors, StartsWith( "\n\n\n" + report( nullptr, nullptr, 0, "e", nullptr ) ) );
    EXPECT_EQ( "", fileText( scratch() + "after.txt" ) );
}

/* Failures that leave little to report with ---------------------------------------------------------------------- */

namespace
{
// Steps of a report that stand still are given up after a quarter of a second; its last resort comes after ten.
const double PROMPTLY = 5;

// Runs `fail` in a run of its own and expects a prompt end with one whole report.
std::string expectReport( const std::function< void() > &fail )
{
    const auto start   = std::chrono::steady_clock::now();
    Ending     ending  = inOwnRun( fail );
    const auto elapsed = std::chrono::duration< double >( std::chrono::steady_clock::now() - start ).count();

    EXPECT_EQ( SIGABRT, ending.signal );
    EXPECT_LT( elapsed, PROMPTLY );
    EXPECT_EQ( ending.errors.find( "TERMINATION" ), ending.errors.rfind( "TERMINATION" ) );
    EXPECT_THAT(
        ending.errors,
        ContainsRegex( "\n\n\n  \\*+\n(.*\n)+\n  (ABORT|SIGNAL)\n(    .+\n)+\n  STACK\n(    .+\n)+\n\n\n$" ) );

    return ending.errors;
}

// The compiler does not see that these are blocks.
void *( *volatile allocate )( size_t ) = malloc;
void ( *volatile giveBack )( void * )  = free;

char *block( size_t size )
{
    return static_cast< char * >( allocate( size ) );
}

__attribute__( ( noinline ) ) int fillStack( int depth )
{
    volatile char room[1000];
    room[0] = static_cast< char >( depth );
    return depth < 0 ? 0 : fillStack( depth + 1 ) + room[0];
}

void fillStackOfThread()
{
    fillStack( 0 );
}
} // namespace

// Sanitizers have heaps of their own, and one of them keeps a timer's signal back while a thread waits inside the C
// library.
#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
TEST( Abort, ADamagedHeapIsReported )
{
    void ( *const DAMAGES[] )() = {
        [] // a small block given back twice
        {
            char *a = block( 24 );
            giveBack( a );
            giveBack( a );
        },
        [] // writing past the end of a block
        {
            char *a = block( 3000 ), *b = block( 3000 );
            memset( a, 'A', 3000 + 32 );
            giveBack( b );
            giveBack( a );
        },
        [] // and over what is left of the heap
        {
            memset( block( 100000 ), 'A', 100000 + 32 );
            block( 120000 );
            block( 120000 );
        },
    };

    for( auto damage : DAMAGES )
        EXPECT_THAT( expectReport( damage ), HasSubstr( "Signal    : " ) );
}

TEST( Abort, ReportsWaitForNoStream )
{
    // Nobody reads what is printed.
    expectReport(
        []
        {
            int  ends[2];
            char text[1 << 16] = {};
            EXPECT_EQ( 0, pipe2( ends, O_NONBLOCK ) );

            while( write( ends[1], text, sizeof( text ) ) > 0 )
                continue;

            fcntl( ends[1], F_SETFL, 0 );
            dup2( ends[1], STDOUT_FILENO );
            printf( "text" );
            qv___Abort( "m", nullptr, 0, nullptr );
        } );

    // Another thread holds the stream; so does a thread that failed in the middle of printing.
    for( FILE *stream : { stdout, stderr } )
        expectReport(
            [stream]
            {
                std::promise< void > held;
                std::thread          holder(
                    [&]
                    {
                        flockfile( stream );
                        held.set_value();
                        pause();
                    } );
                held.get_future().wait();
                qv___Abort( "m", nullptr, 0, nullptr );
            } );

    // It goes to a file that may not grow.
    expectReport(
        []
        {
            const rlimit none = {};
            setrlimit( RLIMIT_FSIZE, &none );
            dup2( open( ( scratch() + "full" ).c_str(), O_CREAT | O_WRONLY, 0600 ), STDOUT_FILENO );
            printf( "text" );
            qv___Abort( "m", nullptr, 0, nullptr );
        } );

    // It is damaged itself.
    expectReport(
        []
        {
            memset( static_cast< void * >( stdout ), 'A', sizeof( FILE ) );
            raise( SIGSEGV );
        } );
}
#endif

TEST( Abort, AFullStackIsReported )
{
    const std::function< void() > FILLS[] = {
        [] { fillStack( 0 ); },
        []
        { qvThreadJoin( qvThreadTrySpawnCstr( "full", -1, fillStackOfThread, nullptr, QV_THREAD_PRIORITY_NORMAL ) ); },
        [] { std::thread( [] { qvThreadEncapsulate( fillStackOfThread, nullptr ); } ).join(); },
    };

    for( const auto &fill : FILLS )
        EXPECT_THAT( expectReport( fill ), HasSubstr( "SIGSEGV" ) );
}

TEST( Abort, OneOfManyThreadsReports )
{
    for( int round = 0; round < 10; round++ )
        expectReport(
            []
            {
                std::vector< std::thread > threads;
                int32_t                    waiting = 4;

                for( int t = 0; t < 4; t++ )
                    threads.emplace_back(
                        [&waiting, t]
                        {
                            qv___AtomicAdd32( &waiting, -1 );

                            while( qv___AtomicLoad32( &waiting ) > 0 )
                                continue;

                            if( t % 2 == 0 )
                                qv___Abort( "m", nullptr, 0, nullptr );
                            else if( t == 1 )
                                abort();
                            else
                                raise( SIGBUS );
                        } );

                for( std::thread &thread : threads )
                    thread.join();
            } );
}
