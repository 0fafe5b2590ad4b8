#include "qv/runtime/qv_runtime.h"

#include "qv/base/qv_enum.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime_enum_private.h"

namespace
{
const qv::RuntimeNames NAMES[] = {
    { "QV_RUNTIME_VARIANT_RELEASE", "release", "Release" },
    { "QV_RUNTIME_VARIANT_DEBUG", "debug", "Debug" },
};
} // namespace

QV___RUNTIME_ENUM( Variant, VARIANT, var, NAMES )

QV_INT qvRuntimeVariant( void )
{
#ifdef NDEBUG
    return QV_RUNTIME_VARIANT_RELEASE;
#else
    return QV_RUNTIME_VARIANT_DEBUG;
#endif
}
