#ifndef QV_RUNTIME_SNAPSHOT_PRIVATE_H
#define QV_RUNTIME_SNAPSHOT_PRIVATE_H

#include "qv/sys/qv_types.h"

/** Prints the head of a report of live objects: a line of dashes, the product, the system and the build. */
QV_API void qv___RuntimeSnapshotHeader( void );

/** The flags that ask for a report. */
#define QV___RUNTIME_FLAGS_SNAPSHOT                                                                                    \
    ( QV_RUNTIME_FLAG_SNAPSHOT_SORT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING       \
      | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG )

namespace qv
{
/** Prints the line of dashes. */
void printSnapshotLine();

/** Prints the line of a sort, with its name in a column of `width`. */
void printSnapshotSort( QV_SORT *sort, QV_INT width, QV_INT objects );

/** Prints what `flags` ask for about an object: its line, with its text or without, and the lines of its log. */
void printSnapshotObject( QV_OBJ *object, QV_INT retainCount, QV_INT flags );

/** Prints the report of the objects that have outlived a run with these flags. Called at the end of the run, when the
    components have been started once more, without the object database, so that its lists are those of the run. */
void printSurvivors( QV_INT flags );
} // namespace qv

#endif
