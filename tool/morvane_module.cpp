#include "morvane_tool.h"

#include "qv/base/qv_error.h"
#include "qv/base/qv_store.h"
#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_module.h"
#include "qv/runtime/qv_module_record.h"
#include "qv/runtime/qv_module_version.h"
#include "qv/runtime/qv_runtime.h"

#include <string.h>

namespace morvane
{
using qv::Ref;

namespace
{
const char COMMAND[] = "morvane module";

// Complains of a module that could not be opened or loaded, which the last error tells.
void complainOfModule( QV_STRING *name )
{
    Ref< QV_ERROR >  error( qvErrorLast() );
    Ref< QV_STRING > failed( qvErrorSubject( error ) ), reason( qvErrorReason( error ) );
    Ref< QV_STRING > subject( qvStringCreateFromFormatCstr( "%s needs %s", -1, name, failed.get() ) );

    // The reason of a module that another one needs begins with both names.
    if( qvStringBeginsWith( reason, subject ) )
        qvStringDelLeading( reason.at(), qvStringLength( subject ) + static_cast< QV_INT >( strlen( ": " ) ) );
    else
        subject = Ref< QV_STRING >::share( name );

    complain( COMMAND, subject, reason );
}

bool isName( QV_STRING *word )
{
    if( !qvModuleNameOk( word ) )
        complain( COMMAND, word, "no name of a module" );

    return qvModuleNameOk( word );
}

void set( QV_STORE **store, const char *key, const char *value )
{
    if( value )
        qvStoreSetValueCstr( store, key, -1, Ref< QV_STRING >( qvStringCreateFromCstr( value, -1 ) ) );
}

void setVersion( QV_STORE **store, const char *key, QV_INT value )
{
    if( value != -1 )
        qvStoreSetValueIntCstr( store, key, -1, value );
}

Ref< QV_STORE > describe( QV_MODULE *module )
{
    const QV_MODULE_RECORD  *record = module->moduleRecord;
    Ref< QV_MODULE_VERSION > version( qvModuleVersion( module ) );
    Ref< QV_STORE >          store( qvStoreCreate() );
    Ref< QV_STORE >          product( qvStoreCreate() );

    set( store.at(), "name", record->name );
    set( store.at(), "description", record->description );
    set( store.at(), "version", record->version );
    qvStoreSetValueIntCstr( store.at(), "compatibility", -1, qvModuleVersionCompatibility( version ) );
    set( store.at(), "deps", record->deps );
    set( store.at(), "exts", record->exts );
    qvStoreSetValueBoolCstr( store.at(), "personality", -1, qvModuleHasPersonality( module ) );

    set( product.at(), "name", record->productName );
    set( product.at(), "friendlyName", record->productFriendlyName );
    setVersion( product.at(), "versionMajor", record->productVersionMajor );
    setVersion( product.at(), "versionMinor", record->productVersionMinor );
    setVersion( product.at(), "versionRelease", record->productVersionRelease );
    set( product.at(), "buildTime", record->productBuildTime );
    set( product.at(), "vendorName", record->productVendorName );
    set( product.at(), "copyright", record->productCopyright );

    if( record->productName )
        qvStoreSetStoreCstr( store.at(), "product", -1, product );

    return store;
}
} // namespace

// Only opens the files: starts nothing, and does not look for what the modules need.
int showModules( const Arguments &arguments )
{
    int             status = SUCCESS;
    Ref< QV_STORE > all( qvStoreCreate() );

    for( QV_INT i = 0; i < arguments.wordCount(); i++ )
        if( !isName( arguments.wordAt( i ) ) )
            return FAILURE;

    for( QV_INT i = 0; i < arguments.wordCount(); i++ )
    {
        Ref< QV_STRING > name = arguments.wordAt( i );
        Ref< QV_MODULE > module( qv___RuntimePlatformLoadModule( name ) );

        if( !module )
        {
            complainOfModule( name );
            status = FAILURE;
        }
        else if( arguments.wordCount() == 1 )
        {
            all = describe( module );
        }
        else
        {
            qvStoreSetStore( all.at(), name, describe( module ) );
        }
    }

    printDocument( all );
    return status;
}

namespace
{
// The line about what an unload waits for: after a second, and then every ten.
const QV_INT FIRST_LINE = 1000;
const QV_INT NEXT_LINE  = 10000;

void appendLeak( QV_SORT *, const char *sortName, QV_INT objects, void *text )
{
    QV_STRING **list = static_cast< QV_STRING ** >( text );
    qvStringAppendFormatCstr( list, "%lc %i %lc", -1, qvStringLength( *list ) ? "," : "", objects, sortName );
}

void tellWait( QV_MODULE *module, QV_INT waited, QV_INT left )
{
    if( waited != FIRST_LINE && waited % NEXT_LINE != 0 )
        return;

    Ref< QV_STRING > name( qvModuleName( module ) );
    Ref< QV_STRING > leaks( qvStringCreate() );
    qv___ModuleLeakVisit( module, appendLeak, leaks.at() );

    Ref< QV_STRING > reason( qvStringCreateFromFormatCstr( "still has%s", -1, leaks.get() ) );

    if( left >= 0 )
        qvStringAppendFormatCstr( reason.at(), ", %i s left", -1, left / 1000 );

    complain( COMMAND, name, reason );
}
} // namespace

int runModule( const Arguments &arguments )
{
    Ref< QV_STRING > name = arguments.wordAt( 0 );

    // So what a module writes itself and what it prints come out in their order.
    printAtOnce();
    qv___RuntimeSetUnloadWaitFunc( tellWait );

    if( !isName( name ) )
        return FAILURE;

    if( !qvRuntimeTryLoadModule( name ) )
    {
        complainOfModule( name );
        return FAILURE;
    }

    Ref< QV_MODULE > module( qvRuntimeModule( name ) );

    if( !qvModuleHasPersonality( module ) )
    {
        complain( COMMAND, name, "not a module that can be run" );
        return FAILURE;
    }

    Ref< QV_VECTOR > words( qvVectorCreate() );

    for( QV_INT i = 1; i < arguments.wordCount(); i++ )
        qvVectorAppendString( words.at(), arguments.wordAt( i ) );

    QV_INT result = qvModuleRunPersonality( module, reinterpret_cast< intptr_t >( words.get() ), 0 );

    return result >= 0 && result <= 255 ? static_cast< int >( result ) : 255;
}
} // namespace morvane
