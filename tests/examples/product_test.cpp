#include "qv_test_program.h"

using namespace qv::test;

namespace
{
Outcome product( const std::string &words, const std::string &folder = MODULE_FOLDER )
{
    return run(
        PRODUCT_EXECUTABLE, words,
        "XZ_MORVANE_BIN_PATH='" + folder + "' ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0" ); // some leak on purpose
}
} // namespace

// From the start over a module, a document, a thread, a timer and a signal to the print hook and the stop.
TEST( Product, RunsAModuleOfEitherLanguage )
{
    const struct
    {
        const char *document;
        const char *name;
        int         status;
        const char *out;
    } CASES[] = {
        { "reminder.delay=0x14\nreminder.text=%000020Fertig %01F375 und 100%%\n", "document", 0,
          " Fertig \xf0\x9f\x8d\xb5 und 100%, after 20 milliseconds\n" },
        { "reminder.delay=soon\nreminder.text=x\n", "document", 1, "the document holds no reminder\n" },
        { "reminder.delay=-1\nreminder.text=x\n", "document", 1, "the document holds no reminder\n" },
        { "", "absent", 1, "the document holds no reminder\n" },
        { "", "", 2, "a reminder needs the name of a document\n" },
    };

    for( const auto &row : CASES )
        for( const char *module : { "reminder_c ", "reminder_cpp " } )
        {
            write( "document", row.document );
            Outcome outcome = product( std::string( module ) + row.name );
            EXPECT_EQ( row.status, outcome.status ) << module << row.document;
            EXPECT_EQ( row.out, outcome.out ) << module << row.document;
        }
}

TEST( Product, NoticesBadModulesAndWhatSurvives )
{
    EXPECT_EQ( 2, product( "" ).status );
    EXPECT_EQ( 0, product( "result 0", TEST_MODULE_FOLDER ).status );
    EXPECT_EQ( 3, product( "leaking 0", TEST_MODULE_FOLDER ).status );
    EXPECT_THAT( contentOf( "out" ), testing::HasSubstr( "\nQV_STRING (1) 0\n" ) );

    for( const char *words : { "reminder_x document", "../reminder_c document" } )
        EXPECT_EQ( "the module cannot be loaded\n", product( words ).err );

    Outcome bare = product( "bare", TEST_MODULE_FOLDER );
    EXPECT_EQ( 1, bare.status );
    EXPECT_EQ( "the module is no program\n", bare.err );
}
