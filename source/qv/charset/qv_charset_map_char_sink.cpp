#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"

struct QV___CHARSET_MAP_CHAR_SINK_CLOSURE : qv::CodecSink
{
    QV___CHARSET_CHAR_TO_BYTE_FUNC mapFunc;
    QV_UNICODE_NORMALIZER         *normalizer;
};

namespace
{
using Sink = QV___CHARSET_MAP_CHAR_SINK_CLOSURE;

const QV_INT COMPOSITION = 0; // the normal form

void freeSink( QV_OBJ *thisObj )
{
    qv::freeCodecSink( thisObj );
    qv::drop( static_cast< Sink * >( thisObj )->normalizer );
}
} // namespace

QV___FAMILY( ___CharsetMapCharSinkClosure, QV___CHARSET_MAP_CHAR_SINK_CLOSURE, freeSink, nullptr, nullptr )

namespace
{
// What stands for a character that has no byte.
uint8_t replacementByte( Sink *csc )
{
    uint8_t byte = 0;

    if( !csc->mapFunc( qv::REPLACEMENT, &byte ) && !csc->mapFunc( U'?', &byte ) )
        byte = 0;

    return byte;
}

// Maps all that the normalizer has ready.
QV_BOOL push( Sink *csc )
{
    const uint8_t replacement = replacementByte( csc );
    QV_CHAR       chars[256];

    while( QV_INT count = qvUnicodeNormalizerReadChars( csc->normalizer, chars, 256 ) )
    {
        for( QV_INT i = 0; i < count; i++ )
        {
            uint8_t byte;

            if( !csc->mapFunc( chars[i], &byte ) )
            {
                if( csc->flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER )
                    return QV_FALSE;

                if( csc->flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS )
                    continue;

                byte = replacement;
            }

            csc->cache[csc->cacheLength++] = byte;

            if( csc->room() == 0 && !qv::flushCache( csc ) )
                return QV_FALSE;
        }
    }

    return QV_TRUE;
}

QV_BOOL writeChars( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    Sink *csc = static_cast< Sink * >( closure );
    qvUnicodeNormalizerWriteChars( csc->normalizer, chars, charCount );

    return push( csc );
}

QV_BOOL write( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    return writeChars( closure, qv::chars( qvs ) + charOffset, charCount );
}

QV_BOOL flush( QV_OBJ *closure )
{
    Sink *csc = static_cast< Sink * >( closure );
    qvUnicodeNormalizerFlush( csc->normalizer );

    // What is in the cache goes down in any case.
    bool pushed = push( csc );

    return qv::flushCache( csc ) && pushed ? QV_TRUE : QV_FALSE;
}
} // namespace

QV_CHAR_SINK *qv___CharsetMapCharSinkCreate(
    QV_BYTE_SINK *byteSink, QV_INT flags, QV___CHARSET_CHAR_TO_BYTE_FUNC mapFunc )
{
    QV_CHECK( byteSink );
    QV_CHECK( mapFunc );

    qv::Ref< Sink > csc( qv::createCodecSink< Sink >( qv___CharsetMapCharSinkClosureSort(), byteSink, flags ) );
    csc->mapFunc    = mapFunc;
    csc->normalizer = qvUnicodeNormalizerCreate( COMPOSITION );

    return qv::createCharSink( write, writeChars, flush, csc.get() );
}
