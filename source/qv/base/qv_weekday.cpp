#include "qv/base/qv_weekday.h"

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"

namespace
{
const char *const NAMES[] = { "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday" };

const QV_INT COUNT = 7;
} // namespace

QV_STRING *qvWeekdayToString( QV_INT wd )
{
    QV_CHECK( QV_WEEKDAY_OK( wd ) );
    return qvStringCreateFromCstr( NAMES[wd], -1 );
}

QV_INT qvWeekdayFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );

    qv::Ref< QV_STRING > word( qvStringCreateFrom( qvs ) );
    qvStringTrim( word.at() );
    qvStringToLower( word.at() );

    for( QV_INT i = 0; i < COUNT; i++ )
    {
        qv::Ref< QV_STRING > name( qvStringCreateFromCstr( NAMES[i], -1 ) );
        qvStringToLower( name.at() );

        if( qvStringEquals( word, name ) )
            return i;
    }

    return -1;
}
