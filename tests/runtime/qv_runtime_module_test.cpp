/* Loading and unloading, with the modules of qv_module_fixture.cpp. Each test has runs of the library of its own. */

#include "qv_test_child.h"
#include "qv_test_clock.h"
#include "qv_test_support.h"

#include "qv/base/qv_store.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include <dlfcn.h>

using qv::Ref;
using namespace qv::test;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Lines = std::vector< std::string >;

/* Stand-in for the loader ---------------------------------------------------------------------------------------- */

namespace
{
std::string *loaderPath = nullptr; // where it finds files without a path; it gets what was asked for
}

extern "C" void *dlopen( const char *name, int flags ) noexcept
{
    static auto real = reinterpret_cast< void *(*)( const char *, int ) >( dlsym( RTLD_NEXT, "dlopen" ) );

    if( !loaderPath || !name || strchr( name, '/' ) )
        return real( name, flags );

    std::string path = *loaderPath + name;
    *loaderPath      = name;
    return real( path.c_str(), flags );
}

/* Runs of the library -------------------------------------------------------------------------------------------- */

namespace
{
Lines lines; // that were printed

// All that is printed here is ASCII.
std::string utf8( const QV_CHAR *chs, QV_INT length )
{
    return std::string( chs, chs + length );
}

void keepLine( const QV_CHAR *chs, QV_INT length )
{
    lines.push_back( utf8( chs, length ) );
}

void start( QV_INT flags )
{
    setenv( "XZ_MORVANE_BIN_PATH", TEST_MODULES, 1 );
    qvRuntimeStartup( flags, keepLine, nullptr, nullptr, nullptr );
    unsetenv( "XZ_MORVANE_BIN_PATH" );
}

void run( QV_INT flags, const std::function< void() > &body )
{
    withoutLibrary(
        [&]
        {
            lines.clear();
            start( flags );
            body();
            qvRuntimeShutdown();
            EXPECT_EQ( 0, qv___AtomicLoad32( &qv___module.sorts ) );
        } );
}

// What a copy of the process, in which `body` ends the run, prints and reports on the error stream.
std::string reportOf( QV_INT flags, const std::function< void() > &body )
{
    Ending ending = inOwnRun(
        [&]
        {
            qvRuntimeShutdown();
            setenv( "XZ_MORVANE_BIN_PATH", TEST_MODULES, 1 );
            qvRuntimeStartup(
                flags, []( const QV_CHAR *chs, QV_INT length )
                { fprintf( stderr, "%s\n", utf8( chs, length ).c_str() ); }, nullptr, nullptr, nullptr );
            body();
        } );
    EXPECT_EQ( SIGABRT, ending.signal );
    return ending.errors;
}

Lines printed()
{
    return std::exchange( lines, {} );
}

bool load( const char *names )
{
    return qvRuntimeTryLoadModulesCstr( names, -1 );
}

std::string loaded()
{
    Ref< QV_VECTOR > modules( qvRuntimeModulesVector() );
    std::string      result;

    for( QV_INT i = 0; i < qvVectorLength( modules ); i++ )
        result += take( qvObjToString( Ref< QV_OBJ >( qvVectorObjAt( modules, i ) ) ) ) + " ";

    return result.substr( 0, result.size() - 1 );
}

Ref< QV_MODULE > moduleNamed( const char *name )
{
    return Ref< QV_MODULE >( qvRuntimeModule( text( name ) ) );
}

// Things of a module and another object of it.
std::vector< Ref< QV_OBJ > > objectsOf( const char *name, intptr_t things )
{
    std::vector< QV_OBJ * > owned( static_cast< size_t >( things ) + 1 );
    Ref< QV_MODULE >        module = moduleNamed( name );
    EXPECT_EQ( things + 1, qvModuleRunPersonality( module, reinterpret_cast< intptr_t >( owned.data() ), things ) );

    return std::vector< Ref< QV_OBJ > >( owned.begin(), owned.end() );
}

Lines operator+( Lines a, const Lines &b )
{
    a.insert( a.end(), b.begin(), b.end() );
    return a;
}

std::string opening( const std::string &name )
{
    return "[qv___RuntimeTryLoadModule()] module: " + name;
}

std::string refused( const std::string &reason )
{
    return "[qv___RuntimePlatformLoadModule()] " + reason;
}
} // namespace

/* Loading -------------------------------------------------------------------------------------------------------- */

TEST( RuntimeModule, LoadsWhatAModuleNeedsBeforeItAndItsExtensionsBehind )
{
    Lines starting = { opening( "app" ),    opening( "base_1" ), "base_1 startup",
                       opening( "base_2" ), "base_2 startup",    "app startup",
                       opening( "extra" ), // of base_2, which stands before the application
                       "extra startup",     opening( "absent" ), refused( "dlopen(): null" ),
                       opening( "plug" ),   "plug startup",      opening( "plug_plug" ),
                       "plug_plug startup" };
    Lines ending;

    for( std::string name : { "plug_plug", "plug", "extra", "app", "base_2", "base_1" } )
        ending.push_back( name + " shutdownBegin" );

    for( std::string name : { "plug_plug", "plug", "extra", "app", "base_2", "base_1" } )
        ending = ending
                 + Lines{ "[qvRuntimeUnloadAllModules()] module: " + name, name + " shutdown", name + " shutdownEnd" };

    run( QV_RUNTIME_FLAG_MODULE_DEBUG,
         [&]
         {
             EXPECT_EQ( "qv", loaded() );
             qvRuntimeUnloadAllModules();
             EXPECT_EQ( Lines(), printed() );

             // What was unloaded can be loaded again.
             for( int round = 0; round < 2; round++ )
             {
                 EXPECT_TRUE( qvRuntimeTryLoadModule( text( "app" ) ) );
                 EXPECT_EQ( starting, printed() );
                 EXPECT_EQ( "qv base_1 base_2 app extra plug plug_plug", loaded() );
                 EXPECT_EQ( "plug", textOf( moduleNamed( "plug" ).get() ) );
                 EXPECT_EQ( nullptr, moduleNamed( "absent" ).get() );

                 Ref< QV_STORE >  info( qvRuntimeInfo() );
                 Ref< QV_STORE >  versions( qvStoreStoreCstr( info, "moduleVersions", -1 ) );
                 Ref< QV_VECTOR > text( qvStoreEncodeToStringVector( versions ) );
                 EXPECT_EQ(
                     "<app=1#2.3, base_1=1#2.3, base_2=1#2.3, extra=1#2.3, plug=1#2.3, plug_plug=1#2.3, qv=0.0>",
                     textOf( text.get() ) );

                 // What is loaded is not loaded again, and no extension is tried twice.
                 EXPECT_TRUE( load( "qv app plug_plug" ) );
                 EXPECT_EQ( Lines(), printed() );

                 qvRuntimeUnloadAllModules();
                 EXPECT_EQ( ending, printed() );
                 EXPECT_EQ( "qv", loaded() );
                 EXPECT_EQ( nullptr, moduleNamed( "app" ).get() );
             }

             // So it can in the next run; the stop unloads what is left.
             load( "app" );
             printed();
             qvRuntimeShutdown();
             EXPECT_EQ( ending, printed() );
             start( 0 );
             EXPECT_TRUE( load( "extra" ) );
         } );
    EXPECT_THAT(
        printed(), ElementsAre( "extra startup", "extra shutdownBegin", "extra shutdown", "extra shutdownEnd" ) );
}

TEST( RuntimeModule, AFailureLeavesWhatWasLoadedBefore )
{
    run( 0,
         []
         {
             // Its second dependency is missing, so that its third is not tried.
             EXPECT_FALSE( load( "needy" ) );
             EXPECT_THAT( printed(), ElementsAre( "base_1 startup" ) );
             EXPECT_EQ( "qv base_1", loaded() );

             // Without success no extension is loaded, and with the next one all are that have waited.
             EXPECT_FALSE( load( "unwilling extra" ) );
             EXPECT_THAT( printed(), ElementsAre( "base_2 startup", "unwilling startup" ) );
             EXPECT_EQ( "qv base_1 base_2", loaded() );

             Ref< QV_VECTOR > none( qvVectorCreate() );
             EXPECT_TRUE( qvRuntimeTryLoadModulesVector( none ) );
             EXPECT_THAT( printed(), ElementsAre( "extra startup" ) );

             // A failure is no obstacle to the next try.
             EXPECT_FALSE( load( "unwilling" ) );
             EXPECT_TRUE( qvRuntimeTryLoadModulesWcstr( L"plug base_1 app" ) );
             EXPECT_EQ( "qv base_1 base_2 extra plug app plug_plug", loaded() );
         } );
}

TEST( RuntimeModule, RefusesFilesThatAreNoModuleOfTheProduct )
{
    const std::vector< std::array< std::string, 2 > > CASES = {
        { "absent", "dlopen(): null" },        { "text", "dlopen(): null" },
        { "symbolless", "dlsym(): null" },     { "foreign", "qv___ModuleCheckCompatibility(): false" },
        { "misnamed", "module name invalid" },
    };

    for( QV_INT flags : { 0, QV_RUNTIME_FLAG_MODULE_DEBUG } )
        run( flags,
             [&]
             {
                 for( const auto &[name, reason] : CASES )
                 {
                     EXPECT_FALSE( load( name.c_str() ) ) << name;
                     EXPECT_EQ( flags ? Lines( { opening( name ), refused( reason ) } ) : Lines(), printed() );

                     // It was closed again.
                     std::string path = TEST_MODULES "libmorvane-" + name + ".so";
                     EXPECT_EQ( nullptr, dlopen( path.c_str(), RTLD_NOW | RTLD_NOLOAD ) ) << name;
                 }

                 EXPECT_EQ( "qv", loaded() );
             } );
}

TEST( RuntimeModule, TheLoaderSearchesWithoutAPath )
{
    run( QV_RUNTIME_FLAG_IMPLICIT_MODULE_PATH,
         []
         {
             std::string where = TEST_MODULES;
             loaderPath        = &where;
             EXPECT_TRUE( load( "base_1" ) );
             loaderPath = nullptr;
             EXPECT_EQ( "libmorvane-base_1.so", where );
         } );

    // A run without the file system has no path to start from.
    run( QV_RUNTIME_FLAG_MINIMAL, [] { EXPECT_FALSE( load( "base_1" ) ); } );
}

TEST( RuntimeModule, BrokenContractsEndTheProcess )
{
    EXPECT_THAT(
        reportOf( 0, [] { load( "ring_1" ); } ),
        HasSubstr( "Expression: !qvDictHasStringKey( qv___RuntimeLoadingDict, moduleName )\n" ) );
    EXPECT_THAT(
        reportOf( 0, [] { load( "base_1  base_2" ); } ),
        AllOf( HasSubstr( "base_1 startup" ), HasSubstr( "Expression: qvModuleNameOk( moduleName )\n" ) ) );
    EXPECT_THAT(
        reportOf(
            0,
            []
            {
                QV_VECTOR *numbers = qvVectorCreate();
                qvVectorAppendInt( &numbers, 1 );
                qvRuntimeTryLoadModulesVector( numbers );
            } ),
        HasSubstr( "Expression: qvVectorContainsOnly( moduleNames, qvStringSort() )\n" ) );
}

TEST( RuntimeModule, LoadsAndLooksFromManyThreads )
{
    run( 0,
         []
         {
             std::atomic< bool >        over{ false };
             std::vector< std::thread > threads;

             for( const char *name : { "app", "plug", "base_2" } )
                 threads.emplace_back(
                     [name]
                     {
                         for( int i = 0; i < 20; i++ )
                             EXPECT_TRUE( load( name ) );
                     } );

             threads.emplace_back(
                 []
                 {
                     for( int i = 0; i < 20; i++ )
                         qvRuntimeUnloadAllModules();
                 } );

             std::thread reader(
                 [&]
                 {
                     // Whoever is there stands behind what it needs, and in both tables.
                     while( !over )
                     {
                         Ref< QV_VECTOR > modules( qvRuntimeModulesVector() );
                         ASSERT_EQ( qvModule(), Ref< QV_OBJ >( qvVectorObjAt( modules, 0 ) ).get() );

                         Ref< QV_MODULE > app = moduleNamed( "app" );
                         QV_INT place         = app ? qvVectorIndexOfObj( modules, qvModuleObj( app ), QV_FALSE ) : -1;
                         ASSERT_TRUE( place == -1 || place >= 3 );
                     }
                 } );

             for( std::thread &thread : threads )
                 thread.join();

             over = true;
             reader.join();
             qvRuntimeUnloadAllModules();
             EXPECT_EQ( "qv", loaded() );

             auto count = []( const char *what )
             {
                 return std::count_if(
                     lines.begin(), lines.end(), [&]( const std::string &line ) { return line.ends_with( what ); } );
             };
             EXPECT_LE( 6, count( " startup" ) );
             EXPECT_EQ( count( " startup" ), count( " shutdownBegin" ) );
             EXPECT_EQ( count( " startup" ), count( " shutdown" ) );
             EXPECT_EQ( count( " startup" ), count( " shutdownEnd" ) );
         } );
}

/* Unloading ------------------------------------------------------------------------------------------------------ */

namespace
{
// Unloads; `atWait` is called at each wait with its number.
int unload( const std::function< void( int ) > &atWait )
{
    int                     waits = 0;
    std::function< void() > wait  = [&] { atWait( ++waits ); };
    WallClock::onOwnWait          = &wait;
    qvRuntimeUnloadAllModules();
    WallClock::onOwnWait = nullptr;

    return waits;
}
} // namespace

TEST( RuntimeModule, AnUnloadWaitsForTheLastObject )
{
    run( 0,
         []
         {
             load( "app" );
             auto ofApp  = objectsOf( "app", 2 );
             auto ofBase = objectsOf( "base_1", 0 );
             printed();

             // 1200 waits of 50 milliseconds are just within the limit.
             int waits = unload(
                 [&]( int number )
                 {
                     if( number == 3 )
                     {
                         EXPECT_EQ( "qv base_1 base_2 app", loaded() );
                         EXPECT_EQ( "app shutdown", lines.back() );
                         ofApp.erase( ofApp.begin() + 1, ofApp.end() );
                     }
                     else if( number == 1200 )
                     {
                         ofApp.clear();
                     }
                     else if( number == 1204 )
                     {
                         EXPECT_EQ( "base_1 shutdown", lines.back() );
                         ofBase.clear();
                     }
                 } );
             EXPECT_EQ( 1204, waits );
             EXPECT_EQ( "base_1 shutdownEnd", lines.back() );
             EXPECT_EQ( "qv", loaded() );
         } );
}

TEST( RuntimeModule, AnObjectKeptTooLongEndsTheProcess )
{
    std::string report = reportOf(
        QV_RUNTIME_FLAG_OBJECT_DATABASE,
        []
        {
            load( "app" );
            auto kept = objectsOf( "base_2", 0 );
            unload( []( int number ) { fprintf( stderr, "wait %i\n", number ); } );
        } );
    EXPECT_THAT(
        report,
        AllOf(
            HasSubstr( "app shutdownEnd\n" ), Not( HasSubstr( "base_2 shutdownEnd\n" ) ), HasSubstr( "wait 1201\n" ),
            Not( HasSubstr( "wait 1202\n" ) ), Not( HasSubstr( "-----" ) ), HasSubstr( "Message   : base_2\n" ),
            HasSubstr( "Expression: msecs <= QV___RUNTIME_UNLOAD_MODULE_TIMEOUT\n" ) ) );
}

namespace
{
const std::string DASHES( 90, '-' );

// What a run reports that keeps objects of two modules, of the first for two reports and of the second for one; without
// the head of the first report, which is that of every report.
Lines reports()
{
    const QV_INT FLAGS = QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT
                         | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING
                         | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG;
    std::vector< int > seen; // the waits at which there are reports that the wait before did not have
    Lines              result;

    run( FLAGS,
         [&]
         {
             load( "app" );
             auto ofApp  = objectsOf( "app", 2 );
             auto ofBase = objectsOf( "base_1", 0 );
             qvObjRetain( ofApp[1] );
             qv___ObjLogAppend( ofApp[1], text( "was retained" ) );
             printed();

             unload(
                 [&, before = 0]( int number ) mutable
                 {
                     auto now = std::count( lines.begin(), lines.end(), DASHES );

                     if( now > std::exchange( before, now ) )
                         seen.push_back( number );

                     if( number == 403 )
                     {
                         qvObjRelease( ofApp[1] );
                         ofApp.clear();
                     }
                     else if( number == 605 )
                     {
                         ofBase.clear();
                     }
                 } );

             for( const std::string &line : printed() )
                 if( line.find( " shutdown" ) == std::string::npos )
                     result.push_back( line );
         } );

    // More than 10 seconds in steps of 50 milliseconds: after the 201st wait for a module, and after each 201 more.
    EXPECT_THAT( seen, ElementsAre( 202, 403, 605 ) );
    return Lines( result.begin() + std::min< ptrdiff_t >( 8, std::ssize( result ) ), result.end() );
}
} // namespace

TEST( RuntimeModule, AReportTellsWhatKeepsAModule )
{
    const Lines SORTS   = { DASHES, "QV_FIXTURE_THING 2", "QV_FIXTURE_ODD   1" };
    const Lines OBJECTS = {
        "", "QV_FIXTURE_THING (1) a thing of app", "QV_FIXTURE_THING (2) a thing of app", "\twas retained",
        "QV_FIXTURE_ODD (1)" };
    const Lines LAST = { DASHES, "QV_FIXTURE_ODD 1", "", "QV_FIXTURE_ODD (1)" };

    EXPECT_EQ( SORTS + OBJECTS + SORTS + OBJECTS + LAST, reports() );
}

TEST( RuntimeModule, SnapshotsHoldTheObjectsOfAllModules )
{
    run( QV_RUNTIME_FLAG_OBJECT_DATABASE,
         []
         {
             load( "app" );
             auto             things = objectsOf( "app", 2 );
             auto             other  = objectsOf( "base_1", 0 );
             Ref< QV_MODULE > app    = moduleNamed( "app" );
             Ref< QV_VECTOR > sorts( qvModuleSnapshotSorts( app ) );
             Ref< QV_VECTOR > objects( qvModuleSnapshotObjects( app ) );
             EXPECT_EQ( "<QV_FIXTURE_THING, QV_FIXTURE_ODD>", textOf( sorts.get() ) );
             EXPECT_EQ( 3, qvVectorLength( objects ) );

             Ref< QV_VECTOR > allSorts( qvRuntimeSnapshotSorts() );
             Ref< QV_VECTOR > allObjects( qvRuntimeSnapshotObjects() );
             Ref< QV_VECTOR > modules( qvRuntimeModulesVector() );
             auto             of = [&]( QV_VECTOR *all, const char *name )
             {
                 Ref< QV_MODULE > module = moduleNamed( name );
                 QV_INT           idx    = qvVectorIndexOfObj( modules, qvModuleObj( module ), QV_FALSE );
                 return Ref< QV_VECTOR >( qvVectorFrom( qvVectorObjAt( all, idx ) ) );
             };

             // A Vector for each module, in their order.
             EXPECT_EQ( qvVectorLength( modules ), qvVectorLength( allSorts ) );
             EXPECT_EQ( qvVectorLength( modules ), qvVectorLength( allObjects ) );
             EXPECT_TRUE( qvVectorHasObj( of( allSorts, "qv" ), qvSortObj( qvStringSort() ), QV_FALSE ) );
             EXPECT_EQ( "<QV_FIXTURE_ODD>", textOf( of( allSorts, "base_1" ).get() ) );
             EXPECT_EQ( "<QV_FIXTURE_THING, QV_FIXTURE_ODD>", textOf( of( allSorts, "app" ).get() ) );
             EXPECT_TRUE( qvVectorHasObj( of( allObjects, "base_1" ), other[0], QV_FALSE ) );
             EXPECT_TRUE( qvVectorHasObj( of( allObjects, "app" ), things[1], QV_FALSE ) );
         } );

    run( 0,
         []
         {
             EXPECT_EQ( nullptr, qvModuleSnapshotSorts( qvModule() ) );
             EXPECT_EQ( nullptr, qvModuleSnapshotObjects( qvModule() ) );
             EXPECT_EQ( nullptr, qvRuntimeSnapshotSorts() );
             EXPECT_EQ( nullptr, qvRuntimeSnapshotObjects() );
         } );
}
