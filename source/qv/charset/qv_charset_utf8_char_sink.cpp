#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_sink_private.h"

struct QV___CHARSET_UTF8_CHAR_SINK_CLOSURE : qv::CodecSink
{
};

QV___FAMILY(
    ___CharsetUtf8CharSinkClosure, QV___CHARSET_UTF8_CHAR_SINK_CLOSURE, qv::freeCodecSink, nullptr, nullptr )

namespace
{
using Sink = QV___CHARSET_UTF8_CHAR_SINK_CLOSURE;

// Encodes ASCII until something else comes or the cache is full, and gives how many characters that was.
QV_INT putAscii( Sink *csc, const QV_CHAR *chars, QV_INT count )
{
    uint8_t *out  = csc->cache + csc->cacheLength;
    QV_INT   most = std::min( count, csc->room() );
    QV_INT   i    = 0;

    // By blocks that compile to vectors.
    for( ; i + 16 <= most; i += 16 )
    {
        QV_CHAR all = 0;

        for( int j = 0; j < 16; j++ )
            all |= chars[i + j];

        if( all >= 0x80 )
            break;

        for( int j = 0; j < 16; j++ )
            out[i + j] = static_cast< uint8_t >( chars[i + j] );
    }

    for( ; i < most && chars[i] < 0x80; i++ )
        out[i] = static_cast< uint8_t >( chars[i] );

    csc->cacheLength += i;

    return i;
}

QV_INT encodedLength( QV_CHAR ch )
{
    return ch < 0x80 ? 1 : ch < 0x800 ? 2 : ch < 0x10000 ? 3 : 4;
}

// Writes the bytes of one character and gives their number.
QV_INT encode( QV_CHAR ch, uint8_t *out )
{
    if( ch < 0x80 )
    {
        out[0] = static_cast< uint8_t >( ch );
        return 1;
    }

    if( ch < 0x800 )
    {
        out[0] = static_cast< uint8_t >( 0xC0 | ch >> 6 );
        out[1] = static_cast< uint8_t >( 0x80 | ( ch & 0x3F ) );
        return 2;
    }

    if( ch < 0x10000 )
    {
        out[0] = static_cast< uint8_t >( 0xE0 | ch >> 12 );
        out[1] = static_cast< uint8_t >( 0x80 | ( ch >> 6 & 0x3F ) );
        out[2] = static_cast< uint8_t >( 0x80 | ( ch & 0x3F ) );
        return 3;
    }

    out[0] = static_cast< uint8_t >( 0xF0 | ch >> 18 );
    out[1] = static_cast< uint8_t >( 0x80 | ( ch >> 12 & 0x3F ) );
    out[2] = static_cast< uint8_t >( 0x80 | ( ch >> 6 & 0x3F ) );
    out[3] = static_cast< uint8_t >( 0x80 | ( ch & 0x3F ) );
    return 4;
}

QV_BOOL writeChars( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    Sink *csc = static_cast< Sink * >( closure );

    for( QV_INT i = 0; i < charCount; )
    {
        if( chars[i] < 0x80 )
        {
            i += putAscii( csc, chars + i, charCount - i );

            if( i < charCount && csc->room() == 0 && !qv::flushCache( csc ) )
                return QV_FALSE;

            continue;
        }

        QV_CHAR ch = chars[i++];

        // No String holds such a value; this guards the bytes against everything else that writes.
        if( !QV_CHAR_OK( ch ) )
        {
            if( csc->flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER )
                return QV_FALSE;

            if( csc->flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS )
                continue;

            ch = qv::REPLACEMENT;
        }

        if( csc->room() < encodedLength( ch ) && !qv::flushCache( csc ) )
            return QV_FALSE;

        csc->cacheLength += encode( ch, csc->cache + csc->cacheLength );
    }

    return QV_TRUE;
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
        csc->cacheLength = encode( 0xFEFF, csc->cache );

    return qv::createCharSink( write, writeChars, qv::flushCodecSink, csc.get() );
}
