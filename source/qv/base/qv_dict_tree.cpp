#include "qv/base/qv_dict_tree_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

/* Runs ----------------------------------------------------------------------------------------------------------- */

namespace
{
using Item  = QV___DICT_ITEM;
using Run   = QV___DICT_RUN;
using Index = QV___DICT_INDEX;
using Place = qv::DictPlace;

const int32_t FULL = qv::FULL_DICT_RUN;
const int32_t ONLY = qv::FULL_ONLY_DICT_RUN;
const int32_t FEW  = qv::FEW_IN_DICT_RUN;

// Runs of what is made in one go, or joined, are not so full that the next item splits them.
const int32_t JOINED = 384;

// Places from which on a run is extended.
const int32_t EXTENDED = 64;

// Items that a new run at an end of the Dict gets from the full one before it. So many must go and come again until it
// is made again: that costs a walk through all counts.
const int32_t AT_END = 32;

size_t bytes( int32_t items )
{
    return static_cast< size_t >( items ) * sizeof( Item );
}

int32_t back( Run *run )
{
    return run->size - run->front - run->length;
}

Run *createRun( int32_t size )
{
    Run *run     = static_cast< Run * >( qvMemAlloc( QV_INT( sizeof( Run ) ) + size * QV_INT( sizeof( Item ) ) ) );
    run->digests = qv::NO_DIGESTS;
    run->prefix  = 0;
    run->size    = size;
    run->front   = 0;
    run->length  = 0;
    qv::markFree( run->items(), bytes( size ) );

    return run;
}

void freeRun( Run *run )
{
    qv::unpoison( run + 1, bytes( run->size ) );
    qvMemFree( run );
}

// Copies items to free places of another run.
void putItems( Item *to, const Item *from, int32_t count )
{
    qv::unpoison( to, bytes( count ) );
    memcpy( to, from, bytes( count ) );
}

// Moves items within a run; the places that they leave are free then.
inline void moveItems( Item *to, Item *from, int32_t count )
{
    if( count == 0 )
        return;

    qv::unpoison( to, bytes( count ) );
    memmove( to, from, bytes( count ) );

    if( to > from )
        qv::markFree( from, bytes( static_cast< int32_t >( std::min< ptrdiff_t >( to - from, count ) ) ) );
    else if( Item *end = std::max( from, to + count ); to < from )
        qv::markFree( end, bytes( static_cast< int32_t >( from + count - end ) ) );
}

// Makes a block larger whose items stay where they are in it: the C library may extend it without a copy.
void extendRun( Run *&run, int32_t size )
{
    QV_ASSERT( size > run->size );
    qv::unpoison( run + 1, bytes( run->size ) );
    run       = static_cast< Run * >( qvMemRealloc( run, QV_INT( sizeof( Run ) ) + size * QV_INT( sizeof( Item ) ) ) );
    run->size = size;
    qv::markFree( run + 1, bytes( run->front ) );
    qv::markFree( run->items() + run->length, bytes( back( run ) ) );
}

// Distributes the free places anew, in the same block or another one.
void spread( Run *&run, int32_t size, int32_t front )
{
    if( size == run->size )
    {
        moveItems( run->items() - run->front + front, run->items(), run->length );
        run->front = front;
        return;
    }

    // Small blocks that grow where they are would keep the heap from being used anew where documents come and go.
    if( front == run->front && size > run->size && run->size >= EXTENDED )
    {
        extendRun( run, size );
        return;
    }

    Run *other     = createRun( size );
    other->digests = run->digests;
    other->prefix  = run->prefix;
    other->front   = front;
    other->length  = run->length;
    putItems( other->items(), run->items(), run->length );
    freeRun( run );
    run = other;
}

// The size with which a run has room for more: half as large again, a small one more than twice as large, for items no
// larger than they can fill.
int32_t grownSize( int32_t length )
{
    int32_t size = length + std::max( length / 2, std::min( length, 16 ) ) + 3;
    return length < FULL ? std::min( size, FULL ) : length < ONLY ? std::min( size, ONLY ) : size;
}

// Opens a gap of one undefined item, by moving what is on the shorter side.
Item *openGapAnywhere( Run *&run, int32_t idx )
{
    int32_t tail   = run->length - idx;
    bool    atBack = tail <= idx;

    if( ( atBack ? back( run ) : run->front ) == 0 )
    {
        // Room is made for an eighth of the items at least, so that it is seldom made. Only a run that is nearly as
        // large as can be uses up what is left at the other side.
        bool    isTight = run->size - run->length <= run->length / 8;
        int32_t size    = isTight ? std::max( run->size, grownSize( run->length ) ) : run->size;

        if( !isTight || size > run->size )
        {
            int32_t free = size - run->length;
            spread(
                run, size,
                tail == 0  ? std::min( run->front, free / 4 )
                : idx == 0 ? free - std::min( back( run ), free / 4 )
                           : free / 2 );
        }

        if( ( atBack ? back( run ) : run->front ) == 0 )
            atBack = !atBack;
    }

    QV_ASSERT( run->length < run->size );
    Item *gap = run->items() + idx;

    if( atBack )
    {
        moveItems( gap + 1, gap, tail );
    }
    else
    {
        moveItems( run->items() - 1, run->items(), idx );
        run->front--;
        gap--;
    }

    run->length++;
    qv::unpoison( gap, sizeof( Item ) );

    return gap;
}

// The same. Nothing moves behind the last item as long as a place is free there.
inline Item *openGap( Run *&run, int32_t idx )
{
    if( idx != run->length || back( run ) == 0 )
        return openGapAnywhere( run, idx );

    Item *gap = run->items() + idx;
    run->length++;
    QV_ASSERT( back( run ) >= 0 );
    qv::unpoison( gap, sizeof( Item ) );

    return gap;
}

void closeGap( Run *&run, int32_t idx )
{
    Item   *gap  = run->items() + idx;
    int32_t tail = run->length - idx - 1;

    if( tail <= idx )
    {
        qv::markFree( gap, tail == 0 ? sizeof( Item ) : 0 );
        moveItems( gap, gap + 1, tail );
    }
    else
    {
        qv::markFree( gap, idx == 0 ? sizeof( Item ) : 0 );
        moveItems( run->items() + 1, run->items(), idx );
        run->front++;
    }

    run->length--;

    if( run->size >= 16 && run->length <= run->size / 4 )
        spread( run, run->length * 2 + 1, run->length / 2 );
}

/* The index ------------------------------------------------------------------------------------------------------ */

// The counts as plain numbers, to change some or their number, and back. Each of a tree of sums holds those of so many
// before it as the lowest bit of its place, counted from 1, says.
void unfoldCounts( Index *index )
{
    for( int32_t at = index->runs->length; at >= 1; at-- )
        if( int32_t above = at + ( at & -at ); above <= index->runs->length )
            index->counts[above - 1] -= index->counts[at - 1];
}

void foldCounts( Index *index )
{
    for( int32_t at = 1; at <= index->runs->length; at++ )
        if( int32_t above = at + ( at & -at ); above <= index->runs->length )
            index->counts[above - 1] += index->counts[at - 1];
}

void addToCount( Index *index, int32_t run, QV_INT count )
{
    for( int32_t at = run + 1; at <= index->runs->length; at += at & -at )
        index->counts[at - 1] += count;
}

QV_INT itemsBefore( Index *index, int32_t run )
{
    QV_INT sum = 0;

    for( int32_t at = run; at > 0; at -= at & -at )
        sum += index->counts[at - 1];

    return sum;
}

void makeRoomForCounts( Index *index )
{
    if( index->countsSize >= index->runs->size )
        return;

    index->countsSize = index->runs->size;
    index->counts     = static_cast< QV_INT * >( qvMemReallocN( index->counts, index->countsSize, sizeof( QV_INT ) ) );
}

void createIndex( QV_DICT *dict )
{
    Run   *run   = dict->run;
    Index *index = static_cast< Index * >( qvMemAlloc( sizeof( Index ) ) );

    index->runs       = createRun( 4 );
    index->counts     = nullptr;
    index->countsSize = 0;
    makeRoomForCounts( index );

    Item     first   = *run->items();
    uint64_t digest  = qv::newDigest( index->runs, first.key );
    Item    *entry   = openGap( index->runs, 0 );
    entry->key       = first.key;
    entry->run       = run;
    entry->digest    = digest;
    index->counts[0] = run->length;

    dict->index    = index;
    dict->hasIndex = 1;
}

void freeIndex( Index *index )
{
    freeRun( index->runs );
    qvMemFree( index->counts );
    qvMemFree( index );
}

// The first key of a run is another one. The old one must still be there: it has what all keys of the index share.
void firstHasChanged( Index *index, int32_t run )
{
    Item    *entry  = index->runs->items() + run;
    QV_OBJ  *key    = entry->run->items()->key;
    uint64_t digest = qv::newDigest( index->runs, key );

    entry->key    = key;
    entry->digest = digest;
}

// Enters a run while the counts are plain numbers.
void enterRun( Index *index, int32_t at, Run *run )
{
    QV_OBJ  *key    = run->items()->key;
    uint64_t digest = qv::newDigest( index->runs, key );
    Item    *entry  = openGap( index->runs, at );
    entry->key      = key;
    entry->run      = run;
    entry->digest   = digest;

    makeRoomForCounts( index );
    qvMemMoveN( index->counts + at + 1, index->counts + at, index->runs->length - 1 - at, sizeof( QV_INT ) );
    index->counts[at] = run->length;
}

void dropRun( Index *index, int32_t at )
{
    freeRun( index->runs->items()[at].run );
    closeGap( index->runs, at );
    qvMemMoveN( index->counts + at, index->counts + at + 1, index->runs->length - at, sizeof( QV_INT ) );
}

// What is one run again needs no index.
void dropIndexOfOne( QV_DICT *dict )
{
    Index *index = dict->index;

    if( index->runs->length > 1 )
        return;

    Run *run = index->runs->items()->run;
    freeIndex( index );
    dict->run      = run;
    dict->hasIndex = 0;
}

// Divides a run. One part keeps the block, the right one if `keepsRight`; the other gets a block of `size`, with the
// free places at the end that is not the middle.
void splitRun( Index *index, int32_t at, int32_t leftLength, bool keepsRight, int32_t size )
{
    Run    *kept   = index->runs->items()[at].run;
    int32_t count  = keepsRight ? leftLength : kept->length - leftLength;
    Item   *items  = kept->items() + ( keepsRight ? 0 : leftLength );
    Run    *other  = createRun( size );
    other->digests = kept->digests;
    other->prefix  = kept->prefix;
    other->front   = keepsRight ? size - count : 0;
    other->length  = count;
    putItems( other->items(), items, count );
    qv::markFree( items, bytes( count ) );
    kept->length -= count;

    if( keepsRight )
        kept->front += count;

    Run *left  = keepsRight ? other : kept;
    Run *right = keepsRight ? kept : other;
    qv::sharpenDigests( left );
    qv::sharpenDigests( right );

    unfoldCounts( index );
    index->runs->items()[at].run = left;
    index->counts[at]            = left->length;
    enterRun( index, at + 1, right );
    foldCounts( index );

    // A key of another sort may have been there.
    if( index->runs->digests == qv::NO_DIGESTS )
        qv::sharpenDigests( index->runs );
}

// Joins a run with the next one, and divides them in the middle if they are too many for one.
void joinRuns( QV_DICT *dict, int32_t at )
{
    Index  *index = dict->index;
    Run   *&left  = index->runs->items()[at].run;
    Run    *right = index->runs->items()[at + 1].run;
    int32_t total = left->length + right->length;

    if( back( left ) < right->length )
        spread( left, std::max( total, left->size ), 0 );

    putItems( left->items() + left->length, right->items(), right->length );
    left->length = total;
    qv::mixDigests( left, right->digests, right->prefix );

    unfoldCounts( index );
    dropRun( index, at + 1 );
    index->counts[at] = total;
    foldCounts( index );

    if( total > JOINED )
    {
        splitRun( index, at, total / 2, false, total - total / 2 );
        Run *&half = index->runs->items()[at].run;

        if( half->size > FULL )
            spread( half, FULL, 0 );
    }

    dropIndexOfOne( dict );
}

// After an item has been taken out of a run.
void tidyRun( QV_DICT *dict, int32_t at )
{
    Index  *index = dict->index;
    Run    *run   = index->runs->items()[at].run;
    int32_t last  = index->runs->length - 1;

    if( run->length == 0 )
    {
        unfoldCounts( index );
        dropRun( index, at );
        foldCounts( index );
        dropIndexOfOne( dict );
    }
    else if( run->length < FEW )
    {
        int32_t left  = at > 0 ? at - 1 : 0;
        int32_t total = index->runs->items()[left].run->length + index->runs->items()[left + 1].run->length;

        if( total <= JOINED || ( at > 0 && at < last ) )
            joinRuns( dict, left );
    }
}

// Divides a full run, to which an item is to go, and gives the place that it has then; the run there may be full too. A
// run under the index and at an end of the Dict, to which the item goes there, stays nearly full, as more may follow.
Place placeAfterSplit( QV_DICT *dict, const Place &place )
{
    if( !dict->hasIndex )
    {
        createIndex( dict );
        bool isRight = place.idx > ONLY / 2;
        splitRun( dict->index, 0, ONLY / 2, isRight, ONLY / 2 );

        return { isRight, place.idx - ( isRight ? ONLY / 2 : 0 ) };
    }

    Index *index = dict->index;

    if( place.idx == FULL && place.run == index->runs->length - 1 )
    {
        splitRun( index, place.run, FULL - AT_END, false, FULL );
        return { place.run + 1, AT_END };
    }

    if( place.idx == 0 && place.run == 0 )
    {
        splitRun( index, 0, AT_END, true, FULL );
        return { 0, 0 };
    }

    // The part to which the item goes keeps the block, and so its free places.
    bool isRight = place.idx > FULL / 2;
    splitRun( index, place.run, FULL / 2, isRight, FULL / 2 );

    return { place.run + isRight, place.idx - ( isRight ? FULL / 2 : 0 ) };
}
} // namespace

/* Places --------------------------------------------------------------------------------------------------------- */

qv::DictPlace qv::dictPlaceByIndex( QV_DICT *dict, QV_INT idx )
{
    if( idx == dict->length )
    {
        Run *runs = dict->index->runs;
        return { runs->length - 1, runs->items()[runs->length - 1].run->length };
    }

    int32_t run = dictRunAt( dict->index, &idx );
    return { run, static_cast< int32_t >( idx ) };
}

QV_INT qv::dictIndex( QV_DICT *dict, const DictPlace &place )
{
    return dict->hasIndex ? itemsBefore( dict->index, place.run ) + place.idx : place.idx;
}

/* Changes -------------------------------------------------------------------------------------------------------- */

// The references come in registers: an Item that was just written to the stack field by field and is read from there as
// a vector makes the processor wait.
void qv::makeDictRun( QV_DICT *dict, QV_INT count )
{
    dict->run = createRun( static_cast< int32_t >( std::min< QV_INT >( count, FULL ) ) );
}

void qv::enterItem( QV_DICT *dict, const DictPlace &place, QV_OBJ *key, QV_OBJ *value )
{
    if( !dict->hasIndex && !dict->run )
        makeDictRun( dict, 1 );

    Run *&run = dictRun( dict, place.run );

    if( run->length == ( dict->hasIndex ? FULL : ONLY ) )
    {
        enterItem( dict, placeAfterSplit( dict, place ), key, value );
        return;
    }

    uint64_t digest = place.hasDigest ? place.digest : newDigest( run, key );
    Item    *gap    = openGap( run, place.idx );
    gap->key        = key;
    gap->val        = value;
    gap->digest     = digest;
    dict->length++;

    if( dict->hasIndex )
    {
        addToCount( dict->index, place.run, 1 );

        if( place.idx == 0 )
            firstHasChanged( dict->index, place.run );
    }

    QV_ASSERT( isSoundDict( dict, place ) );
}

QV___DICT_ITEM qv::takeItem( QV_DICT *dict, const DictPlace &place )
{
    Run *&run = dictRun( dict, place.run );
    Item  old = run->items()[place.idx];
    closeGap( run, place.idx );
    dict->length--;

    if( dict->hasIndex )
    {
        addToCount( dict->index, place.run, -1 );

        if( place.idx == 0 && run->length > 0 )
            firstHasChanged( dict->index, place.run );

        tidyRun( dict, place.run );
    }

    QV_ASSERT( isSoundDict( dict, place ) );
    return old;
}

QV___DICT_ITEM qv::replaceItem( QV_DICT *dict, const DictPlace &place, QV_OBJ *key, QV_OBJ *value )
{
    Item &item = dictItem( dict, place );
    Item  old  = item;
    item.key   = key;
    item.val   = value;

    if( dict->hasIndex && place.idx == 0 )
        dict->index->runs->items()[place.run].key = key;

    QV_ASSERT( isSoundDict( dict, place ) );
    return old;
}

/* Whole Dicts ---------------------------------------------------------------------------------------------------- */

namespace
{
// Room for some more: who copies is about to change.
Run *copyRun( Run *run )
{
    Run *copy     = createRun( std::min( grownSize( run->length ), run->length + run->length / 8 + 1 ) );
    copy->digests = run->digests;
    copy->prefix  = run->prefix;
    copy->length  = run->length;
    putItems( copy->items(), run->items(), run->length );

    return copy;
}

Run *copyWithReferences( Run *run )
{
    Run *copy = copyRun( run );

    for( Item *item = copy->items(); item != copy->items() + copy->length; item++ )
    {
        qv::retain( item->key );
        qv::retain( item->val );
    }

    return copy;
}
} // namespace

void qv::copyItems( QV_DICT *dict, QV_DICT *src )
{
    dict->length = src->length;

    if( !src->hasIndex )
    {
        dict->run = copyWithReferences( src->run );
        return;
    }

    Index *index      = static_cast< Index * >( qvMemAlloc( sizeof( Index ) ) );
    index->runs       = copyRun( src->index->runs );
    index->counts     = nullptr;
    index->countsSize = 0;
    makeRoomForCounts( index );
    qvMemCopyN( index->counts, src->index->counts, index->runs->length, sizeof( QV_INT ) );

    for( Item *entry = index->runs->items(); entry != index->runs->items() + index->runs->length; entry++ )
        entry->run = copyWithReferences( entry->run );

    dict->index    = index;
    dict->hasIndex = 1;
}

void qv::freeRuns( QV_DICT *dict )
{
    if( !dict->hasIndex )
    {
        if( dict->run )
            freeRun( dict->run );
    }
    else
    {
        Run *runs = dict->index->runs;

        for( int32_t i = 0; i < runs->length; i++ )
            freeRun( runs->items()[i].run );

        freeIndex( dict->index );
    }

    dict->run      = nullptr;
    dict->hasIndex = 0;
}

void qv::emptyRuns( QV_DICT *dict )
{
    if( dict->hasIndex || !dict->run )
    {
        freeRuns( dict );
        return;
    }

    Run *run    = dict->run;
    run->front  = 0;
    run->length = 0;
    qv::markFree( run->items(), bytes( run->size ) );
}

qv::DictBuilder::DictBuilder( QV_INT count ) : count_( count )
{
    QV_INT runs = count <= ONLY ? 1 : ( count - 1 ) / JOINED + 1;
    runLength_  = static_cast< int32_t >( ( count - 1 ) / runs + 1 );

    if( runs > 1 )
        runs_ = createRun( static_cast< int32_t >( runs ) );
}

// The next run. Its keys share what those of the source share, as long as they come from there.
void qv::DictBuilder::open()
{
    run_          = createRun( static_cast< int32_t >( std::min< QV_INT >( runLength_, count_ ) ) );
    run_->digests = source_->digests;
    run_->prefix  = source_->prefix;
}

void qv::DictBuilder::append( const QV___DICT_ITEM &item, QV___DICT_RUN *source )
{
    bool isFirst = !run_ || run_->length == runLength_;
    bool isNext  = source == source_ && !isFirst;
    source_      = source;

    if( isFirst )
        open();

    // The item before it comes from the same run and has its digest from there: then this one's is good here too.
    bool     isKnown = isFirst || ( isNext && run_->digests == source->digests && run_->prefix == source->prefix );
    uint64_t digest  = isKnown ? item.digest : newDigest( run_, item.key );
    Item    *place   = openGap( run_, run_->length );
    place->key       = item.key;
    place->val       = item.val;
    place->digest    = digest;
    count_--;

    if( isFirst && runs_ )
    {
        uint64_t first = newDigest( runs_, item.key );
        Item    *entry = openGap( runs_, runs_->length );
        entry->key     = item.key;
        entry->run     = run_;
        entry->digest  = first;
    }
}

void qv::DictBuilder::putInto( QV_DICT *dict )
{
    QV_ASSERT( count_ == 0 );
    freeRuns( dict );

    if( !runs_ )
    {
        dict->run    = run_;
        dict->length = run_->length;
        return;
    }

    Index *index      = static_cast< Index * >( qvMemAlloc( sizeof( Index ) ) );
    index->runs       = runs_;
    index->counts     = nullptr;
    index->countsSize = 0;
    makeRoomForCounts( index );
    dict->index    = index;
    dict->hasIndex = 1;
    dict->length   = 0;

    for( int32_t i = 0; i < runs_->length; i++ )
    {
        index->counts[i] = runs_->items()[i].run->length;
        dict->length += index->counts[i];
    }

    foldCounts( index );
}
