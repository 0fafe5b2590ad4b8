#ifndef QV_DICT_PRIVATE_H
#define QV_DICT_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** Items by which the block grows, and how many free ones it may have. */
#define QV_DICT_GROWTH    32
#define QV_DICT_OVERSIZED 64

/** One entry. Both references are the Dict's own, neither is null. */
struct QV___DICT_ITEM
{
    QV_OBJ  *key;
    QV_OBJ  *val;
    uint64_t digest; /**< orders the key among the others, see QV_DICT::digestSort */
};

/** `alloc` is what the Dict accounts for; it changes by a constant. What is really allocated may be about half as
    large again, so that building up or down does not copy the items every so many. The items stand anywhere in the
    block: its free places are at both ends, and a change moves the items on the shorter side.

    A search would wait for the memory of each key that it looks at. So where all keys are Strings or all are boxed
    integers, each item has a number with it that orders as its key does: the whole integer, or the first characters
    behind a prefix that all keys share. Only Strings whose numbers are equal are compared themselves. Others may read
    the items and replace values; keys go in and out through the functions alone. */
struct QV_DICT : QV_OBJ
{
    QV_INT          alloc;        /**< items that the accounted block can hold */
    QV_INT          length;       /**< items */
    QV___DICT_ITEM *items;        /**< the first one, or null; in ascending order of their keys */
    QV___DICT_ITEM *block;        /**< the allocated block, or null */
    QV_INT          blockSize;    /**< items that it can hold */
    QV_SORT        *digestSort;   /**< the sort of all keys, or null where there are no digests */
    QV_INT          digestPrefix; /**< characters of the prefix */
};

/** The one empty Dict of qvDictCreate(). */
extern "C" QV_DICT *qv___DictEmpty;

/** Deletes all entries and keeps the block for the next ones; a shared Dict becomes the empty one. */
QV_API void qv___DictClear( QV_DICT **dict );

namespace qv
{
/** Where a key stands or, with `*found` false, the item in front of which it would. */
QV_INT searchDict( QV_DICT *dict, QV_OBJ *key, bool *found );

/** Enters a new key in front of the item where it belongs. Takes over both references. `superset` may be a Dict that
    has the key at `supersetIdx` already, and all other keys too: then the digest may be there. */
void insertIntoDict(
    QV_DICT **dict, QV_INT idx, QV_OBJ *key, QV_OBJ *value, QV_DICT *superset = nullptr, QV_INT supersetIdx = 0 );
} // namespace qv

#endif
