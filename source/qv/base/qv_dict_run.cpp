#include "qv/base/qv_dict_run_private.h"
#include "qv/base/qv_dict_tree_private.h"
#include "qv/sys/qv_block_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

using namespace qv::dict;

namespace
{
// Small runs that grow where they are would keep the heap from being used anew where documents come and go.
const int32_t EXTENDED = 64;

const qv::BlockKind RUN_KIND = { sizeof( Run ), sizeof( Item ), EXTENDED * sizeof( Item ) };

// The size with which a run has room for more: half as large again, a small one more than twice as large, for items no
// larger than they can fill.
int32_t grownSize( int32_t length )
{
    const int32_t FULL = qv::FULL_DICT_RUN;
    const int32_t ONLY = qv::FULL_ONLY_DICT_RUN;

    int32_t size = length + std::max( length / 2, std::min( length, 16 ) ) + 3;
    return length < FULL ? std::min( size, FULL ) : length < ONLY ? std::min( size, ONLY ) : size;
}

// Makes a change that takes more than moving one side.
[[gnu::noinline]] void moveRun( Run *&run, const qv::BlockChange &change )
{
    qv::BlockMemory memory = {
        reinterpret_cast< char * >( run + 1 ), itemBytes( run->size ), reinterpret_cast< char * >( run->items() ),
        nullptr, 0 };

    qv::moveBlock( &memory, RUN_KIND, change );

    run        = reinterpret_cast< Run * >( memory.memory ) - 1;
    run->size  = static_cast< int32_t >( memory.size / QV_INT( sizeof( Item ) ) );
    run->front = static_cast< int32_t >( ( memory.first - memory.memory ) / QV_INT( sizeof( Item ) ) );
}
} // namespace

Run *qv::dict::createRun( int32_t size )
{
    Run *run     = static_cast< Run * >( qvMemAlloc( QV_INT( sizeof( Run ) ) + itemBytes( size ) ) );
    run->digests = NO_DIGESTS;
    run->prefix  = 0;
    run->size    = size;
    run->front   = 0;
    run->length  = 0;
    markFree( run->items(), static_cast< size_t >( itemBytes( size ) ) );

    return run;
}

void qv::dict::freeRun( Run *run )
{
    takeFree( run + 1, itemBytes( run->front ) );
    takeFree( run->items() + run->length, itemBytes( backPlaces( run ) ) );
    qvMemFree( run );
}

Run *qv::dict::copyRun( Run *run )
{
    Run *copy     = createRun( std::min( grownSize( run->length ), run->length + run->length / 8 + 1 ) );
    copy->digests = run->digests;
    copy->prefix  = run->prefix;
    putItems( openRunGap( copy, 0, run->length ), run->items(), run->length );

    return copy;
}

void qv::dict::emptyRun( Run *run )
{
    run->front  = 0;
    run->length = 0;
    markFree( run->items(), static_cast< size_t >( itemBytes( run->size ) ) );
}

Item *qv::dict::openRunGapInside( Run *&run, int32_t idx, int32_t count )
{
    Item *start = run->items();
    Item *first = start;

    if( openBlockGap( &first, run->front, backPlaces( run ), { run->length, idx, count, 0, 0, 0, 0 } ) )
    {
        run->front -= static_cast< int32_t >( start - first );
    }
    else
    {
        int32_t spare = grownSize( run->length + count - 1 ) - run->length - count;
        moveRun(
            run,
            { itemBytes( run->length ), itemBytes( idx ), itemBytes( count ), 0, 0, itemBytes( spare ), QV_INT_MAX } );
    }

    run->length += count;
    QV_ASSERT( run->front >= 0 && backPlaces( run ) >= 0 );

    return run->items() + idx;
}

void qv::dict::closeRunGap( Run *&run, int32_t idx )
{
    Item   *gap  = run->items() + idx;
    int32_t tail = run->length - idx - 1;

    if( tail <= idx )
    {
        memmove( gap, gap + 1, static_cast< size_t >( itemBytes( tail ) ) );
        dropRunBack( run, 1 );
    }
    else
    {
        memmove( run->items() + 1, run->items(), static_cast< size_t >( itemBytes( idx ) ) );
        dropRunFront( run, 1 );
    }

    int32_t length = run->length;

    if( run->size >= 16 && length <= run->size / 4 )
        moveRun(
            run, { itemBytes( length ), 0, 0, itemBytes( length / 2 ), itemBytes( length + 1 - length / 2 ), 0,
                   itemBytes( run->size ) - 1 } );
}

void qv::dict::dropRunBack( Run *run, int32_t count )
{
    run->length -= count;
    markFree( run->items() + run->length, static_cast< size_t >( itemBytes( count ) ) );
}

void qv::dict::dropRunFront( Run *run, int32_t count )
{
    markFree( run->items(), static_cast< size_t >( itemBytes( count ) ) );
    run->front += count;
    run->length -= count;
}
