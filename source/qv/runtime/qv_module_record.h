/** @file
    What a module is made of: the record that says what it is and for which product it was built, and the module object.
    Both are static; their layout is an interface between builds. Valid C11 and C++20. Most modules are defined by
    QV_MODULE_DEFINE() of qv_extend.h, which writes both.

        static const QV_MODULE_RECORD record = { QV_MODULE_RECORD_VERSION, NULL, NULL, -1, -1, -1, NULL, NULL, NULL,
                                                 "greeter", "Greets people", "1.0", "", "" };

        // exported under this name: the module's name, followed by ___module
        QV_MODULE greeter___module = { QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ), &record,
                                       startup, NULL, NULL, NULL, NULL, 0, NULL, NULL };

    The run time refuses a module whose record does not fit the running product: a name, text or version that is given
    has to be the product's own. */

#ifndef QV_MODULE_RECORD_H
#define QV_MODULE_RECORD_H

#include "qv/runtime/qv_family.h"

/** The layout of the record that follows. */
#define QV_MODULE_RECORD_VERSION 2

/** What a module is. All texts are static, zero-terminated UTF-8. If the product name is null, the other fields about
    the product have to be null or -1 too. If a part of the version is -1, the parts that follow it have to be
    -1 too. */
typedef struct QV_MODULE_RECORD
{
    uint8_t     recordVersion;         /**< QV_MODULE_RECORD_VERSION */
    const char *productName;           /**< the product that the module is built for; null: any */
    const char *productFriendlyName;   /**< null: any */
    QV_INT      productVersionMajor;   /**< -1: any */
    QV_INT      productVersionMinor;   /**< -1: any */
    QV_INT      productVersionRelease; /**< -1: any */
    const char *productBuildTime;      /**< null: any; not parsed, only compared */
    const char *productVendorName;     /**< null: any */
    const char *productCopyright;      /**< null: any */
    const char *name;                  /**< accepted by qvModuleNameOk() */
    const char *description;           /**< for people; not null */
    const char *version;               /**< in the form of qv_module_version.h */
    const char *deps;                  /**< names of the modules it needs, with one blank between them; may be empty */
    const char *exts;                  /**< names of the modules that extend it, likewise */
} QV_MODULE_RECORD;

/** Called when the modules of `deps` are loaded. A module that returns false is not loaded. */
typedef QV_BOOL ( *QV_MODULE_STARTUP_FUNC )( void );

/** Called at one of the three stages of an unload. */
typedef void ( *QV_MODULE_SHUTDOWN_FUNC )( void );

/** Turns an executable into the module's own program. What the arguments and the result mean is agreed between the
    executable and the module. */
typedef QV_INT ( *QV_MODULE_PERSONALITY_FUNC )( intptr_t a, intptr_t b );

/** The module object. The functions are called with the monitor of loading held, the last
    by qvModuleRunPersonality(). */
#ifdef __cplusplus
struct QV_MODULE : QV_OBJ
{
#else
struct QV_MODULE
{
    QV_OBJ obj; /**< the header */
#endif
    const QV_MODULE_RECORD    *moduleRecord;      /**< what the module is */
    QV_MODULE_STARTUP_FUNC     startupFunc;       /**< each of the five functions may be null */
    QV_MODULE_SHUTDOWN_FUNC    shutdownBeginFunc; /**< all modules are still loaded and started */
    QV_MODULE_SHUTDOWN_FUNC    shutdownFunc;      /**< the modules loaded after this one have ended */
    QV_MODULE_SHUTDOWN_FUNC    shutdownEndFunc;   /**< the last object of the module's sorts has ended */
    QV_MODULE_PERSONALITY_FUNC personalityFunc;   /**< what the module does as a program */
    int32_t                    sorts;             /**< atomic; sorts in the list that follows */
    QV_SORT                   *sortsFirst;        /**< the sorts with listed objects, if the run keeps lists */
    QV_SORT                   *sortsLast;         /**< the last of them */
};

#endif
