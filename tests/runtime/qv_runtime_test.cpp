#include "qv_test_child.h"

#include "qv/base/qv_time_private.h"
#include "qv/qv.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort_private.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <dlfcn.h>
#include <malloc.h>
#include <stdarg.h>
#include <sys/utsname.h>

using qv::Ref;
using namespace qv::test;
namespace fs = std::filesystem;

/* Stand-ins for what the platform tells about the computer ------------------------------------------------------- */

namespace
{
const char *hostName = "host"; // null: the call fails
bool        hasUname = true;
std::string cpuFile  = "/proc/cpuinfo"; // read in its place

template< class F >
F real( const char *name )
{
    return reinterpret_cast< F >( dlsym( RTLD_NEXT, name ) );
}
} // namespace

extern "C" int gethostname( char *name, size_t size ) noexcept
{
    if( !hostName )
        return -1;

    strncpy( name, hostName, size ); // a name that is cut has no terminator
    return 0;
}

extern "C" int uname( utsname *system ) noexcept
{
    return hasUname ? real< int ( * )( utsname * ) >( "uname" )( system ) : -1;
}

extern "C" int open( const char *name, int flags, ... )
{
    va_list arguments;
    va_start( arguments, flags );
    const unsigned mode = va_arg( arguments, unsigned ); // without a meaning where no file is made
    va_end( arguments );

    const char *file = strcmp( name, "/proc/cpuinfo" ) == 0 ? cpuFile.c_str() : name;
    return real< int ( * )( const char *, int, ... ) >( "open" )( file, flags, mode );
}

namespace
{
// In a run of its own without a path in the environment.
void inRun( const std::function< void() > &body )
{
    expectInOwnRun(
        [&]
        {
            for( const char *part : { "BIN", "RES", "DATA", "STORAGE", "TRACE", "ABORT", "TEMP" } )
                unsetenv( ( std::string( "XZ_MORVANE_" ) + part + "_PATH" ).c_str() );

            unsetenv( "HOME" );
            body();
        } );
}

std::string orNone( QV_STRING *owned )
{
    return owned ? take( owned ) : "none";
}

// The paths of a new run, a line for each, with a variable that no other run has.
std::string paths( const char *variable, const std::string &value, QV_INT flags = 0 )
{
    setenv( variable, value.c_str(), 1 );
    restart( flags );
    unsetenv( variable );
    std::string result;

    for( QV_INT path = QV_RUNTIME_PATH_BIN; path <= QV_RUNTIME_PATH_DATA_TEMP; path++ )
    {
        std::string line = orNone( qvRuntimePath( path ) );
        EXPECT_EQ( line != "none", qvRuntimeHasPath( path ) );
        result += line + "\n";
    }

    return result;
}

const std::string INSTALLED = "/opt/wexcraft/morvane/bin/\n/opt/wexcraft/morvane/res/\n";

std::string dataPaths( const std::string &data )
{
    return INSTALLED + data + "\n" + data + "storage/\n" + data + "trace/\n" + data + "abort/\n" + data + "temp/\n";
}
} // namespace

TEST( Runtime, SystemsAndHardwareHaveKinds )
{
    EXPECT_TRUE( qvRuntimeOsIsLinux( 8 ) && qvRuntimeOsIsDebian( 1 ) && qvRuntimeOsIsUnix( 9 ) );
    EXPECT_FALSE( qvRuntimeOsIsLinux( 9 ) || qvRuntimeOsIsDebian( 0 ) || qvRuntimeOsIsUnix( 0 ) );
    EXPECT_TRUE( qvRuntimeHardwareIsIntel( 1 ) && qvRuntimeHardwareIsArm( 6 ) && qvRuntimeHardwareIsBigEndian( 7 ) );
    EXPECT_FALSE( qvRuntimeHardwareIsIntel( 2 ) || qvRuntimeHardwareIsArm( 1 ) || qvRuntimeOsIsWindows( 1 ) );
    EXPECT_EQ( "armel", orNone( qvRuntimeOsHardwarePlatformName( 1, QV_RUNTIME_HARDWARE_INNOVAPHONE ) ) );
    EXPECT_EQ( "none", orNone( qvRuntimeOsHardwarePlatformName( 0, QV_RUNTIME_HARDWARE_X64 ) ) );
    EXPECT_TRUE( qvRuntimeOsSupportsHardware( QV_RUNTIME_OS_DEBIAN_7, QV_RUNTIME_HARDWARE_MIPS ) );
    EXPECT_FALSE( qvRuntimeOsSupportsHardware( QV_RUNTIME_OS_DEBIAN_8, QV_RUNTIME_HARDWARE_MIPS ) );
    EXPECT_TRUE( qvRuntimeOsSupportsHardware( qvRuntimeOs(), qvRuntimeHardware() ) );
}

/* What the start is told ----------------------------------------------------------------------------------------- */

TEST( Runtime, TheApplicationIsWhatTheStartWasTold )
{
    inRun(
        []
        {
            EXPECT_FALSE( qvRuntimeVersionApplicationHasIdentifier() || qvRuntimeVersionApplicationHasVersion() );
            char identifier[] = "my-app";
            restart( QV_RUNTIME_FLAG_SNAPSHOT_SORT, identifier, nullptr, "ä" );
            identifier[0] = 'x'; // copied
            EXPECT_TRUE( qvRuntimeVersionApplicationHasVersion() );
            EXPECT_FALSE( qvRuntimeVersionApplicationHasFriendlyName() );
            EXPECT_EQ( 0, qvRuntimeFlags() ); // normalised: there are no lists

            Ref< QV_STORE > info( qvRuntimeInfo() );
            EXPECT_EQ( "my-app", orNone( qvStoreValueCstr( info, "applicationIdentifier", -1 ) ) );
            EXPECT_EQ( "none", orNone( qvStoreValueCstr( info, "applicationFriendlyName", -1 ) ) );
            EXPECT_EQ( "ä", orNone( qvStoreValueCstr( info, "applicationVersion", -1 ) ) );
        } );
}

TEST( Runtime, PathsComeFromTheEnvironment )
{
    inRun(
        []
        {
            std::string data = scratch() + "env", home = scratch() + "home";

            EXPECT_EQ( dataPaths( data + "/" ), paths( "XZ_MORVANE_DATA_PATH", data ) );
            EXPECT_EQ( dataPaths( home + "/.opt/wexcraft/morvane/" ), paths( "HOME", home ) );
            EXPECT_EQ( dataPaths( home + "/.opt/wexcraft/morvane/" ), paths( "HOME", home + "\xC3" ) );

            for( const char *folder : { "", "/storage", "/trace", "/abort", "/temp" } )
                EXPECT_TRUE( fs::is_directory( data + folder ) ) << folder;

            // What cannot be made does not keep the library from starting. A run without files has no paths.
            EXPECT_EQ( dataPaths( "/proc/nowhere/" ), paths( "XZ_MORVANE_DATA_PATH", "/proc/nowhere" ) );
            EXPECT_EQ(
                "none\nnone\nnone\nnone\nnone\nnone\nnone\n",
                paths( "XZ_MORVANE_DATA_PATH", data, QV_RUNTIME_FLAG_MINIMAL ) );

            // A variable moves its own path alone; what is missing on the way to it is made. Without a home no other
            // path for data is left.
            EXPECT_EQ(
                INSTALLED + "none\nnone\n" + scratch() + "a//b/trace/\nnone\nnone\n",
                paths( "XZ_MORVANE_TRACE_PATH", scratch() + "a//b/trace/" ) );
            EXPECT_TRUE( fs::is_directory( scratch() + "a/b/trace" ) );
            EXPECT_THAT( paths( "XZ_MORVANE_BIN_PATH", "relative" ), testing::StartsWith( "relative/\n/opt/" ) );
            EXPECT_FALSE( fs::exists( "relative" ) );

            // The data path is made also if nothing lies below it.
            for( const char *variable : { "STORAGE", "TRACE", "ABORT", "TEMP" } )
                setenv( ( "XZ_MORVANE_" + std::string( variable ) + "_PATH" ).c_str(), data.c_str(), 1 );

            static_cast< void >( paths( "XZ_MORVANE_DATA_PATH", data + "2" ) );
            EXPECT_TRUE( fs::is_directory( data + "2" ) );
        } );
}

/* The computer --------------------------------------------------------------------------------------------------- */

TEST( Runtime, TheComputerIsDescribed )
{
    utsname system;
    uname( &system );
    const std::string OS    = std::string( system.release ) + ", " + system.version + ", " + system.machine;
    const std::string CORES = ", cores:" + std::to_string( sysconf( _SC_NPROCESSORS_ONLN ) );

    auto expectCpu = []( const std::string &expected, const std::string &lines )
    {
        cpuFile = scratch() + "cpuinfo";
        std::ofstream( cpuFile ) << lines;
        restart( QV_RUNTIME_FLAG_MINIMAL );
        EXPECT_EQ( expected, take( qvRuntimeCpuInfo() ) );
    };

    inRun(
        [&]
        {
            // The 18 characters go as they are, whatever they are.
            expectCpu(
                "(R) 3000" + CORES, "cpu\t: 0\n model name: no\nmodel name\t: Intel(R) 3000\nmodel name\t: 2\n" );
            expectCpu( CORES, "model name\t: x\n" );
            expectCpu( "CPU unknown" + CORES, "processor\t: 0\n" );
            EXPECT_TRUE( qvRuntimeHasCpuInfo() && qvRuntimeHasComputerName() && qvRuntimeHasOperatingSystemInfo() );
            EXPECT_EQ( "host", take( qvRuntimeComputerName() ) );
            EXPECT_EQ( OS, take( qvRuntimeOperatingSystemInfo() ) );

            // A name that fills its room is cut.
            std::string longName( 300, 'n' );
            hostName = longName.c_str();
            hasUname = false;
            cpuFile  = "missing";
            restart( 0 );
            EXPECT_EQ( std::string( 255, 'n' ), take( qvRuntimeComputerName() ) );
            EXPECT_EQ( "CPU unknown" + CORES, take( qvRuntimeCpuInfo() ) );
            EXPECT_EQ( nullptr, qvRuntimeOperatingSystemInfo() );

            hostName = nullptr;
            restart( 0 );
            EXPECT_EQ( nullptr, qvRuntimeComputerName() );
            EXPECT_FALSE( qvRuntimeHasComputerName() || qvRuntimeHasOperatingSystemInfo() );
        } );

    // The summary, as far as there is something to tell.
    Ref< QV_STORE >  store( qvRuntimeInfo() );
    Ref< QV_VECTOR > summary( qvStoreEncodeToStringVector( store ) );
    EXPECT_EQ(
        std::string( "<buildTime=" ) + qv___RuntimeVersionProductBuildTimeCstr()
            + ", compatibility=0, computerName=host, cpuInfo=" + take( qvRuntimeCpuInfo() )
            + ", friendlyName=morvane, hardware=" + take( qvRuntimeHardwareFriendlyName( qvRuntimeHardware() ) )
            + ", operatingSystemInfo=" + OS
            + ", os=Debian 10, product=morvane, startTime=" + textOf( Ref( qv___TimeStarted() ).get() )
            + ", variant=" + take( qvRuntimeVariantFriendlyName( qvRuntimeVariant() ) )
            + ", version=4.0.19, versionMajor=4, versionMinor=0, versionRelease=19, moduleVersions.qv=0.0>",
        textOf( summary.get() ) );
    EXPECT_EQ( qv___RuntimeVersionProductBuildTimeCstr(), textOf( Ref( qvRuntimeVersionProductBuildTime() ).get() ) );
    EXPECT_EQ( "Wexcraft GmbH", take( qvRuntimeVersionProductVendorName() ) );
    EXPECT_THAT( take( qvRuntimeVersionProductCopyright() ), testing::HasSubstr( "Wexcraft GmbH" ) );
}

/* Start and stop ------------------------------------------------------------------------------------------------- */

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ ) // which have heaps of their own
TEST( Runtime, StartAndStopLeaveNothingBehind )
{
    inRun(
        []
        {
            setenv( "HOME", scratch().c_str(), 1 );

            // With everything that a run may have been given.
            auto restartManyTimes = []( int times )
            {
                for( int i = 0; i < times; i++ )
                {
                    if( !qv___AbortFilename )
                        qv___AbortFilename = strdup( "report" );

                    restart( i % 2 ? QV_RUNTIME_FLAG_OBJECT_DATABASE : 0, "my-app", "My Application", "1.2" );
                }

                return mallinfo2().uordblks;
            };

            // What the C library keeps for threads comes and goes, some thousands of bytes. The smallest block that each
            // run of one kind leaves, 32 bytes, makes 16000.
            size_t before = restartManyTimes( 10 );
            EXPECT_LT( restartManyTimes( 1000 ), before + 12000 );

            // Nor do the large blocks that a run keeps.
            qv::release( qvStringCreateFromUtf8( std::string( 30000, 'x' ).c_str(), 30000 ) );
            EXPECT_GT( mallinfo2().uordblks, before + 100000 );
            restart( 0 );
            EXPECT_LT( mallinfo2().uordblks, before + 12000 );
        } );
}
#endif

TEST( Runtime, TheTimerThreadStartsWithTheFirstTimer )
{
    inRun(
        []
        {
            auto threads = []
            { return std::distance( fs::directory_iterator( "/proc/self/task" ), fs::directory_iterator() ); };
            auto started = threads();
            restart( 0 );
            EXPECT_EQ( started, threads() );

            Ref< QV_TIMER > timer( qvTimerCreate( []( QV_OBJ * ) {}, nullptr ) );
            EXPECT_EQ( started + 1, threads() );
            timer.reset( qvTimerCreate( []( QV_OBJ * ) {}, nullptr ) );
            EXPECT_EQ( started + 1, threads() );
        } );
}
