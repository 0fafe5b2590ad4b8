#ifndef QV_TOOL_SWITCH_PRIVATE_H
#define QV_TOOL_SWITCH_PRIVATE_H

#include "qv/base/qv_tool_switch.h"
#include "qv/runtime/qv_family.h"

/** A tool as an object, so that a Dict can hold it. */
typedef struct QV___TOOL_SWITCH_TOOL QV___TOOL_SWITCH_TOOL;

QV_FAMILY( ___ToolSwitchTool, QV___TOOL_SWITCH_TOOL )

#endif
