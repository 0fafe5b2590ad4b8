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

// In the order of the options of the tool.
const Unit UNITS[] = {
    { qvTimeShiftYears, 1 },        { qvTimeShiftMonths, 12 },          { qvTimeShiftDays, 365 },
    { qvTimeShiftHours, 365 * 24 }, { qvTimeShiftMinutes, 365 * 1440 }, { qvTimeShiftSeconds, 365 * 86400 },
};

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

        unit.shift( tm.at(), count );
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
    Ref< QV_STRING > line( qvTimezone() );
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
