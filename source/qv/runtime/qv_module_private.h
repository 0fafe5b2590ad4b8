#ifndef QV_MODULE_PRIVATE_H
#define QV_MODULE_PRIVATE_H

#include "qv/runtime/qv_module.h"
#include "qv/runtime/qv_module_record.h"

/** The record of the library, which is a module itself: the identity of the product. */
QV_API const QV_MODULE_RECORD qv___module_record;

/** True for a module with a proper record that fits the running product. */
QV_API QV_BOOL qv___ModuleCheckCompatibility( QV_MODULE *module );

#endif
