#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/base/qv_store.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_private.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT ALL = QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_OBJECT_ORIGIN | QV_RUNTIME_FLAG_SNAPSHOT_SORT
                   | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING
                   | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG;

void printOnErrorStream( const QV_CHAR *chs, QV_INT length )
{
    for( QV_INT i = 0; i < length; i++ )
        fputc( static_cast< int >( chs[i] ), stderr );

    fputc( '\n', stderr );
}

void start( QV_INT flags )
{
    qvRuntimeStartup( flags, printOnErrorStream, "leaky", nullptr, nullptr );
}

using Lines = std::vector< std::string >;

// The lines that runs of the library print.
Lines printed( const std::function< void() > &runs )
{
    Ending ending = inOwnRun(
        [&]
        {
            qvRuntimeShutdown();
            runs();
        } );
    EXPECT_EQ( 0, ending.status ) << ending.errors;

    std::istringstream stream( ending.errors );
    Lines              lines;

    for( std::string line; std::getline( stream, line ); )
        lines.push_back( line );

    return lines;
}

Lines printedByRun( QV_INT flags, const std::function< void() > &body )
{
    return printed(
        [&]
        {
            start( flags );
            body();
            qvRuntimeShutdown();
        } );
}

const std::string DASHES( 90, '-' );

// What each report begins with.
Lines header()
{
    return {
        DASHES,
        "Product   : morvane",
        "Friendly  : morvane",
        "Version   : 4.0.19",
        "OS        : " + take( qvRuntimeOsFriendlyName( qvRuntimeOs() ) ),
        "Hardware  : " + take( qvRuntimeHardwareFriendlyName( qvRuntimeHardware() ) ),
        "Variant   : " + take( qvRuntimeVariantFriendlyName( qvRuntimeVariant() ) ),
        std::string( "Build Time: " ) + qv___RuntimeVersionProductBuildTimeCstr(),
        DASHES };
}

Lines operator+( Lines a, const Lines &b )
{
    a.insert( a.end(), b.begin(), b.end() );
    return a;
}

void leakText( std::string_view utf8 )
{
    qvStringRetain( text( utf8 ) );
}
} // namespace

// Visible to the linker, for stacks to name it. Leaks a String with two references, and a Vector with a Store.
extern "C" __attribute__( ( noinline ) ) void testLeakTextAndStore()
{
    QV_STRING      *string = text( "lost text" ).give();
    QV_VECTOR      *vec    = qvVectorCreate();
    Ref< QV_STORE > store( qvStoreCreate() );

    qvStringRetain( string );
    qvVectorAppendObj( &vec, qvStoreObj( store ) );
}

TEST( RuntimeSnapshot, SurvivorsAreReportedWithTheirTextAndOrigin )
{
    Lines lines = printedByRun( ALL, testLeakTextAndStore );
    auto  log   = std::find_if( lines.begin(), lines.end(), []( auto &line ) { return line.starts_with( "\t" ); } );

    // The Store holds the empty Dict, which so survives too. It is the only one here whose creation is recorded.
    Lines told = header()
                 + Lines{
                     "QV_STRING 1",
                     "QV_VECTOR 1",
                     "QV_DICT   1",
                     "QV_STORE  1",
                     "",
                     "QV_STRING (2) lost text",
                     "QV_VECTOR (1) <QV_STORE(0)>",
                     "QV_DICT (3) {}",
                     "QV_STORE (1)" };
    EXPECT_EQ( told, Lines( lines.begin(), log ) );
    EXPECT_THAT( Lines( log, lines.end() ), testing::Each( testing::StartsWith( "\t" ) ) );
    EXPECT_EQ( "\t", lines.back() );

    auto call =
        std::find_if( log, lines.end(), []( auto &line ) { return line.find( "(qvStoreCreate+" ) != line.npos; } );
    ASSERT_LT( 2, lines.end() - call );
    EXPECT_THAT( call[1], testing::HasSubstr( "(testLeakTextAndStore+" ) );
}

TEST( RuntimeSnapshot, ReportsHoldWhatTheFlagsAskFor )
{
    const QV_INT DATABASE = QV_RUNTIME_FLAG_OBJECT_DATABASE;
    auto         leak     = [] { leakText( "lost" ); };

    EXPECT_EQ( header() + Lines{ "QV_STRING 1" }, printedByRun( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT, leak ) );
    EXPECT_EQ( header() + Lines{ "QV_STRING (1)" }, printedByRun( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT, leak ) );
    EXPECT_EQ(
        header() + Lines{ "QV_STRING (1) lost" },
        printedByRun( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING, leak ) );

    // Not asked, without lists, and with nothing to tell.
    EXPECT_EQ( Lines{}, printedByRun( DATABASE, leak ) );
    EXPECT_EQ( Lines{}, printedByRun( QV_RUNTIME_FLAG_SNAPSHOT_SORT, leak ) );
    EXPECT_EQ( Lines{}, printedByRun( ALL, [] { text( "used" ); } ) );

    // The report is about the library's own sorts.
    static QV_SORT foreign = QV___STATIC_SORT( nullptr, "QV_FOREIGN", nullptr, nullptr, nullptr, nullptr, nullptr );
    EXPECT_EQ( Lines{}, printedByRun( ALL, [] { qv___ObjCreate( sizeof( QV_OBJ ), &foreign ); } ) );
}

TEST( RuntimeSnapshot, TheLibraryRunsOnAfterAReport )
{
    const QV_INT FLAGS = QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT;

    Lines lines = printed(
        [&]
        {
            start( FLAGS );
            leakText( "lost" );
            qvRuntimeShutdown();

            start( 0 );
            EXPECT_EQ( "kept", utf8( text( "kept" ) ) );
            qvRuntimeShutdown();

            start( FLAGS );
            EXPECT_EQ( FLAGS, qvRuntimeFlags() );
            leakText( "lost too" );
            qvStoreCreate();
            qvRuntimeShutdown();
        } );

    // What has survived a run is still there after the next ones.
    Lines second = { "QV_STRING 2", "QV_DICT   1", "QV_STORE  1" };
    EXPECT_EQ( header() + Lines{ "QV_STRING 1" } + header() + second, lines );
}
