/** @file
    Version of a module: two numbers, each with an insert, which numbers what was released between two of them.

        QV_MODULE_VERSION *ver = qvModuleVersionTryCreateFromCstr( "4#19.0", -1 );
        qvModuleVersionCompatibility( ver );        // 4019
        qvModuleVersionRelease( ver );              // gives the reference up

    The text is `<major>[#<majorInsert>].<minor>[#<minorInsert>]`; an insert of 0 is not written. Versions are ordered
    by the four numbers in this order. They never change, so that any thread may read them. Null ends the process. */

#ifndef QV_MODULE_VERSION_H
#define QV_MODULE_VERSION_H

#include "qv/sys/qv_types.h"

QV_FAMILY( ModuleVersion, QV_MODULE_VERSION )

/** A new version, owned by the caller. `major` and `minor` are at least 0, the inserts 0 to 999. A number outside its
    range, and one for which `number * 1000 + insert` overflows, end the process. */
QV_API QV_MODULE_VERSION *qvModuleVersionCreate( QV_INT major, QV_INT majorInsert, QV_INT minor, QV_INT minorInsert );

/** @{ */
/** A new version from its text, owned by the caller; null if the text is not that of a version. A Cstr is UTF-8 and its
    length is in bytes; -1 means that it ends at its terminator, as a Wcstr always does. */
QV_API QV_MODULE_VERSION *qvModuleVersionTryCreateFromString( QV_STRING *qvs );
QV_API QV_MODULE_VERSION *qvModuleVersionTryCreateFromCstr( const char *cstr, QV_INT length );
QV_API QV_MODULE_VERSION *qvModuleVersionTryCreateFromWcstr( const wchar_t *wcstr );
/** @} */

/** @{ */
/** The four numbers. */
QV_API QV_INT qvModuleVersionMajor( QV_MODULE_VERSION *ver );
QV_API QV_INT qvModuleVersionMajorInsert( QV_MODULE_VERSION *ver );
QV_API QV_INT qvModuleVersionMinor( QV_MODULE_VERSION *ver );
QV_API QV_INT qvModuleVersionMinorInsert( QV_MODULE_VERSION *ver );
/** @} */

/** One number for the interface: versions of one compatibility can stand for each other. `major * 1000 +
    majorInsert`. */
QV_API QV_INT qvModuleVersionCompatibility( QV_MODULE_VERSION *ver );

#endif
