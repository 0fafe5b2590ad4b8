#include "bench.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#ifdef BENCH_BOOST
#include <boost/smart_ptr/intrusive_ptr.hpp>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_QT
#include <QList>
#endif

// Vector: stable sort, and binary search in what is in order. The elements of every side are references to texts or to
// integers, but for GLib's, which are bare pointers.

namespace bench
{
namespace
{
using Texts = std::vector< std::string >;

// What a side knows: how it makes a sequence, of texts or of the numbers in them, copies it, sorts it, finds the place of
// a text, and shows an element. Sequences that the cases need stay.
struct Ours
{
    using Sequence = QV_VECTOR *;
    using Element  = QV_OBJ *;

    static Element element( const std::string &text, bool numbers )
    {
        return numbers ? qvBoxedIntObj( qvBoxedIntCreate( std::stoll( text ) ) )
                       : qvStringObj( qvStringCreateFromCstr( text.c_str(), -1 ) );
    }

    static Sequence make( const Texts &texts, bool numbers )
    {
        QV_VECTOR *vec = qvVectorCreate();

        for( const std::string &text : texts )
            qvVectorAppendObj( &vec, element( text, numbers ) );

        return vec;
    }

    static Sequence copy( const Sequence &vec )
    {
        return qvVectorCreateFrom( vec );
    }

    static void sort( Sequence &vec, bool )
    {
        qvVectorOrder( &vec );
    }

    static size_t place( const Sequence &vec, const Element &element, bool )
    {
        return static_cast< size_t >( qvVectorSearch( vec, element, nullptr ) );
    }

    static std::string shown( const Sequence &vec, size_t i )
    {
        QV_STRING *text = qvObjToString( qvVectorBacking( vec )[i] );
        return toUtf8( { qvStringBacking( text ), size_t( qvStringLength( text ) ) } );
    }

    static void drop( Sequence &vec )
    {
        qvVectorRelease( vec );
    }
};

// By a function of the caller's.
struct OursByFunction : Ours
{
    static QV_INT order( QV_OBJ *a, QV_OBJ *b, void *numbers )
    {
        if( !numbers )
            return qvStringCompare( qvStringFrom( a ), qvStringFrom( b ) );

        QV_INT x = qvBoxedIntValue( qvBoxedIntFrom( a ) );
        QV_INT y = qvBoxedIntValue( qvBoxedIntFrom( b ) );
        return ( x > y ) - ( x < y );
    }

    static void sort( Sequence &vec, bool numbers )
    {
        qvVectorOrderBy( &vec, order, numbers ? &numbers : nullptr );
    }
};

struct Item
{
    std::string text;
    int64_t     number;
    long        references = 0;
};

#ifdef BENCH_BOOST
inline void intrusive_ptr_add_ref( Item *item )
{
    __atomic_add_fetch( &item->references, 1, __ATOMIC_SEQ_CST );
}

inline void intrusive_ptr_release( Item *item )
{
    if( __atomic_sub_fetch( &item->references, 1, __ATOMIC_SEQ_CST ) == 0 )
        delete item;
}
#endif

template< class Pointer >
struct Standard
{
    using Sequence = std::vector< Pointer >;
    using Element  = Pointer;

    static Element element( const std::string &text, bool numbers )
    {
        return Pointer( new Item{ text, numbers ? std::stoll( text ) : 0 } );
    }

    static Sequence make( const Texts &texts, bool numbers )
    {
        Sequence all;

        for( const std::string &text : texts )
            all.push_back( element( text, numbers ) );

        return all;
    }

    static Sequence copy( const Sequence &all )
    {
        return all;
    }

    template< class Use >
    static auto withOrder( bool numbers, const Use &use )
    {
        return numbers ? use( []( const Pointer &a, const Pointer &b ) { return a->number < b->number; } )
                       : use( []( const Pointer &a, const Pointer &b ) { return a->text < b->text; } );
    }

    static void sort( Sequence &all, bool numbers )
    {
        withOrder( numbers, [&]( auto order ) { std::stable_sort( all.begin(), all.end(), order ); } );
    }

    static size_t place( const Sequence &all, const Element &element, bool numbers )
    {
        return withOrder(
            numbers,
            [&]( auto order )
            {
                return static_cast< size_t >(
                    std::lower_bound( all.begin(), all.end(), element, order ) - all.begin() );
            } );
    }

    static std::string shown( const Sequence &all, size_t i )
    {
        return all[i]->text;
    }

    static void drop( Sequence & )
    {
    }
};

// By a function of the caller's, which the compiler doesn't see through: the other side of OursByFunction.
template< class Pointer >
struct StandardByFunction : Standard< Pointer >
{
    static void sort( typename Standard< Pointer >::Sequence &all, bool numbers )
    {
        Standard< Pointer >::withOrder(
            numbers,
            [&]( auto order )
            {
                bool ( *called )( const Pointer &, const Pointer & ) = order;
                asm volatile( "" : "+r"( called ) );
                std::stable_sort( all.begin(), all.end(), called );
            } );
    }
};

#ifdef BENCH_GLIB
struct GLib
{
    using Sequence = GPtrArray *;

    static Sequence make( const Texts &texts, bool )
    {
        GPtrArray *all = g_ptr_array_new();

        for( const std::string &text : texts )
            g_ptr_array_add( all, new Item{ text, std::atoll( text.c_str() ) } );

        return all;
    }

    static Sequence copy( const Sequence &all )
    {
        return g_ptr_array_copy( all, nullptr, nullptr );
    }

    static const Item &item( gconstpointer place )
    {
        return **static_cast< const Item *const * >( place );
    }

    static void sort( Sequence &all, bool numbers )
    {
        g_ptr_array_sort(
            all,
            numbers ? []( gconstpointer a, gconstpointer b ) -> gint
            { return ( item( a ).number > item( b ).number ) - ( item( a ).number < item( b ).number ); }
                    : []( gconstpointer a, gconstpointer b ) -> gint
            { return std::strcmp( item( a ).text.c_str(), item( b ).text.c_str() ); } );
    }

    static std::string shown( const Sequence &all, size_t i )
    {
        return item( &all->pdata[i] ).text;
    }

    static void drop( Sequence &all )
    {
        g_ptr_array_free( all, TRUE );
    }
};
#endif

#ifdef BENCH_QT
struct Qt
{
    using Sequence = QList< QString >;
    using Element  = QString;

    static Element element( const std::string &text, bool )
    {
        return QString::fromStdString( text );
    }

    static Sequence make( const Texts &texts, bool )
    {
        Sequence all;

        for( const std::string &text : texts )
            all.push_back( element( text, false ) );

        return all;
    }

    static Sequence copy( const Sequence &all )
    {
        Sequence result = all;
        result.detach();
        return result;
    }

    static void sort( Sequence &all, bool )
    {
        std::stable_sort( all.begin(), all.end() );
    }

    static size_t place( const Sequence &all, const Element &element, bool )
    {
        return static_cast< size_t >( std::lower_bound( all.begin(), all.end(), element ) - all.begin() );
    }

    static std::string shown( const Sequence &all, size_t i )
    {
        return all[static_cast< int >( i )].toStdString();
    }

    static void drop( Sequence & )
    {
    }
};
#endif

template< class Side >
Work sorting( const Texts &texts, bool numbers )
{
    auto *from = new typename Side::Sequence( Side::make( texts, numbers ) );

    return [from, numbers, count = texts.size()]
    {
        typename Side::Sequence all = Side::copy( *from );
        timed( [&] { Side::sort( all, numbers ); } );

        for( size_t i = 0; comparing && i < count; i++ )
            show( Side::shown( all, i ) + "\n" );

        Side::drop( all );
    };
}

// Looks for every second element, and for every second one of others.
template< class Side >
Work searching( const Texts &texts, bool numbers )
{
    Texts present, sought = texts;

    for( size_t i = 0; i < texts.size(); i += 2 )
        present.push_back( texts[i] );

    auto *all  = new typename Side::Sequence( Side::make( present, numbers ) );
    auto *each = new std::vector< typename Side::Element >;
    Side::sort( *all, numbers );

    for( const std::string &text : sought )
        each->push_back( Side::element( text, numbers ) );

    return [all, each, numbers]
    {
        uint64_t sum = 0;

        for( const auto &element : *each )
            sum = sum * 3 + Side::place( *all, element, numbers );

        show( sum );
    };
}

// In random order, in order, in reverse order, and in 16 ordered parts of which each begins as low.
Texts shaped( Texts texts, size_t shape )
{
    if( shape > 0 )
        std::sort( texts.begin(), texts.end() );

    if( shape == 2 )
        std::reverse( texts.begin(), texts.end() );

    Texts saw;

    for( size_t part = 0; shape == 3 && part < 16; part++ )
        for( size_t i = part; i < texts.size(); i += 16 )
            saw.push_back( texts[i] );

    return shape == 3 ? saw : texts;
}

void addCases( size_t count, bool numbers )
{
    static const char *const SHAPES[] = { "random", "in order", "in reverse", "in 16 parts" };

    Texts             texts  = keys( count );
    const std::string kind   = std::to_string( count ) + ( numbers ? " integers" : " texts of 16 characters" );
    const char *const SHARED = "std::vector of std::shared_ptr, 8 bits";
    [[maybe_unused]] const char *const INTRUSIVE = "boost::intrusive_ptr, 8 bits";
    [[maybe_unused]] const char *const BARE      = "GPtrArray, bare pointers, 8 bits";

    std::mt19937_64 random( count );

    // Numbers of one length order as their texts do.
    for( size_t i = 0; numbers && i < count; i++ )
        texts[i] = std::to_string( 100000000 + random() % 900000000 );

    for( size_t shape = 0; shape < 4; shape++ )
    {
        const Texts input = shaped( texts, shape );
        Case        own{ "Vector", "sort", kind + ", " + SHAPES[shape], 1.0, sorting< Ours >( input, numbers ), {} };

        own.isTimed = true;
        own.peers.push_back( { SHARED, sorting< Standard< std::shared_ptr< Item > > >( input, numbers ) } );
#ifdef BENCH_BOOST
        own.peers.push_back( { INTRUSIVE, sorting< Standard< boost::intrusive_ptr< Item > > >( input, numbers ) } );
#endif
#ifdef BENCH_GLIB
        own.peers.push_back( { BARE, sorting< GLib >( input, numbers ) } );
#endif
#ifdef BENCH_QT
        if( !numbers )
            own.peers.push_back( { "QList, 16 bits", sorting< Qt >( input, numbers ) } );
#endif
        add( own );

        if( shape > 0 )
            continue;

        Case called{ "Vector", "sort by a function", own.input, 0, sorting< OursByFunction >( input, numbers ), {} };
        called.isTimed = true;
        called.peers.push_back(
            { SHARED, sorting< StandardByFunction< std::shared_ptr< Item > > >( input, numbers ) } );
#ifdef BENCH_BOOST
        called.peers.push_back(
            { INTRUSIVE, sorting< StandardByFunction< boost::intrusive_ptr< Item > > >( input, numbers ) } );
#endif
#ifdef BENCH_GLIB
        called.peers.push_back( { BARE, sorting< GLib >( input, numbers ) } );
#endif
        add( called );
    }

    Case search{ "Vector", "binary search", kind, 0, searching< Ours >( texts, numbers ), {} };
    search.peers.push_back( { SHARED, searching< Standard< std::shared_ptr< Item > > >( texts, numbers ) } );
#ifdef BENCH_QT
    if( !numbers )
        search.peers.push_back( { "QList, 16 bits", searching< Qt >( texts, numbers ) } );
#endif
    add( search );
}
} // namespace

void addOrderCases()
{
    for( size_t count : { 100, 10000, 100000 } )
        for( bool numbers : { false, true } )
            addCases( count, numbers );
}
} // namespace bench
