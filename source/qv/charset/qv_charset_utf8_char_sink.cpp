#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/sys/qv_utf8_private.h"

struct QV___CHARSET_UTF8_CHAR_SINK_CLOSURE : qv::CodecSink
{
};

QV___FAMILY( ___CharsetUtf8CharSinkClosure, QV___CHARSET_UTF8_CHAR_SINK_CLOSURE, qv::freeCodecSink, nullptr, nullptr )

namespace
{
using Sink = QV___CHARSET_UTF8_CHAR_SINK_CLOSURE;

QV_BOOL writeUtf8( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    Sink          *csc = static_cast< Sink * >( closure );
    const QV_CHAR *in  = chars;
    const QV_CHAR *end = chars + charCount;

    for( ;; )
    {
        qv::utf8::Encoded done =
            qv::utf8::encode( in, end, csc->cache + csc->cacheLength, csc->cache + qv::CODEC_CACHE );
        in               = done.in;
        csc->cacheLength = done.out - csc->cache;

        if( in == end )
            return QV_TRUE;

        QV_CHAR ch = *in++;

        // No String holds such a value, but a caller that does not go through one may write it.
        if( !QV_CHAR_OK( ch ) )
        {
            qv::Invalid invalid = qv::onInvalid( csc->flags );

            if( invalid == qv::Invalid::FAIL )
            {
                qv::setCharError( ch );
                return QV_FALSE;
            }

            if( invalid == qv::Invalid::LEAVE_OUT )
                continue;

            ch = qv::utf8::REPLACEMENT;
        }

        if( csc->room() < qv::utf8::length( ch ) && !qv::flushCache( csc ) )
            return QV_FALSE;

        csc->cacheLength += qv::utf8::put( ch, csc->cache + csc->cacheLength );
    }
}
} // namespace

QV_CHAR_SINK *qv___CharsetUtf8CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );

    qv::Ref< Sink > csc( qv::createCodecSink< Sink >( qv___CharsetUtf8CharSinkClosureSort(), byteSink, flags ) );

    if( flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK )
        csc->cacheLength = qv::utf8::put( 0xFEFF, csc->cache );

    return qv::createCharSink( qv::writeString< writeUtf8 >, writeUtf8, qv::flushCodecSink, csc.get() );
}
