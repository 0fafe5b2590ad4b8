#ifndef QV_DICT_PRIVATE_H
#define QV_DICT_PRIVATE_H

#include "qv/runtime/qv_family.h"

#include <bit>

struct QV___DICT_RUN;

/** What is known of a key without a look at it: numbers that order as the key does among the others of its run, see
    there, the second one where the first ones are equal. */
struct QV___DICT_DIGEST
{
    uint64_t number;
    uint64_t rest; /**< qv::UNTOLD_REST if the numbers do not tell the whole key */

    bool operator==( const QV___DICT_DIGEST & ) const = default;
};

/** One entry. Both references are the Dict's own, neither is null. In an index of runs: a run with its first key. */
struct QV___DICT_ITEM
{
    QV_OBJ *key;
    union
    {
        QV_OBJ        *val;
        QV___DICT_RUN *run;
    };
    QV___DICT_DIGEST digest;
};

/** A block of items in ascending order of their keys, with free places at both ends.

    A search would wait for the memory of each key that it looks at. So where all keys of a run are Strings or all are
    boxed integers, each item has numbers with it that order as its key does: the whole integer, or the first characters
    after a prefix that all keys of the run share, eight in each number as a rule. Only Strings that begin alike and are
    longer than that are compared themselves. */
struct QV___DICT_RUN
{
    uint32_t digests : 2; /**< what the items have for digests: none, those of Strings, those of boxed integers */
    uint32_t prefix : 30; /**< characters of the prefix; 0 unless keys are Strings */
    int32_t  size;        /**< places that there is memory for */
    int32_t  front;       /**< free places before the items */
    int32_t  length;      /**< items */

    QV___DICT_ITEM *items()
    {
        return reinterpret_cast< QV___DICT_ITEM * >( this + 1 ) + front;
    }
};

/** The runs of a large Dict, at least two. */
struct QV___DICT_INDEX
{
    QV___DICT_RUN *runs;       /**< an item for each run: its first key, which stays the run's, and the run */
    QV_INT        *counts;     /**< the lengths of the runs, summed as a binary indexed tree */
    int32_t        countsSize; /**< numbers that there is memory for */
};

/** `alloc` is what the Dict accounts for; it changes by constant numbers of items. What is really allocated follows the
    entries. Up to some hundreds of them are one run; more are runs under an index, so that a change moves a part of one
    run only, whatever the length.

    Others may read the items and replace values; keys go in and out through the functions alone. */
struct QV_DICT : QV_OBJ
{
    QV_INT   alloc : 63;   /**< items that the accounted block can hold */
    uint64_t hasIndex : 1; /**< which of the two below */
    QV_INT   length;       /**< items */
    union
    {
        QV___DICT_RUN   *run; /**< may be null if there are no items */
        QV___DICT_INDEX *index;
    };
};

/** The one empty Dict of qvDictCreate(). */
extern "C" QV_DICT *qv___DictEmpty;

/** Deletes all entries and keeps a block for the next ones; a shared Dict becomes the empty one. */
QV_API void qv___DictClear( QV_DICT **dict );

namespace qv
{
/** The run with the item at an index of the Dict, which becomes the index in the run. */
inline int32_t dictRunAt( QV___DICT_INDEX *index, QV_INT *idx )
{
    uint32_t runs = static_cast< uint32_t >( index->runs->length );
    uint32_t at   = 0;

    for( uint32_t step = std::bit_floor( runs ); step > 0; step /= 2 )
    {
        if( at + step <= runs && index->counts[at + step - 1] <= *idx )
        {
            at += step;
            *idx -= index->counts[at - 1];
        }
    }

    return static_cast< int32_t >( at );
}

/** The entry at an index that is in the Dict; valid until the Dict is changed. Costs a walk down the index: for all
    entries in their order there is dictItems(). */
inline QV___DICT_ITEM &dictItem( QV_DICT *dict, QV_INT idx )
{
    if( !dict->hasIndex )
        return dict->run->items()[idx];

    QV___DICT_ITEM &run = dict->index->runs->items()[dictRunAt( dict->index, &idx )];
    return run.run->items()[idx];
}

/** The last entry of a Dict that has some, without a walk. */
inline QV___DICT_ITEM &lastDictItem( QV_DICT *dict )
{
    QV___DICT_RUN *runs = dict->hasIndex ? dict->index->runs : nullptr;
    QV___DICT_RUN *last = runs ? runs->items()[runs->length - 1].run : dict->run;

    return last->items()[last->length - 1];
}

/** Walks the entries in their order, as long as the Dict is not changed.

        for( QV___DICT_ITEM &item : qv::dictItems( dict ) )
            use( item.key, item.val ); */
class DictIterator
{
public:
    DictIterator() = default;

    DictIterator( QV_DICT *dict, QV_INT from )
    {
        if( from >= dict->length )
            return;

        if( !dict->hasIndex )
        {
            enter( dict->run, from );
            return;
        }

        QV___DICT_RUN *runs = dict->index->runs;
        next_               = runs->items() + dictRunAt( dict->index, &from );
        end_                = runs->items() + runs->length;
        enter( next_++->run, from );
    }

    /** The run in which the entry is. */
    QV___DICT_RUN *run() const
    {
        return run_;
    }

    QV___DICT_ITEM &operator*() const
    {
        return *item_;
    }

    QV___DICT_ITEM *operator->() const
    {
        return item_;
    }

    DictIterator &operator++()
    {
        if( item_ != last_ )
            item_++;
        else if( next_ != end_ )
            enter( next_++->run, 0 );
        else
            item_ = nullptr;

        return *this;
    }

    /** Walks end when both are null. */
    bool operator!=( const DictIterator &other ) const
    {
        return item_ != other.item_;
    }

    explicit operator bool() const
    {
        return item_ != nullptr;
    }

private:
    void enter( QV___DICT_RUN *run, QV_INT idx )
    {
        run_  = run;
        item_ = run->items() + idx;
        last_ = run->items() + run->length - 1;
    }

    QV___DICT_ITEM *item_ = nullptr; // null after the last one
    QV___DICT_ITEM *last_ = nullptr; // of the run
    QV___DICT_RUN  *run_  = nullptr;
    QV___DICT_ITEM *next_ = nullptr; // the next run in the index
    QV___DICT_ITEM *end_  = nullptr; // of the index
};

class ObjBatch;

struct DictItems
{
    QV_DICT *dict;
    QV_INT   from;

    DictIterator begin() const
    {
        return DictIterator( dict, from );
    }

    DictIterator end() const
    {
        return DictIterator();
    }
};

/** The entries from an index on, which may be the length. */
inline DictItems dictItems( QV_DICT *dict, QV_INT from = 0 )
{
    return { dict, from };
}

/** A new Dict without entries that has memory for so many, within reason: for those that are going to be entered; in a
    batch where there is one. */
QV_DICT *createDictWithRoom( QV_INT count, ObjBatch *batch = nullptr );

/** A new Dict with the keys of another one, each with itself as its value. */
QV_DICT *createDictOfKeys( QV_DICT *src );

/** Where a key stands or, with `*found` false, the item before which it would. */
QV_INT searchDict( QV_DICT *dict, QV_OBJ *key, bool *found );

/** Enters a new key before the item where it belongs. Takes over both references. */
void insertIntoDict( QV_DICT **dict, QV_INT idx, QV_OBJ *key, QV_OBJ *value );

/* Filling --------------------------------------------------------------------------------------------------------

   A Dict with Strings for keys that gets many items in any order: they are appended, without a search, and put in their
   order once. In between nothing else may be done with the Dict, which only the caller holds. */

/** Appends an item. Takes over both references. True if others have been given up: of some with equal keys, see
    orderDict(). */
bool appendToDict( QV_DICT *dict, QV_STRING *key, QV_OBJ *value );

/** Puts the items in order. Of items with equal keys the first key and the last value stay. */
void orderDict( QV_DICT *dict );
} // namespace qv

#endif
