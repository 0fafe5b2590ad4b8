#include "qv_test_program.h"

using namespace qv::test;

namespace
{
const std::string MODULES = "XZ_MORVANE_BIN_PATH='" MODULE_FOLDER "'";

Outcome product( const std::string &words )
{
    return run( PRODUCT_EXECUTABLE, words, MODULES );
}
} // namespace

// From the start over a module, a document, a thread, a timer and a signal to the print hook and the stop.
TEST( Product, RunsAModuleOfEitherLanguageAndLeavesNothingBehind )
{
    write( "document", "reminder.delay=0x14\nreminder.text=%000020Fertig %01F375 und 100%%\n" );

    for( const char *module : { "reminder_c", "reminder_cpp" } )
    {
        Outcome outcome = product( std::string( module ) + " document" );
        EXPECT_EQ( " Fertig \xf0\x9f\x8d\xb5 und 100%, after 20 milliseconds\n", outcome.out ) << module;
        EXPECT_EQ( "", outcome.err );
        EXPECT_EQ( 0, outcome.status );
    }
}

TEST( Product, NoticesWhatSurvives )
{
    const char *variables = "XZ_MORVANE_BIN_PATH='" TEST_MODULE_FOLDER "' ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0";

    EXPECT_EQ( 0, run( PRODUCT_EXECUTABLE, "result 0", variables ).status );

    Outcome outcome = run( PRODUCT_EXECUTABLE, "leaking 0", variables );
    EXPECT_THAT( outcome.out, testing::HasSubstr( "\nQV_STRING (1) 0\n" ) );
    EXPECT_EQ( 3, outcome.status );
}

TEST( Product, TakesNoHarmFromBadInput )
{
    struct
    {
        const char *document;
        const char *words;
        int         status;
    } const CASES[] = {
        { "reminder.delay=1\n", "document", 1 },
        { "reminder.delay=soon\nreminder.text=x\n", "document", 1 },
        { "reminder.delay=-1\nreminder.text=x\n", "document", 1 },
        { "", "document", 1 },
        { "", "absent", 1 },
        { "", "", 2 },
    };

    for( const auto &row : CASES )
    {
        write( "document", row.document );

        for( const char *module : { "reminder_c ", "reminder_cpp " } )
            EXPECT_EQ( row.status, product( std::string( module ) + row.words ).status ) << module << row.words;
    }

    for( const char *words : { "reminder_x document", "../reminder_c document" } )
    {
        Outcome outcome = product( words );
        EXPECT_EQ( 1, outcome.status );
        EXPECT_EQ( "the module cannot be loaded\n", outcome.err );
    }

    Outcome bare = run( PRODUCT_EXECUTABLE, "bare", "XZ_MORVANE_BIN_PATH='" TEST_MODULE_FOLDER "'" );
    EXPECT_EQ( 1, bare.status );
    EXPECT_EQ( "the module is no program\n", bare.err );
    EXPECT_EQ( 2, product( "" ).status );
}
