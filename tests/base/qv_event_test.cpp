// Signals and alerts: what both have in common is tested for both. And sleeping, which ends with a signal.

#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_alert.h"
#include "qv/base/qv_alertable_private.h"
#include "qv/base/qv_barrier.h"
#include "qv/base/qv_condset.h"
#include "qv/base/qv_signal.h"
#include "qv/base/qv_signalable_private.h"
#include "qv/base/qv_sleep.h"
#include "qv/base/qv_timestamp.h"

#include <array>
#include <atomic>
#include <barrier>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
// The functions of one family of events. For the other one the family is a target of another kind.
#define EVENT_FAMILY( Self, SELF, Another, ANOTHER, fireName, happenedName, otherHappenedName )                        \
    struct Self##Family                                                                                                \
    {                                                                                                                  \
        using Event = QV_##SELF;                                                                                       \
        using Other = QV_##ANOTHER;                                                                                    \
                                                                                                                       \
        static constexpr auto create        = qv##Self##Create;                                                        \
        static constexpr auto fire          = qv##Self##fireName;                                                      \
        static constexpr auto happened      = qv##Self##happenedName;                                                  \
        static constexpr auto otherHappened = qv##Another##otherHappenedName;                                          \
        static constexpr auto createOther   = qv##Another##Create;                                                     \
        static constexpr auto wait          = qv##Self##Wait;                                                          \
        static constexpr auto waitTimed     = qv##Self##WaitTimed;                                                     \
        static constexpr auto add           = qv##Self##Add##Self##able;                                               \
        static constexpr auto del           = qv##Self##Del##Self##able;                                               \
        static constexpr auto addSame       = qv##Self##Add##Self;                                                     \
        static constexpr auto delSame       = qv##Self##Del##Self;                                                     \
        static constexpr auto addOther      = qv##Self##Add##Another;                                                  \
        static constexpr auto delOther      = qv##Self##Del##Another;                                                  \
        static constexpr auto addBarrier    = qv##Self##AddBarrier;                                                    \
        static constexpr auto delBarrier    = qv##Self##DelBarrier;                                                    \
        static constexpr auto handle        = qv##Self##ableCreate;                                                    \
        static constexpr auto handleBarrier = qv##Self##ableCreateBarrier;                                             \
        static constexpr auto handleCondset = qv##Self##ableCreateCondset;                                             \
        static constexpr auto handleSignal  = qv##Self##ableCreateSignal;                                              \
        static constexpr auto handleAlert   = qv##Self##ableCreateAlert;                                               \
        static constexpr auto handleFire    = qv___##Self##able##Self;                                                 \
    };

EVENT_FAMILY( Signal, SIGNAL, Alert, ALERT, Assert, Asserted, IsSet )
EVENT_FAMILY( Alert, ALERT, Signal, SIGNAL, Set, IsSet, Asserted )

// What a callback leads to.
struct Call
{
    std::atomic< int >      count{ 0 };
    std::function< void() > action = [] {};
    Ref< QV_OBJ >           arg    = call( [this] { count++, action(); } );
};

// One target of each other kind.
template< class F >
struct Chain
{
    Ref< typename F::Event > same{ F::create() };
    Ref< typename F::Other > other{ F::createOther() };
    Ref< QV_BARRIER >        barrier{ qvBarrierCreate( QV_TRUE ) };

    void addTo( typename F::Event *event )
    {
        F::addSame( event, same );
        F::addOther( event, other );
        F::addBarrier( event, barrier );
    }

    void delFrom( typename F::Event *event )
    {
        F::delSame( event, same );
        F::delOther( event, other );
        F::delBarrier( event, barrier );
    }

    int fired()
    {
        return F::happened( same ) + F::otherHappened( other ) + !qvBarrierIsBlocked( barrier );
    }

    // The references of others.
    int kept()
    {
        return references( same.get() ) + references( other.get() ) + references( barrier.get() ) - 3;
    }
};

template< class Family >
class Event : public testing::Test
{
};

using Families = testing::Types< SignalFamily, AlertFamily >;
} // namespace

TYPED_TEST_SUITE( Event, Families );

TYPED_TEST( Event, FiresAllKindsOfTargetsOnceAndInOrder )
{
    using F = TypeParam;

    Ref        event( F::create() );
    Chain< F > x, y;
    Call       first, second, third, onSame;
    Ref        a( F::handle( callNow, first.arg ) ), b( F::handle( callNow, second.arg ) ),
        c( F::handle( callNow, third.arg ) ), d( F::handle( callNow, onSame.arg ) );

    // The first handle goes first, the others have no order. Other kinds come after them.
    std::vector< int > log;
    first.action  = [&] { log.push_back( 1 ); };
    second.action = [&] { log.push_back( 2 ); };
    third.action  = [&] { log.push_back( 2 ); };
    onSame.action = [&] { log.push_back( F::otherHappened( x.other ) || !qvBarrierIsBlocked( x.barrier ) ? -1 : 3 ); };

    F::add( x.same, d );
    x.addTo( event ), y.addTo( event );

    for( auto handle : { a.get(), b.get(), c.get(), b.get(), a.get() } )
        F::add( event, handle );

    EXPECT_FALSE( F::happened( event ) || F::waitTimed( event, 0 ) || F::waitTimed( event, 5 ) );
    F::fire( event );
    F::fire( event );
    EXPECT_THAT( log, testing::ElementsAre( 1, 2, 2, 3 ) );
    EXPECT_TRUE( F::happened( event ) && F::waitTimed( event, 0 ) && F::waitTimed( event, -1 ) );
    EXPECT_EQ( 6, x.fired() + y.fired() );

    // What is added now fires at once. Nothing is kept.
    Chain< F > z;
    z.addTo( event );
    F::add( event, a );
    EXPECT_EQ( 3, z.fired() );
    EXPECT_EQ( 2, first.count );
    EXPECT_EQ( 0, x.kept() + y.kept() + z.kept() );

    // Each setting of an alert fires the targets that were added since the last one.
    if constexpr( std::is_same_v< F, AlertFamily > )
    {
        for( int round = 1; round <= 3; round++ )
        {
            qvAlertUnset( event );

            for( auto handle : { a.get(), b.get(), c.get() } )
                F::add( event, handle );

            for( int setting = 0; setting < 2; setting++ )
            {
                EXPECT_FALSE( qvAlertIsSet( event ) || qvAlertWaitTimed( event, 1 ) );
                qvAlertSet( event );
                EXPECT_TRUE( qvAlertWaitTimed( event, 0 ) );
                qvAlertUnset( event );
                EXPECT_EQ( 4 + 3 * round, first.count + second.count + third.count );
            }
        }
    }
}

TYPED_TEST( Event, ForgetsDeletedTargets )
{
    using F = TypeParam;

    Ref        event( F::create() );
    Chain< F > x, y;
    Call       first, second, never;
    Ref        a( F::handle( callNow, first.arg ) ), b( F::handle( callNow, second.arg ) ),
        n( F::handle( callNow, never.arg ) );

    x.addTo( event ), y.addTo( event );
    x.delFrom( event ), y.delFrom( event );
    F::add( event, n );
    F::del( event, n );
    F::del( event, n );

    // When the first one has gone, the second can be added once more, and fires for both.
    F::add( event, a );
    F::add( event, b );
    F::del( event, a );
    F::add( event, b );
    F::fire( event );
    EXPECT_EQ( 0, first.count );
    EXPECT_EQ( 2, second.count );

    // An event that ends gives its targets up without firing.
    event.reset( F::create() );
    x.addTo( event ), y.addTo( event );
    F::add( event, n );
    event.reset();
    EXPECT_EQ( 0, x.kept() + y.kept() );
    EXPECT_EQ( 0, never.count + x.fired() + y.fired() );
}

TYPED_TEST( Event, HandlesFireTheirTargetAndStayArmed )
{
    using F = TypeParam;

    Ref        barrier( qvBarrierCreate( QV_TRUE ) );
    Ref        condset( qvCondsetCreate() );
    Ref        signal( qvSignalCreate() );
    Ref        alert( qvAlertCreate() );
    Call       call;
    std::array handles{
        Ref( F::handleBarrier( barrier ) ),    Ref( F::handleCondset( condset, 0x30005 ) ),
        Ref( F::handleSignal( signal ) ),      Ref( F::handleAlert( alert ) ),
        Ref( F::handle( callNow, call.arg ) ),
    };

    for( int round = 1; round <= 2; round++ )
    {
        Ref event( F::create() );

        for( auto &handle : handles )
            F::add( event, handle );

        F::fire( event );
        EXPECT_FALSE( qvBarrierIsBlocked( barrier ) );
        EXPECT_EQ( 5, qvCondsetConditions( condset ) );
        EXPECT_TRUE( qvSignalAsserted( signal ) && qvAlertIsSet( alert ) );
        EXPECT_EQ( round, call.count );
        qvBarrierBlock( barrier );
        qvCondsetSetConditions( condset, 0 );
        qvAlertUnset( alert );
    }

    F::handleFire( handles[0] );
    EXPECT_FALSE( qvBarrierIsBlocked( barrier ) );
}

TYPED_TEST( Event, ReleasedHandlesAreDisarmed )
{
    using F = TypeParam;

    Ref  event( F::create() );
    Call releasing, gone, later;
    Ref  r( F::handle( callNow, releasing.arg ) ), g( F::handle( callNow, gone.arg ) ),
        l( F::handle( callNow, later.arg ) );

    // A callback may release other handles, and references to its own one but for the last.
    releasing.action = [&]
    {
        qv::release( r.get() );
        l.reset();
    };

    F::add( event, r );
    F::add( event, g );
    F::add( event, l );
    g.reset();
    EXPECT_EQ( 1, references( gone.arg.get() ) );

    qv::retain( r.get() );
    F::fire( event );
    EXPECT_EQ( 1, releasing.count );
    EXPECT_EQ( 0, gone.count + later.count );
    EXPECT_EQ( 1, references( later.arg.get() ) );

    // An argument may fire the event when it ends.
    event.reset( F::create() );
    auto fire = []( void *fired ) { F::fire( static_cast< typename F::Event * >( fired ) ); };
    auto fail = []( QV_OBJ * ) { ADD_FAILURE(); };
    Ref  handle( F::handle( fail, Ref( qv::obj( qv___BoxedPointerCreate( event.get(), fire ) ) ) ) );
    F::add( event, handle );
    handle.reset();
    EXPECT_TRUE( F::happened( event ) );
}

TYPED_TEST( Event, ReleasingAHandleWaitsForItsCallback )
{
    using F = TypeParam;

    Ref                 event( F::create() ), running( F::create() );
    Call                call;
    Ref                 handle( F::handle( callNow, call.arg ) );
    std::atomic< bool > finished{ false };

    call.action = [&]
    {
        F::fire( running );
        std::this_thread::sleep_for( std::chrono::milliseconds( 10 ) ); // a chance to be overtaken
        finished = true;
    };
    F::add( event, handle );
    std::thread thread( [&] { F::fire( event ); } );
    F::wait( running );
    handle.reset();
    EXPECT_TRUE( finished );
    thread.join();
}

TYPED_TEST( Event, NoTargetIsMissedWhileOthersComeAndGo )
{
    using F = TypeParam;

    const int THREADS = 4;

    for( int round = 0; round < 200; round++ )
    {
        Ref          event( F::create() );
        std::barrier start( THREADS + 2 );

        onThreads(
            THREADS + 2,
            [&]( int number )
            {
                Chain< F > chain;
                Call       stays;
                auto       dies = std::make_unique< Call >();
                Ref        a( F::handle( callNow, stays.arg ) ), b( F::handle( callNow, dies->arg ) );

                start.arrive_and_wait();

                if( number >= THREADS )
                {
                    for( int i = 0; i < round % 10; i++ )
                        std::this_thread::yield();

                    return F::fire( event );
                }

                F::add( event, b );
                F::add( event, a );
                chain.addTo( event );
                b.reset();
                dies.reset(); // what a callback would touch

                F::wait( event );
                F::wait( chain.same );
                qvBarrierPass( chain.barrier );
                F::del( event, a ); // waits until all have fired
                EXPECT_EQ( 1, stays.count );
                EXPECT_EQ( 3, chain.fired() );
            } );
    }
}

TEST( Signal, TellsWhetherItHasTargets )
{
    Ref signal( qvSignalCreate() ), first( qvSignalCreate() ), second( qvSignalCreate() );
    EXPECT_FALSE( qvSignalWaitTimed( signal, 0 ) );
    EXPECT_FALSE( qvSignalHasSignalables( signal ) ); // a waiter doesn't count

    // One that is not in the first place counts too, but not an empty place for more.
    qvSignalAddSignal( signal, first );
    qvSignalAddSignal( signal, second );
    qvSignalDelSignal( signal, first );
    EXPECT_TRUE( qvSignalHasSignalables( signal ) );
    qvSignalDelSignal( signal, second );
    EXPECT_FALSE( qvSignalHasSignalables( signal ) );
}

TEST( Sleep, EndsWithTheSignalOrTheLimit )
{
    Ref    signal( qvSignalCreate() );
    QV_INT start = qvTimestamp();
    EXPECT_FALSE( qvSleepTimed( signal, 5 ) );
    EXPECT_FALSE( qvSleepTimed( nullptr, 5 ) );
    EXPECT_GE( qvTimestamp() - start, 10 );
    EXPECT_FALSE( qvSignalHasSignalables( signal ) ); // its target is gone

    qvSignalAssert( signal );
    qvSleep( signal );
    EXPECT_TRUE( qvSleepTimed( signal, -1 ) );
}
