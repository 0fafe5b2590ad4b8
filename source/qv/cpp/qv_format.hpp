/** @file
    Formats that are checked while the program compiles.

        qv::String line = qv::format( "%s: %i of %i (%.1r %%)", name, done, all, 100.0 * done / all );
        qv::append( line, " in %5i ms, %06!16i", time, hash );
        qv::print( "%s\n", line );
        qv::print( "%~o\n", std::move( vector ) );          // the tilde takes the value over

    The language is that of qv_format.h. Each conversion, flag and asterisk is compared with the type of its argument,
    and each argument is passed in the width that the library reads:

        conversion      takes
        b               bool
        c               char32_t, and a char of ASCII
        i, X, A, *      integers of every width, and unscoped enumerations without toString()
        r               float, double, long double
        s               String, std::string, C strings, views of all widths, enumerations of which toString() makes a
                        text, and a std::optional of a String, which is `null` where it is empty
        o               the same and every other value
        lc, lw          C strings, std::string, views; of wchar_t
        lC, lW          a C string, of wchar_t, and its length
        ~               with o and s: a value that is moved

    A wrong call does not compile, and the message names the conversion. Beyond the C functions, a tilde, a base or a
    precision without effect or out of range is wrong here, and so is anything but ASCII within a conversion. An
    unsigned integer beyond QV_INT ends the process. Formatting costs what it costs in C; where `%s` or `%o` meet a text
    that is no String, a copy of the format in addition. */

#ifndef QV_FORMAT_HPP
#define QV_FORMAT_HPP

#include "qv/cpp/qv_string.hpp"

#include <cstring>
#include <tuple>

namespace qv
{
namespace detail
{
/** What an argument is to a format. */
enum class FormatKind : uint8_t
{
    OTHER,
    TRUTH,
    CHARACTER,
    INTEGER,
    REAL,
    TEXT,   // a String, or what becomes one for the call
    OBJECT, // any other value
    CSTR,   // up to the terminator
    UTF8,   // with a length
    WCSTR,
    WIDE
};

/** Enumerations, of which a function toString() in their namespace makes a text. */
template< class T >
concept NamedEnum = std::is_enum_v< T > && requires( T value ) {
    { toString( value ) } -> std::convertible_to< String >;
};

template< class T >
struct OptionalOf : std::false_type
{
};

template< Value T >
struct OptionalOf< std::optional< T > > : std::true_type
{
    using Type = T;
};

template< class T >
struct LentOf : std::false_type
{
};

template< class C >
struct LentOf< Lent< C > > : std::true_type
{
    using Type = C;
};

template< class Arg >
consteval FormatKind formatKind()
{
    using T = std::decay_t< Arg >;

    if constexpr( std::same_as< T, bool > )
        return FormatKind::TRUTH;
    else if constexpr( std::same_as< T, char > || std::same_as< T, char32_t > )
        return FormatKind::CHARACTER;
    else if constexpr( NamedEnum< T > )
        return FormatKind::TEXT; // NOLINT(bugprone-branch-clone): has to be asked before the other enumerations
    else if constexpr( std::is_enum_v< T > )
        return std::convertible_to< T, QV_INT > ? FormatKind::INTEGER : FormatKind::OTHER;
    else if constexpr( std::floating_point< T > )
        return FormatKind::REAL;
    else if constexpr( std::integral< T > )
        return Boxable< T > ? FormatKind::INTEGER : FormatKind::OTHER; // no other characters
    else if constexpr( std::same_as< T, const char * > || std::same_as< T, char * > )
        return FormatKind::CSTR;
    else if constexpr( std::same_as< T, const wchar_t * > || std::same_as< T, wchar_t * > )
        return FormatKind::WCSTR;
    else if constexpr( Value< T > )
        return std::same_as< T, String > ? FormatKind::TEXT : FormatKind::OBJECT;
    else if constexpr( OptionalOf< T >::value )
        return std::same_as< typename OptionalOf< T >::Type, String > ? FormatKind::TEXT : FormatKind::OBJECT;
    else if constexpr( LentOf< T >::value )
        return std::same_as< T, Lent< QV_STRING > > ? FormatKind::TEXT : FormatKind::OBJECT;
    else if constexpr( Utf8Text< T > || std::convertible_to< T, std::u8string_view > )
        return FormatKind::UTF8;
    else if constexpr( std::convertible_to< T, std::wstring_view > )
        return FormatKind::WIDE;
    else if constexpr( Utf32Text< T > )
        return FormatKind::TEXT;
    else
        return FormatKind::OTHER;
}

/** True for an argument that a tilde can take over. */
template< class Arg >
constexpr bool isMoved = Value< std::remove_cvref_t< Arg > > && !std::is_reference_v< Arg > && !std::is_const_v< Arg >;

/** Says why a format is wrong: not constexpr, so that the compiler shows the call that it cannot make. */
void wrongFormat( const char *why );

/** What a format asks of its arguments. */
struct FormatArg
{
    FormatKind kind;
    bool       isMoved;
    bool       takenOver; // by a tilde
    uint16_t   at;        // where its conversion has to be another one, or 0
};

/** Walks a format as the library does. */
class FormatCheck
{
public:
    constexpr FormatCheck( const char *text, size_t length, FormatArg *args, size_t count ) :
        text_( text ), end_( length ), args_( args ), count_( count )
    {
    }

    constexpr void run()
    {
        bool hasConversion = false;

        while( at_ < end_ )
            if( text_[at_++] == '%' )
            {
                hasConversion |= peek() != '%';
                conversion();
            }

        if( !hasConversion )
            wrongFormat( "a format has a conversion other than %%; %#% is one that writes nothing" );

        if( next_ != count_ )
            wrongFormat( "there are more arguments than the conversions take" );
    }

private:
    static constexpr int64_t NONE = -1, STAR = -2;

    constexpr char peek()
    {
        if( at_ == end_ )
            wrongFormat( "a format ends within a conversion; %% is a percent sign" );

        return text_[at_];
    }

    constexpr FormatArg &take()
    {
        if( next_ == count_ )
            wrongFormat( "there are fewer arguments than the conversions take" );

        return args_[next_++];
    }

    // A number of the format, STAR or NONE.
    constexpr int64_t number()
    {
        if( peek() == '*' )
        {
            at_++;

            if( take().kind != FormatKind::INTEGER )
                wrongFormat( "* takes an integer" );

            return STAR;
        }

        if( !isDigit( peek() ) )
            return NONE;

        int64_t value = 0;

        for( ; isDigit( peek() ); at_++ )
        {
            if( value > INT64_MAX / 10 - 1 )
                wrongFormat( "a width, precision or base is too large" );

            value = value * 10 + ( text_[at_] - '0' );
        }

        while( peek() == ' ' || ( peek() >= '\t' && peek() <= '\r' ) )
            at_++;

        return value;
    }

    static constexpr bool isDigit( char ch )
    {
        return ch >= '0' && ch <= '9';
    }

    constexpr void conversion()
    {
        bool    tilde     = false;
        int64_t precision = NONE, base = NONE;

        for( ; std::string_view( "-+ 0^'#~" ).find( peek() ) != std::string_view::npos; at_++ )
            tilde |= text_[at_] == '~';

        number();

        if( peek() == '.' )
        {
            at_++;
            precision = number();
        }

        if( peek() == '!' )
        {
            at_++;
            base = number();
        }

        size_t place = at_;
        char   what  = peek();
        at_++;

        if( base != NONE && what != 'i' && what != 'X' && what != 'A' && what != 'r' )
            wrongFormat( "! is for %i, %X, %A and %r" );

        if( base >= 0 && ( base < 2 || base > 36 ) )
            wrongFormat( "! takes a base of 2 to 36" );

        if( tilde && what != 'o' && what != 's' )
            wrongFormat( "~ is for %o and %s" );

        switch( what )
        {
        case '%':
            return;
        case 'm':
            if( precision >= 0x110000 )
                wrongFormat( "%m takes the code of a character as its precision" );
            return;
        case 'b':
            if( take().kind != FormatKind::TRUTH )
                wrongFormat( "%b takes a bool" );
            return;
        case 'c':
            if( take().kind != FormatKind::CHARACTER )
                wrongFormat( "%c takes a char32_t or char" );
            return;
        case 'i':
            if( take().kind != FormatKind::INTEGER )
                wrongFormat( "%i takes an integer" );
            return;
        case 'X':
            if( take().kind != FormatKind::INTEGER )
                wrongFormat( "%X takes an integer" );
            return;
        case 'A':
            if( take().kind != FormatKind::INTEGER )
                wrongFormat( "%A takes an integer" );
            return;
        case 'r':
            if( take().kind != FormatKind::REAL )
                wrongFormat( "%r takes a float or double" );
            return;
        case 's':
            if( isText( text( tilde, place ) ) )
                return;
            wrongFormat( "%s takes a text; %o takes any value" );
            return;
        case 'o':
            if( FormatKind kind = text( tilde, place ); !isText( kind ) && kind != FormatKind::OBJECT )
                wrongFormat( "%o takes a value or a text" );
            return;
        case 'l':
            return outside( peek(), place );
        default:
            wrongFormat( "there is no such conversion; the letters are b c i X A r o s lc lC lw lW m" );
        }
    }

    static constexpr bool isText( FormatKind kind )
    {
        return kind >= FormatKind::TEXT && kind != FormatKind::OBJECT;
    }

    constexpr FormatKind text( bool tilde, size_t place )
    {
        FormatArg &arg = take();

        if( tilde && !arg.isMoved )
            wrongFormat( "~ takes over a value that is moved" );

        arg.takenOver = tilde;

        if( arg.kind > FormatKind::OBJECT )
            change( arg, place );

        return arg.kind;
    }

    constexpr void outside( char what, size_t place )
    {
        at_++;

        if( what != 'c' && what != 'C' && what != 'w' && what != 'W' )
            wrongFormat( "%l is followed by c, C, w or W" );

        FormatArg &arg = take();

        if( what == 'c' && arg.kind != FormatKind::CSTR && arg.kind != FormatKind::UTF8 )
            wrongFormat( "%lc takes a C string, a std::string or a view" );

        if( what == 'C' && arg.kind != FormatKind::CSTR )
            wrongFormat( "%lC takes a C string and its length; %s takes a view" );

        if( what == 'w' && arg.kind != FormatKind::WCSTR && arg.kind != FormatKind::WIDE )
            wrongFormat( "%lw takes a text of wchar_t" );

        if( what == 'W' && arg.kind != FormatKind::WCSTR )
            wrongFormat( "%lW takes a text of wchar_t and its length; %s takes a view" );

        if( ( what == 'C' || what == 'W' ) && take().kind != FormatKind::INTEGER )
            wrongFormat( "%lC and %lW take an integer as the length" );

        if( arg.kind == FormatKind::UTF8 || arg.kind == FormatKind::WIDE )
            change( arg, place );
    }

    static constexpr void change( FormatArg &arg, size_t place )
    {
        if( place > UINT16_MAX )
            wrongFormat( "a format with a text that is no String has less than 65,536 bytes" );

        arg.at = static_cast< uint16_t >( place );
    }

    const char *text_;
    size_t      at_ = 0, end_;
    FormatArg  *args_;
    size_t      next_ = 0, count_;
};
} // namespace detail

/** A format with arguments of these types. Only a literal, or another constant text, becomes one. */
template< class... Args >
class Format
{
public:
    /** Checks a text while the program compiles. */
    template< size_t N >
    consteval Format( const char ( &text )[N] ) : text_( text ), length_( N - 1 )
    {
        detail::FormatCheck( text, N - 1, args_, sizeof...( Args ) ).run();
    }

    /** Calls `function` with the text of the format for the C functions, and its length. */
    template< class Function >
    auto call( Function function ) const
    {
        size_t changes = 0;

        for( size_t i = 0; i < sizeof...( Args ); i++ )
            changes += args_[i].at != 0;

        if( !changes )
            return function( text_, static_cast< QV_INT >( length_ ) );

        // Each text that is no String has a conversion of its own, of two letters.
        const size_t SHORT = 256;
        char         local[SHORT];
        std::string  block;
        char        *text = local;

        if( length_ + changes > SHORT )
        {
            block.resize( length_ + changes );
            text = block.data();
        }

        char  *to   = text;
        size_t from = 0;

        for( size_t i = 0; i < sizeof...( Args ); i++ )
            if( size_t at = args_[i].at )
            {
                to           = std::copy( text_ + from, text_ + at, to );
                from         = at + ( text_[at] == 'l' ? 2 : 1 );
                bool isWide  = args_[i].kind == detail::FormatKind::WCSTR || args_[i].kind == detail::FormatKind::WIDE;
                bool counted = args_[i].kind == detail::FormatKind::UTF8 || args_[i].kind == detail::FormatKind::WIDE;
                *to++        = 'l';
                *to++        = isWide ? ( counted ? 'W' : 'w' ) : ( counted ? 'C' : 'c' );
            }

        to = std::copy( text_ + from, text_ + length_, to );
        return function( text, static_cast< QV_INT >( to - text ) );
    }

    /** True for an argument that a tilde takes over. */
    [[nodiscard]] bool takesOver( size_t index ) const
    {
        return args_[index].takenOver;
    }

private:
    const char       *text_;
    size_t            length_;
    detail::FormatArg args_[sizeof...( Args ) + 1] = {
        { detail::formatKind< Args >(), detail::isMoved< Args >, false, 0 }..., {} };
};

namespace detail
{
/** An argument as the library reads it: one value, or two for a text with a length. */
template< class Arg, FormatKind kind = formatKind< Arg >() >
struct FormatPassed;

template< class Arg >
struct FormatPassed< Arg, FormatKind::TRUTH >
{
    FormatPassed( bool value, bool ) : values( value ? QV_TRUE : QV_FALSE )
    {
    }

    std::tuple< QV_BOOL > values;
};

template< class Arg >
struct FormatPassed< Arg, FormatKind::CHARACTER >
{
    FormatPassed( char32_t ch, bool ) : values( ch )
    {
    }

    FormatPassed( char ch, bool ) : values( static_cast< unsigned char >( ch ) < 128 ? uint32_t( ch ) : 0xFFFD )
    {
    }

    std::tuple< uint32_t > values;
};

template< class Arg >
struct FormatPassed< Arg, FormatKind::INTEGER >
{
    template< class T >
    FormatPassed( T value, bool ) : values( static_cast< QV_INT >( value ) )
    {
        if constexpr( std::integral< T > )
            demand( std::in_range< QV_INT >( value ), "std::in_range< QV_INT >( value )" );
    }

    std::tuple< QV_INT > values;
};

template< class Arg >
struct FormatPassed< Arg, FormatKind::REAL >
{
    template< class T >
    FormatPassed( T value, bool ) : values( static_cast< QV_REAL >( value ) )
    {
    }

    std::tuple< QV_REAL > values;
};

template< class Arg >
    requires(
        Value< std::remove_cvref_t< Arg > > || LentOf< std::remove_cvref_t< Arg > >::value
        || OptionalOf< std::remove_cvref_t< Arg > >::value )
struct FormatPassed< Arg, FormatKind::OBJECT >
{
    template< Value T >
    FormatPassed( const T &value, bool ) : values( Family< typename T::CType >::object( value.c() ) )
    {
    }

    template< Value T >
        requires( isMoved< T > )
    FormatPassed( T &&value, bool takenOver ) :
        values(
            Family< typename T::CType >::object( takenOver ? std::forward< T >( value ).giveUp() : *value.variable() ) )
    {
    }

    template< class C >
    FormatPassed( const Lent< C > &value, bool ) : values( Family< C >::object( value ) )
    {
    }

    template< Value T >
    FormatPassed( const std::optional< T > &value, bool ) :
        values( value ? Family< typename T::CType >::object( value->c() ) : nullptr )
    {
    }

    std::tuple< QV_OBJ * > values;
};

template< class Arg >
    requires(
        Value< std::remove_cvref_t< Arg > > || LentOf< std::remove_cvref_t< Arg > >::value
        || OptionalOf< std::remove_cvref_t< Arg > >::value )
struct FormatPassed< Arg, FormatKind::TEXT > : FormatPassed< Arg, FormatKind::OBJECT >
{
    using FormatPassed< Arg, FormatKind::OBJECT >::FormatPassed;
};

template< class Arg >
struct FormatPassed< Arg, FormatKind::TEXT >
{
    template< class T >
    FormatPassed( const T &value, bool ) : text( make( value ) ), values( qvStringObj( text.c() ) )
    {
    }

    template< class T >
    static String make( const T &value )
    {
        if constexpr( std::is_enum_v< T > )
            return toString( value );
        else
            return value;
    }

    String                 text;
    std::tuple< QV_OBJ * > values;
};

template< class Arg >
struct FormatPassed< Arg, FormatKind::CSTR >
{
    FormatPassed( const char *text, bool ) : values( text )
    {
    }

    std::tuple< const char * > values;
};

template< class Arg >
struct FormatPassed< Arg, FormatKind::WCSTR >
{
    FormatPassed( const wchar_t *text, bool ) : values( text )
    {
    }

    std::tuple< const wchar_t * > values;
};

template< class Arg >
struct FormatPassed< Arg, FormatKind::UTF8 >
{
    FormatPassed( std::string_view text, bool ) :
        values( text.data() ? text.data() : "", static_cast< QV_INT >( text.size() ) )
    {
    }

    FormatPassed( std::u8string_view text, bool ) :
        FormatPassed( std::string_view( reinterpret_cast< const char * >( text.data() ), text.size() ), false )
    {
    }

    std::tuple< const char *, QV_INT > values;
};

template< class Arg >
struct FormatPassed< Arg, FormatKind::WIDE >
{
    FormatPassed( std::wstring_view text, bool ) :
        values( text.data() ? text.data() : L"", static_cast< QV_INT >( text.size() ) )
    {
    }

    std::tuple< const wchar_t *, QV_INT > values;
};

/** Calls `function` with the format, its length and the arguments as the library reads them. */
template< class Function, class... Args, size_t... Is >
auto callFormat( Function function, const Format< Args... > &fmt, std::index_sequence< Is... >, Args &&...args )
{
    std::tuple< FormatPassed< Args >... > passed(
        FormatPassed< Args >( std::forward< Args >( args ), fmt.takesOver( Is ) )... );

    return fmt.call(
        [&]( const char *text, QV_INT length )
        {
            return std::apply(
                [&]( auto... values ) { return function( text, length, values... ); },
                std::tuple_cat( std::get< Is >( passed ).values... ) );
        } );
}
} // namespace detail

/** A new text of the format and its arguments. */
template< class... Args >
[[nodiscard]] String format( const Format< std::type_identity_t< Args >... > &fmt, Args &&...args )
{
    return String::own( detail::callFormat< decltype( qvStringCreateFromFormatCstr ) &, Args... >(
        qvStringCreateFromFormatCstr, fmt, std::index_sequence_for< Args... >(), std::forward< Args >( args )... ) );
}

/** Adds formatted text at the end of `dest`, which may be an argument too. */
template< class... Args >
void append( String &dest, const Format< std::type_identity_t< Args >... > &fmt, Args &&...args )
{
    auto add = [&dest]( const char *text, QV_INT length, auto... values )
    { qvStringAppendFormatCstr( dest.variable(), text, length, values... ); };
    detail::callFormat< decltype( add ) &, Args... >(
        add, fmt, std::index_sequence_for< Args... >(), std::forward< Args >( args )... );
}

/** Prints formatted text to the hook of the run: see qv_print.h. */
template< class... Args >
void print( const Format< std::type_identity_t< Args >... > &fmt, Args &&...args )
{
    detail::callFormat< decltype( qvPrintFormatCstr ) &, Args... >(
        qvPrintFormatCstr, fmt, std::index_sequence_for< Args... >(), std::forward< Args >( args )... );
}
} // namespace qv

#endif
