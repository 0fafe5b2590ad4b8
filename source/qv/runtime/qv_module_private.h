#ifndef QV_MODULE_PRIVATE_H
#define QV_MODULE_PRIVATE_H

#include "qv/runtime/qv_module.h"
#include "qv/runtime/qv_module_record.h"

/** The record of the library, which is a module itself: the identity of the product. */
QV_API_DATA const QV_MODULE_RECORD qv___module_record;

/** True for a module with a proper record that fits the running product. */
QV_API QV_BOOL qv___ModuleCheckCompatibility( QV_MODULE *module );

/** How many objects of the module's sorts live now. 0 means that there was a moment in the call at which none lived, and
    that no code of the module ran for one then. Any thread, any time. The cost is that of reading some numbers for each
    sort that has had objects and each thread that has created some. */
QV_API QV_INT qv___ModuleObjects( QV_MODULE *module );

#endif
