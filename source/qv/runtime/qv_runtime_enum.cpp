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

void qv::RuntimeEnum::startup()
{
    enum_           = qvEnumCreate();
    toIdentifier_   = qvDictCreate();
    fromIdentifier_ = qvDictCreate();

    for( size_t i = 0; i < names_.size(); i++ )
    {
        Ref< QV_BOXED_INT > value( qvBoxedIntCreate( static_cast< QV_INT >( i ) ) );
        Ref< QV_STRING >    identifier( qvStringCreateFromCstr( names_[i].identifier, -1 ) );

        enterEnumerant( &enum_, names_[i].enumerant, static_cast< QV_INT >( i ) );
        qvDictSetObjKey( &toIdentifier_, qvBoxedIntObj( value ), qvStringObj( identifier ) );
        qvDictSetObjKey( &fromIdentifier_, qvStringObj( identifier ), qvBoxedIntObj( value ) );
    }
}

void qv::RuntimeEnum::shutdown()
{
    drop( fromIdentifier_ );
    drop( toIdentifier_ );
    drop( enum_ );
}

QV_INT qv::RuntimeEnum::fromString( QV_STRING *qvs ) const
{
    return qvEnumParse( enum_, qvs );
}

QV_INT qv::RuntimeEnum::fromIdentifier( QV_STRING *qvs ) const
{
    Ref< QV_BOXED_INT > value( qvBoxedIntFrom( qvDictStringKey( fromIdentifier_, qvs ) ) );

    return value ? qvBoxedIntValue( value ) : -1;
}

QV_STRING *qv::RuntimeEnum::toString( QV_INT value ) const
{
    return qvEnumGenerate( enum_, value );
}

QV_STRING *qv::RuntimeEnum::toIdentifier( QV_INT value ) const
{
    return qvStringFrom( qvDictIntKey( toIdentifier_, value ) );
}

QV_STRING *qv::RuntimeEnum::friendlyName( QV_INT value ) const
{
    return qvStringCreateFromCstr( friendlyNameCstr( value ), -1 );
}
