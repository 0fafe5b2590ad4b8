#include "qv/base/qv_month.h"

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"

namespace
{
const char *const NAMES[] = { "January", "February", "March",     "April",   "May",      "June",
                              "July",    "August",   "September", "October", "November", "December" };

const QV_INT COUNT        = 12;
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

    qv::Ref< QV_STRING > word( qvStringCreateFrom( qvs ) );
    qvStringTrim( word.at() );
    qvStringToLower( word.at() );

    for( QV_INT i = 0; i < COUNT; i++ )
    {
        qv::Ref< QV_STRING > name( qvStringCreateFromCstr( NAMES[i], -1 ) );
        qvStringToLower( name.at() );

        if( qvStringEquals( word, name ) )
            return i + 1;

        qvStringDelTrailing( name.at(), qvStringLength( name ) - SHORT_LENGTH );

        if( qvStringEquals( word, name ) )
            return i + 1;
    }

    QV_INT mo;
    QV_INT consumed;

    if( !qvStringScanInt( word, 0, -1, 10, &mo, &consumed ) || consumed != qvStringLength( word ) )
        return -1;

    return QV_MONTH_OK( mo ) ? mo : -1;
}
