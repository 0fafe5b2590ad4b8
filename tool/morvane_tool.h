/** @file
    What the tools of the executable share: how they print, how they fail, and how they read their arguments. */

#ifndef MORVANE_TOOL_H
#define MORVANE_TOOL_H

#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_tool_switch.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

namespace morvane
{
/** Exit statuses. */
const int SUCCESS = 0;
const int FAILURE = 1; // a line on the standard error stream says why
const int MISUSE  = 2; // the usage is printed to the standard error stream

/** The context of a tool function, which sets the exit status. */
struct Context
{
    int  status     = MISUSE;
    bool usageShown = false; // no usage is to be printed, since it has been or because the arguments were right

    void ( *afterwards )() = nullptr; // called after the stop of the library, or null
};

/** What the arguments of a tool are, and where `--help` asks for its usage. */
enum ToolKind
{
    HAS_OPTIONS, // options and words: anywhere before `--`
    HAS_TOOLS,   // the first is a tool of another table: nowhere, that table looks at the arguments
    PASSES_ON,   // all but the first are passed on to a module: as the first only
};

/** One tool of a switch: a row of a table. */
struct Tool
{
    const char         *name;
    const char         *arguments; // for its usage
    const char         *line;      // what it does, for the list of tools
    QV_TOOL_SWITCH_FUNC func;

    ToolKind kind         = HAS_OPTIONS;
    QV_INT   runtimeFlags = QV_RUNTIME_FLAG_MINIMAL; // of the library's start; used in the first table only
};

/** Prints a text as a line through the print hook. */
void print( QV_STRING *line );

/** Prints a document in its canonical text form. */
void printDocument( QV_STORE *store );

/** From now on writes every printed line to the standard output at once. */
void printAtOnce();

/** Writes bytes to the standard output, after what has been printed. False if a write has failed, now or before: the
    exit status of the process is FAILURE then. */
bool put( const char *bytes, QV_INT count );

/** Starts the library for the executable. */
void startRuntime( QV_INT flags, QV_RUNTIME_PRINT_FUNC printFunc );

/** Prints "prefix: subject: reason" as a line on the standard error stream. */
void complain( const char *prefix, QV_STRING *subject, const char *reason );
void complain( const char *prefix, QV_STRING *subject, QV_STRING *reason );

/** Runs the tool of a table that the first argument names, and leaves its exit status in the context. `help` lists the
    tools. Wrong arguments show the usage of the tool, or the list if no tool is named. */
void runTool( const char *command, const Tool *tools, int count, QV_VECTOR *argv, Context *context );

/** An option that a tool takes. */
struct Option
{
    const char *name; // without the dashes
    bool        hasArgument;
    bool        repeats = false; // may be given more than once
};

/** The options and words of a tool's command line. */
class Arguments
{
public:
    /** Reads a command line. False, with a line on the standard error stream, for an option that isn't in the table,
        for one that is repeated though it may not be, and for an option that lacks its argument or has one too many. */
    bool read( QV_VECTOR *argv, const Option *options, int count );

    /** The plain words, as Strings. */
    QV_VECTOR *words() const
    {
        return words_;
    }

    /** The options that were given, in their order: their number, the index of each in the table, and its argument. */
    QV_INT               optionCount() const;
    QV_INT               optionAt( QV_INT idx ) const;
    qv::Ref< QV_STRING > argumentAt( QV_INT idx ) const;

private:
    qv::Ref< QV_VECTOR > words_;
    qv::Ref< QV_VECTOR > options_;   // boxed integers
    qv::Ref< QV_VECTOR > arguments_; // Strings, empty where there is no argument
};

/** An element of a Vector of Strings. */
qv::Ref< QV_STRING > wordAt( QV_VECTOR *words, QV_INT idx );

/** Reads an integer to the base 10. False if the text as a whole is none. */
bool readInteger( QV_STRING *text, QV_INT *value );

/** The context of a tool function. */
inline Context *contextOf( void *context )
{
    return static_cast< Context * >( context );
}

/** The tools of the executable. */
QV_BOOL idTool( QV_VECTOR *argv, void *context );
QV_BOOL infoTool( QV_VECTOR *argv, void *context );
QV_BOOL moduleTool( QV_VECTOR *argv, void *context );
QV_BOOL randomTool( QV_VECTOR *argv, void *context );
QV_BOOL storeTool( QV_VECTOR *argv, void *context );
QV_BOOL textTool( QV_VECTOR *argv, void *context );
QV_BOOL timeTool( QV_VECTOR *argv, void *context );
QV_BOOL unicodeTool( QV_VECTOR *argv, void *context );
} // namespace morvane

#endif
