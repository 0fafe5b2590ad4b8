#ifndef QV_CHARSET_UNITS_PRIVATE_H
#define QV_CHARSET_UNITS_PRIVATE_H

#include "qv/charset/qv_charset_codec_private.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/io/qv_char_source_private.h"

/* What UTF-16 and UTF-32 have in common: units of 2 or 4 bytes, in one of two byte orders. */

namespace qv
{
struct UnitSink : CodecSink
{
    QV_BOOL littleEndian;
};

struct UnitSource : CodecSource
{
    QV_BOOL littleEndian;
    QV_BOOL bomChecked;
};

/** Appends the lower bytes of a value to the cache, which has room. */
template< int bytes >
void putUnit( UnitSink *csc, QV_CHAR unit )
{
    QV_ASSERT( csc->room() >= bytes );

    uint8_t *out = csc->cache + csc->cacheLength;

    for( int i = 0; i < bytes; i++ )
        out[i] = static_cast< uint8_t >( unit >> 8 * ( csc->littleEndian ? i : bytes - 1 - i ) );

    csc->cacheLength += bytes;
}

/** The unit at a place. */
template< int bytes >
QV_CHAR unitAt( const uint8_t *in, QV_BOOL littleEndian )
{
    QV_CHAR unit = 0;

    for( int i = 0; i < bytes; i++ )
        unit |= static_cast< QV_CHAR >( in[i] ) << 8 * ( littleEndian ? i : bytes - 1 - i );

    return unit;
}

/** The next unit, which stays the next one. */
template< int bytes >
QV_CHAR peekUnit( UnitSource *csc )
{
    return unitAt< bytes >( csc->cache + csc->cachePos, csc->littleEndian );
}

/** Takes the byte order from the mark at the start and skips it. Does nothing if there is no mark. */
template< int bytes >
void checkByteOrderMark( UnitSource *csc )
{
    QV_CHECK( csc->cachePos == 0 );

    bool little = unitAt< bytes >( csc->cache, QV_TRUE ) == 0xFEFF;

    if( !little && unitAt< bytes >( csc->cache, QV_FALSE ) != 0xFEFF )
        return;

    csc->littleEndian = little ? QV_TRUE : QV_FALSE;
    csc->cachePos     = bytes;
    csc->bomChecked   = QV_TRUE;
}

/** Reads characters. `takeChar` reads the next one, of which the cache has at least one unit; what it returns may be no
    character. */
template< int bytes, QV_CHAR ( *takeChar )( UnitSource * ) >
QV_BOOL readUnits( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead )
{
    UnitSource *csc = static_cast< UnitSource * >( closure );
    QV_CHAR    *out = chars;
    QV_BOOL     ok  = QV_TRUE;

    while( ok && out - chars < maxCharCount )
    {
        if( csc->left() == 0 && !refillCache( csc ) )
        {
            ok = endOfBytes( csc );
            break;
        }

        // The data ends with a part of a unit.
        if( csc->left() < bytes )
        {
            csc->cachePos = csc->cacheLength;
            ok            = putCutOff( csc, &out ) ? endOfBytes( csc ) : QV_FALSE;
            break;
        }

        if( !csc->bomChecked && !( csc->flags & QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK ) )
        {
            checkByteOrderMark< bytes >( csc );

            if( csc->bomChecked )
                continue;
        }

        csc->bomChecked = QV_TRUE;
        QV_CHAR ch      = takeChar( csc );

        if( QV_CHAR_OK( ch ) )
            *out++ = ch;
        else if( !putInvalid( csc, &out, bytes ) )
            ok = QV_FALSE;
    }

    *charsRead = out - chars;

    return ok;
}

/** A new sink. `writeChars` writes an array. */
template< class Closure, int bytes, QV_BOOL ( *writeChars )( QV_OBJ *, const QV_CHAR *, QV_INT ) >
QV_CHAR_SINK *createUnitSink( QV_SORT *sort, QV_BYTE_SINK *byteSink, QV_INT flags, QV_BOOL littleEndian )
{
    Ref< Closure > csc( createCodecSink< Closure >( sort, byteSink, flags ) );
    csc->littleEndian = littleEndian;

    if( flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK )
        putUnit< bytes >( csc.get(), 0xFEFF );

    return createCharSink( writeString< writeChars >, writeChars, flushCodecSink, csc.get() );
}

/** A new source. If the byte order is fixed, a byte order mark is a character. */
template< class Closure, int bytes, QV_CHAR ( *takeChar )( UnitSource * ) >
QV_CHAR_SOURCE *createUnitSource(
    QV_SORT *sort, QV_BYTE_SOURCE *byteSource, QV_INT flags, QV_BOOL littleEndian, bool isFixed )
{
    if( isFixed )
        flags |= QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK;

    Ref< Closure > csc( createCodecSource< Closure >( sort, byteSource, flags ) );
    csc->littleEndian = littleEndian;
    csc->bomChecked   = QV_FALSE;

    return createCharSource(
        readString< readUnits< bytes, takeChar >, bytes >, readUnits< bytes, takeChar >, csc.get() );
}
} // namespace qv

#endif
