/** @file
    What can be done with any object, whatever its family.

    Any thread may use any object. A reference that a function returns belongs to the caller, which gives it up with
    qvObjRelease() or the family's own release; arguments are borrowed. Null where an object is expected ends the
    process. */

#ifndef QV_OBJ_H
#define QV_OBJ_H

#include "qv/sys/qv_types.h"

/** Takes one more reference. One atomic operation. */
QV_API void qvObjRetain( QV_OBJ *obj );

/** Gives one reference up. With the last one the object ends, and so do the objects that it alone holds, nested to any
    depth, on a small stack. All of them have ended when the outermost release returns. Sorts and modules never end. */
QV_API void qvObjRelease( QV_OBJ *obj );

/** The object's sort, borrowed: sorts live as long as their module. */
QV_API QV_SORT *qvObjSort( QV_OBJ *thisObj );

/** The order of two objects: -1, 0 or 1. Objects of one sort have the order of their family; objects of different
    sorts have that of the sorts' names, and so do not depend on their values. Vectors, Dicts, RangeMaps and Stores are
    compared to any depth on a small stack, with heap for the levels beyond 16. */
QV_API QV_INT qvObjCompare( QV_OBJ *objA, QV_OBJ *objB );

/** The order by sort and then by unique number, which is drawn when an object is first compared or printed and then
    stays for the run. Families without a compare function have this order. */
QV_API QV_INT qvObjDefaultCompareFunc( QV_OBJ *thisObj, QV_OBJ *thatObj );

/** A new text of the object, in the form of its family, owned by the caller. Vectors, Dicts and RangeMaps are written
    to any depth, at a cost that grows with the length of the whole text. */
QV_API QV_STRING *qvObjToString( QV_OBJ *thisObj );

/** A new text of the sort's name and the object's unique number to the base 16, as `QV_MONITOR(1F)`, owned by the
    caller. Families without a to-string function have this text. */
QV_API QV_STRING *qvObjDefaultToStringFunc( QV_OBJ *thisObj );

#endif
