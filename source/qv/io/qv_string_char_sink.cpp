#include "qv/io/qv_string_char_sink.h"

#include "qv/base/qv_string.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"

#include <utility>

struct QV_STRING_CHAR_SINK : QV_OBJ
{
    QV_STRING *dest;
};

namespace
{
void freeStringCharSink( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qvStringCharSinkFrom( thisObj )->dest );
}

QV_BOOL writeToString( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    QV_STRING_CHAR_SINK *scs = qvStringCharSinkFrom( closure );

    qvStringAppendInner( &scs->dest, qvs, charOffset, charCount );

    return QV_TRUE;
}

QV_BOOL writeCharsToString( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    QV_STRING_CHAR_SINK *scs = qvStringCharSinkFrom( closure );

    qvStringAppendChars( &scs->dest, chars, charCount );

    return QV_TRUE;
}
} // namespace

QV___FAMILY( StringCharSink, QV_STRING_CHAR_SINK, freeStringCharSink, nullptr, nullptr )

QV_STRING_CHAR_SINK *qvStringCharSinkCreate( void )
{
    QV_STRING_CHAR_SINK *scs = qv::create< QV_STRING_CHAR_SINK >( qvStringCharSinkSort() );
    scs->dest                = qvStringCreate();

    return scs;
}

QV_CHAR_SINK *qvStringCharSinkCharSink( QV_STRING_CHAR_SINK *scs )
{
    QV_CHECK( scs );
    return qv::createCharSink( writeToString, writeCharsToString, qv::flushNothing, scs );
}

QV_STRING *qvStringCharSinkString( QV_STRING_CHAR_SINK *scs )
{
    QV_CHECK( scs );

    return std::exchange( scs->dest, qvStringCreate() );
}
