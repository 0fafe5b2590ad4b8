#include "qv_test_child.h"
#include "qv_test_program.h"
#include "qv_test_support.h"

#include "qv/qv.h"

#include <cstdlib>

using qv::Ref;
using namespace qv::test;

namespace
{
enum
{
    OUTPUT,
    TOP,
    FORM,
    WAIT,
    SHARE,
    ALL,
    SECRET
};

Ref< QV_OPTIONS > sample( const char *words )
{
    Ref< QV_OPTIONS > options( qvOptionsCreateCstr( "sample", -1, words, -1, "Shows what it is given, once.", -1 ) );
    auto              add = [&]( QV_CHAR letter, const char *name, QV_INT type, const char *text )
    { return qvOptionsAddCstr( options.at(), letter, name, -1, type, text, -1 ); };

    EXPECT_EQ( OUTPUT, add( U'o', "output=FILE", QV_OPTION_TYPE_FILE, "the file to write" ) );
    EXPECT_EQ( TOP, add( U'n', "top=COUNT", QV_OPTION_TYPE_INTEGER, "how many of them there are to be shown" ) );
    qvOptionsBeginGroupCstr( options.at(), "Rare options", -1 );
    EXPECT_EQ( FORM, add( U'f', "form=nfc|nfd", QV_OPTION_TYPE_CHOICE, "the form [of 'text']" ) );
    EXPECT_EQ( WAIT, add( 0, "wait=TIME", QV_OPTION_TYPE_DURATION, "how long" ) );
    EXPECT_EQ( SHARE, add( 0, "share", QV_OPTION_TYPE_REAL, "how much" ) );
    EXPECT_EQ( ALL, add( U'a', "a-name-that-is-too-long-for-the-column", QV_OPTION_TYPE_FLAG, "all" ) );
    EXPECT_EQ( SECRET, add( U's', "secret", QV_OPTION_TYPE_TEXT, "hidden" ) );
    qvOptionsSetRange( options.at(), TOP, -1, 1000 );
    qvOptionsSetRealRange( options.at(), SHARE, 0, 1 );
    qvOptionsSetDefaultCstr( options.at(), TOP, "10", -1 );
    qvOptionsSetFlags( options.at(), FORM, QV_OPTION_FLAG_ONCE );
    qvOptionsSetFlags( options.at(), SECRET, QV_OPTION_FLAG_HIDDEN );
    return options;
}

Ref< QV_VECTOR > vectorOf( const std::string &words )
{
    Ref< QV_STRING > all = text( words );
    return Ref< QV_VECTOR >( words.empty() ? qvVectorCreate() : qvStringSplitWhitespace( all, -1 ) );
}

// What a command line says, or the mistake in it.
std::string read( Ref< QV_OPTIONS > &options, const std::string &line )
{
    if( !qvOptionsRead( options.at(), vectorOf( line ) ) )
        return std::string( "!" ) + take( qvOptionsError( options ) );

    Ref< QV_VECTOR > words( qvOptionsWords( options ) ), outputs( qvOptionsStrings( options, OUTPUT ) );
    EXPECT_FALSE( qvOptionsHasError( options ) );
    return take( qvStringCreateFromFormatCstr(
        "%s %i %i %i %.1r %i %s", -1, Ref< QV_STRING >( qvVectorToString( outputs ) ).get(),
        qvOptionsInt( options, TOP ), qvOptionsInt( options, FORM ), qvOptionsInt( options, WAIT ),
        qvOptionsReal( options, SHARE ), qvOptionsCount( options, ALL ),
        Ref< QV_STRING >( qvVectorToString( words ) ).get() ) );
}
} // namespace

TEST( Options, AreReadAndChecked )
{
    Ref< QV_OPTIONS > options   = sample( "[FILE...]" );
    const char *const ROWS[][2] = {
        { "", "<> 10 -1 0 0.0 0 <>" },
        { "-o x --output=y -n5 --top 7 a b", "<x, y> 7 -1 0 0.0 0 <a, b>" },
        { "--form nfd -aa --wait=1h30m --share .5 -- -n", "<> 10 1 5400000 0.5 2 <-n>" },
        { "--wait 90", "<> 10 -1 90000 0.0 0 <>" },
        { "--wait 1.5d250ms", "<> 10 -1 129600250 0.0 0 <>" },
        { "--top -1", "<> -1 -1 0 0.0 0 <>" },
        { "--top many", "!--top: 'many' is not an integer from -1 to 1000" },
        { "--top 1001", "!--top: '1001' is not an integer from -1 to 1000" },
        { "--form nfkc", "!--form: 'nfkc' is not one of nfc|nfd" },
        { "--form nfc --form nfc", "!--form: multiple options disallowed" },
        { "--share=1.5", "!--share: '1.5' is not a number from 0 to 1" },
        { "--share nan", "!--share: 'nan' is not a number from 0 to 1" },
        { "--wait 5x", "!--wait: '5x' is not a duration like 90s or 1h30m" },
        { "--wait 1h5", "!" },
        { "--wait .s", "!" },
        { "--wait -1", "!" },
        { "--wait 1e3", "!" },
        { "--wait 106751991168d", "!" },
        { "--wait 99999999999999999999999ms", "!" },
        { "--unknown", "!--unknown: option undefined" },
        { "--out", "!--out: argument missing" },
    };

    for( const auto &[line, expected] : ROWS )
    {
        std::string told = read( options, line );
        EXPECT_EQ( expected, told.substr( 0, strlen( expected ) == 1 ? 1 : std::string::npos ) ) << line;
    }

    // What stands before a mistake has been read, and a copy keeps what was read.
    EXPECT_EQ( "!-z: option undefined", read( options, "-a -z" ) );
    Ref< QV_OPTIONS > copy = Ref< QV_OPTIONS >::share( options );
    EXPECT_EQ( "<> 10 -1 0 0.0 0 <>", read( options, "" ) );
    EXPECT_EQ( 1, qvOptionsCount( copy, ALL ) );
    EXPECT_TRUE( qvOptionsHasError( copy ) );

    qvOptionsSetFlags( options.at(), SECRET, QV_OPTION_FLAG_REQUIRED );
    EXPECT_EQ( "!--secret: this option is needed", read( options, "" ) );
    qvOptionsSetDefaultCstr( options.at(), FORM, "nfx", -1 );
    EXPECT_EQ( "!--form: 'nfx' is not one of nfc|nfd", read( options, "-s x" ) );

    // Only the bounds that there are are told.
    qvOptionsSetRange( options.at(), TOP, QV_INT_MIN, 5 );
    qvOptionsSetRange( options.at(), WAIT, 1000, QV_INT_MAX );
    EXPECT_EQ( "!--top: '6' is not an integer of at most 5", read( options, "--top 6" ) );
    EXPECT_EQ(
        "!--wait: '1ms' is not a duration like 90s or 1h30m of at least 1000 milliseconds",
        read( options, "--wait 1ms" ) );

    const char *const WORDS[][3] = {
        { "FILE OUT", "a", "!too few arguments" },
        { "FILE OUT", "a b", "" },
        { "FILE OUT", "a b c", "!c: one argument too many" },
        { "[IN [OUT]]", "", "" },
        { "[IN [OUT]]", "a b c", "!c: one argument too many" },
        { "", "a", "!a: one argument too many" },
        { "FILE...", "", "!too few arguments" },
        { "FILE...", "a b c", "" },
    };

    for( const auto &[usage, line, expected] : WORDS )
    {
        Ref< QV_OPTIONS > each = sample( usage );
        std::string       told = read( each, line );
        EXPECT_EQ( expected, *expected ? told : "" ) << usage << ": " << line;
        EXPECT_EQ( *expected == '!', told[0] == '!' ) << usage << ": " << line;
    }

    auto add = [&]( QV_CHAR letter, const char *name )
    { qvOptionsAddCstr( options.at(), letter, name, -1, 0, "", -1 ); };
    EXPECT_BROKEN( add( 0, "top" ), "otherByName < 0" );
    EXPECT_BROKEN( add( U'n', "new" ), "otherByChar < 0" );
    EXPECT_BROKEN( add( 0, "=X" ), "nameLength > 0" );
    EXPECT_BROKEN(
        qvOptionsInt( options, OUTPUT ),
        "type == QV_OPTION_TYPE_INTEGER || type == QV_OPTION_TYPE_CHOICE || type == QV_OPTION_TYPE_DURATION" );
    EXPECT_BROKEN( qvOptionsHas( options, 7 ), "option < options->count" );
}

TEST( Options, MakeUsageAndCompletion )
{
    Ref< QV_OPTIONS > options = sample( "[FILE...]" );
    qvOptionsSetFlags( options.at(), FORM, QV_OPTION_FLAG_REQUIRED );
    qvOptionsSetNotesCstr( options.at(), "Examples:\n  sample -n 5", -1 );

    EXPECT_EQ(
        R"(Usage: sample --form=nfc|nfd [OPTION...]
       [FILE...]

Shows what it is given, once.

Options:
  -o, --output=FILE   the file to write
  -n, --top=COUNT     how many of them there
                      are to be shown; 10 by
                      default

Rare options:
  -f, --form=nfc|nfd  the form [of 'text']
      --wait=TIME     how long
      --share=VALUE   how much
  -a, --a-name-that-is-too-long-for-the-column
                      all

Examples:
  sample -n 5
)",
        take( qvOptionsUsage( options, 46 ) ) );

    // No line is wider than asked for where that can be, and the widest has all in one.
    EXPECT_NE( std::string::npos, take( qvOptionsUsage( options, -1 ) ).find( "to be shown; 10 by default\n" ) );
    EXPECT_NE( std::string::npos, take( qvOptionsUsage( options, 0 ) ).find( "how many of them\n" ) );

    const struct
    {
        const char *words, *completed;
    } ROWS[] = {
        { "sample --f", "--form" },          { "sample --form n", "nfc nfd" }, { "sample -f ''", "nfc nfd" },
        { "sample --form = ''", "nfc nfd" }, { "sample --s", "--share" },      { "sample --wait ''", "" },
    };

    qv::test::write( "completion.bash", take( qvOptionsCompletion( options, QV_OPTIONS_SHELL_BASH ) ) );
    std::string script = "compopt() { COMPREPLY=( files ); }; . '" + path( "completion.bash" )
                         + "'; set -u; complete_() { "
                           "COMP_WORDS=( \"$@\" ); COMP_CWORD=$(( $# - 1 )); _sample; echo \"${COMPREPLY[*]-}\"; }; ";
    std::string expected;

    for( const auto &row : ROWS )
    {
        script += std::string( "complete_ " ) + row.words + "; ";
        expected += std::string( row.completed ) + "\n";
    }

    qv::test::write( "complete.bash", script + "complete_ sample x; complete_ sample -o x\n" );
    EXPECT_EQ( expected + "files\nfiles\n", run( "bash", path( "complete.bash" ) ).out );

    qv::test::write( "_sample", take( qvOptionsCompletion( options, QV_OPTIONS_SHELL_ZSH ) ) );

    if( system( "command -v zsh >/dev/null" ) == 0 )
    {
        EXPECT_EQ( "", run( "zsh", "-n " + path( "_sample" ) ).err );
    }

    std::string zsh = contentOf( "_sample" );
    EXPECT_NE( std::string::npos, zsh.find( "'*'{-f+,--form=}'[the form \\[of '\\''text'\\''\\]]:nfc|nfd:(nfc nfd)'" ) )
        << zsh;
    EXPECT_EQ( std::string::npos, zsh.find( "secret" ) );
}

TEST( Options, AnswerForMain )
{
    auto main = []( std::vector< const char * > words )
    {
        words.insert( words.begin(), "sample" );
        std::string output = path( "main.output" );
        Ending      ending = inOwnRun(
            [&]
            {
                restart( QV_RUNTIME_FLAG_MINIMAL, "sample", nullptr, "1.5" );
                EXPECT_TRUE( freopen( output.c_str(), "w", stdout ) );
                Ref< QV_OPTIONS > options = sample( "[FILE...]" );
                QV_INT            status  = qvOptionsReadMain(
                    options.at(), static_cast< QV_INT >( words.size() ), const_cast< char *const * >( words.data() ) );
                fflush( stdout );
                _exit( static_cast< int >( status + 10 ) );
            } );
        return std::to_string( ending.status - 10 ) + " " + contentOf( "main.output" ) + ending.errors;
    };

    EXPECT_EQ( "-1 ", main( { "-n", "5", "word" } ) );
    EXPECT_EQ( "0 sample 1.5\n", main( { "--version" } ) );
    std::string help = main( { "-h", "--top=x" } );
    EXPECT_EQ( "0 Usage: sample [OPTION...] [FILE...]\n", help.substr( 0, 38 ) );
    EXPECT_LT( help.find( "--help " ), help.find( "Rare options" ) );
    EXPECT_EQ( "0 # Completion of sample for bash.\n", main( { "--completion", "bash" } ).substr( 0, 35 ) );
    EXPECT_EQ(
        "2 sample: --top: 'x' is not an integer from -1 to 1000\nUsage: sample [OPTION...] [FILE...]\n",
        main( { "--top=x", "-h" } ) );
    EXPECT_EQ( "2 sample: 'a\uFFFD' is not valid UTF-8\n", main( { "a\xff" } ).substr( 0, 36 ) );
}
