/** @file
    Runs the executable as the tests of its tools do. */

#ifndef MORVANE_RUN_H
#define MORVANE_RUN_H

#include "qv_test_program.h"

#include <algorithm>

namespace qv::test
{
inline Outcome morvane( const std::string &words, const std::string &variables = "" )
{
    return run( MORVANE_EXECUTABLE, words, variables );
}

/** Runs a shell's command, which has no single quotes, in the scratch folder, where `$M` is the executable and `in` a
    text. */
inline Outcome shell( const std::string &command )
{
    write( "in", "text\n" );
    return run(
        "/bin/sh", "-c '" + command + "'", "M='" MORVANE_EXECUTABLE "' XZ_MORVANE_BIN_PATH='" MODULE_FOLDER "'" );
}

/** A row of a table of such commands with what has to come of them. */
struct Command
{
    std::string text, out, err = "";
    int         status = err.empty() ? 0 : 1;
};

inline void expectOutcome( const Command &row )
{
    Outcome outcome = shell( row.text );
    EXPECT_EQ( row.out, outcome.out ) << row.text;
    EXPECT_EQ( row.err, outcome.err ) << row.text;
    EXPECT_EQ( row.status, outcome.status ) << row.text;
}

inline void expectOutcomes( const std::vector< Command > &rows )
{
    std::for_each( rows.begin(), rows.end(), expectOutcome );
}

/** The words of commands that fail, each with what the executable complains of. */
inline void expectFailures( const std::vector< std::pair< std::string, std::string > > &rows )
{
    for( const auto &[words, complaint] : rows )
        expectOutcome( { "$M " + words, "", "morvane " + complaint + "\n" } );
}
} // namespace qv::test

#endif
