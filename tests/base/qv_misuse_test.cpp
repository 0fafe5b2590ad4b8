#include "qv_test_support.h"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector_private.h"
#include "qv/qv.h"

using namespace qv::test;

namespace
{
// Shifts a time of the last year, or of the first one.
void shift( void ( *by )( QV_TIME **, QV_INT ), QV_INT count, QV_INT year = QV_INT_MAX )
{
    QV_TIME *tm = qvTimeCreate();
    qvTimeSetYear( &tm, year );
    qvTimeSetMonth( &tm, year < 0 ? 1 : 12 );
    by( &tm, count );
}

// A new variable for an object. What is made here ends with the process.
template< class T >
T **var( T *object )
{
    return new T *( object );
}

// Three characters, two elements, 20 bits and a Store of one value.
QV_STRING **abc()
{
    return var( text( "abc" ).give() );
}

QV_VECTOR **twoElements()
{
    return var( qvStringSplitChar( text( "a,b" ), U',', -1 ) );
}

QV_BUFFER **bits20()
{
    return var( qvBufferCreateFromBits( 0xABCDE, 20 ) );
}

QV_STORE *storeOfOne()
{
    return qvStoreTryDecodeFromTextBuffer( qvBufferCreateFromBytesCopy( "a=1", 3 ) );
}

const QV_CHAR BAD  = 0x110000;
const QV_INT  MOST = QV_INT_MAX;
QV_OBJ       *hole;
uint8_t       memory[2];
QV_MONITOR   *monitor;
} // namespace

TEST( Misuse, IsReported )
{
    expectReports( {
        { [] { qvStringAppendChar( abc(), BAD ); }, "qvCharsAllOk( chs, chsLength )" },
        { [] { qvStringAppendChars( abc(), &BAD, 1 ); }, "qvCharsAllOk( chs, chsLength )" },
        { [] { qvStringAppendChars( abc(), &BAD, MOST ); }, "QV_INT_ADD_OK( (*qvs)->length, chsLength )" },
        { [] { qvStringAppendInner( abc(), *abc(), 1, MOST ); }, "QV_INT_ADD_OK( offset, count )" },
        { [] { qvStringAppendInner( abc(), *abc(), 1, 3 ); }, "offset + count <= src->length" },
        { [] { qvStringCreateFromCharsCopy( &BAD, 1 ); }, "qvCharsAllOk( src, srcLength )" },
        { [] { qvStringDelTrailing( abc(), 4 ); }, "count <= (*qvs)->length" },
        { [] { qvStringFindCharFromRight( *abc(), -2, U'a' ); }, "offset >= 0 || offset == -1" },
        { [] { qvStringSplit( *abc(), qvStringCreate(), -1 ); }, "qvStringLength( sep )" },
        { [] { qvStringSplitChar( *abc(), U'a', 0 ); }, "maxParts > 0" },
        { [] { qvStringReplace( abc(), qvStringCreate(), *abc(), -1 ); }, "sought->length > 0" },
        { [] { qvStringReplaceChar( abc(), U'a', BAD, -1 ); }, "QV_CHAR_OK( replacement )" },
        { [] { qv___StringMakeRoom( *abc(), 3, MOST - 4 ); },
          "QV_INT_ADD_OK( qvs->fspace + qvs->length + count, QV_STRING_BSPACE )" },

        { [] { qvStringAppendRoom( abc(), MOST ); }, "QV_INT_ADD_OK( (*dest)->length, count )" },
        { [] { qvStringAppendRoom( var( qvStringCreate() ), MOST / 2 + 1 ); }, "QV_INT_MUL_OK( count, size )" },
        { [] { qvStringAppendWritten( abc(), 33 ); }, "count <= (*dest)->bspace" },
        { []
          {
              QV_STRING **own               = abc();
              *qvStringAppendRoom( own, 1 ) = BAD;
              qvStringAppendWritten( own, 1 );
          },
          "qvCharsAllOk( written, count )" },

        { [] { qvBufferAppendRoom( bits20(), 1 ); }, "qvBufferBitIsAligned( *buf )" },
        { []
          {
              QV_BUFFER **wrapped = var( qvBufferCreateFromBytesUseWithRef( memory, 2, qvStringObj( *abc() ) ) );
              qvBufferDelTrailing( wrapped, 1 );
              qvBufferAppendWritten( wrapped, 1 );
          },
          "!(*buf)->ref" },
        { [] { qvBufferReadByte( *bits20(), -1 ); }, "QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( byteIdx )" },
        { [] { qvBufferDelInner( bits20(), (QV_INT)1 << 61, 0 ); }, "BYTES_TO_BITS_OK( byteOffset )" },
        { [] { qvBufferReadByte( *bits20(), 2 ); }, "bitIdx + bitCount <= buf->bitLength" },
        { [] { qvBufferBitWriteBits( bits20(), 18, 0, 3 ); }, "bitIdx + bitCount <= (*buf)->bitLength" },
        { [] { qvBufferReadBytes( *bits20(), 1, memory, 2 ); },
          "bitIdx + BYTES_TO_BITS( byteCount ) <= buf->bitLength" },
        { [] { qvBufferWriteBytes( bits20(), 1, "ab", 2 ); },
          "bitIdx + BYTES_TO_BITS( byteCount ) <= (*buf)->bitLength" },
        { [] { qvBufferBitInsertByte( bits20(), 21, 0 ); }, "atBit <= (*buf)->bitLength" },
        { [] { qvBufferAppendLeading( bits20(), *bits20(), 3 ); }, "bitOffset + bitCount <= src->bitLength" },
        { [] { qvBufferBitWriteOuter( bits20(), 17, *bits20(), 1, 4 ); },
          "bitIdx + (src->bitLength - bitCount) <= (*buf)->bitLength" },
        { [] { qvBufferBitDelInner( bits20(), 15, 6 ); }, "bitOffset + bitCount <= (*buf)->bitLength" },
        // The size counts as whole bytes.
        { [] { qvBufferBitPrependZero( bits20(), MOST - 1920 - 20 ); },
          "QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( sizeBits )" },

        { [] { qvVectorInsertObjs( twoElements(), 0, &hole, 1 ); }, "obj" },
        { [] { qvVectorAppendObjUse( twoElements(), nullptr ); }, "obj" },
        { [] { qvVectorAppendInner( twoElements(), *twoElements(), 1, MOST ); }, "QV_INT_ADD_OK( offset, count )" },
        { [] { qvVectorAppendTrailing( twoElements(), *twoElements(), QV_INT_MIN ); }, "count >= 0" },
        { [] { qvVectorDelAt( twoElements(), 2 ); }, "offset + count <= (*vec)->length" },
        { [] { qvVectorPop( var( qvVectorCreate() ) ); }, "(*vec)->length" },
        { [] { qv___VectorCompact( qvVectorCreate() ); }, "QV_REF_RETAIN_COUNT( vec ) == 1" },

        { [] { qvDictValueAt( qvDictCreate(), 0 ); }, "idx < dict->length" },
        { [] { qvDictDelAt( var( qvDictCreate() ), 0 ); }, "idx < (*dict)->length" },
        { [] { qvVectorOrderInner( twoElements(), 1, 2 ); }, "offset + count <= (*vec)->length" },
        { [] { qvVectorOrderBy( twoElements(), nullptr, nullptr ); }, "compare" },
        { []
          {
              static QV_DICT *dict = qvDictCreate();
              qvDictUpdateIntKey( &dict, 1, []( QV_OBJ **, void * ) { qvDictClear( &dict ); }, nullptr );
          },
          "*dict" },
        { [] { qvDictCreateWithKeysAndValues( qvVectorCreate(), *twoElements() ); },
          "qvVectorLength( keysVector ) == qvVectorLength( valuesVector )" },
        { [] { qvRangeMapSetRangeKey( var( qvRangeMapCreate() ), 5, 4, qv::obj( *abc() ) ); },
          "endingKey >= startingKey" },
        { [] { qvRangeMapObjAt( qvRangeMapCreate(), 0 ); }, "idx < map->length" },
        { [] { qvPriorityMapDelAt( var( qvPriorityMapCreate() ), 0 ); }, "idx < dict->length" },

        { [] { qvStoreHasValueCstr( storeOfOne(), "a.b", -1 ); }, "qvStoreAddressOk( address )" },
        { [] { qvStoreValueAt( storeOfOne(), 1 ); }, "idx < dict->length" },
        { [] { qvStoreDecodeFromStringVector( qvVectorCreateFromObj( qv::obj( storeOfOne() ) ) ); },
          "qvVectorContainsOnly( vec, qvStringSort() )" },
        { [] { qvEncoderEncodeChar( qvEncoderCreate(), BAD ); }, "QV_CHAR_OK( value )" },
        { [] { qvEncoderEncodeBuffer( qvEncoderCreate(), *bits20() ); }, "qvBufferBitIsAligned( buf )" },
        { [] { qvDecoderTrySkip( qvDecoderCreate( *bits20() ), -1 ); }, "length >= 0" },
        { [] { qvDecoderTryDecodeChars( qvDecoderCreate( *bits20() ), nullptr, 1 ); }, "value || !length" },

        { [] { qvEnumSetEnumerantCstr( var( qvEnumCreate() ), "colour", -1, 1 ); },
          "qvNameUpperCaseOk( name, QV_TRUE )" },
        { [] { qvEnumSetEnumerantCstr( var( qvEnumCreate() ), "COLOUR", -1, -1 ); }, "value >= 0" },
        { [] { qvFlagsetSetFlagCstr( var( qvFlagsetCreate() ), "PEN", -1, 3 ); },
          "value && qvIntBitHighest( value ) == qvIntBitLowest( value )" },
        { [] { qvFlagsetGenerate( qvFlagsetCreate(), 3 ); }, "name" },

        { [] { qvTimerSchedule( qvTimerCreateSignal( qvSignalCreate() ), -1 ); }, "milliseconds >= 0" },
        { [] { qvTimerSchedule( qvTimerCreateSignal( qvSignalCreate() ), MOST ); },
          "QV_INT_ADD_OK( currentTimestamp, milliseconds )" },
        { [] { shift( qvTimeShiftSeconds, 31 * 86400 ); }, "QV_INT_ADD_OK( (*tm)->year, 1 )" },
        { [] { shift( qvTimeShiftDays, -1, QV_INT_MIN ); }, "QV_INT_SUB_OK( (*tm)->year, 1 )" },
        { [] { shift( qvTimeShiftDays, 1461 ); }, "QV_INT_ADD_OK( (*tm)->year, y4*4 )" },
        { [] { shift( qvTimeShiftMonths, 12 ); }, "QV_INT_ADD_OK( (*tm)->year, y )" },
        { [] { shift( qvTimeSetMonth, 13 ); }, "QV_MONTH_OK( month )" },
        { [] { qvCounterDecrement( qvCounterCreate() ); }, "ctr->value > 0" },
        { [] { qvCounterWaitZeroTimed( qvCounterCreate(), -2 ); }, "millisec == -1 || millisec >= 0" },
        { [] { qvMonitorLeave( qvMonitorCreate() ); }, "monitor->entered" },
        { [] { qvMonitorEnter( monitor = qvMonitorCreate() ), qvMonitorRelease( monitor ); }, "!monitor->entered" },
        { [] { qvRegionLeave( qvRegionCreate() ); }, "region->exclusive" },
        { [] { qvThreadTrySpawnCstr( "", 0, [] {}, nullptr, -1 ); }, "QV_THREAD_PRIORITY_OK( prio )" },
        { [] { qvThreadTrySpawnCstr( "", 0, nullptr, nullptr, 0 ); }, "threadFunc" },
        { [] { qvRandom( var< QV_BUFFER >( nullptr ), 1 ); }, "*buffer || !byteCount" },
        { [] { qvRandomBits( 65 ); }, "bitCount <= QV_INT_BITS" },
        { [] { qvNamePrivate( text( "qv_ObjFree" ) ); }, "qvNameOk( qvs, QV_TRUE )" },
        { [] { qvStackTraceAt( qvStackTraceCreate( 0, 2 ), 2 ); }, "idx >= 0 && idx < st->symbolsLength" },
        { [] { qvOptSeqNext( qvOptSeqCreate( qvOptDefCreate(), qvVectorCreate() ) ); }, "length" },
        { [] { qvSignalWaitTimed( qvSignalCreate(), -2 ); }, "millisec == -1 || millisec >= 0" },
        { [] { qvFormatEncodeInt( 1, 1, 0, 0 ); }, "base >= 2" },
        { [] { qvStringAppendInt( abc(), 1, 37 ); }, "base <= 36" },
        { [] { qvFormatEncodeReal( 1.0, 10, 0, -2, 0 ); }, "precision >= -1" },
        { [] { qvFormatEncodeReal( 1.0, 10, -1, 0, 0 ); }, "minWidth >= 0" },
        { [] { qvFormatEncodeReal( 1.0, 10, 0, MOST, 0 ); }, "QV_INT_ADD_OK( digits, precision )" },
        { [] { qvFormatEncodeChars( &BAD, 1, 0, 0 ); }, "qvCharsAllOk( src, srcLength )" },
        { [] { qvFormatTryDecodeInt( *abc(), 2, 2, 10, nullptr, nullptr ); },
          "srcOffset + srcLength <= qvStringLength( src )" },
    } );
}
