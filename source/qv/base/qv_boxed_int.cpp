#include "qv/base/qv_boxed_int.h"

#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_format.h"
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

QV___FAMILY( BoxedInt, QV_BOXED_INT, nullptr, compareBoxedInts, boxedIntToString )

QV_BOXED_INT *qvBoxedIntCreate( QV_INT value )
{
    QV_BOXED_INT *bint = qv::create< QV_BOXED_INT >( qvBoxedIntSort() );
    bint->value        = value;

    return bint;
}

QV_INT qvBoxedIntValue( QV_BOXED_INT *bint )
{
    QV_CHECK( bint );
    return bint->value;
}
