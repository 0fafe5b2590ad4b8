/** @file
    The run time: start and stop of the library, what is running, and where it keeps its files.

        qvRuntimeStartup( 0, printToStandardOutput, "my-app", "My Application", "1.0" );
        ...                                     // everything else happens here
        qvRuntimeShutdown();

    Start and stop are called from one thread while no other thread runs code of the library; in between, everything
    here may be called from any thread, since it is fixed at the start. A stopped library can be started again.

    Before the start and after the stop, a call that makes an object, or needs one that the start makes, ends the process
    with a report that says so. What only computes works at any time, and an object that has outlived its run may still
    be read and released. */

#ifndef QV_RUNTIME_H
#define QV_RUNTIME_H

#include "qv/sys/qv_types.h"

/* Start and stop ------------------------------------------------------------------------------------------------- */

/** @{ */
/** What a run is started with. OBJECT_ORIGIN, SNAPSHOT_SORT and SNAPSHOT_OBJECT need OBJECT_DATABASE, and the two flags
    that add to reports need SNAPSHOT_OBJECT; without it they have no effect. Strings, Buffers, Vectors, Dicts and stack
    traces log no stack of their creation, since recording one creates them. */
#define QV_RUNTIME_FLAG_MINIMAL                  1    /**< without the file system: no paths; stands alone */
#define QV_RUNTIME_FLAG_SYSTEM                   2    /**< system installation: data under /var/opt, not in the home */
#define QV_RUNTIME_FLAG_MEMORY_DEBUG             4    /**< new memory is filled with bytes 0xFF */
#define QV_RUNTIME_FLAG_OBJECT_DATABASE          8    /**< all live objects are kept in lists */
#define QV_RUNTIME_FLAG_OBJECT_ORIGIN            16   /**< objects log the stack of their creation */
#define QV_RUNTIME_FLAG_SNAPSHOT_SORT            32   /**< reports name the sorts with their object counts */
#define QV_RUNTIME_FLAG_SNAPSHOT_OBJECT          64   /**< reports name each object and its retain count */
#define QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING 128  /**< reports add each object's text */
#define QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG      256  /**< reports add each object's log */
#define QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS    512  /**< no signal handlers are installed */
#define QV_RUNTIME_FLAG_IMPLICIT_MODULE_PATH     1024 /**< modules are searched by the loader, not in the bin path */
#define QV_RUNTIME_FLAG_MODULE_DEBUG             2048 /**< loading and unloading of modules print their progress */
/** @} */

/** Receives what is printed. `chs` is valid during the call only. Calls come one at a time, from any thread; the
    function must not print. */
typedef void ( *QV_RUNTIME_PRINT_FUNC )( const QV_CHAR *chs, QV_INT length );

/** Starts the library. `flags` are normalised. `printFunc` is the print hook: with null, printing has no effect. The
    three texts are zero-terminated UTF-8 or null, and are copied. A failure ends the process. */
QV_API void qvRuntimeStartup(
    QV_INT flags, QV_RUNTIME_PRINT_FUNC printFunc, const char *applicationIdentifier,
    const char *applicationFriendlyName, const char *applicationVersion );

/** Stops the library, its modules first. All objects should have ended by then: with a snapshot flag, those of the
    library's own sorts that have not are reported to the print hook. */
QV_API void qvRuntimeShutdown( void );

/** The flags of this run, normalised; 0 while the library is stopped. */
QV_API QV_INT qvRuntimeFlags( void );

/** `flags` without undefined bits, and without those that depend on one that is missing. */
QV_API QV_INT qvRuntimeFlagsNormalize( QV_INT flags );

/** The normalised flags of a text with names or numbers and `|` between them; unknown ones have no effect. Null ends
    the process. */
QV_API QV_INT qvRuntimeFlagsFromString( QV_STRING *qvs );

/** The names of the normalised flags with `|` between them, as a new text. */
QV_API QV_STRING *qvRuntimeFlagsToString( QV_INT flags );

/** Passes `chsLength` characters to the print hook, if there is one. A negative length, and null with another length
    than 0, end the process. */
QV_API void qvRuntimePrint( const QV_CHAR *chs, QV_INT chsLength );

/* What is running ------------------------------------------------------------------------------------------------ */

/** @{ */
/** The product's name, its name for people, its maker and its copyright: new texts. */
QV_API QV_STRING *qvRuntimeVersionProductName( void );
QV_API QV_STRING *qvRuntimeVersionProductFriendlyName( void );
QV_API QV_STRING *qvRuntimeVersionProductVendorName( void );
QV_API QV_STRING *qvRuntimeVersionProductCopyright( void );
/** @} */

/** @{ */
/** The version of the product, in parts and as a new text like `4.0.19`. */
QV_API QV_INT     qvRuntimeVersionProductVersionMajor( void );
QV_API QV_INT     qvRuntimeVersionProductVersionMinor( void );
QV_API QV_INT     qvRuntimeVersionProductVersionRelease( void );
QV_API QV_STRING *qvRuntimeVersionProductVersion( void );
/** @} */

/** When the product was built, as a new Time, owned by the caller. */
QV_API QV_TIME *qvRuntimeVersionProductBuildTime( void );

/** @{ */
/** The texts about the application that the library was started with: new texts, or null, and whether there
    are such. */
QV_API QV_STRING *qvRuntimeVersionApplicationIdentifier( void );
QV_API QV_STRING *qvRuntimeVersionApplicationFriendlyName( void );
QV_API QV_STRING *qvRuntimeVersionApplicationVersion( void );
QV_API QV_BOOL    qvRuntimeVersionApplicationHasIdentifier( void );
QV_API QV_BOOL    qvRuntimeVersionApplicationHasFriendlyName( void );
QV_API QV_BOOL    qvRuntimeVersionApplicationHasVersion( void );
/** @} */

/* Operating system, hardware and variant: constants of the build -------------------------------------------------- */

#define QV_RUNTIME_OS_WINDOWS     0 /**< `windows`, Windows */
#define QV_RUNTIME_OS_DEBIAN_7    1 /**< `debian7`, Debian 7 */
#define QV_RUNTIME_OS_DEBIAN_8    2 /**< `debian8`, Debian 8 */
#define QV_RUNTIME_OS_DEBIAN_9    3 /**< `debian9`, Debian 9 */
#define QV_RUNTIME_OS_DEBIAN_10   4 /**< `debian10`, Debian 10 */
#define QV_RUNTIME_OS_UBUNTU_1404 5 /**< `ubuntu1404`, Ubuntu 14.04 */
#define QV_RUNTIME_OS_UBUNTU_1604 6 /**< `ubuntu1604`, Ubuntu 16.04 */
#define QV_RUNTIME_OS_UBUNTU_1804 7 /**< `ubuntu1804`, Ubuntu 18.04 */
#define QV_RUNTIME_OS_UBUNTU_2004 8 /**< `ubuntu2004`, Ubuntu 20.04 */
#define QV_RUNTIME_OS_MACOSX      9 /**< `macosx`, macOS */

/** True for one of the operating systems. */
#define QV_RUNTIME_OS_OK( os ) ( ( os ) >= QV_RUNTIME_OS_WINDOWS && ( os ) <= QV_RUNTIME_OS_MACOSX )

#define QV_RUNTIME_HARDWARE_X32         0 /**< `x32`, Intel, 32 bit */
#define QV_RUNTIME_HARDWARE_X64         1 /**< `x64`, Intel, 64 bit */
#define QV_RUNTIME_HARDWARE_RPI2        2 /**< `rpi2`, Raspberry Pi 2 */
#define QV_RUNTIME_HARDWARE_RPI3        3 /**< `rpi3`, Raspberry Pi 3 */
#define QV_RUNTIME_HARDWARE_INNOVAPHONE 4 /**< `innovaphone`, an ARM appliance */
#define QV_RUNTIME_HARDWARE_ARMHF       5 /**< `armhf`, ARM, 32 bit, with floating-point registers */
#define QV_RUNTIME_HARDWARE_ARM64       6 /**< `arm64`, ARM, 64 bit */
#define QV_RUNTIME_HARDWARE_MIPS        7 /**< `mips`, MIPS, big-endian */

/** True for one of the kinds of hardware. */
#define QV_RUNTIME_HARDWARE_OK( hw ) ( ( hw ) >= QV_RUNTIME_HARDWARE_X32 && ( hw ) <= QV_RUNTIME_HARDWARE_MIPS )

#define QV_RUNTIME_VARIANT_RELEASE 0 /**< `release`, an optimised build */
#define QV_RUNTIME_VARIANT_DEBUG   1 /**< `debug`, a build for developers */

/** True for one of the variants. */
#define QV_RUNTIME_VARIANT_OK( var ) ( ( var ) >= QV_RUNTIME_VARIANT_RELEASE && ( var ) <= QV_RUNTIME_VARIANT_DEBUG )

/** @{ */
/** The operating system, the hardware and the variant that the library is built for. */
QV_API QV_INT qvRuntimeOs( void );
QV_API QV_INT qvRuntimeHardware( void );
QV_API QV_INT qvRuntimeVariant( void );
/** @} */

/** @{ */
/** The value of an enumerant's name or number; -1 for any other text. Null ends the process. */
QV_API QV_INT qvRuntimeOsFromString( QV_STRING *qvs );
QV_API QV_INT qvRuntimeHardwareFromString( QV_STRING *qvs );
QV_API QV_INT qvRuntimeVariantFromString( QV_STRING *qvs );
/** @} */

/** @{ */
/** The enumerant's name, as `QV_RUNTIME_OS_DEBIAN_10`: a new text. A value out of range ends the process, here and in
    all functions below. */
QV_API QV_STRING *qvRuntimeOsToString( QV_INT os );
QV_API QV_STRING *qvRuntimeHardwareToString( QV_INT hw );
QV_API QV_STRING *qvRuntimeVariantToString( QV_INT var );
/** @} */

/** @{ */
/** The value of an identifier, as `debian10`, in this very case; -1 for any other text. Null ends the process. */
QV_API QV_INT qvRuntimeOsFromIdentifier( QV_STRING *qvs );
QV_API QV_INT qvRuntimeHardwareFromIdentifier( QV_STRING *qvs );
QV_API QV_INT qvRuntimeVariantFromIdentifier( QV_STRING *qvs );
/** @} */

/** @{ */
/** The identifier, as `debian10`: a new text. */
QV_API QV_STRING *qvRuntimeOsToIdentifier( QV_INT os );
QV_API QV_STRING *qvRuntimeHardwareToIdentifier( QV_INT hw );
QV_API QV_STRING *qvRuntimeVariantToIdentifier( QV_INT var );
/** @} */

/** @{ */
/** The name for people, as `Debian 10`: a new text. */
QV_API QV_STRING *qvRuntimeOsFriendlyName( QV_INT os );
QV_API QV_STRING *qvRuntimeHardwareFriendlyName( QV_INT hw );
QV_API QV_STRING *qvRuntimeVariantFriendlyName( QV_INT var );
/** @} */

/** @{ */
/** What kind of system it is. Ubuntu counts as Debian, both count as Linux, and all but Windows as Unix. */
QV_API QV_BOOL qvRuntimeOsIsWindows( QV_INT os );
QV_API QV_BOOL qvRuntimeOsIsLinux( QV_INT os );
QV_API QV_BOOL qvRuntimeOsIsDebian( QV_INT os );
QV_API QV_BOOL qvRuntimeOsIsUnix( QV_INT os );
/** @} */

/** @{ */
/** What kind of hardware it is. */
QV_API QV_BOOL qvRuntimeHardwareIsIntel( QV_INT hw );
QV_API QV_BOOL qvRuntimeHardwareIsArm( QV_INT hw );
QV_API QV_BOOL qvRuntimeHardwareIsLittleEndian( QV_INT hw );
QV_API QV_BOOL qvRuntimeHardwareIsBigEndian( QV_INT hw );
/** @} */

/** True for the combinations that the product exists for. */
QV_API QV_BOOL qvRuntimeOsSupportsHardware( QV_INT os, QV_INT hw );

/** @{ */
/** What the operating system calls the hardware, as `amd64`: a new text, or null where it has no name for it. */
QV_API QV_STRING *qvRuntimeOsHardwarePlatformName( QV_INT os, QV_INT hw );
QV_API QV_BOOL    qvRuntimeOsHasHardwarePlatformName( QV_INT os, QV_INT hw );
/** @} */

/* Paths ---------------------------------------------------------------------------------------------------------- */

#define QV_RUNTIME_PATH_BIN          0 /**< modules: the folder `morvane` beside the library where there is one */
#define QV_RUNTIME_PATH_RES          1 /**< resources */
#define QV_RUNTIME_PATH_DATA         2 /**< data, the parent of those that follow */
#define QV_RUNTIME_PATH_DATA_STORAGE 3 /**< what the application keeps */
#define QV_RUNTIME_PATH_DATA_TRACE   4 /**< traces */
#define QV_RUNTIME_PATH_DATA_ABORT   5 /**< reports of broken contracts */
#define QV_RUNTIME_PATH_DATA_TEMP    6 /**< temporary files */

/** True for one of the paths. */
#define QV_RUNTIME_PATH_OK( path ) ( ( path ) >= QV_RUNTIME_PATH_BIN && ( path ) <= QV_RUNTIME_PATH_DATA_TEMP )

/** The value of an enumerant's name or number; -1 for any other text. Null ends the process. */
QV_API QV_INT qvRuntimePathFromString( QV_STRING *qvs );

/** The enumerant's name: a new text. A value out of range ends the process, here and below. */
QV_API QV_STRING *qvRuntimePathToString( QV_INT path );

/** @{ */
/** The path, which ends with a solidus: a new reference, or null if the run has no such path, and whether it
    has one. */
QV_API QV_STRING *qvRuntimePath( QV_INT path );
QV_API QV_BOOL    qvRuntimeHasPath( QV_INT path );
/** @} */

/* Modules -------------------------------------------------------------------------------------------------------- */

/** Loads a module by its name, the modules that it depends on before it, and then the extensions of all loaded modules
    that there are; true if it is loaded now, be it from before. The file is `libmorvane-<name>.so`, in the bin path or,
    with QV_RUNTIME_FLAG_IMPLICIT_MODULE_PATH, where the loader finds it. False, and what had been loaded for it stays
    loaded: the file is missing or is no module of that name, was built for another product or version, or its
    start-up function or one of its dependencies has failed. The last error (qv_error.h) tells which file, and why in
    the words of the system's loader where it was the one to refuse; its subject is the name of the module that failed,
    the module itself or one that it needs. With QV_RUNTIME_FLAG_MODULE_DEBUG a printed line says what failed. A module
    that cannot be loaded as an extension is left out.

    A name that qvModuleNameOk() refuses ends the process, as does a circle of dependencies. Loads and unloads of all
    threads take turns; what a module's start-up function calls must not load. */
QV_API QV_BOOL qvRuntimeTryLoadModule( QV_STRING *moduleName );

/** @{ */
/** Loads several in their order and stops at the first that fails; extensions follow if none has. The names are in a
    Vector of Strings, or in a text with one blank between them, which holds at least one. A length is in bytes; -1
    means that the text ends at its terminator, as a Wcstr always does. */
QV_API QV_BOOL qvRuntimeTryLoadModulesVector( QV_VECTOR *moduleNames );
QV_API QV_BOOL qvRuntimeTryLoadModules( QV_STRING *qvs );
QV_API QV_BOOL qvRuntimeTryLoadModulesCstr( const char *cstr, QV_INT length );
QV_API QV_BOOL qvRuntimeTryLoadModulesWcstr( const wchar_t *wcstr );
/** @} */

/** Stops all modules but the library, the last loaded first, each when the last object of its sorts is gone. An object
    that is kept for more than 60 seconds ends the process. In a run with snapshot flags it is reported every 10 seconds
    too, and the wait has no end if the standard input is a terminal. Stopping the library does this first. Must not be
    called by a module. */
QV_API void qvRuntimeUnloadAllModules( void );

/** The loaded modules in the order of loading, the library itself first: a new reference. */
QV_API QV_VECTOR *qvRuntimeModulesVector( void );

/** A loaded module by its name: a new reference, or null if it is not loaded. */
QV_API QV_MODULE *qvRuntimeModule( QV_STRING *moduleName );

/** @{ */
/** A new Vector with qvModuleSnapshotSorts() or qvModuleSnapshotObjects() of each loaded module, a Vector each, in the
    order of loading; null in a run without the object database. The modules are looked at one after the other. */
QV_API QV_VECTOR *qvRuntimeSnapshotSorts( void );
QV_API QV_VECTOR *qvRuntimeSnapshotObjects( void );
/** @} */

/* Leaks ----------------------------------------------------------------------------------------------------------- */

/** Called with a sort that has leaks, its name, which is static, how many there are, above 0, and what the caller of
    qvRuntimeLeakVisit() has passed. It may call everything. */
typedef void ( *QV_RUNTIME_LEAK_FUNC )( QV_SORT *sort, const char *sortName, QV_INT objects, void *context );

/** @{ */
/** What lives now of all sorts, those of modules and of the program included, but for what the library holds for itself:
    a program that has given up what it owns finds 0 here before it stops the library. How many objects; and, by sort,
    in the order of the names. Works in every run, whatever its flags, and after the stop, when it counts what has
    outlived the library. Objects that modules hold from their start on are counted until they are unloaded, those of
    earlier runs until they end. Any thread; while other threads create and release objects a count may include some that
    have ended meanwhile. The cost is that of qvSortObjects() for each sort that has had objects. */
QV_API QV_INT qvRuntimeLeakCount( void );
QV_API void   qvRuntimeLeakVisit( QV_RUNTIME_LEAK_FUNC func, void *context );
/** @} */

/** @{ */
/** The same as a new text, which is empty if nothing lives, and line by line to the print hook: each sort with its
    count, as `QV_STRING 2`. In a run with QV_RUNTIME_FLAG_OBJECT_DATABASE each object follows, with its count of
    references, the first 200 characters of its text and its log, which holds the stack of its creation in a run with
    QV_RUNTIME_FLAG_OBJECT_ORIGIN. Then no other thread may create or change objects meanwhile: their texts are taken,
    and an object is found before its fields are set. The cost grows with the objects. Only while the library runs. */
QV_API QV_STRING *qvRuntimeLeakReport( void );
QV_API void       qvRuntimeLeakPrint( void );
/** @} */

/* The computer --------------------------------------------------------------------------------------------------- */

/** @{ */
/** The name of the computer, its operating system and its processor, as texts for people: new references, or null where
    nothing is known, and whether something is. */
QV_API QV_STRING *qvRuntimeComputerName( void );
QV_API QV_STRING *qvRuntimeOperatingSystemInfo( void );
QV_API QV_STRING *qvRuntimeCpuInfo( void );
QV_API QV_BOOL    qvRuntimeHasComputerName( void );
QV_API QV_BOOL    qvRuntimeHasOperatingSystemInfo( void );
QV_API QV_BOOL    qvRuntimeHasCpuInfo( void );
/** @} */

/** All of the above, the versions of the loaded modules and when the library was started, as a new document. */
QV_API QV_STORE *qvRuntimeInfo( void );

#endif
