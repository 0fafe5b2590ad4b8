#include "qv/runtime/qv_runtime.h"

#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"

QV_INT qvRuntimeVariant( void )
{
#ifdef NDEBUG
    return QV_RUNTIME_VARIANT_RELEASE;
#else
    return QV_RUNTIME_VARIANT_DEBUG;
#endif
}

const char *qv___RuntimeVariantFriendlyNameCstr( QV_INT var )
{
    QV_CHECK( QV_RUNTIME_VARIANT_OK( var ) );
    return var == QV_RUNTIME_VARIANT_RELEASE ? "Release" : "Debug";
}
