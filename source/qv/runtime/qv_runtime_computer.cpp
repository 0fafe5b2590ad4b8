#include "qv/runtime/qv_runtime.h"

#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime_platform_private.h"

namespace
{
QV_STRING *computerName        = nullptr;
QV_STRING *operatingSystemInfo = nullptr;
QV_STRING *cpuInfo             = nullptr; // a stand-in until the first question

QV_MONITOR *cpuMonitor = nullptr; // held to write cpuInfo
int32_t     cpuIsKnown = 0;       // atomic: cpuInfo stays as it is

// One more reference to what is known, or null.
QV_STRING *newReference( QV_STRING *information )
{
    qv::checkRun();
    return qv::Ref< QV_STRING >::share( information ).give();
}

// The processors' description, borrowed. The system writes its file anew for each reader, which takes tens of
// microseconds, so it is read at the first question.
QV_STRING *knownCpuInfo()
{
    qv::checkRun();

    if( cpuMonitor && !qv___AtomicLoad32( &cpuIsKnown ) )
    {
        qv::HeldMonitor held( cpuMonitor );

        if( !cpuIsKnown )
        {
            // In its place: the object is one that the library has made at its start.
            qv::Ref< QV_STRING > info( qv___RuntimePlatformCpuInfo() );
            qvStringAppend( &cpuInfo, info );
            qvStringDelLeading( &cpuInfo, qvStringLength( cpuInfo ) - qvStringLength( info ) );
        }

        qv___AtomicStore32( &cpuIsKnown, 1 );
    }

    return cpuInfo;
}
} // namespace

void qv___RuntimeComputerNameStartup( void )
{
    computerName = qv___RuntimePlatformComputerName();
}

void qv___RuntimeComputerNameShutdown( void )
{
    qv::drop( computerName );
}

void qv___RuntimeComputerInfoStartup( void )
{
    operatingSystemInfo = qv___RuntimePlatformOperatingSystemInfo();
    cpuInfo             = qvStringCreateFromCstr( "-", -1 ); // so that the first question leaves no more objects
    cpuIsKnown          = 0;
    cpuMonitor          = qvMonitorCreate();
}

void qv___RuntimeComputerInfoShutdown( void )
{
    qv::drop( cpuMonitor );
    qv::drop( cpuInfo );
    qv::drop( operatingSystemInfo );
}

QV_STRING *qvRuntimeComputerName( void )
{
    return newReference( computerName );
}

QV_STRING *qvRuntimeOperatingSystemInfo( void )
{
    return newReference( operatingSystemInfo );
}

QV_STRING *qvRuntimeCpuInfo( void )
{
    return newReference( knownCpuInfo() );
}

QV_BOOL qvRuntimeHasComputerName( void )
{
    return computerName ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeHasOperatingSystemInfo( void )
{
    return operatingSystemInfo ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeHasCpuInfo( void )
{
    return knownCpuInfo() ? QV_TRUE : QV_FALSE;
}
