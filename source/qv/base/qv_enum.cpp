#include "qv/base/qv_enum.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_name.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"

struct QV_ENUM : QV_OBJ
{
    QV_DICT *nameToValue; // Strings to boxed integers
    QV_DICT *valueToName; // boxed integers to Strings: of several names with one value, the last one
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

// Each value's name has that value.
[[maybe_unused]] bool holds( QV_ENUM *en )
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

void deleteName( QV_ENUM *en, QV_STRING *name )
{
    QV_INT value = qvEnumEnumerant( en, name );

    if( value < 0 )
        return;

    qvDictDelStringKey( &en->nameToValue, name );

    // The value may belong to a name that was entered later.
    qv::Ref< QV_STRING > named( qvEnumGenerate( en, value ) );

    if( named && qvStringEquals( named, name ) )
        qvDictDelIntKey( &en->valueToName, value );
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

    qv::Ref< QV_BOXED_INT > value( qvBoxedIntFrom( qvDictStringKey( en->nameToValue, name ) ) );
    return value ? qvBoxedIntValue( value ) : -1;
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

    // The Enum may hold the only reference to the name.
    qv::Ref< QV_STRING > alive = qv::Ref< QV_STRING >::share( name );

    qv::makePrivate( en, qvEnumCreateFrom );
    deleteName( *en, name );

    qv::Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( value ) );
    qvDictSetStringKey( &( *en )->nameToValue, name, qvBoxedIntObj( boxed ) );
    qvDictSetObjKey( &( *en )->valueToName, qvBoxedIntObj( boxed ), qvStringObj( name ) );
    QV_ASSERT( holds( *en ) );
}

void qvEnumDelEnumerant( QV_ENUM **en, QV_STRING *name )
{
    QV_CHECK( en );
    QV_CHECK( *en );
    QV_CHECK( name );
    QV_CHECK( qvNameUpperCaseOk( name, QV_TRUE ) );

    if( !qvEnumHasEnumerant( *en, name ) )
        return;

    // The Enum may hold the only reference to the name.
    qv::Ref< QV_STRING > alive = qv::Ref< QV_STRING >::share( name );

    qv::makePrivate( en, qvEnumCreateFrom );
    deleteName( *en, name );
    QV_ASSERT( holds( *en ) );
}

QV_STRING *qvEnumGenerate( QV_ENUM *en, QV_INT value )
{
    QV_CHECK( en );
    return qvStringFrom( qvDictIntKey( en->valueToName, value ) );
}

QV_INT qvEnumParse( QV_ENUM *en, QV_STRING *name )
{
    QV_CHECK( en );
    QV_CHECK( name );

    qv::Ref< QV_STRING > text = qv::Ref< QV_STRING >::share( name );
    qvStringTrim( text.at() );

    if( QV_INT value = qvEnumEnumerant( en, text ); value >= 0 )
        return value;

    QV_INT number, consumed;

    if( qvStringScanInt( text, 0, -1, -1, &number, &consumed ) && consumed == qvStringLength( text )
        && qvDictHasIntKey( en->valueToName, number ) )
        return number;

    return -1;
}

/* The forms with text from outside ------------------------------------------------------------------------------- */

namespace
{
qv::Ref< QV_STRING > stringOf( const char *cstr, QV_INT length )
{
    return qv::Ref< QV_STRING >( qvStringCreateFromCstr( cstr, length ) );
}

qv::Ref< QV_STRING > stringOf( const wchar_t *wcstr, QV_INT length )
{
    return qv::Ref< QV_STRING >( qvStringCreateFromWcstr( wcstr, length ) );
}
} // namespace

QV_INT qvEnumEnumerantCstr( QV_ENUM *en, const char *cstr, QV_INT length )
{
    return qvEnumEnumerant( en, stringOf( cstr, length ) );
}

QV_BOOL qvEnumHasEnumerantCstr( QV_ENUM *en, const char *cstr, QV_INT length )
{
    return qvEnumHasEnumerant( en, stringOf( cstr, length ) );
}

void qvEnumSetEnumerantCstr( QV_ENUM **en, const char *cstr, QV_INT length, QV_INT value )
{
    qvEnumSetEnumerant( en, stringOf( cstr, length ), value );
}

void qvEnumDelEnumerantCstr( QV_ENUM **en, const char *cstr, QV_INT length )
{
    qvEnumDelEnumerant( en, stringOf( cstr, length ) );
}

QV_INT qvEnumEnumerantWcstr( QV_ENUM *en, const wchar_t *wcstr, QV_INT length )
{
    return qvEnumEnumerant( en, stringOf( wcstr, length ) );
}

QV_BOOL qvEnumHasEnumerantWcstr( QV_ENUM *en, const wchar_t *wcstr, QV_INT length )
{
    return qvEnumHasEnumerant( en, stringOf( wcstr, length ) );
}

void qvEnumSetEnumerantWcstr( QV_ENUM **en, const wchar_t *wcstr, QV_INT length, QV_INT value )
{
    qvEnumSetEnumerant( en, stringOf( wcstr, length ), value );
}

void qvEnumDelEnumerantWcstr( QV_ENUM **en, const wchar_t *wcstr, QV_INT length )
{
    qvEnumDelEnumerant( en, stringOf( wcstr, length ) );
}
