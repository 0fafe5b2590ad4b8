#include "qv/io/qv_char_sink.h"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_int.h"

struct QV_CHAR_SINK : qv::AnySink
{
    QV___CHAR_SINK_WRITE_FUNC  writeFunc;
    qv::CharSinkWriteCharsFunc writeCharsFunc; // or null
};

namespace
{
// Writes a text that was created for the call, and releases it.
QV_BOOL writeText( QV_CHAR_SINK *sink, QV_STRING *owned )
{
    qv::Ref< QV_STRING > text( owned );
    return qvCharSinkWrite( sink, text );
}

void freeCharSink( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::endSink( qvCharSinkFrom( thisObj ) );
}
} // namespace

QV___FAMILY( CharSink, QV_CHAR_SINK, freeCharSink, nullptr, nullptr )

QV_CHAR_SINK *qv::createCharSink(
    QV___CHAR_SINK_WRITE_FUNC writeFunc, CharSinkWriteCharsFunc writeCharsFunc, QV___CHAR_SINK_FLUSH_FUNC flushFunc,
    QV_OBJ *closure )
{
    QV_CHECK( writeFunc );
    QV_CHECK( flushFunc );

    QV_CHAR_SINK *sink   = createSink< QV_CHAR_SINK >( qvCharSinkSort(), flushFunc, closure );
    sink->writeFunc      = writeFunc;
    sink->writeCharsFunc = writeCharsFunc;

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
    return !qv::stillGood( sink );
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
        return qv::stillGood( sink );

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
        return qv::stillGood( sink );

    QV_CHECK_AS( charOffset + charCount <= qvs->length, "charOffset + charCount <= qvStringLength( qvs )" );

    return qv::writeRange( sink, qvs, charOffset, charCount );
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
        return qv::stillGood( sink );

    QV_INT tailOffset = charOffset + charCount;
    QV_INT length     = qvs->length;

    QV_CHECK_AS( tailOffset <= length, "charOffset + charCount <= qvStringLength( qvs )" );

    return qv::writeAround( sink, qvs, charOffset, tailOffset, length );
}

QV_BOOL qvCharSinkWriteChars( QV_CHAR_SINK *sink, const QV_CHAR *chars, QV_INT charCount )
{
    QV_CHECK( sink );
    QV_CHECK( charCount >= 0 );
    QV_CHECK( chars || charCount == 0 );

    if( !qv::stillGood( sink ) )
        return QV_FALSE;

    if( charCount == 0 )
        return QV_TRUE;

    // Values that are no characters end the process when a String is created of them, also where the sink could take
    // them.
    if( !sink->writeCharsFunc || !qv::allCharsOk( chars, charCount ) )
        return writeText( sink, qvStringCreateFromCharsCopy( chars, charCount ) );

    return qv::noteResult( sink, sink->writeCharsFunc( sink->closure, chars, charCount ) );
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

QV_BOOL qvCharSinkWriteFormat( QV_CHAR_SINK *sink, QV_STRING *fmt, ... )
{
    QV_CHECK( sink );

    va_list argList;
    va_start( argList, fmt );
    QV_STRING *text = qvStringCreateFromFormatArgList( fmt, &argList );
    va_end( argList );

    return writeText( sink, text );
}

QV_BOOL qvCharSinkWriteFormatCstr( QV_CHAR_SINK *sink, const char *fmt, QV_INT fmtLength, ... )
{
    QV_CHECK( sink );

    va_list argList;
    va_start( argList, fmtLength );
    QV_STRING *text = qvStringCreateFromFormatCstrArgList( fmt, fmtLength, &argList );
    va_end( argList );

    return writeText( sink, text );
}

QV_BOOL qvCharSinkWriteFormatWcstr( QV_CHAR_SINK *sink, const wchar_t *fmt, QV_INT fmtLength, ... )
{
    QV_CHECK( sink );

    va_list argList;
    va_start( argList, fmtLength );
    QV_STRING *text = qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, &argList );
    va_end( argList );

    return writeText( sink, text );
}

QV_BOOL qvCharSinkFlush( QV_CHAR_SINK *sink )
{
    QV_CHECK( sink );
    return qv::flushSink( sink );
}
