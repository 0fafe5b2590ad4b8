/** @file
    RangeMap: objects for intervals of integer keys.

        QV_OBJ       *low = qvBoxedIntObj( qvBoxedIntCreate( 1 ) ), *high = qvBoxedIntObj( qvBoxedIntCreate( 2 ) );
        QV_RANGE_MAP *map = qvRangeMapCreate();
        qvRangeMapSetRangeKey( &map, 0, 100, low );             // [0,100]=1
        qvRangeMapSetRangeKey( &map, 10, 20, high );            // [0,9]=1, [10,20]=2, [21,100]=1
        qvRangeMapDelIntKey( &map, 5 );                         // [0,4]=1, [6,9]=1, [10,20]=2, [21,100]=1
        QV_OBJ *value = qvRangeMapIntKey( map, 15 );            // 2, one reference for the caller
        qvObjRelease( value );
        qvObjRelease( high );
        qvObjRelease( low );
        qvRangeMapRelease( map );

    Ranges. A range has a starting and an ending key, both included, and a value, never null. The ranges of a map
    never overlap and stand in the order of their keys; indexes count them from 0. Any key from QV_INT_MIN to
    QV_INT_MAX can be mapped. Setting a range cuts away what it overlaps; deleting one can split another in two.

    Collapsing. Two ranges that touch and have values that are equal by qvObjCompare() can be one range. A map that
    collapses automatically joins each range that is set with the neighbours with which that can be done; any map joins
    all that it can when asked. Deleting never joins.

    Value and copy. A RangeMap that somebody else holds is never changed: a mutator takes the address of the caller's
    reference and, where the map is shared, replaces it by a private copy first. So retaining is copying. A deletion
    that touches no range copies nothing.

    Order and text. Maps order by their ranges in turn: starting key, ending key, value; then the shorter one comes
    first. Whether a map collapses takes no part. The text is "{[0,9]=1, [10,20]=2}".

    Costs. Looking a key up is a bisection. Setting moves the ranges on the shorter side of the place, deleting those
    after it; in ascending and in descending order, and at either end, they move no ranges as a rule. Automatic
    collapsing compares a range that was set with its two neighbours, qvRangeMapCollapse() each range with the next. A
    map that is shared is copied by a change, range by range.

    Memory. The array grows by 33 ranges when it is full and gives 64 back when more than 64 fit and 64 are free. That
    is what is declared; at most twice as much is allocated.

    Threads. Any thread may read a RangeMap, also one that others hold. A variable that mutators work on belongs to one
    thread at a time.

    Null as a map, as `*map` or as a value, an index outside the map, and an interval that ends before it starts, end
    the process. */

#ifndef QV_RANGE_MAP_H
#define QV_RANGE_MAP_H

#include "qv/sys/qv_types.h"

QV_FAMILY( RangeMap, QV_RANGE_MAP )

/* Creation ------------------------------------------------------------------------------------------------------- */

/** A new map without ranges. */
QV_API QV_RANGE_MAP *qvRangeMapCreate( void );

/** The same with automatic collapsing. */
QV_API QV_RANGE_MAP *qvRangeMapCreateAutoCollapsing( void );

/** A new map with the ranges of `map` and its way of collapsing; the values are shared. */
QV_API QV_RANGE_MAP *qvRangeMapCreateFrom( QV_RANGE_MAP *map );

/** Makes `*map` a new map without ranges and without automatic collapsing. */
QV_API void qvRangeMapClear( QV_RANGE_MAP **map );

/* Reading -------------------------------------------------------------------------------------------------------- */

/** How many ranges there are. */
QV_API QV_INT qvRangeMapLength( QV_RANGE_MAP *map );

/** True if every set collapses. */
QV_API QV_BOOL qvRangeMapAutoCollapse( QV_RANGE_MAP *map );

/** @{ */
/** The first key, the last key and the value of a range. The caller owns the reference. */
QV_API QV_INT  qvRangeMapStartingKeyAt( QV_RANGE_MAP *map, QV_INT idx );
QV_API QV_INT  qvRangeMapEndingKeyAt( QV_RANGE_MAP *map, QV_INT idx );
QV_API QV_OBJ *qvRangeMapObjAt( QV_RANGE_MAP *map, QV_INT idx );
/** @} */

/** The value of the range that holds `key`, or null. The caller owns the reference. */
QV_API QV_OBJ *qvRangeMapIntKey( QV_RANGE_MAP *map, QV_INT key );

/** True if a range holds `key`. */
QV_API QV_BOOL qvRangeMapHasIntKey( QV_RANGE_MAP *map, QV_INT key );

/* Changing ------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Maps all keys from `startingKey` to `endingKey`, or the one key, to `value`, which may be the map itself: then it
    is the map as it was. */
QV_API void qvRangeMapSetRangeKey( QV_RANGE_MAP **map, QV_INT startingKey, QV_INT endingKey, QV_OBJ *value );
QV_API void qvRangeMapSetIntKey( QV_RANGE_MAP **map, QV_INT key, QV_OBJ *value );
/** @} */

/** @{ */
/** Leaves no key of the interval mapped. */
QV_API void qvRangeMapDelRangeKey( QV_RANGE_MAP **map, QV_INT startingKey, QV_INT endingKey );
QV_API void qvRangeMapDelIntKey( QV_RANGE_MAP **map, QV_INT key );
/** @} */

/** Turns automatic collapsing on, which collapses at once, or off. */
QV_API void qvRangeMapSetAutoCollapse( QV_RANGE_MAP **map, QV_BOOL autoCollapse );

/** Joins all ranges that can be joined, once. */
QV_API void qvRangeMapCollapse( QV_RANGE_MAP **map );

#endif
