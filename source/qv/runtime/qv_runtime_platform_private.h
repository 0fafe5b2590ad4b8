#ifndef QV_RUNTIME_PLATFORM_PRIVATE_H
#define QV_RUNTIME_PLATFORM_PRIVATE_H

#include "qv/runtime/qv_runtime.h"

#define QV___RUNTIME_PATH_COUNT ( QV_RUNTIME_PATH_DATA_TEMP + 1 )

/** The paths of the run by their enumerants; null for a path that the run does not have. */
extern "C" QV_STRING *qv___RuntimePlatformPaths[QV___RUNTIME_PATH_COUNT];

/** The path in the environment variable whose name is `variable` in upper case, with a solidus at its end: a new
    String, or null. */
QV_API QV_STRING *qv___RuntimePlatformUnixPathFromEnvironment( QV_STRING *variable );

/** Makes each directory of a path that is missing. What cannot be made is left out without a word. */
QV_API void qv___RuntimePlatformUnixSetupPath( QV_STRING *path );

/** Opens the file of a module and gives the module, a new reference, or null: the file is missing or is none, is built
    for another product, or holds another module. A file that was opened and refused is closed again; that of a module
    that was given stays open for the life of the process. */
QV_API QV_MODULE *qv___RuntimePlatformLoadModule( QV_STRING *moduleName );

namespace qv
{
/** False for a file that the system's loader would stumble over instead of refusing it: a shared object that is cut off,
    as by a copy under way, ends the process, and a pipe makes it wait. */
bool isFitToLoad( const char *path );
} // namespace qv

/** What the platform tells about the computer: new Strings, or null. */
QV_API QV_STRING *qv___RuntimePlatformComputerName( void );
QV_API QV_STRING *qv___RuntimePlatformOperatingSystemInfo( void );
QV_API QV_STRING *qv___RuntimePlatformCpuInfo( void );

#endif
