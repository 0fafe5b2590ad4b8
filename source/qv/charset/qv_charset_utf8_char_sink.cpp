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

QV_BOOL writeChars( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
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

        // No String holds such a value; this guards the bytes against everything else that writes.
        if( !QV_CHAR_OK( ch ) )
        {
            if( csc->flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER )
                return QV_FALSE;

            if( csc->flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS )
                continue;

            ch = qv::utf8::REPLACEMENT;
        }

        if( csc->room() < qv::utf8::length( ch ) && !qv::flushCache( csc ) )
            return QV_FALSE;

        csc->cacheLength += qv::utf8::put( ch, csc->cache + csc->cacheLength );
    }
}

QV_BOOL write( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    return writeChars( closure, qv::chars( qvs ) + charOffset, charCount );
}
} // namespace

QV_CHAR_SINK *qv___CharsetUtf8CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );

    qv::Ref< Sink > csc( qv::createCodecSink< Sink >( qv___CharsetUtf8CharSinkClosureSort(), byteSink, flags ) );

    if( flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK )
        csc->cacheLength = qv::utf8::put( 0xFEFF, csc->cache );

    return qv::createCharSink( write, writeChars, qv::flushCodecSink, csc.get() );
}
