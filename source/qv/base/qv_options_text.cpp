#include "qv/base/qv_options_private.h"

#include "qv/base/qv_options.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/sys/qv_int.h"
#include "qv/unicode/qv_unicode_width.h"

/* The usage text, and the scripts that let shells complete a command line. */

using qv::Option;
using qv::Ref;
using qv::takesArgument;

namespace
{
const QV_INT MOST_NAMES  = 30; // cells of the column of the names; longer ones have a line of their own
const QV_INT LEAST_TEXTS = 20; // cells of the column of the texts

const char   USAGE[]     = "Usage: ";
const QV_INT USAGE_CELLS = sizeof( USAGE ) - 1;

void add( Ref< QV_STRING > &to, const char *text )
{
    qvStringAppendCstr( to.at(), text, -1 );
}

void addSpaces( Ref< QV_STRING > &to, QV_INT count )
{
    for( QV_INT i = 0; i < count; i++ )
        qvStringAppendChar( to.at(), U' ' );
}

bool isShown( const Option &option )
{
    return !( option.flags & QV_OPTION_FLAG_HIDDEN );
}

/* Usage ---------------------------------------------------------------------------------------------------------- */

// What an option is called with: `-o, --output=FILE`.
Ref< QV_STRING > namesOf( const Option &option )
{
    Ref< QV_STRING > names( qvStringCreate() );

    if( option.letter )
        qvStringAppendFormatCstr( names.at(), "-%c, ", -1, option.letter );
    else
        add( names, "    " );

    qvStringAppendFormatCstr(
        names.at(), takesArgument( option ) ? "--%s=%s" : "--%s%s", -1, option.name, option.argument );
    return names;
}

// Appends a text wrapped to lines, of which all but the first begin with spaces.
void addWrapped( Ref< QV_STRING > &to, QV_STRING *text, QV_INT width, QV_INT indent )
{
    Ref< QV_VECTOR > lines( qvStringDisplayWrap( text, width, 0 ) );

    for( QV_INT i = 0; i < qvVectorLength( lines ); i++ )
    {
        Ref< QV_STRING > line( qvStringFrom( qvVectorObjAt( lines, i ) ) );
        bool             isIndented = i > 0 && qvStringLength( line ) > 0;
        addSpaces( to, isIndented ? indent : 0 );
        qvStringAppendFormatCstr( to.at(), "%s\n", -1, line.get() );
    }
}

// The column in which the texts of the options begin.
QV_INT columnOf( QV_OPTIONS *options )
{
    QV_INT widest = 0;

    for( QV_INT i = 0; i < options->count; i++ )
    {
        QV_INT cells = qvStringDisplayWidth( namesOf( options->all[i] ), 0 );

        if( isShown( options->all[i] ) && cells <= MOST_NAMES )
            widest = qvIntMax( widest, cells );
    }

    return widest + 4;
}

void addOption( Ref< QV_STRING > &to, const Option &option, QV_INT column, QV_INT width )
{
    Ref< QV_STRING > names = namesOf( option );
    Ref< QV_STRING > text  = Ref< QV_STRING >::share( option.text );
    QV_INT           cells = qvStringDisplayWidth( names, 0 );

    if( option.fallback )
        qvStringAppendFormatCstr( text.at(), "; %s by default", -1, option.fallback );

    qvStringAppendFormatCstr( to.at(), "  %s", -1, names.get() );

    // Texts that have no room beside the names stand below them.
    if( cells + 4 > column )
    {
        add( to, "\n" );
        cells = -2;
    }

    addSpaces( to, column - cells - 2 );
    addWrapped( to, text, qvIntMax( width - column, LEAST_TEXTS ), column );
}

// Appends the options of a group, and returns whether there are any.
bool addGroup( Ref< QV_STRING > &to, QV_OPTIONS *options, QV_STRING *heading, QV_INT column, QV_INT width )
{
    bool begun = false;

    for( QV_INT i = 0; i < options->count; i++ )
    {
        const Option &option = options->all[i];

        if( !isShown( option )
            || ( option.group != heading && !( option.group && heading && qvStringEquals( option.group, heading ) ) ) )
            continue;

        if( !begun && heading )
            qvStringAppendFormatCstr( to.at(), "\n%s:\n", -1, heading );
        else if( !begun )
            add( to, "\nOptions:\n" );

        addOption( to, option, column, width );
        begun = true;
    }

    return begun;
}

// True for the first option with its group.
bool beginsGroup( QV_OPTIONS *options, QV_INT option )
{
    QV_STRING *heading = options->all[option].group;

    for( QV_INT i = 0; heading && i < option; i++ )
        if( options->all[i].group && qvStringEquals( options->all[i].group, heading ) )
            return false;

    return heading != nullptr;
}

Ref< QV_STRING > synopsisOf( QV_OPTIONS *options )
{
    Ref< QV_STRING > synopsis  = Ref< QV_STRING >::share( options->program );
    bool             hasOthers = false;

    for( QV_INT i = 0; i < options->count; i++ )
    {
        const Option &option = options->all[i];

        if( !( option.flags & QV_OPTION_FLAG_REQUIRED ) || option.fallback || !isShown( option ) )
            hasOthers |= isShown( option );
        else
            qvStringAppendFormatCstr(
                synopsis.at(), takesArgument( option ) ? " --%s=%s" : " --%s%s", -1, option.name, option.argument );
    }

    if( hasOthers )
        add( synopsis, " [OPTION...]" );

    if( qvStringLength( options->words ) > 0 )
        qvStringAppendFormatCstr( synopsis.at(), " %s", -1, options->words );

    return synopsis;
}

/* Completion ----------------------------------------------------------------------------------------------------- */

// A text between single quotes of a shell. With `escaped`, what ends a part of zsh's descriptions has a backslash.
Ref< QV_STRING > quoted( QV_STRING *text, bool escaped )
{
    Ref< QV_STRING > result( qvStringCreate() );

    for( QV_INT i = 0; i < qvStringLength( text ); i++ )
    {
        const QV_CHAR ch = qvStringCharAt( text, i );

        if( ch == U'\'' )
        {
            add( result, "'\\''" );
            continue;
        }

        if( escaped && ( ch == U'[' || ch == U']' || ch == U':' || ch == U'\\' ) )
            qvStringAppendChar( result.at(), U'\\' );

        qvStringAppendChar( result.at(), ch == U'\n' ? U' ' : ch );
    }

    return result;
}

// The words of a choice with spaces between them, for single quotes; empty if the option is none.
Ref< QV_STRING > choicesOf( const Option &option )
{
    Ref< QV_STRING > choices( qvStringCreate() );

    if( option.type != QV_OPTION_TYPE_CHOICE )
        return choices;

    choices = quoted( option.argument, false );

    for( QV_INT i = 0; i < qvStringLength( choices ); i++ )
        if( qvStringCharAt( choices, i ) == U'|' )
            qvStringSetCharAt( choices.at(), i, U' ' );

    return choices;
}

// The name of a shell's function for the program.
Ref< QV_STRING > functionOf( QV_OPTIONS *options )
{
    Ref< QV_STRING > name = Ref< QV_STRING >::share( options->program );

    for( QV_INT i = 0; i < qvStringLength( name ); i++ )
    {
        const QV_CHAR ch = qvStringCharAt( name, i ), lower = ch | 0x20;

        if( !( lower >= U'a' && lower <= U'z' ) && !( ch >= U'0' && ch <= U'9' ) )
            qvStringSetCharAt( name.at(), i, U'_' );
    }

    return name;
}

bool takesWords( QV_OPTIONS *options )
{
    return qv::wordCountOf( options->words ).most > 0;
}

// Calls `visit` with each option that is shown.
template< class Visit >
void visitShown( QV_OPTIONS *options, const Visit &visit )
{
    for( QV_INT i = 0; i < options->count; i++ )
        if( isShown( options->all[i] ) )
            visit( options->all[i] );
}

Ref< QV_STRING > bashOf( QV_OPTIONS *options )
{
    Ref< QV_STRING > function = functionOf( options );
    Ref< QV_STRING > program  = quoted( options->program, false );
    Ref< QV_STRING > script( qvStringCreateFromFormatCstr(
        "# Completion of %s for bash.\n_%s()\n{\n"
        "    local word=\"${COMP_WORDS[COMP_CWORD]}\" before=\"${COMP_WORDS[COMP_CWORD - 1]}\"\n\n"
        "    # An argument after an equals sign is a word of its own.\n"
        "    [[ $before == = ]] && before=\"${COMP_WORDS[COMP_CWORD - 2]}\"\n"
        "    [[ $word == = ]] && word=\n"
        "    COMPREPLY=()\n\n"
        "    case \"$before\" in\n",
        -1, options->program, function.get() ) );

    visitShown(
        options,
        [&]( const Option &option )
        {
            if( !takesArgument( option ) )
                return;

            add( script, "    " );

            if( option.letter )
            {
                Ref< QV_STRING > letter( qvStringCreateFromCharsCopy( &option.letter, 1 ) );
                qvStringAppendFormatCstr( script.at(), "'-%~s'|", -1, quoted( letter, false ).give() );
            }

            qvStringAppendFormatCstr( script.at(), "'--%~s') ", -1, quoted( option.name, false ).give() );

            if( option.type == QV_OPTION_TYPE_FILE )
                add( script, "compopt -o default" );
            else if( option.type == QV_OPTION_TYPE_FOLDER )
                add( script, "compopt -o dirnames" );
            else
                qvStringAppendFormatCstr(
                    script.at(), "COMPREPLY=( $( compgen -W '%~s' -- \"$word\" ) )", -1, choicesOf( option ).give() );

            add( script, " ;;\n" );
        } );

    add( script, "    *)\n        if [[ $word == -* ]]; then\n            COMPREPLY=( $( compgen -W '" );
    visitShown(
        options, [&]( const Option &option )
        { qvStringAppendFormatCstr( script.at(), "--%~s ", -1, quoted( option.name, false ).give() ); } );
    add( script, "' -- \"$word\" ) )\n" );

    if( takesWords( options ) )
        add( script, "        else\n            compopt -o default\n" );

    qvStringAppendFormatCstr(
        script.at(), "        fi\n        ;;\n    esac\n}\ncomplete -F _%s '%s'\n", -1, function.get(), program.get() );
    return script;
}

Ref< QV_STRING > zshOf( QV_OPTIONS *options )
{
    Ref< QV_STRING > function = functionOf( options );
    Ref< QV_STRING > script(
        qvStringCreateFromFormatCstr( "#compdef %s\n_%s()\n{\n    _arguments", -1, options->program, function.get() ) );

    visitShown(
        options,
        [&]( const Option &option )
        {
            Ref< QV_STRING > name   = quoted( option.name, true );
            const char      *equals = takesArgument( option ) ? "=" : "";
            const char      *sticks = takesArgument( option ) ? "+" : "";
            const bool       isOnce = option.flags & QV_OPTION_FLAG_ONCE;

            add( script, " \\\n        " );

            // The names exclude each other where the option may be given once, and can be repeated elsewhere.
            if( option.letter && isOnce )
                qvStringAppendFormatCstr( script.at(), "'(-%c --%s)'", -1, option.letter, name.get() );
            else if( !isOnce )
                add( script, "'*'" );

            if( option.letter )
                qvStringAppendFormatCstr(
                    script.at(), "{-%c%lc,--%s%lc}", -1, option.letter, sticks, name.get(), equals );
            else
                qvStringAppendFormatCstr( script.at(), "--%s%lc", -1, name.get(), equals );

            qvStringAppendFormatCstr( script.at(), "'[%~s]", -1, quoted( option.text, true ).give() );

            if( takesArgument( option ) )
                qvStringAppendFormatCstr( script.at(), ":%~s:", -1, quoted( option.argument, true ).give() );

            if( option.type == QV_OPTION_TYPE_CHOICE )
                qvStringAppendFormatCstr( script.at(), "(%~s)", -1, choicesOf( option ).give() );
            else if( option.type == QV_OPTION_TYPE_FILE || option.type == QV_OPTION_TYPE_FOLDER )
                add( script, option.type == QV_OPTION_TYPE_FILE ? "_files" : "_files -/" );
            else if( takesArgument( option ) )
                add( script, " " );

            add( script, "'" );
        } );

    if( takesWords( options ) )
        add( script, " \\\n        '*:file:_files'" );

    qvStringAppendFormatCstr( script.at(), "\n}\n_%s \"$@\"\n", -1, function.get() );
    return script;
}
} // namespace

QV_STRING *qvOptionsUsage( QV_OPTIONS *options, QV_INT width )
{
    QV_CHECK( options );
    QV_CHECK( width >= -1 );

    const QV_INT     cells  = width < 0 ? QV_INT_MAX : width;
    const QV_INT     column = columnOf( options );
    Ref< QV_STRING > text( qvStringCreate() );
    add( text, USAGE );
    addWrapped( text, synopsisOf( options ), qvIntMax( cells - USAGE_CELLS, LEAST_TEXTS ), USAGE_CELLS );

    if( qvStringLength( options->text ) > 0 )
    {
        add( text, "\n" );
        addWrapped( text, options->text, qvIntMax( cells, LEAST_TEXTS ), 0 );
    }

    addGroup( text, options, nullptr, column, cells );

    for( QV_INT i = 0; i < options->count; i++ )
        if( beginsGroup( options, i ) )
            addGroup( text, options, options->all[i].group, column, cells );

    if( options->notes )
        qvStringAppendFormatCstr( text.at(), "\n%s\n", -1, options->notes );

    return text.give();
}

QV_STRING *qvOptionsCompletion( QV_OPTIONS *options, QV_INT shell )
{
    QV_CHECK( options );
    QV_CHECK( shell == QV_OPTIONS_SHELL_BASH || shell == QV_OPTIONS_SHELL_ZSH );

    return ( shell == QV_OPTIONS_SHELL_BASH ? bashOf( options ) : zshOf( options ) ).give();
}
