#include "qv_test_support.h"

#include "qv/base/qv_timer.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/sys/qv_chars.h"

#include <clocale>
#include <cstdlib>
#include <chrono>
#include <filesystem>
#include <thread>

#include <unistd.h>

namespace
{
std::string    scratchFolder;
std::u32string printed;
bool           libraryRuns = false;

// The process without the library; ThreadSanitizer starts a thread of its own with the first one.
#ifdef __SANITIZE_THREAD__
const ptrdiff_t OWN_THREADS = 2;
#else
const ptrdiff_t OWN_THREADS = 1;
#endif

ptrdiff_t threadCount()
{
    std::filesystem::directory_iterator tasks( "/proc/self/task" );
    return std::distance( begin( tasks ), end( tasks ) );
}
QV_INT objectsBefore = 0; // the running suite

void keepPrinted( const QV_CHAR *chs, QV_INT length )
{
    printed.append( chs, static_cast< size_t >( length ) );
}

void stop()
{
    qvRuntimeShutdown();
    libraryRuns = false;
    EXPECT_EQ( 0, qv___AtomicLoad32( &qv___module.sorts ) ) << "objects have outlived the library";
}

// Starts the library once for the binary, with lists of all live objects and every path in the scratch folder.
class Library : public testing::Environment
{
public:
    void SetUp() override
    {
        qv::test::startLibrary();

        // The timer thread and the description of the processors come at first need and stay. They are no leaks.
        qvTimerRelease( qvTimerCreate( []( QV_OBJ * ) {}, nullptr ) );
        qv::release( qvRuntimeCpuInfo() );
    }

    void TearDown() override
    {
        stop();
    }
};

// No suite leaves more live objects than it found.
class NoLeaks : public testing::EmptyTestEventListener
{
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
    const QV_CHAR *backing = qvStringBacking( qvs );
    QV_INT         length  = qvStringLength( qvs );
    std::string result( static_cast< size_t >( qvCharsConvertToUtf8( nullptr, 0, backing, length, QV_FALSE ) ), '\0' );
    qvCharsConvertToUtf8( result.data(), static_cast< QV_INT >( result.size() ), backing, length, QV_FALSE );

    return result;
}

std::string qv::test::take( QV_STRING *owned )
{
    Ref< QV_STRING > qvs( owned );
    return utf8( qvs );
}

std::string qv::test::textOf( QV_OBJ *object )
{
    return take( qvObjToString( object ) );
}

QV_INT qv::test::liveObjects()
{
    QV_INT count = 0;

    for( QV_SORT *sort = qv___module.sortsFirst; sort; sort = sort->sortsNext )
        count += qv___AtomicLoad32( &sort->objects );

    return count;
}

void qv::test::startLibrary()
{
    libraryRuns = true;
    qvRuntimeStartup( QV_RUNTIME_FLAG_OBJECT_DATABASE, keepPrinted, nullptr, nullptr, nullptr );
}

void qv::test::settle()
{
    const ptrdiff_t expected = OWN_THREADS + ( libraryRuns ? 1 : 0 );

    // A test with threads of its own is not kept for long.
    for( int round = 0; round < 2000; round++ )
    {
        if( threadCount() <= expected )
            return;

        std::this_thread::sleep_for( std::chrono::milliseconds( 1 ) );
    }
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

std::u32string qv::test::takePrinted()
{
    return std::exchange( printed, {} );
}

int main( int argc, char **argv )
{
    std::string pattern = ( std::filesystem::temp_directory_path() / "qv-test-XXXXXX" ).string();

    if( !mkdtemp( pattern.data() ) )
        return 1;

    scratchFolder        = pattern + "/";
    const char *dataPath = getenv( "QV_TEST_DATA_PATH" );
    setenv( "XZ_MORVANE_DATA_PATH", dataPath ? dataPath : ( scratchFolder + "data" ).c_str(), 1 );

    // Whatever locale the surroundings ask for, the library must not notice.
    setlocale( LC_ALL, "" );

    testing::InitGoogleTest( &argc, argv );
    GTEST_FLAG_SET( death_test_style, "fast" );
    testing::AddGlobalTestEnvironment( new Library );
    testing::UnitTest::GetInstance()->listeners().Append( new NoLeaks );

    int result = RUN_ALL_TESTS();
    std::filesystem::remove_all( pattern );

    return result;
}
