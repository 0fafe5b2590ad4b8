/** @file
    References to objects in C++: what owns one, what has only borrowed one, and the base of all value types.

        qv::String name( "port" );                          // owns a reference
        qv::String copy = name;                             // one more reference, no copied text
        qvStoreDelValue( store.variable(), name.c() );      // to C and back: c() lends, variable() is for mutators
        qv::String text = qv::String::own( qvObjToString( object.c() ) );   // takes the result of a C function over

    Owned and lent. A value owns one reference and gives it up at its end. c() lends the object to a C function: its
    result, a qv::Lent, converts to the plain pointer, and is refused by each family's release. A plain pointer becomes
    a value by own(), which takes its reference over, or by share(), which takes one more. No constructor takes one.
    Only a plain pointer that a program keeps in a variable of its own is as unsafe as in C.

    Values. None is null: what may be absent is a std::optional. A value that was moved from may be assigned and
    destroyed; any other use ends the process with a report. To copy a value costs an atomic increment, to move it
    nothing. A value belongs to one thread at a time, its object to any number of them.

    Nothing in these headers throws, and all of them compile without exceptions and run-time type information. */

#ifndef QV_OBJECT_HPP
#define QV_OBJECT_HPP

#include "qv/qv.h"

#include "qv/sys/qv_abort.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace qv
{
class Object;
class String;

/* Borrowed and owned references ---------------------------------------------------------------------------------- */

/** An object that a value lends to a C function. It converts to the plain pointer, which is valid while the value lives
    and is not changed. It is refused where a reference is given back. It is as large as the pointer, without a
    constructor, so that it passes an ellipsis as the pointer does; qv::format() takes values themselves. */
template< class C >
class Lent
{
public:
    /** The plain pointer, still lent. */
    operator C *() const noexcept
    {
        return object_;
    }

private:
    template< class Self, class Type >
    friend class Reference;

    explicit Lent( C *object ) noexcept : object_( object )
    {
    }

    C *object_;
};

/** A reference on its way from own() or share() into a value. */
template< class C >
class Owned
{
private:
    template< class Self, class Type >
    friend class Reference;

    explicit Owned( C *object ) noexcept : object_( object )
    {
    }

    C *object_;
};

/** The functions of a family, by the type of its objects. */
template< class C >
struct Family;

template<>
struct Family< QV_OBJ >
{
    static QV_OBJ *object( QV_OBJ *obj )
    {
        return obj;
    }

    static void retain( QV_OBJ *obj )
    {
        qvObjRetain( obj );
    }

    static void release( QV_OBJ *obj )
    {
        qvObjRelease( obj );
    }

    static QV_INT compare( QV_OBJ *a, QV_OBJ *b )
    {
        return qvObjCompare( a, b );
    }

    static QV_STRING *toString( QV_OBJ *obj )
    {
        return qvObjToString( obj );
    }
};
} // namespace qv

/** What is lent is not the caller's to give back. */
template< class C >
void qvObjRelease( qv::Lent< C > ) = delete;

/** What C++ has to know of a family: its functions by its type, and that a lent object is not released. Modules write
    it once for each family of their own, outside every namespace. */
#define QV_CPP_FAMILY( Name, TYPE )                                                                                    \
    void qv##Name##Release( qv::Lent< TYPE > ) = delete;                                                               \
                                                                                                                       \
    template<>                                                                                                         \
    struct qv::Family< TYPE >                                                                                          \
    {                                                                                                                  \
        static QV_SORT *sort()                                                                                         \
        {                                                                                                              \
            return qv##Name##Sort();                                                                                   \
        }                                                                                                              \
                                                                                                                       \
        static QV_OBJ *object( TYPE *obj )                                                                             \
        {                                                                                                              \
            return qv##Name##Obj( obj );                                                                               \
        }                                                                                                              \
                                                                                                                       \
        static TYPE *from( QV_OBJ *obj )                                                                               \
        {                                                                                                              \
            return qv##Name##From( obj );                                                                              \
        }                                                                                                              \
                                                                                                                       \
        static void retain( TYPE *obj )                                                                                \
        {                                                                                                              \
            qv##Name##Retain( obj );                                                                                   \
        }                                                                                                              \
                                                                                                                       \
        static void release( TYPE *obj )                                                                               \
        {                                                                                                              \
            qv##Name##Release( obj );                                                                                  \
        }                                                                                                              \
                                                                                                                       \
        static QV_INT compare( TYPE *a, TYPE *b )                                                                      \
        {                                                                                                              \
            return qv##Name##Compare( a, b );                                                                          \
        }                                                                                                              \
                                                                                                                       \
        static QV_STRING *toString( TYPE *obj )                                                                        \
        {                                                                                                              \
            return qv##Name##ToString( obj );                                                                          \
        }                                                                                                              \
    }

// clang-format off
QV_CPP_FAMILY( Alert, QV_ALERT );                       QV_CPP_FAMILY( Alertable, QV_ALERTABLE );
QV_CPP_FAMILY( Barrier, QV_BARRIER );                   QV_CPP_FAMILY( BoxedBool, QV_BOXED_BOOL );
QV_CPP_FAMILY( BoxedInt, QV_BOXED_INT );                QV_CPP_FAMILY( BoxedNull, QV_BOXED_NULL );
QV_CPP_FAMILY( BoxedReal, QV_BOXED_REAL );              QV_CPP_FAMILY( BoxedUnique, QV_BOXED_UNIQUE );
QV_CPP_FAMILY( Buffer, QV_BUFFER );                     QV_CPP_FAMILY( BufferByteSink, QV_BUFFER_BYTE_SINK );
QV_CPP_FAMILY( BufferByteSource, QV_BUFFER_BYTE_SOURCE ); QV_CPP_FAMILY( ByteSink, QV_BYTE_SINK );
QV_CPP_FAMILY( ByteSource, QV_BYTE_SOURCE );            QV_CPP_FAMILY( CharSink, QV_CHAR_SINK );
QV_CPP_FAMILY( CharSource, QV_CHAR_SOURCE );            QV_CPP_FAMILY( Condset, QV_CONDSET );
QV_CPP_FAMILY( Counter, QV_COUNTER );                   QV_CPP_FAMILY( Decoder, QV_DECODER );
QV_CPP_FAMILY( Dict, QV_DICT );                         QV_CPP_FAMILY( Encoder, QV_ENCODER );
QV_CPP_FAMILY( Enum, QV_ENUM );                         QV_CPP_FAMILY( Flagset, QV_FLAGSET );
QV_CPP_FAMILY( Generation, QV_GENERATION );             QV_CPP_FAMILY( GenerationMutex, QV_GENERATION_MUTEX );
QV_CPP_FAMILY( Identifier, QV_IDENTIFIER );             QV_CPP_FAMILY( LineSink, QV_LINE_SINK );
QV_CPP_FAMILY( LineSource, QV_LINE_SOURCE );            QV_CPP_FAMILY( Module, QV_MODULE );
QV_CPP_FAMILY( ModuleVersion, QV_MODULE_VERSION );      QV_CPP_FAMILY( Monitor, QV_MONITOR );
QV_CPP_FAMILY( NlfLineSink, QV_NLF_LINE_SINK );         QV_CPP_FAMILY( NlfLineSource, QV_NLF_LINE_SOURCE );
QV_CPP_FAMILY( OptDef, QV_OPT_DEF );                    QV_CPP_FAMILY( OptSeq, QV_OPT_SEQ );
QV_CPP_FAMILY( Options, QV_OPTIONS );                   QV_CPP_FAMILY( Error, QV_ERROR );
QV_CPP_FAMILY( PriorityMap, QV_PRIORITY_MAP );          QV_CPP_FAMILY( RangeMap, QV_RANGE_MAP );
QV_CPP_FAMILY( Region, QV_REGION );                     QV_CPP_FAMILY( Signal, QV_SIGNAL );
QV_CPP_FAMILY( Signalable, QV_SIGNALABLE );             QV_CPP_FAMILY( Sort, QV_SORT );
QV_CPP_FAMILY( StackTrace, QV_STACK_TRACE );            QV_CPP_FAMILY( Store, QV_STORE );
QV_CPP_FAMILY( String, QV_STRING );                     QV_CPP_FAMILY( StringCharSink, QV_STRING_CHAR_SINK );
QV_CPP_FAMILY( StringCharSource, QV_STRING_CHAR_SOURCE ); QV_CPP_FAMILY( Thread, QV_THREAD );
QV_CPP_FAMILY( Time, QV_TIME );                         QV_CPP_FAMILY( Timer, QV_TIMER );
QV_CPP_FAMILY( ToolSwitch, QV_TOOL_SWITCH );            QV_CPP_FAMILY( UnicodeNormalizer, QV_UNICODE_NORMALIZER );
QV_CPP_FAMILY( Vector, QV_VECTOR );
// clang-format on

namespace qv
{
namespace detail
{
/** Ends the process with a report of the caller's place unless `holds`. */
inline void demand(
    bool holds, const char *expression, const char *file = __builtin_FILE(), int line = __builtin_LINE() )
{
    if( !holds ) [[unlikely]]
        qv___Abort( nullptr, file, line, expression );
}

/** The UTF-8 form of characters. Two walks over them and one allocation of std::string. */
inline std::string utf8( const QV_CHAR *chars, QV_INT length )
{
    std::string text( static_cast< size_t >( qvCharsConvertToUtf8( nullptr, 0, chars, length, QV_FALSE ) ), '\0' );
    qvCharsConvertToUtf8( text.data(), static_cast< QV_INT >( text.size() ), chars, length, QV_FALSE );
    return text;
}
} // namespace detail

/** The base of all values: owns one reference to an object of the C type `C`. `Self` is the value type itself. */
template< class Self, class C >
class Reference
{
public:
    /** The type of the objects in C. */
    using CType = C;

    /** Takes over a reference that a C function has returned to its caller. Null ends the process. */
    [[nodiscard]] static Self own( C *owned )
    {
        detail::demand( owned, "owned" );
        return Self( Owned< C >( owned ) );
    }

    /** The same for results that are null where there is nothing. */
    [[nodiscard]] static std::optional< Self > ownOptional( C *owned )
    {
        return owned ? std::optional< Self >( Self( Owned< C >( owned ) ) ) : std::nullopt;
    }

    /** Takes one more reference to an object that somebody else owns. Null ends the process. */
    [[nodiscard]] static Self share( C *borrowed )
    {
        Family< C >::retain( borrowed );
        return Self( Owned< C >( borrowed ) );
    }

    /** Takes over what own() and share() have. */
    explicit Reference( Owned< C > owned ) noexcept : object_( owned.object_ )
    {
    }

    /** One more reference. */
    Reference( const Reference &other ) : object_( other.object_ )
    {
        Family< C >::retain( object_ );
    }

    /** Moves the reference, without counting. */
    Reference( Reference &&other ) noexcept : object_( std::exchange( other.object_, nullptr ) )
    {
    }

    /** One more reference, in place of the old one. */
    Reference &operator=( const Reference &other )
    {
        if( this != &other )
            *this = Reference( other );

        return *this;
    }

    /** Moves the reference, in place of the old one. */
    Reference &operator=( Reference &&other ) noexcept
    {
        C *taken = std::exchange( other.object_, nullptr ), *old = std::exchange( object_, taken );

        if( old )
            Family< C >::release( old );

        return *this;
    }

    ~Reference()
    {
        if( object_ )
            Family< C >::release( object_ );
    }

    /** Lends the object to a C function. What a temporary would lend might outlive it, so that has none. */
    Lent< C > c() const & noexcept
    {
        return Lent< C >( object_ );
    }

    void c() const && = delete;

    /** The variable that C functions change, which may put another object into it. */
    [[nodiscard]] C **variable() & noexcept
    {
        return &object_;
    }

    /** Hands the reference to the caller; the value is then as one that was moved from. */
    [[nodiscard]] C *giveUp() && noexcept
    {
        return std::exchange( object_, nullptr );
    }

    /** The text of the object, as its family forms it. */
    [[nodiscard]] String toString() const;

    /** The same in UTF-8. */
    [[nodiscard]] std::string str() const
    {
        QV_STRING  *text = Family< C >::toString( object_ );
        std::string utf8 = detail::utf8( qvStringBacking( text ), qvStringLength( text ) );
        qvStringRelease( text );
        return utf8;
    }

    /** Equality and order are those of the family's compare function, at its cost. */
    friend bool operator==( const Self &a, const Self &b )
    {
        return Family< C >::compare( a.raw(), b.raw() ) == 0;
    }

    /** The order, likewise. */
    friend std::weak_ordering operator<=>( const Self &a, const Self &b )
    {
        return Family< C >::compare( a.raw(), b.raw() ) <=> 0;
    }

    /** Writes the text in UTF-8. */
    template< class Traits >
    friend std::basic_ostream< char, Traits > &operator<<( std::basic_ostream< char, Traits > &out, const Self &value )
    {
        return out << value.str();
    }

protected:
    /** The plain pointer, for the value types themselves. */
    C *raw() const noexcept
    {
        return object_;
    }

private:
    C *object_;
};

/** True for the value types, qv::Object among them. */
template< class T >
concept Value = requires { typename T::CType; } && std::derived_from< T, Reference< T, typename T::CType > >;

/** True for the value types of one family each. */
template< class T >
concept FamilyValue = Value< T > && !std::same_as< T, Object >;

/** An object of a family that has no type of its own here, with the same rules: `qv::Held< QV_ENUM >`. */
template< class C >
class Held : public Reference< Held< C >, C >
{
public:
    using Reference< Held< C >, C >::Reference;
};

/* Values as objects ---------------------------------------------------------------------------------------------- */

/** How a type travels in Vectors, Dicts and qv::Object. `box` returns a new reference, which the caller owns; `holds`
    tells whether an object, which is borrowed, holds such a value; `unbox` reads it and ends the process if not.
    Programs may specialise it for types of their own. */
template< class T >
struct Boxing;

template< FamilyValue T >
struct Boxing< T >
{
    using C = typename T::CType;

    static QV_OBJ *box( const T &value )
    {
        C *object = value.c();
        Family< C >::retain( object );
        return Family< C >::object( object );
    }

    static bool holds( QV_OBJ *object )
    {
        return qvObjSort( object ) == Family< C >::sort();
    }

    static T unbox( QV_OBJ *object )
    {
        return T::share( Family< C >::from( object ) );
    }
};

/** Integers of every width, but not characters. One that is beyond QV_INT, or that the type does not hold, ends the
    process. */
template< std::integral T >
    requires(
        !std::same_as< T, bool > && !std::same_as< T, char > && !std::same_as< T, wchar_t >
        && !std::same_as< T, char8_t > && !std::same_as< T, char16_t > && !std::same_as< T, char32_t > )
struct Boxing< T >
{
    static QV_OBJ *box( T value )
    {
        detail::demand( std::in_range< QV_INT >( value ), "std::in_range< QV_INT >( value )" );
        return qvBoxedIntObj( qvBoxedIntCreate( static_cast< QV_INT >( value ) ) );
    }

    static bool holds( QV_OBJ *object )
    {
        return qvObjSort( object ) == qvBoxedIntSort()
               && std::in_range< T >( qvBoxedIntValue( qvBoxedIntFrom( object ) ) );
    }

    static T unbox( QV_OBJ *object )
    {
        QV_INT value = qvBoxedIntValue( qvBoxedIntFrom( object ) );
        detail::demand( std::in_range< T >( value ), "std::in_range< T >( value )" );
        return static_cast< T >( value );
    }
};

template< std::floating_point T >
struct Boxing< T >
{
    static QV_OBJ *box( T value )
    {
        return qvBoxedRealObj( qvBoxedRealCreate( static_cast< QV_REAL >( value ) ) );
    }

    static bool holds( QV_OBJ *object )
    {
        return qvObjSort( object ) == qvBoxedRealSort();
    }

    static T unbox( QV_OBJ *object )
    {
        return static_cast< T >( qvBoxedRealValue( qvBoxedRealFrom( object ) ) );
    }
};

template<>
struct Boxing< bool >
{
    static QV_OBJ *box( bool value )
    {
        return qvBoxedBoolObj( qvBoxedBoolCreate( value ? QV_TRUE : QV_FALSE ) );
    }

    static bool holds( QV_OBJ *object )
    {
        return qvObjSort( object ) == qvBoxedBoolSort();
    }

    static bool unbox( QV_OBJ *object )
    {
        return qvBoxedBoolValue( qvBoxedBoolFrom( object ) );
    }
};

/** Enumerations travel as integers. */
template< class T >
    requires std::is_enum_v< T >
struct Boxing< T >
{
    using Number = Boxing< std::conditional_t< std::is_unsigned_v< std::underlying_type_t< T > >, uint64_t, int64_t > >;

    static QV_OBJ *box( T value )
    {
        return Number::box( static_cast< std::underlying_type_t< T > >( value ) );
    }

    static bool holds( QV_OBJ *object )
    {
        return Number::holds( object );
    }

    static T unbox( QV_OBJ *object )
    {
        return static_cast< T >( Number::unbox( object ) );
    }
};

/** True for what can be an element, a key or a value. */
template< class T >
concept Boxable = requires( const T &value, QV_OBJ *object ) {
    { Boxing< T >::box( value ) } -> std::same_as< QV_OBJ * >;
    { Boxing< T >::holds( object ) } -> std::same_as< bool >;
    { Boxing< T >::unbox( object ) } -> std::same_as< T >;
};

/** Any object. */
class Object : public Reference< Object, QV_OBJ >
{
public:
    using Reference::Reference;

    /** The object of a value, or a new one that holds a number or truth value. */
    template< class T >
        requires( !std::same_as< T, Object > && Boxable< T > )
    Object( const T &value ) : Object( own( Boxing< T >::box( value ) ) )
    {
    }

    /** A boxed null: the absence of a value as an object. */
    Object( std::nullptr_t ) : Object( own( qvBoxedNullObj( qvBoxedNullCreate() ) ) )
    {
    }

    /** True if it is a T: of its family, or a number or truth value that a T can hold. */
    template< Boxable T >
    [[nodiscard]] bool is() const
    {
        return Boxing< T >::holds( raw() );
    }

    /** The value as a T, if it is one. */
    template< Boxable T >
    [[nodiscard]] std::optional< T > as() const
    {
        return is< T >() ? std::optional< T >( Boxing< T >::unbox( raw() ) ) : std::nullopt;
    }

    /** The name of its sort, as `QV_STRING`. */
    [[nodiscard]] String sortName() const;
};

template<>
struct Boxing< Object >
{
    static QV_OBJ *box( const Object &value )
    {
        qvObjRetain( value.c() );
        return value.c();
    }

    static bool holds( QV_OBJ * )
    {
        return true;
    }

    static Object unbox( QV_OBJ *object )
    {
        return Object::share( object );
    }
};

namespace detail
{
/** A value as an object for the length of a call. Values are lent, numbers boxed. */
template< class T >
class Boxed
{
public:
    explicit Boxed( const T &value ) : object_( Boxing< T >::box( value ) )
    {
    }

    Boxed( const Boxed & )            = delete;
    Boxed &operator=( const Boxed & ) = delete;

    ~Boxed()
    {
        qvObjRelease( object_ );
    }

    QV_OBJ *get() const
    {
        return object_;
    }

private:
    QV_OBJ *object_;
};

template< Value T >
class Boxed< T >
{
public:
    explicit Boxed( const T &value ) : object_( Family< typename T::CType >::object( value.c() ) )
    {
    }

    QV_OBJ *get() const
    {
        return object_;
    }

private:
    QV_OBJ *object_;
};

/** A parameter whose value a container keeps: a value itself, which the caller may move there; of others an object is
    made, so that they are only read. */
template< class T >
using Kept = std::conditional_t< Value< T >, T, const T & >;

/** A new reference to a value as an object, which the caller owns: of a value that is moved here its own, of others that
    of their object. */
template< Value T >
QV_OBJ *given( T &&value )
{
    return Family< typename T::CType >::object( std::forward< T >( value ).giveUp() );
}

template< class T >
QV_OBJ *given( const T &value )
{
    return Boxing< T >::box( value );
}

/** The value of an object whose reference the call takes over: a value has it then. */
template< class T >
T taken( QV_OBJ *owned )
{
    if constexpr( std::same_as< T, Object > )
    {
        return Object::own( owned );
    }
    else if constexpr( Value< T > )
    {
        return T::own( Family< typename T::CType >::from( owned ) );
    }
    else
    {
        Object keeper = Object::own( owned );
        return Boxing< T >::unbox( owned );
    }
}

/** A hash of an object that agrees with its order. Nested deeper than a few levels, or of a sort that is not known here,
    only sort and length count. */
inline size_t hashOf( QV_OBJ *object, int levels );
} // namespace detail
} // namespace qv

namespace std
{
/** Texts, buffers, numbers, Vectors and Dicts hash by what they hold, and other objects by their sort. */
template< qv::Value T >
struct hash< T >
{
    /** The hash, in the time that reading the value takes. */
    size_t operator()( const T &value ) const
    {
        return qv::detail::hashOf( qv::Family< typename T::CType >::object( value.c() ), 8 );
    }
};
} // namespace std

#endif
