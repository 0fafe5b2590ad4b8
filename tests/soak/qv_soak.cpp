// Works the whole library hard for a while: many threads do everything at once, with values of their own and with copies
// of shared ones, and look at each result. Afterwards nothing may be left, and the memory of the process must not have
// grown between the second and the last fifth of the time. Then the library is started and stopped many times.
//
//   soak [SECONDS [THREADS [STARTS]]]      300 seconds, 32 threads, 10,000 starts

#include "qv/qv.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv_test_call.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <malloc.h>
#include <unistd.h>

using qv::Ref;
using namespace qv::test;

namespace
{
std::atomic< bool >      over{ false };
std::atomic< long long > rounds{ 0 };

// What all threads hold and none may ever see changed.
QV_STRING *sharedText;
QV_DICT   *sharedDict;
QV_STORE  *sharedStore;

[[noreturn]] void fail( const char *what, int line )
{
    fprintf( stderr, "soak: line %d: %s\n", line, what );
    abort();
}

#define EXPECT( condition ) ( ( condition ) ? (void)0 : fail( #condition, __LINE__ ) )

Ref< QV_OBJ > number( QV_INT value )
{
    return Ref( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

// Each family's own changes are walked through beside models elsewhere; here it matters that many threads make them.
void values( QV_INT seed )
{
    Ref< QV_STORE > mine = Ref< QV_STORE >::share( sharedStore );
    qvStoreSetValueIntCstr( mine.at(), "own", -1, seed );
    qvStoreSetStoreCstr( mine.at(), "nested", -1, sharedStore );
    EXPECT( qvStoreEquals( mine, Ref( qvStoreTryDecodeFromTextBuffer( Ref( qvStoreEncodeToTextBuffer( mine ) ) ) ) ) );
    EXPECT( qvStoreEquals( mine, Ref( qvStoreTryDecodeFromBuffer( Ref( qvStoreEncodeToBuffer( mine ) ) ) ) ) );
    qvStoreMerge( mine.at(), sharedStore );

    Ref< QV_STRING > text = Ref< QV_STRING >::share( sharedText );
    qvStringNormalizeNFD( text.at() );
    qvStringAppend( text.at(), text );
    qvStringToUpper( text.at() );
    EXPECT( qvStringLength( text ) > 2 * qvStringLength( sharedText ) );

    Ref< QV_DICT > dict = Ref< QV_DICT >::share( sharedDict );

    for( QV_INT i = 0; i < seed % 600; i++ )
        qvDictSetIntKey( dict.at(), i % 2 ? -1 - i : 500 + i, number( i ) );

    qvDictExclude( dict.at(), sharedDict );
    qvDictInclude( dict.at(), sharedDict, QV_TRUE );
    EXPECT( qvDictLength( dict ) == 500 + seed % 600 );
}

void streams( QV_INT seed )
{
    QV_INT                     charset = QV_CHARSET_UTF_8 + seed % 7;
    Ref< QV_BUFFER_BYTE_SINK > bytes( qvBufferByteSinkCreate() );
    Ref< QV_CHAR_SINK >        sink( qvCharsetCreateCharSink( Ref( qvBufferByteSinkByteSink( bytes ) ), charset, 0 ) );
    EXPECT( qvCharSinkWrite( sink, sharedText ) && qvCharSinkFlush( sink ) );

    Ref< QV_BUFFER > written( qvBufferByteSinkBuffer( bytes ) );
    EXPECT( qvStringEquals( Ref( qvCharsetBufferToString( charset, written ) ), sharedText ) );
}

// A timer asserts a signal that opens a barrier and sets an alert; releasing the targets early is part of it.
void events( QV_INT seed )
{
    Ref< QV_SIGNAL >     signal( qvSignalCreate() );
    Ref< QV_ALERT >      alert( qvAlertCreate() );
    Ref< QV_BARRIER >    barrier( qvBarrierCreate( QV_TRUE ) );
    Ref< QV_CONDSET >    conditions( qvCondsetCreate() );
    Ref< QV_SIGNALABLE > early( qvSignalableCreateCondset( conditions, 1 ) );
    Ref< QV_SIGNALABLE > late( qvSignalableCreateCondset( conditions, 2 ) );
    Ref< QV_TIMER >      timer( qvTimerCreateSignal( signal ) );

    qvSignalAddBarrier( signal, barrier );
    qvSignalAddAlert( signal, alert );
    qvSignalAddSignalable( signal, early );
    qvSignalAddSignalable( signal, late );
    early.reset();
    qvTimerSchedule( timer, seed % 3 );
    EXPECT( qvBarrierPassTimed( barrier, 60000 ) );
    EXPECT( qvAlertWaitTimed( alert, 60000 ) );
    EXPECT( qvCondsetWaitAnyTimed( conditions, 3, 60000 ) == 2 );
    qvTimerSchedule( timer, 100000 );
}

void threads( QV_INT seed )
{
    Ref< QV_COUNTER > counter( qvCounterCreate() );
    qvCounterIncrement( counter );
    Ref< QV_THREAD > thread = trySpawn(
        [&]
        {
            qvThreadSetKey( number( seed ), number( seed ) );
            EXPECT( qvThreadHasKey( number( seed ) ) );
            qvCounterDecrement( counter );
        } );

    if( thread ) // else the system has no room for one more
    {
        qvCounterWaitZero( counter );
        qvThreadJoin( thread );
    }
}

void work( unsigned seed )
{
    void ( *const TASKS[] )( QV_INT ) = { values, streams, events, threads };
    std::mt19937 random( seed );

    for( ; !over; rounds++ )
        TASKS[random() % std::size( TASKS )]( random() % 5000 );
}

// The least memory that is allocated in a while, in kilobytes: at any moment the threads hold more or less.
size_t allocated( double seconds )
{
    size_t least = SIZE_MAX;

    for( int sample = 0; sample < 50; sample++ )
    {
        usleep( static_cast< useconds_t >( seconds * 1000000 / 50 ) );
        struct mallinfo2 now = mallinfo2();
        least                = std::min( least, ( now.uordblks + now.hblkhd ) / 1024 );
    }

    return least;
}

void expectFlat( const char *what, size_t before, size_t after )
{
    printf( "%s: %zu KB, then %zu KB\n", what, before, after );
    EXPECT( after <= before + before / 10 + 512 ); // the memory grows
}
} // namespace

int main( int argc, char **argv )
{
    int    seconds     = argc > 1 ? atoi( argv[1] ) : 300;
    int    threadCount = argc > 2 ? atoi( argv[2] ) : 32;
    int    starts      = argc > 3 ? atoi( argv[3] ) : 10000;
    size_t before      = 0;

    setenv( "XZ_MORVANE_DATA_PATH", "/proc/nowhere", 1 ); // so that no file stays
    qvRuntimeStartup( 0, nullptr, "soak", "Soak", "1.0" );
    sharedText  = qvStringCreateFromCstr( "Gr\u00FC\u00DFe an alle \u2013 \U0001F600 ", -1 );
    sharedDict  = qvDictCreate();
    sharedStore = qvStoreCreate();

    for( QV_INT i = 0; i < 500; i++ )
    {
        qvDictSetIntKey( &sharedDict, i, number( i ) );
        qvStoreSetValueFormatCstr( &sharedStore, "entry%i", -1, sharedText, i );
    }

    {
        Ref< QV_BUFFER >                kept( qvStoreEncodeToBuffer( sharedStore ) );
        std::vector< Ref< QV_THREAD > > workers;

        for( int i = 0; i < threadCount; i++ )
            workers.push_back( trySpawn( [i] { work( static_cast< unsigned >( i ) ); } ) );

        allocated( seconds / 5.0 ); // until all have what they need
        before = allocated( seconds / 5.0 );
        allocated( seconds * 2 / 5.0 );
        size_t after = allocated( seconds / 5.0 );
        over         = true;

        for( Ref< QV_THREAD > &worker : workers )
            qvThreadJoin( worker );

        printf( "%lld rounds of %d threads in %d seconds\n", rounds.load(), threadCount, seconds );
        expectFlat( "work", before, after );
        EXPECT( qvBufferEquals( Ref( qvStoreEncodeToBuffer( sharedStore ) ), kept ) );
    }

    qvStringRelease( sharedText );
    qvDictRelease( sharedDict );
    qvStoreRelease( sharedStore );
    qvRuntimeShutdown();

    for( int i = 0; i < starts; i++ )
    {
        qvRuntimeStartup( i % 2 ? 0 : QV_RUNTIME_FLAG_OBJECT_DATABASE, nullptr, nullptr, nullptr, nullptr );
        qvRuntimeShutdown();
        EXPECT( qv___ModuleObjects( &qv___module ) == 0 ); // nothing is left

        if( i == starts / 5 )
            before = allocated( 0 );
    }

    expectFlat( "starts and stops", before, allocated( 0 ) );
    puts( "nothing left" );
}
