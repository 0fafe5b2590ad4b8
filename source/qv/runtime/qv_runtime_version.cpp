#include "qv/runtime/qv_runtime_private.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_time.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

#include <stdlib.h>
#include <string.h>

namespace
{
char *applicationIdentifier   = nullptr;
char *applicationFriendlyName = nullptr;
char *applicationVersion      = nullptr;

char *keep( const char *text )
{
    if( !text )
        return nullptr;

    char *copy = strdup( text );
    QV_CHECK( copy );

    return copy;
}

void discard( char **text )
{
    free( *text );
    *text = nullptr;
}

QV_STRING *stringOrNull( const char *text )
{
    return text ? qvStringCreateFromCstr( text, -1 ) : nullptr;
}
} // namespace

void qv___RuntimeVersionStartup( const char *identifier, const char *friendlyName, const char *version )
{
    applicationIdentifier   = keep( identifier );
    applicationFriendlyName = keep( friendlyName );
    applicationVersion      = keep( version );
}

void qv___RuntimeVersionShutdown( void )
{
    discard( &applicationIdentifier );
    discard( &applicationFriendlyName );
    discard( &applicationVersion );
}

const char *qv___RuntimeVersionProductNameCstr( void )
{
    return qv___module_record.productName;
}

const char *qv___RuntimeVersionProductFriendlyNameCstr( void )
{
    return qv___module_record.productFriendlyName;
}

const char *qv___RuntimeVersionProductVendorNameCstr( void )
{
    return qv___module_record.productVendorName;
}

const char *qv___RuntimeVersionProductCopyrightCstr( void )
{
    return qv___module_record.productCopyright;
}

const char *qv___RuntimeVersionProductBuildTimeCstr( void )
{
    return qv___module_record.productBuildTime;
}

const char *qv___RuntimeVersionApplicationIdentifierCstr( void )
{
    return applicationIdentifier;
}

const char *qv___RuntimeVersionApplicationFriendlyNameCstr( void )
{
    return applicationFriendlyName;
}

const char *qv___RuntimeVersionApplicationVersionCstr( void )
{
    return applicationVersion;
}

QV_STRING *qvRuntimeVersionProductName( void )
{
    return qvStringCreateFromCstr( qv___module_record.productName, -1 );
}

QV_STRING *qvRuntimeVersionProductFriendlyName( void )
{
    return qvStringCreateFromCstr( qv___module_record.productFriendlyName, -1 );
}

QV_STRING *qvRuntimeVersionProductVendorName( void )
{
    return qvStringCreateFromCstr( qv___module_record.productVendorName, -1 );
}

QV_STRING *qvRuntimeVersionProductCopyright( void )
{
    return qvStringCreateFromCstr( qv___module_record.productCopyright, -1 );
}

QV_INT qvRuntimeVersionProductVersionMajor( void )
{
    return qv___module_record.productVersionMajor;
}

QV_INT qvRuntimeVersionProductVersionMinor( void )
{
    return qv___module_record.productVersionMinor;
}

QV_INT qvRuntimeVersionProductVersionRelease( void )
{
    return qv___module_record.productVersionRelease;
}

QV_STRING *qvRuntimeVersionProductVersion( void )
{
    return qvStringCreateFromFormatCstr(
        "%i.%i.%i", -1, qvRuntimeVersionProductVersionMajor(), qvRuntimeVersionProductVersionMinor(),
        qvRuntimeVersionProductVersionRelease() );
}

QV_TIME *qvRuntimeVersionProductBuildTime( void )
{
    qv::Ref< QV_STRING > text( qvStringCreateFromCstr( qv___module_record.productBuildTime, -1 ) );
    QV_TIME             *tm = qvTimeTryCreateFromString( text );
    QV_CHECK( tm );

    return tm;
}

QV_STRING *qvRuntimeVersionApplicationIdentifier( void )
{
    return stringOrNull( applicationIdentifier );
}

QV_STRING *qvRuntimeVersionApplicationFriendlyName( void )
{
    return stringOrNull( applicationFriendlyName );
}

QV_STRING *qvRuntimeVersionApplicationVersion( void )
{
    return stringOrNull( applicationVersion );
}

QV_BOOL qvRuntimeVersionApplicationHasIdentifier( void )
{
    return applicationIdentifier ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeVersionApplicationHasFriendlyName( void )
{
    return applicationFriendlyName ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvRuntimeVersionApplicationHasVersion( void )
{
    return applicationVersion ? QV_TRUE : QV_FALSE;
}
