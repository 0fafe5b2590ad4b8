#include "qv/base/qv_boxed_int.h"

#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_format.h"
#include "qv/runtime/qv_obj_life_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_order_private.h"

namespace
{
QV_INT compareBoxedInts( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_INT a = qvBoxedIntFrom( thisObj )->value;
    QV_INT b = qvBoxedIntFrom( thatObj )->value;

    return qv::order( a, b );
}

QV_STRING *boxedIntToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    return qvFormatEncodeInt( qvBoxedIntFrom( thisObj )->value, 10, 0, 0 );
}
} // namespace

#undef QV___FAMILY_RELEASE
#define QV___FAMILY_RELEASE( obj ) qv::releaseInline( obj )

QV___FAMILY( BoxedInt, QV_BOXED_INT, nullptr, compareBoxedInts, boxedIntToString )

namespace
{
// A function of its own, so that the usual way saves no registers.
__attribute__( ( noinline ) ) QV_BOXED_INT *createSlowly( QV_INT value )
{
    QV_BOXED_INT *bint = static_cast< QV_BOXED_INT * >( qv::createOwn( sizeof( QV_BOXED_INT ), 0, qvBoxedIntSort() ) );
    bint->value        = value;

    return bint;
}
} // namespace

QV_BOXED_INT *qvBoxedIntCreate( QV_INT value )
{
    QV_BOXED_INT *bint = static_cast< QV_BOXED_INT * >(
        qv::createQuickly( sizeof( QV_BOXED_INT ), 0, &qv___sort_QV_BOXED_INT, 0, true ) );

    if( __builtin_expect( !bint, 0 ) )
        return createSlowly( value );

    bint->value = value;

    return bint;
}

QV_INT qvBoxedIntValue( QV_BOXED_INT *bint )
{
    QV_CHECK( bint );
    return bint->value;
}
