#include "qv/runtime/qv_module_private.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_module_version.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_order_private.h"

#include "qv_build_time.h" // made by the build

#include <string.h>

const QV_MODULE_RECORD qv___module_record = {
    QV_MODULE_RECORD_VERSION,
    "morvane",
    "morvane",
    QV___VERSION_MAJOR,
    QV___VERSION_MINOR,
    QV___VERSION_RELEASE,
    QV___BUILD_TIME,
    "Wexcraft GmbH",
    "Copyright (c) Wexcraft GmbH. All rights reserved.",
    "qv",
    "Platform Independent System Base",
    "0.0",
    "",
    "" };

QV_MODULE qv___module = {
    QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ),
    &qv___module_record,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    0,
    nullptr,
    nullptr };

namespace
{
const QV_INT LONGEST_NAME = 32;

[[noreturn]] void freeModule( QV_OBJ * )
{
    qv___Abort( "module free", QV___SOURCE, __LINE__, nullptr );
}

QV_INT compareModules( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_MODULE *thisModule = qvModuleFrom( thisObj );
    QV_MODULE *thatModule = qvModuleFrom( thatObj );

    if( thisModule == thatModule )
        return 0;

    QV_INT order = qv::orderCstr( thisModule->moduleRecord->name, thatModule->moduleRecord->name );

    if( order == 0 )
        qv___Abort( nullptr, QV___SOURCE, __LINE__, nullptr );

    return order;
}

QV_STRING *moduleToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return qvModuleName( qvModuleFrom( thisObj ) );
}

/* What is compatible --------------------------------------------------------------------------------------------- */

bool isSame( const char *text, const char *product )
{
    return strcmp( text, product ) == 0;
}

bool isSameIfGiven( const char *text, const char *product )
{
    return !text || isSame( text, product );
}

bool isSameIfGiven( QV_INT version, QV_INT product )
{
    return version == -1 || version == product;
}

// Tells whether the record is for any product, or for this one.
bool fitsProduct( const QV_MODULE_RECORD &record )
{
    const QV_MODULE_RECORD &product = qv___module_record;

    if( !record.productName )
        return record.productVersionMajor == -1 && record.productVersionMinor == -1
               && record.productVersionRelease == -1 && !record.productFriendlyName && !record.productBuildTime
               && !record.productVendorName && !record.productCopyright;

    return isSame( record.productName, product.productName )
           && isSameIfGiven( record.productVersionMajor, product.productVersionMajor )
           && isSameIfGiven( record.productVersionMinor, product.productVersionMinor )
           && isSameIfGiven( record.productVersionRelease, product.productVersionRelease )
           && ( record.productVersionMajor != -1 || record.productVersionMinor == -1 )
           && ( record.productVersionMinor != -1 || record.productVersionRelease == -1 )
           && isSameIfGiven( record.productFriendlyName, product.productFriendlyName )
           && isSameIfGiven( record.productBuildTime, product.productBuildTime )
           && isSameIfGiven( record.productVendorName, product.productVendorName )
           && isSameIfGiven( record.productCopyright, product.productCopyright );
}

bool nameOk( const char *text )
{
    return text && qvModuleNameOk( qv::Ref< QV_STRING >( qvStringCreateFromCstr( text, -1 ) ) );
}

bool versionOk( const char *text )
{
    return text && qv::Ref< QV_MODULE_VERSION >( qvModuleVersionTryCreateFromCstr( text, -1 ) ).get();
}

// Names with one blank between them, or nothing.
bool namesOk( const char *text )
{
    if( !text )
        return false;

    if( !*text )
        return true;

    qv::Ref< QV_VECTOR > names(
        qvStringSplitChar( qv::Ref< QV_STRING >( qvStringCreateFromCstr( text, -1 ) ), U' ', -1 ) );

    for( QV_INT i = 0; i < qvVectorLength( names ); i++ )
        if( !qvModuleNameOk( qv::Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( names, i ) ) ) ) )
            return false;

    return true;
}

void addLiveSorts( qv::Snapshot *snapshot, QV_MODULE *module )
{
    for( QV_SORT *sort = module->sortsFirst; sort; sort = sort->sortsNext )
        snapshot->add( qv::obj( sort ) );
}

void addLiveObjects( qv::Snapshot *snapshot, QV_MODULE *module )
{
    for( QV_SORT *sort = module->sortsFirst; sort; sort = sort->sortsNext )
        snapshot->addObjects( sort );
}

QV_VECTOR *snapshotOf( QV_MODULE *module, void ( *add )( qv::Snapshot *, QV_MODULE * ) )
{
    QV_CHECK( module );

    if( !qv___ObjOdbEnabled() )
        return nullptr;

    qv::Snapshot snapshot;
    {
        qv::HeldOdb held;
        add( &snapshot, module );
    }

    return snapshot.vector();
}
} // namespace

QV___FAMILY( Module, QV_MODULE, freeModule, compareModules, moduleToString )

QV_MODULE *qvModule( void )
{
    return &qv___module;
}

QV_BOOL qvModuleNameOk( QV_STRING *moduleName )
{
    QV_CHECK( moduleName );

    const QV_CHAR *chs         = qvStringBacking( moduleName );
    QV_INT         length      = qvStringLength( moduleName );
    QV_INT         underscores = 0;

    if( length < 1 || length > LONGEST_NAME )
        return QV_FALSE;

    for( QV_INT i = 0; i < length; i++ )
    {
        if( chs[i] >= U'a' && chs[i] <= U'z' )
            continue;

        if( i == 0 )
            return QV_FALSE;

        if( chs[i] >= U'0' && chs[i] <= U'9' )
            continue;

        if( chs[i] != U'_' || i == length - 1 || ++underscores > 1 )
            return QV_FALSE;
    }

    return QV_TRUE;
}

QV_STRING *qvModuleName( QV_MODULE *module )
{
    QV_CHECK( module );
    return qvStringCreateFromCstr( module->moduleRecord->name, -1 );
}

QV_STRING *qvModuleDescription( QV_MODULE *module )
{
    QV_CHECK( module );
    return qvStringCreateFromCstr( module->moduleRecord->description, -1 );
}

QV_MODULE_VERSION *qvModuleVersion( QV_MODULE *module )
{
    QV_CHECK( module );

    QV_MODULE_VERSION *version = qvModuleVersionTryCreateFromCstr( module->moduleRecord->version, -1 );
    QV_CHECK( version );

    return version;
}

QV_BOOL qvModuleHasPersonality( QV_MODULE *module )
{
    QV_CHECK( module );
    return module->personalityFunc ? QV_TRUE : QV_FALSE;
}

QV_INT qvModuleRunPersonality( QV_MODULE *module, intptr_t a, intptr_t b )
{
    QV_CHECK( module );
    return module->personalityFunc( a, b );
}

QV_VECTOR *qvModuleSnapshotSorts( QV_MODULE *module )
{
    return snapshotOf( module, addLiveSorts );
}

QV_VECTOR *qvModuleSnapshotObjects( QV_MODULE *module )
{
    return snapshotOf( module, addLiveObjects );
}

QV_BOOL qv___ModuleCheckCompatibility( QV_MODULE *module )
{
    QV_CHECK( module );

    if( module->type != QV___OBJ_TYPE_MODULE || module->sort || !module->moduleRecord )
        return QV_FALSE;

    const QV_MODULE_RECORD &record = *module->moduleRecord;

    return record.recordVersion == QV_MODULE_RECORD_VERSION && fitsProduct( record ) && nameOk( record.name )
                   && record.description && versionOk( record.version ) && namesOk( record.deps )
                   && namesOk( record.exts )
               ? QV_TRUE
               : QV_FALSE;
}
