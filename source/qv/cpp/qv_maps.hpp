/** @file
    qv::RangeMap and qv::PriorityMap: values for intervals of keys, and values in the order of priorities. qv::Enum and
    qv::Flagset: names of numbers and of bits.

        qv::RangeMap< qv::String > grades;
        grades.set( 0, 49, "failed" ).set( 50, 100, "passed" );
        std::optional< qv::String > grade = grades.find( 72 );
        for( const auto &[first, last, value] : grades )
            ...
        qv::PriorityMap< qv::String > tasks;
        tasks.set( 5, "answer" ).set( 1, "tidy up" );
        qv::String next = tasks.highest().value();

    They are views of the objects in them as values, by the rules of qv_containers.hpp. qv_range_map.h, qv_priority_map.h,
    qv_enum.h and qv_flagset.h tell the costs. */

#ifndef QV_MAPS_HPP
#define QV_MAPS_HPP

#include "qv/cpp/qv_containers.hpp"

namespace qv
{
namespace detail
{
/** Walks a container by indexes, and reads by its at(). */
template< class Container, class T >
class IndexIterator
{
public:
    using value_type        = T;
    using difference_type   = std::ptrdiff_t;
    using iterator_concept  = std::bidirectional_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using reference         = T;
    using pointer           = void;

    IndexIterator() = default;

    IndexIterator( const Container *container, QV_INT index ) : container_( container ), index_( index )
    {
    }

    T operator*() const
    {
        return container_->at( index_ );
    }

    // clang-format off
    IndexIterator &operator++() { index_++; return *this; }
    IndexIterator &operator--() { index_--; return *this; }
    IndexIterator operator++( int ) { return IndexIterator( container_, index_++ ); }
    IndexIterator operator--( int ) { return IndexIterator( container_, index_-- ); }
    friend bool operator==( const IndexIterator &a, const IndexIterator &b ) { return a.index_ == b.index_; }
    // clang-format on

private:
    const Container *container_ = nullptr;
    QV_INT           index_     = 0;
};

/** An object that a call has returned, as a value; nothing for null. */
template< class T >
std::optional< T > takenOptional( QV_OBJ *owned )
{
    if( !owned )
        return std::nullopt;

    Object keeper = Object::own( owned );
    return Boxing< T >::unbox( owned );
}
} // namespace detail

/** Values of type V for intervals of integer keys, which never overlap. */
template< class V = Object >
class RangeMap : public Reference< RangeMap< V >, QV_RANGE_MAP >
{
    static_assert( Boxable< V >, "a value is a value type, a number, a truth value or an enumeration" );
    using Base = Reference< RangeMap< V >, QV_RANGE_MAP >;

public:
    using Base::Base;

    /** What iterators read: a value, and the first and the last key that have it. */
    struct Range
    {
        QV_INT first; /**< the lowest key */
        QV_INT last;  /**< the highest one */
        V      value; /**< what they are mapped to */
    };

    /** Reads the ranges in the order of their keys. */
    using Iterator = detail::IndexIterator< RangeMap, Range >;

    /** A map without ranges. With `collapses` ranges that touch and have equal values become one. */
    explicit RangeMap( bool collapses = false ) :
        RangeMap( Base::own( collapses ? qvRangeMapCreateAutoCollapsing() : qvRangeMapCreate() ) )
    {
    }

    /** How many ranges there are. */
    [[nodiscard]] QV_INT size() const
    {
        return qvRangeMapLength( this->raw() );
    }

    /** True if there are none. */
    [[nodiscard]] bool empty() const
    {
        return size() == 0;
    }

    /** The range at an index. */
    [[nodiscard]] Range at( QV_INT index ) const
    {
        Object value = Object::own( qvRangeMapObjAt( this->raw(), index ) );
        return {
            qvRangeMapStartingKeyAt( this->raw(), index ), qvRangeMapEndingKeyAt( this->raw(), index ),
            Boxing< V >::unbox( value.c() ) };
    }

    /** The first range. */
    [[nodiscard]] Iterator begin() const
    {
        return Iterator( this, 0 );
    }

    /** After the last range. */
    [[nodiscard]] Iterator end() const
    {
        return Iterator( this, size() );
    }

    /** The value of a key. */
    [[nodiscard]] std::optional< V > find( QV_INT key ) const
    {
        return detail::takenOptional< V >( qvRangeMapIntKey( this->raw(), key ) );
    }

    /** True if a range holds the key. */
    [[nodiscard]] bool contains( QV_INT key ) const
    {
        return qvRangeMapHasIntKey( this->raw(), key );
    }

    /** Sets the value of all keys from `first` to `last`. */
    RangeMap &set( QV_INT first, QV_INT last, const V &value )
    {
        qvRangeMapSetRangeKey( this->variable(), first, last, detail::Boxed< V >( value ).get() );
        return *this;
    }

    /** Leaves no key from `first` to `last` with a value. */
    RangeMap &erase( QV_INT first, QV_INT last )
    {
        qvRangeMapDelRangeKey( this->variable(), first, last );
        return *this;
    }
};

/** Different values of type T in the order of their priorities, and of themselves where those are equal. */
template< class T = Object >
class PriorityMap : public Reference< PriorityMap< T >, QV_PRIORITY_MAP >
{
    static_assert( Boxable< T >, "an element is a value type, a number, a truth value or an enumeration" );
    using Base = Reference< PriorityMap< T >, QV_PRIORITY_MAP >;

public:
    using Base::Base;

    /** Reads priorities and values, from the lowest to the highest. */
    using Iterator = detail::IndexIterator< PriorityMap, std::pair< QV_INT, T > >;

    /** An empty map. */
    PriorityMap() : PriorityMap( Base::own( qvPriorityMapCreate() ) )
    {
    }

    /** How many values there are. */
    [[nodiscard]] QV_INT size() const
    {
        return qvPriorityMapLength( this->raw() );
    }

    /** True if there are none. */
    [[nodiscard]] bool empty() const
    {
        return size() == 0;
    }

    /** The priority and the value at an index. */
    [[nodiscard]] std::pair< QV_INT, T > at( QV_INT index ) const
    {
        Object value = Object::own( qvPriorityMapValueAt( this->raw(), index ) );
        return { qvPriorityMapPriorityAt( this->raw(), index ), Boxing< T >::unbox( value.c() ) };
    }

    /** The lowest one. */
    [[nodiscard]] Iterator begin() const
    {
        return Iterator( this, 0 );
    }

    /** After the highest one. */
    [[nodiscard]] Iterator end() const
    {
        return Iterator( this, size() );
    }

    /** @{ */
    /** The value with the highest and with the lowest priority, if there is one. */
    [[nodiscard]] std::optional< T > highest() const
    {
        return detail::takenOptional< T >( qvPriorityMapHighest( this->raw(), nullptr ) );
    }

    [[nodiscard]] std::optional< T > lowest() const
    {
        return detail::takenOptional< T >( qvPriorityMapLowest( this->raw(), nullptr ) );
    }
    /** @} */

    /** The priority of a value. */
    [[nodiscard]] std::optional< QV_INT > priorityOf( const T &value ) const
    {
        QV_INT index = qvPriorityMapIndexOf( this->raw(), detail::Boxed< T >( value ).get() );
        return index >= 0 ? std::optional( qvPriorityMapPriorityAt( this->raw(), index ) ) : std::nullopt;
    }

    /** Puts a value in with a priority, or moves it there. */
    PriorityMap &set( QV_INT priority, const T &value )
    {
        qvPriorityMapSet( this->variable(), priority, detail::Boxed< T >( value ).get() );
        return *this;
    }

    /** Takes a value out, if it is there. */
    PriorityMap &erase( const T &value )
    {
        qvPriorityMapDel( this->variable(), detail::Boxed< T >( value ).get() );
        return *this;
    }
};

/** Names of numbers, of upper-case letters, digits and `_`; any other name ends the process. */
class Enum : public Reference< Enum, QV_ENUM >
{
public:
    using Reference::Reference;

    /** Without names. */
    Enum() : Enum( own( qvEnumCreate() ) )
    {
    }

    /** With these names. */
    Enum( std::initializer_list< std::pair< String, QV_INT > > names ) : Enum()
    {
        for( const auto &[name, value] : names )
            set( name, value );
    }

    /** Enters a name, or moves one to another number. */
    Enum &set( const String &name, QV_INT value )
    {
        qvEnumSetEnumerant( variable(), name.c(), value );
        return *this;
    }

    /** The number of a name. */
    [[nodiscard]] std::optional< QV_INT > find( const String &name ) const
    {
        return qvEnumHasEnumerant( raw(), name.c() ) ? std::optional( qvEnumEnumerant( raw(), name.c() ) )
                                                     : std::nullopt;
    }

    /** The name of a number. */
    [[nodiscard]] std::optional< String > nameOf( QV_INT value ) const
    {
        return String::ownOptional( qvEnumGenerate( raw(), value ) );
    }

    /** The number that a text from outside means: a name, or a number that has one. */
    [[nodiscard]] std::optional< QV_INT > parse( const String &text ) const
    {
        QV_INT value = qvEnumParse( raw(), text.c() );
        return value >= 0 ? std::optional( value ) : std::nullopt;
    }

    /** All names in their order. */
    [[nodiscard]] Vector< String > names() const
    {
        return Vector< String >::own( qvEnumEnumerantsVector( raw() ) );
    }
};

/** Names of bits, likewise. */
class Flagset : public Reference< Flagset, QV_FLAGSET >
{
public:
    using Reference::Reference;

    /** Without names. */
    Flagset() : Flagset( own( qvFlagsetCreate() ) )
    {
    }

    /** With these names, each with the value of one bit. */
    Flagset( std::initializer_list< std::pair< String, QV_INT > > names ) : Flagset()
    {
        for( const auto &[name, value] : names )
            set( name, value );
    }

    /** Enters a name, or moves one to another bit. */
    Flagset &set( const String &name, QV_INT value )
    {
        qvFlagsetSetFlag( variable(), name.c(), value );
        return *this;
    }

    /** The value of a name. */
    [[nodiscard]] std::optional< QV_INT > find( const String &name ) const
    {
        return qvFlagsetHasFlag( raw(), name.c() ) ? std::optional( qvFlagsetFlag( raw(), name.c() ) ) : std::nullopt;
    }

    /** The names of the bits that are set, with `|` between them. A bit without a name ends the process. */
    [[nodiscard]] String textOf( QV_INT flags ) const
    {
        return String::own( qvFlagsetGenerate( raw(), flags ) );
    }

    /** The bits that a text from outside names; what is unknown has no effect. */
    [[nodiscard]] QV_INT parse( const String &text ) const
    {
        return qvFlagsetParse( raw(), text.c() );
    }

    /** All names in their order. */
    [[nodiscard]] Vector< String > names() const
    {
        return Vector< String >::own( qvFlagsetFlagsVector( raw() ) );
    }
};

static_assert(
    std::ranges::bidirectional_range< RangeMap<> > && std::ranges::bidirectional_range< PriorityMap< int > > );
} // namespace qv

#endif
