#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_unique.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_sort.h"

#include <algorithm>
#include <map>
#include <random>

using namespace qv;
using namespace qv::test;

namespace
{
Ref< QV_OBJ > boxed( QV_INT value )
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

// An object of its own, an empty text too.
Ref< QV_OBJ > stringObj( std::u32string_view chars )
{
    return Ref< QV_OBJ >( qvStringObj( qvStringCreateFrom( text( chars ) ) ) );
}

struct Less
{
    bool operator()( QV_OBJ *a, QV_OBJ *b ) const
    {
        return qvObjCompare( a, b ) < 0;
    }
};

using Map = std::map< QV_OBJ *, QV_OBJ *, Less >;

// What a Dict has to hold and to account for.
struct Model
{
    Map    map;
    QV_INT alloc = 0;

    QV_INT length() const
    {
        return static_cast< QV_INT >( map.size() );
    }

    // A copy has the block that entering its entries one by one would have led to.
    void own( bool shared )
    {
        if( shared )
            alloc = ( length() + 31 ) / 32 * 32;
    }

    void set( QV_OBJ *key, QV_OBJ *val )
    {
        auto node = map.extract( key );

        if( node.empty() && length() >= alloc )
            alloc += 32;

        map[key] = val;
    }

    void erase( QV_OBJ *key, bool shrink = true )
    {
        if( map.erase( key ) == 0 )
            return;

        if( map.empty() )
            alloc = 0;
        else if( shrink )
            compact();
    }

    void compact()
    {
        if( length() < alloc - 64 )
            alloc = length();
    }
};

void expectModel( const Model &model, QV_DICT *dict )
{
    ASSERT_EQ( model.length(), qvDictLength( dict ) );
    ASSERT_EQ( model.alloc * 16, allocated( dict ) );

    auto at = model.map.begin();

    for( QV___DICT_ITEM &item : dictItems( dict ) )
    {
        ASSERT_EQ( at->first, item.key );
        ASSERT_EQ( at->second, item.val );
        at++;
    }
}

// Two key objects of each value, so that equal ones replace each other.
using Keys = std::vector< Ref< QV_OBJ > >;

template< class Make >
Keys twice( QV_INT count, Make make )
{
    Keys keys;

    for( QV_INT i = 0; i < 2 * count; i++ )
        keys.push_back( make( i / 2 ) );

    return keys;
}

// Texts that share a start, differ late, are the start of each other, or have characters of all sizes.
std::u32string variedText( QV_INT i )
{
    const char32_t chars[] = { U'a', U'b', 0, 0xEC, 0xED, 0xEE, 0x100, 0xFFFF, 0x10000, 0x10FFFF };
    std::u32string result( static_cast< size_t >( i % 3 ) * 3, U'k' );

    for( ; i > 0; i /= 7 )
        result += chars[i % 10];

    return result;
}

Keys keysOfKind( int kind )
{
    switch( kind )
    {
    case 0:
        return twice( 300, []( QV_INT i ) { return boxed( i % 2 ? i * 1000 : -i ); } );
    case 1:
        return twice( 300, []( QV_INT i ) { return stringObj( variedText( i * 7 ) ); } );
    case 2:
        return twice( 300, []( QV_INT i ) {
            return stringObj( U"path/of/keys/" + std::u32string( static_cast< size_t >( i % 60 ), U'x' ) +
                              static_cast< char32_t >( i / 60 + U'a' ) );
        } );
    default:
        return twice( 300, []( QV_INT i ) {
            return i % 3 == 0   ? boxed( i )
                   : i % 3 == 1 ? stringObj( variedText( i ) )
                                : Ref< QV_OBJ >( qvBoxedUniqueObj( qvBoxedUniqueCreate() ) );
        } );
    }
}
} // namespace

TEST( Dict, BehavesLikeItsModelUnderRandomChanges )
{
    for( unsigned seed = 0; seed < 12; seed++ )
    {
        SCOPED_TRACE( seed );
        std::mt19937 random( seed );
        Keys         keys = keysOfKind( static_cast< int >( seed % 4 ) );
        Keys         vals = twice( 5, []( QV_INT i ) { return boxed( i ); } );

        auto key = [&] { return keys[random() % keys.size()].get(); };
        auto val = [&] { return vals[random() % vals.size()].get(); };

        // A few entries or many, as both go in and out on different ways.
        auto other = [&] {
            Model        model;
            size_t       most = random() % 2 ? 12 : 300;
            for( size_t i = random() % most; i-- > 0; )
                model.set( key(), val() );
            return model;
        };
        auto dictOf = [&]( const Model &model ) {
            Ref< QV_DICT > dict( qvDictCreate() );
            for( auto &[k, v] : model.map )
                qvDictSetObjKey( dict.at(), k, v );
            return dict;
        };

        Ref< QV_DICT > dict( qvDictCreate() ), holder;
        Model          model, held;

        for( int round = 0; round < 1500; round++ )
        {
            if( random() % 20 == 0 )
            {
                holder = Ref< QV_DICT >::share( dict );
                held   = model;
            }

            bool shared = holder.get() == dict.get();
            bool filling = round / 150 % 2 == 0;

            switch( random() % 10 )
            {
            case 0:
            case 1:
            case 2:
                for( int i = filling ? 10 : 1; i-- > 0; )
                {
                    QV_OBJ *k = key(), *v = val();
                    model.own( holder.get() == dict.get() );
                    qvDictSetObjKey( dict.at(), k, v );
                    model.set( k, v );
                }
                break;
            case 3:
            case 4:
                for( int i = filling ? 1 : 10; i-- > 0; )
                {
                    QV_OBJ *k = key();
                    model.own( holder.get() == dict.get() && model.map.count( k ) && model.length() > 1 );
                    qvDictDelObjKey( dict.at(), k );
                    model.erase( k );
                }
                break;
            case 5:
                // Off an end, a run of entries.
                for( size_t i = random() % ( filling ? 3 : 80 ); i-- > 0 && model.length() > 0; )
                {
                    bool first = round % 2;
                    model.own( holder.get() == dict.get() && model.length() > 1 );
                    qvDictDelAt( dict.at(), first ? 0 : model.length() - 1 );
                    model.erase( first ? model.map.begin()->first : model.map.rbegin()->first );
                }
                break;
            case 6:
            {
                Model   from      = other();
                QV_BOOL overwrite = random() % 2;
                qvDictInclude( dict.at(), dictOf( from ), overwrite );
                model.own( shared && !from.map.empty() );

                for( auto &[k, v] : from.map )
                    if( overwrite || !model.map.count( k ) )
                        model.set( k, v );
                break;
            }
            case 7:
            {
                Model from = other();
                Ref< QV_DICT > src = dictOf( from );
                auto present = [&]( auto &entry ) { return model.map.count( entry.first ) > 0; };
                ASSERT_EQ(
                    std::none_of( from.map.begin(), from.map.end(), present ), qvDictDisjoint( dict, src ) );
                qvDictExclude( dict.at(), src );

                for( auto &[k, v] : from.map )
                {
                    if( !model.map.count( k ) )
                        continue;

                    model.own( shared && model.length() > 1 );
                    shared = false;
                    model.erase( k );
                }
                break;
            }
            case 8:
            {
                if( filling )
                    break;

                Model   from = other();
                QV_BOOL use  = random() % 2;
                qvDictIntersect( dict.at(), dictOf( from ), use );
                Model kept;

                for( auto &[k, v] : model.map )
                    if( from.map.count( k ) )
                        kept.set( k, use ? from.map[k] : v );

                model = kept;
                break;
            }
            default:
            {
                QV_OBJ *v         = val();
                QV_BOOL byCompare = random() % 2;

                if( random() % 8 )
                {
                    if( model.length() > 0 )
                    {
                        auto at = std::next( model.map.begin(), static_cast< long >( random() % model.map.size() ) );
                        qvDictSetValueAt( dict.at(), std::distance( model.map.begin(), at ), v );
                        model.own( shared );
                        at->second = v;
                    }
                    break;
                }

                qvDictDelValue( dict.at(), v, byCompare );
                model.own( shared );
                std::erase_if( model.map, [&]( auto &entry ) {
                    return entry.second == v || ( byCompare && qvObjCompare( entry.second, v ) == 0 );
                } );

                if( model.map.empty() )
                    model.alloc = 0;

                model.compact();
                break;
            }
            }

            ASSERT_NO_FATAL_FAILURE( expectModel( model, dict ) ) << "round " << round;

            for( int i = 0; i < 5; i++ )
            {
                QV_OBJ *k  = key();
                auto    at = model.map.find( k );
                bool    in = at != model.map.end();
                ASSERT_EQ( in ? std::distance( model.map.begin(), at ) : -1, qvDictIndexOfObjKey( dict, k ) );
                ASSERT_EQ( in, qvDictHasObjKey( dict, k ) );
                ASSERT_EQ( in ? at->second : nullptr, Ref< QV_OBJ >( qvDictObjKey( dict, k ) ).get() );
            }

            if( holder )
            {
                ASSERT_NO_FATAL_FAILURE( expectModel( held, holder ) );
            }
        }

        // Each place holds exactly one reference.
        std::map< QV_OBJ *, int32_t > expected;
        auto                          count = [&]( const Model &counted ) {
            for( auto &[k, v] : counted.map )
                expected[k]++, expected[v]++;
        };

        count( model );

        if( holder && holder.get() != dict.get() )
            count( held );

        for( Keys *all : { &keys, &vals } )
            for( Ref< QV_OBJ > &obj : *all )
                ASSERT_EQ( 1 + expected[obj], references( obj.get() ) );
    }
}

TEST( Dict, EveryKindOfKeyHasItsFiveOperations )
{
    Ref< QV_STRING > str = text( "str" );
    Ref< QV_DICT >   dict( qvDictCreate() );
    Ref< QV_OBJ >    obj = boxed( 9 ), value = boxed( 1 );
    QV_INT           length = 0;

#define FIVE( Key, ... )                                                                                               \
    EXPECT_FALSE( qvDictHas##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                                 \
    EXPECT_EQ( nullptr, qvDict##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                              \
    EXPECT_EQ( -1, qvDictIndexOf##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                            \
    qvDictDel##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__ );                                                            \
    for( int i = 0; i < 2; i++ )                                                                                       \
    {                                                                                                                  \
        qvDictSet##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__, value );                                                 \
        EXPECT_EQ( length + 1, qvDictLength( dict ) );                                                                 \
        EXPECT_TRUE( qvDictHas##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                              \
        EXPECT_EQ( value.get(), Ref< QV_OBJ >( qvDict##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) ).get() );               \
        EXPECT_LE( 0, qvDictIndexOf##Key( dict __VA_OPT__(, ) __VA_ARGS__ ) );                                         \
        if( i == 0 )                                                                                                   \
        {                                                                                                              \
            qvDictDel##Key( dict.at() __VA_OPT__(, ) __VA_ARGS__ );                                                    \
            EXPECT_EQ( length, qvDictLength( dict ) );                                                                 \
        }                                                                                                              \
    }                                                                                                                  \
    length++;

    FIVE( ObjKey, obj )
    FIVE( NullKey )
    FIVE( BoolKey, QV_TRUE )
    FIVE( IntKey, QV_INT( -3 ) )
    FIVE( RealKey, 0.5 )
    FIVE( SortKey, qvStringSort() )
    FIVE( StringKey, str )
    FIVE( StringKeyCstr, "cstr", 2 )
    FIVE( StringKeyWcstr, L"wcstr", -1 )

#undef FIVE

    // By the names of the sorts, whatever the values.
    EXPECT_EQ( "{true=1, -3=1, 9=1, null=1, 0.500000=1, QV_STRING=1, cs=1, str=1, wcstr=1}", textOf( dict.get() ) );
}

TEST( Dict, EqualKeysAreOneAndTheLastOneStays )
{
    Ref< QV_DICT > dict( qvDictCreate() );
    Ref< QV_OBJ >  first = stringObj( U"key" ), second = stringObj( U"key" ), value = boxed( 1 );

    qvDictSetObjKey( dict.at(), first, value );
    qvDictSetObjKey( dict.at(), second, value );

    EXPECT_EQ( 1, qvDictLength( dict ) );
    EXPECT_EQ( second.get(), Ref< QV_OBJ >( qvDictKeyAt( dict, 0 ) ).get() );
    EXPECT_EQ( 1, references( first.get() ) );
    EXPECT_EQ( 2, references( value.get() ) );
}

TEST( Dict, IsMadeOfVectorsAndGivesThem )
{
    Ref< QV_VECTOR > keys( qvVectorCreate() ), values( qvVectorCreate() );

    for( QV_INT i : { 3, 1, 3, 2, 1 } )
    {
        qvVectorAppendInt( values.at(), qvVectorLength( keys ) );
        qvVectorAppendInt( keys.at(), i );
    }

    Ref< QV_DICT > dict( qvDictCreateWithKeysAndValues( keys, values ) );
    EXPECT_EQ( "{1=1, 2=3, 3=0}", textOf( dict.get() ) );
    EXPECT_EQ( "<1, 2, 3>", textOf( Ref< QV_VECTOR >( qvDictKeysVector( dict ) ).get() ) );
    EXPECT_EQ( "<1, 3, 0>", textOf( Ref< QV_VECTOR >( qvDictValuesVector( dict ) ).get() ) );

    qvDictClear( dict.at() );
    EXPECT_EQ( "{}", textOf( dict.get() ) );
    EXPECT_EQ( Ref< QV_VECTOR >( qvVectorCreate() ).get(), Ref< QV_VECTOR >( qvDictKeysVector( dict ) ).get() );
}

TEST( Dict, SetsOperateOnTheDictItself )
{
    for( QV_INT count : { 3, 30 } )
    {
        Ref< QV_DICT > dict( qvDictCreate() );
        Ref< QV_OBJ >  value = boxed( 1 );

        for( QV_INT i = 0; i < count; i++ )
            qvDictSetIntKey( dict.at(), i, value );

        Ref< QV_DICT > same = Ref< QV_DICT >::share( dict );
        qvDictInclude( dict.at(), dict, QV_TRUE );
        qvDictInclude( dict.at(), dict, QV_FALSE );
        qvDictIntersect( dict.at(), dict, QV_TRUE );
        EXPECT_TRUE( qvDictEquals( same, dict ) );

        // As a value and as a key it goes in as it was.
        qvDictSetIntKey( dict.at(), count, qvDictObj( dict ) );
        Ref< QV_OBJ > inner( qvDictIntKey( dict, count ) );
        EXPECT_TRUE( qvDictEquals( same, qvDictFrom( inner ) ) );
        qvDictSetObjKey( same.at(), qvDictObj( same ), value );
        EXPECT_EQ( count + 1, qvDictLength( same ) );

        Ref< QV_DICT > empty( qvDictCreate() );
        qvDictExclude( dict.at(), dict );
        EXPECT_EQ( empty.get(), dict.get() );
    }
}

TEST( Dict, DeletingWhatIsAbsentKeepsASharedDictShared )
{
    Ref< QV_DICT > dict( qvDictCreate() ), many( qvDictCreate() );
    Ref< QV_OBJ >  value = boxed( 1 );
    qvDictSetIntKey( dict.at(), 1, value );

    for( QV_INT i = 10; i < 30; i++ )
        qvDictSetIntKey( many.at(), i, value );

    Ref< QV_DICT > holder = Ref< QV_DICT >::share( dict );
    qvDictDelIntKey( dict.at(), 2 );
    qvDictExclude( dict.at(), many );
    EXPECT_EQ( holder.get(), dict.get() );

    qvDictDelIntKey( dict.at(), 1 );
    EXPECT_EQ( Ref< QV_DICT >( qvDictCreate() ).get(), dict.get() );
    EXPECT_EQ( 1, qvDictLength( holder ) );
}

TEST( Dict, ClearingInsideKeepsTheBlock )
{
    Ref< QV_DICT > dict( qvDictCreate() );
    Ref< QV_OBJ >  value = boxed( 1 );

    for( QV_INT i = 0; i < 200; i++ )
        qvDictSetIntKey( dict.at(), i, value );

    QV_DICT *before = dict;
    qv___DictClear( dict.at() );
    EXPECT_EQ( before, dict.get() );
    EXPECT_EQ( 224 * 16, allocated( dict.get() ) );
    EXPECT_EQ( 1, references( value.get() ) );

    // The next keys may be of another sort.
    qvDictSetStringKeyCstr( dict.at(), "b", -1, value );
    qvDictSetStringKeyCstr( dict.at(), "a", -1, value );
    EXPECT_EQ( 224 * 16, allocated( dict.get() ) );
    EXPECT_EQ( "{a=1, b=1}", textOf( dict.get() ) );

    Ref< QV_DICT > holder = Ref< QV_DICT >::share( dict );
    qv___DictClear( dict.at() );
    EXPECT_EQ( 0, qvDictLength( dict ) );
    EXPECT_EQ( 2, qvDictLength( holder ) );
}

TEST( Dict, OrdersByKeysThenValuesThenLength )
{
    Ref< QV_OBJ >  one = boxed( 1 ), two = boxed( 2 );
    auto           dictOf = []( std::initializer_list< std::pair< QV_INT, QV_OBJ * > > entries ) {
        Ref< QV_DICT > dict( qvDictCreate() );
        for( auto &[key, value] : entries )
            qvDictSetIntKey( dict.at(), key, value );
        return dict;
    };
    Ref< QV_DICT > a = dictOf( { { 1, one } } ), b = dictOf( { { 1, two } } ), c = dictOf( { { 1, one }, { 2, one } } ),
                   d = dictOf( { { 2, one } } );

    EXPECT_EQ( -1, qvDictCompare( a, b ) );
    EXPECT_EQ( 1, qvDictCompare( b, c ) );
    EXPECT_EQ( -1, qvDictCompare( a, c ) );
    EXPECT_EQ( -1, qvDictCompare( b, d ) );
}

TEST( Dict, ReportsBrokenContracts )
{
    Ref< QV_DICT >   dict( qvDictCreate() );
    Ref< QV_VECTOR > none( qvVectorCreate() ), one( qvVectorCreateFromObj( boxed( 1 ) ) );
    QV_DICT         *null = nullptr;

    EXPECT_BROKEN( qvDictSetIntKey( &null, 1, boxed( 1 ) ), "*dict" );
    EXPECT_BROKEN( qvDictSetIntKey( dict.at(), 1, nullptr ), "value" );
    EXPECT_BROKEN( qvDictHasStringKey( dict, nullptr ), "key" );
    EXPECT_BROKEN( qvDictValueAt( dict, 0 ), "idx < dict->length" );
    EXPECT_BROKEN( qvDictDelAt( dict.at(), 0 ), "idx < (*dict)->length" );
    EXPECT_BROKEN( qvDictKeyAt( dict, -1 ), "idx >= 0" );
    EXPECT_BROKEN( qvDictInclude( dict.at(), nullptr, QV_TRUE ), "src" );
    EXPECT_BROKEN(
        qvDictCreateWithKeysAndValues( none, one ),
        "qvVectorLength( keysVector ) == qvVectorLength( valuesVector )" );
}
