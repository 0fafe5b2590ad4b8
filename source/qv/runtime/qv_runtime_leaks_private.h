#ifndef QV_RUNTIME_LEAKS_PRIVATE_H
#define QV_RUNTIME_LEAKS_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv
{
/** The objects that are created between the two calls, less those that end there, are the library's own. By the one
    thread that starts the library. What outlived an earlier run is not among them. */
void beginOwn();
void endOwn();

/** The library has so many more objects of a sort for itself, or fewer. */
void addOwn( QV_SORT *sort, int32_t more );

/** The library has stopped: it has no objects of its own. */
void forgetOwn();
} // namespace qv

#endif
