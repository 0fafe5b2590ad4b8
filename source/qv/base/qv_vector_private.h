#ifndef QV_VECTOR_PRIVATE_H
#define QV_VECTOR_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** Free slots that a rebuilt block has at each end. */
#define QV_VECTOR_FSPACE 32
#define QV_VECTOR_BSPACE 32

/** `fspace`, the elements and `bspace` are the block that the Vector accounts for; it changes by a constant. What is
    really allocated may be about half as large again, so that a run of changes at an end does not copy the elements
    every 32 of them: then the accounted block moves within the allocated one. */
struct QV_VECTOR : QV_OBJ
{
    QV_INT   length;    /**< elements */
    QV_INT   fspace;    /**< free slots in front of them */
    QV_INT   bspace;    /**< free slots behind them */
    QV_OBJ **objs;      /**< the accounted block, or null; the elements start at objs[fspace] */
    QV_OBJ **block;     /**< the allocated one, or null */
    QV_INT   blockSize; /**< its slots */
};

/** The one empty Vector of qvVectorCreate(). */
extern "C" QV_VECTOR *qv___VectorEmpty;

/** Opens a gap of `count` zeroed slots in a Vector that nobody else holds; gives the gap. The caller fills it. */
QV_API QV_OBJ **qv___VectorMakeRoom( QV_VECTOR *vec, QV_INT atIndex, QV_INT count );

/** Gives free slots back where an end has more than 64 of them. Nobody else may hold the Vector. */
QV_API void qv___VectorCompact( QV_VECTOR *vec );

/** Appends an array and takes over the references in it. */
QV_API void qv___VectorPushNoRetain( QV_VECTOR **vec, QV_OBJ *const *objs, QV_INT count );

namespace qv
{
/** The first element; null for a Vector without a block. */
inline QV_OBJ **objs( QV_VECTOR *vec )
{
    return vec->objs + vec->fspace;
}
} // namespace qv

#endif
