#include "morvane_zone.h"

#include "qv/base/qv_time.h"
#include "qv/base/qv_timezone.h"

#include <stdlib.h>
#include <time.h>

namespace morvane
{
QV_INT zoneOffset( QV_TIME *utc )
{
    time_t    counted;
    struct tm fields;

    return qvTimeTryConvertToTimeT( utc, &counted ) && localtime_r( &counted, &fields ) ? fields.tm_gmtoff : 0;
}

qv::Ref< QV_STRING > zoneName()
{
    const char *variable = getenv( "TZ" );

    if( !variable )
        return qv::Ref< QV_STRING >( qvTimezone() );

    qv::Ref< QV_STRING > name( qvStringCreateFromCstr( variable + ( *variable == ':' ), -1 ) );

    return qvTimezoneIanaOk( name ) ? std::move( name ) : qv::Ref< QV_STRING >( qvStringCreate() );
}
} // namespace morvane
