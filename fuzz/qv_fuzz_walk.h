/** @file
    Walks: a fuzz target reads operations from its input and runs them on a few variables of a family, each beside a
    model made of standard containers, and compares the two after each operation.

        struct VectorWalk : Slots< VectorWalk, QV_VECTOR, Values, qvVectorCreate >      // the variables and their models
        {
            void add( Slot &slot, Slot & ) { QV_INT number = in.number(); ... }
            static void compare( Slot &slot ) { require( ... ); }       // each variable, after each operation
        };

        QV_FUZZ_WALK( VectorWalk, OP( share ) OP( add ) OP( add ) ... )  // what is often done is there more often

    A target that is no walk but reads any bytes says QV_FUZZ_READER( function ).

    The same walk runs under libFuzzer and, with qv_fuzz_driver.cpp, as a test: over the corpus and over seeded random
    inputs, of which one that fails is made shorter by dropping operations. With QV_FUZZ_TRACE=1 in the environment the
    operations and all that they draw are printed, one line each, before they run, so that the last line of an input
    that fails is the culprit. */

#ifndef QV_FUZZ_WALK_H
#define QV_FUZZ_WALK_H

#include "qv/qv.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_ref.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

/** Of the driver: an operation begins at an offset of the input. Null under libFuzzer. */
extern "C" void qvFuzzStep( size_t offset ) __attribute__( ( weak ) );

namespace qv::fuzz
{
using qv::obj, qv::Ref, qv::retain;

inline const bool tracing = getenv( "QV_FUZZ_TRACE" ) != nullptr;

#define require( condition ) ( ( condition ) ? (void)0 : ::qv::fuzz::fail( #condition, __FILE__, __LINE__ ) )

[[noreturn]] inline void fail( const char *condition, const char *file, int line )
{
    fprintf( stderr, "\n%s:%d: %s does not hold\n", file, line, condition );
    abort();
}

/* Containers ------------------------------------------------------------------------------------------------------- */

using Text = std::u32string;

QV_INT lengthOf( const auto &all )
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

template< class C >
void put( C &all, QV_INT at, const C &more )
{
    all.insert( all.begin() + at, more.begin(), more.end() );
}

/** The element at an index that is no size_t. */
auto &at( auto &all, QV_INT idx )
{
    return *std::next( all.begin(), idx );
}

/** The sign of an order, as the compare functions return it. */
int sign( auto order )
{
    return ( order > 0 ) - ( order < 0 );
}

/** So many times the same. */
template< class C = Text >
C repeated( QV_INT count, typename C::value_type value )
{
    return C( static_cast< size_t >( count ), value );
}

/** What is meant of a source: all of it, its start, its end, a part of it, or all but the part. */
inline constexpr QV_INT WHOLE = 0, LEADING = 1, TRAILING = 2, INNER = 3, OUTER = 4;

struct Span
{
    QV_INT form, offset, count; // the last two are what a function is called with
    QV_INT from, size;          // the part that is meant, or is not

    auto of( const auto &all ) const
    {
        return form == OUTER ? without( all, from, size ) : part( all, from, size );
    }

    /** What is left after that is deleted. */
    auto rest( const auto &all ) const
    {
        return form == OUTER ? part( all, from, size ) : without( all, from, size );
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
struct Input
{
    const uint8_t *start, *at, *end;

    uint8_t byte()
    {
        return at < end ? *at++ : 0;
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

    /** A length, often near a number of places that blocks are made of. */
    QV_INT length( QV_INT most = 5000 )
    {
        static const QV_INT LENGTHS[] = { 1,  2,   3,   4,   5,   8,   16,  31,   32,   33,   40,   63, 64,
                                          65, 100, 128, 160, 200, 320, 500, 1000, 1024, 4096, 5000, 0,  0 };
        return shown( std::min( oneOf( LENGTHS ), most ) );
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
        return static_cast< QV_CHAR >( shown( how < 128 ? U'a' + how % 26 : CHARS[how % std::size( CHARS )] ) );
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

        return result;
    }

    std::string bytes( QV_INT most )
    {
        uint8_t     step   = byte();
        std::string result = repeated< std::string >( length( most ), 'x' );

        for( size_t i = 0; i < result.size(); i++ )
            result[i] = static_cast< char >( i * step );

        return result;
    }

    Span span( QV_INT length, QV_INT form, QV_INT unit = 1 )
    {
        QV_INT offset = upTo( length / unit ) * unit, count = upTo( ( length - offset ) / unit ) * unit;

        if( form == INNER || form == OUTER )
            return { form, offset, count, offset, count };

        if( form == LEADING || form == TRAILING )
            return { form, offset, count, form == LEADING ? 0 : length - offset, offset };

        return { form, offset, count, 0, length };
    }

    static QV_INT shown( QV_INT value )
    {
        if( tracing )
            fprintf( stderr, " %lld", static_cast< long long >( value ) );

        return value;
    }
};

/** What the target has been given. */
inline Input in{};

/* Objects ---------------------------------------------------------------------------------------------------------- */

inline Ref< QV_STRING > stringOf( const Text &text )
{
    return Ref< QV_STRING >( qvStringCreateFromCharsCopy( text.data(), lengthOf( text ) ) );
}

inline Text charsOf( QV_STRING *qvs )
{
    return Text( qvStringBacking( qvs ), static_cast< size_t >( qvStringLength( qvs ) ) );
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
    std::vector< Text > result( static_cast< size_t >( qvVectorLength( vec ) ) );
    std::transform(
        qvVectorBacking( vec ), qvVectorBacking( vec ) + result.size(), result.begin(),
        []( QV_OBJ *obj ) { return charsOf( qvStringFrom( obj ) ); } );
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
    const uint8_t *bytes = qvBufferBacking( buf );
    return std::string( bytes, bytes + qvBufferLength( buf ) );
}

int32_t references( auto *object )
{
    return qv___RetainCountValue( &obj( object )->retainCount );
}

QV_INT declared( auto *object )
{
    return qv___ObjDbgAllocationSize( obj( object ) );
}

inline QV_INT liveObjects()
{
    QV_INT count = 0;

    for( QV_SORT *sort = qv___module.sortsFirst; sort; sort = sort->sortsNext )
        count += qvSortObjects( sort );

    return count;
}

/* Rules that several walks go by ----------------------------------------------------------------------------------- */

inline bool isSpace( char32_t ch )
{
    return qvUnicodeIsWhiteSpace( ch );
}

inline Text trimmed( const Text &text, bool first = true, bool last = true )
{
    auto from = first ? std::find_if_not( text.begin(), text.end(), isSpace ) : text.begin();
    auto to   = last ? std::find_if_not( text.rbegin(), std::reverse_iterator( from ), isSpace ).base() : text.end();
    return Text( from, to );
}

inline bool isSurrogate( char32_t ch )
{
    return ch >> 11 == 0xD800 >> 11;
}

/** Pairs of surrogates are one character, and those that stand alone are none. */
inline Text sanitized( const Text &text )
{
    Text result;

    for( size_t i = 0; i < text.size(); i++ )
        if( text[i] >> 10 == 0xD800 >> 10 && i + 1 < text.size() && text[i + 1] >> 10 == 0xDC00 >> 10 )
            result += 0x10000 + ( ( text[i] & 0x3FF ) << 10 ) + ( text[i + 1] & 0x3FF ), i++;
        else if( !isSurrogate( text[i] ) )
            result += text[i];

    return result;
}

/** A length, and so many bytes, the highest first. */
inline std::string encodedInt( QV_INT value )
{
    uint64_t    magnitude = value < 0 ? -static_cast< uint64_t >( value ) : static_cast< uint64_t >( value );
    std::string digits;

    for( ; magnitude > 0; magnitude /= 256 )
        digits.insert( 0, 1, static_cast< char >( magnitude ) );

    return static_cast< char >( digits.size() | ( value < 0 ? 0x80 : 0 ) ) + digits;
}

inline std::string encodedChars( const Text &text )
{
    std::string bytes;

    for( char32_t ch : text )
    {
        if( ch >= 0x80 )
            bytes += { static_cast< char >( 0x80 | ch >> 16 ), static_cast< char >( ch >> 8 ) };

        bytes += static_cast< char >( ch );
    }

    return bytes;
}

inline std::string encodedText( const Text &text )
{
    return encodedInt( lengthOf( text ) ) + encodedChars( text );
}

/** Reads numbers from a text. */
struct NumberReader
{
    Text   text;
    size_t at = 0;

    bool end() const
    {
        return at >= text.size();
    }

    void space()
    {
        while( !end() && isSpace( text[at] ) )
            at++;
    }

    int sign( bool plusToo )
    {
        int found = end() ? 0 : text[at] == U'-' ? -1 : plusToo && text[at] == U'+';

        if( found )
            at++, space();

        return found;
    }

    // A sign; and if the base is to be read, a prefix and a sign after it where there was none before. True if negative.
    bool head( QV_INT &base, bool plusToo )
    {
        static const char *const PREFIXES[] = { "0b", "0B", "0o", "0O", "0d", "0D", "0x", "0X" };

        space();
        int found = sign( plusToo );

        if( base != -1 )
            return found < 0;

        base = 10;

        for( QV_INT i = 0; i < 43; i++ )
            if( Text prefix = wide( i < 8 ? PREFIXES[i] : std::to_string( i - 6 ) + ":" );
                text.compare( at, prefix.size(), prefix ) == 0 )
            {
                at += prefix.size();
                base = i >= 8 ? i - 6 : i < 2 ? 2 : i < 4 ? 8 : i < 6 ? 10 : 16;
                break;
            }

        space();

        return ( found ? found : sign( true ) ) < 0;
    }

    QV_INT digit( QV_INT base ) const
    {
        return end() ? -1 : qvUnicodeBaseNDigitValue( text[at], base );
    }

    bool integer( QV_INT base, QV_INT &value )
    {
        bool   negative = head( base, true );
        size_t from     = at;
        QV_INT longer, d;
        value = 0;

        while( ( d = digit( base ) ) >= 0 && !__builtin_mul_overflow( value, base, &longer )
               && !__builtin_add_overflow( longer, negative ? -d : d, &longer ) )
            value = longer, at++;

        return done( from );
    }

    // White space comes after a number, but not after none.
    bool done( size_t from )
    {
        bool any = at > from;

        if( any )
            space();

        return any;
    }

    bool real( QV_INT base, double &value )
    {
        bool   negative = head( base, false ), separated = false;
        double radix = static_cast< double >( base ), unit = 1 / radix, one = negative ? -1.0 : 1.0;
        size_t from = at;
        value       = 0.0;

        for( ; !end(); at++ )
        {
            double d = static_cast< double >( digit( base ) );

            if( d < 0 && !separated && ( text[at] == U'.' || text[at] == U',' ) )
                separated = true;
            else if( d < 0 )
                break;
            else if( separated )
                value = std::fma( one * unit, d, value ), unit /= radix;
            else
                value = std::fma( value, radix, one * d );
        }

        return done( from );
    }
};

/* Walks ------------------------------------------------------------------------------------------------------------ */

/** A few variables of a walk `W` with a model each, which its compare() compares. Two of them may hold the same object:
    each change of one is then seen by check() if it shows in another. So destination and source may be the same
    variable, or two with one object. */
template< class W, class T, class M, T *( *create )(), QV_INT MOST = 8000 >
struct Slots
{
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

    Ref< T > empty{ create() }; // the one that all share, in most families
    int32_t  emptyCount = references( empty.get() );
    Slot     slots[4];

    Slots()
    {
        for( Slot &slot : slots )
            slot.ref.reset( create() );
    }

    /** A variable, which is emptied if it has become long. */
    Slot &any()
    {
        Slot &slot = slots[in.below( std::size( slots ) )];

        if constexpr( requires { slot.model.size(); } )
            if( lengthOf( slot.model ) > MOST )
                slot.set( create(), M() );

        return slot;
    }

    void share( Slot &to, Slot &from )
    {
        if( &to != &from )
            to.set( retain( from.ref.get() ), from.model );
    }

    /** A place in what a variable holds, up to its end. */
    static QV_INT place( const Slot &slot )
    {
        return in.upTo( lengthOf( slot.model ) );
    }

    /** How many elements of `size` bytes its block has room for. */
    static QV_INT freePlaces( const Slot &slot, QV_INT size )
    {
        return declared( slot.ref.get() ) / size - lengthOf( slot.model );
    }

    /** Each variable is as its model, and each object has the references that the variables hold and no other. */
    void check()
    {
        for( Slot &slot : slots )
        {
            T   *object  = slot.ref.get();
            auto holders = std::count_if(
                std::begin( slots ), std::end( slots ),
                [=]( const Slot &other ) { return other.ref.get() == object; } );
            require( references( object ) == holders + ( object == empty.get() ? emptyCount : 0 ) );
            W::compare( slot );
        }
    }
};

template< class W >
struct Operation
{
    const char *name;
    void ( *run )( W &walk );
};

/** An operation of a walk with variables is called with two of them, which may be the same. */
template< class W, class B >
void call( W &walk, void ( B::*operation )( typename B::Slot &, typename B::Slot & ) )
{
    auto &slot = walk.any(), &other = walk.any();
    ( walk.*operation )( slot, other );
}

template< class W, class B >
void call( W &walk, void ( B::*operation )() )
{
    ( walk.*operation )();
}

/** Runs `body`, after which there are as many live objects as before. */
int run( auto body )
{
    if( static bool started = false; !std::exchange( started, true ) )
        qvRuntimeStartup(
            QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS, nullptr, nullptr, nullptr,
            nullptr );

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
void walk( const Operation< W > ( &operations )[N] )
{
    W walk;

    for( int step = 0; in.at < in.end && step < 400; step++ )
    {
        if( qvFuzzStep )
            qvFuzzStep( static_cast< size_t >( in.at - in.start ) );

        const Operation< W > *operation = operations + in.byte() % N;

        if( tracing )
            fprintf( stderr, "\n%3d. %s", step + 1, operation->name );

        operation->run( walk );

        if constexpr( requires { walk.check(); } )
            walk.check();
    }
}
} // namespace qv::fuzz

#define QV_FUZZ_READER( reader )                                                                                       \
    extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )                                          \
    {                                                                                                                  \
        return qv::fuzz::run( [&] { qv::fuzz::reader( data, size ); } );                                               \
    }

/** A walk of operations, each of them as OP( name ). */
#define QV_FUZZ_WALK( W, operations )                                                                                  \
    extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )                                          \
    {                                                                                                                  \
        using Current                                            = qv::fuzz::W;                                        \
        static const qv::fuzz::Operation< Current > OPERATIONS[] = { operations };                                     \
        qv::fuzz::in                                             = { data, data, data + size };                        \
        return qv::fuzz::run( [] { qv::fuzz::walk( OPERATIONS ); } );                                                  \
    }
#define OP( name ) { #name, []( Current &walk ) { qv::fuzz::call( walk, &Current::name ); } },

#endif
