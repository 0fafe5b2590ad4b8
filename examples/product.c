/* A program of the product: starts the library, loads the module that its first argument names, runs it with the others
   and stops everything. Modules are in the folder that XZ_MORVANE_BIN_PATH names.

       product reminder_c reminder.conf

   Exits with what the module gives; with 1 if it cannot be loaded or is no program, and with 3 if an object has
   survived the stop of the library, which then lists it. */

#include <qv/qv.h>

#include <stdio.h>

static QV_BOOL stopping  = QV_FALSE;
static QV_BOOL survivors = QV_FALSE;

/* True for the line of dashes that a report on what is left begins with. */
static QV_BOOL isRule( const QV_CHAR *chs, QV_INT length )
{
    QV_INT dashes = 0;

    while( dashes < length && chs[dashes] == U'-' )
        dashes++;

    return dashes == length && length == 90;
}

/* The print hook: every text is a line. */
static void printLine( const QV_CHAR *chs, QV_INT length )
{
    for( QV_INT i = 0; i < length; i++ )
    {
        char   bytes[4]; /* no character has more */
        QV_INT count = qvCharsConvertToUtf8( bytes, sizeof( bytes ), chs + i, 1, QV_FALSE );
        fwrite( bytes, 1, (size_t)count, stdout );
    }

    putchar( '\n' );

    if( stopping && isRule( chs, length ) )
        survivors = QV_TRUE;
}

static int runModule( QV_STRING *name, QV_VECTOR *arguments )
{
    if( !qvModuleNameOk( name ) || !qvRuntimeTryLoadModule( name ) )
    {
        fputs( "the module cannot be loaded\n", stderr );
        return 1;
    }

    QV_MODULE *module = qvRuntimeModule( name );
    QV_INT     result = 1;

    if( qvModuleHasPersonality( module ) )
        result = qvModuleRunPersonality( module, (intptr_t)arguments, 0 );
    else
        fputs( "the module is no program\n", stderr );

    qvModuleRelease( module );

    return (int)result;
}

int main( int argc, char **argv )
{
    if( argc < 2 )
    {
        fputs( "usage: product MODULE [ARGUMENT...]\n", stderr );
        return 2;
    }

    qvRuntimeStartup(
        QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_SNAPSHOT_SORT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT
            | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING,
        printLine, "product", "Example product", "1.0" );

    QV_STRING *name      = qvStringCreateFromCstr( argv[1], -1 );
    QV_VECTOR *arguments = qvVectorCreate();

    for( int i = 2; i < argc; i++ )
        qvVectorAppendStringCstr( &arguments, argv[i], -1 );

    int result = runModule( name, arguments );
    qvVectorRelease( arguments );
    qvStringRelease( name );

    stopping = QV_TRUE;
    qvRuntimeShutdown();

    return survivors ? 3 : result;
}
