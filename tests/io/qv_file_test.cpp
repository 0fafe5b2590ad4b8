#include "qv_test_stream.h"

#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_file.h"
#include "qv/io/qv_line_sink.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <libgen.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

using qv::Ref;
using namespace qv::test;
namespace fs = std::filesystem;

namespace
{
// Each case has a folder of its own.
class File : public testing::Test
{
protected:
    File()
    {
        fs::create_directory( folder );
    }

    ~File() override
    {
        fs::remove_all( folder );
    }

    Ref< QV_STRING > name( const std::string &rest ) const
    {
        return text( folder + rest );
    }

    void write( const std::string &rest, const std::string &content ) const
    {
        std::ofstream( folder + rest, std::ios::binary ) << content;
    }

    std::string read( const std::string &rest ) const
    {
        std::ifstream file( folder + rest, std::ios::binary );
        return { std::istreambuf_iterator< char >( file ), {} };
    }

    const std::string folder = scratch() + "file ä\u4e2d/";
};

// What qvFileReadBuffer() returns, or "null".
std::string readBuffer( QV_STRING *fn, QV_INT maxBytes )
{
    Ref< QV_BUFFER > buf( qvFileReadBuffer( fn, maxBytes ) );
    return buf ? bytes( buf ) : "null";
}

std::vector< std::string > texts( QV_VECTOR *owned )
{
    Ref< QV_VECTOR >           vec( owned );
    std::vector< std::string > result;

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
        result.push_back( take( qvStringFrom( qvVectorObjAt( vec, i ) ) ) );

    std::sort( result.begin(), result.end() );
    return result;
}

std::string pattern( size_t length )
{
    std::string result( length, '\0' );

    for( size_t i = 0; i < length; i++ )
        result[i] = static_cast< char >( i * 31 + i / 256 );

    return result;
}
} // namespace

/* Whole files ---------------------------------------------------------------------------------------------------- */

TEST_F( File, WholeFilesGoInAndOut )
{
    // Around the pieces of 1024 bytes in which they pass.
    for( size_t length : { 0, 1, 1023, 1024, 1025, 2048, 100000 } )
    {
        std::string all = pattern( length );
        ASSERT_TRUE( qvFileWriteBuffer( name( "whole" ), buffer( all ) ) );
        ASSERT_EQ( all, read( "whole" ) );
        ASSERT_EQ( static_cast< QV_INT >( length ), qvFileSize( name( "whole" ) ) );

        for( QV_INT limit = static_cast< QV_INT >( length ) - 1; limit < static_cast< QV_INT >( length ) + 2; limit++ )
            ASSERT_EQ( limit < 0 || length <= size_t( limit ) ? all : "null", readBuffer( name( "whole" ), limit ) );
    }
}

TEST_F( File, WhatCannotBeReadOrWrittenIsRefused )
{
    EXPECT_EQ( "null", readBuffer( name( "missing" ), -1 ) );
    EXPECT_EQ( "null", readBuffer( name( "" ), -1 ) ); // opens, but is a directory
    EXPECT_EQ( "null", readBuffer( text( "" ), -1 ) );
    EXPECT_EQ( "null", readBuffer( text( "/dev/zero" ), 5000 ) );
    EXPECT_FALSE( qvFileWriteBuffer( name( "missing/file" ), buffer( "x" ) ) );
    EXPECT_FALSE( qvFileWriteBuffer( text( "/dev/full" ), buffer( "x" ) ) );
    EXPECT_FALSE( qvFileWriteBuffer( text( "/dev/full" ), buffer( pattern( 100000 ) ) ) );
    EXPECT_EQ( nullptr, qvFileOpenLineSource( name( "missing" ), QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
    EXPECT_EQ( nullptr, qvFileOpenLineSink( name( "" ), QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
}

/* Streams -------------------------------------------------------------------------------------------------------- */

TEST_F( File, BytesAreReadAndSkippedInAnyPieces )
{
    std::string all = pattern( 10000 );
    write( "stream", all );

    Ref< QV_BYTE_SOURCE > source( qvFileOpenByteSource( name( "stream" ) ) );
    Ref< QV_BUFFER >      buf( qvBufferCreate() );
    uint8_t               byte;

    EXPECT_EQ( 2500, qvByteSourceSkip( source, 2500 ) );
    EXPECT_EQ( 1500, qvByteSourceRead( source, buf.at(), 1500 ) );
    EXPECT_EQ( all.substr( 2500, 1500 ), bytes( buf ) );
    EXPECT_EQ( 1, qvByteSourceReadBytes( source, &byte, 1 ) );
    EXPECT_EQ( static_cast< uint8_t >( all[4000] ), byte );
    EXPECT_EQ( 5999, qvByteSourceSkip( source, 6000 ) );
    EXPECT_TRUE( qvByteSourceEnd( source ) && !qvByteSourceError( source ) );

    // A limit far above what there is, and above what the operating system reads at once.
    for( QV_INT limit : { QV_INT( -1 ), QV_INT( 10001 ), QV_INT( 1 ) << 31, QV_INT( 1 ) << 40, QV_INT_MAX } )
    {
        std::string got( 10000, ' ' );
        source.reset( qvFileOpenByteSource( name( "stream" ) ) );
        EXPECT_EQ( 10000, qvByteSourceReadBytes( source, got.data(), limit ) ) << limit;
        EXPECT_TRUE( qvByteSourceEnd( source ) && !qvByteSourceError( source ) ) << limit;
        EXPECT_EQ( all, got );
    }

    source.reset( qvFileOpenByteSource( text( "/dev/zero" ) ) );
    EXPECT_EQ( 100000, qvByteSourceSkip( source, 100000 ) );

    source.reset( qvFileOpenByteSource( name( "" ) ) );
    EXPECT_EQ( 0, qvByteSourceReadBytes( source, &byte, 1 ) );
    EXPECT_TRUE( qvByteSourceEnd( source ) && qvByteSourceError( source ) );
}

TEST_F( File, SignalsDoNotEndARead )
{
    ASSERT_EQ( 0, mkfifo( ( folder + "pipe" ).c_str(), 0600 ) );

    // Opening waits for the writer.
    ASSERT_EQ( 0, std::system( ( "{ printf abc; sleep 0.02; printf def; } >'" + folder + "pipe' &" ).c_str() ) );
    Ref< QV_BYTE_SOURCE > source( qvFileOpenByteSource( name( "pipe" ) ) );
    char                  array[10] = {};

    struct sigaction old, interrupting = {};
    interrupting.sa_handler = []( int ) {};
    sigaction( SIGALRM, &interrupting, &old );
    const itimerval often = { { 0, 1000 }, { 0, 1000 } }, never = {};
    setitimer( ITIMER_REAL, &often, nullptr );
    EXPECT_EQ( 6, qvByteSourceReadBytes( source, array, 9 ) );
    setitimer( ITIMER_REAL, &never, nullptr );
    sigaction( SIGALRM, &old, nullptr );
    EXPECT_STREQ( "abcdef", array );
    EXPECT_FALSE( qvByteSourceError( source ) );
}

TEST_F( File, SinksCutAtOnceAndWriteWhatTheyAreGiven )
{
    write( "cut", "old content" );
    Ref< QV_BYTE_SINK > sink( qvFileOpenByteSink( name( "cut" ) ) );
    EXPECT_EQ( 0, qvFileSize( name( "cut" ) ) );

    std::string all = pattern( 5000 );
    EXPECT_TRUE( qvByteSinkWriteInner( sink, buffer( all ), 100, 4000 ) );
    EXPECT_TRUE( qvByteSinkFlush( sink ) );
    EXPECT_EQ( all.substr( 100, 4000 ), read( "cut" ) );

    // The last reference writes out what is left.
    EXPECT_TRUE( qvByteSinkWrite( sink, buffer( "end" ) ) );
    sink.reset();
    EXPECT_EQ( all.substr( 100, 4000 ) + "end", read( "cut" ) );

    sink.reset( qvFileOpenByteSink( text( "/dev/full" ) ) );
    qvByteSinkWrite( sink, buffer( "x" ) );
    EXPECT_FALSE( qvByteSinkFlush( sink ) );
    EXPECT_TRUE( qvByteSinkError( sink ) );

    // A stream over a codec learns of it when more has gone down than the caches hold.
    Ref< QV_CHAR_SINK > chars( qvFileOpenCharSink( text( "/dev/full" ), QV_CHARSET_UTF_8, 0 ) );
    EXPECT_FALSE( qvCharSinkWrite( chars, text( std::string( 100000, 'x' ) ) ) );
    EXPECT_TRUE( qvCharSinkError( chars ) );
}

TEST_F( File, TextGoesThroughTheCharacterSetAndTheLineEnds )
{
    Ref< QV_LINE_SINK > lines( qvFileOpenLineSink(
        name( "lines" ), QV_CHARSET_UTF_16, QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK, QV_NLF_FLAG_CRLF ) );
    EXPECT_TRUE( qvLineSinkWriteCstr( lines, "a", -1 ) && qvLineSinkWriteCstr( lines, "€", -1 ) );
    lines.reset();
    EXPECT_EQ( std::string( "\xff\xfe\x61\0\r\0\n\0\xac\x20\r\0\n\0", 14 ), read( "lines" ) );

    Ref< QV_LINE_SOURCE > source( qvFileOpenLineSource( name( "lines" ), QV_CHARSET_UTF_16, 0, QV_NLF_FLAG_CRLF ) );
    EXPECT_EQ( "a", take( qvLineSourceRead( source ) ) );
    EXPECT_EQ( "€", take( qvLineSourceRead( source ) ) );
    EXPECT_EQ( nullptr, qvLineSourceRead( source ) );

    Ref< QV_CHAR_SOURCE > chars(
        qvFileOpenCharSource( name( "lines" ), QV_CHARSET_UTF_16_LE, QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK ) );
    Ref< QV_STRING > all( qvStringCreate() );
    EXPECT_EQ( 7, qvCharSourceRead( chars, all.at(), -1 ) );
    EXPECT_EQ( "\ufeffa\r\n€\r\n", utf8( all ) );
}

/* Files and directories ------------------------------------------------------------------------------------------ */

TEST_F( File, FilesAndDirectoriesAreToldApart )
{
    write( "file", "1234" );
    fs::create_symlink( "file", folder + "link" );
    fs::create_symlink( "missing", folder + "dangling" );
    ASSERT_TRUE( qvFileCreateDirectory( name( "dir" ) ) );
    fs::create_symlink( "dir", folder + "dirlink" );

    for( const char *directory : { "dir", "dirlink", "dir/" } )
        EXPECT_TRUE( qvFileExists( name( directory ) ) && qvFileIsDirectory( name( directory ) ) ) << directory;

    for( const char *file : { "file", "link" } )
        EXPECT_TRUE( qvFileExists( name( file ) ) && !qvFileIsDirectory( name( file ) ) ) << file;

    for( const char *none : { "missing", "dangling", "file/" } )
        EXPECT_FALSE( qvFileExists( name( none ) ) || qvFileIsDirectory( name( none ) ) ) << none;

    EXPECT_EQ( 4, qvFileSize( name( "link" ) ) );
    EXPECT_EQ( -1, qvFileSize( name( "missing" ) ) );
    EXPECT_EQ( fs::perms( 0711 ) & ~fs::perms( 022 ), fs::status( folder + "dir" ).permissions() & ~fs::perms( 022 ) );

    EXPECT_FALSE( qvFileCreateDirectory( name( "dir" ) ) || qvFileCreateDirectory( name( "a/b" ) ) );
    EXPECT_FALSE( qvFileDelete( name( "dir" ) ) || qvFileDeleteDirectory( name( "file" ) ) );
    EXPECT_TRUE( qvFileDelete( name( "dirlink" ) ) && qvFileDeleteDirectory( name( "dir" ) ) );

    write( "other", "56" );
    EXPECT_TRUE( qvFileRename( name( "other" ), name( "file" ) ) );
    EXPECT_EQ( "56", read( "file" ) );
    EXPECT_FALSE( qvFileRename( name( "other" ), name( "file" ) ) );
}

TEST_F( File, DirectoriesAreListedByFullNames )
{
    using Names = std::vector< std::string >;

    for( const char *file : { "a.txt", "B.TXT", "c.bin", ".txt" } )
        write( file, "" );

    fs::create_directory( folder + "d.txt" );
    std::string path = folder.substr( 0, folder.size() - 1 ); // the delimiter is appended

    EXPECT_EQ(
        ( Names{ folder + ".txt", folder + "B.TXT", folder + "a.txt", folder + "c.bin", folder + "d.txt" } ),
        texts( qvDirectoryContent( text( path ), QV_FALSE, nullptr ) ) );
    EXPECT_EQ(
        ( Names{ folder + ".txt", folder + "B.TXT", folder + "a.txt" } ),
        texts( qvDirectoryContent( text( folder ), QV_TRUE, text( ".Txt" ) ) ) );
    EXPECT_EQ( Names{}, texts( qvDirectoryContent( name( "missing" ), QV_FALSE, nullptr ) ) );
    EXPECT_EQ( Names{}, texts( qvDirectoryContent( name( "a.txt" ), QV_FALSE, nullptr ) ) );
}

TEST_F( File, TreesGoButWhatLinksLeadToStays )
{
    fs::create_directories( folder + "tree/a/b" );
    fs::create_directories( folder + "kept" );
    write( "kept/file", "x" );
    write( "tree/a/b/file", "x" );
    write( "tree/\xFF", "x" ); // no UTF-8
    fs::create_symlink( "../kept", folder + "tree/dirlink" );
    fs::create_symlink( "../../kept/file", folder + "tree/a/link" );
    fs::create_symlink( "..", folder + "tree/a/up" );
    fs::create_symlink( "nowhere", folder + "tree/dangling" );
    fs::create_symlink( "kept", folder + "link" );

    // What is given has to be the own name of a directory.
    fs::path before = fs::current_path();
    fs::current_path( folder + "kept" );

    for( std::string refused : { "link", "link/", "link//", "kept/.", "kept/file", "kept/../kept/..", "missing" } )
        EXPECT_FALSE( qvFileDeleteDirectoryRecursive( name( refused ) ) ) << refused;

    EXPECT_FALSE( qvFileDeleteDirectoryRecursive( text( "" ) ) || qvFileDeleteDirectoryRecursive( text( "." ) ) );
    fs::current_path( before );
    EXPECT_TRUE( fs::is_symlink( folder + "link" ) );

    EXPECT_FALSE( qvFileDeleteDirectory( name( "tree" ) ) );
    EXPECT_TRUE( qvFileDeleteDirectoryRecursive( name( "tree//" ) ) );
    EXPECT_FALSE( fs::exists( folder + "tree" ) );
    EXPECT_EQ( "x", read( "kept/file" ) );
}

TEST_F( File, TreesGoHoweverDeepTheyAre )
{
    // Names that are longer together than a path can be, and more levels than there are descriptors.
    const std::string part( 50, 'd' );
    int               at = open( folder.c_str(), O_RDONLY | O_DIRECTORY );

    for( int level = 0; level < 150; level++ )
    {
        ASSERT_EQ( 0, mkdirat( at, part.c_str(), 0700 ) );
        int next = openat( at, part.c_str(), O_RDONLY | O_DIRECTORY );
        close( at );
        at = next;

        for( int i = 0; i < ( level == 100 ? 50 : 0 ); i++ )
            ASSERT_EQ( 0, mkdirat( at, std::to_string( i ).c_str(), 0700 ) );
    }

    close( at );

    rlimit files;
    getrlimit( RLIMIT_NOFILE, &files );
    const rlimit few = { 64, files.rlim_max };
    setrlimit( RLIMIT_NOFILE, &few );
    EXPECT_TRUE( qvFileDeleteDirectoryRecursive( name( part ) ) );
    setrlimit( RLIMIT_NOFILE, &files );
    EXPECT_FALSE( fs::exists( folder + part ) );
}

TEST_F( File, NamesWithAZeroAreRefusedNotCut )
{
    write( "file", "old" );
    fs::create_directory( folder + "dir" );

    Ref< QV_STRING > file = name( std::string( "file\0x", 6 ) ), dir = name( std::string( "dir\0/x", 6 ) );
    Ref< QV_STRING > fresh = name( std::string( "fresh\0", 6 ) );

    EXPECT_FALSE( qvFileOpenByteSource( file ) || qvFileOpenCharSource( file, QV_CHARSET_UTF_8, 0 ) );
    EXPECT_FALSE( qvFileOpenByteSink( file ) || qvFileOpenLineSink( fresh, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
    EXPECT_FALSE( qvFileReadBuffer( file, -1 ) || qvFileWriteBuffer( file, buffer( "new" ) ) );
    EXPECT_FALSE( qvFileExists( file ) || qvFileIsDirectory( dir ) || qvFileDelete( file ) );
    EXPECT_EQ( -1, qvFileSize( file ) );
    EXPECT_FALSE( qvFileRename( file, name( "other" ) ) || qvFileRename( name( "file" ), fresh ) );
    EXPECT_FALSE( qvFileCreateDirectory( fresh ) );
    EXPECT_FALSE( qvFileDeleteDirectory( dir ) || qvFileDeleteDirectoryRecursive( dir ) );
    EXPECT_TRUE( texts( qvDirectoryContent( dir, QV_FALSE, nullptr ) ).empty() );
    EXPECT_EQ( "old", read( "file" ) );
    EXPECT_EQ( 2, std::distance( fs::directory_iterator( folder ), fs::directory_iterator() ) );

    Ref< QV_STRING > path = text( std::string( "a\0/b\0.c", 7 ) );
    EXPECT_EQ( std::string( "a\0", 2 ), take( qvFileDirName( path ) ) );
    EXPECT_EQ( std::string( "b\0.c", 4 ), take( qvFileBaseName( path ) ) );
    EXPECT_EQ( ".c", take( qvFileExtensionName( path ) ) );
}

/* The text of paths ---------------------------------------------------------------------------------------------- */

TEST_F( File, PathsAreTakenApart )
{
    const std::pair< const char *, const char * > EXTENSIONS[] = {
        { "/usr/lib/a.tar.gz", ".gz" }, { "x", "" },   { "", "." },      { "dir.d/file", "" },
        { "dir/.profile", ".profile" }, { "a.", "." }, { "ä/ö.ü", ".ü" } };

    for( auto [name, extension] : EXTENSIONS )
        EXPECT_EQ( extension, take( qvFileExtensionName( text( name ) ) ) ) << name;

    // All names of up to seven characters of these, against the C library.
    for( int code = 0; code < 3 * 3 * 3 * 3 * 3 * 3 * 3; code++ )
        for( int length = 0; length <= 7; length++ )
        {
            std::string name;

            for( int i = 0, rest = code; i < length; i++, rest /= 3 )
                name += "/.a"[rest % 3];

            ASSERT_EQ( dirname( std::string( name ).data() ), take( qvFileDirName( text( name ) ) ) ) << name;
            ASSERT_EQ( basename( std::string( name ).data() ), take( qvFileBaseName( text( name ) ) ) ) << name;
        }
}

TEST_F( File, DelimitersAreAppendedOnce )
{
    Ref< QV_STRING > path = text( "a" ), other = Ref< QV_STRING >::share( path ), empty = text( "" );

    for( QV_STRING **each : { path.at(), path.at(), empty.at() } )
        qvFilePathAppendDelimiter( each );

    EXPECT_EQ( "a/ a /", utf8( path ) + " " + utf8( other ) + " " + utf8( empty ) );
    EXPECT_EQ( U'/', qvFilePathDelimiter() );

    EXPECT_TRUE(
        qvPathIsRelative( text( "" ) ) && qvPathIsRelative( text( "a/b" ) ) && !qvPathIsRelative( text( "/a" ) ) );
}

TEST_F( File, TheProcessKnowsItsPlace )
{
    EXPECT_EQ( fs::current_path().string(), take( qvCurrentDirectory() ) );
    EXPECT_EQ( fs::read_symlink( "/proc/self/exe" ).string(), take( qvGetExecutablePath() ) );
    EXPECT_DEATH(
        {
            std::string gone = folder + "gone";
            fs::create_directory( gone );
            fs::current_path( gone );
            fs::remove( gone );
            qvCurrentDirectory();
        },
        testing::HasSubstr( "    Expression: currentDir\n" ) );
}

TEST_F( File, BrokenArgumentsAreReported )
{
    EXPECT_BROKEN( qvFileReadBuffer( name( "x" ), -2 ), "maxBytes >= -1" );

    // A charset that is none is found before the file is cut, and before it is missed.
    write( "x", "old" );
    EXPECT_BROKEN( qvFileOpenCharSink( name( "x" ), 51, 0 ), "QV_CHARSET_OK( charset )" );
    EXPECT_BROKEN( qvFileOpenLineSource( name( "missing" ), 51, 0, 0 ), "QV_CHARSET_OK( charset )" );
    EXPECT_EQ( "old", read( "x" ) );
}
