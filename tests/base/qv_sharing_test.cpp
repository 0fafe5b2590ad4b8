// Two threads borrow one object of each family of values at the same time: they read it, change copies of it, and hand it to
// all that keeps it. What threads are made to share anyway has tests of its own. Nothing of that may change the object, lose a reference to it or race.

#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/qv.h"

#include <atomic>
#include <functional>
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
    const char                 *name;
    std::function< QV_OBJ *() > make;
    std::function< void( QV_OBJ * ) >
        use; // what a thread does with the borrowed object, beside keeping it in containers
};

template< class T >
Case row( const char *name, T *( *make )(), void ( *use )( T *shared ) )
{
    return {
        name, [make] { return qv::obj( make() ); },
        [use]( QV_OBJ *shared ) { use( reinterpret_cast< T * >( shared ) ); } };
}

// Takes a copy of a value, changes that and gives it up.
template< class T, class Change >
void changeCopy( T *shared, Change change )
{
    Ref< T > copy = Ref< T >::share( shared );
    change( copy.at() );
}

// A value that gets entry 1 when it is made, and entry 2 in copies.
template< class T >
Case valueRow( const char *name, T *( *create )(), void ( *add )( T **value, QV_INT entry ) )
{
    auto make = [=]
    {
        T *value = create();
        add( &value, 1 );
        return qv::obj( value );
    };
    auto use = [=]( QV_OBJ *shared )
    { changeCopy( reinterpret_cast< T * >( shared ), [add]( T **copy ) { add( copy, 2 ); } ); };

    return { name, make, use };
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

void useDict( QV_DICT *shared )
{
    auto change = []( QV_DICT **dict )
    {
        Ref< QV_OBJ > key( qvDictKeyAt( *dict, 3 ) );
        qvDictSetObjKey( dict, key, key );
        qvDictDelAt( dict, 5 );
        qvDictDelValue( dict, key, QV_TRUE );
    };
    changeCopy( shared, change );
    changeCopy( shared, [shared]( QV_DICT **dict ) { qvDictInclude( dict, shared, QV_TRUE ); } );
    changeCopy( shared, [shared]( QV_DICT **dict ) { qvDictExclude( dict, shared ); } );
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

void useStore( QV_STORE *shared )
{
    // The very Strings and Stores that the shared one holds, in a Store of this thread.
    Ref< QV_STRING > address( qvStoreAddressAt( shared, 0 ) );
    Ref< QV_STORE >  below( qvStoreStore( shared, address ) ), own( qvStoreCreate() );
    Ref< QV_STRING > value( qvStoreValueCstr( below, "value", -1 ) );

    qvStoreSetValue( own.at(), address, value );
    qvStoreSetStore( own.at(), address, shared );
    qvStoreMerge( own.at(), shared );
    changeCopy( shared, []( QV_STORE **store ) { qvStoreDelStoreCstr( store, "below", -1 ); } );
    Ref< QV_STORE > back( qvStoreTryDecodeFromBuffer( Ref< QV_BUFFER >( qvStoreEncodeToBuffer( own ) ) ) );
    EXPECT_TRUE( back && qvStoreEquals( back, own ) );
}

void useString( QV_STRING *shared )
{
    changeCopy( shared, []( QV_STRING **copy ) { qvStringToUpper( copy ); } );
    changeCopy( shared, [shared]( QV_STRING **copy ) { qvStringInsert( copy, 3, shared ); } );
    changeCopy( shared, []( QV_STRING **copy ) { qvStringNormalizeNFD( copy ); } );
    Ref< QV_VECTOR > parts( qvStringSplitChar( shared, U' ', -1 ) );
    Ref< QV_STRING > inserted( qvStringCreateFromFormatCstr( "%s-%s", -1, shared, shared ) );
    EXPECT_EQ( 2 * qvStringLength( shared ) + 1, qvStringLength( inserted ) );

    Ref< QV_UNICODE_NORMALIZER > normalizer( qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC ) );
    qvUnicodeNormalizerWrite( normalizer, shared );
    qvUnicodeNormalizerFlush( normalizer );
    Ref< QV_STRING_CHAR_SINK > sink( qvStringCharSinkCreate() );
    qvCharSinkWrite( Ref< QV_CHAR_SINK >( qvStringCharSinkCharSink( sink ) ), shared );
    Ref< QV_NLF_LINE_SOURCE > lines( qvNlfLineSourceCreateFromString( shared, QV_NLF_FLAG_LF ) );
    Ref< QV_STRING >          line( qvLineSourceRead( Ref< QV_LINE_SOURCE >( qvNlfLineSourceLineSource( lines ) ) ) );
    EXPECT_TRUE( qvStringEquals( line, shared ) );
    qvEncoderEncodeString( Ref< QV_ENCODER >( qvEncoderCreate() ), shared );
}

// As address and value of a Store, which gives up the last reference but one.
void useAsBoth( QV_STRING *shared )
{
    for( int i = 0; i < 30; i++ )
        qvStoreSetValue( Ref< QV_STORE >( qvStoreCreate() ).at(), shared, shared );
}

void useBuffer( QV_BUFFER *shared )
{
    changeCopy( shared, [shared]( QV_BUFFER **copy ) { qvBufferInsert( copy, 3, shared ); } );
    changeCopy( shared, []( QV_BUFFER **copy ) { qvBufferBitDelInner( copy, 3, 17 ); } );
    Ref< QV_BUFFER > view( qvBufferCreateFromBytesUseWithRef( qvBufferBacking( shared ), 5, qvBufferObj( shared ) ) );
    Ref< QV_BUFFER > read( qvBufferCreate() );
    Ref< QV_BUFFER_BYTE_SOURCE > source( qvBufferByteSourceCreate( shared ) );
    qvByteSourceRead( Ref< QV_BYTE_SOURCE >( qvBufferByteSourceByteSource( source ) ), read.at(), 100 );
    EXPECT_TRUE( qvBufferEquals( read, shared ) );
    qvDecoderTrySkip( Ref< QV_DECODER >( qvDecoderCreate( shared ) ), 3 );
}

void useVector( QV_VECTOR *shared )
{
    changeCopy( shared, [shared]( QV_VECTOR **copy ) { qvVectorAppend( copy, shared ); } );
    changeCopy( shared, []( QV_VECTOR **copy ) { qvVectorReverse( copy ); } );
    changeCopy( shared, []( QV_VECTOR **copy ) { qvVectorDelLeading( copy, 3 ); } );
    Ref< QV_DICT > dict( qvDictCreateWithKeysAndValues( shared, shared ) );
    EXPECT_EQ( qvVectorLength( shared ), qvDictLength( dict ) );
}

void useTime( QV_TIME *shared )
{
    changeCopy( shared, []( QV_TIME **time ) { qvTimeSetYear( time, 2000 ); } );
    Ref< QV_TIMER > timer( qvTimerCreateBarrier( Ref< QV_BARRIER >( qvBarrierCreate( QV_TRUE ) ) ) );
    qvTimerScheduleAtTime( timer, shared );
}

void useOptDef( QV_OPT_DEF *shared )
{
    changeCopy( shared, []( QV_OPT_DEF **def ) { qvOptDefSetShortOpt( def, U'a', 1 ); } );
    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( shared, Ref< QV_VECTOR >( makeVector() ) ) );
    EXPECT_TRUE( qvOptSeqHasNext( seq ) );
}

const Case CASES[] = {
    row( "String", makeString, useString ),
    row< QV_BUFFER >(
        "Buffer", [] { return qvBufferCreateFromBytesCopy( "some bytes of a buffer", 22 ); }, useBuffer ),
    row( "Vector", makeVector, useVector ),
    row< QV_DICT >(
        "Dict", [] { return makeDict( 40 ); }, useDict ),
    row< QV_DICT >(
        "largeDict", [] { return makeDict( 1100 ); }, useDict ),
    row( "Store", makeStore, useStore ),
    row< QV_STRING >(
        "addressAndValue", [] { return text( "both" ).give(); }, useAsBoth ),
    valueRow< QV_RANGE_MAP >(
        "RangeMap", qvRangeMapCreate,
        []( QV_RANGE_MAP **map, QV_INT i ) { qvRangeMapSetRangeKey( map, 4 * i, 9, number( i ) ); } ),
    valueRow< QV_PRIORITY_MAP >(
        "PriorityMap", qvPriorityMapCreate,
        []( QV_PRIORITY_MAP **map, QV_INT i ) { qvPriorityMapSet( map, i, number( i ) ); } ),
    valueRow< QV_ENUM >(
        "Enum", qvEnumCreate,
        []( QV_ENUM **names, QV_INT i ) { qvEnumSetEnumerantCstr( names, i == 1 ? "ONE" : "TWO", -1, i ); } ),
    valueRow< QV_FLAGSET >(
        "Flagset", qvFlagsetCreate,
        []( QV_FLAGSET **names, QV_INT i ) { qvFlagsetSetFlagCstr( names, i == 1 ? "ONE" : "TWO", -1, i ); } ),
    row( "Time", qvTimeNow, useTime ),
    row( "OptDef", qvOptDefCreate, useOptDef ),
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
    []( const testing::TestParamInfo< Case > &tested ) { return std::string( tested.param.name ); } );
