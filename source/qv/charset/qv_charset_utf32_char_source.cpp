#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_source_private.h"

struct QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE : qv::CodecSource
{
    QV_BOOL littleEndian;
    QV_BOOL bomChecked;
};

QV___FAMILY(
    ___CharsetUtf32CharSourceClosure, QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE, qv::freeCodecSource, nullptr, nullptr )

namespace
{
using Source = QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE;

QV_CHAR unitAt( const uint8_t *in, QV_BOOL littleEndian )
{
    QV_CHAR unit = 0;

    for( int i = 0; i < 4; i++ )
        unit |= static_cast< QV_CHAR >( in[i] ) << 8 * ( littleEndian ? i : 3 - i );

    return unit;
}

// Goes by a byte order mark, if one stands at the start.
void checkByteOrderMark( Source *csc )
{
    QV_CHECK( csc->cachePos == 0 );

    if( unitAt( csc->cache, QV_TRUE ) == 0xFEFF )
        csc->littleEndian = QV_TRUE;
    else if( unitAt( csc->cache, QV_FALSE ) == 0xFEFF )
        csc->littleEndian = QV_FALSE;
    else
        return;

    csc->cachePos   = 4;
    csc->bomChecked = QV_TRUE;
}

QV_BOOL readChars( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead )
{
    Source  *csc = static_cast< Source * >( closure );
    QV_CHAR *out = chars;
    QV_BOOL  ok  = QV_TRUE;

    while( ok && out - chars < maxCharCount )
    {
        if( csc->left() == 0 && !qv::refillCache( csc ) )
        {
            ok = qv::endOfBytes( csc );
            break;
        }

        // A part of a unit is all that is left of the data.
        if( csc->left() < 4 )
        {
            csc->cachePos = csc->cacheLength;
            ok            = qv::putInvalid( csc, &out ) ? qv::endOfBytes( csc ) : QV_FALSE;
            break;
        }

        if( !csc->bomChecked && !( csc->flags & QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK ) )
        {
            checkByteOrderMark( csc );

            if( csc->bomChecked )
                continue;
        }

        QV_CHAR ch = unitAt( csc->cache + csc->cachePos, csc->littleEndian );

        csc->cachePos += 4;
        csc->bomChecked = QV_TRUE;

        if( QV_CHAR_OK( ch ) )
            *out++ = ch;
        else if( !qv::putInvalid( csc, &out ) )
            ok = QV_FALSE;
    }

    *charsRead = out - chars;

    return ok;
}

QV_CHAR_SOURCE *createSource( QV_BYTE_SOURCE *byteSource, QV_INT flags, QV_BOOL littleEndian )
{
    qv::Ref< Source > csc(
        qv::createCodecSource< Source >( qv___CharsetUtf32CharSourceClosureSort(), byteSource, flags ) );
    csc->littleEndian = littleEndian;
    csc->bomChecked   = QV_FALSE;

    return qv::createCharSource( qv::readString< readChars, 4 >, readChars, csc.get() );
}
} // namespace

QV_CHAR_SOURCE *qv___CharsetUtf32CharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createSource( byteSource, flags, QV_TRUE );
}

QV_CHAR_SOURCE *qv___CharsetUtf32BECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createSource( byteSource, flags | QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK, QV_FALSE );
}

QV_CHAR_SOURCE *qv___CharsetUtf32LECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createSource( byteSource, flags | QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK, QV_TRUE );
}
