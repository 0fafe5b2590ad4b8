/* Calls before the start of the library and after its stop: each public function that needs no object works, or ends the
   process with a report that says so and with its name in the stack. Every call has a process of its own. */

#include "qv_functions.h"
#include "qv_test_program.h"

#include <regex>

using namespace qv::test;

bool qvTestRunInstead()
{
    const char *name = getenv( "QV_TEST_CALL" );

    if( !name )
        return false;

    if( getenv( "QV_TEST_STOPPED" ) )
    {
        qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );
        qvRuntimeShutdown();
    }

    const Function *function = findFunction( name );
    Arguments       arguments( *function, 1, true );
    function->call( arguments.slots().data() );

    return true;
}

namespace
{
// The start; what waits for ever; blocks of memory, which need no run; and what has objects behind its arguments, or
// refuses those that it gets here.
const std::regex LEFT_OUT(
    "qvRuntimeStartup|qvSleep|qvMem.*|.*Format(Cstr|Wcstr).*|qvVectorCreateFromObjs.*|qvMonthToString" );
} // namespace

TEST( NoRun, IsReported )
{
    const std::string program = std::filesystem::read_symlink( "/proc/self/exe" );
    int               checked = 0, reported = 0;

    for( const Function *function = FUNCTIONS; function < FUNCTIONS + FUNCTION_COUNT; function++ )
    {
        const std::string name = function->name;
        bool              fits = !std::regex_match( name, LEFT_OUT );

        for( const Argument &argument : Arguments( *function, 1, true ).all )
            fits = fits && !isObject( argument.type );

        for( const char *stopped : { "", " QV_TEST_STOPPED=1" } )
        {
            if( !fits )
                continue;

            Outcome outcome =
                run( program, "", "ulimit -c 0; QV_TEST_CALL=" + name + stopped + " ASAN_OPTIONS=handle_abort=0" );
            const std::string reason =
                *stopped ? "qvRuntimeShutdown() has stopped it\n" : "qvRuntimeStartup() has not been called\n";
            checked++;

            if( outcome.status == 0 )
                continue;

            reported++;
            EXPECT_THAT(
                outcome.err, testing::AllOf(
                                 testing::HasSubstr( "    Message   : the library does not run: " + reason ),
                                 testing::HasSubstr( std::string( "(" ).append( name ).append( "+0x" ) ) ) )
                << name << stopped;
        }
    }

    EXPECT_GT( checked, 100 );
    EXPECT_GT( reported, 50 );
}
