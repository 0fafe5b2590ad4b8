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
        { "$M store show --help absent",
          "usage: morvane store show [--binary] FILE...\n\nprints documents in their canonical text form\n\nOptions:\n"
          "  --binary    reads the binary form\n  -h, --help  prints this\n  --version   prints the "
          "version\n\nExamples:\n"
          "  morvane store show server.conf\n  morvane store encode server.conf - | morvane store show --binary -\n" },
        { "$M text case --up -h absent | sed -n \"1p; /UTF/p\"",
          CASE
              + "  --from CHARSET  the character set of the input; UTF-8 by default\n"
                "  --to CHARSET    the character set of the output; UTF-8 by default\n" },
        { "$M text case --lower -- --help", "", "morvane text: --help: No such file or directory\n" },
        { "$M module run --help | head -n 1", "usage: morvane module run NAME [ARGUMENT...]\n" },
        { "for option in \"\" help --help -h; do $M $option; done | grep -c \"^  store       reads, changes\"", "4\n" },

        // Each kind of mistake.
        { "$M id x", "", "morvane id: x: one argument too many\nusage: morvane id\n", 2 },
        { "$M random bytes", "", "morvane random: too few arguments\nusage: morvane random bytes COUNT\n", 2 },
        { "$M store show --bin --binary in", "",
          "--binary: multiple options disallowed\nusage: morvane store show [--binary] FILE...\n", 2 },
        { "$M text case --lower --upper", "",
          "morvane text: --upper, --lower, --fold: only one of these options\n" + CASE, 2 },
        { "$M text case", "", "morvane text: --upper, --lower, --fold: one of these options is needed\n" + CASE, 2 },
        { "$M text case --title", "", "--title: option undefined\n" + CASE, 2 },
    } );
}

// By the shells themselves, where they are there.
TEST( Morvane, CompletesWords )
{
    write( "complete", R"sh(. /dev/stdin <<<"$($M completion bash)"; compopt() { options="$*"; }
for line in "store " "text case x --from UTF-16" "text lines --newline = c" "text lines --f" "text lines " \
    "store get --default " "manual u"; do
    COMP_WORDS=( morvane $line ) options=
    COMP_CWORD=${#COMP_WORDS[@]}
    [[ $line == *" " ]] || (( COMP_CWORD-- ))
    _morvane; echo "${COMPREPLY[*]}$options"
done)sh" );

    if( shell( "bash --version" ).status == 0 )
        expectOutcome(
            { "LC_ALL=C bash complete", "show get set delete merge encode decode check --help --version\n"
                                        "UTF-16 UTF-16BE UTF-16LE\ncr crlf\n--from\n-o default\n\nunicode\n" } );

    if( shell( "zsh --version" ).status == 0 )
        expectOutcome( { "$M completion zsh | zsh -n", "" } );
}

// As the pages are read: without a word of the formatter, and with each option.
TEST( Morvane, HasAManual )
{
    if( shell( "groff --version" ).status == 0 )
        expectOutcomes( {
            { "for tool in \"\" $($M help | grep \"^  \" | cut -c 3-12); do $M manual $tool | groff -man -Tascii -ww "
              "-P-cbou; "
              "done | grep -c \"^MORVANE.*User Commands\"",
              "11\n" },
            { "$M manual text | groff -man -Tascii -P-cbou | grep -c -E -- \"^ +--\"", "21\n" },
            { "$M manual tex", "", "morvane manual: tex: no such tool\n" },
        } );
}

TEST( Morvane, RefusesWrongUsage )
{
    // What each tool asks of its own words.
    write(
        "words",
        "jump\nstore\nstore set doc nothing\ntext normalize --form\ntext normalize --form nfx\n"
        "text case --upper a b c\ntext case --upper --in-place\ntext lines --newline lf --newline cr\n"
        "text convert --from utf-8\ntext convert --from utf-8 --to utf-8 --invalid drop\ntime shift 2024\n"
        "time shift 2024 --m 1\ntime zones x\nmodule run\nunicode show\nunicode list scripts\ncompletion fish\n" );
    expectOutcome(
        { "while read -r words; do $M $words </dev/null 2>wrong; echo $? $(grep -c \"^usage: morvane \" wrong); done "
          "<words | "
          "uniq -c",
          "     17 2 1\n" } );
}
