/** @file
    What a module is made of: the record that says what it is and for whom it was built, and the module object. Both
    are static; their layout is an interface between builds. Valid C11 and C++20.

        static const QV_MODULE_RECORD record = { QV_MODULE_RECORD_VERSION, NULL, NULL, -1, -1, -1, NULL, NULL, NULL,
                                                 "greeter", "Greets people", "1.0", "", "" };

        // exported under this name, which is the module's name with ___module behind it
        QV_MODULE greeter___module = { QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ), &record,
                                       startup, NULL, NULL, NULL, NULL, 0, NULL, NULL };

    The run time refuses a module whose record does not fit the running product: a name, text or version that is given
    has to be the product's own. */

#ifndef QV_MODULE_RECORD_H
#define QV_MODULE_RECORD_H

#include "qv/runtime/qv_family.h"

/** The layout of the record that follows. */
#define QV_MODULE_RECORD_VERSION 2

/** All texts are zero-terminated UTF-8. Without a product name none of the product's fields may be given: null, or -1
    for a version. A version field may be -1 only if those below it are. */
typedef struct QV_MODULE_RECORD
{
    uint8_t     recordVersion;       /**< QV_MODULE_RECORD_VERSION */
    const char *productName;         /**< the product that the module is built for; null: any */
    const char *productFriendlyName; /**< null: any, here and in the texts below */
    QV_INT      productVersionMajor; /**< -1: any, here and below */
    QV_INT      productVersionMinor;
    QV_INT      productVersionRelease;
    const char *productBuildTime;
    const char *productVendorName;
    const char *productCopyright;
    const char *name; /**< as qvModuleNameOk() wants it */
    const char *description;
    const char *version; /**< in the form of qv_module_version.h */
    const char *deps;    /**< names of the modules it needs, with one blank between them; may be empty */
    const char *exts;    /**< names of the modules that extend it, likewise */
} QV_MODULE_RECORD;

/** Called once the modules of `deps` are loaded; false fails the load. */
typedef QV_BOOL ( *QV_MODULE_STARTUP_FUNC )( void );

/** Called by the stages of an unload. */
typedef void ( *QV_MODULE_SHUTDOWN_FUNC )( void );

/** Turns an executable into the module's own program. The two of them agree on what the arguments are. */
typedef QV_INT ( *QV_MODULE_PERSONALITY_FUNC )( intptr_t a, intptr_t b );

#ifdef __cplusplus
struct QV_MODULE : QV_OBJ
{
#else
struct QV_MODULE
{
    QV_OBJ obj;
#endif
    const QV_MODULE_RECORD    *moduleRecord;
    QV_MODULE_STARTUP_FUNC     startupFunc;       /**< each function may be null */
    QV_MODULE_SHUTDOWN_FUNC    shutdownBeginFunc; /**< all modules are still whole */
    QV_MODULE_SHUTDOWN_FUNC    shutdownFunc;      /**< the modules loaded after this one are gone */
    QV_MODULE_SHUTDOWN_FUNC    shutdownEndFunc;   /**< the last object of the module's sorts is gone */
    QV_MODULE_PERSONALITY_FUNC personalityFunc;
    int32_t                    sorts;      /**< atomic; sorts with live objects */
    QV_SORT                   *sortsFirst; /**< those sorts, if the run keeps lists */
    QV_SORT                   *sortsLast;
};

#endif
