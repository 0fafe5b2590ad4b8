/** @file
    Runs the executable in the scratch folder and looks at what comes out. */

#ifndef MORVANE_RUN_H
#define MORVANE_RUN_H

#include "qv_test_support.h"

#include <cstdlib>
#include <fstream>
#include <string>

#include <sys/wait.h>

namespace qv::test
{
struct Outcome
{
    int         status;
    std::string out;
    std::string err;
};

inline std::string path( const std::string &name )
{
    return scratch() + name;
}

inline std::string contentOf( const std::string &name )
{
    std::ifstream file( path( name ), std::ios::binary );
    return { std::istreambuf_iterator< char >( file ), {} };
}

inline void write( const std::string &name, const std::string &content )
{
    std::ofstream( path( name ), std::ios::binary ) << content;
}

/** Runs `morvane` with a shell's words in the scratch folder, and with variables in front of it. */
inline Outcome morvane( const std::string &words, const std::string &variables = "" )
{
    std::string command =
        "cd '" + scratch() + "' && " + variables + " '" MORVANE_EXECUTABLE "' " + words + " >out 2>err";
    int         status  = std::system( command.c_str() );

    return { WIFEXITED( status ) ? WEXITSTATUS( status ) : -1, contentOf( "out" ), contentOf( "err" ) };
}
} // namespace qv::test

#endif
