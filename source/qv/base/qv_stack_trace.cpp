#include "qv/base/qv_stack_trace.h"

#include "qv/base/qv_stack_trace_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"

struct QV_STACK_TRACE : QV_OBJ
{
    char **symbols; // one line a frame, or null
    QV_INT symbolsLength;
};

namespace
{
void freeStackTrace( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::freeStackLines( qvStackTraceFrom( thisObj )->symbols );
}
} // namespace

QV___FAMILY( StackTrace, QV_STACK_TRACE, freeStackTrace, nullptr, nullptr )

__attribute__( ( noinline ) ) QV_STACK_TRACE *qvStackTraceCreate( QV_INT skip, QV_INT maxLength )
{
    QV_CHECK( skip >= 0 );
    QV_CHECK( maxLength >= -1 );

    QV_INT          skipped = qvIntAddSaturating( skip, 1 ); // this function's own frame
    QV_STACK_TRACE *st      = qv::create< QV_STACK_TRACE >( qvStackTraceSort() );
    st->symbols             = nullptr;
    st->symbolsLength       = 0;

    if( maxLength == 0 )
        return st;

    void  *frames[qv::STACK_TRACE_CALLS];
    QV_INT count = qv::stackFrames( frames, qv::STACK_TRACE_CALLS );

    if( skipped >= count )
        return st;

    QV_INT left       = count - skipped;
    st->symbolsLength = maxLength == -1 ? left : qvIntMin( left, maxLength );
    st->symbols       = qv::stackLines( frames + skipped, st->symbolsLength );
    QV_CHECK( st->symbols );

    return st;
}

QV_INT qvStackTraceLength( QV_STACK_TRACE *st )
{
    QV_CHECK( st );
    return st->symbolsLength;
}

QV_STRING *qvStackTraceAt( QV_STACK_TRACE *st, QV_INT idx )
{
    QV_CHECK( st );
    QV_CHECK( idx >= 0 && idx < st->symbolsLength );

    return qvStringCreateFromCstr( st->symbols[idx], -1 );
}

QV_VECTOR *qvStackTraceVector( QV_STACK_TRACE *st )
{
    QV_CHECK( st );

    qv::Ref< QV_VECTOR > lines( qvVectorCreate() );

    for( QV_INT i = 0; i < st->symbolsLength; i++ )
        qvVectorAppendStringCstr( lines.at(), st->symbols[i], -1 );

    return lines.give();
}

void qvStackTracePrint( QV_STACK_TRACE *st )
{
    QV_CHECK( st );

    for( QV_INT i = 0; i < st->symbolsLength; i++ )
        qvPrintCstr( st->symbols[i], -1 );
}
