#include "qv_test_program.h"

#include <map>
#include <sstream>
#include <vector>

using namespace qv::test;

namespace
{
using Lines = std::vector< std::string >;

// What a report holds.
struct Report
{
    std::map< std::string, int > counts;  // by sort
    std::map< std::string, int > objects; // by sort too, counted from the lines of the objects
    std::map< std::string, Lines > logs;  // by the line of the object
};

const std::string RULE( 90, '-' );

// Reads a report from the line behind its rule on, up to the next rule or the end.
Report readReport( Lines::const_iterator &line, Lines::const_iterator end )
{
    Report report;

    for( ; line != end && !line->empty() && *line != RULE; ++line )
    {
        std::istringstream words( *line );
        std::string        sort;
        words >> sort >> report.counts[sort];
    }

    std::string object;

    while( line != end && *line != RULE )
    {
        if( line->starts_with( "QV_" ) )
        {
            object = *line;
            report.objects[object.substr( 0, object.find( ' ' ) )]++;
            report.logs[object];
        }
        else if( line->starts_with( "\t" ) && line->size() > 1 )
            report.logs[object].push_back( *line );

        ++line;
    }

    return report;
}

// The functions that a stack has to name, the innermost one first.
void expectStack( const Lines &log, const Lines &functions )
{
    auto line = log.begin();

    for( const std::string &function : functions )
    {
        while( line != log.end() && line->find( "(" + function + "+" ) == std::string::npos )
            ++line;

        EXPECT_NE( log.end(), line ) << function << " isn't in its place in\n" << testing::PrintToString( log );
    }
}
} // namespace

TEST( Leaks, AreToldBySortCountTextAndOrigin )
{
    // What leaks here leaks on purpose.
    Outcome outcome = run(
        LEAKS_EXECUTABLE, "", "XZ_MORVANE_BIN_PATH='" MODULE_FOLDER "' ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0" );
    ASSERT_EQ( 0, outcome.status ) << outcome.err;

    Lines              lines;
    std::istringstream text( outcome.out );

    for( std::string line; std::getline( text, line ); )
        lines.push_back( line );

    // The head, and the report of the unload, which comes once: then the note is given up.
    Lines::const_iterator line = lines.begin();
    ASSERT_LT( 10u, lines.size() );
    EXPECT_EQ( RULE, lines[0] );
    EXPECT_EQ( "Product   : morvane", lines[1] );
    EXPECT_EQ( RULE, lines[8] );
    line += 9;

    Report unload = readReport( line, lines.end() );
    EXPECT_EQ( ( std::map< std::string, int >{ { "QV_NOTE", 1 } } ), unload.counts );
    EXPECT_EQ( unload.counts, unload.objects );
    expectStack( unload.logs["QV_NOTE (1) a forgotten note"], { "qvNoteCreate", "forgetNote", "main" } );

    // The same head, and what is left of the library's own families.
    ASSERT_LE( 9, lines.end() - line );
    EXPECT_TRUE( std::equal( lines.begin(), lines.begin() + 9, line ) );
    line += 9;

    Report survivors = readReport( line, lines.end() );
    EXPECT_EQ( lines.end(), line );
    EXPECT_EQ( 1, survivors.counts["QV_VECTOR"] );
    EXPECT_EQ( 1, survivors.counts["QV_STORE"] );
    EXPECT_EQ( survivors.counts, survivors.objects );
    EXPECT_EQ( 1u, survivors.logs.count( "QV_STRING (1) a forgotten text" ) );

    expectStack( survivors.logs["QV_STORE (1)"], { "qvStoreCreate", "forgetDocument", "main" } );
}
