#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/sys/qv_mem.h"

#include <algorithm>

using namespace qv::test;

TEST( Mem, OnlyTheOrderOfBytesCounts )
{
    EXPECT_EQ( 1, qvMemCompare( "\xff", "a", 1 ) );
    EXPECT_EQ( -1, qvMemCompareN( "aaaa", "aabz", 2, 2 ) );

    uint8_t byte = 0;
    qvMemSet( &byte, 0x1A5, 1 );
    EXPECT_EQ( 0xA5, byte );
}

TEST( Mem, NothingIsNoTrouble )
{
    EXPECT_EQ( nullptr, qvMemSet( nullptr, 1, 0 ) );
    EXPECT_EQ( nullptr, qvMemCopy( nullptr, nullptr, 0 ) );
    EXPECT_EQ( nullptr, qvMemMove( nullptr, nullptr, 0 ) );
    EXPECT_EQ( 0, qvMemCompare( nullptr, nullptr, 0 ) );
    EXPECT_EQ( 0, qvMemCompareN( nullptr, nullptr, QV_INT_MAX, 0 ) );
    EXPECT_EQ( nullptr, qvMemSetN( nullptr, 1, 0, QV_INT_MAX ) );
}

TEST( Mem, DebuggingFillsNewBlocks )
{
    expectInOwnRun(
        []
        {
            restart( QV_RUNTIME_FLAG_MEMORY_DEBUG );
            uint8_t *block = static_cast< uint8_t * >( qvMemAllocN( 50, 20 ) );
            EXPECT_EQ( block + 1000, std::find_if( block, block + 1000, []( uint8_t byte ) { return byte != 0xFF; } ) );
            qvMemFree( block );
        } );
}
