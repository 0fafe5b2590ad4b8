#include "qv/runtime/qv_runtime_enum_private.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_enum.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"

void qv::enterEnumerant( QV_ENUM **en, const char *enumerant, QV_INT value )
{
    Ref< QV_STRING > name( qvStringCreateFromCstr( enumerant, -1 ) );

    QV_CHECK( !qvEnumHasEnumerant( *en, name ) );
    qvEnumSetEnumerant( en, name, value );
}

void qv::enterNames(
    std::span< const RuntimeNames > names, QV_ENUM **en, QV_DICT **toIdentifier, QV_DICT **fromIdentifier )
{
    *en             = qvEnumCreate();
    *toIdentifier   = qvDictCreate();
    *fromIdentifier = qvDictCreate();

    for( size_t i = 0; i < names.size(); i++ )
    {
        Ref< QV_BOXED_INT > value( qvBoxedIntCreate( static_cast< QV_INT >( i ) ) );
        Ref< QV_STRING >    identifier( qvStringCreateFromCstr( names[i].identifier, -1 ) );

        enterEnumerant( en, names[i].enumerant, static_cast< QV_INT >( i ) );
        qvDictSetObjKey( toIdentifier, qvBoxedIntObj( value ), qvStringObj( identifier ) );
        qvDictSetObjKey( fromIdentifier, qvStringObj( identifier ), qvBoxedIntObj( value ) );
    }
}

QV_INT qv::valueOfIdentifier( QV_DICT *fromIdentifier, QV_STRING *qvs )
{
    Ref< QV_BOXED_INT > value( qvBoxedIntFrom( qvDictStringKey( fromIdentifier, qvs ) ) );

    return value ? qvBoxedIntValue( value ) : -1;
}

QV_STRING *qv::identifierOfValue( QV_DICT *toIdentifier, QV_INT value )
{
    return qvStringFrom( qvDictIntKey( toIdentifier, value ) );
}
