#ifndef QV_CHARSET_CODEC_PRIVATE_H
#define QV_CHARSET_CODEC_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_source.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_utf8_private.h"

#include <algorithm>

/* What the codecs have in common: a closure with a cache between the characters above and the bytes below. Each codec
   works on whole stretches of the cache and of the characters, never on one character a call. */

namespace qv
{
const QV_INT CODEC_CACHE = 1024; // bytes

/** The closure of a sink; sorts derive theirs from it. */
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

/** The closure of a source. */
struct CodecSource : QV_OBJ
{
    QV_BYTE_SOURCE *byteSource;
    QV_INT          flags;
    QV_INT          cacheLength;
    QV_INT          cachePos;
    uint8_t         cache[CODEC_CACHE];

    QV_INT left() const
    {
        QV_ASSERT( cachePos >= 0 && cachePos <= cacheLength && cacheLength <= CODEC_CACHE );
        return cacheLength - cachePos;
    }
};

template< class Closure >
Closure *createCodecSink( QV_SORT *sort, QV_BYTE_SINK *byteSink, QV_INT flags )
{
    Closure *csc     = create< Closure >( sort );
    csc->byteSink    = retain( byteSink );
    csc->flags       = flags;
    csc->cacheLength = 0;

    return csc;
}

template< class Closure >
Closure *createCodecSource( QV_SORT *sort, QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    Closure *csc     = create< Closure >( sort );
    csc->byteSource  = retain( byteSource );
    csc->flags       = flags;
    csc->cacheLength = 0;
    csc->cachePos    = 0;
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

/** Hands the cache down and empties it, also when that fails. */
inline bool flushCache( CodecSink *csc )
{
    QV_ASSERT( csc->room() >= 0 );

    QV_BOOL ok       = qvByteSinkWriteBytes( csc->byteSink, csc->cache, csc->cacheLength );
    csc->cacheLength = 0;

    return ok;
}

/** The flush callback of every sink. It leaves the byte sink alone. */
inline QV_BOOL flushCodecSink( QV_OBJ *closure )
{
    return flushCache( static_cast< CodecSink * >( closure ) ) ? QV_TRUE : QV_FALSE;
}

/** Fills a used-up cache anew; false at the end of the bytes. What it has no bytes for is watched. */
inline bool refillCache( CodecSource *csc )
{
    QV_ASSERT( csc->left() == 0 );
    unpoison( csc->cache, CODEC_CACHE );

    csc->cachePos    = 0;
    csc->cacheLength = qvByteSourceReadBytes( csc->byteSource, csc->cache, CODEC_CACHE );
    markFree( csc->cache + csc->cacheLength, static_cast< size_t >( CODEC_CACHE - csc->cacheLength ) );

    return csc->cacheLength > 0;
}

/** How a read goes that has met the end of the bytes. */
inline QV_BOOL endOfBytes( CodecSource *csc )
{
    return qvByteSourceError( csc->byteSource ) ? QV_FALSE : QV_TRUE;
}

/** Puts what stands for invalid input at `*out`, for which there has to be room; false when the read has to fail. */
inline bool putInvalid( CodecSource *csc, QV_CHAR **out )
{
    if( csc->flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER )
        return false;

    if( !( csc->flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS ) )
        *( *out )++ = utf8::REPLACEMENT;

    return true;
}

/** The read callback of a source in terms of the one that fills an array, which stops short only at the end or with a
    failure, and has nothing half done when it returns. `minBytes` is the least number of bytes that a character
    takes. */
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

        makePrivate( qvs, qvStringCreateFrom );
        grew = true;

        // For what the cache can give, and all that is free already.
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
