#include "qv/runtime/qv_runtime_platform_private.h"

#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_cstr_private.h"
#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_file.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime_joined_private.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <link.h>
#include <stdlib.h>
#include <string.h>
#include <sys/utsname.h>
#include <unistd.h>

QV_STRING *qv___RuntimePlatformPaths[QV___RUNTIME_PATH_COUNT] = {};

namespace
{
/** How a path is found: by its environment variable, else a fixed place or one below the data path. */
struct PathRule
{
    const char *variable;  // what comes after the product's name
    const char *place;     // the same; null for the data path itself
    const char *belowData; // null where the path has a place
};

// clang-format off
const PathRule RULES[QV___RUNTIME_PATH_COUNT] = {
    { "_BIN_PATH",     "/bin/", nullptr },
    { "_RES_PATH",     "/res/", nullptr },
    { "_DATA_PATH",    nullptr, nullptr },
    { "_STORAGE_PATH", nullptr, "storage/" },
    { "_TRACE_PATH",   nullptr, "trace/" },
    { "_ABORT_PATH",   nullptr, "abort/" },
    { "_TEMP_PATH",    nullptr, "temp/" },
};
// clang-format on

const QV_INT COMPUTER_NAME_SIZE = 256;

// What comes before the processor's name in its line.
const char   MODEL_NAME[]      = "model name";
const QV_INT MODEL_NAME_LENGTH = 18;

QV_STRING *withProduct( const char *before, const char *after )
{
    return qv::Joined( { before, qv___RuntimeVersionProductNameCstr(), after } ).string();
}

QV_STRING *toPath( const char *value )
{
    qv::Ref< QV_STRING > path( qvStringCreateFromCstr( value, -1 ) );
    qvFilePathAppendDelimiter( path.at() );

    return path.give();
}

// The path in the product's environment variable with this end, as in `XZ_MORVANE_BIN_PATH`. Null if there is none.
QV_STRING *pathOfVariable( const char *end )
{
    qv::Joined variable( { "XZ_", qv___RuntimeVersionProductNameCstr(), end } );

    for( char *at = variable.text(); *at; at++ )
        if( *at >= 'a' && *at <= 'z' )
            *at = static_cast< char >( *at - 'a' + 'A' );

    const char *value = getenv( variable.text() );

    return value ? toPath( value ) : nullptr;
}

QV_STRING *defaultDataPath()
{
    if( qvRuntimeFlags() & QV_RUNTIME_FLAG_SYSTEM )
        return withProduct( "/var/opt/wexcraft/", "/" );

    const char *home = getenv( "HOME" );

    if( !home )
        return nullptr;

    // Decoded by itself: of a character that breaks off at its end nothing is left, where one before other text is
    // replaced.
    qv::Ref< QV_STRING > path( qvStringCreateFromCstr( home, -1 ) );
    qvStringAppend( path.at(), qv::Ref< QV_STRING >( withProduct( "/.opt/wexcraft/", "/" ) ) );

    return path.give();
}

// The file that the library is in, for dl_iterate_phdr(): dladdr() would search all symbols for the name of one.
int findLibrary( dl_phdr_info *info, size_t, void *fileName )
{
    const uintptr_t own = reinterpret_cast< uintptr_t >( &qv___module );

    for( int i = 0; i < info->dlpi_phnum; i++ )
    {
        const uintptr_t begin = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr;

        if( info->dlpi_phdr[i].p_type == PT_LOAD && own - begin < info->dlpi_phdr[i].p_memsz )
        {
            *static_cast< const char ** >( fileName ) = info->dlpi_name;
            return 1;
        }
    }

    return 0;
}

// Whether a path that ends in a slash leads to a directory: nothing else has such a path. It costs two thirds of what
// asking for all that is known of the directory does.
bool isDirectory( const char *path )
{
    QV_ASSERT( path[0] && path[strlen( path ) - 1] == '/' );
    return faccessat( AT_FDCWD, path, F_OK, AT_EACCESS ) == 0;
}

// The folder of modules in an installation, wherever it has been moved to: `morvane` beside the library. Null if there is
// none.
QV_STRING *modulesBesideLibrary()
{
    const char *fileName = nullptr;
    dl_iterate_phdr( findLibrary, &fileName );

    // An executable that holds the library itself has an empty name.
    const char *slash = fileName ? strrchr( fileName, '/' ) : nullptr;

    if( !slash )
        return nullptr;

    qv::Joined folder( { fileName } );
    folder.text()[slash - fileName] = 0;
    qv::Joined path( { folder.text(), "/", qv___RuntimeVersionProductNameCstr(), "/" } );

    if( !isDirectory( path.text() ) )
        return nullptr;

    // As the loader has searched it: a working folder of later has nothing to do with it.
    return *path.text() == '/' ? path.string()
                               : qvStringCreateFromFormatCstr( "%~s/%lc", -1, qvCurrentDirectory(), path.text() );
}

QV_STRING *defaultPath( const PathRule &rule )
{
    if( rule.place )
        return withProduct( "/opt/wexcraft/", rule.place );

    if( !rule.belowData )
        return defaultDataPath();

    qv::Ref< QV_STRING > path( qvRuntimePath( QV_RUNTIME_PATH_DATA ) );

    if( path )
        qvStringAppendCstr( path.at(), rule.belowData, -1 );

    return path.give();
}

// Whether the last directory of a path is there or can be made, and so all before it.
bool isMade( QV_STRING *path )
{
    return isDirectory( qv::Cstr( path ) ) || qvFileCreateDirectory( path );
}

// Makes the directories of the run. The data path is there if one below it is, which saves a look.
void setUpDataPaths()
{
    qv::KeptError kept;
    QV_STRING    *data   = qv___RuntimePlatformPaths[QV_RUNTIME_PATH_DATA];
    bool          isDone = !data;

    for( QV_INT i = QV_RUNTIME_PATH_DATA + 1; i < QV___RUNTIME_PATH_COUNT; i++ )
    {
        QV_STRING *path = qv___RuntimePlatformPaths[i];

        if( path && !isMade( path ) )
            qv___RuntimePlatformUnixSetupPath( path );
        else if( path && data && qvStringBeginsWith( path, data ) )
            isDone = true;
    }

    if( !isDone )
        qv___RuntimePlatformUnixSetupPath( data );

    QV_ASSERT( !data || !isDone || qvFileIsDirectory( data ) );
}

// The name of the first processor, from its line; null if there is none.
QV_STRING *cpuModel()
{
    qv::Ref< QV_STRING >      fn( qvStringCreateFromCstr( "/proc/cpuinfo", -1 ) );
    qv::Ref< QV_LINE_SOURCE > lines( qvFileOpenLineSource( fn, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );

    if( !lines )
        return nullptr;

    // Not read to its end: the kernel makes up the rest, which grows with the processors, as it is read.
    for( ;; )
    {
        qv::Ref< QV_STRING > line( qvLineSourceRead( lines ) );

        if( !line )
            return nullptr;

        if( qvStringBeginsWithCstr( line, MODEL_NAME, -1 ) )
        {
            qvStringDelLeading( line.at(), qvIntMin( MODEL_NAME_LENGTH, qvStringLength( line ) ) );
            return line.give();
        }
    }
}

// Why a file is not loaded becomes the last error; a run with the flag for that prints `reason`.
void refuse( const char *reason, const qv::ErrorDetails &details )
{
    qv::setError( details );

    if( qvRuntimeFlags() & QV_RUNTIME_FLAG_MODULE_DEBUG )
        qvPrintFormatCstr( "[qv___RuntimePlatformLoadModule()] %lc", -1, reason );
}

// What the loader's words mean. Words in another language, which it has after setlocale(), only tell what stands before
// them: the name of the file that they are about.
QV_INT codeOfLoader( const char *words, const char *fileName )
{
    bool isAboutFile = strncmp( words, fileName, strlen( fileName ) ) == 0;

    if( strstr( words, "undefined symbol" ) )
        return QV_ERROR_NO_SYMBOL;

    if( !isAboutFile )
        return QV_ERROR_NO_DEPENDENCY;

    if( strchr( fileName, '/' ) )
        return access( fileName, R_OK ) == 0 ? QV_ERROR_BAD_MODULE : qv::codeOfSystem( errno );

    return strstr( words, "cannot open" ) ? QV_ERROR_NOT_FOUND : QV_ERROR_BAD_MODULE;
}

// Opens the file of a module, by its path or as the loader finds it. Null if that fails, and why.
void *openFile( const char *fileName, qv::ErrorDetails *why )
{
    why->path = fileName;

    if( strchr( fileName, '/' ) && !qv::isFitToLoad( fileName, why ) )
        return nullptr;

    void *file = dlopen( fileName, RTLD_NOW );

    if( !file )
    {
        why->reason = dlerror();
        why->code   = codeOfLoader( why->reason.bytes, fileName );
    }

    return file;
}

// The module that an opened file holds, borrowed, or null. `why` has the path of the file and the name of the module.
QV_MODULE *findModule( void *file, QV_STRING *moduleName, qv::ErrorDetails why )
{
    // A module that brings another library along, as it does in a program with this one linked in, would work with objects
    // and globals of its own.
    void *entry = dlsym( file, "qvRuntimeTryLoadModule" );

    if( entry && entry != reinterpret_cast< void * >( qvRuntimeTryLoadModule ) )
    {
        why.code   = QV_ERROR_BAD_MODULE;
        why.reason = "it is bound to another copy of the library";
        refuse( "bound to another copy of the library", why );
        return nullptr;
    }

    qv::Ref< QV_STRING > symbol( qvStringCreateFromFormatCstr( "%s___module", -1, moduleName ) );
    QV_MODULE           *module = static_cast< QV_MODULE * >( dlsym( file, qv::Cstr( symbol ) ) );

    if( !module )
    {
        why.code   = QV_ERROR_NO_SYMBOL;
        why.reason = dlerror();
        refuse( "dlsym(): null", why );
        return nullptr;
    }

    if( !qv___ModuleCheckCompatibility( module ) )
    {
        why.code   = QV_ERROR_WRONG_VERSION;
        why.reason = "not made for this product, or its record is not in order";
        refuse( "qv___ModuleCheckCompatibility(): false", why );
        return nullptr;
    }

    if( !qvStringEquals( qv::Ref< QV_STRING >( qvModuleName( module ) ), moduleName ) )
    {
        why.code   = QV_ERROR_BAD_MODULE;
        why.reason = "the file holds a module of another name";
        refuse( "module name invalid", why );
        return nullptr;
    }

    return module;
}
} // namespace

/* Paths ---------------------------------------------------------------------------------------------------------- */

void qv___RuntimePlatformStartup( void )
{
    for( QV_STRING *&path : qv___RuntimePlatformPaths )
        path = nullptr;

    if( qvRuntimeFlags() & QV_RUNTIME_FLAG_MINIMAL )
        return;

    for( QV_INT path = 0; path < QV___RUNTIME_PATH_COUNT; path++ )
    {
        const PathRule &rule  = RULES[path];
        QV_STRING      *found = pathOfVariable( rule.variable );

        if( !found && path == QV_RUNTIME_PATH_BIN )
            found = modulesBesideLibrary();

        qv___RuntimePlatformPaths[path] = found ? found : defaultPath( rule );
    }

    setUpDataPaths();
}

void qv___RuntimePlatformShutdown( void )
{
    for( QV_STRING *&path : qv___RuntimePlatformPaths )
        qv::drop( path );
}

QV_STRING *qv___RuntimePlatformUnixPathFromEnvironment( QV_STRING *variable )
{
    QV_CHECK( variable );

    qv::Ref< QV_STRING > upper = qv::Ref< QV_STRING >::share( variable );
    qvStringToUpper( upper.at() );

    const char *value = getenv( qv::Cstr( upper ) );

    return value ? toPath( value ) : nullptr;
}

void qv___RuntimePlatformUnixSetupPath( QV_STRING *path )
{
    QV_CHECK( path );

    qv::KeptError kept;

    if( isMade( path ) )
        return;

    qv::Ref< QV_VECTOR > pieces( qvStringSplitChar( path, qvFilePathDelimiter(), -1 ) );
    qv::Ref< QV_STRING > made( qvStringCreate() );
    QV_INT               count = qvVectorLength( pieces );

    for( QV_INT i = 0; i < count; i++ )
    {
        qv::Ref< QV_STRING > piece( qvStringFrom( qvVectorObjAt( pieces, i ) ) );

        if( qvStringLength( piece ) == 0 && i > 0 )
            continue;

        qvStringAppend( made.at(), piece );

        if( qvStringLength( made ) > 0 )
            qvFileCreateDirectory( made );

        qvStringAppendChar( made.at(), qvFilePathDelimiter() );
    }
}

/* Modules -------------------------------------------------------------------------------------------------------- */

QV_MODULE *qv___RuntimePlatformLoadModule( QV_STRING *moduleName )
{
    QV_CHECK( moduleName );

    bool                 implicit = qvRuntimeFlags() & QV_RUNTIME_FLAG_IMPLICIT_MODULE_PATH;
    qv::Ref< QV_STRING > path( implicit ? qvStringCreate() : qvRuntimePath( QV_RUNTIME_PATH_BIN ) );

    qv::OwnUtf8      name( moduleName );
    qv::ErrorDetails why;
    why.subject = name;

    // A run without a path for modules has none.
    if( !path )
    {
        why.code   = QV_ERROR_NOT_FOUND;
        why.reason = "the run has no path for modules";
        qv::setError( why );
        return nullptr;
    }

    qvStringAppendFormatCstr( path.at(), "lib%~s-%s.so", -1, qvRuntimeVersionProductName(), moduleName );
    qv::Cstr fileName( path );
    void    *file = openFile( fileName, &why );

    if( !file )
    {
        refuse( "dlopen(): null", why );
        return nullptr;
    }

    QV_MODULE *module = findModule( file, moduleName, why );

    if( !module )
    {
        dlclose( file );
        return nullptr;
    }

    return qv::retain( module );
}

const char *qv::fileOfModule( QV_MODULE *module )
{
    Dl_info info;
    return dladdr( module, &info ) ? info.dli_fname : nullptr;
}

bool qv::isInputTerminal()
{
    return isatty( STDIN_FILENO );
}

/* The computer --------------------------------------------------------------------------------------------------- */

QV_STRING *qv___RuntimePlatformComputerName( void )
{
    char name[COMPUTER_NAME_SIZE];

    if( gethostname( name, sizeof( name ) ) )
        return nullptr;

    name[sizeof( name ) - 1] = '\0';
    return qvStringCreateFromCstr( name, -1 );
}

QV_STRING *qv___RuntimePlatformOperatingSystemInfo( void )
{
    struct utsname system;

    if( uname( &system ) < 0 )
        return nullptr;

    return qv::Joined( { system.release, ", ", system.version, ", ", system.machine } ).string();
}

QV_STRING *qv___RuntimePlatformCpuInfo( void )
{
    qv::Ref< QV_STRING > info( cpuModel() );

    if( !info )
        info.reset( qvStringCreateFromCstr( "CPU unknown", -1 ) );

    long cores = sysconf( _SC_NPROCESSORS_ONLN );

    if( cores >= 1 )
        qvStringAppendFormatCstr( info.at(), ", cores:%i", -1, static_cast< QV_INT >( cores ) );

    return info.give();
}
