// Enums and Flagsets: names for values.

#include "qv_test_support.h"

#include "qv/base/qv_enum.h"
#include "qv/base/qv_flagset.h"
#include "qv/base/qv_vector.h"

using qv::Ref;
using namespace qv::test;

namespace
{
// Both families keep, of several names with one value, the one entered last, and leave what others hold as it is.
template< class T >
void walkNames(
    T *names, void ( *set )( T **, const char *, QV_INT, QV_INT ), void ( *del )( T **, const char *, QV_INT ),
    QV_STRING *( *generate )(T *, QV_INT), QV_VECTOR *( *all )(T *))
{
    Ref< T > now( names );
    auto     count = [&]( T *of ) { return qvVectorLength( Ref< QV_VECTOR >( all( of ) ) ); };

    set( now.at(), "FIRST", -1, 2 );
    set( now.at(), "LATER", -1, 2 );
    del( now.at(), "FIRST", -1 );
    EXPECT_EQ( "LATER", take( generate( now, 2 ) ) );

    Ref< T > kept = Ref< T >::share( now );
    del( now.at(), "LATER", -1 );
    EXPECT_EQ( 1, count( kept ) );
    EXPECT_EQ( 0, count( now ) );

    now = Ref< T >::share( kept );
    set( now.at(), "LATER", -1, 4 );
    EXPECT_EQ( "LATER", take( generate( now, 4 ) ) );
    EXPECT_EQ( "LATER", take( generate( kept, 2 ) ) );

    set( now.at(), "OTHER", -1, 2 );
    del( now.at(), "LATER", -1 );
    EXPECT_EQ( "OTHER", take( generate( now, 2 ) ) );
}
} // namespace

TEST( Enum, AValueKeepsTheNameEnteredLast )
{
    walkNames( qvEnumCreate(), qvEnumSetEnumerantCstr, qvEnumDelEnumerantCstr, qvEnumGenerate, qvEnumEnumerantsVector );
    walkNames( qvFlagsetCreate(), qvFlagsetSetFlagCstr, qvFlagsetDelFlagCstr, qvFlagsetGenerate, qvFlagsetFlagsVector );
}

TEST( Enum, TextFromOutsideIsANameOrTheNumberOfOne )
{
    Ref< QV_ENUM > en( qvEnumCreate() );
    qvEnumSetEnumerantCstr( en.at(), "COLOUR_RED", -1, 0 );
    qvEnumSetEnumerantCstr( en.at(), "COLOUR_GREEN", -1, 1 );
    qvEnumSetEnumerantWcstr( en.at(), L"COLOUR_BLUE and more", 11, 16 );

    const std::pair< const char *, QV_INT > CASES[] = {
        { "COLOUR_BLUE", 16 }, { "\t COLOUR_BLUE\n", 16 }, { " 16 ", 16 }, { "0x10", 16 }, { "2:1", 1 }, { "", -1 },
        { "2", -1 },           { "16 COLOUR_BLUE", -1 },   { "-1", -1 },   { "blue", -1 }, { "0", 0 },   { " ", -1 },
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
