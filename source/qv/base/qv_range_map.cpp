#include "qv/base/qv_range_map.h"

#include "qv/base/qv_range_map_private.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_parts_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

namespace
{
using Entry = QV___RANGE_MAP_ENTRY;

const QV_INT GROWTH = 32; // free entries after the block has grown for one
const QV_INT SHRINK = 64; // entries that the block gives back at once

void reallocate( QV_RANGE_MAP *map, QV_INT alloc )
{
    map->ranges = static_cast< Entry * >( qvMemReallocN( map->ranges, alloc, sizeof( Entry ) ) );
    map->alloc  = alloc;
    qv___ObjDbgSetAllocationSizeN( map, alloc, sizeof( Entry ) );
}

// Opens a gap of one undefined entry.
Entry *makeRoom( QV_RANGE_MAP *map, QV_INT idx )
{
    if( map->length == map->alloc )
    {
        const QV_INT count = 1;
        QV_CHECK( QV_INT_ADD_OK( map->length, count ) );

        QV_INT alloc = QV_INT_ADD_OK( map->length, count + GROWTH ) ? count + GROWTH : count;
        QV_CHECK( QV_INT_ADD_OK( map->alloc, alloc ) );

        reallocate( map, map->alloc + alloc );
    }

    Entry *gap = map->ranges + idx;
    qvMemMoveN( gap + 1, gap, map->length - idx, sizeof( Entry ) );
    map->length++;

    return gap;
}

void insert( QV_RANGE_MAP *map, QV_INT idx, QV_INT startingKey, QV_INT endingKey, QV_OBJ *value )
{
    *makeRoom( map, idx ) = { startingKey, endingKey, qv::retain( value ) };
}

void compact( QV_RANGE_MAP *map )
{
    if( map->alloc > SHRINK && map->alloc - map->length >= SHRINK )
        reallocate( map, map->alloc - SHRINK );
}

void deleteRanges( QV_RANGE_MAP *map, QV_INT idx, QV_INT count )
{
    Entry *gap = map->ranges + idx;

    for( QV_INT i = 0; i < count; i++ )
        qv::release( gap[i].value );

    qvMemMoveN( gap, gap + count, map->length - idx - count, sizeof( Entry ) );
    map->length -= count;
    compact( map );
}

// Joins what touches and is equal among the ranges from `first` to `last`.
void collapse( QV_RANGE_MAP *map, QV_INT first, QV_INT last )
{
    QV_INT kept = first;

    for( QV_INT i = first + 1; i <= last; i++ )
    {
        Entry &before = map->ranges[kept];
        Entry &range  = map->ranges[i];

        if( before.endingKey + 1 == range.startingKey && qvObjCompare( before.value, range.value ) == 0 )
        {
            before.endingKey = range.endingKey;
            qv::release( range.value );
        }
        else
            map->ranges[++kept] = range;
    }

    Entry *gap = map->ranges + kept + 1;
    qvMemMoveN( gap, map->ranges + last + 1, map->length - last - 1, sizeof( Entry ) );
    map->length -= last - kept;
    compact( map );
}

// After a set at `idx`. All other neighbours have been joined already, so only this range's own two can be new.
void collapseAround( QV_RANGE_MAP *map, QV_INT idx )
{
    if( map->autoCollapse )
        collapse( map, qvIntMax( idx - 1, 0 ), qvIntMin( idx + 1, map->length - 1 ) );
}

// A place in the array: that of the `covered` ranges from `idx`, or the one in front of `idx` if there are none.
struct Place
{
    QV_INT idx;
    QV_INT covered;
};

// Splits and shortens what reaches into the interval from outside, and tells what lies inside. `idx` is the first
// range that does not end before the interval.
Place cut( QV_RANGE_MAP *map, QV_INT idx, QV_INT startingKey, QV_INT endingKey )
{
    if( idx < map->length && map->ranges[idx].startingKey < startingKey )
    {
        Entry *gap = makeRoom( map, idx );

        gap[0] = { gap[1].startingKey, startingKey - 1, qv::retain( gap[1].value ) };
        gap[1].startingKey = startingKey;
        idx++;
    }

    QV_INT end = idx;

    while( end < map->length && map->ranges[end].endingKey <= endingKey )
        end++;

    if( end < map->length && map->ranges[end].startingKey <= endingKey )
        map->ranges[end].startingKey = endingKey + 1;

    return { idx, end - idx };
}

QV_RANGE_MAP *createMap( QV_BOOL autoCollapse )
{
    QV_RANGE_MAP *map = qv::create< QV_RANGE_MAP >( qvRangeMapSort() );
    map->autoCollapse = autoCollapse;
    map->alloc        = 0;
    map->length       = 0;
    map->ranges       = nullptr;

    return map;
}

void freeMap( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_RANGE_MAP *map = qvRangeMapFrom( thisObj );

    for( QV_INT i = 0; i < map->length; i++ )
        qv::release( map->ranges[i].value );

    qvMemFree( map->ranges );
    qv___ObjDbgSetAllocationSize( map, 0 );
}

QV_INT order( QV_INT a, QV_INT b )
{
    return ( a > b ) - ( a < b );
}

QV_INT compareStep( QV_OBJ *thisObj, QV_OBJ *thatObj, QV___COMPARE_WALK *walk )
{
    QV_RANGE_MAP *a      = qvRangeMapFrom( thisObj );
    QV_RANGE_MAP *b      = qvRangeMapFrom( thatObj );
    QV_INT        common = qvIntMin( a->length, b->length );

    while( walk->at < common )
    {
        const Entry &x = a->ranges[walk->at];
        const Entry &y = b->ranges[walk->at++];

        if( QV_INT result = order( x.startingKey, y.startingKey ) )
            return result;

        if( QV_INT result = order( x.endingKey, y.endingKey ) )
            return result;

        if( QV_INT result = qv::comparePart( walk, x.value, y.value ) )
            return result;
    }

    return order( a->length, b->length );
}

QV_OBJ *textStep( QV_OBJ *thisObj, QV___TEXT_WALK *walk )
{
    QV_RANGE_MAP *map = qvRangeMapFrom( thisObj );

    if( walk->at == 0 )
        qvStringAppendChar( &walk->text, U'{' );

    while( walk->at < map->length )
    {
        if( walk->at > 0 )
            qvStringAppendChars( &walk->text, U", ", 2 );

        const Entry &range = map->ranges[walk->at++];
        qvStringAppendFormatCstr( &walk->text, "[%i,%i]=", -1, range.startingKey, range.endingKey );

        if( QV_OBJ *part = qv::textPart( walk, range.value ) )
            return part;
    }

    qvStringAppendChar( &walk->text, U'}' );

    return nullptr;
}
} // namespace

QV___FAMILY_OF_PARTS(
    RangeMap, QV_RANGE_MAP, freeMap, qv::compareByParts, qv::textByParts, compareStep, textStep )

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_RANGE_MAP *qvRangeMapCreate( void )
{
    return createMap( QV_FALSE );
}

QV_RANGE_MAP *qvRangeMapCreateAutoCollapsing( void )
{
    return createMap( QV_TRUE );
}

QV_RANGE_MAP *qvRangeMapCreateFrom( QV_RANGE_MAP *map )
{
    QV_CHECK( map );

    qv::Ref< QV_RANGE_MAP > copy( createMap( map->autoCollapse ) );

    for( QV_INT i = 0; i < map->length; i++ )
        qvRangeMapSetRangeKey(
            copy.at(), map->ranges[i].startingKey, map->ranges[i].endingKey, map->ranges[i].value );

    return copy.give();
}

void qvRangeMapClear( QV_RANGE_MAP **map )
{
    QV_CHECK( map );
    QV_CHECK( *map );

    qv::assign( map, qvRangeMapCreate() );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

QV_INT qvRangeMapLength( QV_RANGE_MAP *map )
{
    QV_CHECK( map );
    return map->length;
}

QV_BOOL qvRangeMapAutoCollapse( QV_RANGE_MAP *map )
{
    QV_CHECK( map );
    return map->autoCollapse;
}

QV_INT qvRangeMapStartingKeyAt( QV_RANGE_MAP *map, QV_INT idx )
{
    QV_CHECK( map );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < map->length );

    return map->ranges[idx].startingKey;
}

QV_INT qvRangeMapEndingKeyAt( QV_RANGE_MAP *map, QV_INT idx )
{
    QV_CHECK( map );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < map->length );

    return map->ranges[idx].endingKey;
}

QV_OBJ *qvRangeMapObjAt( QV_RANGE_MAP *map, QV_INT idx )
{
    QV_CHECK( map );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < map->length );

    return qv::retain( map->ranges[idx].value );
}

QV_INT qv___RangeMapFindAfterKey( QV_RANGE_MAP *map, QV_INT key )
{
    QV_CHECK( map );

    QV_INT lo = 0;
    QV_INT hi = map->length - 1;

    if( hi < 0 || map->ranges[hi].endingKey < key )
        return -1;

    if( map->ranges[lo].endingKey >= key )
        return lo;

    // The range at lo ends before the key, the one at hi doesn't.
    while( hi - lo > 1 )
    {
        QV_INT mid = lo + ( hi - lo ) / 2;
        ( map->ranges[mid].endingKey < key ? lo : hi ) = mid;
    }

    return hi;
}

QV_OBJ *qvRangeMapIntKey( QV_RANGE_MAP *map, QV_INT key )
{
    QV_INT idx = qv___RangeMapFindAfterKey( map, key );

    return idx >= 0 && map->ranges[idx].startingKey <= key ? qv::retain( map->ranges[idx].value ) : nullptr;
}

QV_BOOL qvRangeMapHasIntKey( QV_RANGE_MAP *map, QV_INT key )
{
    QV_INT idx = qv___RangeMapFindAfterKey( map, key );

    return idx >= 0 && map->ranges[idx].startingKey <= key ? QV_TRUE : QV_FALSE;
}

/* Changing ------------------------------------------------------------------------------------------------------- */

void qvRangeMapSetRangeKey( QV_RANGE_MAP **map, QV_INT startingKey, QV_INT endingKey, QV_OBJ *value )
{
    QV_CHECK( map );
    QV_CHECK( *map );
    QV_CHECK( endingKey >= startingKey );
    QV_CHECK( value );

    // The value can be the map itself; with one more reference the map counts as shared, and the copy is changed. It
    // can also be one that only a range cut away here holds.
    qv::Ref< QV_OBJ > held = qv::Ref< QV_OBJ >::share( value );
    qv::makePrivate( map, qvRangeMapCreateFrom );
    QV_CHECK( (*map)->alloc >= (*map)->length );

    QV_INT idx = qv___RangeMapFindAfterKey( *map, startingKey );

    if( idx < 0 )
        idx = (*map)->length;

    Place place = cut( *map, idx, startingKey, endingKey );

    if( place.covered == 0 )
        insert( *map, place.idx, startingKey, endingKey, value );
    else
    {
        Entry &range = (*map)->ranges[place.idx];
        qv::release( range.value );
        range = { startingKey, endingKey, held.give() };
        deleteRanges( *map, place.idx + 1, place.covered - 1 );
    }

    collapseAround( *map, place.idx );
}

void qvRangeMapSetIntKey( QV_RANGE_MAP **map, QV_INT key, QV_OBJ *value )
{
    qvRangeMapSetRangeKey( map, key, key, value );
}

void qvRangeMapDelRangeKey( QV_RANGE_MAP **map, QV_INT startingKey, QV_INT endingKey )
{
    QV_CHECK( map );
    QV_CHECK( *map );
    QV_CHECK( endingKey >= startingKey );

    QV_INT idx = qv___RangeMapFindAfterKey( *map, startingKey );

    if( idx < 0 || (*map)->ranges[idx].startingKey > endingKey )
        return;

    qv::makePrivate( map, qvRangeMapCreateFrom );

    Place place = cut( *map, idx, startingKey, endingKey );
    deleteRanges( *map, place.idx, place.covered );
}

void qvRangeMapDelIntKey( QV_RANGE_MAP **map, QV_INT key )
{
    qvRangeMapDelRangeKey( map, key, key );
}

void qvRangeMapSetAutoCollapse( QV_RANGE_MAP **map, QV_BOOL autoCollapse )
{
    QV_CHECK( map );
    QV_CHECK( *map );

    if( !autoCollapse == !(*map)->autoCollapse )
        return;

    qv::makePrivate( map, qvRangeMapCreateFrom );
    (*map)->autoCollapse = autoCollapse ? QV_TRUE : QV_FALSE;

    if( autoCollapse )
        qvRangeMapCollapse( map );
}

void qvRangeMapCollapse( QV_RANGE_MAP **map )
{
    QV_CHECK( map );
    QV_CHECK( *map );

    if( (*map)->length == 0 )
        return;

    qv::makePrivate( map, qvRangeMapCreateFrom );
    collapse( *map, 0, (*map)->length - 1 );
}
