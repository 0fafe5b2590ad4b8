#include "qv/runtime/qv_runtime.h"

#include "qv/base/qv_enum_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime_platform_private.h"

namespace
{
const char *const ENUMERANTS[QV___RUNTIME_PATH_COUNT] = { "QV_RUNTIME_PATH_BIN",        "QV_RUNTIME_PATH_RES",
                                                          "QV_RUNTIME_PATH_DATA",       "QV_RUNTIME_PATH_DATA_STORAGE",
                                                          "QV_RUNTIME_PATH_DATA_TRACE", "QV_RUNTIME_PATH_DATA_ABORT",
                                                          "QV_RUNTIME_PATH_DATA_TEMP" };
} // namespace

void qv___RuntimePathStartup( void )
{
}

void qv___RuntimePathShutdown( void )
{
}

QV_INT qvRuntimePathFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qv::parseConstant( qvs, QV___RUNTIME_PATH_COUNT, []( QV_INT path ) { return ENUMERANTS[path]; } );
}

QV_STRING *qvRuntimePathToString( QV_INT path )
{
    QV_CHECK( QV_RUNTIME_PATH_OK( path ) );
    return qvStringCreateFromAscii( ENUMERANTS[path], -1 );
}

QV_STRING *qvRuntimePath( QV_INT path )
{
    QV_CHECK( QV_RUNTIME_PATH_OK( path ) );
    qv::checkRun();

    return qv::Ref< QV_STRING >::share( qv___RuntimePlatformPaths[path] ).give();
}

QV_BOOL qvRuntimeHasPath( QV_INT path )
{
    QV_CHECK( QV_RUNTIME_PATH_OK( path ) );
    return qv___RuntimePlatformPaths[path] ? QV_TRUE : QV_FALSE;
}
