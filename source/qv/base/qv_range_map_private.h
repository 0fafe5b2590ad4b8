#ifndef QV_RANGE_MAP_PRIVATE_H
#define QV_RANGE_MAP_PRIVATE_H

#include "qv/runtime/qv_family.h"

struct QV___RANGE_MAP_ENTRY
{
    QV_INT  startingKey;
    QV_INT  endingKey; /**< included */
    QV_OBJ *value;
};

struct QV_RANGE_MAP : QV_OBJ
{
    QV_BOOL               autoCollapse;
    QV_INT                alloc;  /**< ranges that the block can hold */
    QV_INT                length; /**< ranges that it holds */
    QV___RANGE_MAP_ENTRY *ranges; /**< the block, or null; in the order of the keys */
};

/** Index of the first range that ends at `key` or behind it, or -1. It holds `key` or is the first one after it. */
QV_API QV_INT qv___RangeMapFindAfterKey( QV_RANGE_MAP *map, QV_INT key );

#endif
