#include "morvane_file.h"
#include "morvane_output.h"
#include "morvane_tool.h"

#include "qv/io/qv_print.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <stdio.h>
#include <string.h>

namespace morvane
{
using qv::Ref;

namespace
{
const Tool TOOLS[] = {
    { "id", "", "prints a new identifier of 32 hexadecimal digits", idTool },
    { "info", "", "prints what is known about the product and the computer", infoTool },
    { "module", "TOOL ARGUMENT...", "tells about modules in XZ_MORVANE_BIN_PATH and runs them", moduleTool, HAS_TOOLS,
      0 },
    { "random", "TOOL ARGUMENT...", "prints random bytes and integers", randomTool, HAS_TOOLS },
    { "store", "TOOL ARGUMENT...", "reads, changes and converts configuration documents", storeTool, HAS_TOOLS },
    { "text", "TOOL ARGUMENT...", "converts, normalises and changes text", textTool, HAS_TOOLS },
    { "time", "TOOL ARGUMENT...", "tells, shifts and compares times, and names time zones", timeTool, HAS_TOOLS },
    { "unicode", "TOOL ARGUMENT...", "tells about characters and character sets", unicodeTool, HAS_TOOLS },
};

const int TOOL_COUNT = sizeof( TOOLS ) / sizeof( TOOLS[0] );

// The tool that a word names, by the rules of the switch: in full or by a unique beginning. Null if there is none.
const Tool *findTool( const Tool *tools, int count, const char *word )
{
    const Tool *found = nullptr;

    for( int i = 0; i < count; i++ )
    {
        if( strcmp( tools[i].name, word ) == 0 )
            return &tools[i];

        if( strncmp( tools[i].name, word, strlen( word ) ) == 0 )
        {
            if( found )
                return nullptr;

            found = &tools[i];
        }
    }

    return found;
}

// The tool that the first of the words names.
const Tool *findTool( const Tool *tools, int count, QV_VECTOR *words )
{
    if( qvVectorLength( words ) == 0 )
        return nullptr;

    char       *word = qvStringConvertToCstr( wordAt( words, 0 ), QV_TRUE, nullptr );
    const Tool *tool = findTool( tools, count, word );
    qvMemFree( word );

    return tool;
}

bool asksForHelp( QV_VECTOR *argv )
{
    if( qvVectorLength( argv ) != 1 )
        return false;

    Ref< QV_STRING > word = wordAt( argv, 0 );

    return qvStringEqualsCstr( word, "help", -1 ) || qvStringEqualsCstr( word, "--help", -1 );
}

// True if the words after the name of a tool ask for its usage.
bool asksForUsage( const Tool &tool, QV_VECTOR *words )
{
    QV_INT count = qvVectorLength( words );

    if( tool.kind == HAS_TOOLS )
        return false;

    for( QV_INT i = 1; i < ( tool.kind == PASSES_ON ? qvIntMin( count, 2 ) : count ); i++ )
    {
        Ref< QV_STRING > word = wordAt( words, i );

        if( qvStringEqualsCstr( word, "--help", -1 ) )
            return true;

        if( qvStringEqualsCstr( word, "--", -1 ) )
            break;
    }

    return false;
}

void tellUsage( FILE *stream, const char *command, const Tool &tool )
{
    for( const char *part : { "usage: ", command, " ", tool.name, *tool.arguments ? " " : "", tool.arguments, "\n" } )
        writeCstr( stream, part );
}

void listTools( FILE *stream, const char *command, const Tool *tools, int count )
{
    for( const char *part : { "usage: ", command, " TOOL ARGUMENT...\n\n" } )
        writeCstr( stream, part );

    for( int i = 0; i < count; i++ )
    {
        char name[16];
        snprintf( name, sizeof( name ), "  %-9s ", tools[i].name );

        for( const char *part : { static_cast< const char * >( name ), tools[i].line, "\n" } )
            writeCstr( stream, part );
    }
}
} // namespace

void startRuntime( QV_INT flags, QV_RUNTIME_PRINT_FUNC printFunc )
{
    qvRuntimeStartup( flags, printFunc, "morvane", "morvane", nullptr );
}

void runTool( const char *command, const Tool *tools, int count, QV_VECTOR *argv, Context *context )
{
    if( asksForHelp( argv ) )
    {
        listTools( stdout, command, tools, count );
        context->status = SUCCESS;
        return;
    }

    const Tool *tool = findTool( tools, count, argv );

    if( tool && asksForUsage( *tool, argv ) )
    {
        tellUsage( stdout, command, *tool );
        context->status = SUCCESS;
        return;
    }

    Ref< QV_TOOL_SWITCH > ts( qvToolSwitchCreate() );

    for( int i = 0; i < count; i++ )
        qvToolSwitchSetToolCstr( ts.at(), tools[i].name, -1, tools[i].func );

    context->status = MISUSE;
    printTo( tool ? stdout : stderr );
    qvToolSwitchRunTool( ts, argv, context );
    printTo( stdout );

    // A tool with tools of its own has shown the usage already.
    if( context->status != MISUSE || context->usageShown )
        return;

    if( tool )
        tellUsage( stderr, command, *tool );
    else
        listTools( stderr, command, tools, count );

    context->usageShown = true;
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

void tellVersion()
{
    Ref< QV_STRING > version( qvRuntimeVersionProductVersion() );
    qvPrintFormatCstr( "morvane %s", -1, version.get() );
}

void run( QV_VECTOR *words, Context *context )
{
    if( qvVectorLength( words ) == 1 && qvStringEqualsCstr( wordAt( words, 0 ), "--version", -1 ) )
    {
        tellVersion();
        context->status = SUCCESS;
        return;
    }

    if( qvVectorLength( words ) == 0 )
    {
        listTools( stdout, "morvane", TOOLS, TOOL_COUNT );
        context->status = SUCCESS;
        return;
    }

    runTool( "morvane", TOOLS, TOOL_COUNT, words, context );
}
} // namespace
} // namespace morvane

int main( int argc, char **argv )
{
    using namespace morvane;

    holdStandardStreams();

    // Most tools need no files of the product, and start faster without.
    const Tool *tool = argc > 1 ? findTool( TOOLS, TOOL_COUNT, argv[1] ) : nullptr;

    printTo( stdout );

    if( isOutputTerminal() )
        printAtOnce();

    startRuntime( tool ? tool->runtimeFlags : QV_RUNTIME_FLAG_MINIMAL, printLine );

    Context context;

    if( Ref< QV_VECTOR > words = wordsOf( argc, argv ) )
        run( words, &context );
    else
        context.status = FAILURE;

    qvRuntimeShutdown();

    if( context.afterwards )
        context.afterwards();

    return isOutputComplete( tool ? tool->name : nullptr ) ? context.status : FAILURE;
}
