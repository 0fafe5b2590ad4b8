#include "qv/base/qv_timezone.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_timezone_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

namespace
{
const size_t LINE_SIZE = 128;

const char BLANKS[] = " \t\n";

// Whether the C library has yet to look for the zone of this run: it may still have that of an earlier one.
bool            zoneIsOpen = false;
pthread_mutex_t zoneLock =
    PTHREAD_MUTEX_INITIALIZER; // held while looking: threads that ask at the same time wait for one

// Reads the next line, without its end; of a longer one the first 128 bytes. False if there is none.
bool readLine( FILE *file, char ( &line )[LINE_SIZE + 1] )
{
    size_t length = 0;
    int    ch;

    while( ( ch = getc( file ) ) != EOF && ch != '\n' )
        if( length < LINE_SIZE )
            line[length++] = static_cast< char >( ch );

    line[length] = 0;

    return ch != EOF || length > 0;
}

// Ends the text after its first word and returns that word; it is empty if there is none.
char *firstWord( char *text )
{
    char *word                    = text + strspn( text, BLANKS );
    word[strcspn( word, BLANKS )] = 0;

    return word;
}

// The first word of the last line that has one and is no comment.
QV_STRING *lastZone( FILE *file )
{
    char                 line[LINE_SIZE + 1];
    qv::Ref< QV_STRING > zone( qvStringCreate() );

    while( readLine( file, line ) )
    {
        const char *word = firstWord( line );

        if( *word && *word != '#' )
            zone.reset( qvStringCreateFromCstr( word, -1 ) );
    }

    return zone.give();
}

// What stands after the equals sign in the first line with the key; null if there is none.
char *findValue( FILE *file, const char *key, char ( &line )[LINE_SIZE + 1] )
{
    size_t keyLength = strlen( key );

    while( readLine( file, line ) )
        if( strncmp( line, key, keyLength ) == 0 && line[keyLength] == '=' )
            return line + keyLength + 1;

    return nullptr;
}

void takeZone()
{
    if( !__atomic_load_n( &zoneIsOpen, __ATOMIC_ACQUIRE ) )
        return;

    pthread_mutex_lock( &zoneLock );

    if( zoneIsOpen )
    {
        tzset();
        __atomic_store_n( &zoneIsOpen, false, __ATOMIC_RELEASE );
    }

    pthread_mutex_unlock( &zoneLock );
}
} // namespace

// A zone in the environment counts as it stands at the start. The computer's is read from a file: without one in the
// environment the first question looks, by then also at the environment.
void qv___TimezoneStartup( void )
{
    zoneIsOpen = !getenv( "TZ" );

    if( !zoneIsOpen )
        tzset();
}

void qv___TimezoneShutdown( void )
{
}

QV_STRING *qv___TimezoneGetValue( const char *fileName, const char *key )
{
    QV_CHECK( fileName );
    QV_CHECK( key );

    FILE *file = fopen( fileName, "re" );

    if( !file )
        return nullptr;

    char        line[LINE_SIZE + 1];
    char        value[LINE_SIZE];
    QV_INT      length = 0;
    char       *found  = findValue( file, key, line );
    const char *word   = found ? firstWord( found ) : "";
    fclose( file );

    if( !*word )
        return nullptr;

    for( ; *word; word++ )
        if( *word != '"' )
            value[length++] = *word;

    return qvStringCreateFromCstr( value, length );
}

QV_STRING *qvTimezone( void )
{
    if( FILE *file = fopen( "/etc/timezone", "re" ) )
    {
        QV_STRING *zone = lastZone( file );
        fclose( file );

        return zone;
    }

    QV_STRING *zone = qv___TimezoneGetValue( "/etc/sysconfig/clock", "ZONE" );

    if( !zone )
        zone = qv___TimezoneGetValue( "/etc/TIMEZONE", "TZ" );

    return zone ? zone : qvStringCreate();
}

QV_INT qvTimezoneUtcOffset( void )
{
    const long LIMIT = 86400;

    takeZone();

    time_t    now = time( nullptr );
    struct tm local;

    if( now == -1 || !localtime_r( &now, &local ) || local.tm_gmtoff < -LIMIT || local.tm_gmtoff > LIMIT )
        return 0;

    return local.tm_gmtoff;
}
