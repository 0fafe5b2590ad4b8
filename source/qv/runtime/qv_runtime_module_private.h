#ifndef QV_RUNTIME_MODULE_PRIVATE_H
#define QV_RUNTIME_MODULE_PRIVATE_H

#include "qv/sys/qv_types.h"

/** Loads one module and what it depends on; loads the extensions of all loaded modules that have not had theirs. Both
    are called by who holds the load monitor. */
QV_API QV_BOOL qv___RuntimeTryLoadModule( QV_STRING *moduleName );
QV_API void    qv___RuntimeLoadModuleExtensions( void );

namespace qv
{
/** Make the tables of modules with the library in them; unload all modules and give the tables up. All components
    run. */
void startModules();
void stopModules();
} // namespace qv

#endif
