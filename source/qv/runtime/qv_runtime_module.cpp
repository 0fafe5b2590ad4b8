#include "qv/runtime/qv_runtime_module_private.h"

#include "qv/base/qv_dict.h"
#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_sleep.h"
#include "qv/base/qv_stack_trace_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/io/qv_print.h"
#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_leaks_private.h"
#include "qv/runtime/qv_runtime_platform_private.h"
#include "qv/runtime/qv_runtime_snapshot_private.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_int.h"

#define QV___RUNTIME_UNLOAD_MODULE_TIMEOUT 60000 // milliseconds

namespace
{
/* Held for a whole load or unload, also while a module's own functions run and while an unload sleeps, so that loads
   and unloads of all threads take turns. It guards the names being loaded and the index. */
QV_MONITOR *qv___RuntimeLoadMonitor     = nullptr;
QV_DICT    *qv___RuntimeLoadingDict     = nullptr; // names being loaded
QV_INT      qv___RuntimeExtensionsIndex = 0;       // the extensions of the modules before it have been tried

/* Both tables of the loaded modules change together, under both monitors. So they may be read under either; a load or
   an unload needs the second for the change only. */
QV_MONITOR *qv___RuntimeLoadedModulesMonitor = nullptr;
QV_DICT    *qv___RuntimeLoadedModulesDict    = nullptr; // by name
QV_VECTOR  *qv___RuntimeLoadedModulesVector  = nullptr; // in the order of loading; the library itself first

QV___UNLOAD_WAIT_FUNC qv___RuntimeUnloadWaitFunc = nullptr;

const QV_INT PAUSE           = 50;    // milliseconds between two checks for live objects
const QV_INT REPORT_INTERVAL = 10000; // milliseconds between two reports of them

qv::Ref< QV_MODULE > moduleAt( QV_VECTOR *modules, QV_INT idx )
{
    return qv::Ref< QV_MODULE >( qvModuleFrom( qvVectorObjAt( modules, idx ) ) );
}

qv::Ref< QV_SORT > sortAt( QV_VECTOR *sorts, QV_INT idx )
{
    return qv::Ref< QV_SORT >( qvSortFrom( qvVectorObjAt( sorts, idx ) ) );
}

qv::Ref< QV_STRING > nameOf( QV_SORT *sort )
{
    return qv::Ref< QV_STRING >( qvSortName( sort ) );
}

// The names in a text, with one blank between them. An empty text has none.
qv::Ref< QV_VECTOR > namesIn( const char *text )
{
    if( !*text )
        return qv::Ref< QV_VECTOR >( qvVectorCreate() );

    return qv::Ref< QV_VECTOR >(
        qvStringSplitChar( qv::Ref< QV_STRING >( qvStringCreateFromCstr( text, -1 ) ), U' ', -1 ) );
}

// Tells that a module was not loaded because it needs another one, whose failure is the last error: in its reason the
// module that failed, which may be needed by the other one only, comes after the first that needs it.
void tellNeed( QV_STRING *needer, QV_STRING *needed )
{
    qv::Ref< QV_ERROR >  error( qvErrorLast() );
    qv::Ref< QV_STRING > failed( qvErrorSubject( error ) );
    qv::Ref< QV_STRING > reason( qvErrorReason( error ) );
    qv::Ref< QV_STRING > path( qvErrorPath( error ) );
    qv::Ref< QV_STRING > before( qvStringCreateFromFormatCstr( "%s needs %s: ", -1, needed, failed.get() ) );

    if( qvStringBeginsWith( reason, before ) )
        qvStringDelLeading( reason.at(), qvStringLength( before ) );

    qv::Ref< QV_STRING > all(
        qvStringCreateFromFormatCstr( "%s needs %s: %s", -1, needer, failed.get(), reason.get() ) );
    qv::setError(
        { .code    = QV_ERROR_NO_DEPENDENCY,
          .reason  = qv::OwnUtf8( all ),
          .path    = qv::OwnUtf8( path ),
          .subject = qv::OwnUtf8( failed ) } );
}

// Tells that a start-up function has failed, and why if it has set the last error.
void tellStartup( QV_MODULE *module )
{
    qv::Ref< QV_STRING > reason( qvStringCreateFromCstr( "it did not start", -1 ) );

    if( qvErrorLastCode() != QV_ERROR_NONE )
        qvStringAppendFormatCstr( reason.at(), ": %~s", -1, qvErrorLastText() );

    qv::setError(
        { .code    = QV_ERROR_NOT_STARTED,
          .reason  = qv::OwnUtf8( reason ),
          .path    = qv::fileOfModule( module ),
          .subject = module->moduleRecord->name } );
}

// Loads in the order of the names. False at the first that fails; the rest is not tried then. `needer` is the module
// that depends on them, or null.
QV_BOOL loadAll( QV_VECTOR *moduleNames, QV_STRING *needer )
{
    for( QV_INT i = 0; i < qvVectorLength( moduleNames ); i++ )
    {
        qv::Ref< QV_STRING > name( qvStringFrom( qvVectorObjAt( moduleNames, i ) ) );

        if( qv___RuntimeTryLoadModule( name ) )
            continue;

        if( needer )
            tellNeed( needer, name );

        return QV_FALSE;
    }

    return QV_TRUE;
}

void enter( QV_MODULE *module, QV_STRING *moduleName )
{
    qv::HeldMonitor held( qv___RuntimeLoadedModulesMonitor );
    qvDictSetStringKey( &qv___RuntimeLoadedModulesDict, moduleName, qvModuleObj( module ) );
    qvVectorPush( &qv___RuntimeLoadedModulesVector, qvModuleObj( module ) );
}

// Loads the module of a name that has been entered in the Dict of names being loaded.
QV_BOOL loadNamed( QV_STRING *moduleName )
{
    qv::Ref< QV_MODULE > module( qv___RuntimePlatformLoadModule( moduleName ) );

    if( !module )
        return QV_FALSE;

    QV_CHECK( module->moduleRecord );
    QV_CHECK( module->moduleRecord->name );
    QV_CHECK( module->moduleRecord->description );
    QV_CHECK( module->moduleRecord->version );
    QV_CHECK( module->moduleRecord->deps );
    QV_CHECK( module->moduleRecord->exts );

    if( !loadAll( namesIn( module->moduleRecord->deps ), moduleName ) )
        return QV_FALSE;

    qvErrorClear();

    if( module->startupFunc && !module->startupFunc() )
    {
        tellStartup( module );
        return QV_FALSE;
    }

    enter( module, moduleName );
    qv::addOwn( qvStringSort(), 1 ); // the name
    return QV_TRUE;
}

/* The report of what keeps a module from ending ------------------------------------------------------------------- */

void reportSorts( QV_VECTOR *sorts )
{
    QV_INT width = 0;

    for( QV_INT i = 0; i < qvVectorLength( sorts ); i++ )
        width = qvIntMax( width, qvStringLength( nameOf( sortAt( sorts, i ) ) ) );

    for( QV_INT i = 0; i < qvVectorLength( sorts ); i++ )
    {
        qv::Ref< QV_SORT > sort = sortAt( sorts, i );
        qv::printSnapshotSort( sort, width, qvSortObjects( sort ) );
    }
}

void report( QV_MODULE *module )
{
    const QV_INT flags = qvRuntimeFlags();
    qv::printSnapshotLine();

    if( flags & QV_RUNTIME_FLAG_SNAPSHOT_SORT )
    {
        reportSorts( qv::Ref< QV_VECTOR >( qvModuleSnapshotSorts( module ) ) );

        if( flags & QV_RUNTIME_FLAG_SNAPSHOT_OBJECT )
            qvPrintCstr( "", 0 );
    }

    if( flags & QV_RUNTIME_FLAG_SNAPSHOT_OBJECT )
    {
        qv::Ref< QV_VECTOR > objects( qvModuleSnapshotObjects( module ) );

        for( QV_INT i = 0; i < qvVectorLength( objects ); i++ )
        {
            qv::Ref< QV_OBJ > object( qvVectorObjAt( objects, i ) );
            QV_INT            own = 2; // references: the snapshot's and this one
            qv::printSnapshotObject( object, qv___AtomicLoad32( &object->retainCount ) - own, flags );
        }
    }
}

/* Unloading ------------------------------------------------------------------------------------------------------ */

// Waits until no object of the module's sorts lives. `*reported` says whether this unload has printed a report before.
// A run that wants reports is left to the person who reads them and ends it: where there is nobody at a terminal, it
// ends as others do.
void awaitLastObject( QV_MODULE *module, bool *reported )
{
    const bool reports     = qvRuntimeFlags() & QV___RUNTIME_FLAGS_SNAPSHOT;
    const bool isLimited   = !reports || !qv::isInputTerminal();
    QV_INT     msecs       = 0;
    QV_INT     sinceReport = 0;

    while( qv___ModuleObjects( module ) )
    {
        qvSleepTimed( nullptr, PAUSE );
        msecs = qvIntAddSaturating( msecs, PAUSE );
        sinceReport += PAUSE;

        if( qv___RuntimeUnloadWaitFunc && qv___ModuleObjects( module ) )
            qv___RuntimeUnloadWaitFunc(
                module, msecs, isLimited ? qvIntMax( 0, QV___RUNTIME_UNLOAD_MODULE_TIMEOUT - msecs ) : -1 );

        if( reports && sinceReport > REPORT_INTERVAL )
        {
            if( !*reported )
                qv___RuntimeSnapshotHeader();

            report( module );
            *reported   = true;
            sinceReport = 0;
        }

        if( isLimited )
            QV_CHECK_MESSAGE( msecs <= QV___RUNTIME_UNLOAD_MODULE_TIMEOUT, module->moduleRecord->name );
    }
}

// Unloads the last module of the Vector.
void unloadLast( bool *reported )
{
    QV_INT               idx    = qvVectorLength( qv___RuntimeLoadedModulesVector ) - 1;
    qv::Ref< QV_MODULE > module = moduleAt( qv___RuntimeLoadedModulesVector, idx );

    if( qvRuntimeFlags() & QV_RUNTIME_FLAG_MODULE_DEBUG )
        qvPrintFormatCstr( "[qvRuntimeUnloadAllModules()] module: %~s", -1, qvModuleName( module ) );

    if( module->shutdownFunc )
        module->shutdownFunc();

    awaitLastObject( module, reported );

    if( module->shutdownEndFunc )
        module->shutdownEndFunc();

    qv::Ref< QV_STRING > moduleName( qvModuleName( module ) );
    qv::HeldMonitor      held( qv___RuntimeLoadedModulesMonitor );
    qvDictDelStringKey( &qv___RuntimeLoadedModulesDict, moduleName );
    qvVectorDelAt( &qv___RuntimeLoadedModulesVector, idx );
    qv::addOwn( qvStringSort(), -1 );
}

QV_VECTOR *snapshotOfAll( QV_VECTOR *( *snapshotOf )(QV_MODULE *))
{
    if( !qv___ObjOdbEnabled() )
        return nullptr;

    qv::Ref< QV_VECTOR > result( qvVectorCreate() );
    qv::Ref< QV_VECTOR > modules( qvRuntimeModulesVector() );

    for( QV_INT i = 0; i < qvVectorLength( modules ); i++ )
    {
        qv::Ref< QV_VECTOR > snapshot( snapshotOf( moduleAt( modules, i ) ) );
        qvVectorAppendObj( result.at(), qvVectorObj( snapshot ) );
    }

    return result.give();
}
} // namespace

/* Start and stop ------------------------------------------------------------------------------------------------- */

void qv::startModules()
{
    qv___RuntimeLoadMonitor          = qvMonitorCreate();
    qv___RuntimeLoadedModulesMonitor = qvMonitorCreate();
    qv___RuntimeLoadedModulesDict    = qvDictCreate();
    qv___RuntimeLoadedModulesVector  = qvVectorCreate();
    qv___RuntimeLoadingDict          = qvDictCreate();
    qv___RuntimeExtensionsIndex      = 0;

    Ref< QV_STRING > moduleName( qvModuleName( &qv___module ) );
    enter( &qv___module, moduleName );

    HeldMonitor held( qv___RuntimeLoadMonitor );
    qv___RuntimeLoadModuleExtensions();
}

void qv::stopModules()
{
    qvRuntimeUnloadAllModules();
    qv___RuntimeUnloadWaitFunc = nullptr;

    drop( qv___RuntimeLoadMonitor );
    drop( qv___RuntimeLoadedModulesMonitor );
    drop( qv___RuntimeLoadedModulesDict );
    drop( qv___RuntimeLoadedModulesVector );
    drop( qv___RuntimeLoadingDict );
}

bool qv::isOfModules( QV_OBJ *object )
{
    HeldMonitor held( qv___RuntimeLoadedModulesMonitor );

    if( object == obj( qv___RuntimeLoadMonitor ) || object == obj( qv___RuntimeLoadedModulesMonitor )
        || object == obj( qv___RuntimeLoadedModulesDict ) || object == obj( qv___RuntimeLoadedModulesVector )
        || object == obj( qv___RuntimeLoadingDict ) )
        return true;

    for( QV_INT i = 0; i < qvDictLength( qv___RuntimeLoadedModulesDict ); i++ )
        if( Ref< QV_OBJ >( qvDictKeyAt( qv___RuntimeLoadedModulesDict, i ) ) == object )
            return true;

    return false;
}

/* Loading -------------------------------------------------------------------------------------------------------- */

QV_BOOL qv___RuntimeTryLoadModule( QV_STRING *moduleName )
{
    QV_CHECK( qvModuleNameOk( moduleName ) );

    if( qvDictHasStringKey( qv___RuntimeLoadedModulesDict, moduleName ) )
        return QV_TRUE;

    if( qvRuntimeFlags() & QV_RUNTIME_FLAG_MODULE_DEBUG )
        qvPrintFormatCstr( "[qv___RuntimeTryLoadModule()] module: %s", -1, moduleName );

    // A module that depends on itself, directly or through others, would be started before what it needs.
    QV_CHECK( !qvDictHasStringKey( qv___RuntimeLoadingDict, moduleName ) );

    qvDictSetStringKey( &qv___RuntimeLoadingDict, moduleName, qvStringObj( moduleName ) );
    QV_BOOL loaded = loadNamed( moduleName );
    qvDictDelStringKey( &qv___RuntimeLoadingDict, moduleName );

    return loaded;
}

void qv___RuntimeLoadModuleExtensions( void )
{
    // Each load makes the Vector longer, so that extensions of extensions are tried too.
    for( ; qv___RuntimeExtensionsIndex < qvVectorLength( qv___RuntimeLoadedModulesVector );
         qv___RuntimeExtensionsIndex++ )
    {
        qv::Ref< QV_MODULE > module = moduleAt( qv___RuntimeLoadedModulesVector, qv___RuntimeExtensionsIndex );
        qv::Ref< QV_VECTOR > names  = namesIn( module->moduleRecord->exts );

        for( QV_INT i = 0; i < qvVectorLength( names ); i++ )
            qv___RuntimeTryLoadModule( qv::Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( names, i ) ) ) );
    }
}

QV_BOOL qvRuntimeTryLoadModule( QV_STRING *moduleName )
{
    QV_CHECK( qvModuleNameOk( moduleName ) );

    return qvRuntimeTryLoadModulesVector( qv::Ref< QV_VECTOR >( qvVectorCreateFromObj( qvStringObj( moduleName ) ) ) );
}

QV_BOOL qvRuntimeTryLoadModulesVector( QV_VECTOR *moduleNames )
{
    QV_CHECK( moduleNames );
    QV_CHECK( qvVectorContainsOnly( moduleNames, qvStringSort() ) );

    qv::HeldMonitor held( qv___RuntimeLoadMonitor );
    QV_BOOL         loaded = loadAll( moduleNames, nullptr );

    if( loaded )
        qv___RuntimeLoadModuleExtensions();

    qv___StackTraceUpdateSymbols();
    return loaded;
}

QV_BOOL qvRuntimeTryLoadModules( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvRuntimeTryLoadModulesVector( qv::Ref< QV_VECTOR >( qvStringSplitChar( qvs, U' ', -1 ) ) );
}

QV_BOOL qvRuntimeTryLoadModulesCstr( const char *cstr, QV_INT length )
{
    return qvRuntimeTryLoadModules( qv::Ref< QV_STRING >( qvStringCreateFromCstr( cstr, length ) ) );
}

QV_BOOL qvRuntimeTryLoadModulesWcstr( const wchar_t *wcstr )
{
    return qvRuntimeTryLoadModules( qv::Ref< QV_STRING >( qvStringCreateFromWcstr( wcstr, -1 ) ) );
}

/* Unloading ------------------------------------------------------------------------------------------------------ */

void qvRuntimeUnloadAllModules( void )
{
    qv::checkRun();
    qv::HeldMonitor held( qv___RuntimeLoadMonitor );
    QV_CHECK( !qvDictLength( qv___RuntimeLoadingDict ) );

    for( QV_INT i = qvVectorLength( qv___RuntimeLoadedModulesVector ) - 1; i >= 1; i-- )
    {
        qv::Ref< QV_MODULE > module = moduleAt( qv___RuntimeLoadedModulesVector, i );

        if( module->shutdownBeginFunc )
            module->shutdownBeginFunc();
    }

    bool reported = false;

    while( qvVectorLength( qv___RuntimeLoadedModulesVector ) > 1 )
        unloadLast( &reported );

    qv___RuntimeExtensionsIndex = 0;
}

void qv___RuntimeSetUnloadWaitFunc( QV___UNLOAD_WAIT_FUNC func )
{
    qv___RuntimeUnloadWaitFunc = func;
}

/* What is loaded ------------------------------------------------------------------------------------------------- */

QV_VECTOR *qvRuntimeModulesVector( void )
{
    qv::checkRun();
    qv::HeldMonitor held( qv___RuntimeLoadedModulesMonitor );
    return qv::retain( qv___RuntimeLoadedModulesVector );
}

QV_MODULE *qvRuntimeModule( QV_STRING *moduleName )
{
    QV_CHECK( moduleName );

    qv::HeldMonitor held( qv___RuntimeLoadedModulesMonitor );
    return qvModuleFrom( qvDictStringKey( qv___RuntimeLoadedModulesDict, moduleName ) );
}

QV_VECTOR *qvRuntimeSnapshotSorts( void )
{
    return snapshotOfAll( qvModuleSnapshotSorts );
}

QV_VECTOR *qvRuntimeSnapshotObjects( void )
{
    return snapshotOfAll( qvModuleSnapshotObjects );
}
