// Two threads borrow one object of each family of values at the same time: they read it, change copies of it, and hand
// it to all that keeps it. What threads are made to share anyway has tests of its own. Nothing of that may change the
// object, lose a reference to it or race.

#include "qv_test_call.h"
#include "qv_test_stream.h"

#include "qv/qv.h"

#include <atomic>

using qv::Ref;
using namespace qv::test;

namespace
{
#ifdef __SANITIZE_THREAD__
const int ROUNDS = 300;
#else
const int ROUNDS = 3000;
#endif

Ref< QV_OBJ > number( QV_INT value )
{
    return Ref( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

void keepString( QV_STRING **, QV_STRING *shared )
{
    Ref< QV_VECTOR > parts( qvStringSplitChar( shared, U' ', -1 ) );
    Ref< QV_STRING > inserted( qvStringCreateFromFormatCstr( "%s-%s", -1, shared, shared ) );
    EXPECT_EQ( 2 * qvStringLength( shared ) + 1, qvStringLength( inserted ) );

    Ref< QV_UNICODE_NORMALIZER > normalizer( qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC ) );
    qvUnicodeNormalizerWrite( normalizer, shared );
    qvUnicodeNormalizerFlush( normalizer );
    Ref< QV_STRING_CHAR_SINK > sink( qvStringCharSinkCreate() );
    qvCharSinkWrite( Ref( qvStringCharSinkCharSink( sink ) ), shared );
    Ref< QV_NLF_LINE_SOURCE > lines( qvNlfLineSourceCreateFromString( shared, QV_NLF_FLAG_LF ) );
    EXPECT_TRUE( qvStringEquals( Ref( qvLineSourceRead( Ref( qvNlfLineSourceLineSource( lines ) ) ) ), shared ) );
    qvEncoderEncodeString( Ref( qvEncoderCreate() ), shared );

    // As address and value of a Store, which gives up the last reference but one.
    if( qvStoreAddressOk( shared ) )
        for( int i = 0; i < 30; i++ )
            qvStoreSetValue( Ref( qvStoreCreate() ).at(), shared, shared );
}

void keepBuffer( QV_BUFFER **, QV_BUFFER *shared )
{
    Ref< QV_BUFFER > view( qvBufferCreateFromBytesUseWithRef( qvBufferBacking( shared ), 5, qvBufferObj( shared ) ) );
    Ref< QV_BUFFER > read( qvBufferCreate() );
    Ref< QV_BUFFER_BYTE_SOURCE > source( qvBufferByteSourceCreate( shared ) );
    qvByteSourceRead( Ref( qvBufferByteSourceByteSource( source ) ), read.at(), 100 );
    EXPECT_TRUE( qvBufferEquals( read, shared ) );
    qvDecoderTrySkip( Ref( qvDecoderCreate( shared ) ), 3 );
}

QV_DICT *makeDict( QV_INT length )
{
    QV_DICT *dict = qvDictCreate();
    for( QV_INT i = 0; i < length; i++ )
        qvDictSetIntKey( &dict, i, number( i ) );
    return dict;
}

void changeDict( QV_DICT **dict, QV_DICT * )
{
    Ref< QV_OBJ > key( qvDictKeyAt( *dict, 3 ) );
    qvDictSetObjKey( dict, key, key );
    qvDictDelAt( dict, 5 );
    qvDictDelValue( dict, key, QV_TRUE );
}

// The very Strings and Stores that the shared one holds, in a Store of this thread.
void useStore( QV_STORE **copy, QV_STORE *shared )
{
    Ref< QV_STRING > address( qvStoreAddressAt( shared, 0 ) );
    Ref< QV_STORE >  below( qvStoreStore( shared, address ) ), own( qvStoreCreate() );
    qvStoreSetValue( own.at(), address, Ref( qvStoreValueAt( below, 0 ) ) );
    qvStoreSetStore( own.at(), address, shared );
    qvStoreMerge( own.at(), shared );
    qvStoreDelStore( copy, address );
    EXPECT_TRUE( qvStoreEquals( Ref( qvStoreTryDecodeFromBuffer( Ref( qvStoreEncodeToBuffer( own ) ) ) ), own ) );
}

// Every object can be an element, a key, a value and an argument, and can be compared.
void keep( QV_OBJ *shared )
{
    Ref< QV_VECTOR > vec( qvVectorCreateFromObj( shared ) );
    qvVectorAppendObj( vec.at(), shared );
    qvVectorSetObjAt( vec.at(), 0, shared );
    Ref< QV_DICT > dict( qvDictCreate() );
    qvDictSetObjKey( dict.at(), shared, shared );
    EXPECT_TRUE( qvDictHasObjKey( dict, shared ) );
    qvDictDelValue( dict.at(), shared, QV_FALSE );
    Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );
    qvPriorityMapSet( map.at(), 1, shared );
    qvPriorityMapSet( map.at(), 2, shared );
    Ref< QV_SIGNALABLE > target( qvSignalableCreate( []( QV_OBJ * ) {}, shared ) );
    EXPECT_LE( 0, qv___ObjUnique( shared ) );
}

// Each use gets the borrowed object, and a variable of its thread that holds it as well.
template< class T >
void share( T *owned, const std::vector< std::function< void( T **copy, T *shared ) > > &uses )
{
    Ref< T >           shared( owned );
    std::string        before   = textOf( owned );
    QV_INT             declared = allocated( owned );
    std::atomic< int > waiting  = 2;
    auto               borrow   = [&]
    {
        for( waiting--; waiting > 0; ) // both begin at once
            ;

        for( int i = 0; i < ROUNDS; i++ )
        {
            for( auto &use : uses )
                use( Ref( qv::retain( owned ) ).at(), owned );

            if( i % 4 == 0 )
                keep( qv::obj( owned ) );
        }
    };

    Ref< QV_THREAD > other = trySpawn( borrow );
    borrow();
    qvThreadJoin( other );
    EXPECT_EQ( 1, references( owned ) ) << before;
    EXPECT_EQ( declared, allocated( owned ) ) << before;
    EXPECT_EQ( before, textOf( owned ) );
}

// A value that gets an entry when it is made, and one more in copies.
template< class T >
void shareValue( T *value, void ( *add )( T **value, QV_INT entry ) )
{
    add( &value, 1 );
    share< T >( value, { [add]( T **copy, T * ) { add( copy, 2 ); } } );
}

void shareAll()
{
    share< QV_STRING >(
        text( "Stra\u00DFe und Gr\u00FC\u00DFe" ).give(),
        { keepString, []( auto copy, auto ) { qvStringToUpper( copy ); }, []( auto copy, auto shared )
          { qvStringInsert( copy, 3, shared ); }, []( auto copy, auto ) { qvStringNormalizeNFD( copy ); } } );
    share< QV_STRING >( text( "address" ).give(), { keepString } );
    share< QV_BUFFER >(
        buffer( "some bytes of a buffer" ).give(),
        { keepBuffer, []( auto copy, auto shared ) { qvBufferInsert( copy, 3, shared ); },
          []( auto copy, auto ) { qvBufferBitDelInner( copy, 3, 17 ); } } );
    share< QV_VECTOR >(
        qvDictKeysVector( Ref( makeDict( 50 ) ) ),
        { []( auto copy, auto shared ) { qvVectorAppend( copy, shared ); },
          []( auto copy, auto ) { qvVectorReverse( copy ); }, []( auto copy, auto ) { qvVectorDelLeading( copy, 3 ); },
          []( auto, auto shared ) { qvDictRelease( qvDictCreateWithKeysAndValues( shared, shared ) ); } } );
    share< QV_DICT >(
        makeDict( 40 ), { changeDict, []( auto copy, auto shared ) { qvDictInclude( copy, shared, QV_TRUE ); },
                          []( auto copy, auto shared ) { qvDictExclude( copy, shared ); } } );
    share< QV_DICT >( makeDict( 1100 ), { changeDict } );
    share< QV_STORE >( qvStoreTryDecodeFromTextBuffer( buffer( "number=7\nbelow.value=text" ) ), { useStore } );
    share< QV_TIME >(
        qvTimeNow(),
        { []( auto copy, auto ) { qvTimeSetYear( copy, 2000 ); }, []( auto, auto shared )
          { qvTimerScheduleAtTime( Ref( qvTimerCreateBarrier( Ref( qvBarrierCreate( QV_TRUE ) ) ) ), shared ); } } );
    share< QV_OPT_DEF >(
        qvOptDefCreate(), { []( auto copy, auto ) { qvOptDefSetShortOpt( copy, U'a', 1 ); }, []( auto, auto shared )
                            { qvOptSeqRelease( qvOptSeqCreate( shared, Ref( qvVectorCreate() ) ) ); } } );
    shareValue< QV_RANGE_MAP >(
        qvRangeMapCreate(), []( auto map, QV_INT i ) { qvRangeMapSetRangeKey( map, 4 * i, 9, number( i ) ); } );
    shareValue< QV_PRIORITY_MAP >(
        qvPriorityMapCreate(), []( auto map, QV_INT i ) { qvPriorityMapSet( map, i, number( i ) ); } );
    shareValue< QV_ENUM >(
        qvEnumCreate(),
        []( auto names, QV_INT i ) { qvEnumSetEnumerantCstr( names, i == 1 ? "ONE" : "TWO", -1, i ); } );
    shareValue< QV_FLAGSET >(
        qvFlagsetCreate(),
        []( auto names, QV_INT i ) { qvFlagsetSetFlagCstr( names, i == 1 ? "ONE" : "TWO", -1, i ); } );
}
} // namespace

// Without the object database, as programs run: it does without the shortcuts that a count of 1 allows.
TEST( Sharing, TwoThreadsBorrowOneObject )
{
    withoutLibrary(
        []
        {
            qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );
            shareAll();
            qvRuntimeShutdown();
        } );
}
