// Pages of the manual, made from the table of tools.

#include "morvane_output.h"
#include "morvane_tool.h"

#include "qv/sys/qv_mem.h"

#include <initializer_list>

namespace morvane
{
using qv::Ref;

namespace
{
const char GENERAL[] =
    "The name of a tool may be shortened as long as it stays unique. With -h or --help a tool prints its usage, "
    "options and "
    "examples, with --version the version; morvane help lists the tools. An option may be given once, where nothing "
    "else is "
    "said, and -- ends the options.\n\n"
    "Where a FILE, IN or OUT is named, - is the standard input or output. Words that are not valid UTF-8 are refused.";

const char FILES[] =
    "A file is replaced by writing beside it and renaming, so that the old content or the new one is there as a whole, "
    "also "
    "after a loss of power. Owner, group, permissions, access control list and extended attributes are kept. Who may "
    "not "
    "give the file its group or list clears the rights that go with them: nobody gets more than before.\n\n"
    "Pipes, terminals and devices are written directly. So is a file that the process was started with open for "
    "writing, as "
    "/dev/stdout, from where it stands, so that nothing is lost of a log; but a document that is changed is written "
    "over as "
    "a whole there, and so is a file that is open for reading only.";

const struct
{
    const char *name;
    const char *text;
} STATUSES[] = {
    { "0", "Done." },
    { "1",
      "Something could not be done, or was absent; a line on the standard error stream says what and why. No file has "
      "changed, unless it was written directly or over, or the new one is in place and its folder could not be "
      "brought to the disk." },
    { "2", "Wrong usage." },
};

const char OTHER_STATUSES[] = "morvane module run exits with what the module returns. Where nobody reads the output "
                              "any more, all tools end by the "
                              "signal SIGPIPE, without a word.";

const struct
{
    const char *name;
    const char *text;
} VARIABLES[] = {
    { "TZ", "The time zone, instead of that of the system." },
    { "XZ_MORVANE_BIN_PATH", "The folder of the modules." },
    { "XZ_MORVANE_DATA_PATH",
      "The folder under which morvane module makes the product's own folders; without it that is "
      ".opt/wexcraft/morvane in the home folder. The other tools make none." },
};

void write( std::initializer_list< const char * > parts )
{
    for( const char *part : parts )
        writeCstr( stdout, part );
}

// Writes text so that nothing in it is a request: an empty line begins a paragraph.
void writeText( const char *text )
{
    for( const char *at = text; *at; at++ )
    {
        bool begins = at == text || at[-1] == '\n';

        if( begins && ( *at == '.' || *at == '\'' ) )
            writeCstr( stdout, "\\&" );

        if( begins && *at == '\n' )
            writeCstr( stdout, ".PP" );

        if( *at == '\\' )
            writeCstr( stdout, "\\e" );
        else if( *at == '-' )
            writeCstr( stdout, "\\-" );
        else
            put( at, 1 );
    }
}

void writeText( QV_STRING *text )
{
    char *utf8 = qvStringConvertToCstr( text, QV_TRUE, nullptr );
    writeText( utf8 );
    qvMemFree( utf8 );
}

void writeParagraph( const char *text )
{
    if( !*text )
        return;

    writeText( text );
    writeCstr( stdout, "\n" );
}

void writeTerm( const char *name, const char *text )
{
    writeCstr( stdout, ".TP\n.B " );
    writeText( name );
    writeCstr( stdout, "\n" );
    writeParagraph( text );
}

// What a tool does, as a sentence.
void writeLine( const Tool &tool )
{
    const char first[] = { static_cast< char >( tool.line[0] - 'a' + 'A' ), 0 };
    write( { first } );
    writeText( tool.line + 1 );
    writeCstr( stdout, ".\n" );
}

void writeSynopsis( const Tool &tool )
{
    write( { "\\fBmorvane ", tool.group, *tool.group ? " " : "", tool.name, "\\fR" } );
    writeText( synopsisOf( tool ) );
    writeCstr( stdout, "\n" );
}

void writeOptions( const Tool &tool )
{
    for( const Option *option = tool.options; option->name; option++ )
    {
        writeCstr( stdout, ".TP\n" );
        write( { "\\fB\\-\\-", option->name, "\\fR", option->argument ? " " : "" } );
        writeText( option->argument ? option->argument : "" );
        writeCstr( stdout, "\n" );
        writeText( option->text );
        write( { option->fallback ? "; " : "" } );
        writeText( option->fallback ? option->fallback : "" );
        write( { option->fallback ? " by default.\n" : ".\n" } );
    }
}

void writeExamples( const Tool &tool )
{
    for( const char *const *example = tool.examples; *example; example++ )
        writeParagraph( *example );
}

void writeHead( const char *name, const char *line )
{
    Ref< QV_STRING > version( qvRuntimeVersionProductVersion() );
    Ref< QV_STRING > title( qvStringCreateFromCstr( name, -1 ) );
    qvStringToUpper( title.at() );

    writeCstr( stdout, ".TH " );
    writeText( title );
    writeCstr( stdout, " 1 \"\" \"morvane " );
    writeUtf8( stdout, version );
    writeCstr( stdout, "\" \"User Commands\"\n.SH NAME\n" );
    writeText( name );
    writeCstr( stdout, " \\- " );
    writeParagraph( line );
    writeCstr( stdout, ".SH SYNOPSIS\n" );
}

void writeTail()
{
    writeCstr( stdout, ".SH EXIT STATUS\n" );

    for( const auto &status : STATUSES )
        writeTerm( status.name, status.text );
}

void writeToolPage( const Tool &tool )
{
    char name[32];
    snprintf( name, sizeof( name ), "morvane-%s", tool.name );
    writeHead( name, tool.line );

    if( tool.kind != HAS_TOOLS )
        writeSynopsis( tool );

    const char *separator = "";

    visitTools(
        tool.name,
        [&separator]( const Tool &each )
        {
            writeCstr( stdout, separator );
            writeSynopsis( each );
            separator = ".br\n";
        } );

    writeCstr( stdout, ".SH DESCRIPTION\n" );
    writeLine( tool );

    if( *tool.details )
        writeCstr( stdout, ".PP\n" );

    writeParagraph( tool.details );
    writeOptions( tool );

    visitTools(
        tool.name,
        []( const Tool &each )
        {
            write( { ".SS ", each.name, "\n" } );
            writeLine( each );
            writeParagraph( each.details );
            writeOptions( each );
        } );

    writeTail();
    writeCstr( stdout, ".SH EXAMPLES\n.nf\n" );
    writeExamples( tool );
    visitTools( tool.name, writeExamples );
    writeCstr( stdout, ".fi\n.SH SEE ALSO\n.BR morvane (1)\n" );
}

void writeMainPage()
{
    writeHead( "morvane", "small tools on one switch" );
    writeCstr( stdout, "\\fBmorvane\\fR TOOL ARGUMENT...\n.SH DESCRIPTION\n" );
    writeParagraph( GENERAL );
    writeCstr( stdout, ".SH TOOLS\n" );

    visitTools(
        "",
        []( const Tool &tool )
        {
            writeCstr( stdout, ".TP\n.B " );
            writeText( tool.name );
            writeCstr( stdout, "\n" );
            writeLine( tool );
        } );

    writeCstr( stdout, ".SH FILES\n" );
    writeParagraph( FILES );
    writeTail();
    writeCstr( stdout, ".PP\n" );
    writeParagraph( OTHER_STATUSES );
    writeCstr( stdout, ".SH ENVIRONMENT\n" );

    for( const auto &variable : VARIABLES )
        writeTerm( variable.name, variable.text );

    writeCstr( stdout, ".SH SEE ALSO\n" );

    visitTools(
        "",
        []( const Tool &tool )
        {
            bool isLast = &tool + 1 == TOOLS + TOOL_COUNT || *( &tool + 1 )->group;
            write( { ".BR morvane\\-", tool.name, " (1)", isLast ? "" : ",", "\n" } );
        } );
}
} // namespace

int printManual( const Arguments &arguments )
{
    if( arguments.wordCount() == 0 )
    {
        writeMainPage();
        return SUCCESS;
    }

    Ref< QV_STRING > name = arguments.wordAt( 0 );
    int              done = FAILURE;

    visitTools(
        "",
        [&]( const Tool &tool )
        {
            if( !qvStringEqualsCstr( name, tool.name, -1 ) )
                return;

            writeToolPage( tool );
            done = SUCCESS;
        } );

    if( done != SUCCESS )
        complain( "morvane manual", name, "no such tool" );

    return done;
}
} // namespace morvane
