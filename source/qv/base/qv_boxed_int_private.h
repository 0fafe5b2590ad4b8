#ifndef QV_BOXED_INT_PRIVATE_H
#define QV_BOXED_INT_PRIVATE_H

#include "qv/base/qv_boxed_int.h"
#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_ref.h"

struct QV_BOXED_INT : QV_OBJ
{
    QV_INT value;
};

QV___HIDDEN QV_SORT qv___sort_QV_BOXED_INT;

namespace qv
{
/** The number in a boxed integer that the call takes over, or `missing` if there is none. */
inline QV_INT takeInt( QV_OBJ *owned, QV_INT missing )
{
    Ref< QV_OBJ > boxed( owned );

    return boxed ? qvBoxedIntValue( qvBoxedIntFrom( boxed ) ) : missing;
}
} // namespace qv

#endif
