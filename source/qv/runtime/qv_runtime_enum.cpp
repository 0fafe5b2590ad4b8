#include "qv/runtime/qv_runtime_enum_private.h"

#include "qv/base/qv_enum_private.h"
#include "qv/base/qv_string.h"

QV_INT qv::RuntimeEnum::fromString( QV_STRING *qvs ) const
{
    return parseConstant( qvs, count(), [this]( QV_INT value ) { return names( value ).enumerant; } );
}

QV_INT qv::RuntimeEnum::fromIdentifier( QV_STRING *qvs ) const
{
    return findConstant( qvs, count(), [this]( QV_INT value ) { return names( value ).identifier; } );
}

QV_STRING *qv::RuntimeEnum::toString( QV_INT value ) const
{
    return qvStringCreateFromAscii( names( value ).enumerant, -1 );
}

QV_STRING *qv::RuntimeEnum::toIdentifier( QV_INT value ) const
{
    return qvStringCreateFromAscii( names( value ).identifier, -1 );
}

QV_STRING *qv::RuntimeEnum::friendlyName( QV_INT value ) const
{
    return qvStringCreateFromAscii( friendlyNameCstr( value ), -1 );
}
