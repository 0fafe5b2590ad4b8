/** @file
    qv::Store: configuration documents in C++.

        std::optional< qv::Store > document = qv::Store::fromText( "port=8080\nlog.verbose=true\n" );
        uint16_t port    = document->get< uint16_t >( "port" ).value_or( 80 );
        bool     verbose = document->store( "log" ).get< bool >( "verbose" ).value_or( false );
        document->set( "host", "localhost" );
        for( const qv::StoreEntry &entry : *document )
            ...

    An address is one step of 0-9, A-Z, a-z, `_` and `-`; any other ends the process, so test one that comes from
    outside with Store::isAddress(). qv_store.h tells the rules of documents and the costs. */

#ifndef QV_STORE_HPP
#define QV_STORE_HPP

#include "qv/cpp/qv_containers.hpp"

namespace qv
{
struct StoreEntry;

/** A tree of named entries, each with a text value, a sub-store or both. */
class Store : public Reference< Store, QV_STORE >
{
public:
    using Reference::Reference;

    /** A store without entries. */
    Store() : Store( own( qvStoreCreate() ) )
    {
    }

    /** The store that UTF-8 text describes; lines that are no entries are left out. Nothing if the text cannot be read
        at all. */
    [[nodiscard]] static std::optional< Store > fromText( std::string_view text )
    {
        return fromText( Buffer( text ) );
    }

    /** The same for the bytes of such a text. */
    [[nodiscard]] static std::optional< Store > fromText( const Buffer &text )
    {
        return ownOptional( qvStoreTryDecodeFromTextBuffer( text.c() ) );
    }

    /** The text form in UTF-8, a line for each entry. */
    [[nodiscard]] Buffer toText() const
    {
        return Buffer::own( qvStoreEncodeToTextBuffer( raw() ) );
    }

    /** The store of a binary form, or nothing if that is no whole store. */
    [[nodiscard]] static std::optional< Store > fromBinary( const Buffer &binary )
    {
        return ownOptional( qvStoreTryDecodeFromBuffer( binary.c() ) );
    }

    /** The binary form. */
    [[nodiscard]] Buffer toBinary() const
    {
        return Buffer::own( qvStoreEncodeToBuffer( raw() ) );
    }

    /** True for a text that can be an address. */
    [[nodiscard]] static bool isAddress( const String &text )
    {
        return qvStoreAddressOk( text.c() );
    }

    /** How many addresses have an entry. */
    [[nodiscard]] QV_INT size() const
    {
        return qvStoreLength( raw() );
    }

    /** True without entries. */
    [[nodiscard]] bool empty() const
    {
        return size() == 0;
    }

    /** The value at an address as a String, a truth value, an integer or a real: nothing if there is none, or none that
        is of the type and in its range from end to end. */
    template< class T = String >
    [[nodiscard]] std::optional< T > get( const String &address ) const
    {
        if constexpr( std::same_as< T, String > )
            return String::ownOptional( qvStoreValue( raw(), address.c() ) );
        else if constexpr( std::same_as< T, bool > )
            return read< T, QV_BOOL >( qvStoreValueBool, address );
        else if constexpr( std::floating_point< T > )
            return read< T, QV_REAL >( qvStoreValueReal, address );
        else
        {
            static_assert( std::integral< T >, "a value is a text, a truth value, an integer or a real" );
            std::optional< QV_INT > value = read< QV_INT, QV_INT >( qvStoreValueInt, address );
            return value && std::in_range< T >( *value ) ? std::optional( static_cast< T >( *value ) ) : std::nullopt;
        }
    }

    /** Sets the value at an address. Reals are written with six places. */
    Store &set( const String &address, const String &value )
    {
        qvStoreSetValue( variable(), address.c(), value.c() );
        return *this;
    }

    /** Sets it to a truth value, an integer or a real. */
    template< class T >
        requires std::is_arithmetic_v< T >
    Store &set( const String &address, T value )
    {
        if constexpr( std::same_as< T, bool > )
            qvStoreSetValueBool( variable(), address.c(), value );
        else if constexpr( std::floating_point< T > )
            qvStoreSetValueReal( variable(), address.c(), static_cast< QV_REAL >( value ) );
        else
        {
            detail::demand( std::in_range< QV_INT >( value ), "std::in_range< QV_INT >( value )" );
            qvStoreSetValueInt( variable(), address.c(), static_cast< QV_INT >( value ) );
        }

        return *this;
    }

    /** Sets the sub-store at an address. */
    Store &set( const String &address, const Store &subStore )
    {
        qvStoreSetStore( variable(), address.c(), subStore.raw() );
        return *this;
    }

    /** The sub-store at an address; an empty one where there is none, which contains() tells apart. Later changes of
        either do not show in the other. */
    [[nodiscard]] Store store( const String &address ) const
    {
        return ownOptional( qvStoreStore( raw(), address.c() ) ).value_or( Store() );
    }

    /** True if the address has a value, a sub-store or both. */
    [[nodiscard]] bool contains( const String &address ) const
    {
        return qvStoreHasAddress( raw(), address.c() );
    }

    /** Deletes the value and the sub-store at an address, if there are any. */
    Store &erase( const String &address )
    {
        qvStoreDelValue( variable(), address.c() );
        qvStoreDelStore( variable(), address.c() );
        return *this;
    }

    /** Adds what `other` has and this store lacks, level by level. */
    Store &merge( const Store &other )
    {
        qvStoreMerge( variable(), other.raw() );
        return *this;
    }

    class Iterator;

    /** The entries in the order of their addresses, as StoreEntry values. */
    [[nodiscard]] Iterator begin() const;

    /** After the last entry. */
    [[nodiscard]] Iterator end() const;

private:
    template< class T, class Read >
    std::optional< T > read( QV_BOOL ( *function )( QV_STORE *, Read *, QV_STRING * ), const String &address ) const
    {
        Read value;
        return function( raw(), &value, address.c() ) ? std::optional< T >( static_cast< T >( value ) ) : std::nullopt;
    }
};

/** What stands at one address of a Store. */
struct StoreEntry
{
    /** where it stands */
    String address;
    /** the value, if there is one */
    std::optional< String > value;
    /** the sub-store, if there is one */
    std::optional< Store > store;
};

/** Walks a Store, each entry in the time of a logarithm of the length. Valid until the Store is changed or ends. */
class Store::Iterator
{
public:
    using value_type        = StoreEntry;
    using difference_type   = std::ptrdiff_t;
    using iterator_concept  = std::bidirectional_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using reference         = value_type;
    using pointer           = void;

    Iterator() = default;

    Iterator( QV_STORE *store, QV_INT index ) : store_( store ), index_( index )
    {
    }

    StoreEntry operator*() const
    {
        return {
            String::own( qvStoreAddressAt( store_, index_ ) ), String::ownOptional( qvStoreValueAt( store_, index_ ) ),
            Store::ownOptional( qvStoreStoreAt( store_, index_ ) ) };
    }

    // clang-format off
    Iterator &operator++() { index_++; return *this; }
    Iterator &operator--() { index_--; return *this; }
    Iterator operator++( int ) { return Iterator( store_, index_++ ); }
    Iterator operator--( int ) { return Iterator( store_, index_-- ); }
    friend bool operator==( const Iterator &a, const Iterator &b ) { return a.index_ == b.index_; }
    // clang-format on

private:
    QV_STORE *store_ = nullptr;
    QV_INT    index_ = 0;
};

inline Store::Iterator Store::begin() const
{
    return Iterator( raw(), 0 );
}

inline Store::Iterator Store::end() const
{
    return Iterator( raw(), size() );
}

static_assert( std::ranges::bidirectional_range< Store > );
} // namespace qv

#endif
