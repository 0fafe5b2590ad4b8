// Has the functions of the C library that each start and stop calls bound when the library is loaded. The linker does so
// with a function whose address is taken. Others are bound by their first call, which takes half as long again, since it
// saves and restores all vector registers around the look-up. A function that is left out of the list costs a start a
// fifth of a microsecond; one that no start calls, a third of one. LD_DEBUG=bindings tells which are bound when.

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/utsname.h>
#include <time.h>
#include <unistd.h>
#include <wchar.h>

namespace
{
template< class... Functions >
inline void takeAddresses( Functions *...functions )
{
    ( [functions] { asm volatile( "" : : "r"( functions ) ); }(), ... );
}

// Never called: that it is there is enough.
__attribute__( ( used ) ) void bindWithLibrary()
{
    takeAddresses(
        clock_getres, clock_gettime, close, dl_iterate_phdr, faccessat, getenv, gethostname, malloc, memcpy, memmove,
        memset, open, pthread_cond_broadcast, pthread_cond_destroy, pthread_cond_init, pthread_getspecific,
        pthread_key_create, pthread_key_delete, pthread_mutex_destroy, pthread_mutex_init, pthread_mutex_lock,
        pthread_mutex_unlock, pthread_setspecific, read, sem_destroy, sem_init, sigaction, sigaltstack, sigemptyset,
        srand, strlen, strnlen, time, uname, wmemcmp );
}
} // namespace
