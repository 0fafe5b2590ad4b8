#include "qv/runtime/qv_runtime.h"

#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"

namespace
{
const char *const FRIENDLY_NAMES[] = { "x86 (32 bit)", "x86 (64 bit)",        "Raspberry Pi 2",      "Raspberry Pi 3",
                                       "Innovaphone",  "Generic ARM (armhf)", "Generic ARM (arm64)", "Generic MIPS" };
} // namespace

QV_INT qvRuntimeHardware( void )
{
#if defined( __x86_64__ )
    return QV_RUNTIME_HARDWARE_X64;
#elif defined( __i386__ )
    return QV_RUNTIME_HARDWARE_X32;
#elif defined( __aarch64__ )
    return QV_RUNTIME_HARDWARE_ARM64;
#elif defined( __arm__ )
    return QV_RUNTIME_HARDWARE_ARMHF;
#else
    return QV_RUNTIME_HARDWARE_MIPS;
#endif
}

const char *qv___RuntimeHardwareFriendlyNameCstr( QV_INT hw )
{
    QV_CHECK( QV_RUNTIME_HARDWARE_OK( hw ) );
    return FRIENDLY_NAMES[hw];
}
