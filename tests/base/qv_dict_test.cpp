#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_unique.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_sort.h"

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <functional>
#include <malloc.h>
#include <map>
#include <random>

using namespace qv;
using namespace qv::test;

/* A family that counts its comparisons, and does what a test wants while it compares or ends --------------------- */

typedef struct QV_PROBE QV_PROBE;

QV_FAMILY( Probe, QV_PROBE )

struct QV_PROBE : QV_OBJ
{
    QV_INT value;
};

namespace
{
QV_INT                  comparisons = 0;
std::function< void() > whileComparing, whileEnding;

// What a call does, once.
void call( std::function< void() > &what )
{
    if( std::function< void() > once = std::exchange( what, nullptr ) )
        once();
}

void freeProbe( QV_OBJ * )
{
    call( whileEnding );
}

QV_INT compareProbes( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_INT a = qvProbeFrom( thisObj )->value, b = qvProbeFrom( thatObj )->value;
    comparisons++;
    call( whileComparing );

    return ( a > b ) - ( a < b );
}
} // namespace

QV___FAMILY( Probe, QV_PROBE, freeProbe, compareProbes, nullptr )

/* Bytes that the library moves ----------------------------------------------------------------------------------- */

namespace
{
size_t moved = 0;
}

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
extern "C" void *memmove( void *dest, const void *src, size_t size ) noexcept
{
    static auto next = reinterpret_cast< void *(*)( void *, const void *, size_t ) >( dlsym( RTLD_NEXT, "memmove" ) );
    moved += size;

    return next( dest, src, size );
}
#endif

namespace
{
Ref< QV_OBJ > probe( QV_INT value )
{
    QV_PROBE *object = create< QV_PROBE >( qvProbeSort() );
    object->value    = value;

    return Ref< QV_OBJ >( qvProbeObj( object ) );
}

Ref< QV_OBJ > boxed( QV_INT value )
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

// An object of its own, an empty text too.
Ref< QV_OBJ > stringObj( std::u32string_view chars )
{
    return Ref< QV_OBJ >( qvStringObj( qvStringCreateFrom( text( chars ) ) ) );
}

struct Less
{
    bool operator()( QV_OBJ *a, QV_OBJ *b ) const
    {
        return qvObjCompare( a, b ) < 0;
    }
};

using Map = std::map< QV_OBJ *, QV_OBJ *, Less >;

// What a Dict has to hold and to account for.
struct Model
{
    Map    map;
    QV_INT alloc = 0;

    QV_INT length() const
    {
        return static_cast< QV_INT >( map.size() );
    }

    // A copy has the block that entering its entries one by one would have led to.
    void own( bool shared )
    {
        if( shared )
            alloc = ( length() + 31 ) / 32 * 32;
    }

    void set( QV_OBJ *key, QV_OBJ *val )
    {
        auto node = map.extract( key );

        if( node.empty() && length() >= alloc )
            alloc += 32;

        map[key] = val;
    }

    void erase( QV_OBJ *key, bool shrink = true )
    {
        if( map.erase( key ) == 0 )
            return;

        if( map.empty() )
            alloc = 0;
        else if( shrink )
            compact();
    }

    void compact()
    {
        if( length() < alloc - 64 )
            alloc = length();
    }
};

void expectModel( const Model &model, QV_DICT *dict )
{
    ASSERT_EQ( model.length(), qvDictLength( dict ) );
    ASSERT_EQ( model.alloc * 16, allocated( dict ) );

    auto at = model.map.begin();

    for( QV___DICT_ITEM &item : dictItems( dict ) )
    {
        ASSERT_EQ( at->first, item.key );
        ASSERT_EQ( at->second, item.val );
        at++;
    }
}

// Two key objects of each value, so that equal ones replace each other.
using Keys = std::vector< Ref< QV_OBJ > >;

template< class Make >
Keys twice( QV_INT count, Make make )
{
    Keys keys;

    for( QV_INT i = 0; i < 2 * count; i++ )
        keys.push_back( make( i / 2 ) );

    return keys;
}

// Texts that share a start, differ late, are the start of each other, or have characters of all sizes.
std::u32string variedText( QV_INT i )
{
    const char32_t chars[] = { U'a', U'b', 0, 0xEC, 0xED, 0xEE, 0x100, 0xFFFF, 0x10000, 0x10FFFF };
    std::u32string result( static_cast< size_t >( i % 3 ) * 3, U'k' );

    for( ; i > 0; i /= 7 )
        result += chars[i % 10];

    return result;
}

Keys keysOfKind( int kind, QV_INT count )
{
    auto path = [count]( QV_INT i ) {
        return stringObj( U"path/of/keys/" + std::u32string( static_cast< size_t >( i % ( count / 5 ) ), U'x' ) +
                          static_cast< char32_t >( i / ( count / 5 ) + U'a' ) );
    };

    switch( kind )
    {
    case 0:
        return twice( count, []( QV_INT i ) { return boxed( i % 2 ? i * 1000 : -i ); } );
    case 1:
        return twice( count, []( QV_INT i ) { return stringObj( variedText( i * 7 ) ); } );
    case 2:
        return twice( count, path );
    default:
        return twice( count, [&]( QV_INT i ) {
            return i % 4 == 0   ? boxed( i )
                   : i % 4 == 1 ? stringObj( variedText( i ) )
                   : i % 4 == 2 ? path( i )
                                : probe( i );
        } );
    }
}
} // namespace

TEST( Dict, BehavesLikeItsModelUnderRandomChanges )
{
    for( unsigned seed = 0; seed < 12; seed++ )
    {
        SCOPED_TRACE( seed );
        const QV_INT FEW    = 300; // one run of items, or many
        const QV_INT size   = seed < 8 ? FEW : 3000;
        const int    rounds = seed < 8 ? 1000 : 200;
        const int    burst  = static_cast< int >( size / 30 );
        std::mt19937 random( seed );
        Keys         keys = keysOfKind( static_cast< int >( seed % 4 ), size );
        Keys         vals = twice( 5, []( QV_INT i ) { return boxed( i ); } );

        auto key = [&] { return keys[random() % keys.size()].get(); };
        auto val = [&] { return vals[random() % vals.size()].get(); };

        // A few entries or many, as both go in and out on different ways.
        auto other = [&] {
            Model        model;
            size_t       most = random() % 2 ? 12 : static_cast< size_t >( size );
            for( size_t i = random() % most; i-- > 0; )
                model.set( key(), val() );
            return model;
        };
        auto dictOf = [&]( const Model &model ) {
            Ref< QV_DICT > dict( qvDictCreate() );
            for( auto &[k, v] : model.map )
                qvDictSetObjKey( dict.at(), k, v );
            return dict;
        };

        Ref< QV_DICT > dict( qvDictCreate() ), holder;
        Model          model, held;

        for( int round = 0; round < rounds; round++ )
        {
            if( random() % 20 == 0 )
            {
                holder = Ref< QV_DICT >::share( dict );
                held   = model;
            }

            bool shared = holder.get() == dict.get();
            bool filling = round / ( rounds / 10 ) % 2 == 0;

            switch( random() % 10 )
            {
            case 0:
            case 1:
            case 2:
                for( int i = filling ? burst : 1; i-- > 0; )
                {
                    QV_OBJ *k = key(), *v = val();
                    model.own( holder.get() == dict.get() );
                    qvDictSetObjKey( dict.at(), k, v );
                    model.set( k, v );
                }
                break;
            case 3:
            case 4:
                for( int i = filling ? 1 : burst; i-- > 0; )
                {
                    QV_OBJ *k = key();
                    model.own( holder.get() == dict.get() && model.map.count( k ) && model.length() > 1 );
                    qvDictDelObjKey( dict.at(), k );
                    model.erase( k );
                }
                break;
            case 5:
                // Off an end, a run of entries.
                for( size_t i = random() % ( filling ? 3 : 8u * static_cast< size_t >( burst ) ); i-- > 0 && model.length() > 0; )
                {
                    bool first = round % 2;
                    model.own( holder.get() == dict.get() && model.length() > 1 );
                    qvDictDelAt( dict.at(), first ? 0 : model.length() - 1 );
                    model.erase( first ? model.map.begin()->first : model.map.rbegin()->first );
                }
                break;
            case 6:
            {
                Model   from      = other();
                QV_BOOL overwrite = random() % 2;
                qvDictInclude( dict.at(), dictOf( from ), overwrite );
                model.own( shared && !from.map.empty() );

                for( auto &[k, v] : from.map )
                    if( overwrite || !model.map.count( k ) )
                        model.set( k, v );
                break;
            }
            case 7:
            {
                Model from = other();
                Ref< QV_DICT > src = dictOf( from );
                auto present = [&]( auto &entry ) { return model.map.count( entry.first ) > 0; };
                ASSERT_EQ(
                    std::none_of( from.map.begin(), from.map.end(), present ), qvDictDisjoint( dict, src ) );
                qvDictExclude( dict.at(), src );

                for( auto &[k, v] : from.map )
                {
                    if( !model.map.count( k ) )
                        continue;

                    model.own( shared && model.length() > 1 );
                    shared = false;
                    model.erase( k );
                }
                break;
            }
            case 8:
            {
                if( filling )
                    break;

                Model   from = other();
                QV_BOOL use  = random() % 2;
                qvDictIntersect( dict.at(), dictOf( from ), use );
                Model kept;

                for( auto &[k, v] : model.map )
                    if( from.map.count( k ) )
                        kept.set( k, use ? from.map[k] : v );

                model = kept;
                break;
            }
            default:
            {
                QV_OBJ *v         = val();
                QV_BOOL byCompare = random() % 2;

                if( random() % 8 )
                {
                    if( model.length() > 0 )
                    {
                        auto at = std::next( model.map.begin(), static_cast< long >( random() % model.map.size() ) );
                        qvDictSetValueAt( dict.at(), std::distance( model.map.begin(), at ), v );
                        model.own( shared );
                        at->second = v;
                    }
                    break;
                }

                qvDictDelValue( dict.at(), v, byCompare );
                model.own( shared );
                std::erase_if( model.map, [&]( auto &entry ) {
                    return entry.second == v || ( byCompare && qvObjCompare( entry.second, v ) == 0 );
                } );

                if( model.map.empty() )
                    model.alloc = 0;

                model.compact();
                break;
            }
            }

            if( size == FEW || round % 10 == 0 )
            {
                ASSERT_NO_FATAL_FAILURE( expectModel( model, dict ) ) << "round " << round;
            }

            for( int i = 0; i < 5; i++ )
            {
                QV_OBJ *k  = key();
                auto    at = model.map.find( k );
                bool    in = at != model.map.end();
                QV_INT  idx = in ? std::distance( model.map.begin(), at ) : -1;
                ASSERT_EQ( idx, qvDictIndexOfObjKey( dict, k ) );
                ASSERT_EQ( in, qvDictHasObjKey( dict, k ) );
                ASSERT_EQ( in ? at->second : nullptr, Ref< QV_OBJ >( qvDictObjKey( dict, k ) ).get() );

                ASSERT_EQ( in ? at->first : k, in ? Ref< QV_OBJ >( qvDictKeyAt( dict, idx ) ).get() : k );
            }

            if( holder && round % 10 == 0 )
            {
                ASSERT_NO_FATAL_FAILURE( expectModel( held, holder ) );
            }
        }

        // Each place holds exactly one reference.
        std::map< QV_OBJ *, int32_t > expected;
        auto                          count = [&]( const Model &counted ) {
            for( auto &[k, v] : counted.map )
                expected[k]++, expected[v]++;
        };

        count( model );

        if( holder && holder.get() != dict.get() )
            count( held );

        for( Keys *all : { &keys, &vals } )
            for( Ref< QV_OBJ > &obj : *all )
                ASSERT_EQ( 1 + expected[obj], references( obj.get() ) );
    }
}

TEST( Dict, EveryKindOfKeyHasItsFiveOperations )
{
    Ref< QV_STRING > str = text( "str" );
    Ref< QV_DICT >   dict( qvDictCreate() );
    Ref< QV_OBJ >    obj = boxed( 9 ), value = boxed( 1 );
    QV_INT           length = 0;

#define FIVE( Key, ... )                                                                                               \
    EXPECT_FALSE( qvDictHas##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                                 \
    EXPECT_EQ( nullptr, qvDict##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                              \
    EXPECT_EQ( -1, qvDictIndexOf##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                            \
    qvDictDel##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__ );                                                            \
    for( int i = 0; i < 2; i++ )                                                                                       \
    {                                                                                                                  \
        qvDictSet##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__, value );                                                 \
        EXPECT_EQ( length + 1, qvDictLength( dict ) );                                                                 \
        EXPECT_TRUE( qvDictHas##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                              \
        EXPECT_EQ( value.get(), Ref< QV_OBJ >( qvDict##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) ).get() );               \
        EXPECT_LE( 0, qvDictIndexOf##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                         \
        if( i == 0 )                                                                                                   \
        {                                                                                                              \
            qvDictDel##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__ );                                                    \
            EXPECT_EQ( length, qvDictLength( dict ) );                                                                 \
        }                                                                                                              \
    }                                                                                                                  \
    length++;

    FIVE( ObjKey, obj )
    FIVE( NullKey )
    FIVE( BoolKey, QV_TRUE )
    FIVE( IntKey, QV_INT( -3 ) )
    FIVE( RealKey, 0.5 )
    FIVE( SortKey, qvStringSort() )
    FIVE( StringKey, str )
    FIVE( StringKeyCstr, "cstr", 2 )
    FIVE( StringKeyWcstr, L"wcstr", -1 )

#undef FIVE

    // By the names of the sorts, whatever the values.
    EXPECT_EQ( "{true=1, -3=1, 9=1, null=1, 0.500000=1, QV_STRING=1, cs=1, str=1, wcstr=1}", textOf( dict.get() ) );
}

// n in an order, and how it is worked through from there on.
std::vector< QV_INT > worstOrder( QV_INT n, int kind )
{
    std::vector< QV_INT > order;

    for( QV_INT i = 0; i < n; i++ )
        order.push_back( kind < 2 ? i : i % 2 ? n - 1 - i / 2 : i / 2 ); // ascending, or from the ends to the middle

    if( kind == 4 )
        std::shuffle( order.begin(), order.end(), std::mt19937( 7 ) );
    else if( kind % 2 )
        std::reverse( order.begin(), order.end() );

    return order;
}

struct Steps
{
    double comparisons, bytes; // for an entry
};

// What entering, finding and deleting costs for n keys.
Steps stepsOf( const Keys &keys, int kind )
{
    QV_INT                n     = static_cast< QV_INT >( keys.size() );
    std::vector< QV_INT > order = worstOrder( n, kind );
    Ref< QV_DICT >        dict( qvDictCreate() );
    comparisons = 0;
    moved       = 0;

    for( QV_INT i : order )
        qvDictSetObjKey( dict.at(), keys[static_cast< size_t >( i )], keys[0] );

    for( QV_INT i : order )
    {
        EXPECT_EQ( i, qvDictIndexOfObjKey( dict, keys[static_cast< size_t >( i )] ) );
        EXPECT_EQ( keys[static_cast< size_t >( i )].get(), Ref< QV_OBJ >( qvDictKeyAt( dict, i ) ).get() );
    }

    for( QV_INT i : order )
        qvDictDelObjKey( dict.at(), keys[static_cast< size_t >( i )] );

    return { double( comparisons ) / double( n ), double( moved ) / double( n ) };
}

TEST( Dict, CostsNoMoreThanTheLogarithmInAnyOrder )
{
    auto keysOf = []( QV_INT n, bool probes ) {
        Keys keys;

        for( QV_INT i = 0; i < n; i++ )
            keys.push_back( probes ? probe( i ) : stringObj( U"key/" + std::u32string( static_cast< size_t >( i % 7 ), U'k' ) ) );

        // Texts of different length, so that they share ever less.
        for( QV_INT i = 0; !probes && i < n; i++ )
        {
            std::u32string digits;
            for( QV_INT rest = i; rest > 0 || digits.empty(); rest /= 16 )
                digits += U"0123456789abcdef"[rest % 16];
            keys[static_cast< size_t >( i )] = stringObj( i % 3 ? digits : U"long/prefix/of/all/" + digits );
        }

        std::sort( keys.begin(), keys.end(), []( auto &a, auto &b ) { return qvObjCompare( a, b ) < 0; } );
        return keys;
    };

    for( bool probes : { true, false } )
    {
        Keys few = keysOf( 2000, probes ), many = keysOf( 20000, probes );

        for( int kind = 0; kind < 5; kind++ )
        {
            SCOPED_TRACE( kind );
            Steps small = stepsOf( few, kind ), large = stepsOf( many, kind );
            EXPECT_LE( large.comparisons, 3 * ( std::log2( 20000 ) + 4 ) );
            EXPECT_LE( large.bytes, 2 * small.bytes + 200 ) << small.bytes;
        }
    }
}

TEST( Dict, SetsCostTheSmallerOneOrTheirSum )
{
    Ref< QV_DICT > few( qvDictCreate() ), even( qvDictCreate() ), odd( qvDictCreate() );
    Ref< QV_OBJ >  value = boxed( 1 );
    const QV_INT   many  = 20000;

    for( QV_INT i = 0; i < many; i++ )
    {
        Ref< QV_OBJ > key = probe( i );
        qvDictSetObjKey( i % 2 ? odd.at() : even.at(), key, value );

        if( i % 1001 == 1000 )
            qvDictSetObjKey( few.at(), key, value );
    }

    auto stepsAre = [&]( QV_INT most, auto operation ) {
        comparisons = 0;
        moved       = 0;
        operation();
        EXPECT_LE( comparisons, most );
        return moved;
    };

    const QV_INT each = qvDictLength( few ), all = many * 12;
    EXPECT_LE( stepsAre( 20 * each, [&] { qvDictInclude( odd.at(), few, QV_TRUE ); } ), 20000u * each );
    EXPECT_EQ( many / 2 + each / 2 + 1, qvDictLength( odd ) );
    EXPECT_LE( stepsAre( 20 * each, [&] { qvDictExclude( odd.at(), few ); } ), 20000u * each );
    stepsAre( 20 * each, [&] { EXPECT_FALSE( qvDictDisjoint( even, few ) ); } );
    stepsAre( 20 * each, [&] { qvDictIntersect( few.at(), even, QV_FALSE ); } );
    EXPECT_LE( 9, qvDictLength( few ) );
    stepsAre( 20 * each, [&] { qvDictExclude( few.at(), odd ); } );
    stepsAre( all, [&] { EXPECT_TRUE( qvDictDisjoint( even, odd ) ); } );
    stepsAre( all, [&] { qvDictInclude( odd.at(), even, QV_FALSE ); } );
    stepsAre( all, [&] { qvDictExclude( even.at(), odd ); } );
    EXPECT_EQ( 0, qvDictLength( even ) );
}

TEST( Dict, AllocatesLittleForFewEntries )
{
#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ )
    GTEST_SKIP() << "the heap is the sanitizer's";
#endif
    std::vector< Ref< QV_DICT > > dicts( 1000 );
    Ref< QV_OBJ >                 value = boxed( 1 );
    size_t                        before = mallinfo2().uordblks;

    for( Ref< QV_DICT > &dict : dicts )
    {
        dict.reset( qvDictCreate() );
        qvDictSetObjKey( dict.at(), value, value );
    }

    EXPECT_LE( ( mallinfo2().uordblks - before ) / dicts.size(), 180u );
    EXPECT_EQ( 32 * 16, allocated( dicts[0].get() ) );
}

TEST( Dict, KeepsWhatItIsGivenAliveForTheCall )
{
    // What is looked for lives only in the Dict from which it goes.
    auto dictOf = [] {
        Ref< QV_DICT > dict( qvDictCreate() );
        for( QV_INT i = 0; i < 20; i++ )
            qvDictSetObjKey( dict.at(), probe( i ), probe( 7 ) );
        return dict;
    };
    auto valueIn = []( QV_DICT *dict ) { return Ref< QV_OBJ >( qvDictValueAt( dict, 3 ) ).get(); };

    for( QV_BOOL byCompare : { QV_TRUE, QV_FALSE } )
    {
        Ref< QV_DICT > dict = dictOf();
        qvDictDelValue( dict.at(), valueIn( dict ), byCompare );
        EXPECT_EQ( byCompare ? 0 : 19, qvDictLength( dict ) );
    }

    Ref< QV_DICT > dict = dictOf();
    qvDictDelObjKey( dict.at(), Ref< QV_OBJ >( qvDictKeyAt( dict, 3 ) ).get() );
    qvDictSetObjKey( dict.at(), Ref< QV_OBJ >( qvDictKeyAt( dict, 3 ) ).get(), valueIn( dict ) );
    qvDictSetValueAt( dict.at(), 3, valueIn( dict ) );
    EXPECT_EQ( 19, qvDictLength( dict ) );

    // The other Dict is the value of a key that it has itself.
    for( int what = 0; what < 3; what++ )
    {
        Ref< QV_DICT > owner = dictOf(), other = dictOf();
        QV_DICT       *borrowed = other;
        qvDictSetObjKey( owner.at(), probe( 0 ), qvDictObj( other ) );
        other.reset();

        if( what == 0 )
            qvDictInclude( owner.at(), borrowed, QV_TRUE );
        else if( what == 1 )
            qvDictExclude( owner.at(), borrowed );
        else
            qvDictIntersect( owner.at(), borrowed, QV_TRUE );

        EXPECT_EQ( what == 1 ? 0 : 20, qvDictLength( owner ) );
    }
}

TEST( Dict, StaysWholeWhenOtherFamiliesUseItsVariableMeanwhile )
{
    using Operation = std::function< void( QV_DICT **, QV_DICT * ) >;
    const std::pair< Operation, QV_INT > operations[] = { // with the length that each leads to
        { []( QV_DICT **dict, QV_DICT * ) { qvDictSetObjKey( dict, probe( 5000 ), probe( 0 ) ); }, 1001 },
        { []( QV_DICT **dict, QV_DICT * ) { qvDictSetObjKey( dict, probe( 0 ), probe( 0 ) ); }, 1000 },
        { []( QV_DICT **dict, QV_DICT * ) { qvDictDelObjKey( dict, probe( 7 ) ); }, 999 },
        { []( QV_DICT **dict, QV_DICT * ) { qvDictDelValue( dict, probe( 3 ), QV_TRUE ); }, 900 },
        { []( QV_DICT **dict, QV_DICT *other ) { qvDictInclude( dict, other, QV_TRUE ); }, 1500 },
        { []( QV_DICT **dict, QV_DICT *other ) { qvDictExclude( dict, other ); }, 500 },
        { []( QV_DICT **dict, QV_DICT *other ) { qvDictIntersect( dict, other, QV_TRUE ); }, 500 },
        { []( QV_DICT **dict, QV_DICT * ) { qvDictHasObjKey( *dict, probe( 7 ) ); }, 0 },
        { []( QV_DICT **dict, QV_DICT *other ) { qvDictDisjoint( *dict, other ); }, 0 },
        { []( QV_DICT **dict, QV_DICT * ) { qv___DictClear( dict ); }, 0 },
    };

    auto dictOf = []( QV_INT from ) {
        Ref< QV_DICT > dict( qvDictCreate() );
        for( QV_INT i = from; i < from + 1000; i++ )
            qvDictSetObjKey( dict.at(), probe( i ), probe( i % 10 ) );
        return dict;
    };

    for( auto &[operation, length] : operations )
    {
        for( auto *when : { &whileComparing, &whileEnding } )
        {
            Ref< QV_DICT > dict = dictOf( 0 ), other = dictOf( 500 );
            bool           cleared = false;
            *when = [&] {
                cleared = true;
                qvDictClear( dict.at() );
            };
            operation( dict.at(), other );
            *when = nullptr;

            // Comparing comes before the change, the end of what goes comes after it.
            EXPECT_EQ( cleared && when == &whileEnding ? 0 : cleared || length > 0 ? length : qvDictLength( dict ), qvDictLength( dict ) );
            qvDictSetObjKey( dict.at(), probe( 1 ), probe( 1 ) );
        }
    }
}

TEST( Dict, IsMadeOfVectorsAndGivesThem )
{
    Ref< QV_VECTOR > keys( qvVectorCreate() ), values( qvVectorCreate() );

    for( QV_INT i : { 3, 1, 3, 2, 1 } )
    {
        qvVectorAppendInt( values.at(), qvVectorLength( keys ) );
        qvVectorAppendInt( keys.at(), i );
    }

    Ref< QV_DICT > dict( qvDictCreateWithKeysAndValues( keys, values ) );
    EXPECT_EQ( "{1=1, 2=3, 3=0}", textOf( dict.get() ) );
    EXPECT_EQ( "<1, 2, 3>", textOf( Ref< QV_VECTOR >( qvDictKeysVector( dict ) ).get() ) );
    EXPECT_EQ( "<1, 3, 0>", textOf( Ref< QV_VECTOR >( qvDictValuesVector( dict ) ).get() ) );

    qvDictClear( dict.at() );
    EXPECT_EQ( "{}", textOf( dict.get() ) );
    EXPECT_EQ( Ref< QV_VECTOR >( qvVectorCreate() ).get(), Ref< QV_VECTOR >( qvDictKeysVector( dict ) ).get() );
}

TEST( Dict, SetsOperateOnTheDictItself )
{
    for( QV_INT count : { 3, 30 } )
    {
        Ref< QV_DICT > dict( qvDictCreate() );
        Ref< QV_OBJ >  value = boxed( 1 );

        for( QV_INT i = 0; i < count; i++ )
            qvDictSetIntKey( dict.at(), i, value );

        Ref< QV_DICT > same = Ref< QV_DICT >::share( dict );
        qvDictInclude( dict.at(), dict, QV_TRUE );
        qvDictInclude( dict.at(), dict, QV_FALSE );
        qvDictIntersect( dict.at(), dict, QV_TRUE );
        EXPECT_TRUE( qvDictEquals( same, dict ) );

        // As a value and as a key it goes in as it was.
        qvDictSetIntKey( dict.at(), count, qvDictObj( dict ) );
        Ref< QV_OBJ > inner( qvDictIntKey( dict, count ) );
        EXPECT_TRUE( qvDictEquals( same, qvDictFrom( inner ) ) );
        qvDictSetObjKey( same.at(), qvDictObj( same ), value );
        EXPECT_EQ( count + 1, qvDictLength( same ) );

        Ref< QV_DICT > empty( qvDictCreate() );
        qvDictExclude( dict.at(), dict );
        EXPECT_EQ( empty.get(), dict.get() );
    }
}

TEST( Dict, DeletingWhatIsAbsentKeepsASharedDictShared )
{
    Ref< QV_DICT > dict( qvDictCreate() ), many( qvDictCreate() );
    Ref< QV_OBJ >  value = boxed( 1 );
    qvDictSetIntKey( dict.at(), 1, value );

    for( QV_INT i = 10; i < 30; i++ )
        qvDictSetIntKey( many.at(), i, value );

    Ref< QV_DICT > holder = Ref< QV_DICT >::share( dict );
    qvDictDelIntKey( dict.at(), 2 );
    qvDictExclude( dict.at(), many );
    EXPECT_EQ( holder.get(), dict.get() );

    qvDictDelIntKey( dict.at(), 1 );
    EXPECT_EQ( Ref< QV_DICT >( qvDictCreate() ).get(), dict.get() );
    EXPECT_EQ( 1, qvDictLength( holder ) );
}

TEST( Dict, ClearingInsideKeepsTheBlock )
{
    Ref< QV_DICT > dict( qvDictCreate() );
    Ref< QV_OBJ >  value = boxed( 1 );

    for( QV_INT i = 0; i < 200; i++ )
        qvDictSetIntKey( dict.at(), i, value );

    QV_DICT *before = dict;
    qv___DictClear( dict.at() );
    EXPECT_EQ( before, dict.get() );
    EXPECT_EQ( 1, references( value.get() ) );

    // The next keys may be of another sort.
    qvDictSetStringKeyCstr( dict.at(), "b", -1, value );
    qvDictSetStringKeyCstr( dict.at(), "a", -1, value );
    EXPECT_EQ( 224 * 16, allocated( dict.get() ) );
    EXPECT_EQ( "{a=1, b=1}", textOf( dict.get() ) );

    Ref< QV_DICT > holder = Ref< QV_DICT >::share( dict );
    qv___DictClear( dict.at() );
    EXPECT_EQ( 0, qvDictLength( dict ) );
    EXPECT_EQ( 2, qvDictLength( holder ) );
}

TEST( Dict, OrdersByKeysThenValuesThenLength )
{
    Ref< QV_OBJ >  one = boxed( 1 ), two = boxed( 2 );
    auto           dictOf = []( std::initializer_list< std::pair< QV_INT, QV_OBJ * > > entries ) {
        Ref< QV_DICT > dict( qvDictCreate() );
        for( auto &[key, value] : entries )
            qvDictSetIntKey( dict.at(), key, value );
        return dict;
    };
    Ref< QV_DICT > a = dictOf( { { 1, one } } ), b = dictOf( { { 1, two } } ), c = dictOf( { { 1, one }, { 2, one } } ),
                   d = dictOf( { { 2, one } } );

    EXPECT_EQ( -1, qvDictCompare( a, b ) );
    EXPECT_EQ( 1, qvDictCompare( b, c ) );
    EXPECT_EQ( -1, qvDictCompare( a, c ) );
    EXPECT_EQ( -1, qvDictCompare( b, d ) );
}

TEST( Dict, ReportsBrokenContracts )
{
    Ref< QV_DICT >   dict( qvDictCreate() );
    Ref< QV_VECTOR > none( qvVectorCreate() ), one( qvVectorCreateFromObj( boxed( 1 ) ) );
    QV_DICT         *null = nullptr;

    EXPECT_BROKEN( qvDictSetIntKey( &null, 1, boxed( 1 ) ), "*dict" );
    EXPECT_BROKEN( qvDictSetIntKey( dict.at(), 1, nullptr ), "value" );
    EXPECT_BROKEN( qvDictHasStringKey( dict, nullptr ), "key" );
    EXPECT_BROKEN( qvDictValueAt( dict, 0 ), "idx < dict->length" );
    EXPECT_BROKEN( qvDictDelAt( dict.at(), 0 ), "idx < (*dict)->length" );
    EXPECT_BROKEN( qvDictKeyAt( dict, -1 ), "idx >= 0" );
    EXPECT_BROKEN( qvDictInclude( dict.at(), nullptr, QV_TRUE ), "src" );
    EXPECT_BROKEN(
        qvDictCreateWithKeysAndValues( none, one ),
        "qvVectorLength( keysVector ) == qvVectorLength( valuesVector )" );
}
