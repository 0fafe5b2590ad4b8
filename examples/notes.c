/* The module notes: a family of its own, whose functions are marked, so that stacks show their names. leaks.c shows
   what becomes of notes that nobody gives up. */

#include <qv/qv_extend.h>

QV_FAMILY( Note, QV_NOTE )

/* A new note of a text; a function of its own in every build, so that stacks show it. */
QV_API QV_NOTE *qvNoteCreate( QV_STRING *text ) __attribute__( ( noinline ) );

struct QV_NOTE
{
    QV_OBJ     obj;
    QV_STRING *text;
};

static void freeNote( QV_OBJ *thisObj )
{
    qvStringRelease( qvNoteFrom( thisObj )->text );
}

static QV_STRING *textOfNote( QV_OBJ *thisObj )
{
    QV_STRING *text = qvNoteFrom( thisObj )->text;
    qvStringRetain( text );
    return text;
}

QV___FAMILY( Note, QV_NOTE, freeNote, NULL, textOfNote )

QV_NOTE *qvNoteCreate( QV_STRING *text )
{
    QV_NOTE *note = (QV_NOTE *)qv___ObjCreate( sizeof( QV_NOTE ), qvNoteSort() );
    qvStringRetain( text );
    note->text = text;
    return note;
}

/* The note that is kept, or null. */
static QV_NOTE *kept;

/* Keeps a note of the first argument; without arguments releases it. */
static QV_INT run( intptr_t a, intptr_t b )
{
    QV_VECTOR *arguments = (QV_VECTOR *)a;
    (void)b;

    if( kept )
        qvNoteRelease( kept );

    kept = NULL;

    if( qvVectorLength( arguments ) > 0 )
    {
        QV_STRING *text = qvStringFrom( qvVectorObjAt( arguments, 0 ) );
        kept            = qvNoteCreate( text );
        qvStringRelease( text );
    }

    return 0;
}

QV_MODULE_DEFINE(
    QV_MODULE_INFO(.description = "Keeps notes", .version = "1.0" ), QV_MODULE_FUNCS(.personalityFunc = run ) );
