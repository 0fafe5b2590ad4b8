/** @file
    What can be done with any object, whatever its family.

    Any thread may use any object. A reference that a function returns belongs to the caller, who gives it up with
    qvObjRelease() or the family's own release; arguments are borrowed. Null where an object is expected ends the
    process. */

#ifndef QV_OBJ_H
#define QV_OBJ_H

#include "qv/sys/qv_types.h"

/** Takes one more reference. One atomic operation. */
QV_API void qvObjRetain( QV_OBJ *obj );

/** Gives one reference up; with the last one the object ends, and with it what it alone holds: all that is gone when
    the call returns, nested to any depth, on a small stack. Sorts and modules never end. */
QV_API void qvObjRelease( QV_OBJ *obj );

/** The object's sort. Borrowed: sorts live as long as their module. */
QV_API QV_SORT *qvObjSort( QV_OBJ *thisObj );

/** The order of two objects: -1, 0 or 1. Objects of one sort have the order of their family; objects of different
    sorts have that of the sorts' names, and so do not depend on their values. Vectors, Dicts, RangeMaps and Stores are
    compared to any depth on a small stack, with some heap for levels beyond 16. */
QV_API QV_INT qvObjCompare( QV_OBJ *objA, QV_OBJ *objB );

/** The order by sort and then by unique number: for objects of one sort it is set when they are first compared or
    printed, and stays. Families without a compare function have it. */
QV_API QV_INT qvObjDefaultCompareFunc( QV_OBJ *thisObj, QV_OBJ *thatObj );

/** A new text of the object, in the form of its family. The caller owns it. Vectors, Dicts and RangeMaps are
    written to any depth, at the cost of the whole text's length. */
QV_API QV_STRING *qvObjToString( QV_OBJ *thisObj );

/** A new text of the sort's name and the object's unique number: `QV_MONITOR(1F)`. Families without a to-string
    function have it. */
QV_API QV_STRING *qvObjDefaultToStringFunc( QV_OBJ *thisObj );

#endif
