#ifndef QV_OBJ_PRIVATE_H
#define QV_OBJ_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_module_private.h"

/** Read-only while the library runs. */
extern "C" QV_BOOL qv___ObjOdbIsEnabled; /**< the run keeps lists of all live objects */
extern "C" QV_BOOL qv___ObjOrigin;       /**< each object logs the stack of its creation */

#endif
