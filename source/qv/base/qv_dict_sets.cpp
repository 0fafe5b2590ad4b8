// What takes or makes many entries at once. Each operation first looks for all places, with the Dicts held, since that
// calls compare functions; then changes what it has to, which calls nothing; and then releases what has come out.

#include "qv/base/qv_dict_tree_private.h"
#include "qv/base/qv_held_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

namespace
{
using Item  = QV___DICT_ITEM;
using Place = qv::DictPlace;

// Items in or out are cheaper one by one than all items anew if there are so many more that stay.
const QV_INT ONE_BY_ONE = 16;

// Plain numbers or items for the time of a call.
template< class T >
class Array
{
public:
    explicit Array( QV_INT size ) : items_( static_cast< T * >( qvMemAllocN( size, sizeof( T ) ) ) )
    {
    }

    ~Array()
    {
        qvMemFree( items_ );
    }

    Array( const Array & )            = delete;
    Array &operator=( const Array & ) = delete;

    void push( const T &item )
    {
        items_[length_++] = item;
    }

    const T &operator[]( QV_INT idx ) const
    {
        return items_[idx];
    }

    QV_INT length() const
    {
        return length_;
    }

private:
    T     *items_;
    QV_INT length_ = 0;
};

using Indexes = Array< QV_INT >;

// Goes through the keys of a Dict from the first to the last and finds them in another one, which isn't empty. Which of
// both is gone through is a matter of cost; which has the first argument of a comparison is one of the operation.
class Finder
{
public:
    explicit Finder( QV_DICT *dict, bool keyFirst = false ) : dict_( dict ), keyFirst_( keyFirst )
    {
    }

    // The next key. True if it is there.
    bool find( QV_OBJ *key )
    {
        place_ = qv::findInDictFrom( dict_, place_, key, keyFirst_ );
        return place_.found;
    }

    const Place &place() const
    {
        return place_;
    }

    QV_INT index() const
    {
        return qv::dictIndex( dict_, place_ );
    }

private:
    QV_DICT *dict_;
    bool     keyFirst_;
    Place    place_ = { 0, 0 };
};

void releaseAll( const Array< Item > &items )
{
    for( QV_INT i = 0; i < items.length(); i++ )
        qv::releaseItem( items[i] );
}

// Takes out what stands at ascending indexes, but not all that there is.
void takeItems( QV_DICT *dict, const Indexes &indexes, Array< Item > *gone )
{
    if( indexes.length() < dict->length / ONE_BY_ONE )
    {
        for( QV_INT i = indexes.length(); i-- > 0; )
            gone->push( qv::takeItem( dict, qv::dictPlace( dict, indexes[i] ) ) );

        return;
    }

    qv::DictBuilder  kept( dict->length - indexes.length() );
    qv::DictIterator item( dict, 0 );
    QV_INT           next = 0;

    for( QV_INT i = 0; item; i++, ++item )
    {
        if( next < indexes.length() && i == indexes[next] )
        {
            gone->push( *item );
            next++;
        }
        else
        {
            kept.append( *item, item.run() );
        }
    }

    kept.putInto( dict );
    QV_ASSERT( qv::isSoundDict( dict ) );
}

// Deletes what stands at ascending indexes in the Dict that is held. The accounted block shrinks at the end, or as it
// would if they were deleted one by one.
void deleteItems( QV_DICT **dict, qv::Ref< QV_DICT > &held, const Indexes &indexes, bool accountsForEach )
{
    QV_INT length = held->length - indexes.length();

    if( length == 0 )
    {
        qvDictClear( dict );
        return;
    }

    qv::goOnWith( dict, held );
    qv::makePrivate( dict, qvDictCreateFrom );

    if( indexes.length() == 0 )
    {
        qv::accountForLess( *dict );
        return;
    }

    // The first deletion that leaves too many free makes the accounted block as long as the Dict then is, and so does
    // each one that many later.
    const QV_INT STEP  = QV_DICT_OVERSIZED + 1;
    QV_INT       alloc = ( *dict )->alloc;
    QV_INT       first = std::min( ( *dict )->length - 1, alloc - STEP );

    Array< Item > gone( indexes.length() );
    takeItems( *dict, indexes, &gone );

    if( !accountsForEach )
        qv::accountForLess( *dict );
    else if( length <= first )
        qv::accountForDict( *dict, first - ( first - length ) / STEP * STEP );

    releaseAll( gone );
}
} // namespace

/* By value ------------------------------------------------------------------------------------------------------- */

void qvDictDelValue( QV_DICT **dict, QV_OBJ *value, QV_BOOL byCompare )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( value );

    if( ( *dict )->length == 0 )
        return;

    // The value may be one that only the Dict holds.
    qv::Ref< QV_DICT > held = qv::Ref< QV_DICT >::share( *dict );
    Indexes            indexes( held->length );
    QV_INT             idx = 0;

    for( const Item &item : qv::dictItems( held ) )
    {
        if( item.val == value || ( byCompare && qvObjCompare( item.val, value ) == 0 ) )
            indexes.push( idx );

        idx++;
    }

    deleteItems( dict, held, indexes, false );
}

/* By key --------------------------------------------------------------------------------------------------------- */

namespace
{
// Where an entry of another Dict goes: before the item at an index, or in its place.
struct Entry
{
    QV_INT  idx;
    bool    found;
    QV_OBJ *key;
    QV_OBJ *val;
};

// Makes all items anew, of both Dicts.
void merge( QV_DICT *own, QV_DICT *src, const Array< Entry > &entries, QV_INT added, Array< Item > *gone )
{
    qv::DictBuilder  all( own->length + added );
    qv::DictIterator item( own, 0 );
    qv::DictIterator other( src, 0 );
    QV_INT           idx = 0;

    for( QV_INT i = 0; i < entries.length(); i++ )
    {
        const Entry &entry = entries[i];

        for( ; idx < entry.idx; idx++, ++item )
            all.append( *item, item.run() );

        while( other->key != entry.key )
            ++other;

        qv::retain( entry.key );
        qv::retain( entry.val );
        all.append( *other, other.run() );

        if( entry.found )
        {
            gone->push( *item );
            idx++;
            ++item;
        }
    }

    for( ; item; ++item )
        all.append( *item, item.run() );

    all.putInto( own );
    QV_ASSERT( qv::isSoundDict( own ) );
}

void enterOneByOne( QV_DICT *own, const Array< Entry > &entries, Array< Item > *gone )
{
    for( QV_INT i = entries.length(); i-- > 0; )
    {
        const Entry &entry = entries[i];
        Place        place = qv::dictPlace( own, entry.idx );
        qv::retain( entry.key );
        qv::retain( entry.val );

        if( entry.found )
            gone->push( qv::replaceItem( own, place, entry.key, entry.val ) );
        else
            qv::enterItem( own, place, entry.key, entry.val );
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

    // Where both are the same, the one that changes becomes a copy.
    qv::Ref< QV_DICT > heldSrc = qv::Ref< QV_DICT >::share( src );
    qv::Ref< QV_DICT > held    = qv::Ref< QV_DICT >::share( *dest );
    Array< Entry >     entries( src->length );
    QV_INT             added = 0;
    Finder             finder( held );

    for( const Item &item : qv::dictItems( src ) )
    {
        bool found = held->length > 0 && finder.find( item.key );

        if( !found || overwrite )
            entries.push( { held->length > 0 ? finder.index() : 0, found, item.key, item.val } );

        added += !found;
    }

    qv::goOnWith( dest, held );
    qv::makePrivate( dest, qvDictCreateFrom );

    QV_DICT      *dict = *dest;
    Array< Item > gone( src->length );
    qv::accountForMore( dict, added );

    if( entries.length() < dict->length / ONE_BY_ONE )
        enterOneByOne( dict, entries, &gone );
    else if( entries.length() > 0 )
        merge( dict, src, entries, added, &gone );

    releaseAll( gone );
}

void qvDictExclude( QV_DICT **dest, QV_DICT *src )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    if( ( *dest )->length == 0 || src->length == 0 )
        return;

    if( *dest == src )
    {
        qvDictClear( dest );
        return;
    }

    qv::Ref< QV_DICT > heldSrc = qv::Ref< QV_DICT >::share( src );
    qv::Ref< QV_DICT > held    = qv::Ref< QV_DICT >::share( *dest );
    Indexes            indexes( std::min( held->length, src->length ) );

    if( src->length <= held->length )
    {
        Finder finder( held );

        for( const Item &item : qv::dictItems( src ) )
            if( finder.find( item.key ) )
                indexes.push( finder.index() );
    }
    else
    {
        Finder finder( src, true );
        QV_INT idx = 0;

        for( const Item &item : qv::dictItems( held ) )
        {
            if( finder.find( item.key ) )
                indexes.push( idx );

            idx++;
        }
    }

    if( indexes.length() > 0 )
        deleteItems( dest, held, indexes, true );
    else
        qv::goOnWith( dest, held );
}

void qvDictIntersect( QV_DICT **dest, QV_DICT *src, QV_BOOL useSrcValues )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    if( *dest == src || ( *dest )->length == 0 )
        return;

    if( src->length == 0 )
    {
        qvDictClear( dest );
        return;
    }

    // What stays, of the shorter one's keys. A key of `src` that is equal to one of `*dest` has its digest.
    struct Common
    {
        Item           item;
        QV___DICT_RUN *run;
    };

    qv::Ref< QV_DICT > heldSrc = qv::Ref< QV_DICT >::share( src );
    qv::Ref< QV_DICT > held    = qv::Ref< QV_DICT >::share( *dest );
    bool               walkSrc = src->length < held->length;
    QV_DICT           *few     = walkSrc ? src : held.get();
    QV_DICT           *many    = walkSrc ? held.get() : src;
    Array< Common >    common( few->length );
    Finder             finder( many, walkSrc );

    for( qv::DictIterator item( few, 0 ); item; ++item )
    {
        if( !finder.find( item->key ) )
            continue;

        QV___DICT_RUN *run   = qv::dictRun( many, finder.place().run );
        const Item    &other = run->items()[finder.place().idx];
        Common         both  = walkSrc ? Common{ other, run } : Common{ *item, item.run() };

        if( useSrcValues )
            both.item.val = walkSrc ? item->val : other.val;

        common.push( both );
    }

    if( common.length() == 0 )
    {
        qvDictClear( dest );
        return;
    }

    qv::Ref< QV_DICT > empty( qvDictCreate() ), result( qvDictCreateFrom( empty ) );
    qv::DictBuilder    all( common.length() );

    for( QV_INT i = 0; i < common.length(); i++ )
    {
        qv::retain( common[i].item.key );
        qv::retain( common[i].item.val );
        all.append( common[i].item, common[i].run );
    }

    qv::accountForMore( result, common.length() );
    all.putInto( result );
    QV_ASSERT( qv::isSoundDict( result ) );
    qv::assign( dest, result.give() );
}

QV_BOOL qvDictDisjoint( QV_DICT *dictA, QV_DICT *dictB )
{
    QV_CHECK( dictA );
    QV_CHECK( dictB );

    if( dictA->length == 0 || dictB->length == 0 )
        return QV_TRUE;

    qv::Ref< QV_DICT > few  = qv::Ref< QV_DICT >::share( dictA->length < dictB->length ? dictA : dictB );
    qv::Ref< QV_DICT > many = qv::Ref< QV_DICT >::share( few == dictA ? dictB : dictA );
    Finder             finder( many );

    for( const Item &item : qv::dictItems( few ) )
        if( finder.find( item.key ) )
            return QV_FALSE;

    return QV_TRUE;
}
