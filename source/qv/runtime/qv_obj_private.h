#ifndef QV_OBJ_PRIVATE_H
#define QV_OBJ_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_module_private.h"

namespace qv
{
/** As qv___ObjCreate(), with `extraBytes` of heap behind the `size` bytes of the structure, for contents that come and
    go with the object. To the object frame they belong to neither of its sizes: a family that puts there what it would
    else allocate declares it all the same. */
QV_OBJ *createWithRoom( QV_INT size, QV_INT extraBytes, QV_SORT *sort );
} // namespace qv

/** Read-only while the library runs. */
extern "C" QV_BOOL qv___ObjOdbIsEnabled; /**< the run keeps lists of all live objects */
extern "C" QV_BOOL qv___ObjOrigin;       /**< each object logs the stack of its creation */

#endif
