// Null in the place of each object, and of each variable of one, has to end the process with a report that names it.

#include "qv_functions.h"
#include "qv_test_child.h"

#include <csignal>
#include <map>
#include <regex>

using namespace qv::test;

namespace
{
// What may be null, by function and parameter. Whatever matches must not end the process.
const std::regex MAY_BE_NULL( "qv(?!\\w+(Insert|Append|Prepend|IndexOf|Has|From)Obj)\\w+(Obj|From) "
                              "obj|qv(Alertable|Signalable|Timer)Create arg|qvThreadTrySpawn(|Cstr|Wcstr) argument|"
                              "qvDecoderTryDecode\\w+ \\*?value|qvEncoderEncodeOptional\\w+ (qvs|buf|store|vec)|"
                              "qvSleepTimed sig|qvDirectoryContent suffix|qvErrorCreate path" );

// Reported for another reason, since the thread of a test is encapsulated already; and sleeping for ever.
#ifdef __SANITIZE_THREAD__ // under which a copy of a process can start no threads
const std::regex LEFT_OUT( "qvThreadEncapsulate argument|qvSleep sig|qvThreadTrySpawn\\w* argument" );
#else
const std::regex LEFT_OUT( "qvThreadEncapsulate argument|qvSleep sig" );
#endif

// A function that leaves the check to another one reports the name which the parameter has there.
const std::map< std::string, std::string > NAMES = {
    { "buf", "buf|src" },   { "format", "fmt" },      { "qvs", "qvs|src|obj|objA" },
    { "dest", "dest|qvs" }, { "lines", "lines|src" },
};

} // namespace

TEST( Nulls, AreReportedByNameAndWithTheFunctionThatWasCalled )
{
    int checked = 0;

    for( const Function *function = FUNCTIONS; function < FUNCTIONS + FUNCTION_COUNT; function++ )
        for( size_t i = 0; i < 2 * Arguments( *function, 1 ).all.size(); i++ )
        {
            Arguments           arguments( *function, 1, true );
            const Argument     &argument = arguments.all[i / 2];
            const bool          inside   = i % 2;
            std::vector< Slot > slots    = arguments.slots();
            QV_OBJ             *none     = nullptr;
            const std::string   name     = std::string( function->name ) + ( inside ? " *" : " " ) + argument.name;

            if( !isObject( argument.type ) || inside > argument.type.ends_with( "**" )
                || std::regex_match( name, LEFT_OUT ) )
                continue;

            slots[i / 2].p    = inside ? static_cast< void * >( &none ) : nullptr;
            Ending     ending = inChild( [&] { function->call( slots.data() ); } );
            auto       other  = NAMES.find( argument.name );
            std::regex report(
                "    Expression: [^\n]*\\b(" + ( other == NAMES.end() ? argument.name : other->second ) + ")\\b" );
            checked++;

            // The stack names the function that was called, whatever the report comes from.
            EXPECT_TRUE(
                ending.signal != SIGABRT
                || ending.errors.find( std::string( "(" ).append( function->name ).append( "+0x" ) )
                       != std::string::npos )
                << name << ending.errors;
            EXPECT_TRUE(
                std::regex_match( name, MAY_BE_NULL )
                    ? ending.status == 0
                    : ending.signal == SIGABRT && std::regex_search( ending.errors, report ) )
                << name << ": " << ending.signal << " " << ending.errors.substr( 0, 600 );
        }

    EXPECT_GT( checked, 1700 );
}
