#include "morvane_file.h"
#include "morvane_tool.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <errno.h>
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

// Where printed lines go: what a tool tells to the standard output, what the switch says of a wrong name elsewhere.
FILE *printStream = nullptr;

// True when every printed line is to be out at once.
bool isPrintedAtOnce = false;

// What was wrong when the standard output could not be written for the first time, or 0.
int outputError = 0;

// Takes note of the result of a call that writes to the standard output.
void note( bool ok )
{
    if( ok || outputError != 0 )
        return;

    outputError = errno ? errno : EIO;

    if( outputError == EPIPE )
        endByBrokenPipe();
}

// What is printed on its way to the standard output. The stream of the C library would lose what is in work when a call
// is interrupted.
char   held[65536];
QV_INT heldCount = 0;

void flushOutput()
{
    // What a module has written to that stream stands in front.
    note( fflush( stdout ) == 0 );

    if( outputError == 0 )
        note( writeOutput( held, heldCount ) );

    heldCount = 0;
}

void writeBytes( FILE *stream, const char *bytes, QV_INT count )
{
    if( stream != stdout )
    {
        fwrite( bytes, 1, static_cast< size_t >( count ), stream );
        return;
    }

    while( count > 0 )
    {
        QV_INT step = qvIntMin( count, QV_INT( sizeof( held ) ) - heldCount );
        memcpy( held + heldCount, bytes, static_cast< size_t >( step ) );
        heldCount += step;
        bytes += step;
        count -= step;

        if( heldCount == sizeof( held ) )
            flushOutput();
    }
}

void writeCstr( FILE *stream, const char *text )
{
    writeBytes( stream, text, static_cast< QV_INT >( strlen( text ) ) );
}

void writeUtf8( FILE *stream, const QV_CHAR *chs, QV_INT length )
{
    char   piece[4096];
    QV_INT step = sizeof( piece ) / 4; // no character has more than four bytes

    for( QV_INT i = 0; i < length; i += step )
    {
        QV_INT count = length - i < step ? length - i : step;
        QV_INT bytes = qvCharsConvertToUtf8( piece, sizeof( piece ), chs + i, count, QV_FALSE );
        writeBytes( stream, piece, bytes );
    }
}

void writeUtf8( FILE *stream, QV_STRING *qvs )
{
    writeUtf8( stream, qvStringBacking( qvs ), qvStringLength( qvs ) );
}

// The print hook: every text is a line.
void printLine( const QV_CHAR *chs, QV_INT length )
{
    writeUtf8( printStream, chs, length );
    writeBytes( printStream, "\n", 1 );

    if( isPrintedAtOnce )
        flushOutput();
}

// The tool that a word names, by the rules of the switch: in full or by a unique beginning.
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

// The same for the first of some words.
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

// True if the words behind the name of a tool ask for its usage.
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

void print( QV_STRING *line )
{
    qvPrint( line );
}

void printAtOnce()
{
    isPrintedAtOnce = true;
}

bool put( const char *bytes, QV_INT count )
{
    writeBytes( stdout, bytes, count );
    return outputError == 0;
}

void startRuntime( QV_INT flags, QV_RUNTIME_PRINT_FUNC printFunc )
{
    qvRuntimeStartup( flags, printFunc, "morvane", "morvane", nullptr );
}

void complain( const char *prefix, QV_STRING *subject, QV_STRING *reason )
{
    fprintf( stderr, "%s: ", prefix );
    writeUtf8( stderr, subject );
    fputs( ": ", stderr );
    writeUtf8( stderr, reason );
    fputc( '\n', stderr );
}

void complain( const char *prefix, QV_STRING *subject, const char *reason )
{
    complain( prefix, subject, Ref< QV_STRING >( qvStringCreateFromCstr( reason, -1 ) ) );
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
    printStream     = tool ? stdout : stderr;
    qvToolSwitchRunTool( ts, argv, context );
    printStream = stdout;

    // A tool with tools of its own has shown its usage already.
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
QV_INT flagsOf( const Option &option )
{
    return ( option.hasArgument ? QV_OPT_FLAG_ARGUMENT : 0 ) | ( option.repeats ? 0 : QV_OPT_FLAG_ONCE );
}
} // namespace

bool Arguments::read( QV_VECTOR *argv, const Option *options, int count )
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    qvOptDefSetArgOnly( def.at(), count );

    for( int i = 0; i < count; i++ )
    {
        qvOptDefSetLongOptCstr( def.at(), options[i].name, -1, i );
        qvOptDefSetFlags( def.at(), i, flagsOf( options[i] ) );
    }

    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );
    words_.reset( qvVectorCreate() );
    options_.reset( qvVectorCreate() );
    arguments_.reset( qvVectorCreate() );

    while( qvOptSeqHasNext( seq ) )
    {
        QV_INT id = qvOptSeqNext( seq );

        if( id < 0 )
        {
            Ref< QV_STRING > error( qvOptSeqError( seq ) );
            writeUtf8( stderr, error );
            fputc( '\n', stderr );
            return false;
        }

        Ref< QV_STRING > argument( qvOptSeqHasArg( seq ) ? qvOptSeqArgString( seq ) : qvStringCreate() );

        if( id == count )
        {
            qvVectorAppendString( words_.at(), argument );
            continue;
        }

        qvVectorAppendInt( options_.at(), id );
        qvVectorAppendString( arguments_.at(), argument );
    }

    return true;
}

QV_INT Arguments::optionCount() const
{
    return qvVectorLength( options_ );
}

QV_INT Arguments::optionAt( QV_INT idx ) const
{
    Ref< QV_BOXED_INT > place( qvBoxedIntFrom( qvVectorObjAt( options_, idx ) ) );
    return qvBoxedIntValue( place );
}

Ref< QV_STRING > Arguments::argumentAt( QV_INT idx ) const
{
    return wordAt( arguments_, idx );
}

bool readInteger( QV_STRING *text, QV_INT *value )
{
    QV_INT consumed;
    return qvStringScanInt( text, 0, -1, 10, value, &consumed ) && consumed == qvStringLength( text );
}

Ref< QV_STRING > wordAt( QV_VECTOR *words, QV_INT idx )
{
    return Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( words, idx ) ) );
}

namespace
{
// The words of the command line; nothing, with a line on the standard error stream, if one is no UTF-8: a name of a
// file that is read with replacements would be that of another file.
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

// What could not be written, as on a full disk, is a failure too.
bool isOutputComplete( const Tool *tool )
{
    bool hasFailed = ferror( stdout );
    errno          = 0;
    flushOutput();
    note( hasOutputArrived() );

    if( outputError == 0 && !hasFailed )
        return true;

    fprintf(
        stderr, "morvane%s%s: standard output: %s\n", tool ? " " : "", tool ? tool->name : "",
        outputError ? strerror( outputError ) : "it could not be written" );

    return false;
}
} // namespace
} // namespace morvane

int main( int argc, char **argv )
{
    using namespace morvane;

    holdStandardStreams();

    // Most tools need no files of the product, and start faster without.
    const Tool *tool = argc > 1 ? findTool( TOOLS, TOOL_COUNT, argv[1] ) : nullptr;

    printStream     = stdout;
    isPrintedAtOnce = isOutputTerminal();
    startRuntime( tool ? tool->runtimeFlags : QV_RUNTIME_FLAG_MINIMAL, printLine );

    Context context;

    if( Ref< QV_VECTOR > words = wordsOf( argc, argv ) )
        run( words, &context );
    else
        context.status = FAILURE;

    qvRuntimeShutdown();

    if( context.afterwards )
        context.afterwards();

    return isOutputComplete( tool ) ? context.status : FAILURE;
}
