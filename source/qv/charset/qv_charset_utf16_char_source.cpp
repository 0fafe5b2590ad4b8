#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_source_private.h"

struct QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE : qv::CodecSource
{
    QV_BOOL littleEndian;
    QV_BOOL bomChecked;
};

QV___FAMILY(
    ___CharsetUtf16CharSourceClosure, QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE, qv::freeCodecSource, nullptr, nullptr )

namespace
{
using Source = QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE;

QV_CHAR peekUnit( Source *csc )
{
    const uint8_t *in = csc->cache + csc->cachePos;

    return csc->littleEndian ? in[0] | in[1] << 8 : in[0] << 8 | in[1];
}

bool isHighSurrogate( QV_CHAR unit )
{
    return ( unit & 0xFFFFFC00 ) == 0xD800;
}

bool isLowSurrogate( QV_CHAR unit )
{
    return ( unit & 0xFFFFFC00 ) == 0xDC00;
}

// Goes by a byte order mark, if one stands at the start.
void checkByteOrderMark( Source *csc )
{
    QV_CHECK( csc->cachePos == 0 );

    if( csc->cache[0] == 0xFE && csc->cache[1] == 0xFF )
        csc->littleEndian = QV_FALSE;
    else if( csc->cache[0] == 0xFF && csc->cache[1] == 0xFE )
        csc->littleEndian = QV_TRUE;
    else
        return;

    csc->cachePos   = 2;
    csc->bomChecked = QV_TRUE;
}

// The next character, for which at least one unit has to be there.
QV_CHAR takeChar( Source *csc )
{
    QV_CHAR unit = peekUnit( csc );

    csc->cachePos += 2;
    csc->bomChecked = QV_TRUE;

    if( !isHighSurrogate( unit ) )
        return unit;

    // The other half may not have been read yet.
    if( csc->left() == 0 )
        qv::refillCache( csc );

    if( csc->left() < 2 || !isLowSurrogate( peekUnit( csc ) ) )
        return unit;

    QV_CHAR low = peekUnit( csc );
    csc->cachePos += 2;

    return 0x10000 + ( ( unit & 0x3FF ) << 10 ) + ( low & 0x3FF );
}

QV_BOOL readChars( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead )
{
    Source  *csc = static_cast< Source * >( closure );
    QV_CHAR *out = chars;
    QV_BOOL  ok  = QV_TRUE;

    while( out - chars < maxCharCount )
    {
        if( csc->left() == 0 && !qv::refillCache( csc ) )
        {
            ok = qv::endOfBytes( csc );
            break;
        }

        // Half a unit is all that is left of the data.
        if( csc->left() < 2 )
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

        *out++ = takeChar( csc );
    }

    *charsRead = out - chars;

    return ok;
}

QV_CHAR_SOURCE *createSource( QV_BYTE_SOURCE *byteSource, QV_INT flags, QV_BOOL littleEndian )
{
    qv::Ref< Source > csc(
        qv::createCodecSource< Source >( qv___CharsetUtf16CharSourceClosureSort(), byteSource, flags ) );
    csc->littleEndian = littleEndian;
    csc->bomChecked   = QV_FALSE;

    return qv::createCharSource( qv::readString< readChars, 2 >, readChars, csc.get() );
}
} // namespace

QV_CHAR_SOURCE *qv___CharsetUtf16CharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createSource( byteSource, flags, QV_TRUE );
}

QV_CHAR_SOURCE *qv___CharsetUtf16BECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createSource( byteSource, flags | QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK, QV_FALSE );
}

QV_CHAR_SOURCE *qv___CharsetUtf16LECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createSource( byteSource, flags | QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK, QV_TRUE );
}
