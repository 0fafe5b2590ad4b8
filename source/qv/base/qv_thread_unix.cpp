#include "qv/base/qv_counter.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_signal.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_thread.h"
#include "qv/base/qv_thread_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars.h"

#include <limits.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/prctl.h>

struct QV_THREAD : QV_OBJ
{
    QV_STRING      *threadName;
    QV_THREAD_FUNC  threadFunc; // null in an encapsulated thread
    QV_INT          prio;
    QV_OBJ         *argument; // or null; like the fields below, but for the signal, used by the thread itself only
    QV_SIGNAL      *endSignal;
    pthread_t       nativeThread;
    void           *previousThread; // what the key held before an encapsulation
    qv::SignalStack signalStack;
    QV_DICT        *keys;
};

namespace
{
const pthread_key_t NO_KEY = ~pthread_key_t( 0 );

pthread_key_t tlsKey        = NO_KEY;  // a thread's QV_THREAD, without a reference of its own
QV_COUNTER   *threadCounter = nullptr; // of all threads that are spawned or encapsulated

// A thread that has counted itself out of `threadCounter` still runs code of the library. A spawned thread leaves that
// code when it returns to the C library, which then calls sem_post() on `leftThreads`, the destructor and the value of
// `leftKey`. The stop waits for these, so that no code of the library runs after it and it can be unloaded.
pthread_key_t leftKey = NO_KEY;
sem_t         leftThreads;
int32_t       spawnedThreads = 0; // atomic; those for which nobody has waited at `leftThreads` yet

QV_THREAD *currentThread()
{
    return static_cast< QV_THREAD * >( pthread_getspecific( tlsKey ) );
}

void setCurrentThread( void *thread, const char *failure )
{
    if( pthread_setspecific( tlsKey, thread ) )
        qv___Abort( failure, QV___SOURCE, __LINE__, nullptr );
}

void createKey( pthread_key_t *key, void ( *destructor )( void * ) )
{
    if( pthread_key_create( key, destructor ) )
        qv___Abort( "failed to create TLS key", QV___SOURCE, __LINE__, nullptr );
}

void deleteKey( pthread_key_t *key )
{
    if( pthread_key_delete( *key ) )
        qv___Abort( "failed to delete TLS key", QV___SOURCE, __LINE__, nullptr );

    *key = NO_KEY;
}

void freeThread( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_THREAD *thread = qvThreadFrom( thisObj );
    qv::drop( thread->threadName );
    qv::drop( thread->argument );
    qv::drop( thread->endSignal );
    qv::drop( thread->keys );
}

QV_STRING *threadToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return qvThreadName( qvThreadFrom( thisObj ) );
}

// Fills the fields. Takes over the reference to the name, retains the argument.
void fillThread( QV_THREAD *thread, QV_STRING *threadName, QV_THREAD_FUNC threadFunc, QV_INT prio, QV_OBJ *argument )
{
    thread->threadName   = threadName;
    thread->threadFunc   = threadFunc;
    thread->prio         = prio;
    thread->argument     = qv::Ref< QV_OBJ >::share( argument ).give();
    thread->endSignal    = qvSignalCreate();
    thread->nativeThread = {};
    thread->keys         = qvDictCreate();
}

// The last steps of a thread's end, when `tlsKey` no longer holds the object: releases what only the thread could reach
// and its own reference, then asserts the end. The counter comes last: when it is 0, all ends have been asserted.
void endThread( QV_THREAD *thread )
{
    qv::release( thread->argument );
    thread->argument = nullptr;
    qv::release( thread->keys );
    thread->keys = nullptr;

    qv::Ref< QV_SIGNAL > endSignal = qv::Ref< QV_SIGNAL >::share( thread->endSignal );
    qv::release( thread );
    qvSignalAssert( endSignal );
    endSignal.reset();

    if( threadCounter )
        qvCounterDecrement( threadCounter );
}

// The scheduler's priority for one of the library's.
int schedulingPriority( QV_INT prio )
{
    QV_INT minPrio = sched_get_priority_min( SCHED_RR );
    QV_INT maxPrio = sched_get_priority_max( SCHED_RR );

    if( minPrio == -1 || maxPrio == -1 )
        qv___Abort( "failed to get scheduling priorities", QV___SOURCE, __LINE__, nullptr );

    QV_CHECK( maxPrio >= minPrio );

    return static_cast< int >( minPrio + ( maxPrio - minPrio ) * prio / 6 );
}

// The attributes of a new thread, for a scope.
class Attributes
{
public:
    explicit Attributes( QV_INT prio )
    {
        if( pthread_attr_init( &attributes_ ) || pthread_attr_setdetachstate( &attributes_, PTHREAD_CREATE_DETACHED ) )
            qv___Abort( "failed to initialize thread attributes", QV___SOURCE, __LINE__, nullptr );

        sched_param param    = {};
        param.sched_priority = schedulingPriority( prio );

        if( pthread_attr_setschedpolicy( &attributes_, SCHED_RR )
            || pthread_attr_setschedparam( &attributes_, &param ) )
            qv___Abort( "failed to set scheduling parameters", QV___SOURCE, __LINE__, nullptr );
    }

    ~Attributes()
    {
        if( pthread_attr_destroy( &attributes_ ) )
            qv___Abort( "failed to destroy thread attributes", QV___SOURCE, __LINE__, nullptr );
    }

    Attributes( const Attributes & )            = delete;
    Attributes &operator=( const Attributes & ) = delete;

    const pthread_attr_t *get() const
    {
        return &attributes_;
    }

private:
    pthread_attr_t attributes_;
};
} // namespace

QV___FAMILY( Thread, QV_THREAD, freeThread, nullptr, threadToString )

void qv___ThreadStartup( void )
{
    createKey( &tlsKey, nullptr );
    createKey( &leftKey, reinterpret_cast< void ( * )( void * ) >( reinterpret_cast< void ( * )() >( sem_post ) ) );
    sem_init( &leftThreads, 0, 0 );

    threadCounter = nullptr;
    qv___ThreadEncapsulateBegin( nullptr );
    threadCounter = qvCounterCreate();
    qvCounterIncrement( threadCounter );
}

void qv___ThreadShutdown( void )
{
    qvCounterDecrement( threadCounter );
    qvCounterWaitZero( threadCounter );
    QV_ASSERT( qv___AtomicLoad32( &spawnedThreads ) >= 0 );

    for( ; spawnedThreads > 0; spawnedThreads-- )
        while( sem_wait( &leftThreads ) )
            continue; // a signal handler ran

    qv::release( threadCounter );
    threadCounter = nullptr;
    qv___ThreadEncapsulateEnd();
    qv::freeSignalStacks();

    sem_destroy( &leftThreads );
    deleteKey( &leftKey );
    deleteKey( &tlsKey );
}

/* Spawning and ending -------------------------------------------------------------------------------------------- */

void *qv___ThreadUnixStart( void *object )
{
    QV_THREAD *thread = static_cast< QV_THREAD * >( object );
    QV_CHECK( thread->threadName );
    QV_CHECK( thread->threadFunc );

    char name[16] = {}; // the system keeps 15 bytes and the terminator
    qvCharsConvertToUtf8(
        name, sizeof( name ) - 1, qv::chars( thread->threadName ), thread->threadName->length, QV_FALSE );
    prctl( PR_SET_NAME, name );

    qv::beginSignalStack( &thread->signalStack );

    if( pthread_setspecific( leftKey, &leftThreads ) )
        qv___Abort( "failed to set thread-specific data", QV___SOURCE, __LINE__, nullptr );

    setCurrentThread( thread, "failed to set thread-specific data" );
    thread->threadFunc();
    setCurrentThread( nullptr, "failed to release thread-specific data" );
    qv::endSignalStack( &thread->signalStack );
    endThread( thread );

    return nullptr;
}

QV_THREAD *qv___ThreadCreate( QV_STRING *threadName, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio )
{
    QV_THREAD *thread = qv::create< QV_THREAD >( qvThreadSort() );
    fillThread( thread, qv::retain( threadName ), threadFunc, prio, argument );
    thread->previousThread = nullptr;

    return thread;
}

QV_BOOL qv___ThreadTryStart( QV_THREAD *thread )
{
    Attributes attributes( thread->prio );

    // Takes the posts of threads that have left since, so that the semaphore cannot overflow.
    while( sem_trywait( &leftThreads ) == 0 )
    {
        qv___AtomicAdd32( &spawnedThreads, -1 );
        QV_ASSERT( qv___AtomicLoad32( &spawnedThreads ) >= 0 );
    }

    qv::Ref< QV_THREAD > own = qv::Ref< QV_THREAD >::share( thread ); // the new thread's
    qvCounterIncrement( threadCounter );
    qv___AtomicAdd32( &spawnedThreads, 1 );

    if( pthread_create( &thread->nativeThread, attributes.get(), qv___ThreadUnixStart, own.get() ) )
    {
        qv___AtomicAdd32( &spawnedThreads, -1 );
        own.reset();
        qvCounterDecrement( threadCounter );
        return QV_FALSE;
    }

    static_cast< void >( own.give() );
    return QV_TRUE;
}

QV_THREAD *qvThreadTrySpawn( QV_STRING *threadName, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio )
{
    QV_CHECK( threadName );
    QV_CHECK( threadFunc );
    QV_CHECK( QV_THREAD_PRIORITY_OK( prio ) );

    qv::Ref< QV_THREAD > thread( qv___ThreadCreate( threadName, threadFunc, argument, prio ) );
    return qv___ThreadTryStart( thread ) ? thread.give() : nullptr;
}

QV_THREAD *qvThreadTrySpawnCstr(
    const char *threadName, QV_INT length, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio )
{
    qv::Ref< QV_STRING > name( qvStringCreateFromCstr( threadName, length ) );
    return qvThreadTrySpawn( name, threadFunc, argument, prio );
}

QV_THREAD *qvThreadTrySpawnWcstr(
    const wchar_t *threadName, QV_INT length, QV_THREAD_FUNC threadFunc, QV_OBJ *argument, QV_INT prio )
{
    qv::Ref< QV_STRING > name( qvStringCreateFromWcstr( threadName, length ) );
    return qvThreadTrySpawn( name, threadFunc, argument, prio );
}

QV_BOOL qvThreadEnd( QV_THREAD *thread )
{
    QV_CHECK( thread );
    return qvSignalAsserted( thread->endSignal );
}

void qvThreadEndAddSignalable( QV_THREAD *thread, QV_SIGNALABLE *sigb )
{
    QV_CHECK( thread );
    QV_CHECK( sigb );

    qvSignalAddSignalable( thread->endSignal, sigb );
}

void qvThreadEndDelSignalable( QV_THREAD *thread, QV_SIGNALABLE *sigb )
{
    QV_CHECK( thread );
    QV_CHECK( sigb );

    qvSignalDelSignalable( thread->endSignal, sigb );
}

void qvThreadJoin( QV_THREAD *thread )
{
    QV_CHECK( thread );

    qvThreadCheckEncapsulated();
    qvSignalWait( thread->endSignal );
}

/* Encapsulation -------------------------------------------------------------------------------------------------- */

void qvThreadEncapsulate( QV_THREAD_FUNC threadFunc, QV_OBJ *argument )
{
    QV_CHECK( threadFunc );

    qv___ThreadEncapsulateBegin( argument );
    threadFunc();
    qv___ThreadEncapsulateEnd();
}

void qv___ThreadEncapsulateBegin( QV_OBJ *argument )
{
    QV_CHECK( !qvThreadEncapsulated() );

    QV_THREAD *thread      = qv::create< QV_THREAD >( qvThreadSort() );
    thread->previousThread = pthread_getspecific( tlsKey );
    setCurrentThread( thread, "failed to set thread-specific data" );
    qv::beginSignalStack( &thread->signalStack );

    QV_STRING *name = qvStringCreateFromCstr( "qv___ThreadEncapsulateBegin", -1 );
    fillThread( thread, name, nullptr, QV_THREAD_PRIORITY_NORMAL, argument );

    if( threadCounter )
        qvCounterIncrement( threadCounter );
}

void qv___ThreadEncapsulateEnd( void )
{
    QV_THREAD *thread = currentThread();
    QV_CHECK( thread );

    setCurrentThread( thread->previousThread, "failed to restore old tls key" );
    qv::endSignalStack( &thread->signalStack );
    endThread( thread );
}

QV_BOOL qvThreadEncapsulated( void )
{
    return currentThread() ? QV_TRUE : QV_FALSE;
}

void qvThreadCheckEncapsulated( void )
{
    qv::checkRun();

    if( !qvThreadEncapsulated() )
        qv___Abort( nullptr, QV___SOURCE, __LINE__, nullptr );
}

/* The calling thread --------------------------------------------------------------------------------------------- */

QV_THREAD *qvThreadThis( void )
{
    qv::checkRun();
    QV_THREAD *thread = currentThread();
    QV_CHECK( thread );

    return qv::retain( thread );
}

QV_INT qvThreadPriority( void )
{
    qv::checkRun();
    QV_THREAD *thread = currentThread();
    QV_CHECK( thread );

    return thread->prio;
}

void qvThreadYield( void )
{
    qvThreadCheckEncapsulated();
    sched_yield();
}

QV_OBJ *qvThreadUnlatchArgument( void )
{
    qv::checkRun();
    QV_THREAD *thread = currentThread();
    QV_CHECK( thread );

    return std::exchange( thread->argument, nullptr );
}

QV_OBJ *qvThreadKey( QV_OBJ *key )
{
    QV_THREAD *thread = currentThread();
    QV_CHECK( thread );

    return qvDictObjKey( thread->keys, key );
}

QV_BOOL qvThreadHasKey( QV_OBJ *key )
{
    QV_THREAD *thread = currentThread();
    QV_CHECK( thread );

    return qvDictHasObjKey( thread->keys, key );
}

void qvThreadSetKey( QV_OBJ *key, QV_OBJ *val )
{
    QV_CHECK( val );

    QV_THREAD *thread = currentThread();
    QV_CHECK( thread );

    qvDictSetObjKey( &thread->keys, key, val );
}

void qvThreadDelKey( QV_OBJ *key )
{
    QV_THREAD *thread = currentThread();
    QV_CHECK( thread );

    qvDictDelObjKey( &thread->keys, key );
}

/* Names ---------------------------------------------------------------------------------------------------------- */

QV_STRING *qvThreadName( QV_THREAD *thread )
{
    QV_CHECK( thread );
    return qv::retain( thread->threadName );
}

QV_BOOL qv___ThreadTryFreeze( QV_THREAD *thread )
{
    QV_CHECK( thread );
    return QV_FALSE;
}
