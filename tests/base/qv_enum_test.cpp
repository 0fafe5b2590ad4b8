// Enums and Flagsets: names for values.

#include "qv_test_support.h"

#include "qv/base/qv_enum.h"
#include "qv/base/qv_flagset.h"
#include "qv/base/qv_vector.h"

#include <map>
#include <random>

using qv::Ref;
using namespace qv::test;

namespace
{
// What both families do, on small numbers, which in a Flagset are the indexes of the bits.
struct Enums
{
    using Names = QV_ENUM;

    static constexpr auto create = qvEnumCreate;
    static constexpr auto vector = qvEnumEnumerantsVector;
    static constexpr auto set    = qvEnumSetEnumerant;
    static constexpr auto del    = qvEnumDelEnumerant;
    static constexpr auto delW   = qvEnumDelEnumerantWcstr;
    static constexpr auto get    = qvEnumEnumerant;
    static constexpr auto has    = qvEnumHasEnumerantCstr;
    static constexpr auto NONE   = QV_INT( -1 );

    static QV_INT value( QV_INT number )
    {
        return number;
    }

    static std::string nameOf( QV_ENUM *en, QV_INT number )
    {
        QV_STRING *name = qvEnumGenerate( en, number );
        return name ? take( name ) : "";
    }
};

struct Flagsets
{
    using Names = QV_FLAGSET;

    static constexpr auto create = qvFlagsetCreate;
    static constexpr auto vector = qvFlagsetFlagsVector;
    static constexpr auto set    = qvFlagsetSetFlag;
    static constexpr auto del    = qvFlagsetDelFlag;
    static constexpr auto delW   = qvFlagsetDelFlagWcstr;
    static constexpr auto get    = qvFlagsetFlag;
    static constexpr auto has    = qvFlagsetHasFlagCstr;
    static constexpr auto NONE   = QV_INT( 0 );

    static QV_INT value( QV_INT number )
    {
        return QV_INT( 1ull << ( 7 * number ) );
    }

    // By way of the bits that have a name.
    static std::string nameOf( QV_FLAGSET *fs, QV_INT number )
    {
        Ref< QV_STRING > digits( qvStringCreateFromFormatCstr( "%i", -1, value( number ) ) );
        return take( qvFlagsetGenerate( fs, qvFlagsetParse( fs, digits ) ) );
    }
};

template< class Family >
class Names : public testing::Test
{
};
} // namespace

using Families = testing::Types< Enums, Flagsets >;
TYPED_TEST_SUITE( Names, Families );

// Names are set and deleted, by texts that sometimes only the object itself holds, in objects that are shared. All
// agrees with two maps, and another holder's object stays as it is.
TYPED_TEST( Names, AgreeWithTwoMaps )
{
    using F = TypeParam;

    std::mt19937                    random( 15 );
    Ref< typename F::Names >        names( F::create() ), other;
    std::map< std::string, QV_INT > values, otherValues;
    std::map< QV_INT, std::string > byValue;

    for( int i = 0; i < 5000; i++ )
    {
        std::string name  = "N_" + std::to_string( random() % 10 );
        QV_INT      value = random() % 7 + ( random() % 2 ? 3 : 0 );

        if( i % 50 == 0 )
        {
            other       = Ref< typename F::Names >::share( names );
            otherValues = values;
        }

        if( i % 50 == 25 )
        {
            other.reset();
            otherValues.clear();
        }

        Ref< QV_STRING > own  = text( name );
        QV_STRING       *lent = own;

        if( random() % 2 )
        {
            Ref< QV_VECTOR > all( F::vector( names ) );

            for( QV_INT k = 0; k < qvVectorLength( all ); k++ )
            {
                Ref< QV_OBJ > held( qvVectorObjAt( all, k ) );

                if( textOf( held.get() ) == name )
                    lent = qvStringFrom( held ); // then only the object itself holds it
            }
        }

        if( auto entry = values.find( name ); entry != values.end() )
        {
            if( byValue[entry->second] == name )
                byValue.erase( entry->second );

            values.erase( entry );
        }

        switch( random() % 6 )
        {
            case 0: F::del( names.at(), lent ); break;
            case 1: F::delW( names.at(), std::wstring( begin( name ), end( name ) ).c_str(), -1 ); break;

            default:
                values[name]   = value;
                byValue[value] = name;
                F::set( names.at(), lent, F::value( value ) );
        }

        ASSERT_EQ( values.contains( name ) ? F::value( values[name] ) : F::NONE, F::get( names, own ) );
        ASSERT_EQ( values.contains( name ), F::has( names, ( name + "?" ).c_str(), QV_INT( name.size() ) ) != 0 );

        for( QV_INT v = 0; v < 10; v++ )
            ASSERT_EQ( byValue.contains( v ) ? byValue[v] : "", F::nameOf( names, v ) );

        for( const auto &[otherName, otherValue] : otherValues )
        {
            ASSERT_EQ( F::value( otherValue ), F::get( other, text( otherName ) ) );
        }

        ASSERT_EQ( QV_INT( values.size() ), qvVectorLength( Ref< QV_VECTOR >( F::vector( names ) ) ) );
    }
}

TEST( Enum, TextFromOutsideIsANameOrTheNumberOfOne )
{
    Ref< QV_ENUM > en( qvEnumCreate() );
    qvEnumSetEnumerantCstr( en.at(), "COLOUR_RED", -1, 0 );
    qvEnumSetEnumerantCstr( en.at(), "COLOUR_GREEN", -1, 1 );
    qvEnumSetEnumerantWcstr( en.at(), L"COLOUR_BLUE and more", 11, 16 );

    const std::pair< const char *, QV_INT > CASES[] = {
        { "COLOUR_BLUE", 16 }, { "\t COLOUR_BLUE\n", 16 }, { " 16 ", 16 },  { "0x10", 16 }, { "2:1", 1 }, { "", -1 },
        { "2", -1 },           { "16 COLOUR_BLUE", -1 },  { "-1", -1 },    { "blue", -1 },  { "0", 0 },   { " ", -1 },
    };

    for( const auto &[given, value] : CASES )
        EXPECT_EQ( value, qvEnumParse( en, text( std::string_view( given ) ) ) ) << given;

    EXPECT_BROKEN( qvEnumSetEnumerantCstr( en.at(), "colour", -1, 1 ), "qvNameUpperCaseOk( name, QV_TRUE )" );
    EXPECT_BROKEN( qvEnumSetEnumerantCstr( en.at(), "COLOUR", -1, -1 ), "value >= 0" );
    EXPECT_BROKEN( qvEnumDelEnumerantCstr( en.at(), "", -1 ), "qvNameUpperCaseOk( name, QV_TRUE )" );
}

TEST( Flagset, TextFromOutsideMayHoldNamesAndNumbers )
{
    Ref< QV_FLAGSET > fs( qvFlagsetCreate() );
    qvFlagsetSetFlagCstr( fs.at(), "PEN_UP", -1, 4 );
    qvFlagsetSetFlagWcstr( fs.at(), L"PEN_DOWN", -1, 1 );
    qvFlagsetSetFlagCstr( fs.at(), "PEN_LAST", -1, QV_INT_MIN );

    auto parsed = [&]( std::string_view flags ) { return qvFlagsetParse( fs, text( flags ) ); };

    EXPECT_EQ( 5, parsed( "PEN_UP | PEN_DOWN" ) );
    EXPECT_EQ( QV_INT_MIN | 4, parsed( "PEN_LAST|0x0F & more|\t0x6 |PEN|-" ) );
    EXPECT_EQ( QV_INT_MIN | 5, parsed( "-1" ) );
    EXPECT_EQ( 0, parsed( "" ) );
    EXPECT_EQ( 0, parsed( "||2" ) );
    EXPECT_EQ( "PEN_DOWN|PEN_UP|PEN_LAST", take( qvFlagsetGenerate( fs, QV_INT_MIN | 5 ) ) );
    EXPECT_EQ( "", take( qvFlagsetGenerate( fs, 0 ) ) );

    for( QV_INT value : { 0, 3, -1 } )
        EXPECT_BROKEN(
            qvFlagsetSetFlagCstr( fs.at(), "PEN", -1, value ),
            "value && qvIntBitHighest( value ) == qvIntBitLowest( value )" );

    EXPECT_BROKEN( qvFlagsetSetFlagCstr( fs.at(), "_PEN", -1, 1 ), "qvNameUpperCaseOk( name, QV_TRUE )" );
    EXPECT_BROKEN( qvFlagsetGenerate( fs, 3 ), "name" );
}
