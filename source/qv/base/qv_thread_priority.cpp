#include "qv/base/qv_enum_private.h"
#include "qv/base/qv_thread.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"

namespace
{
QV_ENUM *qv___ThreadPriorityEnum = nullptr;
} // namespace

void qv___ThreadPriorityStartup( void )
{
    qv___ThreadPriorityEnum = nullptr;
    qv___ThreadPriorityEnum = qvEnumCreate();

    QV___ENUM_DEFINE( qv___ThreadPriorityEnum, QV_THREAD_PRIORITY_IDLE )
    QV___ENUM_DEFINE( qv___ThreadPriorityEnum, QV_THREAD_PRIORITY_LOWEST )
    QV___ENUM_DEFINE( qv___ThreadPriorityEnum, QV_THREAD_PRIORITY_LOW )
    QV___ENUM_DEFINE( qv___ThreadPriorityEnum, QV_THREAD_PRIORITY_NORMAL )
    QV___ENUM_DEFINE( qv___ThreadPriorityEnum, QV_THREAD_PRIORITY_HIGH )
    QV___ENUM_DEFINE( qv___ThreadPriorityEnum, QV_THREAD_PRIORITY_HIGHEST )
    QV___ENUM_DEFINE( qv___ThreadPriorityEnum, QV_THREAD_PRIORITY_CRITICAL )
}

void qv___ThreadPriorityShutdown( void )
{
    qv::drop( qv___ThreadPriorityEnum );
}

QV_INT qvThreadPriorityFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvEnumParse( qv___ThreadPriorityEnum, qvs );
}

QV_STRING *qvThreadPriorityToString( QV_INT prio )
{
    QV_CHECK( QV_THREAD_PRIORITY_OK( prio ) );
    return qvEnumGenerate( qv___ThreadPriorityEnum, prio );
}
