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
const int FAILURE = 1; // what was asked for could not be done; a line on the standard error stream says why
const int MISUSE  = 2; // the usage stands on the standard error stream

/** What a tool function gets as its context: it leaves the exit status there. */
struct Context
{
    int  status     = MISUSE;
    bool usageShown = false;

    void ( *afterwards )() = nullptr; // called when the run of the library is over
};

/** What the arguments of a tool are. `--help` among options, and before all others, asks for the usage. */
enum ToolKind
{
    HAS_OPTIONS,
    HAS_TOOLS, // the first is a tool of its own
    PASSES_ON, // all but the first are somebody else's
};

/** One tool of a switch: the table row that its name, its line in the list and its usage come from. */
struct Tool
{
    const char         *name;
    const char         *arguments; // as the usage has them
    const char         *line;      // what it does
    QV_TOOL_SWITCH_FUNC func;

    ToolKind kind         = HAS_OPTIONS;
    QV_INT   runtimeFlags = QV_RUNTIME_FLAG_MINIMAL; // that the library is started with; in the first table only
};

/** Prints a text as a line through the print hook. */
void print( QV_STRING *line );

/** Prints a document in its canonical text form. */
void printDocument( QV_STORE *store );

/** Makes every text that is printed from now on reach the standard output at once. */
void printAtOnce();

/** Writes bytes to the standard output, behind what has been printed. False once that has failed, which the end of the
    process tells. */
bool put( const char *bytes, QV_INT count );

/** Starts the library for the executable. */
void startRuntime( QV_INT flags, QV_RUNTIME_PRINT_FUNC printFunc );

/** Prints "prefix: subject: reason" as a line on the standard error stream. */
void complain( const char *prefix, QV_STRING *subject, const char *reason );
void complain( const char *prefix, QV_STRING *subject, QV_STRING *reason );

/** Runs the tool of a table that the first argument names, and leaves its exit status in the context. `help` lists the
    tools. Wrong usage shows the usage of the tool, or the list if no tool is named. */
void runTool( const char *command, const Tool *tools, int count, QV_VECTOR *argv, Context *context );

/** An option that a tool takes. */
struct Option
{
    const char *name; // without the dashes
    bool        hasArgument;
    bool        repeats = false; // may be given more than once
};

/** What stands on the command line of a tool. */
class Arguments
{
public:
    /** Sorts it out. False, with a line on the standard error stream, for an option that isn't in the table,
        for one that is repeated and may not be, and for an argument that lacks or is too much. */
    bool read( QV_VECTOR *argv, const Option *options, int count );

    /** The plain words, as Strings. */
    QV_VECTOR *words() const
    {
        return words_;
    }

    /** The options that were given, in their order: the place of each in the table, and its argument. */
    QV_INT               optionCount() const;
    QV_INT               optionAt( QV_INT idx ) const;
    qv::Ref< QV_STRING > argumentAt( QV_INT idx ) const;

private:
    qv::Ref< QV_VECTOR > words_;
    qv::Ref< QV_VECTOR > options_;   // boxed integers
    qv::Ref< QV_VECTOR > arguments_; // Strings, empty where there is no argument
};

/** A String out of a Vector that holds nothing else. */
qv::Ref< QV_STRING > wordAt( QV_VECTOR *words, QV_INT idx );

/** True if the text is a decimal integer as a whole, which then is `*value`. */
bool readInteger( QV_STRING *text, QV_INT *value );

/** The context that a tool function gets. */
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
