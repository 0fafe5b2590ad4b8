// What documents, containers and options cost at n and at ten times n, in the worst orders, and how much memory they
// take. Allocations, bytes that are moved and comparisons are counted, never time.

#include "qv_probe.h"
#include "qv_test_stream.h"

#include "qv/qv.h"

#include <cmath>
#include <dlfcn.h>
#include <malloc.h>

using qv::Ref;
using namespace qv::test;

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ ) // which have a heap of their own
namespace
{
QV_INT bytesMoved, allocations; // by the library
} // namespace

// Stand-ins, which pass everything on.
extern "C"
{
    void *__libc_malloc( size_t size );
    void *__libc_realloc( void *block, size_t size );

    void *memmove( void *dest, const void *src, size_t size ) noexcept
    {
        static auto next = reinterpret_cast< decltype( &memmove ) >( dlsym( RTLD_NEXT, "memmove" ) );
        bytesMoved += static_cast< QV_INT >( size );
        return next( dest, src, size );
    }

    void *malloc( size_t size ) noexcept
    {
        allocations++;
        return __libc_malloc( size );
    }

    void *realloc( void *block, size_t size ) noexcept
    {
        allocations++;
        bytesMoved += block ? static_cast< QV_INT >( size ) : 0; // at the worst
        return __libc_realloc( block, size );
    }
}

namespace
{
using Numbers = std::vector< QV_INT >;

// n numbers in the order of a kind. In the last one neither the numbers nor their texts have any order.
Numbers inOrder( int kind, QV_INT n )
{
    Numbers order;

    for( QV_INT i = 0; i < n; i++ )
    {
        const QV_INT kinds[] = {
            i, n - i,
            i % 2 ? n - i / 2 : i / 2,              // from the ends to the middle
            n / 2 + ( i % 2 ? i / 2 + 1 : -i / 2 ), // from the middle outwards
            i * 2654435761 % 4294967291 };
        order.push_back( kinds[kind] );
    }

    return order;
}

Ref< QV_STORE > document( const Numbers &order )
{
    std::string lines;

    for( QV_INT i : order )
        lines += take( qvStringCreateFromFormatCstr( "%!16i=1\ns%!16i.a.value=2\n", -1, i, i ) );

    return Ref( qvStoreTryDecodeFromTextBuffer( buffer( lines ) ) );
}

void handleDocuments( const Numbers &order )
{
    Ref< QV_STORE >  a = document( order ), b = document( Numbers( order.rbegin(), order.rend() ) );
    Ref< QV_BUFFER > asText( qvStoreEncodeToTextBuffer( a ) ), binary( qvStoreEncodeToBuffer( a ) );
    EXPECT_TRUE( qvStoreEquals( b, Ref( qvStoreTryDecodeFromBuffer( binary ) ) ) );
    qvStoreMerge( a.at(), b );

    for( QV_INT i : order )
        qvStoreDelValueFormatCstr( a.at(), "%!16i", -1, i );

    for( QV_INT i : order )
        qvStoreSetValueIntFormatCstr( a.at(), "%!16i", -1, i, i );
}

void changeDict( const Numbers &order )
{
    Ref< QV_DICT > dict( qvDictCreate() );

    for( QV_INT i : order )
        qvDictSetObjKey( dict.at(), probe( i ), probe( i ) );

    for( QV_INT i : order )
        EXPECT_TRUE( qvDictHasObjKey( dict, probe( i ) ) );

    for( QV_INT i : order )
        qvDictDelObjKey( dict.at(), probe( i ) );

    EXPECT_EQ( 0, qvDictLength( dict ) );
    const double n = static_cast< double >( order.size() );
    EXPECT_LE( comparisons, 3 * n * ( std::log2( n ) + 4 ) );
}

void changePriorityMap( const Numbers &order )
{
    Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );

    for( QV_INT i : order )
        qvPriorityMapSet( map.at(), i, probe( i ) );

    while( qvPriorityMapLength( map ) > 0 )
        qvPriorityMapDelAt( map.at(), order[0] % 2 ? 0 : qvPriorityMapLength( map ) / 2 );
}

// Clusters of letters, ignored options, objects that are passed over and plain arguments. There are so many that a look
// at all that are left, which is not counted, would take hours.
void readOptions( const Numbers &order )
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    Ref< QV_VECTOR >  argv( qvVectorCreate() );
    Ref< QV_STRING >  words[] = { text( "-a" ), text( "-i" ), text( "plain" ) };
    qvOptDefSetReorder( def.at(), order[0] == 0 );
    qvOptDefSetShortOpt( def.at(), U'a', 1 );
    qvOptDefSetShortOpt( def.at(), U'i', 2 );
    qvOptDefSetFlags( def.at(), 2, QV_OPT_FLAG_IGNORE );

    for( char letter : { 'a', 'i' } )
        qvVectorAppendString( argv.at(), text( std::string( "-" ).append( 20 * order.size(), letter ) ) );

    for( int round = 0; round < 20; round++ )
        for( QV_INT i : order )
            i % 5 < 3 ? qvVectorAppendString( argv.at(), words[i % 5] ) : qvVectorAppendInt( argv.at(), i );

    for( Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) ); qvOptSeqHasNext( seq ); )
        qvOptSeqNext( seq );
}

// What work costs, a move of 64 bytes as much as an allocation or a comparison.
QV_INT steps( void ( *work )( const Numbers & ), const Numbers &order )
{
    bytesMoved = allocations = comparisons = 0;
    work( order );
    return allocations + bytesMoved / 64 + comparisons;
}
} // namespace

// The runs of a Dict are not full yet with few entries; what is quadratic would cost a hundred times as much.
TEST( Growth, TenTimesAsMuchCostsLittleMoreThanTenTimes )
{
    for( auto work : { handleDocuments, changeDict, changePriorityMap, readOptions } )
        for( int kind = 0; kind < 5; kind++ )
        {
            QV_INT few = steps( work, inOrder( kind, 2000 ) ), many = steps( work, inOrder( kind, 20000 ) );
            EXPECT_LE( many, 30 * few ) << "order " << kind;
        }
}

TEST( Growth, SetsCostTheSmallerOneOrTheirSum )
{
    const QV_INT   many = 20000;
    Ref< QV_DICT > few( qvDictCreate() ), even( qvDictCreate() ), odd( qvDictCreate() );

    for( QV_INT i = 0; i < many; i++ )
    {
        qvDictSetObjKey( i % 2 ? odd.at() : even.at(), probe( i ), probe( i ) );

        if( i % 1000 == 0 )
            qvDictSetObjKey( few.at(), probe( i / 7 ), probe( i ) );
    }

    auto expectSteps = [&]( QV_INT most, auto operation )
    {
        bytesMoved = comparisons = 0;
        operation();
        EXPECT_LE( comparisons, most );
        EXPECT_LE( bytesMoved, 1000 * most );
    };
    const QV_INT each = 20 * qvDictLength( few ), all = many * 12;
    expectSteps( each, [&] { qvDictInclude( odd.at(), few, QV_TRUE ); } );
    expectSteps( each, [&] { qvDictExclude( odd.at(), few ); } );
    expectSteps( each, [&] { EXPECT_FALSE( qvDictDisjoint( even, few ) ); } );
    expectSteps( each, [&] { qvDictIntersect( few.at(), even, QV_FALSE ); } );
    expectSteps( all, [&] { EXPECT_TRUE( qvDictDisjoint( even, odd ) ); } );
    expectSteps( all, [&] { qvDictInclude( odd.at(), even, QV_FALSE ); } );
    expectSteps( all, [&] { qvDictExclude( even.at(), odd ); } );
    EXPECT_EQ( 0, qvDictLength( even ) );
}

TEST( Growth, MemoryIsInProportion )
{
    auto heap = []
    {
        auto now = mallinfo2();
        return now.uordblks + now.hblkhd;
    };

    // Records, long chains, and chains before each of which one is named that is full already.
    for( int count : { 1000, 10000 } )
    {
        std::string records, chains, again, chain, full;

        for( int level = 0; level < 99; level++ )
            chain += ".a";

        for( ; full.size() < 40; full += "a." )
            for( char letter = 'A'; letter <= 'Z'; letter++ )
                again += full + letter + "=\n" + full + letter + ".\n";

        for( int i = 0; i < count; i++ )
        {
            std::string name = std::string( "x" ).append( std::to_string( i ) );
            records += name + ".name=n\n" + name + ".port=1\n" + name + ".host=localhost\n";
            chains += i % 30 ? "" : name + chain + ".\n";
            again += i % 3 ? "" : full.substr( 2 ) + "\n" + name + chain.substr( 0, 36 ) + ".\n";
        }

        for( auto &[whole, most] : { std::pair{ records, 32u }, { chains, 300u }, { again, 300u } } )
        {
            Ref< QV_BUFFER > bytes  = buffer( whole );
            size_t           before = heap();
            Ref< QV_STORE >  store( qvStoreTryDecodeFromTextBuffer( bytes ) );
            EXPECT_LE( ( heap() - before ) / whole.size(), most ) << whole.substr( 0, 20 );
        }
    }
}
#endif
