#include "morvane_output.h"
#include "morvane_tool.h"

#include "qv/sys/qv_int.h"

namespace morvane
{
using qv::Ref;

namespace
{
void write( FILE *stream, std::initializer_list< const char * > parts )
{
    for( const char *part : parts )
        writeCstr( stream, part );
}

// What an option is called with: `--name ARGUMENT`.
Ref< QV_STRING > callOf( const Option &option )
{
    return Ref< QV_STRING >( qvStringCreateFromFormatCstr(
        "--%lc%lc%lc", -1, option.name, option.argument ? " " : "", option.argument ? option.argument : "" ) );
}

// A row of a list: a name, and what it stands for in a column of its own.
void tellRow( QV_STRING *name, QV_INT width, const char *text, const char *fallback )
{
    Ref< QV_STRING > row( qvStringCreateFromFormatCstr( "  %s", -1, name ) );

    for( QV_INT i = qvStringLength( name ); i < width; i++ )
        qvStringAppendChar( row.at(), U' ' );

    writeUtf8( stdout, row );
    write( stdout, { "  ", text, fallback ? "; " : "", fallback ? fallback : "", fallback ? " by default\n" : "\n" } );
}

void tellRow( const char *name, QV_INT width, const char *text )
{
    tellRow( Ref< QV_STRING >( qvStringCreateFromCstr( name, -1 ) ), width, text, nullptr );
}

void tellExamples( const Tool &tool )
{
    if( tool.examples[0] )
        writeCstr( stdout, "\nExamples:\n" );

    for( const char *const *example = tool.examples; *example; example++ )
        write( stdout, { "  ", *example, "\n" } );
}
} // namespace

Ref< QV_STRING > synopsisOf( const Tool &tool )
{
    Ref< QV_STRING > text( qvStringCreate() );

    for( const Option *option = tool.options; option->name; option++ )
    {
        bool isNeeded = option->flags & REQUIRED;
        qvStringAppendCstr( text.at(), isNeeded ? " " : " [", -1 );

        // Those that exclude each other stand in a row and take the same.
        for( ; option->group && option[1].name && option[1].group == option->group; option++ )
            qvStringAppendFormatCstr( text.at(), "--%lc|", -1, option->name );

        qvStringAppend( text.at(), callOf( *option ) );
        qvStringAppendCstr( text.at(), option->flags & REPEATS ? "..." : "", -1 );
        qvStringAppendCstr( text.at(), isNeeded ? "" : "]", -1 );
    }

    qvStringAppendFormatCstr( text.at(), "%lc%lc", -1, *tool.words ? " " : "", tool.words );
    return text;
}

void complain( const Tool &tool, const char *reason )
{
    write( stderr, { "morvane ", *tool.group ? tool.group : tool.name, ": ", reason, "\n" } );
}

void complain( const Tool &tool, QV_STRING *subject, const char *reason )
{
    write( stderr, { "morvane ", *tool.group ? tool.group : tool.name, ": " } );
    writeUtf8( stderr, subject );
    write( stderr, { ": ", reason, "\n" } );
}

void tellUsage( FILE *stream, const Tool &tool )
{
    write( stream, { "usage: morvane ", tool.group, *tool.group ? " " : "", tool.name } );
    writeUtf8( stream, synopsisOf( tool ) );
    writeCstr( stream, "\n" );
}

void tellHelp( const Tool &tool )
{
    static const char HELP[] = "-h, --help";

    QV_INT width = sizeof( HELP ) - 1;

    for( const Option *option = tool.options; option->name; option++ )
        width = qvIntMax( width, qvStringLength( callOf( *option ) ) );

    tellUsage( stdout, tool );
    write( stdout, { "\n", tool.line, "\n\nOptions:\n" } );

    for( const Option *option = tool.options; option->name; option++ )
        tellRow( callOf( *option ), width, option->text, option->fallback );

    tellRow( HELP, width, "prints this" );
    tellRow( "--version", width, "prints the version" );
    tellExamples( tool );
}

void listTools( FILE *stream, const char *group )
{
    write( stream, { "usage: morvane ", group, *group ? " " : "", "TOOL ARGUMENT...\n\n" } );

    visitTools(
        group,
        [stream]( const Tool &tool )
        {
            char name[16];
            snprintf( name, sizeof( name ), "  %-11s ", tool.name );
            write( stream, { name, tool.line, "\n" } );
        } );

    if( stream != stdout )
        return;

    write( stdout, { "\n`morvane ", group, *group ? " " : "", "TOOL --help` tells more of each.\n" } );

    visitTools(
        "",
        [group]( const Tool &tool )
        {
            if( strcmp( tool.name, group ) == 0 )
                tellExamples( tool );
        } );
}
} // namespace morvane
