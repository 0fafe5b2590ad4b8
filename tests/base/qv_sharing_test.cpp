// Two threads borrow one object of each family at the same time: they read it, change copies of it, and hand it to all that
// keeps it. Nothing of that may change the object, lose a reference to it or race.

#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/qv.h"

#include <atomic>
#include <thread>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
#ifdef __SANITIZE_THREAD__
const int ROUNDS = 300;
#else
const int ROUNDS = 3000;
#endif

struct Case
{
    const char *name;
    QV_OBJ *( *make )();
    void ( *use )( QV_OBJ *shared ); // what a thread does with the borrowed object, beside keeping it in containers
};

// Takes a copy of a value, changes that and gives it up.
template< class T, class Change >
void changeCopy( QV_OBJ *shared, Change change )
{
    Ref< T > copy = Ref< T >::share( reinterpret_cast< T * >( shared ) );
    change( copy.at() );
}

template< class T >
T *as( QV_OBJ *shared )
{
    return reinterpret_cast< T * >( shared );
}

Ref< QV_OBJ > number( QV_INT value )
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

QV_STRING *makeString()
{
    return text( U"Stra\u00dfe und Gr\u00fc\u00dfe" ).give();
}

QV_VECTOR *makeVector()
{
    QV_VECTOR *vec = qvVectorCreate();
    for( QV_INT i = 0; i < 50; i++ )
        qvVectorAppendObj( &vec, number( i ) );
    return vec;
}

QV_DICT *makeDict( QV_INT length )
{
    QV_DICT *dict = qvDictCreate();
    for( QV_INT i = 0; i < length; i++ )
        qvDictSetIntKey( &dict, i, number( i ) );
    return dict;
}

void useDict( QV_OBJ *shared )
{
    changeCopy< QV_DICT >(
        shared,
        []( QV_DICT **dict )
        {
            Ref< QV_OBJ > key( qvDictKeyAt( *dict, 3 ) );
            qvDictSetObjKey( dict, key, key );
            qvDictDelAt( dict, 5 );
            qvDictDelValue( dict, key, QV_TRUE );
        } );
    changeCopy< QV_DICT >(
        shared, [shared]( QV_DICT **dict ) { qvDictInclude( dict, as< QV_DICT >( shared ), QV_TRUE ); } );
    changeCopy< QV_DICT >( shared, [shared]( QV_DICT **dict ) { qvDictExclude( dict, as< QV_DICT >( shared ) ); } );
}

QV_STORE *makeStore()
{
    QV_STORE *store = qvStoreCreate();
    QV_STORE *below = qvStoreCreate();
    qvStoreSetValueCstr( &below, "value", -1, Ref< QV_STRING >( makeString() ) );
    qvStoreSetStoreCstr( &store, "below", -1, below );
    qvStoreSetValueIntCstr( &store, "number", -1, 7 );
    qvStoreRelease( below );
    return store;
}

void useStore( QV_OBJ *shared )
{
    // The very Strings and Stores that the shared one holds, in a Store of this thread.
    Ref< QV_STRING > address( qvStoreAddressAt( as< QV_STORE >( shared ), 0 ) );
    Ref< QV_STORE >  below( qvStoreStore( as< QV_STORE >( shared ), address ) );
    Ref< QV_STRING > value( qvStoreValueCstr( below, "value", -1 ) );
    Ref< QV_STORE >  own( qvStoreCreate() );

    qvStoreSetValue( own.at(), address, value );
    qvStoreSetStore( own.at(), address, as< QV_STORE >( shared ) );
    qvStoreMerge( own.at(), as< QV_STORE >( shared ) );
    changeCopy< QV_STORE >( shared, []( QV_STORE **store ) { qvStoreDelStoreCstr( store, "below", -1 ); } );
    Ref< QV_STORE > back( qvStoreTryDecodeFromBuffer( Ref< QV_BUFFER >( qvStoreEncodeToBuffer( own ) ) ) );
    EXPECT_TRUE( back && qvStoreEquals( back, own ) );
}

const Case CASES[] = {
    { "String", [] { return qvStringObj( makeString() ); },
      []( QV_OBJ *shared )
      {
          QV_STRING *qvs = as< QV_STRING >( shared );
          changeCopy< QV_STRING >( shared, []( QV_STRING **copy ) { qvStringToUpper( copy ); } );
          changeCopy< QV_STRING >( shared, [qvs]( QV_STRING **copy ) { qvStringInsert( copy, 3, qvs ); } );
          changeCopy< QV_STRING >( shared, []( QV_STRING **copy ) { qvStringNormalizeNFD( copy ); } );
          Ref< QV_VECTOR > parts( qvStringSplitChar( qvs, U' ', -1 ) );
          Ref< QV_STRING > inserted( qvStringCreateFromFormatCstr( "%s-%s", -1, qvs, qvs ) );
          EXPECT_EQ( 2 * qvStringLength( qvs ) + 1, qvStringLength( inserted ) );

          Ref< QV_UNICODE_NORMALIZER > normalizer( qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC ) );
          qvUnicodeNormalizerWrite( normalizer, qvs );
          qvUnicodeNormalizerFlush( normalizer );
          Ref< QV_STRING_CHAR_SINK > sink( qvStringCharSinkCreate() );
          Ref< QV_CHAR_SINK >        charSink( qvStringCharSinkCharSink( sink ) );
          qvCharSinkWrite( charSink, qvs );
          Ref< QV_NLF_LINE_SOURCE > lines( qvNlfLineSourceCreateFromString( qvs, QV_NLF_FLAG_LF ) );
          Ref< QV_STRING > line( qvLineSourceRead( Ref< QV_LINE_SOURCE >( qvNlfLineSourceLineSource( lines ) ) ) );
          EXPECT_TRUE( qvStringEquals( line, qvs ) );
          Ref< QV_ENCODER > encoder( qvEncoderCreate() );
          qvEncoderEncodeString( encoder, qvs );
          Ref< QV_ENUM >   names( qvEnumCreate() );
          Ref< QV_STRING > name = text( "NAME" );
          qvEnumSetEnumerant( names.at(), name, 1 );
      } },
    { "Buffer", [] { return qvBufferObj( qvBufferCreateFromBytesCopy( "some bytes of a buffer", 22 ) ); },
      []( QV_OBJ *shared )
      {
          QV_BUFFER *buf = as< QV_BUFFER >( shared );
          changeCopy< QV_BUFFER >( shared, [buf]( QV_BUFFER **copy ) { qvBufferInsert( copy, 3, buf ); } );
          changeCopy< QV_BUFFER >( shared, []( QV_BUFFER **copy ) { qvBufferBitDelInner( copy, 3, 17 ); } );
          Ref< QV_BUFFER >             view( qvBufferCreateFromBytesUseWithRef( qvBufferBacking( buf ), 5, shared ) );
          Ref< QV_BUFFER_BYTE_SOURCE > source( qvBufferByteSourceCreate( buf ) );
          Ref< QV_BUFFER >             read( qvBufferCreate() );
          qvByteSourceRead( Ref< QV_BYTE_SOURCE >( qvBufferByteSourceByteSource( source ) ), read.at(), 100 );
          EXPECT_TRUE( qvBufferEquals( read, buf ) );
          Ref< QV_DECODER > decoder( qvDecoderCreate( buf ) );
          qvDecoderTrySkip( decoder, 3 );
      } },
    { "Vector", [] { return qvVectorObj( makeVector() ); },
      []( QV_OBJ *shared )
      {
          QV_VECTOR *vec = as< QV_VECTOR >( shared );
          changeCopy< QV_VECTOR >( shared, [vec]( QV_VECTOR **copy ) { qvVectorAppend( copy, vec ); } );
          changeCopy< QV_VECTOR >( shared, []( QV_VECTOR **copy ) { qvVectorReverse( copy ); } );
          changeCopy< QV_VECTOR >( shared, []( QV_VECTOR **copy ) { qvVectorDelLeading( copy, 3 ); } );
          Ref< QV_DICT > dict( qvDictCreateWithKeysAndValues( vec, vec ) );
          EXPECT_EQ( qvVectorLength( vec ), qvDictLength( dict ) );
      } },
    { "Dict", [] { return qvDictObj( makeDict( 40 ) ); }, useDict },
    { "large Dict", [] { return qvDictObj( makeDict( 1100 ) ); }, useDict },
    { "Store", [] { return qvStoreObj( makeStore() ); }, useStore },
    { "address and value", [] { return qvStringObj( text( "both" ).give() ); },
      []( QV_OBJ *shared )
      {
          for( int i = 0; i < 30; i++ ) // the reference that the Store gives up is the last but one
          {
              Ref< QV_STORE > store( qvStoreCreate() );
              qvStoreSetValue( store.at(), as< QV_STRING >( shared ), as< QV_STRING >( shared ) );
          }
      } },
    { "RangeMap",
      []
      {
          QV_RANGE_MAP *map = qvRangeMapCreate();
          qvRangeMapSetRangeKey( &map, 3, 9, number( 1 ) );
          return qvRangeMapObj( map );
      },
      []( QV_OBJ *shared )
      { changeCopy< QV_RANGE_MAP >( shared, []( QV_RANGE_MAP **map ) { qvRangeMapDelRangeKey( map, 4, 5 ); } ); } },
    { "PriorityMap",
      []
      {
          QV_PRIORITY_MAP *map = qvPriorityMapCreate();
          qvPriorityMapSet( &map, 3, number( 1 ) );
          return qvPriorityMapObj( map );
      },
      []( QV_OBJ *shared )
      {
          changeCopy< QV_PRIORITY_MAP >(
              shared, []( QV_PRIORITY_MAP **map ) { qvPriorityMapSet( map, 4, number( 2 ) ); } );
      } },
    { "Enum",
      []
      {
          QV_ENUM *names = qvEnumCreate();
          qvEnumSetEnumerantCstr( &names, "ONE", -1, 1 );
          return qvEnumObj( names );
      },
      []( QV_OBJ *shared )
      { changeCopy< QV_ENUM >( shared, []( QV_ENUM **names ) { qvEnumSetEnumerantCstr( names, "TWO", -1, 2 ); } ); } },
    { "Flagset",
      []
      {
          QV_FLAGSET *names = qvFlagsetCreate();
          qvFlagsetSetFlagCstr( &names, "ONE", -1, 1 );
          return qvFlagsetObj( names );
      },
      []( QV_OBJ *shared )
      {
          changeCopy< QV_FLAGSET >( shared, []( QV_FLAGSET **names ) { qvFlagsetSetFlagCstr( names, "TWO", -1, 2 ); } );
      } },
    { "Time", [] { return qvTimeObj( qvTimeNow() ); },
      []( QV_OBJ *shared )
      {
          changeCopy< QV_TIME >( shared, []( QV_TIME **time ) { qvTimeSetYear( time, 2000 ); } );
          Ref< QV_TIMER > timer( qvTimerCreateBarrier( Ref< QV_BARRIER >( qvBarrierCreate( QV_TRUE ) ) ) );
          qvTimerScheduleAtTime( timer, as< QV_TIME >( shared ) );
      } },
    { "OptDef", [] { return qvOptDefObj( qvOptDefCreate() ); },
      []( QV_OBJ *shared )
      {
          changeCopy< QV_OPT_DEF >( shared, []( QV_OPT_DEF **def ) { qvOptDefSetShortOpt( def, U'a', 1 ); } );
          Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( as< QV_OPT_DEF >( shared ), Ref< QV_VECTOR >( makeVector() ) ) );
          EXPECT_TRUE( qvOptSeqHasNext( seq ) );
      } },
    { "ToolSwitch", [] { return qvToolSwitchObj( qvToolSwitchCreate() ); }, []( QV_OBJ *shared )
      { Ref< QV_TOOL_SWITCH > copy( qvToolSwitchCreateFrom( as< QV_TOOL_SWITCH >( shared ) ) ); } },
    { "Signal", [] { return qvSignalObj( qvSignalCreate() ); },
      []( QV_OBJ *shared )
      {
          QV_SIGNAL           *signal = as< QV_SIGNAL >( shared );
          Ref< QV_BARRIER >    barrier( qvBarrierCreate( QV_TRUE ) );
          Ref< QV_SIGNALABLE > target( qvSignalableCreateBarrier( barrier ) );
          qvSignalAddSignalable( signal, target );
          qvSignalAssert( signal );
          EXPECT_TRUE( qvBarrierPassTimed( barrier, 60000 ) && qvSignalWaitTimed( signal, 0 ) );
          qvSignalDelSignalable( signal, target );
      } },
    { "Alert", [] { return qvAlertObj( qvAlertCreate() ); },
      []( QV_OBJ *shared )
      {
          Ref< QV_SIGNAL > signal( qvSignalCreate() );
          qvAlertAddSignal( as< QV_ALERT >( shared ), signal );
          qvAlertSet( as< QV_ALERT >( shared ) );
          EXPECT_TRUE( qvSignalWaitTimed( signal, 60000 ) );
          qvAlertDelSignal( as< QV_ALERT >( shared ), signal );
          qvAlertUnset( as< QV_ALERT >( shared ) );
          qvAlertSet( as< QV_ALERT >( shared ) ); // whoever waits for it meanwhile is let go
      } },
    { "Condset", [] { return qvCondsetObj( qvCondsetCreate() ); },
      []( QV_OBJ *shared )
      {
          qvCondsetAddConditions( as< QV_CONDSET >( shared ), 1 );
          EXPECT_EQ( 1, qvCondsetWaitAnyTimed( as< QV_CONDSET >( shared ), 1, 0 ) );
          Ref< QV_TIMER > timer( qvTimerCreateCondset( as< QV_CONDSET >( shared ), 1 ) );
      } },
    { "Counter", [] { return qvCounterObj( qvCounterCreate() ); },
      []( QV_OBJ *shared )
      {
          qvCounterIncrement( as< QV_COUNTER >( shared ) );
          EXPECT_LE( 1, qvCounterValue( as< QV_COUNTER >( shared ) ) );
          qvCounterDecrement( as< QV_COUNTER >( shared ) );
      } },
    { "Barrier", [] { return qvBarrierObj( qvBarrierCreate( QV_FALSE ) ); },
      []( QV_OBJ *shared )
      {
          Ref< QV_SIGNALABLE > target( qvSignalableCreateBarrier( as< QV_BARRIER >( shared ) ) );
          EXPECT_TRUE( qvBarrierPassTimed( as< QV_BARRIER >( shared ), 60000 ) );
      } },
    { "Region", [] { return qvRegionObj( qvRegionCreate() ); },
      []( QV_OBJ *shared )
      {
          qvRegionEnterShared( as< QV_REGION >( shared ) );
          qvRegionLeave( as< QV_REGION >( shared ) );
          qvRegionEnterExclusive( as< QV_REGION >( shared ) );
          qvRegionLeave( as< QV_REGION >( shared ) );
      } },
    { "Timer", [] { return qvTimerObj( qvTimerCreateSignal( Ref< QV_SIGNAL >( qvSignalCreate() ) ) ); },
      []( QV_OBJ *shared )
      {
          qvTimerSchedule( as< QV_TIMER >( shared ), 100000 );
          qvTimerScheduled( as< QV_TIMER >( shared ) );
          qvTimerUnschedule( as< QV_TIMER >( shared ) );
      } },
    { "Generation", [] { return qvGenerationObj( qvGenerationCreate() ); },
      []( QV_OBJ *shared )
      {
          Ref< QV_GENERATION > child( qvGenerationCreateWithParent( as< QV_GENERATION >( shared ) ) );
          EXPECT_TRUE( qvGenerationIsYounger( child, as< QV_GENERATION >( shared ) ) );
      } },
    { "Identifier", [] { return qvIdentifierObj( qvIdentifierCreate() ); },
      []( QV_OBJ *shared ) { Ref< QV_STRING > asText( qvIdentifierString( as< QV_IDENTIFIER >( shared ) ) ); } },
    { "ModuleVersion", [] { return qvModuleVersionObj( qvModuleVersionTryCreateFromCstr( "1.2", -1 ) ); },
      []( QV_OBJ *shared ) { EXPECT_EQ( 1, qvModuleVersionMajor( as< QV_MODULE_VERSION >( shared ) ) ); } },
    { "StackTrace", [] { return qvStackTraceObj( qvStackTraceCreate( 0, 5 ) ); },
      []( QV_OBJ *shared ) { Ref< QV_VECTOR > lines( qvStackTraceVector( as< QV_STACK_TRACE >( shared ) ) ); } },
};

// Every object can be an element, a key, a value, an argument of a format and of a thread, and can be compared.
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
} // namespace

class Sharing : public testing::TestWithParam< Case >
{
};

// Without the object database, as programs run: it does without the shortcuts that a count of 1 allows.
TEST_P( Sharing, TwoThreadsBorrowOneObject )
{
    withoutLibrary(
        []
        {
            qvRuntimeStartup( 0, nullptr, nullptr, nullptr, nullptr );
            {
                Ref< QV_OBJ >      shared( GetParam().make() );
                std::string        before   = textOf( shared.get() );
                QV_INT             declared = allocated( shared.get() );
                std::atomic< int > waiting  = 2;
                auto               borrow   = [&]
                {
                    for( waiting--; waiting > 0; ) // both begin at once
                        ;

                    for( int i = 0; i < ROUNDS; i++ )
                    {
                        GetParam().use( shared );

                        if( i % 4 == 0 )
                            keep( shared );
                    }
                };

                Ref< QV_THREAD > other = trySpawn( borrow );
                borrow();
                qvThreadJoin( other );

                EXPECT_EQ( 1, references( shared.get() ) );
                EXPECT_EQ( declared, allocated( shared.get() ) );
                EXPECT_EQ( before, textOf( shared.get() ) );
            }
            qvRuntimeShutdown();
        } );
}

INSTANTIATE_TEST_SUITE_P(
    Families, Sharing, testing::ValuesIn( CASES ),
    []( const testing::TestParamInfo< Case > &tested )
    {
        std::string name = tested.param.name;
        std::erase( name, ' ' );
        return name;
    } );
