#include "qv_test_child.h"

#include "qv/runtime/qv_component_private.h"
#include "qv/sys/qv_unique_private.h"

using namespace qv::test;

TEST( Unique, NumbersCountUpAndComeBackLastFirst )
{
    // With a list of its own, from which no object of the library draws. Beyond 4096 it grows.
    expectInOwnRun(
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
        } );
}
