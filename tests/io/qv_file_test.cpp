#include "qv_test_program.h"
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
#include <libgen.h>
#include <numeric>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

using qv::Ref;
using namespace qv::test;
namespace fs = std::filesystem;

namespace
{
off_t  wrongBy;               // what the size of every open file is told wrong by
size_t roomOnDisk = SIZE_MAX; // bytes that can be written before the disk is full; cutting a file frees all
} // namespace

extern "C" int fstat( int descriptor, struct stat *status ) noexcept
{
    int result = fstatat( descriptor, "", status, AT_EMPTY_PATH );
    status->st_size += wrongBy;

    return result;
}

extern "C" ssize_t write( int descriptor, const void *bytes, size_t count )
{
    count = std::min( count, roomOnDisk );
    errno = ENOSPC;

    if( count == 0 && roomOnDisk == 0 )
        return -1;

    roomOnDisk -= roomOnDisk == SIZE_MAX ? 0 : count;
    return syscall( SYS_write, descriptor, bytes, count );
}

extern "C" int ftruncate( int descriptor, off_t length ) noexcept
{
    roomOnDisk = SIZE_MAX;
    return static_cast< int >( syscall( SYS_ftruncate, descriptor, length ) );
}

namespace
{
// Of a file in the scratch folder, all of whose names begin with characters of several bytes each.
Ref< QV_STRING > name( const std::string &rest )
{
    return text( path( "ä\u4e2d" + rest ) );
}

// What a shell's commands write in the scratch folder, where `$f` is what the names begin with.
std::string sh( const std::string &commands )
{
    return run( "/bin/sh", "-c '" + commands + "'", "f=ä\u4e2d" ).out;
}

// What qvFileReadBuffer() returns, or "null".
std::string readBuffer( QV_STRING *fn, QV_INT maxBytes )
{
    Ref< QV_BUFFER > buf( qvFileReadBuffer( fn, maxBytes ) );
    return buf ? bytes( buf ) : "null";
}

// The names in a directory without its own, in order.
std::string listed( QV_STRING *directory, QV_BOOL filesOnly, const char *suffix )
{
    Ref< QV_STRING > ending = text( suffix ? suffix : "" ), own = Ref< QV_STRING >( qvStringCreateFrom( directory ) );
    Ref< QV_VECTOR > vec( qvDirectoryContent( directory, filesOnly, suffix ? ending.get() : nullptr ) );
    std::vector< std::string > names;
    qvFilePathAppendDelimiter( own.at() );

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
    {
        names.push_back( textOf( qvVectorBacking( vec )[i] ) );
        EXPECT_EQ( 0, names.back().find( utf8( own ) ) );
        names.back().replace( 0, utf8( own ).size(), " " );
    }

    std::sort( names.begin(), names.end() );
    return std::accumulate( names.begin(), names.end(), std::string() );
}

std::string pattern( size_t length )
{
    std::string result( length, '\0' );

    for( size_t i = 0; i < length; i++ )
        result[i] = static_cast< char >( i * 31 + i / 256 );

    return result;
}
} // namespace

TEST( File, WholeFilesGoInAndOut )
{
    // Around the pieces of 1024 bytes in which they pass.
    for( QV_INT length : { 0, 1, 1023, 1024, 1025, 2048, 100000 } )
    {
        std::string all = pattern( static_cast< size_t >( length ) );
        ASSERT_TRUE( qvFileWriteBuffer( name( "whole" ), buffer( all ) ) );
        ASSERT_EQ( all, contentOf( "ä\u4e2dwhole" ) );
        ASSERT_EQ( length, qvFileSize( name( "whole" ) ) );

        for( QV_INT limit = length - 1; limit < length + 2; limit++ )
            ASSERT_EQ( limit < 0 || length <= limit ? all : "null", readBuffer( name( "whole" ), limit ) );
    }

    EXPECT_EQ( "null", readBuffer( name( "missing" ), -1 ) );
    EXPECT_EQ( "null", readBuffer( text( "/" ), -1 ) ); // opens, but is a directory
    EXPECT_EQ( "null", readBuffer( text( "" ), -1 ) );
    EXPECT_EQ( "null", readBuffer( text( "/dev/zero" ), 5000 ) );
    EXPECT_FALSE( qvFileWriteBuffer( name( "missing/file" ), buffer( "x" ) ) );
    EXPECT_FALSE( qvFileWriteBuffer( text( "/dev/full" ), buffer( "x" ) ) );
    EXPECT_FALSE( qvFileWriteBuffer( text( "/dev/full" ), buffer( pattern( 100000 ) ) ) );
    EXPECT_FALSE( qvFileOpenLineSource( name( "missing" ), QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
    EXPECT_FALSE( qvFileOpenLineSink( text( "/" ), QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
}

TEST( File, WritingLeavesNothingOfWhatWasThere )
{
    const std::string file = path( "ä\u4e2dover" ), link = path( "ä\u4e2dlinked" ), longer = pattern( 3000 );
    write( "ä\u4e2dover", longer );
    fs::create_symlink( file, link );
    chmod( file.c_str(), 0640 );
    EXPECT_TRUE( qvFileWriteBuffer( text( link ), buffer( "short" ) ) && fs::is_symlink( link ) );
    EXPECT_EQ( "short", contentOf( "ä\u4e2dover" ) );
    EXPECT_EQ( fs::perms( 0640 ), fs::status( file ).permissions() );

    // Nothing to write empties the file, and gives an empty one its new time too.
    EXPECT_TRUE( qvFileWriteBuffer( name( "over" ), buffer( "" ) ) );
    EXPECT_EQ( 0, qvFileSize( name( "over" ) ) );
    fs::last_write_time( file, {} );
    EXPECT_TRUE( qvFileWriteBuffer( name( "over" ), buffer( "" ) ) );
    EXPECT_NE( fs::file_time_type(), fs::last_write_time( file ) );

    // What has no end is not cut.
    EXPECT_TRUE( qvFileWriteBuffer( text( "/dev/null" ), buffer( longer ) ) );
    EXPECT_TRUE( qvFileWriteBuffer( text( "/dev/full" ), buffer( "" ) ) );
    sh( "mkfifo ${f}fifo; cat ${f}fifo >${f}through 2>/dev/null &" );
    EXPECT_TRUE( qvFileWriteBuffer( name( "fifo" ), buffer( longer ) ) );

    // On a full disk, the new bytes may need the room of the old ones after them.
    write( "ä\u4e2dover", longer );
    roomOnDisk = 1000;
    EXPECT_TRUE( qvFileWriteBuffer( name( "over" ), buffer( std::string( 2000, 'n' ) ) ) );
    EXPECT_EQ( std::string( 2000, 'n' ), contentOf( "ä\u4e2dover" ) );

    // A write that fails leaves what it has written, and not what stood there before.
    write( "ä\u4e2dover", longer );
    rlimit old, most = { 1000, RLIM_INFINITY };
    getrlimit( RLIMIT_FSIZE, &old );
    most.rlim_max  = old.rlim_max;
    auto oldAction = signal( SIGXFSZ, SIG_IGN );
    setrlimit( RLIMIT_FSIZE, &most );
    EXPECT_FALSE( qvFileWriteBuffer( name( "over" ), buffer( std::string( 2000, 'n' ) ) ) );
    setrlimit( RLIMIT_FSIZE, &old );
    signal( SIGXFSZ, oldAction );
    EXPECT_EQ( std::string( 1000, 'n' ), contentOf( "ä\u4e2dover" ) );
}

TEST( File, BytesAreReadAndSkippedInAnyPieces )
{
    std::string all = pattern( 10000 );
    write( "ä\u4e2dstream", all );

    Ref< QV_BYTE_SOURCE > source( qvFileOpenByteSource( name( "stream" ) ) );
    Ref< QV_BUFFER >      buf( qvBufferCreate() );
    char                  byte;

    EXPECT_EQ( 2500, qvByteSourceSkip( source, 2500 ) );
    EXPECT_EQ( 1500, qvByteSourceRead( source, buf.at(), 1500 ) );
    EXPECT_EQ( all.substr( 2500, 1500 ), bytes( buf ) );
    EXPECT_EQ( 1, qvByteSourceReadBytes( source, &byte, 1 ) );
    EXPECT_EQ( all[4000], byte );
    EXPECT_EQ( 5999, qvByteSourceSkip( source, 6000 ) );
    EXPECT_TRUE( qvByteSourceEnd( source ) && !qvByteSourceError( source ) );

    // A limit far above what there is, and above what the operating system reads at once.
    for( QV_INT limit : { QV_INT( -1 ), QV_INT( 10001 ), QV_INT( 1 ) << 31, QV_INT( 1 ) << 40, QV_INT_MAX } )
    {
        std::string got( 10000, ' ' );
        source.reset( qvFileOpenByteSource( name( "stream" ) ) );
        EXPECT_EQ( 10000, qvByteSourceReadBytes( source, got.data(), limit ) ) << limit;
        EXPECT_TRUE( qvByteSourceEnd( source ) && !qvByteSourceError( source ) && all == got ) << limit;
    }

    source.reset( qvFileOpenByteSource( text( "/dev/zero" ) ) );
    EXPECT_EQ( 100000, qvByteSourceSkip( source, 100000 ) );

    source.reset( qvFileOpenByteSource( text( "/" ) ) );
    EXPECT_EQ( 0, qvByteSourceReadBytes( source, &byte, 1 ) );
    EXPECT_TRUE( qvByteSourceEnd( source ) && qvByteSourceError( source ) );
}

TEST( File, SignalsDoNotEndARead )
{
    // Opening waits for the writer.
    sh( "mkfifo ${f}pipe; { printf abc; sleep 0.02; printf def; } >${f}pipe 2>/dev/null &" );
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

TEST( File, SinksCutAtOnceAndWriteWhatTheyAreGiven )
{
    const std::string   all = pattern( 5000 );
    Ref< QV_BYTE_SINK > sink( qvFileOpenByteSink( name( "whole" ) ) );
    EXPECT_EQ( 0, qvFileSize( name( "whole" ) ) );
    EXPECT_TRUE( qvByteSinkWriteInner( sink, buffer( all ), 100, 4000 ) && qvByteSinkFlush( sink ) );
    EXPECT_EQ( all.substr( 100, 4000 ), contentOf( "ä\u4e2dwhole" ) );

    // The last reference writes out what is left.
    EXPECT_TRUE( qvByteSinkWrite( sink, buffer( "end" ) ) );
    sink.reset();
    EXPECT_EQ( all.substr( 100, 4000 ) + "end", contentOf( "ä\u4e2dwhole" ) );

    sink.reset( qvFileOpenByteSink( text( "/dev/full" ) ) );
    qvByteSinkWrite( sink, buffer( "x" ) );
    EXPECT_TRUE( !qvByteSinkFlush( sink ) && qvByteSinkError( sink ) );

    // A stream over a codec learns of it when more has gone down than the caches hold.
    Ref< QV_CHAR_SINK > chars( qvFileOpenCharSink( text( "/dev/full" ), QV_CHARSET_UTF_8, 0 ) );
    EXPECT_FALSE( qvCharSinkWrite( chars, text( std::string( 100000, 'x' ) ) ) );
    EXPECT_TRUE( qvCharSinkError( chars ) );
}

TEST( File, TextGoesThroughTheCharacterSetAndTheLineEnds )
{
    Ref< QV_LINE_SINK > lines( qvFileOpenLineSink(
        name( "lines" ), QV_CHARSET_UTF_16, QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK, QV_NLF_FLAG_CRLF ) );
    EXPECT_TRUE( qvLineSinkWriteCstr( lines, "a", -1 ) && qvLineSinkWriteCstr( lines, "€", -1 ) );
    lines.reset();
    EXPECT_EQ( std::string( "\xff\xfe\x61\0\r\0\n\0\xac\x20\r\0\n\0", 14 ), contentOf( "ä\u4e2dlines" ) );

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

TEST( File, FilesAndDirectoriesAreToldApart )
{
    umask( 022 );
    ASSERT_TRUE( qvFileCreateDirectory( name( "dir" ) ) );
    sh( "printf 1234 >${f}file; ln -s ${f}file ${f}link; ln -s missing ${f}dangling; ln -s ${f}dir ${f}dirlink" );

    for( const char *directory : { "dir", "dirlink", "dir/" } )
        EXPECT_TRUE( qvFileExists( name( directory ) ) && qvFileIsDirectory( name( directory ) ) ) << directory;

    for( const char *file : { "file", "link" } )
        EXPECT_TRUE( qvFileExists( name( file ) ) && !qvFileIsDirectory( name( file ) ) ) << file;

    for( const char *none : { "missing", "dangling", "file/" } )
        EXPECT_FALSE( qvFileExists( name( none ) ) || qvFileIsDirectory( name( none ) ) ) << none;

    EXPECT_EQ( 4, qvFileSize( name( "link" ) ) );
    EXPECT_EQ( -1, qvFileSize( name( "missing" ) ) );
    EXPECT_EQ( "711\n", sh( "stat -c %a ${f}dir" ) );

    EXPECT_FALSE( qvFileCreateDirectory( name( "dir" ) ) || qvFileCreateDirectory( name( "a/b" ) ) );
    EXPECT_FALSE( qvFileDelete( name( "dir" ) ) || qvFileDeleteDirectory( name( "file" ) ) );
    EXPECT_TRUE( qvFileDelete( name( "dirlink" ) ) && qvFileDeleteDirectory( name( "dir" ) ) );
    EXPECT_TRUE( qvFileRename( name( "file" ), name( "dangling" ) ) );
    EXPECT_FALSE( qvFileRename( name( "file" ), name( "dangling" ) ) );
    EXPECT_EQ( "1234", sh( "cat ${f}dangling; ls -d ${f}dir*" ) );
}

TEST( File, DirectoriesAreListedByFullNames )
{
    sh( "mkdir -p ${f}list/d.txt; cd ${f}list; touch a.txt B.TXT c.bin .txt" );
    EXPECT_EQ( " .txt B.TXT a.txt c.bin d.txt", listed( name( "list" ), QV_FALSE, nullptr ) );
    EXPECT_EQ( " .txt B.TXT a.txt", listed( name( "list/" ), QV_TRUE, ".Txt" ) );
    EXPECT_EQ( "", listed( name( "missing" ), QV_FALSE, nullptr ) + listed( name( "list/a.txt" ), QV_FALSE, nullptr ) );
}

TEST( File, TreesGoButWhatLinksLeadToStays )
{
    // One name is no UTF-8.
    sh( "mkdir -p ${f}tree/a/b ${f}kept; cd ${f}tree; touch ../${f}kept/file a/b/file $(printf \"\\377\"); ln -s "
        "nowhere x;"
        "ln -s ../${f}kept y; ln -s ../../${f}kept/file a/x; ln -s .. a/up; ln -s ${f}kept ../${f}way" );
    fs::path before = fs::current_path();
    fs::current_path( path( "ä\u4e2dkept" ) );

    // What is given has to be the own name of a directory.
    for( std::string refused :
         { "way", "way/", "way//", "kept/.", "kept/file", "kept/../\xc3\xa4\u4e2dkept/..", "missing" } )
        EXPECT_FALSE( qvFileDeleteDirectoryRecursive( name( refused ) ) ) << refused;

    EXPECT_FALSE( qvFileDeleteDirectoryRecursive( text( "" ) ) || qvFileDeleteDirectoryRecursive( text( "." ) ) );
    fs::current_path( before );
    EXPECT_FALSE( qvFileDeleteDirectory( name( "tree" ) ) );
    EXPECT_TRUE( qvFileDeleteDirectoryRecursive( name( "tree//" ) ) );
    EXPECT_EQ( "file\n", sh( "ls -d ${f}tree; cd ${f}way; ls" ) );
}

TEST( File, TreesGoHoweverDeepTheyAre )
{
    // Names that are longer together than a path can be, and more levels than there are descriptors.
    const std::string part( 50, 'd' );
    int               at = open( scratch().c_str(), O_RDONLY | O_DIRECTORY );

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
    EXPECT_TRUE( qvFileDeleteDirectoryRecursive( text( path( part ) ) ) );
    setrlimit( RLIMIT_NOFILE, &files );
    EXPECT_FALSE( fs::exists( path( part ) ) );
}

TEST( File, NamesWithAZeroAreRefusedNotCut )
{
    sh( "mkdir -p ${f}zero/dir; printf old >${f}zero/file" );
    Ref< QV_STRING > file = name( std::string( "zero/file\0x", 11 ) ), dir = name( std::string( "zero/dir\0/x", 11 ) );
    Ref< QV_STRING > fresh = name( std::string( "zero/fresh\0", 11 ) );

    EXPECT_FALSE( qvFileOpenByteSource( file ) || qvFileOpenCharSource( file, QV_CHARSET_UTF_8, 0 ) );
    EXPECT_FALSE( qvFileOpenByteSink( file ) || qvFileOpenLineSink( fresh, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
    EXPECT_FALSE( qvFileReadBuffer( file, -1 ) || qvFileWriteBuffer( file, buffer( "new" ) ) );
    EXPECT_FALSE( qvFileExists( file ) || qvFileIsDirectory( dir ) || qvFileDelete( file ) );
    EXPECT_FALSE( qvFileRename( file, name( "other" ) ) || qvFileRename( name( "zero/file" ), fresh ) );
    EXPECT_FALSE( qvFileCreateDirectory( fresh ) );
    EXPECT_FALSE( qvFileDeleteDirectory( dir ) || qvFileDeleteDirectoryRecursive( dir ) );
    EXPECT_EQ( "", listed( dir, QV_FALSE, nullptr ) );
    EXPECT_EQ( -1, qvFileSize( file ) );
    EXPECT_EQ( "dir\nfile\nold", sh( "cd ${f}zero; ls; cat file" ) );

    Ref< QV_STRING > both = text( std::string( "a\0/b\0.c", 7 ) );
    EXPECT_EQ(
        std::string( "a\0b\0.c.c", 8 ),
        take( qvFileDirName( both ) ) + take( qvFileBaseName( both ) ) + take( qvFileExtensionName( both ) ) );
}

TEST( File, PathsAreTakenApart )
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

    Ref< QV_STRING > path = text( "a" ), other = Ref< QV_STRING >::share( path ), empty = text( "" );

    for( QV_STRING **each : { path.at(), path.at(), empty.at() } )
        qvFilePathAppendDelimiter( each );

    EXPECT_EQ( "a/ a /", utf8( path ) + " " + utf8( other ) + " " + utf8( empty ) );
    EXPECT_EQ( U'/', qvFilePathDelimiter() );
    EXPECT_TRUE( qvPathIsRelative( text( "" ) ) && qvPathIsRelative( text( "a/b" ) ) && !qvPathIsRelative( empty ) );
}

TEST( File, TheProcessKnowsItsPlace )
{
    EXPECT_EQ( fs::current_path().string(), take( qvCurrentDirectory() ) );
    EXPECT_EQ( fs::read_symlink( "/proc/self/exe" ).string(), take( qvGetExecutablePath() ) );

    auto fromNowhere = []
    {
        fs::create_directory( path( "gone" ) );
        fs::current_path( path( "gone" ) );
        fs::remove( path( "gone" ) );
        qvCurrentDirectory();
    };
    EXPECT_BROKEN( fromNowhere(), "currentDir" );
}

TEST( File, BrokenArgumentsAreReported )
{
    // A charset that is none is found before the file is cut, and before it is missed.
    write( "ä\u4e2dx", "old" );
    EXPECT_BROKEN( qvFileReadBuffer( name( "x" ), -2 ), "maxBytes >= -1" );
    EXPECT_BROKEN( qvFileOpenCharSink( name( "x" ), 51, 0 ), "QV_CHARSET_OK( charset )" );
    EXPECT_BROKEN( qvFileOpenLineSource( name( "missing" ), 51, 0, 0 ), "QV_CHARSET_OK( charset )" );
    EXPECT_EQ( "old", contentOf( "ä\u4e2dx" ) );
}

TEST( File, AWholeFileDeclaresWhatItsPiecesWould )
{
    for( QV_INT length : { 1, 160, 161, 1024, 1184, 1185, 16383, 16384, 16385, 40960, 41000, 300000 } )
    {
        const std::string all = pattern( static_cast< size_t >( length ) );
        Ref< QV_BUFFER >  pieces( qvBufferCreate() );
        write( "ä\u4e2dpieces", all );

        for( size_t at = 0; at < all.size(); at += 1024 )
            qvBufferAppend( pieces.at(), buffer( all.substr( at, 1024 ) ) );

        // A file that grows while it is read, one as it says, and those that become shorter.
        for( off_t wrong : { -20000, 0, 20, 1 << 20 } )
        {
            wrongBy = wrong;
            Ref< QV_BUFFER > whole( qvFileReadBuffer( name( "pieces" ), -1 ) );
            wrongBy = 0;
            EXPECT_EQ( all, bytes( whole ) ) << length << ' ' << wrong;
            EXPECT_TRUE( wrong < 0 || allocated( pieces.get() ) == allocated( whole.get() ) ) << length << ' ' << wrong;
        }

        // Nothing is read past a limit, and what a Buffer holds stays.
        Ref< QV_BYTE_SOURCE > source( qvFileOpenByteSource( name( "pieces" ) ) );
        Ref< QV_BUFFER >      halves( qvBufferCreate() );
        QV_INT                half = ( length + 1 ) / 2;
        EXPECT_EQ( half, qvByteSourceRead( source, halves.at(), half ) );
        EXPECT_EQ( half, qvBufferLength( halves ) );
        EXPECT_EQ( length - half, qvByteSourceRead( source, halves.at(), -1 ) );
        EXPECT_EQ( all, bytes( halves ) );

        // Nor does it matter what of the file is in memory already, nor that the Buffer is a short one that was emptied.
        write( "ä\u4e2dpieces", "x" + all );
        Ref< QV_BYTE_SOURCE > begun( qvFileOpenByteSource( name( "pieces" ) ) );
        Ref< QV_BUFFER >      rest( qvBufferCreate() );
        qvBufferAppendRoom( rest.at(), 200 );
        qvBufferAppendWritten( rest.at(), 0 );
        EXPECT_EQ( 1, qvByteSourceSkip( begun, 1 ) );
        EXPECT_EQ( length, qvByteSourceRead( begun, rest.at(), -1 ) );
        EXPECT_EQ( all, bytes( rest ) );
        EXPECT_EQ( allocated( pieces.get() ), allocated( rest.get() ) ) << length;
    }
}
