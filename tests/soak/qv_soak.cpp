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
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <malloc.h>
#include <unistd.h>

using qv::Ref;
using namespace qv::test;

namespace
{
using Random = std::mt19937;

std::atomic< bool >      over{ false };
std::atomic< long long > rounds{ 0 };
std::string              folder;

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

Ref< QV_STRING > cstr( const std::string &text )
{
    return Ref< QV_STRING >( qvStringCreateFromCstr( text.data(), static_cast< QV_INT >( text.size() ) ) );
}

Ref< QV_OBJ > number( QV_INT value )
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

// Each family's own changes are walked through beside models elsewhere; here it matters that many threads make them.
void values( Random &random )
{
    Ref< QV_STORE > mine = Ref< QV_STORE >::share( sharedStore );
    qvStoreSetValueIntFormatCstr( mine.at(), "own%i", -1, 7, static_cast< QV_INT >( random() % 50 ) );
    qvStoreSetStoreCstr( mine.at(), "nested", -1, sharedStore );

    Ref< QV_BUFFER > asText( qvStoreEncodeToTextBuffer( mine ) );
    Ref< QV_BUFFER > binary( qvStoreEncodeToBuffer( mine ) );
    Ref< QV_STORE >  fromText( qvStoreTryDecodeFromTextBuffer( asText ) );
    Ref< QV_STORE >  fromBinary( qvStoreTryDecodeFromBuffer( binary ) );
    EXPECT( qvStoreEquals( mine, fromText ) );
    EXPECT( qvStoreEquals( mine, fromBinary ) );
    qvStoreMerge( fromText.at(), sharedStore );
    qvStoreDelStoreCstr( fromText.at(), "nested", -1 );

    Ref< QV_STRING > text = Ref< QV_STRING >::share( sharedText );
    qvStringNormalizeNFD( text.at() );
    qvStringAppend( text.at(), text );
    qvStringToUpper( text.at() );
    EXPECT( qvStringLength( text ) > 2 * qvStringLength( sharedText ) );

    Ref< QV_DICT > dict   = Ref< QV_DICT >::share( sharedDict );
    QV_INT         length = qvDictLength( dict ), extra = static_cast< QV_INT >( random() % 600 );

    for( QV_INT i = 0; i < extra; i++ )
        qvDictSetIntKey( dict.at(), i % 2 ? -1 - i : length + i, number( i ) );

    qvDictExclude( dict.at(), sharedDict );
    qvDictInclude( dict.at(), sharedDict, QV_TRUE );
    EXPECT( qvDictLength( dict ) == length + extra );
}

void streams( Random &random )
{
    QV_INT                     charset = QV_CHARSET_UTF_8 + static_cast< QV_INT >( random() % 7 );
    Ref< QV_BUFFER_BYTE_SINK > buffer( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        bytes( qvBufferByteSinkByteSink( buffer ) );
    Ref< QV_CHAR_SINK >        sink( qvCharsetCreateCharSink( bytes, charset, 0 ) );
    EXPECT( qvCharSinkWrite( sink, sharedText ) && qvCharSinkFlush( sink ) );

    Ref< QV_BUFFER > written( qvBufferByteSinkBuffer( buffer ) );
    Ref< QV_STRING > back( qvCharsetBufferToString( charset, written ) );
    EXPECT( qvStringEquals( back, sharedText ) );

    Ref< QV_STRING > name = cstr( folder + "/file" + std::to_string( gettid() ) );
    EXPECT( qvFileWriteBuffer( name, written ) );
    Ref< QV_BUFFER > read( qvFileReadBuffer( name, -1 ) );
    EXPECT( read && qvBufferEquals( read, written ) );
    EXPECT( qvFileDelete( name ) );
}

// A timer asserts a signal that opens a barrier and sets an alert; releasing the targets early is part of it.
void events( Random &random )
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
    qvTimerSchedule( timer, static_cast< QV_INT >( random() % 3 ) );
    EXPECT( qvBarrierPassTimed( barrier, 60000 ) );
    EXPECT( qvAlertWaitTimed( alert, 60000 ) );
    EXPECT( qvCondsetWaitAnyTimed( conditions, 3, 60000 ) == 2 );
    qvTimerSchedule( timer, 100000 );
}

void threads( Random &random )
{
    QV_INT             expected = static_cast< QV_INT >( random() % 1000 );
    std::atomic< int > done{ 0 };
    Ref< QV_COUNTER >  counter( qvCounterCreate() );
    Ref< QV_THREAD >   thread;

    qvCounterIncrement( counter );
    thread = trySpawn(
        [&]
        {
            Ref< QV_OBJ > key = number( expected );
            qvThreadSetKey( key, key );
            EXPECT( qvThreadHasKey( number( expected ) ) );
            done++;
            qvCounterDecrement( counter );
        } );

    if( thread ) // else the system has no room for one more
    {
        qvCounterWaitZero( counter );
        qvThreadJoin( thread );
        EXPECT( done == 1 );
    }
}

void ( *const TASKS[] )( Random & ) = { values, streams, events, threads };

void work( unsigned seed )
{
    Random random( seed );

    while( !over )
    {
        TASKS[random() % std::size( TASKS )]( random );
        rounds++;
    }
}

// The least memory that is allocated in a while, in kilobytes: at any moment the threads hold more or less.
long long allocated( double seconds )
{
    const int SAMPLES = 50;
    size_t    least   = SIZE_MAX;

    for( int i = 0; i < SAMPLES; i++ )
    {
        std::this_thread::sleep_for( std::chrono::duration< double >( seconds / SAMPLES ) );
        struct mallinfo2 now = mallinfo2();
        least                = std::min( least, now.uordblks + now.hblkhd );
    }

    return static_cast< long long >( least / 1024 );
}

void expectFlat( const char *what, long long before, long long after )
{
    printf( "%s: %lld KB, then %lld KB\n", what, before, after );
    EXPECT( after <= before + before / 10 + 512 ); // the memory grows
}

void expectNothingLeft()
{
    EXPECT( qv___AtomicLoad32( &qv___module.sorts ) == 0 );
}
} // namespace

int main( int argc, char **argv )
{
    int seconds     = argc > 1 ? atoi( argv[1] ) : 300;
    int threadCount = argc > 2 ? atoi( argv[2] ) : 32;
    int starts      = argc > 3 ? atoi( argv[3] ) : 10000;

    char pattern[] = "/tmp/qv-soak-XXXXXX";
    EXPECT( mkdtemp( pattern ) );
    folder = pattern;
    setenv( "XZ_MORVANE_DATA_PATH", ( folder + "/data" ).c_str(), 1 );

    qvRuntimeStartup( 0, nullptr, "soak", "Soak", "1.0" );
    {
        sharedText = cstr( "Gr\xc3\xbc\xc3\x9f"
                           "e an alle \xe2\x80\x93 \xf0\x9f\x98\x80 " )
                         .give();
        sharedDict  = qvDictCreate();
        sharedStore = qvStoreCreate();

        for( QV_INT i = 0; i < 500; i++ )
        {
            qvDictSetIntKey( &sharedDict, i, number( i ) );
            qvStoreSetValueFormatCstr( &sharedStore, "entry%i", -1, sharedText, i );
        }

        Ref< QV_STRING > keptText( qvStringCreateFrom( sharedText ) );
        Ref< QV_BUFFER > keptStore( qvStoreEncodeToBuffer( sharedStore ) );

        std::vector< Ref< QV_THREAD > > workers;

        for( int i = 0; i < threadCount; i++ )
        {
            workers.push_back( trySpawn( [i] { work( static_cast< unsigned >( i ) ); } ) );
            EXPECT( workers.back() );
        }

        std::this_thread::sleep_for(
            std::chrono::duration< double >( seconds / 5.0 ) ); // until all have what they need
        long long before = allocated( seconds / 5.0 );
        std::this_thread::sleep_for( std::chrono::duration< double >( seconds * 2 / 5.0 ) );
        long long after = allocated( seconds / 5.0 );
        over            = true;

        for( Ref< QV_THREAD > &worker : workers )
            qvThreadJoin( worker );

        printf( "%lld rounds of %d threads in %d seconds\n", rounds.load(), threadCount, seconds );
        expectFlat( "work", before, after );

        Ref< QV_BUFFER > store( qvStoreEncodeToBuffer( sharedStore ) );
        EXPECT( qvBufferEquals( store, keptStore ) && qvStringEquals( sharedText, keptText ) );
        EXPECT( qvDictLength( sharedDict ) == 500 );
    }
    qvStringRelease( sharedText );
    qvDictRelease( sharedDict );
    qvStoreRelease( sharedStore );
    qvRuntimeShutdown();
    expectNothingLeft();

    long long before = 0;

    for( int i = 0; i < starts; i++ )
    {
        qvRuntimeStartup( i % 2 ? 0 : QV_RUNTIME_FLAG_OBJECT_DATABASE, nullptr, nullptr, nullptr, nullptr );
        qvRuntimeShutdown();
        expectNothingLeft();

        if( i == starts / 5 )
            before = allocated( 0 );
    }

    expectFlat( "starts and stops", before, allocated( 0 ) );
    EXPECT( system( ( "rm -rf " + folder ).c_str() ) == 0 );
    puts( "nothing left" );
}
