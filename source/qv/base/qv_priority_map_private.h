#ifndef QV_PRIORITY_MAP_PRIVATE_H
#define QV_PRIORITY_MAP_PRIVATE_H

#include "qv/base/qv_priority_map.h"
#include "qv/runtime/qv_family.h"

/** An object with its priority, which never changes: a new priority is a new entry. Entries order by priority, then by
    their objects. */
typedef struct QV___PRIORITY_MAP_ENTRY QV___PRIORITY_MAP_ENTRY;

QV_FAMILY( ___PriorityMapEntry, QV___PRIORITY_MAP_ENTRY )

struct QV___PRIORITY_MAP_ENTRY : QV_OBJ
{
    QV_INT  priority;
    QV_OBJ *object;
};

/** The two have the same length: each entry in `byPriority` is the value of its object in `byObject`. */
struct QV_PRIORITY_MAP : QV_OBJ
{
    QV_DICT *byPriority; /**< from entry to object */
    QV_DICT *byObject;   /**< from object to entry */
};

#endif
