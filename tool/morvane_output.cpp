#include "morvane_output.h"

#include "morvane_file.h"
#include "morvane_progress.h"
#include "morvane_tool.h"

#include "qv/io/qv_print.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_int.h"

#include <errno.h>
#include <string.h>

namespace morvane
{
using qv::Ref;

namespace
{
// Where printed lines go: those of a tool to the standard output, those of the switch about a wrong name to the
// standard error stream.
FILE *printStream = nullptr;

// Whether every printed line is written to the standard output at once.
bool isPrintedAtOnce = false;

// The error of the first failed write to the standard output, or 0.
int outputError = 0;

// Records the result of a call that writes to the standard output.
void note( bool ok )
{
    if( ok || outputError != 0 )
        return;

    outputError = errno ? errno : EIO;

    if( outputError == EPIPE )
        endByBrokenPipe();
}

// The buffer of the standard output. The C library's stream would lose bytes when a call is interrupted.
char   held[65536];
QV_INT heldCount = 0;

void flushOutput()
{
    // What a module has written to the C library's stream comes first.
    note( fflush( stdout ) == 0 );

    if( outputError == 0 )
        note( writeOutput( held, heldCount ) );

    heldCount = 0;
}

void writeBytes( FILE *stream, const char *bytes, QV_INT count )
{
    if( stream != stdout )
    {
        fwrite( bytes, 1, static_cast< size_t >( count ), stream );
        return;
    }

    while( count > 0 )
    {
        QV_INT step = qvIntMin( count, QV_INT( sizeof( held ) ) - heldCount );
        memcpy( held + heldCount, bytes, static_cast< size_t >( step ) );
        heldCount += step;
        bytes += step;
        count -= step;

        if( heldCount == sizeof( held ) )
            flushOutput();
    }
}

void writeUtf8( FILE *stream, const QV_CHAR *chs, QV_INT length )
{
    char   piece[4096];
    QV_INT step = sizeof( piece ) / 4; // no character has more than four bytes

    for( QV_INT i = 0; i < length; i += step )
    {
        QV_INT count = length - i < step ? length - i : step;
        QV_INT bytes = qvCharsConvertToUtf8( piece, sizeof( piece ), chs + i, count, QV_FALSE );
        writeBytes( stream, piece, bytes );
    }
}
} // namespace

void writeCstr( FILE *stream, const char *text )
{
    writeBytes( stream, text, static_cast< QV_INT >( strlen( text ) ) );
}

void writeUtf8( FILE *stream, QV_STRING *qvs )
{
    writeUtf8( stream, qvStringBacking( qvs ), qvStringLength( qvs ) );
}

void printLine( const QV_CHAR *chs, QV_INT length )
{
    writeUtf8( printStream, chs, length );
    writeBytes( printStream, "\n", 1 );

    if( isPrintedAtOnce )
        flushOutput();
}

void printTo( FILE *stream )
{
    printStream = stream;
}

void print( QV_STRING *line )
{
    qvPrint( line );
}

void printAtOnce()
{
    isPrintedAtOnce = true;
}

bool put( const char *bytes, QV_INT count )
{
    writeBytes( stdout, bytes, count );
    return outputError == 0;
}

void complain( const char *prefix, QV_STRING *subject, QV_STRING *reason )
{
    hideProgress();
    fprintf( stderr, "%s: ", prefix );
    writeUtf8( stderr, subject );
    fputs( ": ", stderr );
    writeUtf8( stderr, reason );
    fputc( '\n', stderr );
}

void complain( const char *prefix, QV_STRING *subject, const char *reason )
{
    complain( prefix, subject, Ref< QV_STRING >( qvStringCreateFromCstr( reason, -1 ) ) );
}

bool isOutputComplete( const char *tool )
{
    bool hasFailed = ferror( stdout );
    errno          = 0;
    flushOutput();
    note( hasOutputArrived() );

    if( outputError == 0 && !hasFailed )
        return true;

    fprintf(
        stderr, "morvane%s%s: standard output: %s\n", tool ? " " : "", tool ? tool : "",
        outputError ? strerror( outputError ) : "it could not be written" );

    return false;
}
} // namespace morvane
