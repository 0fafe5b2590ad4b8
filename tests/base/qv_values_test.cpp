// What families of values promise to threads, tested for those that have no suite of threads of their own.

#include "qv_test_support.h"

#include "qv/base/qv_enum.h"
#include "qv/base/qv_flagset.h"
#include "qv/base/qv_generation.h"
#include "qv/base/qv_identifier.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/base/qv_region.h"
#include "qv/base/qv_thread.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_tool_switch.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_runtime.h"

#include <thread>
#include <vector>

using qv::Ref;
using namespace qv::test;

// Threads read one object of each family, lend it one name, and change copies of it, all at the same time. A text that
// they share is formatted into itself.
TEST( Values, ThreadsShareObjectsAndChangeCopies )
{
    Ref< QV_STRING >      name = text( "NAME" ), word = text( "-n" );
    Ref< QV_ENUM >        en( qvEnumCreate() );
    Ref< QV_FLAGSET >     fs( qvFlagsetCreate() );
    Ref< QV_OPT_DEF >     def( qvOptDefCreate() );
    Ref< QV_TOOL_SWITCH > ts( qvToolSwitchCreate() );
    Ref< QV_TIME >        tm( qvTimeCreate() );
    Ref< QV_IDENTIFIER >  id( qvIdentifierCreate() );
    Ref< QV_GENERATION >  generation( qvGenerationCreate() );
    Ref< QV_VECTOR >      argv( qvVectorCreate() );

    qvEnumSetEnumerant( en.at(), name, 1 );
    qvFlagsetSetFlag( fs.at(), name, 1 );
    qvOptDefSetShortOpt( def.at(), U'n', 1 );
    qvToolSwitchSetTool( ts.at(), name, nullptr );

    for( int i = 0; i < 3; i++ )
        qvVectorAppendString( argv.at(), word );

    std::vector< std::thread > threads;

    for( QV_INT number = 0; number < 3; number++ )
        threads.emplace_back(
            [&, number]
            {
                for( QV_INT round = 0; round < 300; round++ )
                {
                    Ref< QV_ENUM >        ownEnum   = Ref< QV_ENUM >::share( en );
                    Ref< QV_FLAGSET >     ownFlags  = Ref< QV_FLAGSET >::share( fs );
                    Ref< QV_OPT_DEF >     ownDef    = Ref< QV_OPT_DEF >::share( def );
                    Ref< QV_TOOL_SWITCH > ownSwitch = Ref< QV_TOOL_SWITCH >::share( ts );
                    Ref< QV_TIME >        ownTime   = Ref< QV_TIME >::share( tm );
                    Ref< QV_STRING >      ownName   = Ref< QV_STRING >::share( name );

                    qvEnumSetEnumerant( ownEnum.at(), name, number + 2 );
                    qvFlagsetSetFlag( ownFlags.at(), name, 2 << number );
                    qvOptDefSetLongOpt( ownDef.at(), name, number + 2 );
                    qvToolSwitchDelTool( ownSwitch.at(), name );
                    qvTimeShiftDays( ownTime.at(), number + 1 );
                    qvStringAppendFormatCstr( ownName.at(), "%s%~s", -1, ownName.get(), qvIdentifierToString( id ) );
                    Ref< QV_GENERATION > child( qvGenerationCreateWithParent( generation ) );

                    EXPECT_EQ( number + 2, qvEnumEnumerant( ownEnum, name ) );
                    EXPECT_EQ( 1, qvEnumEnumerant( en, name ) );
                    EXPECT_EQ( 1, qvFlagsetFlag( fs, name ) );
                    EXPECT_EQ( -1, qvOptDefLongOpt( def, name, QV_TRUE, nullptr ) );
                    EXPECT_TRUE( qvToolSwitchRunTool( ts, Ref( qvEnumEnumerantsVector( en ) ), nullptr ) );
                    EXPECT_EQ( 4 + 4 + 32, qvStringLength( ownName ) );
                    EXPECT_LT( qvTimeCompare( tm, ownTime ), 0 );
                    EXPECT_TRUE( qvGenerationIsParent( generation, child ) );

                    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );

                    for( int i = 0; i < 3; i++ )
                        EXPECT_EQ( 1, qvOptSeqNext( seq ) );
                }
            } );

    for( std::thread &thread : threads )
        thread.join();

    EXPECT_EQ( "NAME", utf8( name ) );
    EXPECT_EQ( 3, qvVectorLength( argv ) );
}

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
