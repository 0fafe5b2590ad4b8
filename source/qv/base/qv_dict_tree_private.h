/** @file
    What the parts of Dict share: the search, and runs of items that are changed under their index.

    Changes of runs account for nothing, and release nothing: a caller that takes items out gets their references. So
    only a search and the end of items call functions of other families. */

#ifndef QV_DICT_TREE_PRIVATE_H
#define QV_DICT_TREE_PRIVATE_H

#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/runtime/qv_ref.h"

/** Items by which the accounted block grows, and how many free ones it may have. */
#define QV_DICT_GROWTH    32
#define QV_DICT_OVERSIZED 64

namespace qv
{
/** What an item counts for in the accounts: its two references. */
const QV_INT ACCOUNTED_DICT_ITEM = 2 * sizeof( QV_OBJ * );

/** Items that a run under an index has at most, and how many are so few that it is joined with a neighbour. Only the
    first and the last run may have fewer: entering and deleting at an end leaves its neighbour alone. */
const int32_t FULL_DICT_RUN   = 512;
const int32_t FEW_IN_DICT_RUN = 32;

/** Items that a Dict without an index has in its one run at most: a look-up there is one search instead of two. */
const int32_t FULL_ONLY_DICT_RUN = 1024;
static_assert( FULL_ONLY_DICT_RUN <= 2 * FULL_DICT_RUN, "halves of it are runs under an index" );

/** Items that make way for a new one at most: a run in which more would have to is divided first. So runs in which keys
    are entered in any order stay short, and those that grow at an end become full. One more for so many runs, because
    dividing one costs the length of the index. */
const int32_t MOVED_DICT_ITEMS    = 64;
const int32_t RUNS_FOR_MOVED_ITEM = 32;

/** Items of a run that is made in one go, or joined, at most. */
const int32_t JOINED_DICT_RUN = 256;

/** Has the memory of an object fetched, for which a walk or a search would wait: those that were made in another order
    than that of their keys lie far apart. */
inline void fetchObject( QV_OBJ *object )
{
    __builtin_prefetch( object );
    __builtin_prefetch( reinterpret_cast< char * >( object ) + 64 );
}

/** Where an item stands, or before which one it would. */
struct DictPlace
{
    int32_t run; /**< index of the run; 0 where there is one only */
    int32_t idx; /**< in the run, up to its length */
    bool    found     = false;
    bool    hasDigest = false; /**< the key's own, good for this run */

    QV___DICT_DIGEST digest = {};
};

inline QV___DICT_RUN *&dictRun( QV_DICT *dict, int32_t run )
{
    return dict->hasIndex ? dict->index->runs->items()[run].run : dict->run;
}

inline QV___DICT_ITEM &dictItem( QV_DICT *dict, const DictPlace &place )
{
    return dictRun( dict, place.run )->items()[place.idx];
}

/** The place of an index of the Dict, up to its length; and the other way round. */
DictPlace dictPlaceByIndex( QV_DICT *dict, QV_INT idx ); /**< for dictPlace(), of a Dict that has an index of runs */
QV_INT    dictIndex( QV_DICT *dict, const DictPlace &place );

inline DictPlace dictPlace( QV_DICT *dict, QV_INT idx )
{
    return dict->hasIndex ? dictPlaceByIndex( dict, idx ) : DictPlace{ 0, static_cast< int32_t >( idx ) };
}

/** Makes the run of a Dict that has none, with room for so many items. */
void makeDictRun( QV_DICT *dict, QV_INT count );

/** Releases what an item holds. */
void releaseItem( const QV___DICT_ITEM &item );

/* Accounts -------------------------------------------------------------------------------------------------------

   What a Dict declares is the size of one array of references, which grows and shrinks by constant numbers of items, as
   entering and deleting one by one would make it. Its runs are larger, by the digests and by room to grow, and there
   may be many of them: so what is declared is a number beside them, which follows the length alone, and no rule of
   their memory. */

void accountForDict( QV_DICT *dict, QV_INT alloc );
void accountForMore( QV_DICT *dict, QV_INT count ); /**< before they are entered */
void accountForLess( QV_DICT *dict );               /**< after some have been taken out */

/* The index ------------------------------------------------------------------------------------------------------

   How many items each run has is kept as a tree of sums: the number at a place, counted from 1, is the sum over as many
   runs up to that one as the lowest bit of the place says. So the items before a run, and one item more in a run, cost
   the logarithm of the number of runs. */

/** A new index over runs, whose numbers are undefined; takes `runs` over. */
QV___DICT_INDEX *createDictIndex( QV___DICT_RUN *runs );
void             freeDictIndex( QV___DICT_INDEX *index ); /**< without a look at the runs */

/** Makes plain numbers of items the tree of sums. */
void foldDictCounts( QV___DICT_INDEX *index );

/* Digests -------------------------------------------------------------------------------------------------------- */

const uint32_t NO_DIGESTS      = 0;
const uint32_t STRING_DIGESTS  = 1;
const uint32_t INTEGER_DIGESTS = 2;

/** The digest of a key that the run has, or of one that has the run's sort and prefix. */
QV___DICT_DIGEST digestOf( QV___DICT_RUN *run, QV_OBJ *key );

/** The digest of a key that goes into the run, after those of the others have been made to suit it. */
QV___DICT_DIGEST newDigest( QV___DICT_RUN *run, QV_OBJ *key );

/** Suits the digests of a run to items that have come from another one, with these digests and this prefix. */
void mixDigests( QV___DICT_RUN *run, uint32_t otherDigests, uint32_t otherPrefix );

/** Makes digests tell more of the keys after some have gone: keys that are left may have one sort, or share more. */
void sharpenDigests( QV___DICT_RUN *run );

/* Search --------------------------------------------------------------------------------------------------------- */

/** Finds a key. Compare functions of other families may use the Dict's own variable: where they run, `*held`, which is
    null before, holds the Dict, so that it stays as it is until the caller is done with the place. */
DictPlace findInDict( QV_DICT *dict, QV_OBJ *key, Ref< QV_DICT > *held );

/** The item of a key, or null. As findInDict(), and faster where digests alone tell. */
const QV___DICT_ITEM *findDictItem( QV_DICT *dict, QV_OBJ *key, Ref< QV_DICT > *held );

/** Finds a key that is not before `from`. The caller holds the Dict. Few comparisons if the place is near. The stored
    keys are the first arguments of these, or the second ones with `keyFirst`. */
DictPlace findInDictFrom( QV_DICT *dict, const DictPlace &from, QV_OBJ *key, bool keyFirst );

/** Finds a key in a Dict that is to be changed then. If a compare function changes the variable, what it has made is
    given up: the call goes on with what it was called with. */
DictPlace findToChange( QV_DICT **dict, QV_OBJ *key );

/** Sets the value of a key. Takes over both references. */
void setInDict( QV_DICT **dict, QV_OBJ *key, QV_OBJ *value );

/** What qvDictUpdateObjKey() does, for a key that may be on the stack: `keep` makes a reference to one that is entered. */
void updateDict(
    QV_DICT **dict, QV_OBJ *key, QV_OBJ *( *keep )( QV_OBJ *key ), QV_DICT_UPDATE_FUNC update, void *data );

/* Changes -------------------------------------------------------------------------------------------------------- */

/** Enters an item. The Dict takes over the references. */
void enterItem( QV_DICT *dict, const DictPlace &place, QV_OBJ *key, QV_OBJ *value );

/** Takes an item out, which the Dict gives up. */
QV___DICT_ITEM takeItem( QV_DICT *dict, const DictPlace &place );

/** Sets key and value of an item to new references and returns the old ones. The new key is equal to the old one. */
QV___DICT_ITEM replaceItem( QV_DICT *dict, const DictPlace &place, QV_OBJ *key, QV_OBJ *value );

/** Copies the items of another Dict to an empty one, with references of their own. Places are the same in both. */
void copyItems( QV_DICT *dict, QV_DICT *src );

/** Frees the runs without a look at the items. */
void freeRuns( QV_DICT *dict );

/** The same, but keeps the block of a single run for the next items. */
void emptyRuns( QV_DICT *dict );

/** Makes all items of a Dict anew, of those that come one after the other in ascending order. */
class DictBuilder
{
public:
    /** `count` is how many will come, at least one. */
    explicit DictBuilder( QV_INT count );

    DictBuilder( const DictBuilder & )            = delete;
    DictBuilder &operator=( const DictBuilder & ) = delete;

    /** Takes over the references of an item, which comes from `source`. */
    void append( const QV___DICT_ITEM &item, QV___DICT_RUN *source );

    /** To be called once, at the end. The Dict's runs until then are freed without a look at their items. */
    void putInto( QV_DICT *dict );

private:
    void open();

    QV_INT         count_;
    int32_t        runLength_;        // of each run, the last may have less
    QV___DICT_RUN *runs_   = nullptr; // the index, if there is to be one
    QV___DICT_RUN *run_    = nullptr; // the last one
    QV___DICT_RUN *source_ = nullptr; // where its last item is from
};

/** Ends the process unless all is well around a place that has been changed; looks at the whole Dict where it is small
    and now and then where it is large. In builds with assertions only. */
bool isSoundDict( QV_DICT *dict, const DictPlace &place );
bool isSoundDict( QV_DICT *dict );
} // namespace qv

#endif
