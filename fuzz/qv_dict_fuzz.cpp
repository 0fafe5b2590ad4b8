// Dicts beside std::map, up to some thousand entries, which come and go in runs of every order, with keys of several
// sorts. Arguments are often objects that only the Dict itself holds.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
// The kinds in the order of the names of their sorts.
const QV_INT INT = 0, REAL = 1, STRING = 2;

struct Key
{
    QV_INT kind, number; // a Real is half of the number
    Text   text;

    auto operator<=>( const Key & ) const = default;

    Ref< QV_OBJ > object() const
    {
        return kind == INT    ? boxedInt( number )
               : kind == REAL ? Ref< QV_OBJ >( qvBoxedRealObj( qvBoxedRealCreate( double( number ) / 2 ) ) )
                              : Ref< QV_OBJ >( qvStringObj( stringOf( text ).give() ) );
    }
};

// The objects that stand in the Dict, and the number of a value; Dicts as values have none.
struct Entry
{
    QV_OBJ *key, *value;
    QV_INT  number;

    auto operator<=>( const Entry &other ) const
    {
        return number <=> other.number;
    }
};

const QV_INT NO_NUMBER = -1;

using Model = std::map< Key, Entry >;

struct DictWalk : Slots< DictWalk, QV_DICT, Model, qvDictCreate >
{
    static QV_INT indexOf( const Model &model, const Key &key )
    {
        return model.contains( key ) ? std::distance( model.begin(), model.find( key ) ) : -1;
    }

    Ref< QV_OBJ > keyObj, valueObj; // what an operation has made, for its time

    Key key()
    {
        QV_INT kind = in.below( 3 );

        // Each number is a real of its own.
        return kind == STRING ? Key{ kind, 0, in.text( 80 ) }
                              : Key{ kind, in.number() >> ( kind == REAL ? 11 : 0 ), {} };
    }

    // The key of an entry, if there is any, or another one; `obj` gets the very object in the Dict or an equal one.
    Key key( Slot &slot, QV_OBJ *&obj )
    {
        bool held = !slot.model.empty() && in.below( 4 );
        auto at   = std::next( slot.model.begin(), held ? in.upTo( lengthOf( slot.model ) - 1 ) : 0 );
        Key  key  = held ? at->first : DictWalk::key();
        keyObj    = key.object();
        obj       = held && in.flag() ? at->second.key : keyObj.get();

        return key;
    }

    Entry value( Slot &slot )
    {
        if( !slot.model.empty() && in.flag() )
            return at( slot.model, in.upTo( lengthOf( slot.model ) - 1 ) ).second;

        QV_INT number = in.below( 6 );
        valueObj      = boxedInt( number );

        return { nullptr, valueObj, number };
    }

    // By its key, or at its index.
    void set( Slot &slot, Slot & )
    {
        Entry  entry = value( slot );
        Key    k     = key( slot, entry.key );
        QV_INT idx   = indexOf( slot.model, k );

        if( idx >= 0 && in.flag() )
        {
            entry.key = slot.model[k].key;
            qvDictSetValueAt( slot.ref.at(), idx, entry.value );
        }
        else
            qvDictSetObjKey( slot.ref.at(), entry.key, entry.value );

        slot.model[k] = entry;
    }

    // Enters, replaces, leaves or deletes a value.
    void update( Slot &slot, Slot & )
    {
        struct Change
        {
            Entry   entry;
            bool    ends, leaves;
            QV_OBJ *old;
        } change = { value( slot ), in.flag(), in.below( 3 ) == 0, nullptr };

        QV_OBJ *obj;
        Key     k   = key( slot, obj );
        auto    at  = slot.model.find( k );
        QV_OBJ *old = at == slot.model.end() ? nullptr : at->second.value;

        qvDictUpdateObjKey(
            slot.ref.at(), obj,
            []( QV_OBJ **value, void *data )
            {
                Change *wanted = static_cast< Change * >( data );
                wanted->old    = *value;

                if( wanted->leaves )
                    return;

                QV_OBJ       *fresh = wanted->ends ? nullptr : retain( wanted->entry.value );
                Ref< QV_OBJ > given( std::exchange( *value, fresh ) );
            },
            &change );

        require( change.old == old );
        change.entry.key = old ? at->second.key : obj;

        if( change.ends && !change.leaves )
            slot.model.erase( k );
        else if( !change.leaves )
            slot.model[k] = change.entry;
    }

    void erase( Slot &slot, Slot & )
    {
        QV_OBJ *obj;
        Key     k   = key( slot, obj );
        QV_INT  idx = indexOf( slot.model, k );

        if( idx < 0 || in.flag() )
            qvDictDelObjKey( slot.ref.at(), obj );
        else
            qvDictDelAt( slot.ref.at(), idx );

        slot.model.erase( k );
    }

    void eraseValue( Slot &slot, Slot & )
    {
        bool  byCompare = in.flag();
        Entry entry     = value( slot );

        qvDictDelValue( slot.ref.at(), entry.value, byCompare );
        byCompare = byCompare && entry.number != NO_NUMBER;
        std::erase_if(
            slot.model, [&]( auto &item )
            { return item.second.value == entry.value || ( byCompare && item.second.number == entry.number ); } );
    }

    // Entries come or go, neighbours in every order: to either end, towards the middle or from there, and scattered.
    void run( Slot &slot, Slot & )
    {
        QV_INT start = in.below( 2000 ), count = in.length( 1000 ), order = in.below( 5 ), form = in.below( 3 );
        bool   deletes = in.below( 4 ) == 0;

        for( QV_INT i = 0; i < count; i++ )
        {
            QV_INT fromEnds = i % 2 ? count - 1 - i / 2 : i / 2;
            QV_INT places[] = { i, count - 1 - i, fromEnds, count - 1 - fromEnds, i * 37 % count };
            QV_INT at       = start + places[order];
            char   text[40];
            snprintf( text, sizeof( text ), form == 1 ? "key/%06lld" : "%llx", static_cast< long long >( at ) );
            Key k  = form ? Key{ STRING, 0, wide( text ) } : Key{ INT, at, {} };
            keyObj = k.object(), valueObj = boxedInt( order );

            slot.model[k] = { keyObj, valueObj, order };

            if( !deletes )
                qvDictSetObjKey( slot.ref.at(), keyObj, valueObj );
            else
                qvDictDelObjKey( slot.ref.at(), keyObj ), slot.model.erase( k );
        }
    }

    void combine( Slot &dest, QV_DICT *src, const Model &from )
    {
        QV_INT how  = in.below( 3 );
        bool   flag = how != 1 && in.flag(), self = dest.ref.get() == src;

        if( how == 0 )
        {
            qvDictInclude( dest.ref.at(), src, flag );

            for( auto &[k, entry] : from )
                if( flag || !dest.model.contains( k ) )
                    dest.model[k] = entry;
        }
        else if( how == 1 )
        {
            qvDictExclude( dest.ref.at(), src );
            std::erase_if( dest.model, [&]( auto &item ) { return from.contains( item.first ); } );
        }
        else
        {
            qvDictIntersect( dest.ref.at(), src, flag );
            std::erase_if( dest.model, [&]( auto &item ) { return !from.contains( item.first ); } );

            for( auto &[k, entry] : dest.model )
                if( flag && !self )
                    entry = { entry.key, from.at( k ).value, from.at( k ).number };
        }
    }

    void combine( Slot &dest, Slot &src )
    {
        Model from = src.model;
        bool  hits = std::any_of(
            dest.model.begin(), dest.model.end(), [&]( auto &item ) { return from.contains( item.first ); } );
        require( qvDictDisjoint( dest.ref, src.ref ) != hits );

        // The destination and the source may be one object in two variables.
        combine( dest, Ref< QV_DICT >::share( src.ref ), from );
    }

    // The other Dict is a value of the destination, and nobody else holds it.
    void combineValue( Slot &dest, Slot & )
    {
        Key            k = key();
        Ref< QV_DICT > src( qvDictCreate() );
        Model          from;

        for( QV_INT i = in.length( 70 ); i >= 0; i-- )
        {
            Key own = i == 0 ? k : Key{ INT, i, {} };
            keyObj = own.object(), valueObj = boxedInt( 1 );
            qvDictSetObjKey( src.at(), keyObj, valueObj );
            from[own] = { keyObj, valueObj, 1 };
        }

        keyObj = k.object();
        qvDictSetObjKey( dest.ref.at(), keyObj, qvDictObj( src ) );
        dest.model[k] = { keyObj, qvDictObj( src ), NO_NUMBER };
        keyObj.reset(), valueObj.reset();
        combine( dest, borrow( src.give() ), from );
    }

    void create( Slot &to, Slot &from )
    {
        if( in.flag() )
            return to.set( qvDictCreateFrom( from.ref ), from.model );

        // Of the values for a key the first one stays.
        Ref< QV_VECTOR > keys( qvDictKeysVector( from.ref ) ), values( qvDictValuesVector( from.ref ) );
        Ref< QV_VECTOR > others( qvVectorCreateFrom( values ) );
        qvVectorReverse( others.at() );
        qvVectorAppend( keys.at(), keys );
        qvVectorAppend( values.at(), others );
        to.set( qvDictCreateWithKeysAndValues( keys, values ), from.model );
    }

    // The order by entries is known if all values are numbers.
    void look( Slot &slot, Slot &other )
    {
        QV_OBJ *obj;
        QV_INT  idx     = indexOf( slot.model, key( slot, obj ) );
        bool    numbers = true;

        require( qvDictHasObjKey( slot.ref, obj ) == ( idx >= 0 ) && qvDictIndexOfObjKey( slot.ref, obj ) == idx );
        require(
            borrow( qvDictObjKey( slot.ref, obj ) ) == ( idx < 0 ? nullptr : at( slot.model, idx ).second.value ) );

        for( Model *model : { &slot.model, &other.model } )
            for( auto &[k, entry] : *model )
                numbers = numbers && entry.number != NO_NUMBER;

        require( !numbers || qvDictCompare( slot.ref, other.ref ) == sign( slot.model <=> other.model ) );
    }

    // What an operation has made is of no use after it.
    void check()
    {
        keyObj.reset(), valueObj.reset();
        Slots::check();
    }

    static void compare( Slot &slot )
    {
        QV_INT idx = 0;
        require( qvDictLength( slot.ref ) == lengthOf( slot.model ) );
        require( declared( slot.ref.get() ) <= ( lengthOf( slot.model ) + 96 ) * 16 );

        for( auto &[k, entry] : slot.model )
        {
            require( borrow( qvDictKeyAt( slot.ref, idx ) ) == entry.key );
            require( borrow( qvDictValueAt( slot.ref, idx++ ) ) == entry.value );
            require( entry.number == NO_NUMBER || intOf( entry.value ) == entry.number );
            require( entry.key && ( k.kind != INT || intOf( entry.key ) == k.number ) );
        }
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK(
    DictWalk, OP( share ) OP( set ) OP( set ) OP( set ) OP( update ) OP( erase ) OP( eraseValue ) OP( run ) OP( run )
                  OP( run ) OP( combine ) OP( combine ) OP( combineValue ) OP( create ) OP( look ) )
