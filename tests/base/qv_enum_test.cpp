#include "qv_test_support.h"

#include "qv/base/qv_enum.h"
#include "qv/base/qv_vector.h"

#include <map>
#include <random>

using qv::Ref;
using namespace qv::test;

namespace
{
Ref< QV_ENUM > colours()
{
    Ref< QV_ENUM > en( qvEnumCreate() );
    qvEnumSetEnumerantCstr( en.at(), "COLOUR_RED", -1, 0 );
    qvEnumSetEnumerantCstr( en.at(), "COLOUR_GREEN", -1, 1 );
    qvEnumSetEnumerantWcstr( en.at(), L"COLOUR_BLUE and more", 11, 16 );

    return en;
}

// The name of a value, or a dash.
std::string nameOf( QV_ENUM *en, QV_INT value )
{
    QV_STRING *name = qvEnumGenerate( en, value );
    return name ? take( name ) : "-";
}
} // namespace

TEST( Enum, NamesAndValuesAreFoundBothWays )
{
    Ref< QV_ENUM > en = colours();

    EXPECT_EQ( 0, qvEnumEnumerantCstr( en, "COLOUR_RED", -1 ) );
    EXPECT_EQ( 16, qvEnumEnumerantWcstr( en, L"COLOUR_BLUE", -1 ) );
    EXPECT_EQ( -1, qvEnumEnumerantCstr( en, "COLOUR_PINK", -1 ) );
    EXPECT_TRUE( qvEnumHasEnumerantCstr( en, "COLOUR_RED", -1 ) );
    EXPECT_FALSE( qvEnumHasEnumerantWcstr( en, L"COLOUR_RE", -1 ) );
    EXPECT_EQ( "COLOUR_GREEN", nameOf( en, 1 ) );
    EXPECT_EQ( "-", nameOf( en, 2 ) );
    EXPECT_EQ( "-", nameOf( en, -1 ) );

    Ref< QV_VECTOR > names( qvEnumEnumerantsVector( en ) );
    EXPECT_EQ( 3, qvVectorLength( names ) );
    EXPECT_EQ( "COLOUR_BLUE", textOf( Ref< QV_OBJ >( qvVectorObjAt( names, 0 ) ).get() ) );
}

TEST( Enum, TextFromOutsideIsANameOrTheNumberOfOne )
{
    Ref< QV_ENUM > en = colours();

    const std::pair< const char *, QV_INT > CASES[] = {
        { "COLOUR_BLUE", 16 }, { "\t COLOUR_BLUE\n", 16 }, { " 16 ", 16 },  { "0x10", 16 }, { "2:1", 1 }, { "", -1 },
        { "2", -1 },           { "16 COLOUR_BLUE", -1 },  { "-1", -1 },    { "blue", -1 },  { "0", 0 },   { " ", -1 },
    };

    for( const auto &[given, value] : CASES )
    {
        Ref< QV_STRING > name = text( std::string_view( given ) );
        EXPECT_EQ( value, qvEnumParse( en, name ) ) << given;
        EXPECT_EQ( given, utf8( name ) );
    }
}

TEST( Enum, SharedOnesAreCopiedBeforeTheyChange )
{
    Ref< QV_ENUM > en = colours(), other = Ref< QV_ENUM >::share( en );

    qvEnumDelEnumerantCstr( en.at(), "COLOUR_PINK", -1 );
    EXPECT_EQ( en.get(), other.get() );

    qvEnumSetEnumerantCstr( en.at(), "COLOUR_PINK", -1, 1 );
    qvEnumDelEnumerantCstr( en.at(), "COLOUR_RED", -1 );
    EXPECT_EQ( "COLOUR_PINK", nameOf( en, 1 ) );
    EXPECT_EQ( "COLOUR_GREEN", nameOf( other, 1 ) );
    EXPECT_EQ( 0, qvEnumEnumerantCstr( other, "COLOUR_RED", -1 ) );
    EXPECT_EQ( -1, qvEnumEnumerantCstr( en, "COLOUR_RED", -1 ) );
}

TEST( Enum, AgreesWithTwoMaps )
{
    std::mt19937                    random( 15 );
    Ref< QV_ENUM >                  en( qvEnumCreate() );
    std::map< std::string, QV_INT > values;
    std::map< QV_INT, std::string > names;

    for( int i = 0; i < 5000; i++ )
    {
        std::string name  = "N_" + std::to_string( random() % 8 );
        QV_INT      value = random() % 6;
        bool        set   = random() % 3;

        if( auto entry = values.find( name ); entry != values.end() )
        {
            if( auto named = names.find( entry->second ); named != names.end() && named->second == name )
                names.erase( named );

            values.erase( entry );
        }

        if( set )
        {
            values[name] = value;
            names[value] = name;
            qvEnumSetEnumerantCstr( en.at(), name.c_str(), -1, value );
        }
        else
        {
            qvEnumDelEnumerantCstr( en.at(), name.c_str(), -1 );
        }

        ASSERT_EQ( values.contains( name ) ? values[name] : -1, qvEnumEnumerantCstr( en, name.c_str(), -1 ) );

        for( QV_INT v = 0; v < 6; v++ )
            ASSERT_EQ( names.contains( v ) ? names[v] : "-", nameOf( en, v ) );
    }
}

TEST( Enum, BrokenContractsAreReported )
{
    Ref< QV_ENUM > en = colours();

    EXPECT_BROKEN( qvEnumSetEnumerantCstr( en.at(), "colour", -1, 1 ), "qvNameUpperCaseOk( name, QV_TRUE )" );
    EXPECT_BROKEN( qvEnumSetEnumerantCstr( en.at(), "COLOUR", -1, -1 ), "value >= 0" );
    EXPECT_BROKEN( qvEnumDelEnumerantCstr( en.at(), "", -1 ), "qvNameUpperCaseOk( name, QV_TRUE )" );
    EXPECT_BROKEN( qvEnumParse( en, nullptr ), "name" );
    EXPECT_BROKEN( qvEnumGenerate( nullptr, 1 ), "en" );
}
