#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_options.h"
#include "qv/base/qv_options_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_cstr_private.h"
#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_standard.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

#include <string.h>

/* What main() does first: reads its arguments, and answers those that ask for help. */

using qv::Ref;

namespace
{
// Exit statuses.
const QV_INT GO_ON   = -1;
const QV_INT DONE    = 0;
const QV_INT FAILED  = 1;
const QV_INT MISUSED = 2;

const QV_INT WIDTH = 80; // where there is no terminal

// Adds an option, to no group of the program's, unless its name is taken. Returns its number or -1.
QV_INT addUnlessTaken( QV_OPTIONS **options, QV_CHAR letter, const char *name, QV_INT type, const char *text )
{
    Ref< QV_STRING > longOpt( qvStringCreateFromCstr( name, strcspn( name, "=" ) ) );

    if( qvOptDefLongOpt( ( *options )->def, longOpt, QV_FALSE, nullptr ) >= 0 )
        return -1;

    bool   isTaken = letter && qvOptDefShortOpt( ( *options )->def, letter ) >= 0;
    QV_INT option  = qvOptionsAddCstr( options, isTaken ? 0 : letter, name, -1, type, text, -1 );
    qv::assign( &( *options )->all[option].group, static_cast< QV_STRING * >( nullptr ) );
    return option;
}

bool isGiven( QV_OPTIONS *options, QV_INT option )
{
    return option >= 0 && qvOptionsHas( options, option );
}

// Writes a text to the standard output, and returns the exit status.
QV_INT answer( QV_STRING *owned )
{
    Ref< QV_STRING > text( owned );
    qvStandardOutputPrint( qvStringBacking( text ), qvStringLength( text ) );
    return qvStandardOutputFlush() ? DONE : FAILED;
}

// Writes a line about a mistake to the standard error stream, and the first line of the usage. Returns the exit status.
QV_INT complain( QV_OPTIONS *options, QV_STRING *owned )
{
    Ref< QV_STRING > reason( owned );
    Ref< QV_STRING > usage( qvOptionsUsage( options, -1 ) );
    Ref< QV_STRING > text( qvStringCreateFromFormatCstr( "%s: %s\n", -1, options->program, reason.get() ) );
    qvStringAppendLeading( text.at(), usage, qvStringFindChar( usage, 0, U'\n' ) + 1 );
    qvStandardErrorPrint( qvStringBacking( text ), qvStringLength( text ) );
    return MISUSED;
}

// The version of the program in a line.
QV_STRING *versionOf( QV_OPTIONS *options )
{
    return qvStringCreateFromFormatCstr( "%s %~s\n", -1, options->program, qvRuntimeVersionApplicationVersion() );
}

// True if a text is what bytes decode to, without replacements.
bool isWhole( const char *bytes, QV_STRING *decoded )
{
    return strcmp( bytes, qv::Cstr( decoded ) ) == 0;
}
} // namespace

QV_INT qvOptionsReadMain( QV_OPTIONS **options, QV_INT argc, char *const *argv )
{
    QV_CHECK( options );
    QV_CHECK( *options );
    QV_CHECK( argc >= 0 );
    QV_CHECK( argv || argc == 0 );

    QV_INT help       = addUnlessTaken( options, U'h', "help", QV_OPTION_TYPE_FLAG, "prints this" );
    QV_INT completion = addUnlessTaken(
        options, 0, "completion=bash|zsh", QV_OPTION_TYPE_CHOICE,
        "prints a script that completes the options in a shell" );
    QV_INT version = -1;

    if( qvRuntimeVersionApplicationHasVersion() )
        version = addUnlessTaken( options, 0, "version", QV_OPTION_TYPE_FLAG, "prints the version" );

    Ref< QV_VECTOR > words( qvVectorCreate() );

    for( QV_INT i = 1; i < argc; i++ )
    {
        QV_CHECK( argv[i] );
        Ref< QV_STRING > word( qvStringCreateFromCstr( argv[i], -1 ) );

        // The name of a file that is decoded with replacements would be that of another one.
        if( !isWhole( argv[i], word ) )
            return complain( *options, qvStringCreateFromFormatCstr( "'%s' is not valid UTF-8", -1, word.get() ) );

        qvVectorAppendString( words.at(), word );
    }

    QV_BOOL isRight = qvOptionsRead( options, words );

    if( isGiven( *options, help ) )
        return answer( qvOptionsUsage( *options, qvStandardOutputWidth() < 0 ? WIDTH : qvStandardOutputWidth() ) );

    if( isGiven( *options, version ) )
        return answer( versionOf( *options ) );

    if( isGiven( *options, completion ) )
        return answer( qvOptionsCompletion( *options, qvOptionsInt( *options, completion ) ) );

    return isRight ? GO_ON : complain( *options, qvOptionsError( *options ) );
}
