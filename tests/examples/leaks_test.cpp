#include "qv_test_program.h"

using namespace qv::test;

TEST( Leaks, AreToldBySortCountTextAndOrigin )
{
    // What leaks here leaks on purpose.
    Outcome outcome = run(
        LEAKS_EXECUTABLE, "", "XZ_MORVANE_BIN_PATH='" MODULE_FOLDER "' ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0" );
    ASSERT_EQ( 0, outcome.status ) << outcome.err;

    // The report of the unload, which comes once: then the note is given up. Then what is left of the library's families.
    size_t            at   = 0;
    const std::string RULE = std::string( 90, '-' ) + "\n";

    for( const std::string &next :
         { RULE + "Product   : morvane\n", RULE + "QV_NOTE 1\n\nQV_NOTE (1) a forgotten note\n\t",
           std::string( "(qvNoteCreate+" ), std::string( "(forgetNote+" ), RULE + "Product   : morvane\n",
           RULE + "QV_STRING ", std::string( "QV_STORE  1\n" ), std::string( "QV_STRING (1) a forgotten text\n" ),
           std::string( "QV_STORE (1)" ), std::string( "(forgetDocument+" ) } )
    {
        at = outcome.out.find( next, at );
        ASSERT_NE( std::string::npos, at ) << next << outcome.out;
        at += next.size() - 1;
    }
}
