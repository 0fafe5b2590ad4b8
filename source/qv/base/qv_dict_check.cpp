// What must be true of a Dict after each change, for builds with assertions.

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_dict_tree_private.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_obj.h"
#include "qv/sys/qv_assert_private.h"

#include <algorithm>

namespace
{
using Item = QV___DICT_ITEM;
using Run  = QV___DICT_RUN;

// Lengths up to which all items are looked at after each change; beyond, after changes to lengths that are multiples.
const QV_INT SMALL      = 48;
const QV_INT RUN_EVERY  = 64;
const QV_INT DICT_EVERY = 2048;

// Only what the library orders itself is compared: a compare function of another family may count its calls.
bool ascends( QV_OBJ *key, QV_OBJ *next )
{
    QV_SORT *sort = qvObjSort( key );

    if( sort == qvObjSort( next ) && sort != qvStringSort() && sort != qvBoxedIntSort() )
        return key != next;

    return qvObjCompare( key, next ) < 0;
}

bool isSoundItem( Run *run, int32_t idx, bool hasValues )
{
    Item *items = run->items();
    Item &item  = items[idx];

    // Where there are no digests, the numbers are what is left of earlier ones.
    if( !item.key || ( hasValues && !item.val )
        || ( run->digests != qv::NO_DIGESTS && item.digest != qv::digestOf( run, item.key ) ) )
        return false;

    return idx == 0
           || ( ascends( items[idx - 1].key, item.key )
                && ( run->digests == qv::NO_DIGESTS || items[idx - 1].digest.number <= item.digest.number ) );
}

bool isSoundRun( Run *run, bool hasValues )
{
    bool isSound = run->length > 0 && run->front >= 0 && run->front + run->length <= run->size;

    for( int32_t i = 0; isSound && i < run->length; i++ )
        isSound = isSoundItem( run, i, hasValues );

    return isSound;
}

bool isSoundIndex( QV_DICT *dict )
{
    Run   *runs    = dict->index->runs;
    QV_INT length  = 0;
    bool   isSound = runs->length > 1 && runs->length <= dict->index->countsSize && isSoundRun( runs, false );

    for( int32_t i = 0; isSound && i < runs->length; i++ )
    {
        Run *run = runs->items()[i].run;
        isSound  = isSoundRun( run, true ) && run->items()->key == runs->items()[i].key
                  && run->length <= qv::FULL_DICT_RUN
                  && ( i == 0 || i == runs->length - 1 || run->length >= qv::FEW_IN_DICT_RUN )
                  && qv::dictIndex( dict, { i, 0 } ) == length
                  && ( i == 0 || ascends( ( qv::DictIterator( dict, length - 1 ) )->key, run->items()->key ) );
        length += run->length;
    }

    return isSound && length == dict->length;
}
} // namespace

bool qv::isSoundDict( QV_DICT *dict )
{
    if( dict->length > dict->alloc || qv___ObjDbgAllocationSize( dict ) != dict->alloc * ACCOUNTED_DICT_ITEM )
        return false;

    if( dict->length == 0 )
        return !dict->hasIndex;

    return dict->hasIndex ? isSoundIndex( dict )
                          : dict->run->length == dict->length && dict->length <= FULL_ONLY_DICT_RUN
                                && isSoundRun( dict->run, true );
}

bool qv::isSoundDict( QV_DICT *dict, const DictPlace &place )
{
    if( dict->length <= SMALL || dict->length % DICT_EVERY == 0 )
        return isSoundDict( dict );

    if( dict->hasIndex && place.run >= dict->index->runs->length )
        return true;

    Run *run = dictRun( dict, place.run );

    if( dict->length % RUN_EVERY == 0 )
        return isSoundRun( run, true );

    bool isSound = true;

    for( int32_t i = std::max( place.idx - 1, 0 ); isSound && i <= std::min( place.idx + 1, run->length - 1 ); i++ )
        isSound = isSoundItem( run, i, true );

    return isSound && ( !dict->hasIndex || dict->index->runs->items()[place.run].key == run->items()->key );
}
