#include "qv_test_child.h"

#include "qv/sys/qv_mem.h"

#include <algorithm>

using namespace qv::test;

TEST( Mem, BytesAreComparedWithoutASignAndFilledWithOne )
{
    EXPECT_EQ( 1, qvMemCompare( "\xff", "a", 1 ) );
    EXPECT_EQ( -1, qvMemCompareN( "aaaa", "aabz", 2, 2 ) );
    EXPECT_EQ( 0, qvMemCompareN( nullptr, nullptr, QV_INT_MAX, 0 ) );
    EXPECT_EQ( nullptr, qvMemSetN( nullptr, 1, 0, QV_INT_MAX ) );

    expectInOwnRun(
        []
        {
            restart( QV_RUNTIME_FLAG_MEMORY_DEBUG );
            uint8_t *block = static_cast< uint8_t * >( qvMemAllocN( 50, 20 ) );
            EXPECT_EQ( 1000, std::count( block, block + 1000, 0xFF ) );
            qvMemSet( block, 0x1A5, 1000 );
            EXPECT_EQ( 1000, std::count( block, block + 1000, 0xA5 ) );
            qvMemFree( block );
        } );
}
