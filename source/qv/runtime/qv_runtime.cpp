#include "qv/runtime/qv_runtime.h"

#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_runtime_leaks_private.h"
#include "qv/runtime/qv_runtime_module_private.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/runtime/qv_runtime_snapshot_private.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_lock_private.h"

namespace
{
QV_INT                qv___RuntimeFlags     = 0;
QV___LOCK            *qv___RuntimePrintLock = nullptr;
QV_RUNTIME_PRINT_FUNC qv___RuntimePrintFunc = nullptr;

struct Component
{
    void ( *startup )( void );
    void ( *shutdown )( void );
};

#define COMPONENT( Name ) { qv___##Name##Startup, qv___##Name##Shutdown },

const Component COMPONENTS[] = { QV___COMPONENTS( COMPONENT ) };

#undef COMPONENT

const int COMPONENT_COUNT = sizeof( COMPONENTS ) / sizeof( COMPONENTS[0] );
} // namespace

void qv___RuntimeComponentsStartup(
    const char *applicationIdentifier, const char *applicationFriendlyName, const char *applicationVersion )
{
    qv___RuntimeVersionStartup( applicationIdentifier, applicationFriendlyName, applicationVersion );

    for( int i = 0; i < COMPONENT_COUNT; i++ )
        COMPONENTS[i].startup();
}

void qv___RuntimeComponentsShutdown( void )
{
    for( int i = COMPONENT_COUNT; i > 0; i-- )
        COMPONENTS[i - 1].shutdown();

    qv___RuntimeVersionShutdown();
}

namespace
{
// With all components stopped, reports the library's objects that are still alive if a flag of the run asks for that.
// Printing needs the components, so they run once more. Of the run that has ended only the lists of objects are left.
void reportSurvivors()
{
    QV_INT flags = qv___RuntimeFlags;

    if( !( flags & QV___RUNTIME_FLAGS_SNAPSHOT ) || qv___ModuleObjects( &qv___module ) == 0 )
        return;

    qv___RuntimeFlags = QV_RUNTIME_FLAG_MINIMAL;
    qv___RuntimeComponentsStartup( nullptr, nullptr, nullptr );
    qv::printSurvivors( flags );
    qv___RuntimeComponentsShutdown();
}
} // namespace

void qvRuntimeStartup(
    QV_INT flags, QV_RUNTIME_PRINT_FUNC printFunc, const char *applicationIdentifier,
    const char *applicationFriendlyName, const char *applicationVersion )
{
    qv___RuntimeFlags     = qvRuntimeFlagsNormalize( flags );
    qv___RuntimePrintLock = qv___LockCreate();
    qv___RuntimePrintFunc = printFunc;

    qv::beginOwn();
    qv___RuntimeComponentsStartup( applicationIdentifier, applicationFriendlyName, applicationVersion );
    qv___ObjRun &= static_cast< uint16_t >( ~qv::IS_OWN ); // the tables of modules may become a caller's
    qv::startModules();
    qv::endOwn();
}

void qvRuntimeShutdown( void )
{
    qv::checkRun();
    qv::stopModules();
    qv___RuntimeComponentsShutdown();
    qv::forgetOwn();
    reportSurvivors();

    qv___LockDestroy( qv___RuntimePrintLock );
    qv___RuntimePrintFunc = nullptr;
    qv___RuntimeFlags     = 0;
    qv___RuntimePrintLock = nullptr;
}

QV_INT qvRuntimeFlags( void )
{
    return qv___RuntimeFlags;
}

void qvRuntimePrint( const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( chsLength >= 0 );
    QV_CHECK( chs || chsLength == 0 );

    if( !qv___RuntimePrintFunc )
        return;

    qv::HeldLock held( qv___RuntimePrintLock );
    qv___RuntimePrintFunc( chs, chsLength );
}
