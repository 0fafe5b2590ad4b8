#ifndef QV_CHARSET_CODEC_PRIVATE_H
#define QV_CHARSET_CODEC_PRIVATE_H

#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_utf8_private.h"

#include <algorithm>
#include <stdio.h>

/* What the codecs have in common: a closure with a cache of the bytes that go to or come from the byte stream. A codec
   converts many characters with one call. */

namespace qv
{
const QV_INT CODEC_CACHE = 1024; // bytes

/** The closure of a sink. The sorts of the codecs derive theirs from it. */
struct CodecSink : QV_OBJ
{
    QV_BYTE_SINK *byteSink;
    QV_INT        flags;
    QV_INT        cacheLength;
    uint8_t       cache[CODEC_CACHE];

    QV_INT room() const
    {
        QV_ASSERT( cacheLength >= 0 && cacheLength <= CODEC_CACHE );
        return CODEC_CACHE - cacheLength;
    }
};

/** The closure of a source. The sorts of the codecs derive theirs from it. */
struct CodecSource : QV_OBJ
{
    QV_BYTE_SOURCE *byteSource;
    QV_INT          flags;
    QV_INT          cacheLength;
    QV_INT          cachePos;
    uint8_t         cache[CODEC_CACHE];
    QV_INT          cacheOffset; // of the cache in the bytes that the codec reads

    QV_INT left() const
    {
        QV_ASSERT( cachePos >= 0 && cachePos <= cacheLength && cacheLength <= CODEC_CACHE );
        return cacheLength - cachePos;
    }
};

/** `undeclared` bytes at the end of the structure do not count in its declared size. */
template< class Closure >
Closure *createCodecSink( QV_SORT *sort, QV_BYTE_SINK *byteSink, QV_INT flags, QV_INT undeclared = 0 )
{
    Closure *csc     = static_cast< Closure * >( createWithRoom( sizeof( Closure ) - undeclared, undeclared, sort ) );
    csc->byteSink    = retain( byteSink );
    csc->flags       = flags;
    csc->cacheLength = 0;

    return csc;
}

template< class Closure >
Closure *createCodecSource( QV_SORT *sort, QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    const QV_INT extra = sizeof( QV_INT ); // the offset of the cache, without which the size is declared

    Closure *csc     = static_cast< Closure * >( createWithRoom( sizeof( Closure ) - extra, extra, sort ) );
    csc->byteSource  = retain( byteSource );
    csc->flags       = flags;
    csc->cacheLength = 0;
    csc->cachePos    = 0;
    csc->cacheOffset = 0;
    markFree( csc->cache, CODEC_CACHE );

    return csc;
}

inline void freeCodecSink( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    drop( static_cast< CodecSink * >( thisObj )->byteSink );
}

inline void freeCodecSource( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    CodecSource *csc = static_cast< CodecSource * >( thisObj );
    unpoison( csc->cache, CODEC_CACHE );
    drop( csc->byteSource );
}

/** Writes the cache to the byte sink and empties it, also if the write fails. */
inline bool flushCache( CodecSink *csc )
{
    QV_ASSERT( csc->room() >= 0 );

    QV_BOOL ok       = qvByteSinkWriteBytes( csc->byteSink, csc->cache, csc->cacheLength );
    csc->cacheLength = 0;

    return ok;
}

/** The flush callback of a sink that keeps nothing back but its cache. It does not flush the byte sink. */
inline QV_BOOL flushCodecSink( QV_OBJ *closure )
{
    return flushCache( static_cast< CodecSink * >( closure ) ) ? QV_TRUE : QV_FALSE;
}

/** Refills an empty cache; false at the end of the bytes. The places without bytes are marked as free, so that builds
    with a memory checker find a read of them. */
inline bool refillCache( CodecSource *csc )
{
    QV_ASSERT( csc->left() == 0 );
    unpoison( csc->cache, CODEC_CACHE );

    csc->cacheOffset += csc->cacheLength;
    csc->cachePos    = 0;
    csc->cacheLength = qvByteSourceReadBytes( csc->byteSource, csc->cache, CODEC_CACHE );
    markFree( csc->cache + csc->cacheLength, static_cast< size_t >( CODEC_CACHE - csc->cacheLength ) );

    return csc->cacheLength > 0;
}

/** The result of a read that has met the end of the bytes. */
inline QV_BOOL endOfBytes( CodecSource *csc )
{
    return stillGood( static_cast< const AnySource * >( qvByteSourceObj( csc->byteSource ) ) );
}

/** What a codec does with bytes or a character that it cannot convert. */
enum class Invalid
{
    FAIL,      // the read or write fails
    LEAVE_OUT, // it goes on without them
    REPLACE    // it goes on with U+FFFD, or with the byte that stands for it
};

/** What the normalised flags of a codec ask for. */
inline Invalid onInvalid( QV_INT flags )
{
    if( flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER )
        return Invalid::FAIL;

    return flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS ? Invalid::LEAVE_OUT : Invalid::REPLACE;
}

/** Stores what replaces invalid input, if anything does, at `*out`, which has room. False if the read has to fail: then
    the last error is set, for the place that is `back` bytes before the next one of the cache. */
inline bool putInvalid( CodecSource *csc, QV_CHAR **out, QV_INT back )
{
    Invalid invalid = onInvalid( csc->flags );

    if( invalid == Invalid::REPLACE )
        *( *out )++ = utf8::REPLACEMENT;

    if( invalid == Invalid::FAIL )
        setError(
            { .code   = QV_ERROR_BAD_TEXT,
              .offset = csc->cacheOffset + csc->cachePos - back,
              .reason = "bytes that are no text in the charset" } );

    return invalid != Invalid::FAIL;
}

/** The same for the start of a character at the end of the data. If that is there because a read has failed, the last
    error is that of the read. */
inline bool putCutOff( CodecSource *csc, QV_CHAR **out )
{
    bool ok = putInvalid( csc, out, 0 );

    if( !ok && endOfBytes( csc ) )
        setError(
            { .code   = QV_ERROR_CUT_OFF,
              .offset = csc->cacheOffset + csc->cacheLength,
              .reason = "the data ends inside of a character" } );

    return ok;
}

/** Sets the last error of a write that has to fail because of a character that cannot be written. */
inline void setCharError( QV_CHAR ch )
{
    char reason[64];
    snprintf( reason, sizeof( reason ), "the character U+%04X is not in the charset", static_cast< unsigned >( ch ) );
    setError( { .code = QV_ERROR_BAD_TEXT, .reason = reason } );
}

/** The write callback of a sink in terms of the one that writes an array. */
template< QV_BOOL ( *writeChars )( QV_OBJ *, const QV_CHAR *, QV_INT ) >
QV_BOOL writeString( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    return writeChars( closure, chars( qvs ) + charOffset, charCount );
}

/** The read callback of a source in terms of the one that fills an array. That one must deliver fewer characters than
    asked for only at the end of the bytes or with a failure, and keep no character back when it returns. `minBytes` is
    the least number of bytes of a character. */
template< QV_BOOL ( *readChars )( QV_OBJ *, QV_CHAR *, QV_INT, QV_INT * ), QV_INT minBytes >
QV_BOOL readString( QV_OBJ *closure, QV_STRING **qvs, QV_INT maxCharCount, QV_INT *charsRead )
{
    CodecSource *csc  = static_cast< CodecSource * >( closure );
    QV_BOOL      ok   = QV_TRUE;
    bool         more = true;
    bool         grew = false;

    while( more && *charsRead < maxCharCount )
    {
        if( csc->left() == 0 && !refillCache( csc ) )
        {
            ok = endOfBytes( csc );
            break;
        }

        makeOwn( qvs );
        grew = true;

        // Room for the characters that the cache can hold, and for all the places that are free already.
        QV_INT room = std::max( csc->left() / minBytes + 1, ( *qvs )->bspace );
        room        = std::min( room, maxCharCount - *charsRead );

        QV_INT count = 0;
        ok           = readChars( closure, qv___StringMakeRoom( *qvs, ( *qvs )->length, room ), room, &count );
        more         = ok && count == room;

        ( *qvs )->dropBack( room - count );
        *charsRead += count;
    }

    if( grew )
        qv___StringCompact( *qvs );

    return ok;
}
} // namespace qv

#endif
