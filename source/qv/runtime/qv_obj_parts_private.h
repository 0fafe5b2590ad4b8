/** @file
    Comparison and text of objects that are made of objects, to any depth.

    A family whose objects may be nested does not call qvObjCompare() or qvObjToString() for its parts: a value nested a
    hundred thousand levels deep would run out of stack. It names its next part, and one loop with a stack on the heap
    descends into the parts and returns. Parts of other families are compared and written at once.

        // The parts in their order; then, if all are equal, what else there is to tell the two apart.
        QV_INT compareStep( QV_OBJ *thisObj, QV_OBJ *thatObj, QV___COMPARE_WALK *walk )
        {
            QV_PAIRS *a = qvPairsFrom( thisObj );
            QV_PAIRS *b = qvPairsFrom( thatObj );

            while( walk->at < std::min( a->length, b->length ) )
            {
                QV_INT i = walk->at++; // before the part is compared: the next call continues after it

                if( QV_INT order = qv::comparePart( walk, a->objs[i], b->objs[i] ) )
                    return order;
            }

            return qv::order( a->length, b->length );
        }

        QV_OBJ *textStep( QV_OBJ *thisObj, QV___TEXT_WALK *walk )
        {
            QV_PAIRS *pairs = qvPairsFrom( thisObj );

            if( walk->at == 0 )
                qvStringAppendChar( &walk->text, U'<' );

            while( walk->at < pairs->length )
                if( QV_OBJ *part = qv::textPart( walk, pairs->objs[walk->at++] ) )
                    return part;

            qvStringAppendChar( &walk->text, U'>' );
            return nullptr;
        }

        QV___FAMILY_OF_PARTS(
            Pairs, QV_PAIRS, freePairs, qv::compareByParts, qv::textByParts, compareStep, textStep )

    A family may have one of the two steps only. Then it has a function of its own, or none, in place of the other, and
    passes null for that step. */

#ifndef QV_OBJ_PARTS_PRIVATE_H
#define QV_OBJ_PARTS_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_obj.h"

struct QV___COMPARE_WALK
{
    QV_INT  at;       /**< 0 in the first call for a pair of objects; the step's own from then on */
    QV_OBJ *thisPart; /**< set by qv::comparePart() for parts that are to be walked themselves */
    QV_OBJ *thatPart;
};

struct QV___TEXT_WALK
{
    QV_INT     at;   /**< 0 in the first call for an object; the step's own from then on */
    QV_STRING *text; /**< to append to */
};

namespace qv
{
/** Compares two parts. A step returns any result but 0 at once: it is the order of the whole, or only says that the
    loop has to walk the parts first. Then the loop calls the step again if the parts are equal. */
inline QV_INT comparePart( QV___COMPARE_WALK *walk, QV_OBJ *thisPart, QV_OBJ *thatPart )
{
    QV_SORT *sort = thisPart->sort;

    if( thisPart == thatPart )
        return 0;

    if( sort && sort == thatPart->sort )
    {
        if( sort->compareStep )
        {
            walk->thisPart = thisPart;
            walk->thatPart = thatPart;
            return 1;
        }

        if( sort->compareFunc )
            return sort->compareFunc( thisPart, thatPart );
    }

    return qvObjCompare( thisPart, thatPart );
}

/** Appends the text of a part and returns null; or returns the part, which the step then returns at once. */
inline QV_OBJ *textPart( QV___TEXT_WALK *walk, QV_OBJ *part )
{
    if( part->sort && part->sort->textStep )
        return part;

    qvStringAppendObj( &walk->text, part );
    return nullptr;
}

/** The compare function and the to-string function of every family with the step. They allocate for each level that
    they descend beyond 16. */
QV_INT     compareByParts( QV_OBJ *thisObj, QV_OBJ *thatObj );
QV_STRING *textByParts( QV_OBJ *thisObj );
} // namespace qv

#endif
