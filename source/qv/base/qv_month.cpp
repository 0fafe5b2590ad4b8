#include "qv/base/qv_month.h"

#include "qv/base/qv_calendar_names_private.h"
#include "qv/base/qv_scan_private.h"
#include "qv/base/qv_string.h"
#include "qv/sys/qv_abort.h"

namespace
{
const char *const NAMES[] = { "January", "February", "March",     "April",   "May",      "June",
                              "July",    "August",   "September", "October", "November", "December" };

const QV_INT SHORT_LENGTH = 3;
} // namespace

QV_STRING *qvMonthToString( QV_INT mo )
{
    QV_CHECK( QV_MONTH_OK( mo ) );
    return qvStringCreateFromCstr( NAMES[mo - 1], -1 );
}

QV_INT qvMonthFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );

    if( QV_INT idx = qv::calendarNameIndex( NAMES, qvs, SHORT_LENGTH ); idx >= 0 )
        return idx + 1;

    QV_INT mo;

    return qv::scansAsInt( qvs, 10, &mo ) && QV_MONTH_OK( mo ) ? mo : -1;
}
