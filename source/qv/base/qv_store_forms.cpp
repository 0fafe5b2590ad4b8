#include "qv/base/qv_store.h"

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"

#include <stdarg.h>

namespace
{
using Address = qv::Ref< QV_STRING >;

QV_STRING *addressAt( QV_STORE *store, QV_INT index )
{
    return qvStoreAddressAt( store, index );
}

QV_STRING *addressAt( QV_STORE **store, QV_INT index )
{
    QV_CHECK( store );
    QV_CHECK( *store );

    return qvStoreAddressAt( *store, index );
}
} // namespace

// A form makes the address and calls the plain operation. A row has the result, the form, the plain operation, the
// parameters before the address and the arguments that are passed on for them. The rows of a setter, which gives
// nothing, end with the type of the value instead.

#define LIST( ... ) __VA_ARGS__

#define AT( Result, Form, plain, parameters, arguments )                                                               \
    Result Form( LIST parameters, QV_INT index )                                                                       \
    {                                                                                                                  \
        return plain( LIST arguments, Address( addressAt( store, index ) ) );                                          \
    }

#define TEXT( Result, Form, plain, parameters, arguments, Unit, create )                                               \
    Result Form( LIST parameters, const Unit *address, QV_INT length )                                                 \
    {                                                                                                                  \
        return plain( LIST arguments, Address( create( address, length ) ) );                                          \
    }

#define FORMAT( Result, Form, plain, parameters, arguments )                                                           \
    Result Form( LIST parameters, QV_STRING *format, ... )                                                             \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, format );                                                                                      \
        Address address( qvStringCreateFromFormatArgList( format, &list ) );                                           \
        va_end( list );                                                                                                \
        return plain( LIST arguments, address );                                                                       \
    }

#define FORMAT_TEXT( Result, Form, plain, parameters, arguments, Unit, create )                                        \
    Result Form( LIST parameters, const Unit *format, QV_INT length, ... )                                             \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, length );                                                                                      \
        Address address( create( format, length, &list ) );                                                            \
        va_end( list );                                                                                                \
        return plain( LIST arguments, address );                                                                       \
    }

#define SET_AT( Form, plain, Type )                                                                                    \
    void Form( QV_STORE **store, QV_INT index, Type value )                                                            \
    {                                                                                                                  \
        plain( store, Address( addressAt( store, index ) ), value );                                                   \
    }

#define SET_TEXT( Form, plain, Type, Unit, create )                                                                    \
    void Form( QV_STORE **store, const Unit *address, QV_INT length, Type value )                                      \
    {                                                                                                                  \
        plain( store, Address( create( address, length ) ), value );                                                   \
    }

#define SET_FORMAT( Form, plain, Type )                                                                                \
    void Form( QV_STORE **store, QV_STRING *format, Type value, ... )                                                  \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, value );                                                                                       \
        Address address( qvStringCreateFromFormatArgList( format, &list ) );                                           \
        va_end( list );                                                                                                \
        plain( store, address, value );                                                                                \
    }

#define SET_FORMAT_TEXT( Form, plain, Type, Unit, create )                                                             \
    void Form( QV_STORE **store, const Unit *format, QV_INT length, Type value, ... )                                  \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, value );                                                                                       \
        Address address( create( format, length, &list ) );                                                            \
        va_end( list );                                                                                                \
        plain( store, address, value );                                                                                \
    }

#define CSTR( Result, Form, plain, parameters, arguments )                                                             \
    TEXT( Result, Form, plain, parameters, arguments, char, qvStringCreateFromCstr )
#define WCSTR( Result, Form, plain, parameters, arguments )                                                            \
    TEXT( Result, Form, plain, parameters, arguments, wchar_t, qvStringCreateFromWcstr )
#define FORMAT_CSTR( Result, Form, plain, parameters, arguments )                                                      \
    FORMAT_TEXT( Result, Form, plain, parameters, arguments, char, qvStringCreateFromFormatCstrArgList )
#define FORMAT_WCSTR( Result, Form, plain, parameters, arguments )                                                     \
    FORMAT_TEXT( Result, Form, plain, parameters, arguments, wchar_t, qvStringCreateFromFormatWcstrArgList )

#define SET_CSTR( Form, plain, Type )  SET_TEXT( Form, plain, Type, char, qvStringCreateFromCstr )
#define SET_WCSTR( Form, plain, Type ) SET_TEXT( Form, plain, Type, wchar_t, qvStringCreateFromWcstr )
#define SET_FORMAT_CSTR( Form, plain, Type )                                                                           \
    SET_FORMAT_TEXT( Form, plain, Type, char, qvStringCreateFromFormatCstrArgList )
#define SET_FORMAT_WCSTR( Form, plain, Type )                                                                          \
    SET_FORMAT_TEXT( Form, plain, Type, wchar_t, qvStringCreateFromFormatWcstrArgList )

// clang-format off
CSTR( QV_BOOL, qvStoreHasAddressCstr, qvStoreHasAddress, ( QV_STORE *store ), ( store ) )
WCSTR( QV_BOOL, qvStoreHasAddressWcstr, qvStoreHasAddress, ( QV_STORE *store ), ( store ) )
FORMAT( QV_BOOL, qvStoreHasAddressFormat, qvStoreHasAddress, ( QV_STORE *store ), ( store ) )
FORMAT_CSTR( QV_BOOL, qvStoreHasAddressFormatCstr, qvStoreHasAddress, ( QV_STORE *store ), ( store ) )
FORMAT_WCSTR( QV_BOOL, qvStoreHasAddressFormatWcstr, qvStoreHasAddress, ( QV_STORE *store ), ( store ) )

AT( QV_STRING *, qvStoreValueAt, qvStoreValue, ( QV_STORE *store ), ( store ) )
CSTR( QV_STRING *, qvStoreValueCstr, qvStoreValue, ( QV_STORE *store ), ( store ) )
WCSTR( QV_STRING *, qvStoreValueWcstr, qvStoreValue, ( QV_STORE *store ), ( store ) )
FORMAT( QV_STRING *, qvStoreValueFormat, qvStoreValue, ( QV_STORE *store ), ( store ) )
FORMAT_CSTR( QV_STRING *, qvStoreValueFormatCstr, qvStoreValue, ( QV_STORE *store ), ( store ) )
FORMAT_WCSTR( QV_STRING *, qvStoreValueFormatWcstr, qvStoreValue, ( QV_STORE *store ), ( store ) )

AT( QV_BOOL, qvStoreHasValueAt, qvStoreHasValue, ( QV_STORE *store ), ( store ) )
CSTR( QV_BOOL, qvStoreHasValueCstr, qvStoreHasValue, ( QV_STORE *store ), ( store ) )
WCSTR( QV_BOOL, qvStoreHasValueWcstr, qvStoreHasValue, ( QV_STORE *store ), ( store ) )
FORMAT( QV_BOOL, qvStoreHasValueFormat, qvStoreHasValue, ( QV_STORE *store ), ( store ) )
FORMAT_CSTR( QV_BOOL, qvStoreHasValueFormatCstr, qvStoreHasValue, ( QV_STORE *store ), ( store ) )
FORMAT_WCSTR( QV_BOOL, qvStoreHasValueFormatWcstr, qvStoreHasValue, ( QV_STORE *store ), ( store ) )

SET_AT( qvStoreSetValueAt, qvStoreSetValue, QV_STRING * )
SET_CSTR( qvStoreSetValueCstr, qvStoreSetValue, QV_STRING * )
SET_WCSTR( qvStoreSetValueWcstr, qvStoreSetValue, QV_STRING * )
SET_FORMAT( qvStoreSetValueFormat, qvStoreSetValue, QV_STRING * )
SET_FORMAT_CSTR( qvStoreSetValueFormatCstr, qvStoreSetValue, QV_STRING * )
SET_FORMAT_WCSTR( qvStoreSetValueFormatWcstr, qvStoreSetValue, QV_STRING * )

AT( void, qvStoreDelValueAt, qvStoreDelValue, ( QV_STORE **store ), ( store ) )
CSTR( void, qvStoreDelValueCstr, qvStoreDelValue, ( QV_STORE **store ), ( store ) )
WCSTR( void, qvStoreDelValueWcstr, qvStoreDelValue, ( QV_STORE **store ), ( store ) )
FORMAT( void, qvStoreDelValueFormat, qvStoreDelValue, ( QV_STORE **store ), ( store ) )
FORMAT_CSTR( void, qvStoreDelValueFormatCstr, qvStoreDelValue, ( QV_STORE **store ), ( store ) )
FORMAT_WCSTR( void, qvStoreDelValueFormatWcstr, qvStoreDelValue, ( QV_STORE **store ), ( store ) )

AT( QV_BOOL, qvStoreValueBoolAt, qvStoreValueBool, ( QV_STORE *store, QV_BOOL *out ), ( store, out ) )
CSTR( QV_BOOL, qvStoreValueBoolCstr, qvStoreValueBool, ( QV_STORE *store, QV_BOOL *out ), ( store, out ) )
WCSTR( QV_BOOL, qvStoreValueBoolWcstr, qvStoreValueBool, ( QV_STORE *store, QV_BOOL *out ), ( store, out ) )
FORMAT( QV_BOOL, qvStoreValueBoolFormat, qvStoreValueBool, ( QV_STORE *store, QV_BOOL *out ), ( store, out ) )
FORMAT_CSTR( QV_BOOL, qvStoreValueBoolFormatCstr, qvStoreValueBool, ( QV_STORE *store, QV_BOOL *out ), ( store, out ) )
FORMAT_WCSTR(
    QV_BOOL, qvStoreValueBoolFormatWcstr, qvStoreValueBool, ( QV_STORE *store, QV_BOOL *out ), ( store, out ) )

AT( QV_BOOL, qvStoreHasValueBoolAt, qvStoreHasValueBool, ( QV_STORE *store ), ( store ) )
CSTR( QV_BOOL, qvStoreHasValueBoolCstr, qvStoreHasValueBool, ( QV_STORE *store ), ( store ) )
WCSTR( QV_BOOL, qvStoreHasValueBoolWcstr, qvStoreHasValueBool, ( QV_STORE *store ), ( store ) )
FORMAT( QV_BOOL, qvStoreHasValueBoolFormat, qvStoreHasValueBool, ( QV_STORE *store ), ( store ) )
FORMAT_CSTR( QV_BOOL, qvStoreHasValueBoolFormatCstr, qvStoreHasValueBool, ( QV_STORE *store ), ( store ) )
FORMAT_WCSTR( QV_BOOL, qvStoreHasValueBoolFormatWcstr, qvStoreHasValueBool, ( QV_STORE *store ), ( store ) )

SET_AT( qvStoreSetValueBoolAt, qvStoreSetValueBool, QV_BOOL )
SET_CSTR( qvStoreSetValueBoolCstr, qvStoreSetValueBool, QV_BOOL )
SET_WCSTR( qvStoreSetValueBoolWcstr, qvStoreSetValueBool, QV_BOOL )
SET_FORMAT( qvStoreSetValueBoolFormat, qvStoreSetValueBool, QV_BOOL )
SET_FORMAT_CSTR( qvStoreSetValueBoolFormatCstr, qvStoreSetValueBool, QV_BOOL )
SET_FORMAT_WCSTR( qvStoreSetValueBoolFormatWcstr, qvStoreSetValueBool, QV_BOOL )

AT( QV_BOOL, qvStoreValueIntAt, qvStoreValueInt, ( QV_STORE *store, QV_INT *out ), ( store, out ) )
CSTR( QV_BOOL, qvStoreValueIntCstr, qvStoreValueInt, ( QV_STORE *store, QV_INT *out ), ( store, out ) )
WCSTR( QV_BOOL, qvStoreValueIntWcstr, qvStoreValueInt, ( QV_STORE *store, QV_INT *out ), ( store, out ) )
FORMAT( QV_BOOL, qvStoreValueIntFormat, qvStoreValueInt, ( QV_STORE *store, QV_INT *out ), ( store, out ) )
FORMAT_CSTR( QV_BOOL, qvStoreValueIntFormatCstr, qvStoreValueInt, ( QV_STORE *store, QV_INT *out ), ( store, out ) )
FORMAT_WCSTR( QV_BOOL, qvStoreValueIntFormatWcstr, qvStoreValueInt, ( QV_STORE *store, QV_INT *out ), ( store, out ) )

AT( QV_BOOL, qvStoreHasValueIntAt, qvStoreHasValueInt, ( QV_STORE *store ), ( store ) )
CSTR( QV_BOOL, qvStoreHasValueIntCstr, qvStoreHasValueInt, ( QV_STORE *store ), ( store ) )
WCSTR( QV_BOOL, qvStoreHasValueIntWcstr, qvStoreHasValueInt, ( QV_STORE *store ), ( store ) )
FORMAT( QV_BOOL, qvStoreHasValueIntFormat, qvStoreHasValueInt, ( QV_STORE *store ), ( store ) )
FORMAT_CSTR( QV_BOOL, qvStoreHasValueIntFormatCstr, qvStoreHasValueInt, ( QV_STORE *store ), ( store ) )
FORMAT_WCSTR( QV_BOOL, qvStoreHasValueIntFormatWcstr, qvStoreHasValueInt, ( QV_STORE *store ), ( store ) )

SET_AT( qvStoreSetValueIntAt, qvStoreSetValueInt, QV_INT )
SET_CSTR( qvStoreSetValueIntCstr, qvStoreSetValueInt, QV_INT )
SET_WCSTR( qvStoreSetValueIntWcstr, qvStoreSetValueInt, QV_INT )
SET_FORMAT( qvStoreSetValueIntFormat, qvStoreSetValueInt, QV_INT )
SET_FORMAT_CSTR( qvStoreSetValueIntFormatCstr, qvStoreSetValueInt, QV_INT )
SET_FORMAT_WCSTR( qvStoreSetValueIntFormatWcstr, qvStoreSetValueInt, QV_INT )

AT( QV_BOOL, qvStoreValueRealAt, qvStoreValueReal, ( QV_STORE *store, QV_REAL *out ), ( store, out ) )
CSTR( QV_BOOL, qvStoreValueRealCstr, qvStoreValueReal, ( QV_STORE *store, QV_REAL *out ), ( store, out ) )
WCSTR( QV_BOOL, qvStoreValueRealWcstr, qvStoreValueReal, ( QV_STORE *store, QV_REAL *out ), ( store, out ) )
FORMAT( QV_BOOL, qvStoreValueRealFormat, qvStoreValueReal, ( QV_STORE *store, QV_REAL *out ), ( store, out ) )
FORMAT_CSTR( QV_BOOL, qvStoreValueRealFormatCstr, qvStoreValueReal, ( QV_STORE *store, QV_REAL *out ), ( store, out ) )
FORMAT_WCSTR(
    QV_BOOL, qvStoreValueRealFormatWcstr, qvStoreValueReal, ( QV_STORE *store, QV_REAL *out ), ( store, out ) )

AT( QV_BOOL, qvStoreHasValueRealAt, qvStoreHasValueReal, ( QV_STORE *store ), ( store ) )
CSTR( QV_BOOL, qvStoreHasValueRealCstr, qvStoreHasValueReal, ( QV_STORE *store ), ( store ) )
WCSTR( QV_BOOL, qvStoreHasValueRealWcstr, qvStoreHasValueReal, ( QV_STORE *store ), ( store ) )
FORMAT( QV_BOOL, qvStoreHasValueRealFormat, qvStoreHasValueReal, ( QV_STORE *store ), ( store ) )
FORMAT_CSTR( QV_BOOL, qvStoreHasValueRealFormatCstr, qvStoreHasValueReal, ( QV_STORE *store ), ( store ) )
FORMAT_WCSTR( QV_BOOL, qvStoreHasValueRealFormatWcstr, qvStoreHasValueReal, ( QV_STORE *store ), ( store ) )

SET_AT( qvStoreSetValueRealAt, qvStoreSetValueReal, QV_REAL )
SET_CSTR( qvStoreSetValueRealCstr, qvStoreSetValueReal, QV_REAL )
SET_WCSTR( qvStoreSetValueRealWcstr, qvStoreSetValueReal, QV_REAL )
SET_FORMAT( qvStoreSetValueRealFormat, qvStoreSetValueReal, QV_REAL )
SET_FORMAT_CSTR( qvStoreSetValueRealFormatCstr, qvStoreSetValueReal, QV_REAL )
SET_FORMAT_WCSTR( qvStoreSetValueRealFormatWcstr, qvStoreSetValueReal, QV_REAL )

AT( QV_STORE *, qvStoreStoreAt, qvStoreStore, ( QV_STORE *store ), ( store ) )
CSTR( QV_STORE *, qvStoreStoreCstr, qvStoreStore, ( QV_STORE *store ), ( store ) )
WCSTR( QV_STORE *, qvStoreStoreWcstr, qvStoreStore, ( QV_STORE *store ), ( store ) )
FORMAT( QV_STORE *, qvStoreStoreFormat, qvStoreStore, ( QV_STORE *store ), ( store ) )
FORMAT_CSTR( QV_STORE *, qvStoreStoreFormatCstr, qvStoreStore, ( QV_STORE *store ), ( store ) )
FORMAT_WCSTR( QV_STORE *, qvStoreStoreFormatWcstr, qvStoreStore, ( QV_STORE *store ), ( store ) )

AT( QV_BOOL, qvStoreHasStoreAt, qvStoreHasStore, ( QV_STORE *store ), ( store ) )
CSTR( QV_BOOL, qvStoreHasStoreCstr, qvStoreHasStore, ( QV_STORE *store ), ( store ) )
WCSTR( QV_BOOL, qvStoreHasStoreWcstr, qvStoreHasStore, ( QV_STORE *store ), ( store ) )
FORMAT( QV_BOOL, qvStoreHasStoreFormat, qvStoreHasStore, ( QV_STORE *store ), ( store ) )
FORMAT_CSTR( QV_BOOL, qvStoreHasStoreFormatCstr, qvStoreHasStore, ( QV_STORE *store ), ( store ) )
FORMAT_WCSTR( QV_BOOL, qvStoreHasStoreFormatWcstr, qvStoreHasStore, ( QV_STORE *store ), ( store ) )

SET_AT( qvStoreSetStoreAt, qvStoreSetStore, QV_STORE * )
SET_CSTR( qvStoreSetStoreCstr, qvStoreSetStore, QV_STORE * )
SET_WCSTR( qvStoreSetStoreWcstr, qvStoreSetStore, QV_STORE * )
SET_FORMAT( qvStoreSetStoreFormat, qvStoreSetStore, QV_STORE * )
SET_FORMAT_CSTR( qvStoreSetStoreFormatCstr, qvStoreSetStore, QV_STORE * )
SET_FORMAT_WCSTR( qvStoreSetStoreFormatWcstr, qvStoreSetStore, QV_STORE * )

AT( void, qvStoreDelStoreAt, qvStoreDelStore, ( QV_STORE **store ), ( store ) )
CSTR( void, qvStoreDelStoreCstr, qvStoreDelStore, ( QV_STORE **store ), ( store ) )
WCSTR( void, qvStoreDelStoreWcstr, qvStoreDelStore, ( QV_STORE **store ), ( store ) )
FORMAT( void, qvStoreDelStoreFormat, qvStoreDelStore, ( QV_STORE **store ), ( store ) )
FORMAT_CSTR( void, qvStoreDelStoreFormatCstr, qvStoreDelStore, ( QV_STORE **store ), ( store ) )
FORMAT_WCSTR( void, qvStoreDelStoreFormatWcstr, qvStoreDelStore, ( QV_STORE **store ), ( store ) )
// clang-format on

#undef LIST
#undef AT
#undef TEXT
#undef FORMAT
#undef FORMAT_TEXT
#undef CSTR
#undef WCSTR
#undef FORMAT_CSTR
#undef FORMAT_WCSTR
#undef SET_AT
#undef SET_TEXT
#undef SET_FORMAT
#undef SET_FORMAT_TEXT
#undef SET_CSTR
#undef SET_WCSTR
#undef SET_FORMAT_CSTR
#undef SET_FORMAT_WCSTR
