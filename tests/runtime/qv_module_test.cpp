#include "qv_test_support.h"

#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_module_version.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_sort.h"

#include <functional>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_MODULE_RECORD ANY_PRODUCT = { 2,       nullptr, nullptr,       -1,    -1, -1, nullptr, nullptr,
                                       nullptr, "name",  "description", "1.0", "", "" };

QV_MODULE moduleWith( const QV_MODULE_RECORD *record )
{
    return { QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ),
             record,
             nullptr,
             nullptr,
             nullptr,
             nullptr,
             nullptr,
             0,
             nullptr,
             nullptr };
}

bool fits( const QV_MODULE_RECORD &record )
{
    QV_MODULE module = moduleWith( &record );
    return qv___ModuleCheckCompatibility( &module );
}
} // namespace

TEST( Module, NamesAreShortAndPlain )
{
    const std::string LONGEST( 32, 'z' );

    for( std::string_view good : { std::string_view( "a" ), { "a_1" }, { "z0123456789" }, { LONGEST } } )
        EXPECT_TRUE( qvModuleNameOk( text( good ) ) ) << good;

    for( std::string bad : { "", "a_b_c", "a__b", "a_", "_a", "1a", "aB", "a-b", "a/b", "\xc3\xa4" } )
        EXPECT_FALSE( qvModuleNameOk( text( bad ) ) ) << bad;

    EXPECT_FALSE( qvModuleNameOk( text( LONGEST + "z" ) ) || qvModuleNameOk( text( std::string( "a\0", 2 ) ) ) );
}

TEST( Module, TheLibraryIsOne )
{
    QV_MODULE *qv = qvModule();
    EXPECT_EQ( "qv", take( qvModuleName( qv ) ) );
    EXPECT_EQ( "Platform Independent System Base", take( qvModuleDescription( qv ) ) );
    EXPECT_EQ( "0.0", textOf( Ref< QV_MODULE_VERSION >( qvModuleVersion( qv ) ).get() ) );
    EXPECT_TRUE( qv___ModuleCheckCompatibility( qv ) );
}

TEST( Module, NeverEnds )
{
    QV_MODULE module = moduleWith( &ANY_PRODUCT );
    qvModuleRelease( &module );
    EXPECT_EQ( "name", textOf( &module ) );

    EXPECT_DEATH( qvModuleSort()->freeFunc( qvModuleObj( &module ) ), "module free" );
}

TEST( Module, ARecordHasToFitTheProduct )
{
    const QV_MODULE_RECORD PRODUCT = qv___module_record;

    struct Case
    {
        bool                                        fits;
        bool                                        anyProduct; // the record that is changed, else the library's own
        std::function< void( QV_MODULE_RECORD & ) > change;
    };
    const std::vector< Case > CASES = {
        { true, false, []( QV_MODULE_RECORD & ) {} },
        { false, true, []( QV_MODULE_RECORD &r ) { r.recordVersion = 1; } },

        // No product: nothing of one may be given.
        { false, true, []( QV_MODULE_RECORD &r ) { r.productVersionMajor = 4; } },
        { false, true, []( QV_MODULE_RECORD &r ) { r.productFriendlyName = "morvane"; } },
        { false, true, [&]( QV_MODULE_RECORD &r ) { r.productVendorName = PRODUCT.productVendorName; } },

        // A product: what is given is that product's.
        { true, true, []( QV_MODULE_RECORD &r ) { r.productName = "morvane"; } },
        { false, false, []( QV_MODULE_RECORD &r ) { r.productName = "morvan"; } },
        { false, false, []( QV_MODULE_RECORD &r ) { r.productVersionMajor++; } },
        { false, false, []( QV_MODULE_RECORD &r ) { r.productVersionRelease--; } },
        { false, false, []( QV_MODULE_RECORD &r ) { r.productCopyright = "none"; } },
        { true, false, []( QV_MODULE_RECORD &r ) { r.productCopyright = nullptr; } },

        // Any version, from some field on downwards.
        { true, false, []( QV_MODULE_RECORD &r ) { r.productVersionRelease = -1; } },
        { true, false, []( QV_MODULE_RECORD &r ) { r.productVersionRelease = r.productVersionMinor = -1; } },
        { false, false, []( QV_MODULE_RECORD &r ) { r.productVersionMinor = -1; } },
        { false, false, []( QV_MODULE_RECORD &r ) { r.productVersionMajor = -1; } },
        { false, false, []( QV_MODULE_RECORD &r ) { r.productVersionMajor = r.productVersionRelease = -1; } },

        // The module itself.
        { false, true, []( QV_MODULE_RECORD &r ) { r.name = nullptr; } },
        { false, true, []( QV_MODULE_RECORD &r ) { r.name = "a\xff"; } },
        { false, true, []( QV_MODULE_RECORD &r ) { r.version = "1"; } },
        { true, true, []( QV_MODULE_RECORD &r ) { r.deps = "a b_c d1"; } },
        { false, true, []( QV_MODULE_RECORD &r ) { r.deps = "a  b"; } },
        { false, true, []( QV_MODULE_RECORD &r ) { r.exts = "a ../b"; } },
    };

    for( size_t i = 0; i < CASES.size(); i++ )
    {
        QV_MODULE_RECORD record = CASES[i].anyProduct ? ANY_PRODUCT : PRODUCT;
        CASES[i].change( record );
        EXPECT_EQ( CASES[i].fits, fits( record ) ) << "case " << i;
    }

    QV_MODULE module = moduleWith( nullptr );
    EXPECT_FALSE( qv___ModuleCheckCompatibility( &module ) );
    EXPECT_FALSE( qv___ModuleCheckCompatibility( reinterpret_cast< QV_MODULE * >( qvModuleSort() ) ) );

    module      = moduleWith( &ANY_PRODUCT );
    module.sort = qvStringSort();
    EXPECT_FALSE( qv___ModuleCheckCompatibility( &module ) );
}
