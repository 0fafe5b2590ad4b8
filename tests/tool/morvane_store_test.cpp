#include "morvane_run.h"

using namespace qv::test;
using namespace std::string_literals;

namespace
{
const char DOCUMENT[] = "# a comment\r\nb.y = two \r\nunknown line\na=1\n\nb.x=first\nb.x=last\nc=中%00000a!";
} // namespace

TEST( MorvaneStore, ShowsAndGets )
{
    write( "doc", DOCUMENT );

    Outcome shown = morvane( "store show doc" );
    EXPECT_EQ( 0, shown.status );
    EXPECT_EQ( "a=1\nc=中%00000a!\nb.x=last\nb.y= two \n", shown.out );

    // There and back by the binary form.
    EXPECT_EQ( 0, morvane( "store encode doc binary" ).status );
    EXPECT_EQ( shown.out, morvane( "store show binary --binary" ).out );
    EXPECT_EQ( 0, morvane( "store decode binary back" ).status );
    EXPECT_EQ( shown.out, contentOf( "back" ) );

    Outcome got = morvane( "store get doc b.x a b.y c" );
    EXPECT_EQ( 0, got.status );
    EXPECT_EQ( "last\n1\n two \n\xe4\xb8\xad\n!\n", got.out );

    Outcome absent = morvane( "store get doc b.x b b.z 'no path' a.b" );
    EXPECT_EQ( 1, absent.status );
    EXPECT_EQ( "last\n", absent.out );

    for( const char *name : { "store: b: ", "store: b.z: ", "store: no path: ", "store: a.b: " } )
        EXPECT_THAT( absent.err, testing::HasSubstr( name ) );
}

TEST( MorvaneStore, SetsOnlyTheLinesConcerned )
{
    write( "doc", DOCUMENT );
    EXPECT_EQ( 0, morvane( "store set doc b.y=three b.x='' d=4 b.z=% e.f.g=h" ).status );
    EXPECT_EQ(
        "# a comment\r\nb.y =three\r\nunknown line\na=1\n\nb.x=first\nb.x=\nb.z=%%\nc=中%00000a!\r\nd=4\r\ne.f.g=h\r\n",
        contentOf( "doc" ) );

    // A byte order mark and the other line ends stay too.
    write( "doc", "\ufeffa=1\vb=2\u2029c=3\u0085" );
    EXPECT_EQ( 0, morvane( "store set doc b=x c=y" ).status );
    EXPECT_EQ( "\ufeffa=1\vb=x\u2029c=y\u0085", contentOf( "doc" ) );

    // New lines go behind those that share the most levels, those of the same call among them.
    write( "doc", "a.x=1\nb.x=1\n#end\n" );
    EXPECT_EQ( 0, morvane( "store set doc b.y=2 a.y=2 b.z=3 a.y=4 c.d.e=5 c.d=6 c.d.f=7" ).status );
    EXPECT_EQ( "a.x=1\na.y=4\nb.x=1\nb.y=2\nb.z=3\n#end\nc.d.e=5\nc.d.f=7\nc.d=6\n", contentOf( "doc" ) );

    write( "doc", "" );
    EXPECT_EQ( 0, morvane( "store set doc a=1" ).status );
    EXPECT_EQ( "a=1\n", contentOf( "doc" ) );
}

TEST( MorvaneStore, DeletesAndMerges )
{
    write( "doc", DOCUMENT );
    EXPECT_EQ( 0, morvane( "store delete doc b.x c" ).status );
    EXPECT_EQ( "# a comment\r\nb.y = two \r\nunknown line\na=1\n\n", contentOf( "doc" ) );
    EXPECT_EQ( 0, morvane( "store delete doc b" ).status );
    EXPECT_EQ( "# a comment\r\nunknown line\na=1\n\n", contentOf( "doc" ) );

    Outcome absent = morvane( "store delete doc a b a.x" );
    EXPECT_EQ( 1, absent.status );
    EXPECT_EQ( "morvane store: b: no such entry\nmorvane store: a.x: no such entry\n", absent.err );
    EXPECT_EQ( "# a comment\r\nunknown line\na=1\n\n", contentOf( "doc" ) );

    write( "one", "a=0\nb.c=1\nempty.\n" );
    write( "two", "b.c=2\nb.d=3\nb.c.=\nb.c.e=4\nempty.\na.=" );
    EXPECT_EQ( 0, morvane( "store merge doc one two" ).status );
    EXPECT_EQ( "# a comment\r\nunknown line\na=1\n\nb.c=1\nempty.\na.\nb.d=3\nb.c.e=4\n", contentOf( "doc" ) );

    // Deleting takes all lines of an entry, and of entries in one another.
    write( "doc", "a.b=1\nx=1\na.b.c=2\na.bb=3\na.b.=4\na.b=5\na=6\na.b." );
    EXPECT_EQ( 0, morvane( "store delete doc a.b a.b.c" ).status );
    EXPECT_EQ( "x=1\na.bb=3\na=6\n", contentOf( "doc" ) );
}

TEST( MorvaneStore, ChecksEveryLine )
{
    write( "doc", "a=1\n#no=1\nb.c\nword\n\nd.e.=1\nf.\n" );
    Outcome checked = morvane( "store check doc" );
    EXPECT_EQ( 1, checked.status );
    EXPECT_EQ(
        "doc:2: what stands before the separator is no address\n"
        "doc:3: neither . nor = follows an address\n"
        "doc:4: neither . nor = follows an address\n"
        "doc:5: the line is empty\n"
        "doc:6: what stands before the separator is no address\n",
        checked.out );

    write( "doc", "a=1\nb.c=2\n" );
    EXPECT_EQ( 0, morvane( "store check doc" ).status );
}

TEST( MorvaneStore, TellsWhatIsWrongWithAFileAndChangesNothing )
{
    write( "doc", DOCUMENT );
    std::string deep;

    for( int level = 0; level < 120; level++ )
        deep += "\1\1\1\1a\0\1"s;

    write( "truncated", "\1\1\1\1"s );
    write( "trailing", "\0\0"s );
    write( "deep", deep );
    write( "invalid", "a=1\n\xff\n" );

    const Command ROWS[] = {
        { "$M store show nowhere", 1, "", "morvane store: nowhere: No such file or directory\n" },
        { "$M store set . a=1", 1, "", "morvane store: .: Is a directory\n" },
        { "$M store show truncated --binary", 1, "",
          "morvane store: truncated: truncated, or no document in binary form\n" },
        { "$M store decode trailing doc", 1, "", "morvane store: trailing: bytes behind the end of the document\n" },
        { "$M store decode deep doc", 1, "", "morvane store: deep: nested too deep\n" },
        { "$M store set invalid a=2", 1, "",
          "morvane store: invalid: not valid UTF-8; it could not be kept as it is\n" },
        { "$M store merge doc nowhere", 1, "", "morvane store: nowhere: No such file or directory\n" },
        { "$M store set doc a=1 \"b c=1\"", 1, "",
          "morvane store: b c=1: no path and value that a document can hold\n" },
    };

    expectOutcomes( ROWS );
    EXPECT_EQ( DOCUMENT, contentOf( "doc" ) );
    EXPECT_EQ( "a=1\n\xff\n", contentOf( "invalid" ) );
}

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
// Positions are found once, whatever the order of the lines and of what is set.
TEST( MorvaneStore, SetsManyValuesInLargeDocuments )
{
    const int   COUNT = 400000;
    std::string document, expected, words;

    for( int i = 0; i < COUNT; i++ )
    {
        std::string line = std::to_string( i % 1000 ) + ".k" + std::to_string( i ) + ".x=";
        document += line + "1\n";
        expected += line + ( i % 100 == 0 ? "2\n" : "1\n" );

        if( i % 100 == 0 )
            words += " " + line + "2";
    }

    write( "doc", document );
    EXPECT_EQ( 0, morvane( "store set doc" + words, "ulimit -t 8;" ).status );
    EXPECT_TRUE( expected == contentOf( "doc" ) );
}
#endif
