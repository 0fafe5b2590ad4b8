#include "qv/io/qv_char_sink.h"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_int.h"

struct QV_CHAR_SINK : QV_OBJ
{
    QV___CHAR_SINK_WRITE_FUNC  writeFunc;
    qv::CharSinkWriteCharsFunc writeCharsFunc; // or null
    QV___CHAR_SINK_FLUSH_FUNC  flushFunc;
    QV_OBJ                    *closure; // or null
    QV_BOOL                    error;
};

namespace
{
// Notes how a callback went, and passes that on.
QV_BOOL noted( QV_CHAR_SINK *sink, QV_BOOL ok )
{
    if( !ok )
        sink->error = QV_TRUE;

    return ok ? QV_TRUE : QV_FALSE;
}

// Writes a text made for the call.
QV_BOOL writeText( QV_CHAR_SINK *sink, QV_STRING *owned )
{
    qv::Ref< QV_STRING > text( owned );
    return qvCharSinkWrite( sink, text );
}

void freeFunc( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_CHAR_SINK *sink = qvCharSinkFrom( thisObj );

    qvCharSinkFlush( sink );
    qv::drop( sink->closure );
}
} // namespace

QV___FAMILY( CharSink, QV_CHAR_SINK, freeFunc, nullptr, nullptr )

QV_CHAR_SINK *qv::createCharSink(
    QV___CHAR_SINK_WRITE_FUNC writeFunc, CharSinkWriteCharsFunc writeCharsFunc, QV___CHAR_SINK_FLUSH_FUNC flushFunc,
    QV_OBJ *closure )
{
    QV_CHECK( writeFunc );
    QV_CHECK( flushFunc );

    QV_CHAR_SINK *sink   = create< QV_CHAR_SINK >( qvCharSinkSort() );
    sink->writeFunc      = writeFunc;
    sink->writeCharsFunc = writeCharsFunc;
    sink->flushFunc      = flushFunc;
    sink->closure        = Ref< QV_OBJ >::share( closure ).give();
    sink->error          = QV_FALSE;

    return sink;
}

QV_CHAR_SINK *qv___CharSinkCreate(
    QV___CHAR_SINK_WRITE_FUNC writeFunc, QV___CHAR_SINK_FLUSH_FUNC flushFunc, QV_OBJ *closure )
{
    return qv::createCharSink( writeFunc, nullptr, flushFunc, closure );
}

QV_BOOL qvCharSinkError( QV_CHAR_SINK *sink )
{
    QV_CHECK( sink );
    return sink->error;
}

QV_BOOL qvCharSinkWrite( QV_CHAR_SINK *sink, QV_STRING *qvs )
{
    QV_CHECK( sink );
    QV_CHECK( qvs );

    return qvCharSinkWriteInner( sink, qvs, 0, qvs->length );
}

QV_BOOL qvCharSinkWriteLeading( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charCount )
{
    return qvCharSinkWriteInner( sink, qvs, 0, charCount );
}

QV_BOOL qvCharSinkWriteTrailing( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charCount )
{
    QV_CHECK( sink );
    QV_CHECK( charCount >= 0 );
    QV_CHECK( charCount == 0 || qvs );

    if( charCount == 0 )
        return !sink->error;

    QV_CHECK_AS( charCount <= qvs->length, "charCount <= qvStringLength( qvs )" );

    return qvCharSinkWriteInner( sink, qvs, qvs->length - charCount, charCount );
}

QV_BOOL qvCharSinkWriteInner( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    QV_CHECK( sink );
    QV_CHECK( charOffset >= 0 );
    QV_CHECK( charCount >= 0 );
    QV_CHECK( charOffset == 0 || qvs );
    QV_CHECK( charCount == 0 || qvs );
    QV_CHECK( QV_INT_ADD_OK( charOffset, charCount ) );

    if( charOffset == 0 && charCount == 0 )
        return !sink->error;

    QV_CHECK_AS( charOffset + charCount <= qvs->length, "charOffset + charCount <= qvStringLength( qvs )" );

    if( sink->error )
        return QV_FALSE;

    if( charCount == 0 )
        return QV_TRUE;

    return noted( sink, sink->writeFunc( sink->closure, qvs, charOffset, charCount ) );
}

QV_BOOL qvCharSinkWriteOuter( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    QV_CHECK( sink );
    QV_CHECK( charOffset >= 0 );
    QV_CHECK( charCount >= 0 );
    QV_CHECK( charOffset == 0 || qvs );
    QV_CHECK( charCount == 0 || qvs );
    QV_CHECK( QV_INT_ADD_OK( charOffset, charCount ) );

    if( !qvs )
        return !sink->error;

    QV_INT tailOffset = charOffset + charCount;
    QV_INT length     = qvs->length;

    QV_CHECK_AS( tailOffset <= length, "charOffset + charCount <= qvStringLength( qvs )" );

    if( sink->error )
        return QV_FALSE;

    if( charOffset != 0 && !noted( sink, sink->writeFunc( sink->closure, qvs, 0, charOffset ) ) )
        return QV_FALSE;

    if( tailOffset == length )
        return QV_TRUE;

    return noted( sink, sink->writeFunc( sink->closure, qvs, tailOffset, length - tailOffset ) );
}

QV_BOOL qvCharSinkWriteChars( QV_CHAR_SINK *sink, const QV_CHAR *chars, QV_INT charCount )
{
    QV_CHECK( sink );
    QV_CHECK( charCount >= 0 );
    QV_CHECK( chars || charCount == 0 );

    if( sink->error )
        return QV_FALSE;

    if( charCount == 0 )
        return QV_TRUE;

    // A String is what refuses values that are no characters, whatever the sink could take.
    if( !sink->writeCharsFunc || !qv::allCharsOk( chars, charCount ) )
        return writeText( sink, qvStringCreateFromCharsCopy( chars, charCount ) );

    return noted( sink, sink->writeCharsFunc( sink->closure, chars, charCount ) );
}

QV_BOOL qvCharSinkWriteChar( QV_CHAR_SINK *sink, QV_CHAR ch )
{
    return qvCharSinkWriteChars( sink, &ch, 1 );
}

QV_BOOL qvCharSinkWriteCstr( QV_CHAR_SINK *sink, const char *text, QV_INT length )
{
    QV_CHECK( sink );
    return writeText( sink, qvStringCreateFromCstr( text, length ) );
}

QV_BOOL qvCharSinkWriteWcstr( QV_CHAR_SINK *sink, const wchar_t *text, QV_INT length )
{
    QV_CHECK( sink );
    return writeText( sink, qvStringCreateFromWcstr( text, length ) );
}

// The arguments behind `LAST` through one of the functions that format.
#define WRITE_FORMATTED( LAST, FORMATTED )                                                                             \
    QV_CHECK( sink );                                                                                                  \
                                                                                                                       \
    va_list argList;                                                                                                   \
    va_start( argList, LAST );                                                                                         \
    QV_STRING *text = FORMATTED;                                                                                       \
    va_end( argList );                                                                                                 \
                                                                                                                       \
    return writeText( sink, text );

QV_BOOL qvCharSinkWriteFormat( QV_CHAR_SINK *sink, QV_STRING *fmt, ... ){
    WRITE_FORMATTED( fmt, qvStringCreateFromFormatArgList( fmt, &argList ) ) }

QV_BOOL qvCharSinkWriteFormatCstr( QV_CHAR_SINK *sink, const char *fmt, QV_INT fmtLength, ... ){
    WRITE_FORMATTED( fmtLength, qvStringCreateFromFormatCstrArgList( fmt, fmtLength, &argList ) ) }

QV_BOOL qvCharSinkWriteFormatWcstr( QV_CHAR_SINK *sink, const wchar_t *fmt, QV_INT fmtLength, ... ){
    WRITE_FORMATTED( fmtLength, qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, &argList ) ) }

QV_BOOL qvCharSinkFlush( QV_CHAR_SINK *sink )
{
    QV_CHECK( sink );

    if( sink->error )
        return QV_FALSE;

    return noted( sink, sink->flushFunc( sink->closure ) );
}
