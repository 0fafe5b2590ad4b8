/* Reports of leaks. This program forgets a text, a document in a Vector, and a note of the module notes:

   - The stop waits for the note, since the module's code is needed until its objects have ended. After ten seconds it
     lists what it waits for, with the stack of its creation. This program then releases the note.
   - At the end of the stop the library lists the objects of its own families that are left. Texts and containers have
     no stack, since recording one creates some; the document has.

   Function names in the stacks come from the dynamic tables: the program is linked so that it has one, and the module
   marks its functions. Modules are in the folder that XZ_MORVANE_BIN_PATH names. */

#include <qv/qv.h>

#include <stdio.h>

#define SEPARATE __attribute__( ( noinline ) ) /* a function that stacks show */

static QV_MODULE *notes;

static QV_BOOL beginsWith( const QV_CHAR *chs, QV_INT length, const char *text )
{
    QV_INT i = 0;

    while( i < length && text[i] && chs[i] == (QV_CHAR)text[i] )
        i++;

    return !text[i];
}

static void giveNoteUp( void )
{
    QV_VECTOR *arguments = qvVectorCreate();
    qvModuleRunPersonality( notes, (intptr_t)arguments, 0 );
    qvVectorRelease( arguments );
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

    if( beginsWith( chs, length, "QV_NOTE (" ) )
        giveNoteUp();
}

SEPARATE void forgetText( void )
{
    qvStringCreateFromCstr( "a forgotten text", -1 );
}

SEPARATE void forgetDocument( void )
{
    QV_STORE *document = qvStoreCreate();
    qvStoreSetValueIntCstr( &document, "port", -1, 8080 );

    QV_VECTOR *documents = qvVectorCreate();
    qvVectorAppendObj( &documents, qvStoreObj( document ) );
    qvStoreRelease( document );
}

SEPARATE void forgetNote( void )
{
    QV_VECTOR *arguments = qvVectorCreate();
    qvVectorAppendStringCstr( &arguments, "a forgotten note", -1 );
    qvModuleRunPersonality( notes, (intptr_t)arguments, 0 );
    qvVectorRelease( arguments );
}

int main( void )
{
    qvRuntimeStartup(
        QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_OBJECT_ORIGIN | QV_RUNTIME_FLAG_SNAPSHOT_SORT
            | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING
            | QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG,
        printLine, "leaks", "Example of leaks", "1.0" );

    QV_STRING *name   = qvStringCreateFromCstr( "notes", -1 );
    QV_BOOL    loaded = qvRuntimeTryLoadModule( name );

    if( loaded )
    {
        notes = qvRuntimeModule( name );
        forgetText();
        forgetDocument();
        forgetNote();
    }

    qvStringRelease( name );
    qvRuntimeShutdown();

    return loaded ? 0 : 1;
}
