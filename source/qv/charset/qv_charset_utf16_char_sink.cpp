#include "qv/charset/qv_charset_units_private.h"
#include "qv/charset/qv_charset_utf_private.h"

struct QV___CHARSET_UTF16_CHAR_SINK_CLOSURE : qv::UnitSink
{
};

QV___FAMILY( ___CharsetUtf16CharSinkClosure, QV___CHARSET_UTF16_CHAR_SINK_CLOSURE, qv::freeCodecSink, nullptr, nullptr )

namespace
{
QV_BOOL writeUtf16( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    qv::UnitSink *csc = static_cast< qv::UnitSink * >( closure );

    for( QV_INT i = 0; i < charCount; i++ )
    {
        QV_CHAR ch = chars[i];

        if( ch < 0x10000 )
            qv::putUnit< 2 >( csc, ch );
        else
        {
            qv::putUnit< 2 >( csc, 0xD800 + ( ( ch - 0x10000 ) >> 10 ) );
            qv::putUnit< 2 >( csc, 0xDC00 + ( ch & 0x3FF ) );
        }

        // Keeps room for one more character of up to 4 bytes.
        if( csc->room() < 5 && !qv::flushCache( csc ) )
            return QV_FALSE;
    }

    return QV_TRUE;
}

QV_CHAR_SINK *createUtf16Sink( QV_BYTE_SINK *byteSink, QV_INT flags, QV_BOOL littleEndian )
{
    return qv::createUnitSink< QV___CHARSET_UTF16_CHAR_SINK_CLOSURE, 2, writeUtf16 >(
        qv___CharsetUtf16CharSinkClosureSort(), byteSink, flags, littleEndian );
}
} // namespace

QV_CHAR_SINK *qv___CharsetUtf16CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createUtf16Sink( byteSink, flags, QV_TRUE );
}

QV_CHAR_SINK *qv___CharsetUtf16BECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createUtf16Sink( byteSink, flags, QV_FALSE );
}

QV_CHAR_SINK *qv___CharsetUtf16LECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createUtf16Sink( byteSink, flags, QV_TRUE );
}
