/** @file
    What modules are written with: the macro that defines it, families of its own, checks of its contracts, and, in
    C++, the scopes of qv_ref.h. Includes everything public. Valid C11 and C++20.

        #define QV_MODULE_NAME counter              // morvane_add_module() of the CMake package defines it
        #include <qv/qv_extend.h>

        QV_LOCAL_FAMILY( Tally, QV_TALLY )

        struct QV_TALLY                             // in C++: struct QV_TALLY : QV_OBJ { QV_INT count; };
        {
            QV_OBJ obj;
            QV_INT count;
        };

        QV___FAMILY( Tally, QV_TALLY, NULL, NULL, NULL )

        static QV_TALLY *tally;

        static QV_BOOL start( void )
        {
            tally        = (QV_TALLY *)qv___ObjCreate( sizeof( QV_TALLY ), qvTallySort() );
            tally->count = 0;
            return QV_TRUE;
        }

        static void stop( void )
        {
            qvTallyRelease( tally );
        }

        static QV_INT run( intptr_t a, intptr_t b )
        {
            (void)b;
            return tally->count += qvVectorLength( (QV_VECTOR *)a );
        }

        QV_MODULE_DEFINE(
            QV_MODULE_INFO( .description = "Counts arguments", .version = "1.0", .deps = "" ),
            QV_MODULE_FUNCS( .startupFunc = start, .shutdownFunc = stop, .personalityFunc = run ) );

    The file. A module `counter` of the product `morvane` is the shared object `libmorvane-counter.so`. It exports the
    module object `counter___module` and what it marks with QV_API or QV_API_DATA, nothing else. All its sources are
    compiled with the same QV_MODULE_NAME, so that their families belong to it. Families of a program, which has no such
    name, belong to the library's module.

    The life of a module. qvRuntimeTryLoadModule() calls `startupFunc` when all that the module depends on is loaded;
    false means that it cannot start. At the end, and in the reverse order of loading, all modules get
    `shutdownBeginFunc`, then each gets `shutdownFunc`, and when the last object of its families is gone
    `shutdownEndFunc`. So a module tells its threads to end in the first and joins them and gives up its globals in the
    second. Any of them may be null. They are called with the monitor of loading held: they must not load modules, nor
    wait for a thread that does.

    A personality is what the module does as a program. The executable and the module agree on its arguments:
    `morvane module run NAME ARGUMENT...` hands over as `a` the QV_VECTOR * of the arguments as Strings, borrowed, and 0
    as `b`, and exits with the result. */

#ifndef QV_EXTEND_H
#define QV_EXTEND_H

#include "qv/qv.h"

#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_module_record.h"

#ifdef __cplusplus
#include "qv/runtime/qv_ref.h"
#endif

/** @{ */
/** One token of two, and a text of one, after macros are expanded. */
#define QV___JOIN( a, b )     QV___JOIN_NOW( a, b )
#define QV___JOIN_NOW( a, b ) a##b
#define QV___QUOTE( a )       QV___QUOTE_NOW( a )
#define QV___QUOTE_NOW( a )   #a
/** @} */

/* Families of a module ------------------------------------------------------------------------------------------- */

#ifdef QV_MODULE_NAME
#undef QV_THIS_MODULE
#define QV_THIS_MODULE QV___JOIN( QV_MODULE_NAME, ___module )

/** The module's own object. */
QV_API_DATA QV_MODULE QV_THIS_MODULE;
#endif

/** Declares a family as QV_FAMILY() does, for the module's own sources alone: its functions are not exported. */
#define QV_LOCAL_FAMILY( Name, TYPE ) QV___FAMILY_DECLARE( QV___HIDDEN, Name, TYPE )

/* The module ----------------------------------------------------------------------------------------------------- */

/** What a module tells about itself, by name and in this order. A field that is not given has its default.

    - `.productName`, the product that it is for. The default, NULL, is any product; then the seven fields that follow
      keep their defaults.
    - `.productFriendlyName`, `.productVersionMajor`, `.productVersionMinor`, `.productVersionRelease`,
      `.productBuildTime`, `.productVendorName`, `.productCopyright`: each that is given has to be that of the running
      product. The defaults, NULL and -1, are any. If a part of the version is -1, the parts that follow it are too.
    - `.description`, required.
    - `.version`, required: like `1.2`, see qv_module_version.h.
    - `.deps`, the names of the modules that have to be loaded before, with one blank between them. The default is
      QV_MODULE_DEPS, which morvane_add_module() defines from its DEPENDS, else "".
    - `.exts`, the names of the modules that are loaded after it if they can be, likewise. Default "". */
#define QV_MODULE_INFO( ... ) __VA_ARGS__

/** The functions that the run time calls, by name and in this order; NULL is the default: `.startupFunc`,
    `.shutdownBeginFunc`, `.shutdownFunc`, `.shutdownEndFunc`, `.personalityFunc`. */
#define QV_MODULE_FUNCS( ... ) __VA_ARGS__

/** The names of the modules that have to be loaded before this one, with one blank between them, as a text. Defined by
    morvane_add_module(), or before this header. */
#ifndef QV_MODULE_DEPS
#define QV_MODULE_DEPS ""
#endif

/** Defines the module object. Stands once in a module, followed by a semicolon. */
#ifdef __cplusplus

#define QV_MODULE_DEFINE( info, funcs )                                                                                \
    static constexpr QV___MODULE_INFO QV___JOIN( QV_MODULE_NAME, ___module_info ) = { info };                          \
    static_assert( QV___JOIN( QV_MODULE_NAME, ___module_info ).description, "a module needs a description" );          \
    static_assert( QV___JOIN( QV_MODULE_NAME, ___module_info ).version, "a module needs a version" );                  \
    static constexpr QV_MODULE_RECORD QV___JOIN( QV_MODULE_NAME, ___module_record ) =                                  \
        qv___ModuleRecordOf( QV___QUOTE( QV_MODULE_NAME ), QV___JOIN( QV_MODULE_NAME, ___module_info ) );              \
    constinit QV_MODULE QV_THIS_MODULE =                                                                               \
        qv___ModuleOf( &QV___JOIN( QV_MODULE_NAME, ___module_record ), QV___MODULE_FUNCS{ funcs } )

/* What the designators of QV_MODULE_DEFINE() name. */
struct QV___MODULE_INFO
{
    const char *productName           = nullptr;
    const char *productFriendlyName   = nullptr;
    QV_INT      productVersionMajor   = -1;
    QV_INT      productVersionMinor   = -1;
    QV_INT      productVersionRelease = -1;
    const char *productBuildTime      = nullptr;
    const char *productVendorName     = nullptr;
    const char *productCopyright      = nullptr;
    const char *description           = nullptr;
    const char *version               = nullptr;
    const char *deps                  = QV_MODULE_DEPS;
    const char *exts                  = "";
};

struct QV___MODULE_FUNCS
{
    QV_MODULE_STARTUP_FUNC     startupFunc       = nullptr;
    QV_MODULE_SHUTDOWN_FUNC    shutdownBeginFunc = nullptr;
    QV_MODULE_SHUTDOWN_FUNC    shutdownFunc      = nullptr;
    QV_MODULE_SHUTDOWN_FUNC    shutdownEndFunc   = nullptr;
    QV_MODULE_PERSONALITY_FUNC personalityFunc   = nullptr;
};

constexpr QV_MODULE_RECORD qv___ModuleRecordOf( const char *name, const QV___MODULE_INFO &info )
{
    return {
        QV_MODULE_RECORD_VERSION,
        info.productName,
        info.productFriendlyName,
        info.productVersionMajor,
        info.productVersionMinor,
        info.productVersionRelease,
        info.productBuildTime,
        info.productVendorName,
        info.productCopyright,
        name,
        info.description,
        info.version,
        info.deps,
        info.exts };
}

constexpr QV_MODULE qv___ModuleOf( const QV_MODULE_RECORD *record, const QV___MODULE_FUNCS &funcs )
{
    return {
        QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ),
        record,
        funcs.startupFunc,
        funcs.shutdownBeginFunc,
        funcs.shutdownFunc,
        funcs.shutdownEndFunc,
        funcs.personalityFunc,
        0,
        nullptr,
        nullptr };
}

#else

/* Designators that are given replace the defaults before them, of which compilers would warn. */
#define QV_MODULE_DEFINE( info, funcs )                                                                                \
    _Pragma( "GCC diagnostic push" )                                                                                   \
        _Pragma( "GCC diagnostic ignored \"-Woverride-init\"" ) static const QV_MODULE_RECORD QV___JOIN(               \
            QV_MODULE_NAME, ___module_record ) = {                                                                     \
            .recordVersion         = QV_MODULE_RECORD_VERSION,                                                         \
            .productVersionMajor   = -1,                                                                               \
            .productVersionMinor   = -1,                                                                               \
            .productVersionRelease = -1,                                                                               \
            .name                  = QV___QUOTE( QV_MODULE_NAME ),                                                     \
            .deps                  = QV_MODULE_DEPS,                                                                   \
            .exts                  = "",                                                                               \
            info };                                                                                                    \
    _Pragma( "GCC diagnostic pop" ) QV_MODULE QV_THIS_MODULE = {                                                       \
        .obj          = QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ),                                                    \
        .moduleRecord = &QV___JOIN( QV_MODULE_NAME, ___module_record ),                                                \
        funcs }

#endif

#ifndef QV_MODULE_NAME
#undef QV_MODULE_DEFINE
#ifdef __cplusplus
#define QV_MODULE_DEFINE( info, funcs ) static_assert( false, "a module needs its QV_MODULE_NAME" )
#else
#define QV_MODULE_DEFINE( info, funcs ) _Static_assert( 0, "a module needs its QV_MODULE_NAME" )
#endif
#endif

#endif
