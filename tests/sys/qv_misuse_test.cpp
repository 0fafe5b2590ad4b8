#include "qv_test_support.h"

#include "qv/qv.h"
#include "qv/sys/qv_lock_private.h"
#include "qv/sys/qv_unique_private.h"

#include <algorithm>

using namespace qv::test;

TEST( Misuse, IsReported )
{
    static QV_CHAR ch;
    static QV_INT  number;

    // More than there can be.
    [[maybe_unused]] constexpr QV_INT MOST = std::min< uint64_t >( SIZE_MAX, QV_INT_MAX );

    expectReports( {
        { [] { qvCharsAllOk( nullptr, 1 ); }, "srcLength == 0 || src" },
        { [] { qvCharsConvertFromUtf8( &ch, 1, "", -2 ); }, "srcLength >= -1" },
        { [] { qvCharsConvertToUtf8( nullptr, 1, &ch, 1, QV_FALSE ); }, "destLength == 0 || dest" },
        { [] { qvCharsConvertToAscii( nullptr, 0, &ch, QV_INT_MAX, QV_TRUE ); }, "srcLength < QV_INT_MAX" },
        { [] { qvIntBitSet( 0, 64 ); }, "bit < QV_INT_BITS" },
        { [] { qvMemAlloc( 0 ); }, "size > 0" },
        { [] { qvMemAllocN( QV_INT_MAX / 2 + 1, 2 ); }, "QV_INT_MUL_OK( count, size )" },
        { [] { qvMemCopy( nullptr, &ch, 1 ); }, "size == 0 || dest" },
        { [] { qv___LockAcquire( nullptr ); }, "lock" },
        { [] { qv___UniqueGet(), qv___UniquePut( number = qv___UniqueGet() ), qv___UniquePut( number ); },
          "uniList[uni] == IN_USE" },
        { [] { qv___UniqueGet(), qv___UniquePut( 1 << 30 ); }, "uni < uniListSize" },
#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
        { [] { qvMemAlloc( MOST ); }, "res" },
        { [] { qvMemRealloc( nullptr, MOST ); }, "res" },
#endif
    } );

#ifndef __SANITIZE_THREAD__ // which ends the process itself
    EXPECT_DEATH(
        {
            QV___LOCK *lock = qv___LockCreate();
            qv___LockAcquire( lock );
            qv___LockDestroy( lock );
        },
        testing::HasSubstr( "    Message   : mutex destruction failed\n" ) );
#endif
}
