#include "qv/base/qv_dict_digest_private.h"
#include "qv/base/qv_held_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_order_private.h"

#include <algorithm>

using namespace qv::dict;

/* Search in a run ------------------------------------------------------------------------------------------------ */

namespace
{
using Item  = QV___DICT_ITEM;
using Run   = QV___DICT_RUN;
using Place = qv::DictPlace;

// True when a search in the run can go by the key's digest.
bool hasDigestsOf( Run *run, QV_OBJ *key )
{
    return run->digests != qv::NO_DIGESTS && run->digests == digestsOf( key->sort );
}

// `base`, or `next` where the digest of `pivot` is below this one: a conditional move, which the compiler replaces by a
// branch or by an addition that takes longer.
inline const Item *further( const Item *base, const Item *next, const Item &pivot, uint64_t digest )
{
#ifdef __x86_64__
    __asm__( "cmpq %2, %1\n\tcmovb %3, %0"
             : "+r"( base )
             : "m"( pivot.digest.number ), "r"( digest ), "r"( next )
             : "cc" );
    return base;
#else
    return pivot.digest.number < digest ? next : base;
#endif
}

inline const Item *further( const Item *base, size_t step, uint64_t digest )
{
    return further( base, base + step, base[step - 1], digest );
}

// The first item from `from` on with this digest or a greater one, maybe the end. Not qv::bisect(), which branches by
// each comparison and stops at an equal item: here every key takes the same number of steps, none of which branches,
// since half of the branches would be mispredicted. Steps are powers of two, of which the compiler knows the addresses:
// all but the first have half of the items left that the one before had.
[[gnu::always_inline]] inline const Item *firstNotBelow( Run *run, int32_t from, uint64_t digest )
{
    const Item *base  = run->items() + from;
    size_t      count = static_cast< size_t >( run->length - from );

    if( count == 0 )
        return base;

    // Either the items before this one, or as many at the end.
    size_t step = std::bit_floor( count );

    base = further( base, base + ( count - step + 1 ), base[step - 1], digest );

    while( step > 512 )
    {
        step /= 2;
        base = further( base, step, digest );
    }

    switch( step )
    {
    case 512:
        base = further( base, 256, digest );
        [[fallthrough]];
    case 256:
        base = further( base, 128, digest );
        [[fallthrough]];
    case 128:
        base = further( base, 64, digest );
        [[fallthrough]];
    case 64:
        base = further( base, 32, digest );
        [[fallthrough]];
    case 32:
        base = further( base, 16, digest );
        [[fallthrough]];
    case 16:
        base = further( base, 8, digest );
        [[fallthrough]];
    case 8:
        base = further( base, 4, digest );
        [[fallthrough]];
    case 4:
        base = further( base, 2, digest );
        [[fallthrough]];
    case 2:
        base = further( base, 1, digest );
    }

    return base;
}

// The same for a key that may be entered: many are entered at the end.
int32_t bisectDigests( Run *run, int32_t from, uint64_t digest )
{
    if( from == run->length || run->items()[run->length - 1].digest.number < digest )
        return run->length;

    return static_cast< int32_t >( firstNotBelow( run, from, digest ) - run->items() );
}

// Whether a key has the run's prefix, of which as many characters as `known` are known to be the key's too: then 0,
// else the order of the run's keys and this one.
QV_INT compareWithPrefix( Run *run, QV_STRING *key, QV_INT known )
{
    QV_INT prefix = run->prefix;

    return prefix <= known ? 0
                           : qv::order(
                                 qv::chars( stringOf( run->items()->key ) ) + known, prefix - known,
                                 qv::chars( key ) + known, std::min( key->length, prefix ) - known );
}

// How many characters two texts have in common as far as their digests behind the same prefix tell, without a look at
// the texts: one for each byte where one of the two numbers is of eight characters.
inline QV_INT commonAsTold( const qv::Digest &digest, uint64_t other )
{
    return digest.count == 8 ? std::countl_zero( digest.number ^ other ) / 8 : 0;
}

// True if the digest of a key, behind the run's prefix that both have, tells that it is the item's: equal numbers mean
// equal texts unless the rest is untold.
inline bool isTold( const Item &item, [[maybe_unused]] QV_STRING *key, const QV___DICT_DIGEST &digest )
{
    bool told = digest.rest != qv::UNTOLD_REST && item.digest == digest;
    QV_ASSERT( !told || qvStringCompare( stringOf( item.key ), key ) == 0 );

    return told;
}

// Among Strings with the same number as the key, of which the one at `first` is not told to be it. Found, or where to enter.
[[gnu::noinline]] Place bisectAlike( Run *run, int32_t first, QV_STRING *key, const qv::Digest &digest )
{
    Item   *items  = run->items();
    QV_INT  prefix = run->prefix;
    int32_t step   = 1;

    // As a rule one key has the number. Where more have, the last of them is looked for in steps that double.
    while( first + step < run->length && items[first + step].digest.number == digest.number )
        step *= 2;

    auto orderAt = [&]( int32_t idx )
    {
        QV_STRING *stored = stringOf( items[idx].key );

        return items[idx].digest.number != digest.number ? 1
                                                         : qv::order(
                                                               qv::chars( stored ) + prefix, stored->length - prefix,
                                                               qv::chars( key ) + prefix, key->length - prefix );
    };

    auto [idx, found] = qv::bisect( first - 1, std::min( first + step, run->length ), orderAt );
    return { 0, idx, found };
}

// Among Strings that share the key's first characters as far as the run's prefix goes. Always inline, since a search in
// an index has no use for the digest.
[[gnu::always_inline]] inline Place bisectTexts( Run *run, int32_t from, QV_STRING *key, const qv::Digest &digest )
{
    int32_t          lo    = bisectDigests( run, from, digest.number );
    const Item      &item  = run->items()[lo];
    QV___DICT_DIGEST whole = { digest.number, restBehind( key, run->prefix, digest ) };

    if( lo < run->length && item.digest.number == digest.number )
    {
        // No other text has the numbers, or the key is the very one that is stored.
        if( isTold( item, key, whole ) || item.key == key )
            return { 0, lo, true };

        Place place = bisectAlike( run, lo, key, digest );

        if( place.found )
            return place;

        lo = place.idx;
    }

    return { 0, lo, false, true, whole };
}

Place searchTexts( Run *run, int32_t from, QV_STRING *key, QV_INT known )
{
    if( QV_INT order = compareWithPrefix( run, key, known ) )
        return { 0, order > 0 ? from : run->length };

    return bisectTexts( run, from, key, digestBehind( key, run->prefix ) );
}

inline Place searchIntegers( Run *run, int32_t from, uint64_t digest )
{
    int32_t idx = bisectDigests( run, from, digest );

    return { 0, idx, idx < run->length && run->items()[idx].digest.number == digest, true, { digest, 0 } };
}

// By the digests, which are of the key's sort.
inline Place searchDigests( Run *run, int32_t from, QV_OBJ *key )
{
    return run->digests == qv::STRING_DIGESTS ? searchTexts( run, from, stringOf( key ), 0 )
                                              : searchIntegers( run, from, digestInt( key ) );
}

// The order of a stored key against the one that is looked for. Of two objects that are ordered by when they were
// first compared, the first argument of the comparison comes first.
inline QV_INT compareKeys( QV_OBJ *stored, QV_OBJ *key, bool keyFirst )
{
    if( !keyFirst )
        return qvObjCompare( stored, key );

    QV_INT order = qvObjCompare( key, stored );
    return qv::order( QV_INT( 0 ), order );
}

// By comparing objects: the item at `lo` is below the key, the one at `hi` above it, if there is one.
Place bisectKeys( Run *run, int32_t lo, int32_t hi, QV_OBJ *key, bool keyFirst = false )
{
    const Item *items = run->items();

    auto [idx, found] = qv::bisect( lo, hi, [&]( int32_t at ) { return compareKeys( items[at].key, key, keyFirst ); } );
    return { 0, idx, found };
}

// The two ends first, then the middle of what is left. A key beyond an end takes two comparisons at most.
Place searchKeys( Run *run, int32_t from, QV_OBJ *key, bool keyFirst )
{
    QV_INT first = compareKeys( run->items()[from].key, key, keyFirst );

    if( first >= 0 )
        return { 0, from, first == 0 };

    int32_t end  = run->length - 1;
    QV_INT  last = compareKeys( run->items()[end].key, key, keyFirst );

    if( last <= 0 )
        return { 0, last == 0 ? end : run->length, last == 0 };

    return bisectKeys( run, from, end, key, keyFirst );
}

Place searchRun( Run *run, int32_t from, QV_OBJ *key, bool keyFirst = false )
{
    if( from == run->length )
        return { 0, from };

    return hasDigestsOf( run, key ) ? searchDigests( run, from, key ) : searchKeys( run, from, key, keyFirst );
}

// The digest of a key in the one run of a Dict, if it tells the whole key: of a text that has the run's prefix and 8 to 16
// characters after it, each of a byte. The most frequent keys, for ways in which nothing is called.
[[gnu::always_inline]] inline bool digestShort( QV_DICT *dict, QV_OBJ *key, QV___DICT_DIGEST *digest )
{
    if( dict->length == 0 || dict->hasIndex || dict->run->digests != qv::STRING_DIGESTS
        || key->sort != &qv___sort_QV_STRING )
        return false;

    Run           *run    = dict->run;
    QV_INT         prefix = run->prefix;
    QV_INT         length = stringOf( key )->length - prefix;
    const QV_CHAR *chars  = qv::chars( stringOf( key ) );
    const QV_CHAR *same   = qv::chars( stringOf( run->items()->key ) );

    if( length < 8 || length > 16 || !qv::digestEight( chars + prefix, qv::DIGEST_BYTE, &digest->number )
        || !qv::digestEight( chars + prefix + length - 8, qv::DIGEST_BYTE, &digest->rest ) )
        return false;

    digest->rest = qv::shiftRest( digest->rest, length );

    // Prefixes are steps of four.
    for( ; prefix > 0; prefix -= 4, same += 4, chars += 4 )
        if( memcmp( same, chars, 4 * sizeof( QV_CHAR ) ) != 0 )
            return false;

    return true;
}

/* Search in a Dict ----------------------------------------------------------------------------------------------- */

Place inRun( int32_t run, Place place )
{
    place.run = run;
    return place;
}

// In the run that is before the one at `idx` of the index, which the key is before.
template< class Search >
inline Place searchBefore( QV_DICT *dict, const Place &next, const Search &search )
{
    if( next.found )
        return { next.idx, 0, true };

    if( next.idx == 0 )
        return { 0, 0 };

    return inRun( next.idx - 1, search( dict->index->runs->items()[next.idx - 1] ) );
}

// What has digests in the index has them in its run too, unless there are keys of another sort.
Place searchIndexByText( QV_DICT *dict, QV_STRING *key )
{
    Run *runs = dict->index->runs;

    if( QV_INT order = compareWithPrefix( runs, key, 0 ) )
        return searchBefore(
            dict, { 0, order > 0 ? 0 : runs->length },
            [&]( const Item &entry )
            {
                Run *run = entry.run;
                return run->digests == qv::STRING_DIGESTS ? searchTexts( run, 0, key, 0 )
                                                          : bisectKeys( run, 0, run->length, key );
            } );

    // The first key of each run has the index's prefix, as this key has.
    qv::Digest digest = digestBehind( key, runs->prefix );

    return searchBefore(
        dict, bisectTexts( runs, 0, key, digest ),
        [&]( const Item &entry )
        {
            Run *run = entry.run;
            return run->digests != qv::STRING_DIGESTS ? bisectKeys( run, 0, run->length, key )
                   : run->prefix == runs->prefix
                       ? bisectTexts( run, 0, key, digest )
                       : searchTexts( run, 0, key, runs->prefix + commonAsTold( digest, entry.digest.number ) );
        } );
}

Place searchIndexByInteger( QV_DICT *dict, QV_OBJ *key )
{
    uint64_t digest = digestInt( key );

    return searchBefore(
        dict, searchIntegers( dict->index->runs, 0, digest ),
        [&]( const Item &entry )
        {
            Run *run = entry.run;
            return run->digests == qv::INTEGER_DIGESTS ? searchIntegers( run, 0, digest )
                                                       : bisectKeys( run, 0, run->length, key );
        } );
}

// The two ends of the Dict first, as in a run.
Place searchIndexByKey( QV_DICT *dict, QV_OBJ *key )
{
    Run   *runs  = dict->index->runs;
    QV_INT first = qvObjCompare( runs->items()->key, key );

    if( first >= 0 )
        return { 0, 0, first == 0 };

    Run   *last  = runs->items()[runs->length - 1].run;
    QV_INT order = qvObjCompare( last->items()[last->length - 1].key, key );

    if( order <= 0 )
        return { runs->length - 1, order == 0 ? last->length - 1 : last->length, order == 0 };

    return searchBefore(
        dict, bisectKeys( runs, 0, runs->length, key ),
        [&]( const Item &entry )
        {
            Run *run = entry.run;
            return hasDigestsOf( run, key ) ? searchDigests( run, 0, key ) : bisectKeys( run, 0, run->length, key );
        } );
}

Place searchIndex( QV_DICT *dict, QV_OBJ *key )
{
    if( !hasDigestsOf( dict->index->runs, key ) )
        return searchIndexByKey( dict, key );

    return dict->index->runs->digests == qv::STRING_DIGESTS ? searchIndexByText( dict, stringOf( key ) )
                                                            : searchIndexByInteger( dict, key );
}

// A search that calls no function of another family.
bool goesByDigests( QV_DICT *dict, QV_OBJ *key )
{
    return !dict->hasIndex && hasDigestsOf( dict->run, key );
}

bool comparesInside( QV_OBJ *key )
{
    return digestsOf( key->sort ) != qv::NO_DIGESTS;
}

Place searchAll( QV_DICT *dict, QV_OBJ *key )
{
    return dict->hasIndex ? searchIndex( dict, key ) : searchRun( dict->run, 0, key );
}
} // namespace

qv::DictPlace qv::findInDict( QV_DICT *dict, QV_OBJ *key, Ref< QV_DICT > *held )
{
    if( dict->length == 0 )
        return { 0, 0 };

    if( goesByDigests( dict, key ) )
        return searchDigests( dict->run, 0, key );

    // A String or a boxed integer is compared with its like, or by the names of the sorts.
    if( comparesInside( key ) )
        return searchAll( dict, key );

    *held = Ref< QV_DICT >::share( dict );
    return searchAll( dict, key );
}

/* Look-up --------------------------------------------------------------------------------------------------------

   Finds an item, where a search finds a place. Nearly always digests alone tell, and a look-up is so short that each
   look at memory counts, and each call. */

namespace
{
// True if two texts have the same `count` characters. Few, as a rule: the C library takes longer to be called.
inline bool haveSame( const QV_CHAR *a, const QV_CHAR *b, QV_INT count )
{
    for( ; count >= 4; count -= 4, a += 4, b += 4 )
        if( memcmp( a, b, 4 * sizeof( QV_CHAR ) ) != 0 )
            return false;

    for( ; count > 0; count--, a++, b++ )
        if( *a != *b )
            return false;

    return true;
}

// A key that is looked up, for runs with digests of its sort: whether it has what the keys of a run share, its digest
// there, and whether it is the key of an item with that digest.
struct SoughtText
{
    static const uint32_t DIGESTS = qv::STRING_DIGESTS;

    QV_STRING *key;

    bool isLongEnough( Run *run ) const
    {
        return key->length >= run->prefix;
    }

    // The first `known` characters are known to be the same.
    bool hasPrefix( Run *run, QV_INT known ) const
    {
        return run->prefix <= known
               || haveSame(
                   qv::chars( stringOf( run->items()->key ) ) + known, qv::chars( key ) + known, run->prefix - known );
    }

    qv::Digest digestIn( Run *run ) const
    {
        return qv::digestText( qv::chars( key ) + run->prefix, key->length - run->prefix );
    }

    bool isKeyOf( const Item *item, Run *run, const qv::Digest &digest ) const
    {
        qv::fetchObject( item->val ); // what the caller wants

        uint64_t rest = restBehind( key, run->prefix, digest );

        if( rest != qv::UNTOLD_REST )
            return isTold( *item, key, { digest.number, rest } );

        if( item->key == key )
            return true;

        // What comes first of a String says where its characters are, which is after it as a rule: all can come at once.
        QV_STRING *stored = stringOf( item->key );
        QV_INT     known  = run->prefix + digest.count;
        __builtin_prefetch( &stored->first );
        __builtin_prefetch( reinterpret_cast< QV_CHAR * >( stored + 1 ) + known );

        return stored->length == key->length
               && haveSame( qv::chars( stored ) + known, qv::chars( key ) + known, key->length - known );
    }
};

struct SoughtInteger
{
    static const uint32_t DIGESTS = qv::INTEGER_DIGESTS;

    QV_OBJ *key;

    bool isLongEnough( Run * ) const
    {
        return true;
    }

    bool hasPrefix( Run *, QV_INT ) const
    {
        return true;
    }

    qv::Digest digestIn( Run * ) const
    {
        return { digestInt( key ), 0, true };
    }

    bool isKeyOf( const Item *, Run *, const qv::Digest & ) const
    {
        return true;
    }
};

const Item *const NOT_TOLD = reinterpret_cast< const Item * >( 1 );

// The item of a key, or null, or NOT_TOLD where the digests do not tell.
template< class Sought >
[[gnu::always_inline]] inline const Item *lookUpInRun( Run *run, Sought sought, const qv::Digest &digest, QV_INT known )
{
    const Item *item = firstNotBelow( run, 0, digest.number );

    const Item *end = run->items() + run->length;

    // A key without the run's prefix is not in the run, whatever its digest would be.
    if( item == end || item->digest.number != digest.number || !sought.hasPrefix( run, known ) )
        return nullptr;

    if( sought.isKeyOf( item, run, digest ) )
        return item;

    // One of the next items with this number may be the one.
    return item + 1 == end || item[1].digest.number != digest.number ? nullptr : NOT_TOLD;
}

template< class Sought >
[[gnu::noinline]] const Item *lookUpInIndex( Run *runs, Sought sought )
{
    // Keys without the index's prefix may be in the last run.
    if( runs->digests != Sought::DIGESTS || !sought.isLongEnough( runs ) || !sought.hasPrefix( runs, 0 ) )
        return NOT_TOLD;

    qv::Digest  digest = sought.digestIn( runs );
    const Item *next   = firstNotBelow( runs, 0, digest.number );

    // A first key that has the same digest may be greater than this one, or this very one.
    if( next == runs->items() || ( next != runs->items() + runs->length && next->digest.number == digest.number ) )
        return NOT_TOLD;

    Run *run = next[-1].run;

    if( run->digests == Sought::DIGESTS && run->prefix == runs->prefix )
        return lookUpInRun( run, sought, digest, runs->prefix );

    if( run->digests != Sought::DIGESTS || !sought.isLongEnough( run ) )
        return NOT_TOLD;

    return lookUpInRun(
        run, sought, sought.digestIn( run ), runs->prefix + commonAsTold( digest, next[-1].digest.number ) );
}

template< class Sought >
inline const Item *lookUp( QV_DICT *dict, Sought sought )
{
    if( dict->hasIndex )
        return lookUpInIndex( dict->index->runs, sought );

    Run *run = dict->run;

    if( run->digests != Sought::DIGESTS || !sought.isLongEnough( run ) )
        return NOT_TOLD;

    return lookUpInRun( run, sought, sought.digestIn( run ), 0 );
}

[[gnu::noinline]] const Item *findWhereNotTold( QV_DICT *dict, QV_OBJ *key, qv::Ref< QV_DICT > *held )
{
    Place place = qv::findInDict( dict, key, held );
    return place.found ? &qv::dictItem( dict, place ) : nullptr;
}

[[gnu::noinline]] const Item *lookUpAny( QV_DICT *dict, QV_OBJ *key, qv::Ref< QV_DICT > *held )
{
    const Item *item = key->sort == &qv___sort_QV_STRING      ? lookUp( dict, SoughtText{ stringOf( key ) } )
                       : key->sort == &qv___sort_QV_BOXED_INT ? lookUp( dict, SoughtInteger{ key } )
                                                              : NOT_TOLD;

    if( item == NOT_TOLD )
        return findWhereNotTold( dict, key, held );

    QV_ASSERT( item == findWhereNotTold( dict, key, held ) );
    return item;
}
} // namespace

const QV___DICT_ITEM *qv::findDictItem( QV_DICT *dict, QV_OBJ *key, Ref< QV_DICT > *held )
{
    QV___DICT_DIGEST digest;

    if( digestShort( dict, key, &digest ) )
    {
        const Item *item = firstNotBelow( dict->run, 0, digest.number );

        if( item == dict->run->items() + dict->run->length || item->digest.number != digest.number )
        {
            QV_ASSERT( !findWhereNotTold( dict, key, held ) );
            return nullptr;
        }

        fetchObject( item->val );

        if( isTold( *item, stringOf( key ), digest ) )
            return item;
    }

    return dict->length == 0 ? nullptr : lookUpAny( dict, key, held );
}

namespace
{
[[gnu::noinline]] Place findElseToChange( QV_DICT **dict, QV_OBJ *key )
{
    qv::Ref< QV_DICT > held;
    Place              place = qv::findInDict( *dict, key, &held );

    if( held )
        qv::goOnWith( dict, held );

    return place;
}
} // namespace

// Places are made where the caller has room for them: copying one that was just written makes the processor wait.
qv::DictPlace qv::findToChange( QV_DICT **dict, QV_OBJ *key )
{
    QV___DICT_DIGEST digest;

    if( digestShort( *dict, key, &digest ) )
    {
        Run    *run = ( *dict )->run;
        int32_t idx = bisectDigests( run, 0, digest.number );

        if( idx == run->length || run->items()[idx].digest.number != digest.number )
            return { 0, idx, false, true, digest };

        if( isTold( run->items()[idx], stringOf( key ), digest ) )
            return { 0, idx, true };
    }

    return findElseToChange( dict, key );
}

qv::DictPlace qv::findInDictFrom( QV_DICT *dict, const DictPlace &from, QV_OBJ *key, bool keyFirst )
{
    int32_t run = from.run;
    int32_t idx = from.idx;

    if( dict->hasIndex )
    {
        Place next = searchRun( dict->index->runs, run + 1, key, keyFirst );

        if( next.found )
            return { next.idx, 0, true };

        if( next.idx > run + 1 )
        {
            run = next.idx - 1;
            idx = 0;
        }
    }

    return inRun( run, searchRun( dictRun( dict, run ), idx, key, keyFirst ) );
}
