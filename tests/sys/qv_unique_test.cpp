#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/runtime/qv_component_private.h"
#include "qv/sys/qv_unique_private.h"

using namespace qv::test;

TEST( Unique, NumbersCountUpAndComeBackLastFirst )
{
    // With a list of its own, which the library's objects do not draw from. Beyond 4096 it grows.
    Ending ending = inChild(
        []
        {
            qv___UniqueShutdown();
            qv___UniqueStartup();

            for( QV_INT expected = 0; expected < 10000; expected++ )
                EXPECT_EQ( expected, qv___UniqueGet() );

            for( QV_INT given : { 17, 5000, 3 } )
                qv___UniquePut( given );

            for( QV_INT expected : { 3, 5000, 17, 10000 } )
                EXPECT_EQ( expected, qv___UniqueGet() );

            fputs( testing::Test::HasFailure() ? "failed" : "done", stderr );
        } );
    EXPECT_EQ( "done", ending.errors );
}
