/** @file
    Locks as scopes, and functions with what they capture as threads and as targets of signals, alerts and timers.

        qv::Monitor monitor;
        QV_INT      done = 0;
        {
            qv::Thread worker( "worker", [&] { qv::Monitor::Lock lock( monitor ); done++; } );
            qv::Timer  timer( [&] { qv::print( "%s\n", "still at it" ); } );
            timer.schedule( 1500 );
        }                               // the timer fires no more, and the worker has ended

    The function of each lives as long as the object here: its end waits for a call that is running, and after it there
    is none. So none of these objects may end in its own function, and a caller must not hold then what the function
    waits for. */

#ifndef QV_THREADS_HPP
#define QV_THREADS_HPP

#include "qv/cpp/qv_object.hpp"

#include <atomic>
#include <new>

namespace qv
{
/* Locks ---------------------------------------------------------------------------------------------------------- */

/** Mutual exclusion. Copies are the same monitor. */
class Monitor : public Reference< Monitor, QV_MONITOR >
{
public:
    using Reference::Reference;

    /** A new monitor that no thread holds. */
    Monitor() : Monitor( own( qvMonitorCreate() ) )
    {
    }

    /** Holds a monitor from its construction, which waits for it, to its end. Not recursive. */
    class [[nodiscard]] Lock
    {
    public:
        /** Waits until no thread holds the monitor. */
        explicit Lock( const Monitor &monitor ) : monitor_( Held< QV_MONITOR >::share( monitor.c() ) )
        {
            qvMonitorEnter( monitor_.c() );
        }

        Lock( const Lock & )            = delete;
        Lock &operator=( const Lock & ) = delete;

        ~Lock()
        {
            qvMonitorLeave( monitor_.c() );
        }

    private:
        Held< QV_MONITOR > monitor_;
    };
};

/** Many shared users or one exclusive user. Copies are the same region. */
class Region : public Reference< Region, QV_REGION >
{
public:
    using Reference::Reference;

    /** A new region without users. */
    Region() : Region( own( qvRegionCreate() ) )
    {
    }

    /** Is in a region from its construction, which waits for it, to its end. Not recursive. */
    template< bool EXCLUSIVE >
    class [[nodiscard]] Lock
    {
    public:
        /** Waits until the region lets it in. */
        explicit Lock( const Region &region ) : region_( Held< QV_REGION >::share( region.c() ) )
        {
            qvRegionEnter( region_.c(), EXCLUSIVE );
        }

        Lock( const Lock & )            = delete;
        Lock &operator=( const Lock & ) = delete;

        ~Lock()
        {
            qvRegionLeave( region_.c() );
        }

    private:
        Held< QV_REGION > region_;
    };

    using SharedLock    = Lock< false >; /**< for readers */
    using ExclusiveLock = Lock< true >;  /**< for the writer */
};

/* Functions ------------------------------------------------------------------------------------------------------ */

namespace detail
{
/** A function of any type on the heap. */
class Function
{
public:
    template< class F >
    explicit Function( F function ) :
        function_( new F( std::move( function ) ) ), call_( []( void *f ) { ( *static_cast< F * >( f ) )(); } ),
        end_( []( void *f ) { delete static_cast< F * >( f ); } )
    {
    }

    Function( const Function & )            = delete;
    Function &operator=( const Function & ) = delete;

    ~Function()
    {
        end_( function_ );
    }

    void operator()() const
    {
        call_( function_ );
    }

    /** What carries a function through C: its address in a boxed integer. */
    [[nodiscard]] Held< QV_BOXED_INT > carrier() const
    {
        return Held< QV_BOXED_INT >::own(
            qvBoxedIntCreate( static_cast< QV_INT >( reinterpret_cast< intptr_t >( this ) ) ) );
    }

    static Function *carriedBy( QV_OBJ *carrier )
    {
        return reinterpret_cast< Function * >(
            static_cast< intptr_t >( qvBoxedIntValue( qvBoxedIntFrom( carrier ) ) ) );
    }

    static void fire( QV_OBJ *carrier )
    {
        ( *carriedBy( carrier ) )();
    }

private:
    void *function_;
    void ( *call_ )( void * );
    void ( *end_ )( void * );
};
} // namespace detail

/** A thread that runs a function. Its end waits for it, as join() does; only a thread that the library knows may do
    that. */
class Thread
{
public:
    /** Starts the thread, if the system has one: started() tells. The priority is a QV_THREAD_PRIORITY value. */
    template< std::invocable F >
    Thread( const char *name, F function, QV_INT priority = QV_THREAD_PRIORITY_NORMAL ) :
        function_( std::move( function ) ), carrier_( function_.carrier() ),
        thread_( Held< QV_THREAD >::ownOptional( qvThreadTrySpawnCstr(
            name, -1,
            []
            {
                auto carrier = Object::own( qvThreadUnlatchArgument() );
                detail::Function::fire( carrier.c() );
            },
            qvBoxedIntObj( carrier_.c() ), priority ) ) )
    {
    }

    Thread( const Thread & )            = delete;
    Thread &operator=( const Thread & ) = delete;

    ~Thread()
    {
        join();
    }

    /** True if the system has started it. */
    [[nodiscard]] bool started() const
    {
        return thread_.has_value();
    }

    /** Waits until the function has returned. */
    void join()
    {
        if( thread_ )
            qvThreadJoin( thread_->c() );
    }

private:
    detail::Function                   function_;
    Held< QV_BOXED_INT >               carrier_;
    std::optional< Held< QV_THREAD > > thread_;
};

/** A function as a target of signals, which call it on the thread that asserts: see qv_signal.h for what it must not
    do. */
class Signalable
{
public:
    /** A target that no signal has yet. */
    template< std::invocable F >
    explicit Signalable( F function ) :
        function_( std::move( function ) ), carrier_( function_.carrier() ),
        target_(
            Held< QV_SIGNALABLE >::own( qvSignalableCreate( detail::Function::fire, qvBoxedIntObj( carrier_.c() ) ) ) )
    {
    }

    Signalable( const Signalable & )            = delete;
    Signalable &operator=( const Signalable & ) = delete;

    /** Lends the target to functions like qvSignalAddSignalable(). Nobody else may keep a reference to it. */
    [[nodiscard]] Lent< QV_SIGNALABLE > c() const &
    {
        return target_.c();
    }

private:
    detail::Function      function_;
    Held< QV_BOXED_INT >  carrier_;
    Held< QV_SIGNALABLE > target_; // ends first, and waits for calls
};

/** The same for alerts, which call the function on the thread that sets them. */
class Alertable
{
public:
    /** A target that no alert has yet. */
    template< std::invocable F >
    explicit Alertable( F function ) :
        function_( std::move( function ) ), carrier_( function_.carrier() ),
        target_(
            Held< QV_ALERTABLE >::own( qvAlertableCreate( detail::Function::fire, qvBoxedIntObj( carrier_.c() ) ) ) )
    {
    }

    Alertable( const Alertable & )            = delete;
    Alertable &operator=( const Alertable & ) = delete;

    /** Lends the target to functions like qvAlertAddAlertable(). Nobody else may keep a reference to it. */
    [[nodiscard]] Lent< QV_ALERTABLE > c() const &
    {
        return target_.c();
    }

private:
    detail::Function     function_;
    Held< QV_BOXED_INT > carrier_;
    Held< QV_ALERTABLE > target_; // ends first, and waits for calls
};

/** A function that the library's thread of timers calls once for each time that it is scheduled. It should be short. */
class Timer
{
public:
    /** A timer that is not scheduled. */
    template< std::invocable F >
    explicit Timer( F function ) :
        function_( std::move( function ) ), slot_( new( qvMemAlloc( sizeof( Slot ) ) ) Slot ),
        memory_( Held< QV_BUFFER >::own( qvBufferCreateFromBytesUse( slot_, sizeof( Slot ) ) ) ),
        timer_( Held< QV_TIMER >::own( qvTimerCreate( fire, qvBufferObj( memory_.c() ) ) ) )
    {
        slot_->function = &function_;
    }

    Timer( const Timer & )            = delete;
    Timer &operator=( const Timer & ) = delete;

    ~Timer()
    {
        qvTimerUnschedule( timer_.c() );
        slot_->lock();
        slot_->function = nullptr;
        slot_->unlock();
    }

    /** Schedules it to fire after so many milliseconds, in place of an earlier schedule. Its own function may do so. */
    void schedule( QV_INT milliseconds )
    {
        qvTimerSchedule( timer_.c(), milliseconds );
    }

    /** Cancels the schedule, if there is one. Does not wait for a call that is running. */
    void unschedule()
    {
        qvTimerUnschedule( timer_.c() );
    }

    /** True from scheduling until it fires or is unscheduled. */
    [[nodiscard]] bool scheduled() const
    {
        return qvTimerScheduled( timer_.c() );
    }

private:
    // What the timer calls, or null when that has ended. The library keeps it until a call has returned.
    struct Slot
    {
        void lock()
        {
            while( busy.exchange( 1, std::memory_order_acquire ) )
                busy.wait( 1 );
        }

        void unlock()
        {
            busy.store( 0, std::memory_order_release );
            busy.notify_one();
        }

        std::atomic< int > busy     = 0;
        detail::Function  *function = nullptr;
    };

    static void fire( QV_OBJ *arg )
    {
        void *memory = const_cast< uint8_t * >( qvBufferBacking( qvBufferFrom( arg ) ) );
        Slot *slot   = static_cast< Slot * >( memory );
        slot->lock();

        if( slot->function )
            ( *slot->function )();

        slot->unlock();
    }

    detail::Function  function_;
    Slot             *slot_;
    Held< QV_BUFFER > memory_; // of the slot
    Held< QV_TIMER >  timer_;
};
} // namespace qv

#endif
