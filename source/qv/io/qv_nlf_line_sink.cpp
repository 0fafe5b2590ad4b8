#include "qv/io/qv_nlf_line_sink.h"

#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_line_sink_private.h"
#include "qv/io/qv_nlf.h"
#include "qv/runtime/qv_ref.h"

struct QV_NLF_LINE_SINK : QV_OBJ
{
    QV_CHAR_SINK *charSink;
    QV_INT        nlfFlags;
    QV_STRING    *terminator; // empty if no flag is set
};

namespace
{
void freeNlfLineSink( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_NLF_LINE_SINK *nls = qvNlfLineSinkFrom( thisObj );

    qv::drop( nls->charSink );
    qv::drop( nls->terminator );
}

QV_BOOL writeNlfLine( QV_OBJ *closure, QV_STRING *line )
{
    QV_NLF_LINE_SINK *nls = qvNlfLineSinkFrom( closure );

    return qvCharSinkWrite( nls->charSink, line ) && qvCharSinkWrite( nls->charSink, nls->terminator );
}

QV_BOOL flushCharSink( QV_OBJ *closure )
{
    return qvCharSinkFlush( qvNlfLineSinkFrom( closure )->charSink );
}
} // namespace

QV___FAMILY( NlfLineSink, QV_NLF_LINE_SINK, freeNlfLineSink, nullptr, nullptr )

QV_NLF_LINE_SINK *qvNlfLineSinkCreate( QV_CHAR_SINK *charSink, QV_INT nlfFlags )
{
    QV_CHECK( charSink );

    QV_NLF_LINE_SINK *nls = qv::create< QV_NLF_LINE_SINK >( qvNlfLineSinkSort() );
    nls->charSink         = qv::retain( charSink );
    nls->nlfFlags         = qvNlfFlagsNormalize( nlfFlags );
    nls->terminator       = qvNlfFlagsNlfString( nls->nlfFlags );

    return nls;
}

QV_LINE_SINK *qvNlfLineSinkLineSink( QV_NLF_LINE_SINK *nls )
{
    QV_CHECK( nls );
    return qv___LineSinkCreate( writeNlfLine, flushCharSink, nls );
}

QV_INT qvNlfLineSinkNlfFlags( QV_NLF_LINE_SINK *nls )
{
    QV_CHECK( nls );
    return nls->nlfFlags;
}
