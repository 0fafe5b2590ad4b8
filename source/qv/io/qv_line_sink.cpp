#include "qv/io/qv_line_sink.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/io/qv_line_sink_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"

struct QV_LINE_SINK : qv::AnySink
{
    QV___LINE_SINK_WRITE_FUNC writeFunc;
    QV_INT                    linesWritten;
};

namespace
{
// Writes a line that was created for the call, and releases it.
QV_BOOL writeLine( QV_LINE_SINK *sink, QV_STRING *owned )
{
    qv::Ref< QV_STRING > line( owned );
    return qvLineSinkWrite( sink, line );
}

// Writes lines that were collected for the call, and releases them.
QV_BOOL writeLines( QV_LINE_SINK *sink, QV_VECTOR *owned )
{
    qv::Ref< QV_VECTOR > lines( owned );
    return qvLineSinkWriteLines( sink, lines );
}

void freeLineSink( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::endSink( qvLineSinkFrom( thisObj ) );
}
} // namespace

QV___FAMILY( LineSink, QV_LINE_SINK, freeLineSink, nullptr, nullptr )

QV_LINE_SINK *qv___LineSinkCreate(
    QV___LINE_SINK_WRITE_FUNC writeFunc, QV___LINE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure )
{
    QV_CHECK( writeFunc );
    QV_CHECK( flushFunc );

    QV_LINE_SINK *sink = qv::createSink< QV_LINE_SINK >( qvLineSinkSort(), flushFunc, closure );
    sink->writeFunc    = writeFunc;
    sink->linesWritten = 0;

    return sink;
}

QV_BOOL qvLineSinkError( QV_LINE_SINK *sink )
{
    QV_CHECK( sink );
    return !qv::stillGood( sink );
}

QV_INT qvLineSinkLinesWritten( QV_LINE_SINK *sink )
{
    QV_CHECK( sink );
    return sink->linesWritten;
}

QV_BOOL qvLineSinkWrite( QV_LINE_SINK *sink, QV_STRING *line )
{
    QV_CHECK( sink );
    QV_CHECK( line );

    if( !qv::stillGood( sink ) || !qv::noteResult( sink, sink->writeFunc( sink->closure, line ) ) )
        return QV_FALSE;

    if( sink->linesWritten < QV_INT_MAX )
        sink->linesWritten++;

    return QV_TRUE;
}

QV_BOOL qvLineSinkWriteLeading( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT count )
{
    QV_CHECK( sink );
    return writeLine( sink, qvStringCreateFromLeading( qvs, count ) );
}

QV_BOOL qvLineSinkWriteTrailing( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT count )
{
    QV_CHECK( sink );
    return writeLine( sink, qvStringCreateFromTrailing( qvs, count ) );
}

QV_BOOL qvLineSinkWriteInner( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT offset, QV_INT count )
{
    QV_CHECK( sink );
    return writeLine( sink, qvStringCreateFromInner( qvs, offset, count ) );
}

QV_BOOL qvLineSinkWriteOuter( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT offset, QV_INT count )
{
    QV_CHECK( sink );
    return writeLine( sink, qvStringCreateFromOuter( qvs, offset, count ) );
}

QV_BOOL qvLineSinkWriteCstr( QV_LINE_SINK *sink, const char *text, QV_INT length )
{
    QV_CHECK( sink );
    return writeLine( sink, qvStringCreateFromCstr( text, length ) );
}

QV_BOOL qvLineSinkWriteWcstr( QV_LINE_SINK *sink, const wchar_t *text, QV_INT length )
{
    QV_CHECK( sink );
    return writeLine( sink, qvStringCreateFromWcstr( text, length ) );
}

QV_BOOL qvLineSinkWriteFormat( QV_LINE_SINK *sink, QV_STRING *fmt, ... )
{
    QV_CHECK( sink );

    va_list argList;
    va_start( argList, fmt );
    QV_STRING *line = qvStringCreateFromFormatArgList( fmt, &argList );
    va_end( argList );

    return writeLine( sink, line );
}

QV_BOOL qvLineSinkWriteFormatCstr( QV_LINE_SINK *sink, const char *fmt, QV_INT fmtLength, ... )
{
    QV_CHECK( sink );

    va_list argList;
    va_start( argList, fmtLength );
    QV_STRING *line = qvStringCreateFromFormatCstrArgList( fmt, fmtLength, &argList );
    va_end( argList );

    return writeLine( sink, line );
}

QV_BOOL qvLineSinkWriteFormatWcstr( QV_LINE_SINK *sink, const wchar_t *fmt, QV_INT fmtLength, ... )
{
    QV_CHECK( sink );

    va_list argList;
    va_start( argList, fmtLength );
    QV_STRING *line = qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, &argList );
    va_end( argList );

    return writeLine( sink, line );
}

QV_BOOL qvLineSinkWriteLines( QV_LINE_SINK *sink, QV_VECTOR *lines )
{
    QV_CHECK( sink );
    QV_CHECK( lines );

    for( QV_INT i = 0; i < lines->length; i++ )
    {
        if( !qvLineSinkWrite( sink, qvStringFrom( qv::objs( lines )[i] ) ) )
            return QV_FALSE;
    }

    return qv::stillGood( sink );
}

QV_BOOL qvLineSinkWriteLinesLeading( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT count )
{
    QV_CHECK( sink );
    return writeLines( sink, qvVectorCreateFromLeading( lines, count ) );
}

QV_BOOL qvLineSinkWriteLinesTrailing( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT count )
{
    QV_CHECK( sink );
    return writeLines( sink, qvVectorCreateFromTrailing( lines, count ) );
}

QV_BOOL qvLineSinkWriteLinesInner( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT offset, QV_INT count )
{
    QV_CHECK( sink );
    return writeLines( sink, qvVectorCreateFromInner( lines, offset, count ) );
}

QV_BOOL qvLineSinkWriteLinesOuter( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT offset, QV_INT count )
{
    QV_CHECK( sink );
    return writeLines( sink, qvVectorCreateFromOuter( lines, offset, count ) );
}

QV_BOOL qvLineSinkFlush( QV_LINE_SINK *sink )
{
    QV_CHECK( sink );
    return qv::flushSink( sink );
}
