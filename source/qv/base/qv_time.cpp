#include "qv/base/qv_time.h"

#include "qv/base/qv_month.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_time_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_weekday.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_order_private.h"

namespace
{
// No Time before it is asked for: to make one, the C library reads the file of its zone.
time_t qv___TimeProcessStarted = 0;

// The calendar repeats itself, weekdays included, every 400 years, an era. Computations take a date as the number of
// its era and the day in that era, so that they take no steps through the years and no count of days overflows.
const QV_INT YEARS_IN_ERA = 400;
const QV_INT DAYS_IN_ERA  = 146097;

const QV_INT SECONDS_IN_MINUTE = 60;
const QV_INT MINUTES_IN_HOUR   = 60;
const QV_INT HOURS_IN_DAY      = 24;
const QV_INT SECONDS_IN_HOUR   = SECONDS_IN_MINUTE * MINUTES_IN_HOUR;
const QV_INT SECONDS_IN_DAY    = SECONDS_IN_HOUR * HOURS_IN_DAY;

// Weekday of the first day of an era, a Saturday.
const QV_INT ERA_WEEKDAY = 5;

// Days of a common year before each month.
const QV_INT DAYS_BEFORE_MONTH[] = { 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365 };

QV_INT floorDiv( QV_INT value, QV_INT divisor )
{
    return value / divisor - ( value % divisor < 0 ? 1 : 0 );
}

QV_INT floorMod( QV_INT value, QV_INT divisor )
{
    QV_INT rest = value % divisor;
    return rest < 0 ? rest + divisor : rest;
}

bool isLeapYear( QV_INT year )
{
    return year % 400 == 0 || ( year % 4 == 0 && year % 100 != 0 );
}

QV_INT daysInYear( QV_INT year )
{
    return isLeapYear( year ) ? 366 : 365;
}

// Days of the year before a month from 1 to 13.
QV_INT daysBeforeMonth( QV_INT year, QV_INT month )
{
    return DAYS_BEFORE_MONTH[month - 1] + ( month > 2 && isLeapYear( year ) ? 1 : 0 );
}

QV_INT daysInMonth( QV_INT year, QV_INT month )
{
    QV_CHECK( QV_MONTH_OK( month ) );
    return daysBeforeMonth( year, month + 1 ) - daysBeforeMonth( year, month );
}

// Days of the era before a year from 0 to 400 in it.
QV_INT daysBeforeYear( QV_INT yearOfEra )
{
    return yearOfEra * 365 + ( yearOfEra + 3 ) / 4 - ( yearOfEra + 99 ) / 100 + ( yearOfEra + 399 ) / 400;
}

// The day of the era from 0 on. A day that the month doesn't have counts on into the next month.
QV_INT dayOfEra( QV_TIME *tm )
{
    return daysBeforeYear( floorMod( tm->year, YEARS_IN_ERA ) ) + daysBeforeMonth( tm->year, tm->month ) + tm->day - 1;
}

QV_INT secondOfDay( QV_TIME *tm )
{
    return tm->hour * SECONDS_IN_HOUR + tm->minute * SECONDS_IN_MINUTE + tm->second;
}

bool isValid( QV_TIME *tm )
{
    return tm->day <= daysInMonth( tm->year, tm->month );
}

// A day that the month doesn't have becomes the first of the next.
void makeValid( QV_TIME **tm )
{
    if( isValid( *tm ) )
        return;

    ( *tm )->day = 1;

    if( ( *tm )->month < 12 )
    {
        ( *tm )->month++;
        return;
    }

    QV_CHECK_AS( QV_INT_ADD_OK( ( *tm )->year, 1 ), "QV_INT_ADD_OK( (*tm)->year, 1 )" );
    ( *tm )->month = 1;
    ( *tm )->year++;
}

void setFields( QV_TIME **tm, const struct tm &fields )
{
    qvTimeSetYear( tm, static_cast< QV_INT >( fields.tm_year ) + 1900 );
    qvTimeSetMonth( tm, fields.tm_mon + 1 );
    qvTimeSetDay( tm, fields.tm_mday );
    qvTimeSetHour( tm, fields.tm_hour );
    qvTimeSetMinute( tm, fields.tm_min );
    qvTimeSetSecond( tm, fields.tm_sec );
}

using Field = QV_INT QV_TIME::*;

void setField( QV_TIME **tm, Field field, QV_INT value )
{
    qv::makePrivate( tm, qvTimeCreateFrom );
    ( *tm )->*field = value;
}

// Adds `amount` to a field that counts from 0 up to `unit`, the length of the next larger field's unit, and passes on
// what does not fit. A second of 60 or 61 counts as one of the next minute. The larger field moves twice, so that no
// sum can overflow: by the carry of this field, then by the whole units of the amount.
void shiftField(
    QV_TIME **tm, Field field, QV_INT amount, QV_INT unit, void ( *shiftLarger )( QV_TIME **tm, QV_INT units ) )
{
    qv::makePrivate( tm, qvTimeCreateFrom );

    QV_INT &value = ( *tm )->*field;
    QV_INT  carry = 0;
    value += amount % unit;

    if( value >= unit )
    {
        value -= unit;
        carry = 1;
    }
    else if( value < 0 )
    {
        value += unit;
        carry = -1;
    }

    shiftLarger( tm, carry );
    shiftLarger( tm, amount / unit );
}

// Reads a word of the list as a decimal number from `lowest` to `highest`. False if it is anything else.
bool readNumber( QV_VECTOR *words, QV_INT idx, QV_INT lowest, QV_INT highest, QV_INT *value )
{
    qv::Ref< QV_STRING > word( qvStringFrom( qvVectorObjAt( words, idx ) ) );
    QV_INT               consumed;

    return qvStringScanInt( word, 0, -1, 10, value, &consumed ) && consumed == qvStringLength( word )
           && *value >= lowest && *value <= highest;
}

// Reads year[-month[-day]].
bool readDate( QV_STRING *text, QV_TIME *tm )
{
    qv::Ref< QV_VECTOR > words( qvStringSplitChar( text, U'-', 3 ) );
    QV_INT               count = qvVectorLength( words );

    if( !readNumber( words, 0, 0, QV_INT_MAX, &tm->year ) )
        return false;

    if( count > 1 )
    {
        qv::Ref< QV_STRING > month( qvStringFrom( qvVectorObjAt( words, 1 ) ) );
        tm->month = qvMonthFromString( month );

        if( !QV_MONTH_OK( tm->month ) )
            return false;
    }

    return count < 3 || readNumber( words, 2, 1, 31, &tm->day );
}

// Reads hour[:minute[:second]].
bool readTimeOfDay( QV_STRING *text, QV_TIME *tm )
{
    qv::Ref< QV_VECTOR > words( qvStringSplitChar( text, U':', 3 ) );
    QV_INT               count = qvVectorLength( words );

    return readNumber( words, 0, 0, 23, &tm->hour ) && ( count < 2 || readNumber( words, 1, 0, 59, &tm->minute ) )
           && ( count < 3 || readNumber( words, 2, 0, 61, &tm->second ) );
}

// Reads (weekday), which has to be that of the date.
bool readWeekday( QV_STRING *text, QV_TIME *tm )
{
    if( !qvStringBeginsWithChar( text, U'(' ) || !qvStringEndsWithChar( text, U')' ) )
        return false;

    qv::Ref< QV_STRING > name( qvStringCreateFromInner( text, 1, qvStringLength( text ) - 2 ) );

    return qvWeekdayFromString( name ) == qvTimeWeekday( tm );
}

QV_INT compareTimes( QV_OBJ *atA, QV_OBJ *atB )
{
    QV_CHECK( atA );
    QV_CHECK( atB );

    QV_TIME *a = qvTimeFrom( atA );
    QV_TIME *b = qvTimeFrom( atB );

    for( Field field :
         { &QV_TIME::year, &QV_TIME::month, &QV_TIME::day, &QV_TIME::hour, &QV_TIME::minute, &QV_TIME::second } )
    {
        if( QV_INT order = qv::order( a->*field, b->*field ) )
            return order;
    }

    return 0;
}

QV_STRING *timeToString( QV_OBJ *thisObj )
{
    QV_TIME *tm = qvTimeFrom( thisObj );
    QV_CHECK( tm );

    qv::Ref< QV_STRING > text( qvStringCreateFromFormatCstr(
        "UTC %i-%02i-%02i %02i:%02i:%02i", -1, tm->year, tm->month, tm->day, tm->hour, tm->minute, tm->second ) );

    if( isValid( tm ) )
        qvStringAppendFormatCstr( text.at(), " (%~s)", -1, qvWeekdayToString( qvTimeWeekday( tm ) ) );

    return text.give();
}
} // namespace

QV___FAMILY( Time, QV_TIME, nullptr, compareTimes, timeToString )

void qv___TimeStartup( void )
{
    qv___TimeProcessStarted = time( nullptr );
}

void qv___TimeShutdown( void )
{
}

QV_TIME *qv___TimeStarted( void )
{
    return qvTimeTryCreateFromTimeT( qv___TimeProcessStarted );
}

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_TIME *qvTimeCreate( void )
{
    QV_TIME *tm = qv::create< QV_TIME >( qvTimeSort() );
    tm->year    = 0;
    tm->month   = 1;
    tm->day     = 1;
    tm->hour    = 0;
    tm->minute  = 0;
    tm->second  = 0;

    return tm;
}

QV_TIME *qvTimeCreateFrom( QV_TIME *from )
{
    QV_CHECK( from );

    QV_TIME *tm = qv::create< QV_TIME >( qvTimeSort() );
    tm->year    = from->year;
    tm->month   = from->month;
    tm->day     = from->day;
    tm->hour    = from->hour;
    tm->minute  = from->minute;
    tm->second  = from->second;

    return tm;
}

QV_TIME *qvTimeNow( void )
{
    qv::Ref< QV_TIME > tm( qvTimeCreate() );
    qvTimeSetNow( tm.at() );

    return tm.give();
}

QV_TIME *qvTimeTryCreateFromTimeT( time_t t )
{
    struct tm timeFields;

    if( !gmtime_r( &t, &timeFields ) )
        return nullptr;

    qv::Ref< QV_TIME > tm( qvTimeCreate() );
    setFields( tm.at(), timeFields );

    return tm.give();
}

QV_TIME *qvTimeTryCreateFromString( QV_STRING *from )
{
    QV_CHECK( from );

    qv::Ref< QV_VECTOR > parts( qvStringSplitWhitespace( from, 4 ) );
    qv::Ref< QV_TIME >   tm( qvTimeCreate() );
    qv::Ref< QV_STRING > part;

    // The next part, if there is one.
    auto advance = [&parts, &part]
    {
        part.reset( qvVectorLength( parts ) ? qvStringFrom( qvVectorUnshift( parts.at() ) ) : nullptr );
        return part.get() != nullptr;
    };

    if( advance() && qvStringEqualsCaseFoldCstr( part, "UTC", -1 ) )
        advance();

    if( !part || !readDate( part, tm ) )
        return nullptr;

    if( advance() && !qvStringBeginsWithChar( part, U'(' ) )
    {
        if( !readTimeOfDay( part, tm ) )
            return nullptr;

        advance();
    }

    if( !isValid( tm ) )
        return nullptr;

    if( part && ( !readWeekday( part, tm ) || advance() ) )
        return nullptr;

    return tm.give();
}

/* Fields --------------------------------------------------------------------------------------------------------- */

QV_INT qvTimeYear( QV_TIME *tm )
{
    QV_CHECK( tm );
    return tm->year;
}

QV_INT qvTimeMonth( QV_TIME *tm )
{
    QV_CHECK( tm );
    return tm->month;
}

QV_INT qvTimeDay( QV_TIME *tm )
{
    QV_CHECK( tm );
    return tm->day;
}

QV_INT qvTimeHour( QV_TIME *tm )
{
    QV_CHECK( tm );
    return tm->hour;
}

QV_INT qvTimeMinute( QV_TIME *tm )
{
    QV_CHECK( tm );
    return tm->minute;
}

QV_INT qvTimeSecond( QV_TIME *tm )
{
    QV_CHECK( tm );
    return tm->second;
}

void qvTimeSetYear( QV_TIME **tm, QV_INT year )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    setField( tm, &QV_TIME::year, year );
}

void qvTimeSetMonth( QV_TIME **tm, QV_INT month )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    QV_CHECK( QV_MONTH_OK( month ) );
    setField( tm, &QV_TIME::month, month );
}

void qvTimeSetDay( QV_TIME **tm, QV_INT day )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    QV_CHECK( day >= 1 && day <= 31 );
    setField( tm, &QV_TIME::day, day );
}

void qvTimeSetHour( QV_TIME **tm, QV_INT hour )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    QV_CHECK( hour >= 0 && hour <= 23 );
    setField( tm, &QV_TIME::hour, hour );
}

void qvTimeSetMinute( QV_TIME **tm, QV_INT minute )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    QV_CHECK( minute >= 0 && minute <= 59 );
    setField( tm, &QV_TIME::minute, minute );
}

void qvTimeSetSecond( QV_TIME **tm, QV_INT second )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    QV_CHECK( second >= 0 && second <= 61 );
    setField( tm, &QV_TIME::second, second );
}

void qvTimeSetNow( QV_TIME **tm )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );

    time_t    ltime = time( nullptr );
    struct tm timeFields;

    QV_CHECK( ltime >= 0 );
    QV_CHECK( gmtime_r( &ltime, &timeFields ) );
    setFields( tm, timeFields );
}

/* Shifting ------------------------------------------------------------------------------------------------------- */

void qvTimeShiftYears( QV_TIME **tm, QV_INT years )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    QV_CHECK_AS( QV_INT_ADD_OK( ( *tm )->year, years ), "QV_INT_ADD_OK( (*tm)->year, years )" );

    qv::makePrivate( tm, qvTimeCreateFrom );
    ( *tm )->year += years;
    makeValid( tm );
}

void qvTimeShiftMonths( QV_TIME **tm, QV_INT months )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );

    QV_INT y = months / 12;
    QV_CHECK_AS( QV_INT_ADD_OK( ( *tm )->year, y ), "QV_INT_ADD_OK( (*tm)->year, y )" );

    qv::makePrivate( tm, qvTimeCreateFrom );
    ( *tm )->year += y;
    ( *tm )->month += months % 12;

    if( ( *tm )->month > 12 )
    {
        QV_CHECK_AS( QV_INT_ADD_OK( ( *tm )->year, 1 ), "QV_INT_ADD_OK( (*tm)->year, 1 )" );
        ( *tm )->month -= 12;
        ( *tm )->year++;
    }
    else if( ( *tm )->month < 1 )
    {
        QV_CHECK_AS( QV_INT_SUB_OK( ( *tm )->year, 1 ), "QV_INT_SUB_OK( (*tm)->year, 1 )" );
        ( *tm )->month += 12;
        ( *tm )->year--;
    }

    makeValid( tm );
}

void qvTimeShiftDays( QV_TIME **tm, QV_INT days )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );

    // 1461 days go as far as four years or a day farther, so a result in range passes this.
    QV_INT y4 = days / 1461;
    QV_CHECK_AS( QV_INT_ADD_OK( ( *tm )->year, y4 * 4 ), "QV_INT_ADD_OK( (*tm)->year, y4*4 )" );

    qv::makePrivate( tm, qvTimeCreateFrom );
    QV_TIME *own = *tm;

    // Within the month there is nothing to compute, and a day that it doesn't have may go on being one.
    if( days <= 0 && days > -own->day )
    {
        own->day += days;
        return;
    }

    // Forwards such a day counts as the last one.
    if( days > 0 )
        own->day = qvIntMin( own->day, daysInMonth( own->year, own->month ) );

    QV_INT yearOfEra = floorMod( own->year, YEARS_IN_ERA );
    QV_INT day       = dayOfEra( own ) + days % DAYS_IN_ERA;
    QV_INT eras      = days / DAYS_IN_ERA + floorDiv( day, DAYS_IN_ERA );
    day              = floorMod( day, DAYS_IN_ERA );

    QV_INT year = day / 366; // the year of the era, or the one before it

    if( daysBeforeYear( year + 1 ) <= day )
        year++;

    QV_INT years = eras * YEARS_IN_ERA + year - yearOfEra;

    if( days < 0 )
        QV_CHECK_AS( QV_INT_ADD_OK( own->year, years ), "QV_INT_SUB_OK( (*tm)->year, 1 )" );
    else
        QV_CHECK_AS( QV_INT_ADD_OK( own->year, years ), "QV_INT_ADD_OK( (*tm)->year, 1 )" );

    day -= daysBeforeYear( year );
    QV_INT month = 1;

    while( daysBeforeMonth( year, month + 1 ) <= day )
        month++;

    own->year += years;
    own->month = month;
    own->day   = day - daysBeforeMonth( year, month ) + 1;
}

void qvTimeShiftHours( QV_TIME **tm, QV_INT hours )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    shiftField( tm, &QV_TIME::hour, hours, HOURS_IN_DAY, qvTimeShiftDays );
}

void qvTimeShiftMinutes( QV_TIME **tm, QV_INT minutes )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    shiftField( tm, &QV_TIME::minute, minutes, MINUTES_IN_HOUR, qvTimeShiftHours );
}

void qvTimeShiftSeconds( QV_TIME **tm, QV_INT seconds )
{
    QV_CHECK( tm );
    QV_CHECK( *tm );
    shiftField( tm, &QV_TIME::second, seconds, SECONDS_IN_MINUTE, qvTimeShiftMinutes );
}

/* Questions ------------------------------------------------------------------------------------------------------ */

QV_BOOL qvTimeValid( QV_TIME *tm )
{
    QV_CHECK( tm );
    return isValid( tm ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvTimeLeapYear( QV_TIME *tm )
{
    QV_CHECK( tm );
    return isLeapYear( tm->year ) ? QV_TRUE : QV_FALSE;
}

QV_INT qvTimeDaysInMonth( QV_TIME *tm )
{
    QV_CHECK( tm );
    return daysInMonth( tm->year, tm->month );
}

QV_INT qvTimeDaysInYear( QV_TIME *tm )
{
    QV_CHECK( tm );
    return daysInYear( tm->year );
}

QV_INT qvTimeDayOfYear( QV_TIME *tm )
{
    QV_CHECK( tm );
    return daysBeforeMonth( tm->year, tm->month ) + tm->day;
}

QV_INT qvTimeWeekday( QV_TIME *tm )
{
    QV_CHECK( tm );
    return ( dayOfEra( tm ) + ERA_WEEKDAY ) % 7;
}

QV_BOOL qvTimeTryConvertToTimeT( QV_TIME *tm, time_t *t )
{
    QV_CHECK( tm );

    if( t )
        *t = 0;

    if( tm->year < INT32_MIN + INT64_C( 1900 ) || tm->year > INT32_MAX + INT64_C( 1900 ) )
        return QV_FALSE;

    struct tm timeFields = {};
    timeFields.tm_year   = static_cast< int >( tm->year - 1900 );
    timeFields.tm_mon    = static_cast< int >( tm->month - 1 );
    timeFields.tm_mday   = static_cast< int >( tm->day );
    timeFields.tm_hour   = static_cast< int >( tm->hour );
    timeFields.tm_min    = static_cast< int >( tm->minute );
    timeFields.tm_sec    = static_cast< int >( tm->second );
    timeFields.tm_isdst  = -1;

    time_t result = timegm( &timeFields );

    if( result == -1 )
        return QV_FALSE;

    if( t )
        *t = result;

    return QV_TRUE;
}

QV_BOOL qvTimeDeltaSeconds( QV_TIME *tmA, QV_TIME *tmB, QV_INT *delta )
{
    QV_CHECK( tmA );
    QV_CHECK( tmB );

    if( delta )
        *delta = 0;

    bool     swapped    = qvTimeCompare( tmA, tmB ) > 0;
    QV_TIME *earlier    = swapped ? tmB : tmA;
    QV_TIME *later      = swapped ? tmA : tmB;
    QV_INT   multiplier = swapped ? -1 : 1;
    QV_INT   eras       = floorDiv( later->year, YEARS_IN_ERA ) - floorDiv( earlier->year, YEARS_IN_ERA );
    QV_INT   days;
    QV_INT   resultDeltaSeconds;

    if( __builtin_mul_overflow( eras, DAYS_IN_ERA, &days )
        || __builtin_add_overflow( days, dayOfEra( later ) - dayOfEra( earlier ), &days )
        || __builtin_mul_overflow( days, SECONDS_IN_DAY, &resultDeltaSeconds )
        || __builtin_add_overflow(
            resultDeltaSeconds, secondOfDay( later ) - secondOfDay( earlier ), &resultDeltaSeconds ) )
        return QV_FALSE;

    QV_CHECK( qvIntMulOk( resultDeltaSeconds, multiplier ) );

    if( delta )
        *delta = resultDeltaSeconds * multiplier;

    return QV_TRUE;
}
