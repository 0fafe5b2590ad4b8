#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_sink_private.h"

struct QV___CHARSET_UTF16_CHAR_SINK_CLOSURE : qv::CodecSink
{
    QV_BOOL littleEndian;
};

QV___FAMILY(
    ___CharsetUtf16CharSinkClosure, QV___CHARSET_UTF16_CHAR_SINK_CLOSURE, qv::freeCodecSink, nullptr, nullptr )

namespace
{
using Sink = QV___CHARSET_UTF16_CHAR_SINK_CLOSURE;

void putUnit( Sink *csc, QV_CHAR unit )
{
    uint8_t *out  = csc->cache + csc->cacheLength;
    uint8_t  low  = static_cast< uint8_t >( unit );
    uint8_t  high = static_cast< uint8_t >( unit >> 8 );

    out[0] = csc->littleEndian ? low : high;
    out[1] = csc->littleEndian ? high : low;
    csc->cacheLength += 2;
}

QV_BOOL writeChars( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    Sink *csc = static_cast< Sink * >( closure );

    for( QV_INT i = 0; i < charCount; i++ )
    {
        QV_CHAR ch = chars[i];

        if( ch < 0x10000 )
            putUnit( csc, ch );
        else
        {
            putUnit( csc, 0xD800 + ( ( ch - 0x10000 ) >> 10 ) );
            putUnit( csc, 0xDC00 + ( ch & 0x3FF ) );
        }

        // There is always room for one more character.
        if( csc->room() < 5 && !qv::flushCache( csc ) )
            return QV_FALSE;
    }

    return QV_TRUE;
}

QV_BOOL write( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    return writeChars( closure, qv::chars( qvs ) + charOffset, charCount );
}

QV_CHAR_SINK *createSink( QV_BYTE_SINK *byteSink, QV_INT flags, QV_BOOL littleEndian )
{
    qv::Ref< Sink > csc( qv::createCodecSink< Sink >( qv___CharsetUtf16CharSinkClosureSort(), byteSink, flags ) );
    csc->littleEndian = littleEndian;

    if( flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK )
        putUnit( csc, 0xFEFF );

    return qv::createCharSink( write, writeChars, qv::flushCodecSink, csc.get() );
}
} // namespace

QV_CHAR_SINK *qv___CharsetUtf16CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createSink( byteSink, flags, QV_TRUE );
}

QV_CHAR_SINK *qv___CharsetUtf16BECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createSink( byteSink, flags, QV_FALSE );
}

QV_CHAR_SINK *qv___CharsetUtf16LECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createSink( byteSink, flags, QV_TRUE );
}
