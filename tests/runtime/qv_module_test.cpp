#include "qv_test_support.h"

#include "qv/qv.h"
#include "qv/runtime/qv_module_private.h"

#include <array>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_MODULE_RECORD ANY_PRODUCT = { 2,       nullptr, nullptr,       -1,    -1, -1, nullptr, nullptr,
                                       nullptr, "name",  "description", "1.0", "", "" };

QV_MODULE moduleWith( const QV_MODULE_RECORD *record )
{
    QV_MODULE module    = qv___module;
    module.moduleRecord = record;

    return module;
}
} // namespace

TEST( Module, NamesAreShortAndPlain )
{
    const std::string LONGEST( 32, 'z' );

    for( std::string good : { "a", "a_1", "z0123456789", LONGEST.c_str() } )
        EXPECT_TRUE( qvModuleNameOk( text( good ) ) ) << good;

    for( std::string bad : { "", "a_b_c", "a__b", "a_", "_a", "1a", "aB", "a-b", "a/b", "\xc3\xa4" } )
        EXPECT_FALSE( qvModuleNameOk( text( bad ) ) ) << bad;

    EXPECT_FALSE( qvModuleNameOk( text( LONGEST + "z" ) ) || qvModuleNameOk( text( std::string( "a\0", 2 ) ) ) );
}

TEST( Module, TheLibraryIsOne )
{
    EXPECT_EQ( "Platform Independent System Base", take( qvModuleDescription( qvModule() ) ) );
    EXPECT_TRUE( qv___ModuleCheckCompatibility( qvModule() ) );
    EXPECT_DEATH( qvModuleSort()->freeFunc( qvModuleObj( qvModule() ) ), "module free" );
}

TEST( Module, ARecordHasToFitTheProduct )
{
    using Record            = QV_MODULE_RECORD;
    const Record *const ANY = &ANY_PRODUCT, *const OWN = &qv___module_record;

    const struct
    {
        bool          fits;
        const Record *record;
        void ( *change )( Record &r );
    } CASES[] = {
        { false, ANY, []( Record &r ) { r.recordVersion = 1; } },

        // No product: nothing of one may be given.
        { false, ANY, []( Record &r ) { r.productVersionMajor = 4; } },
        { false, ANY, []( Record &r ) { r.productFriendlyName = "morvane"; } },
        { false, ANY, []( Record &r ) { r.productVendorName = qv___module_record.productVendorName; } },

        // A product: what is given is that product's.
        { true, ANY, []( Record &r ) { r.productName = "morvane"; } },
        { false, OWN, []( Record &r ) { r.productName = "morvan"; } },
        { false, OWN, []( Record &r ) { r.productVersionRelease--; } },
        { false, OWN, []( Record &r ) { r.productCopyright = "none"; } },
        { true, OWN, []( Record &r ) { r.productCopyright = nullptr; } },

        // Any version, from some field on downwards.
        { true, OWN, []( Record &r ) { r.productVersionRelease = r.productVersionMinor = -1; } },
        { false, OWN, []( Record &r ) { r.productVersionMinor = -1; } },
        { false, OWN, []( Record &r ) { r.productVersionMajor = r.productVersionRelease = -1; } },

        // The module itself.
        { false, ANY, []( Record &r ) { r.name = nullptr; } },
        { false, ANY, []( Record &r ) { r.name = "a\xff"; } },
        { false, ANY, []( Record &r ) { r.version = "1"; } },
        { true, ANY, []( Record &r ) { r.deps = "a b_c d1"; } },
        { false, ANY, []( Record &r ) { r.deps = "a  b"; } },
        { false, ANY, []( Record &r ) { r.exts = "a ../b"; } },
    };

    for( const auto &row : CASES )
    {
        Record    record = *row.record;
        QV_MODULE module = moduleWith( &record );
        row.change( record );
        EXPECT_EQ( row.fits, qv___ModuleCheckCompatibility( &module ) ) << "row " << &row - CASES;
    }

    QV_MODULE module = moduleWith( nullptr );
    EXPECT_FALSE( qv___ModuleCheckCompatibility( &module ) );
    EXPECT_FALSE( qv___ModuleCheckCompatibility( reinterpret_cast< QV_MODULE * >( qvModuleSort() ) ) );

    module      = moduleWith( &ANY_PRODUCT );
    module.sort = qvModuleSort();
    EXPECT_FALSE( qv___ModuleCheckCompatibility( &module ) );
}

/* Versions ------------------------------------------------------------------------------------------------------- */

namespace
{
using Numbers = std::array< QV_INT, 4 >;

Ref< QV_MODULE_VERSION > version( const Numbers &numbers )
{
    return Ref< QV_MODULE_VERSION >( qvModuleVersionCreate( numbers[0], numbers[1], numbers[2], numbers[3] ) );
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
    EXPECT_EQ( LARGEST_TEXT + "." + LARGEST_TEXT, read( LARGEST_TEXT + "." + LARGEST_TEXT ) );
    EXPECT_EQ( "1.2", read( "01#0.002#000" ) );
    EXPECT_EQ( "1#2.3", read( " +1 # 2. 3 " ) ); // as all numbers are read

    for( std::string bad : { "", "1", "1.", "1.2.3", "1#.0", "1.0#", "1#2#3.0", "1#1000.0", "-1.0", "1#-1.0", "1.0x" } )
        EXPECT_EQ( "", read( bad ) ) << bad;

    EXPECT_EQ( "", read( BEYOND_TEXT + ".0" ) + read( "0." + BEYOND_TEXT ) );
}

TEST( ModuleVersion, IsOrderedByItsFourNumbers )
{
    const Numbers SORTED[] = { { 0, 0, 0, 0 }, { 0, 0, 0, 1 }, { 0, 0, 1, 0 },          { 0, 0, LARGEST, LEFT },
                               { 0, 1, 0, 0 }, { 1, 0, 0, 0 }, { 1, 0, LARGEST, LEFT }, { LARGEST, 0, 0, 0 } };

    for( const Numbers &a : SORTED )
        for( const Numbers &b : SORTED )
            EXPECT_EQ( ( &a > &b ) - ( &a < &b ), qvModuleVersionCompare( version( a ), version( b ) ) );

    Ref< QV_MODULE_VERSION > each = version( { 1, 2, 3, 4 } );
    EXPECT_EQ( "1#2.3#4", textOf( each.get() ) );
    EXPECT_EQ( 1, qvModuleVersionMajor( each ) );
    EXPECT_EQ( 3, qvModuleVersionMinor( each ) );
    EXPECT_EQ( 4, qvModuleVersionMinorInsert( each ) );
    EXPECT_EQ( 1002, qvModuleVersionCompatibility( each ) );
}

TEST( ModuleVersion, KeepsItsBounds )
{
    expectReports( {
        { [] { version( { -1, 0, 0, 0 } ); }, "major >= 0" },
        { [] { version( { 0, 1000, 0, 0 } ); }, "majorInsert >= 0 && majorInsert <= 999" },
        { [] { version( { LARGEST + 1, 0, 0, 0 } ); }, "QV_INT_MUL_OK( major, 1000 )" },
        { [] { version( { 0, 0, LARGEST, LEFT + 1 } ); }, "QV_INT_ADD_OK( minor * 1000, minorInsert )" },
    } );
}
