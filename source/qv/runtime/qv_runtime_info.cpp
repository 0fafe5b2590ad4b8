#include "qv/runtime/qv_runtime.h"

#include "qv/base/qv_store.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_time_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_module.h"
#include "qv/runtime/qv_module_version.h"
#include "qv/runtime/qv_ref.h"

namespace
{
// Sets a value, and releases it; null sets none.
void set( QV_STORE **store, const char *key, QV_STRING *owned )
{
    qv::Ref< QV_STRING > value( owned );

    if( value )
        qvStoreSetValueCstr( store, key, -1, value );
}

// Sets the text of an object, and releases the object.
void setObj( QV_STORE **store, const char *key, QV_OBJ *owned )
{
    set( store, key, qvStringCreateFromFormatCstr( "%~o", -1, owned ) );
}

QV_INT compatibility()
{
    return qvModuleVersionCompatibility( qv::Ref< QV_MODULE_VERSION >( qvModuleVersion( qvModule() ) ) );
}

// The versions of the loaded modules under their names, in the order of loading.
QV_STORE *moduleVersions()
{
    qv::Ref< QV_STORE >  store( qvStoreCreate() );
    qv::Ref< QV_VECTOR > modules( qvRuntimeModulesVector() );

    for( QV_INT i = 0; i < qvVectorLength( modules ); i++ )
    {
        qv::Ref< QV_MODULE >         module( qvModuleFrom( qvVectorObjAt( modules, i ) ) );
        qv::Ref< QV_MODULE_VERSION > version( qvModuleVersion( module ) );
        qvStoreSetValue(
            store.at(), qv::Ref< QV_STRING >( qvModuleName( module ) ),
            qv::Ref< QV_STRING >( qvModuleVersionToString( version ) ) );
    }

    return store.give();
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
    setObj( store.at(), "buildTime", qv::obj( qvRuntimeVersionProductBuildTime() ) );
    qvStoreSetValueIntCstr( store.at(), "compatibility", -1, compatibility() );
    set( store.at(), "applicationIdentifier", qvRuntimeVersionApplicationIdentifier() );
    set( store.at(), "applicationFriendlyName", qvRuntimeVersionApplicationFriendlyName() );
    set( store.at(), "applicationVersion", qvRuntimeVersionApplicationVersion() );
    set( store.at(), "computerName", qvRuntimeComputerName() );
    set( store.at(), "operatingSystemInfo", qvRuntimeOperatingSystemInfo() );
    set( store.at(), "cpuInfo", qvRuntimeCpuInfo() );
    setObj( store.at(), "startTime", qv::obj( qv___TimeStarted() ) );
    qvStoreSetStoreCstr( store.at(), "moduleVersions", -1, qv::Ref< QV_STORE >( moduleVersions() ) );

    return store.give();
}
