#include "morvane_run.h"

using namespace qv::test;

TEST( Morvane, ListsToolsAndTellsTheUsage )
{
    const Command ROWS[] = {
        { "$M --version", 0, "morvane 4.0.19\n", "" },
        { "$M store get --help", 0, "usage: morvane store get FILE PATH...\n", "" },
        { "$M text lines in --newl lf --help absent", 0,
          "usage: morvane text lines --newline lf|cr|crlf|nel|vt|ff|ls|ps [IN [OUT]]\n", "" },
        { "$M text case --lower -- --help", 1, "", "morvane text: --help: No such file or directory\n" },
        { "$M module run --help", 0, "usage: morvane module run NAME [ARGUMENT...]\n", "" },
        { "$M time now --help; $M id --help", 0, "usage: morvane time now\nusage: morvane id\n", "" },
        { "$M id x", 2, "", "usage: morvane id\n" },
        { "$M store show --bin --binary in", 2, "",
          "--binary: multiple options disallowed\nusage: morvane store show FILE [--binary]\n" },
        { "$M text case --title", 2, "",
          "--title: option undefined\nusage: morvane text case --upper|--lower|--fold [IN [OUT]]\n" },
    };

    expectOutcomes( ROWS );

    for( const char *words : { "", "help", "--help" } )
        EXPECT_THAT( morvane( words ).out, testing::HasSubstr( "\n  store     reads, changes" ) ) << words;

    EXPECT_THAT( morvane( "store --help" ).out, testing::HasSubstr( "\n  check     names" ) );
    EXPECT_THAT( morvane( "jump" ).err, testing::HasSubstr( "usage: morvane TOOL" ) );
}

TEST( Morvane, RefusesWrongUsage )
{
    // Of each kind of mistake one, and what each tool asks of its own words.
    for( const char *words :
         { "jump",
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
           "unicode list scripts" } )
    {
        Outcome outcome = morvane( std::string( words ) + " </dev/null" );
        EXPECT_EQ( 2, outcome.status ) << words;
        EXPECT_EQ( "", outcome.out ) << words;
        EXPECT_THAT( outcome.err, testing::HasSubstr( "usage: morvane " ) ) << words;
    }
}
