#include "qv/base/qv_dict.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>
#include <string.h>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

QV___HIDDEN QV_SORT qv___sort_QV_STRING;

QV_DICT *qv___DictEmpty = nullptr;

namespace
{
using Item = QV___DICT_ITEM;

// What an item counts for in the accounts: its two references.
const QV_INT ITEM_SIZE = 2 * sizeof( QV_OBJ * );

// From so many entries on, one Dict goes into or out of another in a single pass instead of entry by entry.
const QV_INT SINGLE_PASS = 8;

void account( QV_DICT *dict )
{
    qv___ObjDbgSetAllocationSizeN( dict, dict->alloc, ITEM_SIZE );
}

Item *allocate( QV_INT count )
{
    return static_cast< Item * >( qvMemAllocN( count, sizeof( Item ) ) );
}

void moveItems( Item *dest, const Item *src, QV_INT count )
{
    qvMemMoveN( dest, src, count, sizeof( Item ) );
}

// With references of its own.
Item copyItem( const Item &item )
{
    return { qv::retain( item.key ), qv::retain( item.val ), item.digest };
}

void releaseItem( const Item &item )
{
    // Both references at once where they are to one object.
    if( item.key == item.val )
    {
        if( qv___AtomicAdd32( &item.key->retainCount, -2 ) == 0 )
            qv___ObjFree( item.key );

        return;
    }

    qv::release( item.key );
    qv::release( item.val );
}

// Free places in front of the items.
QV_INT front( QV_DICT *dict )
{
    return dict->block ? dict->items - dict->block : 0;
}

QV_DICT *createWithoutBlock()
{
    QV_DICT *dict      = qv::create< QV_DICT >( qvDictSort() );
    dict->alloc        = 0;
    dict->length       = 0;
    dict->items        = nullptr;
    dict->block        = nullptr;
    dict->blockSize    = 0;
    dict->digestSort   = nullptr;
    dict->digestPrefix = 0;

    return dict;
}

void freeDict( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_DICT *dict = qvDictFrom( thisObj );

    if( dict->block )
    {
        for( QV_INT i = 0; i < dict->length; i++ )
            releaseItem( dict->items[i] );

        qvMemFree( dict->block );
        qv___ObjDbgSetAllocationSize( dict, 0 );
    }
}

QV_INT compare( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_DICT *a      = qvDictFrom( thisObj );
    QV_DICT *b      = qvDictFrom( thatObj );
    QV_INT   common = std::min( a->length, b->length );

    for( QV_INT i = 0; i < common; i++ )
    {
        if( QV_INT order = qvObjCompare( a->items[i].key, b->items[i].key ) )
            return order;

        if( QV_INT order = qvObjCompare( a->items[i].val, b->items[i].val ) )
            return order;
    }

    return ( a->length > b->length ) - ( a->length < b->length );
}

QV_STRING *toString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_DICT             *dict = qvDictFrom( thisObj );
    qv::Ref< QV_STRING > text( qvStringCreateFromCharsCopy( U"{", 1 ) );

    for( QV_INT i = 0; i < dict->length; i++ )
    {
        if( i > 0 )
            qvStringAppendChars( text.at(), U", ", 2 );

        qvStringAppendObj( text.at(), dict->items[i].key );
        qvStringAppendChar( text.at(), U'=' );
        qvStringAppendObj( text.at(), dict->items[i].val );
    }

    qvStringAppendChar( text.at(), U'}' );

    return text.give();
}
} // namespace

QV___FAMILY( Dict, QV_DICT, freeDict, compare, toString )

void qv___DictStartup( void )
{
    qv___DictEmpty = createWithoutBlock();
}

void qv___DictShutdown( void )
{
    qv::drop( qv___DictEmpty );
}

/* Digests -------------------------------------------------------------------------------------------------------- */

namespace
{
// Eight bytes of a text as a number: a stands before b wherever a's number is below b's. One byte a character up to
// ONE_BYTE, counted from 1, and three for the others; the end of the text is 0.
const uint32_t ONE_BYTE = 0xED;

struct Digest
{
    uint64_t number;
    bool     whole; // the end is in it, so that only this text has the number
};

Digest digestText( const QV_CHAR *chars, QV_INT length )
{
#ifdef __SSE2__
    if( length >= 8 )
    {
        // Eight at once, which is what most keys need. What doesn't fit a byte becomes the largest one.
        const __m128i *from  = reinterpret_cast< const __m128i * >( chars );
        __m128i        one   = _mm_set1_epi32( 1 );
        __m128i        low   = _mm_add_epi32( _mm_loadu_si128( from ), one );
        __m128i        high  = _mm_add_epi32( _mm_loadu_si128( from + 1 ), one );
        __m128i        words = _mm_packs_epi32( low, high );
        __m128i        bytes = _mm_packus_epi16( words, words );
        __m128i        over  = _mm_subs_epu8( bytes, _mm_set1_epi8( static_cast< char >( ONE_BYTE + 1 ) ) );

        if( _mm_movemask_epi8( _mm_cmpeq_epi8( over, _mm_setzero_si128() ) ) == 0xFFFF )
        {
            uint64_t number = 0;
            _mm_storel_epi64( reinterpret_cast< __m128i * >( &number ), bytes );

            return { __builtin_bswap64( number ), false };
        }
    }
#endif

    uint64_t number = 0;
    int      shift  = 56;

    for( QV_INT i = 0; i < length && shift >= 0; i++ )
    {
        uint64_t ch = chars[i];

        if( ch <= ONE_BYTE )
        {
            number |= ( ch + 1 ) << shift;
            shift -= 8;
            continue;
        }

        uint64_t three = ( ( ONE_BYTE + 2 ) << 16 ) + ch;
        number |= shift >= 16 ? three << ( shift - 16 ) : three >> ( 16 - shift );
        shift -= 24;
    }

    return { number, shift >= 0 };
}

uint64_t digestInt( QV_INT value )
{
    return static_cast< uint64_t >( value ) ^ ( uint64_t( 1 ) << 63 );
}

// How many characters two texts have in common, `limit` at most.
QV_INT commonPrefix( QV_STRING *a, QV_STRING *b, QV_INT limit )
{
    const QV_CHAR *aChars = qv::chars( a );
    const QV_CHAR *bChars = qv::chars( b );
    QV_INT         i      = 0;

    limit = std::min( limit, std::min( a->length, b->length ) );

    while( i < limit && aChars[i] == bChars[i] )
        i++;

    return i;
}

QV_STRING *stringKey( const Item &item )
{
    return static_cast< QV_STRING * >( item.key );
}

Digest digestBehind( QV_STRING *text, QV_INT prefix )
{
    return digestText( qv::chars( text ) + prefix, text->length - prefix );
}

// Makes the prefix that the digests skip `prefix` or a little less: in steps of four, so that keys which share less and
// less do not each cause new digests for all.
void digestAll( QV_DICT *dict, QV_INT prefix )
{
    dict->digestPrefix = prefix & ~QV_INT( 3 );

    for( Item *item = dict->items; item != dict->items + dict->length; item++ )
        item->digest = digestBehind( stringKey( *item ), dict->digestPrefix ).number;
}

// Suits the digests to items that have come from a Dict with another prefix.
void digestCommon( QV_DICT *dict, QV_INT otherPrefix )
{
    QV_INT common = commonPrefix(
        stringKey( dict->items[0] ), stringKey( dict->items[dict->length - 1] ),
        std::min( dict->digestPrefix, otherPrefix ) );

    if( common != dict->digestPrefix || common != otherPrefix )
        digestAll( dict, common );
}

// The digest of a key that goes in, after the digests of the others have been made to suit it.
uint64_t digestNew( QV_DICT *dict, QV_OBJ *key )
{
    QV_SORT *sort = key->sort;

    if( dict->length == 0 )
    {
        bool isText = sort == &qv___sort_QV_STRING;

        dict->digestSort   = isText || sort == &qv___sort_QV_BOXED_INT ? sort : nullptr;
        dict->digestPrefix = isText ? static_cast< QV_STRING * >( key )->length & ~QV_INT( 3 ) : 0;
    }
    else if( sort != dict->digestSort )
    {
        dict->digestSort = nullptr;
    }

    if( !dict->digestSort )
        return 0;

    if( sort == &qv___sort_QV_BOXED_INT )
        return digestInt( static_cast< QV_BOXED_INT * >( key )->value );

    QV_STRING *text = static_cast< QV_STRING * >( key );

    if( dict->length > 0 && dict->digestPrefix > 0 )
    {
        QV_INT common = commonPrefix( stringKey( dict->items[0] ), text, dict->digestPrefix );

        if( common < dict->digestPrefix )
            digestAll( dict, common );
    }

    return digestBehind( text, dict->digestPrefix ).number;
}

/* Search --------------------------------------------------------------------------------------------------------- */

// The order of two texts.
QV_INT compareTexts( const QV_CHAR *a, QV_INT aLength, const QV_CHAR *b, QV_INT bLength )
{
    QV_INT common = std::min( aLength, bLength );
    QV_INT i      = 0;

    while( i + 4 <= common && memcmp( a + i, b + i, 4 * sizeof( QV_CHAR ) ) == 0 )
        i += 4;

    for( ; i < common; i++ )
        if( a[i] != b[i] )
            return a[i] < b[i] ? -1 : 1;

    return ( aLength > bLength ) - ( aLength < bLength );
}

// Where a key stands, or the item in front of which it would.
struct Place
{
    QV_INT   index;
    bool     found;
    bool     hasDigest = false; // the key's own, good for this Dict
    uint64_t digest    = 0;
};

// By comparing objects: the two ends first, then the middle of what is left. A key beyond an end takes two comparisons
// at most.
Place bisect( const Item *items, QV_INT length, QV_OBJ *key )
{
    QV_INT first = qvObjCompare( items[0].key, key );

    if( first >= 0 )
        return { 0, first == 0 };

    QV_INT last = qvObjCompare( items[length - 1].key, key );

    if( last <= 0 )
        return { last == 0 ? length - 1 : length, last == 0 };

    QV_INT lo = 0;
    QV_INT hi = length - 1;

    while( hi - lo > 1 )
    {
        QV_INT mid   = lo + ( hi - lo ) / 2;
        QV_INT there = qvObjCompare( items[mid].key, key );

        if( there == 0 )
            return { mid, true };

        if( there < 0 )
            lo = mid;
        else
            hi = mid;
    }

    return { hi, false };
}

// The first item with this digest or a greater one.
QV_INT bisectDigests( const Item *items, QV_INT length, uint64_t digest )
{
    if( items[length - 1].digest < digest )
        return length;

    // The same number of steps for every key and no branch to mispredict.
    const Item *base = items;

    for( QV_INT left = length; left > 1; )
    {
        QV_INT half = left / 2;
        base        = base[half - 1].digest < digest ? base + half : base;
        left -= half;
    }

    return base - items;
}

Place bisectTexts( const Item *items, QV_INT length, QV_STRING *key, QV_INT prefix )
{
    if( prefix > 0 )
    {
        QV_INT order = compareTexts(
            qv::chars( stringKey( items[0] ) ), prefix, qv::chars( key ), std::min( key->length, prefix ) );

        if( order != 0 )
            return { order > 0 ? 0 : length, false };
    }

    Digest digest = digestBehind( key, prefix );
    QV_INT lo     = bisectDigests( items, length, digest.number );

    if( lo == length || items[lo].digest != digest.number )
        return { lo, false, true, digest.number };

    if( digest.whole )
        return { lo, true };

    // As a rule one key has the number. Where more have, the last of them is looked for in steps that double.
    QV_INT step = 1;

    while( lo + step < length && items[lo + step].digest == digest.number )
        step *= 2;

    QV_INT hi = std::min( lo + step, length );

    while( lo < hi )
    {
        QV_INT     mid    = lo + ( hi - lo ) / 2;
        QV_STRING *stored = stringKey( items[mid] );
        QV_INT     order  = items[mid].digest != digest.number
                                ? 1
                                : compareTexts(
                                      qv::chars( stored ) + prefix, stored->length - prefix,
                                      qv::chars( key ) + prefix, key->length - prefix );

        if( order == 0 )
            return { mid, true };

        if( order < 0 )
            lo = mid + 1;
        else
            hi = mid;
    }

    return { lo, false, true, digest.number };
}

// Behind the items in front of `from`, for keys that come in ascending order.
Place findFrom( QV_DICT *dict, QV_INT from, QV_OBJ *key )
{
    const Item *items  = dict->items + from;
    QV_INT      length = dict->length - from;

    if( length == 0 )
        return { from, false };

    Place place;

    if( !dict->digestSort || key->sort != dict->digestSort )
    {
        place = bisect( items, length, key );
    }
    else if( key->sort == &qv___sort_QV_STRING )
    {
        place = bisectTexts( items, length, static_cast< QV_STRING * >( key ), dict->digestPrefix );
    }
    else
    {
        uint64_t digest = digestInt( static_cast< QV_BOXED_INT * >( key )->value );
        QV_INT   index  = bisectDigests( items, length, digest );
        place           = { index, index < length && items[index].digest == digest, true, digest };
    }

    place.index += from;

    return place;
}

Place find( QV_DICT *dict, QV_OBJ *key )
{
    return findFrom( dict, 0, key );
}

/* Room ----------------------------------------------------------------------------------------------------------- */

// Accounts for `count` items more, as entering them one by one would.
void growAccounted( QV_DICT *dict, QV_INT count )
{
    QV_INT length = dict->length + count;

    if( length <= dict->alloc )
        return;

    QV_INT steps = ( length - dict->alloc - 1 ) / QV_DICT_GROWTH + 1;
    dict->alloc  = QV_INT_ADD_OK( dict->alloc, steps * QV_DICT_GROWTH ) ? dict->alloc + steps * QV_DICT_GROWTH : length;
    account( dict );
    QV_CHECK_AS( dict->alloc >= length, "(*dict)->alloc > (*dict)->length" );
}

// Moves all items and opens a gap, in the same block or in a larger one. An eighth of the items is free afterwards at
// least, most of it at the end where the gap is, so that a run of insertions at one end seldom comes here.
Item *respace( QV_DICT *dict, QV_INT idx )
{
    QV_INT length = dict->length;
    QV_INT tail   = length - idx;
    QV_INT size   = dict->blockSize;
    Item  *block  = dict->block;
    Item  *from   = dict->items;

    if( size < dict->alloc || size - length <= length / 8 )
    {
        size = dict->alloc + ( block ? dict->alloc / 8 : 0 );

        if( tail == 0 && front( dict ) <= size / 8 )
        {
            // At the end the C library may extend the block where it is.
            QV_INT before   = front( dict );
            dict->blockSize = before + size;
            dict->block     = static_cast< Item * >( qvMemReallocN( block, dict->blockSize, sizeof( Item ) ) );
            dict->items     = dict->block + before;

            return dict->items + idx;
        }

        block = allocate( size );
    }

    QV_INT free = size - length - 1;
    Item  *to   = block + ( idx == 0 ? free - free / 4 : tail == 0 ? free / 4 : free / 2 );

    // In one block the part that moves away from the other goes first.
    if( to > from )
        moveItems( to + idx + 1, from + idx, tail );

    moveItems( to, from, idx );

    if( to <= from )
        moveItems( to + idx + 1, from + idx, tail );

    if( block != dict->block )
    {
        qvMemFree( dict->block );
        dict->block     = block;
        dict->blockSize = size;
    }

    dict->items = to;

    return to + idx;
}

// Enters a new key in a Dict that nobody else holds. Takes over both references. They come in registers: an Item that
// was just written to the stack field by field and is read from there as a vector makes the processor wait.
void insertItem( QV_DICT *dict, const Place &place, QV_OBJ *key, QV_OBJ *value )
{
    QV_CHECK_AS( QV_INT_ADD_OK( dict->length, 1 ), "QV_INT_ADD_OK( (*dict)->length, 1 )" );
    growAccounted( dict, 1 );
    uint64_t digest = place.hasDigest ? place.digest : digestNew( dict, key );

    QV_INT idx  = place.index;
    QV_INT tail = dict->length - idx;
    Item  *gap  = dict->items + idx;

    if( tail <= idx && dict->items + dict->length < dict->block + dict->blockSize )
    {
        moveItems( gap + 1, gap, tail );
    }
    else if( tail > idx && dict->items > dict->block )
    {
        dict->items--;
        moveItems( dict->items, dict->items + 1, idx );
        gap--;
    }
    else
    {
        gap = respace( dict, idx );
    }

    gap->key    = key;
    gap->val    = value;
    gap->digest = digest;
    dict->length++;
}

// Sets the key and the value of an item. Takes over both references.
void replaceItem( QV_DICT *dict, QV_INT idx, Item item )
{
    Item old         = dict->items[idx];
    item.digest      = old.digest;
    dict->items[idx] = item;
    releaseItem( old );
}

// Releases what the Dict has allocated beyond its need, after a change of what it accounts for.
void shrinkBlock( QV_DICT *dict )
{
    account( dict );

    if( dict->blockSize > dict->alloc + dict->alloc / 2 )
    {
        moveItems( dict->block, dict->items, dict->length );
        dict->block     = static_cast< Item * >( qvMemReallocN( dict->block, dict->alloc, sizeof( Item ) ) );
        dict->items     = dict->block;
        dict->blockSize = dict->alloc;
    }
}

void compactAfter( QV_DICT *dict )
{
    if( dict->length < dict->alloc - QV_DICT_OVERSIZED )
    {
        dict->alloc = dict->length;
        shrinkBlock( dict );
    }
}

void deleteItem( QV_DICT **dict, QV_INT idx )
{
    if( (*dict)->length == 1 )
    {
        qvDictClear( dict );
        return;
    }

    qv::makePrivate( dict, qvDictCreateFrom );
    QV_CHECK( (*dict)->items[ idx ].key );
    QV_CHECK( (*dict)->items[ idx ].val );

    QV_DICT *own  = *dict;
    Item    *gap  = own->items + idx;
    Item     old  = *gap;
    QV_INT   tail = own->length - idx - 1;

    if( tail <= idx )
    {
        moveItems( gap, gap + 1, tail );
    }
    else
    {
        moveItems( own->items + 1, own->items, idx );
        own->items++;
    }

    own->length--;
    compactAfter( own );
    releaseItem( old );
}

// Sets a key. Takes over both references. Where one of them is to the Dict itself, it has made it shared, and the
// Dict goes in as it was.
void setOwned( QV_DICT **dict, QV_OBJ *key, QV_OBJ *value )
{
    qv::makePrivate( dict, qvDictCreateFrom );
    Place place = find( *dict, key );

    if( place.found )
        replaceItem( *dict, place.index, { key, value, 0 } );
    else
        insertItem( *dict, place, key, value );
}
} // namespace

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_DICT *qvDictCreate( void )
{
    return qv::retain( qv___DictEmpty );
}

QV_DICT *qvDictCreateFrom( QV_DICT *src )
{
    QV_CHECK( src );

    QV_DICT *result = createWithoutBlock();

    if( src->length > 0 )
    {
        growAccounted( result, src->length );
        result->blockSize = result->alloc;
        result->block     = allocate( result->alloc );
        result->items     = result->block;
        result->length    = src->length;

        result->digestSort   = src->digestSort;
        result->digestPrefix = src->digestPrefix;

        for( QV_INT i = 0; i < src->length; i++ )
            result->items[i] = copyItem( src->items[i] );
    }

    return result;
}

QV_DICT *qvDictCreateWithKeysAndValues( QV_VECTOR *keysVector, QV_VECTOR *valuesVector )
{
    QV_CHECK( keysVector );
    QV_CHECK( valuesVector );
    QV_CHECK( qvVectorLength( keysVector ) == qvVectorLength( valuesVector ) );

    qv::Ref< QV_DICT > result( qvDictCreate() );

    for( QV_INT i = keysVector->length; i-- > 0; )
        qvDictSetObjKey( result.at(), qv::objs( keysVector )[i], qv::objs( valuesVector )[i] );

    return result.give();
}

void qvDictClear( QV_DICT **dict )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );

    qv::assign( dict, qvDictCreate() );
}

QV_INT qv::searchDict( QV_DICT *dict, QV_OBJ *key, bool *found )
{
    Place place = find( dict, key );
    *found      = place.found;

    return place.index;
}

void qv::insertIntoDict(
    QV_DICT **dict, QV_INT idx, QV_OBJ *key, QV_OBJ *value, QV_DICT *superset, QV_INT supersetIdx )
{
    makePrivate( dict, qvDictCreateFrom );

    Place place = { idx, false };

    // What all keys of the superset have in common, those here have.
    if( superset && superset->digestSort && (*dict)->length > 0 && (*dict)->digestSort == superset->digestSort &&
        (*dict)->digestPrefix == superset->digestPrefix )
    {
        place.hasDigest = true;
        place.digest    = superset->items[supersetIdx].digest;
    }

    insertItem( *dict, place, key, value );
}

void qv___DictClear( QV_DICT **dict )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );

    if( qv::isShared( *dict ) )
    {
        qvDictClear( dict );
        return;
    }

    QV_DICT *own    = *dict;
    Item    *items  = own->items;
    QV_INT   length = own->length;
    own->items      = own->block;
    own->length     = 0;

    for( QV_INT i = 0; i < length; i++ )
        releaseItem( items[i] );
}

/* By index ------------------------------------------------------------------------------------------------------- */

QV_INT qvDictLength( QV_DICT *dict )
{
    QV_CHECK( dict );
    return dict->length;
}

QV_OBJ *qvDictKeyAt( QV_DICT *dict, QV_INT idx )
{
    QV_CHECK( dict );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < dict->length );

    return qv::retain( dict->items[idx].key );
}

QV_OBJ *qvDictValueAt( QV_DICT *dict, QV_INT idx )
{
    QV_CHECK( dict );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < dict->length );

    return qv::retain( dict->items[idx].val );
}

void qvDictSetValueAt( QV_DICT **dict, QV_INT idx, QV_OBJ *value )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( value );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < (*dict)->length );

    qv::retain( value );
    qv::makePrivate( dict, qvDictCreateFrom );
    qv::assign( &(*dict)->items[idx].val, value );
}

void qvDictDelAt( QV_DICT **dict, QV_INT idx )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < (*dict)->length );

    deleteItem( dict, idx );
}

namespace
{
QV_VECTOR *vectorOf( QV_DICT *dict, QV_OBJ *Item::*field )
{
    QV_CHECK( dict );

    if( dict->length == 0 )
        return qvVectorCreate();

    QV_OBJ **objs = static_cast< QV_OBJ ** >( qvMemAllocN( dict->length, sizeof( QV_OBJ * ) ) );

    for( QV_INT i = 0; i < dict->length; i++ )
        objs[i] = qv::retain( dict->items[i].*field );

    return qvVectorCreateFromObjsUse( objs, dict->length );
}
} // namespace

QV_VECTOR *qvDictKeysVector( QV_DICT *dict )
{
    return vectorOf( dict, &Item::key );
}

QV_VECTOR *qvDictValuesVector( QV_DICT *dict )
{
    return vectorOf( dict, &Item::val );
}

/* By key --------------------------------------------------------------------------------------------------------- */

QV_OBJ *qvDictObjKey( QV_DICT *dict, QV_OBJ *key )
{
    QV_CHECK( dict );
    QV_CHECK( key );

    Place place = find( dict, key );
    return place.found ? qv::retain( dict->items[place.index].val ) : nullptr;
}

QV_BOOL qvDictHasObjKey( QV_DICT *dict, QV_OBJ *key )
{
    QV_CHECK( dict );
    QV_CHECK( key );

    return find( dict, key ).found ? QV_TRUE : QV_FALSE;
}

QV_INT qvDictIndexOfObjKey( QV_DICT *dict, QV_OBJ *key )
{
    QV_CHECK( dict );
    QV_CHECK( key );

    Place place = find( dict, key );
    return place.found ? place.index : -1;
}

void qvDictSetObjKey( QV_DICT **dict, QV_OBJ *key, QV_OBJ *value )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( key );
    QV_CHECK( value );

    setOwned( dict, qv::retain( key ), qv::retain( value ) );
}

void qvDictDelObjKey( QV_DICT **dict, QV_OBJ *key )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( key );

    Place place = find( *dict, key );

    if( place.found )
        deleteItem( dict, place.index );
}

namespace
{
// A boxed integer for the time of a search, without the allocation. No search keeps its key.
class IntKey
{
public:
    explicit IntKey( QV_INT value )
    {
        static_cast< QV_OBJ & >( box_ ) = QV___STATIC_HEADER( QV___OBJ_TYPE_OBJECT );
        box_.sort                       = &qv___sort_QV_BOXED_INT;
        box_.value                      = value;
    }

    operator QV_OBJ *()
    {
        return &box_;
    }

private:
    QV_BOXED_INT box_;
};

// A key that has been made for the call.
template< class T >
qv::Ref< QV_OBJ > made( T *owned )
{
    return qv::Ref< QV_OBJ >( qv::obj( owned ) );
}
} // namespace

// The forms of the five operations. KEY makes or gives the key for a search, NEW_KEY for the Dict.
#define KEY_FORMS( Kind, Suffix, PARAMETERS, KEY, NEW_KEY )                                                            \
    QV_OBJ *qvDict##Kind##Key##Suffix( QV_DICT *dict PARAMETERS )                                                      \
    {                                                                                                                  \
        QV_CHECK( dict );                                                                                              \
        auto object = KEY;                                                                                             \
        return qvDictObjKey( dict, object );                                                                           \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qvDictHas##Kind##Key##Suffix( QV_DICT *dict PARAMETERS )                                                   \
    {                                                                                                                  \
        QV_CHECK( dict );                                                                                              \
        auto object = KEY;                                                                                             \
        return qvDictHasObjKey( dict, object );                                                                        \
    }                                                                                                                  \
                                                                                                                       \
    QV_INT qvDictIndexOf##Kind##Key##Suffix( QV_DICT *dict PARAMETERS )                                                \
    {                                                                                                                  \
        QV_CHECK( dict );                                                                                              \
        auto object = KEY;                                                                                             \
        return qvDictIndexOfObjKey( dict, object );                                                                    \
    }                                                                                                                  \
                                                                                                                       \
    void qvDictSet##Kind##Key##Suffix( QV_DICT **dict PARAMETERS, QV_OBJ *value )                                      \
    {                                                                                                                  \
        QV_CHECK( dict );                                                                                              \
        QV_CHECK( *dict );                                                                                             \
        QV_CHECK( value );                                                                                             \
        auto object = NEW_KEY;                                                                                         \
        qvDictSetObjKey( dict, object, value );                                                                        \
    }                                                                                                                  \
                                                                                                                       \
    void qvDictDel##Kind##Key##Suffix( QV_DICT **dict PARAMETERS )                                                     \
    {                                                                                                                  \
        QV_CHECK( dict );                                                                                              \
        QV_CHECK( *dict );                                                                                             \
        auto object = KEY;                                                                                             \
        qvDictDelObjKey( dict, object );                                                                               \
    }

// Each begins with the comma behind the parameter in front of it.
#define NO_KEY
#define BOOL_KEY   , QV_BOOL key
#define INT_KEY    , QV_INT key
#define REAL_KEY   , QV_REAL key
#define SORT_KEY   , QV_SORT *key
#define STRING_KEY , QV_STRING *key
#define CSTR_KEY   , const char *text, QV_INT length
#define WCSTR_KEY  , const wchar_t *text, QV_INT length

#define NULL_OBJECT  made( qvBoxedNullCreate() )
#define BOOL_OBJECT  made( qvBoxedBoolCreate( key ) )
#define REAL_OBJECT  made( qvBoxedRealCreate( key ) )
#define CSTR_OBJECT  made( qvStringCreateFromCstr( text, length ) )
#define WCSTR_OBJECT made( qvStringCreateFromWcstr( text, length ) )

KEY_FORMS( Null, , NO_KEY, NULL_OBJECT, NULL_OBJECT )
KEY_FORMS( Bool, , BOOL_KEY, BOOL_OBJECT, BOOL_OBJECT )
KEY_FORMS( Int, , INT_KEY, IntKey( key ), made( qvBoxedIntCreate( key ) ) )
KEY_FORMS( Real, , REAL_KEY, REAL_OBJECT, REAL_OBJECT )
KEY_FORMS( Sort, , SORT_KEY, qv::obj( key ), qv::obj( key ) )
KEY_FORMS( String, , STRING_KEY, qv::obj( key ), qv::obj( key ) )
KEY_FORMS( String, Cstr, CSTR_KEY, CSTR_OBJECT, CSTR_OBJECT )
KEY_FORMS( String, Wcstr, WCSTR_KEY, WCSTR_OBJECT, WCSTR_OBJECT )

/* By value ------------------------------------------------------------------------------------------------------- */

void qvDictDelValue( QV_DICT **dict, QV_OBJ *value, QV_BOOL byCompare )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( value );

    if( (*dict)->length == 0 )
        return;

    qv::makePrivate( dict, qvDictCreateFrom );
    QV_DICT *own  = *dict;
    Item    *kept = own->items;

    for( Item *item = own->items; item != own->items + own->length; item++ )
    {
        if( item->val == value || ( byCompare && qvObjCompare( item->val, value ) == 0 ) )
            releaseItem( *item );
        else
            *kept++ = *item;
    }

    own->length = kept - own->items;

    if( own->length > 0 )
        compactAfter( own );
    else
        qvDictClear( dict );
}

/* Sets of keys --------------------------------------------------------------------------------------------------- */

namespace
{
// Enters many entries: first where each goes, then all in one pass from the end.
void includeMany( QV_DICT *own, QV_DICT *src, QV_BOOL overwrite )
{
    const QV_INT PRESENT = -1;

    QV_INT *places = static_cast< QV_INT * >( qvMemAllocN( src->length, sizeof( QV_INT ) ) );
    QV_INT  from   = 0;
    QV_INT  added  = 0;

    for( QV_INT i = 0; i < src->length; i++ )
    {
        Place place = findFrom( own, from, src->items[i].key );
        from        = place.index;
        places[i]   = place.found ? PRESENT : place.index;
        added += !place.found;

        if( place.found && overwrite )
            replaceItem( own, place.index, copyItem( src->items[i] ) );
    }

    if( added > 0 )
    {
        QV_CHECK_AS( QV_INT_ADD_OK( own->length, added ), "QV_INT_ADD_OK( (*dict)->length, 1 )" );
        growAccounted( own, added );

        if( front( own ) > 0 )
            moveItems( own->block, own->items, own->length );

        if( own->blockSize < own->alloc )
        {
            own->block     = static_cast< Item * >( qvMemReallocN( own->block, own->alloc, sizeof( Item ) ) );
            own->blockSize = own->alloc;
        }

        own->items = own->block;

        if( own->length == 0 )
        {
            own->digestSort   = src->digestSort;
            own->digestPrefix = src->digestPrefix;
        }

        Item  *to   = own->items + own->length + added;
        QV_INT rest = own->length;
        own->length += added;

        for( QV_INT i = src->length; i-- > 0; )
        {
            if( places[i] == PRESENT )
                continue;

            to -= rest - places[i];
            moveItems( to, own->items + places[i], rest - places[i] );
            rest  = places[i];
            *--to = copyItem( src->items[i] );
        }

        // The digests of the new items are those of `src`.
        if( own->digestSort != src->digestSort )
            own->digestSort = nullptr;
        else if( own->digestSort == &qv___sort_QV_STRING )
            digestCommon( own, src->digestPrefix );
    }

    qvMemFree( places );
}

// Deletes many keys in one pass. What a run of single deletions would account for follows from the lengths: each time
// more than 64 items are free, the accounted block becomes the length.
void excludeMany( QV_DICT **dest, QV_DICT *src )
{
    QV_DICT *own    = *dest;
    QV_INT   length = own->length;
    QV_INT   from   = 0; // where the next key is searched
    QV_INT   rest   = 0; // the first item that has not found its place
    QV_INT   to     = 0; // which is here

    for( QV_INT i = 0; i < src->length && from < length; i++ )
    {
        Place place = findFrom( own, from, src->items[i].key );
        from        = place.index;

        if( !place.found )
            continue;

        qv::makePrivate( dest, qvDictCreateFrom );
        own = *dest;
        releaseItem( own->items[from] );
        moveItems( own->items + to, own->items + rest, from - rest );
        to += from - rest;
        rest = ++from;
    }

    if( rest == 0 )
        return;

    moveItems( own->items + to, own->items + rest, length - rest );
    own->length = to + length - rest;

    if( own->length == 0 )
    {
        qvDictClear( dest );
        return;
    }

    QV_INT firstStep = std::min( length - 1, own->alloc - QV_DICT_OVERSIZED - 1 );

    if( own->length <= firstStep )
    {
        QV_INT step = QV_DICT_OVERSIZED + 1;
        own->alloc  = firstStep - ( firstStep - own->length ) / step * step;
        shrinkBlock( own );
    }
}
} // namespace

void qvDictInclude( QV_DICT **dest, QV_DICT *src, QV_BOOL overwrite )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    if( src->length == 0 )
        return;

    qv::Ref< QV_DICT > held = qv::Ref< QV_DICT >::share( *dest == src ? src : nullptr );
    qv::makePrivate( dest, qvDictCreateFrom );

    if( src->length >= SINGLE_PASS )
    {
        includeMany( *dest, src, overwrite );
        return;
    }

    for( QV_INT i = 0; i < src->length; i++ )
    {
        Item  item  = src->items[i];
        Place place = find( *dest, item.key );

        if( !place.found )
            insertItem( *dest, place, qv::retain( item.key ), qv::retain( item.val ) );
        else if( overwrite )
            replaceItem( *dest, place.index, copyItem( item ) );
    }
}

void qvDictExclude( QV_DICT **dest, QV_DICT *src )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    if( (*dest)->length == 0 || src->length == 0 )
        return;

    if( *dest == src )
    {
        qvDictClear( dest );
        return;
    }

    if( src->length >= SINGLE_PASS )
    {
        excludeMany( dest, src );
        return;
    }

    for( QV_INT i = 0; i < src->length; i++ )
        qvDictDelObjKey( dest, src->items[i].key );
}

void qvDictIntersect( QV_DICT **dest, QV_DICT *src, QV_BOOL useSrcValues )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    QV_DICT *old = *dest;

    if( old == src || old->length == 0 )
        return;

    qv::Ref< QV_DICT > result( qvDictCreate() );
    QV_INT             from = 0;

    for( QV_INT i = 0; i < old->length && from < src->length; i++ )
    {
        Place place = findFrom( src, from, old->items[i].key );
        from        = place.index;

        if( !place.found )
            continue;

        qv::makePrivate( result.at(), qvDictCreateFrom );
        QV_OBJ *value = useSrcValues ? src->items[place.index].val : old->items[i].val;
        insertItem( result, { result->length, false }, qv::retain( old->items[i].key ), qv::retain( value ) );
    }

    qv::assign( dest, result.give() );
}

QV_BOOL qvDictDisjoint( QV_DICT *dictA, QV_DICT *dictB )
{
    QV_CHECK( dictA );
    QV_CHECK( dictB );

    QV_DICT *few  = dictA->length < dictB->length ? dictA : dictB;
    QV_DICT *many = few == dictA ? dictB : dictA;
    QV_INT   from = 0;

    for( QV_INT i = 0; i < few->length && from < many->length; i++ )
    {
        Place place = findFrom( many, from, few->items[i].key );
        from        = place.index;

        if( place.found )
            return QV_FALSE;
    }

    return QV_TRUE;
}
