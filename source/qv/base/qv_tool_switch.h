/** @file
    ToolSwitch: many small tools in one executable, run by name. A name may be shortened as long as it stays unique.

    Value and copy. A switch that others hold too is never changed: a setter takes the address of the caller's reference
    and replaces a shared switch by a private copy first. Threads. Any thread may read and run a switch; a variable that
    is changed belongs to one thread at a time.

    Arguments are borrowed. A Cstr is UTF-8 with a length in bytes, a Wcstr wide text with a length in units; a length
    of -1 means that it ends at its terminator. Null as an object ends the process. */

#ifndef QV_TOOL_SWITCH_H
#define QV_TOOL_SWITCH_H

#include "qv/sys/qv_types.h"

QV_FAMILY( ToolSwitch, QV_TOOL_SWITCH )

/** A tool. `argv` is borrowed and holds the arguments without the tool's own name; `context` is that of the call
    of qvToolSwitchRunTool(). True means success. */
typedef QV_BOOL ( *QV_TOOL_SWITCH_FUNC )( QV_VECTOR *argv, void *context );

/** A new switch without tools. */
QV_API QV_TOOL_SWITCH *qvToolSwitchCreate( void );

/** A new switch with the tools of another. Constant time: the two share their table until one is changed. */
QV_API QV_TOOL_SWITCH *qvToolSwitchCreateFrom( QV_TOOL_SWITCH *ts );

/** A new Vector of the names, in their order. */
QV_API QV_VECTOR *qvToolSwitchToolsVector( QV_TOOL_SWITCH *ts );

/** @{ */
/** True if there is a tool of this name, which is not shortened. */
QV_API QV_BOOL qvToolSwitchHasTool( QV_TOOL_SWITCH *ts, QV_STRING *tool );
QV_API QV_BOOL qvToolSwitchHasToolCstr( QV_TOOL_SWITCH *ts, const char *cstr, QV_INT length );
QV_API QV_BOOL qvToolSwitchHasToolWcstr( QV_TOOL_SWITCH *ts, const wchar_t *wcstr, QV_INT length );
/** @} */

/** @{ */
/** Enters or replaces a tool. `func` may be null: such a tool does nothing and succeeds. */
QV_API void qvToolSwitchSetTool( QV_TOOL_SWITCH **ts, QV_STRING *tool, QV_TOOL_SWITCH_FUNC func );
QV_API void qvToolSwitchSetToolCstr( QV_TOOL_SWITCH **ts, const char *cstr, QV_INT length, QV_TOOL_SWITCH_FUNC func );
QV_API void qvToolSwitchSetToolWcstr(
    QV_TOOL_SWITCH **ts, const wchar_t *wcstr, QV_INT length, QV_TOOL_SWITCH_FUNC func );
/** @} */

/** @{ */
/** Removes a tool, if there is one of that name. */
QV_API void qvToolSwitchDelTool( QV_TOOL_SWITCH **ts, QV_STRING *tool );
QV_API void qvToolSwitchDelToolCstr( QV_TOOL_SWITCH **ts, const char *cstr, QV_INT length );
QV_API void qvToolSwitchDelToolWcstr( QV_TOOL_SWITCH **ts, const wchar_t *wcstr, QV_INT length );
/** @} */

/** Runs the tool that the text of the first element of `argv` names, with the other elements and `context`, and returns
    its result. A missing, unknown or ambiguous name is printed, followed by the names of the tools; the result is
    false then. */
QV_API QV_BOOL qvToolSwitchRunTool( QV_TOOL_SWITCH *ts, QV_VECTOR *argv, void *context );

#endif
