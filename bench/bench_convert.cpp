#include "bench.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

// Whole processes that convert a file between character sets. What they write goes nowhere, but for the run
// whose answers are compared. Beside the time stands the most memory of the process.

namespace bench
{
namespace
{
const size_t SIZE = 256 << 20;

// Text for windows-1252: mostly English words, some with the letters and the punctuation of other languages, about one
// character in twenty all told. Its first MiB, whose order nothing can foresee, comes again and again.
std::string makeBlock()
{
    const char *const WORDS[] = { "the",   "server",  "reads", "every", "document", "before", "it",     "answers",
                                  "and",   "nothing", "is",    "lost",  "when",     "a",      "disk",   "fills",
                                  "up",    "quickly", "so",    "that",  "größer",   "déjà",   "façade", "München",
                                  "naïve", "“text”",  "it’s",  "–",     "100 €" };

    std::mt19937 random( 3 );
    std::string  block;

    while( block.size() < 1 << 20 )
    {
        for( int i = 0; i < 12; i++ )
            block.append( WORDS[random() % std::size( WORDS )] ) += ' ';

        block.back() = '\n';
    }

    return block;
}

// The file to convert, as long as it has to be in the one set or in the other.
std::string fileOf( const char *set )
{
    std::string name = temporaryFolder() + "/" + set;

    if( std::filesystem::exists( name ) )
        return name;

    std::string block = makeBlock();

    if( std::string( set ) == "windows-1252" )
    {
        QV_BUFFER *utf8  = qvBufferCreateFromBytesCopy( block.data(), static_cast< QV_INT >( block.size() ) );
        QV_STRING *text  = qvCharsetBufferToString( QV_CHARSET_UTF_8, utf8 );
        QV_BUFFER *bytes = qvCharsetStringToBuffer( QV_CHARSET_MSFT_CP1252, text );
        block.assign(
            reinterpret_cast< const char * >( qvBufferBacking( bytes ) ),
            static_cast< size_t >( qvBufferLength( bytes ) ) );
        qvBufferRelease( bytes );
        qvStringRelease( text );
        qvBufferRelease( utf8 );
    }

    std::ofstream file( name, std::ios::binary );

    for( size_t size = 0; size < SIZE; size += block.size() )
        file << block;

    return name;
}

void showHash( const std::string &name )
{
    std::ifstream       file( name, std::ios::binary );
    std::vector< char > bytes( 1 << 20 );

    while( file.read( bytes.data(), static_cast< std::streamsize >( bytes.size() ) ), file.gcount() > 0 )
        show( uint64_t( std::hash< std::string_view >()( { bytes.data(), static_cast< size_t >( file.gcount() ) } ) ) );
}

// Runs a command that ends in the name of the file to convert.
void run( const std::string &command, const char *from, const std::string &out )
{
    FILE *pipe = popen( ( "'" BENCH_RUN "' '" + out + "' " + command + " '" + fileOf( from ) + "'" ).c_str(), "r" );
    long  kibibytes;

    if( !pipe || std::fscanf( pipe, "%ld", &kibibytes ) != 1 )
        std::exit( ( std::fprintf( stderr, "failed: %s\n", command.c_str() ), 1 ) );

    pclose( pipe );
    notePeak( static_cast< double >( kibibytes ) / 1024 );
}

Work conversion( const std::string &command, const char *from )
{
    return [command, from]
    {
        const std::string out = comparing ? temporaryFolder() + "/out" : "/dev/null";
        run( command, from, out );

        if( comparing )
            showHash( out );
    };
}

void addConversion( const char *from, const char *to )
{
    const std::string names = std::string( from ) + " --to " + to;
    Case              converting{
        "process",
        std::string( "text convert, " ) + from + " to " + to,
        "256 MiB",
        0.45,
        conversion( "'" BENCH_MORVANE "' text convert --from " + names, from ),
                     {} };

    if( std::system( "command -v iconv >/dev/null" ) == 0 )
        converting.peers = { { "iconv", conversion( std::string( "iconv -f " ) + from + " -t " + to, from ) } };

    add( converting );
}
} // namespace

void addConvertCases()
{
    addConversion( "UTF-8", "windows-1252" );
    addConversion( "windows-1252", "UTF-8" );
}
} // namespace bench
