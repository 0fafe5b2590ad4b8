/** @file
    Generation: a place in a tree of generations, told by a path of numbers.

        QV_GENERATION *job  = qvGenerationCreate();                     // 3
        QV_GENERATION *step = qvGenerationCreateWithParent( job );      // 3:0
        QV_BOOL inside = qvGenerationIsAncestor( job, step );           // true

    A root gets the next number of the process, a child the path of its parent and the next number of that parent; both
    count from 0, and no two generations get the same path. Generations are ordered by their paths: a parent comes
    before its children, and children come in the order of their creation. The text is the numbers with colons between
    them. A generation keeps its parent alive, and takes memory in proportion to the length of its path.

    Any thread may call any function. Null ends the process. A result that is a generation belongs to the caller. */

#ifndef QV_GENERATION_H
#define QV_GENERATION_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Generation, QV_GENERATION )

/** Returns a new root. */
QV_API QV_GENERATION *qvGenerationCreate( void );

/** Returns a new child of a generation. */
QV_API QV_GENERATION *qvGenerationCreateWithParent( QV_GENERATION *parentGeneration );

/** Returns the parent, as a new reference; null for a root. */
QV_API QV_GENERATION *qvGenerationParent( QV_GENERATION *generation );

/** False for a root. */
QV_API QV_BOOL qvGenerationHasParent( QV_GENERATION *generation );

/** True if `generation` is the parent of `otherGeneration`. */
QV_API QV_BOOL qvGenerationIsParent( QV_GENERATION *generation, QV_GENERATION *otherGeneration );

/** True if `generation` is a child of `otherGeneration`. */
QV_API QV_BOOL qvGenerationIsChild( QV_GENERATION *generation, QV_GENERATION *otherGeneration );

/** True if `generation` is the parent of `otherGeneration`, or of an ancestor of it; no generation is its own ancestor.
    Takes a step for each generation from `otherGeneration` up to `generation`, or up to the root. */
QV_API QV_BOOL qvGenerationIsAncestor( QV_GENERATION *generation, QV_GENERATION *otherGeneration );

/** True if `otherGeneration` is an ancestor of `generation`; costs the same. */
QV_API QV_BOOL qvGenerationIsDescendant( QV_GENERATION *generation, QV_GENERATION *otherGeneration );

/** True if `genA` comes before `genB` in the order of paths. */
QV_API QV_BOOL qvGenerationIsOlder( QV_GENERATION *genA, QV_GENERATION *genB );

/** True if `genA` comes after `genB` in the order of paths. */
QV_API QV_BOOL qvGenerationIsYounger( QV_GENERATION *genA, QV_GENERATION *genB );

#endif
