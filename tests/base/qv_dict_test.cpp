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
#include <random>

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

namespace
{
Ref< QV_OBJ > boxed( QV_INT value )
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}
} // namespace

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
    bytesMoved  = 0;

    for( QV_INT i : order )
        qvDictSetObjKey( dict.at(), probe( i ), probe( i ) );

    for( QV_INT i : order )
        EXPECT_EQ( i, qvDictIndexOfObjKey( dict, probe( i ) ) );

    for( QV_INT i : order )
        qvDictDelObjKey( dict.at(), probe( i ) );

    return { double( comparisons ) / double( n ), double( bytesMoved ) / double( n ) };
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

    auto expectSteps = [&]( QV_INT most, auto operation )
    {
        comparisons = 0;
        bytesMoved  = 0;
        operation();
        EXPECT_LE( comparisons, most );
        EXPECT_LE( bytesMoved, 1000u * most );
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
    Ref< QV_OBJ >                 value  = boxed( 1 );
    size_t                        before = mallinfo2().uordblks;

    for( Ref< QV_DICT > &dict : dicts )
    {
        dict.reset( qvDictCreate() );
        qvDictSetObjKey( dict.at(), value, value );
    }

    EXPECT_LE( ( mallinfo2().uordblks - before ) / dicts.size(), 180u );
    EXPECT_EQ( 32 * 16, allocated( dicts[0].get() ) );
}

TEST( Dict, StaysWholeWhenOtherFamiliesUseItsVariableMeanwhile )
{
    using Operation                                   = std::function< void( QV_DICT **, QV_DICT * ) >;
    const std::pair< Operation, QV_INT > operations[] = {
        // with the length that each leads to
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

    auto dictOf = []( QV_INT from )
    {
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
            *when                  = [&]
            {
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

// A run of Strings that share few characters gets items of the one before it, which share more, and is joined with it in
// the end.
TEST( Dict, RunsWithOtherPrefixesEvenOut )
{
    std::vector< std::string > keys;
    Ref< QV_DICT >             dict( qvDictCreate() );

    // As keys that ascend are divided, the first run has 512 and the second one 480 of them.
    for( QV_INT i = 0; i < 2000; i++ )
    {
        const char *group = i < 512 ? "aaaabbbb" : i < 752 ? "aaaac" : i < 992 ? "aaaad" : "aaaaeeee";
        keys.push_back( group + std::to_string( 1000 + i ) );
        qvDictSetStringKey( dict.at(), text( keys.back() ), boxed( i ) );
    }

    auto lengthOf = [&]( QV_INT run ) { return dict->index->runs->items()[run].run->length; };
    ASSERT_EQ( 480, lengthOf( 1 ) );

    for( QV_INT i = 0; i < 670; i++ )
    {
        auto gone = keys.begin() + ( i < 470 ? 512 + ( i % 2 ? 0 : 479 - i ) : 50 );
        qvDictDelStringKey( dict.at(), text( *gone ) );
        keys.erase( gone );

        if( i == 352 )
        {
            EXPECT_EQ( 1, lengthOf( 1 ) - lengthOf( 0 ) );
        }
    }

    EXPECT_EQ( 4, dict->index->runs->length );

    for( const std::string &key : keys )
        EXPECT_TRUE( qvDictHasStringKey( dict, text( key ) ) ) << key;
}

TEST( Dict, BackingIsAllEntriesInRows )
{
    for( QV_INT length : { 0, 1, 1024, 1025, 5000 } )
    {
        Ref< QV_DICT > dict( qvDictCreate() );

        for( QV_INT i = 0; i < length; i++ )
            qvDictSetIntKey( dict.at(), i * 7 % 5003, boxed( i ) );

        for( QV_INT from : { QV_INT( 0 ), length / 3, length } )
        {
            QV_INT count = 9, i = from, rows = 0;

            for( ; i < qvDictLength( dict ); i += count, rows++ )
            {
                const QV_DICT_ENTRY *entries = qvDictBacking( dict, i, &count );
                ASSERT_LE( 1, count );

                for( QV_INT k = 0; k < count; k++ )
                {
                    EXPECT_EQ( Ref< QV_OBJ >( qvDictKeyAt( dict, i + k ) ).get(), entries[k].key );
                    EXPECT_EQ( Ref< QV_OBJ >( qvDictValueAt( dict, i + k ) ).get(), entries[k].value );
                }
            }

            EXPECT_EQ( length, i );
            EXPECT_GE( 1 + length / 100, rows );
            EXPECT_EQ( nullptr, qvDictBacking( dict, length, &count ) );
            EXPECT_EQ( 0, count );
        }
    }
}
