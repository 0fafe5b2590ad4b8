/** @file
    Sorts: the types of objects at run time. A sort is itself an object, which never ends: retaining and releasing
    it have no effect on its life. All functions may be called from any thread; null ends the process. */

#ifndef QV_SORT_H
#define QV_SORT_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Sort, QV_SORT )

/** @{ */
/** The module that the sort belongs to, borrowed, or null, and whether there is one. */
QV_API QV_MODULE *qvSortModule( QV_SORT *sort );
QV_API QV_BOOL    qvSortHasModule( QV_SORT *sort );
/** @} */

/** The sort's name, as `QV_STRING`: a new text. */
QV_API QV_STRING *qvSortName( QV_SORT *sort );

/** How many objects of the sort live now: exact unless other threads create or end some meanwhile. Then it is never
    below the objects that live during the whole call, and it is 0 only if there was a moment at which none lived; it may
    include objects that others have created and ended meanwhile. The cost is that of reading a few numbers for each of
    the threads that work with objects at the same time. */
QV_API QV_INT qvSortObjects( QV_SORT *sort );

/** The objects of the sort that live now, oldest first, as a new Vector, which holds a reference to each. Null when the
    run keeps no lists of objects (#QV_RUNTIME_FLAG_OBJECT_DATABASE). Other threads may create and release objects
    meanwhile: some of the objects may not be complete yet, and others may change while the Vector holds them. So the
    contents of objects that other threads work with must not be read. Costs a constant time for each object. */
QV_API QV_VECTOR *qvSortSnapshot( QV_SORT *sort );

#endif
