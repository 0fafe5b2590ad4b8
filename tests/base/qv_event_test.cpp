// What signals and alerts have in common, tested for both.

#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_alert.h"
#include "qv/base/qv_alertable_private.h"
#include "qv/base/qv_barrier.h"
#include "qv/base/qv_condset.h"
#include "qv/base/qv_signal.h"
#include "qv/base/qv_signalable_private.h"

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
// The functions of one family of events, of which the other one is targets of another kind.
#define EVENT_FAMILY( Self, SELF, Another, fireName, happenedName, otherHappenedName )                                 \
    struct Self##Family                                                                                                \
    {                                                                                                                  \
        using Event  = QV_##SELF;                                                                                      \
        using Handle = QV_##SELF##ABLE;                                                                                \
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
        static constexpr auto otherHandle   = qv##Another##ableCreate;                                                 \
        static constexpr auto handleBarrier = qv##Self##ableCreateBarrier;                                             \
        static constexpr auto handleCondset = qv##Self##ableCreateCondset;                                             \
        static constexpr auto handleSignal  = qv##Self##ableCreateSignal;                                              \
        static constexpr auto handleAlert   = qv##Self##ableCreateAlert;                                               \
        static constexpr auto handleFire    = qv___##Self##able##Self;                                                 \
        static constexpr auto addToOther    = qv##Another##Add##Another##able;                                         \
    };

EVENT_FAMILY( Signal, SIGNAL, Alert, Assert, Asserted, IsSet )
EVENT_FAMILY( Alert, ALERT, Signal, Set, IsSet, Asserted )

// What a callback leads to.
struct Call
{
    std::atomic< int >      count{ 0 };
    std::function< void() > action = [] {};
    Ref< QV_OBJ >           arg    = call( [this] { count++, action(); } );

    template< class Family >
    auto handle()
    {
        return Ref( Family::handle( callNow, arg ) );
    }
};

struct Name
{
    template< class Family >
    static std::string GetName( int )
    {
        return std::is_same_v< Family, SignalFamily > ? "Signal" : "Alert";
    }
};

template< class Family >
class Event : public testing::Test
{
};

using Families = testing::Types< SignalFamily, AlertFamily >;
} // namespace

TYPED_TEST_SUITE( Event, Families, Name );

TYPED_TEST( Event, FiresAllKindsOfTargetsOnceAndInOrder )
{
    using F = TypeParam;

    Ref  event( F::create() ), same( F::create() ), same2( F::create() );
    Ref  other( F::createOther() ), other2( F::createOther() );
    Ref  barrier( qvBarrierCreate( QV_TRUE ) ), barrier2( qvBarrierCreate( QV_TRUE ) );
    Call first, second, third, onSame, onOther;

    std::vector< int > log;
    first.action   = [&] { log.push_back( 1 ); };
    second.action  = [&] { log.push_back( 2 ); };
    third.action   = [&] { log.push_back( 2 ); }; // the first one goes first, the others have no order
    onSame.action  = [&] { log.push_back( F::otherHappened( other ) ? -1 : 3 ); };
    onOther.action = [&] { log.push_back( qvBarrierIsBlocked( barrier ) ? 4 : -1 ); };

    Ref a( first.handle< F >() ), b( second.handle< F >() ), c( third.handle< F >() ), d( onSame.handle< F >() );
    Ref e( F::otherHandle( callNow, onOther.arg ) );
    F::add( same, d );
    F::addToOther( other, e );

    F::addBarrier( event, barrier );
    F::addBarrier( event, barrier2 );
    F::addOther( event, other );
    F::addOther( event, other2 );
    F::addSame( event, same );
    F::addSame( event, same2 );
    F::add( event, a );
    F::add( event, b );
    F::add( event, c );
    F::add( event, b );
    F::add( event, a );
    EXPECT_FALSE( F::happened( event ) );
    EXPECT_EQ( 2, references( same.get() ) );

    F::fire( event );
    F::fire( event );

    EXPECT_EQ( ( std::vector< int >{ 1, 2, 2, 3, 4 } ), log );
    EXPECT_TRUE( F::happened( event ) && F::happened( same ) && F::happened( same2 ) );
    EXPECT_TRUE( F::otherHappened( other ) && F::otherHappened( other2 ) );
    EXPECT_FALSE( qvBarrierIsBlocked( barrier ) || qvBarrierIsBlocked( barrier2 ) );

    // It holds none of them any more.
    EXPECT_EQ( 1, references( same.get() ) );
    EXPECT_EQ( 1, references( same2.get() ) );
    EXPECT_EQ( 1, references( other2.get() ) );
    EXPECT_EQ( 1, references( barrier.get() ) );

    // What comes now fires at once and isn't kept.
    qvBarrierBlock( barrier );
    F::addBarrier( event, barrier );
    F::add( event, a );
    EXPECT_FALSE( qvBarrierIsBlocked( barrier ) );
    EXPECT_EQ( 1, references( barrier.get() ) );
    EXPECT_EQ( 2, first.count );
    EXPECT_EQ( 1, second.count );
}

TYPED_TEST( Event, ForgetsDeletedTargets )
{
    using F = TypeParam;

    Ref  event( F::create() ), same( F::create() ), same2( F::create() );
    Ref  other( F::createOther() );
    Ref  barrier( qvBarrierCreate( QV_TRUE ) );
    Call first, second, never;
    Ref  a( first.handle< F >() ), b( second.handle< F >() ), n( never.handle< F >() );

    F::add( event, n );
    F::add( event, n );
    F::del( event, n );
    F::del( event, n );

    F::addSame( event, same );
    F::addSame( event, same2 );
    F::addOther( event, other );
    F::addBarrier( event, barrier );
    F::delSame( event, same );
    F::delSame( event, same2 );
    F::delOther( event, other );
    F::delBarrier( event, barrier );

    // When the first one has gone, the second can be added once more, and fires for both.
    F::add( event, a );
    F::add( event, b );
    F::del( event, a );
    F::add( event, b );

    F::fire( event );
    EXPECT_EQ( 0, never.count );
    EXPECT_EQ( 0, first.count );
    EXPECT_EQ( 2, second.count );
    EXPECT_FALSE( F::happened( same ) || F::happened( same2 ) || F::otherHappened( other ) );
    EXPECT_TRUE( qvBarrierIsBlocked( barrier ) );

    // One that ends gives its targets up without firing.
    event.reset( F::create() );
    F::add( event, n );
    F::addSame( event, same );
    F::addSame( event, same2 );
    F::addOther( event, other );
    event.reset();
    EXPECT_EQ( 0, never.count );
    EXPECT_FALSE( F::happened( same ) || F::otherHappened( other ) );
    EXPECT_EQ( 3, references( same.get() ) + references( same2.get() ) + references( other.get() ) );

    // The event may hold the only references.
    event.reset( F::create() );
    std::array lent{ F::create(), F::create() };

    for( auto target : lent )
    {
        F::addSame( event, target );
        qv::release( target );
    }

    for( auto target : lent )
        F::delSame( event, target );
}

TYPED_TEST( Event, HandlesFireTheirTargetAndStayArmed )
{
    using F = TypeParam;

    Ref  barrier( qvBarrierCreate( QV_TRUE ) );
    Ref  condset( qvCondsetCreate() );
    Ref  signal( qvSignalCreate() );
    Ref  alert( qvAlertCreate() );
    Call call;

    std::array handles{
        Ref( F::handleBarrier( barrier ) ),
        Ref( F::handleCondset( condset, 0x30005 ) ),
        Ref( F::handleCondset( condset, 0x10000 ) ),
        Ref( F::handleSignal( signal ) ),
        Ref( F::handleAlert( alert ) ),
        call.handle< F >(),
    };

    for( int round = 0; round < 2; round++ )
    {
        Ref event( F::create() );

        for( auto &handle : handles )
            F::add( event, handle );

        F::fire( event );
        EXPECT_FALSE( qvBarrierIsBlocked( barrier ) );
        EXPECT_EQ( 5, qvCondsetConditions( condset ) );
        EXPECT_TRUE( qvSignalAsserted( signal ) );
        EXPECT_TRUE( qvAlertIsSet( alert ) );
        EXPECT_EQ( round + 1, call.count );

        qvBarrierBlock( barrier );
        qvCondsetSetConditions( condset, 0 );
        qvAlertUnset( alert );
    }

    F::handleFire( handles[0] );
    EXPECT_FALSE( qvBarrierIsBlocked( barrier ) );

    for( auto &handle : handles )
        handle.reset();

    EXPECT_EQ( 1, references( barrier.get() ) );
    EXPECT_EQ( 1, references( condset.get() ) );
    EXPECT_EQ( 1, references( signal.get() ) );
    EXPECT_EQ( 1, references( alert.get() ) );
}

TYPED_TEST( Event, ReleasedHandlesAreDisarmed )
{
    using F = TypeParam;

    Ref  event( F::create() );
    Call releasing, gone, later;
    Ref  r( releasing.handle< F >() ), g( gone.handle< F >() ), l( later.handle< F >() );

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
    EXPECT_EQ( 0, gone.count );
    EXPECT_EQ( 0, later.count );
    EXPECT_EQ( 1, references( later.arg.get() ) );
}

TYPED_TEST( Event, AnArgumentMayFireTheEventWhenItEnds )
{
    using F = TypeParam;

    Ref  event( F::create() );
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

    for( int round = 0; round < 20; round++ )
    {
        Ref                 event( F::create() );
        Call                call;
        Ref                 handle( call.handle< F >() );
        std::atomic< bool > running{ false }, releasing{ false }, finished{ false };

        call.action = [&]
        {
            running = true;

            while( !releasing )
                std::this_thread::yield();

            for( int i = 0; i < 100; i++ ) // a chance to be overtaken
                std::this_thread::yield();

            finished = true;
        };

        F::add( event, handle );
        std::thread thread( [&] { F::fire( event ); } );

        while( !running )
            std::this_thread::yield();

        releasing = true;
        handle.reset();
        EXPECT_TRUE( finished );
        thread.join();
    }
}

TYPED_TEST( Event, NoTargetIsMissedWhileOthersComeAndGo )
{
    using F = TypeParam;

    const int THREADS = 4;

    for( int round = 0; round < 200; round++ )
    {
        Ref                event( F::create() );
        std::atomic< int > ready{ 0 };

        auto start = [&]
        {
            for( ready++; ready <= THREADS; )
                std::this_thread::yield();
        };

        auto worker = [&]( int number )
        {
            if( number == THREADS )
            {
                start();

                for( int i = 0; i < round % 10; i++ )
                    std::this_thread::yield();

                F::fire( event );
                return;
            }

            Call stays, goes;
            auto dies = std::make_unique< Call >();
            Ref  a( stays.handle< F >() ), b( goes.handle< F >() ), c( dies->template handle< F >() );
            Ref  same( F::create() );
            Ref  other( F::createOther() );
            Ref  barrier( qvBarrierCreate( QV_TRUE ) );

            start();
            F::add( event, b );
            F::add( event, c );
            F::add( event, a );
            F::addSame( event, same );
            F::addOther( event, other );
            F::addBarrier( event, barrier );
            F::del( event, b );
            int before = goes.count;
            c.reset();
            dies.reset(); // what a callback would touch

            F::wait( event );
            F::wait( same );
            qvBarrierPass( barrier );
            F::del( event, a ); // waits until all have fired
            EXPECT_EQ( 1, stays.count );
            EXPECT_EQ( before, goes.count );
            EXPECT_TRUE( F::otherHappened( other ) );
        };

        onThreads( THREADS + 1, worker );
    }
}

TYPED_TEST( Event, TimedWaitsEnd )
{
    using F = TypeParam;

    Ref event( F::create() );
    EXPECT_FALSE( F::waitTimed( event, 0 ) );
    EXPECT_FALSE( F::waitTimed( event, 5 ) );
    F::fire( event );
    EXPECT_TRUE( F::waitTimed( event, 0 ) );
    EXPECT_TRUE( F::waitTimed( event, -1 ) );
}
