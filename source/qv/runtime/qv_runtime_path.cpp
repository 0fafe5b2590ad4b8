#include "qv/runtime/qv_runtime.h"

#include "qv/base/qv_enum.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime_enum_private.h"
#include "qv/runtime/qv_runtime_platform_private.h"

QV_ENUM *qv___RuntimePathEnum = nullptr;

namespace
{
const char *const ENUMERANTS[QV___RUNTIME_PATH_COUNT] = { "QV_RUNTIME_PATH_BIN",        "QV_RUNTIME_PATH_RES",
                                                          "QV_RUNTIME_PATH_DATA",       "QV_RUNTIME_PATH_DATA_STORAGE",
                                                          "QV_RUNTIME_PATH_DATA_TRACE", "QV_RUNTIME_PATH_DATA_ABORT",
                                                          "QV_RUNTIME_PATH_DATA_TEMP" };
} // namespace

void qv___RuntimePathStartup( void )
{
    qv___RuntimePathEnum = qvEnumCreate();

    for( QV_INT path = 0; path < QV___RUNTIME_PATH_COUNT; path++ )
        qv::enterEnumerant( &qv___RuntimePathEnum, ENUMERANTS[path], path );
}

void qv___RuntimePathShutdown( void )
{
    qv::drop( qv___RuntimePathEnum );
}

QV_INT qvRuntimePathFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvEnumParse( qv___RuntimePathEnum, qvs );
}

QV_STRING *qvRuntimePathToString( QV_INT path )
{
    QV_CHECK( QV_RUNTIME_PATH_OK( path ) );
    return qvEnumGenerate( qv___RuntimePathEnum, path );
}

QV_STRING *qvRuntimePath( QV_INT path )
{
    QV_CHECK( QV_RUNTIME_PATH_OK( path ) );
    return qv::Ref< QV_STRING >::share( qv___RuntimePlatformPaths[path] ).give();
}

QV_BOOL qvRuntimeHasPath( QV_INT path )
{
    QV_CHECK( QV_RUNTIME_PATH_OK( path ) );
    return qv___RuntimePlatformPaths[path] ? QV_TRUE : QV_FALSE;
}
