#include "morvane_run.h"

using namespace qv::test;

TEST( Morvane, ListsToolsAndTellsTheUsage )
{
    const std::string CASE =
        "usage: morvane text case --upper|--lower|--fold [--from CHARSET] [--to CHARSET] [--replace] "
        "[--in-place] [IN [OUT]|FILE...]\n";

    expectOutcomes( {
        { "for words in \"\" time \"time now\" \"text case --up absent\" \"module run\"; do $M $words --version; done "
          "| "
          "uniq -c",
          "      5 morvane 4.0.19\n" },
        { "$M text normalize --help x",
          "usage: morvane text normalize --form nfc|nfd|nfkc|nfkd [--from CHARSET] [--to CHARSET] [--replace] "
          "[--in-place] "
          "[IN [OUT]|FILE...]\n\nbrings text into a normal form\n\nOptions:\n"
          "  --form nfc|nfd|nfkc|nfkd  the normal form of Unicode\n"
          "  --from CHARSET            the character set of the input; UTF-8 by default\n"
          "  --to CHARSET              the character set of the output; UTF-8 by default\n"
          "  --replace                 puts U+FFFD or a question mark in the place of what is invalid, and goes on\n"
          "  --in-place                changes each of the files\n"
          "  -h, --help                prints this\n"
          "  --version                 prints the version\n\nExamples:\n"
          "  morvane text normalize --form nfc names.txt sorted.txt\n"
          "  morvane text normalize --form nfc --in-place *.txt\n" },
        { "$M text case --up -h absent | head -n 1", CASE },
        { "$M text case --lower -- --help", "", "morvane text: --help: No such file or directory\n" },
        { "$M module run --help | head -n 1", "usage: morvane module run NAME [ARGUMENT...]\n" },
        { "$M id x", "", "morvane id: x: one argument too many\nusage: morvane id\n", 2 },
        { "$M store get in", "",
          "morvane store: too few arguments\nusage: morvane store get [--default VALUE] FILE PATH...\n", 2 },
        { "$M text case --lower --upper", "",
          "morvane text: --upper, --lower, --fold: only one of these options\n" + CASE, 2 },
        { "$M text case", "", "morvane text: --upper, --lower, --fold: one of these options is needed\n" + CASE, 2 },
        { "$M store show --bin --binary in", "",
          "--binary: multiple options disallowed\nusage: morvane store show [--binary] FILE...\n", 2 },
        { "$M text case --title", "", "--title: option undefined\n" + CASE, 2 },
    } );

    for( const char *words : { "", "help", "--help", "-h" } )
        EXPECT_THAT( morvane( words ).out, testing::HasSubstr( "\n  store       reads, changes" ) ) << words;

    EXPECT_THAT( morvane( "store --help" ).out, testing::HasSubstr( "\n  check       names" ) );
}

// By the shells themselves, where they are there.
TEST( Morvane, CompletesWords )
{
    write( "complete", R"sh(. /dev/stdin <<<"$($M completion bash)"
compopt() { options="$*"; }
while read -r -a COMP_WORDS; do
    [[ ${COMP_WORDS[-1]} == . ]] && COMP_WORDS[-1]=
    COMP_CWORD=$(( ${#COMP_WORDS[@]} - 1 )) options=
    _morvane
    echo "${COMPREPLY[*]}$options"
done <<END
morvane t
morvane store .
morvane text case --f
morvane text case x --from UTF-16
morvane text lines --newline = c
morvane text lines .
morvane store get --default .
morvane time now .
morvane completion z
morvane manual u
END
)sh" );

    if( shell( "bash --version" ).status == 0 )
        expectOutcome(
            { "bash complete",
              "text time\nshow get set delete merge encode decode check --help --version\n"
              "--fold --from\nUTF-16 UTF-16BE UTF-16LE\ncr crlf\n-o default\n\n--help --version\nzsh\nunicode\n" } );

    if( shell( "zsh --version" ).status == 0 )
        expectOutcome( { "$M completion zsh | zsh -n", "" } );
}

// As the pages are read: without a word of the formatter, and with each option.
TEST( Morvane, HasAManual )
{
    if( shell( "groff --version" ).status != 0 )
        GTEST_SKIP() << "no groff";

    expectOutcomes( {
        { "for tool in \"\" $($M help | grep \"^  \" | cut -c 3-12); do $M manual $tool | groff -man -Tascii -ww "
          "-P-cbou | "
          "head -n 1; done | cut -c -20 | tr \"\\n\" .",
          "MORVANE(1)          .MORVANE-COMPLETION(1.MORVANE-ID(1)       .MORVANE-INFO(1)     .MORVANE-MANUAL(1)   ."
          "MORVANE-MODULE(1)   .MORVANE-RANDOM(1)   .MORVANE-STORE(1)    .MORVANE-TEXT(1)     .MORVANE-TIME(1)     ."
          "MORVANE-UNICODE(1)  ." },
        { "$M manual text | groff -man -Tascii -P-cbou | grep -c -E -- \"^ +--\"", "21\n" },
        { "$M manual tex", "", "morvane manual: tex: no such tool\n" },
    } );
}

TEST( Morvane, RefusesWrongUsage )
{
    // Of each kind of mistake one, and what each tool asks of its own words.
    const char *const WORDS[] = {
        "jump",
        "completion fish",
        "info more",
        "store",
        "store set doc nothing",
        "store show --binary --zoo doc",
        "text",
        "text normalize --form",
        "text normalize --form nfx",
        "text case --upper a b c",
        "text case --upper --in-place",
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
