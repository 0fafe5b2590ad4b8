#include "bench.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

namespace bench
{
bool comparing;

namespace
{
std::vector< Case > cases;
double              seconds; // of the parts that count, of the work that runs
double              peak;    // MiB, of the work that runs; 0 where nobody looks
std::string         shown;   // of the answer that is compared
std::string         folder;  // empty until somebody needs it

std::string answerOf( const Work &work )
{
    shown.clear();
    work();
    return shown;
}

// Compares the answers of all sides; a loose peer that gives another one is taken out.
bool compare( Case &of )
{
    std::string right = answerOf( of.ours );
    bool        same  = true;

    std::erase_if(
        of.peers,
        [&]( const Peer &peer )
        {
            std::string given = answerOf( peer.work );

            if( given == right )
                return false;

            std::fprintf(
                stderr, "%s: %s, %s, %s: %s\n", peer.isLoose ? "left out" : "not the same answer", of.subject.c_str(),
                of.operation.c_str(), of.input.c_str(), peer.library.c_str() );
            same = same && peer.isLoose;
            return peer.isLoose;
        } );

    return same;
}

// The C library sorts the small blocks that were freed when a large one is asked for, some thousands each time. What one
// row has freed is sorted here, so that the next one does not pay for it.
void sortHeap()
{
    for( int i = 0; i < 500; i++ )
    {
        void *volatile block = std::malloc( 1 << 20 );
        std::free( block );
    }
}

void enter( const Case &of, const std::string &side, const Work &work, bool isTimed )
{
    char target[16];
    std::snprintf( target, sizeof( target ), "%g", of.target );

    auto *entered = benchmark::RegisterBenchmark(
        ( of.subject + "|" + of.operation + "|" + of.input + "|" + target + "|" + side ).c_str(),
        [work, isTimed]( benchmark::State &state )
        {
            sortHeap();

            for( auto _ : state )
            {
                seconds = 0;
                peak    = 0;
                work();

                if( isTimed )
                    state.SetIterationTime( seconds );
            }

            if( peak > 0 )
                state.counters["peak"] = peak;
        } );

    if( isTimed )
        entered->UseManualTime();
    else
        entered->UseRealTime();
}
} // namespace

void add( Case added )
{
    cases.push_back( std::move( added ) );
}

Peer lockedAdditions( size_t count )
{
    return {
        "locked additions", [count]
        {
            static std::atomic< int > counter;

            for( size_t i = 0; i < count; i++ )
                counter.fetch_add( 1 );
        } };
}

Peer retainsAndReleases( size_t count )
{
    return {
        "retain and release", [count]
        {
            static QV_STRING *text = string( U"text" );

            for( size_t i = 0; i < count; i++ )
            {
                qvStringRetain( text );
                qvStringRelease( text );
            }
        } };
}

Peer exportedCalls( size_t count )
{
    return {
        "exported calls", [count]
        {
            static QV_STRING *text = qvStringCreate();

            for( size_t i = 0; i < count; i++ )
                show( uint64_t( qvStringLength( text ) ) );
        } };
}

Peer allocations( size_t count, size_t size )
{
    return {
        "malloc and free", [count, size]
        {
            for( size_t i = 0; i < count; i++ )
            {
                void *block = std::malloc( size );
                asm volatile( "" : : "r"( block ) : "memory" );
                std::free( block );
            }
        } };
}

Peer memoryCopy( size_t size )
{
    return {
        "memory copy", [source = std::make_shared< std::string >( size, 'x' )]
        {
            void *copy = std::malloc( source->size() );
            std::memcpy( copy, source->data(), source->size() );
            asm volatile( "" : : "r"( copy ) : "memory" );
            std::free( copy );
        } };
}

void answer( std::string_view utf8 )
{
    shown += utf8;
}

void notePeak( double mebibytes )
{
    peak = mebibytes;
}

bool isQuick()
{
    return std::getenv( "BENCH_QUICK" ) != nullptr;
}

const std::string &temporaryFolder()
{
    if( folder.empty() )
    {
        folder = std::filesystem::temp_directory_path() / "qv-bench-XXXXXX";

        if( !mkdtemp( folder.data() ) )
            std::exit( ( std::perror( folder.c_str() ), 1 ) );
    }

    return folder;
}

void timed( const std::function< void() > &part )
{
    auto start = std::chrono::steady_clock::now();
    part();
    seconds += std::chrono::duration< double >( std::chrono::steady_clock::now() - start ).count();
}

void timedElsewhere( double elapsed )
{
    seconds += elapsed;
}
} // namespace bench

int main( int argc, char **argv )
{
    using namespace bench;

    qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );

    // While a process has one thread, the C library and the C++ library leave locked instructions out. Programs of the
    // product have more: the first timer starts a thread that stays.
    qvTimerCreate( []( QV_OBJ * ) {}, nullptr );

    if( argc == 4 && std::string( argv[1] ) == "--memory" )
    {
        printMemory( argv[2], std::stoul( argv[3] ) );
        std::fflush( stdout );
        std::_Exit( 0 );
    }

    addObjectCases();
    addStringCases();
    addTextCases();
    addUtfCases();
    addCharsetCases();
    addDictCases();
    addContainerCases();
    addOrderCases();
    addNormalizeCases();
    addNumberCases();
    addDocumentCases();
    addFileCases();
    addConcurrencyCases();
    addTimerCases();
    addProcessCases();
    addConvertCases();

    // The first argument picks cases by a part of their names.
    std::string pick = argc > 1 && argv[1][0] != '-' ? argv[1] : "";
    bool        same = true;

    std::erase_if(
        cases, [&]( const Case &each )
        { return ( each.subject + "|" + each.operation + "|" + each.input ).find( pick ) == std::string::npos; } );
    comparing = true;

    for( Case &each : cases )
        same = compare( each ) && same;

    comparing = false;

    for( const Case &each : cases )
    {
        enter( each, "ours", each.ours, each.isTimed );

        for( const Peer &peer : each.peers )
            enter( each, peer.library, peer.work, each.isTimed );

        if( each.bound.work )
            enter( each, "bound: " + each.bound.library, each.bound.work, false );
    }

    if( same )
    {
        benchmark::Initialize( &argc, argv );
        benchmark::RunSpecifiedBenchmarks();
        std::fflush( stdout );
    }

    if( !folder.empty() )
        std::filesystem::remove_all( folder );

    std::_Exit( same ? 0 : 1 ); // what the cases hold goes with the process
}
