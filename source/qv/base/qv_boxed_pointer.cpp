#include "qv/base/qv_boxed_pointer_private.h"

#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_order_private.h"

struct QV___BOXED_POINTER : QV_OBJ
{
    void                        *value;
    QV___BOXED_POINTER_FREE_FUNC freeFunc;
};

namespace
{
void freeBoxedPointer( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV___BOXED_POINTER *bptr = qv___BoxedPointerFrom( thisObj );

    if( bptr->freeFunc )
        bptr->freeFunc( bptr->value );
}

QV_INT compareBoxedPointers( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    uintptr_t a = reinterpret_cast< uintptr_t >( qv___BoxedPointerFrom( thisObj )->value );
    uintptr_t b = reinterpret_cast< uintptr_t >( qv___BoxedPointerFrom( thatObj )->value );

    return qv::order( a, b );
}
} // namespace

QV___FAMILY( ___BoxedPointer, QV___BOXED_POINTER, freeBoxedPointer, compareBoxedPointers, nullptr )

QV___BOXED_POINTER *qv___BoxedPointerCreate( void *value, QV___BOXED_POINTER_FREE_FUNC freeFunc )
{
    QV___BOXED_POINTER *bptr = qv::create< QV___BOXED_POINTER >( qv___BoxedPointerSort() );
    bptr->value              = value;
    bptr->freeFunc           = freeFunc;

    return bptr;
}

void *qv___BoxedPointerValue( QV___BOXED_POINTER *bptr )
{
    QV_CHECK( bptr );
    return bptr->value;
}
