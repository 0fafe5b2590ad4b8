/* The module reminder in C: reads a document, waits as long as the document says, and prints its text. Its one argument
   is the name of the document's file. reminder_cpp.cpp is the same in C++. */

#include <qv/qv_extend.h>

QV_LOCAL_FAMILY( Reminder, QV_REMINDER )

struct QV_REMINDER
{
    QV_OBJ     obj;
    QV_INT     delay; /* milliseconds */
    QV_STRING *text;
    QV_SIGNAL *due;
};

static void freeReminder( QV_OBJ *thisObj )
{
    QV_REMINDER *reminder = qvReminderFrom( thisObj );
    qvStringRelease( reminder->text );
    qvSignalRelease( reminder->due );
}

static QV_STRING *reminderToString( QV_OBJ *thisObj )
{
    QV_REMINDER *reminder = qvReminderFrom( thisObj );
    return qvStringCreateFromFormatCstr( "%s, after %i milliseconds", -1, reminder->text, reminder->delay );
}

QV___FAMILY( Reminder, QV_REMINDER, freeReminder, NULL, reminderToString )

/* A new reminder out of a document, or null. */
static QV_REMINDER *createReminder( QV_STORE *document )
{
    QV_STORE    *settings = qvStoreStoreCstr( document, "reminder", -1 );
    QV_STRING   *text     = settings ? qvStoreValueCstr( settings, "text", -1 ) : NULL;
    QV_REMINDER *reminder = NULL;
    QV_INT       delay;

    if( text && qvStoreValueIntCstr( settings, &delay, "delay", -1 ) && delay >= 0 )
    {
        reminder        = (QV_REMINDER *)qv___ObjCreate( sizeof( QV_REMINDER ), qvReminderSort() );
        reminder->delay = delay;
        reminder->text  = text;
        reminder->due   = qvSignalCreate();
    }
    else if( text )
        qvStringRelease( text );

    if( settings )
        qvStoreRelease( settings );

    return reminder;
}

static QV_REMINDER *readReminder( QV_STRING *fileName )
{
    QV_BUFFER   *bytes    = qvFileReadBuffer( fileName, 65536 );
    QV_STORE    *document = bytes ? qvStoreTryDecodeFromTextBuffer( bytes ) : NULL;
    QV_REMINDER *reminder = document ? createReminder( document ) : NULL;

    if( document )
        qvStoreRelease( document );

    if( bytes )
        qvBufferRelease( bytes );

    return reminder;
}

/* The thread: sleeps until the reminder is due. */
static void remind( void )
{
    QV_REMINDER *reminder = qvReminderFrom( qvThreadUnlatchArgument() );
    qvSignalWait( reminder->due );
    qvPrintFormatCstr( "%o", -1, qvReminderObj( reminder ) );
    qvReminderRelease( reminder );
}

static QV_INT run( intptr_t a, intptr_t b )
{
    QV_VECTOR *arguments = (QV_VECTOR *)a;
    (void)b;

    if( qvVectorLength( arguments ) != 1 )
    {
        qvPrintCstr( "a reminder needs the name of a document", -1 );
        return 2;
    }

    QV_STRING   *fileName = qvStringFrom( qvVectorObjAt( arguments, 0 ) );
    QV_REMINDER *reminder = readReminder( fileName );
    qvStringRelease( fileName );

    if( !reminder )
    {
        qvPrintCstr( "the document holds no reminder", -1 );
        return 1;
    }

    QV_THREAD *thread =
        qvThreadTrySpawnCstr( "reminder", -1, remind, qvReminderObj( reminder ), QV_THREAD_PRIORITY_NORMAL );

    if( thread )
    {
        QV_TIMER *timer = qvTimerCreateSignal( reminder->due );
        qvTimerSchedule( timer, reminder->delay );
        qvThreadJoin( thread );
        qvTimerRelease( timer );
        qvThreadRelease( thread );
    }

    qvReminderRelease( reminder );
    return thread ? 0 : 1;
}

QV_MODULE_DEFINE(
    QV_MODULE_INFO(
            .productName = "morvane", .productVersionMajor = 4, .description = "Reminds, in C", .version = "1.0" ),
    QV_MODULE_FUNCS(.personalityFunc = run ) );
