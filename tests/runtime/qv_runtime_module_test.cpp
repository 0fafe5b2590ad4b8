/* Loading and unloading, with the modules of qv_module_fixture.c. Each test has runs of the library of its own. */

#include "qv_test_call.h"
#include "qv_test_child.h"
#include "qv_test_clock.h"

#include "qv/qv.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_runtime_private.h"

#include <atomic>

#include <dlfcn.h>
#include <fcntl.h>

using qv::Ref;
using namespace qv::test;
using testing::AllOf;
using testing::HasSubstr;

/* Runs of the library -------------------------------------------------------------------------------------------- */

namespace
{
const QV_INT DATABASE = QV_RUNTIME_FLAG_OBJECT_DATABASE;
const QV_INT TEXTS    = DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING;
const QV_INT ALL      = TEXTS | QV_RUNTIME_FLAG_SNAPSHOT_SORT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG;

const std::string DASHES( 90, '-' );
std::string       output; // what was printed, a line for each call

// All that is printed here is ASCII.
void keepLine( const QV_CHAR *chs, QV_INT length )
{
    output += std::string( chs, chs + length ) + "\n";
    std::this_thread::yield(); // to those that load or unload beside this one
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
            output.clear();
            start( flags );
            body();
            qvRuntimeShutdown();
            EXPECT_EQ( 0, qv___ModuleObjects( &qv___module ) );
        } );
}

// What a run in a process of its own prints or reports.
std::string outputOf( QV_INT flags, void ( *body )() )
{
    Ending ending = inOwnRun(
        [&]
        {
            qvRuntimeShutdown();
            output.clear();
            start( flags );
            body();
            qvRuntimeShutdown();
            fputs( output.c_str(), stderr );
        } );
    return ending.errors;
}

std::string printed()
{
    return std::exchange( output, {} );
}

int timesPrinted( const std::string &text )
{
    int result = 0;

    for( size_t at = output.find( text ); at != std::string::npos; at = output.find( text, at + 1 ) )
        result++;

    return result;
}

bool load( const std::string &names )
{
    return qvRuntimeTryLoadModulesCstr( names.c_str(), -1 );
}

std::string loaded()
{
    return textOf( Ref< QV_VECTOR >( qvRuntimeModulesVector() ).get() );
}

Ref< QV_MODULE > moduleNamed( const char *name )
{
    return Ref< QV_MODULE >( qvRuntimeModule( text( name ) ) );
}

// Things of a module and another object of it.
std::vector< Ref< QV_OBJ > > objectsOf( const char *name, intptr_t things )
{
    std::vector< QV_OBJ * > owned( static_cast< size_t >( things ) + 1 );
    EXPECT_EQ(
        things + 1,
        qvModuleRunPersonality( moduleNamed( name ), reinterpret_cast< intptr_t >( owned.data() ), things ) );

    return std::vector< Ref< QV_OBJ > >( owned.begin(), owned.end() );
}

std::string opening( const std::string &name )
{
    return "[qv___RuntimeTryLoadModule()] module: " + name + "\n";
}

std::string refused( const std::string &reason )
{
    return "[qv___RuntimePlatformLoadModule()] " + reason + "\n";
}
} // namespace

/* Loading -------------------------------------------------------------------------------------------------------- */

TEST( RuntimeModule, LoadsWhatAModuleNeedsBeforeItAndItsExtensionsAfterIt )
{
    const std::string STARTING =
        opening( "app" ) + opening( "base_1" ) + "base_1 startup\n" + opening( "base_2" )
        + "base_2 startup\napp startup\n" + opening( "extra" ) // of base_2, which is before the application
        + "extra startup\n" + opening( "absent" ) + refused( "dlopen(): null" ) + opening( "plug" ) + "plug startup\n"
        + opening( "plug_plug" ) + "plug_plug startup\n";
    const std::string NAMES[] = { "plug_plug", "plug", "extra", "app", "base_2", "base_1" };
    std::string       ending;

    for( const std::string &name : NAMES )
        ending += name + " shutdownBegin\n";

    for( const std::string &name : NAMES )
        ending +=
            "[qvRuntimeUnloadAllModules()] module: " + name + "\n" + name + " shutdown\n" + name + " shutdownEnd\n";

    run( QV_RUNTIME_FLAG_MODULE_DEBUG,
         [&]
         {
             // What was unloaded can be loaded again.
             for( int round = 0; round < 2; round++ )
             {
                 qvRuntimeUnloadAllModules();
                 EXPECT_EQ( round ? ending : "", printed() );
                 EXPECT_EQ( "<qv>", loaded() );
                 EXPECT_EQ( nullptr, moduleNamed( "app" ).get() );

                 EXPECT_TRUE( qvRuntimeTryLoadModule( text( "app" ) ) );
                 EXPECT_EQ( STARTING, printed() );
                 EXPECT_EQ( "<qv, base_1, base_2, app, extra, plug, plug_plug>", loaded() );
                 EXPECT_EQ( "plug", textOf( moduleNamed( "plug" ).get() ) );

                 // What is loaded is not loaded again, and no extension is tried twice.
                 EXPECT_TRUE( load( "qv app plug_plug" ) );
                 EXPECT_EQ( "", printed() );
             }

             Ref< QV_STORE > info( qvRuntimeInfo() ), versions( qvStoreStoreCstr( info, "moduleVersions", -1 ) );
             EXPECT_EQ( "1#2.3", take( qvStoreValueCstr( versions, "plug_plug", -1 ) ) );

             // The stop unloads what is left, and the next run can load it.
             qvRuntimeShutdown();
             EXPECT_EQ( ending, printed() );
             start( 0 );
             EXPECT_TRUE( load( "extra" ) );
         } );
    EXPECT_EQ( "extra startup\nextra shutdownBegin\nextra shutdown\nextra shutdownEnd\n", printed() );
}

TEST( RuntimeModule, AFailureLeavesWhatWasLoadedBefore )
{
    run( 0,
         []
         {
             // Its second dependency is missing, so that its third is not tried.
             EXPECT_FALSE( load( "needy" ) );
             EXPECT_EQ( "base_1 startup\n", printed() );
             EXPECT_EQ( "<qv, base_1>", loaded() );

             // Without success no extension is loaded, and with the next one all are that have waited.
             EXPECT_FALSE( load( "unwilling extra" ) );
             EXPECT_EQ( "base_2 startup\nunwilling startup\n", printed() );
             EXPECT_EQ( "<qv, base_1, base_2>", loaded() );
             EXPECT_TRUE( qvRuntimeTryLoadModulesVector( Ref< QV_VECTOR >( qvVectorCreate() ) ) );
             EXPECT_EQ( "extra startup\n", printed() );

             // A failure is no obstacle to the next try.
             EXPECT_FALSE( load( "unwilling" ) );
             EXPECT_TRUE( load( "plug base_1 app" ) );
             EXPECT_EQ( "<qv, base_1, base_2, extra, plug, app, plug_plug>", loaded() );
         } );
}

TEST( RuntimeModule, RefusesFilesThatAreNoModuleOfTheProduct )
{
    const std::pair< std::string, std::string > CASES[] = {
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
                     EXPECT_FALSE( load( name ) ) << name;
                     EXPECT_EQ( flags ? opening( name ) + refused( reason ) : "", printed() );

                     // It was closed again.
                     std::string path = TEST_MODULES "libmorvane-" + name + ".so";
                     EXPECT_EQ( nullptr, dlopen( path.c_str(), RTLD_NOW | RTLD_NOLOAD ) ) << name;
                 }

                 EXPECT_EQ( "<qv>", loaded() );
             } );
}

TEST( RuntimeModule, TheLoaderSearchesWithoutAPath )
{
    // It finds what is there by its own name; in the folder of the run there is nothing.
    ASSERT_TRUE( dlopen( TEST_MODULES "libmorvane-base_1.so", RTLD_NOW ) );

    for( QV_INT flags : { 0, QV_RUNTIME_FLAG_IMPLICIT_MODULE_PATH, QV_RUNTIME_FLAG_MINIMAL } )
        run( 0,
             [&]
             {
                 qvRuntimeShutdown();
                 qvRuntimeStartup( flags, nullptr, nullptr, nullptr, nullptr );
                 EXPECT_EQ( flags == QV_RUNTIME_FLAG_IMPLICIT_MODULE_PATH, load( "base_1" ) );
             } );
}

TEST( RuntimeModule, BrokenContractsEndTheProcess )
{
    const Misuse CASES[] = {
        { [] { load( "ring_1" ); }, "!qvDictHasStringKey( qv___RuntimeLoadingDict, moduleName )" },
        { [] { load( "base_1  base_2" ); }, "qvModuleNameOk( moduleName )" },
        { [] { qvRuntimeTryLoadModulesVector( qvVectorCreateFromObj( qvSortObj( qvStringSort() ) ) ); },
          "qvVectorContainsOnly( moduleNames, qvStringSort() )" },
    };

    for( const Misuse &row : CASES )
        EXPECT_THAT( outputOf( 0, row.call ), HasSubstr( "Expression: " + row.expression + "\n" ) );
}

TEST( RuntimeModule, LoadsAndLooksFromManyThreads )
{
    const char *const NAMES[] = { "app", "plug", "base_2" };

    run( 0,
         [&]
         {
             std::atomic< int > loading = 3;
             onThreads(
                 5,
                 [&]( int number )
                 {
                     for( int i = 0; i < 20 && number < 3; i++ )
                         EXPECT_TRUE( load( NAMES[number] ) );

                     loading -= number < 3;

                     while( number == 3 && loading )
                         qvRuntimeUnloadAllModules();

                     while( number == 4 && loading )
                     {
                         std::string modules = loaded();
                         EXPECT_LE( modules.find( "base_2" ), modules.find( "app" ) ); // after what it needs
                         moduleNamed( "app" );
                     }
                 } );

             qvRuntimeUnloadAllModules();
             EXPECT_EQ( "<qv>", loaded() );
             EXPECT_LE( 6, timesPrinted( " startup\n" ) );

             for( const char *end : { " shutdownBegin\n", " shutdown\n", " shutdownEnd\n" } )
                 EXPECT_EQ( timesPrinted( " startup\n" ), timesPrinted( end ) ) << end;
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

// In steps of 50 milliseconds, and after more than 10 seconds with a report of what is left, in a run that wants reports.
TEST( RuntimeModule, AnUnloadWaitsForTheLastObjectAndReportsWhatIsLeft )
{
    const std::string OF_PLUG =
        DASHES
        + "\nQV_FIXTURE_THING 2\nQV_FIXTURE_ODD   1\n\nQV_FIXTURE_THING (1) a thing of plug_plug\n"
          "QV_FIXTURE_THING (2) a thing of plug_plug\n\twas retained\nQV_FIXTURE_ODD (1)\n";
    const std::string  OF_BASE = DASHES + "\nQV_FIXTURE_ODD 1\n\nQV_FIXTURE_ODD (1)\n";
    std::vector< int > reports; // the first waits after each

    run( ALL,
         [&]
         {
             load( "plug_plug" );
             auto ofPlug = objectsOf( "plug_plug", 2 ), ofBase = objectsOf( "base_1", 0 );
             qvObjRetain( ofPlug[1] );
             qv___ObjLogAppend( ofPlug[1], text( "was retained" ) );
             printed();

             int waits = unload(
                 [&, before = 0]( int number ) mutable
                 {
                     if( int now = timesPrinted( DASHES ); now > std::exchange( before, now ) )
                         reports.push_back( number );

                     if( number == 1 )
                     {
                         EXPECT_EQ( "<qv, base_1, plug_plug>", loaded() );
                     }
                     else if( number == 403 )
                     {
                         qvObjRelease( ofPlug[1] );
                         ofPlug.clear();
                     }
                     else if( number == 605 )
                     {
                         ofBase.clear();
                     }
                 } );
             EXPECT_EQ( 605, waits );
             EXPECT_EQ( "<qv>", loaded() );
         } );

    // Of the first report without the head, which is that of every report.
    size_t head = output.find( DASHES );
    output.erase( head, output.find( DASHES, head + 1 ) - head );

    EXPECT_THAT( reports, testing::ElementsAre( 202, 403, 605 ) );
    EXPECT_EQ(
        "plug_plug shutdownBegin\nbase_1 shutdownBegin\nplug_plug shutdown\n" + OF_PLUG + OF_PLUG
            + "plug_plug shutdownEnd\nbase_1 shutdown\n" + OF_BASE + "base_1 shutdownEnd\n",
        output );
}

namespace
{
// Keeps an object of a module for so many waits of its unload.
void keep( int waits )
{
    load( "plug_plug" );
    auto kept = objectsOf( "base_1", 0 );
    unload(
        [&]( int number )
        {
            fprintf( stderr, "%swait %i\n", printed().c_str(), number );

            if( number == waits )
                kept.clear();
        } );
}

// The standard input becomes a terminal, or is none.
void setInput( bool isTerminal )
{
    int master = isTerminal ? posix_openpt( O_RDWR | O_NOCTTY ) : -1;

    ASSERT_TRUE( !isTerminal || ( grantpt( master ) == 0 && unlockpt( master ) == 0 ) );

    dup2( open( isTerminal ? ptsname( master ) : "/dev/null", O_RDWR | O_NOCTTY ), STDIN_FILENO );
    ASSERT_EQ( isTerminal, isatty( STDIN_FILENO ) == 1 );
}
} // namespace

// Longer than a minute, in a run that wants no reports, or where nobody reads them.
TEST( RuntimeModule, AnObjectKeptTooLongEndsTheProcess )
{
    auto end = AllOf(
        HasSubstr( "base_1 shutdown\nwait 1\nwait 2\n" ), HasSubstr( "wait 1201\n" ),
        HasSubstr( "Message   : base_1\n" ), HasSubstr( "Expression: msecs <= QV___RUNTIME_UNLOAD_MODULE_TIMEOUT\n" ) );
    EXPECT_THAT( outputOf( DATABASE, [] { setInput( true ), keep( 1300 ); } ), end );
    EXPECT_THAT( outputOf( ALL, [] { setInput( false ), keep( 1300 ); } ), end );
    EXPECT_THAT(
        outputOf( ALL, [] { setInput( true ), keep( 1300 ); } ),
        AllOf( HasSubstr( "wait 1300\n" ), testing::EndsWith( "base_1 shutdownEnd\n" ) ) );
}

TEST( RuntimeModule, SnapshotsHoldTheObjectsOfAllModules )
{
    run( DATABASE,
         []
         {
             load( "plug_plug" );
             auto             things = objectsOf( "plug_plug", 2 ), other = objectsOf( "base_1", 0 );
             Ref< QV_MODULE > plug = moduleNamed( "plug_plug" );
             Ref< QV_VECTOR > objects( qvModuleSnapshotObjects( plug ) ), allObjects( qvRuntimeSnapshotObjects() ),
                 sorts( qvModuleSnapshotSorts( plug ) ), allSorts( qvRuntimeSnapshotSorts() );
             EXPECT_EQ( "<QV_FIXTURE_THING, QV_FIXTURE_ODD>", textOf( sorts.get() ) );
             EXPECT_EQ( 3, qvVectorLength( objects ) );

             // A Vector for each module, in their order.
             auto of = []( QV_VECTOR *all, QV_INT at )
             { return Ref< QV_VECTOR >( qvVectorFrom( qvVectorObjAt( all, at ) ) ); };
             EXPECT_EQ( "<qv, base_1, plug_plug>", loaded() );
             EXPECT_TRUE( qvVectorHasObj( of( allSorts, 0 ), qvSortObj( qvStringSort() ), QV_FALSE ) );
             EXPECT_EQ( "<QV_FIXTURE_ODD>", textOf( of( allSorts, 1 ).get() ) );
             EXPECT_TRUE( qvVectorHasObj( of( allObjects, 1 ), other[0], QV_FALSE ) );
             EXPECT_TRUE( qvVectorEquals( of( allObjects, 2 ), objects ) );
         } );

    run( 0,
         []
         {
             EXPECT_FALSE( qvModuleSnapshotSorts( qvModule() ) || qvModuleSnapshotObjects( qvModule() ) );
             EXPECT_FALSE( qvRuntimeSnapshotSorts() || qvRuntimeSnapshotObjects() );
         } );
}

/* What survives a run -------------------------------------------------------------------------------------------- */

namespace
{
// What each report begins with.
std::string header()
{
    return DASHES + "\nProduct   : morvane\nFriendly  : morvane\nVersion   : 4.0.19\nOS        : "
           + take( qvRuntimeOsFriendlyName( qvRuntimeOs() ) )
           + "\nHardware  : " + take( qvRuntimeHardwareFriendlyName( qvRuntimeHardware() ) )
           + "\nVariant   : " + take( qvRuntimeVariantFriendlyName( qvRuntimeVariant() ) )
           + "\nBuild Time: " + qv___RuntimeVersionProductBuildTimeCstr() + "\n" + DASHES + "\n";
}

void leakText()
{
    qvStringRetain( text( "lost" ) );
}
} // namespace

// Visible to the linker, for stacks to name it.
extern "C" __attribute__( ( noinline ) ) void testLeakTextAndStore()
{
    QV_VECTOR      *vec = qvVectorCreate();
    Ref< QV_STORE > store( qvStoreCreate() );

    leakText();
    qvVectorAppendObj( &vec, qvStoreObj( store ) );
}

TEST( RuntimeSnapshot, SurvivorsAreReportedWithTheirTextAndOrigin )
{
    std::string printed = outputOf( ALL | QV_RUNTIME_FLAG_OBJECT_ORIGIN, testLeakTextAndStore );
    size_t      log     = printed.find( "\n\t" ) + 1;

    // The Store holds the empty Dict, which so survives too. It is the only one here whose creation is recorded: not
    // that of what recording creates.
    EXPECT_EQ(
        header()
            + "QV_STRING 1\nQV_VECTOR 1\nQV_DICT   1\nQV_STORE  1\n\nQV_STRING (1) lost\nQV_VECTOR (1) <QV_STORE(0)>\n"
              "QV_DICT (3) {}\nQV_STORE (1)\n",
        printed.substr( 0, log ) );
    EXPECT_THAT(
        printed.substr( log ), AllOf(
                                   testing::ContainsRegex( "\\(qvStoreCreate\\+.*\n.*\\(testLeakTextAndStore\\+" ),
                                   testing::Not( HasSubstr( "\n\t\n\t" ) ), testing::EndsWith( "\n\t\n" ) ) );
}

TEST( RuntimeSnapshot, ReportsHoldWhatTheFlagsAskFor )
{
    EXPECT_EQ( header() + "QV_STRING 1\n", outputOf( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT, leakText ) );
    EXPECT_EQ( header() + "QV_STRING (1)\n", outputOf( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT, leakText ) );
    EXPECT_EQ( header() + "QV_STRING (1) lost\n", outputOf( TEXTS, leakText ) );

    // Not asked, without lists, and with nothing to tell.
    EXPECT_EQ( "", outputOf( DATABASE, leakText ) );
    EXPECT_EQ( "", outputOf( QV_RUNTIME_FLAG_SNAPSHOT_SORT, leakText ) );
    EXPECT_EQ( "", outputOf( ALL, [] { text( "used" ); } ) );

    // The report is about the library's own sorts.
    static QV_SORT foreign = QV___STATIC_SORT( nullptr, "QV_FOREIGN", nullptr, nullptr, nullptr, nullptr, nullptr );
    EXPECT_EQ( "", outputOf( ALL, [] { qv___ObjCreate( sizeof( QV_OBJ ), &foreign ); } ) );

    // The library runs on after a report, in which what has survived a run stays.
    auto runTwice = []
    {
        leakText();
        qvRuntimeShutdown();
        start( TEXTS );
        leakText();
    };
    EXPECT_EQ(
        header() + "QV_STRING 1\n" + header() + "QV_STRING (1) lost\nQV_STRING (1) lost\n",
        outputOf( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT, runTwice ) );
}
