/* What the last error tells when a module cannot be loaded, with the modules of qv_module_fixture.c. */

#include "qv_test_support.h"

#include "qv/qv.h"

using qv::Ref;
using namespace qv::test;

TEST( ModuleFailure, TellsTheFileTheDependencyAndTheSymbol )
{
    withoutLibrary(
        []
        {
            const std::string folder  = TEST_MODULES "libmorvane-";
            const std::string missing = "needy needs absent: " + folder
                                        + "absent.so: cannot open shared object file: No such file or directory";

            setenv( "XZ_MORVANE_BIN_PATH", TEST_MODULES, 1 );
            qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );
            unsetenv( "XZ_MORVANE_BIN_PATH" );
            EXPECT_EQ( QV_ERROR_NONE, qvErrorLastCode() );

            const std::tuple< const char *, QV_INT, std::string, std::string > CASES[] = {
                { "absent", QV_ERROR_NOT_FOUND, "absent", "cannot open shared object file: No such file" },
                { "text", QV_ERROR_BAD_MODULE, "text", "file too short" },
                { "symbolless", QV_ERROR_NO_SYMBOL, "symbolless", "undefined symbol: symbolless___module" },
                { "foreign", QV_ERROR_WRONG_VERSION, "foreign", "not made for this product" },
                { "misnamed", QV_ERROR_BAD_MODULE, "misnamed", "the file holds a module of another name" },
                { "needy", QV_ERROR_NO_DEPENDENCY, "absent", missing },
                { "unwilling", QV_ERROR_NOT_STARTED, "unwilling", "it did not start" },
            };

            for( const auto &[name, code, subject, reason] : CASES )
            {
                EXPECT_FALSE( qvRuntimeTryLoadModulesCstr( name, -1 ) );

                Ref< QV_ERROR > error( qvErrorLast() );
                ASSERT_TRUE( error ) << name;
                EXPECT_EQ( code, qvErrorCode( error ) ) << name;
                EXPECT_EQ( subject, take( qvErrorSubject( error ) ) );
                EXPECT_EQ( folder + subject + ".so", take( qvErrorPath( error ) ) );
                EXPECT_NE( std::string::npos, take( qvErrorReason( error ) ).find( reason ) ) << textOf( error.get() );
            }

            qvRuntimeShutdown();
            EXPECT_EQ( QV_ERROR_NONE, qvErrorLastCode() );
        } );
}
