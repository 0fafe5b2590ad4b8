/** @file
    One run of items: its memory, and items in and out of it.

    A run is a block as those of String and Vector are, after a head of its own in the same allocation. What is declared
    for a Dict does not follow its runs, see qv_dict_tree_private.h, so that a run knows one size only, the real one. */

#ifndef QV_DICT_RUN_PRIVATE_H
#define QV_DICT_RUN_PRIVATE_H

#include "qv/base/qv_dict_private.h"
#include "qv/sys/qv_block_private.h"

namespace qv::dict
{
using Item  = QV___DICT_ITEM;
using Run   = QV___DICT_RUN;
using Index = QV___DICT_INDEX;

/** So many items in bytes. */
inline QV_INT itemBytes( int32_t items )
{
    return items * QV_INT( sizeof( Item ) );
}

/** Free places after the items; before them there are `front`. */
inline int32_t backPlaces( Run *run )
{
    return run->size - run->front - run->length;
}

/** A run without items and digests that has memory for `size` of them. */
Run *createRun( int32_t size );

/** Frees a run without a look at its items. */
void freeRun( Run *run );

/** A run with the items and digests of another one, and room for some more. References are not counted. */
Run *copyRun( Run *run );

/** Takes all items out of a run, without a look at them, and keeps its memory. */
void emptyRun( Run *run );

/** Opens a gap of `count` undefined items. Where free places can be used the shorter side moves, as a rule; else the
    run moves, maybe to memory with room for half as many more. */
Item *openRunGapInside( Run *&run, int32_t idx, int32_t count );

inline Item *openRunGap( Run *&run, int32_t idx, int32_t count = 1 )
{
    // Nothing moves at an end as long as places are free there.
    bool atBack  = idx == run->length && backPlaces( run ) >= count;
    bool atFront = idx == 0 && run->front >= count;

    if( !atBack && !atFront )
        return openRunGapInside( run, idx, count );

    run->front -= atBack ? 0 : count;
    run->length += count;

    Item *gap = run->items() + idx;
    takeFree( gap, itemBytes( count ) );

    return gap;
}

/** Closes the gap that an item leaves, by moving the shorter side. A run with a quarter of its places left gives memory
    back. */
void closeRunGap( Run *&run, int32_t idx );

/** Take items out of a run at its end and at its start, which others have now. */
void dropRunBack( Run *run, int32_t count );
void dropRunFront( Run *run, int32_t count );

/** Copies items to undefined ones, without counting references. */
inline void putItems( Item *to, const Item *from, int32_t count )
{
    memcpy( to, from, static_cast< size_t >( itemBytes( count ) ) );
}
} // namespace qv::dict

#endif
