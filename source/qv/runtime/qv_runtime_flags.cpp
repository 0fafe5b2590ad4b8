#include "qv/runtime/qv_runtime.h"

#include "qv/base/qv_flagset_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_runtime_private.h"

namespace
{
const qv::NamedFlag FLAGS[] = {
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_MINIMAL ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_SYSTEM ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_MEMORY_DEBUG ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_OBJECT_DATABASE ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_OBJECT_ORIGIN ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_SNAPSHOT_SORT ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_SNAPSHOT_OBJECT ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_IMPLICIT_MODULE_PATH ),
    QV___NAMED_FLAG( QV_RUNTIME_FLAG_MODULE_DEBUG ),
};
} // namespace

void qv___RuntimeFlagsStartup( void )
{
}

void qv___RuntimeFlagsShutdown( void )
{
}

QV_INT qvRuntimeFlagsNormalize( QV_INT flags )
{
    const QV_INT KEPT = QV_RUNTIME_FLAG_SYSTEM | QV_RUNTIME_FLAG_MEMORY_DEBUG | QV_RUNTIME_FLAG_OBJECT_DATABASE
                        | QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS | QV_RUNTIME_FLAG_IMPLICIT_MODULE_PATH
                        | QV_RUNTIME_FLAG_MODULE_DEBUG;
    const QV_INT WITH_DATABASE =
        QV_RUNTIME_FLAG_OBJECT_ORIGIN | QV_RUNTIME_FLAG_SNAPSHOT_SORT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT;
    const QV_INT WITH_SNAPSHOT = QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG;

    if( flags & QV_RUNTIME_FLAG_MINIMAL )
        return QV_RUNTIME_FLAG_MINIMAL;

    QV_INT result = flags & KEPT;

    if( result & QV_RUNTIME_FLAG_OBJECT_DATABASE )
        result |= flags & WITH_DATABASE;

    if( result & QV_RUNTIME_FLAG_SNAPSHOT_OBJECT )
        result |= flags & WITH_SNAPSHOT;

    return result;
}

QV_INT qvRuntimeFlagsFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvRuntimeFlagsNormalize( qv::parseFlags( FLAGS, qvs ) );
}

QV_STRING *qvRuntimeFlagsToString( QV_INT flags )
{
    return qv::generateFlags( FLAGS, qvRuntimeFlagsNormalize( flags ) );
}
