#ifndef QV_VECTOR_PRIVATE_H
#define QV_VECTOR_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_block_private.h"

/** Free slots that a rebuilt block has at each end. */
#define QV_VECTOR_FSPACE 32
#define QV_VECTOR_BSPACE 32

namespace qv
{
/** At the end free slots are used before the block grows, by 32 more than are needed; anywhere else but in free slots
    at the front a gap makes a new block. */
struct VectorRules
{
    using Unit = QV_OBJ *;

    static constexpr QV_INT     UNIT_BITS = 8 * sizeof( Unit );
    static constexpr QV_INT     MOST      = 64; /**< an end with more free slots gives memory back */
    static constexpr EmptyBlock EMPTY     = EmptyBlock::CENTERS;
    static constexpr QV_INT     SPARE     = 1;

    static BlockEnds fresh( QV_INT )
    {
        return { QV_VECTOR_FSPACE, QV_VECTOR_BSPACE };
    }

    static bool givesBack( BlockEnds now, QV_INT )
    {
        return now.front > MOST || now.back > MOST;
    }

    static BlockEnds shrunk( BlockEnds, QV_INT length )
    {
        return fresh( length );
    }

    static bool fits( BlockEnds now, QV_INT length, QV_INT at, QV_INT count )
    {
        return at == length ? now.back >= count : at == 0 && now.front >= count;
    }

    static BlockEnds grown( BlockEnds now, QV_INT length, QV_INT at, QV_INT count, bool )
    {
        if( at == length )
            return { now.front, now.back >= count ? now.back - count : now.back + QV_VECTOR_BSPACE };

        if( at == 0 && now.front >= count )
            return { now.front - count, now.back };

        return fresh( length + count );
    }
};
} // namespace qv

/** A block of elements. Each holds a reference; what free slots hold has no meaning. */
struct QV_VECTOR : qv::Block< QV_OBJ, qv::VectorRules >
{
};

/** The one empty Vector of qvVectorCreate(). */
extern "C" QV_VECTOR *qv___VectorEmpty;

/** Opens a gap of `count` zeroed slots in a Vector that nobody else holds; returns the gap, which the caller fills. */
QV_API QV_OBJ **qv___VectorMakeRoom( QV_VECTOR *vec, QV_INT atIndex, QV_INT count );

/** Gives free slots back where an end has more than 64 of them. Nobody else may hold the Vector. */
QV_API void qv___VectorCompact( QV_VECTOR *vec );

/** Appends an array and takes over the references in it. */
QV_API void qv___VectorPushNoRetain( QV_VECTOR **vec, QV_OBJ *const *objs, QV_INT count );

namespace qv
{
/** A Vector of at most 32 elements, whose references it takes over; what it declares is what it would if they had been
    appended to an empty one. The block comes with the Vector. */
QV_VECTOR *createVector( QV_OBJ *const *objs, QV_INT count );

/** The first element; null for a Vector without a block. */
inline QV_OBJ **objs( QV_VECTOR *vec )
{
    return vec->first;
}

/** What every insertion of one object ends in. They take over the reference. An object that is `*vec` itself has made
    it shared by that reference, and so goes in as it was. */
void insertOwned( QV_VECTOR **vec, QV_INT idx, QV_OBJ *owned );
void prependOwned( QV_VECTOR **vec, QV_OBJ *owned );
void setOwned( QV_VECTOR **vec, QV_INT idx, QV_OBJ *owned );

/** appendOwned() where the Vector is shared or full. */
void appendMakingRoom( QV_VECTOR **vec, QV_OBJ *owned );

inline void appendOwned( QV_VECTOR **vec, QV_OBJ *owned )
{
    QV_VECTOR *own = *vec;

    if( __builtin_expect( own->bspace > 0 && !isShared( own ), 1 ) )
        *own->takeBack( 1 ) = owned;
    else
        appendMakingRoom( vec, owned );
}
} // namespace qv

#endif
