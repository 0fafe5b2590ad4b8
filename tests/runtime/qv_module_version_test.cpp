#include "qv_test_support.h"

#include "qv/runtime/qv_module_version.h"

#include <array>
#include <random>

using qv::Ref;
using namespace qv::test;
using namespace std::string_literals;

namespace
{
using Numbers = std::array< QV_INT, 4 >;

Ref< QV_MODULE_VERSION > version( const Numbers &numbers )
{
    return Ref< QV_MODULE_VERSION >( qvModuleVersionCreate( numbers[0], numbers[1], numbers[2], numbers[3] ) );
}

Numbers numbersOf( QV_MODULE_VERSION *ver )
{
    return {
        qvModuleVersionMajor( ver ), qvModuleVersionMajorInsert( ver ), qvModuleVersionMinor( ver ),
        qvModuleVersionMinorInsert( ver ) };
}

// The text of what a text is read as, or nothing.
std::string read( const std::string &input )
{
    Ref< QV_MODULE_VERSION > ver( qvModuleVersionTryCreateFromString( text( input ) ) );
    return ver ? textOf( ver.get() ) : "";
}

// The largest number that keeps its product with 1000 in range, and what may then be added.
const QV_INT LARGEST = QV_INT_MAX / 1000;
const QV_INT LEFT    = QV_INT_MAX % 1000;
} // namespace

TEST( ModuleVersion, ReadsItsTextAndNothingElse )
{
    const std::string LARGEST_TEXT = std::to_string( LARGEST ) + "#" + std::to_string( LEFT );
    const std::string BEYOND_TEXT  = std::to_string( LARGEST ) + "#" + std::to_string( LEFT + 1 );

    for( std::string good : { "1.2"s, "0.0"s, "1#5.2#7"s, "4#19.0"s, "0.0#999"s, LARGEST_TEXT + "." + LARGEST_TEXT } )
        EXPECT_EQ( good, read( good ) );

    EXPECT_EQ( "1.2", read( "01#0.002#000" ) );
    EXPECT_EQ( "1#2.3", read( " +1 # 2. 3 " ) ); // as all numbers are read

    for( std::string bad :
         { ""s, "1"s, "1."s, "1.2.3"s, "1#.0"s, "1.0#"s, "1#2#3.0"s, "1#1000.0"s, "-1.0"s, "1#-1.0"s, "1.0x"s,
           BEYOND_TEXT + ".0", "0." + BEYOND_TEXT } )
        EXPECT_EQ( "", read( bad ) ) << bad;

    Ref< QV_MODULE_VERSION > cut( qvModuleVersionTryCreateFromCstr( "1#5.2#77", 7 ) );
    Ref< QV_MODULE_VERSION > wide( qvModuleVersionTryCreateFromWcstr( L"1#5.2#7" ) );
    EXPECT_EQ( ( Numbers{ 1, 5, 2, 7 } ), numbersOf( cut ) );
    EXPECT_TRUE( qvModuleVersionEquals( cut, wide ) );
}

TEST( ModuleVersion, IsOrderedByItsFourNumbers )
{
    std::mt19937 random( 42 );
    auto         digit = [&] { return static_cast< QV_INT >( random() % 3 ); };
    auto         draw  = [&] { return Numbers{ digit(), digit(), digit(), digit() }; };

    for( int round = 0; round < 2000; round++ )
    {
        Numbers a = draw(), b = draw();
        ASSERT_EQ( ( a > b ) - ( a < b ), qvModuleVersionCompare( version( a ), version( b ) ) );
        ASSERT_EQ(
            a, numbersOf( Ref< QV_MODULE_VERSION >( qvModuleVersionTryCreateFromString(
                   Ref< QV_STRING >( qvModuleVersionToString( version( a ) ) ) ) ) ) );
    }

    // Not by their difference, which has no room.
    EXPECT_EQ( 1, qvModuleVersionCompare( version( { LARGEST, 0, 0, 0 } ), version( { 0, 0, LARGEST, 0 } ) ) );
}

TEST( ModuleVersion, KeepsItsBounds )
{
    EXPECT_EQ( 4019, qvModuleVersionCompatibility( version( { 4, 19, 0, 0 } ) ) );
    EXPECT_EQ( QV_INT_MAX, qvModuleVersionCompatibility( version( { LARGEST, LEFT, LARGEST, LEFT } ) ) );

    EXPECT_BROKEN( version( { -1, 0, 0, 0 } ), "major >= 0" );
    EXPECT_BROKEN( version( { 0, 1000, 0, 0 } ), "majorInsert >= 0 && majorInsert <= 999" );
    EXPECT_BROKEN( version( { LARGEST + 1, 0, 0, 0 } ), "QV_INT_MUL_OK( major, 1000 )" );
    EXPECT_BROKEN( version( { 0, 0, LARGEST, LEFT + 1 } ), "QV_INT_ADD_OK( minor * 1000, minorInsert )" );
}
