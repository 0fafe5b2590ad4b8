#include "qv/base/qv_boxed_real.h"

#include "qv/base/qv_boxed_real_private.h"
#include "qv/base/qv_format.h"
#include "qv/runtime/qv_obj_life_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_order_private.h"

namespace
{
QV_INT compareBoxedReals( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    return qv::order( qvBoxedRealFrom( thisObj )->value, qvBoxedRealFrom( thatObj )->value );
}

QV_STRING *boxedRealToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    return qvFormatEncodeReal( qvBoxedRealFrom( thisObj )->value, 10, 0, -1, 0 );
}
} // namespace

#undef QV___FAMILY_RELEASE
#define QV___FAMILY_RELEASE( obj ) qv::releaseInline( obj )

QV___FAMILY( BoxedReal, QV_BOXED_REAL, nullptr, compareBoxedReals, boxedRealToString )

QV_BOXED_REAL *qvBoxedRealCreate( QV_REAL value )
{
    QV_BOXED_REAL *br = qv::create< QV_BOXED_REAL >( qvBoxedRealSort() );
    br->value         = value;

    return br;
}

QV_REAL qvBoxedRealValue( QV_BOXED_REAL *br )
{
    QV_CHECK( br );
    return br->value;
}
