#include "qv/base/qv_range_map.h"

#include "qv/base/qv_held_private.h"
#include "qv/base/qv_range_map_private.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_parts_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_order_private.h"

namespace
{
using Entry = QV___RANGE_MAP_ENTRY;

// Values that a change takes out of a map. They are released when it is done, as their free functions may use the map.
class Gone
{
public:
    Gone()                          = default;
    Gone( const Gone & )            = delete;
    Gone &operator=( const Gone & ) = delete;

    ~Gone()
    {
        for( QV_INT i = 0; i < length_; i++ )
            qv::release( values_[i] );

        if( values_ != near_ )
            qvMemFree( values_ );
    }

    void push( QV_OBJ *value )
    {
        if( length_ == size_ )
        {
            QV_OBJ **old = values_ == near_ ? nullptr : values_;
            QV_OBJ **far = static_cast< QV_OBJ ** >( qvMemReallocN( old, size_ * 2, sizeof( QV_OBJ * ) ) );

            if( !old )
                qvMemCopyN( far, near_, length_, sizeof( QV_OBJ * ) );

            values_ = far;
            size_ *= 2;
        }

        values_[length_++] = value;
    }

private:
    static constexpr QV_INT NEAR = 8;

    QV_OBJ  *near_[NEAR];
    QV_OBJ **values_ = near_;
    QV_INT   length_ = 0;
    QV_INT   size_   = NEAR;
};

#if QV___ASSERTIONS
// The range is in order, and so are the bounds to its neighbours.
[[maybe_unused]] bool isSoundRange( QV_RANGE_MAP *map, QV_INT idx )
{
    const Entry &range = map->first[idx];

    return range.value && range.startingKey <= range.endingKey
           && ( idx == 0 || map->first[idx - 1].endingKey < range.startingKey );
}
#endif

// What must be true after each change; the block watches itself. All ranges are looked at where there are few, and now
// and then.
[[maybe_unused]] bool isSoundRangeMap( [[maybe_unused]] QV_RANGE_MAP *map, [[maybe_unused]] QV_INT idx )
{
#if QV___ASSERTIONS
    bool   isWhole = map->length <= 48 || map->length % 64 == 0;
    QV_INT end     = isWhole ? map->length : qvIntMin( idx + 2, map->length );

    for( QV_INT i = isWhole ? 0 : qvIntMax( qvIntMin( idx, end ) - 1, 0 ); i < end; i++ )
        if( !isSoundRange( map, i ) )
            return false;
#endif
    return true;
}

// Opens a gap of one undefined range.
Entry *openRange( QV_RANGE_MAP *map, QV_INT idx )
{
    if( map->length == map->alloc() )
    {
        const QV_INT count = 1;
        QV_CHECK( QV_INT_ADD_OK( map->length, count ) );
        QV_CHECK_AS(
            QV_INT_ADD_OK( map->alloc(), count + qv::RangeMapRules::GROWTH ), "QV_INT_ADD_OK( map->alloc, alloc )" );
    }

    return map->openGap( idx, 1 );
}

// Takes out ranges whose values others have now, and gives memory back.
void closeRanges( QV_RANGE_MAP *map, QV_INT idx, QV_INT count )
{
    if( idx == 0 )
        map->dropFront( count );
    else
        map->dropInside( idx, count );

    map->compact();
}

void deleteRanges( QV_RANGE_MAP *map, QV_INT idx, QV_INT count, Gone *gone )
{
    for( QV_INT i = idx; i < idx + count; i++ )
        gone->push( map->first[i].value );

    closeRanges( map, idx, count );
}

// Joins what touches and is equal among the ranges from `first` to `last`. Values are compared before anything changes:
// compare functions may use the map's variable.
void collapse( QV_RANGE_MAP **map, QV_INT first, QV_INT last, Gone *gone )
{
    qv::Ref< QV_RANGE_MAP > held  = qv::Ref< QV_RANGE_MAP >::share( *map );
    const Entry            *range = held->first;
    QV_INT                  count = last - first + 1;
    bool                    near[4];
    bool                   *joins  = count <= 4 ? near : static_cast< bool * >( qvMemAllocN( count, sizeof( bool ) ) );
    QV_INT                  joined = 0;

    for( QV_INT i = first + 1, kept = first; i <= last; i++ )
    {
        bool touches     = range[i - 1].endingKey + 1 == range[i].startingKey;
        joins[i - first] = touches && qvObjCompare( range[kept].value, range[i].value ) == 0;
        joined += joins[i - first];
        kept = joins[i - first] ? kept : i;
    }

    qv::goOnWith( map, held );

    qv::makePrivate( map, qvRangeMapCreateFrom );

    if( joined > 0 )
    {
        Entry *kept = ( *map )->first + first;

        for( QV_INT i = first + 1; i <= last; i++ )
        {
            Entry &next = ( *map )->first[i];

            if( !joins[i - first] )
            {
                *++kept = next;
                continue;
            }

            kept->endingKey = next.endingKey;
            gone->push( next.value );
        }

        closeRanges( *map, last + 1 - joined, joined );
    }
    else
    {
        ( *map )->compact();
    }

    if( joins != near )
        qvMemFree( joins );

    QV_ASSERT( isSoundRangeMap( *map, first ) );
}

// After a set at `idx`. All other neighbours have been joined already, so only this range's own two can be new.
void collapseAroundRange( QV_RANGE_MAP **map, QV_INT idx, Gone *gone )
{
    if( ( *map )->autoCollapse )
        collapse( map, qvIntMax( idx - 1, 0 ), qvIntMin( idx + 1, ( *map )->length - 1 ), gone );
}

// A place among the ranges: that of the `covered` ones from `idx` on, or before `idx` if there are none.
struct Place
{
    QV_INT idx;
    QV_INT covered;
};

// Splits and shortens what reaches into the interval from outside, and tells what lies inside. `idx` is the first
// range that does not end before the interval.
Place cutRanges( QV_RANGE_MAP *map, QV_INT idx, QV_INT startingKey, QV_INT endingKey )
{
    if( idx < map->length && map->first[idx].startingKey < startingKey )
    {
        Entry *gap = openRange( map, idx );

        gap[0]             = { gap[1].startingKey, startingKey - 1, qv::retain( gap[1].value ) };
        gap[1].startingKey = startingKey;
        idx++;
    }

    QV_INT end = idx;

    while( end < map->length && map->first[end].endingKey <= endingKey )
        end++;

    if( end < map->length && map->first[end].startingKey <= endingKey )
        map->first[end].startingKey = endingKey + 1;

    return { idx, end - idx };
}

QV_RANGE_MAP *createMap( QV_BOOL autoCollapse )
{
    QV_RANGE_MAP *map = qv::create< QV_RANGE_MAP >( qvRangeMapSort() );
    map->autoCollapse = autoCollapse;
    map->initBlock();

    return map;
}

void freeRangeMap( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_RANGE_MAP *map = qvRangeMapFrom( thisObj );

    QV_ASSERT( isSoundRangeMap( map, 0 ) );

    for( QV_INT i = 0; i < map->length; i++ )
        qv::release( map->first[i].value );

    map->freeBlock();
}

QV_INT compareRangeMapsStep( QV_OBJ *thisObj, QV_OBJ *thatObj, QV___COMPARE_WALK *walk )
{
    QV_RANGE_MAP *a      = qvRangeMapFrom( thisObj );
    QV_RANGE_MAP *b      = qvRangeMapFrom( thatObj );
    QV_INT        common = qvIntMin( a->length, b->length );

    while( walk->at < common )
    {
        const Entry &x = a->first[walk->at];
        const Entry &y = b->first[walk->at++];

        if( QV_INT result = qv::order( x.startingKey, y.startingKey ) )
            return result;

        if( QV_INT result = qv::order( x.endingKey, y.endingKey ) )
            return result;

        if( QV_INT result = qv::comparePart( walk, x.value, y.value ) )
            return result;
    }

    return qv::order( a->length, b->length );
}

QV_OBJ *rangeMapToStringStep( QV_OBJ *thisObj, QV___TEXT_WALK *walk )
{
    QV_RANGE_MAP *map = qvRangeMapFrom( thisObj );

    if( walk->at == 0 )
        qvStringAppendChar( &walk->text, U'{' );

    while( walk->at < map->length )
    {
        if( walk->at > 0 )
            qvStringAppendChars( &walk->text, U", ", 2 );

        const Entry &range = map->first[walk->at++];
        qvStringAppendFormatCstr( &walk->text, "[%i,%i]=", -1, range.startingKey, range.endingKey );

        if( QV_OBJ *part = qv::textPart( walk, range.value ) )
            return part;
    }

    qvStringAppendChar( &walk->text, U'}' );

    return nullptr;
}
} // namespace

QV___FAMILY_OF_PARTS(
    RangeMap, QV_RANGE_MAP, freeRangeMap, qv::compareByParts, qv::textByParts, compareRangeMapsStep,
    rangeMapToStringStep )

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

    // Values are compared where they touch, where the map may be released meanwhile.
    qv::Ref< QV_RANGE_MAP > held = qv::Ref< QV_RANGE_MAP >::share( map );
    qv::Ref< QV_RANGE_MAP > copy( createMap( map->autoCollapse ) );

    for( QV_INT i = 0; i < map->length; i++ )
        qvRangeMapSetRangeKey( copy.at(), map->first[i].startingKey, map->first[i].endingKey, map->first[i].value );

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

    return map->first[idx].startingKey;
}

QV_INT qvRangeMapEndingKeyAt( QV_RANGE_MAP *map, QV_INT idx )
{
    QV_CHECK( map );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < map->length );

    return map->first[idx].endingKey;
}

QV_OBJ *qvRangeMapObjAt( QV_RANGE_MAP *map, QV_INT idx )
{
    QV_CHECK( map );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < map->length );

    return qv::retain( map->first[idx].value );
}

QV_INT qv___RangeMapFindAfterKey( QV_RANGE_MAP *map, QV_INT key )
{
    QV_CHECK( map );

    QV_INT lo = 0;
    QV_INT hi = map->length - 1;

    if( hi < 0 || map->first[hi].endingKey < key )
        return -1;

    if( map->first[lo].endingKey >= key )
        return lo;

    return qv::bisect( lo, hi, [&]( QV_INT idx ) { return map->first[idx].endingKey < key ? -1 : 1; } ).idx;
}

QV_OBJ *qvRangeMapIntKey( QV_RANGE_MAP *map, QV_INT key )
{
    QV_INT idx = qv___RangeMapFindAfterKey( map, key );

    return idx >= 0 && map->first[idx].startingKey <= key ? qv::retain( map->first[idx].value ) : nullptr;
}

QV_BOOL qvRangeMapHasIntKey( QV_RANGE_MAP *map, QV_INT key )
{
    QV_INT idx = qv___RangeMapFindAfterKey( map, key );

    return idx >= 0 && map->first[idx].startingKey <= key ? QV_TRUE : QV_FALSE;
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
    Gone              gone;
    qv::makePrivate( map, qvRangeMapCreateFrom );
    QV_CHECK_AS( ( *map )->alloc() >= ( *map )->length, "(*map)->alloc >= (*map)->length" );

    QV_INT idx = qv___RangeMapFindAfterKey( *map, startingKey );

    if( idx < 0 )
        idx = ( *map )->length;

    Place place = cutRanges( *map, idx, startingKey, endingKey );

    if( place.covered == 0 )
    {
        *openRange( *map, place.idx ) = { startingKey, endingKey, held.give() };
    }
    else
    {
        Entry &range = ( *map )->first[place.idx];
        gone.push( range.value );
        range = { startingKey, endingKey, held.give() };
        deleteRanges( *map, place.idx + 1, place.covered - 1, &gone );
    }

    QV_ASSERT( isSoundRangeMap( *map, place.idx ) );
    collapseAroundRange( map, place.idx, &gone );
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

    if( idx < 0 || ( *map )->first[idx].startingKey > endingKey )
        return;

    Gone gone;
    qv::makePrivate( map, qvRangeMapCreateFrom );

    Place place = cutRanges( *map, idx, startingKey, endingKey );
    deleteRanges( *map, place.idx, place.covered, &gone );
    QV_ASSERT( isSoundRangeMap( *map, place.idx ) );
}

void qvRangeMapDelIntKey( QV_RANGE_MAP **map, QV_INT key )
{
    qvRangeMapDelRangeKey( map, key, key );
}

void qvRangeMapSetAutoCollapse( QV_RANGE_MAP **map, QV_BOOL autoCollapse )
{
    QV_CHECK( map );
    QV_CHECK( *map );

    if( !autoCollapse == !( *map )->autoCollapse )
        return;

    qv::makePrivate( map, qvRangeMapCreateFrom );
    ( *map )->autoCollapse = autoCollapse ? QV_TRUE : QV_FALSE;

    if( autoCollapse )
        qvRangeMapCollapse( map );
}

void qvRangeMapCollapse( QV_RANGE_MAP **map )
{
    QV_CHECK( map );
    QV_CHECK( *map );

    if( ( *map )->length == 0 )
        return;

    Gone gone;
    qv::makePrivate( map, qvRangeMapCreateFrom );
    collapse( map, 0, ( *map )->length - 1, &gone );
}
