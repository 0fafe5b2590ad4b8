/* What is told of objects that live. Each test has runs of the library of its own. */

#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/qv.h"
#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_obj_private.h"

using namespace qv::test;
using qv::Ref;

namespace
{
const QV_INT DATABASE = QV_RUNTIME_FLAG_OBJECT_DATABASE;

std::string lines;

void keepLine( const QV_CHAR *chs, QV_INT length )
{
    lines += std::string( chs, chs + length ) + "\n";
}

void start( QV_INT flags )
{
    setenv( "XZ_MORVANE_BIN_PATH", TEST_MODULES, 1 );
    qvRuntimeStartup( flags, keepLine, nullptr, nullptr, nullptr );
    unsetenv( "XZ_MORVANE_BIN_PATH" );
}

template< class Body >
void inRun( QV_INT flags, Body body )
{
    withoutLibrary(
        [&]
        {
            start( flags );
            body();
            qvRuntimeShutdown();
        } );
}

void addRow( QV_SORT *sort, const char *name, QV_INT objects, void *rows )
{
    EXPECT_STREQ( name, sort->name );
    *static_cast< std::string * >( rows ) += std::string( name ) + " " + std::to_string( objects ) + "\n";
}

// All leaks, as they are visited and counted.
std::string leaks()
{
    std::string rows;
    qvRuntimeLeakVisit( addRow, &rows );
    EXPECT_EQ( rows.empty(), qvRuntimeLeakCount() == 0 );

    return rows;
}

std::string report()
{
    return take( qvRuntimeLeakReport() );
}

bool load( const char *names )
{
    return qvRuntimeTryLoadModulesCstr( names, -1 );
}
} // namespace

TEST( RuntimeLeaks, AreCountedWithAllFlagsAndWithoutWhatTheLibraryHolds )
{
    for( QV_INT flags : std::initializer_list< QV_INT >{
             QV_RUNTIME_FLAG_MINIMAL, 0, QV_RUNTIME_FLAG_MEMORY_DEBUG, DATABASE,
             DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT } )
        inRun(
            flags,
            [flags]
            {
                EXPECT_EQ( "", leaks() );
                EXPECT_EQ( "", report() );

                // What uses the library leaves nothing behind.
                {
                    Ref< QV_TIMER > timer( qvTimerCreate( []( QV_OBJ * ) {}, nullptr ) );
                    Ref< QV_STORE > info( qvRuntimeInfo() );
                    onThreads( 2, []( int ) { Ref< QV_STRING > own( qvStringCreateFromCstr( "own", -1 ) ); } );
                    qvPrintFormatCstr( "%i", -1, qvRandomInt() );
                    EXPECT_LT( 2, qvRuntimeLeakCount() );
                }
                EXPECT_EQ( "", leaks() );

                // Two are of one value, but not one.
                Ref< QV_STRING >    one( text( "lost" ) ), two( text( "lost" ) );
                Ref< QV_BOXED_INT > three( qvBoxedIntCreate( 7 ) );
                qvStringRetain( two );
                EXPECT_EQ( 3, qvRuntimeLeakCount() );
                EXPECT_EQ( "QV_BOXED_INT 1\nQV_STRING 2\n", leaks() );

                const std::string OBJECTS = "\nQV_BOXED_INT (1) 7\nQV_STRING (1) lost\nQV_STRING (2) lost\n";
                const std::string ALL =
                    "QV_BOXED_INT 1\nQV_STRING    2\n" + ( flags & DATABASE ? OBJECTS : std::string() );
                EXPECT_EQ( ALL, report() );
                EXPECT_EQ( ALL, report() ); // and a report nothing either

                lines.clear();
                qvRuntimeLeakPrint();
                EXPECT_EQ( ALL, lines );
                qvStringRelease( two );
            } );
}

// The tables of modules are replaced while a caller holds one of them, and hold a name for each module.
TEST( RuntimeLeaks, ModulesAreNone )
{
    for( QV_INT flags : { QV_INT( 0 ), DATABASE } )
        inRun(
            flags,
            [flags]
            {
                {
                    Ref< QV_VECTOR > before( qvRuntimeModulesVector() );
                    EXPECT_EQ( "", leaks() );
                    ASSERT_TRUE( load( "app" ) );
                    EXPECT_EQ( "QV_VECTOR 1\n", leaks() );
                    EXPECT_EQ( "QV_VECTOR 1\n" + std::string( flags ? "\nQV_VECTOR (1) <qv>\n" : "" ), report() );
                }
                EXPECT_EQ( "", leaks() );

                // Objects of one module.
                Ref< QV_STRING > name( text( "base_1" ) );
                Ref< QV_MODULE > module( qvRuntimeModule( name ) );
                name.reset();
                QV_OBJ *owned[1];
                qvModuleRunPersonality( module, reinterpret_cast< intptr_t >( owned ), 0 );
                Ref< QV_OBJ >    odd( owned[0] );
                Ref< QV_STRING > other( text( "of the library" ) );
                std::string      rows;
                qv___ModuleLeakVisit( module, addRow, &rows );
                EXPECT_EQ( "QV_FIXTURE_ODD 1\n", rows );
                EXPECT_EQ( "QV_FIXTURE_ODD 1\nQV_STRING 1\n", leaks() );
                odd.reset();
                other.reset();

                for( int round = 0; round < 2; round++ )
                {
                    qvRuntimeUnloadAllModules();
                    EXPECT_EQ( "", leaks() );
                    EXPECT_TRUE( load( "plug_plug" ) );
                }
                EXPECT_EQ( "", leaks() );
            } );
}

TEST( RuntimeLeaks, OutliveTheirRunAndCountInTheNext )
{
    withoutLibrary(
        []
        {
            start( DATABASE | QV_RUNTIME_FLAG_OBJECT_ORIGIN );
            QV_STRING *lost = qvStringCreateFromCstr( "lost", -1 );
            qvRuntimeShutdown();
            EXPECT_EQ( "QV_STRING 1\n", leaks() );

            start( 0 );
            {
                EXPECT_EQ( "QV_STRING 1\n", leaks() );
                Ref< QV_STRING > other( text( "other" ) );
                qvStringRelease( lost );
                EXPECT_EQ( "QV_STRING 1\n", leaks() );
            }
            qvRuntimeShutdown();
            EXPECT_EQ( "", leaks() );
        } );

    // With the stack of its creation, and a text that is cut.
    inRun(
        DATABASE | QV_RUNTIME_FLAG_OBJECT_ORIGIN,
        []
        {
            Ref< QV_BOXED_INT > number( qvBoxedIntCreate( 1 ) );
            Ref< QV_STRING >    longText( text( std::string( 300, 'x' ) ) );
            EXPECT_THAT(
                report(),
                testing::AllOf(
                    testing::HasSubstr( "\nQV_BOXED_INT (1) 1\n\t" ), testing::HasSubstr( "(qvBoxedIntCreate+" ),
                    testing::EndsWith( "QV_STRING (1) " + std::string( 200, 'x' ) + " ...\n" ) ) );
        } );
}
