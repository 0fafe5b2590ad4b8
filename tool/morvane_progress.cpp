#include "morvane_progress.h"

#include "morvane_file.h"
#include "morvane_output.h"
#include "morvane_tool.h"

#include "qv/base/qv_timestamp.h"

namespace morvane
{
using qv::Ref;

namespace
{
const QV_INT DELAY    = 1000; // milliseconds until the line appears
const QV_INT INTERVAL = 200;  // milliseconds from one line to the next

struct
{
    bool       isTold  = false;
    bool       isShown = false;
    QV_STRING *subject = nullptr;
    QV_INT     total   = -1;
    QV_INT     done    = 0;
    QV_INT     start   = 0;
    QV_INT     due     = 0; // when the next line is written
} work;

void tellBytes( double bytes )
{
    static const char *const UNITS[] = { "B", "kB", "MB", "GB", "TB", "PB", "EB" };
    int                      unit    = 0;

    for( ; bytes >= 1000; unit++ )
        bytes /= 1000;

    fprintf( stderr, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, UNITS[unit] );
}

void tellRest( double seconds )
{
    // Nobody waits for more.
    const double DAYS = 100;

    if( seconds > DAYS * 86400 )
        fprintf( stderr, ", more than %.0f days left", DAYS );
    else if( seconds >= 3600 )
        fprintf(
            stderr, ", %d h %d min left", static_cast< int >( seconds ) / 3600,
            static_cast< int >( seconds ) / 60 % 60 );
    else if( seconds >= 60 )
        fprintf( stderr, ", %d min %d s left", static_cast< int >( seconds ) / 60, static_cast< int >( seconds ) % 60 );
    else
        fprintf( stderr, ", %.0f s left", seconds );
}

void tell( QV_INT now )
{
    double done = static_cast< double >( work.done );
    double rate = done * 1000 / static_cast< double >( now - work.start );

    fputs( "\r", stderr );

    if( work.subject )
    {
        writeUtf8( stderr, work.subject );
        fputs( ": ", stderr );
    }

    tellBytes( done );

    if( work.total >= work.done )
    {
        fputs( " of ", stderr );
        tellBytes( static_cast< double >( work.total ) );
    }

    fputs( ", ", stderr );
    tellBytes( rate );
    fputs( "/s", stderr );

    if( work.total >= work.done && rate > 0 )
        tellRest( static_cast< double >( work.total - work.done ) / rate );

    fputs( "\x1b[K", stderr );
    fflush( stderr );
    work.isShown = true;
}
} // namespace

void beginProgress( QV_STRING *subject, QV_INT total )
{
    endProgress();

    if( !isErrorTerminal() )
        return;

    work.isTold  = true;
    work.subject = subject ? qv::retain( subject ) : nullptr;
    work.total   = total;
    work.done    = 0;
    work.start   = qvTimestamp();
    work.due     = work.start + DELAY;
}

void addProgress( QV_INT count )
{
    if( !work.isTold )
        return;

    work.done += count;
    QV_INT now = qvTimestamp();

    if( now < work.due )
        return;

    tell( now );
    work.due = now + INTERVAL;
}

void endProgress()
{
    hideProgress();
    Ref< QV_STRING > subject( work.subject );
    work.subject = nullptr;
    work.isTold  = false;
}

void hideProgress()
{
    if( work.isShown )
        fputs( "\r\x1b[K", stderr );

    work.isShown = false;
}
} // namespace morvane
