#include "qv/base/qv_enum_private.h"
#include "qv/base/qv_thread.h"
#include "qv/runtime/qv_component_private.h"

namespace
{
const char *const NAMES[] = {
    "QV_THREAD_PRIORITY_IDLE", "QV_THREAD_PRIORITY_LOWEST",  "QV_THREAD_PRIORITY_LOW",      "QV_THREAD_PRIORITY_NORMAL",
    "QV_THREAD_PRIORITY_HIGH", "QV_THREAD_PRIORITY_HIGHEST", "QV_THREAD_PRIORITY_CRITICAL",
};

static_assert( sizeof( NAMES ) / sizeof( NAMES[0] ) == QV_THREAD_PRIORITY_CRITICAL + 1 );
} // namespace

void qv___ThreadPriorityStartup( void )
{
}

void qv___ThreadPriorityShutdown( void )
{
}

QV_INT qvThreadPriorityFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qv::parseConstant( qvs, QV_THREAD_PRIORITY_CRITICAL + 1, []( QV_INT priority ) { return NAMES[priority]; } );
}

QV_STRING *qvThreadPriorityToString( QV_INT prio )
{
    QV_CHECK( QV_THREAD_PRIORITY_OK( prio ) );
    return qvStringCreateFromAscii( NAMES[prio], -1 );
}
