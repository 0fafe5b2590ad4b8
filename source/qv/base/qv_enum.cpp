#include "qv/base/qv_enum.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_name.h"
#include "qv/base/qv_named_values_private.h"
#include "qv/base/qv_scan_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"

struct QV_ENUM : QV_OBJ
{
    QV_DICT *nameToValue; // Strings to boxed integers
    QV_DICT *valueToName; // boxed integers to Strings: of several names with one value, the one entered last

    QV_STRING *nameOf( QV_INT value )
    {
        return qvStringFrom( qvDictIntKey( valueToName, value ) );
    }

    void setNameOf( QV_BOXED_INT *value, QV_STRING *name )
    {
        qvDictSetObjKey( &valueToName, qvBoxedIntObj( value ), qvStringObj( name ) );
    }

    void clearNameOf( QV_INT value )
    {
        qvDictDelIntKey( &valueToName, value );
    }
};

namespace
{
void freeEnum( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_ENUM *en = qvEnumFrom( thisObj );
    qv::drop( en->nameToValue );
    qv::drop( en->valueToName );
}

// Whether each value's name has that value.
[[maybe_unused]] bool isSoundEnum( QV_ENUM *en )
{
    bool all = true;

    for( QV_INT i = 0; i < qvDictLength( en->valueToName ) && all; i++ )
    {
        qv::Ref< QV_BOXED_INT > value( qvBoxedIntFrom( qvDictKeyAt( en->valueToName, i ) ) );
        qv::Ref< QV_STRING >    name( qvStringFrom( qvDictValueAt( en->valueToName, i ) ) );
        all = qvEnumEnumerant( en, name ) == qvBoxedIntValue( value );
    }

    return all;
}
} // namespace

QV___FAMILY( Enum, QV_ENUM, freeEnum, nullptr, nullptr )

QV_ENUM *qvEnumCreate( void )
{
    QV_ENUM *en     = qv::create< QV_ENUM >( qvEnumSort() );
    en->nameToValue = qvDictCreate();
    en->valueToName = qvDictCreate();

    return en;
}

QV_ENUM *qvEnumCreateFrom( QV_ENUM *source )
{
    QV_CHECK( source );

    QV_ENUM *en     = qv::create< QV_ENUM >( qvEnumSort() );
    en->nameToValue = qv::retain( source->nameToValue );
    en->valueToName = qv::retain( source->valueToName );

    return en;
}

QV_VECTOR *qvEnumEnumerantsVector( QV_ENUM *en )
{
    QV_CHECK( en );
    return qvDictKeysVector( en->nameToValue );
}

QV_INT qvEnumEnumerant( QV_ENUM *en, QV_STRING *name )
{
    QV_CHECK( en );
    QV_CHECK( name );

    return qv::valueOfName( en, name, -1 );
}

QV_BOOL qvEnumHasEnumerant( QV_ENUM *en, QV_STRING *name )
{
    QV_CHECK( en );
    QV_CHECK( name );

    return qvDictHasStringKey( en->nameToValue, name );
}

void qvEnumSetEnumerant( QV_ENUM **en, QV_STRING *name, QV_INT value )
{
    QV_CHECK( en );
    QV_CHECK( *en );
    QV_CHECK( name );
    QV_CHECK( qvNameUpperCaseOk( name, QV_TRUE ) );
    QV_CHECK( value >= 0 );

    qv::enterName( en, qvEnumCreateFrom, name, value );
    QV_ASSERT( isSoundEnum( *en ) );
}

void qvEnumDelEnumerant( QV_ENUM **en, QV_STRING *name )
{
    QV_CHECK( en );
    QV_CHECK( *en );
    QV_CHECK( name );
    QV_CHECK( qvNameUpperCaseOk( name, QV_TRUE ) );

    qv::removeName( en, qvEnumCreateFrom, name );
    QV_ASSERT( isSoundEnum( *en ) );
}

QV_STRING *qvEnumGenerate( QV_ENUM *en, QV_INT value )
{
    QV_CHECK( en );
    return en->nameOf( value );
}

QV_INT qvEnumParse( QV_ENUM *en, QV_STRING *name )
{
    QV_CHECK( en );
    QV_CHECK( name );

    qv::Ref< QV_STRING > text = qv::Ref< QV_STRING >::share( name );
    qvStringTrim( text.at() );

    if( QV_INT value = qvEnumEnumerant( en, text ); value >= 0 )
        return value;

    QV_INT number;

    if( qv::scansAsInt( text, -1, &number ) && qvDictHasIntKey( en->valueToName, number ) )
        return number;

    return -1;
}

/* The forms with text from outside ------------------------------------------------------------------------------- */

QV_INT qvEnumEnumerantCstr( QV_ENUM *en, const char *cstr, QV_INT length )
{
    return qvEnumEnumerant( en, qv::asString( cstr, length ) );
}

QV_BOOL qvEnumHasEnumerantCstr( QV_ENUM *en, const char *cstr, QV_INT length )
{
    return qvEnumHasEnumerant( en, qv::asString( cstr, length ) );
}

void qvEnumSetEnumerantCstr( QV_ENUM **en, const char *cstr, QV_INT length, QV_INT value )
{
    qvEnumSetEnumerant( en, qv::asString( cstr, length ), value );
}

void qvEnumDelEnumerantCstr( QV_ENUM **en, const char *cstr, QV_INT length )
{
    qvEnumDelEnumerant( en, qv::asString( cstr, length ) );
}

QV_INT qvEnumEnumerantWcstr( QV_ENUM *en, const wchar_t *wcstr, QV_INT length )
{
    return qvEnumEnumerant( en, qv::asString( wcstr, length ) );
}

QV_BOOL qvEnumHasEnumerantWcstr( QV_ENUM *en, const wchar_t *wcstr, QV_INT length )
{
    return qvEnumHasEnumerant( en, qv::asString( wcstr, length ) );
}

void qvEnumSetEnumerantWcstr( QV_ENUM **en, const wchar_t *wcstr, QV_INT length, QV_INT value )
{
    qvEnumSetEnumerant( en, qv::asString( wcstr, length ), value );
}

void qvEnumDelEnumerantWcstr( QV_ENUM **en, const wchar_t *wcstr, QV_INT length )
{
    qvEnumDelEnumerant( en, qv::asString( wcstr, length ) );
}
