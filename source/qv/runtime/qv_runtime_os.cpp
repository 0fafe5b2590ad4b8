#include "qv/runtime/qv_runtime.h"

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_runtime_enum_private.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"

namespace
{
const qv::RuntimeNames NAMES[] = {
    { "QV_RUNTIME_OS_WINDOWS", "windows", "Windows" },
    { "QV_RUNTIME_OS_DEBIAN_7", "debian7", "Debian 7" },
    { "QV_RUNTIME_OS_DEBIAN_8", "debian8", "Debian 8" },
    { "QV_RUNTIME_OS_DEBIAN_9", "debian9", "Debian 9" },
    { "QV_RUNTIME_OS_DEBIAN_10", "debian10", "Debian 10" },
    { "QV_RUNTIME_OS_UBUNTU_1404", "ubuntu1404", "Ubuntu 14.04" },
    { "QV_RUNTIME_OS_UBUNTU_1604", "ubuntu1604", "Ubuntu 16.04" },
    { "QV_RUNTIME_OS_UBUNTU_1804", "ubuntu1804", "Ubuntu 18.04" },
    { "QV_RUNTIME_OS_UBUNTU_2004", "ubuntu2004", "Ubuntu 20.04" },
    { "QV_RUNTIME_OS_MACOSX", "macosx", "MacOSX" },
};

constexpr qv::RuntimeEnum systems( NAMES );

// What Linux systems call the hardware, by its value.
const char *const PLATFORM_NAMES[] = { "i386", "amd64", "armhf", "armhf", "armel", "armhf", "arm64", "mips" };

// The hardware that the product exists for, a bit for each value.
constexpr unsigned bit( int hw )
{
    return 1u << hw;
}

const unsigned INTEL    = bit( QV_RUNTIME_HARDWARE_X32 ) | bit( QV_RUNTIME_HARDWARE_X64 );
const unsigned DEBIAN_7 = INTEL | bit( QV_RUNTIME_HARDWARE_INNOVAPHONE ) | bit( QV_RUNTIME_HARDWARE_MIPS );
const unsigned DEBIAN   = INTEL | bit( QV_RUNTIME_HARDWARE_RPI2 ) | bit( QV_RUNTIME_HARDWARE_RPI3 )
                        | bit( QV_RUNTIME_HARDWARE_ARMHF ) | bit( QV_RUNTIME_HARDWARE_ARM64 );

const unsigned SUPPORTED[] = { INTEL, DEBIAN_7, DEBIAN, DEBIAN, DEBIAN, INTEL, INTEL, INTEL, INTEL, 0 };
} // namespace

void qv___RuntimeOsStartup( void )
{
}

void qv___RuntimeOsShutdown( void )
{
}

QV_INT qvRuntimeOsFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return systems.fromString( qvs );
}

QV_STRING *qvRuntimeOsToString( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return systems.toString( os );
}

QV_INT qvRuntimeOsFromIdentifier( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return systems.fromIdentifier( qvs );
}

QV_STRING *qvRuntimeOsToIdentifier( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return systems.toIdentifier( os );
}

QV_STRING *qvRuntimeOsFriendlyName( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return systems.friendlyName( os );
}

const char *qv___RuntimeOsFriendlyNameCstr( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return systems.friendlyNameCstr( os );
}

const char *qv::identifierOfOs( QV_INT os )
{
    return systems.identifierCstr( os );
}

QV_INT qvRuntimeOs( void )
{
    return QV_RUNTIME_OS_DEBIAN_10;
}

QV_BOOL qvRuntimeOsIsWindows( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return os == QV_RUNTIME_OS_WINDOWS ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeOsIsLinux( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return os >= QV_RUNTIME_OS_DEBIAN_7 && os <= QV_RUNTIME_OS_UBUNTU_2004 ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeOsIsDebian( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return qvRuntimeOsIsLinux( os );
}

QV_BOOL qvRuntimeOsIsUnix( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return os != QV_RUNTIME_OS_WINDOWS ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeOsSupportsHardware( QV_INT os, QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );

    return SUPPORTED[os] >> hw & 1 ? QV_TRUE : QV_FALSE;
}

QV_STRING *qvRuntimeOsHardwarePlatformName( QV_INT os, QV_INT hw )
{
    return qvRuntimeOsHasHardwarePlatformName( os, hw ) ? qvStringCreateFromCstr( PLATFORM_NAMES[hw], -1 ) : nullptr;
}

QV_BOOL qvRuntimeOsHasHardwarePlatformName( QV_INT os, QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );

    return qvRuntimeOsIsLinux( os );
}
