#ifndef QV_RUNTIME_SNAPSHOT_PRIVATE_H
#define QV_RUNTIME_SNAPSHOT_PRIVATE_H

#include "qv/sys/qv_types.h"

/** Prints what a report of live objects begins with: a line of dashes, and the product and its surroundings. */
QV_API void qv___RuntimeSnapshotHeader( void );

namespace qv
{
/** Prints the line of dashes. */
void printSnapshotLine();
} // namespace qv

#endif
