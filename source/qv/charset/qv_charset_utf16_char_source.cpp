#include "qv/charset/qv_charset_units_private.h"
#include "qv/charset/qv_charset_utf_private.h"

struct QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE : qv::UnitSource
{
};

QV___FAMILY(
    ___CharsetUtf16CharSourceClosure, QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE, qv::freeCodecSource, nullptr, nullptr )

namespace
{
// Reads one unit or a pair of surrogates. A surrogate without its other half is a character of its own.
QV_CHAR takeUtf16( qv::UnitSource *csc )
{
    QV_CHAR unit = qv::peekUnit< 2 >( csc );
    csc->cachePos += 2;

    if( ( unit & 0xFFFFFC00 ) != 0xD800 )
        return unit;

    // The other half may be in the next refill.
    if( csc->left() == 0 )
        qv::refillCache( csc );

    if( csc->left() < 2 || ( qv::peekUnit< 2 >( csc ) & 0xFFFFFC00 ) != 0xDC00 )
        return unit;

    QV_CHAR low = qv::peekUnit< 2 >( csc );
    csc->cachePos += 2;

    return 0x10000 + ( ( unit & 0x3FF ) << 10 ) + ( low & 0x3FF );
}

QV_CHAR_SOURCE *createUtf16Source( QV_BYTE_SOURCE *byteSource, QV_INT flags, QV_BOOL littleEndian, bool isFixed )
{
    return qv::createUnitSource< QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE, 2, takeUtf16 >(
        qv___CharsetUtf16CharSourceClosureSort(), byteSource, flags, littleEndian, isFixed );
}
} // namespace

QV_CHAR_SOURCE *qv___CharsetUtf16CharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createUtf16Source( byteSource, flags, QV_TRUE, false );
}

QV_CHAR_SOURCE *qv___CharsetUtf16BECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createUtf16Source( byteSource, flags, QV_FALSE, true );
}

QV_CHAR_SOURCE *qv___CharsetUtf16LECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createUtf16Source( byteSource, flags, QV_TRUE, true );
}
