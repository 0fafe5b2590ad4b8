/** @file
    qv::Buffer, qv::Vector and qv::Dict: bytes, sequences and maps in C++.

        qv::Vector< qv::String > names = { "b", "a" };
        names.sort();
        for( qv::String name : names )
            ...
        qv::Dict< qv::String, int64_t > counts;
        counts.update( "a", []( std::optional< int64_t > count ) { return count.value_or( 0 ) + 1; } );
        for( auto [name, count] : counts )              // in the order of the keys
            ...

    A Vector and a Dict are views of the objects in them as values of the types that they name: an element of a
    `Vector< int >` is a boxed integer. qv::Object, the default, is for elements of any type. Typed views of what C has
    made are not checked when they are made: an element of another type, or a number that the type cannot hold, ends the
    process when it is read. Elements are read as values, which cost a retain; numbers cost none.

    Indexes and lengths are QV_INT. An index outside ends the process. An iterator is valid until its container is
    changed or ends. qv_vector.h, qv_dict.h and qv_buffer.h tell the costs. */

#ifndef QV_CONTAINERS_HPP
#define QV_CONTAINERS_HPP

#include "qv/cpp/qv_string.hpp"

#include <algorithm>
#include <exception>
#include <initializer_list>
#include <span>

namespace qv
{
/* Buffer --------------------------------------------------------------------------------------------------------- */

/** Bytes. Odd bits are left to the C functions of qv_buffer.h, which take variable() and c(). */
class Buffer : public Reference< Buffer, QV_BUFFER >
{
public:
    using Reference::Reference;

    /** The empty Buffer, which all share. */
    Buffer() : Buffer( own( qvBufferCreate() ) )
    {
    }

    /** Copies bytes. */
    explicit Buffer( std::span< const uint8_t > bytes ) :
        Buffer( own( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) ) )
    {
    }

    /** Copies the bytes of a text as they are. */
    explicit Buffer( std::string_view bytes ) :
        Buffer( own( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) ) )
    {
    }

    /** How many whole bytes there are. */
    [[nodiscard]] QV_INT size() const
    {
        return qvBufferLength( raw() );
    }

    /** True if there are none. */
    [[nodiscard]] bool empty() const
    {
        return size() == 0;
    }

    /** The first byte, valid until the value is changed or ends; may be null for an empty Buffer. */
    [[nodiscard]] const uint8_t *data() const
    {
        return qvBufferBacking( raw() );
    }

    /** The first byte. */
    [[nodiscard]] const uint8_t *begin() const
    {
        return data();
    }

    /** After the last byte. */
    [[nodiscard]] const uint8_t *end() const
    {
        return data() + size();
    }

    /** The bytes in place, valid until the value is changed or ends. A temporary has none. */
    [[nodiscard]] std::span< const uint8_t > bytes() const &
    {
        return { data(), static_cast< size_t >( size() ) };
    }

    void bytes() const && = delete;

    /** The byte at an index. */
    uint8_t operator[]( QV_INT index ) const
    {
        return qvBufferReadByte( raw(), index );
    }

    /** A copy of `count` bytes from `offset`. */
    [[nodiscard]] Buffer part( QV_INT offset, QV_INT count ) const
    {
        return own( qvBufferRead( raw(), offset, count ) );
    }

    /** Adds at the end. */
    Buffer &append( const Buffer &more )
    {
        qvBufferAppend( variable(), more.raw() );
        return *this;
    }

    /** Adds bytes at the end. */
    Buffer &append( std::span< const uint8_t > bytes )
    {
        qvBufferAppendBytes( variable(), bytes.data(), static_cast< QV_INT >( bytes.size() ) );
        return *this;
    }

    /** Adds a byte at the end. */
    Buffer &append( uint8_t byte )
    {
        qvBufferAppendByte( variable(), byte );
        return *this;
    }

    /** Adds what `write` writes: it gets the place after the bytes, for `most` of them, above 0, and returns how many it
        has written there. It must not use the Buffer itself. */
    template< class Write >
    Buffer &appendWith( QV_INT most, Write write )
    {
        detail::AppendRoom room( variable(), most );
        room.written = write( room.place );
        return *this;
    }

    /** Deletes `count` bytes from `offset`. */
    Buffer &erase( QV_INT offset, QV_INT count )
    {
        qvBufferDelInner( variable(), offset, count );
        return *this;
    }

    /** Makes it the empty one. */
    void clear()
    {
        qvBufferClear( variable() );
    }
};

namespace detail
{
/** A function that C calls for the length of a call. What it throws is thrown after that; until then it is not called
    again. */
template< class Function >
class Relayed
{
public:
    explicit Relayed( Function function ) : function_( std::move( function ) )
    {
    }

    Relayed( const Relayed & )            = delete;
    Relayed &operator=( const Relayed & ) = delete;

    /** For an order: positive where the function returns true. */
    static QV_INT compare( QV_OBJ *a, QV_OBJ *b, void *data )
    {
        QV_INT order = 0;
        static_cast< Relayed * >( data )->call( [&]( Function &function ) { order = function( a, b ); } );
        return order;
    }

    /** For an update. */
    static void update( QV_OBJ **value, void *data )
    {
        static_cast< Relayed * >( data )->call( [&]( Function &function ) { function( value ); } );
    }

    void rethrow()
    {
#ifdef __cpp_exceptions
        if( thrown_ )
            std::rethrow_exception( thrown_ );
#endif
    }

private:
    template< class Call >
    void call( const Call &call )
    {
#ifdef __cpp_exceptions
        try
        {
            if( !thrown_ )
                call( function_ );
        }
        catch( ... )
        {
            thrown_ = std::current_exception();
        }
#else
        call( function_ );
#endif
    }

    Function function_;
#ifdef __cpp_exceptions
    std::exception_ptr thrown_;
#endif
};
} // namespace detail

/* Appender ------------------------------------------------------------------------------------------------------- */

/** Adds code points to a String, or bytes to a Buffer, one by one, without a call for each. Until its end, or finish(),
    the target is left alone. std::back_inserter() takes it.

        qv::Appender to( text );
        for( char32_t ch : other )
            to.push_back( ch == U'\t' ? U' ' : ch ); */
template< class Target >
class Appender
{
public:
    /** char32_t, or uint8_t. */
    using value_type = std::remove_cvref_t< decltype( *std::declval< Target >().data() ) >;

    /** Appends to a variable that outlives it. Nothing happens before the first push_back(). */
    explicit Appender( Target &target ) : target_( target )
    {
    }

    Appender( const Appender & )            = delete;
    Appender &operator=( const Appender & ) = delete;

    ~Appender()
    {
        finish();
    }

    /** Adds one at the end. A code point beyond U+10FFFF ends the process, here or later. */
    void push_back( value_type unit )
    {
        if( at_ == end_ )
            makeRoom();

        *at_++ = unit;
    }

    /** All that was added belongs to the target now; more can be added. */
    void finish()
    {
        if( start_ )
            detail::appendWritten( target_.variable(), at_ - start_ );

        start_ = at_ = end_ = nullptr;
    }

private:
    void makeRoom()
    {
        finish();

        // In proportion to what is there, so that the calls are few.
        const QV_INT count = std::max< QV_INT >( 64, target_.size() / 4 );
        start_ = at_ = detail::appendRoom( target_.variable(), count );
        end_         = start_ + count;
    }

    Target     &target_;
    value_type *start_ = nullptr; // the room, or null without
    value_type *at_    = nullptr;
    value_type *end_   = nullptr;
};

/* Vector --------------------------------------------------------------------------------------------------------- */

/** A sequence of values of type T. */
template< class T = Object >
class Vector : public Reference< Vector< T >, QV_VECTOR >
{
    static_assert( Boxable< T >, "an element is a value type, a number, a truth value or an enumeration" );
    using Base = Reference< Vector< T >, QV_VECTOR >;

public:
    using Base::Base;
    /** The type of the elements. */
    using value_type = T;

    /** The empty Vector, which all share. */
    Vector() : Vector( Base::own( qvVectorCreate() ) )
    {
    }

    /** A Vector of these values. */
    Vector( std::initializer_list< T > values ) : Vector()
    {
        for( const T &value : values )
            append( value );
    }

    /** The elements of a range. */
    template< std::ranges::input_range R >
        requires( std::convertible_to< std::ranges::range_reference_t< R >, T > && !Value< std::remove_cvref_t< R > > )
    explicit Vector( R &&range ) : Vector()
    {
        for( auto &&value : range )
            append( static_cast< T >( value ) );
    }

    /** Reads the elements as values. */
    class Iterator
    {
    public:
        using value_type        = T;
        using difference_type   = std::ptrdiff_t;
        using iterator_concept  = std::random_access_iterator_tag;
        using iterator_category = std::input_iterator_tag;
        using reference         = T;
        using pointer           = void;

        Iterator() = default;

        explicit Iterator( QV_OBJ *const *at ) : at_( at )
        {
        }

        T operator*() const
        {
            return Boxing< T >::unbox( *at_ );
        }

        T operator[]( difference_type n ) const
        {
            return Boxing< T >::unbox( at_[n] );
        }

        // clang-format off
        Iterator &operator++() { at_++; return *this; }
        Iterator &operator--() { at_--; return *this; }
        Iterator operator++( int ) { return Iterator( at_++ ); }
        Iterator operator--( int ) { return Iterator( at_-- ); }
        Iterator &operator+=( difference_type n ) { at_ += n; return *this; }
        Iterator &operator-=( difference_type n ) { at_ -= n; return *this; }
        friend Iterator operator+( Iterator it, difference_type n ) { return Iterator( it.at_ + n ); }
        friend Iterator operator+( difference_type n, Iterator it ) { return Iterator( it.at_ + n ); }
        friend Iterator operator-( Iterator it, difference_type n ) { return Iterator( it.at_ - n ); }
        friend difference_type operator-( Iterator a, Iterator b ) { return a.at_ - b.at_; }
        friend auto operator<=>( const Iterator &, const Iterator & ) = default;
        // clang-format on

    private:
        QV_OBJ *const *at_ = nullptr;
    };

    /** The first one. */
    [[nodiscard]] Iterator begin() const
    {
        return Iterator( qvVectorBacking( this->raw() ) );
    }

    /** After the last one. */
    [[nodiscard]] Iterator end() const
    {
        return begin() + size();
    }

    /** How many there are. */
    [[nodiscard]] QV_INT size() const
    {
        return qvVectorLength( this->raw() );
    }

    /** True if there are none. */
    [[nodiscard]] bool empty() const
    {
        return size() == 0;
    }

    /** The element at an index. */
    T operator[]( QV_INT index ) const
    {
        detail::demand( index >= 0 && index < size(), "index >= 0 && index < size()" );
        return begin()[index];
    }

    /** The index of the first element that compares equal. Walks the elements. */
    [[nodiscard]] std::optional< QV_INT > find( const T &value ) const
    {
        QV_INT index = qvVectorIndexOfObj( this->raw(), detail::Boxed< T >( value ).get(), QV_TRUE );
        return index >= 0 ? std::optional( index ) : std::nullopt;
    }

    /** True if find() finds something. */
    [[nodiscard]] bool contains( const T &value ) const
    {
        return find( value ).has_value();
    }

    /** A Vector of `count` elements from `offset`. */
    [[nodiscard]] Vector part( QV_INT offset, QV_INT count ) const
    {
        return Base::own( qvVectorCreateFromInner( this->raw(), offset, count ) );
    }

    /** Adds at the end. A value that is moved here costs no counting, as with all that add one. */
    Vector &append( detail::Kept< T > value )
    {
        qvVectorAppendObjUse( this->variable(), detail::given( std::move( value ) ) );
        return *this;
    }

    /** Adds all elements of another Vector, which may be this one. */
    Vector &appendAll( const Vector &other )
    {
        qvVectorAppend( this->variable(), other.raw() );
        return *this;
    }

    /** Adds at the start. */
    Vector &prepend( detail::Kept< T > value )
    {
        qvVectorPrependObjUse( this->variable(), detail::given( std::move( value ) ) );
        return *this;
    }

    /** Inserts before the element at `index`, or at the end where that is the length. */
    Vector &insert( QV_INT index, detail::Kept< T > value )
    {
        qvVectorInsertObjUse( this->variable(), index, detail::given( std::move( value ) ) );
        return *this;
    }

    /** Replaces the element at an index. */
    Vector &set( QV_INT index, detail::Kept< T > value )
    {
        detail::demand( index >= 0 && index < size(), "index >= 0 && index < size()" );
        qvVectorSetObjUseAt( this->variable(), index, detail::given( std::move( value ) ) );
        return *this;
    }

    /** Deletes `count` elements from `offset`. */
    Vector &erase( QV_INT offset, QV_INT count = 1 )
    {
        qvVectorDelInner( this->variable(), offset, count );
        return *this;
    }

    /** Makes it the empty one. */
    void clear()
    {
        qvVectorClear( this->variable() );
    }

    /** Takes the last element off. An empty Vector ends the process. */
    T popBack()
    {
        return detail::taken< T >( qvVectorPop( this->variable() ) );
    }

    /** Takes the first element off. An empty Vector ends the process. */
    T popFront()
    {
        return detail::taken< T >( qvVectorUnshift( this->variable() ) );
    }

    /** Sorts by `before`, a function of two elements; those of which neither comes before the other keep their order.
        Costs n log n calls at most, and no references where nobody shares the Vector. The function finds the Vector as
        it was. What it throws leaves the elements in some order. */
    template< class Before = std::less<> >
    Vector &sort( Before before = {} )
    {
        return sort( 0, size(), std::move( before ) );
    }

    /** Sorts `count` elements from `offset`. */
    template< class Before = std::less<> >
    Vector &sort( QV_INT offset, QV_INT count, Before before = {} )
    {
        if constexpr( BY_OBJECTS< Before > )
        {
            qvVectorOrderInner( this->variable(), offset, count );
        }
        else
        {
            detail::Relayed relayed( [&before]( QV_OBJ *a, QV_OBJ *b ) { return comesBefore( before, b, a ); } );
            qvVectorOrderInnerBy( this->variable(), offset, count, relayed.compare, &relayed );
            relayed.rethrow();
        }

        return *this;
    }

    /** True if no element comes before the one that it follows. */
    template< class Before = std::less<> >
    [[nodiscard]] bool isSorted( Before before = {} ) const
    {
        return std::ranges::is_sorted( *this, std::move( before ) );
    }

    /** The first index in a Vector sorted by `before` whose element does not come before `value`: where that can be
        inserted. Costs the logarithm of the length. */
    template< class Before = std::less<> >
    [[nodiscard]] QV_INT lowerBound( const T &value, Before before = {} ) const
    {
        if constexpr( BY_OBJECTS< Before > )
            return qvVectorSearch( this->raw(), detail::Boxed< T >( value ).get(), nullptr );
        else
            return std::ranges::lower_bound( *this, value, std::move( before ) ) - begin();
    }

    /** The index of the first element of a sorted Vector that is equal to `value`. Costs the logarithm of the length. */
    template< class Before = std::less<> >
    [[nodiscard]] std::optional< QV_INT > findSorted( const T &value, Before before = {} ) const
    {
        QV_INT index = lowerBound( value, before );
        return index < size() && !before( value, begin()[index] ) ? std::optional( index ) : std::nullopt;
    }

    /** Puts the elements in the opposite order. */
    void reverse()
    {
        qvVectorReverse( this->variable() );
    }

private:
    // Whether the order of the objects is that of the elements.
    template< class Before >
    static constexpr bool BY_OBJECTS =
        std::is_same_v< Before, std::less<> > && ( Value< T > || (std::integral< T > && !std::same_as< T, bool >));

    template< class Before >
    static bool comesBefore( Before &before, QV_OBJ *a, QV_OBJ *b )
    {
        return before( Boxing< T >::unbox( a ), Boxing< T >::unbox( b ) );
    }
};

inline Vector< String > String::split( const String &separator, QV_INT maxParts ) const
{
    return Vector< String >::own( qvStringSplit( raw(), separator.raw(), maxParts ) );
}

/* Dict ----------------------------------------------------------------------------------------------------------- */

/** A map from keys of type K to values of type V, in the order of the keys. */
template< class K = Object, class V = Object >
class Dict : public Reference< Dict< K, V >, QV_DICT >
{
    static_assert( Boxable< K > && Boxable< V >, "keys and values are value types, numbers or enumerations" );
    using Base = Reference< Dict< K, V >, QV_DICT >;

public:
    using Base::Base;
    /** The type of the keys. */
    using key_type = K;
    /** The type of the values. */
    using mapped_type = V;
    /** What iterators read. */
    using value_type = std::pair< K, V >;

    /** The empty Dict, which all share. */
    Dict() : Dict( Base::own( qvDictCreate() ) )
    {
    }

    /** Of equal keys the last one counts. */
    Dict( std::initializer_list< value_type > entries ) : Dict()
    {
        for( const value_type &entry : entries )
            set( entry.first, entry.second );
    }

    /** Reads the entries as pairs. */
    class Iterator
    {
    public:
        using value_type        = std::pair< K, V >;
        using difference_type   = std::ptrdiff_t;
        using iterator_concept  = std::random_access_iterator_tag;
        using iterator_category = std::input_iterator_tag;
        using reference         = value_type;
        using pointer           = void;

        Iterator() = default;

        Iterator( QV_DICT *dict, QV_INT index ) : dict_( dict ), index_( index )
        {
            lend();
        }

        value_type operator*() const
        {
            return { Boxing< K >::unbox( entry_->key ), Boxing< V >::unbox( entry_->value ) };
        }

        value_type operator[]( difference_type n ) const
        {
            return *( *this + n );
        }

        Iterator &operator++()
        {
            index_++;

            if( --left_ > 0 )
                entry_++;
            else
                lend();

            return *this;
        }

        // clang-format off
        Iterator &operator--() { return *this += -1; }
        Iterator operator++( int ) { Iterator before = *this; ++*this; return before; }
        Iterator operator--( int ) { Iterator before = *this; --*this; return before; }
        Iterator &operator+=( difference_type n ) { index_ += n; lend(); return *this; }
        Iterator &operator-=( difference_type n ) { return *this += -n; }
        friend Iterator operator+( Iterator it, difference_type n ) { return it += n; }
        friend Iterator operator+( difference_type n, Iterator it ) { return it += n; }
        friend Iterator operator-( Iterator it, difference_type n ) { return it -= n; }
        friend difference_type operator-( const Iterator &a, const Iterator &b ) { return a.index_ - b.index_; }
        friend bool operator==( const Iterator &a, const Iterator &b ) { return a.index_ == b.index_; }
        friend auto operator<=>( const Iterator &a, const Iterator &b ) { return a.index_ <=> b.index_; }
        // clang-format on

    private:
        // Entries from here on, of which the next steps are made without a call.
        void lend()
        {
            entry_ = qvDictBacking( dict_, index_, &left_ );
        }

        QV_DICT             *dict_  = nullptr;
        QV_INT               index_ = 0;
        QV_INT               left_  = 0; // entries in a row
        const QV_DICT_ENTRY *entry_ = nullptr;
    };

    /** The first one. */
    [[nodiscard]] Iterator begin() const
    {
        return Iterator( this->raw(), 0 );
    }

    /** After the last one. */
    [[nodiscard]] Iterator end() const
    {
        return Iterator( this->raw(), size() );
    }

    /** How many there are. */
    [[nodiscard]] QV_INT size() const
    {
        return qvDictLength( this->raw() );
    }

    /** True if there are none. */
    [[nodiscard]] bool empty() const
    {
        return size() == 0;
    }

    /** The value of a key. */
    [[nodiscard]] std::optional< V > find( const K &key ) const
    {
        if constexpr( COMPARES_INSIDE )
        {
            QV_OBJ *value = lent( key );
            return value ? std::optional< V >( Boxing< V >::unbox( value ) ) : std::nullopt;
        }
        else
        {
            QV_OBJ *value = qvDictObjKey( this->raw(), detail::Boxed< K >( key ).get() );
            return value ? std::optional< V >( detail::taken< V >( value ) ) : std::nullopt;
        }
    }

    /** True if find() finds something. */
    [[nodiscard]] bool contains( const K &key ) const
    {
        return lent( key ) != nullptr;
    }

    /** Sets the value of a key. A value that is moved here costs no counting. */
    Dict &set( const K &key, detail::Kept< V > value )
    {
        // The key first: a box() of the program's own may throw, and the value is then still held.
        detail::Boxed< K > boxed( key );
        qvDictSetObjKeyUse( this->variable(), boxed.get(), detail::given( std::move( value ) ) );
        return *this;
    }

    /** Sets the value of a key to what `function` makes of the old one, a std::optional< V >, with one search. A value
        that nobody shares is moved to the function, so that a container grows in place. The function must not use this
        Dict. What it throws leaves the Dict without the entry where it has been moved. */
    template< class Function >
    Dict &update( const K &key, Function &&function )
    {
        detail::Relayed relayed(
            [&function]( QV_OBJ **value )
            {
                std::optional< V > old;

                if( *value )
                    old = detail::taken< V >( std::exchange( *value, nullptr ) );

                *value = Boxing< V >::box( std::forward< Function >( function )( std::move( old ) ) );
            } );

        if constexpr( HAS_INTEGER_KEYS )
            qvDictUpdateIntKey( this->variable(), integer( key ), relayed.update, &relayed );
        else
            qvDictUpdateObjKey( this->variable(), detail::Boxed< K >( key ).get(), relayed.update, &relayed );

        relayed.rethrow();
        return *this;
    }

    /** Deletes an entry. True if there was one. */
    bool erase( const K &key )
    {
        QV_INT before = size();
        qvDictDelObjKey( this->variable(), detail::Boxed< K >( key ).get() );
        return size() != before;
    }

    /** Makes it the empty one. */
    void clear()
    {
        qvDictClear( this->variable() );
    }

    /** @{ */
    /** All keys, and all values, in the order of the keys. */
    [[nodiscard]] Vector< K > keys() const
    {
        return Vector< K >::own( qvDictKeysVector( this->raw() ) );
    }

    [[nodiscard]] Vector< V > values() const
    {
        return Vector< V >::own( qvDictValuesVector( this->raw() ) );
    }
    /** @} */

    /** Enters the entries of another Dict. Keys that are here already keep their values unless `overwrite` is true. */
    Dict &include( const Dict &other, bool overwrite )
    {
        qvDictInclude( this->variable(), other.raw(), overwrite ? QV_TRUE : QV_FALSE );
        return *this;
    }

private:
    // Integers are looked up without an object.
    static constexpr bool HAS_INTEGER_KEYS = std::integral< K > && !std::same_as< K, bool >;

    // Numbers and Strings are looked up without a call of another family's compare function, which may change this Dict:
    // the value that is lent is there until it is read.
    static constexpr bool COMPARES_INSIDE =
        std::is_arithmetic_v< K > || std::is_enum_v< K > || std::same_as< K, String >;

    static QV_INT integer( const K &key )
    {
        detail::demand( std::in_range< QV_INT >( key ), "std::in_range< QV_INT >( value )" );
        return static_cast< QV_INT >( key );
    }

    QV_OBJ *lent( const K &key ) const
    {
        if constexpr( HAS_INTEGER_KEYS )
            return qvDictLendIntKey( this->raw(), integer( key ) );
        else
            return qvDictLendObjKey( this->raw(), detail::Boxed< K >( key ).get() );
    }
};

/* Hashes --------------------------------------------------------------------------------------------------------- */

namespace detail
{
inline size_t hashOf( QV_OBJ *object, int levels )
{
    QV_SORT *sort   = qvObjSort( object );
    auto     joined = []( size_t hash, size_t more ) { return hash * 31 + more + 0x9e3779b97f4a7c15u; };

    if( sort == qvStringSort() )
    {
        QV_STRING *text = qvStringFrom( object );
        return std::hash< std::u32string_view >()(
            { qvStringBacking( text ), static_cast< size_t >( qvStringLength( text ) ) } );
    }

    if( sort == qvBoxedIntSort() )
        return std::hash< QV_INT >()( qvBoxedIntValue( qvBoxedIntFrom( object ) ) );

    if( sort == qvBufferSort() )
    {
        QV_BUFFER *buf = qvBufferFrom( object );
        return std::hash< std::string_view >()(
            { reinterpret_cast< const char * >( qvBufferBacking( buf ) ),
              static_cast< size_t >( qvBufferLength( buf ) ) } );
    }

    if( sort == qvBoxedRealSort() )
        return std::hash< QV_REAL >()( qvBoxedRealValue( qvBoxedRealFrom( object ) ) );

    size_t hash = std::hash< QV_SORT * >()( sort );

    if( sort == qvVectorSort() && levels > 0 )
    {
        QV_VECTOR *vec = qvVectorFrom( object );

        for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
            hash = joined( hash, hashOf( qvVectorBacking( vec )[i], levels - 1 ) );
    }

    if( sort == qvDictSort() && levels > 0 )
        for( const auto &[key, value] : Dict<>::share( qvDictFrom( object ) ) )
            hash = joined( joined( hash, hashOf( key.c(), levels - 1 ) ), hashOf( value.c(), levels - 1 ) );

    return hash;
}
} // namespace detail

static_assert( std::ranges::random_access_range< Vector<> > && std::ranges::sized_range< Vector< int > > );
static_assert( std::ranges::random_access_range< Dict<> > && std::ranges::contiguous_range< Buffer > );
} // namespace qv

#endif
