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
                              "qvSleepTimed sig|qvDirectoryContent suffix" );

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

bool isObject( const std::string &type )
{
    return type.rfind( "QV_", 0 ) == 0 && type.back() == '*' && type != "QV_INT *" && type != "QV_BOOL *"
           && type != "QV_REAL *" && type != "QV_CHAR *" && type != "QV_OBJ **" && type != "QV_OBJ *const *";
}
} // namespace

TEST( Nulls, AreReportedByName )
{
    int checked = 0;

    for( size_t at = 0; at < FUNCTION_COUNT; at++ )
    {
        const Function &function = FUNCTIONS[at];

        for( size_t i = 0; i < Arguments( function, 1 ).all.size(); i++ )
            for( bool inside : { false, true } )
            {
                Arguments  arguments( function, 1, true );
                Argument  &argument = arguments.all[i];
                const bool variable =
                    argument.type.size() > 2 && argument.type.substr( argument.type.size() - 2 ) == "**";
                std::string name = std::string( function.name ) + " " + ( inside ? "*" : "" ) + argument.name;

                if( !isObject( argument.type ) || inside > variable || std::regex_match( name, LEFT_OUT ) )
                    continue;

                std::vector< Slot > slots = arguments.slots();
                QV_OBJ             *none  = nullptr;
                slots[i].p                = inside ? static_cast< void * >( &none ) : nullptr;

                Ending ending = inChild( [&] { function.call( slots.data() ); } );
                auto   other  = NAMES.find( argument.name );
                auto   names  = other == NAMES.end() ? argument.name : other->second;
                bool   named =
                    std::regex_search( ending.errors, std::regex( "    Expression: [^\n]*\\b(" + names + ")\\b" ) );
                checked++;

                if( std::regex_match( name, MAY_BE_NULL ) )
                {
                    EXPECT_EQ( 0, ending.status ) << name << " may be null\n" << ending.errors;
                }
                else
                {
                    EXPECT_TRUE( ending.signal == SIGABRT && named )
                        << name << ": " << ending.signal << " " << ending.errors.substr( 0, 600 );
                }
            }
    }

    EXPECT_GT( checked, 1700 );
}
