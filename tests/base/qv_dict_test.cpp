#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_unique.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_unique_private.h"

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <malloc.h>
#include <map>
#include <random>
#include <thread>

using namespace qv;
using namespace qv::test;

/* The family of qv_probe.h --------------------------------------------------------------------------------------- */

namespace
{
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

// What a Dict has to hold and to account for.
struct Model
{
    std::map< QV_OBJ *, QV_OBJ *, Less > map;
    QV_INT                               alloc = 0;

    QV_INT length() const
    {
        return static_cast< QV_INT >( map.size() );
    }

    auto at( QV_INT idx )
    {
        return std::next( map.begin(), idx );
    }

    // A copy has the block that entering its entries one by one would have led to.
    void own( bool shared )
    {
        if( shared )
            alloc = ( length() + 31 ) / 32 * 32;
    }

    void set( QV_OBJ *key, QV_OBJ *val )
    {
        if( map.extract( key ).empty() && length() >= alloc )
            alloc += 32;

        map[key] = val;
    }

    void erase( QV_OBJ *key )
    {
        map.erase( key );
        compact();
    }

    void compact()
    {
        if( map.empty() || length() < alloc - 64 )
            alloc = length();
    }

    Ref< QV_DICT > dict() const
    {
        Ref< QV_DICT > result( qvDictCreate() );

        for( auto &[key, val] : map )
            qvDictSetObjKey( result.at(), key, val );

        return result;
    }

    void expectIn( QV_DICT *dict ) const
    {
        ASSERT_EQ( length(), qvDictLength( dict ) );
        ASSERT_EQ( alloc * 16, allocated( dict ) );
        auto expected = map.begin();

        for( QV___DICT_ITEM &item : dictItems( dict ) )
        {
            ASSERT_EQ( expected->first, item.key );
            ASSERT_EQ( expected->second, item.val );
            expected++;
        }
    }
};

// Texts that share a start, differ late, are the start of each other, or have characters of all sizes.
std::u32string variedText( QV_INT i )
{
    const char32_t chars[] = { U'a', U'b', 0, 0xEC, 0xED, 0xEE, 0x100, 0xFFFF, 0x10000, 0x10FFFF };
    std::u32string result( static_cast< size_t >( i % 3 ) * 3, U'k' );

    for( ; i > 0; i /= 7 )
        result += chars[i % 10];

    return result;
}

using Keys = std::vector< Ref< QV_OBJ > >;

// Two key objects of each value, so that equal ones replace each other.
Keys keysOfKind( unsigned kind, QV_INT count )
{
    auto keyOf = [count]( QV_INT kindOfKey, QV_INT i ) {
        std::u32string path = U"path/of/keys/" + std::u32string( static_cast< size_t >( i % ( count / 5 ) ), U'x' );
        return kindOfKey == 0   ? boxed( i % 2 ? i * 1000 : -i )
               : kindOfKey == 1 ? stringObj( variedText( i * 7 ) )
               : kindOfKey == 2 ? stringObj( path + static_cast< char32_t >( i / ( count / 5 ) + U'a' ) )
                                : probe( i );
    };
    Keys keys;

    for( QV_INT i = 0; i < 2 * count; i++ )
        keys.push_back( keyOf( kind < 3 ? kind : i / 2 % 4, i / 2 ) );

    return keys;
}

// A Dict beside its model, and somebody who shares it at times.
struct Walk
{
    std::mt19937   random;
    QV_INT         size;
    Keys           keys, vals;
    Ref< QV_DICT > dict { qvDictCreate() }, holder { qvDictCreate() };
    Model          model, held;

    Walk( unsigned seed, QV_INT count ) : random( seed ), size( count ), keys( keysOfKind( seed % 4, count ) )
    {
        for( QV_INT i = 0; i < 10; i++ )
            vals.push_back( boxed( i / 2 ) );
    }

    QV_INT below( QV_INT limit )
    {
        return static_cast< QV_INT >( random() % static_cast< unsigned >( limit ) );
    }

    QV_OBJ *key()
    {
        return keys[random() % keys.size()];
    }

    QV_OBJ *val()
    {
        return vals[random() % vals.size()];
    }

    bool isShared()
    {
        return holder.get() == dict.get();
    }

    // A few entries or many, as both go in and out in different ways.
    Model other()
    {
        Model result;

        for( QV_INT i = below( below( 2 ) ? 12 : size ); i-- > 0; )
            result.set( key(), val() );

        return result;
    }

    void set()
    {
        QV_OBJ *k = key(), *v = val();
        model.own( isShared() );
        model.set( k, v );
        qvDictSetObjKey( dict.at(), k, v );
    }

    void delSome( QV_INT count, QV_INT where )
    {
        for( ; count > 0 && model.length() > 0; count-- )
        {
            QV_INT  idx = where == 0 ? 0 : where == 1 ? model.length() - 1 : below( model.length() );
            QV_OBJ *k   = model.at( idx )->first;
            model.own( isShared() && model.length() > 1 );
            model.erase( k );
            count % 2 ? qvDictDelObjKey( dict.at(), k ) : qvDictDelAt( dict.at(), idx );
        }
    }

    void include()
    {
        Model   from      = other();
        QV_BOOL overwrite = below( 2 );
        model.own( isShared() && from.length() > 0 );
        qvDictInclude( dict.at(), from.dict(), overwrite );

        for( auto &[k, v] : from.map )
            if( overwrite || !model.map.count( k ) )
                model.set( k, v );
    }

    void exclude()
    {
        Model    from   = other();
        bool     shared = isShared(), any = false;
        QV_DICT *before = dict;
        qvDictExclude( dict.at(), from.dict() );

        for( auto &[k, v] : from.map )
        {
            if( !model.map.count( k ) )
                continue;

            model.own( shared && !any && model.length() > 1 );
            model.erase( k );
            any = true;
        }

        ASSERT_TRUE( any || before == dict.get() );
    }

    void intersect()
    {
        Model          from = other(), kept;
        QV_BOOL        use  = below( 2 );
        Ref< QV_DICT > src  = from.dict();

        for( auto &[k, v] : model.map )
            if( from.map.count( k ) )
                kept.set( k, use ? from.map[k] : v );

        ASSERT_EQ( kept.length() == 0, qvDictDisjoint( dict, src ) );
        qvDictIntersect( dict.at(), src, use );
        model = model.length() > 0 ? kept : model;
    }

    void delValue()
    {
        QV_OBJ *v         = val();
        QV_BOOL byCompare = below( 2 );
        model.own( isShared() && model.length() > 0 );
        qvDictDelValue( dict.at(), v, byCompare );

        if( std::erase_if( model.map, [&]( auto &entry ) {
                return entry.second == v || ( byCompare && qvObjCompare( entry.second, v ) == 0 );
            } ) || model.length() > 0 )
            model.compact();
    }

    void setValueAt()
    {
        if( model.length() == 0 )
            return;

        QV_INT idx = below( model.length() );
        model.own( isShared() );
        qvDictSetValueAt( dict.at(), idx, model.at( idx )->second = val() );
    }

    void clear()
    {
        model.alloc = isShared() || dict.get() == Ref< QV_DICT >( qvDictCreate() ).get() ? 0 : model.alloc;
        model.map.clear();
        qv___DictClear( dict.at() );
    }

    void round( QV_INT number, bool filling )
    {
        if( below( 20 ) == 0 )
        {
            holder = Ref< QV_DICT >::share( dict );
            held   = model;
        }

        switch( QV_INT what = below( filling ? 12 : 10 ) )
        {
        case 0: include(); break;
        case 1: exclude(); break;
        case 2: setValueAt(); break;
        case 3: below( 9 ) ? set() : filling ? delValue() : clear(); break;
        case 4: filling ? set() : intersect(); break;
        case 5: case 6: case 7: case 8: case 9: delSome( below( filling ? 3 : size / 4 ), what % 3 ); break;
        default: for( QV_INT i = size / 30; i > 0; i-- ) set();
        }

        if( size < 1000 || number % 10 == 0 )
        {
            ASSERT_NO_FATAL_FAILURE( model.expectIn( dict ) );
            ASSERT_NO_FATAL_FAILURE( held.expectIn( holder ) );
        }

        // Any key, by all ways.
        QV_OBJ  *k      = key();
        auto     at     = model.map.find( k );
        bool     in     = at != model.map.end();
        QV_INT   idx    = in ? std::distance( model.map.begin(), at ) : -1;
        QV_DICT *before = dict;
        ASSERT_EQ( idx, qvDictIndexOfObjKey( dict, k ) );
        ASSERT_EQ( in ? at->second : nullptr, Ref< QV_OBJ >( qvDictObjKey( dict, k ) ).get() );

        if( in )
        {
            ASSERT_EQ( at->first, Ref< QV_OBJ >( qvDictKeyAt( dict, idx ) ).get() );
            return;
        }

        qvDictDelObjKey( dict.at(), k );
        ASSERT_EQ( before, dict.get() );
    }

    // Each place holds exactly one reference.
    void expectReferences()
    {
        std::map< QV_OBJ *, int32_t > expected;

        for( Model *counted : { &model, &held } )
            for( auto &[k, v] : counted->map )
                if( counted == &model || !isShared() )
                    expected[k]++, expected[v]++;

        for( Keys *all : { &keys, &vals } )
            for( Ref< QV_OBJ > &obj : *all )
                ASSERT_EQ( 1 + expected[obj], references( obj.get() ) );
    }
};
} // namespace

TEST( Dict, BehavesLikeItsModelUnderRandomChanges )
{
    for( unsigned seed = 0; seed < 12; seed++ )
    {
        SCOPED_TRACE( seed );
        const QV_INT rounds = seed < 8 ? 1000 : 300;
        Walk         walk( seed, seed < 8 ? 300 : 3000 ); // one run of items, or many

        for( QV_INT i = 0; i < rounds && !HasFatalFailure(); i++ )
            walk.round( i, i * 10 / rounds % 2 == 0 );

        walk.expectReferences();
    }
}

TEST( Dict, EveryKindOfKeyHasItsFiveOperations )
{
    Ref< QV_STRING > str = text( "str" );
    Ref< QV_DICT >   dict( qvDictCreate() );
    Ref< QV_OBJ >    obj = boxed( 9 ), value = boxed( 1 );
    QV_INT           length = 0;

#define FIVE( Key, ... )                                                                                               \
    qvDictSet##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__, value );                                                     \
    qvDictDel##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__ );                                                            \
    EXPECT_FALSE( qvDictHas##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                                 \
    EXPECT_EQ( nullptr, qvDict##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                              \
    EXPECT_EQ( -1, qvDictIndexOf##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                            \
    qvDictSet##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__, value );                                                     \
    EXPECT_EQ( ++length, qvDictLength( dict ) );                                                                       \
    EXPECT_TRUE( qvDictHas##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                                  \
    EXPECT_EQ( value.get(), Ref< QV_OBJ >( qvDict##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) ).get() );                   \
    EXPECT_LE( 0, qvDictIndexOf##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );

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

// What entering, finding and deleting costs for each of n keys, in an order: ascending, descending, from the ends to
// the middle, from there outwards, random.
std::pair< double, double > comparisonsAndBytes( QV_INT n, int kind )
{
    std::vector< QV_INT > order;
    Ref< QV_DICT >        dict( qvDictCreate() );

    for( QV_INT i = 0; i < n; i++ )
        order.push_back( kind < 2 ? i : i % 2 ? n - 1 - i / 2 : i / 2 );

    if( kind == 4 )
        std::shuffle( order.begin(), order.end(), std::mt19937( 7 ) );
    else if( kind % 2 )
        std::reverse( order.begin(), order.end() );

    comparisons = 0;
    moved       = 0;

    for( QV_INT i : order )
        qvDictSetObjKey( dict.at(), probe( i ), probe( i ) );

    for( QV_INT i : order )
        EXPECT_EQ( i, qvDictIndexOfObjKey( dict, probe( i ) ) );

    for( QV_INT i : order )
        qvDictDelObjKey( dict.at(), probe( i ) );

    return { double( comparisons ) / double( n ), double( moved ) / double( n ) };
}

TEST( Dict, CostsNoMoreThanTheLogarithmInAnyOrder )
{
    for( int kind = 0; kind < 5; kind++ )
    {
        SCOPED_TRACE( kind );
        auto small = comparisonsAndBytes( 2000, kind ), large = comparisonsAndBytes( 20000, kind );
        EXPECT_LE( large.first, 3 * ( std::log2( 20000 ) + 4 ) );
        EXPECT_LE( large.second, 2 * small.second + 200 );
    }
}

TEST( Dict, DividesItsItemsSeldomWhereAnEndMovesToAndFro )
{
    for( QV_INT step : { 1, -1 } )
    {
        Ref< QV_DICT > dict( qvDictCreate() );

        for( QV_INT i = 0; i < 2000; i++ )
        {
            qvDictSetIntKey( dict.at(), i * step, boxed( i ) );
            QV_INT divided = 0;

            for( QV_INT k = 0; k < 40 && dict->hasIndex; k++ )
            {
                QV_INT runs = dict->index->runs->length, key = ( i + 1 + ( k + 1 ) / 2 % 2 ) * step;
                k % 4 < 2 ? qvDictSetIntKey( dict.at(), key, boxed( k ) ) : qvDictDelIntKey( dict.at(), key );
                divided += dict->index->runs->length > runs;
            }

            ASSERT_GE( 1, divided ) << i;
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

    auto expectSteps = [&]( QV_INT most, auto operation ) {
        comparisons = 0;
        moved       = 0;
        operation();
        EXPECT_LE( comparisons, most );
        EXPECT_LE( moved, 1000u * most );
    };

    const QV_INT each = 20 * qvDictLength( few ), all = many * 12;
    expectSteps( each, [&] { qvDictInclude( odd.at(), few, QV_TRUE ); } );
    expectSteps( each, [&] { qvDictExclude( odd.at(), few ); } );
    expectSteps( each, [&] { EXPECT_FALSE( qvDictDisjoint( even, few ) ); } );
    expectSteps( each, [&] { qvDictIntersect( few.at(), even, QV_FALSE ); } );
    expectSteps( each, [&] { qvDictExclude( few.at(), odd ); } );
    expectSteps( all, [&] { EXPECT_TRUE( qvDictDisjoint( even, odd ) ); } );
    expectSteps( all, [&] { qvDictInclude( odd.at(), even, QV_FALSE ); } );
    expectSteps( all, [&] { qvDictExclude( even.at(), odd ); } );
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

    for( QV_BOOL byCompare : { QV_TRUE, QV_FALSE } )
    {
        Ref< QV_DICT > dict = dictOf();
        qvDictDelValue( dict.at(), dictItem( dict, 3 ).val, byCompare );
        EXPECT_EQ( byCompare ? 0 : 19, qvDictLength( dict ) );
    }

    // The other Dict is the value of a key that it has itself.
    for( int what = 0; what < 3; what++ )
    {
        Ref< QV_DICT > owner = dictOf(), other = dictOf();
        QV_DICT       *borrowed = other;
        qvDictSetObjKey( owner.at(), probe( 0 ), qvDictObj( other ) );
        other.reset();

        what == 0   ? qvDictInclude( owner.at(), borrowed, QV_TRUE )
        : what == 1 ? qvDictExclude( owner.at(), borrowed )
                    : qvDictIntersect( owner.at(), borrowed, QV_TRUE );
        EXPECT_EQ( what == 1 ? 0 : 20, qvDictLength( owner ) );
    }
}

TEST( Dict, StaysWholeWhenOtherFamiliesUseItsVariableMeanwhile )
{
    using Operation = std::function< void( QV_DICT **, QV_DICT * ) >;
    const std::pair< Operation, QV_INT > operations[] = { // with the length that each leads to
        { []( QV_DICT **dict, QV_DICT * ) { qvDictSetObjKey( dict, probe( 5000 ), probe( 0 ) ); }, 2001 },
        { []( QV_DICT **dict, QV_DICT * ) { qvDictSetObjKey( dict, probe( 0 ), probe( 0 ) ); }, 2000 },
        { []( QV_DICT **dict, QV_DICT * ) { qvDictDelObjKey( dict, probe( 7 ) ); }, 1999 },
        { []( QV_DICT **dict, QV_DICT * ) { qvDictDelValue( dict, probe( 3 ), QV_TRUE ); }, 1800 },
        { []( QV_DICT **dict, QV_DICT *other ) { qvDictInclude( dict, other, QV_TRUE ); }, 2500 },
        { []( QV_DICT **dict, QV_DICT *other ) { qvDictExclude( dict, other ); }, 500 },
        { []( QV_DICT **dict, QV_DICT *other ) { qvDictIntersect( dict, other, QV_TRUE ); }, 1500 },
        { []( QV_DICT **dict, QV_DICT * ) { EXPECT_TRUE( Ref( qvDictObjKey( *dict, probe( 7 ) ) ) ); }, 0 },
        { []( QV_DICT **dict, QV_DICT * ) { EXPECT_EQ( 700, qvDictIndexOfObjKey( *dict, probe( 700 ) ) ); }, 0 },
        { []( QV_DICT **dict, QV_DICT *other ) { qvDictDisjoint( *dict, other ); }, 0 },
        { []( QV_DICT **dict, QV_DICT * ) { qv___DictClear( dict ); }, 0 },
    };

    auto dictOf = []( QV_INT from ) {
        Ref< QV_DICT > dict( qvDictCreate() );
        for( QV_INT i = from; i < from + 2000; i++ )
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
                qvDictClear( other.at() );
            };
            operation( dict.at(), other );
            *when = nullptr;

            // Comparing comes before the change, the end of what goes comes after it.
            if( cleared || length > 0 )
            {
                EXPECT_EQ( cleared && when == &whileEnding ? 0 : length, qvDictLength( dict ) );
            }

            qvDictSetObjKey( dict.at(), probe( 1 ), probe( 1 ) );
        }
    }
}

TEST( Dict, ThreadsChangeTheirOwnOfOneTheyShare )
{
    Ref< QV_DICT > shared( qvDictCreate() );

    for( QV_INT i = 0; i < 2000; i++ )
        i % 2 ? qvDictSetRealKey( shared.at(), i, boxed( i ) ) : qvDictSetIntKey( shared.at(), i, boxed( i ) );

    auto work = [borrowed = shared.get()] {
        for( QV_INT i = 0; i < 50; i++ )
        {
            Ref< QV_DICT > own = Ref< QV_DICT >::share( borrowed ), few( qvDictCreate() );
            qvDictSetRealKey( few.at(), i, Ref< QV_OBJ >( qvDictKeyAt( borrowed, i ) ) );
            i % 2 ? qvDictExclude( own.at(), few ) : qvDictInclude( own.at(), few, QV_TRUE );
            qvDictInclude( few.at(), borrowed, QV_FALSE );
            qvDictDelValue( own.at(), Ref< QV_OBJ >( qvDictValueAt( borrowed, i ) ), QV_TRUE );
            EXPECT_FALSE( qvDictDisjoint( borrowed, few ) );
            EXPECT_TRUE( qvDictHasRealKey( borrowed, 2 * i + 1 ) );
        }
    };
    std::thread other( work );
    work();
    other.join();
    EXPECT_EQ( 2000, qvDictLength( shared ) );
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
    EXPECT_EQ( "<1, 2, 3>", textOf( Ref< QV_VECTOR >( qvDictKeysVector( dict ) ).get() ) );
    EXPECT_EQ( "<1, 3, 0>", textOf( Ref< QV_VECTOR >( qvDictValuesVector( dict ) ).get() ) );
}

TEST( Dict, SetsOperateOnTheDictItself )
{
    for( QV_INT count : { 3, 3000 } )
    {
        Ref< QV_DICT > dict( qvDictCreate() ), empty( qvDictCreate() );
        Ref< QV_OBJ >  value = boxed( 1 );

        for( QV_INT i = 0; i < count; i++ )
            qvDictSetIntKey( dict.at(), i, value );

        Ref< QV_DICT > same = Ref< QV_DICT >::share( dict );
        qvDictInclude( dict.at(), dict, QV_TRUE );
        qvDictIntersect( dict.at(), dict, QV_TRUE );

        // As a value and as a key it goes in as it was.
        qvDictSetIntKey( dict.at(), count, qvDictObj( dict ) );
        EXPECT_TRUE( qvDictEquals( same, qvDictFrom( Ref< QV_OBJ >( qvDictIntKey( dict, count ) ) ) ) );
        qvDictSetObjKey( same.at(), qvDictObj( same ), value );
        EXPECT_EQ( count + 1, qvDictLength( same ) );
        qvDictExclude( dict.at(), dict );
        EXPECT_EQ( empty.get(), dict.get() );
    }
}

TEST( Dict, SetsDrawTheNumbersOfKeysInOneOrderWhicheverIsLonger )
{
    std::vector< Ref< QV_OBJ > > keys; // alive to the end, as numbers are drawn again

    for( QV_INT more : { -1, 1 } )
    {
        for( bool excludes : { true, false } )
        {
            Ref< QV_DICT > dicts[] = { Ref( qvDictCreate() ), Ref( qvDictCreate() ) };

            for( Ref< QV_DICT > &dict : dicts )
            {
                keys.emplace_back( qvBoxedUniqueObj( qvBoxedUniqueCreate() ) );
                qvDictSetObjKey( dict.at(), keys.back(), keys.back() );
            }

            qvDictSetIntKey( dicts[more > 0].at(), 1, boxed( 1 ) );
            QV_INT first = qv___UniqueGet(); // is drawn next, and here given back
            qv___UniquePut( first );
            excludes ? qvDictExclude( dicts[0].at(), dicts[1] ) : qvDictIntersect( dicts[0].at(), dicts[1], QV_FALSE );
            EXPECT_EQ( first, qv___ObjUnique( excludes ? keys.end()[-2] : keys.end()[-1] ) );
        }
    }
}

TEST( Dict, KeysWithOtherPrefixesMeet )
{
    Ref< QV_DICT > both( qvDictCreate() ), other( qvDictCreate() );
    auto key = []( QV_INT i ) { return text( ( i % 2 ? "aaaabbbb" : "aaaacccc" ) + std::to_string( 1000 + i ) ); };

    for( QV_INT i = 0; i < 1400; i++ )
        qvDictSetStringKey( i % 2 ? both.at() : other.at(), key( i ), boxed( i ) );

    qvDictInclude( both.at(), other, QV_FALSE );

    for( QV_INT i = 0; i < 1400; i++ )
        EXPECT_TRUE( qvDictHasStringKey( both, key( i ) ) );
}

TEST( Dict, OrdersByKeysThenValuesThenLength )
{
    const std::vector< std::pair< QV_INT, QV_INT > > ascending[] = {
        {}, { { 1, 1 } }, { { 1, 1 }, { 2, 1 } }, { { 1, 2 } }, { { 2, 1 } } };
    std::vector< Ref< QV_DICT > > dicts;

    for( auto &entries : ascending )
    {
        dicts.emplace_back( qvDictCreate() );

        for( auto &[key, value] : entries )
            qvDictSetIntKey( dicts.back().at(), key, boxed( value ) );
    }

    for( size_t a = 0; a < dicts.size(); a++ )
        for( size_t b = 0; b < dicts.size(); b++ )
            EXPECT_EQ( ( a > b ) - ( a < b ), qvDictCompare( dicts[a], dicts[b] ) );
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
