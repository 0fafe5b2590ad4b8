// Threads of the library that end while it stops.

#include "qv_test_support.h"

#include "qv/base/qv_region.h"
#include "qv/base/qv_thread.h"
#include "qv/base/qv_time.h"
#include "qv/runtime/qv_runtime.h"

#include <vector>

using qv::Ref;
using namespace qv::test;

// Runs of the library follow each other while threads of theirs end, with keys of their own, after nested regions.
TEST( Values, ThreadsEndWhileTheLibraryStops )
{
    static Ref< QV_REGION > outer, inner;
    static int              ran; // guarded by the regions, as the thread sanitizer can tell

    auto body = []
    {
        for( QV_INT exclusive : { 0, 1 } )
        {
            qvRegionEnter( outer, exclusive );
            qvRegionEnterExclusive( inner );
            ran++;
            qvRegionLeave( inner );
            qvRegionLeave( outer );
        }

        Ref< QV_THREAD > self( qvThreadThis() );
        qvThreadSetKey( qv::obj( self.get() ), Ref< QV_OBJ >( qv::obj( qvTimeNow() ) ) );
    };

    withoutLibrary(
        [&]
        {
            for( int round = 0; round < 30; round++ )
            {
                qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );
                ran = 0;
                outer.reset( qvRegionCreate() );
                inner.reset( qvRegionCreate() );
                std::vector< Ref< QV_THREAD > > threads;

                for( int i = 0; i < 6; i++ )
                    threads.emplace_back( qvThreadTrySpawnCstr( "end", -1, body, nullptr, QV_THREAD_PRIORITY_NORMAL ) );

                for( Ref< QV_THREAD > &thread : threads )
                    qvThreadJoin( thread );

                EXPECT_EQ( 12, ran );
                threads.clear();
                outer.reset();
                inner.reset();
                qvRuntimeShutdown();
            }
        } );
}
