#include "qv/base/qv_priority_map.h"

#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_held_private.h"
#include "qv/base/qv_priority_map_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_order_private.h"

using Entry = QV___PRIORITY_MAP_ENTRY;

namespace
{
Entry *entryOf( QV_OBJ *object )
{
    return static_cast< Entry * >( object );
}

void freePriorityMapEntry( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qv___PriorityMapEntryFrom( thisObj )->object );
}

// By priority, then by the objects, of which null is the lowest.
QV_INT comparePriorityMapEntries( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    Entry *a = qv___PriorityMapEntryFrom( thisObj );
    Entry *b = qv___PriorityMapEntryFrom( thatObj );

    if( QV_INT order = qv::order( a->priority, b->priority ) )
        return order;

    if( a->object && b->object )
        return qvObjCompare( a->object, b->object );

    return qv::order( a->object != nullptr, b->object != nullptr );
}

Entry *createEntry( QV_INT priority, QV_OBJ *object )
{
    Entry *entry    = qv::create< Entry >( qv___PriorityMapEntrySort() );
    entry->priority = priority;
    entry->object   = qv::retain( object );

    return entry;
}

void freePriorityMap( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_PRIORITY_MAP *map = qvPriorityMapFrom( thisObj );
    qv::drop( map->byPriority );
    qv::drop( map->byObject );
}

QV_INT comparePriorityMaps( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    return qvDictCompare( qvPriorityMapFrom( thisObj )->byPriority, qvPriorityMapFrom( thatObj )->byPriority );
}

QV_PRIORITY_MAP *createMap( QV_DICT *byPriority, QV_DICT *byObject )
{
    QV_PRIORITY_MAP *map = qv::create< QV_PRIORITY_MAP >( qvPriorityMapSort() );
    map->byPriority      = byPriority;
    map->byObject        = byObject;

    return map;
}

// The object at an index, which may lie outside the map, and its priority where that is asked for.
QV_OBJ *neighbour( QV_PRIORITY_MAP *map, QV_INT idx, QV_INT *priority )
{
    if( priority )
        *priority = 0;

    if( idx < 0 || idx >= map->byPriority->length )
        return nullptr;

    Entry *entry = entryOf( qv::dictItem( map->byPriority, idx ).key );

    if( priority )
        *priority = entry->priority;

    return qv::retain( entry->object );
}

// Takes the entry of the object at an index of `byObject` out of the order of priorities. Nobody else holds the map.
void takeEntry( QV_PRIORITY_MAP *map, QV_INT objectIdx )
{
    QV_INT idx = qvDictIndexOfObjKey( map->byPriority, qv::dictItem( map->byObject, objectIdx ).val );
    QV_CHECK( idx != -1 );
    qvDictDelAt( &map->byPriority, idx );
}

// Makes a map private and holds it for a change of both Dicts: compare functions run in between, and may use the
// variable, where they find the map shared then.
qv::Ref< QV_PRIORITY_MAP > holdPrivate( QV_PRIORITY_MAP **map )
{
    qv::makePrivate( map, qvPriorityMapCreateFrom );
    return qv::Ref< QV_PRIORITY_MAP >::share( *map );
}

// What must be true after each change, looked at where a map is small and now and then where it is large. The order of
// the keys the Dicts watch themselves.
[[maybe_unused]] bool isSoundPriorityMap( QV_PRIORITY_MAP *map )
{
    if( map->byPriority->length != map->byObject->length )
        return false;

    if( map->byPriority->length > 48 && map->byPriority->length % 64 != 0 )
        return true;

    QV_INT before = QV_INT_MIN;

    for( const QV___DICT_ITEM &item : qv::dictItems( map->byPriority ) )
    {
        if( entryOf( item.key )->object != item.val || entryOf( item.key )->priority < before )
            return false;

        before = entryOf( item.key )->priority;
    }

    for( const QV___DICT_ITEM &item : qv::dictItems( map->byObject ) )
        if( entryOf( item.val )->object != item.key )
            return false;

    return true;
}

// The end of a change.
void settle( QV_PRIORITY_MAP **map, qv::Ref< QV_PRIORITY_MAP > &held )
{
    QV_ASSERT( isSoundPriorityMap( held ) );
    qv::goOnWith( map, held );
}
} // namespace

QV___FAMILY( ___PriorityMapEntry, QV___PRIORITY_MAP_ENTRY, freePriorityMapEntry, comparePriorityMapEntries, nullptr )
QV___FAMILY( PriorityMap, QV_PRIORITY_MAP, freePriorityMap, comparePriorityMaps, nullptr )

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_PRIORITY_MAP *qvPriorityMapCreate( void )
{
    return createMap( qvDictCreate(), qvDictCreate() );
}

QV_PRIORITY_MAP *qvPriorityMapCreateFrom( QV_PRIORITY_MAP *map )
{
    QV_CHECK( map );
    return createMap( qv::retain( map->byPriority ), qv::retain( map->byObject ) );
}

void qvPriorityMapClear( QV_PRIORITY_MAP **map )
{
    QV_CHECK( map );
    QV_CHECK( *map );

    qv::assign( map, qvPriorityMapCreate() );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

QV_INT qvPriorityMapLength( QV_PRIORITY_MAP *map )
{
    QV_CHECK( map );
    return map->byPriority->length;
}

QV_INT qvPriorityMapPriorityAt( QV_PRIORITY_MAP *map, QV_INT idx )
{
    QV_CHECK( map );

    qv::Ref< QV_OBJ > entry( qvDictKeyAt( map->byPriority, idx ) );
    return entryOf( entry )->priority;
}

QV_OBJ *qvPriorityMapValueAt( QV_PRIORITY_MAP *map, QV_INT idx )
{
    QV_CHECK( map );
    return qvDictValueAt( map->byPriority, idx );
}

QV_VECTOR *qvPriorityMapValuesVector( QV_PRIORITY_MAP *map )
{
    QV_CHECK( map );
    return qvDictValuesVector( map->byPriority );
}

QV_BOOL qvPriorityMapHas( QV_PRIORITY_MAP *map, QV_OBJ *obj )
{
    QV_CHECK( map );
    QV_CHECK( obj );

    return qvDictHasObjKey( map->byObject, obj );
}

QV_INT qvPriorityMapIndexOf( QV_PRIORITY_MAP *map, QV_OBJ *obj )
{
    QV_CHECK( map );
    QV_CHECK( obj );

    // Compare functions may use the variable that the map is from.
    qv::Ref< QV_PRIORITY_MAP > held = qv::Ref< QV_PRIORITY_MAP >::share( map );
    QV_INT                     idx  = qvDictIndexOfObjKey( map->byObject, obj );

    return idx == -1 ? -1 : qvDictIndexOfObjKey( map->byPriority, qv::dictItem( map->byObject, idx ).val );
}

QV_OBJ *qvPriorityMapHighest( QV_PRIORITY_MAP *map, QV_INT *priority )
{
    QV_CHECK( map );
    return neighbour( map, map->byPriority->length - 1, priority );
}

QV_OBJ *qvPriorityMapLowest( QV_PRIORITY_MAP *map, QV_INT *priority )
{
    QV_CHECK( map );
    return neighbour( map, 0, priority );
}

QV_OBJ *qvPriorityMapHigher( QV_PRIORITY_MAP *map, QV_OBJ *obj, QV_INT *priority )
{
    qv::Ref< QV_PRIORITY_MAP > held = qv::Ref< QV_PRIORITY_MAP >::share( map );
    QV_INT                     idx  = qvPriorityMapIndexOf( map, obj );

    return neighbour( map, idx == -1 ? -1 : idx + 1, priority );
}

QV_OBJ *qvPriorityMapLower( QV_PRIORITY_MAP *map, QV_OBJ *obj, QV_INT *priority )
{
    qv::Ref< QV_PRIORITY_MAP > held = qv::Ref< QV_PRIORITY_MAP >::share( map );
    QV_INT                     idx  = qvPriorityMapIndexOf( map, obj );

    return neighbour( map, idx - 1, priority );
}

/* Changing ------------------------------------------------------------------------------------------------------- */

void qvPriorityMapSet( QV_PRIORITY_MAP **map, QV_INT priority, QV_OBJ *obj )
{
    QV_CHECK( map );
    QV_CHECK( *map );
    QV_CHECK( obj );

    // Where the object is the map itself, it goes in as it was: this makes it shared.
    qv::Ref< QV_OBJ >          heldObj = qv::Ref< QV_OBJ >::share( qv::obj( *map ) == obj ? obj : nullptr );
    qv::Ref< QV_PRIORITY_MAP > own     = holdPrivate( map );
    QV_INT                     idx     = qvDictIndexOfObjKey( own->byObject, obj );
    bool                       isThere = idx != -1;

    if( !isThere || entryOf( qv::dictItem( own->byObject, idx ).val )->priority != priority )
    {
        if( isThere )
            takeEntry( own, idx );

        // An object that moves keeps its place in `byObject`, where only the entry is replaced.
        qv::Ref< Entry > entry( createEntry( priority, obj ) );
        qvDictSetObjKey( &own->byPriority, entry, obj );
        qvDictSetObjKey( &own->byObject, obj, entry );
    }

    settle( map, own );
}

void qvPriorityMapDel( QV_PRIORITY_MAP **map, QV_OBJ *obj )
{
    QV_CHECK( map );
    QV_CHECK( *map );
    QV_CHECK( obj );

    qv::Ref< QV_PRIORITY_MAP > found = qv::Ref< QV_PRIORITY_MAP >::share( *map );
    QV_INT                     idx   = qvDictIndexOfObjKey( found->byObject, obj );
    qv::goOnWith( map, found );

    if( idx == -1 )
        return;

    qv::Ref< QV_PRIORITY_MAP > own = holdPrivate( map );
    takeEntry( own, idx );
    qvDictDelAt( &own->byObject, idx );
    settle( map, own );
}

void qvPriorityMapDelAt( QV_PRIORITY_MAP **map, QV_INT idx )
{
    QV_CHECK( map );
    QV_CHECK( *map );

    qv::Ref< QV_PRIORITY_MAP > own = holdPrivate( map );
    qv::Ref< QV_OBJ >          object( qvDictValueAt( own->byPriority, idx ) );
    qvDictDelAt( &own->byPriority, idx );
    qvDictDelObjKey( &own->byObject, object );
    settle( map, own );
}
