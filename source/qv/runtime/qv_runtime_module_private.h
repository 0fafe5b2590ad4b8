#ifndef QV_RUNTIME_MODULE_PRIVATE_H
#define QV_RUNTIME_MODULE_PRIVATE_H

#include "qv/sys/qv_types.h"

/** Load one module and what it depends on, and the extensions of all loaded modules whose extensions have not been
    tried yet. The caller holds the load monitor. */
QV_API QV_BOOL qv___RuntimeTryLoadModule( QV_STRING *moduleName );
QV_API void    qv___RuntimeLoadModuleExtensions( void );

namespace qv
{
/** Whether the tables of modules are this object or hold it as the name of a module. Any thread. */
bool isOfModules( QV_OBJ *object );

/** Make the tables of modules, with the library in them; unload all modules and release the tables. All components run
    meanwhile. */
void startModules();
void stopModules();
} // namespace qv

#endif
