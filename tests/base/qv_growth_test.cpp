// What documents, containers and options cost at n and at ten times n, in the worst orders: allocations, bytes that are
// moved and comparisons are counted, never time.

#include "qv_probe.h"
#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/base/qv_priority_map.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_vector.h"

#include <cstdio>
#include <dlfcn.h>

using qv::Ref;
using namespace qv::test;

size_t qv::test::bytesMoved  = 0;
size_t qv::test::allocations = 0;

// Stand-ins, which pass everything on. The sanitizers have their own.
#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
extern "C"
{
    void *__libc_malloc( size_t size );
    void *__libc_realloc( void *block, size_t size );

    void *memmove( void *dest, const void *src, size_t size ) noexcept
    {
        static auto next =
            reinterpret_cast< void *(*)( void *, const void *, size_t ) >( dlsym( RTLD_NEXT, "memmove" ) );
        bytesMoved += size;

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
        bytesMoved += block ? size : 0; // at the worst
        return __libc_realloc( block, size );
    }
}

namespace
{
// The i-th of n numbers in the order of a kind; in the last the texts of the numbers come in no order.
QV_INT inOrder( int kind, QV_INT i, QV_INT n )
{
    switch( kind )
    {
    case 0:
        return i;
    case 1:
        return n - i;
    case 2:
        return i % 2 ? n - i / 2 : i / 2; // towards the middle
    case 3:
        return n / 2 + ( i % 2 ? i / 2 : -i / 2 ); // from the middle outwards
    default:
        return static_cast< QV_INT >( i * 2654435761u % 4294967291u );
    }
}

const int KINDS = 5;

Ref< QV_STORE > document( int kind, QV_INT n, bool nested )
{
    std::string lines;
    char        line[64];

    for( QV_INT i = 0; i < n; i++ )
    {
        const char *form = nested ? "s%llx.a.value=%lld\n" : "%llx=%lld\n";
        snprintf(
            line, sizeof( line ), form, static_cast< long long >( inOrder( kind, i, n ) ),
            static_cast< long long >( i ) );
        lines += line;
    }

    Ref< QV_BUFFER > bytes( qvBufferCreateFromBytesCopy( lines.data(), static_cast< QV_INT >( lines.size() ) ) );
    return Ref< QV_STORE >( qvStoreTryDecodeFromTextBuffer( bytes ) );
}

void readDocument( int kind, QV_INT n )
{
    document( kind, n, false );
}

void readNested( int kind, QV_INT n )
{
    document( kind, n, true );
}

void writeMergeAndCompare( int kind, QV_INT n )
{
    Ref< QV_STORE >  a = document( kind, n, true ), b = document( ( kind + 1 ) % KINDS, n, true );
    Ref< QV_BUFFER > asText( qvStoreEncodeToTextBuffer( a ) ), binary( qvStoreEncodeToBuffer( a ) );
    Ref< QV_STORE >  back( qvStoreTryDecodeFromBuffer( binary ) );
    EXPECT_TRUE( qvStoreEquals( a, back ) );
    qvStoreMerge( a.at(), b );
}

// Setting and deleting one entry of a document after the other, as editors do.
void changeDocument( int kind, QV_INT n )
{
    Ref< QV_STORE > store( qvStoreCreate() );

    for( QV_INT i = 0; i < n; i++ )
        qvStoreSetValueIntFormatCstr( store.at(), "%!16i", -1, i, inOrder( kind, i, n ) );

    for( QV_INT i = 0; i < n; i++ )
        qvStoreDelValueFormatCstr( store.at(), "%!16i", -1, inOrder( kind, i, n ) );

    EXPECT_EQ( 0, qvStoreLength( store ) );
}

void changePriorityMap( int kind, QV_INT n )
{
    Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );

    for( QV_INT i = 0; i < n; i++ )
        qvPriorityMapSet( map.at(), inOrder( kind, i, n ), probe( i ) );

    while( qvPriorityMapLength( map ) > 0 )
        qvPriorityMapDelAt( map.at(), kind % 2 ? 0 : qvPriorityMapLength( map ) / 2 );
}

// Clusters of letters, objects that are passed over, ignored and plain arguments.
void readOptions( int kind, QV_INT n )
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    qvOptDefSetReorder( def.at(), kind % 2 ? QV_TRUE : QV_FALSE );
    qvOptDefSetShortOpt( def.at(), U'a', 1 );

    Ref< QV_VECTOR > argv( qvVectorCreate() );
    qvVectorAppendString( argv.at(), text( "-" + std::string( static_cast< size_t >( n ), 'a' ) ) );

    for( QV_INT i = 0; i < n; i++ )
        i % 3 < kind ? qvVectorAppendInt( argv.at(), i )
                     : qvVectorAppendString( argv.at(), text( i % 2 ? "-a" : "plain" ) );

    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );

    while( qvOptSeqHasNext( seq ) )
        qvOptSeqNext( seq );

    Ref< QV_VECTOR > remaining( qvOptSeqRemainingArgv( seq ) );
}

// What work costs, a move of 64 bytes as much as an allocation or a comparison.
template< class Work >
double steps( Work work, int kind, QV_INT n )
{
    bytesMoved = allocations = 0;
    comparisons              = 0;
    work( kind, n );

    return static_cast< double >( allocations + bytesMoved / 64 ) + static_cast< double >( comparisons );
}
} // namespace

// The runs of a Dict are not full yet with few entries; what is quadratic would cost a hundred times as much.
TEST( Growth, TenTimesAsMuchCostsLittleMoreThanTenTimes )
{
    const std::pair< const char *, void ( * )( int, QV_INT ) > WORKS[] = {
        { "document", readDocument },
        { "nested document", readNested },
        { "whole documents", writeMergeAndCompare },
        { "changes of a document", changeDocument },
        { "PriorityMap", changePriorityMap },
        { "options", readOptions } };

    for( auto &[name, work] : WORKS )
    {
        for( int kind = 0; kind < KINDS; kind++ )
        {
            double few = steps( work, kind, 2000 ), many = steps( work, kind, 20000 );
            EXPECT_LE( many, 30 * few ) << name << ", order " << kind << ": " << few << ", then " << many;
        }
    }
}
#endif
