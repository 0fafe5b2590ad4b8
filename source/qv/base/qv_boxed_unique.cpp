#include "qv/base/qv_boxed_unique.h"

#include "qv/runtime/qv_ref.h"

struct QV_BOXED_UNIQUE : QV_OBJ
{
};

QV___FAMILY( BoxedUnique, QV_BOXED_UNIQUE, nullptr, nullptr, nullptr )

QV_BOXED_UNIQUE *qvBoxedUniqueCreate( void )
{
    return qv::create< QV_BOXED_UNIQUE >( qvBoxedUniqueSort() );
}
