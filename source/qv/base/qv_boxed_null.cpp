#include "qv/base/qv_boxed_null.h"

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"

struct QV_BOXED_NULL : QV_OBJ
{
};

namespace
{
QV_BOXED_NULL *globalNull = nullptr;

QV_STRING *boxedNullToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    return qvStringCreateFromCstr( "null", -1 );
}
} // namespace

QV___FAMILY( BoxedNull, QV_BOXED_NULL, nullptr, nullptr, boxedNullToString )

void qv___BoxedNullStartup( void )
{
    globalNull = qv::create< QV_BOXED_NULL >( qvBoxedNullSort() );
}

void qv___BoxedNullShutdown( void )
{
    qv::drop( globalNull );
}

QV_BOXED_NULL *qvBoxedNullCreate( void )
{
    return qv::retainOfRun( globalNull );
}
