/** @file
    Walks: a fuzz target reads operations from its input and runs them on a few variables of a family, each beside a
    model made of standard containers, and compares the two after each operation.

        struct VectorWalk : SlotWalk< VectorWalk, QV_VECTOR, Model, qvVectorCreate >    // the variables and their models
        {
            using SlotWalk::SlotWalk;

            void add() { Slot &slot = any(); QV_INT number = in.number(); ... }
            void compare( Slot &slot ) { require( ... ); }              // each variable, after each operation
        };

        QV_FUZZ_WALK( VectorWalk, OP( share, 1 ) OP( add, 2 ) ... )     // with their weights

    A target that is no walk but reads any bytes says QV_FUZZ_READER( function ).

    The same walk runs under libFuzzer and, with qv_fuzz_driver.cpp, as a test: over the corpus and over seeded random
    inputs, of which one that fails is made shorter by dropping operations. With QV_FUZZ_TRACE=1 in the environment the
    operations and all that they draw are printed, one line each, before they run, so that the last line of an input
    that fails is the culprit. */

#ifndef QV_FUZZ_WALK_H
#define QV_FUZZ_WALK_H

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_timer.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

/** Of the driver: an operation begins at an offset of the input. Null under libFuzzer. */
extern "C" void qvFuzzStep( size_t offset ) __attribute__( ( weak ) );

namespace qv::fuzz
{
inline const bool tracing = getenv( "QV_FUZZ_TRACE" ) != nullptr;

#define require( condition ) ( ( condition ) ? (void)0 : ::qv::fuzz::fail( #condition, __FILE__, __LINE__ ) )

[[noreturn]] inline void fail( const char *condition, const char *file, int line )
{
    fprintf( stderr, "\n%s:%d: %s does not hold\n", file, line, condition );
    abort();
}

/* Containers ------------------------------------------------------------------------------------------------------- */

using Text = std::u32string;

template< class C >
QV_INT lengthOf( const C &all )
{
    return static_cast< QV_INT >( all.size() );
}

template< class C >
C part( const C &all, QV_INT offset, QV_INT count )
{
    return C( all.begin() + offset, all.begin() + offset + count );
}

template< class C >
C without( C all, QV_INT offset, QV_INT count )
{
    all.erase( all.begin() + offset, all.begin() + offset + count );
    return all;
}

/** The element at an index that is no size_t. */
template< class C >
auto &at( C &all, QV_INT idx )
{
    return *std::next( all.begin(), idx );
}

/** The sign of an order, as the compare functions return it. */
template< class O >
int sign( O order )
{
    return ( order > 0 ) - ( order < 0 );
}

/** What is meant of a source: all of it, its start, its end, a part of it, or all but the part. */
enum Form
{
    WHOLE,
    LEADING,
    TRAILING,
    INNER,
    OUTER
};

struct Span
{
    QV_INT form, length, offset, count;

    template< class C >
    C of( const C &all ) const
    {
        return form == WHOLE      ? all
               : form == LEADING  ? part( all, 0, offset )
               : form == TRAILING ? part( all, length - offset, offset )
               : form == INNER    ? part( all, offset, count )
                                  : without( all, offset, count );
    }

    /** What a model does when that is deleted; of Outer, all but the part is. */
    template< class M >
    void erase( M &model ) const
    {
        if( form == OUTER )
            model.keep( offset, count );
        else if( form == INNER )
            model.erase( offset, count );
        else
            model.erase( form == LEADING ? 0 : length - offset, offset );
    }
};

/** Calls the form of `Name` that a span in units of `unit` asks for. */
#define CALL_FORM( Name, span, unit, ... )                                                                             \
    ( ( span ).form == WHOLE ? Name( __VA_ARGS__ ) : CALL_PART( Name, span, unit, __VA_ARGS__ ) )
#define CALL_PART( Name, span, unit, ... )                                                                             \
    ( ( span ).form == LEADING    ? Name##Leading( __VA_ARGS__, ( span ).offset / ( unit ) )                           \
      : ( span ).form == TRAILING ? Name##Trailing( __VA_ARGS__, ( span ).offset / ( unit ) )                          \
      : ( span ).form == INNER    ? Name##Inner( __VA_ARGS__, ( span ).offset / ( unit ), ( span ).count / ( unit ) )  \
                                  : Name##Outer( __VA_ARGS__, ( span ).offset / ( unit ), ( span ).count / ( unit ) ) )

/* Input ------------------------------------------------------------------------------------------------------------ */

/** The bytes of an input, taken one after the other. At their end there are zeros. */
class Input
{
public:
    Input( const uint8_t *data, size_t size ) : start_( data ), at_( data ), end_( data + size )
    {
    }

    bool more() const
    {
        return at_ < end_;
    }

    size_t offset() const
    {
        return static_cast< size_t >( at_ - start_ );
    }

    uint8_t byte()
    {
        return at_ < end_ ? *at_++ : 0;
    }

    /** 0 to `count` - 1. */
    QV_INT below( QV_INT count )
    {
        QV_INT value = byte();

        for( QV_INT limit = 256; limit < count; limit *= 256 )
            value = value * 256 + byte();

        return shown( value % count );
    }

    bool flag()
    {
        return below( 2 );
    }

    template< class T, size_t N >
    const T &oneOf( const T ( &table )[N] )
    {
        return table[below( N )];
    }

    /** 0 to `limit`, often a border or near one. */
    QV_INT upTo( QV_INT limit )
    {
        uint8_t how = byte();

        if( how < 128 )
            return shown( how % 2 ? limit : 0 );

        if( how < 192 )
            return shown( std::min< QV_INT >( how % 8, limit ) );

        return how < 224 ? shown( std::max< QV_INT >( limit - how % 8, 0 ) ) : below( limit + 1 );
    }

    /** An index of something that is not empty. */
    template< class C >
    QV_INT index( const C &all )
    {
        return upTo( lengthOf( all ) - 1 );
    }

    /** A length, often near a number of places that blocks are made of. */
    QV_INT length( QV_INT most = 5000 )
    {
        static const QV_INT LENGTHS[] = { 1,   2,   3,    4,    5,    6,    8,    12,   16,  31,  32,
                                          33,  40,  63,   64,   65,   80,   100,  128,  160, 200, 240,
                                          320, 500, 1000, 1023, 1024, 2048, 4096, 5000, 0,   0 };
        return shown( std::min( LENGTHS[byte() % std::size( LENGTHS )], most ) );
    }

    /** Any number, often a small one or a limit. */
    QV_INT number()
    {
        uint8_t how = byte();

        if( how < 160 )
            return shown( how % 80 - 40 );

        if( how < 192 )
            return shown( ( how % 2 ? QV_INT_MAX : QV_INT_MIN ) + ( how % 2 ? -1 : 1 ) * ( how / 2 % 8 ) );

        uint64_t value = 0;

        for( int i = how % 8; i >= 0; i-- )
            value = value << 8 | byte();

        return shown( static_cast< QV_INT >( value ) );
    }

    /** Mostly letters, and characters at which something changes. */
    QV_CHAR character()
    {
        static const char32_t CHARS[] = {
            U' ',   U'\n',  U'\r',  U'\t',  U'%',    U'.',    U'=',     U',',   U'-',   U'0',   U'1',   U'A',
            U'_',   0x1F,   0x7F,   0x80,   0x85,    0x9F,    0xA0,     0xDF,   0xE9,   0xFF,   0x130,  0x149,
            0x2B0,  0x300,  0x301,  0x307,  0x323,   0x345,   0x390,    0x3A3,  0x7FF,  0x800,  0xAC00, 0xAC01,
            0x1100, 0x1161, 0x11A7, 0x11A8, 0x1E9E,  0x2028,  0x2029,   0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFB01,
            0xFB03, 0xFEFF, 0xFFFD, 0xFFFF, 0x10000, 0x1F600, 0x10FFFF, 0,      0x212B, 0x1D15E };
        uint8_t how = byte();
        return how < 128 ? U'a' + how % 26 : CHARS[how % std::size( CHARS )];
    }

    /** Runs of characters, so that a few bytes make long texts. */
    Text text( QV_INT most = 5000 )
    {
        Text result;

        for( unsigned runs = byte() % 8; runs > 0 && lengthOf( result ) < most; runs-- )
        {
            QV_CHAR ch = character();
            result.append( byte() % 4 ? 1 : static_cast< size_t >( length( most - lengthOf( result ) ) ), ch );
        }

        if( tracing )
            for( size_t i = 0; i < result.size() && i < 40; i++ )
                fprintf( stderr, "%s%x", i ? "-" : " U+", static_cast< unsigned >( result[i] ) );

        return result;
    }

    Span span( QV_INT length, QV_INT form, QV_INT unit = 1 )
    {
        QV_INT offset = upTo( length / unit ) * unit;
        return { form, length, offset, upTo( ( length - offset ) / unit ) * unit };
    }

private:
    static QV_INT shown( QV_INT value )
    {
        if( tracing )
            fprintf( stderr, " %lld", static_cast< long long >( value ) );

        return value;
    }

    const uint8_t *start_, *at_, *end_;
};

/* Objects ---------------------------------------------------------------------------------------------------------- */

inline Ref< QV_STRING > stringOf( const Text &text )
{
    return Ref< QV_STRING >( qvStringCreateFromCharsCopy( text.data(), lengthOf( text ) ) );
}

inline Text charsOf( QV_STRING *qvs )
{
    return Text( qvStringBacking( qvs ), static_cast< size_t >( qvStringLength( qvs ) ) );
}

inline Text takeText( QV_STRING *owned )
{
    return charsOf( Ref< QV_STRING >( owned ) );
}

inline Text wide( const std::string &ascii )
{
    return Text( ascii.begin(), ascii.end() );
}

inline std::string ascii( const Text &text )
{
    return std::string( text.begin(), text.end() );
}

/** The texts of a Vector of Strings. */
inline std::vector< Text > textsOf( QV_VECTOR *vec )
{
    std::vector< Text > result;

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
        result.push_back( charsOf( qvStringFrom( qvVectorBacking( vec )[i] ) ) );

    return result;
}

inline Ref< QV_OBJ > boxedInt( QV_INT value )
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

inline QV_INT intOf( QV_OBJ *boxed )
{
    return qvBoxedIntValue( qvBoxedIntFrom( boxed ) );
}

/** Of an object that the caller gets a reference to, and that somebody else holds: the object alone. */
template< class T >
T *borrow( T *owned )
{
    return Ref< T >( owned ).get();
}

inline Ref< QV_BUFFER > bufferOf( const std::string &bytes )
{
    return Ref< QV_BUFFER >( qvBufferCreateFromBytesCopy( bytes.data(), lengthOf( bytes ) ) );
}

inline std::string bytesOf( QV_BUFFER *buf )
{
    return std::string(
        reinterpret_cast< const char * >( qvBufferBacking( buf ) ), static_cast< size_t >( qvBufferLength( buf ) ) );
}

template< class T >
int32_t references( T *object )
{
    return qv___RetainCountValue( &obj( object )->retainCount );
}

template< class T >
QV_INT declared( T *object )
{
    return qv___ObjDbgAllocationSize( obj( object ) );
}

inline QV_INT liveObjects()
{
    QV_INT count = 0;

    for( QV_SORT *sort = qv___module.sortsFirst; sort; sort = sort->sortsNext )
        count += qv___AtomicLoad32( &sort->objects );

    return count;
}

/* Models ----------------------------------------------------------------------------------------------------------- */

/** Items in a block with free places before and after them. `M` adds the rules of a family: copy(), the places of a copy;
    makeRoom( at, count ), those when as many items will come; and compact(), those after some have gone. */
template< class M, class C >
struct Ends
{
    C      items;
    QV_INT front = 0, back = 0;
    bool   shared = false; // somebody else has the object, so that the next change makes a copy

    QV_INT length() const
    {
        return lengthOf( items );
    }

    QV_INT places() const
    {
        return front + length() + back;
    }

    M &self()
    {
        return static_cast< M & >( *this );
    }

    void own( bool also = false )
    {
        if( shared || also )
            self().copy();

        shared = false;
    }

    void insert( QV_INT at, const C &more )
    {
        if( more.empty() )
            return;

        self().makeRoom( at, lengthOf( more ) );
        shared = false;
        items.insert( items.begin() + at, more.begin(), more.end() );
    }

    /** Of Outer, the part after is inserted first, and then the part before it. */
    void insertOuter( QV_INT at, const C &all, const Span &span )
    {
        C    after = part( all, span.offset + span.count, span.length - span.offset - span.count );
        bool still = shared && after.empty();
        insert( at, after );
        shared = still;
        insert( at, part( all, 0, span.offset ) );
    }

    void erase( QV_INT offset, QV_INT count )
    {
        if( count == 0 )
            return;

        if( count == length() )
        {
            self() = M();
            return;
        }

        own();
        ( offset == 0 ? front : back ) += count;
        items.erase( items.begin() + offset, items.begin() + offset + count );
        self().compact();
    }
};

/* Walks ------------------------------------------------------------------------------------------------------------ */

/** What every walk has. */
struct Walk
{
    Input in;

    Walk( const uint8_t *data, size_t size ) : in( data, size )
    {
    }

    void check()
    {
    }
};

/** A few variables with a model each. Two of them may hold the same object: each change of one is then seen by
    check() if it shows in another. So destination and source may be the same variable, or two with one object. */
template< class T, class M >
class Slots
{
public:
    struct Slot
    {
        Ref< T > ref;
        M        model;

        /** Replaces both. */
        void set( T *owned, M made )
        {
            ref.reset( owned );
            model = std::move( made );
        }
    };

    explicit Slots( T *( *create )() ) : empty_( create() ), emptyCount_( references( empty_.get() ) )
    {
        for( Slot &slot : slots )
            slot.ref.reset( create() );

        lone_ = slots[0].ref.get() != empty_.get();
    }

    /** A variable; a model that wants to know is told if its object is `shared`. */
    Slot &any( Input &in )
    {
        Slot &slot = slots[in.below( std::size( slots ) )];

        if constexpr( requires { slot.model.shared; } )
            slot.model.shared = isEmptyOne( slot ) || holders( slot ) > 1;

        return slot;
    }

    void share( Input &in )
    {
        Slot &to = any( in ), &from = any( in );

        if( &to != &from )
            to.set( retain( from.ref.get() ), from.model );
    }

    /** Each object has the references that the variables hold and no other. */
    void checkCounts() const
    {
        for( const Slot &slot : slots )
            require( isEmptyOne( slot ) || references( slot.ref.get() ) == holders( slot ) );

        auto empties = std::count_if(
            std::begin( slots ), std::end( slots ), [this]( const Slot &slot ) { return isEmptyOne( slot ); } );
        require( lone_ || references( empty_.get() ) == emptyCount_ + empties );
    }

    Slot slots[4];

private:
    bool isEmptyOne( const Slot &slot ) const
    {
        return slot.ref.get() == empty_.get();
    }

    int holders( const Slot &slot ) const
    {
        return static_cast< int >( std::count_if(
            std::begin( slots ), std::end( slots ),
            [&]( const Slot &other ) { return other.ref.get() == slot.ref.get(); } ) );
    }

    Ref< T > empty_;
    int32_t  emptyCount_;
    bool     lone_ = false; // families without one empty object that all share
};

/** A walk `W` with variables of a family, which has compare( Slot & ). */
template< class W, class T, class M, T *( *create )() >
struct SlotWalk : Walk
{
    using Walk::Walk;
    using Slot = typename Slots< T, M >::Slot;

    Slots< T, M > slots{ create };

    Slot &any()
    {
        return slots.any( in );
    }

    void share()
    {
        slots.share( in );
    }

    void check()
    {
        for( Slot &slot : slots.slots )
            static_cast< W * >( this )->compare( slot );

        slots.checkCounts();
    }
};

template< class W >
struct Operation
{
    const char *name;
    int         weight;
    void ( W::*run )();
};

inline void start()
{
    static bool started = false;

    if( started )
        return;

    qvRuntimeStartup(
        QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS, nullptr, nullptr, nullptr, nullptr );

    // The first timer starts the timer thread, whose objects stay.
    qvTimerRelease( qvTimerCreate( []( QV_OBJ * ) {}, nullptr ) );
    started = true;
}

/** Runs `body`, after which there are as many live objects as before. */
template< class Body >
int run( Body body )
{
    start();
    QV_INT before = liveObjects();
    body();

    // The timer thread may have some of its own for a moment.
    for( int tries = 0; tries < 10000 && liveObjects() != before; tries++ )
        usleep( 1000 );

    require( liveObjects() == before );

    return 0;
}

/** Runs the operations of an input. */
template< class W, size_t N >
void walk( const Operation< W > ( &operations )[N], const uint8_t *data, size_t size )
{
    W   walk( data, size );
    int weights = 0;

    for( const Operation< W > &operation : operations )
        weights += operation.weight;

    for( int step = 0; walk.in.more() && step < 400; step++ )
    {
        if( qvFuzzStep )
            qvFuzzStep( walk.in.offset() );

        const Operation< W > *operation = operations;

        for( int drawn = walk.in.byte() % weights; drawn >= operation->weight; operation++ )
            drawn -= operation->weight;

        if( tracing )
            fprintf( stderr, "\n%3d. %s", step + 1, operation->name );

        ( walk.*operation->run )();
        walk.check();
    }
}
} // namespace qv::fuzz

#define QV_FUZZ_READER( reader )                                                                                       \
    extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )                                          \
    {                                                                                                                  \
        return qv::fuzz::run( [&] { reader( data, size ); } );                                                         \
    }

/** A walk of operations, each of them as OP( name, weight ). */
#define QV_FUZZ_WALK( W, operations )                                                                                  \
    extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )                                          \
    {                                                                                                                  \
        using Current                                      = W;                                                        \
        static const qv::fuzz::Operation< W > OPERATIONS[] = { operations };                                           \
        return qv::fuzz::run( [&] { qv::fuzz::walk( OPERATIONS, data, size ); } );                                     \
    }
#define OP( name, weight ) { #name, weight, &Current::name },

#endif
