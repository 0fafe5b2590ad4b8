#include "morvane_tool.h"

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
    QV_INT inYear; // at least this many in a year
};

// In the order of the options.
const Unit UNITS[] = {
    { qvTimeShiftYears, 1 },        { qvTimeShiftMonths, 12 },          { qvTimeShiftDays, 365 },
    { qvTimeShiftHours, 365 * 24 }, { qvTimeShiftMinutes, 365 * 1440 }, { qvTimeShiftSeconds, 365 * 86400 },
};

const Option UNIT_OPTIONS[] = {
    { "years", true, true }, { "months", true, true },  { "days", true, true },
    { "hours", true, true }, { "minutes", true, true }, { "seconds", true, true },
};

const int UNIT_COUNT = sizeof( UNITS ) / sizeof( UNITS[0] );

void printTime( QV_TIME *tm )
{
    print( Ref< QV_STRING >( qvTimeToString( tm ) ) );
}

// The time that a word denotes; nothing, with a line on the standard error stream, if it denotes none.
Ref< QV_TIME > readTime( QV_STRING *word )
{
    Ref< QV_TIME > tm( qvTimeTryCreateFromString( word ) );

    if( !tm )
        complain( COMMAND, word, "no time" );

    return tm;
}

// True if the year can't leave the range of integers, with a few years to spare.
bool staysInRange( QV_TIME *tm, const Unit &unit, QV_INT count )
{
    QV_INT years = count / unit.inYear;

    return QV_INT_ADD_OK( qvTimeYear( tm ), qvIntAddSaturating( years, count < 0 ? -2 : 2 ) );
}

QV_BOOL now( QV_VECTOR *argv, void *context )
{
    if( qvVectorLength( argv ) != 0 )
        return QV_FALSE;

    printTime( Ref< QV_TIME >( qvTimeNow() ) );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

QV_BOOL show( QV_VECTOR *argv, void *context )
{
    Arguments arguments;

    if( !arguments.read( argv, nullptr, 0 ) || qvVectorLength( arguments.words() ) != 1 )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_TIME > tm            = readTime( wordAt( arguments.words(), 0 ) );

    if( !tm )
        return QV_FALSE;

    printTime( tm );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

// Shifts are made in the order of the options.
QV_BOOL shift( QV_VECTOR *argv, void *context )
{
    Arguments arguments;

    if( !arguments.read( argv, UNIT_OPTIONS, UNIT_COUNT ) || qvVectorLength( arguments.words() ) != 1
        || arguments.optionCount() == 0 )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_TIME > tm            = readTime( wordAt( arguments.words(), 0 ) );

    if( !tm )
        return QV_FALSE;

    for( QV_INT i = 0; i < arguments.optionCount(); i++ )
    {
        const Unit      &unit = UNITS[arguments.optionAt( i )];
        Ref< QV_STRING > word = arguments.argumentAt( i );
        QV_INT           count;

        if( !readInteger( word, &count ) )
        {
            complain( COMMAND, word, "no integer" );
            return QV_FALSE;
        }

        if( !staysInRange( tm, unit, count ) )
        {
            complain( COMMAND, word, "the year would be out of range" );
            return QV_FALSE;
        }

        unit.shift( tm.at(), count );
    }

    printTime( tm );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

QV_BOOL between( QV_VECTOR *argv, void *context )
{
    Arguments arguments;

    if( !arguments.read( argv, nullptr, 0 ) || qvVectorLength( arguments.words() ) != 2 )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_TIME > a             = readTime( wordAt( arguments.words(), 0 ) );
    Ref< QV_TIME > b             = readTime( wordAt( arguments.words(), 1 ) );
    QV_INT         delta;

    if( !a || !b )
        return QV_FALSE;

    if( !qvTimeDeltaSeconds( a, b, &delta ) )
    {
        complain( COMMAND, wordAt( arguments.words(), 1 ), "too far away to count the seconds" );
        return QV_FALSE;
    }

    qvPrintFormatCstr( "%i", -1, delta );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

// The system's zone, if it has a name, and its offset.
void printOwnZone()
{
    Ref< QV_STRING > line( qvTimezone() );
    QV_INT           offset  = qvTimezoneUtcOffset();
    QV_INT           minutes = qvIntAbs( offset ) / 60;

    if( qvStringLength( line ) > 0 )
        qvStringAppendChar( line.at(), U' ' );

    qvStringAppendFormatCstr( line.at(), "UTC%c%02i:%02i", -1, offset < 0 ? U'-' : U'+', minutes / 60, minutes % 60 );
    print( line );
}

QV_BOOL zone( QV_VECTOR *argv, void *context )
{
    Arguments arguments;

    if( !arguments.read( argv, nullptr, 0 ) || qvVectorLength( arguments.words() ) > 1 )
        return QV_FALSE;

    if( qvVectorLength( arguments.words() ) == 0 )
    {
        printOwnZone();
        contextOf( context )->status = SUCCESS;

        return QV_TRUE;
    }

    Ref< QV_STRING > name = wordAt( arguments.words(), 0 );
    Ref< QV_STRING > other( qvTimezoneIanaToWindows( name ) );

    if( !other )
        other.reset( qvTimezoneWindowsToIana( name ) );

    if( !other )
    {
        complain( COMMAND, name, "no such time zone" );
        contextOf( context )->status = FAILURE;

        return QV_FALSE;
    }

    print( other );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

QV_BOOL zones( QV_VECTOR *argv, void *context )
{
    if( qvVectorLength( argv ) != 0 )
        return QV_FALSE;

    Ref< QV_VECTOR > names( qvTimezoneList() );
    qvPrintLines( names );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

const Tool TOOLS[] = {
    { "now", "", "prints the present time", now },
    { "show", "TEXT", "prints a time like '2024-feb-29 12:30' in full", show },
    { "shift", "TEXT --UNIT COUNT...", "moves a time by years, months, days, hours, minutes or seconds", shift },
    { "between", "A B", "prints the seconds from one time to the other", between },
    { "zone", "[NAME]", "prints the system's time zone, or the Windows name of an IANA zone and back", zone },
    { "zones", "", "lists the IANA names of all time zones", zones },
};
} // namespace

QV_BOOL timeTool( QV_VECTOR *argv, void *context )
{
    runTool( COMMAND, TOOLS, sizeof( TOOLS ) / sizeof( TOOLS[0] ), argv, contextOf( context ) );
    return contextOf( context )->status == SUCCESS ? QV_TRUE : QV_FALSE;
}
} // namespace morvane
