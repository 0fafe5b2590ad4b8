#include "morvane_file.h"
#include "morvane_output.h"
#include "morvane_tool.h"

#include "qv/base/qv_tool_switch.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <initializer_list>

#include <malloc.h>

namespace morvane
{
using qv::Ref;

namespace
{

// The tool of a group that a word names, by the rules of the switch: in full or by a unique beginning. Null if there is
// none.
const Tool *findTool( const char *group, const char *word )
{
    const Tool *found  = nullptr;
    bool        unique = true;
    bool        whole  = false;

    visitTools(
        group,
        [&]( const Tool &tool )
        {
            bool same = strcmp( tool.name, word ) == 0;

            if( whole || ( !same && strncmp( tool.name, word, strlen( word ) ) != 0 ) )
                return;

            unique = same || !found;
            whole  = same;
            found  = &tool;
        } );

    return unique ? found : nullptr;
}

bool isWord( QV_STRING *word, std::initializer_list< const char * > texts )
{
    for( const char *text : texts )
        if( qvStringEqualsCstr( word, text, -1 ) )
            return true;

    return false;
}

// Answers the words after the name of a tool that ask for its usage or for the version.
bool isAnswered( const Tool &tool, QV_VECTOR *words )
{
    QV_INT count = tool.kind == PASSES_ON ? qvIntMin( qvVectorLength( words ), 1 ) : qvVectorLength( words );

    for( QV_INT i = 0; i < count; i++ )
    {
        Ref< QV_STRING > word = wordAt( words, i );

        if( isWord( word, { "--help", "-h" } ) )
        {
            tellHelp( tool );
            return true;
        }

        if( isWord( word, { "--version" } ) )
        {
            tellVersion();
            return true;
        }

        if( isWord( word, { "--" } ) )
            break;
    }

    return false;
}

int run( const Tool &tool, QV_VECTOR *words )
{
    if( tool.kind == HAS_TOOLS )
        return runTool( tool.name, words );

    if( isAnswered( tool, words ) )
        return SUCCESS;

    Arguments arguments;
    bool      right  = arguments.read( tool, words );
    int       status = right ? tool.func( arguments ) : MISUSE;

    // What a module returns tells nothing about the arguments.
    if( status == MISUSE && !( right && tool.kind == PASSES_ON ) )
        tellUsage( stderr, tool );

    return status;
}

// What the function of the switch is called with.
struct Call
{
    const Tool *tool;
    int         status = MISUSE;
};

QV_BOOL runFound( QV_VECTOR *words, void *context )
{
    Call *call   = static_cast< Call * >( context );
    call->status = run( *call->tool, words );

    return call->status == SUCCESS ? QV_TRUE : QV_FALSE;
}
} // namespace

void tellVersion()
{
    Ref< QV_STRING > version( qvRuntimeVersionProductVersion() );
    qvPrintFormatCstr( "morvane %s", -1, version.get() );
}

int runTool( const char *group, QV_VECTOR *argv )
{
    Ref< QV_STRING > first;
    Call             call = { nullptr };

    if( qvVectorLength( argv ) > 0 )
    {
        first      = wordAt( argv, 0 );
        char *name = qvStringConvertToCstr( first, QV_TRUE, nullptr );
        call.tool  = findTool( group, name );
        qvMemFree( name );
    }

    if( qvVectorLength( argv ) == 1 && isWord( first, { "help", "--help", "-h" } ) )
    {
        listTools( stdout, group );
        return SUCCESS;
    }

    if( qvVectorLength( argv ) == 1 && isWord( first, { "--version" } ) )
    {
        tellVersion();
        return SUCCESS;
    }

    Ref< QV_TOOL_SWITCH > ts( qvToolSwitchCreate() );
    visitTools( group, [&ts]( const Tool &tool ) { qvToolSwitchSetToolCstr( ts.at(), tool.name, -1, runFound ); } );

    // The switch prints a line about a word that names no tool.
    printTo( call.tool ? stdout : stderr );
    qvToolSwitchRunTool( ts, argv, &call );
    printTo( stdout );

    if( !call.tool )
        listTools( stderr, group );

    return call.status;
}

namespace
{
// The words of the command line; nothing, with a line on the standard error stream, if one is not UTF-8: a file name
// that is decoded with replacements would be that of another file.
Ref< QV_VECTOR > wordsOf( int argc, char **argv )
{
    Ref< QV_VECTOR > words( qvVectorCreate() );

    for( int i = 1; i < argc; i++ )
    {
        Ref< QV_STRING > word( qvStringCreateFromCstr( argv[i], -1 ) );
        char            *back  = qvStringConvertToCstr( word, QV_TRUE, nullptr );
        bool             valid = strcmp( argv[i], back ) == 0;
        qvMemFree( back );

        for( QV_INT k = 0; k < qvStringLength( word ); k++ )
            valid = valid && !qvUnicodeIsOtherSurrogate( qvStringCharAt( word, k ) );

        if( !valid )
        {
            complain( "morvane", word, "not valid UTF-8" );
            return {};
        }

        qvVectorAppendString( words.at(), word );
    }

    return words;
}
} // namespace
} // namespace morvane

int main( int argc, char **argv )
{
    using namespace morvane;

    holdStandardStreams();

    // What a piece of a file needs is freed and needed again for the next one. The C library would give the top of its
    // heap back to the system each time.
    mallopt( M_MMAP_THRESHOLD, 4 << 20 );
    mallopt( M_TRIM_THRESHOLD, 4 << 20 );

    // Most tools need no files of the product, and start faster without.
    const Tool *tool = argc > 1 ? findTool( "", argv[1] ) : nullptr;

    printTo( stdout );

    if( isOutputTerminal() )
        printAtOnce();

    qvRuntimeStartup( tool ? tool->runtimeFlags : QV_RUNTIME_FLAG_MINIMAL, printLine, "morvane", "morvane", nullptr );

    int status = FAILURE;

    if( Ref< QV_VECTOR > words = wordsOf( argc, argv ) )
    {
        if( argc > 1 )
        {
            status = runTool( "", words );
        }
        else
        {
            listTools( stdout, "" );
            status = SUCCESS;
        }
    }

    qvRuntimeShutdown();

    return isOutputComplete( tool ? tool->name : nullptr ) ? status : FAILURE;
}
