#ifndef QV_DICT_PRIVATE_H
#define QV_DICT_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** One entry. Both references are the Dict's own, neither is null. */
struct QV___DICT_ITEM
{
    QV_OBJ *key;
    QV_OBJ *val;
};

/** The free places of the block stand at either end of the items, as the changes have left them. */
struct QV_DICT : QV_OBJ
{
    QV_INT          alloc;  /**< items that the block can hold */
    QV_INT          length; /**< items */
    QV_INT          front;  /**< free places in front of the first item */
    QV___DICT_ITEM *block;  /**< or null; the items start at block[front], in ascending order of their keys */
};

/** The one empty Dict of qvDictCreate(). */
extern "C" QV_DICT *qv___DictEmpty;

/** Deletes all entries and keeps the block for the next ones; a shared Dict becomes the empty one. */
QV_API void qv___DictClear( QV_DICT **dict );

namespace qv
{
/** The first item; null for a Dict without a block. */
inline QV___DICT_ITEM *items( QV_DICT *dict )
{
    return dict->block + dict->front;
}
} // namespace qv

#endif
