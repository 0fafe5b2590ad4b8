#include "qv/base/qv_generation_mutex.h"

#include "qv/base/qv_dict.h"
#include "qv/base/qv_generation_private.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/runtime/qv_ref.h"

struct QV_GENERATION_MUTEX : QV_OBJ
{
    QV_MONITOR *monitor;     // guards the Dict
    QV_DICT    *generations; // those that are in, as key and value
};

namespace
{
void freeGenerationMutex( QV_OBJ *thisObj )
{
    QV_GENERATION_MUTEX *mutex = qvGenerationMutexFrom( thisObj );
    qv::drop( mutex->monitor );
    qv::drop( mutex->generations );
}
} // namespace

QV___FAMILY( GenerationMutex, QV_GENERATION_MUTEX, freeGenerationMutex, nullptr, nullptr )

QV_GENERATION_MUTEX *qvGenerationMutexCreate( void )
{
    QV_GENERATION_MUTEX *mutex = qv::create< QV_GENERATION_MUTEX >( qvGenerationMutexSort() );
    mutex->monitor             = qvMonitorCreate();
    mutex->generations         = qvDictCreate();

    return mutex;
}

QV_BOOL qvGenerationMutexTryRegister( QV_GENERATION_MUTEX *mutex, QV_GENERATION *generation )
{
    QV_CHECK( mutex );
    QV_CHECK( generation );

    qv::HeldMonitor held( mutex->monitor );

    for( QV_GENERATION *step = generation; step; step = step->parent )
        if( qvDictHasObjKey( mutex->generations, step ) )
            return QV_FALSE;

    qvDictSetObjKey( &mutex->generations, generation, generation );

    return QV_TRUE;
}

void qvGenerationMutexUnregister( QV_GENERATION_MUTEX *mutex, QV_GENERATION *generation )
{
    QV_CHECK( mutex );
    QV_CHECK( generation );

    qv::HeldMonitor held( mutex->monitor );
    qvDictDelObjKey( &mutex->generations, generation );
}
