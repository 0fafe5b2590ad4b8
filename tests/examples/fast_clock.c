/* Linked into a program it lets nobody on the main thread wait for a time: a timed wait runs out at once, and the clock is
   set to its end. */

#define _GNU_SOURCE

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <stdatomic.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

static _Atomic long long ahead; /* of the system's clock, in nanoseconds */

static long long nanoseconds( const struct timespec *ts )
{
    return ts->tv_sec * 1000000000LL + ts->tv_nsec;
}

static struct timespec timeOf( long long ns )
{
    return ( struct timespec ){ ns / 1000000000LL, (long)( ns % 1000000000LL ) };
}

int clock_gettime( clockid_t id, struct timespec *ts )
{
    int result = (int)syscall( SYS_clock_gettime, id, ts );

    if( result == 0 && id == CLOCK_REALTIME )
        *ts = timeOf( nanoseconds( ts ) + ahead );

    return result;
}

int pthread_cond_timedwait( pthread_cond_t *cond, pthread_mutex_t *mutex, const struct timespec *end )
{
    if( getpid() == (pid_t)syscall( SYS_gettid ) )
    {
        struct timespec now;
        clock_gettime( CLOCK_REALTIME, &now );

        if( nanoseconds( end ) > nanoseconds( &now ) )
            ahead += nanoseconds( end ) - nanoseconds( &now );

        return ETIMEDOUT;
    }

    int ( *real )( pthread_cond_t *, pthread_mutex_t *, const struct timespec * );
    *(void **)&real           = dlsym( RTLD_NEXT, "pthread_cond_timedwait" );
    struct timespec systemEnd = timeOf( nanoseconds( end ) - ahead );

    return real( cond, mutex, &systemEnd );
}
