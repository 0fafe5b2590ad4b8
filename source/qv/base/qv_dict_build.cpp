// All items of a Dict at once: copied, made anew, and given up.

#include "qv/base/qv_dict_run_private.h"
#include "qv/base/qv_dict_tree_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

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
    dict->run = createRun( static_cast< int32_t >( std::min< QV_INT >( count, FULL_DICT_RUN ) ) );
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
    bool     isKnown = isFirst || ( isNext && run_->digests == source->digests && run_->prefix == source->prefix );
    uint64_t digest  = isKnown ? item.digest : newDigest( run_, item.key );
    Item    *place   = openRunGap( run_, run_->length );
    place->key       = item.key;
    place->val       = item.val;
    place->digest    = digest;
    count_--;

    if( isFirst && runs_ )
    {
        uint64_t first = newDigest( runs_, item.key );
        Item    *entry = openRunGap( runs_, runs_->length );
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
