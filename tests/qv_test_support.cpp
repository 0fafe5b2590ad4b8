#include "qv_test_support.h"

#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_chars.h"

#include <clocale>
#include <cstdlib>
#include <filesystem>

#include <unistd.h>

namespace
{
std::string    scratchFolder;
std::u32string printed;
bool           libraryRuns   = false;
QV_INT         objectsBefore = 0; // the running suite

void keepPrinted( const QV_CHAR *chs, QV_INT length )
{
    printed.append( chs, static_cast< size_t >( length ) );
}

void stop()
{
    qvRuntimeShutdown();
    libraryRuns = false;
    EXPECT_EQ( 0, qv___ModuleObjects( &qv___module ) ) << "objects have outlived the library";
}

// Starts the library once for the binary. No suite leaves more live objects than it found.
class Library : public testing::EmptyTestEventListener
{
    void OnEnvironmentsSetUpStart( const testing::UnitTest & ) override
    {
        qv::test::startLibrary();
    }

    void OnEnvironmentsTearDownStart( const testing::UnitTest & ) override
    {
        // Nor does the library count as its own what it no longer has, which would hide as many leaks.
        qv::test::settle();

        for( QV_SORT *sort = qv___module.sortsFirst; sort; sort = sort->sortsNext )
            EXPECT_EQ( sort->own, qvSortObjects( sort ) ) << sort->name;

        stop();
    }

    void OnTestSuiteStart( const testing::TestSuite & ) override
    {
        objectsBefore = qv::test::liveObjects();
    }

    void OnTestSuiteEnd( const testing::TestSuite &suite ) override
    {
        // Other threads may be about to release what they have worked with.
        for( int tries = 0; tries < 1000 && objectsBefore < qv::test::liveObjects(); tries++ )
            usleep( 1000 );

        EXPECT_GE( objectsBefore, qv::test::liveObjects() ) << "suite " << suite.name() << " leaks objects";
    }
};
} // namespace

std::u32string qv::test::chars( QV_STRING *qvs )
{
    return std::u32string( qvStringBacking( qvs ), static_cast< size_t >( qvStringLength( qvs ) ) );
}

std::string qv::test::utf8( QV_STRING *qvs )
{
    std::string result( static_cast< size_t >( 4 * qvStringLength( qvs ) ), '\0' );
    result.resize( static_cast< size_t >( qvCharsConvertToUtf8(
        result.data(), static_cast< QV_INT >( result.size() ), qvStringBacking( qvs ), qvStringLength( qvs ),
        QV_FALSE ) ) );

    return result;
}

std::string qv::test::take( QV_STRING *owned )
{
    return utf8( Ref< QV_STRING >( owned ) );
}

std::string qv::test::textOf( QV_OBJ *object )
{
    return take( qvObjToString( object ) );
}

QV_INT qv::test::liveObjects()
{
    QV_INT count = 0;

    for( QV_SORT *sort = qv___module.sortsFirst; sort; sort = sort->sortsNext )
        count += qvSortObjects( sort );

    return count;
}

void qv::test::startLibrary()
{
    libraryRuns = true;
    qvRuntimeStartup( QV_RUNTIME_FLAG_OBJECT_DATABASE, keepPrinted, nullptr, nullptr, nullptr );
}

void qv::test::settle()
{
    ptrdiff_t expected = libraryRuns ? 2 : 1;
#ifdef __SANITIZE_THREAD__ // which starts a thread of its own with the first one
    expected++;
#endif
#ifdef QV_TEST_EMULATED // by a process with a thread of its own
    expected++;
#endif

    auto threads = []
    {
        std::filesystem::directory_iterator tasks( "/proc/self/task" );
        return std::distance( begin( tasks ), end( tasks ) );
    };

    // A test with threads of its own is not kept for long.
    for( int round = 0; round < 2000 && threads() > expected; round++ )
        usleep( 1000 );
}

void qv::test::withoutLibrary( const std::function< void() > &body )
{
    stop();
    body();
    startLibrary();
    objectsBefore = liveObjects(); // what a run makes when it is first needed is gone
}

const std::string &qv::test::scratch()
{
    return scratchFolder;
}

void qv::test::expectReports( const std::vector< Misuse > &rows )
{
    for( const Misuse &row : rows )
        EXPECT_BROKEN( row.call(), row.expression );
}

testing::Matcher< const std::string & > qv::test::reportOf( const std::string &expression, const std::string &message )
{
    return testing::AllOf(
        testing::HasSubstr( message.empty() ? message : "    Message   : " + message + "\n" ),
        testing::HasSubstr( "    Expression: " + expression + "\n" ) );
}

std::u32string qv::test::takePrinted()
{
    return std::exchange( printed, {} );
}

int main( int argc, char **argv )
{
    if( qvTestRunInstead && qvTestRunInstead() )
        return 0;

    std::string pattern = ( std::filesystem::temp_directory_path() / "qv-test-XXXXXX" ).string();

    if( !mkdtemp( pattern.data() ) )
        return 1;

    // Every path of the library lies in the scratch folder.
    scratchFolder        = pattern + "/";
    const char *dataPath = getenv( "QV_TEST_DATA_PATH" );
    setenv( "XZ_MORVANE_DATA_PATH", dataPath ? dataPath : ( scratchFolder + "data" ).c_str(), 1 );

    // Whatever locale the surroundings ask for, the library must not notice.
    setlocale( LC_ALL, "" );

    testing::InitGoogleTest( &argc, argv );
    GTEST_FLAG_SET( death_test_style, "fast" );
    testing::UnitTest::GetInstance()->listeners().Append( new Library );

    int result = RUN_ALL_TESTS();
    std::filesystem::remove_all( pattern );

    return result;
}
