/** @file
    PriorityMap: a set of objects, each with a priority, in ascending order of priority.

        QV_PRIORITY_MAP *map = qvPriorityMapCreate();
        qvPriorityMapSet( &map, 20, second );
        qvPriorityMapSet( &map, 10, first );                    // first, second
        qvPriorityMapSet( &map, 30, first );                    // second, first: an object is in the map once
        QV_INT  priority;
        QV_OBJ *obj = qvPriorityMapLower( map, first, &priority );   // second and 20
        qvObjRelease( obj );
        qvPriorityMapRelease( map );

    Order. Indexes count from 0, the lowest priority. Objects of equal priority stand in the order of qvObjCompare(),
    however they came in; two that compare equal are one object. What orders an object must not change while it is in
    a map. Maps compare as their entries do in turn; then the shorter one comes first.

    Value and copy. A PriorityMap that somebody else holds is never changed: a mutator takes the address of the caller's
    reference and, where the map is shared, replaces it by a private copy first. So retaining is copying. Removing an
    object that is not there copies nothing. Arguments are borrowed, results belong to the caller.

    Costs. Finding an object, by itself or by its neighbour, is a binary search; what stands at an index is read in
    logarithmic time. Setting and removing search twice and move some hundreds of entries at most, at either end none. A
    copy costs constant time, until one of the two is changed.

    Threads. Any thread may read a PriorityMap, also one that others hold. A variable that mutators work on belongs to
    one thread at a time.

    Null as a map, as `*map` or as an object, and an index outside the map, end the process. */

#ifndef QV_PRIORITY_MAP_H
#define QV_PRIORITY_MAP_H

#include "qv/sys/qv_types.h"

QV_FAMILY( PriorityMap, QV_PRIORITY_MAP )

/* Creation ------------------------------------------------------------------------------------------------------- */

/** A new empty map. */
QV_API QV_PRIORITY_MAP *qvPriorityMapCreate( void );

/** A new map with the objects and priorities of `map`. */
QV_API QV_PRIORITY_MAP *qvPriorityMapCreateFrom( QV_PRIORITY_MAP *map );

/** Makes `*map` a new empty map. */
QV_API void qvPriorityMapClear( QV_PRIORITY_MAP **map );

/* Reading -------------------------------------------------------------------------------------------------------- */

/** How many objects there are. */
QV_API QV_INT qvPriorityMapLength( QV_PRIORITY_MAP *map );

/** @{ */
/** The priority and the object at an index. */
QV_API QV_INT  qvPriorityMapPriorityAt( QV_PRIORITY_MAP *map, QV_INT idx );
QV_API QV_OBJ *qvPriorityMapValueAt( QV_PRIORITY_MAP *map, QV_INT idx );
/** @} */

/** A new Vector of the objects in their order. */
QV_API QV_VECTOR *qvPriorityMapValuesVector( QV_PRIORITY_MAP *map );

/** @{ */
/** True if the object is in the map; its index, or -1. */
QV_API QV_BOOL qvPriorityMapHas( QV_PRIORITY_MAP *map, QV_OBJ *obj );
QV_API QV_INT  qvPriorityMapIndexOf( QV_PRIORITY_MAP *map, QV_OBJ *obj );
/** @} */

/** @{ */
/** The last and the first object, or null if the map is empty. `*priority` becomes its priority, or 0; `priority` may
    be null, here and below. */
QV_API QV_OBJ *qvPriorityMapHighest( QV_PRIORITY_MAP *map, QV_INT *priority );
QV_API QV_OBJ *qvPriorityMapLowest( QV_PRIORITY_MAP *map, QV_INT *priority );
/** @} */

/** @{ */
/** The object after (Higher) or before (Lower) `obj` in the order, or null if there is none or `obj` is not in the map.
    */
QV_API QV_OBJ *qvPriorityMapHigher( QV_PRIORITY_MAP *map, QV_OBJ *obj, QV_INT *priority );
QV_API QV_OBJ *qvPriorityMapLower( QV_PRIORITY_MAP *map, QV_OBJ *obj, QV_INT *priority );
/** @} */

/* Changing ------------------------------------------------------------------------------------------------------- */

/** Puts `obj` in the map with a priority, or moves it there. `obj` may be the map itself: then it is the map as it
    was. */
QV_API void qvPriorityMapSet( QV_PRIORITY_MAP **map, QV_INT priority, QV_OBJ *obj );

/** @{ */
/** Takes `obj` out, if it is there, or the object at an index. */
QV_API void qvPriorityMapDel( QV_PRIORITY_MAP **map, QV_OBJ *obj );
QV_API void qvPriorityMapDelAt( QV_PRIORITY_MAP **map, QV_INT idx );
/** @} */

#endif
