/** @file
    Walks: a fuzz target reads operations from its input and runs them on a few variables of a family, each beside a
    model made of standard containers, and compares the two after each operation.

        struct VectorWalk : SlotWalk< QV_VECTOR, Model, qvVectorCreate >    // the variables and their models
        {
            void add() { QV_INT number = in.number(); ... }
            void check() { require( ... ); }                                // after each operation
        };

        QV_FUZZ_WALK( VectorWalk, OP( share ) OP( add ) OP( add ) ... )     // what stands here twice is drawn as often

    A target that is no walk but reads any bytes says QV_FUZZ_READER( function ).

    With QV_FUZZ_TRACE=1 in the environment the operations and all that they draw are printed, one line each, before
    they run, so that the last line of an input that fails is the culprit. */

#ifndef QV_FUZZ_WALK_H
#define QV_FUZZ_WALK_H

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_string.h"
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

namespace qv::fuzz
{
inline const bool tracing = getenv( "QV_FUZZ_TRACE" ) != nullptr;

#define require( condition ) ( ( condition ) ? (void)0 : ::qv::fuzz::fail( #condition, __FILE__, __LINE__ ) )

[[noreturn]] inline void fail( const char *condition, const char *file, int line )
{
    fprintf( stderr, "\n%s:%d: %s does not hold\n", file, line, condition );
    abort();
}

using Text = std::u32string;

inline QV_INT size( const Text &text )
{
    return static_cast< QV_INT >( text.size() );
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

/** What is meant of a source: all of it, its start, its end, a part of it, or what stands around the part. */
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
    void erase( M &model, bool shared ) const
    {
        if( form == OUTER )
            model.keep( shared, offset, count );
        else if( form == INNER )
            model.erase( shared, offset, count );
        else
            model.erase( shared, form == LEADING ? 0 : length - offset, offset );
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

/** The bytes of an input, taken one after the other. At their end there are zeros. */
class Input
{
public:
    Input( const uint8_t *data, size_t size ) : at_( data ), end_( data + size )
    {
    }

    bool more() const
    {
        return at_ < end_;
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
    std::u32string text( QV_INT most = 5000 )
    {
        std::u32string result;

        for( unsigned runs = byte() % 8; runs > 0 && static_cast< QV_INT >( result.size() ) < most; runs-- )
        {
            QV_CHAR ch = character();
            result.append(
                byte() % 4 ? 1 : static_cast< size_t >( length( most - static_cast< QV_INT >( result.size() ) ) ), ch );
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

    const uint8_t *at_, *end_;
};

inline Ref< QV_STRING > stringOf( const std::u32string &text )
{
    return Ref< QV_STRING >( qvStringCreateFromCharsCopy( text.data(), size( text ) ) );
}

inline std::u32string charsOf( QV_STRING *qvs )
{
    return std::u32string( qvStringBacking( qvs ), static_cast< size_t >( qvStringLength( qvs ) ) );
}

inline std::u32string wide( const std::string &ascii )
{
    return std::u32string( ascii.begin(), ascii.end() );
}

inline std::u32string takeText( QV_STRING *owned )
{
    return charsOf( Ref< QV_STRING >( owned ) );
}

inline Ref< QV_OBJ > boxedInt( QV_INT value )
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

inline QV_INT intOf( QV_OBJ *boxed )
{
    return qvBoxedIntValue( qvBoxedIntFrom( boxed ) );
}

inline Ref< QV_BUFFER > bufferOf( const std::string &bytes )
{
    return Ref< QV_BUFFER >( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );
}

inline std::string ascii( const Text &text )
{
    return std::string( text.begin(), text.end() );
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

/** What every walk has. */
struct Walk
{
    Input in;

    Walk( const uint8_t *data, size_t size ) : in( data, size )
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

    Slot &any( Input &in )
    {
        return slots[in.below( std::size( slots ) )];
    }

    void share( Input &in )
    {
        Slot &to = any( in ), &from = any( in );

        if( &to != &from )
            to.set( retain( from.ref.get() ), from.model );
    }

    bool isEmptyOne( const Slot &slot ) const
    {
        return slot.ref.get() == empty_.get();
    }

    bool shared( const Slot &slot ) const
    {
        return isEmptyOne( slot ) || holders( slot ) > 1;
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

/** The same with variables of a family. */
template< class T, class M, T *( *create )() >
struct SlotWalk : Walk
{
    using Walk::Walk;
    using Slot = typename Slots< T, M >::Slot;

    Slots< T, M > slots{ create };

    void share()
    {
        slots.share( in );
    }
};

template< class W >
struct Operation
{
    const char *name;
    void ( W::*run )();
};

inline void start()
{
    static bool started = false;

    if( !started )
        qvRuntimeStartup(
            QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS, nullptr, nullptr, nullptr,
            nullptr );

    started = true;
}

/** Runs the operations of an input. Afterwards there are as many live objects as before. */
template< class W, size_t N >
int walk( const Operation< W > ( &operations )[N], const uint8_t *data, size_t size )
{
    start();
    QV_INT before = liveObjects();
    {
        W walk( data, size );

        for( int step = 0; walk.in.more() && step < 400; step++ )
        {
            const Operation< W > &operation = operations[walk.in.byte() % N];

            if( tracing )
                fprintf( stderr, "\n%s", operation.name );

            ( walk.*operation.run )();
            walk.check();
        }
    }

    require( liveObjects() == before );

    return 0;
}

/** Any bytes, after which there are as many live objects as before. */
inline int read( void ( *reader )( const uint8_t *data, size_t size ), const uint8_t *data, size_t size )
{
    start();
    QV_INT before = liveObjects();
    reader( data, size );
    require( liveObjects() == before );

    return 0;
}
} // namespace qv::fuzz

#define QV_FUZZ_READER( reader )                                                                                       \
    extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )                                          \
    {                                                                                                                  \
        return qv::fuzz::read( reader, data, size );                                                                   \
    }

/** A walk of operations, each of them as OP( name ). */
#define QV_FUZZ_WALK( W, operations )                                                                                  \
    extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )                                          \
    {                                                                                                                  \
        using Current                                      = W;                                                        \
        static const qv::fuzz::Operation< W > OPERATIONS[] = { operations };                                           \
        return qv::fuzz::walk( OPERATIONS, data, size );                                                               \
    }
#define OP( name ) { #name, &Current::name },

#endif
