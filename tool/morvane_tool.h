/** @file
    What the tools of the executable share: how they print, how they fail, and how they read their arguments. */

#ifndef MORVANE_TOOL_H
#define MORVANE_TOOL_H

#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_tool_switch.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"

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
};

/** One tool of a switch: the table row that its name, its line in the list and its usage come from. */
struct Tool
{
    const char         *name;
    const char         *arguments; // as the usage has them
    const char         *line;      // what it does
    QV_TOOL_SWITCH_FUNC func;
};

/** Prints a text as a line through the print hook. */
void print( QV_STRING *line );

/** Prints "prefix: subject: reason" as a line on the standard error stream. */
void complain( const char *prefix, QV_STRING *subject, const char *reason );

/** Runs the tool of a table that the first argument names, and leaves its exit status in the context. `help` lists the
    tools. Wrong usage shows the usage of the tool, or the list if no tool is named. */
void runTool( const char *command, const Tool *tools, int count, QV_VECTOR *argv, Context *context );

/** Reads the arguments of a tool: plain words go to `words` as Strings, options without arguments set the flag at
    their id, counted from 1, in `given`. False for an option that there is none of. */
bool readArguments( QV_VECTOR *argv, const char *const *longOptions, int count, bool *given, qv::Ref< QV_VECTOR > *words );

/** A String out of a Vector that holds nothing else. */
qv::Ref< QV_STRING > wordAt( QV_VECTOR *words, QV_INT idx );

/** The tools of `morvane store`. */
QV_BOOL storeTool( QV_VECTOR *argv, void *context );
} // namespace morvane

#endif
