#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_sink_private.h"

struct QV___CHARSET_UTF32_CHAR_SINK_CLOSURE : qv::CodecSink
{
    QV_BOOL littleEndian;
};

QV___FAMILY(
    ___CharsetUtf32CharSinkClosure, QV___CHARSET_UTF32_CHAR_SINK_CLOSURE, qv::freeCodecSink, nullptr, nullptr )

namespace
{
using Sink = QV___CHARSET_UTF32_CHAR_SINK_CLOSURE;

void putUnit( Sink *csc, QV_CHAR unit )
{
    uint8_t *out = csc->cache + csc->cacheLength;

    for( int i = 0; i < 4; i++ )
        out[i] = static_cast< uint8_t >( unit >> 8 * ( csc->littleEndian ? i : 3 - i ) );

    csc->cacheLength += 4;
}

QV_BOOL writeChars( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    Sink *csc = static_cast< Sink * >( closure );

    for( QV_INT i = 0; i < charCount; i++ )
    {
        putUnit( csc, chars[i] );

        if( csc->room() == 0 && !qv::flushCache( csc ) )
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
    qv::Ref< Sink > csc( qv::createCodecSink< Sink >( qv___CharsetUtf32CharSinkClosureSort(), byteSink, flags ) );
    csc->littleEndian = littleEndian;

    if( flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK )
        putUnit( csc, 0xFEFF );

    return qv::createCharSink( write, writeChars, qv::flushCodecSink, csc.get() );
}
} // namespace

QV_CHAR_SINK *qv___CharsetUtf32CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createSink( byteSink, flags, QV_TRUE );
}

QV_CHAR_SINK *qv___CharsetUtf32BECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createSink( byteSink, flags, QV_FALSE );
}

QV_CHAR_SINK *qv___CharsetUtf32LECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );
    return createSink( byteSink, flags, QV_TRUE );
}
