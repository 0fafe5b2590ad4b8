#include "qv/io/qv_line_sink.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/io/qv_line_sink_private.h"
#include "qv/runtime/qv_ref.h"

struct QV_LINE_SINK : QV_OBJ
{
    QV___LINE_SINK_WRITE_FUNC writeFunc;
    QV___LINE_SINK_FLUSH_FUNC flushFunc;
    QV_OBJ                   *closure; // or null
    QV_BOOL                   error;
    QV_INT                    linesWritten;
};

namespace
{
// Writes a line made for the call.
QV_BOOL writeLine( QV_LINE_SINK *sink, QV_STRING *owned )
{
    qv::Ref< QV_STRING > line( owned );
    return qvLineSinkWrite( sink, line );
}

// Writes lines collected for the call.
QV_BOOL writeLines( QV_LINE_SINK *sink, QV_VECTOR *owned )
{
    qv::Ref< QV_VECTOR > lines( owned );
    return qvLineSinkWriteLines( sink, lines );
}

void freeFunc( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_LINE_SINK *sink = qvLineSinkFrom( thisObj );

    qvLineSinkFlush( sink );
    qv::drop( sink->closure );
}
} // namespace

QV___FAMILY( LineSink, QV_LINE_SINK, freeFunc, nullptr, nullptr )

QV_LINE_SINK *qv___LineSinkCreate(
    QV___LINE_SINK_WRITE_FUNC writeFunc, QV___LINE_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure )
{
    QV_CHECK( writeFunc );
    QV_CHECK( flushFunc );

    QV_LINE_SINK *sink = qv::create< QV_LINE_SINK >( qvLineSinkSort() );
    sink->writeFunc    = writeFunc;
    sink->flushFunc    = flushFunc;
    sink->closure      = qv::Ref< QV_OBJ >::share( closure ).give();
    sink->error        = QV_FALSE;
    sink->linesWritten = 0;

    return sink;
}

QV_BOOL qvLineSinkError( QV_LINE_SINK *sink )
{
    QV_CHECK( sink );
    return sink->error;
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

    if( sink->error )
        return QV_FALSE;

    if( !sink->writeFunc( sink->closure, line ) )
    {
        sink->error = QV_TRUE;
        return QV_FALSE;
    }

    if( sink->linesWritten < QV_INT_MAX )
        sink->linesWritten++;

    return QV_TRUE;
}

// The forms that build their line first.
#define WRITE_LINE( PARAMETERS, LINE )                                                                                 \
    PARAMETERS                                                                                                         \
    {                                                                                                                  \
        QV_CHECK( sink );                                                                                              \
        return writeLine( sink, LINE );                                                                                \
    }

#define WRITE_LINES( PARAMETERS, LINES )                                                                               \
    PARAMETERS                                                                                                         \
    {                                                                                                                  \
        QV_CHECK( sink );                                                                                              \
        return writeLines( sink, LINES );                                                                              \
    }

// The arguments behind `LAST` through one of the functions that format.
#define WRITE_FORMATTED( LAST, FORMATTED )                                                                             \
    QV_CHECK( sink );                                                                                                  \
                                                                                                                       \
    va_list argList;                                                                                                   \
    va_start( argList, LAST );                                                                                         \
    QV_STRING *line = FORMATTED;                                                                                       \
    va_end( argList );                                                                                                 \
                                                                                                                       \
    return writeLine( sink, line );

// clang-format off
WRITE_LINE( QV_BOOL qvLineSinkWriteLeading( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT count ),
            qvStringCreateFromLeading( qvs, count ) )
WRITE_LINE( QV_BOOL qvLineSinkWriteTrailing( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT count ),
            qvStringCreateFromTrailing( qvs, count ) )
WRITE_LINE( QV_BOOL qvLineSinkWriteInner( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT offset, QV_INT count ),
            qvStringCreateFromInner( qvs, offset, count ) )
WRITE_LINE( QV_BOOL qvLineSinkWriteOuter( QV_LINE_SINK *sink, QV_STRING *qvs, QV_INT offset, QV_INT count ),
            qvStringCreateFromOuter( qvs, offset, count ) )
WRITE_LINE( QV_BOOL qvLineSinkWriteCstr( QV_LINE_SINK *sink, const char *text, QV_INT length ),
            qvStringCreateFromCstr( text, length ) )
WRITE_LINE( QV_BOOL qvLineSinkWriteWcstr( QV_LINE_SINK *sink, const wchar_t *text, QV_INT length ),
            qvStringCreateFromWcstr( text, length ) )
// clang-format on

QV_BOOL qvLineSinkWriteFormat( QV_LINE_SINK *sink, QV_STRING *fmt, ... ){
    WRITE_FORMATTED( fmt, qvStringCreateFromFormatArgList( fmt, &argList ) ) }

QV_BOOL qvLineSinkWriteFormatCstr( QV_LINE_SINK *sink, const char *fmt, QV_INT fmtLength, ... ){
    WRITE_FORMATTED( fmtLength, qvStringCreateFromFormatCstrArgList( fmt, fmtLength, &argList ) ) }

QV_BOOL qvLineSinkWriteFormatWcstr( QV_LINE_SINK *sink, const wchar_t *fmt, QV_INT fmtLength, ... ){
    WRITE_FORMATTED( fmtLength, qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, &argList ) ) }

QV_BOOL qvLineSinkWriteLines( QV_LINE_SINK *sink, QV_VECTOR *lines )
{
    QV_CHECK( sink );
    QV_CHECK( lines );

    for( QV_INT i = 0; i < lines->length; i++ )
    {
        if( !qvLineSinkWrite( sink, qvStringFrom( qv::objs( lines )[i] ) ) )
            return QV_FALSE;
    }

    return !sink->error;
}

// clang-format off
WRITE_LINES( QV_BOOL qvLineSinkWriteLinesLeading( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT count ),
             qvVectorCreateFromLeading( lines, count ) )
WRITE_LINES( QV_BOOL qvLineSinkWriteLinesTrailing( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT count ),
             qvVectorCreateFromTrailing( lines, count ) )
WRITE_LINES( QV_BOOL qvLineSinkWriteLinesInner( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT offset, QV_INT count ),
             qvVectorCreateFromInner( lines, offset, count ) )
WRITE_LINES( QV_BOOL qvLineSinkWriteLinesOuter( QV_LINE_SINK *sink, QV_VECTOR *lines, QV_INT offset, QV_INT count ),
             qvVectorCreateFromOuter( lines, offset, count ) )
// clang-format on

QV_BOOL qvLineSinkFlush( QV_LINE_SINK *sink )
{
    QV_CHECK( sink );

    if( sink->error )
        return QV_FALSE;

    if( !sink->flushFunc( sink->closure ) )
        sink->error = QV_TRUE;

    return !sink->error;
}
