/** @file
    Runs a program in the scratch folder and looks at what comes out. */

#ifndef QV_TEST_PROGRAM_H
#define QV_TEST_PROGRAM_H

#include "qv_test_support.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/wait.h>

namespace qv::test
{
struct Outcome
{
    int         status; // -1 if a signal has ended it
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

/** Runs a program with a shell's words in the scratch folder, and with variables in front of it. */
inline Outcome run( const std::string &program, const std::string &words, const std::string &variables = "" )
{
    std::string command = "cd '" + scratch() + "' && " + variables + " '" + program + "' " + words + " >out 2>err";
    int         status  = std::system( command.c_str() );

    return { WIFEXITED( status ) ? WEXITSTATUS( status ) : -1, contentOf( "out" ), contentOf( "err" ) };
}
} // namespace qv::test

#endif
