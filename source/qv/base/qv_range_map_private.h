#ifndef QV_RANGE_MAP_PRIVATE_H
#define QV_RANGE_MAP_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/sys/qv_block_private.h"

/** One range of a map. */
struct QV___RANGE_MAP_ENTRY
{
    QV_INT  startingKey;
    QV_INT  endingKey; /**< included */
    QV_OBJ *value;
};

namespace qv
{
/** A full block grows by 33 ranges, one of them for the gap. One of more than 64 ranges gives 64 back at a time when so
    many are free. At which end they are free makes no difference to what is declared. */
struct RangeMapRules
{
    using Unit = QV___RANGE_MAP_ENTRY;

    static constexpr QV_INT     UNIT_BITS = 8 * sizeof( Unit );
    static constexpr QV_INT     GROWTH    = 32;
    static constexpr QV_INT     SHRINK    = 64;
    static constexpr EmptyBlock EMPTY     = EmptyBlock::SHRINKS;
    static constexpr QV_INT     SPARE     = 1;

    static bool givesBack( BlockEnds now, QV_INT length )
    {
        QV_INT free = now.front + now.back;
        return free >= SHRINK && free + length > SHRINK;
    }

    static BlockEnds shrunk( BlockEnds now, QV_INT )
    {
        return { 0, now.front + now.back - SHRINK };
    }

    static BlockEnds grown( BlockEnds now, QV_INT, QV_INT at, QV_INT count, bool )
    {
        QV_INT free = now.front + now.back;

        if( free < count )
            return { 0, free + GROWTH };

        return at == 0 && now.front >= count ? BlockEnds{ now.front - count, now.back } : BlockEnds{ 0, free - count };
    }
};
} // namespace qv

/** A block of ranges in the order of their keys. */
struct QV_RANGE_MAP : qv::Block< QV_OBJ, qv::RangeMapRules >
{
    QV_BOOL autoCollapse;

    /** Ranges that the declared block can hold. */
    QV_INT alloc() const
    {
        return fspace + length + bspace;
    }
};

/** Index of the first range that ends at `key` or after it, or -1. It holds `key` or is the first one after it. */
QV_API QV_INT qv___RangeMapFindAfterKey( QV_RANGE_MAP *map, QV_INT key );

#endif
