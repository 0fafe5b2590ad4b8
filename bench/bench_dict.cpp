#include "bench.h"

#include <algorithm>
#include <cstring>
#include <memory>

#ifdef BENCH_ABSL
#include <absl/container/btree_map.h>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_QT
#include <QMap>
#endif

// Dict: building in four orders, look-up, walking. All sides share the texts of their keys, but for those that own them.
// A Dict holds objects. Where values are handed out with a reference, the peers hold shared pointers and copy them; where
// they are lent, the peers hold numbers, and what the map itself holds is added up: numbers there, addresses here.

namespace bench
{
namespace
{
const size_t ORDERS             = 4;
const char *ORDER_NAMES[ORDERS] = { "ascending build", "random build", "descending build", "build towards the middle" };

std::vector< std::string > ordered( const std::vector< std::string > &shuffled, size_t order )
{
    std::vector< std::string > result = shuffled;

    if( order != 1 )
        std::sort( result.begin(), result.end() );

    if( order == 2 )
        std::reverse( result.begin(), result.end() );

    if( order == 3 )
    {
        const std::vector< std::string > sorted = result;

        for( size_t i = 0; i < sorted.size(); i++ )
            result[i] = sorted[i % 2 ? sorted.size() - 1 - i / 2 : i / 2];
    }

    return result;
}

// What a side of a case knows: how it makes its keys, builds, looks up, walks and goes.
struct Ours
{
    using Key = QV_STRING *;
    using Map = QV_DICT *;

    static Key key( const std::string &text )
    {
        return qvStringCreateFromCstr( text.c_str(), -1 );
    }

    static Map build( const std::vector< Key > &keys )
    {
        QV_DICT *dict = qvDictCreate();

        for( size_t i = 0; i < keys.size(); i++ )
        {
            QV_BOXED_INT *value = qvBoxedIntCreate( static_cast< QV_INT >( i ) );
            qvDictSetStringKey( &dict, keys[i], qvBoxedIntObj( value ) );
            qvBoxedIntRelease( value );
        }

        return dict;
    }

    // The Dict takes the reference of each value over.
    static Map buildGiven( const std::vector< Key > &keys )
    {
        QV_DICT *dict = qvDictCreate();

        for( size_t i = 0; i < keys.size(); i++ )
            qvDictSetStringKeyUse( &dict, keys[i], qvBoxedIntObj( qvBoxedIntCreate( static_cast< QV_INT >( i ) ) ) );

        return dict;
    }

    static uint64_t found( const Map &dict, const Key &key )
    {
        QV_OBJ *value = qvDictStringKey( dict, key );

        if( !value )
            return 0;

        uint64_t number = static_cast< uint64_t >( qvBoxedIntValue( qvBoxedIntFrom( value ) ) ) + 1;
        qvObjRelease( value );
        return number;
    }

    static uint64_t foundLent( const Map &dict, const Key &key )
    {
        QV_OBJ *value = qvDictLendStringKey( dict, key );
        return value ? lent( value ) + 1 : 0;
    }

    // What stands in for a lent value: its number while answers are compared, its address while work is timed.
    static uint64_t lent( QV_OBJ *value )
    {
        return comparing ? static_cast< uint64_t >( qvBoxedIntValue( qvBoxedIntFrom( value ) ) )
                         : reinterpret_cast< uintptr_t >( value );
    }

    static void walk( const Map &dict )
    {
        const QV_INT length = qvDictLength( dict );
        uint64_t     sum    = 0;

        for( QV_INT i = 0; i < length; i++ )
        {
            QV_OBJ *value = qvDictValueAt( dict, i );
            sum += i * static_cast< uint64_t >( qvBoxedIntValue( qvBoxedIntFrom( value ) ) );
            qvObjRelease( value );
        }

        show( sum );
    }

    static void walkLent( const Map &dict )
    {
        uint64_t sum = 0;
        QV_INT   count;

        for( QV_INT i = 0; i < qvDictLength( dict ); i += count )
        {
            const QV_DICT_ENTRY *entries = qvDictBacking( dict, i, &count );

            for( QV_INT k = 0; k < count; k++ )
                sum += static_cast< uint64_t >( i + k ) * lent( entries[k].value );
        }

        show( sum );
    }

    static void drop( Map &dict )
    {
        qvDictRelease( dict );
    }
};

#ifdef BENCH_GLIB
struct GLib
{
    using Key = std::string;
    using Map = GTree *;

    static const Key &key( const std::string &text )
    {
        return text;
    }

    static Map build( const std::vector< Key > &keys )
    {
        GTree *tree = g_tree_new_full(
            []( gconstpointer a, gconstpointer b, gpointer )
            { return std::strcmp( static_cast< const char * >( a ), static_cast< const char * >( b ) ); }, nullptr,
            g_free, nullptr );

        for( size_t i = 0; i < keys.size(); i++ )
            g_tree_insert( tree, g_strdup( keys[i].c_str() ), GSIZE_TO_POINTER( i + 1 ) );

        return tree;
    }

    static uint64_t found( const Map &tree, const Key &key )
    {
        return GPOINTER_TO_SIZE( g_tree_lookup( tree, key.c_str() ) );
    }

    static void walk( const Map &tree )
    {
        uint64_t sums[2] = {};
        g_tree_foreach(
            tree,
            []( gpointer, gpointer value, gpointer data ) -> gboolean
            {
                uint64_t *sum = static_cast< uint64_t * >( data );
                sum[0] += sum[1]++ * ( GPOINTER_TO_SIZE( value ) - 1 );
                return FALSE;
            },
            sums );
        show( sums[0] );
    }

    static void drop( Map &tree )
    {
        g_tree_destroy( tree );
    }
};
#endif

using Shared = std::shared_ptr< size_t >;

// Maps with the interface of the C++ library.
template< class AnyMap, class AnyKey >
struct Standard
{
    using Key   = AnyKey;
    using Map   = AnyMap;
    using Value = typename Map::mapped_type;

    static Key key( const std::string &text )
    {
        if constexpr( std::is_same_v< Key, std::string > )
            return text;
        else
            return Key::fromStdString( text );
    }

    static Map build( const std::vector< Key > &keys )
    {
        Map map;

        for( size_t i = 0; i < keys.size(); i++ )
            if constexpr( std::is_same_v< Key, std::string > )
                map.emplace( keys[i], made( i ) );
            else
                map.insert( keys[i], made( i ) );

        return map;
    }

    static uint64_t found( const Map &map, const Key &key )
    {
        auto it = map.find( key );
        return it == map.end() ? 0 : number( it ) + 1;
    }

    static void walk( const Map &map )
    {
        uint64_t sum = 0, i = 0;

        for( auto it = map.begin(); it != map.end(); ++it )
            sum += i++ * number( it );

        show( sum );
    }

    static Value made( size_t i )
    {
        if constexpr( std::is_same_v< Value, Shared > )
            return std::make_shared< size_t >( i );
        else
            return i;
    }

    // Copies the value: a shared pointer takes a reference and gives it up.
    template< class Iterator >
    static uint64_t number( const Iterator &it )
    {
        Value value;

        if constexpr( std::is_same_v< Key, std::string > )
            value = it->second;
        else
            value = it.value();

        if constexpr( std::is_same_v< Value, Shared > )
            return *value;
        else
            return value;
    }

    static void drop( Map & )
    {
    }
};

struct Works
{
    Work build[ORDERS], buildGiven[ORDERS], hit, hitLent, miss, walk, walkLent;
};

template< class Side >
Works works( const std::vector< std::string > &shuffled, const std::vector< std::string > &missing )
{
    using Keys = std::vector< typename Side::Key >;
    Works works;
    Keys *keysOf[ORDERS + 1];

    for( size_t order = 0; order <= ORDERS; order++ )
    {
        keysOf[order] = new Keys;

        for( const std::string &text : order < ORDERS ? ordered( shuffled, order ) : missing )
            keysOf[order]->push_back( Side::key( text ) );
    }

    auto building = []( const Keys *keys, auto build ) -> Work
    {
        return [keys, build]
        {
            typename Side::Map map = build( *keys );

            if( comparing )
                Side::walk( map );

            show( Side::found( map, keys->front() ) );
            Side::drop( map );
        };
    };

    for( size_t order = 0; order < ORDERS; order++ )
    {
        works.build[order]      = building( keysOf[order], Side::build );
        works.buildGiven[order] = works.build[order];

        if constexpr( std::is_same_v< Side, Ours > )
            works.buildGiven[order] = building( keysOf[order], Side::buildGiven );
    }

    auto map    = new typename Side::Map( Side::build( *keysOf[0] ) );
    auto lookUp = [map]( const Keys *keys )
    {
        uint64_t sum = 0;

        for( const typename Side::Key &key : *keys )
            sum = sum * 3 + Side::found( *map, key );

        show( sum );
    };
    works.hit  = [lookUp, keys = keysOf[1]] { lookUp( keys ); };
    works.miss = [lookUp, keys = keysOf[ORDERS]] { lookUp( keys ); };
    works.walk = [map] { Side::walk( *map ); };

    works.hitLent  = works.hit;
    works.walkLent = works.walk;

    if constexpr( std::is_same_v< Side, Ours > )
    {
        works.walkLent = [map] { Side::walkLent( *map ); };
        works.hitLent  = [map, keys = keysOf[1]]
        {
            uint64_t sum = 0;

            for( QV_STRING *key : *keys )
                sum = sum * 3 + Side::foundLent( *map, key );

            show( sum );
        };
    }

    return works;
}

void addCases( size_t count )
{
    const std::vector< std::string > all = keys( 2 * count );
    const std::vector< std::string > shuffled( all.begin(), all.begin() + static_cast< ptrdiff_t >( count ) );
    const std::vector< std::string > missing( all.begin() + static_cast< ptrdiff_t >( count ), all.end() );
    const std::string                input = std::to_string( count ) + " keys of 16 characters";
    const Works                      ours  = works< Ours >( shuffled, missing );

    std::vector< std::pair< std::string, Works > > peers;
#ifdef BENCH_GLIB
    peers.emplace_back( "GTree, 8 bits", works< GLib >( shuffled, missing ) );
#endif
#ifdef BENCH_QT
    peers.emplace_back( "QMap, 16 bits", works< Standard< QMap< QString, size_t >, QString > >( shuffled, missing ) );
#endif
#ifdef BENCH_ABSL
    peers.emplace_back(
        "absl::btree_map, 8 bits",
        works< Standard< absl::btree_map< std::string, size_t >, std::string > >( shuffled, missing ) );
#endif

    std::vector< std::pair< std::string, Works > > sharing;
#ifdef BENCH_QT
    sharing.emplace_back(
        "QMap of std::shared_ptr, 16 bits",
        works< Standard< QMap< QString, Shared >, QString > >( shuffled, missing ) );
#endif
#ifdef BENCH_ABSL
    sharing.emplace_back(
        "absl::btree_map of std::shared_ptr, 8 bits",
        works< Standard< absl::btree_map< std::string, Shared >, std::string > >( shuffled, missing ) );
#endif

    auto enter = [&]( const char *operation, double target, auto pick, const auto &beside, Peer bound = {},
                      const char *only = "" )
    {
        Case added{ "Dict", operation, input, target, pick( ours ), {}, bound };

        for( auto &[name, side] : beside )
            if( name.starts_with( only ) )
                added.peers.push_back( { name, pick( side ) } );

        add( added );
    };

    const double randomTarget = count >= 10000 ? 0.6 : 0;

    for( size_t order = 0; order < ORDERS; order++ )
        enter(
            ORDER_NAMES[order], order == 1 ? randomTarget : 0,
            [order]( const Works &side ) { return side.build[order]; }, peers );

    // The target of these is a ratio to QMap.
    enter( "ascending build beside QMap", 0.35, []( const Works &side ) { return side.build[0]; }, peers, {}, "QMap" );
    enter(
        "ascending build beside QMap, values given over", 0.35, []( const Works &side ) { return side.buildGiven[0]; },
        peers, {}, "QMap" );
    enter(
        "random build, values given over", randomTarget, []( const Works &side ) { return side.buildGiven[1]; },
        peers );

    const Peer references = lockedAdditions( 2 * count );

    enter( "look-up, hit, with references", 0.7, []( const Works &side ) { return side.hit; }, sharing, references );
    enter( "look-up, hit, lent", 0.7, []( const Works &side ) { return side.hitLent; }, peers );
    enter( "look-up, miss", 0, []( const Works &side ) { return side.miss; }, peers );
    enter( "walk lent entries", 0.6, []( const Works &side ) { return side.walkLent; }, peers );
    enter( "walk with references", 2.0, []( const Works &side ) { return side.walk; }, sharing, references );
}
} // namespace

void addDictCases()
{
    for( size_t count : { 100, 1000, 10000, 100000, 1000000 } )
        if( !isQuick() || count < 1000000 )
            addCases( count );
}
} // namespace bench
