#include "qv/runtime/qv_module_version.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_order_private.h"

struct QV_MODULE_VERSION : QV_OBJ
{
    QV_INT major;
    QV_INT majorInsert; // 0 to 999
    QV_INT minor;
    QV_INT minorInsert; // 0 to 999
};

namespace
{
const QV_INT BASE = 10;

bool numberFits( QV_INT number, QV_INT insert )
{
    return number >= 0 && insert >= 0 && insert <= 999 && QV_INT_MUL_OK( number, 1000 )
           && QV_INT_ADD_OK( number * 1000, insert );
}

bool scanWhole( QV_STRING *qvs, QV_INT *value )
{
    QV_INT consumed;
    return qvStringScanInt( qvs, 0, -1, BASE, value, &consumed ) && consumed == qvStringLength( qvs );
}

qv::Ref< QV_STRING > stringAt( QV_VECTOR *vec, QV_INT idx )
{
    return qv::Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( vec, idx ) ) );
}

// Reads `<number>[#<insert>]`; false if it is none.
bool scanNumber( QV_STRING *qvs, QV_INT *number, QV_INT *insert )
{
    qv::Ref< QV_VECTOR > parts( qvStringSplitChar( qvs, U'#', 2 ) );
    *insert = 0;

    return scanWhole( stringAt( parts, 0 ), number )
           && ( qvVectorLength( parts ) == 1 || scanWhole( stringAt( parts, 1 ), insert ) )
           && numberFits( *number, *insert );
}

void appendNumber( QV_STRING **qvs, const char *format, QV_INT number, QV_INT insert )
{
    qvStringAppendFormatCstr( qvs, format, -1, number );

    if( insert )
        qvStringAppendFormatCstr( qvs, "#%i", -1, insert );
}

QV_INT compareModuleVersions( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_MODULE_VERSION *a = qvModuleVersionFrom( thisObj );
    QV_MODULE_VERSION *b = qvModuleVersionFrom( thatObj );

    if( QV_INT result = qv::order( a->major, b->major ) )
        return result;

    if( QV_INT result = qv::order( a->majorInsert, b->majorInsert ) )
        return result;

    if( QV_INT result = qv::order( a->minor, b->minor ) )
        return result;

    return qv::order( a->minorInsert, b->minorInsert );
}

QV_STRING *moduleVersionToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_MODULE_VERSION   *ver = qvModuleVersionFrom( thisObj );
    qv::Ref< QV_STRING > result( qvStringCreate() );
    appendNumber( result.at(), "%i", ver->major, ver->majorInsert );
    appendNumber( result.at(), ".%i", ver->minor, ver->minorInsert );

    return result.give();
}
} // namespace

QV___FAMILY( ModuleVersion, QV_MODULE_VERSION, nullptr, compareModuleVersions, moduleVersionToString )

QV_MODULE_VERSION *qvModuleVersionCreate( QV_INT major, QV_INT majorInsert, QV_INT minor, QV_INT minorInsert )
{
    QV_CHECK( major >= 0 );
    QV_CHECK( majorInsert >= 0 && majorInsert <= 999 );
    QV_CHECK( minor >= 0 );
    QV_CHECK( minorInsert >= 0 && minorInsert <= 999 );
    QV_CHECK( QV_INT_MUL_OK( major, 1000 ) );
    QV_CHECK( QV_INT_ADD_OK( major * 1000, majorInsert ) );
    QV_CHECK( QV_INT_MUL_OK( minor, 1000 ) );
    QV_CHECK( QV_INT_ADD_OK( minor * 1000, minorInsert ) );

    QV_MODULE_VERSION *ver = qv::create< QV_MODULE_VERSION >( qvModuleVersionSort() );
    ver->major             = major;
    ver->majorInsert       = majorInsert;
    ver->minor             = minor;
    ver->minorInsert       = minorInsert;

    return ver;
}

QV_MODULE_VERSION *qvModuleVersionTryCreateFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );

    qv::Ref< QV_VECTOR > pieces( qvStringSplitChar( qvs, U'.', 2 ) );
    QV_INT               major, majorInsert, minor, minorInsert;

    if( qvVectorLength( pieces ) != 2 || !scanNumber( stringAt( pieces, 0 ), &major, &majorInsert )
        || !scanNumber( stringAt( pieces, 1 ), &minor, &minorInsert ) )
        return nullptr;

    return qvModuleVersionCreate( major, majorInsert, minor, minorInsert );
}

QV_MODULE_VERSION *qvModuleVersionTryCreateFromCstr( const char *cstr, QV_INT length )
{
    return qvModuleVersionTryCreateFromString( qv::Ref< QV_STRING >( qvStringCreateFromCstr( cstr, length ) ) );
}

QV_MODULE_VERSION *qvModuleVersionTryCreateFromWcstr( const wchar_t *wcstr )
{
    return qvModuleVersionTryCreateFromString( qv::Ref< QV_STRING >( qvStringCreateFromWcstr( wcstr, -1 ) ) );
}

QV_INT qvModuleVersionMajor( QV_MODULE_VERSION *ver )
{
    QV_CHECK( ver );
    return ver->major;
}

QV_INT qvModuleVersionMajorInsert( QV_MODULE_VERSION *ver )
{
    QV_CHECK( ver );
    return ver->majorInsert;
}

QV_INT qvModuleVersionMinor( QV_MODULE_VERSION *ver )
{
    QV_CHECK( ver );
    return ver->minor;
}

QV_INT qvModuleVersionMinorInsert( QV_MODULE_VERSION *ver )
{
    QV_CHECK( ver );
    return ver->minorInsert;
}

QV_INT qvModuleVersionCompatibility( QV_MODULE_VERSION *ver )
{
    QV_CHECK( ver );
    return ver->major * 1000 + ver->majorInsert;
}
