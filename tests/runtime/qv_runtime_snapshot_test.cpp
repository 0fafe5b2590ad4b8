#include "qv_test_child.h"

#include "qv/base/qv_store.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_runtime_private.h"

using qv::Ref;
using namespace qv::test;
using testing::AllOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace
{
const QV_INT ALL = QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_OBJECT_ORIGIN | QV_RUNTIME_FLAG_SNAPSHOT_SORT
                   | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING
                   | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG;
const QV_INT DATABASE = QV_RUNTIME_FLAG_OBJECT_DATABASE;

void start( QV_INT flags )
{
    auto printOnErrorStream = []( const QV_CHAR *chs, QV_INT length )
    { fprintf( stderr, "%s\n", std::string( chs, chs + length ).c_str() ); };
    qvRuntimeStartup( flags, printOnErrorStream, "leaky", nullptr, nullptr );
}

// What a run of the library prints.
std::string printedBy( QV_INT flags, void ( *body )() )
{
    Ending ending = inOwnRun(
        [&]
        {
            qvRuntimeShutdown();
            start( flags );
            body();
            qvRuntimeShutdown();
        } );
    EXPECT_EQ( 0, ending.status ) << ending.errors;
    return ending.errors;
}

// What each report begins with.
std::string header()
{
    const std::string DASHES( 90, '-' );
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
    std::string printed = printedBy( ALL, testLeakTextAndStore );
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
                                   ContainsRegex( "\\(qvStoreCreate\\+.*\n.*\\(testLeakTextAndStore\\+" ),
                                   Not( HasSubstr( "\n\t\n\t" ) ), EndsWith( "\n\t\n" ) ) );
}

TEST( RuntimeSnapshot, ReportsHoldWhatTheFlagsAskFor )
{
    const QV_INT OBJECTS = DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT;

    EXPECT_EQ( header() + "QV_STRING 1\n", printedBy( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT, leakText ) );
    EXPECT_EQ( header() + "QV_STRING (1)\n", printedBy( OBJECTS, leakText ) );
    EXPECT_EQ(
        header() + "QV_STRING (1) lost\n", printedBy( OBJECTS | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING, leakText ) );

    // Not asked, without lists, and with nothing to tell.
    EXPECT_EQ( "", printedBy( DATABASE, leakText ) );
    EXPECT_EQ( "", printedBy( QV_RUNTIME_FLAG_SNAPSHOT_SORT, leakText ) );
    EXPECT_EQ( "", printedBy( ALL, [] { text( "used" ); } ) );

    // The report is about the library's own sorts.
    static QV_SORT foreign = QV___STATIC_SORT( nullptr, "QV_FOREIGN", nullptr, nullptr, nullptr, nullptr, nullptr );
    EXPECT_EQ( "", printedBy( ALL, [] { qv___ObjCreate( sizeof( QV_OBJ ), &foreign ); } ) );
}

TEST( RuntimeSnapshot, TheLibraryRunsOnAfterAReport )
{
    auto runThrice = []
    {
        leakText();
        qvRuntimeShutdown();
        start( 0 );
        EXPECT_EQ( "kept", utf8( text( "kept" ) ) );
        qvRuntimeShutdown();
        start( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT );
        leakText();
        qvStoreCreate();
    };

    // What has survived a run is still there after the next ones.
    EXPECT_EQ(
        header() + "QV_STRING 1\n" + header() + "QV_STRING 2\nQV_DICT   1\nQV_STORE  1\n",
        printedBy( DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT, runThrice ) );
}
