#include "qv/io/qv_line_source.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/io/qv_line_source_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"

struct QV_LINE_SOURCE : qv::AnySource
{
    QV___LINE_SOURCE_READ_FUNC readFunc;
    QV_INT                     linesRead;
};

namespace
{
void freeLineSource( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::endStream( qvLineSourceFrom( thisObj ) );
}
} // namespace

QV___FAMILY( LineSource, QV_LINE_SOURCE, freeLineSource, nullptr, nullptr )

QV_LINE_SOURCE *qv___LineSourceCreate( QV___LINE_SOURCE_READ_FUNC readFunc, QV_OBJ *closure )
{
    QV_CHECK( readFunc );

    QV_LINE_SOURCE *source = qv::createSource< QV_LINE_SOURCE >( qvLineSourceSort(), closure );
    source->readFunc       = readFunc;
    source->linesRead      = 0;

    return source;
}

QV_BOOL qvLineSourceEnd( QV_LINE_SOURCE *source )
{
    QV_CHECK( source );
    return source->end;
}

QV_BOOL qvLineSourceError( QV_LINE_SOURCE *source )
{
    QV_CHECK( source );
    return !qv::stillGood( source );
}

QV_INT qvLineSourceLinesRead( QV_LINE_SOURCE *source )
{
    QV_CHECK( source );
    return source->linesRead;
}

QV_STRING *qvLineSourceRead( QV_LINE_SOURCE *source )
{
    QV_CHECK( source );

    if( qv::isIdle( source, 1 ) )
        return nullptr;

    QV_STRING *line = nullptr;
    QV_BOOL    ok   = source->readFunc( source->closure, &line );

    if( __builtin_expect( !ok, 0 ) )
        qv::addErrorLineAfter( source->linesRead );

    if( qv::noteCount( source, ok, line ? 1 : 0, 1 ) > 0 && source->linesRead < QV_INT_MAX )
        source->linesRead++;

    return line;
}

QV_VECTOR *qvLineSourceReadLines( QV_LINE_SOURCE *source, QV_INT maxLineCount )
{
    QV_CHECK( source );
    QV_CHECK( maxLineCount >= -1 );

    qv::Ref< QV_VECTOR > lines( qvVectorCreate() );

    while( !source->end && lines->length != maxLineCount )
    {
        // The Vector takes the reference over.
        if( QV_STRING *line = qvLineSourceRead( source ) )
        {
            QV_OBJ *element = qv::obj( line );
            qv___VectorPushNoRetain( lines.at(), &element, 1 );
        }
    }

    return lines.give();
}
