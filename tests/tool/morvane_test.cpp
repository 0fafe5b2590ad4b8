#include "morvane_run.h"

using namespace qv::test;

TEST( Morvane, ListsToolsAndTellsTheUsage )
{
    const std::string CASE = "usage: morvane text case --upper|--lower|--fold [IN [OUT]]\n";

    expectOutcomes( {
        { "$M --version", "morvane 4.0.19\n" },
        { "$M store get --help", "usage: morvane store get FILE PATH...\n" },
        { "$M text case --up --help absent", CASE },
        { "$M text case --lower -- --help", "", "morvane text: --help: No such file or directory\n" },
        { "$M module run --help", "usage: morvane module run NAME [ARGUMENT...]\n" },
        { "$M id x", "", "usage: morvane id\n", 2 },
        { "$M store show --bin --binary in", "",
          "--binary: multiple options disallowed\nusage: morvane store show FILE [--binary]\n", 2 },
        { "$M text case --title", "", "--title: option undefined\n" + CASE, 2 },
    } );

    for( const char *words : { "", "help", "--help" } )
        EXPECT_THAT( morvane( words ).out, testing::HasSubstr( "\n  store     reads, changes" ) ) << words;

    EXPECT_THAT( morvane( "store --help" ).out, testing::HasSubstr( "\n  check     names" ) );
}

TEST( Morvane, RefusesWrongUsage )
{
    // Of each kind of mistake one, and what each tool asks of its own words.
    const char *const WORDS[] = {
        "jump",
        "info more",
        "store",
        "store get",
        "store set doc nothing",
        "store show --binary --zoo doc",
        "text",
        "text normalize --form",
        "text normalize --form nfx",
        "text case",
        "text case --upper --lower",
        "text case --upper a b c",
        "text lines --newline lf --newline cr",
        "text convert --from utf-8",
        "text convert --from utf-8 --to utf-8 --invalid drop",
        "time shift 2024",
        "time shift 2024 --m 1",
        "time zones x",
        "random int 1",
        "module show a b",
        "module run",
        "unicode show",
        "unicode list scripts" };

    for( const char *words : WORDS )
    {
        Outcome outcome = morvane( std::string( words ) + " </dev/null" );
        EXPECT_EQ( 2, outcome.status ) << words;
        EXPECT_EQ( "", outcome.out ) << words;
        EXPECT_THAT( outcome.err, testing::HasSubstr( "usage: morvane " ) ) << words;
    }
}
