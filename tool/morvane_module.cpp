#include "morvane_loader.h"
#include "morvane_tool.h"

#include "qv/base/qv_store.h"
#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_module.h"
#include "qv/runtime/qv_module_record.h"
#include "qv/runtime/qv_module_version.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_mem.h"

#include <string.h>

namespace morvane
{
using qv::Ref;

namespace
{
const char COMMAND[] = "morvane module";

// The start of the line about a refused file that the library prints with QV_RUNTIME_FLAG_MODULE_DEBUG.
const char FAILURE_LINE[] = "[qv___RuntimePlatformLoadModule()] ";

const struct
{
    const char *line;
    const char *reason; // null: that of the loader
} FAILURES[] = {
    { "dlopen(): null", nullptr },
    { "dlsym(): null", nullptr },
    { "qv___ModuleCheckCompatibility(): false", "not made for this product, or its record is not in order" },
    { "module name invalid", "the file holds a module of another name" },
};

// Modules whose files are refused, and those that were to be loaded.
const int NAME_SIZE = 33;

struct Refused
{
    char name[NAME_SIZE];
    char requested[NAME_SIZE];
};

Refused *refused      = nullptr;
QV_INT   refusedCount = 0;

Ref< QV_STRING > *refusal = nullptr; // the reason, while explainRefusal() runs

// The print hook of a run that opens the file and starts nothing.
void takeRefusal( const QV_CHAR *chs, QV_INT length )
{
    Ref< QV_STRING > line( qvStringCreateFromCharsCopy( chs, length ) );

    if( !qvStringBeginsWithCstr( line, FAILURE_LINE, -1 ) )
        return;

    qvStringDelLeading( line.at(), sizeof( FAILURE_LINE ) - 1 );
    const char *reason = loaderReason();

    for( const auto &row : FAILURES )
        if( row.reason && qvStringEqualsCstr( line, row.line, -1 ) )
            reason = row.reason;

    if( reason )
        refusal->reset( qvStringCreateFromCstr( reason, -1 ) );
}

void explain( const Refused &row )
{
    Ref< QV_STRING > reason( qvStringCreateFromCstr( "the file cannot be loaded", -1 ) );
    Ref< QV_STRING > subject( qvStringCreateFromCstr( row.name, -1 ) );
    refusal = &reason;
    Ref< QV_MODULE > module( qv___RuntimePlatformLoadModule( subject ) );

    if( strcmp( row.requested, row.name ) != 0 )
        subject.reset( qvStringCreateFromFormatCstr( "%lc needs %lc", -1, row.requested, row.name ) );

    complain( COMMAND, subject, reason );
}

// Tells why files were refused, in a run of its own: in another one, modules may print lines of this form too.
void explainRefusals()
{
    startRuntime( QV_RUNTIME_FLAG_MODULE_DEBUG, takeRefusal );

    for( QV_INT i = 0; i < refusedCount; i++ )
        explain( refused[i] );

    qvRuntimeShutdown();
    qvMemFree( refused );
}

// Makes the process explain the refusal of a module's file at the end of the run. `request` may be a module that needs
// it.
void leaveToExplain( QV_STRING *name, QV_STRING *request )
{
    refused      = static_cast< Refused * >( qvMemReallocN( refused, refusedCount + 1, sizeof( Refused ) ) );
    Refused &row = refused[refusedCount++];
    qvCharsConvertToCstr( row.name, NAME_SIZE, qvStringBacking( name ), qvStringLength( name ), QV_TRUE );
    qvCharsConvertToCstr( row.requested, NAME_SIZE, qvStringBacking( request ), qvStringLength( request ), QV_TRUE );
    callAfterwards( explainRefusals );
}

// The module that made the load of another one fail, itself or one that it needs: in the order of a load, the first
// that is not loaded although all that it needs is, or whose file is refused.
Ref< QV_STRING > culprit( QV_STRING *name, bool *isRefused )
{
    Ref< QV_MODULE > module( qv___RuntimePlatformLoadModule( name ) );
    *isRefused = !module;

    if( !module )
        return Ref< QV_STRING >::share( name );

    Ref< QV_STRING > deps( qvStringCreateFromCstr( module->moduleRecord->deps, -1 ) );
    Ref< QV_VECTOR > needed( qvStringSplitChar( deps, U' ', -1 ) );

    for( QV_INT i = 0; i < qvVectorLength( needed ); i++ )
    {
        Ref< QV_STRING > other = wordAt( needed, i );

        if( qvStringLength( other ) > 0 && !Ref< QV_MODULE >( qvRuntimeModule( other ) ) )
            return culprit( other, isRefused );
    }

    return Ref< QV_STRING >::share( name );
}

bool load( QV_STRING *name )
{
    if( qvRuntimeTryLoadModule( name ) )
        return true;

    bool             isRefused;
    Ref< QV_STRING > failed  = culprit( name, &isRefused );
    Ref< QV_STRING > subject = Ref< QV_STRING >::share( name );

    if( !qvStringEquals( name, failed ) )
        subject.reset( qvStringCreateFromFormatCstr( "%s needs %s", -1, name, failed.get() ) );

    if( isRefused )
        leaveToExplain( failed, name );
    else
        complain( COMMAND, subject, "it did not start" );

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
            leaveToExplain( name, name );
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

    if( !isName( name ) || !load( name ) )
        return FAILURE;

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
