#include "qv/charset/qv_charset_units_private.h"
#include "qv/charset/qv_charset_utf_private.h"

struct QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE : qv::UnitSource
{
};

QV___FAMILY(
    ___CharsetUtf32CharSourceClosure, QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE, qv::freeCodecSource, nullptr, nullptr )

namespace
{
// Reads one unit, which may be no character.
QV_CHAR takeUtf32( qv::UnitSource *csc )
{
    QV_CHAR ch = qv::peekUnit< 4 >( csc );
    csc->cachePos += 4;

    return ch;
}

QV_CHAR_SOURCE *createUtf32Source( QV_BYTE_SOURCE *byteSource, QV_INT flags, QV_BOOL littleEndian, bool isFixed )
{
    return qv::createUnitSource< QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE, 4, takeUtf32 >(
        qv___CharsetUtf32CharSourceClosureSort(), byteSource, flags, littleEndian, isFixed );
}
} // namespace

QV_CHAR_SOURCE *qv___CharsetUtf32CharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createUtf32Source( byteSource, flags, QV_TRUE, false );
}

QV_CHAR_SOURCE *qv___CharsetUtf32BECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createUtf32Source( byteSource, flags, QV_FALSE, true );
}

QV_CHAR_SOURCE *qv___CharsetUtf32LECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );
    return createUtf32Source( byteSource, flags, QV_TRUE, true );
}
