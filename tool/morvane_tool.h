/** @file
    What the tools of the executable share: how they print, how they fail, and how they read their arguments. */

#ifndef MORVANE_TOOL_H
#define MORVANE_TOOL_H

#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

#include <stdio.h>
#include <string.h>

namespace morvane
{
/** Exit statuses. */
const int SUCCESS = 0;
const int FAILURE = 1; // a line on the standard error stream says why
const int MISUSE  = 2; // the usage is printed to the standard error stream

/** An option that a tool takes. */
struct Option
{
    const char *name; // without the dashes
    const char
        *argument;    // what it takes, words with `|` between them where it is one of them; null if it takes nothing
    const char *text; // what it does
    int         flags    = 0;
    int         group    = 0;       // other than 0: of the options of a tool with one number only one may be given
    const char *fallback = nullptr; // the argument that counts if it isn't given, or null
};

/** What Option::flags holds. */
const int REQUIRED = 1; // it, or one of its group, has to be given
const int REPEATS  = 2; // may be given more than once, and beside others of its group

class Arguments;

/** What the arguments of a tool are, and where `--help` asks for its usage. */
enum ToolKind
{
    HAS_OPTIONS, // options and words: anywhere before `--`
    HAS_WORDS,   // words, which may begin with a dash: anywhere before `--`
    HAS_TOOLS,   // the first is a tool of its group: nowhere, that one looks at the arguments
    PASSES_ON,   // all but the first are passed on to a module: as the first only
};

/** One tool: a row of the table. Usage, checks of arguments, completion and manual come from it. */
struct Tool
{
    const char *group; // the tool that it belongs to, or empty
    const char *name;
    const char *words; // what it takes beside options, in the form of a usage; how many words there may be follows
    const char *line;  // what it does, for the list of tools

    /** Returns the exit status. Null if it has tools. */
    int ( *func )( const Arguments &arguments );

    const char *details     = ""; // for the manual, paragraphs with an empty line between them
    Option      options[9]  = {}; // ends with a name that is null
    const char *examples[5] = {}; // command lines, ends with null

    ToolKind kind         = HAS_OPTIONS;
    QV_INT   runtimeFlags = QV_RUNTIME_FLAG_MINIMAL; // of the library's start; read where the group is empty
};

/** All tools: those of the executable, and those of each in the order of their list. */
extern const Tool TOOLS[];
extern const int  TOOL_COUNT;

/** Prints a text as a line through the print hook. */
void print( QV_STRING *line );

/** Prints a document in its canonical text form. */
void printDocument( QV_STORE *store );

/** From now on writes every printed line to the standard output at once. */
void printAtOnce();

/** Writes bytes to the standard output, after what has been printed. False if a write has failed, now or before: the
    exit status of the process is FAILURE then. */
bool put( const char *bytes, QV_INT count );

/** @{ */
/** Prints what is wrong with the arguments of a tool as a line on the standard error stream. */
void complain( const Tool &tool, const char *reason );
void complain( const Tool &tool, QV_STRING *subject, const char *reason );
/** @} */

/** Prints "prefix: subject: reason" as a line on the standard error stream. */
void complain( const char *prefix, QV_STRING *subject, const char *reason );
void complain( const char *prefix, QV_STRING *subject, QV_STRING *reason );

/** Runs the tool of a group that the first argument names, and returns its exit status. `help` lists the tools. Wrong
    arguments show the usage of the tool, or the list if no tool is named. */
int runTool( const char *group, QV_VECTOR *argv );

/** Prints the version of the product. */
void tellVersion();

/** The tools of a group, or of the executable for an empty text, as they are listed. */
void listTools( FILE *stream, const char *group );

/** The usage of a tool in a line; and with what it does, its options and its examples. */
void tellUsage( FILE *stream, const Tool &tool );
void tellHelp( const Tool &tool );

/** Calls `visit` with each tool of a group, in the order of the table. */
template< class Visit >
void visitTools( const char *group, const Visit &visit )
{
    for( int i = 0; i < TOOL_COUNT; i++ )
        if( strcmp( TOOLS[i].group, group ) == 0 )
            visit( TOOLS[i] );
}

/** The usage of a tool after its name: options, then words. */
qv::Ref< QV_STRING > synopsisOf( const Tool &tool );

/** The options and words of a tool's command line. */
class Arguments
{
public:
    /** Reads a command line. False, with a line on the standard error stream, for an option that the tool doesn't have,
        for one that is repeated though it may not be, for an option that lacks its argument or has one too many, and
        for a number of words, or a choice of options, that the tool doesn't take. */
    bool read( const Tool &tool, QV_VECTOR *argv );

    /** The plain words, as Strings. */
    QV_VECTOR *words() const
    {
        return words_;
    }

    QV_INT               wordCount() const;
    qv::Ref< QV_STRING > wordAt( QV_INT idx ) const;

    /** True if an option was given. */
    bool has( const char *option ) const;

    /** The argument of an option, or its fallback; nothing if it has none. */
    qv::Ref< QV_STRING > valueOf( const char *option ) const;

    /** The options that were given, in their order: their number, the index of each among those of the tool, and its
        argument. */
    QV_INT               optionCount() const;
    QV_INT               optionAt( QV_INT idx ) const;
    qv::Ref< QV_STRING > argumentAt( QV_INT idx ) const;

private:
    bool   readOptions( QV_VECTOR *argv );
    bool   hasRightWords() const;
    bool   hasRightOptions() const;
    QV_INT placeOf( const char *option ) const;

    const Tool          *tool_ = nullptr;
    qv::Ref< QV_VECTOR > words_;
    qv::Ref< QV_VECTOR > options_;   // boxed integers
    qv::Ref< QV_VECTOR > arguments_; // Strings, empty where there is no argument
};

/** An element of a Vector of Strings. */
qv::Ref< QV_STRING > wordAt( QV_VECTOR *words, QV_INT idx );

/** Reads an integer to the base 10. False if the text as a whole is none. */
bool readInteger( QV_STRING *text, QV_INT *value );

/** @{ */
/** The functions of the tools, each in the file of its group. */
int printCompletion( const Arguments &arguments );
int printManual( const Arguments &arguments );
int makeIdentifier( const Arguments &arguments );
int tellInfo( const Arguments &arguments );
int showModules( const Arguments &arguments );
int runModule( const Arguments &arguments );
int randomBytes( const Arguments &arguments );
int randomInteger( const Arguments &arguments );
int showStore( const Arguments &arguments );
int getValues( const Arguments &arguments );
int setValues( const Arguments &arguments );
int deleteEntries( const Arguments &arguments );
int mergeStores( const Arguments &arguments );
int encodeStore( const Arguments &arguments );
int decodeStore( const Arguments &arguments );
int checkStore( const Arguments &arguments );
int convertText( const Arguments &arguments );
int normalizeText( const Arguments &arguments );
int mapCase( const Arguments &arguments );
int setNewlines( const Arguments &arguments );
int tellNow( const Arguments &arguments );
int showTime( const Arguments &arguments );
int shiftTime( const Arguments &arguments );
int secondsBetween( const Arguments &arguments );
int tellZone( const Arguments &arguments );
int listZones( const Arguments &arguments );
int showCharacters( const Arguments &arguments );
int listCharsets( const Arguments &arguments );
/** @} */
} // namespace morvane

#endif
