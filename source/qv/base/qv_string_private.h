#ifndef QV_STRING_PRIVATE_H
#define QV_STRING_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** Free places that a new block has at each end, in characters. */
#define QV_STRING_FSPACE 32
#define QV_STRING_BSPACE 32

struct QV_STRING : QV_OBJ
{
    QV_INT   length; /**< characters of the text */
    QV_INT   fspace; /**< free places in front of it */
    QV_INT   bspace; /**< free places behind it */
    QV_CHAR *chars;  /**< the block, or null; the text starts at chars[fspace] */
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
} // namespace qv

#endif
