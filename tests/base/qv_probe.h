/** @file
    A family for tests of containers: it counts its comparisons, and does what a test wants while it is compared or
    ends. */

#ifndef QV_PROBE_H
#define QV_PROBE_H

#include "qv/runtime/qv_ref.h"

#include <functional>

typedef struct QV_PROBE QV_PROBE;

QV_FAMILY( Probe, QV_PROBE )

struct QV_PROBE : QV_OBJ
{
    QV_INT value; // which it orders by
};

namespace qv::test
{
inline QV_INT                  comparisons = 0;
inline std::function< void() > whileComparing, whileEnding; // called once

inline Ref< QV_OBJ > probe( QV_INT value )
{
    QV_PROBE *object = create< QV_PROBE >( qvProbeSort() );
    object->value    = value;

    return Ref( qvProbeObj( object ) );
}
} // namespace qv::test

#endif
