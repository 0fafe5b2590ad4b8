#include "morvane_run.h"

#include <algorithm>
#include <sys/xattr.h>
#include <unistd.h>

using namespace qv::test;
using namespace std::string_literals;

namespace
{
// An entry of an access control list as the system keeps it.
struct Entry
{
    uint16_t tag, rights;
    uint32_t id = ~0u;
};

const char     ACCESS[] = "system.posix_acl_access", DEFAULT[] = "system.posix_acl_default";
const uint32_t NOBODY      = 65534;
const char     AS_NOBODY[] = "setpriv --reuid 65534 --regid 65534 --clear-groups -- ";

std::string listOf( std::initializer_list< Entry > entries )
{
    std::string list( "\2\0\0\0", 4 );

    for( const Entry &entry : entries )
        list.append( reinterpret_cast< const char * >( &entry ), sizeof( entry ) );

    return list;
}

std::string attributeOf( const std::string &name, const char *attribute )
{
    char value[256] = {};
    return { value, static_cast< size_t >( std::max( 0l, getxattr( path( name ).c_str(), attribute, value, 256 ) ) ) };
}

bool setAttribute( const std::string &name, const char *attribute, const std::string &value )
{
    return setxattr( path( name ).c_str(), attribute, value.data(), value.size(), 0 ) == 0;
}

// That nothing is left of what was written under another name first.
const Command NOTHING_BESIDE = { "find . -name \"*morvane~*\"", "" };

bool canBeSomebodyElse()
{
    return geteuid() == 0 && std::system( "setpriv --version >/dev/null 2>&1" ) == 0;
}
} // namespace

TEST( MorvaneFile, KeepsRightsAndAttributes )
{
    std::string mine = listOf( { { 1, 6 }, { 2, 4, NOBODY }, { 4, 4 }, { 16, 4 }, { 32, 0 } } );
    std::string open = listOf( { { 1, 7 }, { 2, 6, NOBODY }, { 4, 7 }, { 16, 7 }, { 32, 4 } } );

    shell( "mkdir rights; cd rights; echo a=1 | tee plain >listed; chmod 1640 plain; ln -s plain link" );
    bool hasAttributes = setAttribute( "rights/plain", "user.note", "kept" );
    bool hasLists      = setAttribute( "rights/listed", ACCESS, mine ) && setAttribute( "rights", DEFAULT, open );

    expectOutcome(
        { "cd rights; $M store set link b=2 && $M store set listed b=2; readlink link; cat plain; stat -c %a plain",
          "plain\na=1\nb=2\n1640\n" } );
    EXPECT_EQ( hasAttributes ? "kept" : "", attributeOf( "rights/plain", "user.note" ) );

    // A new file inherits the list of its folder; one that is replaced does not.
    EXPECT_EQ( "", attributeOf( "rights/plain", ACCESS ) );
    EXPECT_EQ( hasLists ? mine : "", attributeOf( "rights/listed", ACCESS ) );
    shell( "rm -r rights" );
}

// Rights that cannot be kept are dropped: those of a group that the run is not in, and those of a list. Runs as another
// user.
TEST( MorvaneFile, GivesNobodyMoreRights )
{
    if( !canBeSomebodyElse() )
        GTEST_SKIP() << "not root, or no setpriv";

    shell( "chmod 755 .; mkdir -m 777 shared" );

    const struct
    {
        std::string owners, before, after;
        bool        hasList = false;
    } ROWS[] = { { "65534:0", "0664", "604" },  { "65534:7", "0604", "600" },   { "0:65534", "0640", "640" },
                 { "0:65534", "6755", "2755" }, { "65534:100", "0660", "660" }, { "0:7", "0646", "604" },
                 { "0:7", "0666", "600", true } };

    for( const auto &row : ROWS )
    {
        shell( "cd shared; rm -f doc; echo a=1 >doc; chown " + row.owners + " doc; chmod " + row.before + " doc" );

        // One group is denied what all others may.
        if( row.hasList
            && !setAttribute(
                "shared/doc", ACCESS, listOf( { { 1, 6 }, { 4, 6 }, { 8, 0, 101 }, { 16, 6 }, { 32, 6 } } ) ) )
            continue;

        expectOutcome(
            { "setpriv --reuid 65534 --regid 65534 --groups 100 -- $M store set shared/doc b=2; stat -c %a shared/doc",
              row.after + "\n" } );
        EXPECT_EQ( "", attributeOf( "shared/doc", ACCESS ) );
    }

    // A folder that may not be entered is not one without the file. Whoever is in one below may work there.
    expectOutcomes( {
        { "echo a=1 >doc; chmod 700 shared; "s + AS_NOBODY + "$M store encode doc shared/new", "",
          "morvane store: shared/new: Permission denied\n" },
        { "mkdir -m 777 shared/below; cd shared/below; echo a=1 >doc; chmod 666 doc; "s + AS_NOBODY
              + "$M text case --upper doc doc; cat doc; rm -r ../../shared",
          "A=1\n" },
    } );
}

TEST( MorvaneFile, WritesWhatIsOpenAlready )
{
    expectOutcomes( {
        { "echo old >log; for f in /dev/stdout /proc/self/fd/1 log -; do $M text case --upper in $f >>log; done; "
          "$M text case --upper in /dev/fd/3 3>>log; cat log",
          "old\nTEXT\nTEXT\nTEXT\nTEXT\nTEXT\n" },
        { "echo a=1 >doc; ln doc same; $M store set doc b=2 3<>doc && $M store set /dev/stdout c=3 >>doc && "
          "$M store set /dev/stdin d=4 <doc; cat same; rm same",
          "a=1\nb=2\nc=3\nd=4\n" },
        { "$M text case --upper in /dev/stdout | cat; $M text case --upper in /dev/stdout", "TEXT\nTEXT\n" },
        { "$M text case --upper in >&- /dev/stdout", "", "morvane text: /dev/stdout: Is a directory\n" },

        // It would never end.
        { "$M text case --upper log >>log", "", "morvane text: log: the output goes to the same file\n" },
        { "$M text case --upper /dev/fd/3 log <>log 3<&0", "",
          "morvane text: /dev/fd/3: the output goes to the same file\n" },
        { "$M text case --lower log <log log; cat log", "old\ntext\ntext\ntext\ntext\ntext\n" },
    } );
}

TEST( MorvaneFile, TakesStandardStreamsByTheirSign )
{
    expectOutcomes( {
        { "echo c=3 >doc; $M store encode doc bin; echo a=1 | $M store set - b=2 | $M store merge - doc | "
          "$M store encode - - | $M store show --binary -",
          "a=1\nb=2\nc=3\n" },
        { "$M store get - c <doc; $M store check - <doc; echo x=1 | $M store delete - x; $M store decode bin -",
          "3\nc=3\n" },
        { "echo x | $M text lines --newline crlf - -; $M text case --upper - o <in; cat o; $M text case --fold in -",
          "x\r\nTEXT\ntext\n" },
        { "$M store show - <&-", "", "morvane store: standard input: Bad file descriptor\n" },
        { "$M text case --upper <&-", "", "morvane text: standard input: Bad file descriptor\n" },
        { "$M text case --upper in >&-", "", "morvane text: standard output: Bad file descriptor\n" },
        { "$M id >&-", "", "morvane id: standard output: Bad file descriptor\n" },
    } );
}

TEST( MorvaneFile, TellsWhyItCannotBeReadOrWritten )
{
    shell( "echo old >kept; ln -s loop loop; mkfifo pipe" );
    expectFailures( {
        { "store encode in loop", "store: loop: Too many levels of symbolic links" },
        { "store encode in in/x", "store: in/x: Not a directory" },
        { "text case --upper absent kept", "text: absent: No such file or directory" },
        { "text case --upper . kept", "text: .: Is a directory" },
        { "text case --upper in /dev/full", "text: /dev/full: No space left on device" },
        { "text case --upper in >/dev/full", "text: standard output: No space left on device" },
        { "random bytes 9223372036854775807 >/dev/full", "random: standard output: No space left on device" },
        { "store set /dev/full a=1", "store: /dev/full: not a regular file; it could not be replaced" },
        { "store merge pipe /dev/null", "store: pipe: not a regular file; it could not be replaced" },
    } );
    expectOutcomes( {
        { "$M --version >/dev/full", "", "morvane: standard output: No space left on device\n" },

        // Names that are no text.
        { "$M store encode in $(printf \"new\\377\"); echo new*", "new*\n",
          "morvane: new\xef\xbf\xbd: not valid UTF-8\n", 0 },
        { "$M unicode show a $(printf \"\\355\\240\\200\")", "", "morvane: \xed\xa0\x80: not valid UTF-8\n" },

        // The way of a filter, whether or not the signal is ignored.
        { "{ $M random bytes 1000000; echo $? >status; } | true; cat status", "141\n" },
        { "{ trap \"\" PIPE; $M random bytes 1000000; echo $? >status; } | true; cat status", "141\n" },
        { "{ trap \"\" PIPE; sleep 0.1; $M text case --upper in; echo $? >status; } | true; cat status", "141\n" },
#ifndef __SANITIZE_THREAD__ // which writes a file of its own when a process starts
        { "echo a=1 >doc; (ulimit -f 0; $M store set doc a=4 2>/dev/null); echo $?; cat doc", "1\na=1\n" },
#endif
        { "cat kept; rm loop pipe", "old\n" },
        NOTHING_BESIDE,
    } );
}

TEST( MorvaneFile, KeepsWhatManyRunsSetAtOnce )
{
    // Some may write the file itself, and some only its folder.
    const bool others = canBeSomebodyElse();
    shell( "echo -n >doc; "s + ( others ? "chmod 777 .; chown 65534:65534 doc; chmod 444 doc" : "" ) );

    expectOutcomes( {
        { "run() { for n in 0 1 2; do $3 $M store set doc $1$2$n=1; done; }; "
          "for i in 0 1 2 3 4 5 6 7 8 9; do run a $i & run b $i \""s
              + ( others ? AS_NOBODY : "" ) + "\" & done; wait; sort -u doc | wc -l; wc -l <doc",
          "60\n60\n" },

        // Whoever holds a lock on the file and runs the tool is not waited for.
        { "exec 9<>doc; flock 9; $M store set doc c=1", "" },
    } );
}

TEST( MorvaneFile, NamesWhatItWritesBeside )
{
    expectOutcomes( {
        // The longest names leave no room for more.
        { "name=$(printf %0255d 0); echo a=1 >doc; $M text case --upper doc $name; $M text case --upper doc $name; "
          "$M store set $name B=2; cat $name; rm $name",
          "A=1\nB=2\n" },

        // A run was killed between its two names.
        { "echo new >kept.morvane~0; $M text case --upper in kept; cat kept", "TEXT\n" },
        NOTHING_BESIDE,
    } );
}

TEST( MorvaneFile, TellsATerminalHowFarItHasCome )
{
    if( shell( "script --version" ).status != 0 )
        GTEST_SKIP() << "no script";

    expectOutcomes( {
        { "SHELL=/bin/sh script -qec \"timeout 3 $M random bytes 1000000000000 >/dev/null\" /dev/null | tr \"\\r\" "
          "\"\\n\" | "
          "sed -E \"s/[0-9]+([.][0-9])? [kMG]B/N/; s/[0-9.]+ [kMG]B/N/; s/, [^,]*days left/, long/; s/, [0-9]+ .* "
          "left/, long/\" | grep K$ | sort -u",
          "N of 2.0 TB, N/s, long\x1b[K\n" }, // the end may cut a line

        // The line is wiped for what is complained of.
        { "SHELL=/bin/sh script -qec \"{ sleep 2; printf x; sleep 1; printf 中; } | $M text case --upper --to latin1 - "
          "made\" /dev/null | sed -E \"s/[0-9]+ B/N/g; s/(\\rstandard input: N, N.s\\x1b\\[K)+/told/\"",
          "told\r\x1b[Kmorvane text: standard input: ISO-8859-1 has no U+4E2D\r\n" },
    } );
}

TEST( MorvaneFile, PassesOnWhatThereIs )
{
    for( const char *words :
         { "case --lower", "lines --newline lf", "normalize --form nfc", "convert --from utf-8 --to latin1",
           "convert --from utf-8 --to utf-8" } )
        expectOutcome(
            { "mkfifo to from; $M text "s + words
                  + " to from & exec 3>to 4<from; echo line >&3; timeout 10 head -n 1 <&4; echo =; echo end >&3; exec "
                    "3>&-; "
                    "cat <&4; rm to from",
              "line\n=\nend\n" } );
}
