// PriorityMaps beside sets of pairs, and Enums and Flagsets beside maps. Objects and names that are arguments are often
// held by nobody but the map.

#include "qv_fuzz_walk.h"

#include "qv/base/qv_enum.h"
#include "qv/base/qv_flagset.h"
#include "qv/base/qv_priority_map.h"

#include <map>
#include <set>

using namespace qv::fuzz;
using qv::Ref;

namespace
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

struct MapWalk : Walk
{
    using Walk::Walk;

    Slots< QV_PRIORITY_MAP, Pairs > maps{ qvPriorityMapCreate };
    Slots< QV_ENUM, Names >         enums{ qvEnumCreate };
    Slots< QV_FLAGSET, Names >      flags{ qvFlagsetCreate };

    void share()
    {
        QV_INT which = in.below( 3 );
        which == 0 ? maps.share( in ) : which == 1 ? enums.share( in ) : flags.share( in );
    }

    static auto find( Pairs &pairs, QV_INT value )
    {
        return std::find_if( pairs.begin(), pairs.end(), [&]( auto &pair ) { return pair.second == value; } );
    }

    static QV_INT priorityOf( Pairs::iterator at, Pairs &pairs )
    {
        return at == pairs.end() ? 0 : at->first;
    }

    void set()
    {
        auto  &slot     = maps.any( in );
        QV_INT priority = in.below( 4 ) ? in.below( 8 ) : in.number();
        QV_INT repeat   = in.below( 8 ) ? 1 : in.length( 80 );
        QV_INT value    = in.below( 120 );

        for( ; repeat > 0; repeat--, value++, priority ^= repeat % 3 )
        {
            Ref< QV_OBJ > made = boxedInt( value );
            auto          at   = find( slot.model, value );
            QV_OBJ       *obj  = made;

            if( at != slot.model.end() )
            {
                // The very object in the map.
                obj = borrow( qvPriorityMapValueAt( slot.ref, std::distance( slot.model.begin(), at ) ) );
                slot.model.erase( at );
            }

            qvPriorityMapSet( slot.ref.at(), priority, obj );
            slot.model.insert( { priority, value } );
        }
    }

    void erase()
    {
        auto &slot = maps.any( in );

        if( in.flag() && !slot.model.empty() )
        {
            QV_INT  idx = in.index( slot.model );
            QV_OBJ *obj = borrow( qvPriorityMapValueAt( slot.ref, idx ) );
            in.flag() ? qvPriorityMapDelAt( slot.ref.at(), idx ) : qvPriorityMapDel( slot.ref.at(), obj );
            slot.model.erase( std::next( slot.model.begin(), idx ) );
            return;
        }

        QV_INT value = in.below( 140 );
        qvPriorityMapDel( slot.ref.at(), boxedInt( value ) );

        if( auto at = find( slot.model, value ); at != slot.model.end() )
            slot.model.erase( at );
    }

    void create()
    {
        auto &to = maps.any( in ), &from = maps.any( in );

        if( in.flag() )
            return to.set( qvPriorityMapCreateFrom( from.ref ), from.model );

        qvPriorityMapClear( to.ref.at() );
        to.model.clear();
    }

    void look()
    {
        auto         &slot   = maps.any( in );
        Pairs        &pairs  = slot.model;
        QV_INT        value  = in.below( 140 ), priority;
        auto          at     = find( pairs, value );
        bool          has    = at != pairs.end();
        Ref< QV_OBJ > obj    = boxedInt( value );
        auto          expect = [&]( QV_OBJ *owned, Pairs::iterator expected )
        {
            Ref< QV_OBJ > found( owned );
            require( priority == priorityOf( expected, pairs ) );
            require( found ? intOf( found ) == expected->second : expected == pairs.end() );
        };

        require( qvPriorityMapHas( slot.ref, obj ) == has );
        require( qvPriorityMapIndexOf( slot.ref, obj ) == ( has ? std::distance( pairs.begin(), at ) : -1 ) );
        expect( qvPriorityMapLowest( slot.ref, &priority ), pairs.begin() );
        expect( qvPriorityMapHighest( slot.ref, &priority ), pairs.empty() ? pairs.end() : std::prev( pairs.end() ) );
        expect( qvPriorityMapHigher( slot.ref, obj, &priority ), has ? std::next( at ) : at );
        expect(
            qvPriorityMapLower( slot.ref, obj, &priority ),
            has && at != pairs.begin() ? std::prev( at ) : pairs.end() );
    }

    // A new String of the name, or the very one that the map has among its names, held by nobody else.
    Ref< QV_STRING > fresh;

    QV_STRING *nameOf( const Text &n, QV_VECTOR *owned )
    {
        Ref< QV_VECTOR > names( owned );
        QV_INT           idx = qvVectorIndexOfObj( names, qv::obj( ( fresh = stringOf( n ) ).get() ), QV_TRUE );

        if( idx < 0 || in.flag() )
            return fresh;

        fresh.reset();

        return qvStringFrom( qvVectorBacking( names )[idx] );
    }

    static QV_INT bit( QV_INT index )
    {
        return static_cast< QV_INT >( 1ull << index );
    }

    template< class T >
    void name(
        Slots< T, Names > &slots, QV_INT most, QV_VECTOR *( *all )(T *), void ( *del )( T **, QV_STRING * ),
        void ( *enter )( T **, QV_STRING *, QV_INT ), QV_INT ( *valueOf )( QV_INT ) )
    {
        auto      &slot  = slots.any( in );
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
        for( auto &slot : maps.slots )
        {
            QV_INT idx = 0;
            require( qvPriorityMapLength( slot.ref ) == lengthOf( slot.model ) );

            for( auto &[priority, value] : slot.model )
            {
                require( qvPriorityMapPriorityAt( slot.ref, idx ) == priority );
                require( intOf( borrow( qvPriorityMapValueAt( slot.ref, idx++ ) ) ) == value );
            }
        }

        for( auto &slot : enums.slots )
        {
            Ref< QV_VECTOR > all( qvEnumEnumerantsVector( slot.ref ) );
            require( qvVectorLength( all ) == lengthOf( slot.model.values ) );

            for( auto &[n, value] : slot.model.values )
                require( qvEnumEnumerant( slot.ref, stringOf( n ) ) == value );

            for( QV_INT value = 0; value < 8; value++ )
            {
                auto             at = slot.model.names.find( value );
                Ref< QV_STRING > generated( qvEnumGenerate( slot.ref, value ) );
                require(
                    generated ? at != slot.model.names.end() && charsOf( generated ) == at->second
                              : at == slot.model.names.end() );
            }
        }

        for( auto &slot : flags.slots )
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

        maps.checkCounts();
        enums.checkCounts();
        flags.checkCounts();
    }
};
} // namespace

QV_FUZZ_WALK(
    MapWalk, OP( share, 1 ) OP( create, 1 ) OP( set, 2 ) OP( erase, 1 ) OP( look, 1 ) OP( enumerant, 1 ) OP( flag, 1 ) )
