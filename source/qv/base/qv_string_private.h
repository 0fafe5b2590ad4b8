#ifndef QV_STRING_PRIVATE_H
#define QV_STRING_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** Free places that a new block has at each end, in characters. */
#define QV_STRING_FSPACE 32
#define QV_STRING_BSPACE 32

/** The first three add up to the size of the block that the String accounts for; it changes by a constant. What is
    really there may be up to half as large again, so that a run of appends does not reallocate every 32 characters. A
    block that is made with the String stands behind the structure if it isn't large, in one allocation with it. */
struct QV_STRING : QV_OBJ
{
    QV_INT   length;    /**< characters of the text */
    QV_INT   fspace;    /**< free places in front of it */
    QV_INT   bspace;    /**< free places behind it */
    QV_CHAR *chars;     /**< the block, or null; the text starts at chars[fspace] */
    QV_INT   blockSize; /**< characters that there is memory for at `chars` */
};

/** The one empty String of qvStringCreate(). */
extern "C" QV_STRING *qv___StringEmpty;

/** Opens a gap of `count` undefined characters in a String that nobody else holds; gives the gap. */
QV_API QV_CHAR *qv___StringMakeRoom( QV_STRING *qvs, QV_INT atIndex, QV_INT count );

/** Gives free places back where an end has more than 64 of them. */
QV_API void qv___StringCompact( QV_STRING *qvs );

namespace qv
{
/** The first character; null for a String without a block. */
inline QV_CHAR *chars( QV_STRING *qvs )
{
    return qvs->chars + qvs->fspace;
}

class ObjBatch;

/** A String of `count` undefined characters, above 0, without free places, which the caller fills with proper ones
    before anybody else sees it; if it isn't large, in a batch where there is one. */
QV_STRING *createString( QV_INT count, ObjBatch *batch = nullptr );

/** A String that takes over a block of `length` proper characters, above 0. */
QV_STRING *createStringUse( QV_CHAR *block, QV_INT length );
} // namespace qv

#endif
