#include "qv/base/qv_dict.h"

#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_dict_tree_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_parts_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_order_private.h"

#include <algorithm>
#include <stddef.h>

QV_DICT *qv___DictEmpty = nullptr;

QV___HIDDEN QV_SORT qv___sort_QV_STRING;

namespace
{
using Item  = QV___DICT_ITEM;
using Place = qv::DictPlace;

QV_DICT *createEmpty( qv::ObjBatch *batch = nullptr )
{
    QV_DICT *dict  = batch ? static_cast< QV_DICT * >( batch->create( sizeof( QV_DICT ), 0 ) )
                           : qv::create< QV_DICT >( qvDictSort() );
    dict->alloc    = 0;
    dict->length   = 0;
    dict->run      = nullptr;
    dict->hasIndex = 0;

    return dict;
}

// True for objects whose end ends no others.
bool isLeaf( QV_OBJ *object )
{
    return object->sort == &qv___sort_QV_STRING || ( object->sort && !object->sort->freeFunc );
}

// Releases what all items hold.
void releaseItems( QV_DICT *dict )
{
    const QV_INT AHEAD = 16; // items

    qv::ObjReleases  keys, values;
    qv::DictIterator ahead( dict, AHEAD );

    for( const Item &item : qv::dictItems( dict ) )
    {
        if( ahead )
        {
            qv::fetchObject( ahead->key );
            qv::fetchObject( ahead->val );
            ++ahead;
        }

        if( item.key == item.val )
        {
            qv::releaseItem( item );
            continue;
        }

        keys.release( item.key, isLeaf( item.key ) );
        values.release( item.val, isLeaf( item.val ) );
    }
}

void freeDict( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_DICT *dict = qvDictFrom( thisObj );
    QV_ASSERT( qv::isSoundDict( dict ) );

    releaseItems( dict );
    qv::freeRuns( dict );

    if( dict->alloc > 0 )
        qv___ObjDbgSetAllocationSize( dict, 0 );
}

// The keys are the even parts, the values the odd ones.
QV_INT compareDictsStep( QV_OBJ *thisObj, QV_OBJ *thatObj, QV___COMPARE_WALK *walk )
{
    QV_DICT         *a = qvDictFrom( thisObj );
    QV_DICT         *b = qvDictFrom( thatObj );
    qv::DictIterator itemA( a, walk->at / 2 );
    qv::DictIterator itemB( b, walk->at / 2 );

    while( itemA && itemB )
    {
        if( walk->at++ % 2 == 0 )
        {
            if( QV_INT order = qv::comparePart( walk, itemA->key, itemB->key ) )
                return order;
        }
        else
        {
            if( QV_INT order = qv::comparePart( walk, itemA->val, itemB->val ) )
                return order;

            ++itemA;
            ++itemB;
        }
    }

    return qv::order( a->length, b->length );
}

QV_OBJ *dictToStringStep( QV_OBJ *thisObj, QV___TEXT_WALK *walk )
{
    QV_DICT         *dict = qvDictFrom( thisObj );
    qv::DictIterator item( dict, walk->at / 2 );

    if( walk->at == 0 )
        qvStringAppendChar( &walk->text, U'{' );

    while( item )
    {
        bool    isKey = walk->at % 2 == 0;
        QV_OBJ *part  = isKey ? item->key : item->val;

        if( !isKey )
            qvStringAppendChar( &walk->text, U'=' );
        else if( walk->at > 0 )
            qvStringAppendChars( &walk->text, U", ", 2 );

        if( walk->at++; !isKey )
            ++item;

        if( ( part = qv::textPart( walk, part ) ) )
            return part;
    }

    qvStringAppendChar( &walk->text, U'}' );
    return nullptr;
}
} // namespace

QV___FAMILY_OF_PARTS( Dict, QV_DICT, freeDict, qv::compareByParts, qv::textByParts, compareDictsStep, dictToStringStep )

void qv___DictStartup( void )
{
    qv___DictEmpty = createEmpty();
}

void qv___DictShutdown( void )
{
    qv::drop( qv___DictEmpty );
}

/* Accounts ------------------------------------------------------------------------------------------------------- */

void qv::accountForDict( QV_DICT *dict, QV_INT alloc )
{
    // A thread that changes a Dict is alone with it: a plain store does what the exported functions do with a locked
    // instruction.
    QV_ASSERT( !isShared( dict ) );
    dict->alloc = alloc;
    __atomic_store_n( &dict->dbgAllocationSize, alloc * ACCOUNTED_DICT_ITEM, __ATOMIC_RELAXED );
}

void qv::accountForMore( QV_DICT *dict, QV_INT count )
{
    QV_CHECK_AS( QV_INT_ADD_OK( dict->length, count ), "QV_INT_ADD_OK( (*dict)->length, 1 )" );
    QV_INT length = dict->length + count;

    if( length > dict->alloc )
        accountForDict( dict, dict->alloc + ( ( length - dict->alloc - 1 ) / QV_DICT_GROWTH + 1 ) * QV_DICT_GROWTH );

    QV_CHECK_AS( dict->alloc >= length, "(*dict)->alloc > (*dict)->length" );
}

void qv::accountForLess( QV_DICT *dict )
{
    if( dict->length < dict->alloc - QV_DICT_OVERSIZED )
        accountForDict( dict, dict->length );
}

/* Changes of one entry ------------------------------------------------------------------------------------------- */

void qv::releaseItem( const QV___DICT_ITEM &item )
{
    // Both references at once where they are to one object.
    if( item.key == item.val )
    {
        if( qv___AtomicAdd32( &item.key->retainCount, -2 ) == 0 )
            qv___ObjFree( item.key );

        return;
    }

    release( item.key );
    release( item.val );
}

// Where one of the references is to the Dict itself, it has made it shared, and the Dict goes in as it was.
void qv::setInDict( QV_DICT **dict, QV_OBJ *key, QV_OBJ *value )
{
    DictPlace place = findToChange( dict, key );
    makePrivate( dict, qvDictCreateFrom );

    if( place.found )
    {
        releaseItem( replaceItem( *dict, place, key, value ) );
        return;
    }

    accountForMore( *dict, 1 );
    enterItem( *dict, place, key, value );
}

namespace
{
void deleteItem( QV_DICT **dict, const Place &place )
{
    if( ( *dict )->length == 1 )
    {
        qvDictClear( dict );
        return;
    }

    qv::makePrivate( dict, qvDictCreateFrom );
    Item old = qv::takeItem( *dict, place );
    QV_CHECK_AS( old.key, "(*dict)->items[ idx ].key" );
    QV_CHECK_AS( old.val, "(*dict)->items[ idx ].val" );
    qv::accountForLess( *dict );
    qv::releaseItem( old );
}
} // namespace

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_DICT *qv::createDictWithRoom( QV_INT count, ObjBatch *batch )
{
    if( count == 0 )
        return qvDictCreate();

    QV_DICT *dict = createEmpty( batch );
    makeDictRun( dict, count );

    return dict;
}

QV_DICT *qv::createDictOfKeys( QV_DICT *src )
{
    QV_DICT *dict = createEmpty();

    if( src->length > 0 )
    {
        accountForMore( dict, src->length );
        DictBuilder keys( src->length );

        for( DictIterator item( src, 0 ); item; ++item )
        {
            retainMore( item->key, 2 );
            keys.append( { item->key, { item->key }, item->digest }, item.run() );
        }

        keys.putInto( dict );
        QV_ASSERT( isSoundDict( dict ) );
    }

    return dict;
}

QV_DICT *qvDictCreate( void )
{
    return qv::retainOfRun( qv___DictEmpty );
}

QV_DICT *qvDictCreateFrom( QV_DICT *src )
{
    QV_CHECK( src );

    QV_DICT *result = createEmpty();

    if( src->length > 0 )
    {
        qv::accountForMore( result, src->length );
        qv::copyItems( result, src );
        QV_ASSERT( qv::isSoundDict( result ) );
    }

    return result;
}

QV_DICT *qvDictCreateWithKeysAndValues( QV_VECTOR *keysVector, QV_VECTOR *valuesVector )
{
    QV_CHECK( keysVector );
    QV_CHECK( valuesVector );
    QV_CHECK( qvVectorLength( keysVector ) == qvVectorLength( valuesVector ) );

    // With one more reference nobody changes them while keys are compared.
    qv::Ref< QV_VECTOR > keys   = qv::Ref< QV_VECTOR >::share( keysVector );
    qv::Ref< QV_VECTOR > values = qv::Ref< QV_VECTOR >::share( valuesVector );
    qv::Ref< QV_DICT >   result( qvDictCreate() );

    for( QV_INT i = keys->length; i-- > 0; )
        qvDictSetObjKey( result.at(), qv::objs( keys )[i], qv::objs( values )[i] );

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
    Ref< QV_DICT > held;
    DictPlace      place = findInDict( dict, key, &held );
    *found               = place.found;

    return dictIndex( dict, place );
}

void qv::insertIntoDict( QV_DICT **dict, QV_INT idx, QV_OBJ *key, QV_OBJ *value )
{
    makePrivate( dict, qvDictCreateFrom );
    DictPlace place = dictPlace( *dict, idx );

    accountForMore( *dict, 1 );
    enterItem( *dict, place, key, value );
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

    // A free function may use the variable. To it the Dict is empty, and shared, so that it stays as it is.
    qv::Ref< QV_DICT > own    = qv::Ref< QV_DICT >::share( *dict );
    QV_DICT            ending = *own; // not an object: what has the items from here on
    own->run                  = nullptr;
    own->hasIndex             = 0;
    own->length               = 0;

    releaseItems( &ending );
    qv::emptyRuns( &ending );
    own->run = ending.run;
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

    return qv::retain( qv::dictItem( dict, idx ).key );
}

QV_OBJ *qvDictValueAt( QV_DICT *dict, QV_INT idx )
{
    QV_CHECK( dict );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < dict->length );

    return qv::retain( qv::dictItem( dict, idx ).val );
}

static_assert(
    sizeof( QV_DICT_ENTRY ) == sizeof( Item ) && offsetof( QV_DICT_ENTRY, key ) == offsetof( Item, key )
    && offsetof( QV_DICT_ENTRY, value ) == offsetof( Item, val ) );

const QV_DICT_ENTRY *qvDictBacking( QV_DICT *dict, QV_INT idx, QV_INT *count )
{
    QV_CHECK( dict );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx <= dict->length );
    QV_CHECK( count );

    *count = 0;

    if( idx == dict->length )
        return nullptr;

    Place          place = qv::dictPlace( dict, idx );
    QV___DICT_RUN *run   = qv::dictRun( dict, place.run );
    *count               = run->length - place.idx;

    return reinterpret_cast< const QV_DICT_ENTRY * >( run->items() + place.idx );
}

void qvDictSetValueAt( QV_DICT **dict, QV_INT idx, QV_OBJ *value )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( value );
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx < ( *dict )->length, "idx < (*dict)->length" );

    qv::retain( value );
    qv::makePrivate( dict, qvDictCreateFrom );
    qv::assign( &qv::dictItem( *dict, idx ).val, value );
}

void qvDictDelAt( QV_DICT **dict, QV_INT idx )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx < ( *dict )->length, "idx < (*dict)->length" );

    deleteItem( dict, qv::dictPlace( *dict, idx ) );
}

namespace
{
QV_VECTOR *vectorOf( QV_DICT *dict, QV_OBJ *Item::*field )
{
    QV_CHECK( dict );

    if( dict->length == 0 )
        return qvVectorCreate();

    QV_OBJ **objs = static_cast< QV_OBJ ** >( qvMemAllocN( dict->length, sizeof( QV_OBJ * ) ) );
    QV_OBJ **next = objs;

    for( const Item &item : qv::dictItems( dict ) )
        *next++ = qv::retain( item.*field );

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

QV_INT qvDictIndexOfObjKey( QV_DICT *dict, QV_OBJ *key )
{
    QV_CHECK( dict );
    QV_CHECK( key );

    qv::Ref< QV_DICT > held;
    Place              place = qv::findInDict( dict, key, &held );

    return place.found ? qv::dictIndex( dict, place ) : -1;
}

void qvDictDelObjKey( QV_DICT **dict, QV_OBJ *key )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( key );

    Place place = qv::findToChange( dict, key );

    if( place.found )
        deleteItem( dict, place );
}

void qv::updateDict(
    QV_DICT **dict, QV_OBJ *key, QV_OBJ *( *keep )( QV_OBJ *key ), QV_DICT_UPDATE_FUNC update, void *data )
{
    QV_CHECK( key );
    QV_CHECK( update );

    Place    place = findToChange( dict, key );
    QV_OBJ **field = nullptr;
    QV_OBJ  *value = nullptr;

    // The function may change or release what the caller has lent as the key.
    Ref< QV_OBJ > newKey( place.found ? nullptr : keep( key ) );

    if( place.found )
    {
        makePrivate( dict, qvDictCreateFrom );

        // Meanwhile the item has an object that needs no reference: a list of all objects may find the Dict.
        field = &dictItem( *dict, place ).val;
        value = std::exchange( *field, obj( qvDictSort() ) );
    }

    QV_DICT *own = std::exchange( *dict, nullptr );
    update( &value, data );
    QV_CHECK_AS( !*dict, "!*dict" );
    *dict = own;

    if( field )
    {
        *field = value ? value : retain( dictItem( own, place ).key );

        if( !value )
            deleteItem( dict, place );
    }
    else if( value )
    {
        // What goes in may be the Dict itself, which is shared then.
        makePrivate( dict, qvDictCreateFrom );
        accountForMore( *dict, 1 );
        enterItem( *dict, place, newKey.give(), value );
    }
}

void qvDictUpdateObjKey( QV_DICT **dict, QV_OBJ *key, QV_DICT_UPDATE_FUNC update, void *data )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );

    qv::updateDict( dict, key, []( QV_OBJ *own ) { return qv::retain( own ); }, update, data );
}
