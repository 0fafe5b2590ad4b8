#include "qv_test_support.h"

#include "qv/base/qv_flagset.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_runtime.h"

using qv::Ref;
using namespace qv::test;

namespace
{
Ref< QV_FLAGSET > pens()
{
    Ref< QV_FLAGSET > fs( qvFlagsetCreate() );
    qvFlagsetSetFlagCstr( fs.at(), "PEN_UP", -1, 4 );
    qvFlagsetSetFlagWcstr( fs.at(), L"PEN_DOWN", -1, 1 );
    qvFlagsetSetFlagCstr( fs.at(), "PEN_LAST", -1, QV_INT_MIN );

    return fs;
}

std::string namesOf( QV_FLAGSET *fs, QV_INT flags )
{
    return take( qvFlagsetGenerate( fs, flags ) );
}

QV_INT parsed( QV_FLAGSET *fs, std::string_view flags )
{
    return qvFlagsetParse( fs, text( flags ) );
}
} // namespace

TEST( Flagset, NamesComeInTheOrderOfTheBits )
{
    Ref< QV_FLAGSET > fs = pens();

    EXPECT_EQ( "PEN_DOWN|PEN_UP|PEN_LAST", namesOf( fs, QV_INT_MIN | 5 ) );
    EXPECT_EQ( "", namesOf( fs, 0 ) );
    EXPECT_EQ( 4, qvFlagsetFlagCstr( fs, "PEN_UPPER", 6 ) );
    EXPECT_EQ( 0, qvFlagsetFlagWcstr( fs, L"PEN", -1 ) );
    EXPECT_TRUE( qvFlagsetHasFlagCstr( fs, "PEN_LAST", -1 ) );
    EXPECT_FALSE( qvFlagsetHasFlagWcstr( fs, L"PEN_LOST", -1 ) );

    Ref< QV_VECTOR > names( qvFlagsetFlagsVector( fs ) );
    EXPECT_EQ( 3, qvVectorLength( names ) );
    EXPECT_EQ( "PEN_UP", textOf( Ref< QV_OBJ >( qvVectorObjAt( names, 2 ) ).get() ) );
}

TEST( Flagset, TextFromOutsideMayHoldNamesAndNumbers )
{
    Ref< QV_FLAGSET > fs = pens();

    EXPECT_EQ( 5, parsed( fs, "PEN_UP | PEN_DOWN" ) );
    EXPECT_EQ( "PEN_DOWN|PEN_UP", namesOf( fs, parsed( fs, "PEN_UP|PEN_DOWN|PEN_UP" ) ) );
    EXPECT_EQ( QV_INT_MIN | 4, parsed( fs, "PEN_LAST|0x0F & more|\t0x6 |PEN|-" ) );
    EXPECT_EQ( QV_INT_MIN | 5, parsed( fs, "-1" ) );
    EXPECT_EQ( 0, parsed( fs, "" ) );
    EXPECT_EQ( 0, parsed( fs, "||2" ) );
}

TEST( Flagset, NamesMoveAndTakeOnlyTheirOwnBitsAlong )
{
    Ref< QV_FLAGSET > fs = pens(), other = Ref< QV_FLAGSET >::share( fs );

    // Of two names for one bit, the later one is told.
    qvFlagsetSetFlagCstr( fs.at(), "PEN_RAISED", -1, 4 );
    EXPECT_EQ( "PEN_DOWN|PEN_RAISED", namesOf( fs, 5 ) );
    qvFlagsetDelFlagCstr( fs.at(), "PEN_UP", -1 );
    EXPECT_EQ( "PEN_RAISED", namesOf( fs, 4 ) );
    EXPECT_EQ( 0, parsed( fs, "PEN_UP" ) );

    qvFlagsetSetFlagCstr( fs.at(), "PEN_RAISED", -1, 8 );
    EXPECT_EQ( "PEN_DOWN|PEN_RAISED", namesOf( fs, 9 ) );
    EXPECT_EQ( 9, parsed( fs, "0xF" ) );

    // The other holder's is as it was.
    EXPECT_EQ( "PEN_UP", namesOf( other, 4 ) );
    qvFlagsetDelFlagWcstr( other.at(), L"PEN_RAISED", -1 );
    qvFlagsetDelFlagCstr( other.at(), "PEN_UP", -1 );
    EXPECT_EQ( 1, parsed( other, "5" ) );
}

TEST( Flagset, BrokenContractsAreReported )
{
    Ref< QV_FLAGSET > fs = pens();

    for( QV_INT value : { 0, 3, -1 } )
        EXPECT_BROKEN(
            qvFlagsetSetFlagCstr( fs.at(), "PEN", -1, value ),
            "value && qvIntBitHighest( value ) == qvIntBitLowest( value )" );

    EXPECT_BROKEN( qvFlagsetSetFlagCstr( fs.at(), "_PEN", -1, 1 ), "qvNameUpperCaseOk( name, QV_TRUE )" );
    EXPECT_BROKEN( qvFlagsetGenerate( fs, 3 ), "name" );
    EXPECT_BROKEN( qvFlagsetParse( fs, nullptr ), "flags" );
}

TEST( Flagset, RuntimeFlagsHaveNames )
{
    EXPECT_EQ(
        "QV_RUNTIME_FLAG_SYSTEM|QV_RUNTIME_FLAG_OBJECT_DATABASE|QV_RUNTIME_FLAG_SNAPSHOT_SORT|"
        "QV_RUNTIME_FLAG_MODULE_DEBUG",
        take( qvRuntimeFlagsToString( 2 + 8 + 32 + 2048 + 4096 ) ) );
    EXPECT_EQ( "QV_RUNTIME_FLAG_MINIMAL", take( qvRuntimeFlagsToString( 0xFFF ) ) );
    EXPECT_EQ( 0xFFE, qvRuntimeFlagsFromString( text( std::string_view( "0xFFE|1048576" ) ) ) );
    EXPECT_EQ( 8, qvRuntimeFlagsFromString( text( std::string_view( "QV_RUNTIME_FLAG_OBJECT_DATABASE|0x80" ) ) ) );
    EXPECT_BROKEN( qvRuntimeFlagsFromString( nullptr ), "qvs" );
}
