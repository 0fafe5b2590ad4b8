// PriorityMaps beside sets of pairs, and Enums and Flagsets beside maps. Objects and names that are arguments are often
// held by nobody but the map.

#include "qv_fuzz_walk.h"

#include <set>

namespace qv::fuzz
{
// By priority, then as the objects order, which are boxed integers.
using Pairs = std::set< std::pair< QV_INT, QV_INT > >;
// Names of values, the ones of a Flagset by the index of the bit. A value that several share has the last one entered.
struct Names
{
    std::map< Text, QV_INT > values;
    std::map< QV_INT, Text > names;

    void erase( const Text &name )
    {
        if( auto at = values.find( name ); at != values.end() )
        {
            if( auto named = names.find( at->second ); named != names.end() && named->second == name )
                names.erase( named );

            values.erase( at );
        }
    }
};

struct MapWalk
{
    Slots< MapWalk, QV_PRIORITY_MAP, Pairs, qvPriorityMapCreate > maps;
    Slots< MapWalk, QV_ENUM, Names, qvEnumCreate >                enums;
    Slots< MapWalk, QV_FLAGSET, Names, qvFlagsetCreate >          flags;

    void share()
    {
        QV_INT which = in.below( 3 );
        which == 0   ? maps.share( maps.any(), maps.any() )
        : which == 1 ? enums.share( enums.any(), enums.any() )
                     : flags.share( flags.any(), flags.any() );
    }

    static auto find( Pairs &pairs, QV_INT value )
    {
        return std::find_if( pairs.begin(), pairs.end(), [&]( auto &pair ) { return pair.second == value; } );
    }

    void set()
    {
        auto  &slot     = maps.any();
        QV_INT priority = in.below( 4 ) ? in.below( 8 ) : in.number();
        QV_INT repeat   = in.below( 8 ) ? 1 : in.length( 80 );
        QV_INT value    = in.below( 120 );

        for( ; repeat > 0; repeat--, value++, priority ^= repeat % 3 )
        {
            // A new object, or the very one in the map.
            Ref< QV_OBJ > made = boxedInt( value );
            auto          at   = find( slot.model, value );
            QV_OBJ       *obj  = at == slot.model.end()
                                     ? made.get()
                                     : borrow( qvPriorityMapValueAt( slot.ref, std::distance( slot.model.begin(), at ) ) );
            slot.model.erase( at, at == slot.model.end() ? at : std::next( at ) );
            qvPriorityMapSet( slot.ref.at(), priority, obj );
            slot.model.insert( { priority, value } );
        }
    }

    void erase()
    {
        auto         &slot  = maps.any();
        QV_INT        value = in.below( 140 );
        auto          at    = find( slot.model, value );
        Ref< QV_OBJ > made  = boxedInt( value );
        bool          has   = at != slot.model.end();
        QV_INT        idx   = has ? std::distance( slot.model.begin(), at ) : -1;

        if( has && in.flag() )
            qvPriorityMapDelAt( slot.ref.at(), idx );
        else
            qvPriorityMapDel( slot.ref.at(), has ? borrow( qvPriorityMapValueAt( slot.ref, idx ) ) : made.get() );

        if( has )
            slot.model.erase( at );
    }

    void create()
    {
        auto &to = maps.any(), &from = maps.any();
        in.flag() ? to.set( qvPriorityMapCreateFrom( from.ref ), from.model ) : to.set( qvPriorityMapCreate(), {} );
    }

    void look()
    {
        auto         &slot   = maps.any();
        Pairs        &pairs  = slot.model;
        QV_INT        value  = in.below( 140 ), priority;
        auto          at     = find( pairs, value );
        bool          has    = at != pairs.end();
        Ref< QV_OBJ > obj    = boxedInt( value );
        auto          expect = [&]( QV_OBJ *owned, Pairs::iterator expected )
        {
            QV_OBJ *found = borrow( owned );
            require( ( found == nullptr ) == ( expected == pairs.end() ) );
            require( priority == ( found ? expected->first : 0 ) && ( !found || intOf( found ) == expected->second ) );
        };

        require( qvPriorityMapIndexOf( slot.ref, obj ) == ( has ? std::distance( pairs.begin(), at ) : -1 ) );
        expect( qvPriorityMapLowest( slot.ref, &priority ), pairs.begin() );
        expect( qvPriorityMapHighest( slot.ref, &priority ), pairs.empty() ? pairs.end() : std::prev( pairs.end() ) );
        expect( qvPriorityMapHigher( slot.ref, obj, &priority ), has ? std::next( at ) : at );
        at = has && at != pairs.begin() ? std::prev( at ) : pairs.end();
        expect( qvPriorityMapLower( slot.ref, obj, &priority ), at );
    }

    // A new String of the name, or the very one that the map has among its names, held by nobody else.
    Ref< QV_STRING > fresh;

    QV_STRING *nameOf( const Text &n, QV_VECTOR *owned )
    {
        Ref< QV_VECTOR > names( owned );
        QV_INT           idx = qvVectorIndexOfObj( names, obj( ( fresh = stringOf( n ) ).get() ), QV_TRUE );

        if( idx < 0 || in.flag() )
            return fresh;

        fresh.reset();

        return qvStringFrom( qvVectorBacking( names )[idx] );
    }

    static QV_INT bit( QV_INT index )
    {
        return static_cast< QV_INT >( 1ull << index );
    }

    template< class S, class T >
    void name(
        S &slots, QV_INT most, QV_VECTOR *( *all )(T *), void ( *del )( T **, QV_STRING * ),
        void ( *enter )( T **, QV_STRING *, QV_INT ), QV_INT ( *valueOf )( QV_INT ) )
    {
        auto      &slot  = slots.any();
        Text       n     = wide( "N_" ) + char32_t( U'A' + in.below( 12 ) );
        QV_INT     value = in.upTo( most );
        QV_STRING *qvs   = nameOf( n, all( slot.ref ) );
        slot.model.erase( n );

        if( in.below( 3 ) == 0 )
            return del( slot.ref.at(), qvs );

        enter( slot.ref.at(), qvs, valueOf( value ) );
        slot.model.values[n]    = value;
        slot.model.names[value] = n;
    }

    void enumerant()
    {
        name( enums, 7, qvEnumEnumerantsVector, qvEnumDelEnumerant, qvEnumSetEnumerant, []( QV_INT i ) { return i; } );
    }

    void flag()
    {
        name( flags, 63, qvFlagsetFlagsVector, qvFlagsetDelFlag, qvFlagsetSetFlag, bit );
    }

    void check()
    {
        fresh.reset();
        maps.check();
        enums.check();
        flags.check();
    }

    static void compare( decltype( maps )::Slot &slot )
    {
        QV_INT idx = 0;
        require( qvPriorityMapLength( slot.ref ) == lengthOf( slot.model ) );

        for( auto &[priority, value] : slot.model )
        {
            require( qvPriorityMapPriorityAt( slot.ref, idx ) == priority );
            require( intOf( borrow( qvPriorityMapValueAt( slot.ref, idx++ ) ) ) == value );
        }
    }

    static void compare( decltype( enums )::Slot &slot )
    {
        Ref< QV_VECTOR > all( qvEnumEnumerantsVector( slot.ref ) );
        require( qvVectorLength( all ) == lengthOf( slot.model.values ) );

        for( auto &[n, value] : slot.model.values )
            require( qvEnumParse( slot.ref, stringOf( n ) ) == value );

        for( QV_INT value = 0; value < 8; value++ )
        {
            auto             at = slot.model.names.find( value );
            Ref< QV_STRING > generated( qvEnumGenerate( slot.ref, value ) );
            require( at == slot.model.names.end() ? !generated : generated && charsOf( generated ) == at->second );
        }
    }

    static void compare( decltype( flags )::Slot &slot )
    {
        QV_INT bits = 0;
        Text   text;

        for( auto &[index, n] : slot.model.names )
            bits |= bit( index ), text += ( text.empty() ? U"" : U"|" ) + n;

        for( auto &[n, index] : slot.model.values )
            require( qvFlagsetFlag( slot.ref, stringOf( n ) ) == bit( index ) );

        Ref< QV_STRING > generated( qvFlagsetGenerate( slot.ref, bits ) );
        require( charsOf( generated ) == text && qvFlagsetParse( slot.ref, generated ) == bits );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK( MapWalk, OP( share ) OP( create ) OP( set ) OP( set ) OP( erase ) OP( look ) OP( enumerant ) OP( flag ) )
