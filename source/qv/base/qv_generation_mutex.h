/** @file
    GenerationMutex: a set of generations. A generation cannot be registered while it or an ancestor of it is.

        if( qvGenerationMutexTryRegister( mutex, generation ) )
        {
            ...
            qvGenerationMutexUnregister( mutex, generation );
        }

    Only ancestors are looked for, one by one: a registered child doesn't keep its parent out. Any thread may call any
    function. Null ends the process. */

#ifndef QV_GENERATION_MUTEX_H
#define QV_GENERATION_MUTEX_H

#include "qv/sys/qv_types.h"

QV_FAMILY( GenerationMutex, QV_GENERATION_MUTEX )

/** Returns a new mutex without generations, which belongs to the caller. */
QV_API QV_GENERATION_MUTEX *qvGenerationMutexCreate( void );

/** Registers a generation, which the mutex retains. False, and no change, if it or an ancestor of it is registered
    already. Takes one look into a Dict for the generation and for each ancestor. */
QV_API QV_BOOL qvGenerationMutexTryRegister( QV_GENERATION_MUTEX *mutex, QV_GENERATION *generation );

/** Ends the registration of a generation, if it is registered. */
QV_API void qvGenerationMutexUnregister( QV_GENERATION_MUTEX *mutex, QV_GENERATION *generation );

#endif
