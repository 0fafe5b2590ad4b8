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
} // namespace qv::test

#endif
