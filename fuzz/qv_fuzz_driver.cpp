// Runs a fuzz target without libFuzzer: the files of a folder, and then a fixed number of inputs from a fixed seed; or a
// single file.
//
// All runs in a child process. When it fails the input is made as short as can be, by dropping operations of a walk or
// bytes, and trying again in further children, and is then run once more with its operations printed.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <error.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" int  LLVMFuzzerTestOneInput( const uint8_t *data, size_t size );
extern "C" void qvFuzzStep( size_t offset );

namespace
{
// No threads meet in a target, and ThreadSanitizer makes all slow.
#ifdef __SANITIZE_THREAD__
const int ROUNDS = 100;
#else
const int ROUNDS = 2000;
#endif

const unsigned SECONDS = 60; // an input that takes longer hangs, and one that fails is made shorter for so long

// What the child is about to run, as the parent sees it.
struct Shared
{
    size_t  size;
    bool    done;
    size_t  steps, offsets[1 << 10]; // where the operations of a walk begin
    uint8_t data[1 << 20];
};

Shared *shared;

void runOne( const std::string &input )
{
    shared->steps = 0;
    shared->size  = std::min( input.size(), sizeof( shared->data ) );
    memcpy( shared->data, input.data(), shared->size );

    // What lies after the input is not its own.
    std::vector< uint8_t > exact( shared->data, shared->data + shared->size );
    alarm( SECONDS );
    LLVMFuzzerTestOneInput( exact.data(), exact.size() );
}

std::string contents( const std::filesystem::path &file )
{
    std::ifstream stream( file, std::ios::binary );

    if( !stream )
        error( 2, errno, "%s", file.c_str() );

    return { std::istreambuf_iterator< char >( stream ), {} };
}

std::string randomInput( std::mt19937 &random )
{
    std::string input( random() % ( random() % 16 ? 160 : 1000 ), 0 );
    std::generate( input.begin(), input.end(), [&] { return static_cast< char >( random() ); } );
    return input;
}

void runAll( const std::vector< std::filesystem::path > &files, bool alone )
{
    for( const std::filesystem::path &file : files )
        runOne( contents( file ) );

    std::mt19937 random( 20240917 );

    for( int round = 0; round < ROUNDS && !alone; round++ )
        runOne( randomInput( random ) );
}

// Runs `body` in a child; false if it fails.
bool passes( bool quiet, auto body )
{
    fflush( nullptr );

    if( pid_t child = fork() )
    {
        int status;
        waitpid( child, &status, 0 );
        return child > 0 && status == 0;
    }

    if( quiet )
        dup2( open( "/dev/null", O_WRONLY ), STDERR_FILENO );

    shared->done = false;
    body();
    shared->done = true;
    exit( 0 );
}

// Drops halves, quarters and so on down to single operations, as long as what is left still fails.
std::string shrunk( std::string input )
{
    time_t end = time( nullptr ) + SECONDS;

    for( size_t piece = input.size(); piece > 0; piece /= 2 )
        for( size_t at = 0; time( nullptr ) < end; )
        {
            // Where the pieces that can be dropped begin, and the end of the last one.
            std::vector< size_t > bounds( shared->offsets, shared->offsets + shared->steps );

            for( size_t i = 0; shared->steps == 0 && i < input.size(); i++ )
                bounds.push_back( i );

            bounds.push_back( input.size() );

            if( at + piece >= bounds.size() )
                break;

            std::string shorter = std::string( input ).erase( bounds[at], bounds[at + piece] - bounds[at] );

            if( !passes( true, [&] { runOne( shorter ); } ) )
                input = shorter;
            else if( passes( true, [&] { runOne( input ); } ) ) // finds the bounds again
                break;
            else
                at += piece;
        }

    return input;
}
} // namespace

void qvFuzzStep( size_t offset )
{
    if( shared->steps < std::size( shared->offsets ) )
        shared->offsets[shared->steps++] = offset;
}

int main( int argc, char **argv )
{
    std::vector< std::filesystem::path > files;
    bool                                 alone = argc > 1 && !std::filesystem::is_directory( argv[1] );

    if( alone )
        files.push_back( argv[1] );
    else if( argc > 1 )
        for( auto &entry : std::filesystem::directory_iterator( argv[1] ) )
            files.push_back( entry.path() );

    std::sort( files.begin(), files.end() );
    shared = static_cast< Shared * >(
        mmap( nullptr, sizeof( Shared ), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0 ) );

    if( passes( false, [&] { runAll( files, alone ); } ) )
        return 0;

    if( alone || shared->done )
        return 1;

    std::string input = shrunk( std::string( reinterpret_cast< char * >( shared->data ), shared->size ) );
    std::string name =
        std::filesystem::temp_directory_path() / std::filesystem::path( argv[0] ).filename().concat( ".failure" );
    std::ofstream( name, std::ios::binary ) << input;
    fprintf( stderr, "\nThe shortest input found, %zu bytes, is in %s. Its operations:\n", input.size(), name.c_str() );
    setenv( "QV_FUZZ_TRACE", "1", 1 );
    execl( "/proc/self/exe", argv[0], name.c_str(), static_cast< char * >( nullptr ) );

    return 1;
}
