#include "qv/runtime/qv_runtime.h"

#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime_platform_private.h"

namespace
{
QV_STRING *computerName        = nullptr;
QV_STRING *operatingSystemInfo = nullptr;
QV_STRING *cpuInfo             = nullptr;

// One more reference to what is known, or null.
QV_STRING *newReference( QV_STRING *information )
{
    return qv::Ref< QV_STRING >::share( information ).give();
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
    cpuInfo             = qv___RuntimePlatformCpuInfo();
}

void qv___RuntimeComputerInfoShutdown( void )
{
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
    return newReference( cpuInfo );
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
    return cpuInfo ? QV_TRUE : QV_FALSE;
}
