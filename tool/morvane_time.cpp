#include "morvane_tool.h"
#include "morvane_zone.h"

#include "qv/base/qv_time.h"
#include "qv/base/qv_timezone.h"
#include "qv/io/qv_print.h"
#include "qv/sys/qv_int.h"

namespace morvane
{
using qv::Ref;

namespace
{
const char COMMAND[] = "morvane time";

struct Unit
{
    void ( *shift )( QV_TIME **tm, QV_INT count );
    QV_INT inYear;     // at least this many in a year
    bool   ofCalendar; // changes the date in the zone and keeps the time of day there
};

// In the order of the options of the tool.
const Unit UNITS[] = {
    { qvTimeShiftYears, 1, true },
    { qvTimeShiftMonths, 12, true },
    { qvTimeShiftDays, 365, true },
    { qvTimeShiftHours, 365 * 24, false },
    { qvTimeShiftMinutes, 365 * 1440, false },
    { qvTimeShiftSeconds, 365 * 86400, false },
};

const int UNIT_COUNT = sizeof( UNITS ) / sizeof( UNITS[0] );

// True if the year can't leave the range of integers, with a few years to spare.
bool staysInRange( QV_TIME *tm, const Unit &unit, QV_INT count )
{
    QV_INT years = count / unit.inYear;

    return QV_INT_ADD_OK( qvTimeYear( tm ), qvIntAddSaturating( years, count < 0 ? -2 : 2 ) );
}

// Moves a time by seconds, unless the year could leave the range of integers.
bool tryShift( QV_TIME **tm, QV_INT seconds )
{
    if( seconds != 0 && !staysInRange( *tm, UNITS[UNIT_COUNT - 1], seconds ) )
        return false;

    qvTimeShiftSeconds( tm, seconds );
    return true;
}

Ref< QV_TIME > shifted( QV_TIME *tm, QV_INT seconds )
{
    Ref< QV_TIME > result = Ref< QV_TIME >::share( tm );
    qvTimeShiftSeconds( result.at(), seconds );

    return result;
}

// The time in the zone at a time of UTC. Where the system knows no offset it is that of UTC.
Ref< QV_TIME > localOf( QV_TIME *utc )
{
    return shifted( utc, zoneOffset( utc ) );
}

// The reverse. Of a time that comes twice it is the first, and one that is skipped lies as long after the gap as after its
// start.
Ref< QV_TIME > utcOf( QV_TIME *local )
{
    const QV_INT DAY = 86400;
    time_t       counted;

    if( !qvTimeTryConvertToTimeT( local, &counted ) )
        return Ref< QV_TIME >::share( local );

    QV_INT         before = zoneOffset( shifted( local, -DAY ) );
    QV_INT         after  = zoneOffset( shifted( local, DAY ) );
    Ref< QV_TIME > early  = shifted( local, -before );
    Ref< QV_TIME > late   = shifted( local, -after );

    return zoneOffset( early ) != before && zoneOffset( late ) == after ? std::move( late ) : std::move( early );
}

// The time of UTC in the form of ISO 8601, in the zone.
void printTime( QV_TIME *utc )
{
    Ref< QV_TIME >   local     = localOf( utc );
    QV_INT           offset    = zoneOffset( utc );
    QV_INT           magnitude = qvIntAbs( offset );
    QV_INT           year      = qvTimeYear( local );
    Ref< QV_STRING > digits( qvStringCreateFromFormatCstr( "%i", -1, year ) );
    Ref< QV_STRING > line( qvStringCreateFromCstr( year < 0 ? "-" : year > 9999 ? "+" : "", -1 ) );

    if( year < 0 )
        qvStringDelLeading( digits.at(), 1 );

    for( QV_INT i = qvStringLength( digits ); i < 4; i++ )
        qvStringAppendChar( line.at(), U'0' );

    qvStringAppend( line.at(), digits );
    qvStringAppendFormatCstr(
        line.at(), "-%02i-%02iT%02i:%02i:%02i", -1, qvTimeMonth( local ), qvTimeDay( local ), qvTimeHour( local ),
        qvTimeMinute( local ), qvTimeSecond( local ) );

    if( offset == 0 )
        qvStringAppendChar( line.at(), U'Z' );
    else
        qvStringAppendFormatCstr(
            line.at(), "%c%02i:%02i", -1, offset < 0 ? U'-' : U'+', magnitude / 3600, magnitude / 60 % 60 );

    // As offsets were before there were zones.
    if( magnitude % 60 != 0 )
        qvStringAppendFormatCstr( line.at(), ":%02i", -1, magnitude % 60 );

    print( line );
}

bool isDigitAt( QV_STRING *text, QV_INT at )
{
    return at >= 0 && at < qvStringLength( text ) && qvStringCharAt( text, at ) >= U'0'
           && qvStringCharAt( text, at ) <= U'9';
}

// Reads HH, HH:MM, HHMM or HH:MM:SS. False for anything else.
bool readOffset( QV_STRING *text, QV_INT *offset )
{
    const QV_INT LIMITS[] = { 24, 60, 60 };
    QV_INT       at       = 0;
    QV_INT       part     = 0;
    QV_INT       factor   = 3600;
    *offset               = 0;

    for( ; part < 3 && at < qvStringLength( text ); part++ )
    {
        if( part > 0 && qvStringCharAt( text, at ) == U':' )
            at++;

        if( !isDigitAt( text, at ) || !isDigitAt( text, at + 1 ) )
            return false;

        QV_INT value = ( qvStringCharAt( text, at ) - U'0' ) * 10 + ( qvStringCharAt( text, at + 1 ) - U'0' );

        if( value >= LIMITS[part] )
            return false;

        *offset += value * factor;
        factor /= 60;
        at += 2;
    }

    return part > 0 && at == qvStringLength( text );
}

// Takes the offset from the end of a time. `*isGiven` is true if there is one. False if it is none.
bool takeOffset( QV_STRING **text, QV_INT *offset, bool *isGiven )
{
    QV_INT last = qvStringLength( *text ) - 1;
    *offset     = 0;
    *isGiven    = false;

    if( isDigitAt( *text, last - 1 ) && qvStringCharAt( *text, last ) == U'Z' )
    {
        qvStringDelTrailing( text, 1 );
        *isGiven = true;
        return true;
    }

    // A sign before the time of day is one of the date.
    QV_INT colon = qvStringFindChar( *text, 0, U':' );
    QV_INT sign  = -1;

    for( QV_INT i = colon; colon >= 0 && i <= last && sign < 0; i++ )
        if( qvStringCharAt( *text, i ) == U'+' || qvStringCharAt( *text, i ) == U'-' )
            sign = i;

    if( sign < 0 )
        return true;

    bool             isNegative = qvStringCharAt( *text, sign ) == U'-';
    Ref< QV_STRING > part( qvStringCreateFromTrailing( *text, last - sign ) );
    bool             right = readOffset( part, offset );
    *offset                = isNegative ? -*offset : *offset;
    *isGiven               = true;
    qvStringDelTrailing( text, last + 1 - sign );

    return right;
}

// The time of UTC that a word denotes, which is one of the zone if it names neither UTC nor an offset. Null if it
// denotes none.
Ref< QV_TIME > parseTime( QV_STRING *word )
{
    Ref< QV_STRING > text( qvStringCreate() );

    for( QV_INT i = 0; i < qvStringLength( word ); i++ )
    {
        QV_CHAR ch    = qvStringCharAt( word, i );
        bool    isSep = ch == U'T' && isDigitAt( word, i - 1 ) && isDigitAt( word, i + 1 );

        // The sign of a large year.
        if( i > 0 || ch != U'+' )
            qvStringAppendChar( text.at(), isSep ? U' ' : ch );
    }

    QV_INT offset;
    bool   isGiven;

    if( !takeOffset( text.at(), &offset, &isGiven ) )
        return {};

    bool           isUtc = qvStringBeginsWithCstr( text, "UTC", -1 ) || qvStringBeginsWithCstr( text, "utc", -1 );
    Ref< QV_TIME > tm( qvTimeTryCreateFromString( text ) );

    if( !tm || ( isGiven && isUtc ) || !tryShift( tm.at(), -offset ) )
        return {};

    return isGiven || isUtc ? std::move( tm ) : utcOf( tm );
}

// The same, with a line on the standard error stream if there is none.
Ref< QV_TIME > readTime( QV_STRING *word )
{
    Ref< QV_TIME > tm = parseTime( word );

    if( !tm )
        complain( COMMAND, word, "no time" );

    return tm;
}
} // namespace

int tellNow( const Arguments & )
{
    printTime( Ref< QV_TIME >( qvTimeNow() ) );
    return SUCCESS;
}

int showTime( const Arguments &arguments )
{
    int status = SUCCESS;

    for( QV_INT i = 0; i < arguments.wordCount(); i++ )
    {
        if( Ref< QV_TIME > tm = readTime( arguments.wordAt( i ) ) )
            printTime( tm );
        else
            status = FAILURE;
    }

    return status;
}

// Shifts are made in the order of the options.
int shiftTime( const Arguments &arguments )
{
    Ref< QV_TIME > tm = readTime( arguments.wordAt( 0 ) );

    if( !tm )
        return FAILURE;

    for( QV_INT i = 0; i < arguments.optionCount(); i++ )
    {
        const Unit      &unit = UNITS[arguments.optionAt( i )];
        Ref< QV_STRING > word = arguments.argumentAt( i );
        QV_INT           count;

        if( !readInteger( word, &count ) )
        {
            complain( COMMAND, word, "no integer" );
            return FAILURE;
        }

        if( !staysInRange( tm, unit, count ) )
        {
            complain( COMMAND, word, "the year would be out of range" );
            return FAILURE;
        }

        if( unit.ofCalendar )
            tm = localOf( tm );

        unit.shift( tm.at(), count );

        if( unit.ofCalendar )
            tm = utcOf( tm );
    }

    printTime( tm );
    return SUCCESS;
}

int secondsBetween( const Arguments &arguments )
{
    Ref< QV_TIME > a = readTime( arguments.wordAt( 0 ) );
    Ref< QV_TIME > b = readTime( arguments.wordAt( 1 ) );
    QV_INT         delta;

    if( !a || !b )
        return FAILURE;

    if( !qvTimeDeltaSeconds( a, b, &delta ) )
    {
        complain( COMMAND, arguments.wordAt( 1 ), "too far away to count the seconds" );
        return FAILURE;
    }

    qvPrintFormatCstr( "%i", -1, delta );
    return SUCCESS;
}

namespace
{
// The system's zone, if it has a name, and its offset.
void printOwnZone()
{
    Ref< QV_STRING > line    = zoneName();
    QV_INT           offset  = qvTimezoneUtcOffset();
    QV_INT           minutes = qvIntAbs( offset ) / 60;

    if( qvStringLength( line ) > 0 )
        qvStringAppendChar( line.at(), U' ' );

    qvStringAppendFormatCstr( line.at(), "UTC%c%02i:%02i", -1, offset < 0 ? U'-' : U'+', minutes / 60, minutes % 60 );
    print( line );
}
} // namespace

int tellZone( const Arguments &arguments )
{
    if( arguments.wordCount() == 0 )
    {
        printOwnZone();
        return SUCCESS;
    }

    Ref< QV_STRING > name = arguments.wordAt( 0 );
    Ref< QV_STRING > other( qvTimezoneIanaToWindows( name ) );

    if( !other )
        other.reset( qvTimezoneWindowsToIana( name ) );

    if( !other )
    {
        complain( COMMAND, name, "no such time zone" );
        return FAILURE;
    }

    print( other );
    return SUCCESS;
}

int listZones( const Arguments & )
{
    Ref< QV_VECTOR > names( qvTimezoneList() );
    qvPrintLines( names );
    return SUCCESS;
}
} // namespace morvane
