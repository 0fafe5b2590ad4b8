#include "morvane_run.h"

#include <algorithm>
#include <filesystem>

using namespace qv::test;

namespace
{
// More than what is in work at a time, with a mark at every place where pieces can meet.
std::string longText( const std::string &pair, const std::string &start )
{
    std::string content = start;

    while( content.size() < 300000 )
        content += pair;

    return content;
}
} // namespace

TEST( MorvaneText, NormalizesBetweenStreamsAndFiles )
{
    write( "in", longText( "e\xcc\x81", "" ) );
    EXPECT_EQ( 0, morvane( "text normalize --form nfc in result" ).status );
    std::string composed = contentOf( "result" );
    EXPECT_EQ( contentOf( "in" ).size() / 3 * 2, composed.size() );
    EXPECT_EQ( std::string::npos, composed.find( '\xcc' ) );

    Outcome decomposed = morvane( "text normalize --form=nfd <result" );
    EXPECT_EQ( 0, decomposed.status );
    EXPECT_EQ( contentOf( "in" ), decomposed.out );

    // In place, with what is no UTF-8 replaced and a byte order mark kept.
    write( "in", "\xef\xbb\xbf\xef\xac\x81 \xff\xe2\x84\xab" );
    EXPECT_EQ( 0, morvane( "text normalize --form nfkc in in" ).status );
    EXPECT_EQ( "\xef\xbb\xbf" "fi \xef\xbf\xbd\xc3\x85", contentOf( "in" ) );

    write( "in", "" );
    EXPECT_EQ( "", morvane( "text normalize --form nfkd in" ).out );
}

TEST( MorvaneText, MapsCaseAlsoWhereItLengthens )
{
    write( "in", longText( "\xc3\x9f", "a" ) );
    Outcome upper = morvane( "text case --upper <in" );
    EXPECT_EQ( 0, upper.status );
    EXPECT_EQ( longText( "SS", "A" ), upper.out );

    write( "in", "\xc3\x89" "A\xc3\x9f" );
    EXPECT_EQ( "\xc3\xa9" "a\xc3\x9f", morvane( "text case --lower in" ).out );
    EXPECT_EQ( "\xc3\xa9" "ass", morvane( "text case --fold in" ).out );
}

TEST( MorvaneText, LeavesFilesAloneWhenSomethingFails )
{
    write( "in", "text" );
    write( "kept", "old" );

    Outcome absent = morvane( "text normalize --form nfc absent kept" );
    EXPECT_EQ( 1, absent.status );
    EXPECT_EQ( "morvane text: absent: No such file or directory\n", absent.err );

    EXPECT_EQ( 1, morvane( "text case --lower . kept" ).status );
    EXPECT_EQ( 1, morvane( "text case --lower in no/such/folder" ).status );
    EXPECT_EQ( 1, morvane( "text case --lower in ." ).status );
    EXPECT_EQ( "old", contentOf( "kept" ) );

    // Nothing is left beside the files.
    for( auto &entry : std::filesystem::directory_iterator( scratch() ) )
        EXPECT_EQ( std::string::npos, entry.path().filename().string().find( "kept." ) );

    Outcome full = morvane( "text case --lower in /dev/full" );
    EXPECT_EQ( 1, full.status );
    EXPECT_EQ( "morvane text: /dev/full: No space left on device\n", full.err );
}

TEST( MorvaneText, ClosedStreamsAreNotMistakenForFiles )
{
    write( "in", "text" );

    EXPECT_EQ( "TEXT", morvane( "text case --upper in <&-" ).out );
    EXPECT_EQ( "morvane text: standard input: Bad file descriptor\n",
               morvane( "text case --upper 2>&1 <&- | head -c 100" ).out );
    EXPECT_EQ( 1, morvane( "text case --upper in >&-; exit $?; :" ).status );
    EXPECT_EQ( 1, morvane( "id >&-; exit $?; :" ).status );
    EXPECT_EQ( "text", contentOf( "in" ) );
}

TEST( MorvaneText, RefusesWrongUsage )
{
    for( const char *words :
         { "text", "text normalize", "text normalize --form nfx", "text normalize --form", "text case",
           "text case --upper --lower", "text case --upper a b c", "text case --title" } )
    {
        Outcome outcome = morvane( std::string( words ) + " </dev/null" );
        EXPECT_EQ( 2, outcome.status ) << words;
        EXPECT_THAT( outcome.err, testing::HasSubstr( "usage: morvane text " ) ) << words;
        EXPECT_EQ( "", outcome.out ) << words;
    }
}

TEST( MorvaneUnicode, ShowsCharacters )
{
    Outcome shown = morvane( "unicode show 'a\xc3\xa9' U+301 U+FB01 u+ab U+AC01 U+D800 U+10FFFF" );
    EXPECT_EQ( 0, shown.status );
    EXPECT_THAT(
        shown.out,
        testing::StartsWith(
            "U+0061 a; Ll (Letter, Lowercase); class 0; Latin; upper U+0041\n"
            "U+00E9 \xc3\xa9; Ll (Letter, Lowercase); class 0; Latin; decomposition U+0065 U+0301; upper U+00C9\n"
            "U+0301  \xcc\x81; Mn (Mark, Nonspacing); class 230 (Above); Inherited\n"
            "U+FB01 \xef\xac\x81; Ll (Letter, Lowercase); class 0; Latin; decomposition <compat> U+0066 U+0069; "
            "upper U+0046 U+0049; fold U+0066 U+0069\n"
            "U+0075 u;" ) );
    EXPECT_THAT(
        shown.out,
        testing::EndsWith(
            "U+AC01 \xea\xb0\x81; Lo (Letter, Other); class 0; Hangul; decomposition U+1100 U+1161 U+11A8\n"
            "U+D800; Cs (Other, Surrogate); class 0; Unknown\n"
            "U+10FFFF; Cn (Other, Not Assigned); class 0; Unknown\n" ) );

    Outcome wrong = morvane( "unicode show U+110000 b" );
    EXPECT_EQ( 1, wrong.status );
    EXPECT_THAT( wrong.err, testing::HasSubstr( "U+110000: there is no such code point" ) );
    EXPECT_THAT( wrong.out, testing::StartsWith( "U+0062 b;" ) );
    EXPECT_EQ( "", morvane( "unicode show U+10000000000000061" ).out );
    EXPECT_EQ( 2, morvane( "unicode show" ).status );
}

TEST( MorvaneUnicode, ListsCharsets )
{
    Outcome listed = morvane( "unicode list charsets" );
    EXPECT_EQ( 0, listed.status );
    EXPECT_EQ( 51, std::count( listed.out.begin(), listed.out.end(), '\n' ) );
    EXPECT_THAT( listed.out, testing::HasSubstr( "\nwindows-1252     1252\n" ) );
    EXPECT_THAT( listed.out, testing::HasSubstr( "\nUTF-16\n" ) );
    EXPECT_EQ( 2, morvane( "unicode list" ).status );
    EXPECT_EQ( 2, morvane( "unicode list scripts" ).status );
}
