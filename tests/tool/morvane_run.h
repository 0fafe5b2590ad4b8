/** @file
    Runs the executable as the tests of its tools do. */

#ifndef MORVANE_RUN_H
#define MORVANE_RUN_H

#include "qv_test_program.h"

namespace qv::test
{
inline Outcome morvane( const std::string &words, const std::string &variables = "" )
{
    return run( MORVANE_EXECUTABLE, words, variables );
}

/** Runs a shell's command in the scratch folder, where `$M` is the executable and `in` a text. */
inline Outcome shell( const std::string &command )
{
    write( "in", "text\n" );
    return run( "/bin/sh", "-c '" + command + "'", "M='" MORVANE_EXECUTABLE "'" );
}

/** A row of a table of commands, which have no quotes, with what has to come of them. */
struct Command
{
    const char *text;
    int         status;
    std::string out, err;
};

template< size_t count >
void expectOutcomes( const Command ( &rows )[count] )
{
    for( const Command &row : rows )
    {
        Outcome outcome = shell( row.text );
        EXPECT_EQ( row.status, outcome.status ) << row.text;
        EXPECT_EQ( row.out, outcome.out ) << row.text;
        EXPECT_EQ( row.err, outcome.err ) << row.text;
    }
}
} // namespace qv::test

#endif
