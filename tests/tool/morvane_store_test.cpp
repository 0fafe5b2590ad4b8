#include "morvane_run.h"

using namespace qv::test;
using namespace std::string_literals;

namespace
{
const char DOCUMENT[] = "# a comment\r\nb.y = two \r\nunknown line\na=1\n\nb.x=first\nb.x=last\nc=中%00000a!";
} // namespace

TEST( MorvaneStore, ShowsAndGets )
{
    const std::string SHOWN = "a=1\nc=中%00000a!\nb.x=last\nb.y= two \n";
    write( "doc", DOCUMENT );

    // There and back by the binary form.
    expectOutcomes( {
        { "$M store show doc; $M store encode doc binary; $M store show binary --binary", SHOWN + SHOWN },
        { "$M store decode binary back; cat back", SHOWN },
        { "$M store get doc b.x a b.y c", "last\n1\n two \n中\n!\n" },
        { "$M store get doc b.x d \"no path\" a.b | cat", "last\n",
          "morvane store: d: no such value\nmorvane store: no path: no such value\nmorvane store: a.b: no such value\n",
          0 },
        { "$M store get doc b.x d 2>/dev/null", "last\n", "", 1 },
        { "$M store get --default none doc d b.z a b.x.y", "none\nnone\n1\nnone\n" },

        // A sub-store where there is no value, and where it is asked for.
        { "$M store set doc b=0; $M store get doc b b.; $M store delete doc b; $M store set doc b.c.d=1; "
          "$M store get doc b; $M store get doc a. ",
          "0\nx=last\ny= two \nc.d=1\n", "morvane store: a.: no such value\n" },
    } );
}

// What a command makes of a document.
void expectDocument( const std::string &before, const std::string &words, const std::string &after )
{
    write( "doc", before );
    EXPECT_EQ( "", morvane( "store " + words ).err );
    EXPECT_EQ( after, contentOf( "doc" ) ) << words;
}

TEST( MorvaneStore, ChangesOnlyTheLinesConcerned )
{
    expectDocument(
        DOCUMENT, "set doc b.y=three b.x='' d=4 b.z=% e.f.g=h",
        "# a comment\r\nb.y =three\r\nunknown line\na=1\n\nb.x=first\nb.x=\nb.z=%%\nc=中%00000a!\r\nd=4\r\n"
        "e.f.g=h\r\n" );
    expectDocument( "", "set doc a=1", "a=1\n" );

    // A byte order mark and the other line ends stay too.
    expectDocument( "\ufeffa=1\vb=2\u2029c=3\u0085", "set doc b=x c=y", "\ufeffa=1\vb=x\u2029c=y\u0085" );

    // New lines go after those that share the most levels, those of the same call among them.
    expectDocument(
        "a.x=1\nb.x=1\n#end\n", "set doc b.y=2 a.y=2 b.z=3 a.y=4 c.d.e=5 c.d=6 c.d.f=7",
        "a.x=1\na.y=4\nb.x=1\nb.y=2\nb.z=3\n#end\nc.d.e=5\nc.d.f=7\nc.d=6\n" );

    // Deleting takes all lines of an entry, and of entries in one another.
    expectDocument( DOCUMENT, "delete doc b.x c", "# a comment\r\nb.y = two \r\nunknown line\na=1\n\n" );
    expectDocument( DOCUMENT, "delete doc b c", "# a comment\r\nunknown line\na=1\n\n" );
    expectDocument(
        "a.b=1\nx=1\na.b.c=2\na.bb=3\na.b.=4\na.b=5\na=6\na.b.", "delete doc a.b a.b.c", "x=1\na.bb=3\na=6\n" );

    write( "one", "a=0\nb.c=1\nempty.\n" );
    write( "two", "b.c=2\nb.d=3\nb.c.=\nb.c.e=4\nempty.\na.=" );
    expectDocument( "#\r\na=1\n\n", "merge doc one two", "#\r\na=1\n\nb.c=1\nempty.\na.\nb.d=3\nb.c.e=4\n" );
}

TEST( MorvaneStore, ChecksEveryLine )
{
    write( "doc", "a=1\na#=1\nb.c\nword\n\nd.e.=1\nf.\n" );
    write( "good", "\ufeffa=1\r\n#=1\n\n \t\n  # b\nb . c = 2\n" );
    expectOutcomes( {
        { "$M store check good doc - <good",
          "doc:2: what stands before the separator is no address\n"
          "doc:3: neither . nor = follows an address\n"
          "doc:4: neither . nor = follows an address\n"
          "doc:6: what stands before the separator is no address\n",
          "", 1 },
        { "$M store check good; $M store show good good", "a=1\nb.c= 2\na=1\nb.c= 2\n" },
    } );
}

TEST( MorvaneStore, TellsWhatIsWrongWithAFileAndChangesNothing )
{
    std::string deep;

    for( int level = 0; level < 120; level++ )
        deep += "\1\1\1\1a\0\1"s;

    write( "doc", DOCUMENT );
    write( "truncated", "\1\1\1\1"s );
    write( "trailing", "\0\0"s );
    write( "deep", deep );
    write( "invalid", "a=1\n\xff\n" );

    expectFailures( {
        { "store show nowhere", "store: nowhere: No such file or directory" },
        { "store set . a=1", "store: .: Is a directory" },
        { "store show - --binary <truncated", "store: standard input: truncated, or no document in binary form" },
        { "store decode trailing doc", "store: trailing: bytes behind the end of the document" },
        { "store decode deep doc", "store: deep: nested too deep" },
        { "store set invalid a=2", "store: invalid: not valid UTF-8; it could not be kept as it is" },
        // What is binary would be lost, whole or not; a file is made only on demand, and never replaced.
        { "store set truncated a=1", "store: truncated: a document in binary form; only text can be changed" },
        { "store merge deep doc", "store: deep: a document in binary form; only text can be changed" },
        { "store set --create nowhere/at/all a=1", "store: nowhere/at/all: No such file or directory" },
        { "store merge doc nowhere", "store: nowhere: No such file or directory" },
        { "store set doc a=1 \"b c=1\"", "store: b c=1: no path and value that a document can hold" },
        { "store delete doc a b.z a.x", "store: b.z: no such entry\nmorvane store: a.x: no such entry" },
    } );

    expectOutcome(
        { "$M store set --create fresh b=2 && $M store set --create fresh a=1 && cat fresh; rm fresh", "b=2\na=1\n" } );

    EXPECT_EQ( DOCUMENT, contentOf( "doc" ) );
    EXPECT_EQ( "\1\1\1\1", contentOf( "truncated" ) );
    EXPECT_EQ( "a=1\n\xff\n", contentOf( "invalid" ) );
}

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
// Positions are found once, whatever the order of the lines and of what is set.
TEST( MorvaneStore, SetsManyValuesInLargeDocuments )
{
    expectOutcome(
        { "awk \"BEGIN { for( i = 0; i < 400000; i++ ) print i % 1000 \\\".k\\\" i \\\".x=1\\\" }\" >doc; "
          "awk \"NR % 100 == 0 { sub( /1$/, 2 ) } 1\" doc >expected; "
          "ulimit -t 8; $M store set doc $(awk \"NR % 100 == 0\" expected) && cmp doc expected",
          "" } );
}
#endif
