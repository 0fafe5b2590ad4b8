#include "qv_test_support.h"

#include "qv/qv.h"

using qv::Ref;
using namespace qv::test;

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
}

TEST( Flagset, TextFromOutsideMayHoldNamesAndNumbers )
{
    Ref< QV_FLAGSET > fs( qvFlagsetCreate() );
    qvFlagsetSetFlagCstr( fs.at(), "PEN_UP", -1, 4 );
    qvFlagsetSetFlagWcstr( fs.at(), L"PEN_DOWN", -1, 1 );
    qvFlagsetSetFlagCstr( fs.at(), "PEN_LAST", -1, QV_INT_MIN );

    const std::pair< const char *, QV_INT > CASES[] = {
        { "PEN_UP | PEN_DOWN", 5 },
        { "PEN_LAST|0x0F & more|\t0x6 |PEN|-", QV_INT_MIN | 4 },
        { "-1", QV_INT_MIN | 5 },
        { "", 0 },
        { "||2", 0 } };

    for( const auto &[given, flags] : CASES )
        EXPECT_EQ( flags, qvFlagsetParse( fs, text( std::string_view( given ) ) ) ) << given;
}
