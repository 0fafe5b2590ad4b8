#include "qv/runtime/qv_runtime.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_abort_private.h"
#include "qv/sys/qv_atomic.h"

#include <dlfcn.h>
#include <errno.h>
#include <link.h>
#include <poll.h>
#include <pthread.h>
#include <setjmp.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>
#include <unwind.h>

/* Writing -------------------------------------------------------------------------------------------------------- */

void qv::AbortOutput::flush()
{
    if( stream_ )
    {
        fwrite( buffer_, 1, length_, stream_ );
        length_ = 0;
        return;
    }

    for( size_t at = 0; at < length_; )
    {
        ssize_t written = write( descriptor_, buffer_ + at, length_ - at );

        if( written >= 0 )
        {
            at += static_cast< size_t >( written );
        }
        else if( errno == EAGAIN )
        {
            pollfd writable = { descriptor_, POLLOUT, 0 };
            poll( &writable, 1, -1 );
        }
        else if( errno != EINTR )
        {
            break;
        }
    }

    length_ = 0;
}

void qv::AbortOutput::character( char ch )
{
    if( length_ == sizeof( buffer_ ) )
        flush();

    buffer_[length_++] = ch;
}

void qv::AbortOutput::text( const char *text )
{
    while( *text )
        character( *text++ );
}

void qv::AbortOutput::integer( int value )
{
    unsigned absolute = value < 0 ? 0u - static_cast< unsigned >( value ) : static_cast< unsigned >( value );
    char     digits[12];
    char    *at = digits + sizeof( digits );

    *--at = '\0';

    do
    {
        *--at = static_cast< char >( '0' + absolute % 10 );
        absolute /= 10;
    } while( absolute );

    if( value < 0 )
        *--at = '-';

    text( at );
}

void qv::AbortOutput::hexadecimal( uint64_t value )
{
    if( value )
        text( "0x" );

    char  digits[17];
    char *at = digits + sizeof( digits );

    *--at = '\0';

    do
    {
        *--at = "0123456789abcdef"[value % 16];
        value /= 16;
    } while( value );

    text( at );
}

void qv::AbortOutput::pointer( const void *value )
{
    if( value )
        hexadecimal( reinterpret_cast< uintptr_t >( value ) );
    else
        text( "(nil)" );
}

void qv::AbortOutput::row( const char *name, const char *value )
{
    text( name );
    text( value );
    character( '\n' );
}

/* The stack ------------------------------------------------------------------------------------------------------ */

namespace
{
struct Walk
{
    qv::AbortStack *stack;
    bool            isOwn; // the next frame is that of the function that walks
};

_Unwind_Reason_Code addFrame( _Unwind_Context *context, void *walk )
{
    Walk           *all   = static_cast< Walk * >( walk );
    qv::AbortStack *stack = all->stack;

    if( stack->length == qv::ABORT_FRAMES )
        return _URC_END_OF_STACK;

    int       isFailed = 0;
    uintptr_t address  = _Unwind_GetIPInfo( context, &isFailed );

    if( all->isOwn )
    {
        all->isOwn = false;
        return _URC_NO_REASON;
    }

    if( isFailed && stack->failed < 0 )
        stack->failed = stack->length;

    stack->frames[stack->length++] = reinterpret_cast< void * >( address );
    return _URC_NO_REASON;
}
} // namespace

// With the unwinder that is linked in: backtrace() loads its own at the first call, with memory of a heap that may be
// damaged.
__attribute__( ( noinline ) ) void qv::walkAbortStack( AbortStack *stack )
{
    Walk walk     = { stack, true };
    stack->length = 0;
    stack->failed = -1;
    _Unwind_Backtrace( addFrame, &walk );

    // The outermost frame of some threads has no address.
    if( stack->length > 1 && !stack->frames[stack->length - 1] )
        stack->length--;
}

void qv::writeFrame( AbortOutput *output, const AbortStack &stack, int frame )
{
    void     *address = stack.frames[frame];
    uintptr_t at      = reinterpret_cast< uintptr_t >( address );
    bool      isCall  = frame != stack.failed && at > 0;
    Dl_info   info    = {};
    link_map *map     = nullptr;

    if( dladdr1(
            static_cast< char * >( address ) - isCall, &info, reinterpret_cast< void ** >( &map ), RTLD_DL_LINKMAP )
        && info.dli_fname && info.dli_fname[0] )
    {
        // Without a symbol the address is relative to the file.
        uintptr_t base = info.dli_sname ? reinterpret_cast< uintptr_t >( info.dli_saddr ) : map ? map->l_addr : 0;

        output->text( info.dli_fname );
        output->text( "(" );

        if( info.dli_sname )
            output->text( info.dli_sname );

        if( info.dli_sname || base )
        {
            output->text( at >= base ? "+" : "-" );
            output->hexadecimal( at >= base ? at - base : base - at );
        }

        output->text( ") " );
    }

    output->text( "[" );
    output->pointer( address );
    output->text( "]" );
}

/* Failing -------------------------------------------------------------------------------------------------------- */

namespace
{
int32_t reporter = 0; // atomic; the system's number of the thread that writes the report, or 0

// Where an attempt continues that fails or takes too long. Used by the reporter only.
sigjmp_buf            escape;
volatile sig_atomic_t isAttempt = 0;

int32_t thisThread()
{
    return static_cast< int32_t >( syscall( SYS_gettid ) );
}

void setAction( int signal, void ( *handler )( int ) )
{
    struct sigaction sigact = {};
    sigact.sa_handler       = handler;
    sigact.sa_flags         = SA_ONSTACK;
    sigemptyset( &sigact.sa_mask );
    sigaction( signal, &sigact, nullptr );
}

void setTimer( int milliseconds )
{
    itimerval timer = {};
    timer.it_value  = { milliseconds / 1000, milliseconds % 1000 * 1000 };
    setitimer( ITIMER_REAL, &timer, nullptr );
}

void setMask( int how, int signal )
{
    sigset_t set;
    sigemptyset( &set );
    sigaddset( &set, signal );
    pthread_sigmask( how, &set, nullptr );
}

// The handler of fatal signals during a report: the reporter has failed again and leaves its attempt; another thread
// waits for the end, so that there is one report.
void failAgain( int )
{
    while( qv___AtomicLoad32( &reporter ) != thisThread() )
        pause();

    if( isAttempt )
        siglongjmp( escape, 1 );

    qv::endAbort();
}

// The handler of the timer's signal, which the system sends to any thread.
void timeIsUp( int )
{
    int32_t thread = qv___AtomicLoad32( &reporter );

    if( thread != thisThread() )
        syscall( SYS_tgkill, getpid(), thread, SIGALRM );
    else if( isAttempt )
        siglongjmp( escape, 1 );
}
} // namespace

void qv::enterAbort()
{
    if( qv___AtomicCompareExchange32( &reporter, 0, thisThread() ) != 0 )
        failAgain( 0 );

    for( int signal : FATAL_SIGNALS )
    {
        setAction( signal, failAgain );
        setMask( SIG_UNBLOCK, signal );
    }

    setAction( SIGALRM, timeIsUp );
    setMask( SIG_UNBLOCK, SIGALRM );

    // Neither a closed error stream nor a file that may not grow ends the process before the rest is written.
    setMask( SIG_BLOCK, SIGPIPE );
    setMask( SIG_BLOCK, SIGXFSZ );
}

bool qv::attempt( int milliseconds, void ( *function )( void *context ), void *context )
{
    volatile bool isDone = false;

    if( sigsetjmp( escape, 1 ) == 0 )
    {
        isAttempt = 1;
        setTimer( milliseconds );
        function( context );
        isAttempt = 0;
        isDone    = true;
    }

    isAttempt = 0;
    setTimer( 0 );

    return isDone;
}

// Not by abort() alone: another thread, which waits in failAgain(), may have called it and hold its lock.
void qv::endAbort()
{
    setAction( SIGABRT, SIG_DFL );
    setMask( SIG_UNBLOCK, SIGABRT );
    syscall( SYS_tgkill, getpid(), thisThread(), SIGABRT );
    abort();
}

/* A stack for handlers ------------------------------------------------------------------------------------------- */

namespace
{
// Memory for one alternative stack, outside the heap, which may be damaged. What a thread has given back is kept for other
// threads. The first is static, so that a process with one thread asks the system for none, and never written to but by a
// handler.
struct Room
{
    Room *next;
};

pthread_mutex_t roomsLock = PTHREAD_MUTEX_INITIALIZER;
Room           *rooms     = nullptr;

bool firstIsTaken = false;

void *takeRoom()
{
    pthread_mutex_lock( &roomsLock );
    void *room = rooms;

    if( !firstIsTaken )
    {
        firstIsTaken = true;
        room         = qv::firstSignalStack;
    }
    else if( room )
    {
        rooms = rooms->next;
    }

    pthread_mutex_unlock( &roomsLock );

    return room ? room
                : mmap( nullptr, qv::SIGNAL_STACK_SIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0 );
}

void giveRoom( void *memory )
{
    pthread_mutex_lock( &roomsLock );

    if( memory == qv::firstSignalStack )
    {
        firstIsTaken = false;
    }
    else
    {
        Room *room = static_cast< Room * >( memory );
        room->next = rooms;
        rooms      = room;
    }

    pthread_mutex_unlock( &roomsLock );
}
} // namespace

// If there is no memory for it, a stack overflow ends the process without a report.
void qv::beginSignalStack( SignalStack *stack )
{
    stack->room = nullptr;

    if( qvRuntimeFlags() & QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS )
        return;

    void *room = takeRoom();

    if( room == MAP_FAILED )
        return;

    stack_t own = {};
    own.ss_sp   = room;
    own.ss_size = qv::SIGNAL_STACK_SIZE;

    if( sigaltstack( &own, &stack->previous ) != 0 )
        return giveRoom( room );

    stack->room = room;

    if( !( stack->previous.ss_flags & SS_DISABLE ) && stack->previous.ss_size >= qv::SIGNAL_STACK_SIZE )
        endSignalStack( stack );
}

void qv::endSignalStack( SignalStack *stack )
{
    if( !stack->room )
        return;

    sigaltstack( &stack->previous, nullptr );
    giveRoom( stack->room );
    stack->room = nullptr;
}

void qv::freeSignalStacks()
{
    pthread_mutex_lock( &roomsLock );

    while( Room *room = rooms )
    {
        rooms = room->next;
        munmap( room, qv::SIGNAL_STACK_SIZE );
    }

    pthread_mutex_unlock( &roomsLock );
}
