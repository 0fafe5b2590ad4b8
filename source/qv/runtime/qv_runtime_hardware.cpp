#include "qv/runtime/qv_runtime.h"

#include "qv/runtime/qv_runtime_enum_private.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"

#include <bit>

namespace
{
const qv::RuntimeNames NAMES[] = {
    { "QV_RUNTIME_HARDWARE_X32", "x32", "x86 (32 bit)" },
    { "QV_RUNTIME_HARDWARE_X64", "x64", "x86 (64 bit)" },
    { "QV_RUNTIME_HARDWARE_RPI2", "rpi2", "Raspberry Pi 2" },
    { "QV_RUNTIME_HARDWARE_RPI3", "rpi3", "Raspberry Pi 3" },
    { "QV_RUNTIME_HARDWARE_INNOVAPHONE", "innovaphone", "Innovaphone" },
    { "QV_RUNTIME_HARDWARE_ARMHF", "armhf", "Generic ARM (armhf)" },
    { "QV_RUNTIME_HARDWARE_ARM64", "arm64", "Generic ARM (arm64)" },
    { "QV_RUNTIME_HARDWARE_MIPS", "mips", "Generic MIPS" },
};

constexpr qv::RuntimeEnum hardware( NAMES );
} // namespace

void qv___RuntimeHardwareStartup( void )
{
}

void qv___RuntimeHardwareShutdown( void )
{
}

QV_INT qvRuntimeHardwareFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return hardware.fromString( qvs );
}

QV_STRING *qvRuntimeHardwareToString( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return hardware.toString( hw );
}

QV_INT qvRuntimeHardwareFromIdentifier( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return hardware.fromIdentifier( qvs );
}

QV_STRING *qvRuntimeHardwareToIdentifier( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return hardware.toIdentifier( hw );
}

QV_STRING *qvRuntimeHardwareFriendlyName( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return hardware.friendlyName( hw );
}

const char *qv___RuntimeHardwareFriendlyNameCstr( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return hardware.friendlyNameCstr( hw );
}

const char *qv::identifierOfHardware( QV_INT hw )
{
    return hardware.identifierCstr( hw );
}

QV_INT qvRuntimeHardware( void )
{
#if defined( QV___HARDWARE )
    static_assert( QV_RUNTIME_HARDWARE_OK( QV___HARDWARE ) );
    static_assert( ( QV___HARDWARE == QV_RUNTIME_HARDWARE_MIPS ) == ( std::endian::native == std::endian::big ) );
    return QV___HARDWARE;
#elif defined( __x86_64__ )
    return QV_RUNTIME_HARDWARE_X64;
#elif defined( __i386__ )
    return QV_RUNTIME_HARDWARE_X32;
#elif defined( __aarch64__ ) && !defined( __AARCH64EB__ )
    return QV_RUNTIME_HARDWARE_ARM64;
#elif defined( __arm__ ) && defined( __ARM_PCS_VFP ) && !defined( __ARMEB__ )
    return QV_RUNTIME_HARDWARE_ARMHF;
#elif defined( __mips__ ) && defined( __MIPSEB__ )
    return QV_RUNTIME_HARDWARE_MIPS;
#else
#error "This hardware has no value. MORVANE_HARDWARE names the one that comes closest to it."
#endif
}

QV_BOOL qvRuntimeHardwareIsIntel( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return hw <= QV_RUNTIME_HARDWARE_X64 ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeHardwareIsArm( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return hw >= QV_RUNTIME_HARDWARE_RPI2 && hw <= QV_RUNTIME_HARDWARE_ARM64 ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeHardwareIsLittleEndian( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return hw != QV_RUNTIME_HARDWARE_MIPS ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeHardwareIsBigEndian( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return hw == QV_RUNTIME_HARDWARE_MIPS ? QV_TRUE : QV_FALSE;
}
