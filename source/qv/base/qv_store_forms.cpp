// The forms of the operations on one entry: each makes a String of its address and calls the plain operation.

#include "qv/base/qv_store.h"

#include "qv/base/qv_format.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string_stack_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"

#include <stdarg.h>
#include <utility>

namespace
{
using qv::asString;
using qv::SoughtString;

using Address = qv::Ref< QV_STRING >;

Address addressAt( QV_STORE *store, QV_INT index )
{
    return Address( qvStoreAddressAt( store, index ) );
}

Address addressAt( QV_STORE **store, QV_INT index )
{
    QV_CHECK( store );
    QV_CHECK( *store );

    return Address( qvStoreAddressAt( *store, index ) );
}

Address formattedAddress( va_list *args, QV_STRING *format )
{
    return Address( qvStringCreateFromFormatArgList( format, args ) );
}

Address formattedAddress( va_list *args, const char *format, QV_INT length )
{
    return Address( qvStringCreateFromFormatCstrArgList( format, length, args ) );
}

Address formattedAddress( va_list *args, const wchar_t *format, QV_INT length )
{
    return Address( qvStringCreateFromFormatWcstrArgList( format, length, args ) );
}
} // namespace

/* Values of UTF-8 addresses ---------------------------------------------------------------------------------------- */

namespace
{
using Text = qv::Ref< QV_STRING >;

// Sets the value that `make` makes, after the String of the address. An address that has one already keeps its String,
// and needs none for the look-up. No value ends the process.
template< class Make >
void setValue( QV_STORE **store, const char *address, QV_INT length, const Make &make )
{
    if( SoughtString sought( address, length ); sought.isOnStack() )
        if( QV_INT idx = qv::valueInStore( store, sought ); idx >= 0 )
            if( Text value( make() ); value )
                return qv::replaceInStore( store, idx, value.give() );

    Address own = asString( address, length );
    qvStoreSetValue( store, own, Text( make() ) );
}
} // namespace

// The address that a format, in one of the forms of formattedAddress(), makes of the arguments after the parameter
// `last`. An expression in the function itself, since no other one can begin and end the list of its arguments.
#define FORMATTED( last, ... )                                                                                         \
    __extension__( {                                                                                                   \
        va_list args_;                                                                                                 \
        va_start( args_, last );                                                                                       \
        Address address_ = formattedAddress( &args_, __VA_ARGS__ );                                                    \
        va_end( args_ );                                                                                               \
        std::move( address_ );                                                                                         \
    } )

/* qvStoreHasAddress ------------------------------------------------------------------------------------------------ */

QV_BOOL qvStoreHasAddressCstr( QV_STORE *store, const char *address, QV_INT length )
{
    return qvStoreHasAddress( store, SoughtString( address, length ) );
}

QV_BOOL qvStoreHasAddressWcstr( QV_STORE *store, const wchar_t *address, QV_INT length )
{
    return qvStoreHasAddress( store, asString( address, length ) );
}

QV_BOOL qvStoreHasAddressFormat( QV_STORE *store, QV_STRING *format, ... )
{
    return qvStoreHasAddress( store, FORMATTED( format, format ) );
}

QV_BOOL qvStoreHasAddressFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... )
{
    return qvStoreHasAddress( store, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreHasAddressFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreHasAddress( store, FORMATTED( length, format, length ) );
}

/* qvStoreValue ----------------------------------------------------------------------------------------------------- */

QV_STRING *qvStoreValueAt( QV_STORE *store, QV_INT index )
{
    return qvStoreValue( store, addressAt( store, index ) );
}

QV_STRING *qvStoreValueCstr( QV_STORE *store, const char *address, QV_INT length )
{
    return qvStoreValue( store, SoughtString( address, length ) );
}

QV_STRING *qvStoreValueWcstr( QV_STORE *store, const wchar_t *address, QV_INT length )
{
    return qvStoreValue( store, asString( address, length ) );
}

QV_STRING *qvStoreValueFormat( QV_STORE *store, QV_STRING *format, ... )
{
    return qvStoreValue( store, FORMATTED( format, format ) );
}

QV_STRING *qvStoreValueFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... )
{
    return qvStoreValue( store, FORMATTED( length, format, length ) );
}

QV_STRING *qvStoreValueFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreValue( store, FORMATTED( length, format, length ) );
}

/* qvStoreHasValue -------------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreHasValueAt( QV_STORE *store, QV_INT index )
{
    return qvStoreHasValue( store, addressAt( store, index ) );
}

QV_BOOL qvStoreHasValueCstr( QV_STORE *store, const char *address, QV_INT length )
{
    return qvStoreHasValue( store, SoughtString( address, length ) );
}

QV_BOOL qvStoreHasValueWcstr( QV_STORE *store, const wchar_t *address, QV_INT length )
{
    return qvStoreHasValue( store, asString( address, length ) );
}

QV_BOOL qvStoreHasValueFormat( QV_STORE *store, QV_STRING *format, ... )
{
    return qvStoreHasValue( store, FORMATTED( format, format ) );
}

QV_BOOL qvStoreHasValueFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... )
{
    return qvStoreHasValue( store, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreHasValueFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreHasValue( store, FORMATTED( length, format, length ) );
}

/* qvStoreSetValue -------------------------------------------------------------------------------------------------- */

void qvStoreSetValueAt( QV_STORE **store, QV_INT index, QV_STRING *value )
{
    qvStoreSetValue( store, addressAt( store, index ), value );
}

void qvStoreSetValueCstr( QV_STORE **store, const char *address, QV_INT length, QV_STRING *value )
{
    setValue( store, address, length, [=] { return Text::share( value ).give(); } );
}

void qvStoreSetValueWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_STRING *value )
{
    qvStoreSetValue( store, asString( address, length ), value );
}

void qvStoreSetValueFormat( QV_STORE **store, QV_STRING *format, QV_STRING *value, ... )
{
    qvStoreSetValue( store, FORMATTED( value, format ), value );
}

void qvStoreSetValueFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_STRING *value, ... )
{
    qvStoreSetValue( store, FORMATTED( value, format, length ), value );
}

void qvStoreSetValueFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, QV_STRING *value, ... )
{
    qvStoreSetValue( store, FORMATTED( value, format, length ), value );
}

/* qvStoreDelValue -------------------------------------------------------------------------------------------------- */

void qvStoreDelValueAt( QV_STORE **store, QV_INT index )
{
    qvStoreDelValue( store, addressAt( store, index ) );
}

void qvStoreDelValueCstr( QV_STORE **store, const char *address, QV_INT length )
{
    qvStoreDelValue( store, asString( address, length ) );
}

void qvStoreDelValueWcstr( QV_STORE **store, const wchar_t *address, QV_INT length )
{
    qvStoreDelValue( store, asString( address, length ) );
}

void qvStoreDelValueFormat( QV_STORE **store, QV_STRING *format, ... )
{
    qvStoreDelValue( store, FORMATTED( format, format ) );
}

void qvStoreDelValueFormatCstr( QV_STORE **store, const char *format, QV_INT length, ... )
{
    qvStoreDelValue( store, FORMATTED( length, format, length ) );
}

void qvStoreDelValueFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, ... )
{
    qvStoreDelValue( store, FORMATTED( length, format, length ) );
}

/* qvStoreValueBool ------------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreValueBoolAt( QV_STORE *store, QV_BOOL *out, QV_INT index )
{
    return qvStoreValueBool( store, out, addressAt( store, index ) );
}

QV_BOOL qvStoreValueBoolCstr( QV_STORE *store, QV_BOOL *out, const char *address, QV_INT length )
{
    return qvStoreValueBool( store, out, SoughtString( address, length ) );
}

QV_BOOL qvStoreValueBoolWcstr( QV_STORE *store, QV_BOOL *out, const wchar_t *address, QV_INT length )
{
    return qvStoreValueBool( store, out, asString( address, length ) );
}

QV_BOOL qvStoreValueBoolFormat( QV_STORE *store, QV_BOOL *out, QV_STRING *format, ... )
{
    return qvStoreValueBool( store, out, FORMATTED( format, format ) );
}

QV_BOOL qvStoreValueBoolFormatCstr( QV_STORE *store, QV_BOOL *out, const char *format, QV_INT length, ... )
{
    return qvStoreValueBool( store, out, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreValueBoolFormatWcstr( QV_STORE *store, QV_BOOL *out, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreValueBool( store, out, FORMATTED( length, format, length ) );
}

/* qvStoreHasValueBool ---------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreHasValueBoolAt( QV_STORE *store, QV_INT index )
{
    return qvStoreHasValueBool( store, addressAt( store, index ) );
}

QV_BOOL qvStoreHasValueBoolCstr( QV_STORE *store, const char *address, QV_INT length )
{
    return qvStoreHasValueBool( store, SoughtString( address, length ) );
}

QV_BOOL qvStoreHasValueBoolWcstr( QV_STORE *store, const wchar_t *address, QV_INT length )
{
    return qvStoreHasValueBool( store, asString( address, length ) );
}

QV_BOOL qvStoreHasValueBoolFormat( QV_STORE *store, QV_STRING *format, ... )
{
    return qvStoreHasValueBool( store, FORMATTED( format, format ) );
}

QV_BOOL qvStoreHasValueBoolFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... )
{
    return qvStoreHasValueBool( store, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreHasValueBoolFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreHasValueBool( store, FORMATTED( length, format, length ) );
}

/* qvStoreSetValueBool ---------------------------------------------------------------------------------------------- */

void qvStoreSetValueBoolAt( QV_STORE **store, QV_INT index, QV_BOOL value )
{
    qvStoreSetValueBool( store, addressAt( store, index ), value );
}

void qvStoreSetValueBoolCstr( QV_STORE **store, const char *address, QV_INT length, QV_BOOL value )
{
    setValue( store, address, length, [=] { return qvFormatEncodeBool( value, 0, 0 ); } );
}

void qvStoreSetValueBoolWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_BOOL value )
{
    qvStoreSetValueBool( store, asString( address, length ), value );
}

void qvStoreSetValueBoolFormat( QV_STORE **store, QV_STRING *format, QV_BOOL value, ... )
{
    qvStoreSetValueBool( store, FORMATTED( value, format ), value );
}

void qvStoreSetValueBoolFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_BOOL value, ... )
{
    qvStoreSetValueBool( store, FORMATTED( value, format, length ), value );
}

void qvStoreSetValueBoolFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, QV_BOOL value, ... )
{
    qvStoreSetValueBool( store, FORMATTED( value, format, length ), value );
}

/* qvStoreValueInt -------------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreValueIntAt( QV_STORE *store, QV_INT *out, QV_INT index )
{
    return qvStoreValueInt( store, out, addressAt( store, index ) );
}

QV_BOOL qvStoreValueIntCstr( QV_STORE *store, QV_INT *out, const char *address, QV_INT length )
{
    return qvStoreValueInt( store, out, SoughtString( address, length ) );
}

QV_BOOL qvStoreValueIntWcstr( QV_STORE *store, QV_INT *out, const wchar_t *address, QV_INT length )
{
    return qvStoreValueInt( store, out, asString( address, length ) );
}

QV_BOOL qvStoreValueIntFormat( QV_STORE *store, QV_INT *out, QV_STRING *format, ... )
{
    return qvStoreValueInt( store, out, FORMATTED( format, format ) );
}

QV_BOOL qvStoreValueIntFormatCstr( QV_STORE *store, QV_INT *out, const char *format, QV_INT length, ... )
{
    return qvStoreValueInt( store, out, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreValueIntFormatWcstr( QV_STORE *store, QV_INT *out, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreValueInt( store, out, FORMATTED( length, format, length ) );
}

/* qvStoreHasValueInt ----------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreHasValueIntAt( QV_STORE *store, QV_INT index )
{
    return qvStoreHasValueInt( store, addressAt( store, index ) );
}

QV_BOOL qvStoreHasValueIntCstr( QV_STORE *store, const char *address, QV_INT length )
{
    return qvStoreHasValueInt( store, SoughtString( address, length ) );
}

QV_BOOL qvStoreHasValueIntWcstr( QV_STORE *store, const wchar_t *address, QV_INT length )
{
    return qvStoreHasValueInt( store, asString( address, length ) );
}

QV_BOOL qvStoreHasValueIntFormat( QV_STORE *store, QV_STRING *format, ... )
{
    return qvStoreHasValueInt( store, FORMATTED( format, format ) );
}

QV_BOOL qvStoreHasValueIntFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... )
{
    return qvStoreHasValueInt( store, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreHasValueIntFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreHasValueInt( store, FORMATTED( length, format, length ) );
}

/* qvStoreSetValueInt ----------------------------------------------------------------------------------------------- */

void qvStoreSetValueIntAt( QV_STORE **store, QV_INT index, QV_INT value )
{
    qvStoreSetValueInt( store, addressAt( store, index ), value );
}

void qvStoreSetValueIntCstr( QV_STORE **store, const char *address, QV_INT length, QV_INT value )
{
    setValue( store, address, length, [=] { return qvFormatEncodeInt( value, 10, 0, 0 ); } );
}

void qvStoreSetValueIntWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_INT value )
{
    qvStoreSetValueInt( store, asString( address, length ), value );
}

void qvStoreSetValueIntFormat( QV_STORE **store, QV_STRING *format, QV_INT value, ... )
{
    qvStoreSetValueInt( store, FORMATTED( value, format ), value );
}

void qvStoreSetValueIntFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_INT value, ... )
{
    qvStoreSetValueInt( store, FORMATTED( value, format, length ), value );
}

void qvStoreSetValueIntFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, QV_INT value, ... )
{
    qvStoreSetValueInt( store, FORMATTED( value, format, length ), value );
}

/* qvStoreValueReal ------------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreValueRealAt( QV_STORE *store, QV_REAL *out, QV_INT index )
{
    return qvStoreValueReal( store, out, addressAt( store, index ) );
}

QV_BOOL qvStoreValueRealCstr( QV_STORE *store, QV_REAL *out, const char *address, QV_INT length )
{
    return qvStoreValueReal( store, out, SoughtString( address, length ) );
}

QV_BOOL qvStoreValueRealWcstr( QV_STORE *store, QV_REAL *out, const wchar_t *address, QV_INT length )
{
    return qvStoreValueReal( store, out, asString( address, length ) );
}

QV_BOOL qvStoreValueRealFormat( QV_STORE *store, QV_REAL *out, QV_STRING *format, ... )
{
    return qvStoreValueReal( store, out, FORMATTED( format, format ) );
}

QV_BOOL qvStoreValueRealFormatCstr( QV_STORE *store, QV_REAL *out, const char *format, QV_INT length, ... )
{
    return qvStoreValueReal( store, out, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreValueRealFormatWcstr( QV_STORE *store, QV_REAL *out, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreValueReal( store, out, FORMATTED( length, format, length ) );
}

/* qvStoreHasValueReal ---------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreHasValueRealAt( QV_STORE *store, QV_INT index )
{
    return qvStoreHasValueReal( store, addressAt( store, index ) );
}

QV_BOOL qvStoreHasValueRealCstr( QV_STORE *store, const char *address, QV_INT length )
{
    return qvStoreHasValueReal( store, SoughtString( address, length ) );
}

QV_BOOL qvStoreHasValueRealWcstr( QV_STORE *store, const wchar_t *address, QV_INT length )
{
    return qvStoreHasValueReal( store, asString( address, length ) );
}

QV_BOOL qvStoreHasValueRealFormat( QV_STORE *store, QV_STRING *format, ... )
{
    return qvStoreHasValueReal( store, FORMATTED( format, format ) );
}

QV_BOOL qvStoreHasValueRealFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... )
{
    return qvStoreHasValueReal( store, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreHasValueRealFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreHasValueReal( store, FORMATTED( length, format, length ) );
}

/* qvStoreSetValueReal ---------------------------------------------------------------------------------------------- */

void qvStoreSetValueRealAt( QV_STORE **store, QV_INT index, QV_REAL value )
{
    qvStoreSetValueReal( store, addressAt( store, index ), value );
}

void qvStoreSetValueRealCstr( QV_STORE **store, const char *address, QV_INT length, QV_REAL value )
{
    setValue( store, address, length, [=] { return qvFormatEncodeReal( value, 10, 0, -1, 0 ); } );
}

void qvStoreSetValueRealWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_REAL value )
{
    qvStoreSetValueReal( store, asString( address, length ), value );
}

void qvStoreSetValueRealFormat( QV_STORE **store, QV_STRING *format, QV_REAL value, ... )
{
    qvStoreSetValueReal( store, FORMATTED( value, format ), value );
}

void qvStoreSetValueRealFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_REAL value, ... )
{
    qvStoreSetValueReal( store, FORMATTED( value, format, length ), value );
}

void qvStoreSetValueRealFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, QV_REAL value, ... )
{
    qvStoreSetValueReal( store, FORMATTED( value, format, length ), value );
}

/* qvStoreStore ----------------------------------------------------------------------------------------------------- */

QV_STORE *qvStoreStoreAt( QV_STORE *store, QV_INT index )
{
    return qvStoreStore( store, addressAt( store, index ) );
}

QV_STORE *qvStoreStoreCstr( QV_STORE *store, const char *address, QV_INT length )
{
    return qvStoreStore( store, SoughtString( address, length ) );
}

QV_STORE *qvStoreStoreWcstr( QV_STORE *store, const wchar_t *address, QV_INT length )
{
    return qvStoreStore( store, asString( address, length ) );
}

QV_STORE *qvStoreStoreFormat( QV_STORE *store, QV_STRING *format, ... )
{
    return qvStoreStore( store, FORMATTED( format, format ) );
}

QV_STORE *qvStoreStoreFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... )
{
    return qvStoreStore( store, FORMATTED( length, format, length ) );
}

QV_STORE *qvStoreStoreFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreStore( store, FORMATTED( length, format, length ) );
}

/* qvStoreHasStore -------------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreHasStoreAt( QV_STORE *store, QV_INT index )
{
    return qvStoreHasStore( store, addressAt( store, index ) );
}

QV_BOOL qvStoreHasStoreCstr( QV_STORE *store, const char *address, QV_INT length )
{
    return qvStoreHasStore( store, SoughtString( address, length ) );
}

QV_BOOL qvStoreHasStoreWcstr( QV_STORE *store, const wchar_t *address, QV_INT length )
{
    return qvStoreHasStore( store, asString( address, length ) );
}

QV_BOOL qvStoreHasStoreFormat( QV_STORE *store, QV_STRING *format, ... )
{
    return qvStoreHasStore( store, FORMATTED( format, format ) );
}

QV_BOOL qvStoreHasStoreFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... )
{
    return qvStoreHasStore( store, FORMATTED( length, format, length ) );
}

QV_BOOL qvStoreHasStoreFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... )
{
    return qvStoreHasStore( store, FORMATTED( length, format, length ) );
}

/* qvStoreSetStore -------------------------------------------------------------------------------------------------- */

void qvStoreSetStoreAt( QV_STORE **store, QV_INT index, QV_STORE *value )
{
    qvStoreSetStore( store, addressAt( store, index ), value );
}

void qvStoreSetStoreCstr( QV_STORE **store, const char *address, QV_INT length, QV_STORE *value )
{
    qvStoreSetStore( store, asString( address, length ), value );
}

void qvStoreSetStoreWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_STORE *value )
{
    qvStoreSetStore( store, asString( address, length ), value );
}

void qvStoreSetStoreFormat( QV_STORE **store, QV_STRING *format, QV_STORE *value, ... )
{
    qvStoreSetStore( store, FORMATTED( value, format ), value );
}

void qvStoreSetStoreFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_STORE *value, ... )
{
    qvStoreSetStore( store, FORMATTED( value, format, length ), value );
}

void qvStoreSetStoreFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, QV_STORE *value, ... )
{
    qvStoreSetStore( store, FORMATTED( value, format, length ), value );
}

/* qvStoreDelStore -------------------------------------------------------------------------------------------------- */

void qvStoreDelStoreAt( QV_STORE **store, QV_INT index )
{
    qvStoreDelStore( store, addressAt( store, index ) );
}

void qvStoreDelStoreCstr( QV_STORE **store, const char *address, QV_INT length )
{
    qvStoreDelStore( store, asString( address, length ) );
}

void qvStoreDelStoreWcstr( QV_STORE **store, const wchar_t *address, QV_INT length )
{
    qvStoreDelStore( store, asString( address, length ) );
}

void qvStoreDelStoreFormat( QV_STORE **store, QV_STRING *format, ... )
{
    qvStoreDelStore( store, FORMATTED( format, format ) );
}

void qvStoreDelStoreFormatCstr( QV_STORE **store, const char *format, QV_INT length, ... )
{
    qvStoreDelStore( store, FORMATTED( length, format, length ) );
}

void qvStoreDelStoreFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, ... )
{
    qvStoreDelStore( store, FORMATTED( length, format, length ) );
}

#undef FORMATTED
