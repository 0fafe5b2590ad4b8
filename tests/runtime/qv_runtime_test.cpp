#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/base/qv_store.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_time_private.h"
#include "qv/base/qv_timer.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>

#include <dlfcn.h>
#include <sys/utsname.h>

using qv::Ref;
using namespace qv::test;
namespace fs = std::filesystem;

/* Stand-ins for what the platform tells about the computer ------------------------------------------------------- */

namespace
{
struct
{
    const char *computerName = nullptr; // null: the call fails
    bool        system       = true;    // false: the call fails
    std::string cpuFile;                // read instead of /proc/cpuinfo
    bool        standIn = false;
} platform;

template< class F >
F real( const char *name )
{
    return reinterpret_cast< F >( dlsym( RTLD_NEXT, name ) );
}
} // namespace

extern "C" int gethostname( char *name, size_t size ) noexcept
{
    if( !platform.standIn )
        return real< int ( * )( char *, size_t ) >( "gethostname" )( name, size );

    if( !platform.computerName )
        return -1;

    memset( name, 'n', size ); // a name that is cut has no terminator
    memcpy( name, platform.computerName, std::min( size, strlen( platform.computerName ) + 1 ) );
    return 0;
}

extern "C" int uname( utsname *system ) noexcept
{
    int result = real< int ( * )( utsname * ) >( "uname" )( system );
    return platform.system ? result : -1;
}

extern "C" FILE *fopen( const char *name, const char *mode )
{
    bool cpu = platform.standIn && strcmp( name, "/proc/cpuinfo" ) == 0;
    return real< FILE *(*)( const char *, const char * ) >( "fopen" )( cpu ? platform.cpuFile.c_str() : name, mode );
}

namespace
{
/* Runs of the library -------------------------------------------------------------------------------------------- */

// What `body` writes on the error stream in a copy of this process. Nothing of the environment is about paths there.
std::string inRun( const std::function< void() > &body )
{
    Ending ending = inOwnRun(
        [&]
        {
            for( const char *part : { "BIN", "RES", "DATA", "STORAGE", "TRACE", "ABORT", "TEMP" } )
                unsetenv( ( std::string( "XZ_MORVANE_" ) + part + "_PATH" ).c_str() );

            body();
        } );
    EXPECT_EQ( 0, ending.status ) << ending.errors;
    return ending.errors;
}

void say( const std::string &text )
{
    fputs( text.c_str(), stderr );
}

std::string orNone( QV_STRING *owned )
{
    return owned ? take( owned ) : "none";
}

// The paths of the run, one a line.
std::string paths()
{
    std::string result;

    for( QV_INT path = QV_RUNTIME_PATH_BIN; path <= QV_RUNTIME_PATH_DATA_TEMP; path++ )
    {
        std::string text = orNone( qvRuntimePath( path ) );
        EXPECT_EQ( text != "none", qvRuntimeHasPath( path ) );
        result += text + "\n";
    }

    return result;
}

const std::string INSTALLED = "/opt/wexcraft/morvane/bin/\n/opt/wexcraft/morvane/res/\n";

// Those of a run with one variable.
std::string pathsWith( const char *variable, const std::string &value, QV_INT flags = 0 )
{
    return inRun(
        [&]
        {
            unsetenv( "HOME" );
            setenv( variable, value.c_str(), 1 );
            restart( flags );
            say( paths() );
        } );
}

std::string dataPaths( const std::string &data )
{
    return INSTALLED + data + "\n" + data + "storage/\n" + data + "trace/\n" + data + "abort/\n" + data + "temp/\n";
}

/* The enumerations ----------------------------------------------------------------------------------------------- */
} // namespace

TEST( Runtime, SystemsAndHardwareHaveKinds )
{
    EXPECT_TRUE(
        qvRuntimeOsIsLinux( 8 ) && qvRuntimeOsIsDebian( 1 ) && qvRuntimeOsIsUnix( 9 ) && qvRuntimeOsIsWindows( 0 ) );
    EXPECT_FALSE(
        qvRuntimeOsIsLinux( 9 ) || qvRuntimeOsIsDebian( 0 ) || qvRuntimeOsIsUnix( 0 ) || qvRuntimeOsIsWindows( 1 ) );
    EXPECT_TRUE( qvRuntimeHardwareIsIntel( 1 ) && qvRuntimeHardwareIsArm( 6 ) && qvRuntimeHardwareIsBigEndian( 7 ) );
    EXPECT_FALSE(
        qvRuntimeHardwareIsIntel( 2 ) || qvRuntimeHardwareIsArm( 1 ) || qvRuntimeHardwareIsLittleEndian( 7 ) );

    EXPECT_EQ( "armel", orNone( qvRuntimeOsHardwarePlatformName( 1, QV_RUNTIME_HARDWARE_INNOVAPHONE ) ) );
    EXPECT_EQ( "none", orNone( qvRuntimeOsHardwarePlatformName( 0, QV_RUNTIME_HARDWARE_X64 ) ) );
    EXPECT_TRUE( qvRuntimeOsSupportsHardware( QV_RUNTIME_OS_DEBIAN_7, QV_RUNTIME_HARDWARE_MIPS ) );
    EXPECT_FALSE( qvRuntimeOsSupportsHardware( QV_RUNTIME_OS_DEBIAN_8, QV_RUNTIME_HARDWARE_MIPS ) );
    EXPECT_FALSE( qvRuntimeOsSupportsHardware( QV_RUNTIME_OS_MACOSX, QV_RUNTIME_HARDWARE_X64 ) );
    EXPECT_TRUE( qvRuntimeOsSupportsHardware( qvRuntimeOs(), qvRuntimeHardware() ) );
    EXPECT_EQ( QV_RUNTIME_OS_DEBIAN_10, qvRuntimeOs() );
}

/* Flags ---------------------------------------------------------------------------------------------------------- */

TEST( Runtime, FlagsAreNormalisedAtTheStart )
{
    EXPECT_EQ(
        "0", inRun(
                 []
                 {
                     restart( QV_RUNTIME_FLAG_SNAPSHOT_SORT );
                     say( std::to_string( qvRuntimeFlags() ) );
                 } ) );
}

/* Identity ------------------------------------------------------------------------------------------------------- */

TEST( Runtime, TheApplicationIsWhatTheStartWasTold )
{
    EXPECT_EQ(
        "nnn my-app;none;ä;", inRun(
                                  []
                                  {
                                      say( qvRuntimeVersionApplicationHasIdentifier() ? "y" : "n" );
                                      say( qvRuntimeVersionApplicationHasFriendlyName() ? "y" : "n" );
                                      say( qvRuntimeVersionApplicationHasVersion() ? "y" : "n" );
                                      char identifier[] = "my-app";
                                      restart( 0, identifier, nullptr, "ä" );
                                      identifier[0] = 'x'; // copied
                                      say( " " + orNone( qvRuntimeVersionApplicationIdentifier() ) + ";" );
                                      say( orNone( qvRuntimeVersionApplicationFriendlyName() ) + ";" );
                                      say( orNone( qvRuntimeVersionApplicationVersion() ) + ";" );
                                  } ) );
}

/* Paths ---------------------------------------------------------------------------------------------------------- */

TEST( Runtime, PathsComeFromTheEnvironment )
{
    std::string data = scratch() + "env";

    EXPECT_EQ( dataPaths( data + "/" ), pathsWith( "XZ_MORVANE_DATA_PATH", data ) );

    for( const char *folder : { "", "/storage", "/trace", "/abort", "/temp" } )
        EXPECT_TRUE( fs::is_directory( data + folder ) ) << folder;

    // A variable moves its own path alone; what is missing on the way to it is made.
    std::string trace = scratch() + "a//b/trace/";
    std::string moved = inRun(
        [&]
        {
            setenv( "XZ_MORVANE_DATA_PATH", data.c_str(), 1 );
            setenv( "XZ_MORVANE_TRACE_PATH", trace.c_str(), 1 );
            setenv( "XZ_MORVANE_BIN_PATH", "relative", 1 );
            restart( 0 );
            say( paths() );
        } );
    EXPECT_EQ(
        "relative/\n/opt/wexcraft/morvane/res/\n" + data + "/\n" + data + "/storage/\n" + trace + "\n" + data
            + "/abort/\n" + data + "/temp/\n",
        moved );
    EXPECT_TRUE( fs::is_directory( scratch() + "a/b/trace" ) );
    EXPECT_FALSE( fs::exists( "relative" ) );
}

TEST( Runtime, PathsHaveDefaults )
{
    std::string home = scratch() + "home";

    EXPECT_EQ( dataPaths( home + "/.opt/wexcraft/morvane/" ), pathsWith( "HOME", home ) );
    EXPECT_TRUE( fs::is_directory( home + "/.opt/wexcraft/morvane/abort" ) );

    // Without a home only a path with a variable of its own is left.
    EXPECT_EQ(
        INSTALLED + "none\nnone\nnone\nnone\n" + home + "/temp/\n",
        pathsWith( "XZ_MORVANE_TEMP_PATH", home + "/temp" ) );
    EXPECT_EQ(
        "none\nnone\nnone\nnone\nnone\nnone\nnone\n",
        pathsWith( "XZ_MORVANE_DATA_PATH", home, QV_RUNTIME_FLAG_MINIMAL ) );

    // What cannot be made does not keep the library from starting.
    EXPECT_EQ( dataPaths( "/proc/nowhere/" ), pathsWith( "XZ_MORVANE_DATA_PATH", "/proc/nowhere" ) );
}

/* The computer --------------------------------------------------------------------------------------------------- */

namespace
{
std::string computer( const char *name, bool system, const std::string &cpuLines )
{
    std::string file = scratch() + "cpuinfo";
    std::ofstream( file ) << cpuLines;

    return inRun(
        [&]
        {
            platform = { name, system, cpuLines.empty() ? scratch() + "missing" : file, true };
            restart( QV_RUNTIME_FLAG_MINIMAL );
            say( orNone( qvRuntimeComputerName() ) + "\n" + orNone( qvRuntimeOperatingSystemInfo() ) + "\n"
                 + orNone( qvRuntimeCpuInfo() ) + "\n" );
            say( qvRuntimeHasComputerName() ? "y" : "n" );
            say( qvRuntimeHasOperatingSystemInfo() ? "y" : "n" );
            say( qvRuntimeHasCpuInfo() ? "y" : "n" );
        } );
}
} // namespace

TEST( Runtime, TheComputerIsDescribed )
{
    utsname system;
    uname( &system );
    std::string os    = std::string( system.release ) + ", " + system.version + ", " + system.machine;
    std::string cores = ", cores:" + std::to_string( sysconf( _SC_NPROCESSORS_ONLN ) );

    // The 18 characters go as they are, whatever they are.
    EXPECT_EQ(
        "host\n" + os + "\n(R) 3000" + cores + "\nyyy",
        computer(
            "host", true, "processor\t: 0\n model name: no\nmodel name\t: Intel(R) 3000\nmodel name\t: other one\n" ) );
    EXPECT_EQ( "host\n" + os + "\n" + cores + "\nyyy", computer( "host", true, "model name\t: x\n" ) );
    EXPECT_EQ( "none\nnone\nCPU unknown" + cores + "\nnny", computer( nullptr, false, "processor\t: 0\n" ) );
    EXPECT_EQ( "none\nnone\nCPU unknown" + cores + "\nnny", computer( nullptr, false, "" ) );

    // A name that fills its room is cut.
    std::string longName( 300, 'n' );
    EXPECT_THAT( computer( longName.c_str(), true, "" ), testing::StartsWith( std::string( 255, 'n' ) + "\n" ) );
}

TEST( Runtime, TheSummaryIsADocument )
{
    // The values of the keys, as far as they are there.
    auto summary = []
    {
        Ref< QV_STORE > store( qvRuntimeInfo() );
        std::string     result;

        for( const char *key :
             { "product", "friendlyName", "version", "versionMajor", "versionMinor", "versionRelease", "compatibility",
               "os", "applicationIdentifier", "applicationFriendlyName", "applicationVersion", "computerName",
               "operatingSystemInfo" } )
            result += orNone( qvStoreValueCstr( store, key, -1 ) ) + ";";

        return result;
    };
    const std::string PRODUCT = "morvane;morvane;4.0.19;4;0;19;0;Debian 10;";

    EXPECT_EQ(
        PRODUCT + "none;none;none;" + take( qvRuntimeComputerName() ) + ";" + take( qvRuntimeOperatingSystemInfo() )
            + ";",
        summary() );
    EXPECT_EQ(
        PRODUCT + "my-app;My Application;1.2;none;none;", inRun(
                                                              [&]
                                                              {
                                                                  platform = { nullptr, false, "", true };
                                                                  restart( 0, "my-app", "My Application", "1.2" );
                                                                  say( summary() );
                                                              } ) );

    Ref< QV_STORE > store( qvRuntimeInfo() );
    Ref< QV_STORE > modules( qvStoreStoreCstr( store, "moduleVersions", -1 ) );
    EXPECT_EQ( "0.0", take( qvStoreValueCstr( modules, "qv", -1 ) ) );
    EXPECT_EQ( take( qvRuntimeCpuInfo() ), take( qvStoreValueCstr( store, "cpuInfo", -1 ) ) );
    EXPECT_EQ( qv___RuntimeVersionProductBuildTimeCstr(), take( qvStoreValueCstr( store, "buildTime", -1 ) ) );
    EXPECT_EQ( textOf( Ref( qv___TimeStarted() ).get() ), take( qvStoreValueCstr( store, "startTime", -1 ) ) );
    EXPECT_EQ( qv___RuntimeVersionProductBuildTimeCstr(), textOf( Ref( qvRuntimeVersionProductBuildTime() ).get() ) );
    EXPECT_EQ( "Wexcraft GmbH", take( qvRuntimeVersionProductVendorName() ) );
    EXPECT_THAT( take( qvRuntimeVersionProductCopyright() ), testing::HasSubstr( "Wexcraft GmbH" ) );
}

/* Start and stop ------------------------------------------------------------------------------------------------- */

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
namespace
{
int64_t blocks = 0; // how many are taken from the heap
} // namespace

extern "C"
{
    void *__libc_malloc( size_t size );
    void *__libc_calloc( size_t count, size_t size );
    void *__libc_realloc( void *block, size_t size );
    void  __libc_free( void *block );

    void *malloc( size_t size )
    {
        __atomic_add_fetch( &blocks, 1, __ATOMIC_RELAXED );
        return __libc_malloc( size );
    }

    void *calloc( size_t count, size_t size )
    {
        __atomic_add_fetch( &blocks, 1, __ATOMIC_RELAXED );
        return __libc_calloc( count, size );
    }

    void *realloc( void *block, size_t size )
    {
        __atomic_add_fetch( &blocks, block ? 0 : 1, __ATOMIC_RELAXED );
        return __libc_realloc( block, size );
    }

    void free( void *block )
    {
        __atomic_add_fetch( &blocks, block ? -1 : 0, __ATOMIC_RELAXED );
        __libc_free( block );
    }
}

TEST( Runtime, StartAndStopLeaveNothingBehind )
{
    std::string growth = inRun(
        []
        {
            setenv( "HOME", scratch().c_str(), 1 );

            // With everything that a run may have been given.
            auto restartWithAll = []( QV_INT flags )
            {
                if( !qv___AbortFilename )
                    qv___AbortFilename = static_cast< char * >( qvMemAlloc( 100 ) );

                restart( flags, "my-app", "My Application", "1.2" );
            };

            for( int flags : { 0, QV_RUNTIME_FLAG_MINIMAL, QV_RUNTIME_FLAG_OBJECT_DATABASE } )
            {
                const int RUNS = 100;

                restartWithAll( flags );
                int64_t before = qv___AtomicLoad64( &blocks );

                for( int i = 0; i < RUNS; i++ )
                    restartWithAll( flags );

                // The library's own thread may have taken its few blocks or not yet, and what the C library keeps for
                // threads that have ended comes and goes. What each run left behind would be many more.
                int64_t more = qv___AtomicLoad64( &blocks ) - before;
                say( more < RUNS / 2 ? "none;" : std::to_string( more ) + ";" );
            }
        } );
    EXPECT_EQ( "none;none;none;", growth );
}
#endif

TEST( Runtime, TheTimerThreadStartsWithTheFirstTimer )
{
    auto threads = []
    { return std::distance( fs::directory_iterator( "/proc/self/task" ), fs::directory_iterator() ); };

    EXPECT_EQ(
        "0 1 1", inRun(
                     [&]
                     {
                         auto started = threads();
                         restart( 0 );
                         say( std::to_string( threads() - started ) + " " );

                         Ref< QV_TIMER > timer( qvTimerCreate( []( QV_OBJ * ) {}, nullptr ) );
                         say( std::to_string( threads() - started ) + " " );
                         timer.reset( qvTimerCreate( []( QV_OBJ * ) {}, nullptr ) );
                         say( std::to_string( threads() - started ) );
                     } ) );
}
