/** @file
    Options: the options of a program with what they take and mean, from which the checks of a command line, the usage
    text and the completion of shells come.

        QV_OPTIONS *options = qvOptionsCreateCstr( "count", -1, "[FILE...]", -1, "Counts the words of files.", -1 );
        QV_INT      top = qvOptionsAddCstr( &options, U'n', "top=COUNT", -1, QV_OPTION_TYPE_INTEGER, "how many", -1 );
        QV_INT      all = qvOptionsAddCstr( &options, U'a', "all", -1, QV_OPTION_TYPE_FLAG, "shows all words", -1 );

        qvOptionsSetRange( &options, top, 1, 1000 );
        qvOptionsSetDefaultCstr( &options, top, "10", -1 );
        QV_INT status = qvOptionsReadMain( &options, argc, argv );      // answers --help, --version and mistakes

        if( status < 0 )
            status = count( qvOptionsWords( options ), qvOptionsInt( options, top ), qvOptionsHas( options, all ) );

        qvOptionsRelease( options );

    `--top=5`, `--top 5`, `-n5` and `-n 5` are the same, and long names may be abbreviated as long as they stay unique:
    qv_opt_seq.h tells the rules. An option that is given again counts as it was given last, unless it has the flag
    ONCE. Mistakes of a user never end the process: they are texts like "--top: 'many' is not an integer from 1 to 1000".

    Words. What a command line takes beside options is described in the form of a usage, and checked for the number of
    words: "FILE OUT" takes two, "[IN [OUT]]" up to two, "FILE..." one or more, "[FILE...]" any number, and the empty text
    none. Shells complete the names of files for words.

    Value and copy. Options that others hold too are never changed: a function that adds, sets or reads takes the address
    of the caller's reference and replaces shared Options by a private copy first. What was read is a part of them.

    Costs. Adding and reading are linear, with a bisection for each name; an abbreviation walks over all names. Threads.
    Any thread may ask; a variable that is changed belongs to one thread at a time.

    Arguments are borrowed, results belong to the caller. Null as an object ends the process, and so does the number of
    an option that is not there. The lengths of C texts count elements; -1 means up to the terminator. */

#ifndef QV_OPTIONS_H
#define QV_OPTIONS_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Options, QV_OPTIONS )

/* What an option takes ------------------------------------------------------------------------------------------- */

#define QV_OPTION_TYPE_FLAG     0 /**< nothing: it is there or not */
#define QV_OPTION_TYPE_TEXT     1 /**< any text */
#define QV_OPTION_TYPE_INTEGER  2 /**< an integer, in base 10 or the one of its prefix */
#define QV_OPTION_TYPE_REAL     3 /**< a real */
#define QV_OPTION_TYPE_CHOICE   4 /**< one of the words in the name of its argument: `form=nfc|nfd` */
#define QV_OPTION_TYPE_FILE     5 /**< the name of a file, which is not looked at; shells complete it */
#define QV_OPTION_TYPE_FOLDER   6 /**< the same for a folder */
#define QV_OPTION_TYPE_DURATION 7 /**< a duration: 90s, 1h30m, 1.5d, 250ms; a number alone counts seconds */

/** True for a type. */
#define QV_OPTION_TYPE_OK( type ) ( ( type ) >= 0 && ( type ) <= 7 )

#define QV_OPTION_FLAG_REQUIRED 1 /**< has to be given, unless it has a default */
#define QV_OPTION_FLAG_ONCE     2 /**< may be given once only */
#define QV_OPTION_FLAG_HIDDEN   4 /**< stands neither in the usage text nor in completions */

#define QV_OPTIONS_SHELL_BASH 0 /**< completion for bash */
#define QV_OPTIONS_SHELL_ZSH  1 /**< completion for zsh */

/* Definition ----------------------------------------------------------------------------------------------------- */

/** @{ */
/** New Options without any. `program` is how the program is called, `words` what it takes beside options, `text` what it
    does, for the usage text. The last two may be empty. */
QV_API QV_OPTIONS *qvOptionsCreate( QV_STRING *program, QV_STRING *words, QV_STRING *text );
QV_API QV_OPTIONS *qvOptionsCreateCstr(
    const char *program, QV_INT programLength, const char *words, QV_INT wordsLength, const char *text,
    QV_INT textLength );
QV_API QV_OPTIONS *qvOptionsCreateWcstr(
    const wchar_t *program, QV_INT programLength, const wchar_t *words, QV_INT wordsLength, const wchar_t *text,
    QV_INT textLength );
/** @} */

/** New Options like others, with what was read. */
QV_API QV_OPTIONS *qvOptionsCreateFrom( QV_OPTIONS *options );

/** @{ */
/** Adds an option and returns its number; the first one has 0. `shortOpt` is its letter, or 0 for none. `longOpt` is its
    name, and after an equals sign how its argument is called: "top=COUNT". `type` is a QV_OPTION_TYPE value, and `text`
    tells what the option does. A name or letter that another option has, an empty name, a character of 0x110000 or above
    and a wrong type end the process. */
QV_API QV_INT qvOptionsAdd( QV_OPTIONS **options, QV_CHAR shortOpt, QV_STRING *longOpt, QV_INT type, QV_STRING *text );
QV_API QV_INT qvOptionsAddCstr(
    QV_OPTIONS **options, QV_CHAR shortOpt, const char *longOpt, QV_INT longOptLength, QV_INT type, const char *text,
    QV_INT textLength );
QV_API QV_INT qvOptionsAddWcstr(
    QV_OPTIONS **options, QV_CHAR shortOpt, const wchar_t *longOpt, QV_INT longOptLength, QV_INT type,
    const wchar_t *text, QV_INT textLength );
/** @} */

/** @{ */
/** Begins a group: the options that are added from now on stand under this heading in the usage text. */
QV_API void qvOptionsBeginGroup( QV_OPTIONS **options, QV_STRING *heading );
QV_API void qvOptionsBeginGroupCstr( QV_OPTIONS **options, const char *heading, QV_INT length );
QV_API void qvOptionsBeginGroupWcstr( QV_OPTIONS **options, const wchar_t *heading, QV_INT length );
/** @} */

/** @{ */
/** Sets what stands at the end of the usage text, as examples: lines, which are not wrapped. */
QV_API void qvOptionsSetNotes( QV_OPTIONS **options, QV_STRING *text );
QV_API void qvOptionsSetNotesCstr( QV_OPTIONS **options, const char *text, QV_INT length );
QV_API void qvOptionsSetNotesWcstr( QV_OPTIONS **options, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Reads or sets the QV_OPTION_FLAG bits of an option, which are 0 at first. */
QV_API QV_INT qvOptionsFlags( QV_OPTIONS *options, QV_INT option );
QV_API void   qvOptionsSetFlags( QV_OPTIONS **options, QV_INT option, QV_INT flags );
/** @} */

/** @{ */
/** Sets the argument that counts if the option is not given. It is read and checked as a given one is. */
QV_API void qvOptionsSetDefault( QV_OPTIONS **options, QV_INT option, QV_STRING *argument );
QV_API void qvOptionsSetDefaultCstr( QV_OPTIONS **options, QV_INT option, const char *argument, QV_INT length );
QV_API void qvOptionsSetDefaultWcstr( QV_OPTIONS **options, QV_INT option, const wchar_t *argument, QV_INT length );
/** @} */

/** @{ */
/** Sets the least and the greatest value of an integer, of a duration in milliseconds, or of a real. Values outside are
    mistakes. `least > most`, and an option of another type, end the process. */
QV_API void qvOptionsSetRange( QV_OPTIONS **options, QV_INT option, QV_INT least, QV_INT most );
QV_API void qvOptionsSetRealRange( QV_OPTIONS **options, QV_INT option, QV_REAL least, QV_REAL most );
/** @} */

/** How many options there are. */
QV_API QV_INT qvOptionsLength( QV_OPTIONS *options );

/** The names and letters as a new definition for an OptSeq, in which the id of an option is its number. */
QV_API QV_OPT_DEF *qvOptionsOptDef( QV_OPTIONS *options );

/* Texts ---------------------------------------------------------------------------------------------------------- */

/** The usage text: how the program is called, what it does, the options by groups with their defaults, and the notes.
    It is wrapped to `width` cells of a terminal, or with -1 not at all. A narrow width is kept as far as that is
    possible. A width below -1 ends the process. */
QV_API QV_STRING *qvOptionsUsage( QV_OPTIONS *options, QV_INT width );

/** A script with which a shell, QV_OPTIONS_SHELL_BASH or _ZSH, completes the command line. bash reads it by `.`; zsh
    finds it as the file `_PROGRAM` in its `fpath`. Another shell ends the process. */
QV_API QV_STRING *qvOptionsCompletion( QV_OPTIONS *options, QV_INT shell );

/* Reading -------------------------------------------------------------------------------------------------------- */

/** Reads the arguments of a command line, without the name of the program. They may be any objects, as qv_opt_seq.h
    tells. What was read before is forgotten. False if there is a mistake: qvOptionsError() tells it, and what stands
    before it has been read. */
QV_API QV_BOOL qvOptionsRead( QV_OPTIONS **options, QV_VECTOR *argv );

/** Does what main() does first: adds -h, --help, --version and --completion where no other option has these names, outside
    of groups, reads the arguments, which are UTF-8, and answers them. To be called once for Options: a second time the
    names are taken, and not answered. Returns -1 if the program shall go on, else its exit status: 0 after
    the help, the version or the completion, printed to the standard output and wrapped to the terminal's width or 80
    cells; 1 if that could not be written; 2 after a line about a mistake on the standard error stream. The version is
    that of the start of the library, without which there is no --version. A negative `argc`, and null in `argv` before
    that, end the process. */
QV_API QV_INT qvOptionsReadMain( QV_OPTIONS **options, QV_INT argc, char *const *argv );

/** True if the last reading met a mistake. */
QV_API QV_BOOL qvOptionsHasError( QV_OPTIONS *options );

/** The mistake of the last reading as a text for the user, or null. */
QV_API QV_STRING *qvOptionsError( QV_OPTIONS *options );

/** True if an option was given. */
QV_API QV_BOOL qvOptionsHas( QV_OPTIONS *options, QV_INT option );

/** How often an option was given. */
QV_API QV_INT qvOptionsCount( QV_OPTIONS *options, QV_INT option );

/** The argument of an option as it was given last, else its default; null if it has neither. */
QV_API QV_STRING *qvOptionsString( QV_OPTIONS *options, QV_INT option );

/** All arguments of an option as Strings, in the order in which they were given; its default if there is none. */
QV_API QV_VECTOR *qvOptionsStrings( QV_OPTIONS *options, QV_INT option );

/** The integer, the milliseconds of the duration, or the index of the word of the choice that an option's argument is;
    -1 for a choice, and else 0, if it has none or that is a mistake. Another type ends the process. */
QV_API QV_INT qvOptionsInt( QV_OPTIONS *options, QV_INT option );

/** The same for a real, or an integer as a real. */
QV_API QV_REAL qvOptionsReal( QV_OPTIONS *options, QV_INT option );

/** The words beside the options, as Strings. */
QV_API QV_VECTOR *qvOptionsWords( QV_OPTIONS *options );

#endif
