/** @file
    GenerationMutex: a set of generations into which none gets while it or an ancestor of it is in.

        if( qvGenerationMutexTryRegister( mutex, generation ) )
        {
            ...
            qvGenerationMutexUnregister( mutex, generation );
        }

    Only ancestors are looked for, one by one: a child that is in doesn't keep its parent out. Callable from any thread.
    Null ends the process. */

#ifndef QV_GENERATION_MUTEX_H
#define QV_GENERATION_MUTEX_H

#include "qv/sys/qv_types.h"

QV_FAMILY( GenerationMutex, QV_GENERATION_MUTEX )

/** A new mutex with nobody in. */
QV_API QV_GENERATION_MUTEX *qvGenerationMutexCreate( void );

/** True if the generation got in; false, and no change, if it or an ancestor of it is in already. */
QV_API QV_BOOL qvGenerationMutexTryRegister( QV_GENERATION_MUTEX *mutex, QV_GENERATION *generation );

/** Takes the generation out, if it is in. */
QV_API void qvGenerationMutexUnregister( QV_GENERATION_MUTEX *mutex, QV_GENERATION *generation );

#endif
