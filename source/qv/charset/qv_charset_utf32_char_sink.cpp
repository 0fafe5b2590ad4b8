#include "qv/charset/qv_charset_units_private.h"
#include "qv/charset/qv_charset_utf_private.h"

struct QV___CHARSET_UTF32_CHAR_SINK_CLOSURE : qv::UnitSink
{
};

QV___FAMILY( ___CharsetUtf32CharSinkClosure, QV___CHARSET_UTF32_CHAR_SINK_CLOSURE, qv::freeCodecSink, nullptr, nullptr )

namespace
{
QV_BOOL writeUtf32( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    qv::UnitSink *csc = static_cast< qv::UnitSink * >( closure );

    for( QV_INT i = 0; i < charCount; i++ )
    {
        qv::putUnit< 4 >( csc, chars[i] );

        if( csc->room() == 0 && !qv::flushCache( csc ) )
            return QV_FALSE;
    }

    return QV_TRUE;
}

QV_CHAR_SINK *createUtf32Sink( QV_BYTE_SINK *byteSink, QV_INT flags, QV_BOOL littleEndian )
{
    return qv::createUnitSink< QV___CHARSET_UTF32_CHAR_SINK_CLOSURE, 4, writeUtf32 >(
        qv___CharsetUtf32CharSinkClosureSort(), byteSink, flags, littleEndian );
}
} // namespace

QV_CHAR_SINK *qv___CharsetUtf32CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createUtf32Sink( byteSink, flags, QV_TRUE );
}

QV_CHAR_SINK *qv___CharsetUtf32BECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createUtf32Sink( byteSink, flags, QV_FALSE );
}

QV_CHAR_SINK *qv___CharsetUtf32LECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createUtf32Sink( byteSink, flags, QV_TRUE );
}
