#include "qv_test_support.h"

#include "qv/base/qv_barrier.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_counter.h"
#include "qv/base/qv_generation.h"
#include "qv/base/qv_identifier.h"
#include "qv/base/qv_monitor.h"
#include "qv/base/qv_month.h"
#include "qv/base/qv_name.h"
#include "qv/base/qv_nanoseconds.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/base/qv_random.h"
#include "qv/base/qv_region.h"
#include "qv/base/qv_signal.h"
#include "qv/base/qv_stack_trace.h"
#include "qv/base/qv_thread.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_timer.h"
#include "qv/base/qv_tool_switch.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_weekday.h"

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
} // namespace

// Times, threads and what they wait for, options and names.
TEST( Misuse, IsReported )
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
    } );
}
