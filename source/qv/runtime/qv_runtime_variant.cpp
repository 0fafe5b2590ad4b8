#include "qv/runtime/qv_runtime.h"

#include "qv/runtime/qv_runtime_enum_private.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"

namespace
{
const qv::RuntimeNames NAMES[] = {
    { "QV_RUNTIME_VARIANT_RELEASE", "release", "Release" },
    { "QV_RUNTIME_VARIANT_DEBUG", "debug", "Debug" },
};

constexpr qv::RuntimeEnum variants( NAMES );
} // namespace

void qv___RuntimeVariantStartup( void )
{
}

void qv___RuntimeVariantShutdown( void )
{
}

QV_INT qvRuntimeVariantFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return variants.fromString( qvs );
}

QV_STRING *qvRuntimeVariantToString( QV_INT var )
{
    QV_CHECK( QV_RUNTIME_VARIANT_OK( var ) );
    return variants.toString( var );
}

QV_INT qvRuntimeVariantFromIdentifier( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return variants.fromIdentifier( qvs );
}

QV_STRING *qvRuntimeVariantToIdentifier( QV_INT var )
{
    QV_CHECK( QV_RUNTIME_VARIANT_OK( var ) );
    return variants.toIdentifier( var );
}

QV_STRING *qvRuntimeVariantFriendlyName( QV_INT var )
{
    QV_CHECK( QV_RUNTIME_VARIANT_OK( var ) );
    return variants.friendlyName( var );
}

const char *qv___RuntimeVariantFriendlyNameCstr( QV_INT var )
{
    QV_CHECK( QV_RUNTIME_VARIANT_OK( var ) );
    return variants.friendlyNameCstr( var );
}

QV_INT qvRuntimeVariant( void )
{
#ifdef NDEBUG
    return QV_RUNTIME_VARIANT_RELEASE;
#else
    return QV_RUNTIME_VARIANT_DEBUG;
#endif
}
