#ifndef QV_RUNTIME_PLATFORM_PRIVATE_H
#define QV_RUNTIME_PLATFORM_PRIVATE_H

#include "qv/base/qv_error_private.h"
#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_runtime.h"

#define QV___RUNTIME_PATH_COUNT ( QV_RUNTIME_PATH_DATA_TEMP + 1 )

/** The paths of the run by their enumerants; null for a path that the run does not have. */
extern "C" QV_STRING *qv___RuntimePlatformPaths[QV___RUNTIME_PATH_COUNT];

/** The path in the environment variable whose name is `variable` in upper case, with a solidus at its end: a new
    String, or null if there is no such variable. */
QV_API QV_STRING *qv___RuntimePlatformUnixPathFromEnvironment( QV_STRING *variable );

/** Makes each directory of a path that is missing. What cannot be made is left out without a report. */
QV_API void qv___RuntimePlatformUnixSetupPath( QV_STRING *path );

namespace qv
{
/** False for a file that the system's loader would not refuse, but fail with: a shared object that is cut off, as by an
    unfinished copy, would end the process by a signal, and a pipe would make it wait. `*why` gets the code and the
    reason. */
bool isFitToLoad( const char *path, ErrorDetails *why );

/** The path of the file that a module was loaded from, as the loader keeps it, or null. */
const char *fileOfModule( QV_MODULE *module );

/** Whether somebody may sit at the process. */
bool isInputTerminal();
} // namespace qv

/** What the platform tells about the computer: new Strings, or null. */
QV_API QV_STRING *qv___RuntimePlatformComputerName( void );
QV_API QV_STRING *qv___RuntimePlatformOperatingSystemInfo( void );
QV_API QV_STRING *qv___RuntimePlatformCpuInfo( void );

#endif
