#include "qv/base/qv_store.h"

#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_format.h"
#include "qv/base/qv_scan_private.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_parts_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_levels_private.h"
#include "qv/sys/qv_order_private.h"

#include <algorithm>
#include <utility>

namespace
{
using qv::STORE_STORES;
using qv::STORE_VALUES;
using qv::StoreTable;

// The value of a String key, borrowed, or null.
template< class T >
T *findEntry( QV_DICT *dict, QV_STRING *key )
{
    QV_INT idx = qvDictIndexOfObjKey( dict, key );

    return idx < 0 ? nullptr : static_cast< T * >( qv::dictItem( dict, idx ).val );
}

bool hasKey( QV_DICT *dict, QV_STRING *key )
{
    return qvDictIndexOfObjKey( dict, key ) >= 0;
}

// Takes over the tables.
QV_STORE *createStore( QV_DICT *values, QV_DICT *stores, QV_DICT *addresses, qv::ObjBatch *batch = nullptr )
{
    QV_STORE *store  = batch ? static_cast< QV_STORE * >( batch->create( sizeof( QV_STORE ), 0 ) )
                             : qv::create< QV_STORE >( qvStoreSort() );
    store->values    = values;
    store->stores    = stores;
    store->addresses = addresses;

    return store;
}

void freeStore( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_STORE *store = qvStoreFrom( thisObj );

    qv::drop( store->values );
    qv::drop( store->stores );
    qv::drop( store->addresses );
}

// The order of the keys of two tables.
QV_INT compareAddresses( QV_DICT *a, QV_DICT *b )
{
    if( a == b )
        return 0;

    qv::DictIterator itemA( a, 0 ), itemB( b, 0 );

    for( ; itemA && itemB; ++itemA, ++itemB )
        if( itemA->key != itemB->key )
            if( QV_INT order = qvObjCompare( itemA->key, itemB->key ) )
                return order;

    return qv::order( a->length, b->length );
}

QV_INT compareStoresStep( QV_OBJ *thisObj, QV_OBJ *thatObj, QV___COMPARE_WALK *walk )
{
    QV_STORE *a = qvStoreFrom( thisObj );
    QV_STORE *b = qvStoreFrom( thatObj );

    if( walk->at == 0 )
        if( QV_INT order = compareAddresses( qv::addressesOf( a ), qv::addressesOf( b ) ) )
            return order;

    QV_DICT *const parts[][2] = { { a->values, b->values }, { a->stores, b->stores } };

    while( walk->at < 2 )
    {
        QV_DICT *const *part = parts[walk->at++];

        if( QV_INT order = qv::comparePart( walk, part[0], part[1] ) )
            return order;
    }

    return 0;
}

// The checks of an operation's arguments: of one that reads a store, and of one that changes it.
#define CHECK_READ( store, address )                                                                                   \
    QV_CHECK( store );                                                                                                 \
    QV_CHECK( address );                                                                                               \
    QV_CHECK( qvStoreAddressOk( address ) )

#define CHECK_WRITE( store, address )                                                                                  \
    QV_CHECK( store );                                                                                                 \
    QV_CHECK( *store );                                                                                                \
    QV_CHECK( address );                                                                                               \
    QV_CHECK( qvStoreAddressOk( address ) )

// Deletes an entry of one table, if there is one, and the address unless the other table has it too.
void deleteEntry( QV_STORE **store, StoreTable table, StoreTable other, QV_STRING *address )
{
    if( !hasKey( *store->*table, address ) )
        return;

    // The entry can hold the only reference to it.
    qv::Ref< QV_STRING > held = qv::Ref< QV_STRING >::share( address );

    qv::makePrivate( store, qvStoreCreateFrom );
    qvDictDelObjKey( &( *store->*table ), address );

    if( ( *store )->addresses->length > 0 && !hasKey( *store->*other, address ) )
        qvDictDelObjKey( &( *store )->addresses, address );

    QV_ASSERT( qv::isSoundStore( *store, address ) );
}

// Reads a value with `scan`, which is true if the whole value is of its kind.
template< class T, class Scan >
QV_BOOL scanValue( QV_STORE *store, T *out, QV_STRING *address, const Scan &scan )
{
    CHECK_READ( store, address );

    QV_STRING *value  = findEntry< QV_STRING >( store->values, address );
    T          result = 0;
    bool       ok     = value && scan( value, &result );

    if( out )
        *out = ok ? result : 0;

    return ok ? QV_TRUE : QV_FALSE;
}
} // namespace

QV___FAMILY_OF_PARTS( Store, QV_STORE, freeStore, qv::compareByParts, nullptr, compareStoresStep, nullptr )

/* Entries -------------------------------------------------------------------------------------------------------- */

namespace
{
// Enters the keys of one of a store's tables into the table of its addresses.
void includeKeys( QV_DICT **addresses, QV_DICT *table )
{
    for( const QV___DICT_ITEM &item : qv::dictItems( table ) )
        if( qvDictIndexOfObjKey( *addresses, item.key ) < 0 )
            qvDictSetObjKey( addresses, item.key, item.key );
}
} // namespace

void qv::makeAddresses( QV_STORE *store )
{
    QV_DICT *many = store->values, *few = store->stores;

    if( store->addresses->length > 0 || many->length == 0 || few->length == 0 )
        return;

    if( many->length < few->length )
        std::swap( many, few );

    assign( &store->addresses, createDictOfKeys( many ) );
    includeKeys( &store->addresses, few );
}

void qv::makeAddressesFor( QV_STORE *store, StoreTable table )
{
    QV_DICT *other = store->*( table == STORE_VALUES ? STORE_STORES : STORE_VALUES );

    if( store->addresses->length == 0 && other->length > 0 )
        assign( &store->addresses, createDictOfKeys( other ) );
}

void qv::setInStore( QV_STORE *store, StoreTable table, QV_STRING *address, QV_OBJ *value )
{
    makeAddressesFor( store, table );

    if( store->addresses->length > 0 )
        qvDictSetObjKey( &store->addresses, address, address );

    qvDictSetObjKey( &( store->*table ), address, value );
    QV_ASSERT( isSoundStore( store, address ) );
}

QV_INT qv::valueInStore( QV_STORE **store, QV_STRING *address )
{
    return store && *store ? qvDictIndexOfObjKey( ( *store )->values, address ) : -1;
}

void qv::replaceInStore( QV_STORE **store, QV_INT idx, QV_STRING *value )
{
    makePrivate( store, qvStoreCreateFrom );
    makePrivate( &( *store )->values, qvDictCreateFrom );

    QV___DICT_ITEM &item = dictItem( ( *store )->values, idx );
    assign( &item.val, obj( value ) );
    QV_ASSERT( isSoundStore( *store, static_cast< QV_STRING * >( item.key ) ) );
}

namespace
{
bool isSoundEntry( QV_STORE *store, QV_STRING *address )
{
    QV_INT     idx   = qvDictIndexOfObjKey( qv::addressesOf( store ), address );
    QV_STRING *value = findEntry< QV_STRING >( store->values, address );
    QV_STORE  *sub   = findEntry< QV_STORE >( store->stores, address );

    if( ( idx >= 0 ) != ( value || sub ) || ( value && qvObjSort( value ) != qvStringSort() )
        || ( sub && qvObjSort( sub ) != qvStoreSort() ) )
        return false;

    if( idx < 0 || store->addresses->length == 0 )
        return true;

    const QV___DICT_ITEM &item = qv::dictItem( store->addresses, idx );

    return item.val == item.key && qvObjSort( item.key ) == qvStringSort();
}
} // namespace

bool qv::isSoundStore( QV_STORE *store, QV_STRING *address )
{
    const QV_INT SMALL = 8; // stores that are looked at as a whole

    QV_INT values = store->values->length;
    QV_INT stores = store->stores->length;
    QV_INT length = addressesOf( store )->length;

    if( length < std::max( values, stores ) || length > values + stores || qv___ObjDbgAllocationSize( store ) != 0 )
        return false;

    if( length <= SMALL )
        for( const QV___DICT_ITEM &item : dictItems( addressesOf( store ) ) )
            if( !isSoundEntry( store, static_cast< QV_STRING * >( item.key ) ) )
                return false;

    return isSoundEntry( store, address );
}

/* Whole stores --------------------------------------------------------------------------------------------------- */

QV_STORE *qvStoreCreate( void )
{
    return createStore( qvDictCreate(), qvDictCreate(), qvDictCreate() );
}

QV_STORE *qv::createStoreIn( ObjBatch *batch )
{
    return createStore( qvDictCreate(), qvDictCreate(), qvDictCreate(), batch );
}

QV_STORE *qvStoreCreateFrom( QV_STORE *source )
{
    QV_CHECK( source );

    return createStore( qv::retain( source->values ), qv::retain( source->stores ), qv::retain( source->addresses ) );
}

void qvStoreClear( QV_STORE **store )
{
    QV_CHECK( store );
    QV_CHECK( *store );

    qv::assign( store, qvStoreCreate() );
}

QV_INT qvStoreLength( QV_STORE *store )
{
    QV_CHECK( store );
    return qv::addressesOf( store )->length;
}

QV_STRING *qvStoreAddressAt( QV_STORE *store, QV_INT index )
{
    QV_CHECK( store );
    return static_cast< QV_STRING * >( qvDictKeyAt( qv::addressesOf( store ), index ) );
}

QV_VECTOR *qvStoreAddressesVector( QV_STORE *store )
{
    QV_CHECK( store );
    return qvDictKeysVector( qv::addressesOf( store ) );
}

QV_VECTOR *qvStoreValueAddressesVector( QV_STORE *store )
{
    QV_CHECK( store );
    return qvDictKeysVector( store->values );
}

QV_VECTOR *qvStoreStoreAddressesVector( QV_STORE *store )
{
    QV_CHECK( store );
    return qvDictKeysVector( store->stores );
}

QV_BOOL qvStoreAddressOk( QV_STRING *address )
{
    QV_CHECK( address );

    const QV_CHAR *chars = qv::chars( address );
    const QV_CHAR *end   = chars + address->length;

    return address->length > 0 && qv::skipAddressChars( chars, end ) == end ? QV_TRUE : QV_FALSE;
}

namespace
{
// Enters what `from` has and `into` lacks, with the sub-stores as they are. Returns the index of the first sub-store of
// `from` that can differ from the one of `into` at its address.
QV_INT includeLevel( QV_STORE *into, QV_STORE *from )
{
    QV_INT firstStore = into->stores == from->stores ? from->stores->length : 0;

    bool hasOwn = into->addresses->length > 0;

    if( hasOwn && from->addresses->length == 0 )
        includeKeys( &into->addresses, qv::addressesOf( from ) );
    else if( hasOwn && into->addresses != from->addresses )
        qvDictInclude( &into->addresses, from->addresses, QV_FALSE );

    if( into->values != from->values )
        qvDictInclude( &into->values, from->values, QV_FALSE );

    if( into->stores != from->stores )
        qvDictInclude( &into->stores, from->stores, QV_FALSE );

    qv::makeAddresses( into );
    QV_ASSERT(
        qvStoreLength( from ) == 0
        || qv::isSoundStore( into, static_cast< QV_STRING * >( qv::dictItem( qv::addressesOf( from ), 0 ).key ) ) );

    return firstStore;
}
} // namespace

void qvStoreMerge( QV_STORE **store, QV_STORE *other )
{
    QV_CHECK( store );
    QV_CHECK( *store );
    QV_CHECK( other );

    // A store lacks nothing that it has itself. The same holds below for sub-stores that both share.
    if( *store == other )
        return;

    // `other` can be a sub-store of `*store`. With one more reference it is copied before it is changed there.
    qv::Ref< QV_STORE > held = qv::Ref< QV_STORE >::share( other );

    qv::makePrivate( store, qvStoreCreateFrom );

    // `into` is held by its parent alone and can be written; `next` is the index of the next sub-store of `from` to
    // merge. The parents hold both stores: while a level is open, its parent changes no entry but that one.
    struct Level
    {
        QV_STORE *into;
        QV_STORE *from;
        QV_INT    next;
    };

    qv::Levels< Level > levels;
    Level               at = { *store, other, includeLevel( *store, other ) };

    do
    {
        while( at.next < at.from->stores->length )
        {
            const QV___DICT_ITEM &item = qv::dictItem( at.from->stores, at.next++ );
            QV_INT                idx  = qvDictIndexOfObjKey( at.into->stores, item.key );
            QV_ASSERT( idx >= 0 );

            if( qv::dictItem( at.into->stores, idx ).val == item.val )
                continue;

            // The sub-store is changed where it is, so that it is copied only if it is shared.
            qv::makePrivate( &at.into->stores, qvDictCreateFrom );
            QV_STORE *from = static_cast< QV_STORE * >( item.val );
            QV_STORE *into = static_cast< QV_STORE * >( qv::dictItem( at.into->stores, idx ).val );

            if( qv::isShared( into ) )
            {
                qv::Ref< QV_STORE > copy( qvStoreCreateFrom( into ) );
                qvDictSetValueAt( &at.into->stores, idx, copy );
                into = copy;
            }

            levels.push( at );
            at = { into, from, includeLevel( into, from ) };
        }
    } while( levels.pop( &at ) );
}

/* One entry: addresses ------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreHasAddress( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return hasKey( qv::addressesOf( store ), address ) ? QV_TRUE : QV_FALSE;
}

/* One entry: values ---------------------------------------------------------------------------------------------- */

QV_STRING *qvStoreValue( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return static_cast< QV_STRING * >( qvDictObjKey( store->values, address ) );
}

QV_BOOL qvStoreHasValue( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return hasKey( store->values, address ) ? QV_TRUE : QV_FALSE;
}

void qvStoreSetValue( QV_STORE **store, QV_STRING *address, QV_STRING *value )
{
    CHECK_WRITE( store, address );
    QV_CHECK( value );

    qv::makePrivate( store, qvStoreCreateFrom );
    qv::setInStore( *store, STORE_VALUES, address, value );
}

void qvStoreDelValue( QV_STORE **store, QV_STRING *address )
{
    CHECK_WRITE( store, address );
    deleteEntry( store, STORE_VALUES, STORE_STORES, address );
}

QV_BOOL qvStoreValueBool( QV_STORE *store, QV_BOOL *out, QV_STRING *address )
{
    return scanValue(
        store, out, address,
        []( QV_STRING *value, QV_BOOL *result ) { return qv::scansAsBool( value, QV_TRUE, result ); } );
}

QV_BOOL qvStoreHasValueBool( QV_STORE *store, QV_STRING *address )
{
    return qvStoreValueBool( store, nullptr, address );
}

void qvStoreSetValueBool( QV_STORE **store, QV_STRING *address, QV_BOOL value )
{
    qv::Ref< QV_STRING > text( qvFormatEncodeBool( value, 0, 0 ) );
    qvStoreSetValue( store, address, text );
}

QV_BOOL qvStoreValueInt( QV_STORE *store, QV_INT *out, QV_STRING *address )
{
    return scanValue(
        store, out, address, []( QV_STRING *value, QV_INT *result ) { return qv::scansAsInt( value, -1, result ); } );
}

QV_BOOL qvStoreHasValueInt( QV_STORE *store, QV_STRING *address )
{
    return qvStoreValueInt( store, nullptr, address );
}

void qvStoreSetValueInt( QV_STORE **store, QV_STRING *address, QV_INT value )
{
    qv::Ref< QV_STRING > text( qvFormatEncodeInt( value, 10, 0, 0 ) );
    qvStoreSetValue( store, address, text );
}

QV_BOOL qvStoreValueReal( QV_STORE *store, QV_REAL *out, QV_STRING *address )
{
    return scanValue(
        store, out, address, []( QV_STRING *value, QV_REAL *result ) { return qv::scansAsReal( value, -1, result ); } );
}

QV_BOOL qvStoreHasValueReal( QV_STORE *store, QV_STRING *address )
{
    return qvStoreValueReal( store, nullptr, address );
}

void qvStoreSetValueReal( QV_STORE **store, QV_STRING *address, QV_REAL value )
{
    qv::Ref< QV_STRING > text( qvFormatEncodeReal( value, 10, 0, -1, 0 ) );
    qvStoreSetValue( store, address, text );
}

/* One entry: sub-stores ------------------------------------------------------------------------------------------ */

QV_STORE *qvStoreStore( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return static_cast< QV_STORE * >( qvDictObjKey( store->stores, address ) );
}

QV_BOOL qvStoreHasStore( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return hasKey( store->stores, address ) ? QV_TRUE : QV_FALSE;
}

void qvStoreSetStore( QV_STORE **store, QV_STRING *address, QV_STORE *other )
{
    CHECK_WRITE( store, address );
    QV_CHECK( other );

    // `other` can be `*store` itself. With one more reference `*store` is copied, and the copy is changed.
    qv::Ref< QV_STORE > held = qv::Ref< QV_STORE >::share( other );

    qv::makePrivate( store, qvStoreCreateFrom );
    qv::setInStore( *store, STORE_STORES, address, other );
}

void qvStoreDelStore( QV_STORE **store, QV_STRING *address )
{
    CHECK_WRITE( store, address );
    deleteEntry( store, STORE_STORES, STORE_VALUES, address );
}

#undef CHECK_READ
#undef CHECK_WRITE
