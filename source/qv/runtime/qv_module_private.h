#ifndef QV_MODULE_PRIVATE_H
#define QV_MODULE_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** What a module tells the run time about itself. Its layout is an interface between builds. */
typedef struct QV_MODULE_RECORD
{
    uint8_t     recordVersion; /**< 2 */
    const char *productName;   /**< null: any product */
    const char *productFriendlyName;
    QV_INT      productVersionMajor; /**< -1: any version */
    QV_INT      productVersionMinor;
    QV_INT      productVersionRelease;
    const char *productBuildTime;
    const char *productVendorName;
    const char *productCopyright;
    const char *name;
    const char *description;
    const char *version;
    const char *deps; /**< names with one blank between them */
    const char *exts;
} QV_MODULE_RECORD;

QV_API const QV_MODULE_RECORD qv___module_record;

struct QV_MODULE : QV_OBJ
{
    const QV_MODULE_RECORD *moduleRecord;
    QV_BOOL ( *startupFunc )( void );
    void ( *shutdownBeginFunc )( void );
    void ( *shutdownFunc )( void );
    void ( *shutdownEndFunc )( void );
    QV_INT ( *personalityFunc )( intptr_t a, intptr_t b );
    int32_t  sorts; /**< atomic; sorts with live objects */
    QV_SORT *sortsFirst;
    QV_SORT *sortsLast;
};

/** The sort of modules, for qvObjSort(). */
QV___HIDDEN QV_SORT qv___sort_QV_MODULE;

#endif
