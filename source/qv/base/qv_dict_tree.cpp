#include "qv/base/qv_dict_run_private.h"
#include "qv/base/qv_dict_tree_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

using namespace qv::dict;

namespace
{
using Place = qv::DictPlace;

const int32_t FULL = qv::FULL_DICT_RUN;
const int32_t ONLY = qv::FULL_ONLY_DICT_RUN;
const int32_t FEW  = qv::FEW_IN_DICT_RUN;

// Items that a new run at an end of the Dict gets from the full one before it. So many must go and come again until it
// is made again: that costs a walk through all counts.
const int32_t AT_END = 32;
// The counts as plain numbers, so that some or their number can be changed before they are folded again.
void unfoldCounts( Index *index )
{
    for( int32_t at = index->runs->length; at >= 1; at-- )
        if( int32_t above = at + ( at & -at ); above <= index->runs->length )
            index->counts[above - 1] -= index->counts[at - 1];
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

// Enters what an index has of a run: its first key, with the digest for the index.
void enterRunEntry( Run *&runs, int32_t at, Run *run )
{
    QV_OBJ          *key    = run->items()->key;
    QV___DICT_DIGEST digest = qv::newDigest( runs, key );
    Item            *entry  = openRunGap( runs, at );
    entry->key              = key;
    entry->run              = run;
    entry->digest           = digest;
}

// Puts an index over the one run of a Dict.
void addIndex( QV_DICT *dict )
{
    Run   *run       = dict->run;
    Index *index     = qv::createDictIndex( createRun( 4 ) );
    dict->index      = index;
    dict->hasIndex   = 1;
    index->counts[0] = run->length;
    enterRunEntry( index->runs, 0, run );
}

// The first key of a run is another one. The old one must still be there: it has what all keys of the index share.
void firstHasChanged( Index *index, int32_t run )
{
    Item            *entry  = index->runs->items() + run;
    QV_OBJ          *key    = entry->run->items()->key;
    QV___DICT_DIGEST digest = qv::newDigest( index->runs, key );

    entry->key    = key;
    entry->digest = digest;
}

// Enters a run while the counts are plain numbers.
void enterRun( Index *index, int32_t at, Run *run )
{
    enterRunEntry( index->runs, at, run );
    makeRoomForCounts( index );
    qvMemMoveN( index->counts + at + 1, index->counts + at, index->runs->length - 1 - at, sizeof( QV_INT ) );
    index->counts[at] = run->length;
}

void dropRun( Index *index, int32_t at )
{
    freeRun( index->runs->items()[at].run );
    closeRunGap( index->runs, at );
    qvMemMoveN( index->counts + at, index->counts + at + 1, index->runs->length - at, sizeof( QV_INT ) );
}

// What is one run again needs no index.
void dropIndexOfOne( QV_DICT *dict )
{
    Index *index = dict->index;

    if( index->runs->length > 1 )
        return;

    Run *run = index->runs->items()->run;
    qv::freeDictIndex( index );
    dict->run      = run;
    dict->hasIndex = 0;
}

// Digests for the index where there are none, after a key has gone: one of another sort may have been there.
void sharpenIndex( Index *index )
{
    if( index->runs->digests == qv::NO_DIGESTS )
        qv::sharpenDigests( index->runs );
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
    putItems( openRunGap( other, 0, count ), items, count );

    if( keepsRight )
        dropRunFront( kept, count );
    else
        dropRunBack( kept, count );

    Run *left  = keepsRight ? other : kept;
    Run *right = keepsRight ? kept : other;
    qv::sharpenDigests( left );
    qv::sharpenDigests( right );

    unfoldCounts( index );
    index->runs->items()[at].run = left;
    index->counts[at]            = left->length;
    enterRun( index, at + 1, right );
    qv::foldDictCounts( index );
    sharpenIndex( index );
}

// Moves items to a run that has few from the one before it, so that both have as many. The keys that change places live
// on: until the index has another first key of the run, it has one of these.
void evenOut( Index *index, int32_t at )
{
    Run   *&left  = index->runs->items()[at - 1].run;
    Run   *&right = index->runs->items()[at].run;
    int32_t count = left->length - ( left->length + right->length ) / 2;
    QV_ASSERT( count > 0 );

    putItems( openRunGap( right, 0, count ), left->items() + left->length - count, count );
    dropRunBack( left, count );
    qv::mixDigests( right, left->digests, left->prefix );
    qv::sharpenDigests( left );
    qv::sharpenDigests( right );
    addToCount( index, at - 1, -count );
    addToCount( index, at, count );
    firstHasChanged( index, at );
    sharpenIndex( index );
}

// Joins a run with the next one.
void joinRuns( QV_DICT *dict, int32_t at )
{
    Index *index = dict->index;
    Run  *&left  = index->runs->items()[at].run;
    Run   *right = index->runs->items()[at + 1].run;

    putItems( openRunGap( left, left->length, right->length ), right->items(), right->length );
    qv::mixDigests( left, right->digests, right->prefix );

    unfoldCounts( index );
    index->counts[at] = left->length;
    dropRun( index, at + 1 );
    qv::foldDictCounts( index );
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
        qv::foldDictCounts( index );
        dropIndexOfOne( dict );
    }
    else if( run->length < FEW )
    {
        int32_t left  = at > 0 ? at - 1 : 0;
        int32_t total = index->runs->items()[left].run->length + index->runs->items()[left + 1].run->length;

        if( total <= qv::JOINED_DICT_RUN )
            joinRuns( dict, left );
        else if( at > 0 && at < last )
            evenOut( index, at );
    }
}

// True if a run is to be divided before an item is entered.
bool isTooLong( QV_DICT *dict, const Place &place )
{
    int32_t length = qv::dictRun( dict, place.run )->length;
    int32_t runs   = dict->hasIndex ? dict->index->runs->length : 1;

    return length == ( dict->hasIndex ? FULL : ONLY )
           || std::min( place.idx, length - place.idx ) > qv::MOVED_DICT_ITEMS + runs / qv::RUNS_FOR_MOVED_ITEM;
}

// Divides a run, to which an item is to go, and returns the place that it has then; the run there may be too long too.
// A full run under the index and at an end of the Dict, to which the item goes there, stays nearly full, as more may
// follow.
Place placeAfterSplit( QV_DICT *dict, const Place &place )
{
    if( !dict->hasIndex )
        addIndex( dict );

    Index  *index  = dict->index;
    int32_t length = qv::dictRun( dict, place.run )->length;

    if( length == FULL && place.idx == length && place.run == index->runs->length - 1 )
    {
        splitRun( index, place.run, FULL - AT_END, false, FULL );
        return { place.run + 1, AT_END };
    }

    if( length == FULL && place.idx == 0 && place.run == 0 )
    {
        splitRun( index, 0, AT_END, true, FULL );
        return { 0, 0 };
    }

    // The part to which the item goes keeps the block, and so its free places.
    int32_t half    = length / 2;
    bool    isRight = place.idx > half;
    splitRun( index, place.run, half, isRight, length - half );

    return { place.run + isRight, place.idx - ( isRight ? half : 0 ) };
}
} // namespace

/* The index ------------------------------------------------------------------------------------------------------ */

QV___DICT_INDEX *qv::createDictIndex( QV___DICT_RUN *runs )
{
    Index *index      = static_cast< Index * >( qvMemAlloc( sizeof( Index ) ) );
    index->runs       = runs;
    index->counts     = nullptr;
    index->countsSize = 0;
    makeRoomForCounts( index );

    return index;
}

void qv::freeDictIndex( QV___DICT_INDEX *index )
{
    freeRun( index->runs );
    qvMemFree( index->counts );
    qvMemFree( index );
}

void qv::foldDictCounts( QV___DICT_INDEX *index )
{
    for( int32_t at = 1; at <= index->runs->length; at++ )
        if( int32_t above = at + ( at & -at ); above <= index->runs->length )
            index->counts[above - 1] += index->counts[at - 1];
}

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
void qv::enterItem( QV_DICT *dict, const DictPlace &place, QV_OBJ *key, QV_OBJ *value )
{
    if( !dict->hasIndex && !dict->run )
        makeDictRun( dict, 1 );

    Run *&run = dictRun( dict, place.run );

    if( isTooLong( dict, place ) )
    {
        enterItem( dict, placeAfterSplit( dict, place ), key, value );
        return;
    }

    QV___DICT_DIGEST digest = place.hasDigest ? place.digest : newDigest( run, key );
    Item            *gap    = openRunGap( run, place.idx );
    gap->key                = key;
    gap->val                = value;
    gap->digest             = digest;
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
    closeRunGap( run, place.idx );
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
