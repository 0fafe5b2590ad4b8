#include "qv/runtime/qv_runtime.h"

#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime_platform_private.h"

namespace
{
QV_STRING *computerName        = nullptr;
QV_STRING *operatingSystemInfo = nullptr;
QV_STRING *cpuInfo             = nullptr;
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

#define INFORMATION( Name, global )                                                                                    \
    QV_STRING *qvRuntime##Name( void )                                                                                 \
    {                                                                                                                  \
        return qv::Ref< QV_STRING >::share( global ).give();                                                           \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qvRuntimeHas##Name( void )                                                                                 \
    {                                                                                                                  \
        return global ? QV_TRUE : QV_FALSE;                                                                            \
    }

INFORMATION( ComputerName, computerName )
INFORMATION( OperatingSystemInfo, operatingSystemInfo )
INFORMATION( CpuInfo, cpuInfo )
