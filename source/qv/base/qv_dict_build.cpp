// All items of a Dict at once: copied, made anew, given up, and put in order.

#include "qv/base/qv_dict_run_private.h"
#include "qv/base/qv_dict_tree_private.h"
#include "qv/base/qv_digest_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_order_private.h"

#include <algorithm>
#include <utility>

using namespace qv::dict;

/* Whole Dicts ---------------------------------------------------------------------------------------------------- */

namespace
{
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

void qv::makeDictRun( QV_DICT *dict, QV_INT count )
{
    dict->run = createRun( static_cast< int32_t >( std::min< QV_INT >( count, FULL_ONLY_DICT_RUN ) ) );
}

void qv::copyItems( QV_DICT *dict, QV_DICT *src )
{
    dict->length = src->length;

    if( !src->hasIndex )
    {
        dict->run = copyWithReferences( src->run );
        return;
    }

    Index *index = createDictIndex( copyRun( src->index->runs ) );
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

        freeDictIndex( dict->index );
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

    emptyRun( dict->run );
}

qv::DictBuilder::DictBuilder( QV_INT count ) : count_( count )
{
    QV_INT runs = count <= FULL_ONLY_DICT_RUN ? 1 : ( count - 1 ) / JOINED_DICT_RUN + 1;
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
    bool isKnown = isFirst || ( isNext && run_->digests == source->digests && run_->prefix == source->prefix );
    QV___DICT_DIGEST digest = isKnown ? item.digest : newDigest( run_, item.key );
    Item            *place  = openRunGap( run_, run_->length );
    place->key              = item.key;
    place->val              = item.val;
    place->digest           = digest;
    count_--;

    if( isFirst && runs_ )
    {
        QV___DICT_DIGEST first = newDigest( runs_, item.key );
        Item            *entry = openRunGap( runs_, runs_->length );
        entry->key             = item.key;
        entry->run             = run_;
        entry->digest          = first;
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

    Index *index   = createDictIndex( runs_ );
    dict->index    = index;
    dict->hasIndex = 1;
    dict->length   = 0;

    for( int32_t i = 0; i < runs_->length; i++ )
    {
        index->counts[i] = runs_->items()[i].run->length;
        dict->length += index->counts[i];
    }

    foldDictCounts( index );
}

/* Filling -------------------------------------------------------------------------------------------------------- */

namespace
{
// Runs of that many places and more are put in order before they grow, so that equal keys do not pile up.
const int32_t ORDERED = 1024;

// The order of two items with String keys and digests of one run.
QV_INT orderItems( const Item &a, const Item &b )
{
    if( a.digest.number != b.digest.number )
        return a.digest.number < b.digest.number ? -1 : 1;

    if( a.digest.rest != qv::UNTOLD_REST && b.digest.rest != qv::UNTOLD_REST )
        return qv::order( a.digest.rest, b.digest.rest );

    return a.key == b.key ? 0
                          : qvStringCompare( static_cast< QV_STRING * >( a.key ), static_cast< QV_STRING * >( b.key ) );
}

// How many items from the first on ascend.
int32_t ascending( Run *run )
{
    const Item *items = run->items();
    int32_t     count = std::min( run->length, 1 );

    while( count < run->length && orderItems( items[count - 1], items[count] ) < 0 )
        count++;

    return count;
}

// Puts items in order, of which those with equal keys stay as they follow each other.
void sortRun( Run *run )
{
    struct Entry
    {
        Item    item;
        int32_t at;
    };

    Entry *entries = static_cast< Entry * >( qvMemAllocN( run->length, sizeof( Entry ) ) );

    for( int32_t i = 0; i < run->length; i++ )
        entries[i] = { run->items()[i], i };

    std::sort(
        entries, entries + run->length,
        []( const Entry &a, const Entry &b )
        {
            QV_INT order = orderItems( a.item, b.item );
            return order != 0 ? order < 0 : a.at < b.at;
        } );

    for( int32_t i = 0; i < run->length; i++ )
        run->items()[i] = entries[i].item;

    qvMemFree( entries );
}

// Of items in order whose keys are equal, leaves the first key and the last value. True if there were any.
bool joinEqual( Run *run )
{
    Item   *items = run->items();
    int32_t last  = 0;

    for( int32_t i = 1; i < run->length; i++ )
    {
        if( orderItems( items[last], items[i] ) < 0 )
        {
            items[++last] = items[i];
            continue;
        }

        std::swap( items[last].val, items[i].val );
        qv::releaseItem( items[i] );
    }

    int32_t gone = run->length - 1 - last;
    dropRunBack( run, gone );

    return gone > 0;
}

bool orderRun( Run *run )
{
    if( ascending( run ) == run->length )
        return false;

    sortRun( run );
    return joinEqual( run );
}
} // namespace

bool qv::appendToDict( QV_DICT *dict, QV_STRING *key, QV_OBJ *value )
{
    QV_ASSERT( !dict->hasIndex && !isShared( dict ) );

    if( !dict->run )
        makeDictRun( dict, 4 );

    bool gaveUp = backPlaces( dict->run ) == 0 && dict->run->length >= ORDERED && orderRun( dict->run );

    QV___DICT_DIGEST digest = newDigest( dict->run, key );
    Item            *place  = openRunGap( dict->run, dict->run->length );
    place->key              = key;
    place->val              = value;
    place->digest           = digest;

    return gaveUp;
}

void qv::orderDict( QV_DICT *dict )
{
    Run *run = dict->run;

    if( !run || run->length == 0 )
        return;

    orderRun( run );
    accountForMore( dict, run->length );

    if( run->length <= FULL_ONLY_DICT_RUN )
    {
        dict->length = run->length;
    }
    else
    {
        DictBuilder items( run->length );

        for( const Item *item = run->items(); item != run->items() + run->length; item++ )
            items.append( *item, run );

        items.putInto( dict );
    }

    QV_ASSERT( isSoundDict( dict ) );
}
