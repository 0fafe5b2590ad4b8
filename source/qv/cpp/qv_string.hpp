/** @file
    qv::String: text in C++.

        using namespace qv::literals;
        qv::String line = "Grüße, Welt "_qs;
        line += u8"Ω";
        for( char32_t ch : line )                       // a contiguous range of code points
            ...
        for( qv::String word : line.upper().words() )   // GRÜSSE, then WELT, then Ω
            std::cout << word << '\n';

    A String is a value: copies share the text until one of them is changed. From outside come UTF-8, as C strings and
    views, and code points; what is no UTF-8 becomes U+FFFD. Indexes and lengths are QV_INT and count code points. Those
    outside the text end the process. qv_string.h tells the costs. */

#ifndef QV_STRING_HPP
#define QV_STRING_HPP

#include "qv/cpp/qv_object.hpp"

#include <iterator>
#include <ranges>

namespace qv
{
template< class T >
class Vector;
class Words;
class TextLines;

/** True for UTF-8 from outside: std::string, its views and C strings. */
template< class T >
concept Utf8Text = std::convertible_to< const T &, std::string_view > && !Value< T >;

/** The same for code points. */
template< class T >
concept Utf32Text = std::convertible_to< const T &, std::u32string_view > && !Value< T >;

namespace detail
{
inline char32_t *appendRoom( QV_STRING **dest, QV_INT count )
{
    return qvStringAppendRoom( dest, count );
}

inline uint8_t *appendRoom( QV_BUFFER **dest, QV_INT count )
{
    return qvBufferAppendRoom( dest, count );
}

inline void appendWritten( QV_STRING **dest, QV_INT count )
{
    qvStringAppendWritten( dest, count );
}

inline void appendWritten( QV_BUFFER **dest, QV_INT count )
{
    qvBufferAppendWritten( dest, count );
}

// Room after the contents of a text or a Buffer; what is said to be written belongs to them at the end of the scope.
template< class C >
struct AppendRoom
{
    C                                                         **dest;
    QV_INT                                                      written = 0;
    decltype( appendRoom( static_cast< C ** >( nullptr ), 0 ) ) place;

    AppendRoom( C **to, QV_INT count ) : dest( to ), place( appendRoom( to, count ) )
    {
    }

    ~AppendRoom()
    {
        appendWritten( dest, written );
    }

    AppendRoom( const AppendRoom & )            = delete;
    AppendRoom &operator=( const AppendRoom & ) = delete;
};
} // namespace detail

/** Text, a sequence of code points. */
class String : public Reference< String, QV_STRING >
{
public:
    using Reference::Reference;

    /** The empty text, which all share. */
    String() : String( own( qvStringCreate() ) )
    {
    }

    /** Decodes UTF-8. A null C string ends the process. */
    template< Utf8Text T >
    String( const T &text ) : String( decode( text ) )
    {
    }

    /** Decodes UTF-8. */
    String( std::u8string_view text ) :
        String( decode( std::string_view( reinterpret_cast< const char * >( text.data() ), text.size() ) ) )
    {
    }

    /** Decodes UTF-8 up to its terminator. */
    String( const char8_t *text ) : String( std::u8string_view( text ) )
    {
    }

    /** Copies code points; one beyond U+10FFFF ends the process. */
    template< Utf32Text T >
    String( const T &text ) : String( copy( text ) )
    {
    }

    String( std::nullptr_t ) = delete;

    /* Reading ---------------------------------------------------------------------------------------------------- */

    /** How many code points there are. */
    [[nodiscard]] QV_INT size() const
    {
        return qvStringLength( raw() );
    }

    /** True without code points. */
    [[nodiscard]] bool empty() const
    {
        return size() == 0;
    }

    /** The first code point, valid until the value is changed or ends; may be null for an empty text. */
    [[nodiscard]] const char32_t *data() const
    {
        return qvStringBacking( raw() );
    }

    /** The first code point. */
    [[nodiscard]] const char32_t *begin() const
    {
        return data();
    }

    /** After the last code point. */
    [[nodiscard]] const char32_t *end() const
    {
        return data() + size();
    }

    /** The text in place, valid until the value is changed or ends. A temporary has none. */
    [[nodiscard]] std::u32string_view view() const &
    {
        return { data(), static_cast< size_t >( size() ) };
    }

    void view() const && = delete;

    /** The same where a view is asked for. */
    operator std::u32string_view() const &
    {
        return view();
    }

    operator std::u32string_view() const && = delete;

    /** The text in UTF-8. */
    [[nodiscard]] std::string str() const
    {
        return detail::utf8( data(), size() );
    }

    /** The same. */
    explicit operator std::string() const
    {
        return str();
    }

    /** The code point at an index. */
    char32_t operator[]( QV_INT index ) const
    {
        return qvStringCharAt( raw(), index );
    }

    /** A copy of `count` code points from `offset`. */
    [[nodiscard]] String part( QV_INT offset, QV_INT count ) const
    {
        return own( qvStringCreateFromInner( raw(), offset, count ) );
    }

    /** True if the text begins with another; it does with an empty one. */
    [[nodiscard]] bool beginsWith( const String &text ) const
    {
        return qvStringBeginsWith( raw(), text.raw() );
    }

    /** True if the text ends with another. */
    [[nodiscard]] bool endsWith( const String &text ) const
    {
        return qvStringEndsWith( raw(), text.raw() );
    }

    /** The index of the first match at `offset` or after it. An empty text to search for ends the process. */
    [[nodiscard]] std::optional< QV_INT > find( const String &text, QV_INT offset = 0 ) const
    {
        return found( qvStringFind( raw(), offset, text.raw() ) );
    }

    /** The same for one code point. */
    [[nodiscard]] std::optional< QV_INT > find( char32_t ch, QV_INT offset = 0 ) const
    {
        return found( qvStringFindChar( raw(), offset, ch ) );
    }

    /** The index of the last match. */
    [[nodiscard]] std::optional< QV_INT > findLast( const String &text ) const
    {
        return found( qvStringFindFromRight( raw(), -1, text.raw() ) );
    }

    /** True if the other text stands in this one. */
    [[nodiscard]] bool contains( const String &text ) const
    {
        return find( text ).has_value();
    }

    /** The parts between separators, at most `maxParts` unless that is -1. An empty separator ends the process. */
    [[nodiscard]] Vector< String > split( const String &separator, QV_INT maxParts = -1 ) const;

    /** The words between white space, one after the other and in place: a range of std::u32string_view, which keeps the
        text alive. */
    [[nodiscard]] Words words() const;

    /** The lines, likewise, without their ends. */
    [[nodiscard]] TextLines lines() const;

    /** How many cells of a terminal the text takes in one line. `flags` are QV_DISPLAY_FLAG values. */
    [[nodiscard]] QV_INT width( QV_INT flags = 0 ) const
    {
        return qvStringDisplayWidth( raw(), flags );
    }

    /** The lines that the text makes in a column of so many cells, broken at white space. */
    [[nodiscard]] Vector< String > wrapped( QV_INT width, QV_INT flags = 0 ) const;

    /** The number that the whole text is, white space around it aside. `base` is 2 to 36, or -1 for that of the
        prefix. */
    [[nodiscard]] std::optional< QV_INT > toInt( QV_INT base = 10 ) const
    {
        QV_INT value, consumed;
        return qvStringScanInt( raw(), 0, -1, base, &value, &consumed ) && consumed == size() ? std::optional( value )
                                                                                              : std::nullopt;
    }

    /** The same for a real. */
    [[nodiscard]] std::optional< QV_REAL > toReal( QV_INT base = 10 ) const
    {
        QV_REAL value;
        QV_INT  consumed;
        return qvStringScanReal( raw(), 0, -1, base, &value, &consumed ) && consumed == size() ? std::optional( value )
                                                                                               : std::nullopt;
    }

    /** The same for `true` or `false`. */
    [[nodiscard]] std::optional< bool > toBool() const
    {
        QV_BOOL value;
        QV_INT  consumed;
        return qvStringScanBool( raw(), 0, -1, QV_FALSE, &value, &consumed ) && consumed == size()
                   ? std::optional( value != QV_FALSE )
                   : std::nullopt;
    }

    /* Changing --------------------------------------------------------------------------------------------------- */

    /** Adds at the end. */
    String &append( const String &text )
    {
        qvStringAppend( variable(), text.raw() );
        return *this;
    }

    /** Adds UTF-8 at the end. */
    template< Utf8Text T >
    String &append( const T &text )
    {
        std::string_view view( text );
        qvStringAppendCstr( variable(), view.data() ? view.data() : "", static_cast< QV_INT >( view.size() ) );
        return *this;
    }

    /** Adds a code point at the end. */
    String &append( char32_t ch )
    {
        qvStringAppendChar( variable(), ch );
        return *this;
    }

    /** Adds the digits of an integer at the end, after a sign if it is below 0; one beyond QV_INT ends the process. */
    template< std::integral T >
        requires( !std::same_as< T, bool > && !std::same_as< T, char32_t > && !std::same_as< T, char > )
    String &appendInt( T value, QV_INT base = 10 )
    {
        detail::demand( std::in_range< QV_INT >( value ), "std::in_range< QV_INT >( value )" );
        qvStringAppendInt( variable(), static_cast< QV_INT >( value ), base );
        return *this;
    }

    /** Adds a real at the end, with `precision` places after the point; they are cut off, not rounded. */
    String &appendReal( QV_REAL value, QV_INT precision = 6, QV_INT base = 10 )
    {
        qvStringAppendReal( variable(), value, base, precision );
        return *this;
    }

    /** The same as append(). */
    String &operator+=( const String &more )
    {
        return append( more );
    }

    /** The same for UTF-8. */
    template< Utf8Text T >
    String &operator+=( const T &more )
    {
        return append( more );
    }

    /** The same for a code point. */
    String &operator+=( char32_t ch )
    {
        return append( ch );
    }

    /** Adds what `write` writes: it gets the place after the text, for `most` code points, above 0, and returns how
        many it has written there. It must not use the text itself. */
    template< class Write >
    String &appendWith( QV_INT most, Write write )
    {
        detail::AppendRoom room( variable(), most );
        room.written = write( room.place );
        return *this;
    }

    /** Adds before the code point at `index`, or at the end where that is the length. */
    String &insert( QV_INT index, const String &text )
    {
        qvStringInsert( variable(), index, text.raw() );
        return *this;
    }

    /** Deletes `count` code points from `offset`. */
    String &erase( QV_INT offset, QV_INT count )
    {
        qvStringDelInner( variable(), offset, count );
        return *this;
    }

    /** Makes it the empty text. */
    void clear()
    {
        qvStringClear( variable() );
    }

    /** A new text of both. */
    friend String operator+( String a, const String &b )
    {
        a.append( b );
        return a;
    }

    /* Forms of the text ------------------------------------------------------------------------------------------ */

    /** @{ */
    /** The text without white space at both ends; in upper case, in lower case, folded for comparison; in a normal form
        of Unicode. The value itself stays as it is. */
    [[nodiscard]] String trimmed() const
    {
        return changed( qvStringTrim );
    }

    [[nodiscard]] String upper() const
    {
        return changed( qvStringToUpper );
    }

    [[nodiscard]] String lower() const
    {
        return changed( qvStringToLower );
    }

    [[nodiscard]] String folded() const
    {
        return changed( qvStringToCaseFold );
    }

    [[nodiscard]] String nfc() const
    {
        return changed( qvStringNormalizeNFC );
    }

    [[nodiscard]] String nfd() const
    {
        return changed( qvStringNormalizeNFD );
    }

    [[nodiscard]] String nfkc() const
    {
        return changed( qvStringNormalizeNFKC );
    }

    [[nodiscard]] String nfkd() const
    {
        return changed( qvStringNormalizeNFKD );
    }
    /** @} */

    /** The text with another one in the place of each match, from the left, or of the first `most` of them unless that is
        -1. An empty text to replace ends the process. */
    [[nodiscard]] String replaced( const String &sought, const String &replacement, QV_INT most = -1 ) const
    {
        return changed( qvStringReplace, sought.raw(), replacement.raw(), most );
    }

    /** @{ */
    /** The text cut to so many cells of a terminal, filled up with spaces to as many, or either, so that it has exactly
        as many. `flags` are QV_DISPLAY_FLAG values. */
    [[nodiscard]] String truncated( QV_INT width, QV_INT flags = 0 ) const
    {
        return changed( qvStringDisplayTruncate, width, flags );
    }

    [[nodiscard]] String padded( QV_INT width, QV_INT flags = 0 ) const
    {
        return changed( qvStringDisplayPad, width, flags );
    }

    [[nodiscard]] String fitted( QV_INT width, QV_INT flags = 0 ) const
    {
        return changed( qvStringDisplayFit, width, flags );
    }
    /** @} */

    /* Comparing -------------------------------------------------------------------------------------------------- */

    /** True if both have the same folded text. */
    [[nodiscard]] bool equalsCaseFold( const String &other ) const
    {
        return qvStringEqualsCaseFold( raw(), other.raw() );
    }

    /** Compares with UTF-8, without a String for it. */
    template< Utf8Text T >
    friend bool operator==( const String &a, const T &b )
    {
        std::string_view view( b );
        return qvStringEqualsCstr( a.raw(), view.data() ? view.data() : "", static_cast< QV_INT >( view.size() ) );
    }

    /** Compares with code points in place. */
    template< Utf32Text T >
    friend bool operator==( const String &a, const T &b )
    {
        return a.view() == std::u32string_view( b );
    }

private:
    static String decode( std::string_view text )
    {
        return own( qvStringCreateFromCstr( text.data() ? text.data() : "", static_cast< QV_INT >( text.size() ) ) );
    }

    static String decode( const char *text )
    {
        return own( qvStringCreateFromCstr( text, -1 ) );
    }

    static String copy( std::u32string_view text )
    {
        return own( qvStringCreateFromCharsCopy( text.data(), static_cast< QV_INT >( text.size() ) ) );
    }

    static std::optional< QV_INT > found( QV_INT index )
    {
        return index >= 0 ? std::optional( index ) : std::nullopt;
    }

    template< class Result, class... Args >
    String changed( Result ( *change )( QV_STRING **, Args... ), Args... args ) const
    {
        String text( *this );
        change( text.variable(), args... );
        return text;
    }
};

inline namespace literals
{
/** "text"_qs is a String. */
inline String operator""_qs( const char *text, size_t length )
{
    return String( std::string_view( text, length ) );
}

/** The same for other literals. */
inline String operator""_qs( const char8_t *text, size_t length )
{
    return String( std::u8string_view( text, length ) );
}

/** The same for other literals. */
inline String operator""_qs( const char32_t *text, size_t length )
{
    return String( std::u32string_view( text, length ) );
}
} // namespace literals

template< class Self, class C >
String Reference< Self, C >::toString() const
{
    return String::own( Family< C >::toString( object_ ) );
}

inline String Object::sortName() const
{
    return String::own( qvSortName( qvObjSort( raw() ) ) );
}

/** The words of a text: what stands between runs of white space. A forward range, in linear time, without copies. The
    views are valid while the range lives. */
class Words
{
public:
    /** The words of a text. */
    explicit Words( String text ) : text_( std::move( text ) )
    {
    }

    class Iterator
    {
    public:
        using value_type       = std::u32string_view;
        using difference_type  = std::ptrdiff_t;
        using iterator_concept = std::forward_iterator_tag;

        Iterator() = default;

        Iterator( const char32_t *at, const char32_t *end ) : at_( at ), wordEnd_( at ), end_( end )
        {
            ++*this;
        }

        std::u32string_view operator*() const
        {
            return { at_, static_cast< size_t >( wordEnd_ - at_ ) };
        }

        Iterator &operator++()
        {
            at_ = wordEnd_;

            while( at_ != end_ && isSpace( *at_ ) )
                at_++;

            wordEnd_ = at_;

            while( wordEnd_ != end_ && !isSpace( *wordEnd_ ) )
                wordEnd_++;

            return *this;
        }

        Iterator operator++( int )
        {
            Iterator before = *this;
            ++*this;
            return before;
        }

        friend bool operator==( const Iterator &a, const Iterator &b )
        {
            return a.at_ == b.at_;
        }

        friend bool operator==( const Iterator &it, std::default_sentinel_t )
        {
            return it.at_ == it.end_;
        }

    private:
        static bool isSpace( char32_t ch )
        {
            return ch < 128 ? ch == U' ' || ( ch >= U'\t' && ch <= U'\r' ) : qvUnicodeIsWhiteSpace( ch ) != QV_FALSE;
        }

        const char32_t *at_ = nullptr, *wordEnd_ = nullptr, *end_ = nullptr;
    };

    /** The first word. */
    [[nodiscard]] Iterator begin() const
    {
        return Iterator( text_.begin(), text_.end() );
    }

    /** After the last word. */
    [[nodiscard]] std::default_sentinel_t end() const
    {
        return {};
    }

private:
    String text_;
};

inline Words String::words() const
{
    return Words( *this );
}

static_assert( std::ranges::contiguous_range< String > && std::ranges::sized_range< String > );
static_assert( std::ranges::forward_range< Words > );
} // namespace qv

#endif
