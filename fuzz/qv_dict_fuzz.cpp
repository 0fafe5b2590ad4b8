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
    int            kind;
    QV_INT         number; // a Real is half of it
    std::u32string text;

    auto operator<=>( const Key & ) const = default;

    Ref< QV_OBJ > object() const
    {
        switch( kind )
        {
        case BOOL:
            return Ref< QV_OBJ >( qvBoxedBoolObj( qvBoxedBoolCreate( number != 0 ) ) );
        case INT:
            return boxedInt( number );
        case NONE:
            return Ref< QV_OBJ >( qvBoxedNullObj( qvBoxedNullCreate() ) );
        case REAL:
            return Ref< QV_OBJ >( qvBoxedRealObj( qvBoxedRealCreate( static_cast< QV_REAL >( number ) / 2 ) ) );
        default:
            return Ref< QV_OBJ >( qvStringObj( stringOf( text ).give() ) );
        }
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
    QV_INT                 alloc = 0;

    QV_INT length() const
    {
        return static_cast< QV_INT >( map.size() );
    }

    // A copy has the block that entering its entries one by one leads to.
    void own( bool shared )
    {
        if( shared )
            alloc = ( length() + 31 ) / 32 * 32;
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

    // True if there was such an entry.
    bool erase( bool shared, const Key &key )
    {
        if( !map.contains( key ) )
            return false;

        own( shared && length() > 1 );
        map.erase( key );
        erased();

        return true;
    }

    auto at( QV_INT idx )
    {
        return std::next( map.begin(), idx );
    }
};

struct DictWalk : SlotWalk< QV_DICT, Model, qvDictCreate >
{
    using SlotWalk::SlotWalk;

    Slot         *changed = nullptr;
    unsigned      step    = 0;
    Ref< QV_OBJ > keyObj, valueObj; // what an operation has made, for its time

    Slot &destination()
    {
        changed = &slots.any( in );
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
            auto at = slot.model.at( in.upTo( slot.model.length() - 1 ) );
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
            return slot.model.at( in.upTo( slot.model.length() - 1 ) )->second;

        QV_INT number = in.below( 6 );
        valueObj      = boxedInt( number );

        return { nullptr, valueObj, number };
    }

    void set()
    {
        Slot &slot   = destination();
        bool  shared = slots.shared( slot );
        Entry entry  = value( slot );
        Key   k      = key( slot, &entry.key );
        qvDictSetObjKey( slot.ref.at(), entry.key, entry.value );
        slot.model.own( shared );
        slot.model.set( k, entry );
    }

    void setAt()
    {
        Slot &slot = destination();

        if( slot.model.length() == 0 )
            return;

        bool   shared = slots.shared( slot );
        QV_INT idx    = in.upTo( slot.model.length() - 1 );
        Entry  entry  = value( slot );
        qvDictSetValueAt( slot.ref.at(), idx, entry.value );
        slot.model.own( shared );
        entry.key                    = slot.model.at( idx )->second.key;
        slot.model.at( idx )->second = entry;
    }

    void erase()
    {
        Slot   &slot   = destination();
        bool    shared = slots.shared( slot );
        QV_OBJ *obj;
        Key     k = key( slot, &obj );

        if( in.flag() )
            qvDictDelObjKey( slot.ref.at(), obj );
        else if( qvDictHasObjKey( slot.ref, obj ) )
            qvDictDelAt( slot.ref.at(), qvDictIndexOfObjKey( slot.ref, obj ) );

        slot.model.erase( shared, k );
    }

    void eraseValue()
    {
        Slot &slot   = destination();
        bool  shared = slots.shared( slot ), byCompare = in.flag();
        Entry entry = value( slot );

        if( slot.model.length() == 0 )
            return;

        qvDictDelValue( slot.ref.at(), entry.value, byCompare );
        slot.model.own( shared );
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
            bool shared = slots.shared( slot );
            char text[40];
            snprintf(
                text, sizeof( text ), form == 1 ? "key/%06lld" : "%llx",
                static_cast< long long >( start + place( i ) ) );
            Key k{ form ? STRING : INT, form ? 0 : start + place( i ), form ? wide( text ) : std::u32string() };

            if( deletes )
            {
                form ? qvDictDelStringKeyCstr( slot.ref.at(), text, -1 ) : qvDictDelIntKey( slot.ref.at(), k.number );
                slot.model.erase( shared, k );
                continue;
            }

            keyObj = k.object(), valueObj = boxedInt( number );
            qvDictSetObjKey( slot.ref.at(), keyObj, valueObj );
            slot.model.own( shared );
            slot.model.set( k, { keyObj, valueObj, number } );
        }
    }

    void include( Slot &dest, bool shared, QV_DICT *src, const Model &from )
    {
        switch( in.below( 4 ) )
        {
        case 0:
        case 1:
        {
            bool overwrite = in.flag();
            qvDictInclude( dest.ref.at(), src, overwrite );
            dest.model.own( ( shared || dest.ref.get() == src ) && from.length() > 0 );

            for( auto &[k, entry] : from.map )
                if( overwrite || !dest.model.map.contains( k ) )
                    dest.model.set( k, entry );
            break;
        }
        case 2:
            qvDictExclude( dest.ref.at(), src );

            for( auto &[k, entry] : from.map )
                shared = !dest.model.erase( shared, k ) && shared;
            break;
        default:
            bool useSrc = in.flag();

            if( dest.ref.get() == src )
                return qvDictIntersect( dest.ref.at(), src, useSrc );

            qvDictIntersect( dest.ref.at(), src, useSrc );
            Model kept;

            if( dest.model.length() == 0 )
                return;

            for( auto &[k, entry] : dest.model.map )
                if( auto at = from.map.find( k ); at != from.map.end() )
                    kept.set(
                        k, { entry.key, useSrc ? at->second.value : entry.value,
                             useSrc ? at->second.number : entry.number } );

            dest.model = kept;
        }
    }

    void include()
    {
        Slot &dest = destination(), &src = slots.any( in );
        bool  self = dest.ref.get() == src.ref.get();
        Model from = src.model;

        if( dest.model.length() + from.length() > 3000 )
            return;

        auto hit = [&]( auto &item ) { return from.map.contains( item.first ); };
        require(
            qvDictDisjoint( dest.ref, src.ref ) == std::none_of( dest.model.map.begin(), dest.model.map.end(), hit ) );

        // The destination and the source may be one object in two variables.
        Ref< QV_DICT > held   = Ref< QV_DICT >::share( src.ref );
        bool           shared = slots.shared( dest );

        if( self )
            includeSelf( dest );
        else
            include( dest, shared, src.ref, from );
    }

    void includeSelf( Slot &dest )
    {
        switch( in.below( 3 ) )
        {
        case 0:
            qvDictInclude( dest.ref.at(), dest.ref, in.flag() );
            return dest.model.own( true );
        case 1:
            qvDictExclude( dest.ref.at(), dest.ref );
            dest.model = Model();
            return;
        default:
            qvDictIntersect( dest.ref.at(), dest.ref, in.flag() );
        }
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

        bool shared = slots.shared( dest );
        keyObj      = k.object();
        valueObj.reset();
        qvDictSetObjKey( dest.ref.at(), keyObj, qvDictObj( src ) );
        dest.model.own( shared );
        dest.model.set( k, { keyObj, qvDictObj( src ), NO_NUMBER } );
        keyObj.reset();

        QV_DICT *borrowed = src;
        src.reset();
        include( dest, false, borrowed, from );
    }

    void create()
    {
        Slot &to = destination(), &from = slots.any( in );

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
        Slot   &slot = slots.any( in );
        QV_OBJ *obj;
        Key     k   = key( slot, &obj );
        auto    at  = slot.model.map.find( k );
        bool    has = at != slot.model.map.end();

        require( qvDictHasObjKey( slot.ref, obj ) == has );
        require( Ref< QV_OBJ >( qvDictObjKey( slot.ref, obj ) ).get() == ( has ? at->second.value : nullptr ) );
        require( qvDictIndexOfObjKey( slot.ref, obj ) == ( has ? std::distance( slot.model.map.begin(), at ) : -1 ) );
    }

    // The order by entries, for variables whose values are all numbers.
    void order()
    {
        Slot &a = slots.any( in ), &b = slots.any( in );
        auto  less = []( auto &x, auto &y )
        { return x.first != y.first ? x.first < y.first : x.second.number < y.second.number; };
        auto numbers = []( Slot &slot )
        {
            return std::all_of(
                slot.model.map.begin(), slot.model.map.end(),
                []( auto &item ) { return item.second.number != NO_NUMBER; } );
        };

        if( !numbers( a ) || !numbers( b ) )
            return;

        auto &x = a.model.map, &y = b.model.map;
        int   expected = std::lexicographical_compare( y.begin(), y.end(), x.begin(), x.end(), less )
                       - std::lexicographical_compare( x.begin(), x.end(), y.begin(), y.end(), less );
        require( qvDictCompare( a.ref, b.ref ) == expected );
    }

    void check( Slot &slot )
    {
        QV_INT idx = 0;
        require( qvDictLength( slot.ref ) == slot.model.length() );
        require( declared( slot.ref.get() ) == slot.model.alloc * 16 );

        for( auto &[k, entry] : slot.model.map )
        {
            require( Ref< QV_OBJ >( qvDictKeyAt( slot.ref, idx ) ).get() == entry.key );
            require( Ref< QV_OBJ >( qvDictValueAt( slot.ref, idx ) ).get() == entry.value );
            require( entry.number == NO_NUMBER || intOf( entry.value ) == entry.number );
            require( entry.key && ( k.kind != INT || intOf( entry.key ) == k.number ) );
            idx++;
        }
    }

    // What was changed, and the variables in turn.
    void check()
    {
        check( slots.slots[step++ % 4] );

        if( changed )
            check( *changed );

        slots.checkCounts();
    }
};
} // namespace

QV_FUZZ_WALK(
    DictWalk, OP( share ) OP( clear ) OP( set ) OP( set ) OP( setAt ) OP( erase ) OP( eraseValue ) OP( run ) OP( run )
                  OP( run ) OP( include ) OP( include ) OP( includeValue ) OP( create ) OP( look ) OP( order ) )
