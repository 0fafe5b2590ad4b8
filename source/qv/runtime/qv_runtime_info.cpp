#include "qv/runtime/qv_runtime.h"

#include "qv/base/qv_store.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"

namespace
{
// Sets a value that the call takes over; null sets none.
void set( QV_STORE **store, const char *key, QV_STRING *owned )
{
    qv::Ref< QV_STRING > value( owned );

    if( value )
        qvStoreSetValueCstr( store, key, -1, value );
}
} // namespace

QV_STORE *qvRuntimeInfo( void )
{
    qv::Ref< QV_STORE > store( qvStoreCreate() );

    set( store.at(), "os", qvRuntimeOsFriendlyName( qvRuntimeOs() ) );
    set( store.at(), "hardware", qvRuntimeHardwareFriendlyName( qvRuntimeHardware() ) );
    set( store.at(), "variant", qvRuntimeVariantFriendlyName( qvRuntimeVariant() ) );
    set( store.at(), "product", qvRuntimeVersionProductName() );
    set( store.at(), "friendlyName", qvRuntimeVersionProductFriendlyName() );
    set( store.at(), "version", qvRuntimeVersionProductVersion() );
    qvStoreSetValueIntCstr( store.at(), "versionMajor", -1, qvRuntimeVersionProductVersionMajor() );
    qvStoreSetValueIntCstr( store.at(), "versionMinor", -1, qvRuntimeVersionProductVersionMinor() );
    qvStoreSetValueIntCstr( store.at(), "versionRelease", -1, qvRuntimeVersionProductVersionRelease() );
    set( store.at(), "applicationIdentifier", qvRuntimeVersionApplicationIdentifier() );
    set( store.at(), "applicationFriendlyName", qvRuntimeVersionApplicationFriendlyName() );
    set( store.at(), "applicationVersion", qvRuntimeVersionApplicationVersion() );
    set( store.at(), "computerName", qvRuntimeComputerName() );
    set( store.at(), "operatingSystemInfo", qvRuntimeOperatingSystemInfo() );
    set( store.at(), "cpuInfo", qvRuntimeCpuInfo() );

    return store.give();
}
