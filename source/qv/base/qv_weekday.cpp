#include "qv/base/qv_weekday.h"

#include "qv/base/qv_calendar_names_private.h"
#include "qv/base/qv_string.h"
#include "qv/sys/qv_abort.h"

namespace
{
const char *const NAMES[] = { "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday" };
} // namespace

QV_STRING *qvWeekdayToString( QV_INT wd )
{
    QV_CHECK( QV_WEEKDAY_OK( wd ) );
    return qvStringCreateFromCstr( NAMES[wd], -1 );
}

QV_INT qvWeekdayFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qv::calendarNameIndex( NAMES, qvs, -1 );
}
