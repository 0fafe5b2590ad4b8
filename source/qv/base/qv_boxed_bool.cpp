#include "qv/base/qv_boxed_bool.h"

#include "qv/base/qv_boxed_bool_private.h"
#include "qv/base/qv_format.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_order_private.h"

namespace
{
QV_BOXED_BOOL *globalTrue  = nullptr;
QV_BOXED_BOOL *globalFalse = nullptr;

QV_INT compareBoxedBools( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    return qv::order( qvBoxedBoolFrom( thisObj )->value, qvBoxedBoolFrom( thatObj )->value );
}

QV_STRING *boxedBoolToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    return qvFormatEncodeBool( qvBoxedBoolFrom( thisObj )->value, 0, 0 );
}
} // namespace

QV___FAMILY( BoxedBool, QV_BOXED_BOOL, nullptr, compareBoxedBools, boxedBoolToString )

void qv___BoxedBoolStartup( void )
{
    globalTrue         = qv::create< QV_BOXED_BOOL >( qvBoxedBoolSort() );
    globalTrue->value  = QV_TRUE;
    globalFalse        = qv::create< QV_BOXED_BOOL >( qvBoxedBoolSort() );
    globalFalse->value = QV_FALSE;
}

void qv___BoxedBoolShutdown( void )
{
    QV_CHECK( globalTrue );
    QV_CHECK( globalFalse );

    qv::drop( globalTrue );
    qv::drop( globalFalse );
}

QV_BOXED_BOOL *qvBoxedBoolCreate( QV_BOOL value )
{
    return qv::retainOfRun( value ? globalTrue : globalFalse );
}

QV_BOOL qvBoxedBoolValue( QV_BOXED_BOOL *bbl )
{
    QV_CHECK( bbl );
    return bbl->value;
}
