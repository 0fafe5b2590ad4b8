#include "morvane_run.h"

#include <algorithm>
#include <filesystem>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace qv::test;
using namespace std::string_literals;

namespace
{
const std::string LONG_NAME( 255, 'n' );

// An entry of an access control list as the system keeps it.
struct Entry
{
    uint16_t tag, rights;
    uint32_t id;
};

std::string listOf( std::initializer_list< Entry > entries )
{
    std::string list( "\2\0\0\0", 4 );

    for( const Entry &entry : entries )
        list.append( reinterpret_cast< const char * >( &entry ), sizeof( entry ) );

    return list;
}

std::string attributeOf( const std::string &name, const char *attribute )
{
    char    value[256];
    ssize_t length = getxattr( path( name ).c_str(), attribute, value, sizeof( value ) );

    return length < 0 ? "" : std::string( value, static_cast< size_t >( length ) );
}

bool setAttribute( const std::string &name, const char *attribute, const std::string &value )
{
    return setxattr( path( name ).c_str(), attribute, value.data(), value.size(), 0 ) == 0;
}

struct stat statusOf( const std::string &name )
{
    struct stat status = {};
    stat( path( name ).c_str(), &status );
    return status;
}

void expectNothingBeside()
{
    for( const auto &entry : std::filesystem::recursive_directory_iterator( scratch() ) )
        EXPECT_EQ( std::string::npos, entry.path().filename().string().find( "morvane~" ) ) << entry.path();
}

bool canBeSomebodyElse()
{
    return geteuid() == 0 && std::system( "setpriv --version >/dev/null 2>&1" ) == 0;
}

const uint32_t NOBODY      = 65534;
const char     AS_NOBODY[] = "setpriv --reuid 65534 --regid 65534 --clear-groups --";
const uint32_t ANY         = ~0u;

const char ACCESS[]  = "system.posix_acl_access";
const char DEFAULT[] = "system.posix_acl_default";
} // namespace

TEST( MorvaneFile, KeepsRightsAndAttributes )
{
    std::filesystem::create_directory( path( "rights" ) );
    std::string mine = listOf( { { 1, 6, ANY }, { 2, 4, NOBODY }, { 4, 4, ANY }, { 16, 4, ANY }, { 32, 0, ANY } } );
    std::string open = listOf( { { 1, 7, ANY }, { 2, 6, NOBODY }, { 4, 7, ANY }, { 16, 7, ANY }, { 32, 4, ANY } } );

    for( const char *name : { "rights/plain", "rights/listed" } )
        write( name, "a=1\n" );

    chmod( path( "rights/plain" ).c_str(), 01640 );
    bool hasAttributes = setAttribute( "rights/plain", "user.note", "kept" );
    bool hasLists      = setAttribute( "rights/listed", ACCESS, mine ) && setAttribute( "rights", DEFAULT, open );

    symlink( "plain", path( "rights/link" ).c_str() );
    EXPECT_EQ( 0, morvane( "store set rights/link b=2" ).status );
    EXPECT_EQ( 0, morvane( "store set rights/listed b=2" ).status );
    EXPECT_TRUE( std::filesystem::is_symlink( path( "rights/link" ) ) );
    EXPECT_EQ( "a=1\nb=2\n", contentOf( "rights/plain" ) );
    EXPECT_EQ( 01640u, statusOf( "rights/plain" ).st_mode & 07777u );
    EXPECT_EQ( hasAttributes ? "kept" : "", attributeOf( "rights/plain", "user.note" ) );

    // Its folder gives a new file a list, but none to what is replaced.
    EXPECT_EQ( "", attributeOf( "rights/plain", ACCESS ) );
    EXPECT_EQ( hasLists ? mine : "", attributeOf( "rights/listed", ACCESS ) );
    std::filesystem::remove_all( path( "rights" ) );
}

// What cannot be kept is nobody's: the group of another, and whom a list tells apart. Needs somebody else to be.
TEST( MorvaneFile, GivesNobodyMoreRights )
{
    if( !canBeSomebodyElse() )
        GTEST_SKIP() << "not root, or no setpriv";

    chmod( scratch().c_str(), 0755 );
    std::filesystem::create_directory( path( "shared" ) );
    chmod( path( "shared" ).c_str(), 0777 );

    const struct
    {
        uid_t  owner;
        gid_t  group;
        mode_t before, after;
        bool   hasList;
    } CASES[] = {
        { NOBODY, 0, 0664, 0604, false },   { NOBODY, 7, 0604, 0600, false },   { 0, NOBODY, 0640, 0640, false },
        { 0, NOBODY, 06755, 02755, false }, { NOBODY, 100, 0660, 0660, false }, { 0, 7, 0646, 0604, false },
        { 0, 7, 0666, 0600, true },
    };

    for( const auto &row : CASES )
    {
        write( "shared/doc", "a=1\n" );
        ASSERT_EQ( 0, chown( path( "shared/doc" ).c_str(), row.owner, row.group ) );
        chmod( path( "shared/doc" ).c_str(), row.before );

        // One group is denied what all others may.
        std::string list = listOf( { { 1, 6, ANY }, { 4, 6, ANY }, { 8, 0, 101 }, { 16, 6, ANY }, { 32, 6, ANY } } );

        if( row.hasList && !setAttribute( "shared/doc", ACCESS, list ) )
            continue;

        Outcome outcome = morvane( "store set shared/doc b=2", "setpriv --reuid 65534 --regid 65534 --groups 100 --" );
        EXPECT_EQ( 0, outcome.status ) << outcome.err;
        EXPECT_EQ( row.after, statusOf( "shared/doc" ).st_mode & 07777u ) << row.owner << " " << row.group;
        EXPECT_EQ( "", attributeOf( "shared/doc", ACCESS ) );
        unlink( path( "shared/doc" ).c_str() );
    }

    // A folder that may not be entered is not one without the file. Who is in one below may work there.
    write( "in", "a=1\n" );
    chmod( path( "shared" ).c_str(), 0700 );
    EXPECT_EQ(
        "morvane store: shared/new: Permission denied\n", morvane( "store encode in shared/new", AS_NOBODY ).err );
    EXPECT_EQ(
        "A=1\n", shell(
                     "mkdir -m 777 shared/below; cd shared/below; echo a=1 >doc; chmod 666 doc; "s + AS_NOBODY
                     + " $M text case --upper doc doc; cat doc" )
                     .out );
    std::filesystem::remove_all( path( "shared" ) );
}

TEST( MorvaneFile, WritesWhatIsOpenAlready )
{
    write( "doc", "a=1\n" );
    ino_t file = statusOf( "doc" ).st_ino;

    const Command ROWS[] = {
        { "echo old >log; for f in /dev/stdout /proc/self/fd/1 log -; do $M text case --upper in $f >>log; done; "
          "$M text case --upper in /dev/fd/3 3>>log; cat log",
          0, "old\nTEXT\nTEXT\nTEXT\nTEXT\nTEXT\n", "" },
        { "$M store set doc b=2 3<>doc && $M store set /dev/stdout c=3 >>doc && $M store set /dev/stdin d=4 <doc", 0,
          "", "" },
        { "$M text case --upper in /dev/stdout | cat; $M text case --upper in /dev/stdout", 0, "TEXT\nTEXT\n", "" },
        { "$M text case --upper in >&- /dev/stdout", 1, "", "morvane text: /dev/stdout: Is a directory\n" },

        // It would never end.
        { "$M text case --upper log >>log", 1, "", "morvane text: log: the output goes to the same file\n" },
        { "$M text case --upper /dev/fd/3 log <>log 3<&0", 1, "",
          "morvane text: /dev/fd/3: the output goes to the same file\n" },
        { "$M text case --lower log <log log; cat log", 0, "old\ntext\ntext\ntext\ntext\ntext\n", "" },
    };

    expectOutcomes( ROWS );
    EXPECT_EQ( "a=1\nb=2\nc=3\nd=4\n", contentOf( "doc" ) );
    EXPECT_EQ( file, statusOf( "doc" ).st_ino );
}

TEST( MorvaneFile, TakesStandardStreamsByTheirSign )
{
    const Command ROWS[] = {
        { "echo a=1 | $M store set - b=2 | $M store merge - doc | $M store encode - - | $M store show --binary -", 0,
          "a=1\nb=2\nc=3\n", "" },
        { "$M store get - c <doc; $M store check - <doc; echo x=1 | $M store delete - x; $M store decode bin -", 0,
          "3\nc=3\n", "" },
        { "echo x | $M text lines --newline crlf - -; $M text case --upper - o <in; cat o; $M text case --fold in -", 0,
          "x\r\nTEXT\ntext\n", "" },
        { "$M store show - <&-", 1, "", "morvane store: standard input: Bad file descriptor\n" },
        { "$M text case --upper <&-", 1, "", "morvane text: standard input: Bad file descriptor\n" },
        { "$M text case --upper in >&-", 1, "", "morvane text: standard output: Bad file descriptor\n" },
        { "$M id >&-", 1, "", "morvane id: standard output: Bad file descriptor\n" },
    };

    write( "doc", "c=3\n" );
    EXPECT_EQ( 0, morvane( "store encode doc bin" ).status );
    expectOutcomes( ROWS );
}

TEST( MorvaneFile, TellsWhyItCannotBeReadOrWritten )
{
    const Command ROWS[] = {
        { "ln -s loop loop; $M store encode in loop", 1, "",
          "morvane store: loop: Too many levels of symbolic links\n" },
        { "$M store encode in in/x", 1, "", "morvane store: in/x: Not a directory\n" },
        { "$M text case --upper absent kept", 1, "", "morvane text: absent: No such file or directory\n" },
        { "$M text case --upper . kept", 1, "", "morvane text: .: Is a directory\n" },
        { "$M text case --upper in .", 1, "", "morvane text: .: Is a directory\n" },
        { "$M text case --upper in no/folder", 1, "", "morvane text: no/folder: No such file or directory\n" },
        { "$M text case --upper in /dev/full", 1, "", "morvane text: /dev/full: No space left on device\n" },
        { "$M text case --upper in >/dev/full", 1, "", "morvane text: standard output: No space left on device\n" },
        { "$M time zones >/dev/full", 1, "", "morvane time: standard output: No space left on device\n" },
        { "$M random bytes 9223372036854775807 >/dev/full", 1, "",
          "morvane random: standard output: No space left on device\n" },
        { "$M --version >/dev/full", 1, "", "morvane: standard output: No space left on device\n" },
        { "$M store set /dev/full a=1", 1, "",
          "morvane store: /dev/full: not a regular file; it could not be replaced\n" },
        { "mkfifo pipe; $M store merge pipe /dev/null", 1, "",
          "morvane store: pipe: not a regular file; it could not be replaced\n" },

        // Names that are no text.
        { "$M store encode in $(printf \"new\\377\"); echo new*", 0, "new*\n",
          "morvane: new\xef\xbf\xbd: not valid UTF-8\n" },
        { "$M unicode show a $(printf \"\\355\\240\\200\")", 1, "", "morvane: \xed\xa0\x80: not valid UTF-8\n" },

        // The way of a filter, whether or not the signal is ignored.
        { "{ $M random bytes 1000000; echo $? >status; } | true; cat status", 0, "141\n", "" },
        { "{ trap \"\" PIPE; $M random bytes 1000000; echo $? >status; } | true; cat status", 0, "141\n", "" },
        { "{ trap \"\" PIPE; sleep 0.1; $M text case --upper in; echo $? >status; } | true; cat status", 0, "141\n",
          "" },
    };

    write( "kept", "old" );
    expectOutcomes( ROWS );
    EXPECT_EQ( "old", contentOf( "kept" ) );

#ifndef __SANITIZE_THREAD__ // which writes a file of its own when a process starts
    write( "doc", "a=1\n" );
    EXPECT_EQ( 1, morvane( "store set doc a=4", "ulimit -f 0;" ).status );
    EXPECT_EQ( "a=1\n", contentOf( "doc" ) );
#endif

    unlink( path( "loop" ).c_str() );
    unlink( path( "pipe" ).c_str() );
    expectNothingBeside();
}

TEST( MorvaneFile, TakesTheLongestNames )
{
    write( "doc", "a=1\n" );

    for( int i = 0; i < 2; i++ )
        EXPECT_EQ( "", morvane( "text case --upper doc " + LONG_NAME ).err );

    EXPECT_EQ( 0, morvane( "store set " + LONG_NAME + " B=2" ).status );
    EXPECT_EQ( "A=1\nB=2\n", contentOf( LONG_NAME ) );
    unlink( path( LONG_NAME ).c_str() );
}

TEST( MorvaneFile, KeepsWhatManyRunsSetAtOnce )
{
    std::string asOther;
    write( "doc", "" );

    // Some may write the file itself, and some only its folder.
    if( canBeSomebodyElse() )
    {
        chmod( scratch().c_str(), 0777 );
        ASSERT_EQ( 0, chown( path( "doc" ).c_str(), NOBODY, NOBODY ) );
        chmod( path( "doc" ).c_str(), 0444 );
        asOther = AS_NOBODY;
    }

    EXPECT_EQ(
        "", shell(
                "for i in 0 1 2 3 4 5 6 7 8 9; do for k in a b; do as=; [ $k = a ] || as=\"" + asOther
                + "\"; "
                  "for n in 0 1 2; do $as $M store set doc $k$i$n=1; done & done; done; wait" )
                .err );

    std::string all = contentOf( "doc" );
    EXPECT_EQ( 60, std::count( all.begin(), all.end(), '\n' ) ) << all;

    // Who holds a lock on the file and runs the tool is not waited for.
    EXPECT_EQ( 0, shell( "exec 9<>doc; flock 9; $M store set doc c=1" ).status );
}

TEST( MorvaneFile, LeavesTheOldOneWhenItIsKilled )
{
    write( "kept", "old" );

    // When all of this has gone into the pipe, which holds less, the output has been begun.
    shell( "mkfifo fifo; $M text convert --from utf-8 --to utf-16 fifo kept & pid=$!; "
           "{ head -c 1000000 /dev/zero; kill -9 $pid; } >fifo; wait $pid; rm fifo" );
    EXPECT_EQ( "old", contentOf( "kept" ) );

    // Where it is killed between its two names, the next run clears what has stayed away.
    write( "kept.morvane~0", "new" );
    EXPECT_EQ( 0, shell( "$M text case --upper in kept" ).status );
    EXPECT_EQ( "TEXT\n", contentOf( "kept" ) );
    expectNothingBeside();
}

TEST( MorvaneFile, PassesOnWhatThereIs )
{
    for( const char *words :
         { "case --lower", "lines --newline lf", "normalize --form nfc", "convert --from utf-8 --to latin1",
           "convert --from utf-8 --to utf-8" } )
        EXPECT_EQ(
            "line\n=\nend\n", shell(
                                  "mkfifo to from; $M text "s + words
                                  + " to from & exec 3>to 4<from; echo line >&3; "
                                    "timeout 10 head -n 1 <&4; echo =; echo end >&3; exec 3>&-; cat <&4; rm to from" )
                                  .out )
            << words;
}

// However the input is cut when it is read, what comes out is the same.
TEST( MorvaneFile, ReadsPiecesOfAnySize )
{
    const std::string ALL[] = {
        "\ufeffa\r\u00e9\r\ne\u0301€\U0001f600\xed\xa0\x80x\xc0\x80\xe0\x9f\xffy\xe2\x82",
        "\xff\xfex\0\xd8\xd8\x01\xdc\x3d\xd8\0\xde\0\xdcy"s };
    const char *const WORDS[] = {
        "convert --to utf-8 --invalid replace --from utf-8",
        "convert --to latin1 --invalid skip --from utf-8",
        "convert --to utf-8 --invalid replace --from utf-16",
        "convert --to utf-8 --invalid skip --from utf-16le",
        "normalize --form nfc",
        "lines --newline crlf" };

    for( const std::string &all : ALL )
        for( const char *words : WORDS )
            for( size_t size : { 1, 2, 3, 5 } )
            {
                // Each write to such a socket is one read at the other end.
                int ends[2];
                ASSERT_EQ( 0, socketpair( AF_UNIX, SOCK_SEQPACKET, 0, ends ) );
                ASSERT_EQ( 9, dup2( ends[0], 9 ) );

                for( size_t at = 0; at < all.size(); at += size )
                    EXPECT_LT( 0, ::write( ends[1], all.data() + at, std::min( size, all.size() - at ) ) );

                close( ends[0] );
                close( ends[1] );
                Outcome inPieces = shell( "$M text "s + words + " <&9" );
                close( 9 );
                write( "whole", all );
                Outcome asAWhole = shell( "$M text "s + words + " <whole" );

                EXPECT_EQ( asAWhole.err, inPieces.err ) << words << size;
                EXPECT_EQ( asAWhole.status, inPieces.status ) << words << size;

                // What comes before a failure may be out or not.
                EXPECT_TRUE( asAWhole.status != 0 || asAWhole.out == inPieces.out ) << words << size;
            }
}
