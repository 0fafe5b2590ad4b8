#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_ref.h"

// The forms of insertion at the ends, and of values and texts anywhere.

// What follows the first parameters of a form: none or more, given in brackets.
#define LIST( ... ) __VA_OPT__(, ) __VA_ARGS__

// A row is a form at the start and at the end: how it inserts, the two names, the other parameters and what goes on to
// the insertion.
#define AT_ENDS( insert, prepend, append, PARAMETERS, ... )                                                            \
    void prepend( QV_VECTOR **vec LIST PARAMETERS )                                                                    \
    {                                                                                                                  \
        insert( vec, 0, __VA_ARGS__ );                                                                                 \
    }                                                                                                                  \
                                                                                                                       \
    void append( QV_VECTOR **vec LIST PARAMETERS )                                                                     \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
        insert( vec, ( *vec )->length, __VA_ARGS__ );                                                                  \
    }

// clang-format off
AT_ENDS( qvVectorInsert, qvVectorPrepend, qvVectorAppend, ( QV_VECTOR *src ), src )
AT_ENDS(
    qvVectorInsertLeading, qvVectorPrependLeading, qvVectorAppendLeading,
    ( QV_VECTOR *src, QV_INT count ), src, count )
AT_ENDS(
    qvVectorInsertTrailing, qvVectorPrependTrailing, qvVectorAppendTrailing,
    ( QV_VECTOR *src, QV_INT count ), src, count )
AT_ENDS(
    qvVectorInsertInner, qvVectorPrependInner, qvVectorAppendInner,
    ( QV_VECTOR *src, QV_INT offset, QV_INT count ), src, offset, count )
AT_ENDS(
    qvVectorInsertOuter, qvVectorPrependOuter, qvVectorAppendOuter,
    ( QV_VECTOR *src, QV_INT offset, QV_INT count ), src, offset, count )
AT_ENDS(
    qvVectorInsertObjs, qvVectorPrependObjs, qvVectorAppendObjs,
    ( QV_OBJ *const *objs, QV_INT count ), objs, count )
// clang-format on

#undef AT_ENDS

// A row is a kind of value: the four names, its parameters, and the object of them, which the Vector takes over.
#define FORMS( insertForm, prependForm, appendForm, setForm, PARAMETERS, ... )                                         \
    void insertForm( QV_VECTOR **vec, QV_INT idx LIST PARAMETERS )                                                     \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
        qv::insertOwned( vec, idx, qv::obj( __VA_ARGS__ ) );                                                           \
    }                                                                                                                  \
                                                                                                                       \
    void prependForm( QV_VECTOR **vec LIST PARAMETERS )                                                                \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
        qv::prependOwned( vec, qv::obj( __VA_ARGS__ ) );                                                               \
    }                                                                                                                  \
                                                                                                                       \
    void appendForm( QV_VECTOR **vec LIST PARAMETERS )                                                                 \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
        qv::appendOwned( vec, qv::obj( __VA_ARGS__ ) );                                                                \
    }                                                                                                                  \
                                                                                                                       \
    void setForm( QV_VECTOR **vec, QV_INT idx LIST PARAMETERS )                                                        \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
        qv::setOwned( vec, idx, qv::obj( __VA_ARGS__ ) );                                                              \
    }

namespace
{
QV_STRING *held( QV_STRING *qvs )
{
    QV_CHECK_AS( qvs, "obj" );
    return qv::retain( qvs );
}

QV_OBJ *given( QV_OBJ *obj )
{
    QV_CHECK( obj );
    return obj;
}
} // namespace

// clang-format off
FORMS(
    qvVectorInsertObjUse, qvVectorPrependObjUse, qvVectorAppendObjUse, qvVectorSetObjUseAt, ( QV_OBJ *obj ),
    given( obj ) )
FORMS( qvVectorInsertNull, qvVectorPrependNull, qvVectorAppendNull, qvVectorSetNullAt, (), qvBoxedNullCreate() )
FORMS(
    qvVectorInsertBool, qvVectorPrependBool, qvVectorAppendBool, qvVectorSetBoolAt, ( QV_BOOL value ),
    qvBoxedBoolCreate( value ) )
FORMS(
    qvVectorInsertInt, qvVectorPrependInt, qvVectorAppendInt, qvVectorSetIntAt, ( QV_INT value ),
    qvBoxedIntCreate( value ) )
FORMS(
    qvVectorInsertReal, qvVectorPrependReal, qvVectorAppendReal, qvVectorSetRealAt, ( QV_REAL value ),
    qvBoxedRealCreate( value ) )
FORMS(
    qvVectorInsertString, qvVectorPrependString, qvVectorAppendString, qvVectorSetStringAt, ( QV_STRING *qvs ),
    held( qvs ) )
FORMS(
    qvVectorInsertStringCstr, qvVectorPrependStringCstr, qvVectorAppendStringCstr, qvVectorSetStringCstrAt,
    ( const char *text, QV_INT length ), qvStringCreateFromCstr( text, length ) )
FORMS(
    qvVectorInsertStringWcstr, qvVectorPrependStringWcstr, qvVectorAppendStringWcstr, qvVectorSetStringWcstrAt,
    ( const wchar_t *text, QV_INT length ), qvStringCreateFromWcstr( text, length ) )
// clang-format on

#undef FORMS

// A row is a kind of format: the four names, the parameters, the last of them, and the function that makes the
// String of them and of the arguments that follow.
#define FORMATS( insertForm, prependForm, appendForm, setForm, PARAMETERS, last, create, ... )                         \
    void insertForm( QV_VECTOR **vec, QV_INT idx LIST PARAMETERS, ... )                                                \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
                                                                                                                       \
        va_list argList;                                                                                               \
        va_start( argList, last );                                                                                     \
        QV_STRING *owned = create( __VA_ARGS__, &argList );                                                            \
        va_end( argList );                                                                                             \
        qv::insertOwned( vec, idx, qv::obj( owned ) );                                                                 \
    }                                                                                                                  \
                                                                                                                       \
    void prependForm( QV_VECTOR **vec LIST PARAMETERS, ... )                                                           \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
                                                                                                                       \
        va_list argList;                                                                                               \
        va_start( argList, last );                                                                                     \
        QV_STRING *owned = create( __VA_ARGS__, &argList );                                                            \
        va_end( argList );                                                                                             \
        qv::prependOwned( vec, qv::obj( owned ) );                                                                     \
    }                                                                                                                  \
                                                                                                                       \
    void appendForm( QV_VECTOR **vec LIST PARAMETERS, ... )                                                            \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
                                                                                                                       \
        va_list argList;                                                                                               \
        va_start( argList, last );                                                                                     \
        QV_STRING *owned = create( __VA_ARGS__, &argList );                                                            \
        va_end( argList );                                                                                             \
        qv::appendOwned( vec, qv::obj( owned ) );                                                                      \
    }                                                                                                                  \
                                                                                                                       \
    void setForm( QV_VECTOR **vec, QV_INT idx LIST PARAMETERS, ... )                                                   \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
                                                                                                                       \
        va_list argList;                                                                                               \
        va_start( argList, last );                                                                                     \
        QV_STRING *owned = create( __VA_ARGS__, &argList );                                                            \
        va_end( argList );                                                                                             \
        qv::setOwned( vec, idx, qv::obj( owned ) );                                                                    \
    }

// clang-format off
FORMATS(
    qvVectorInsertStringFormat, qvVectorPrependStringFormat, qvVectorAppendStringFormat, qvVectorSetStringFormatAt,
    ( QV_STRING *fmt ), fmt, qvStringCreateFromFormatArgList, fmt )
FORMATS(
    qvVectorInsertStringFormatCstr, qvVectorPrependStringFormatCstr, qvVectorAppendStringFormatCstr,
    qvVectorSetStringFormatCstrAt, ( const char *fmt, QV_INT fmtLength ), fmtLength,
    qvStringCreateFromFormatCstrArgList, fmt, fmtLength )
FORMATS(
    qvVectorInsertStringFormatWcstr, qvVectorPrependStringFormatWcstr, qvVectorAppendStringFormatWcstr,
    qvVectorSetStringFormatWcstrAt, ( const wchar_t *fmt, QV_INT fmtLength ), fmtLength,
    qvStringCreateFromFormatWcstrArgList, fmt, fmtLength )
// clang-format on

#undef FORMATS
#undef LIST
