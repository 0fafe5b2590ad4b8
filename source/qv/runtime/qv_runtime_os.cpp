#include "qv/runtime/qv_runtime.h"

#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"

namespace
{
const char *const FRIENDLY_NAMES[] = { "Windows",      "Debian 7",     "Debian 8",     "Debian 9",     "Debian 10",
                                       "Ubuntu 14.04", "Ubuntu 16.04", "Ubuntu 18.04", "Ubuntu 20.04", "MacOSX" };
} // namespace

QV_INT qvRuntimeOs( void )
{
    return QV_RUNTIME_OS_DEBIAN_10;
}

const char *qv___RuntimeOsFriendlyNameCstr( QV_INT os )
{
    QV_CHECK( QV_RUNTIME_OS_OK( os ) );
    return FRIENDLY_NAMES[os];
}
