// Scripts that let shells complete the words of the executable, made from the table of tools.

#include "morvane_output.h"
#include "morvane_tool.h"

#include "qv/charset/qv_charset.h"

#include <initializer_list>

namespace morvane
{
using qv::Ref;

namespace
{
void write( std::initializer_list< const char * > parts )
{
    for( const char *part : parts )
        writeCstr( stdout, part );
}

// Writes a text between single quotes; for explanations in brackets with those inside escaped.
void writeQuoted( const char *text )
{
    for( const char *at = text; *at; at++ )
    {
        if( *at == '\'' )
            writeCstr( stdout, "'\\''" );
        else if( *at == '[' || *at == ']' || *at == ':' )
            write( { "\\", *at == '[' ? "[" : *at == ']' ? "]" : ":" } );
        else
            put( at, 1 );
    }
}

bool takesFiles( const Tool &tool )
{
    return strstr( tool.words, "FILE" ) || strstr( tool.words, "IN" );
}

// Words of a usage that stand for themselves are in lower case.
bool isLiteral( const char *words )
{
    return *words >= 'a' && *words <= 'z';
}

void writeNames( const char *group )
{
    visitTools( group, []( const Tool &tool ) { write( { tool.name, " " } ); } );
}

// Defines the variable `charsets`.
void writeCharsets()
{
    writeCstr( stdout, "    local charsets='" );

    for( QV_INT charset = 0; QV_CHARSET_OK( charset ); charset++ )
    {
        writeUtf8( stdout, Ref< QV_STRING >( qvCharsetToIanaName( charset ) ) );
        writeCstr( stdout, QV_CHARSET_OK( charset + 1 ) ? " " : "'\n" );
    }
}

// Writes the words that an option or a tool takes, if they are known, with blanks between them. They stand inside single
// quotes.
void writeChoices( const char *usage )
{
    if( strcmp( usage, "CHARSET" ) == 0 )
        writeCstr( stdout, "'\"$charsets\"'" );
    else if( strcmp( usage, "[TOOL]" ) == 0 )
        writeNames( "" );
    else if( isLiteral( usage ) )
        for( const char *at = usage; *at; at++ )
            put( *at == '|' ? " " : at, 1 );
}

/* bash ----------------------------------------------------------------------------------------------------------- */

void writeBashArguments( const Tool &tool )
{
    for( const Option *option = tool.options; option->name; option++ )
    {
        if( !option->argument )
            continue;

        write( { "    '", tool.group, " ", tool.name, " --", option->name, "') words='" } );
        writeChoices( option->argument );
        write( { "' ;;\n" } );
    }
}

void writeBashTool( const Tool &tool )
{
    if( tool.kind == HAS_TOOLS )
    {
        write( { "        '", tool.name, " ') words='" } );
        writeNames( tool.name );
        write( { "--help --version' ;;\n" } );
        return;
    }

    // The word after a tool without a group may be anything.
    if( *tool.group )
        write( { "        '", tool.group, " ", tool.name, "') words='" } );
    else
        write( { "        '", tool.name, " '*) words='" } );

    for( const Option *option = tool.options; option->name; option++ )
        write( { "--", option->name, " " } );

    write( { "--help --version " } );
    writeChoices( tool.words );
    write( { "'", takesFiles( tool ) ? " files=1" : "", " ;;\n" } );
}

void writeBash()
{
    write( { R"sh(# Completion of morvane for bash.
_morvane()
{
    local word="${COMP_WORDS[COMP_CWORD]}" before="${COMP_WORDS[COMP_CWORD - 1]}" first= second= words= files=
)sh" } );
    writeCharsets();
    write( { R"sh(
    (( COMP_CWORD > 1 )) && first="${COMP_WORDS[1]}"
    (( COMP_CWORD > 2 )) && second="${COMP_WORDS[2]}"

    # An argument after an equals sign is a word of its own.
    [[ $before == = ]] && before="${COMP_WORDS[COMP_CWORD - 2]}"
    [[ $word == = ]] && word=

    case "$first $second $before" in
)sh" } );

    for( int i = 0; i < TOOL_COUNT; i++ )
        writeBashArguments( TOOLS[i] );

    write( { "    *)\n        case \"$first $second\" in\n        ' ') words='" } );
    writeNames( "" );
    write( { "--help --version' ;;\n" } );

    for( int i = 0; i < TOOL_COUNT; i++ )
        writeBashTool( TOOLS[i] );

    write( { R"sh(        esac
        ;;
    esac

    COMPREPLY=()

    if [[ -n $files && $word != -* ]]; then
        compopt -o default
    else
        COMPREPLY=( $( compgen -W "$words" -- "$word" ) )
    fi
}
complete -F _morvane morvane
)sh" } );
}

/* zsh ------------------------------------------------------------------------------------------------------------ */

void writeZshNames( const char *group )
{
    writeCstr( stdout, "tools=(" );

    visitTools(
        group,
        []( const Tool &tool )
        {
            write( { " '", tool.name, ":" } );
            writeQuoted( tool.line );
            writeCstr( stdout, "'" );
        } );

    writeCstr( stdout, " )" );
}

void writeZshTool( const Tool &tool )
{
    writeCstr( stdout, "_arguments" );

    for( const Option *option = tool.options; option->name; option++ )
    {
        write( { " '", option->flags & REPEATS ? "*" : "", "--", option->name, option->argument ? "=[" : "[" } );
        writeQuoted( option->text );
        writeCstr( stdout, "]" );

        if( option->argument )
        {
            write( { ":", option->name, ":(" } );
            writeChoices( option->argument );
            writeCstr( stdout, ")" );
        }

        writeCstr( stdout, "'" );
    }

    write( { " '(-h --help)'{-h,--help}'[prints this]' '--version[prints the version]'" } );

    if( isLiteral( tool.words ) || strcmp( tool.words, "[TOOL]" ) == 0 )
    {
        write( { " '1:word:(" } );
        writeChoices( tool.words );
        writeCstr( stdout, ")'" );
    }
    else if( takesFiles( tool ) )
    {
        writeCstr( stdout, " '*:file:_files'" );
    }

    writeCstr( stdout, " ;;\n" );
}

void writeZsh()
{
    write( { "#compdef morvane\n_morvane()\n{\n    local -a tools\n    local first=$words[2] second=$words[3]\n" } );
    writeCharsets();
    write( { "\n"
             "    if (( CURRENT == 2 )); then\n        " } );
    writeZshNames( "" );
    write( { "\n        _describe tool tools\n        return\n    fi\n\n"
             "    if (( CURRENT == 3 )); then\n        case $first in\n" } );

    visitTools(
        "",
        []( const Tool &tool )
        {
            if( tool.kind != HAS_TOOLS )
                return;

            write( { "        ", tool.name, ") " } );
            writeZshNames( tool.name );
            write( { " ;;\n" } );
        } );

    write( { "        esac\n        (( $#tools )) && _describe tool tools && return\n    fi\n\n"
             "    shift words\n    (( CURRENT -= 1 ))\n\n    case $first in\n" } );

    visitTools(
        "",
        []( const Tool &tool )
        {
            if( tool.kind == HAS_TOOLS )
                return;

            write( { "    ", tool.name, ") " } );
            writeZshTool( tool );
        } );

    write( { "    *)\n        shift words\n        (( CURRENT -= 1 ))\n\n        case \"$first $second\" in\n" } );

    for( int i = 0; i < TOOL_COUNT; i++ )
    {
        if( !*TOOLS[i].group )
            continue;

        write( { "        '", TOOLS[i].group, " ", TOOLS[i].name, "') " } );
        writeZshTool( TOOLS[i] );
    }

    write( { "        esac\n        ;;\n    esac\n}\n_morvane \"$@\"\n" } );
}
} // namespace

int printCompletion( const Arguments &arguments )
{
    Ref< QV_STRING > shell = arguments.wordAt( 0 );

    if( qvStringEqualsCstr( shell, "bash", -1 ) )
    {
        writeBash();
        return SUCCESS;
    }

    if( qvStringEqualsCstr( shell, "zsh", -1 ) )
    {
        writeZsh();
        return SUCCESS;
    }

    complain( "morvane completion", shell, "neither bash nor zsh" );
    return MISUSE;
}
} // namespace morvane
