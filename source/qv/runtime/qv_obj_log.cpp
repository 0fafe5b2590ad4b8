#include "qv/runtime/qv_obj_private.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_stack_trace.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_life_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

QV___LOCK *qv::objLogLock = nullptr;

struct QV___OBJ_LOG_ENTRY
{
    QV_INT              length;
    QV_CHAR            *chars; // null for an empty line
    QV___OBJ_LOG_ENTRY *next;
};

namespace
{
QV___OBJ_LOG_ENTRY *createEntry( QV_STRING *line )
{
    QV___OBJ_LOG_ENTRY *entry = static_cast< QV___OBJ_LOG_ENTRY * >( qvMemAlloc( sizeof( QV___OBJ_LOG_ENTRY ) ) );

    entry->length = line->length;
    entry->chars  = nullptr;
    entry->next   = nullptr;

    if( line->length > 0 )
    {
        entry->chars = static_cast< QV_CHAR * >( qvMemAllocN( line->length, sizeof( QV_CHAR ) ) );
        qvMemCopyN( entry->chars, qv::chars( line ), line->length, sizeof( QV_CHAR ) );
    }

    return entry;
}
} // namespace

// Recording the stack of a creation creates objects of these sorts, and so does not record theirs.
bool qv::recordsOrigin( QV_SORT *sort )
{
    return sort != qvStringSort() && sort != qvVectorSort() && sort != qvDictSort() && sort != qvBufferSort()
           && sort != qvStackTraceSort();
}

void qv::freeObjLog( QV_OBJ *thisObj )
{
    for( QV___OBJ_LOG_ENTRY *entry = thisObj->logFirst; entry; )
    {
        QV___OBJ_LOG_ENTRY *next = entry->next;
        qvMemFree( entry->chars );
        qvMemFree( entry );
        entry = next;
    }
}

void qv::exchangeIdentities( QV_OBJ *a, QV_OBJ *b )
{
    std::swap( a->unique, b->unique );

    // A snapshot may read the logs of both.
    if( a->logFirst || b->logFirst )
    {
        HeldLock held( objLogLock );
        std::swap( a->logFirst, b->logFirst );
        std::swap( a->logLast, b->logLast );
    }
}

void qv___ObjLogAppend( QV_OBJ *thisObj, QV_STRING *logMessage )
{
    QV_CHECK( thisObj );
    QV_CHECK( logMessage );

    qv::Ref< QV_VECTOR > lines( qvVectorCreate() );
    qvVectorAppendObj( lines.at(), qvStringObj( logMessage ) );
    qv___ObjLogAppendVector( thisObj, lines );
}

void qv___ObjLogAppendVector( QV_OBJ *thisObj, QV_VECTOR *vec )
{
    QV_CHECK( thisObj );
    QV_CHECK( vec );

    // The entries are made before the lock is taken: the text of an element may create objects, and those may log.
    QV___OBJ_LOG_ENTRY  *first = nullptr;
    QV___OBJ_LOG_ENTRY  *last  = nullptr;
    QV___OBJ_LOG_ENTRY **link  = &first;

    for( QV_INT i = 0; i < vec->length; i++ )
    {
        qv::Ref< QV_STRING > line( qvObjToString( qv::objs( vec )[i] ) );
        last = *link = createEntry( line );
        link         = &last->next;
    }

    if( !first )
        return;

    qv::HeldLock held( qv::objLogLock );

    if( thisObj->logLast )
        thisObj->logLast->next = first;
    else
        thisObj->logFirst = first;

    thisObj->logLast = last;
}

// Not inline, since it skips its own frame.
__attribute__( ( noinline ) ) void qv___ObjLogAppendCallStack( QV_OBJ *thisObj, QV_INT skip, QV_INT limit )
{
    QV_CHECK( thisObj );
    QV_CHECK( skip >= 0 );
    QV_CHECK( QV_INT_ADD_OK( skip, 1 ) );

    qv::Ref< QV_STACK_TRACE > trace( qvStackTraceCreate( skip + 1, limit ) );
    qv::Ref< QV_VECTOR >      lines( qvStackTraceVector( trace ) );
    qvVectorAppendStringCstr( lines.at(), "", 0 );
    qv___ObjLogAppendVector( thisObj, lines );
}

QV_VECTOR *qv___ObjLog( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    // Only the links of entries change, so that their texts are read without the lock.
    auto next = [thisObj]( QV___OBJ_LOG_ENTRY *entry )
    {
        qv::HeldLock held( qv::objLogLock );
        return entry ? entry->next : thisObj->logFirst;
    };

    QV___OBJ_LOG_ENTRY *entry = next( nullptr );

    if( !entry )
        return nullptr;

    qv::Ref< QV_VECTOR > lines( qvVectorCreate() );

    for( ; entry; entry = next( entry ) )
    {
        qv::Ref< QV_STRING > line( qvStringCreateFromCharsCopy( entry->chars, entry->length ) );
        qvVectorAppendObj( lines.at(), qvStringObj( line ) );
    }

    return lines.give();
}
