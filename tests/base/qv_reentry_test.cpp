// Containers whose objects use the variable of the container while they are compared or while they end.

#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_dict_private.h"
#include "qv/qv.hpp"

using namespace qv;
using namespace qv::test;

namespace
{
void freeProbe( QV_OBJ * )
{
    if( whileEnding )
        std::exchange( whileEnding, nullptr )();
}

QV_INT compareProbes( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_INT a = qvProbeFrom( thisObj )->value, b = qvProbeFrom( thatObj )->value;
    comparisons++;

    if( whileComparing )
        std::exchange( whileComparing, nullptr )();

    return ( a > b ) - ( a < b );
}
} // namespace

QV___FAMILY( Probe, QV_PROBE, freeProbe, compareProbes, nullptr )

namespace
{
template< class T >
struct Operation
{
    void ( *run )( T **all, T *other );
    QV_INT length; // of `all` after it, and 0 after what only reads
};

// Runs each operation on two new containers with some entries in common, and clears both when the first probe is compared
// or ends. Comparing comes before a change, and what the change takes out ends after it.
template< class T >
void expectWhole(
    T *( *create )(), void ( *enter )( T **all, QV_INT i ), void ( *clear )( T ** ), QV_INT ( *lengthOf )( T * ),
    const std::vector< std::function< void() > * > &events, const std::vector< Operation< T > > &operations )
{
    for( auto &[run, length] : operations )
        for( auto *event : events )
        {
            Ref< T > all( create() ), other( create() );
            bool     cleared = false;

            for( QV_INT i = 0; i < 2000; i++ )
            {
                enter( all.at(), i );
                enter( other.at(), 500 + i );
            }

            *event = [&]
            {
                cleared = true;
                clear( all.at() );
                clear( other.at() );
            };
            run( all.at(), other );
            *event = nullptr;

            if( cleared || length > 0 )
            {
                EXPECT_EQ( cleared && event == &whileEnding ? 0 : length, lengthOf( all ) ) << length;
            }
        }
}
} // namespace

TEST( Reentry, LeavesDictsWhole )
{
    expectWhole< QV_DICT >(
        qvDictCreate, []( auto dict, QV_INT i ) { qvDictSetObjKey( dict, probe( i ), probe( i % 10 ) ); }, qvDictClear,
        qvDictLength, { &whileComparing, &whileEnding },
        {
            { []( auto dict, auto ) { qvDictSetObjKey( dict, probe( 5000 ), probe( 0 ) ); }, 2001 },
            { []( auto dict, auto ) { qvDictSetObjKey( dict, probe( 0 ), probe( 0 ) ); }, 2000 },
            { []( auto dict, auto ) { qvDictDelObjKey( dict, probe( 7 ) ); }, 1999 },
            { []( auto dict, auto ) { qvDictDelValue( dict, probe( 3 ), QV_TRUE ); }, 1800 },
            { []( auto dict, auto other ) { qvDictInclude( dict, other, QV_TRUE ); }, 2500 },
            { []( auto dict, auto other ) { qvDictExclude( dict, other ); }, 500 },
            { []( auto dict, auto other ) { qvDictIntersect( dict, other, QV_TRUE ); }, 1500 },
            { []( auto dict, auto ) { EXPECT_TRUE( Ref( qvDictObjKey( *dict, probe( 7 ) ) ) ); }, 0 },
            { []( auto dict, auto ) { EXPECT_EQ( 700, qvDictIndexOfObjKey( *dict, probe( 700 ) ) ); }, 0 },
            { []( auto dict, auto other ) { qvDictDisjoint( *dict, other ); }, 0 },
            { []( auto dict, auto ) { qv___DictClear( dict ); }, 0 },
        } );
}

// What find() reads has not ended with the Dict that a compare function clears.
TEST( Reentry, LeavesFoundValuesWhole )
{
    qv::Dict<> dict;
    dict.set( Object::share( probe( 1 ) ), Object::share( probe( 7 ) ) );
    Object key     = Object::share( probe( 1 ) );
    whileComparing = [&] { dict.clear(); };

    std::optional< Object > found = dict.find( key );
    ASSERT_TRUE( found && dict.empty() );
    EXPECT_EQ( 7, qvProbeFrom( found->c() )->value );
}

TEST( Reentry, LeavesRangeMapsWhole )
{
    expectWhole< QV_RANGE_MAP >(
        qvRangeMapCreateAutoCollapsing, []( auto map, QV_INT i ) { qvRangeMapSetIntKey( map, 2 * i, probe( i / 4 ) ); },
        qvRangeMapClear, qvRangeMapLength, { &whileComparing, &whileEnding },
        { { []( auto map, auto ) { qvRangeMapSetRangeKey( map, 1, 9, probe( 1 ) ); }, 1996 } } );
}

// A change of a PriorityMap wins over all that happens meanwhile.
TEST( Reentry, LeavesPriorityMapsWhole )
{
    expectWhole< QV_PRIORITY_MAP >(
        qvPriorityMapCreate, []( auto map, QV_INT i ) { qvPriorityMapSet( map, i % 3, probe( i ) ); },
        qvPriorityMapClear, qvPriorityMapLength, { &whileComparing },
        {
            { []( auto map, auto ) { qvPriorityMapSet( map, 7, probe( 5000 ) ); }, 2001 },
            { []( auto map, auto ) { qvPriorityMapSet( map, 7, probe( 5 ) ); }, 2000 },
            { []( auto map, auto ) { qvPriorityMapDel( map, probe( 5 ) ); }, 1999 },
            { []( auto map, auto ) { qvPriorityMapDelAt( map, 5 ); }, 1999 },
            { []( auto map, auto ) { release( qvPriorityMapHigher( *map, probe( 5 ), nullptr ) ); }, 0 },
        } );
}
