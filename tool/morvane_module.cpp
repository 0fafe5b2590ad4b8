#include "morvane_loader.h"
#include "morvane_tool.h"

#include "qv/base/qv_store.h"
#include "qv/runtime/qv_module.h"
#include "qv/runtime/qv_module_record.h"
#include "qv/runtime/qv_module_version.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_platform_private.h"

namespace morvane
{
using qv::Ref;

namespace
{
const char COMMAND[] = "morvane module";

// The steps of a load, as the library prints them with QV_RUNTIME_FLAG_MODULE_DEBUG.
const char MODULE_LINE[]  = "[qv___RuntimeTryLoadModule()] module: ";
const char FAILURE_LINE[] = "[qv___RuntimePlatformLoadModule()] ";
const char UNLOAD_LINE[]  = "[qvRuntimeUnloadAllModules()] module: ";

// What is behind the failures that the library prints.
const struct
{
    const char *line;
    const char *reason; // null: the loader knows
} FAILURES[] = {
    { "dlopen(): null", nullptr },
    { "dlsym(): null", nullptr },
    { "qv___ModuleCheckCompatibility(): false", "not made for this product, or its record is not in order" },
    { "module name invalid", "the file holds a module of another name" },
};

// A load, as far as it has come.
struct Progress
{
    Ref< QV_VECTOR > names{ qvVectorCreate() }; // of the modules that it has turned to, one after the other
    Ref< QV_STRING > reason;                    // why the last of them was refused; nothing if its file was not
};

Progress *progress = nullptr; // of the load that is under way

// The text behind a beginning that it may have.
Ref< QV_STRING > textBehind( const char *beginning, const QV_CHAR *chs, QV_INT length )
{
    QV_INT i = 0;

    for( ; beginning[i]; i++ )
    {
        if( i == length || chs[i] != static_cast< unsigned char >( beginning[i] ) )
            return {};
    }

    return Ref< QV_STRING >( qvStringCreateFromCharsCopy( chs + i, length - i ) );
}

const char *reasonOf( QV_STRING *failure )
{
    for( const auto &row : FAILURES )
    {
        if( row.reason && qvStringEqualsCstr( failure, row.line, -1 ) )
            return row.reason;
    }

    const char *reason = loaderReason();

    return reason ? reason : "the file cannot be loaded";
}

// Takes the lines about loading out of what is printed, and makes use of them.
bool followProgress( const QV_CHAR *chs, QV_INT length )
{
    if( Ref< QV_STRING > name = textBehind( MODULE_LINE, chs, length ) )
    {
        if( progress )
            qvVectorAppendString( progress->names.at(), name );

        return true;
    }

    if( Ref< QV_STRING > failure = textBehind( FAILURE_LINE, chs, length ) )
    {
        if( progress )
            progress->reason.reset( qvStringCreateFromCstr( reasonOf( failure ), -1 ) );

        return true;
    }

    return static_cast< bool >( textBehind( UNLOAD_LINE, chs, length ) );
}

// The module that a failed load ended with: the last one that it has turned to and that isn't loaded.
Ref< QV_STRING > culprit( QV_VECTOR *names )
{
    QV_INT           i = qvVectorLength( names );
    Ref< QV_STRING > name;

    do
        name = wordAt( names, --i );
    while( i > 0 && Ref< QV_MODULE >( qvRuntimeModule( name ) ) );

    return name;
}

bool load( QV_STRING *name )
{
    Progress here;
    progress       = &here;
    QV_BOOL loaded = qvRuntimeTryLoadModule( name );
    progress       = nullptr;

    if( loaded )
        return true;

    Ref< QV_STRING > failed  = culprit( here.names );
    Ref< QV_STRING > subject = Ref< QV_STRING >::share( name );

    if( !qvStringEquals( name, failed ) )
        subject.reset( qvStringCreateFromFormatCstr( "%s needs %s", -1, name, failed.get() ) );

    if( !here.reason )
        here.reason.reset( qvStringCreateFromCstr( "it did not start", -1 ) );

    complain( COMMAND, subject, here.reason );
    return false;
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
    const QV_MODULE_RECORD   *record = module->moduleRecord;
    Ref< QV_MODULE_VERSION >  version( qvModuleVersion( module ) );
    Ref< QV_STORE >           store( qvStoreCreate() );
    Ref< QV_STORE >           product( qvStoreCreate() );

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

// Opens the file and no more: nothing is started, and what the module needs need not be there.
QV_BOOL show( QV_VECTOR *argv, void *context )
{
    if( qvVectorLength( argv ) != 1 )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_STRING > name        = wordAt( argv, 0 );

    if( !isName( name ) )
        return QV_FALSE;

    Progress here;
    progress = &here;
    Ref< QV_MODULE > module( qv___RuntimePlatformLoadModule( name ) );
    progress = nullptr;

    if( !module )
    {
        complain( COMMAND, name, here.reason );
        return QV_FALSE;
    }

    printDocument( describe( module ) );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

QV_BOOL run( QV_VECTOR *argv, void *context )
{
    if( qvVectorLength( argv ) < 1 )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_STRING > name        = wordAt( argv, 0 );

    if( !isName( name ) || !load( name ) )
        return QV_FALSE;

    Ref< QV_MODULE > module( qvRuntimeModule( name ) );

    if( !qvModuleHasPersonality( module ) )
    {
        complain( COMMAND, name, "not a module that can be run" );
        return QV_FALSE;
    }

    Ref< QV_VECTOR > arguments( qvVectorCreate() );

    for( QV_INT i = 1; i < qvVectorLength( argv ); i++ )
        qvVectorAppendString( arguments.at(), wordAt( argv, i ) );

    QV_INT result = qvModuleRunPersonality( module, reinterpret_cast< intptr_t >( arguments.get() ), 0 );

    contextOf( context )->status     = result >= 0 && result <= 255 ? static_cast< int >( result ) : 255;
    contextOf( context )->usageShown = true; // whatever the status, the usage was right

    return result == 0 ? QV_TRUE : QV_FALSE;
}

const Tool TOOLS[] = {
    { "show", "NAME", "prints what the file of a module in XZ_MORVANE_BIN_PATH tells about it", show },
    { "run", "NAME [ARGUMENT...]", "loads a module and runs its program", run },
};
} // namespace

QV_BOOL moduleTool( QV_VECTOR *argv, void *context )
{
    takePrinted( followProgress );
    runTool( COMMAND, TOOLS, sizeof( TOOLS ) / sizeof( TOOLS[0] ), argv, contextOf( context ) );

    return contextOf( context )->status == SUCCESS ? QV_TRUE : QV_FALSE;
}
} // namespace morvane
