/** @file
    Modules: shared objects that the run time finds by name, checks against the running product, starts in the order of
    their dependencies and stops in reverse. The library itself is one. qv_runtime.h loads and unloads them.

    A module is an object that lives as long as the process: retaining and releasing it have no effect on its life.
    Two modules compare by their names. All functions may be called from any thread; null ends the process. */

#ifndef QV_MODULE_H
#define QV_MODULE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Module, QV_MODULE )

/** The library's own module, borrowed. */
QV_API QV_MODULE *qvModule( void );

/** True for 1 to 32 characters of `a` to `z`, digits and at most one underscore, of which the first is a letter and
    the last no underscore. */
QV_API QV_BOOL qvModuleNameOk( QV_STRING *moduleName );

/** @{ */
/** The name and the description: new texts, owned by the caller. */
QV_API QV_STRING *qvModuleName( QV_MODULE *module );
QV_API QV_STRING *qvModuleDescription( QV_MODULE *module );
/** @} */

/** The version as a new object, owned by the caller. A record whose version is malformed ends the process; no such
    module is ever loaded. */
QV_API QV_MODULE_VERSION *qvModuleVersion( QV_MODULE *module );

/** @{ */
/** A personality turns an executable into the module's own program: whether there is one, and a run of it, which passes
    both arguments on and returns its result. Only a module that has one may be run. */
QV_API QV_BOOL qvModuleHasPersonality( QV_MODULE *module );
QV_API QV_INT  qvModuleRunPersonality( QV_MODULE *module, intptr_t a, intptr_t b );
/** @} */

/** @{ */
/** The module's sorts that have live objects, and the live objects of all of them, as new Vectors; null in a run
    without the object database. The Vector holds a reference to each. Costs a constant time for each element, during
    which no object can be created or end. */
QV_API QV_VECTOR *qvModuleSnapshotSorts( QV_MODULE *module );
QV_API QV_VECTOR *qvModuleSnapshotObjects( QV_MODULE *module );
/** @} */

#endif
