/** @file
    Generation: a place in a tree of generations, told by a path of numbers.

        QV_GENERATION *job  = qvGenerationCreate();                     // 3
        QV_GENERATION *step = qvGenerationCreateWithParent( job );      // 3:0
        QV_BOOL inside = qvGenerationIsAncestor( job, step );           // true

    A root gets the next number of the process, a child the path of its parent and the next number of that parent; both
    count from 0, and no two generations get one path. Generations order by their paths: a parent comes before its
    children, children come in the order of their birth, and who comes first is the older one. The text is the numbers
    with colons between them. A generation keeps its parent alive, and costs memory by the length of its path.

    Callable from any thread. Null ends the process. */

#ifndef QV_GENERATION_H
#define QV_GENERATION_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Generation, QV_GENERATION )

/** A new root. */
QV_API QV_GENERATION *qvGenerationCreate( void );

/** A new child. */
QV_API QV_GENERATION *qvGenerationCreateWithParent( QV_GENERATION *parentGeneration );

/** @{ */
/** The parent; null for a root. */
QV_API QV_GENERATION *qvGenerationParent( QV_GENERATION *generation );
QV_API QV_BOOL        qvGenerationHasParent( QV_GENERATION *generation );
/** @} */

/** @{ */
/** What the first one is to the other one. Nobody is his own ancestor. The time grows with the number of generations
    between them. */
QV_API QV_BOOL qvGenerationIsParent( QV_GENERATION *generation, QV_GENERATION *otherGeneration );
QV_API QV_BOOL qvGenerationIsChild( QV_GENERATION *generation, QV_GENERATION *otherGeneration );
QV_API QV_BOOL qvGenerationIsAncestor( QV_GENERATION *generation, QV_GENERATION *otherGeneration );
QV_API QV_BOOL qvGenerationIsDescendant( QV_GENERATION *generation, QV_GENERATION *otherGeneration );
/** @} */

/** @{ */
/** True if the first one comes before, or after, the other one in the order of paths. */
QV_API QV_BOOL qvGenerationIsOlder( QV_GENERATION *genA, QV_GENERATION *genB );
QV_API QV_BOOL qvGenerationIsYounger( QV_GENERATION *genA, QV_GENERATION *genB );
/** @} */

#endif
