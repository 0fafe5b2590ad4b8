// Dicts beside std::map, up to some thousand entries, which come and go in runs of every order, with keys of several
// sorts. Arguments are often objects that only the Dict itself holds.

#include "qv_fuzz_walk.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_dict.h"

#include <compare>
#include <map>

using namespace qv::fuzz;
using qv::Ref;

namespace
{
// The kinds in the order of the names of their sorts.
enum Kind
{
    BOOL,
    INT,
    NONE,
    REAL,
    STRING
};

struct Key
{
    int    kind;
    QV_INT number; // a Real is half of it
    Text   text;

    auto operator<=>( const Key & ) const = default;

    Ref< QV_OBJ > object() const
    {
        return kind == INT ? boxedInt( number )
                           : Ref< QV_OBJ >(
                                 kind == BOOL   ? qvBoxedBoolObj( qvBoxedBoolCreate( number != 0 ) )
                                 : kind == NONE ? qvBoxedNullObj( qvBoxedNullCreate() )
                                 : kind == REAL ? qvBoxedRealObj( qvBoxedRealCreate( double( number ) / 2 ) )
                                                : qvStringObj( stringOf( text ).give() ) );
    }
};

// The objects that stand in the Dict, and the number of a value; Dicts as values have none.
struct Entry
{
    QV_OBJ *key, *value;
    QV_INT  number;
};

const QV_INT NO_NUMBER = -1;

struct Model
{
    std::map< Key, Entry > map;
    QV_INT                 alloc  = 0;
    bool                   shared = false;

    QV_INT length() const
    {
        return lengthOf( map );
    }

    // A copy has the block that entering its entries one by one leads to.
    void own( bool also = false )
    {
        if( shared || also )
            alloc = ( length() + 31 ) / 32 * 32;

        shared = false;
    }

    void set( const Key &key, Entry entry )
    {
        if( !map.contains( key ) && length() >= alloc )
            alloc += 32;

        map.insert_or_assign( key, entry );
    }

    void erased()
    {
        if( map.empty() )
            alloc = 0;
        else if( length() < alloc - 64 )
            alloc = length();
    }

    void erase( const Key &key )
    {
        if( !map.contains( key ) )
            return;

        if( length() > 1 )
            own();

        map.erase( key );
        erased();
    }
};

struct DictWalk : SlotWalk< DictWalk, QV_DICT, Model, qvDictCreate >
{
    using SlotWalk::SlotWalk;

    Slot         *changed = nullptr;
    unsigned      step    = 0;
    Ref< QV_OBJ > keyObj, valueObj; // what an operation has made, for its time

    Slot &destination()
    {
        changed = &any();
        keyObj.reset();
        valueObj.reset();
        return *changed;
    }

    void clear()
    {
        Slot &slot = destination();
        qvDictClear( slot.ref.at() );
        slot.model = Model();
    }

    Key key()
    {
        int kind = static_cast< int >( in.below( 8 ) );

        if( kind == NONE )
            return { NONE, 0, {} };

        return kind == BOOL    ? Key{ BOOL, in.below( 2 ), {} }
               : kind < STRING ? Key{ kind, in.number() >> ( kind == REAL ? 11 : 0 ), {} } // each is a real of its own
                               : Key{ STRING, 0, in.text( 80 ) };
    }

    // The key of an entry, if there is any, or another one; `obj` gets the very object in the Dict or an equal one.
    Key key( Slot &slot, QV_OBJ **obj )
    {
        Key key = DictWalk::key();

        if( slot.model.length() > 0 && in.below( 4 ) )
        {
            auto at = std::next( slot.model.map.begin(), in.index( slot.model.map ) );
            key     = at->first;
            *obj    = at->second.key;

            if( in.flag() )
                return key;
        }

        keyObj = key.object();
        *obj   = keyObj;

        return key;
    }

    Entry value( Slot &slot )
    {
        if( slot.model.length() > 0 && in.flag() )
            return std::next( slot.model.map.begin(), in.index( slot.model.map ) )->second;

        QV_INT number = in.below( 6 );
        valueObj      = boxedInt( number );

        return { nullptr, valueObj, number };
    }

    void set()
    {
        Slot &slot  = destination();
        Entry entry = value( slot );
        Key   k     = key( slot, &entry.key );
        qvDictSetObjKey( slot.ref.at(), entry.key, entry.value );
        slot.model.own();
        slot.model.set( k, entry );
    }

    void setAt()
    {
        Slot &slot = destination();

        if( slot.model.length() == 0 )
            return;

        QV_INT idx   = in.index( slot.model.map );
        Entry  entry = value( slot ), &at = qv::fuzz::at( slot.model.map, idx ).second;
        qvDictSetValueAt( slot.ref.at(), idx, entry.value );
        slot.model.own();
        at = { at.key, entry.value, entry.number };
    }

    void erase()
    {
        Slot   &slot = destination();
        QV_OBJ *obj;
        Key     k = key( slot, &obj );

        if( in.flag() )
            qvDictDelObjKey( slot.ref.at(), obj );
        else if( qvDictHasObjKey( slot.ref, obj ) )
            qvDictDelAt( slot.ref.at(), qvDictIndexOfObjKey( slot.ref, obj ) );

        slot.model.erase( k );
    }

    void eraseValue()
    {
        Slot &slot      = destination();
        bool  byCompare = in.flag();
        Entry entry     = value( slot );

        if( slot.model.length() == 0 )
            return;

        qvDictDelValue( slot.ref.at(), entry.value, byCompare );
        slot.model.own();
        std::erase_if(
            slot.model.map,
            [&]( auto &item )
            {
                return item.second.value == entry.value
                       || ( byCompare && entry.number != NO_NUMBER && item.second.number == entry.number );
            } );
        slot.model.erased();
    }

    // Entries come or go, neighbours in every order: to either end, towards the middle or from there, and scattered.
    void run()
    {
        Slot  &slot  = destination();
        QV_INT start = in.below( 2000 ), count = std::min< QV_INT >( in.length( 1000 ), 3000 - slot.model.length() );
        QV_INT order = in.below( 5 ), form = in.below( 3 ), number = in.below( 6 );
        bool   deletes = in.below( 4 ) == 0;
        auto   place   = [&]( QV_INT i )
        {
            QV_INT fromEnds = i % 2 ? count - 1 - i / 2 : i / 2;
            return order == 0   ? i
                   : order == 1 ? count - 1 - i
                   : order == 2 ? fromEnds
                   : order == 3 ? count - 1 - fromEnds
                                : i * 37 % count;
        };

        for( QV_INT i = 0; i < count; i++ )
        {
            QV_INT at = start + place( i );
            char   text[40];
            snprintf( text, sizeof( text ), form == 1 ? "key/%06lld" : "%llx", static_cast< long long >( at ) );
            Key k = form ? Key{ STRING, 0, wide( text ) } : Key{ INT, at, {} };

            if( deletes )
            {
                form ? qvDictDelStringKeyCstr( slot.ref.at(), text, -1 ) : qvDictDelIntKey( slot.ref.at(), k.number );
                slot.model.erase( k );
                continue;
            }

            keyObj = k.object(), valueObj = boxedInt( number );
            qvDictSetObjKey( slot.ref.at(), keyObj, valueObj );
            slot.model.own();
            slot.model.set( k, { keyObj, valueObj, number } );
        }
    }

    void include( Slot &dest, QV_DICT *src, const Model &from )
    {
        QV_INT how  = in.below( 4 );
        bool   self = dest.ref.get() == src, flag = how != 2 && in.flag();

        if( how < 2 )
        {
            qvDictInclude( dest.ref.at(), src, flag );

            if( from.length() > 0 )
                dest.model.own( self );

            for( auto &[k, entry] : from.map )
                if( flag || !dest.model.map.contains( k ) )
                    dest.model.set( k, entry );
        }
        else if( how == 2 )
        {
            qvDictExclude( dest.ref.at(), src );

            for( auto &[k, entry] : from.map )
                dest.model.erase( k );
        }
        else
        {
            qvDictIntersect( dest.ref.at(), src, flag );
            Model kept;

            if( self || dest.model.length() == 0 )
                return;

            for( auto &[k, entry] : dest.model.map )
                if( auto at = from.map.find( k ); at != from.map.end() )
                    kept.set(
                        k, { entry.key, ( flag ? at->second : entry ).value, ( flag ? at->second : entry ).number } );

            dest.model = kept;
        }
    }

    void include()
    {
        Slot &dest = destination(), &src = any();
        Model from = src.model;

        if( dest.model.length() + from.length() > 3000 )
            return;

        auto hit = [&]( auto &item ) { return from.map.contains( item.first ); };
        require(
            qvDictDisjoint( dest.ref, src.ref ) == std::none_of( dest.model.map.begin(), dest.model.map.end(), hit ) );

        // The destination and the source may be one object in two variables.
        include( dest, Ref< QV_DICT >::share( src.ref ), from );
    }

    // The other Dict is a value of the destination, and nobody else holds it.
    void includeValue()
    {
        Slot          &dest = destination();
        Model          from;
        Ref< QV_DICT > src( qvDictCreate() );
        Key            k = key();

        for( QV_INT i = in.length( 70 ); i >= 0; i-- )
        {
            Key own = i == 0 ? k : Key{ INT, i, {} };
            keyObj = own.object(), valueObj = boxedInt( 1 );
            qvDictSetObjKey( src.at(), keyObj, valueObj );
            from.set( own, { keyObj, valueObj, 1 } );
        }

        keyObj = k.object();
        valueObj.reset();
        qvDictSetObjKey( dest.ref.at(), keyObj, qvDictObj( src ) );
        dest.model.own();
        dest.model.set( k, { keyObj, qvDictObj( src ), NO_NUMBER } );
        keyObj.reset();
        include( dest, borrow( src.give() ), from );
    }

    void create()
    {
        Slot &to = destination(), &from = any();

        if( in.flag() )
        {
            Model copy = from.model;
            copy.own( true );
            return to.set( qvDictCreateFrom( from.ref ), copy );
        }

        Ref< QV_VECTOR > keys( qvDictKeysVector( from.ref ) ), values( qvDictValuesVector( from.ref ) );
        Ref< QV_VECTOR > others( qvVectorCreateFrom( values ) );
        Model            model;

        // Of the values for a key the first one stays.
        qvVectorReverse( others.at() );
        qvVectorAppend( keys.at(), keys );
        qvVectorAppend( values.at(), others );

        for( auto at = from.model.map.rbegin(); at != from.model.map.rend(); ++at )
            model.set( at->first, at->second );

        to.set( qvDictCreateWithKeysAndValues( keys, values ), model );
    }

    void look()
    {
        Slot   &slot = any();
        QV_OBJ *obj;
        Key     k   = key( slot, &obj );
        auto    at  = slot.model.map.find( k );
        bool    has = at != slot.model.map.end();

        require( qvDictHasObjKey( slot.ref, obj ) == has );
        require( borrow( qvDictObjKey( slot.ref, obj ) ) == ( has ? at->second.value : nullptr ) );
        require( qvDictIndexOfObjKey( slot.ref, obj ) == ( has ? std::distance( slot.model.map.begin(), at ) : -1 ) );
    }

    // The order by entries, for variables whose values are all numbers.
    void order()
    {
        Slot &a = any(), &b = any();
        auto  items = []( Slot &slot )
        {
            std::vector< std::pair< Key, QV_INT > > all;

            for( auto &[k, entry] : slot.model.map )
                all.emplace_back( k, entry.number );

            return all;
        };
        auto x = items( a ), y = items( b );
        auto isDict = []( auto &item ) { return item.second == NO_NUMBER; };

        if( std::none_of( x.begin(), x.end(), isDict ) && std::none_of( y.begin(), y.end(), isDict ) )
            require( qvDictCompare( a.ref, b.ref ) == sign( x <=> y ) );
    }

    static void compare( Slot &slot )
    {
        QV_INT idx = 0;
        require( qvDictLength( slot.ref ) == slot.model.length() );
        require( declared( slot.ref.get() ) == slot.model.alloc * 16 );

        for( auto &[k, entry] : slot.model.map )
        {
            require( borrow( qvDictKeyAt( slot.ref, idx ) ) == entry.key );
            require( borrow( qvDictValueAt( slot.ref, idx++ ) ) == entry.value );
            require( entry.number == NO_NUMBER || intOf( entry.value ) == entry.number );
            require( entry.key && ( k.kind != INT || intOf( entry.key ) == k.number ) );
        }
    }

    // What was changed, and the variables in turn.
    void check()
    {
        compare( slots.slots[step++ % 4] );

        if( changed )
            compare( *changed );

        slots.checkCounts();
    }
};
} // namespace

QV_FUZZ_WALK(
    DictWalk, OP( share, 1 ) OP( clear, 1 ) OP( set, 2 ) OP( setAt, 1 ) OP( erase, 1 ) OP( eraseValue, 1 ) OP( run, 3 )
                  OP( include, 2 ) OP( includeValue, 1 ) OP( create, 1 ) OP( look, 1 ) OP( order, 1 ) )
