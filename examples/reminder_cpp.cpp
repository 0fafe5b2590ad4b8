// The module reminder in C++: reads a document, waits as long as the document says, and prints its text. Its one
// argument is the name of the document's file. reminder_c.c is the same in C.

#include <qv/qv_extend.h>

using qv::Ref;

QV_LOCAL_FAMILY( Reminder, QV_REMINDER )

struct QV_REMINDER : QV_OBJ
{
    QV_INT     delay; // milliseconds
    QV_STRING *text;
    QV_SIGNAL *due;
};

namespace
{
void freeReminder( QV_OBJ *thisObj )
{
    QV_REMINDER *reminder = qvReminderFrom( thisObj );
    qv::drop( reminder->text );
    qv::drop( reminder->due );
}

QV_STRING *reminderToString( QV_OBJ *thisObj )
{
    QV_REMINDER *reminder = qvReminderFrom( thisObj );
    return qvStringCreateFromFormatCstr( "%s, after %i milliseconds", -1, reminder->text, reminder->delay );
}
} // namespace

QV___FAMILY( Reminder, QV_REMINDER, freeReminder, nullptr, reminderToString )

namespace
{
// A new reminder out of a document, or nothing.
Ref< QV_REMINDER > createReminder( QV_STORE *document )
{
    Ref< QV_STORE >  settings( qvStoreStoreCstr( document, "reminder", -1 ) );
    Ref< QV_STRING > text( settings ? qvStoreValueCstr( settings, "text", -1 ) : nullptr );
    QV_INT           delay;

    if( !text || !qvStoreValueIntCstr( settings, &delay, "delay", -1 ) || delay < 0 )
        return {};

    Ref< QV_REMINDER > reminder( qv::create< QV_REMINDER >( qvReminderSort() ) );
    reminder->delay = delay;
    reminder->text  = text.give();
    reminder->due   = qvSignalCreate();

    return reminder;
}

Ref< QV_REMINDER > readReminder( QV_STRING *fileName )
{
    Ref< QV_BUFFER > bytes( qvFileReadBuffer( fileName, 65536 ) );
    Ref< QV_STORE >  document( bytes ? qvStoreTryDecodeFromTextBuffer( bytes ) : nullptr );

    return document ? createReminder( document ) : Ref< QV_REMINDER >();
}

// The thread: sleeps until the reminder is due.
void remind()
{
    Ref< QV_REMINDER > reminder( qvReminderFrom( qvThreadUnlatchArgument() ) );
    qvSignalWait( reminder->due );
    qvPrintFormatCstr( "%o", -1, qvReminderObj( reminder ) );
}

QV_INT run( intptr_t a, intptr_t )
{
    QV_VECTOR *arguments = reinterpret_cast< QV_VECTOR * >( a );

    if( qvVectorLength( arguments ) != 1 )
    {
        qvPrintCstr( "a reminder needs the name of a document", -1 );
        return 2;
    }

    Ref< QV_STRING >   fileName( qvStringFrom( qvVectorObjAt( arguments, 0 ) ) );
    Ref< QV_REMINDER > reminder = readReminder( fileName );

    if( !reminder )
    {
        qvPrintCstr( "the document holds no reminder", -1 );
        return 1;
    }

    Ref< QV_THREAD > thread(
        qvThreadTrySpawnCstr( "reminder", -1, remind, qvReminderObj( reminder ), QV_THREAD_PRIORITY_NORMAL ) );

    if( !thread )
        return 1;

    Ref< QV_TIMER > timer( qvTimerCreateSignal( reminder->due ) );
    qvTimerSchedule( timer, reminder->delay );
    qvThreadJoin( thread );

    return 0;
}
} // namespace

QV_MODULE_DEFINE(
    QV_MODULE_INFO(
            .productName = "morvane", .productVersionMajor = 4, .description = "Reminds, in C++", .version = "1.0" ),
    QV_MODULE_FUNCS(.personalityFunc = run ) );
