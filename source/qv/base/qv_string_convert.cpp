#include "qv/base/qv_format.h"
#include "qv/base/qv_format_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

#include <string.h>
#include <wchar.h>

/* From outside text ---------------------------------------------------------------------------------------------- */

namespace
{
QV_INT unitsOf( const char *text )
{
    return static_cast< QV_INT >( strlen( text ) );
}

QV_INT unitsOf( const wchar_t *text )
{
    return static_cast< QV_INT >( wcslen( text ) );
}

// Decodes into a block of just the length of the result. As no form gives more characters than it has units, one pass
// does: a short text goes by way of the stack, and the block of a long one gives back what it didn't need.
template< class Unit >
QV_STRING *createDecoded(
    QV_INT ( *convert )( QV_CHAR *, QV_INT, const Unit *, QV_INT ), const Unit *text, QV_INT length )
{
    const QV_INT SHORT = 512;

    if( text && length == -1 )
        length = unitsOf( text );

    if( !text || length <= SHORT ) // which leaves what is wrong to the conversion
    {
        QV_CHAR chs[SHORT];
        return qv::newExactCopy( chs, convert( chs, SHORT, text, length ) );
    }

    QV_CHAR *block = static_cast< QV_CHAR * >( qvMemAllocN( length, sizeof( QV_CHAR ) ) );
    QV_INT   count = convert( block, length, text, length );

    if( count == 0 )
    {
        qvMemFree( block );
        return qvStringCreate();
    }

    if( count < length )
        block = static_cast< QV_CHAR * >( qvMemReallocN( block, count, sizeof( QV_CHAR ) ) );

    return qv::createStringUse( block, count );
}

// Inline in both functions, so that a report names the one that was called. What one look tells the length of is decoded
// into its String, other short texts by way of the stack; all else, and what is wrong, is left to the conversion.
__attribute__( ( always_inline ) ) inline QV_STRING *createFromUtf8( const char *text, QV_INT length )
{
    const QV_INT SHORT = 128;

    if( text && length == -1 )
        length = unitsOf( text );

    if( !text || length <= 0 || length > SHORT )
        return createDecoded( qvCharsConvertFromUtf8, text, length );

    const uint8_t *in = reinterpret_cast< const uint8_t * >( text );

    if( qv::utf8::isShortAscii( in, length ) )
    {
        QV_STRING *qvs = qv::newString( length, nullptr, 0 );
        qv::utf8::decodeShortAscii( in, length, qv::chars( qvs ) );

        return qvs;
    }

    if( length <= qv::utf8::ONE_LOOK )
    {
        if( qv::utf8::Looked looked = qv::utf8::look( in, length ); looked.chars > 0 )
        {
            QV_STRING *qvs = qv::newString( looked.chars, nullptr, 0 );
            qv::utf8::decodeLooked( in, length, looked, qv::chars( qvs ) );

            return qvs;
        }
    }
    else
    {
        QV_CHAR chs[SHORT + qv::utf8::SHORT_ROOM];
        QV_INT  count = qv::utf8::decodeShort( in, length, chs );

        if( count >= 0 )
            return qv::newExactCopy( chs, count );
    }

    return createDecoded( qvCharsConvertFromUtf8, text, length );
}
} // namespace

QV_STRING *qvStringCreateFromAscii( const char *text, QV_INT length )
{
    return createDecoded( qvCharsConvertFromAscii, text, length );
}

QV_STRING *qvStringCreateFromCstr( const char *text, QV_INT length )
{
    return createFromUtf8( text, length );
}

QV_STRING *qvStringCreateFromUtf8( const char *text, QV_INT length )
{
    return createFromUtf8( text, length );
}

QV_STRING *qvStringCreateFromWcstr( const wchar_t *text, QV_INT length )
{
    return createDecoded( qvCharsConvertFromWcstr, text, length );
}

QV_STRING *qvStringCreateFromFormat( QV_STRING *fmt, ... )
{
    va_list argList;
    va_start( argList, fmt );
    QV_STRING *result = qvStringCreateFromFormatArgList( fmt, &argList );
    va_end( argList );

    return result;
}

QV_STRING *qvStringCreateFromFormatArgList( QV_STRING *fmt, va_list *argList )
{
    QV_CHECK( fmt );
    return qv___FormatArgList( fmt, argList );
}

QV_STRING *qvStringCreateFromFormatCstr( const char *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    QV_STRING *result = qvStringCreateFromFormatCstrArgList( fmt, fmtLength, &argList );
    va_end( argList );

    return result;
}

QV_STRING *qvStringCreateFromFormatCstrArgList( const char *fmt, QV_INT fmtLength, va_list *argList )
{
    return qv::formatCstr( fmt, fmtLength, argList );
}

QV_STRING *qvStringCreateFromFormatWcstr( const wchar_t *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    QV_STRING *result = qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, &argList );
    va_end( argList );

    return result;
}

QV_STRING *qvStringCreateFromFormatWcstrArgList( const wchar_t *fmt, QV_INT fmtLength, va_list *argList )
{
    return qv::formatWcstr( fmt, fmtLength, argList );
}

/* To outside text ------------------------------------------------------------------------------------------------ */

namespace
{
// Encodes twice: first to learn the size, then into a block of just that size.
template< class Unit >
Unit *createEncoded(
    QV_INT ( *convert )( Unit *, QV_INT, const QV_CHAR *, QV_INT, QV_BOOL ), QV_STRING *qvs, QV_BOOL addNull,
    QV_INT *outLength )
{
    if( outLength )
        *outLength = 0;

    QV_CHECK( qvs );

    QV_INT size = convert( nullptr, 0, qv::chars( qvs ), qvs->length, addNull );

    if( size == 0 )
        return nullptr;

    Unit *block = static_cast< Unit * >( qvMemAllocN( size, sizeof( Unit ) ) );
    convert( block, size, qv::chars( qvs ), qvs->length, addNull );

    if( outLength )
        *outLength = size;

    return block;
}
} // namespace

char *qvStringConvertToAscii( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength )
{
    return createEncoded( qvCharsConvertToAscii, qvs, addNull, outLength );
}

char *qvStringConvertToCstr( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength )
{
    return qvStringConvertToUtf8( qvs, addNull, outLength );
}

namespace
{
// The bytes of a few characters that a vector holds, in a block; null where they have to go another way.
char *createFewBytes( const QV_CHAR *chs, QV_INT count, QV_INT null, QV_INT *outLength )
{
    QV_INT size = qv::utf8::exactLength( chs, count );

    if( size <= 0 )
        return nullptr;

    char *block = static_cast< char * >( qvMemAlloc( size + null ) );
    qv::utf8::encodeExact( chs, count, reinterpret_cast< uint8_t * >( block ) );

    if( null )
        block[size] = 0;

    if( outLength )
        *outLength = size + null;

    return block;
}
} // namespace

// Encodes once: a few characters into a block of just their size, a short text by way of the stack, a long one into a
// block that gives back what it didn't need. It is made for ASCII if the text begins so, and made larger where that ends.
char *qvStringConvertToUtf8( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength )
{
    const QV_INT SHORT = 96;

    if( outLength )
        *outLength = 0;

    QV_CHECK( qvs );

    const QV_CHAR *chs    = qv::chars( qvs );
    QV_INT         length = qvs->length;

    if( length <= qv::utf8::FEW_CHARS )
        if( char *block = createFewBytes( chs, length, addNull ? 1 : 0, outLength ) )
            return block;

    if( length <= SHORT )
    {
        char   bytes[SHORT * qv::utf8::LONGEST + qv::utf8::SHORT_ROOM];
        QV_INT size = qv::utf8::encodeShort( chs, length, reinterpret_cast< uint8_t * >( bytes ) );

        if( size < 0 )
            size = qvCharsConvertToUtf8( bytes, QV_INT( sizeof( bytes ) ), chs, length, QV_FALSE );

        if( addNull )
            bytes[size++] = 0;

        if( size == 0 )
            return nullptr;

        char *exact = static_cast< char * >( qvMemAlloc( size ) );
        memcpy( exact, bytes, static_cast< size_t >( size ) );

        if( outLength )
            *outLength = size;

        return exact;
    }

    QV_INT null  = addNull ? 1 : 0;
    QV_INT room  = qv::asciiLength( chs, SHORT ) == SHORT ? length + null : length * qv::utf8::LONGEST + null;
    char  *block = static_cast< char * >( qvMemAlloc( room ) );
    QV_INT ascii = qv::encodeLeadingAscii( block, chs, length );
    QV_INT most  = ascii + ( length - ascii ) * qv::utf8::LONGEST + null;

    if( room < most )
    {
        room  = most;
        block = static_cast< char * >( qvMemRealloc( block, room ) );
    }

    QV_INT rest = qvCharsConvertToUtf8( block + ascii, room - ascii, chs + ascii, length - ascii, addNull );
    QV_CHECK( QV_INT_ADD_OK( ascii, rest ) );

    if( outLength )
        *outLength = ascii + rest;

    return ascii + rest == room ? block : static_cast< char * >( qvMemRealloc( block, ascii + rest ) );
}

wchar_t *qvStringConvertToWcstr( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength )
{
    return createEncoded( qvCharsConvertToWcstr, qvs, addNull, outLength );
}
