#include "qv_test_support.h"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector_private.h"
#include "qv/qv.h"

using namespace qv::test;

namespace
{
QV_TIMER *timer()
{
    return qvTimerCreateSignal( qvSignalCreate() );
}

// Shifts a time of the last year, or of the first one.
void shift( void ( *by )( QV_TIME **, QV_INT ), QV_INT count, QV_INT year = QV_INT_MAX )
{
    QV_TIME *tm = qvTimeCreate();
    qvTimeSetYear( &tm, year );
    qvTimeSetMonth( &tm, year < 0 ? 1 : 12 );
    by( &tm, count );
}

void nothing()
{
}

// Three characters, two elements, 20 bits and a Store of one value, in variables.
QV_STRING **abc()
{
    static QV_STRING *qvs;
    return &( qvs = text( "abc" ).give() );
}

QV_VECTOR **twoElements()
{
    static QV_VECTOR *vec;
    return &( vec = qvStringSplitChar( text( "a,b" ), U',', -1 ) );
}

QV_BUFFER **bits20()
{
    static QV_BUFFER *buf;
    return &( buf = qvBufferCreateFromBits( 0xABCDE, 20 ) );
}

QV_STORE *storeOfOne()
{
    QV_STORE *store = qvStoreCreate();
    qvStoreSetValueCstr( &store, "a", -1, text( "1" ) );
    return store;
}

const QV_CHAR BAD  = 0x110000;
const QV_INT  MOST = QV_INT_MAX;
} // namespace

TEST( Misuse, OfContainersAndDocumentsIsReported )
{
    static QV_OBJ          *hole;
    static QV_DICT         *dict = qvDictCreate();
    static QV_RANGE_MAP    *map  = qvRangeMapCreate();
    static QV_PRIORITY_MAP *prio = qvPriorityMapCreate();
    static QV_BUFFER       *byte = qvBufferCreateFromByte( 0x12 );
    static uint8_t          memory[2];

    expectReports( {
        { [] { qvStringAppendChar( abc(), BAD ); }, "qvCharsAllOk( chs, chsLength )" },
        { [] { qvStringAppendInner( abc(), *abc(), 1, MOST ); }, "QV_INT_ADD_OK( offset, count )" },
        { [] { qvStringAppendInner( abc(), *abc(), 1, 3 ); }, "offset + count <= src->length" },
        { [] { qvStringAppendTrailing( abc(), *abc(), 4 ); }, "count <= src->length" },
        { [] { qvStringCreateFromCharsCopy( &BAD, 1 ); }, "qvCharsAllOk( src, srcLength )" },
        { [] { qvStringDelTrailing( abc(), 4 ); }, "count <= (*qvs)->length" },
        { [] { qvStringFindCharFromRight( *abc(), -2, U'a' ); }, "offset >= 0 || offset == -1" },
        { [] { qvStringBeginsWithChars( *abc(), &BAD, 1 ); }, "qvCharsAllOk( sub, subLen )" },
        { [] { qvStringSplit( *abc(), qvStringCreate(), -1 ); }, "qvStringLength( sep )" },
        { [] { qvStringSplitChar( *abc(), U'a', 0 ); }, "maxParts > 0" },
        { [] { qv___StringMakeRoom( *abc(), 3, MOST - 4 ); },
          "QV_INT_ADD_OK( qvs->fspace + qvs->length + count, QV_STRING_BSPACE )" },

        { [] { qvBufferReadByte( *bits20(), -1 ); }, "QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( byteIdx )" },
        { [] { qvBufferDelInner( bits20(), (QV_INT)1 << 61, 0 ); }, "BYTES_TO_BITS_OK( byteOffset )" },
        { [] { qvBufferReadByte( *bits20(), 2 ); }, "bitIdx + bitCount <= buf->bitLength" },
        { [] { qvBufferBitWriteBits( bits20(), 18, 0, 3 ); }, "bitIdx + bitCount <= (*buf)->bitLength" },
        { [] { qvBufferReadBytes( *bits20(), 1, memory, 2 ); },
          "bitIdx + BYTES_TO_BITS( byteCount ) <= buf->bitLength" },
        { [] { qvBufferWriteBytes( bits20(), 1, "ab", 2 ); },
          "bitIdx + BYTES_TO_BITS( byteCount ) <= (*buf)->bitLength" },
        { [] { qvBufferBitInsertByte( bits20(), 21, 0 ); }, "atBit <= (*buf)->bitLength" },
        { [] { qvBufferAppendLeading( bits20(), byte, 2 ); }, "bitOffset + bitCount <= src->bitLength" },
        { [] { qvBufferBitAppendTrailing( bits20(), byte, 9 ); }, "QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount )" },
        { [] { qvBufferBitWriteOuter( bits20(), 17, byte, 1, 4 ); },
          "bitIdx + (src->bitLength - bitCount) <= (*buf)->bitLength" },
        { [] { qvBufferBitDelInner( bits20(), 15, 6 ); }, "bitOffset + bitCount <= (*buf)->bitLength" },
        { [] { qvBufferBitAppendZero( bits20(), MOST ); }, "QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( sizeBits )" },
        // The size counts as whole bytes, and of several bad arguments the first one.
        { [] { qvBufferBitPrependZero( bits20(), MOST - 1920 - 20 ); },
          "QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( sizeBits )" },
        { [] { qvBufferBitRead( *bits20(), -1, -1 ); }, "QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( bitIdx )" },
        { [] { qvBufferDelOuter( bits20(), -1, -1 ); }, "QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( byteOffset )" },

        { [] { qvVectorInsertObjs( twoElements(), 0, &hole, 1 ); }, "obj" },
        { [] { qvVectorInsertObjs( twoElements(), 0, nullptr, 1 ); }, "count == 0 || src" },
        { [] { qvVectorCreateFromObjsUse( &hole, 1 ); }, "src[i]" },
        { [] { qvVectorAppendInner( twoElements(), *twoElements(), 1, MOST ); }, "QV_INT_ADD_OK( offset, count )" },
        { [] { qvVectorAppendTrailing( twoElements(), *twoElements(), QV_INT_MIN ); }, "count >= 0" },
        { [] { qvVectorDelAt( twoElements(), 2 ); }, "offset + count <= (*vec)->length" },
        { [] { qvVectorPop( qv::Ref( qvVectorCreate() ).at() ); }, "(*vec)->length" },
        { [] { qv___VectorCompact( qvVectorCreate() ); }, "QV_REF_RETAIN_COUNT( vec ) == 1" },

        { [] { qvDictValueAt( dict, 0 ); }, "idx < dict->length" },
        { [] { qvDictDelAt( &dict, 0 ); }, "idx < (*dict)->length" },
        { [] { qvDictKeyAt( dict, -1 ); }, "idx >= 0" },
        { [] { qvDictCreateWithKeysAndValues( qvVectorCreate(), *twoElements() ); },
          "qvVectorLength( keysVector ) == qvVectorLength( valuesVector )" },
        { [] { qvRangeMapSetRangeKey( &map, 5, 4, qv::obj( map ) ); }, "endingKey >= startingKey" },
        { [] { qvRangeMapObjAt( map, 0 ); }, "idx < map->length" },
        { [] { qvPriorityMapDelAt( &prio, 0 ); }, "idx < dict->length" },
        { [] { qvPriorityMapPriorityAt( prio, -1 ); }, "idx >= 0" },

        { [] { qvStoreHasValueCstr( storeOfOne(), "a.b", -1 ); }, "qvStoreAddressOk( address )" },
        { [] { qvStoreValueAt( storeOfOne(), 1 ); }, "idx < dict->length" },
        { [] { qvStoreDecodeFromStringVector( qvVectorCreateFromObj( qv::obj( dict ) ) ); },
          "qvVectorContainsOnly( vec, qvStringSort() )" },
        { [] { qvEncoderEncodeChar( qvEncoderCreate(), BAD ); }, "QV_CHAR_OK( value )" },
        { [] { qvEncoderEncodeChars( qvEncoderCreate(), nullptr, -1 ); }, "valuesLength >= 0" },
        { [] { qvEncoderEncodeBuffer( qvEncoderCreate(), *bits20() ); }, "qvBufferBitIsAligned( buf )" },
        { [] { qvDecoderTrySkip( qvDecoderCreate( byte ), -1 ); }, "length >= 0" },
        { [] { qvDecoderTryRead( qvDecoderCreate( byte ), nullptr, 1 ); }, "length == 0 || dest" },
        { [] { qvDecoderTryDecodeChars( qvDecoderCreate( byte ), nullptr, 1 ); }, "value || !length" },
    } );

    qvDictRelease( dict ), qvRangeMapRelease( map ), qvPriorityMapRelease( prio ), qvBufferRelease( byte );
}

TEST( Misuse, OfTimesThreadsOptionsAndTextsIsReported )
{
    static QV_BUFFER  *none = nullptr;
    static QV_MONITOR *monitor;

    expectReports( {
        { [] { qvTimerSchedule( timer(), -1 ); }, "milliseconds >= 0" },
        { [] { qvTimerSchedule( timer(), QV_INT_MAX ); }, "QV_INT_ADD_OK( currentTimestamp, milliseconds )" },
        { [] { qvTimerScheduleAt( timer(), -1 ); }, "timestamp >= 0" },
        { [] { shift( qvTimeShiftSeconds, 31 * 86400 ); }, "QV_INT_ADD_OK( (*tm)->year, 1 )" },
        { [] { shift( qvTimeShiftDays, -1, QV_INT_MIN ); }, "QV_INT_SUB_OK( (*tm)->year, 1 )" },
        { [] { shift( qvTimeShiftDays, 1461 ); }, "QV_INT_ADD_OK( (*tm)->year, y4*4 )" },
        { [] { shift( qvTimeShiftYears, 1 ); }, "QV_INT_ADD_OK( (*tm)->year, years )" },
        { [] { shift( qvTimeShiftMonths, 12 ); }, "QV_INT_ADD_OK( (*tm)->year, y )" },
        { [] { shift( qvTimeSetMonth, 13 ); }, "QV_MONTH_OK( month )" },
        { [] { shift( qvTimeSetDay, 0 ); }, "day >= 1 && day <= 31" },
        { [] { shift( qvTimeSetHour, 24 ); }, "hour >= 0 && hour <= 23" },
        { [] { qvNanosecondsTryConvertFromMilliseconds( -1 ); }, "milliseconds >= 0" },
        { [] { qvCounterDecrement( qvCounterCreate() ); }, "ctr->value > 0" },
        { [] { qvCounterWaitZeroTimed( qvCounterCreate(), -2 ); }, "millisec == -1 || millisec >= 0" },
        { [] { qvMonitorLeave( qvMonitorCreate() ); }, "monitor->entered" },
        { [] { qvMonitorEnter( monitor = qvMonitorCreate() ), qvMonitorRelease( monitor ); }, "!monitor->entered" },
        { [] { qvBarrierPassTimed( qvBarrierCreate( QV_TRUE ), -2 ); }, "millisec == -1 || millisec >= 0" },
        { [] { qvRegionLeave( qvRegionCreate() ); }, "region->exclusive" },
        { [] { qvThreadTrySpawnCstr( "", 0, nothing, nullptr, -1 ); }, "QV_THREAD_PRIORITY_OK( prio )" },
        { [] { qvThreadTrySpawnCstr( "", 0, nullptr, nullptr, 0 ); }, "threadFunc" },
        { [] { qvRandom( &none, 1 ); }, "*buffer || !byteCount" },
        { [] { qvRandomBits( 65 ); }, "bitCount <= QV_INT_BITS" },
        { [] { qvRandomNonNegativeIntRange( -1, 3 ); }, "lowVal >= 0" },
        { [] { qvNamePrivate( text( "qv_ObjFree" ) ); }, "qvNameOk( qvs, QV_TRUE )" },
        { [] { qvStackTraceAt( qvStackTraceCreate( 0, 2 ), 2 ); }, "idx >= 0 && idx < st->symbolsLength" },
        { [] { qvStackTraceCreate( 0, -2 ); }, "maxLength >= -1" },
        { [] { qvOptSeqNext( qvOptSeqCreate( qvOptDefCreate(), qvVectorCreate() ) ); }, "length" },
        { [] { qvOptDefFlags( qvOptDefCreate(), -1 ); }, "optId >= 0" },
        { [] { qvOptDefLongOpt( qvOptDefCreate(), text( "" ), QV_TRUE, nullptr ); },
          "qvStringLength( optString ) > 0" },
        { [] { qvSignalWaitTimed( qvSignalCreate(), -2 ); }, "millisec == -1 || millisec >= 0" },
        { [] { qvAlertWaitTimed( qvAlertCreate(), -2 ); }, "millisec == -1 || millisec >= 0" },
        { [] { qvFormatEncodeInt( 1, 1, 0, 0 ); }, "base >= 2" },
        { [] { qvFormatEncodeInt( 1, 37, 0, 0 ); }, "base <= 36" },
        { [] { qvFormatEncodeReal( 1.0, 10, 0, -2, 0 ); }, "precision >= -1" },
        { [] { qvFormatEncodeReal( 1.0, 10, -1, 0, 0 ); }, "minWidth >= 0" },
        { [] { qvFormatEncodeReal( 1.0, 10, 0, MOST, 0 ); }, "QV_INT_ADD_OK( digits, precision )" },
        { [] { qvFormatEncodeChars( &BAD, 1, 0, 0 ); }, "qvCharsAllOk( src, srcLength )" },
        { [] { qvFormatEncodeChars( nullptr, 1, 0, 0 ); }, "src || srcLength == 0" },
        { [] { qvFormatTryDecodeInt( *abc(), 2, 2, 10, nullptr, nullptr ); },
          "srcOffset + srcLength <= qvStringLength( src )" },
        { [] { qvFormatTryDecodeReal( *abc(), 0, 2, 1, nullptr, nullptr ); },
          "base == -1 || ( base >= 2 && base <= 36 )" },
    } );
}
